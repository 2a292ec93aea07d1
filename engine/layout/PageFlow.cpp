// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/PageFlow.h"

#include "engine/layout/ItemLayout.h"

namespace layout {

namespace {

constexpr int mostPages = 50000;
// A margin within a box, or the spacing below a row: nothing that would be worth cutting.
constexpr Unit smallRest = Unit::px(20);

css::PageBreak breakBefore(const BlockBox &box)
{
    return box.anonymous ? css::PageBreak::Auto : box.style().rare().pageBreakBefore;
}

css::PageBreak breakAfter(const BlockBox &box)
{
    return box.anonymous ? css::PageBreak::Auto : box.style().rare().pageBreakAfter;
}

bool avoidsInside(const BlockBox &box)
{
    return !box.anonymous && box.style().rare().pageBreakInside == css::PageBreak::Avoid;
}

void meet(css::PageBreak value, ForcedBreak &forced, bool &avoid)
{
    switch (value) {
    case css::PageBreak::Always:
        if (forced == ForcedBreak::None) forced = ForcedBreak::Any;
        break;
    case css::PageBreak::Left: forced = ForcedBreak::Left; break;
    case css::PageBreak::Right: forced = ForcedBreak::Right; break;
    case css::PageBreak::Avoid: avoid = true; break;
    case css::PageBreak::Column: // of the columns, not of the sheets
    case css::PageBreak::Auto: break;
    }
}

} // namespace

// ---- Pages ----

Unit PageSpace::top(int page) const
{
    if (page <= 0) return {};
    const int64_t later = page - 1;
    return Unit::fromRaw(first.raw + (later + 1) / 2 * int64_t(left.raw) + later / 2 * int64_t(right.raw));
}

int PageSpace::pageAt(Unit y) const
{
    if (y < first) return 0;
    const int64_t pair = std::max<int64_t>(1, int64_t(left.raw) + right.raw), behind = y.raw - first.raw;
    const int64_t pages = 1 + behind / pair * 2 + (behind % pair >= left.raw ? 1 : 0);
    return int(std::min<int64_t>(pages, mostPages));
}

// ---- The flow ----

Unit PageFlow::shiftAt(Unit y) const
{
    const auto behind = std::upper_bound(chunks.begin(), chunks.end(), y, [](Unit at, const Chunk &c) { return at < c.top; });
    if (behind == chunks.begin()) return base;
    const Chunk &chunk = *std::prev(behind);
    return y >= chunk.bottom ? chunk.shift + chunk.growth : chunk.shift;
}

Unit PageFlow::topShift(const FlowSpan &span) const
{
    if (span.place == FlowSpan::Place::Root && !movesRoot) return base;
    if (span.first < span.end) return chunks[span.first].shift;
    // An empty box goes with what follows it within the same parent.
    if (span.parent >= 0 && span.first < spans[std::size_t(span.parent)].end) return chunks[span.first].shift;
    return span.first ? chunks[span.first - 1].shift + chunks[span.first - 1].growth : base;
}

Unit PageFlow::bottomShift(const FlowSpan &span) const
{
    return span.first < span.end ? chunks[span.end - 1].shift + chunks[span.end - 1].growth : topShift(span);
}

Unit PageFlow::contentEnd() const
{
    Unit end = base;
    for (const Chunk &chunk : chunks)
        if (!chunk.loose) end = std::max(end, chunk.bottom + chunk.shift + chunk.growth);
    for (const SideBox &side : floats) end = std::max(end, side.flow->isDone ? side.flow->contentEnd() : side.bottom + side.flow->base);
    return end;
}

Unit PageFlow::contentBottom() const
{
    Unit bottom;
    for (const Chunk &chunk : chunks)
        if (!chunk.loose) bottom = std::max(bottom, chunk.bottom);
    for (const SideBox &side : floats) bottom = std::max(bottom, side.bottom);
    return bottom;
}

// ---- Gathering ----

void FlowCollector::run(BlockBox &root, Unit top, Unit reserved)
{
    mReserved = reserved;
    block(root, top, FlowSpan::Place::Root, -1, -1);
}

// What stands far below the start of the boxes around it has floats in front: the boxes begin above those.
void FlowCollector::emitRoom(Unit top)
{
    if (!mPendingTop || top - *mPendingTop <= mFrame + smallRest) return;
    Chunk room;
    room.top = *mPendingTop;
    room.bottom = top - mFrame;
    room.reserved = mReserved;
    room.margin = std::exchange(mMargin, {});
    room.forced = std::exchange(mForced, ForcedBreak::None);
    room.cost = uint8_t((mAvoid ? breakcost::between : 0) + (isInside() ? breakcost::inside : 0));
    room.loose = true;
    mFlow.chunks.push_back(room);
    mPendingTop.reset();
    mFrame = {};
    mAvoid = true;
}

Chunk &FlowCollector::emitChunk(Unit top, Unit bottom, uint8_t cost)
{
    emitRoom(top);
    Chunk chunk;
    chunk.top = mPendingTop ? std::min(*mPendingTop, top) : top;
    chunk.bottom = std::max(bottom, chunk.top);
    chunk.reserved = mReserved;
    chunk.margin = mMargin;
    chunk.forced = mForced;
    chunk.cost = uint8_t(cost + (mAvoid ? breakcost::between : 0));
    if (isInside()) chunk.cost = uint8_t(chunk.cost + breakcost::inside);
    mPendingTop.reset();
    mFrame = {};
    mMargin = {};
    mForced = ForcedBreak::None;
    mAvoid = false;
    mFlow.chunks.push_back(chunk);
    return mFlow.chunks.back();
}

// Scrolled boxes show a part of their content on paper, too; those that just hide what floats out of them don't.
bool FlowCollector::isSolid(const BlockBox &box) const
{
    if (box.moved && box.style().rare().isTransformed()) return true;
    return box.isReplaced() || (box.clips && !heightIsAuto(box) && box.parent() && box.parent()->parent());
}

FlowCollector::Opened FlowCollector::open(BlockBox &box, Unit top, FlowSpan::Place place, int32_t parent, int32_t previous)
{
    emitRoom(top);
    const Opened opened{uint32_t(mFlow.spans.size()), mFlow.chunks.size(), mFlow.floats.size(), mPendingTop, mFrame, mInsideFirst};
    FlowSpan span;
    span.box = &box;
    span.place = place;
    span.top = top;
    span.first = span.end = uint32_t(mFlow.chunks.size());
    span.parent = parent;
    span.previous = previous;
    mFlow.spans.push_back(span);
    meet(breakBefore(box), mForced, mAvoid);
    if (!mPendingTop) {
        mPendingTop = top;
        mMargin = box.topStrut.sum();
    }
    mFrame += box.border.top + box.padding.top;
    if (mInsideFirst < 0 && avoidsInside(box) && box.height <= mSpace.least() - mReserved) mInsideFirst = int32_t(mFlow.chunks.size());
    return opened;
}

void FlowCollector::close(BlockBox &box, const Opened &opened)
{
    const Unit top = mFlow.spans[opened.span].top, bottom = top + box.height;
    mInsideFirst = opened.insideFirst;
    const bool hasFloats = mFlow.floats.size() > opened.floats;
    if (mFlow.chunks.size() == opened.chunks) {
        if (box.height.raw > 0) {
            emitChunk(top, bottom).loose = hasFloats;
        } else {
            mPendingTop = opened.pendingTop; // nothing stands here
            mFrame = opened.frame;
        }
    } else {
        Chunk &last = mFlow.chunks.back();
        const Unit rest = bottom - last.bottom - last.growth;
        const Unit frame = box.border.bottom + box.padding.bottom;
        if (rest.raw > 0 && rest <= frame + smallRest && !last.loose) {
            last.bottom = bottom;
        } else if (rest.raw > 0) {
            const Unit from = last.bottom;
            emitChunk(from, bottom, breakcost::edge).loose = true;
        }
    }
    mFlow.spans[opened.span].end = uint32_t(mFlow.chunks.size());
    meet(breakAfter(box), mForced, mAvoid);
}

uint32_t FlowCollector::block(BlockBox &box, Unit top, FlowSpan::Place place, int32_t parent, int32_t previous)
{
    const Opened opened = open(box, top, place, parent, previous);
    if (isSolid(box)) {
        emitChunk(top, top + box.height);
    } else if (box.columns() && !box.columns()->pieces.empty()) {
        columns(box, opened.span);
    } else if (box.isTable()) {
        table(static_cast<TableBox &>(box), opened.span);
    } else if (box.hasItems()) {
        items(box, opened.span);
    } else if (box.inlineContent) {
        lines(box, opened.span);
    } else {
        children(box, opened.span);
    }
    if (!isSolid(box) && box.rare)
        for (BlockBox *child : box.rare->positioned) addPositioned(*child, opened.span, top);
    close(box, opened);
    return opened.span;
}

void FlowCollector::children(BlockBox &box, uint32_t span)
{
    const Unit top = mFlow.spans[span].top;
    Unit y = top + box.contentTop();
    int32_t previous = -1;
    for (Box *each = box.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (!child) continue;
        if (child->floating) addFloat(*child, span, top);
        if (!child->inSumTree) continue;
        if (child->unseen) continue;
        y += child->gap;
        previous = int32_t(block(*child, y, FlowSpan::Place::InFlow, int32_t(span), previous));
        y += child->height;
    }
}

void FlowCollector::lines(BlockBox &box, uint32_t span)
{
    const InlineContent &content = *box.inlineContent;
    const Unit top = mFlow.spans[span].top;
    if (content.hasFloats)
        for (const InlineItem &item : content.items)
            if (item.type == ItemType::Float) addFloat(*item.box->asBlock(), span, top);
    const std::size_t count = content.lines.size();
    std::vector<uint32_t> chunks(count);
    const css::TextGroup &text = box.style().text();
    // Lines are counted between the blocks that stand among them.
    std::size_t from = 0, to = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Line &line = content.lines[i];
        chunks[i] = uint32_t(mFlow.chunks.size());
        if (line.block) {
            block(*line.block, top + line.block->top(), FlowSpan::Place::Own, int32_t(span), -1);
            continue;
        }
        if (i >= to) {
            for (from = to = i; to < count && !content.lines[to].block;) ++to;
        }
        const bool alone = i > from && (int(i - from) < text.orphans || int(to - i) < text.widows);
        emitChunk(top + line.top, top + line.bottom(), alone ? breakcost::orphans : 0);
        chunks[i] = uint32_t(mFlow.chunks.size()) - 1;
    }
    mFlow.spans[span].lines = uint32_t(mFlow.lineChunks.size());
    mFlow.lineChunks.insert(mFlow.lineChunks.end(), chunks.begin(), chunks.end());
}

