// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Content.h"
#include "engine/ranges/TextRange.h"

#include <QRegularExpression>
#include <cstring>
#include <limits>
#include <memory>

namespace ranges {

namespace {

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c.isMark() || c == u'_' || c.isSurrogate();
}

bool isAnyBlank(QChar c)
{
    return isBlank(c.unicode()) || c == QChar(noBreakSpace);
}

/// As letters are compared that differ in case only.
char16_t folded(QChar c)
{
    const char16_t unit = c.unicode();
    if (unit >= 0x80) return c.toCaseFolded().unicode();
    return unit >= u'A' && unit <= u'Z' ? unit | 0x20 : unit;
}

} // namespace

struct TextHit
{
    qsizetype at = -1, length = 0;
};

/// Finds one text in others.
class TextMatcher
{
public:
    TextMatcher(const QString &sought, int flags)
        : mWholeWord(flags & TextRange::WholeWord), mMatchCase(flags & TextRange::MatchCase), mSought(sought)
    {
        // Letters beyond the first plane have their other case in two units.
        mSimple = std::none_of(sought.begin(), sought.end(),
                               [this](QChar c) { return isAnyBlank(c) || (c.isSurrogate() && !mMatchCase); });
        if (!mSimple) compile(sought, flags);
        if (mMatchCase) return;
        for (QChar &c : mSought)
            c = QChar(folded(c));
    }
    bool crossesRuns() const { return mCrosses; }

    /// Within that part of the text.
    TextHit first(const QString &text, qsizetype from, qsizetype to) const
    {
        for (;;) {
            const TextHit hit = next(text, from, to);
            if (hit.at < 0 || fits(text, hit)) return hit;
            from = hit.at + 1;
        }
    }
    TextHit last(const QString &text, qsizetype from, qsizetype to) const
    {
        if (mSimple) {
            TextHit hit{to - mSought.size(), mSought.size()};
            while (hit.at >= from && !(standsAt(text, hit.at) && fits(text, hit)))
                --hit.at;
            return hit.at >= from ? hit : TextHit();
        }
        TextHit found;
        for (;;) {
            const TextHit hit = first(text, from, to);
            if (hit.at < 0) return found;
            found = hit;
            from = hit.at + 1;
        }
    }

private:
    void compile(const QString &sought, int flags)
    {
        QString pattern;
        for (qsizetype i = 0; i < sought.size();) {
            if (!isAnyBlank(sought[i])) {
                const qsizetype from = i;
                while (i < sought.size() && !isAnyBlank(sought[i]))
                    ++i;
                pattern += QRegularExpression::escape(sought.mid(from, i - from));
                continue;
            }
            bool line = false;
            for (; i < sought.size() && isAnyBlank(sought[i]); ++i)
                line = line || sought[i] == u'\n' || sought[i] == u'\r';
            pattern += line ? QStringLiteral("[ \\t\\x{A0}\\n]+") : QStringLiteral("[ \\t\\x{A0}]+");
            mCrosses = mCrosses || line;
        }
        mPattern.setPattern(pattern);
        mPattern.setPatternOptions(flags & TextRange::MatchCase ? QRegularExpression::NoPatternOption
                                                                : QRegularExpression::CaseInsensitiveOption);
    }
    TextHit next(const QString &text, qsizetype from, qsizetype to) const
    {
        if (mSimple) {
            const qsizetype at =
                mMatchCase ? QStringView(text).first(to).indexOf(mSought, from) : indexIn(text, from, to);
            return {at, mSought.size()};
        }
        const auto match = mPattern.match(text, from);
        if (!match.hasMatch() || match.capturedEnd() > to) return {};
        return {match.capturedStart(), match.capturedLength()};
    }
    bool standsAt(const QString &text, qsizetype at) const
    {
        if (!mMatchCase && folded(text[at + mSought.size() - 1]) != mSought.back().unicode()) return false;
        const QStringView there = QStringView(text).sliced(at, mSought.size());
        if (mMatchCase) return there == mSought;
        return std::equal(there.begin(), there.end(), mSought.begin(),
                          [](QChar c, QChar sought) { return folded(c) == sought.unicode(); });
    }
    qsizetype indexIn(const QString &text, qsizetype from, qsizetype to) const
    {
        const QChar *const units = text.constData();
        const qsizetype last = to - mSought.size();
        const char16_t first = mSought[0].unicode();
        const char16_t capital = first >= u'a' && first <= u'z' ? first & ~0x20 : first;
        const auto isCandidate = [=](QChar c) {
            return c == QChar(first) || c == QChar(capital) || (c.unicode() >= 0x80 && folded(c) == first);
        };
        qsizetype i = from;
        // Eight at a time, those with the first letter or one beyond ASCII are looked at one by one.
        using Eight = uint16_t __attribute__((vector_size(16)));
        for (; i + 8 <= last + 1; i += 8) {
            Eight eight;
            memcpy(&eight, units + i, sizeof(eight));
            const auto like = (eight == uint16_t(first)) | (eight == uint16_t(capital)) | (eight >= uint16_t(0x80));
            uint64_t halves[2];
            memcpy(halves, &like, sizeof(halves));
            if (!(halves[0] | halves[1])) continue;
            for (qsizetype k = i; k < i + 8; ++k)
                if (isCandidate(units[k]) && standsAt(text, k)) return k;
        }
        for (; i <= last; ++i)
            if (isCandidate(units[i]) && standsAt(text, i)) return i;
        return -1;
    }
    bool fits(const QString &text, const TextHit &hit) const
    {
        if (!mWholeWord) return true;
        const qsizetype end = hit.at + hit.length;
        return !(hit.at > 0 && isWordCharacter(text[hit.at - 1]) && isWordCharacter(text[hit.at])) &&
               !(end < text.size() && isWordCharacter(text[end]) && isWordCharacter(text[end - 1]));
    }

