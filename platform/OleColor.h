// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QColor>
#include <QPalette>

namespace platform {

/// The system's button face.
inline constexpr uint buttonFaceColor = 0x8000000F;

/// The colour behind a number as hosts give it: red in the low byte, or with the highest bit set the number of one of
/// the system's colours, which the palette then answers. A system colour that a palette doesn't know is that of a
/// button's face.
VELLUMKIT_EXPORT QColor oleColor(uint color, const QPalette &palette = QPalette());

} // namespace platform
