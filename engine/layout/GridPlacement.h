// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/GridValues.h"

#include <optional>
#include <vector>

namespace layout {

/// Tracks that something covers, counted from 0; `end` is the line behind the last.
struct GridSpan {
    int start = 0, end = 1;
    int count() const { return end - start; }
};

/// The explicit tracks of one axis and the names of their lines (CSS Grid Layout 1, 7).
class GridAxis
{
public:
    /// `repeats` is how often an automatic repetition is written out.
    GridAxis(const css::TrackList &list, const css::GridAreas &areas, bool rows, int repeats);
    int tracks() const { return int(mSizes.size()); }
    /// The size of a track, `track` may lie in front of the explicit grid or behind it: there `automatic` repeats (7.6).
    css::TrackSize sizeOf(int track, const std::vector<css::TrackSize> &automatic) const;
    /// Tracks of an `auto-fit` repetition, which vanish where nothing stands in them.
    bool vanishes(int track) const { return mFit && track >= mRepeatFrom && track < mRepeatEnd; }

    /// What a pair of placement properties comes to: lines, or only a span for one that is placed automatically.
    struct Place {
        std::optional<GridSpan> span;
        int count = 1;
    };
    Place place(const css::GridLine &start, const css::GridLine &end) const;
    /// The line that a placement names; nothing for `auto` and spans.
    std::optional<int> lineOf(const css::GridLine &line, bool end) const;

private:
    void add(const css::TrackEntry &entry);
    int named(const QString &name, int number) const;
    int spanFrom(int line, const css::GridLine &span, int step) const;

    std::vector<css::TrackSize> mSizes;
    std::vector<QStringList> mNames; ///< of each line
    int mTemplated = 0; ///< tracks that the template sizes; named areas may add more
    int mRepeatFrom = 0, mRepeatEnd = 0;
    bool mFit = false;
};

/// Where the items of a grid stand (8.5), and how many tracks there are then.
class GridPlacement
{
public:
    struct Item {
        GridAxis::Place rows, columns;
        GridSpan rowSpan, columnSpan; ///< the result, counted from the first implicit track
    };
    void run(std::vector<Item> &items, const GridAxis &rows, const GridAxis &columns, const css::GridGroup &style);

    int rowCount = 0, columnCount = 0;
    int firstRow = 0, firstColumn = 0; ///< implicit tracks in front of the explicit ones

private:
    struct Cell { // an item seen along the flow: `major` is the axis that grows
        Item *item;
        GridAxis::Place major, minor;
        GridSpan majorSpan, minorSpan;
        bool placed = false;
    };
    bool isFree(const GridSpan &major, const GridSpan &minor) const;
    void take(Cell &cell, GridSpan major, GridSpan minor);
    void placeLocked(Cell &cell, std::vector<int> &cursors, bool dense);
    void placeFlowing(Cell &cell, bool dense);

    std::vector<std::vector<bool>> mTaken; ///< by major, then minor
    int mMinorCount = 0;
    int mMajorAt = 0, mMinorAt = 0;
};

} // namespace layout
