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

// A line may end between these two printable ASCII characters.
bool asciiBreak(char16_t beforeLast, char16_t last, char16_t next)
{
    switch (last) {
    case '-':
        if (isDigit(next)) return isAsciiAlphanumeric(beforeLast);
        return isAsciiAlphanumeric(next) || next == '(' || next == '[' || next == '{' || next == '<' || next == '$' ||
               next == '#' || next == '@' || next == '&' || next == '*' || next == '+' || next == '=' || next == '\\' ||
               next == '~' || next == '^' || next == '_' || next == '`' || next == '%' || next == '"' || next == '\'';
    case '?':
        return isAsciiAlphanumeric(next) || next == '(' || next == '[' || next == '{' || next == '<' || next == '$' ||
               next == '#' || next == '@' || next == '&' || next == '*' || next == '+' || next == '=' || next == '\\' ||
               next == '~' || next == '^' || next == '_' || next == '%' || next == '-';
    case '|':
        return isAsciiAlphanumeric(next);
    case '!': case ')': case ']': case '}': case ',': case '.': case ':': case ';':
        return next == '(' || next == '<' || next == '[' || next == '{';
    default:
        return false;
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

namespace {

using Direction = QChar::Direction;

// The rules for weak and neutral types over one paragraph without embeddings.
void resolveWeak(std::vector<Direction> &types, Direction base)
{
    Direction strong = base, previous = base;
    for (std::size_t i = 0; i < types.size(); ++i) {
        Direction &t = types[i];
        if (t == QChar::DirNSM) t = previous;
        if (t == QChar::DirEN && strong == QChar::DirAL) t = QChar::DirAN;
        if (t == QChar::DirL || t == QChar::DirR || t == QChar::DirAL) strong = t;
        previous = t;
    }
    for (std::size_t i = 0; i < types.size(); ++i)
        if (types[i] == QChar::DirAL) types[i] = QChar::DirR;
    for (std::size_t i = 1; i + 1 < types.size(); ++i) {
        const Direction a = types[i - 1], b = types[i + 1];
        if (types[i] == QChar::DirES && a == QChar::DirEN && b == QChar::DirEN) types[i] = QChar::DirEN;
        if (types[i] == QChar::DirCS && a == b && (a == QChar::DirEN || a == QChar::DirAN)) types[i] = a;
    }
    for (std::size_t i = 0; i < types.size();) {
        if (types[i] != QChar::DirET) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < types.size() && types[end] == QChar::DirET) ++end;
        const bool number = (i > 0 && types[i - 1] == QChar::DirEN) || (end < types.size() && types[end] == QChar::DirEN);
        for (; i < end; ++i) types[i] = number ? QChar::DirEN : QChar::DirON;
    }
    strong = base;
    for (Direction &t : types) {
        if (t == QChar::DirL || t == QChar::DirR) strong = t;
        if (t == QChar::DirEN && strong == QChar::DirL) t = QChar::DirL;
    }
}

} // namespace

std::vector<uint8_t> bidiLevels(const QString &text, bool rightToLeft)
{
    bool any = rightToLeft;
    for (const QChar c : text) {
        if (any) break;
        if (c.unicode() < 0x590) continue;
        any = c.isSurrogate() ? true : c.direction() == QChar::DirR || c.direction() == QChar::DirAL || c.direction() == QChar::DirAN;
    }
    if (!any) return {};
    std::vector<Direction> types(std::size_t(text.size()));
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        types[std::size_t(i)] = pair ? QChar::direction(QChar::surrogateToUcs4(text[i], text[i + 1])) : text[i].direction();
        if (pair) {
            types[std::size_t(i) + 1] = types[std::size_t(i)];
            ++i;
        }
    }
    const Direction base = rightToLeft ? QChar::DirR : QChar::DirL;
    resolveWeak(types, base);
    const auto side = [&](std::size_t i) { return types[i] == QChar::DirL ? QChar::DirL : QChar::DirR; };
    const auto neutral = [&](std::size_t i) {
        return types[i] != QChar::DirL && types[i] != QChar::DirR && types[i] != QChar::DirEN && types[i] != QChar::DirAN;
    };
    std::vector<uint8_t> levels(types.size());
    const uint8_t embedding = rightToLeft ? 1 : 0;
    for (std::size_t i = 0; i < types.size();) {
        if (!neutral(i)) {
            const bool isNumber = types[i] == QChar::DirEN || types[i] == QChar::DirAN;
            levels[i] = types[i] == QChar::DirL ? (rightToLeft ? 2 : 0) : isNumber ? 2 : 1;
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < types.size() && neutral(end)) ++end;
        const Direction before = i > 0 ? side(i - 1) : base, after = end < types.size() ? side(end) : base;
        const Direction got = before == after ? before : base;
        for (; i < end; ++i) levels[i] = got == base ? embedding : got == QChar::DirL ? (rightToLeft ? 2 : 0) : 1;
    }
    return levels;
}

} // namespace layout
