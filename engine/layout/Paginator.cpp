// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Paginator.h"

#include "engine/layout/PageBreaker.h"

namespace layout {

namespace {

Point placeOf(const BlockBox &box)
{
    Point at;
    for (const BlockBox *up = &box; up; up = up->container()) at = at + up->position() + up->relativeOffset();
    return at;
}

} // namespace

Paginator::Paginator(LayoutTree &tree, const PageSpace &space)
    : mTree(tree), mSpace(space),
      mEngine(tree.document().mode() == dom::DocumentMode::Quirks, tree.document().mode() != dom::DocumentMode::Standards,
              {Unit::px(tree.viewport().width()), Unit::px(tree.viewport().height())}, tree.images(), mWork)
{
    const Unit least = Unit::px(10); // pages without room would never end
    for (Unit *height : {&mSpace.first, &mSpace.left, &mSpace.right}) *height = std::max(*height, least);
}

void Paginator::run()
{
    PageFlow flow;
    FlowCollector(flow, mSpace).run(mTree.root(), {}, {});
    PageBreaker(flow, mSpace, PageBreaker::Kind::Main).run({});
    moveFlow(flow);
    mPages = 1 + mSpace.pageAt(std::max(Unit(), lastEnd(flow) - Unit::fromRaw(1)));
    mHeads.resize(std::size_t(mPages));
    noteHeads(flow);
    gatherFixed(flow);
}

const std::vector<Paginator::Head> &Paginator::heads(int page) const
{
    static const std::vector<Head> none;
    return page >= 0 && std::size_t(page) < mHeads.size() ? mHeads[std::size_t(page)] : none;
}

void Paginator::turnTo(int page)
{
    for (const auto &[box, gap] : mFixed) box->gap = gap + mSpace.top(page);
}

// ---- Moving ----

void Paginator::moveFlow(PageFlow &flow)
{
    moveSides(flow, flow.floats);
    moveSides(flow, flow.positioned);
    moveParallels(flow);
    for (std::size_t i = flow.spans.size(); i-- > 0;) moveSpan(flow, i);
}

void Paginator::moveSides(PageFlow &flow, std::vector<SideBox> &sides)
{
    for (SideBox &side : sides) {
        PageFlow &own = *side.flow;
        Unit shift = own.base;
        if (own.isDone) {
            shift = own.topShift(own.spans.front());
            moveFlow(own);
        }
        side.box->gap += shift - flow.topShift(flow.spans[side.span]);
    }
}

void Paginator::moveParallels(PageFlow &flow)
{
    for (const Chunk &chunk : flow.chunks) {
        if (chunk.parallel < 0) continue;
        ParallelBoxes &parallel = flow.parallels[std::size_t(chunk.parallel)];
        if (parallel.isColumns) {
            if (parallel.divided) *parallel.members.front().box->rareData().columns = std::move(parallel.columns);
            continue;
        }
        for (ParallelBoxes::Member &member : parallel.members) {
            const bool atEnd = member.bottom >= parallel.bottom - Unit::px(1);
            const Unit height = member.box->height;
            if (member.flow && member.flow->isDone) moveFlow(*member.flow);
            if (parallel.isRow) continue; // cells are as high as their rows
            member.box->gap += chunk.shift - flow.topShift(flow.spans[parallel.span]);
            if (atEnd && member.box->height < height + chunk.growth) member.box->height = height + chunk.growth;
            mEngine.finishOverflow(*member.box);
        }
    }
}

void Paginator::moveSpan(PageFlow &flow, std::size_t index)
{
    const FlowSpan &span = flow.spans[index];
    BlockBox &box = *span.box;
    const Unit top = flow.topShift(span);
    box.height += flow.bottomShift(span) - top;
    if (span.table >= 0) moveTable(flow, span);
    if (box.inlineContent && !box.isReplaced() && !box.isTable() && !box.hasItems()) moveLines(flow, span);
    if (span.place != FlowSpan::Place::Root) {
        const FlowSpan &parent = flow.spans[std::size_t(span.parent)];
        const Unit before = span.previous >= 0 ? flow.bottomShift(flow.spans[std::size_t(span.previous)]) : flow.topShift(parent);
        box.gap += top - before;
    }
    mEngine.finishOverflow(box);
    if (span.place == FlowSpan::Place::InFlow) flow.spans[std::size_t(span.parent)].box->flow.changed(box);
}

void Paginator::moveLines(PageFlow &flow, const FlowSpan &span)
{
    InlineContent &content = *span.box->inlineContent;
    if (span.lines + content.lines.size() > flow.lineChunks.size()) return; // it wasn't taken apart
    const Unit top = flow.topShift(span);
    for (std::size_t i = 0; i < content.lines.size(); ++i) {
        Line &line = content.lines[i];
        const std::size_t chunk = flow.lineChunks[span.lines + i];
        if (line.block) {
            // The block has moved as a span of its own.
            line.top = line.block->top();
            line.height = line.block->height;
            continue;
        }
        const Unit by = flow.chunks[chunk].shift - top;
        if (by.raw == 0) continue;
        line.top += by;
        for (const Fragment *f = content.begin(line); f != content.end(line); ++f)
            if (f->type == FragmentType::Atomic) f->box->asBlock()->gap += by;
    }
}

void Paginator::moveTable(PageFlow &flow, const FlowSpan &span)
{
    const FlowTable &record = flow.tables[std::size_t(span.table)];
    TableBox &table = *record.box;
    const Unit top = flow.topShift(span);
    const Unit above = table.rows.front().top - table.gridTop;
    const Unit below = table.gridTop + table.gridHeight - table.rows.back().top - table.rows.back().height;
    bool changed = false;
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        TableRow &row = table.rows[r];
        const Chunk &chunk = flow.chunks[record.rowChunks[r]];
        const Unit by = chunk.shift - top;
        changed = changed || by.raw || chunk.growth.raw;
        row.top += by;
        row.height += chunk.growth;
    }
    if (!changed) return;
    table.gridTop = table.rows.front().top - above;
    table.gridHeight = table.rows.back().top + table.rows.back().height + below - table.gridTop;
    BlockBox *section = nullptr;
    for (TableRow &row : table.rows) {
        if (row.section != section) {
            section = row.section;
            section->gap = row.top;
        }
        section->height = row.top + row.height - section->gap;
        row.box->gap = row.top - section->gap;
        row.box->height = row.height;
    }
    stretchCells(table);
}