SideBox FlowCollector::sideBox(BlockBox &box, uint32_t span, Unit parentTop) const
{
    SideBox side;
    side.box = &box;
    side.span = span;
    side.top = parentTop + box.gap;
    side.bottom = side.top + box.height;
    side.flow = std::make_unique<PageFlow>();
    FlowCollector(*side.flow, mSpace).run(box, side.top, mReserved);
    return side;
}

void FlowCollector::addFloat(BlockBox &box, uint32_t span, Unit parentTop)
{
    SideBox side = sideBox(box, span, parentTop);
    side.solid = side.flow->chunks.size() <= 1 || avoidsInside(box);
    if (side.solid && box.height > mSpace.least() - mReserved) side.solid = false; // no page could hold it
    mFlow.floats.push_back(std::move(side));
}

void FlowCollector::addPositioned(BlockBox &box, uint32_t span, Unit top)
{
    if (isFixedPosition(box))
        mFlow.fixedBoxes.push_back(&box);
    else
        mFlow.positioned.push_back(sideBox(box, span, top));
}

// ---- Tables ----

void FlowCollector::table(TableBox &table, uint32_t span)
{
    const Unit top = mFlow.spans[span].top;
    const auto captions = [&](bool below) {
        for (Box *each = table.firstChild(); each; each = each->next())
            if (BlockBox *child = each->asBlock(); child && isCaption(*child) && captionIsBelow(*child) == below) {
                block(*child, top + child->gap, FlowSpan::Place::Own, int32_t(span), -1);
                if (!below) mAvoid = true; // it belongs to what follows
            }
    };
    captions(false);
    if (!table.rows.empty()) {
        const auto index = uint32_t(mFlow.tables.size());
        mFlow.spans[span].table = int32_t(index);
        mFlow.tables.push_back({});
        mFlow.tables.back().box = &table;
        mFlow.tables.back().reserved = mReserved;
        const Unit outside = mReserved;
        rows(table, span, index);
        mReserved = outside;
    }
    captions(true);
}

