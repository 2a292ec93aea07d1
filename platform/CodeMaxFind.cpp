// SPDX-License-Identifier: GPL-3.0-or-later
// Finding and replacing. The text is searched as a QString and not by Scintilla: its matcher folds case by bytes, and
// the full one of its two kinds of regular expressions recurses as deep as the text is long.
#include "platform/CodeMax.h"

#include <QRegularExpression>
#include <optional>

namespace {

bool isWordPart(const QString &text, qsizetype at)
{
    if (at < 0 || at >= text.size()) return false;
    QChar c = text.at(at);
    char32_t point = c.unicode();
    if (c.isHighSurrogate() && at + 1 < text.size())
        point = QChar::surrogateToUcs4(c, text.at(at + 1));
    else if (c.isLowSurrogate() && at > 0)
        point = QChar::surrogateToUcs4(text.at(at - 1), c);
    return point == U'_' || QChar::isLetterOrNumber(point);
}

bool isWholeWord(const QString &text, qsizetype start, qsizetype end)
{
    const bool cutsBefore = isWordPart(text, start - 1) && isWordPart(text, start);
    const bool cutsBehind = isWordPart(text, end - 1) && isWordPart(text, end);
    return !cutsBefore && !cutsBehind;
}

/// The text with each of its line ends written as `lineEnd`.
QString withLineEnds(QString text, const QString &lineEnd)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(u'\r', u'\n');
    return lineEnd == QLatin1String("\n") ? text : text.replace(u'\n', lineEnd);
}

/// The replacement of a match: `\0` to `\9` are what the expression's groups took, `\n` and `\t` line end and tab.
QString expanded(const QString &pattern, const QRegularExpressionMatch &match, const QString &lineEnd)
{
    QString result;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        if (c != u'\\' || i + 1 == pattern.size()) {
            result += c;
            continue;
        }
        const QChar next = pattern.at(++i);
        if (next >= u'0' && next <= u'9')
            result += match.captured(next.unicode() - u'0');
        else if (next == u'n')
            result += lineEnd;
        else if (next == u't')
            result += u'\t';
        else
            result += next;
    }
    return result;
}

} // namespace

/// One find text under one set of options.
class CodeMax::Searcher
{
public:
    explicit Searcher(const CodeMax &editor) : mText(editor.Text()), mWholeWord(editor.mWholeWord)
    {
        mCase = editor.mMatchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
        mReplacement = editor.mReplText;
        mLineEnd = editor.eolMode() == EolUnix  ? QStringLiteral("\n")
                   : editor.eolMode() == EolMac ? QStringLiteral("\r")
                                                : QStringLiteral("\r\n");
        if (!editor.mRegExp) {
            // As it stands, and with each kind of line end: the document may hold another one, or several.
            QStringList texts(editor.mFindText);
            for (const char *lineEnd : {"\r\n", "\n", "\r"}) {
                const QString other = withLineEnds(editor.mFindText, QLatin1String(lineEnd));
                if (!texts.contains(other)) texts << other;
            }
            for (const QString &text : texts)
                mNeedles.push_back({text});
            return;
        }
        QRegularExpression::PatternOptions options =
            QRegularExpression::MultilineOption | QRegularExpression::UseUnicodePropertiesOption;
        if (mCase == Qt::CaseInsensitive) options |= QRegularExpression::CaseInsensitiveOption;
        mExpression.emplace(QLatin1String("(*ANYCRLF)") + editor.mFindText, options);
    }

    const QString &text() const { return mText; }
    bool isValid() const { return !mExpression || mExpression->isValid(); }

    /// The first match that begins at `from` or later.
    Match next(qsizetype from) const
    {
        if (!mExpression) return nextLiteral(from);
        while (from <= mText.size()) {
            const QRegularExpressionMatch match = mExpression->match(mText, from);
            if (!match.hasMatch()) return {};
            const qsizetype start = match.capturedStart(), end = match.capturedEnd();
            // A match of nothing can't be shown, nor be told from the caret.
            if (end > start && (!mWholeWord || isWholeWord(mText, start, end)))
                return {start, end, expanded(mReplacement, match, mLineEnd)};
            from = start + 1;
            if (from < mText.size() && mText.at(from).isLowSurrogate()) ++from;
        }
        return {};
    }

    /// The last match that ends at `until` or earlier.
    Match previous(qsizetype until) const
    {
        if (!mExpression) return previousLiteral(until);
        Match last;
        for (Match match = next(0); match.start >= 0 && match.end <= until; match = next(match.end))
            last = match;
        return last;
    }

private:
    struct Needle
    {
        QString text;
        mutable qsizetype soughtFrom = -1;
        mutable qsizetype at = -1;
    };

