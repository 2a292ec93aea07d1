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

FontUnits fontUnits(const FontGroup &font)
{
    return known ? known(font) : FontUnits{};
}

} // namespace css
