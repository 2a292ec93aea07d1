// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/ComputedStyle.h"
#include "engine/css/LateValues.h"

#include <QTransform>

namespace css {

/// What `translate`, `rotate`, `scale` and `transform` together do to a border box of that size (pixels), about its
/// `transform-origin`, in coordinates from its top left corner. Functions in three dimensions count as far as they stay
/// in the plane; a list with one that is invalid is none. The identity where there is nothing.
QTransform transformOf(const ComputedStyle &style, QSizeF box, const LateContext &context);

} // namespace css
