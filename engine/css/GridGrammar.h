// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/GridValues.h"
#include "engine/css/ValueReader.h"

namespace css {

/// Longhands of box alignment and of grids; nothing for others.
std::optional<Value> readGridLonghand(PropertyId id, ValueReader &reader);
/// `place-*`, `grid`, `grid-template`, `grid-area`, `grid-row`, `grid-column`; nothing for others.
std::optional<std::vector<PropertyValue>> readGridShorthand(Shorthand shorthand, ValueReader &reader);
/// The areas that the strings of `grid-template-areas` name; nothing where rows differ in length or an area isn't a
/// rectangle.
std::optional<GridAreas> gridAreas(const QStringList &rows);

} // namespace css
