// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/HtmlElements.h"
#include "engine/dom/Names.h"
#include "engine/ranges/Movement.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QKeyEvent>
#include <QScopedValueRollback>

// Selecting cells.

namespace surface {

namespace {
constexpr int edgeReach = 5; // client pixels around a table's edge in which a press means its rows or columns
}

void View::cellsChanged()
{
    if (!mLoaded) return;
    mWidget.viewport()->update();
    Q_EMIT mWidget.cellSelectionChanged();
    commandStatesChanged();
}

bool View::dragCells(QPoint client)
{
    dom::Element *over = elementAt(client);
    if (!mPressed || !mPressed->isConnected() || !over) return false;
    // Between the cells the one is meant into which the caret would go.
    const auto isTable = [](const dom::Node &node) { return node.isElement() && node.asElement()->is(dom::names::table); };
    const ranges::Position place = isTable(*over) ? positionAt(toDocument(client)) : ranges::Position();
    const ranges::Position &anchor = mLoaded->selection().anchor();
    dom::Node *const began = isTable(*mPressed) && anchor ? anchor.node.get() : mPressed.get();
    const auto [from, to] = CellSelection::cellsOfOneTable(began, place ? place.node.get() : over);
    if (!from) {
        mCells.clear();
        return false;
    }
    // The text selection stays a caret where the drag began.
    const QScopedValueRollback<bool> selecting(mSelectingCells, true);
    ranges::SelectionObject &selection = mLoaded->selection();
    if (selection.isRange()) selection.setCaret(selection.anchor());
    mCells.selectBlock(*from, *to);
    return true;
}

bool View::selectFromEdge(QPoint client)
{
    if (mWidget.editMode() != dom::EditMode::Edit) return false;
    for (const bool fromLeft : {true, false}) {
        const QPoint inside = client + (fromLeft ? QPoint(edgeReach + 2, 0) : QPoint(0, edgeReach + 2));
        dom::Element *cell = CellSelection::cellAround(elementAt(inside));
        dom::Element *table = cell ? dom::table::tableOf(*cell) : nullptr;
        if (!table || !table->isContentEditable()) continue;
        const QRect box = elementRect(*table);
        const int away = fromLeft ? client.x() - box.left() : client.y() - box.top();
        if (away < -edgeReach || away > 1) continue;
        const QScopedValueRollback<bool> selecting(mSelectingCells, true);
        ranges::SelectionObject &selection = mLoaded->selection();
        if (!selection.isCaret()) selection.setCaret(ranges::Position::startOf(*cell));
        fromLeft ? mCells.selectRow(*cell) : mCells.selectColumn(*cell);
        mDrag.end();
        mEdge = fromLeft ? Edge::Left : Edge::Top;
        mEdgeCell = cell;
        return true;
    }
    return false;
}

/// The drag goes on along the table's edge: more rows, or columns.
bool View::dragAlongEdge(QPoint client)
{
    if (mEdge == Edge::None || !mEdgeCell || !mEdgeCell->isConnected()) return false;
    const dom::Element *table = dom::table::tableOf(*mEdgeCell);
    if (!table) return false;
    const QRect box = elementRect(*table), start = elementRect(*mEdgeCell);
    const QPoint inside = mEdge == Edge::Left
                              ? QPoint(start.center().x(), std::clamp(client.y(), box.top() + 1, box.bottom() - 1))
                              : QPoint(std::clamp(client.x(), box.left() + 1, box.right() - 1), start.center().y());
    dom::Element *cell = CellSelection::cellAround(elementAt(inside));
    while (cell && dom::table::tableOf(*cell) != table)
        cell = CellSelection::cellAround(cell->parentElement());
    if (!cell) return true; // between cells, or out of the view
    const QScopedValueRollback<bool> selecting(mSelectingCells, true);
    mEdge == Edge::Left ? mCells.selectRows(*mEdgeCell, *cell) : mCells.selectColumns(*mEdgeCell, *cell);
    return true;
}

/// Shift and an arrow while cells are selected.
bool View::moveCells(const QKeyEvent &event)
{
    if (mCells.isEmpty() || !(event.modifiers() & Qt::ShiftModifier)) return false;
    switch (event.key()) {
    case Qt::Key_Left: mCells.moveFocus(-1, 0); return true;
    case Qt::Key_Right: mCells.moveFocus(1, 0); return true;
    case Qt::Key_Up: mCells.moveFocus(0, -1); return true;
    case Qt::Key_Down: mCells.moveFocus(0, 1); return true;
    default: return false;
    }
}

/// An extension of the text selection that leaves its cell selects cells instead.
bool View::extendOverCells(const ranges::Position &to)
{
    ranges::SelectionObject &selection = mLoaded->selection();
    if (!to || !selection.anchor()) return false;
    const auto [from, focus] = CellSelection::cellsOfOneTable(selection.anchor().node.get(), to.node.get());
    if (!from) return false;
    const QScopedValueRollback<bool> selecting(mSelectingCells, true);
    selection.setCaret(selection.anchor());
    mCells.selectBlock(*from, *focus);
    return true;
}

} // namespace surface
