// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/BoxStyle.h"
#include "engine/layout/Engine.h"

namespace layout {

/// One edge of the collapsing border model.
struct CollapsedEdge {
    Unit width;
    css::BorderStyle style{};
    QColor color;
    uint8_t rank = 0; ///< cell over row over section over column over table
};

struct TableCell {
    BlockBox *box = nullptr;
    uint32_t row = 0, column = 0, rowSpan = 1, columnSpan = 1;
    CollapsedEdge top, right, bottom, left;
};

struct TableRow {
    BlockBox *box = nullptr;
    BlockBox *section = nullptr;
    uint32_t firstCell = 0, cellCount = 0;
    Unit top, height; ///< from the table's border box
    Unit baseline;
};

struct TableColumn {
    BlockBox *box = nullptr;
    Unit min, max;
    double percent = 0;
    bool constrained = false, hasPercent = false;
    Unit width, left; ///< `left` from the table's border box
};

/// A table: the grid of its cells, rebuilt when its parts change.
class TableBox final : public BlockBox
{
public:
    TableBox(dom::Node *node, StyleRef style) : BlockBox(BoxKind::Table, node, std::move(style)) { formattingRoot = true; }
    std::vector<TableCell> cells; ///< by row, then column
    std::vector<TableRow> rows;
    std::vector<TableColumn> columns;
    bool gridValid = false, columnsValid = false;
    bool collapsed = false;
    Unit gridTop, gridHeight; ///< the border box without captions
    Unit spacingX, spacingY;
    const TableCell *cellOf(const BlockBox &box) const;
    const TableRow *rowAt(Unit y) const;
};

/// Lays a table out: the automatic and the fixed algorithm, both border models.
class TableLayout
{
public:
    TableLayout(Engine &engine, BlockBox &table, const Constraint &constraint);
    void run();
    /// Border-box width of a table in flow.
    static Unit usedWidth(Engine &engine, BlockBox &table, Unit containingWidth, Unit available);
    static PreferredWidths preferred(Engine &engine, BlockBox &table);

private:
    void prepareGrid();
    void collectRows();
    void placeCells();
    void collectColumns();
    void columnConstraints();
    void addCellConstraint(const TableCell &cell);
    void addSpanConstraint(const TableCell &cell);
    bool isFixed() const;
    void fixedConstraints();
    Unit gridFrame() const;
    static std::vector<Unit> distribute(const std::vector<TableColumn> &columns, std::size_t from, std::size_t count, Unit target);
    void distributeFixed(Unit target);
    void resolveCollapsedBorders();
    void layoutRows();
    void layoutCell(TableCell &cell, Unit width);
    void spanRows(const std::vector<const TableCell *> &spanning);
    bool rowIsFixed(const TableRow &row) const;
    void stretchRows(Unit wanted);
    void placeRows(Unit top);
    Unit layoutCaptions(bool below, Unit top);
    Unit cellBaseline(const BlockBox &box) const;
    Unit spannedWidth(const TableCell &cell) const;

    Engine &mEngine;
    TableBox &mTable;
    Constraint mConstraint;
};

} // namespace layout
