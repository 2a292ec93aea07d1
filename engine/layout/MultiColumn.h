// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/Engine.h"

namespace layout {

/// Columns (CSS Multi-column Layout 1). The content is laid out as one long strip, as wide as a column, and cut where
/// columns end: a change in it is laid out like any other, and a cut is found by the sums, without a walk.

/// How wide and how many, in that much room; nothing where the box has no columns.
std::optional<ColumnSet> columnsFor(const BlockBox &box, Unit available);
/// Whether it spans all columns of the container that it stands in.
bool spansColumns(const BlockBox &child);
/// How many forced ends of columns a box brings to the flow that it stands in.
uint32_t forcedBreaksOf(const BlockBox &box);
/// Cuts the strip that was laid out in the container; `stripHeight` is its content's. `limit` is the height that there is
/// for the content, nothing where it is as high as it must. Answers the content's height.
Unit cutIntoColumns(BlockBox &box, ColumnSet set, Unit stripHeight, Unit lastMargin, std::optional<Unit> limit);
/// How high a row of columns may be that begins so far below the content's top, and where the next one begins.
struct ColumnRoom {
    Unit height, next;
};
/// Cuts the strip anew, into rows one below the other where it doesn't fit into one: sheets of paper. Changes nothing in
/// the box; `height` is what the content takes then.
ColumnSet cutIntoRows(BlockBox &box, const std::function<ColumnRoom(Unit y)> &room, Unit &height);

} // namespace layout