namespace {

/// How many rows at the table's start are a head that is repeated on each page: one that leaves room for content.
uint32_t repeatedRows(const TableBox &table, Unit page)
{
    uint32_t count = 0;
    while (count < table.rows.size() && table.rows[count].section && sectionKindOf(*table.rows[count].section) == SectionKind::Head)
        ++count;
    if (count == 0 || count == table.rows.size()) return 0;
    return table.rows[count].top - table.rows[0].top <= page / 2 ? count : 0;
}

bool isFirstOfSection(const TableBox &table, std::size_t row)
{
    return row == 0 || table.rows[row - 1].section != table.rows[row].section;
}

bool isLastOfSection(const TableBox &table, std::size_t row)
{
    return row + 1 == table.rows.size() || table.rows[row + 1].section != table.rows[row].section;
}

} // namespace

void FlowCollector::rows(TableBox &table, uint32_t span, uint32_t index)
{
    const Unit top = mFlow.spans[span].top;
    const auto count = uint32_t(table.rows.size());
    const uint32_t head = repeatedRows(table, mSpace.least() - mReserved);
    mFlow.tables[index].headRows = head;
    std::vector<uint32_t> rowChunks(count);
    // How far down cells of the rows so far reach, and the cells that end in each row.
    std::vector<std::vector<const TableCell *>> ending(count);
    uint32_t reach = 0;
    for (const TableCell &cell : table.cells) ending[std::min(count, cell.row + cell.rowSpan) - 1].push_back(&cell);
    for (uint32_t r = 0; r < count; ++r) {
        const TableRow &row = table.rows[r];
        if (r && r < head) { // a head stays whole
            rowChunks[r] = rowChunks[r - 1];
            mFlow.chunks[rowChunks[r]].bottom = top + row.top + row.height;
        } else {
            if (r == head && head) {
                mReserved += row.top - table.rows[0].top + (table.collapsed ? table.border.top : Unit());
                mAvoid = true;
            }
            if (isFirstOfSection(table, r)) meet(breakBefore(*row.section), mForced, mAvoid);
            meet(breakBefore(*row.box), mForced, mAvoid);
            if (!isFirstOfSection(table, r) && avoidsInside(*row.section)) mAvoid = true;
            rowChunks[r] = uint32_t(mFlow.chunks.size());
            emitChunk(top + row.top, top + row.top + row.height, reach > r ? breakcost::between : 0);
        }
        for (uint32_t i = row.firstCell; i < row.firstCell + row.cellCount; ++i)
            reach = std::max(reach, table.cells[i].row + table.cells[i].rowSpan);
        if (r >= head) {
            ParallelBoxes parallel;
            parallel.span = span;
            parallel.isRow = true;
            parallel.bottom = top + row.top + row.height;
            for (const TableCell *cell : ending[r])
                parallel.members.push_back({cell->box, top + table.rows[cell->row].top, top + row.top + row.height, rowChunks[cell->row], nullptr});
            mFlow.chunks[rowChunks[r]].parallel = int32_t(mFlow.parallels.size());
            mFlow.parallels.push_back(std::move(parallel));
        }
        meet(breakAfter(*row.box), mForced, mAvoid);
        if (isLastOfSection(table, r)) meet(breakAfter(*row.section), mForced, mAvoid);
    }
    mFlow.tables[index].rowChunks = std::move(rowChunks);
}

