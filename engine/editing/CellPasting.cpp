// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/CellPasting.h"

#include "engine/dom/Document.h"
#include "engine/dom/HtmlElements.h"
#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"

#include <algorithm>
#include <climits>
#include <map>
#include <set>

namespace editing {

using namespace dom;
using namespace ranges;
using changes::ChangeTracker;
using changes::Kind;

namespace {

bool isDataCell(const Element &element)
{
    return element.is(names::td) || element.is(names::th);
}

/// The cell of a table around the node that is edited together with it.
Element *cellAround(Node *node)
{
    Element *cell = node->isElement() ? node->asElement() : node->parentElement();
    while (cell && !isDataCell(*cell))
        cell = cell->parentElement();
    return cell && table::tableOf(*cell) ? cell : nullptr;
}

/// An empty cell is copied with a no-break space, by which any program shows its line.
void holdEmptyOpen(Element &table)
{
    const TableGrid grid(table);
    for (const TableGrid::Place &place : grid.places()) {
        const Node *only = place.cell->firstChild();
        if (only && (only->nextSibling() || only->nodeValue() != QString(QChar(noBreakSpace)))) continue;
        while (Node *child = place.cell->firstChild())
            RawTree::remove(*child);
        RawTree::setHeldOpen(*place.cell, true);
    }
}

} // namespace

CellPasting::CellPasting(Editor &editor, Cells selected) : mEditor(editor), mSelected(std::move(selected))
{
    const SelectionObject &selection = editor.selection();
    if (selection.type() == SelectionObject::Type::Text) mCell = cellAround(selection.focus().node.get());
    if (!mSelected.empty()) mTable = table::tableOf(*mSelected.front());
    if (!mTable && mCell) mTable = table::tableOf(*mCell);
}

bool CellPasting::selectsWholeRows() const
{
    // In the order of the document the cells of a row follow each other.
    for (size_t i = 0; i < mSelected.size();)
        for (Element *cell : table::cells(*mSelected[i]->parentElement()))
            if (i == mSelected.size() || mSelected[i++] != cell) return false;
    return true;
}

bool CellPasting::isPlaceFor(Way way) const
{
    if (!mTable) return false;
    switch (way) {
    case Way::Rows:
        return editingHost(*mTable) && selectsWholeRows();
    case Way::Cells:
        return std::any_of(mSelected.begin(), mSelected.end(), [](const auto &cell) { return editingHost(*cell); });
    case Way::Nested:
        return mCell && mEditor.canEdit() && editingHost(*mCell);
    }
    return false;
}

bool CellPasting::isPossible(Way way, int columns, bool wholeRows) const
{
    if (columns <= 0 || !isPlaceFor(way)) return false;
    return way != Way::Rows || wholeRows || TableGrid(*mTable).columns() == columns;
}

bool CellPasting::paste(Way way, const Snippet &snippet)
{
    const Ref<DocumentFragment> content = Pasting::read(mEditor.document(), snippet.html);
    Element *table = Pasting::onlyTable(*content);
    if (!table || !isPossible(way, TableGrid(*table).columns(), snippet.wholeRows)) return false;
    if (way == Way::Nested) return mEditor.paste(snippet);
    holdEmptyOpen(*table);
    return way == Way::Rows ? pasteRows(*table) : pasteCells(*table);
}

/// The row behind which others can stand: no cell reaches from it, or from further up, over its lower edge.
Element *CellPasting::lastRow(const TableGrid &grid) const
{
    const TableGrid::Place *place = grid.find(mSelected.empty() ? *mCell : *mSelected.back());
    if (!place) return nullptr;
    int bottom = place->area.bottom;
    for (const TableGrid::Place &other : grid.places()) // from the top
        if (other.area.top <= bottom) bottom = std::max(bottom, other.area.bottom);
    return table::rows(*mTable)[size_t(bottom)];
}

bool CellPasting::pasteRows(Element &from)
{
    const TableGrid grid(*mTable);
    Element *last = lastRow(grid);
    if (!last || !editingHost(*last->parentElement())) return false;
    const std::vector<Element *> rows = table::rows(from);
    const int columns = grid.columns();
    const TableGrid source(from);
    std::vector<int> wide(rows.size());
    for (const TableGrid::Place &place : source.places())
        for (int row = place.area.top; row <= place.area.bottom; ++row)
            wide[size_t(row)] = std::max(wide[size_t(row)], place.area.right + 1);
    for (size_t row = 0; row < rows.size(); ++row) // they aren't in the page yet
        for (; wide[row] < columns; ++wide[row]) {
            const Ref<Element> cell = mEditor.document().createElement(QStringLiteral("td"));
            RawTree::append(*rows[row], *cell);
            RawTree::setHeldOpen(*cell, true);
        }
    ChangeTracker::Step step(mEditor.tracker(), Kind::Command);
    ParentNode &parent = *last->parentNode();
    Node *before = last->nextSibling();
    for (Element *row : rows) {
        const Ref<Element> moved(row);
        RawTree::remove(*row);
        mEditor.tracker().insert(parent, *moved, before);
    }
    const std::vector<Element *> cells = table::cells(*rows.front());
    if (!cells.empty()) mEditor.selection().setCaret(Position::startOf(*cells.front()));
    step.done();
    return true;
}

std::vector<TableGrid::Place> CellPasting::targets(const TableGrid &source) const
{
    const TableGrid grid(*mTable);
    std::vector<TableGrid::Place> targets;
    if (mSelected.size() > 1) {
        std::set<const Element *> selected;
        for (const auto &cell : mSelected)
            selected.insert(cell.get());
        for (const TableGrid::Place &place : grid.places())
            if (selected.count(place.cell)) targets.push_back(place);
        return targets;
    }
    const TableGrid::Area &first = grid.find(*mSelected.front())->area;
    for (const TableGrid::Place &place : grid.places()) {
        const int column = place.area.left - first.left, row = place.area.top - first.top;
        if (column >= 0 && column < source.columns() && row >= 0 && row < source.rows()) targets.push_back(place);
    }
    return targets;
}

void CellPasting::write(Element &cell, const Element *source)
{
    ChangeTracker &tracker = mEditor.tracker();
    while (Node *child = cell.lastChild())
        tracker.remove(*child);
    const bool empty = !source || !source->hasChildNodes();
    tracker.setHeldOpen(cell, empty);
    if (empty) return;
    for (const Node *child = source->firstChild(); child; child = child->nextSibling())
        tracker.insert(cell, *child->clone(true), nullptr);
}

bool CellPasting::pasteCells(const Element &from)
{
    const TableGrid source(from);
    const std::vector<TableGrid::Place> places = targets(source);
    std::map<std::pair<int, int>, const Element *> sources; // a cell that reaches over several is written once
    for (const TableGrid::Place &place : source.places())
        sources[{place.area.left, place.area.top}] = place.cell;
    int left = INT_MAX, top = INT_MAX;
    for (const TableGrid::Place &place : places) {
        left = std::min(left, place.area.left);
        top = std::min(top, place.area.top);
    }
    ChangeTracker::Step step(mEditor.tracker(), Kind::Command);
    Element *first = nullptr;
    for (const TableGrid::Place &place : places) {
        if (!editingHost(*place.cell)) continue;
        const auto found =
            sources.find({(place.area.left - left) % source.columns(), (place.area.top - top) % source.rows()});
        write(*place.cell, found == sources.end() ? nullptr : found->second);
        if (!first) first = place.cell;
    }
    if (!first) return false;
    mEditor.selection().setCaret(Position::startOf(*first));
    step.done();
    return true;
}

} // namespace editing
