// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/FontUnits.h"
#include "engine/layout/Unit.h"

#include <QFont>
#include <QHash>
#include <QRawFont>
#include <QStringList>
#include <array>
#include <memory>
#include <vector>

namespace layout {

/// One font file in one style, at no size: all figures are font units.
///
/// Advances are linear: they are taken at 64 pixels without hinting, where a 64th of a pixel, Qt's own step, is no coarser
/// than the fonts' units, and scaled. Glyphs and kerning of the usual characters stand in tables that fill as characters
/// come, so that measuring a word costs a few array reads a character.
class FontFace
{
public:
    FontFace(const QString &family, int weight, bool italic);

    const QString &family() const { return mFamily; }
    int unitsPerEm() const { return mUnitsPerEm; }
    int ascent() const { return mAscent; }
    int descent() const { return mDescent; }
    int lineGap() const { return mLineGap; }
    int xHeight() const { return mXHeight; }
    /// Whether the font doesn't say it, so that it was taken from a letter.
    bool isXHeightDrawn() const { return mXHeightIsDrawn; }
    int averageWidth() const { return mAverageWidth; }
    /// Of the box around all glyphs.
    int boxWidth() const { return mBoxWidth; }
    int underlinePosition() const { return mUnderlinePosition; }
    int underlineThickness() const { return mUnderlineThickness; }
    const QRawFont &raw() const { return mRaw; }
    /// The font at a size in pixels for painting.
    QRawFont rawAt(double pixels) const;
    const QFont &shapingFont() const { return mFont; }

    /// 0 for a character that the font lacks.
    uint32_t glyph(char32_t character) const;
    /// Font units.
    double advance(uint32_t glyph) const;

    /// Characters of the tables: -1 for one that takes the long way.
    static int tableIndex(char16_t character);
    struct Entry {
        uint16_t glyph = 0;
        int16_t advance = 0; ///< font units
        bool known = false;
    };
    const Entry &entry(int tableIndex) const
    {
        const Entry &e = mEntries[std::size_t(tableIndex)];
        return e.known ? e : learn(tableIndex);
    }
    static constexpr int16_t ligature = INT16_MAX;
    /// What is added between two characters, font units; `ligature` if they don't stay two plain glyphs.
    int16_t kerning(int first, int second) const
    {
        const Row &row = mRows[std::size_t(first)];
        if (row && (*row)[std::size_t(second)] != unknown) return (*row)[std::size_t(second)];
        return learnPair(first, second);
    }

private:
    static constexpr int tableSize = 448;
    static constexpr int16_t unknown = INT16_MIN;
    using Row = std::unique_ptr<std::array<int16_t, tableSize>>;
    void readTables();
    const Entry &learn(int index) const;
    int16_t learnPair(int first, int second) const;
    static char16_t tableCharacter(int index);

    QString mFamily;
    QFont mFont;
    QRawFont mRaw;
    int mUnitsPerEm = 2048, mAscent = 0, mDescent = 0, mLineGap = 0, mXHeight = 0, mAverageWidth = 0, mBoxWidth = 0;
    bool mXHeightIsDrawn = false;
    int mUnderlinePosition = 0, mUnderlineThickness = 0;
    bool mKerns = true;
    mutable std::array<Entry, tableSize> mEntries{};
    mutable std::array<Row, tableSize> mRows{};
    mutable QHash<uint32_t, double> mAdvances;
    mutable QHash<int, QRawFont> mSized;
};

/// A face at a size, with the figures that layout asks for. Ascent, descent and line gap are rounded to whole pixels one
/// by one, as browsers do.
class Font
{
public:
    Font(const FontFace &face, double pixels, std::vector<const FontFace *> rest);

    const FontFace &face() const { return mFace; }
    double size() const { return mSize; }
    double scaledSize() const { return mScaledSize; } ///< what advances are taken at
    double scale() const { return mScale; }           ///< pixels a font unit
    Unit ascent() const { return mAscent; }
    Unit descent() const { return mDescent; }
    Unit height() const { return mAscent + mDescent; }
    Unit lineSpacing() const { return mAscent + mDescent + mLineGap; }
    double xHeight() const;
    double zeroWidth() const { return mFace.advance(mFace.glyph('0')) * mScale; }
    double spaceWidth() const { return mFace.advance(mFace.glyph(' ')) * mScale; }
    /// The first face of the family list, then of the machine, that has the character; the font's own if none has.
    const FontFace &faceFor(char32_t character) const;

private:
    const FontFace &mFace;
    std::vector<const FontFace *> mRest; // the list's other families
    double mSize;
    double mScaledSize;
    double mScale;
    Unit mAscent, mDescent, mLineGap;
    mutable QHash<char32_t, const FontFace *> mFallback;
};

/// The fonts of the process. Families are matched as the browser that pages are compared with does: an installed family
/// counts, the metric twins of Arial, Times and Courier count, everything else falls to the serif default.
class FontCache
{
public:
    static FontCache &instance();

    /// `families` in order of wish, generic names included; `pixels` the size; `weight` 1 to 1000.
    const Font &font(const QStringList &families, double pixels, int weight, bool italic);
    const FontFace &face(const QString &family, int weight, bool italic);
    /// The installed family that answers to the name; "" for none.
    QString resolveFamily(const QString &name) const;
    /// A face of the machine that has the character. COMPAT: the regular one, whatever the text's weight and slant: painting
    /// makes up for them.
    const FontFace *fallback(char32_t character);

private:
    FontCache();
    QHash<QString, QString> mInstalled; // folded name to name
    QHash<QString, std::shared_ptr<FontFace>> mFaces;
    QHash<QString, std::shared_ptr<Font>> mFonts;
    QHash<char32_t, QString> mFallbackFamilies;
};

/// What `ex` and `ch` are in that font.
css::FontUnits measureFont(const css::FontGroup &font, double size);

} // namespace layout