// ---- Flexible and grid items ----

// Items whose heights overlap stand beside each other; one that stands alone goes on in this flow.
void FlowCollector::items(BlockBox &box, uint32_t span)
{
    const Unit top = mFlow.spans[span].top;
    std::vector<BlockBox *> items = itemsInOrder(box);
    std::stable_sort(items.begin(), items.end(), [](const BlockBox *a, const BlockBox *b) { return a->gap < b->gap; });
    for (std::size_t i = 0; i < items.size();) {
        std::size_t end = i + 1;
        Unit bottom = items[i]->gap + items[i]->height;
        while (end < items.size() && items[end]->gap < bottom) {
            bottom = std::max(bottom, items[end]->gap + items[end]->height);
            ++end;
        }
        if (end == i + 1) {
            block(*items[i], top + items[i]->gap, FlowSpan::Place::Own, int32_t(span), -1);
        } else {
            ParallelBoxes parallel;
            parallel.span = span;
            parallel.bottom = top + bottom;
            for (std::size_t k = i; k < end; ++k) {
                meet(breakBefore(*items[k]), mForced, mAvoid);
                parallel.members.push_back({items[k], top + items[k]->gap, top + items[k]->gap + items[k]->height, uint32_t(mFlow.chunks.size()), nullptr});
            }
            emitChunk(top + items[i]->gap, top + bottom).parallel = int32_t(mFlow.parallels.size());
            mFlow.parallels.push_back(std::move(parallel));
            for (std::size_t k = i; k < end; ++k) meet(breakAfter(*items[k]), mForced, mAvoid);
        }
        i = end;
    }
}

// ---- Columns ----

void FlowCollector::columns(BlockBox &box, uint32_t span)
{
    const Unit top = mFlow.spans[span].top;
    ParallelBoxes parallel;
    parallel.span = span;
    parallel.isColumns = true;
    parallel.bottom = top + box.height;
    parallel.members.push_back({&box, top, top + box.height, uint32_t(mFlow.chunks.size()), nullptr});
    emitChunk(top, top + box.height).parallel = int32_t(mFlow.parallels.size());
    mFlow.parallels.push_back(std::move(parallel));
}

} // namespace layout
