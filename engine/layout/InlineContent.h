// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/Box.h"
#include "engine/layout/TextShaper.h"

namespace layout {

enum class ItemType : uint8_t { Text, Open, Close, Atomic, Float, Positioned, Break, Block };

/// A piece of a block's inline content, in order: a stretch of text of one box and direction, the start or end of an
/// inline element, or a box that stands among them. `Break` is a forced line break; `Block` a block inside an inline
/// element, which gets a line of its own.
struct InlineItem {
    ItemType type;
    uint8_t level = 0;
    bool simple = false;
    Box *box = nullptr;
    uint32_t start = 0, end = 0; ///< in the collapsed text
    int32_t shaped = -1;         ///< index of its shaping, for text that isn't simple
    float tail = 0;              ///< kerning with the first character of the text behind it, pixels
};

enum class FragmentType : uint8_t { Text, Box, Atomic };

/// Where a justified line grows.
inline bool isJustified(QChar c) { return c == QLatin1Char(' ') || c == QChar(0xA0); }

/// What an item shows on one line. `y` counts from the line's top, `x` from the block's border box. An inline element's
/// fragment stands in front of those of its content.
struct Fragment {
    Box *box = nullptr;
    uint32_t start = 0, end = 0; ///< collapsed text
    Unit x, y, width, height;
    float wordSpacing = 0; ///< what justification adds to each `isJustified` unit, pixels
    uint32_t item = 0;
    FragmentType type = FragmentType::Text;
    uint8_t level = 0;
    bool first : 1 = false; ///< has the element's left edge
    bool last : 1 = false;
    bool hyphen : 1 = false;
    bool ellipsis : 1 = false;
};

struct Line {
    Unit top;      ///< from the block's border box
    Unit height;
    Unit baseline; ///< from the line's top
    Unit left, width; ///< of its content
    uint32_t fragment = 0, fragmentCount = 0;
    uint32_t start = 0, end = 0; ///< collapsed text, hanging blanks included
    bool forced = false;         ///< ends with a line break
    BlockBox *block = nullptr;   ///< the block of a block's line
    Unit bottom() const { return top + height; }
};

/// The inline content of a block: its text with white space collapsed, the items that make it up, and the lines they were
/// broken into.
class InlineContent
{
public:
    QString text;
    std::vector<InlineItem> items;
    std::vector<Fragment> fragments;
    std::vector<Line> lines;
    std::vector<ShapedText> shapes;
    bool itemsValid = false;
    bool hasContent = false; ///< makes at least one line
    bool hasBlocks = false, hasFloats = false;
    bool bidi = false;
    Unit firstBaseline, lastBaseline;

    /// The line that shows the collapsed offset; null without lines. Behind a wrapped line's last blank it is the next.
    const Line *lineOf(uint32_t offset) const;
    /// The line at a height in the block's coordinates, the nearest beyond the ends.
    const Line *lineAt(Unit y) const;
    uint32_t indexOf(const Line &line) const { return uint32_t(&line - lines.data()); }
    const Fragment *begin(const Line &line) const { return fragments.data() + line.fragment; }
    const Fragment *end(const Line &line) const { return fragments.data() + line.fragment + line.fragmentCount; }
};

/// Collapsed text of a node against what the node holds. Both directions walk the one node.
class TextMap
{
public:
    /// The offset in the block's collapsed text of an offset in the node's data, clamped to what is shown.
    static uint32_t collapsed(const TextBox &box, uint32_t offset);
    /// The node's offset in front of the collapsed offset.
    static uint32_t source(const TextBox &box, uint32_t collapsed);
    struct Step {
        QChar shown;
        bool keeps = false; ///< the character is in the collapsed text
    };
};

/// Gathers text and items of a block's inline children.
class InlineCollector
{
public:
    explicit InlineCollector(BlockBox &block);
    void run();

private:
    void addText(TextBox &box);
    void addBox(Box &box);
    void open(InlineBox &box);
    void close(InlineBox &box);
    void dropTrailingBlank();
    void splitByDirection();
    void kernAcross();
    void classify();

    BlockBox &mBlock;
    InlineContent &mContent;
    bool mAfterBlank = true; // a collapsible blank here would vanish
};

/// The font of a box's style.
const Font &fontOf(const css::ComputedStyle &style);
Spacing spacingOf(const css::ComputedStyle &style);
/// `line-height` in units; a fixed one, or the font's own.
Unit lineHeightOf(const css::ComputedStyle &style);

} // namespace layout
