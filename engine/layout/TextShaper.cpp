// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/TextShaper.h"

#include "engine/layout/Bidi.h"

#include <algorithm>

#include <QGlyphRun>
#include <QTextLayout>
#include <QTextOption>

namespace layout {

namespace {

bool isSpace(char16_t c)
{
    return c == ' ' || c == 0xA0 || c == '\t' || c == '\n';
}

} // namespace

bool TextShaper::isSimple(QStringView text, const Font &font)
{
    const FontFace &face = font.face();
    int previous = -1;
    for (const QChar c : text) {
        const int index = FontFace::tableIndex(c.unicode());
        if (index < 0 || !face.entry(index).glyph) return false;
        if (previous >= 0 && face.kerning(previous, index) == FontFace::ligature) return false;
        previous = index;
    }
    return true;
}

double TextShaper::simpleWidth(QStringView text, const Font &font, Spacing spacing)
{
    const FontFace &face = font.face();
    int64_t units = 0;
    int previous = -1;
    int spaces = 0;
    for (const QChar c : text) {
        const int index = std::max(0, FontFace::tableIndex(c.unicode()));
        units += face.entry(index).advance;
        if (previous >= 0) {
            const int16_t kerning = face.kerning(previous, index);
            if (kerning != FontFace::ligature) units += kerning;
        }
        if (isSpace(c.unicode())) ++spaces;
        previous = index;
    }
    return double(units) * font.scale() + spacing.letter * double(text.size()) + spacing.word * spaces;
}

double TextShaper::width(QStringView text, const Font &font, Spacing spacing, bool rightToLeft)
{
    if (text.isEmpty()) return 0;
    if (!rightToLeft && isSimple(text, font)) return simpleWidth(text, font, spacing);
    return shapeComplex(text, font, spacing, rightToLeft).width;
}

ShapedText TextShaper::shape(QStringView text, const Font &font, Spacing spacing, bool rightToLeft)
{
    if (!rightToLeft && isSimple(text, font)) return shapeSimple(text, font, spacing);
    return shapeComplex(text, font, spacing, rightToLeft);
}

ShapedText TextShaper::shapeSimple(QStringView text, const Font &font, Spacing spacing)
{
    const FontFace &face = font.face();
    ShapedText result;
    GlyphSpan span;
    span.face = &face;
    span.glyphs.reserve(std::size_t(text.size()));
    span.positions.reserve(std::size_t(text.size()));
    result.edges.reserve(std::size_t(text.size()) + 1);
    double x = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const int index = std::max(0, FontFace::tableIndex(text[i].unicode()));
        const auto &entry = face.entry(index);
        result.edges.push_back(float(x));
        span.glyphs.push_back(entry.glyph);
        span.positions.emplace_back(x, 0);
        double advance = entry.advance;
        if (i + 1 < text.size()) {
            const int next = FontFace::tableIndex(text[i + 1].unicode());
            const int16_t kerning = next >= 0 ? face.kerning(index, next) : int16_t(0);
            if (kerning != FontFace::ligature) advance += kerning;
        }
        x += advance * font.scale() + spacing.letter;
        if (isSpace(text[i].unicode())) x += spacing.word;
    }
    result.edges.push_back(float(x));
    result.width = x;
    result.spans.push_back(std::move(span));
    return result;
}

namespace {

// Where the page overrides the letters' own direction, Qt must be told.
bool goesAgainst(const QString &text, bool rightToLeft)
{
    return std::any_of(text.begin(), text.end(), [rightToLeft](QChar c) {
        const QChar::Direction own = c.direction();
        return rightToLeft ? own == QChar::DirL || own == QChar::DirEN || own == QChar::DirAN : own == QChar::DirR || own == QChar::DirAL;
    });
}

// One stretch that one face can show, laid out by Qt in pieces: it cuts lines at some 10,000 characters.
void shapeStretch(QString text, const FontFace &face, double scale, bool rightToLeft, double originX,
                  ShapedText &result, double &advance)
{
    const int from = goesAgainst(text, rightToLeft) ? 1 : 0;
    if (from) text.prepend(QChar(rightToLeft ? bidi::rlo : bidi::lro));
    QTextLayout shaped(text, face.shapingFont());
    QTextOption option;
    option.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setWrapMode(QTextOption::NoWrap);
    option.setUseDesignMetrics(true);
    shaped.setTextOption(option);
    shaped.setCacheEnabled(true);
    shaped.beginLayout();
    QTextLine line = shaped.createLine();
    line.setNumColumns(int(text.size()) + 1);
    shaped.endLayout();
    // Qt sets right-to-left lines against a right edge; what counts is where the text begins.
    const double width = line.naturalTextWidth();
    double left = 0;
    bool first = true;
    for (int i = from; i <= text.size(); ++i) {
        const double x = line.cursorToX(i);
        if (first || x < left) left = x;
        first = false;
    }
    for (const QGlyphRun &run : shaped.glyphRuns()) {
        GlyphSpan span;
        span.face = &face;
        const auto glyphs = run.glyphIndexes();
        const auto positions = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i) {
            span.glyphs.push_back(glyphs[i]);
            span.positions.emplace_back(originX + (positions[i].x() - left) * scale,
                                        (positions[i].y() - line.y() - line.ascent()) * scale);
        }
        result.spans.push_back(std::move(span));
    }
    for (int i = from; i < text.size(); ++i) result.edges.push_back(float(originX + (line.cursorToX(i) - left) * scale));
    advance = width * scale;
    result.width = originX + advance;
}

} // namespace

