// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/BreakFinder.h"

#include <QTextBoundaryFinder>

namespace layout {

namespace {

constexpr uint8_t lineBreak = 1, grapheme = 2;

bool isAsciiAlphanumeric(char16_t c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isDigit(char16_t c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char16_t c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

// Whether `next` stands in `these`, which names no letters and digits.
bool isOneOf(const char *these, char16_t next)
{
    for (; *these; ++these)
        if (char16_t(*these) == next) return true;
    return false;
}

// A line may end between these two printable ASCII characters.
bool asciiBreak(char16_t beforeLast, char16_t last, char16_t next)
{
    switch (last) {
    case '-':
        if (isDigit(next)) return isAsciiAlphanumeric(beforeLast); // else it is a sign
        return isAsciiAlphanumeric(next) || isOneOf("\"#%&'(*+-<=>@[\\^_`{|~", next);
    case '?':
        return isAsciiAlphanumeric(next) || isOneOf("#$%&(*+-<=>@[\\^_`{|~", next);
    default: // in front of what opens, where nothing else does
        return isOneOf("(<[{", next) && isOneOf("!\"#%&)*+,.:;=>\\]|}~", last);
    }
}

} // namespace

BreakFinder::BreakFinder(const QString &text) : mText(text) {}

void BreakFinder::analyse() const
{
    mUnicode.assign(std::size_t(mText.size()) + 1, 0);
    QTextBoundaryFinder lines(QTextBoundaryFinder::Line, mText);
    for (qsizetype at = lines.toNextBoundary(); at >= 0; at = lines.toNextBoundary()) mUnicode[std::size_t(at)] |= lineBreak;
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, mText);
    mUnicode[0] |= grapheme;
    for (qsizetype at = characters.toNextBoundary(); at >= 0; at = characters.toNextBoundary())
        mUnicode[std::size_t(at)] |= grapheme;
}

bool BreakFinder::isCharacterStart(uint32_t at) const
{
    if (at == 0 || at >= uint32_t(mText.size())) return true;
    const char16_t last = mText[at - 1].unicode(), next = mText[at].unicode();
    if (last < 0x300 && next < 0x300) return true;
    if (mUnicode.empty()) analyse();
    return mUnicode[at] & grapheme;
}

bool BreakFinder::allowed(uint32_t at, Words words) const
{
    if (at == 0 || at >= uint32_t(mText.size())) return at != 0;
    const char16_t last = mText[at - 1].unicode(), next = mText[at].unicode();
    if (words == Words::EveryBlank && isBlank(last)) return true;
    if (isBlank(next)) return false;
    if (isBlank(last)) return true;
    if (last == 0xA0 || next == 0xA0 || last == 0x2060 || next == 0x2060) return false;
    if (last == 0xFFFC || next == 0xFFFC) return true;
    if (last == 0xAD || last == 0x200B) return true;
    if (words == Words::BreakAll && isCharacterStart(at)) return true;
    if (last < 0x80 && next < 0x80) return asciiBreak(at >= 2 ? mText[at - 2].unicode() : 0, last, next);
    // Letters of Latin never part; what Unicode says counts for the rest.
    if (last < 0x250 && next < 0x250 && QChar(last).isLetterOrNumber() && QChar(next).isLetterOrNumber()) return false;
    if (words == Words::KeepAll && QChar(last).isLetterOrNumber() && QChar(next).isLetterOrNumber()) return false;
    if (mUnicode.empty()) analyse();
    return mUnicode[at] & lineBreak;
}

} // namespace layout
