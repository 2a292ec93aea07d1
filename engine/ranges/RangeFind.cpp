// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Content.h"
#include "engine/ranges/TextRange.h"

#include <QRegularExpression>
#include <QStringMatcher>
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

/// Finds one text in others.
class Matcher
{
public:
    Matcher(const QString &sought, int flags)
        : mWholeWord(flags & TextRange::WholeWord),
          mSimple(std::none_of(sought.begin(), sought.end(), isAnyBlank)),
          mPlain(sought, flags & TextRange::MatchCase ? Qt::CaseSensitive : Qt::CaseInsensitive)
    {
        if (!mSimple) compile(sought, flags);
    }
    bool crossesRuns() const { return mCrosses; }

    struct Hit
    {
        qsizetype at = -1, length = 0;
    };
    Hit first(const QString &text, qsizetype from, qsizetype to) const
    {
        for (;;) {
            const Hit hit = next(text, from);
            if (hit.at < 0 || hit.at + hit.length > to) return {};
            if (fits(text, hit)) return hit;
            from = hit.at + 1;
        }
    }
    Hit last(const QString &text, qsizetype from, qsizetype to) const
    {
        Hit found;
        for (;;) {
            const Hit hit = first(text, from, to);
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
    Hit next(const QString &text, qsizetype from) const
    {
        if (mSimple) return {mPlain.indexIn(text, from), mPlain.pattern().size()};
        const auto match = mPattern.match(text, from);
        if (!match.hasMatch()) return {};
        return {match.capturedStart(), match.capturedLength()};
    }
    bool fits(const QString &text, const Hit &hit) const
    {
        if (!mWholeWord) return true;
        const qsizetype end = hit.at + hit.length;
        return !(hit.at > 0 && isWordCharacter(text[hit.at - 1]) && isWordCharacter(text[hit.at])) &&
               !(end < text.size() && isWordCharacter(text[end]) && isWordCharacter(text[end - 1]));
    }

    bool mWholeWord;
    bool mSimple;
    bool mCrosses = false;
    QStringMatcher mPlain;
    QRegularExpression mPattern;
};

} // namespace

namespace {

/// Callers seek the same text over and over.
const Matcher &matcherFor(const QString &sought, int flags)
{
    static thread_local QString lastSought;
    static thread_local int lastFlags = 0;
    static thread_local std::unique_ptr<Matcher> last;
    if (!last || lastFlags != flags || lastSought != sought) {
        last = std::make_unique<Matcher>(sought, flags);
        lastSought = sought;
        lastFlags = flags;
    }
    return *last;
}

} // namespace

bool TextRange::findText(const QString &sought, int count, int flags)
{
    if (sought.isEmpty()) return false;
    const Matcher &matcher = matcherFor(sought, flags);
    const bool backward = flags & Backward;
    TextIndex &text = index();
    const uint32_t total = text.total();
    // The stretch in which the hit must lie.
    uint32_t low = backward ? 0 : startCount(), high = backward ? endCount() : total;
    if (count == 0) {
        (backward ? low : high) = backward ? startCount() : endCount();
    } else if (count > 0 && count != noLimit) {
        if (backward)
            low = uint32_t(std::max<int64_t>(0, int64_t(high) - count));
        else
            high = uint32_t(std::min<int64_t>(total, int64_t(low) + count));
    }
    if (low >= high) return false;
    QString buffer;
    if (matcher.crossesRuns()) {
        for (const TextRun *run = text.firstRun(); run; run = run->next) {
            TextIndex::read(*run, 0, run->length, buffer, true);
            buffer.append(u'\n');
        }
        const auto hit = backward ? matcher.last(buffer, low, high) : matcher.first(buffer, low, high);
        if (hit.at < 0) return false;
        setCounts(uint32_t(hit.at), uint32_t(hit.at + hit.length));
        return true;
    }
    uint32_t base = 0;
    const TextRun *run = text.runAt(backward ? high - 1 : low, &base);
    while (run && (backward ? base + run->length > low : base < high)) {
        if (run->length > 0) {
            const uint32_t from = low > base ? low - base : 0, to = std::min(run->length, high - base);
            const QString &whole = text.textOf(*run);
            const auto hit = backward ? matcher.last(whole, from, to) : matcher.first(whole, from, to);
            if (hit.at >= 0) {
                const uint32_t at = uint32_t(hit.at), length = uint32_t(hit.length);
                setSpan({TextIndex::placeIn(*run, at, TextIndex::Side::Following),
                         TextIndex::placeIn(*run, at + length, TextIndex::Side::Preceding)});
                return true;
            }
        }
        if (!backward) base += run->length + 1;
        run = backward ? run->previous : run->next;
        if (backward && run) base -= run->length + 1;
    }
    return false;
}

} // namespace ranges
