// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Ref.h"
#include "base/SumTree.h"
#include "engine/layout/StyleSource.h"
#include "engine/dom/Element.h"
#include "engine/layout/Unit.h"

#include <memory>
#include <optional>
#include <vector>

namespace layout {

/// Boxes: what layout makes of nodes. They stand in a tree of their own, apart from the nodes, with anonymous boxes where
/// CSS asks for them; a node's `layoutSlot` points to its box. Positions are relative to the parent's border box.
///
/// A block's children in flow stand in a sum tree by height. A child keeps only the gap in front of it and its height;
/// where it stands is a sum, so that a block that grows writes to nothing that follows.

class BlockBox;
class InlineContent;


enum class BoxKind : uint8_t { Text, LineBreak, Inline, Block, Replaced, Table, TableSection, TableRow, TableCell, TableColumn };
/// How a block places its children: in flow, or as items of its own (CSS Flexible Box Layout 1, CSS Grid Layout 1).
enum class ChildLayout : uint8_t { Flow, Flex, Grid };
enum class Pseudo : uint8_t { None, Before, After, Marker };

class Box
{
public:
    Box(BoxKind kind, dom::Node *node, StyleRef style) : mNode(node), mStyle(std::move(style)), mKind(kind) {}
    virtual ~Box();
    Box(const Box &) = delete;
    Box &operator=(const Box &) = delete;

    BoxKind kind() const { return mKind; }
    /// Null for an anonymous box; the element for a box that it generates before or after its content.
    dom::Node *node() const { return mNode; }
    dom::Element *element() const { return mNode ? mNode->asElement() : nullptr; }
    /// An anonymous box has its parent's style, of which only what is inherited counts.
    const css::ComputedStyle &style() const { return *mStyle; }
    const StyleRef &styleRef() const { return mStyle; }
    void setStyle(StyleRef style) { mStyle = std::move(style); }
    bool isAnonymous() const { return anonymous; }

    bool isText() const { return mKind == BoxKind::Text; }
    bool isInline() const { return mKind == BoxKind::Inline; }
    bool isBlockBox() const { return mKind >= BoxKind::Block; }
    bool isTablePart() const { return mKind >= BoxKind::TableSection; }
    bool isReplaced() const { return mKind == BoxKind::Replaced; }
    bool isTable() const { return mKind == BoxKind::Table; }
    bool isCell() const { return mKind == BoxKind::TableCell; }
    /// Takes part in a line: text, an inline element, an inline block, an image.
    bool isInlineLevel() const { return inlineLevel; }
    bool isOutOfFlow() const { return floating || positioned; }
    BlockBox *asBlock();
    const BlockBox *asBlock() const;

    Box *parent() const { return mParent; }
    Box *next() const { return mNext; }
    Box *previous() const { return mPrevious; }
    Box *firstChild() const { return mFirst; }
    Box *lastChild() const { return mLast; }
    /// The nearest block box above.
    BlockBox *blockParent() const;

    /// Links a child without an owner in front of `before`.
    void insertChild(Box *child, Box *before);
    void unlinkChild(Box *child);

