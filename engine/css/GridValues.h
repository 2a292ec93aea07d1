// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Values.h"

#include <QStringList>

/// Values of box alignment (CSS Box Alignment 3) and of grids (CSS Grid Layout 1), as layout reads them.
namespace css {

enum class Align : uint8_t {
    Auto,
    Normal,
    Stretch,
    Start,
    End,
    Center,
    FlexStart,
    FlexEnd,
    SelfStart,
    SelfEnd,
    Left,
    Right,
    Baseline,
    LastBaseline,
    SpaceBetween,
    SpaceAround,
    SpaceEvenly
};

struct Alignment
{
    Align align = Align::Normal;
    bool safe = false; ///< what doesn't fit is aligned to the start
    friend bool operator==(const Alignment &, const Alignment &) = default;
};

/// One end of a track's size.
struct TrackBreadth
{
    enum class Kind : uint8_t { Auto, MinContent, MaxContent, Length, Fraction };

    Kind kind = Kind::Auto;
    Length length;
    float fraction = 0;
    friend bool operator==(const TrackBreadth &, const TrackBreadth &) = default;
};

struct TrackSize
{
    TrackBreadth min, max;
    bool fitContent = false; ///< `limit` is the argument of fit-content(); min is auto and max is max-content then
    Length limit;
    friend bool operator==(const TrackSize &, const TrackSize &) = default;
};

/// A track, or tracks that are repeated, with the names of the line in front of each.
struct TrackEntry
{
    QStringList names;
    TrackSize size;
    friend bool operator==(const TrackEntry &, const TrackEntry &) = default;
};

/// `grid-template-rows` or `-columns`. Repetitions with a count are written out already.
struct TrackList
{
    enum class Repeat : uint8_t { None, Fill, Fit };

    std::vector<TrackEntry> tracks;
    QStringList endNames; ///< of the line behind the last track
    Repeat repeat = Repeat::None;
    uint32_t repeatAt = 0; ///< the repeated tracks stand in front of this one
    std::vector<TrackEntry> repeated;
    QStringList repeatEndNames;
    friend bool operator==(const TrackList &, const TrackList &) = default;
    bool isNone() const { return tracks.empty() && repeat == Repeat::None; }
};

/// A named area, as lines counted from 0, the ends behind the last track.
struct GridArea
{
    QString name;
    int rowStart = 0, rowEnd = 0, columnStart = 0, columnEnd = 0;
    friend bool operator==(const GridArea &, const GridArea &) = default;
};

struct GridAreas
{
    std::vector<GridArea> areas;
    int rows = 0, columns = 0;
    friend bool operator==(const GridAreas &, const GridAreas &) = default;
};

/// `grid-row-start` and its like.
struct GridLine
{
    enum class Kind : uint8_t { Auto, Line, Span };

    Kind kind = Kind::Auto;
    int number = 0; ///< 0: only a name was given
    QString name;
    friend bool operator==(const GridLine &, const GridLine &) = default;
};

/// What grids and their items have.
struct GridGroup
{
    TrackList columns, rows;
    std::vector<TrackSize> autoColumns, autoRows; ///< empty: auto
    GridAreas areas;
    bool flowsInColumns = false, dense = false;
    GridLine rowStart, rowEnd, columnStart, columnEnd;
    friend bool operator==(const GridGroup &, const GridGroup &) = default;
};

} // namespace css
