// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace layout {

/// Whether an SVG file (its bytes, or as many of them as hold its first tag) says a ratio and no size: a view box without
/// `width` and `height`, or with per cents there. Such a picture is as wide as there is room.
bool drawingHasOnlyRatio(const QByteArray &svg);

} // namespace layout