    bool mWholeWord;
    bool mMatchCase;
    bool mSimple; ///< found without a pattern
    bool mCrosses = false;
    QString mSought;
    QRegularExpression mPattern;
};

namespace {

/// Callers seek the same text over and over.
const TextMatcher &matcherFor(const QString &sought, int flags)
{
    static thread_local QString lastSought;
    static thread_local int lastFlags = 0;
    static thread_local std::unique_ptr<TextMatcher> last;
    if (!last || lastFlags != flags || lastSought != sought) {
        last = std::make_unique<TextMatcher>(sought, flags);
        lastSought = sought;
        lastFlags = flags;
    }
    return *last;
}

} // namespace

bool TextRange::findText(const QString &sought, int count, int flags)
{
    if (sought.isEmpty()) return false;
    const TextMatcher &matcher = matcherFor(sought, flags);
    const bool backward = flags & Backward;
    // How far from its start (its end) the hit may reach.
    int64_t left = std::numeric_limits<int64_t>::max();
    if (count == 0) left = int64_t(endCount()) - startCount();
    if (count > 0 && count != noLimit) left = count;
    if (matcher.crossesRuns()) return findAcrossRuns(matcher, left, backward);
    return backward ? findBackward(matcher, left) : findForward(matcher, left);
}

bool TextRange::findAcrossRuns(const TextMatcher &matcher, int64_t left, bool backward)
{
    TextIndex &text = index();
    int64_t low = 0, high = text.total();
    if (backward) {
        high = endCount();
        low = left < high ? high - left : 0;
    } else {
        low = startCount();
        high = left < high - low ? low + left : high;
    }
    QString buffer;
    for (const TextRun *run = text.firstRun(); run; run = run->next) {
        TextIndex::read(*run, 0, run->length, buffer, true);
        buffer.append(u'\n');
    }
    const auto hit = backward ? matcher.last(buffer, low, high) : matcher.first(buffer, low, high);
    if (hit.at < 0) return false;
    setCounts(uint32_t(hit.at), uint32_t(hit.at + hit.length));
    return true;
}

bool TextRange::findForward(const TextMatcher &matcher, int64_t left)
{
    TextIndex &text = index();
    uint32_t from = 0;
    const TextRun *run = text.runAround(span().start, &from);
    if (!run) {
        const uint32_t start = startCount();
        run = text.runAt(start, &from);
        from = start - from;
    }
    for (; run && left > 0; run = run->next) {
        const auto to = uint32_t(std::min<int64_t>(run->length, left < run->length ? from + left : run->length));
        if (from < to && take(*run, matcher.first(text.textOf(*run), from, to))) return true;
        left -= int64_t(run->length) + 1 - from;
        from = 0;
    }
    return false;
}

bool TextRange::findBackward(const TextMatcher &matcher, int64_t left)
{
    TextIndex &text = index();
    uint32_t to = 0; // with a run's boundary it is one more than the length
    const TextRun *run = text.runAround(span().end, &to);
    if (!run) {
        const uint32_t end = endCount();
        if (end == 0) return false;
        run = text.runAt(end - 1, &to);
        to = end - to;
    }
    while (run && left > 0) {
        const uint32_t end = std::min(run->length, to);
        left -= to - end;
        const uint32_t from = left < end ? uint32_t(end - left) : 0;
        if (from < end && take(*run, matcher.last(text.textOf(*run), from, end))) return true;
        left -= end;
        run = run->previous;
        if (run) to = run->length + 1;
    }
    return false;
}

bool TextRange::take(const TextRun &run, const TextHit &hit)
{
    if (hit.at < 0) return false;
    setSpan({TextIndex::placeIn(run, uint32_t(hit.at), TextIndex::Side::Following),
             TextIndex::placeIn(run, uint32_t(hit.at + hit.length), TextIndex::Side::Preceding)});
    return true;
}

} // namespace ranges
