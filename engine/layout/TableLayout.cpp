// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/TableLayout.h"

namespace layout {

const TableRow *TableBox::rowAt(Unit y) const
{
    if (rows.empty()) return nullptr;
    auto it = std::upper_bound(rows.begin(), rows.end(), y, [](Unit at, const TableRow &row) { return at < row.top; });
    return it == rows.begin() ? &rows.front() : &*(it - 1);
}

std::optional<uint32_t> TableBox::indexOf(const BlockBox &row) const
{
    if (!placed || row.kind() != BoxKind::TableRow || !row.container()) return {};
    const Unit top = row.container()->gap + row.gap;
    auto it = std::lower_bound(rows.begin(), rows.end(), top, [](const TableRow &each, Unit at) { return each.top < at; });
    for (; it != rows.end() && it->top == top; ++it) // rows without a height stand together
        if (it->box == &row) return uint32_t(it - rows.begin());
    return {};
}

void TableBox::settle(TableRow &row)
{
    for (BlockBox *box : {row.box, row.section}) {
        box->needsLayout = box->childNeedsLayout = false;
        if (!box->rare) continue;
        box->rare->dirty.clear();
        box->rare->allDirty = false;
    }
}

TableLayout::TableLayout(Engine &engine, BlockBox &table, const Constraint &constraint)
    : mEngine(engine), mTable(static_cast<TableBox &>(table)), mConstraint(constraint)
{
}

bool TableLayout::isFixed() const
{
    return tableLayoutIsFixed(mTable.style()) && !widthIsAuto(mTable);
}

// ---- The grid ----

void TableLayout::prepareGrid()
{
    if (mTable.gridValid) return;
    mTable.collapsed = !mTable.anonymous && bordersCollapse(mTable.style());
    const Size spacing = mTable.collapsed || mTable.anonymous ? Size{} : borderSpacingOf(mTable.style());
    mTable.spacingX = spacing.width;
    mTable.spacingY = spacing.height;
    collectRows();
    placeCells();
    collectColumns();
    if (mTable.collapsed) resolveCollapsedBorders();
    mTable.gridValid = true;
    mTable.columnsValid = mTable.columnsCounted = mTable.placed = false;
}

void TableLayout::collectRows()
{
    mTable.rows.clear();
    mTable.cells.clear();
    std::vector<BlockBox *> heads, bodies, feet;
    for (Box *each = mTable.firstChild(); each; each = each->next()) {
        if (each->kind() != BoxKind::TableSection) continue;
        auto *section = each->asBlock();
        const SectionKind kind = sectionKindOf(*section);
        if (kind == SectionKind::Head && heads.empty())
            heads.push_back(section);
        else if (kind == SectionKind::Foot && feet.empty())
            feet.push_back(section);
        else
            bodies.push_back(section);
    }
    for (const auto *list : {&heads, &bodies, &feet})
        for (BlockBox *section : *list)
            for (Box *row = section->firstChild(); row; row = row->next())
                if (row->kind() == BoxKind::TableRow) {
                    TableRow entry;
                    entry.box = row->asBlock();
                    entry.section = section;
                    mTable.rows.push_back(entry);
                }
}

void TableLayout::placeCells()
{
    constexpr uint32_t mostColumns = 20000;
    std::vector<uint32_t> taken; // rows that a cell from above still covers, by column
    uint32_t columns = 0, sectionEnd = 0;
    for (uint32_t r = 0; r < mTable.rows.size(); ++r) {
        TableRow &row = mTable.rows[r];
        row.firstCell = uint32_t(mTable.cells.size());
        if (r == 0 || row.section != mTable.rows[r - 1].section) {
            std::fill(taken.begin(), taken.end(), 0u);
            sectionEnd = r + 1;
            while (sectionEnd < mTable.rows.size() && mTable.rows[sectionEnd].section == row.section) ++sectionEnd;
        }
        const uint32_t rowsLeft = sectionEnd - r;
        uint32_t column = 0;
        for (Box *each = row.box->firstChild(); each; each = each->next()) {
            if (!each->isCell()) continue;
            while (column < taken.size() && taken[column]) ++column;
            TableCell cell;
            cell.box = each->asBlock();
            cell.row = r;
            cell.column = column;
            cell.columnSpan = std::min(columnSpanOf(*cell.box), mostColumns - std::min(mostColumns - 1, column));
            const uint32_t span = rowSpanOf(*cell.box);
            cell.rowSpan = span == 0 ? rowsLeft : std::min(span, rowsLeft);
            if (taken.size() < column + cell.columnSpan) taken.resize(column + cell.columnSpan, 0);
            for (uint32_t c = column; c < column + cell.columnSpan; ++c) taken[c] = std::max(taken[c], cell.rowSpan);
            column += cell.columnSpan;
            columns = std::max(columns, column);
            for (uint32_t covered = r; cell.rowSpan > 1 && covered < r + cell.rowSpan; ++covered) mTable.rows[covered].joined = true;
            mTable.cells.push_back(cell);
        }
        row.cellCount = uint32_t(mTable.cells.size()) - row.firstCell;
        for (uint32_t &left : taken)
            if (left) --left;
    }
    mTable.columns.assign(columns, {});
}

void TableLayout::collectColumns()
{
    uint32_t at = 0;
    const auto take = [&](BlockBox &box, uint32_t span) {
        for (uint32_t i = 0; i < span && at < 20000; ++i, ++at) {
            if (at >= mTable.columns.size()) mTable.columns.resize(at + 1);
            mTable.columns[at].box = &box;
        }
    };
    for (Box *each = mTable.firstChild(); each; each = each->next()) {
        if (each->kind() != BoxKind::TableColumn) continue;
        auto *column = each->asBlock();
        if (!column->firstChild()) {
            take(*column, spanOf(*column));
            continue;
        }
        for (Box *inner = column->firstChild(); inner; inner = inner->next())
            if (inner->kind() == BoxKind::TableColumn) take(*inner->asBlock(), spanOf(*inner->asBlock()));
    }
}

// ---- Widths ----

Unit TableLayout::gridFrame() const
{
    const Unit gaps = mTable.columns.empty() ? Unit() : mTable.spacingX * int(mTable.columns.size() + 1);
    return mTable.border.horizontal() + (mTable.collapsed ? Unit() : mTable.padding.horizontal()) + gaps;
}

PreferredWidths TableLayout::widthsOf(const TableCell &cell) const
{
    PreferredWidths widths = mEngine.preferredWidths(*cell.box);
    if (const auto given = fixedWidth(*cell.box)) {
        widths.max = std::max(*given, widths.min);
        if (cell.columnSpan > 1) return widths;
        if (cellIsNoWrap(mEngine, *cell.box)) widths.min = widths.max;
    }
    if (cell.columnSpan > 1) return widths;
    const auto [low, high] = fixedWidthLimits(*cell.box);
    widths.min = std::max(widths.min, low);
    widths.max = std::max(std::min(widths.max, high), widths.min);
    return widths;
}

bool TableLayout::isConstrained(const TableCell &cell) const
{
    return fixedWidth(*cell.box).has_value();
}

void TableLayout::addCellConstraint(TableCell &cell)
{
    TableColumn &column = mTable.columns[cell.column];
    const PreferredWidths widths = cell.counted = widthsOf(cell);
    const bool constrained = isConstrained(cell);
    column.min = std::max(column.min, widths.min);
    if (column.constrained == constrained)
        column.max = std::max(column.max, widths.max);
    else if (constrained)
        column.max = widths.max;
    column.constrained = column.constrained || constrained;
    if (const auto percent = widthPercent(*cell.box)) {
        column.hasPercent = true;
        column.percent = std::max(column.percent, *percent);
    }
}

std::optional<std::vector<uint32_t>> TableLayout::dirtyCells() const
{
    const auto listOf = [](const BlockBox &box) { return box.rare && !box.rare->allDirty ? &box.rare->dirty : nullptr; };
    std::vector<uint32_t> found;
    const auto *sections = listOf(mTable);
    if (!sections) return {};
    for (const BlockBox *section : *sections) {
        if (isCaption(*section)) continue;
        const auto *rows = listOf(*section);
        if (!rows || section->needsLayout) return {};
        for (const BlockBox *row : *rows) {
            const auto *cells = listOf(*row);
            const auto at = mTable.indexOf(*row);
            if (!cells || !at || row->needsLayout) return {};
            const TableRow &entry = mTable.rows[*at];
            for (uint32_t i = entry.firstCell; i < entry.firstCell + entry.cellCount; ++i)
                if (std::find(cells->begin(), cells->end(), mTable.cells[i].box) != cells->end()) found.push_back(i);
        }
    }
    return found;
}

bool TableLayout::columnsStand()
{
    if (!mTable.columnsCounted) return false;
    if (isFixed()) return true;
    const auto dirty = dirtyCells();
    if (!dirty) return false;
    // Whether a column's greatest wish is another one now that one of its cells has another.
    const auto stands = [](Unit was, Unit now, Unit greatest) { return now == was || (was < greatest && now <= greatest); };
    for (const uint32_t i : *dirty) {
        TableCell &cell = mTable.cells[i];
        const PreferredWidths was = cell.counted, now = widthsOf(cell);
        const TableColumn &column = mTable.columns[cell.column];
        const bool counts = isConstrained(cell) == column.constrained;
        if (cell.columnSpan > 1 ? was.min != now.min || was.max != now.max
                                : !stands(was.min, now.min, column.own.min) ||
                                      (counts && !stands(was.max, now.max, column.own.max)))
            return false;
        cell.counted = now;
    }
    return true;
}

void TableLayout::addSpanConstraint(TableCell &cell)
{
    auto &columns = mTable.columns;
    const PreferredWidths widths = cell.counted = widthsOf(cell);
    const std::size_t from = cell.column, count = std::min<std::size_t>(cell.columnSpan, columns.size() - cell.column);
    const Unit gaps = mTable.spacingX * int(count - 1);
    if (const auto percent = widthPercent(*cell.box)) {
        double sum = 0;
        Unit rest;
        std::size_t free = 0;
        for (std::size_t i = from; i < from + count; ++i) {
            if (columns[i].hasPercent) {
                sum += columns[i].percent;
            } else {
                rest += columns[i].max;
                ++free;
            }
        }
        if (free && *percent > sum)
            for (std::size_t i = from; i < from + count; ++i) {
                if (columns[i].hasPercent) continue;
                columns[i].percent = rest.raw > 0 ? (*percent - sum) * columns[i].max.raw / rest.raw : (*percent - sum) / double(free);
            }
        for (std::size_t i = from; i < from + count; ++i) columns[i].hasPercent = columns[i].hasPercent || columns[i].percent > 0;
    }
    // Columns grow by what the cell needs beyond them, as a table of their own would.
    const std::vector<Unit> mins = distribute(columns, from, count, widths.min - gaps);
    const std::vector<Unit> maxs = distribute(columns, from, count, widths.max - gaps);
    for (std::size_t i = 0; i < count; ++i) {
        TableColumn &column = columns[from + i];
        column.min = std::max(column.min, mins[i]);
        column.max = std::max({column.max, maxs[i], column.min});
    }
}

void TableLayout::columnConstraints()
{
    if (mTable.columnsValid) return;
    mTable.columnsValid = true;
    if (columnsStand()) return;
    mTable.columnsCounted = true;
    auto &columns = mTable.columns;
    for (TableColumn &column : columns) {
        BlockBox *box = column.box;
        column = {};
        column.box = box;
        if (!box) continue;
        if (const auto given = fixedWidth(*box)) {
            column.max = *given;
            column.constrained = true;
        }
        if (const auto percent = widthPercent(*box)) {
            column.hasPercent = true;
            column.percent = *percent;
        }
    }
    if (isFixed()) {
        fixedConstraints();
        return;
    }
    std::vector<TableCell *> spanning;
    for (TableCell &cell : mTable.cells) {
        if (cell.columnSpan == 1)
            addCellConstraint(cell);
        else
            spanning.push_back(&cell);
    }
    for (TableColumn &column : columns) {
        column.own = {column.min, column.max};
        column.max = std::max(column.max, column.min);
    }
    std::stable_sort(spanning.begin(), spanning.end(), [](const TableCell *a, const TableCell *b) { return a->columnSpan < b->columnSpan; });
    for (TableCell *cell : spanning) addSpanConstraint(*cell);
    double sum = 0;
    for (TableColumn &column : columns) {
        if (!column.hasPercent) continue;
        column.percent = std::min(column.percent, std::max(0.0, 100 - sum));
        sum += column.percent;
    }
}

// The fixed algorithm: the columns' own widths, then the first row's.
void TableLayout::fixedConstraints()
{
    for (const TableCell &cell : mTable.cells) {
        if (cell.row > 0) break;
        const uint32_t end = std::min<uint32_t>(cell.column + cell.columnSpan, uint32_t(mTable.columns.size()));
        mEngine.resolveEdges(*cell.box, Unit()); // what it says may leave them out
        const auto given = fixedWidth(*cell.box);
        const auto percent = widthPercent(*cell.box);
        for (uint32_t c = cell.column; c < end; ++c) {
            TableColumn &column = mTable.columns[c];
            if (column.constrained || column.hasPercent) continue;
            if (given) {
                column.max = (*given - mTable.spacingX * int(cell.columnSpan - 1)) / int(cell.columnSpan);
                column.constrained = true;
            } else if (percent) {
                column.percent = *percent / cell.columnSpan;
                column.hasPercent = true;
            }
        }
    }
}

// The widths of `count` columns whose sum is `target`, or of their smallest widths if that is more: grown from the smallest
// widths over percentages and given widths to the preferred ones; beyond these, columns without a width of their own grow.
std::vector<Unit> TableLayout::distribute(const std::vector<TableColumn> &columns, std::size_t from, std::size_t count, Unit target)
{
    std::vector<Unit> result(count);
    Unit guesses[4];
    const auto guess = [&](const TableColumn &column, int level) {
        if (column.hasPercent && level >= 1) return std::max(column.min, Unit::from(target.toDouble() * column.percent / 100));
        if (column.constrained && level >= 2) return column.max;
        return level >= 3 && !column.hasPercent ? column.max : column.min;
    };
    for (int level = 0; level < 4; ++level)
        for (std::size_t i = 0; i < count; ++i) guesses[level] += guess(columns[from + i], level);
    for (std::size_t i = 0; i < count; ++i) result[i] = guess(columns[from + i], 0);
    if (target <= guesses[0] || !count) return result;
    for (int level = 0; level < 3; ++level) {
        if (target > guesses[level + 1]) continue;
        const double room = (target - guesses[level]).toDouble(), growth = (guesses[level + 1] - guesses[level]).toDouble();
        Unit sum;
        std::size_t last = count;
        for (std::size_t i = 0; i < count; ++i) {
            const Unit low = guess(columns[from + i], level), high = guess(columns[from + i], level + 1);
            result[i] = growth > 0 ? low + Unit::from((high - low).toDouble() * room / growth) : low;
            if (high > low) last = i;
            sum += result[i];
        }
        if (last < count) result[last] += target - sum;
        return result;
    }
    const Unit excess = target - guesses[3];
    // Who takes the excess: columns without a width; with a given one; with a percentage.
    for (const int kind : {0, 1, 2}) {
        double weight = 0;
        std::size_t members = 0;
        const auto belongs = [&](const TableColumn &c) {
            return kind == 0 ? !c.constrained && !c.hasPercent : kind == 1 ? c.constrained && !c.hasPercent : c.hasPercent;
        };
        for (std::size_t i = 0; i < count; ++i) {
            const TableColumn &column = columns[from + i];
            if (!belongs(column)) continue;
            ++members;
            weight += kind == 2 ? column.percent : column.max.toDouble();
        }
        if (!members) continue;
        Unit sum;
        std::size_t last = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const TableColumn &column = columns[from + i];
            result[i] = guess(column, 3);
            if (belongs(column)) {
                const double share = weight > 0 ? (kind == 2 ? column.percent : column.max.toDouble()) / weight : 1.0 / double(members);
                result[i] += Unit::from(excess.toDouble() * share);
                last = i;
            }
            sum += result[i];
        }
        result[last] += target - sum;
        return result;
    }
    return result;
}