ShapedText TextShaper::shapeComplex(QStringView text, const Font &font, Spacing spacing, bool rightToLeft)
{
    constexpr double shapingSize = 64;
    // Asking Qt where a character stands takes time with the length of its line, so long text is shaped in stretches: cut
    // behind blanks and between ideographs, where no shape depends on the next one, and by force at the hard limit.
    constexpr qsizetype enough = 120, longest = 4000;
    struct Stretch {
        qsizetype from, to;
        const FontFace *face;
    };
    std::vector<Stretch> stretches;
    for (qsizetype i = 0; i < text.size();) {
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const char32_t c = pair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode();
        const qsizetype next = i + (pair ? 2 : 1);
        const auto category = QChar::category(c);
        const bool joins = category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining ||
                           category == QChar::Other_Format || c == 0x200D || c == 0xFE0F;
        if (!stretches.empty() && joins) {
            stretches.back().to = next;
        } else {
            const bool blank = c == ' ' || c == 0xA0;
            // Blanks are the font's own, whatever stands around them, and so is what shows nothing.
            const FontFace *face = category == QChar::Other_Format ? &font.face() : &font.faceFor(c);
            const qsizetype length = stretches.empty() ? 0 : i - stretches.back().from;
            const bool apart = i > 0 && (text[i - 1] == QLatin1Char(' ') || (c >= 0x2E80 && c < 0xA000 && text[i - 1].unicode() >= 0x2E80 && text[i - 1].unicode() < 0xA000));
            if (stretches.empty() || stretches.back().face != face || (length > enough && apart && !blank) || length > longest)
                stretches.push_back({i, next, face});
            else
                stretches.back().to = next;
        }
        i = next;
    }
    // Right-to-left text stands with its last stretch leftmost.
    ShapedText result;
    result.edges.assign(std::size_t(text.size()) + 1, 0);
    double x = 0;
    for (std::size_t n = 0; n < stretches.size(); ++n) {
        const Stretch &stretch = stretches[rightToLeft ? stretches.size() - 1 - n : n];
        const auto own = text.mid(stretch.from, stretch.to - stretch.from);
        if (stretch.face == &font.face() && std::all_of(own.begin(), own.end(), [](QChar c) { return c == QLatin1Char(' '); })) {
            for (qsizetype i = 0; i < own.size(); ++i) result.edges[std::size_t(stretch.from + i)] = float(x + font.spaceWidth() * double(rightToLeft ? own.size() - i : i));
            x += font.spaceWidth() * double(own.size());
            continue;
        }
        ShapedText part;
        double advance = 0;
        QString piece = text.mid(stretch.from, stretch.to - stretch.from).toString();
        for (QChar &c : piece)
            if (c == QLatin1Char('\t') || c == QLatin1Char('\n'))
                c = QLatin1Char(' ');
            else if (c == QChar(0xAD) || c == QChar(0x2060))
                c = QChar(0x200B); // fonts may give a soft hyphen a width
        shapeStretch(piece, *stretch.face, font.scaledSize() / shapingSize, rightToLeft, x, part, advance);
        for (std::size_t i = 0; i < part.edges.size(); ++i) result.edges[std::size_t(stretch.from) + i] = part.edges[i];
        for (auto &span : part.spans) result.spans.push_back(std::move(span));
        x += advance;
    }
    result.edges.back() = rightToLeft ? 0.f : float(x);
    result.width = x;
    if (!spacing.none() && !rightToLeft) {
        // Every character moves by what its predecessors got; glyphs move with the last character at or before them.
        const std::vector<float> before = result.edges;
        double added = 0;
        std::vector<double> shift(before.size());
        for (std::size_t i = 0; i < before.size(); ++i) {
            shift[i] = added;
            result.edges[i] += float(added);
            if (i < std::size_t(text.size())) {
                if (!text[qsizetype(i)].isLowSurrogate()) added += spacing.letter;
                if (isSpace(text[qsizetype(i)].unicode())) added += spacing.word;
            }
        }
        for (auto &span : result.spans)
            for (auto &position : span.positions) {
                const auto at = std::upper_bound(before.begin(), before.end(), float(position.x()) + 0.01f);
                const std::size_t index = at == before.begin() ? 0 : std::size_t(at - before.begin() - 1);
                position.rx() += shift[std::min(index, shift.size() - 1)];
            }
        result.width += added;
    }
    return result;
}

} // namespace layout
