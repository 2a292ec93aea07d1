// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/CellSelection.h"

#include "base/Error.h"
#include "engine/css/StyleObject.h"
#include "engine/dom/HtmlElements.h"
#include "engine/dom/Names.h"
#include "engine/dom/TableGrid.h"

namespace surface {

using namespace dom;
using base::Error;

namespace {

bool isDataCell(const Element &element)
{
    return element.is(names::td) || element.is(names::th);
}

Element &tableOfCell(const Element &cell)
{
    Element *table = isDataCell(cell) ? dom::table::tableOf(cell) : nullptr;
    if (!table || !cell.isConnected())
        throw Error(base::errors::invalidCall, QStringLiteral("Only cells of a table can be selected as cells."));
    return *table;
}

std::vector<base::Ref<Element>> held(const std::vector<Element *> &cells)
{
    return {cells.begin(), cells.end()};
}

} // namespace

// The selection

std::vector<base::Ref<Element>> CellSelection::cells() const
{
    std::vector<base::Ref<Element>> there;
    for (const auto &cell : mCells)
        if (cell->isConnected()) there.push_back(cell);
    return there;
}

void CellSelection::show(Element &cell, bool selected)
{
    css::StyleObject *style = cell.runtimeStyle();
    if (!style) return;
    style->setAttribute(QStringLiteral("backgroundColor"), selected ? QStringLiteral("#0a246a") : QString());
    style->setAttribute(QStringLiteral("color"), selected ? QStringLiteral("#ffffff") : QString());
}

void CellSelection::set(std::vector<base::Ref<Element>> cells)
{
    for (const auto &cell : cells)
        tableOfCell(*cell);
    std::sort(cells.begin(), cells.end(), [](const auto &a, const auto &b) { return a->compareOrder(*b) < 0; });
    mChoice = nullptr;
    if (cells == mCells) return;
    for (const auto &old : mCells)
        if (std::find(cells.begin(), cells.end(), old) == cells.end()) show(*old, false);
    for (const auto &cell : cells)
        if (std::find(mCells.begin(), mCells.end(), cell) == mCells.end()) show(*cell, true);
    mCells = std::move(cells);
    if (!mChoiceBefore) mMemory.chosen();
    if (changed) changed();
}

void CellSelection::add(Element &cell)
{
    tableOfCell(cell);
    std::vector<base::Ref<Element>> all = cells();
    for (const auto &there : all)
        if (there.get() == &cell) return;
    all.emplace_back(&cell);
    if (!mAnchor) mAnchor = &cell;
    mFocus = &cell;
    set(std::move(all));
}

void CellSelection::selectRow(Element &cell)
{
    const TableGrid grid(tableOfCell(cell));
    const TableGrid::Place *place = grid.find(cell);
    if (!place) return;
    std::vector<Element *> row;
    for (const TableGrid::Place &other : grid.places())
        if (other.area.top == place->area.top) row.push_back(other.cell);
    mAnchor = row.front();
    mFocus = row.back();
    set(held(row));
}

void CellSelection::selectColumn(Element &cell)
{
    const TableGrid grid(tableOfCell(cell));
    const TableGrid::Place *place = grid.find(cell);
    if (!place) return;
    std::vector<Element *> column;
    for (const TableGrid::Place &other : grid.places())
        if (other.area.left <= place->area.left && place->area.left <= other.area.right) column.push_back(other.cell);
    mAnchor = column.front();
    mFocus = column.back();
    set(held(column));
}

void CellSelection::selectRows(Element &from, Element &to)
{
    const TableGrid grid(tableOfCell(from));
    const TableGrid::Place *first = grid.find(from), *last = grid.find(to);
    if (!first || !last) return;
    if (first->area.top == last->area.top) return selectRow(from);
    TableGrid::Area area = first->area.united(last->area);
    for (const TableGrid::Place &place : grid.places())
        area = {0, area.top, std::max(area.right, place.area.right), area.bottom};
    mAnchor = &from;
    mFocus = &to;
    set(held(grid.cellsIn(grid.closed(area))));
}

void CellSelection::selectColumns(Element &from, Element &to)
{
    const TableGrid grid(tableOfCell(from));
    const TableGrid::Place *first = grid.find(from), *last = grid.find(to);
    if (!first || !last) return;
    if (first->area.left == last->area.left) return selectColumn(from);
    TableGrid::Area area = first->area.united(last->area);
    for (const TableGrid::Place &place : grid.places())
        area = {area.left, 0, area.right, std::max(area.bottom, place.area.bottom)};
    mAnchor = &from;
    mFocus = &to;
    set(held(grid.cellsIn(grid.closed(area))));
}

void CellSelection::selectBlock(Element &anchor, Element &focus)
{
    Element &table = tableOfCell(anchor);
    if (&tableOfCell(focus) != &table)
        throw Error(base::errors::invalidCall, QStringLiteral("The cells belong to different tables."));
    const TableGrid grid(table);
    const TableGrid::Place *from = grid.find(anchor), *to = grid.find(focus);
    if (!from || !to) return;
    mAnchor = &anchor;
    mFocus = &focus;
    set(held(grid.cellsIn(grid.closed(from->area.united(to->area)))));
}

bool CellSelection::moveFocus(int columns, int rows)
{
    if (!mAnchor || !mFocus || !mAnchor->isConnected() || !mFocus->isConnected()) return false;
    const TableGrid grid(tableOfCell(*mFocus));
    const TableGrid::Place *place = grid.find(*mFocus);
    if (!place) return false;
    const int column = columns > 0 ? place->area.right + columns : place->area.left + columns;
    const int row = rows > 0 ? place->area.bottom + rows : place->area.top + rows;
    Element *next = grid.at(column, row);
    if (!next) return false;
    selectBlock(*mAnchor, *next);
    return true;
}

void CellSelection::clear()
{
    mAnchor = nullptr;
    mFocus = nullptr;
    set({});
}

void CellSelection::showAgain()
{
    for (const auto &cell : cells())
        show(*cell, true);
}

void CellSelection::forget()
{
    mAnchor = nullptr;
    mFocus = nullptr;
    mCells.clear();
    mMemory = {};
    mChoice = mChoiceBefore = mPlayedTo = mAlwaysPlayedTo = nullptr;
}

// Steps

const CellSelection::Choice &CellSelection::choice()
{
    if (mChoice) return mChoice;
    auto ids = std::make_shared<ranges::ElementMemory::Ids>();
    if (!mCells.empty()) {
        ids->push_back(mAnchor ? mAnchor->id() : 0);
        ids->push_back(mFocus ? mFocus->id() : 0);
    }
    for (const auto &cell : mCells)
        ids->push_back(cell->id());
    return mChoice = std::move(ids);
}

void CellSelection::choose(const Choice &choice)
{
    std::vector<base::Ref<Element>> found;
    for (const dom::NodeId id : *choice) {
        Node *node = mDocument ? mDocument->nodeById(id) : nullptr;
        Element *element = node ? node->asElement() : nullptr;
        const bool isThere = element && isDataCell(*element) && element->isConnected() && dom::table::tableOf(*element);
        found.emplace_back(isThere ? element : nullptr);
    }
    mAnchor = found.empty() ? nullptr : found[0];
    mFocus = found.empty() ? nullptr : found[1];
    if (!found.empty()) found.erase(found.begin(), found.begin() + 2);
    std::erase(found, nullptr);
    set(std::move(found));
}

void CellSelection::stepBegins()
{
    mChoiceBefore = choice();
    mPlayedTo = mAlwaysPlayedTo = nullptr;
    mRestored = false;
}

void CellSelection::stepPlayed(changes::StepName step)
{
    mPlayedTo = mMemory.untouchedSince(step);
    mAlwaysPlayedTo = mMemory.playedTo(step);
}

void CellSelection::stepEnds(changes::StepName step)
{
    if (const Choice &played = mRestored ? mAlwaysPlayedTo : mPlayedTo)
        choose(played);
    else if (mGoWithStep && step.number)
        clear();
    mMemory.keep(step, mChoiceBefore, choice());
    mChoiceBefore = nullptr;
}

void CellSelection::stepFails()
{
    if (choice() != mChoiceBefore) choose(mChoiceBefore);
    mChoiceBefore = nullptr;
}

Element *CellSelection::cellAround(Node *node)
{
    for (Element *at = node ? (node->isElement() ? node->asElement() : node->parentElement()) : nullptr; at;
         at = at->parentElement())
        if (isDataCell(*at)) return at;
    return nullptr;
}

std::pair<Element *, Element *> CellSelection::cellsOfOneTable(Node *a, Node *b)
{
    for (Element *first = cellAround(a); first; first = cellAround(first->parentElement())) {
        const Element *table = dom::table::tableOf(*first);
        if (!table || !b || !table->contains(*b)) continue;
        for (Element *second = cellAround(b); second; second = cellAround(second->parentElement()))
            if (dom::table::tableOf(*second) == table)
                return first == second ? std::pair<Element *, Element *>() : std::pair(first, second);
        return {};
    }
    return {};
}

} // namespace surface
