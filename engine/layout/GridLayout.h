// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/GridPlacement.h"
#include "engine/layout/GridTracks.h"
#include "engine/layout/ItemLayout.h"

namespace layout {

/// Lays a grid container out: CSS Grid Layout 1. Placement (8) and the sizes of tracks (11) have classes of their own.
class GridLayout
{
public:
    GridLayout(Engine &engine, BlockBox &box, const Constraint &constraint);
    /// Places the items; answers the height of the content.
    Unit run();
    /// Preferred widths of the content.
    static PreferredWidths preferred(Engine &engine, BlockBox &box);

private:
    struct Item {
        BlockBox *box;
        GridSpan rows, columns;
        PreferredWidths widths;
        css::Alignment align, justify;
        Unit width, height;  ///< border box; the height that it takes by itself
        Unit baseline, shim; ///< `shim` brings its baseline down to that of the others in its row
        bool byBaseline = false;
    };

    void place(std::optional<Unit> width, std::optional<Unit> height);
    int repeatsOf(const css::TrackList &list, std::optional<Unit> room, Unit gap) const;
    void sizeColumns(std::optional<Unit> room, GridTracks::Mode mode);
    void sizeRows();
    void alignBaselines();
    Unit itemWidth(const Item &item, Unit room) const;
    Unit minimumOf(const Item &item, bool columns, Unit content) const;
    bool stretches(const Item &item, bool width) const;
    void layoutItems();
    void placeItem(const Item &item, Unit areaX, Unit areaY, Unit areaWidth, Unit areaHeight);
    void noteBaselines();
    void notePositioned();
    css::Align sided(css::Align align, bool columns) const;

    Engine &mEngine;
    BlockBox &mBox;
    Constraint mConstraint;
    bool mRightToLeft;
    std::optional<Unit> mHeight; ///< of the content, where it is known before the items
    Unit mContentHeight;
    GridPlacement mPlacement;
    GridTracks mColumns, mRows;
    std::vector<Item> mItems;
};

} // namespace layout
