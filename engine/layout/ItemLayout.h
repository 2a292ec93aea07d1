// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/BoxStyle.h"
#include "engine/layout/Engine.h"

namespace layout {

/// What flex and grid containers share: their items, and how these are measured, laid out and aligned.

/// The children in flow, in the order that `order` gives them (CSS Flexible Box Layout 1, 5.4).
std::vector<BlockBox *> itemsInOrder(const BlockBox &container);

/// Says a box's border-box height, or that its own style does. `definite`: percentages below may count on it.
void forceHeight(BlockBox &box, std::optional<Unit> height, bool definite = false);
/// Lays an item out at that border-box width, in the containing block `area`.
void layoutItem(Engine &engine, BlockBox &item, const Constraint &area, Unit width, std::optional<Unit> height, bool definite);
/// The border-box height that the item takes by itself at that width. Kept until the item changes: items in items
/// would be measured over and over.
Unit measureHeight(Engine &engine, BlockBox &item, const Constraint &area, Unit width);
/// Sets the item's edges against the width of its containing block, and answers its preferred border-box widths.
PreferredWidths itemWidths(Engine &engine, BlockBox &item, Unit areaWidth);

/// A size property as a border-box length; nothing for keywords, and for percentages of a `base` that isn't definite.
std::optional<Unit> definiteSize(const BlockBox &item, const css::Length &length, Unit base, bool horizontal);
/// A width by keyword: min-content, max-content, fit-content within `available`; nothing for others.
std::optional<Unit> keywordWidth(const css::Length &length, const PreferredWidths &widths, Unit available);
/// The box that its content may stick out of: it has no automatic minimum size.
bool isScrollContainer(const BlockBox &box);

css::Alignment alignItemsOf(const BlockBox &container);
css::Alignment justifyItemsOf(const BlockBox &container);
/// What `align-self` comes to, `auto` resolved.
css::Alignment alignSelfOf(const BlockBox &container, const BlockBox &item);
css::Alignment justifySelfOf(const BlockBox &container, const BlockBox &item);
/// A gap in pixels; percentages of what isn't definite are none.
Unit gapOf(const css::Length &gap, Unit base);

/// How free room is shared out in front of and between `count` things (CSS Box Alignment 3, 5).
struct Distribution {
    Unit before, between;
};
/// `align` as seen from the start: 0 start, 1 end for the sided ones.
Distribution distribute(css::Align align, bool safe, Unit free, std::size_t count);
/// The part of the free room in front of something aligned that way; start and end count from the axis' start.
double alignFactor(css::Align align);

} // namespace layout
