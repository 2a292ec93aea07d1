// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/ValueReader.h"
#include "engine/css/Values.h"

namespace css {

/// What lengths hang on that stand in values kept as text until they are used: gradients, transforms.
struct LateContext
{
    double fontSize = 16, rootFontSize = 16; ///< pixels
    double viewWidth = 0, viewHeight = 0;    ///< pixels
};

/// A length or per cents as a sum of both; `flags` as of `ValueReader::takeLength`.
std::optional<Length> takeLateLength(ValueReader &reader, const LateContext &context, unsigned flags = ValueReader::Percent);
/// Degrees; a bare 0 too.
std::optional<double> takeAngle(ValueReader &reader);

} // namespace css
