// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"

#include <vector>

namespace dom {

/// Where the cells of a table stand, spans counted. Columns and rows count from 0.
class TableGrid
{
public:
    explicit TableGrid(const Element &table);
    struct Area
    {
        int left = 0, top = 0, right = 0, bottom = 0; ///< inclusive
        bool meets(const Area &o) const
        {
            return left <= o.right && o.left <= right && top <= o.bottom && o.top <= bottom;
        }
        Area united(const Area &o) const;
        friend bool operator==(const Area &, const Area &) = default;
    };
    struct Place
    {
        Element *cell;
        Area area;
    };
    const std::vector<Place> &places() const { return mPlaces; }
    int columns() const { return mColumns; } ///< of its widest row
    int rows() const { return mRows; }
    /// Null for a cell of another table.
    const Place *find(const Element &cell) const;
    Element *at(int column, int row) const;
    /// Grown until no cell reaches over its edge.
    Area closed(Area area) const;
    std::vector<Element *> cellsIn(const Area &area) const;

private:
    std::vector<Place> mPlaces;
    int mColumns = 0;
    int mRows = 0;
};

} // namespace dom