    Match nextLiteral(qsizetype from) const
    {
        Match best;
        for (const Needle &needle : mNeedles) {
            const qsizetype at = placeOf(needle, from);
            if (at >= 0 && (best.start < 0 || at < best.start)) best = {at, at + needle.text.size(), mReplacement};
        }
        return best;
    }
    /// What one find has found still counts for the next as long as it lies ahead: a replace-all then reads the text
    /// once, also where only one of the needles occurs.
    qsizetype placeOf(const Needle &needle, qsizetype from) const
    {
        if (needle.soughtFrom >= 0 && needle.soughtFrom <= from && (needle.at < 0 || needle.at >= from))
            return needle.at;
        qsizetype at = mText.indexOf(needle.text, from, mCase);
        while (at >= 0 && !fits(at, at + needle.text.size()))
            at = mText.indexOf(needle.text, at + 1, mCase);
        needle.soughtFrom = from;
        needle.at = at;
        return at;
    }
    Match previousLiteral(qsizetype until) const
    {
        Match best;
        for (const auto &[needle, soughtFrom, found] : mNeedles) {
            const qsizetype from = until - needle.size();
            qsizetype at = from < 0 ? -1 : mText.lastIndexOf(needle, from, mCase);
            while (at >= 0 && !fits(at, at + needle.size()))
                at = at == 0 ? -1 : mText.lastIndexOf(needle, at - 1, mCase);
            if (at >= 0 && at + needle.size() > best.end) best = {at, at + needle.size(), mReplacement};
        }
        return best;
    }
    bool fits(qsizetype start, qsizetype end) const { return !mWholeWord || isWholeWord(mText, start, end); }

    QString mText;
    bool mWholeWord;
    Qt::CaseSensitivity mCase;
    QString mReplacement;
    QString mLineEnd;
    std::vector<Needle> mNeedles;
    std::optional<QRegularExpression> mExpression;
};

bool CodeMax::setSearchOption(int command)
{
    using namespace codemax;
    switch (command) {
    case regExpOn:
    case regExpOff:
        mRegExp = command == regExpOn;
        return true;
    case wholeWordOn:
    case wholeWordOff:
        mWholeWord = command == wholeWordOn;
        return true;
    case matchCaseOn:
    case matchCaseOff:
        mMatchCase = command == matchCaseOn;
        return true;
    case knownState:
        mRegExp = mWholeWord = mMatchCase = false;
        return true;
    default:
        return false;
    }
}

bool CodeMax::find(int command, Direction direction)
{
    if (mFindText.isEmpty()) return fail(command, codemax::notFound);
    const Searcher searcher(*this);
    if (!searcher.isValid()) return fail(command, codemax::badExpression);
    const int start = SelStart(), end = SelEnd();
    const auto isSelection = [&](const Match &match) { return match.start == start && match.end == end; };
    Match match;
    if (direction == Direction::Forward) {
        match = searcher.next(start);
        if (isSelection(match)) match = searcher.next(end);
        if (match.start < 0) match = searcher.next(0);
    } else {
        match = searcher.previous(end);
        if (isSelection(match)) match = searcher.previous(start);
        if (match.start < 0) match = searcher.previous(searcher.text().size());
    }
    if (match.start < 0) return fail(command, codemax::notFound);
    edit([&] {
        const long from = byteOf(int(match.start)), to = byteOf(int(match.end));
        send(SCI_SETSELECTION, static_cast<unsigned long>(to), from);
        send(SCI_SCROLLRANGE, static_cast<unsigned long>(to), from);
    });
    return true;
}

bool CodeMax::replaceAll()
{
    mReplaceCount = 0;
    if (isReadOnly()) return fail(codemax::replaceAll, codemax::isReadOnly);
    if (mFindText.isEmpty()) return fail(codemax::replaceAll, codemax::notFound);
    const Searcher searcher(*this);
    if (!searcher.isValid()) return fail(codemax::replaceAll, codemax::badExpression);
    QString result;
    qsizetype done = 0;
    for (Match match = searcher.next(0); match.start >= 0; match = searcher.next(match.end)) {
        result += QStringView(searcher.text()).mid(done, match.start - done);
        result += match.replacement;
        done = match.end;
        ++mReplaceCount;
    }
    if (mReplaceCount == 0) return fail(codemax::replaceAll, codemax::notFound);
    result += QStringView(searcher.text()).mid(done);
    edit([&] {
        const CodeMaxRange before = GetSel(false);
        send(SCI_BEGINUNDOACTION);
        replaceDifference(cleaned(result).toUtf8());
        send(SCI_ENDUNDOACTION);
        // The caret stays on its line; the selection may have been replaced.
        const long caret = byteOf(CodeMaxPosition{before.EndLineNo, before.EndColNo});
        send(SCI_SETEMPTYSELECTION, static_cast<unsigned long>(caret));
    });
    return true;
}