    // What the box is, set when it is built.
    bool anonymous : 1 = false;
    bool inlineLevel : 1 = false;
    bool floating : 1 = false;
    bool positioned : 1 = false; ///< absolute or fixed
    bool formattingRoot : 1 = false; ///< a block formatting context of its own
    bool styledRoot : 1 = false;     ///< one by its own style, wherever it stands
    bool item : 1 = false;           ///< in flow in a flex or grid container
    bool heightForced : 1 = false;   ///< whoever placed it said its height: see `ItemData`
    // What is to be done.
    bool needsLayout : 1 = true;
    bool childNeedsLayout : 1 = false;
    bool flowValid : 1 = false; ///< the memo of collapsed margins holds
    bool widthsValid : 1 = false; ///< the memo of preferred widths holds
    bool moved : 1 = false; ///< transformed or sticky: shown elsewhere than where it is laid out
    bool inSumTree : 1 = false;
    bool doomed : 1 = false;
    bool unseen : 1 = false; ///< an anonymous block of what closed details hold: laid out, but without height and never shown
    Pseudo pseudo = Pseudo::None;

protected:
    friend class LayoutTree;
    dom::Node *mNode;
    StyleRef mStyle;
    Box *mParent = nullptr, *mNext = nullptr, *mPrevious = nullptr;
    Box *mFirst = nullptr, *mLast = nullptr;
    BoxKind mKind;
};

/// A text node, or generated text, within the inline content of a block.
class TextBox final : public Box
{
public:
    TextBox(dom::Node *node, StyleRef style) : Box(BoxKind::Text, node, std::move(style)) { inlineLevel = true; }
    /// As the node holds it.
    const QString &source() const;
    QString generated; ///< of a box without a node
    uint32_t start = 0, end = 0; ///< in the block's collapsed text
    bool startsCollapsed = false; ///< a blank stood in front of it
    bool wasBlank = false;        ///< when its box was made
};

class LineBreakBox final : public Box
{
public:
    LineBreakBox(dom::Node *node, StyleRef style) : Box(BoxKind::LineBreak, node, std::move(style)) { inlineLevel = true; }
    uint32_t start = 0;
};

class InlineBox final : public Box
{
public:
    InlineBox(dom::Node *node, StyleRef style) : Box(BoxKind::Inline, node, std::move(style)) { inlineLevel = true; }
    uint32_t start = 0, end = 0;
    uint32_t openItem = 0, closeItem = 0;
};

/// What a parent sums over its children in flow.
struct FlowSum {
    int32_t height = 0;      ///< gaps and border boxes
    int32_t floatBottom = INT32_MIN / 4; ///< the lowest float, from the first child's top
    int32_t bottom = 0;      ///< the lowest content that sticks out, from the first child's top
    int32_t right = 0;       ///< the rightmost content, from the parent's border box
    int32_t up = 0, down = 0; ///< how far anything paints above or below its own child
    uint32_t items = 0;
    uint32_t breaks = 0; ///< places where a column must end
    FlowSum &operator+=(const FlowSum &o)
    {
        floatBottom = std::max(floatBottom, sum(height, o.floatBottom));
        bottom = std::max(bottom, sum(height, o.bottom));
        right = std::max(right, o.right);
        up = std::max(up, o.up);
        down = std::max(down, o.down);
        height = sum(height, o.height);
        items += o.items;
        breaks += o.breaks;
        return *this;
    }
    /// Stays within what a page can measure.
    static int32_t sum(int32_t a, int32_t b) { return Unit::fromRaw(int64_t(a) + b).raw; }
};

struct FlowTraits {
    using Item = BlockBox;
    using Sum = FlowSum;
    static base::SumTreeHook<BlockBox, FlowSum> &hook(BlockBox &box);
    static FlowSum value(const BlockBox &box);
};

/// Preferred widths of a border box without its margins.
struct PreferredWidths {
    Unit min, max;
};

/// What a block's children left behind when they were laid out: where a relayout of the last ones begins.
struct FlowEnd {
    MarginStrut strut; ///< margins that wait below the last child
    Unit lead;         ///< the sum of children less the end of the content
    bool atTop = true; ///< nothing had a height yet
};

struct MarkerData {
    StyleRef style; ///< of `::marker`; null where no rule speaks of it: the item's
    QString text;
    Unit x, baseline, width; ///< from the list item's border box
    bool inside = false;
    bool image = false;
    Size imageSize;
};

/// What a flex or grid container keeps of an item, and a containing block of a positioned box.
struct ItemData {
    Unit forcedHeight;           ///< of the border box, where `heightForced`
    bool forcedDefinite = false; ///< percentages below may count on it
    Unit natural;                ///< border-box height that its content asks for
    // The last measurement: what height it took by itself at that width.
    bool measured = false;
    Unit measuredWidth, measuredHeight, measuredNatural;
    Unit areaWidth, areaHeight; ///< of the containing block, when it was measured
    // Where a positioned child without offsets stands: in that room, at the part of it that is free.
    bool aligned = false;
    Size room;
    double alignX = 0, alignY = 0;
};

/// A stretch of what was laid out in one long strip, and where it is shown: a column, or what spans all of them.
struct ColumnPiece {
    Unit from, to;    ///< in the strip: the container's own coordinates before it was cut
    Point shift;      ///< from there to where it is shown
    Unit left, right; ///< of the column, from the container's border box
    bool spans = false;
    bool startsRow = false; ///< the first of columns side by side
    Unit rowBottom;         ///< where its row ends, as shown
    friend bool operator==(const ColumnPiece &, const ColumnPiece &) = default;
};

/// The columns of a container (CSS Multi-column Layout 1).
struct ColumnSet {
    Unit width, gap;
    int count = 1;
    std::vector<ColumnPiece> pieces; ///< in the order of the strip
    /// The piece that shows `y` of the strip; beyond the ends the first or the last.
    const ColumnPiece &pieceAt(Unit y) const;
    /// The piece nearest to a point of the container.
    const ColumnPiece &pieceNear(Point point) const;
};

/// A box with a border box of its own: a block, a replaced element, a table and its parts.
class BlockBox : public Box
{
public:
    BlockBox(BoxKind kind, dom::Node *node, StyleRef style) : Box(kind, node, std::move(style)) {}
    ~BlockBox() override;

