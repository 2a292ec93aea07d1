// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/BoxStyle.h"
#include "engine/layout/TableLayout.h"

#include <memory>
#include <vector>

namespace layout {

/// The areas of the pages for content, stacked one below the other, page 0 at 0. The first one, left and right ones may
/// have heights of their own.
struct PageSpace {
    Unit first, left, right;

    /// A first page is a right one.
    Unit height(int page) const { return page <= 0 ? first : page % 2 ? left : right; }
    Unit top(int page) const;
    Unit bottom(int page) const { return top(page) + height(page); }
    /// The page of what starts at `y`.
    int pageAt(Unit y) const;
    /// What fits on any page.
    Unit least() const { return std::min(first, std::min(left, right)); }
};

enum class ForcedBreak : uint8_t { None, Any, Left, Right };

/// How bad a break is. What is asked for more than once is worse.
namespace breakcost {
constexpr uint8_t orphans = 2; ///< leaves too few lines of a paragraph on one side
constexpr uint8_t between = 4; ///< the boxes around it avoid one, or it leaves a table's head alone
constexpr uint8_t inside = 8;  ///< some box around it avoids breaks
constexpr uint8_t edge = 16;   ///< leaves nothing but a box's empty end
constexpr uint8_t floats = 32; ///< goes through a float that can't be divided
} // namespace breakcost

/// What isn't divided: a line, an image, a row. Heights count from the flow's origin, borders and paddings that open in
/// front of it or close behind it included, margins left out.
struct Chunk {
    Unit top, bottom;
    Unit reserved;      ///< what heads of tables take at the top of a page that starts with it
    Unit margin;        ///< of the box that starts with it: stays at a forced break
    int32_t parallel = -1; ///< index of what stands side by side in it, and can be divided where it is higher than a page
    uint8_t cost = 0;   ///< of a break in front of it
    ForcedBreak forced = ForcedBreak::None;
    bool loose = false; ///< empty room that may be cut anywhere
    // What came out of it
    bool broken = false; ///< starts a page
    Unit shift, growth;  ///< how far it is moved down; how much longer it became
};

struct PageFlow;

/// A box in flow, and the chunks from its start to its end.
struct FlowSpan {
    enum class Place : uint8_t { Root, InFlow, Own }; ///< Own: its `gap` counts from the parent's border box
    BlockBox *box = nullptr;
    Place place = Place::Root;
    Unit top;
    uint32_t first = 0, end = 0;
    int32_t parent = -1, previous = -1; ///< spans; `previous` is the one in flow in front
    uint32_t lines = 0;                 ///< where its lines' chunks stand in `lineChunks`
    int32_t table = -1;                 ///< index into `tables`
};

/// A float, or a positioned box: a flow of its own beside the one that it stands in.
struct SideBox {
    BlockBox *box = nullptr;
    uint32_t span = 0; ///< of the box from which its place counts
    Unit top, bottom;
    bool solid = false; ///< can't be divided
    std::unique_ptr<PageFlow> flow;
};

/// Cells of a row, or flexible or grid items beside each other.
struct ParallelBoxes {
    struct Member {
        BlockBox *box = nullptr;
        Unit top, bottom;   ///< in the flow
        uint32_t chunk = 0; ///< the one that it starts with: a cell over several rows starts above
        std::unique_ptr<PageFlow> flow;
    };
    std::vector<Member> members;
    uint32_t span = 0; ///< of the table or container
    Unit bottom;       ///< of the row; its chunk may end below, with what closes around it
    bool isRow = false;
    bool isColumns = false; ///< one box with columns, which are cut anew
    bool divided = false;
    ColumnSet columns;
};

struct FlowTable {
    TableBox *box = nullptr;
    std::vector<uint32_t> rowChunks;
    Unit reserved;         ///< by tables around it
    uint32_t headRows = 0; ///< how many are repeated
};

/// The content of one formatting context as a sequence of chunks, with what stands beside it.
struct PageFlow {
    std::vector<Chunk> chunks;
    std::vector<FlowSpan> spans; ///< parents before children
    std::vector<uint32_t> lineChunks;
    std::vector<SideBox> floats, positioned;
    std::vector<BlockBox *> fixedBoxes;
    std::vector<ParallelBoxes> parallels;
    std::vector<FlowTable> tables;
    Unit base;            ///< where it was put: what is moved nowhere has this shift
    bool movesRoot = true; ///< a push in front of the first chunk moves the box itself, not its content
    bool isDone = false;

    Unit shiftAt(Unit y) const;
    Unit topShift(const FlowSpan &span) const;
    Unit bottomShift(const FlowSpan &span) const;
    /// Where its content, floats included, ends on the pages; and where before; without empty room at the end.
    Unit contentEnd() const;
    Unit contentBottom() const;
};

/// Takes a laid-out box apart into chunks.
class FlowCollector
{
public:
    FlowCollector(PageFlow &flow, const PageSpace &space) : mFlow(flow), mSpace(space) {}
    /// `top` is what the flow's heights count from; heads of tables around it take `reserved` of each page.
    void run(BlockBox &root, Unit top, Unit reserved);

private:
    struct Opened {
        uint32_t span;
        std::size_t chunks, floats;
        std::optional<Unit> pendingTop;
        Unit frame;
        int32_t insideFirst;
    };
    uint32_t block(BlockBox &box, Unit top, FlowSpan::Place place, int32_t parent, int32_t previous);
    Opened open(BlockBox &box, Unit top, FlowSpan::Place place, int32_t parent, int32_t previous);
    void close(BlockBox &box, const Opened &opened);
    void children(BlockBox &box, uint32_t span);
    void lines(BlockBox &box, uint32_t span);
    void table(TableBox &table, uint32_t span);
    void rows(TableBox &table, uint32_t span, uint32_t index);
    void items(BlockBox &box, uint32_t span);
    void columns(BlockBox &box, uint32_t span);
    SideBox sideBox(BlockBox &box, uint32_t span, Unit parentTop) const;
    void addFloat(BlockBox &box, uint32_t span, Unit parentTop);
    void addPositioned(BlockBox &box, uint32_t span, Unit top);
    Chunk &emitChunk(Unit top, Unit bottom, uint8_t cost = 0);
    void emitRoom(Unit top);
    bool isInside() const { return mInsideFirst >= 0 && int32_t(mFlow.chunks.size()) > mInsideFirst; }
    bool isSolid(const BlockBox &box) const;

    PageFlow &mFlow;
    const PageSpace &mSpace;
    Unit mReserved;
    // What waits for the next chunk
    std::optional<Unit> mPendingTop;
    Unit mFrame; ///< borders and paddings that opened since then
    Unit mMargin;
    ForcedBreak mForced = ForcedBreak::None;
    bool mAvoid = false;
    int32_t mInsideFirst = -1; ///< the first chunk of the outermost box that avoids breaks
};

} // namespace layout
