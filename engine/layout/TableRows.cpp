// SPDX-License-Identifier: GPL-3.0-or-later
// The second half of table layout: heights, captions, places, collapsed borders.
#include "engine/layout/TableLayout.h"

namespace layout {

void TableLayout::run()
{
    const bool sameRoom = !mTable.needsLayout && mTable.gridValid && mTable.placed;
    prepareGrid();
    mEngine.resolveEdges(mTable, mConstraint.width);
    columnConstraints();
    const bool sameColumns = placeColumns();
    const Unit above = layoutCaptions(false, Unit());
    const bool sameTop = mTable.gridTop == above;
    mTable.gridTop = above;
    const Unit padTop = mTable.collapsed ? Unit() : mTable.padding.top;
    const Unit top = above + mTable.border.top + padTop;
    if (!sameRoom || !sameColumns || !sameTop || !relayoutDirtyRows(top)) {
        layoutRows();
        const Unit height = contentHeight();
        mTable.gridHeight = wantedHeight(height);
        mTable.stretched = mTable.gridHeight > height;
        if (mTable.stretched) stretchRows(mTable.gridHeight - height);
        placeRows(top);
    }
    const Unit below = layoutCaptions(true, above + mTable.gridHeight);
    mTable.height = above + mTable.gridHeight + below;
    mTable.collapsesThrough = false;
    mTable.bottomStrut = {};
    mTable.bottomStrut.add(mTable.marginBottom);
}

bool TableLayout::placeColumns()
{
    const Unit target = std::max(Unit(), mTable.width - gridFrame());
    const std::vector<TableColumn> before = mTable.columns;
    if (isFixed()) {
        distributeFixed(target);
    } else {
        const std::vector<Unit> widths = distribute(mTable.columns, 0, mTable.columns.size(), target);
        for (std::size_t i = 0; i < widths.size(); ++i) mTable.columns[i].width = widths[i];
    }
    Unit x = gridLeft();
    const auto place = [&](TableColumn &column) {
        column.left = x;
        x += column.width + mTable.spacingX;
    };
    if (isRightToLeft(mTable.style()))
        for (auto it = mTable.columns.rbegin(); it != mTable.columns.rend(); ++it) place(*it);
    else
        for (TableColumn &column : mTable.columns) place(column);
    return std::equal(before.begin(), before.end(), mTable.columns.begin(), [](const TableColumn &a, const TableColumn &b) {
        return a.width == b.width && a.left == b.left;
    });
}

/// Where the first column begins.
Unit TableLayout::gridLeft() const
{
    return mTable.border.left + (mTable.collapsed ? Unit() : mTable.padding.left) + mTable.spacingX;
}

/// Of the border box without captions, as the rows ask for it.
Unit TableLayout::contentHeight() const
{
    Unit content = mTable.rows.empty() ? Unit() : mTable.spacingY;
    for (const TableRow &row : mTable.rows) content += row.height + mTable.spacingY;
    return content + mTable.border.vertical() + (mTable.collapsed ? Unit() : mTable.padding.vertical());
}

/// What the table's style makes of it.
Unit TableLayout::wantedHeight(Unit height) const
{
    if (const auto given = usedHeight(mTable, mConstraint)) height = std::max(height, *given);
    return std::max(height, clampedHeight(mTable, height, mConstraint));
}

bool TableLayout::relayoutDirtyRows(Unit top)
{
    const auto dirty = mTable.stretched ? std::nullopt : dirtyCells();
    if (!dirty) return false;
    std::vector<TableRow *> rows;
    for (const uint32_t cell : *dirty) {
        TableRow &row = mTable.rows[mTable.cells[cell].row];
        if (row.joined) return false; // others have a say in its height
        if (rows.empty() || rows.back() != &row) rows.push_back(&row);
    }
    bool moves = false, reaches = false;
    std::vector<const TableCell *> spanning;
    for (TableRow *row : rows) {
        const Unit was = row->height;
        layoutRow(*row, spanning);
        moves = moves || row->height != was;
    }
    if (moves) {
        const Unit height = contentHeight();
        if (wantedHeight(height) != height) return false;
        mTable.gridHeight = height;
        placeRowBoxes(top);
        placeColumnBoxes();
    }
    for (TableRow *row : rows) {
        const BlockBox &box = *row->box;
        const FlowSum was = FlowTraits::value(box);
        placeCells(*row);
        mEngine.finishOverflow(*row->box);
        const FlowSum now = FlowTraits::value(box);
        reaches = reaches || std::memcmp(&was, &now, sizeof was) != 0;
        mTable.settle(*row);
    }
    if (moves || reaches) finishSections();
    return true;
}

Unit TableLayout::layoutCaptions(bool below, Unit top)
{
    Unit sum;
    for (Box *each = mTable.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (!child || !isCaption(*child) || captionIsBelow(*child) != below) continue;
        mEngine.resolveEdges(*child, mTable.width);
        const auto given = layout::usedWidth(*child, mTable.width);
        const Unit width = given ? *given : mTable.width - child->marginLeft - child->marginRight;
        mEngine.layoutIndependent(*child, {mTable.width, Unit::fromRaw(-1)}, mTable.width, width);
        child->x = child->marginLeft;
        child->gap = top + sum + child->marginTop;
        sum += child->marginTop + child->height + child->marginBottom;
    }
    return sum;
}

void TableLayout::layoutCell(TableCell &cell, Unit width)
{
    BlockBox &box = *cell.box;
    // A cell that keeps its layout has its row's height from the last time.
    if (box.naturalHeight.raw >= 0) box.height = box.naturalHeight;
    box.shift = {};
    mEngine.layoutIndependent(box, {width, Unit::fromRaw(-1)}, width, width);
    box.naturalHeight = box.height;
}

// A cell without lines has its baseline at the bottom of its content.
Unit TableLayout::cellBaseline(const BlockBox &box) const
{
    if (const auto at = mEngine.firstBaseline(box)) return *at - (box.inlineContent ? box.linesShift : box.shift);
    return box.naturalHeight - box.padding.bottom - box.border.bottom;
}

void TableLayout::layoutRows()
{
    std::vector<const TableCell *> spanning;
    for (TableRow &row : mTable.rows) layoutRow(row, spanning);
    std::stable_sort(spanning.begin(), spanning.end(), [](const TableCell *a, const TableCell *b) { return a->rowSpan < b->rowSpan; });
    spanRows(spanning);
}

void TableLayout::layoutRow(TableRow &row, std::vector<const TableCell *> &spanning)
{
    Unit height, ascent, descent;
    bool anyBaseline = false;
    if (const auto given = fixedHeight(*row.box)) height = *given;
    for (uint32_t i = row.firstCell; i < row.firstCell + row.cellCount; ++i) {
        ++mEngine.work().childrenPlaced;
        TableCell &cell = mTable.cells[i];
        layoutCell(cell, spannedWidth(cell));
        if (cellAlign(*cell.box) == CellAlign::Baseline) {
            const Unit at = cellBaseline(*cell.box);
            ascent = std::max(ascent, at);
            if (cell.rowSpan == 1) descent = std::max(descent, cell.box->height - at);
            anyBaseline = true;
        }
        if (cell.rowSpan > 1)
            spanning.push_back(&cell);
        else
            height = std::max(height, cell.box->height);
    }
    row.baseline = ascent;
    row.height = anyBaseline ? std::max(height, ascent + descent) : height;
}

// What a cell over several rows needs beyond them goes to its rows by their heights, or to the last where all are empty.
void TableLayout::spanRows(const std::vector<const TableCell *> &spanning)
{
    for (const TableCell *cell : spanning) {
        Unit sum = mTable.spacingY * int(cell->rowSpan - 1), rows;
        for (uint32_t r = cell->row; r < cell->row + cell->rowSpan; ++r) rows += mTable.rows[r].height;
        const Unit missing = cell->box->height - sum - rows;
        if (missing.raw <= 0) continue;
        if (!rows.raw) {
            mTable.rows[cell->row + cell->rowSpan - 1].height += missing;
            continue;
        }
        Unit given;
        for (uint32_t r = cell->row; r < cell->row + cell->rowSpan; ++r) {
            const bool last = r + 1 == cell->row + cell->rowSpan;
            const Unit share = last ? missing - given : Unit::from(missing.toDouble() * mTable.rows[r].height.raw / rows.raw);
            mTable.rows[r].height += share;
            given += share;
        }
    }
}

// A row whose height somebody said: itself, or a cell of its own.
bool TableLayout::rowIsFixed(const TableRow &row) const
{
    if (fixedHeight(*row.box)) return true;
    for (uint32_t i = row.firstCell; i < row.firstCell + row.cellCount; ++i) {
        const TableCell &cell = mTable.cells[i];
        if (cell.rowSpan == 1 && fixedHeight(*cell.box)) return true;
    }
    return false;
}

void TableLayout::stretchRows(Unit wanted)
{
    if (mTable.rows.empty()) return;
    Unit sum;
    std::size_t open = 0;
    for (const TableRow &row : mTable.rows)
        if (!rowIsFixed(row)) {
            sum += row.height;
            ++open;
        }
    const bool any = open > 0;
    if (!any)
        for (const TableRow &row : mTable.rows) sum += row.height;
    Unit given;
    TableRow *last = nullptr;
    for (TableRow &row : mTable.rows) {
        if (any && rowIsFixed(row)) continue;
        const Unit share = sum.raw > 0 ? Unit::from(wanted.toDouble() * row.height.raw / sum.raw) : wanted / int(any ? open : mTable.rows.size());
        row.height += share;
        given += share;
        last = &row;
    }
    if (last) last->height += wanted - given;
}

void TableLayout::placeRows(Unit top)
{
    placeRowBoxes(top);
    for (TableRow &row : mTable.rows) {
        placeCells(row);
        mEngine.finishOverflow(*row.box);
        mTable.settle(row);
    }
    finishSections();
    placeColumnBoxes();
    mTable.placed = true;
}

void TableLayout::placeRowBoxes(Unit top)
{
    Unit y = top + (mTable.rows.empty() ? Unit() : mTable.spacingY);
    const Unit left = gridLeft();
    const Unit width = mTable.columns.empty() ? Unit() : mTable.width - mTable.border.horizontal() - (mTable.collapsed ? Unit() : mTable.padding.horizontal()) - mTable.spacingX * 2;
    for (Box *each = mTable.firstChild(); each; each = each->next()) {
        if (each->kind() != BoxKind::TableSection) continue;
        BlockBox &empty = *each->asBlock(); // those with rows get theirs below
        empty.x = left;
        empty.gap = y;
        empty.width = width;
        empty.height = {};
        empty.padding = empty.border = {};
        empty.needsLayout = empty.childNeedsLayout = false;
        if (!empty.firstChild()) mEngine.finishOverflow(empty);
    }
    BlockBox *section = nullptr;
    for (TableRow &row : mTable.rows) {
        row.top = y;
        if (row.section != section) {
            section = row.section;
            section->gap = y;
        }
        section->height = y + row.height - section->gap;
        row.box->x = {};
        row.box->gap = y - section->gap;
        row.box->width = width;
        row.box->height = row.height;
        y += row.height + mTable.spacingY;
    }
}

void TableLayout::placeCells(const TableRow &row)
{
    const Unit left = gridLeft();
    for (uint32_t i = row.firstCell; i < row.firstCell + row.cellCount; ++i) {
        const TableCell &cell = mTable.cells[i];
        const TableRow &last = mTable.rows[cell.row + cell.rowSpan - 1];
        BlockBox &box = *cell.box;
        const std::size_t end = std::min<std::size_t>(cell.column + cell.columnSpan, mTable.columns.size());
        Unit x = mTable.columns[cell.column].left;
        for (std::size_t c = cell.column; c < end; ++c) x = std::min(x, mTable.columns[c].left);
        box.x = x - left;
        box.gap = {};
        const Unit height = std::max(last.top + last.height - row.top, Unit());
        const Unit air = std::max(Unit(), height - box.naturalHeight);
        switch (cellAlign(box)) {
        case CellAlign::Top: box.shift = {}; break;
        case CellAlign::Middle: box.shift = air / 2; break;
        case CellAlign::Bottom: box.shift = air; break;
        case CellAlign::Baseline: {
            const Unit at = cellBaseline(box);
            box.shift = std::max(Unit(), row.baseline - at);
            break;
        }
        }
        Engine::shiftLines(box);
        box.height = height;
        mEngine.finishOverflow(box);
    }
}

void TableLayout::finishSections()
{
    for (std::size_t r = 0; r < mTable.rows.size(); ++r)
        if (r + 1 == mTable.rows.size() || mTable.rows[r + 1].section != mTable.rows[r].section) mEngine.finishOverflow(*mTable.rows[r].section);
}

void TableLayout::placeColumnBoxes()
{
    const Unit bottom = mTable.rows.empty() ? Unit() : mTable.rows.back().top + mTable.rows.back().height;
    const BlockBox *before = nullptr; // a box may stand for several columns
    for (TableColumn &column : mTable.columns) {
        if (!column.box) continue;
        const bool same = column.box == before;
        before = column.box;
        const Unit start = same ? std::min(column.box->x, column.left) : column.left;
        const Unit end = std::max(same ? column.box->x + column.box->width : column.left, column.left + column.width);
        column.box->x = start;
        column.box->gap = mTable.gridTop + mTable.border.top + mTable.spacingY;
        column.box->width = end - start;
        column.box->height = std::max(Unit(), bottom - column.box->gap);
        column.box->needsLayout = false;
    }
    // A group covers its columns; columns stand in it.
    before = nullptr;
    for (TableColumn &column : mTable.columns) {
        BlockBox *group = column.box && column.box->parent() ? column.box->parent()->asBlock() : nullptr;
        if (!group || group->kind() != BoxKind::TableColumn) continue;
        const bool first = group->firstChild() == column.box;
        if (first) group->x = column.left;
        group->gap = mTable.gridTop + mTable.border.top + mTable.spacingY;
        group->width = std::max(first ? Unit() : group->width, column.left + column.width - group->x);
        group->height = column.box->height;
        group->needsLayout = group->childNeedsLayout = false;
        if (column.box != before) column.box->x = column.box->x - group->x;
        before = column.box;
        column.box->gap = {};
    }
}

// ---- Collapsed borders ----

namespace {

int styleRank(css::BorderStyle style)
{
    switch (style) {
    case css::BorderStyle::Double: return 8;
    case css::BorderStyle::Solid: return 7;
    case css::BorderStyle::Dashed: return 6;
    case css::BorderStyle::Dotted: return 5;
    case css::BorderStyle::Ridge: return 4;
    case css::BorderStyle::Outset: return 3;
    case css::BorderStyle::Groove: return 2;
    case css::BorderStyle::Inset: return 1;
    default: return 0;
    }
}

// The wider, the more marked style, the inner part wins; a hidden one beats all.
void meet(CollapsedEdge &edge, const CollapsedEdge &other)
{
    if (edge.style == css::BorderStyle::Hidden) return;
    if (other.style == css::BorderStyle::Hidden) {
        edge = other;
        edge.width = {};
        return;
    }
    if (!styleRank(other.style)) return;
    if (other.width != edge.width ? other.width > edge.width
                                  : styleRank(other.style) != styleRank(edge.style) ? styleRank(other.style) > styleRank(edge.style)
                                                                                   : other.rank > edge.rank)
        edge = other;
}

} // namespace

void TableLayout::resolveCollapsedBorders()
{
    auto &cells = mTable.cells;
    const auto columns = uint32_t(mTable.columns.size()), rows = uint32_t(mTable.rows.size());
    std::vector<uint32_t> grid(std::size_t(columns) * rows, ~0u);
    for (uint32_t i = 0; i < cells.size(); ++i)
        for (uint32_t r = cells[i].row; r < cells[i].row + cells[i].rowSpan && r < rows; ++r)
            for (uint32_t c = cells[i].column; c < cells[i].column + cells[i].columnSpan && c < columns; ++c)
                grid[std::size_t(r) * columns + c] = i;
    const auto edgeOf = [](const BlockBox *box, Side side, uint8_t rank) {
        CollapsedEdge edge;
        if (!box || box->anonymous) return edge;
        edge = collapsedEdgeOf(*box, side);
        edge.rank = rank;
        return edge;
    };
    Edges outer;
    for (TableCell &cell : cells) {
        const bool firstRow = cell.row == 0, lastRow = cell.row + cell.rowSpan >= rows;
        const bool firstColumn = cell.column == 0, lastColumn = cell.column + cell.columnSpan >= columns;
        const TableRow &top = mTable.rows[cell.row], &bottom = mTable.rows[std::min(rows, cell.row + cell.rowSpan) - 1];
        const bool sectionTop = firstRow || mTable.rows[cell.row - 1].section != top.section;
        const bool sectionBottom = lastRow || mTable.rows[cell.row + cell.rowSpan].section != bottom.section;
        const auto solve = [&](Side side, Side opposite, bool atEdge, uint32_t r, uint32_t c) {
            CollapsedEdge edge = edgeOf(cell.box, side, 5);
            if (!atEdge && grid[std::size_t(r) * columns + c] != ~0u) meet(edge, edgeOf(cells[grid[std::size_t(r) * columns + c]].box, opposite, 5));
            const bool vertical = side == Side::Top || side == Side::Bottom;
            if (vertical) {
                meet(edge, edgeOf((side == Side::Top ? top : bottom).box, side, 4));
                if (!atEdge) meet(edge, edgeOf(mTable.rows[r].box, opposite, 4));
                if (side == Side::Top ? sectionTop : sectionBottom) meet(edge, edgeOf((side == Side::Top ? top : bottom).section, side, 3));
                if (!atEdge && (side == Side::Top ? sectionTop : sectionBottom)) meet(edge, edgeOf(mTable.rows[r].section, opposite, 3));
            } else {
                if (atEdge) {
                    meet(edge, edgeOf(top.box, side, 4));
                    meet(edge, edgeOf(top.section, side, 3));
                }
                const uint32_t own = side == Side::Left ? cell.column : cell.column + cell.columnSpan - 1;
                if (own < columns) meet(edge, edgeOf(mTable.columns[own].box, side, 2));
            }
            if (atEdge) meet(edge, edgeOf(&mTable, side, 1));
            return edge;
        };
        cell.top = solve(Side::Top, Side::Bottom, firstRow, cell.row - 1, cell.column);
        cell.bottom = solve(Side::Bottom, Side::Top, lastRow, cell.row + cell.rowSpan, cell.column);
        cell.left = solve(Side::Left, Side::Right, firstColumn, cell.row, cell.column - 1);
        cell.right = solve(Side::Right, Side::Left, lastColumn, cell.row, cell.column + cell.columnSpan);
        cell.box->border = {cell.top.width / 2, cell.right.width / 2, cell.bottom.width / 2, cell.left.width / 2};
        if (firstRow) outer.top = std::max(outer.top, cell.box->border.top);
        if (lastRow) outer.bottom = std::max(outer.bottom, cell.box->border.bottom);
        if (firstColumn) outer.left = std::max(outer.left, cell.box->border.left);
        if (lastColumn) outer.right = std::max(outer.right, cell.box->border.right);
    }
    if (cells.empty()) {
        const Edges own = bordersOf(mTable.style());
        outer = {own.top / 2, own.right / 2, own.bottom / 2, own.left / 2};
    }
    mTable.border = outer;
}

} // namespace layout
