// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/LateValues.h"

namespace css {

struct GradientStop
{
    QRgb color = 0;
    Length at;           ///< auto: between its neighbours. Of an angle, per cents of a turn
    bool isHint = false; ///< no colour: where the mean of the two around stands
};

/// A gradient as CSS Images 3 and 4 tell it.
struct Gradient
{
    enum class Shape : uint8_t { Linear, Radial, Conic };
    enum class Extent : uint8_t { FarthestCorner, ClosestSide, FarthestSide, ClosestCorner, Explicit };

    Shape shape = Shape::Linear;
    bool repeating = false;
    double angle = 180;          ///< Linear, Conic: degrees, clockwise from "up"
    int cornerX = 0, cornerY = 0; ///< Linear: -1 or 1 each where it runs into a corner; then `angle` doesn't count
    bool circle = false;
    Extent extent = Extent::FarthestCorner;
    Length radiusX, radiusY; ///< Explicit
    Length x = Length::percentage(50), y = Length::percentage(50); ///< Radial, Conic: the centre
    std::vector<GradientStop> stops;
};

/// Nothing for what isn't a gradient, or an invalid one. The prefixed linear form is read too.
std::optional<Gradient> parseGradient(const QString &text, const LateContext &context, QRgb currentColor);

} // namespace css
