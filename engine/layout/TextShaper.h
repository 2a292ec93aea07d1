// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/FontCache.h"

#include <QString>

namespace layout {

/// Glyphs of one face that stand behind each other.
struct GlyphSpan {
    const FontFace *face = nullptr;
    std::vector<uint32_t> glyphs;
    std::vector<QPointF> positions; ///< font-size pixels, from the run's left edge, baseline 0
};

/// Text that is set in one font and one direction, as it stands on a line.
struct ShapedText {
    std::vector<GlyphSpan> spans;
    /// For each UTF-16 unit the distance of its leading edge from the run's left edge, and one more for the end: rising
    /// for text from left to right, falling for the other.
    std::vector<float> edges;
    double width = 0;
};

struct Spacing {
    double letter = 0; ///< pixels behind each character
    double word = 0;   ///< pixels more for each space
    bool none() const { return letter == 0 && word == 0; }
};

/// Measures and shapes text. Plain text (Latin and the usual punctuation, all in the font's first face) is measured from
/// the face's tables; all other text is shaped by Qt at 64 pixels and scaled.
class TextShaper
{
public:
    /// Whether the text needs no more than the tables.
    static bool isSimple(QStringView text, const Font &font);
    /// The width in pixels of simple text. The advance of the last character has no kerning behind it.
    static double simpleWidth(QStringView text, const Font &font, Spacing spacing);
    static double width(QStringView text, const Font &font, Spacing spacing, bool rightToLeft = false);
    static ShapedText shape(QStringView text, const Font &font, Spacing spacing, bool rightToLeft = false);

private:
    static ShapedText shapeSimple(QStringView text, const Font &font, Spacing spacing);
    static ShapedText shapeComplex(QStringView text, const Font &font, Spacing spacing, bool rightToLeft);
};

} // namespace layout
