// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/ComputedStyle.h"

namespace css {

/// `1ex` and `1ch` at a size, in pixels.
struct FontUnits
{
    double ex, ch;
};

/// Who knows fonts tells; without it both are half of the size. Styles that were computed before keep what they took.
using FontMeasure = FontUnits (*)(const FontGroup &font, double size);
void setFontMeasure(FontMeasure measure);
FontUnits fontUnits(const FontGroup &font, double size);

} // namespace css