void Paginator::stretchCells(TableBox &table)
{
    for (TableCell &cell : table.cells) {
        const TableRow &row = table.rows[cell.row], &last = table.rows[cell.row + cell.rowSpan - 1];
        const Unit height = last.top + last.height - row.top;
        if (height == cell.box->height) continue;
        cell.box->height = height;
        mEngine.finishOverflow(*cell.box);
    }
    for (TableRow &row : table.rows) mEngine.finishOverflow(*row.box);
    BlockBox *section = nullptr;
    for (TableRow &row : table.rows)
        if (std::exchange(section, row.section) != row.section) mEngine.finishOverflow(*row.section);
}

// ---- What pages there are ----

Unit Paginator::lastEnd(const PageFlow &flow) const
{
    Unit end = flow.contentEnd();
    for (const auto *sides : {&flow.floats, &flow.positioned})
        for (const SideBox &side : *sides) {
            if (side.bottom <= side.top) continue;
            const bool outside = sides == &flow.positioned && (placeOf(*side.box).x + side.box->overflowRight).raw <= 0;
            if (!outside) end = std::max(end, side.flow->isDone ? lastEnd(*side.flow) : side.bottom + side.flow->base);
        }
    for (const ParallelBoxes &parallel : flow.parallels)
        for (const auto &member : parallel.members)
            if (member.flow && member.flow->isDone) end = std::max(end, lastEnd(*member.flow));
    return end;
}

void Paginator::noteHeads(const PageFlow &flow)
{
    for (const FlowTable &table : flow.tables)
        if (table.headRows) noteHead(table, rowsEnd(flow, table));
    for (const auto *sides : {&flow.floats, &flow.positioned})
        for (const SideBox &side : *sides)
            if (side.flow->isDone) noteHeads(*side.flow);
    for (const ParallelBoxes &parallel : flow.parallels)
        for (const auto &member : parallel.members)
            if (member.flow && member.flow->isDone) noteHeads(*member.flow);
}

// Where the content of the rows ends: a page that just has the empty end of a cell needs no head.
Unit Paginator::rowsEnd(const PageFlow &flow, const FlowTable &table) const
{
    Unit end;
    for (std::size_t r = table.headRows; r < table.rowChunks.size(); ++r) {
        const Chunk &chunk = flow.chunks[table.rowChunks[r]];
        const ParallelBoxes &row = flow.parallels[std::size_t(chunk.parallel)];
        if (!row.divided) end = std::max(end, row.bottom + chunk.shift);
        for (const auto &member : row.members)
            if (member.flow && member.flow->isDone) end = std::max(end, lastEnd(*member.flow));
    }
    return end;
}

void Paginator::noteHead(const FlowTable &record, Unit end)
{
    const TableBox &table = *record.box;
    const Point at = placeOf(table);
    // The upper half of a collapsed border belongs to the head.
    const Unit edge = table.collapsed ? table.border.top : Unit();
    const TableRow &last = table.rows[record.headRows - 1];
    const Unit top = at.y + table.rows.front().top - edge, height = last.top + last.height - table.rows.front().top + edge;
    for (int page = mSpace.pageAt(top) + 1; page < mPages && mSpace.top(page) < end; ++page)
        mHeads[std::size_t(page)].push_back({{at.x, top, table.width, height}, mSpace.top(page) + record.reserved});
}

void Paginator::gatherFixed(const PageFlow &flow)
{
    for (BlockBox *box : flow.fixedBoxes) mFixed.push_back({box, box->gap});
}

} // namespace layout
