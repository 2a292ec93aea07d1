// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/Queries.h"

#include <QJsonObject>

namespace layout {

/// The boxes of a laid-out page as rows, for comparing with what a browser makes of it.
///
/// `mode`, `scroll`, `rows` (one an element in document order: path, tag, the four offset values, border box, display,
/// position, float, number of client rectangles) and `text` (one a text that shows more than blanks: parent's path,
/// child node index, length, lines, first fragment's x, y and height, last one's right and bottom). Hundredths of pixels.
QJsonObject boxDump(LayoutTree &tree);

} // namespace layout
