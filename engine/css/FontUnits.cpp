// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/FontUnits.h"

namespace css {

namespace {

FontMeasure known = nullptr;

} // namespace

void setFontMeasure(FontMeasure measure)
{
    known = measure;
}

FontUnits fontUnits(const FontGroup &font, double size)
{
    return known ? known(font, size) : FontUnits{size / 2, size / 2};
}

} // namespace css
