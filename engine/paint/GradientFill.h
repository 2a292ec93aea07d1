// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Gradient.h"

#include <QBrush>
#include <QRectF>

namespace paint {

/// What fills a tile with a gradient. Beyond the tile the brush goes on as the gradient does.
QBrush gradientBrush(const css::Gradient &gradient, const QRectF &tile);

} // namespace paint