void TableLayout::distributeFixed(Unit target)
{
    auto &columns = mTable.columns;
    Unit sum;
    std::size_t free = 0;
    for (TableColumn &column : columns) {
        column.width = column.hasPercent ? Unit::from(target.toDouble() * column.percent / 100) : column.max;
        if (!column.constrained && !column.hasPercent)
            ++free;
        else
            sum += column.width;
    }
    Unit rest = target - sum;
    if (free) {
        const Unit each = std::max(Unit(), rest) / int(free);
        for (TableColumn &column : columns)
            if (!column.constrained && !column.hasPercent) column.width = each;
    } else if (rest.raw > 0 && sum.raw > 0) {
        for (TableColumn &column : columns) column.width += Unit::from(rest.toDouble() * column.width.raw / sum.raw);
    }
}

PreferredWidths TableLayout::preferred(Engine &engine, BlockBox &box)
{
    TableLayout layout(engine, box, {});
    layout.prepareGrid();
    engine.resolveEdges(box, Unit());
    layout.columnConstraints();
    const Unit frame = layout.gridFrame();
    PreferredWidths widths{frame, frame};
    double percents = 0, fromPercents = 0;
    Unit others;
    for (const TableColumn &column : layout.mTable.columns) {
        widths.min += column.min;
        widths.max += column.max;
        if (column.hasPercent) {
            percents += column.percent;
            if (column.percent > 0) fromPercents = std::max(fromPercents, column.max.toDouble() * 100 / column.percent);
        } else {
            others += column.max;
        }
    }
    if (percents > 0) {
        if (percents < 100) fromPercents = std::max(fromPercents, others.toDouble() * 100 / (100 - percents));
        else if (others.raw > 0) fromPercents = 1e6;
        widths.max = std::max(widths.max, Unit::from(std::min(fromPercents, 1e6)) + frame);
    }
    for (Box *each = box.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (child && isCaption(*child)) widths.min = std::max(widths.min, engine.preferredWidths(*child).min);
    }
    widths.max = std::max(widths.max, widths.min);
    if (const auto given = fixedWidth(box)) widths.min = widths.max = std::max(*given, layout.isFixed() ? Unit() : widths.min);
    return widths;
}

Unit TableLayout::usedWidth(Engine &engine, BlockBox &box, Unit containingWidth, Unit available)
{
    const PreferredWidths widths = engine.preferredWidths(box);
    if (!box.isTable()) {
        const auto given = layout::usedWidth(box, containingWidth);
        return clampedWidth(box, given ? *given : engine.contentWidthOf(box, available), containingWidth);
    }
    const auto given = layout::usedWidth(box, containingWidth);
    const bool fixed = given && tableLayoutIsFixed(box.style());
    Unit used = given ? *given : std::min(std::max(widths.min, available), widths.max);
    used = clampedWidth(box, used, containingWidth);
    return fixed ? used : std::max(used, widths.min);
}

Unit TableLayout::spannedWidth(const TableCell &cell) const
{
    Unit width;
    const std::size_t end = std::min<std::size_t>(cell.column + cell.columnSpan, mTable.columns.size());
    for (std::size_t c = cell.column; c < end; ++c) width += mTable.columns[c].width;
    return width + mTable.spacingX * int(end - cell.column - 1);
}

} // namespace layout