    // The border box. `gap` is the distance from the end of what stands in front, for a child in a sum tree; else `gap`
    // is the distance from the parent's border box.
    Unit x, gap, width, height;
    Edges border, padding;
    MarginStrut topStrut, bottomStrut;
    bool collapsesThrough = false;
    bool hasLines = false;       ///< inline content with at least one line
    bool isListItem = false;
    bool hasOutOfFlow = false;   ///< had a child that floats or is positioned
    bool clips = false;          ///< overflow isn't visible
    bool enteredWithFloats = false;
    bool subtreeHasFloats = false; ///< of this formatting context
    bool dependsOnHeight = false; ///< some percentage below asks for the containing block's height
    bool quirkyTop = false, quirkyBottom = false;
    bool layoutOnce = false;
    ChildLayout mode = ChildLayout::Flow;
    Unit shift;                  ///< a cell's content stands that much lower
    Unit linesShift;             ///< the shift that is in the places of its lines
    Unit naturalHeight = Unit::fromRaw(-1); ///< a cell's height before its row stretched it
    Unit marginLeft, marginRight, marginTop, marginBottom;
    Point staticPosition;        ///< of a positioned box: where it would stand in its parent
    Unit layoutWidth = Unit::fromRaw(-1); ///< containing block width of the last layout
    Unit layoutLeft; ///< where its container's content began at the last layout in flow
    Unit layoutHeight = Unit::fromRaw(-1); ///< definite containing block height of the last layout, -1 for none
    // How far content sticks out of the border box.
    Unit overflowBottom, overflowRight; ///< layout overflow: reach from the border box's top left corner
    Unit paintUp, paintDown;            ///< painting overflow above the top and below the bottom
    Unit floatReach = Unit::fromRaw(INT32_MIN / 4); ///< lowest float from the border box's top
    PreferredWidths preferred;
    FlowEnd flowEnd;
    uint32_t forcedBreaks = 0; ///< in front of it, in it and behind it

    std::unique_ptr<InlineContent> inlineContent;
    base::SumTree<FlowTraits> flow;
    struct Rare {
        std::vector<BlockBox *> positioned; ///< boxes whose containing block this is
        std::vector<BlockBox *> dirty;      ///< children that need layout
        std::unique_ptr<MarkerData> marker;
        QString picture; ///< address of the image that generated content shows
        std::unique_ptr<ItemData> item;
        std::optional<Unit> firstBaseline, lastBaseline; ///< of a flex or grid container
        std::unique_ptr<ColumnSet> columns;
        QPoint scroll;
        QPointF viewScroll; ///< of the root: what sticky boxes stick to
        bool allDirty = false;
    };
    std::unique_ptr<Rare> rare;
    Rare &rareData()
    {
        if (!rare) rare = std::make_unique<Rare>();
        return *rare;
    }

    ItemData &itemData()
    {
        Rare &data = rareData();
        if (!data.item) data.item = std::make_unique<ItemData>();
        return *data.item;
    }
    bool hasItems() const { return mode != ChildLayout::Flow; }
    bool hasInlineChildren() const { return inlineContent != nullptr; }
    Edges frame() const { return border + padding; }
    Unit contentWidth() const { return std::max(Unit(), width - border.horizontal() - padding.horizontal()); }
    Unit contentTop() const { return border.top + padding.top + shift; }
    Unit contentLeft() const { return border.left + padding.left; }
    /// The top of the border box in the block parent's coordinates, relative positioning left out.
    Unit top() const;
    Point position() const { return {x, top()}; }
    /// The child in flow whose reach first passes `y` (in this box's coordinates), and where it stands.
    BlockBox *childAt(Unit y, Unit *childTop) const;
    BlockBox *nextInFlow() const;
    BlockBox *previousInFlow() const;
    /// The block box against whose border box this one is positioned.
    BlockBox *container() const;
    /// What relative positioning moves it by.
    Point relativeOffset() const;
    /// That, and what stickiness adds where the page is scrolled to now. Layout never asks for it.
    Point shownOffset() const;
    QString picture() const { return rare ? rare->picture : QString(); }
    const ColumnSet *columns() const { return rare ? rare->columns.get() : nullptr; }
    BlockBox *containingBlock() const; ///< of an absolutely positioned one

private:
    friend struct FlowTraits;
    base::SumTreeHook<BlockBox, FlowSum> mHook;
};

inline BlockBox *Box::asBlock() { return isBlockBox() ? static_cast<BlockBox *>(this) : nullptr; }
inline const BlockBox *Box::asBlock() const { return isBlockBox() ? static_cast<const BlockBox *>(this) : nullptr; }
inline base::SumTreeHook<BlockBox, FlowSum> &FlowTraits::hook(BlockBox &box) { return box.mHook; }
inline FlowSum FlowTraits::value(const BlockBox &box)
{
    FlowSum sum;
    sum.height = (box.gap + box.height).raw;
    sum.floatBottom = (box.gap + box.floatReach).raw;
    sum.bottom = (box.gap + box.overflowBottom).raw;
    sum.right = (box.x + box.overflowRight).raw;
    sum.up = box.paintUp.raw;
    sum.down = box.paintDown.raw;
    sum.items = 1;
    sum.breaks = box.forcedBreaks;
    return sum;
}

inline Box *boxOf(const dom::Node &node) { return static_cast<Box *>(node.layoutSlot); }

} // namespace layout
