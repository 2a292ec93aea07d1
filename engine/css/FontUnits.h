// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/ComputedStyle.h"

namespace css {

/// What `1ex` and `1ch` are of the font's size.
struct FontUnits
{
    double ex = 0.5, ch = 0.5;
};

/// Who knows fonts tells; without it both are a half. Styles that were computed before keep what they took.
using FontMeasure = FontUnits (*)(const FontGroup &font);
void setFontMeasure(FontMeasure measure);
FontUnits fontUnits(const FontGroup &font);

} // namespace css
