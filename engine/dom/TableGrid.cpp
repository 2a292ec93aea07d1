// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/TableGrid.h"

#include "engine/dom/HtmlElements.h"
#include "engine/dom/Names.h"

#include <algorithm>
#include <set>

namespace dom {

namespace {
constexpr int widestSpan = 1000; // what HTML allows for columns; it bounds the work on any input
}

TableGrid::Area TableGrid::Area::united(const Area &o) const
{
    return {std::min(left, o.left), std::min(top, o.top), std::max(right, o.right), std::max(bottom, o.bottom)};
}

TableGrid::TableGrid(const Element &table)
{
    std::set<std::pair<int, int>> taken; // row, column of cells that reach down
    const std::vector<Element *> rows = table::rows(table);
    mRows = int(rows.size());
    for (int row = 0; row < int(rows.size()); ++row) {
        int column = 0;
        for (Element *cell : table::cells(*rows[size_t(row)])) {
            while (taken.count({row, column}))
                ++column;
            const int across = std::clamp(table::span(*cell, names::colspan), 1, widestSpan);
            const int down = std::clamp(table::span(*cell, names::rowspan), 1, int(rows.size()) - row);
            mPlaces.push_back({cell, {column, row, column + across - 1, row + down - 1}});
            for (int y = 1; y < down; ++y)
                for (int x = 0; x < across; ++x)
                    taken.insert({row + y, column + x});
            column += across;
            mColumns = std::max(mColumns, column);
        }
    }
}

const TableGrid::Place *TableGrid::find(const Element &cell) const
{
    for (const Place &place : mPlaces)
        if (place.cell == &cell) return &place;
    return nullptr;
}

Element *TableGrid::at(int column, int row) const
{
    for (const Place &place : mPlaces)
        if (place.area.meets({column, row, column, row})) return place.cell;
    return nullptr;
}

TableGrid::Area TableGrid::closed(Area area) const
{
    for (bool grown = true; grown;) {
        grown = false;
        for (const Place &place : mPlaces) {
            if (!place.area.meets(area) || area.united(place.area) == area) continue;
            area = area.united(place.area);
            grown = true;
        }
    }
    return area;
}

std::vector<Element *> TableGrid::cellsIn(const Area &area) const
{
    std::vector<Element *> cells;
    for (const Place &place : mPlaces)
        if (place.area.meets(area)) cells.push_back(place.cell);
    return cells;
}

} // namespace dom
