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
    PreferredWidths counted; ///< what its columns have been told
    CollapsedEdge top, right, bottom, left;
};

struct TableRow {
    BlockBox *box = nullptr;
    BlockBox *section = nullptr;
    uint32_t firstCell = 0, cellCount = 0;
    Unit top, height; ///< from the table's border box
    Unit baseline;
    bool joined = false; ///< a cell over several rows covers it
};

struct TableColumn {
    BlockBox *box = nullptr;
    Unit min, max;
    PreferredWidths own; ///< of the cells that stand in it alone
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
    bool columnsCounted = false; ///< since the grid was made
    bool placed = false;         ///< its rows stand where the columns and the rows' heights put them
    bool stretched = false;      ///< rows are higher than their content asks for
    bool collapsed = false;
    Unit gridTop, gridHeight; ///< the border box without captions
    Unit spacingX, spacingY;
    const TableRow *rowAt(Unit y) const;
    /// The index of a row that has been placed; nothing for another box.
    std::optional<uint32_t> indexOf(const BlockBox &row) const;
    /// Its sections and rows know of nothing that is to be done.
    void settle(TableRow &row);
};

/// Lays a table out: the automatic and the fixed algorithm, both border models. What changes in a cell costs its row, as
/// long as the columns keep their widths; a row that becomes higher costs a step for each row below it, of which no cell
/// is looked at.
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
    /// The cells that something has changed in, by their places in the grid; nothing where nobody kept account.
    std::optional<std::vector<uint32_t>> dirtyCells() const;
    /// Whether what has changed in cells leaves the columns' wishes as they were.
    bool columnsStand();
    /// Of a cell that stands in one column.
    PreferredWidths widthsOf(const TableCell &cell) const;
    bool isConstrained(const TableCell &cell) const;
    void addCellConstraint(TableCell &cell);
    void addSpanConstraint(TableCell &cell);
    bool isFixed() const;
    void fixedConstraints();
    Unit gridFrame() const;
    static std::vector<Unit> distribute(const std::vector<TableColumn> &columns, std::size_t from, std::size_t count, Unit target);
    void distributeFixed(Unit target);
    /// Whether each column is as wide as before and stands where it did.
    bool placeColumns();
    void resolveCollapsedBorders();
    void layoutRows();
    void layoutRow(TableRow &row, std::vector<const TableCell *> &spanning);
    /// Lays out the rows of the cells that something has changed in. False where that isn't enough.
    bool relayoutDirtyRows(Unit top);
    Unit contentHeight() const;
    Unit wantedHeight(Unit height) const;
    void layoutCell(TableCell &cell, Unit width);
    void spanRows(const std::vector<const TableCell *> &spanning);
    bool rowIsFixed(const TableRow &row) const;
    void stretchRows(Unit wanted);
    void placeRows(Unit top);
    void placeRowBoxes(Unit top);
    void placeCells(const TableRow &row);
    void placeColumnBoxes();
    void finishSections();
    Unit gridLeft() const;
    Unit layoutCaptions(bool below, Unit top);
    Unit cellBaseline(const BlockBox &box) const;
    Unit spannedWidth(const TableCell &cell) const;

    Engine &mEngine;
    TableBox &mTable;
    Constraint mConstraint;
};

} // namespace layout
