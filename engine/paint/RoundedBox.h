// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/ComputedStyle.h"
#include "engine/layout/Unit.h"

#include <QPainterPath>

namespace paint {

/// A box with round corners (CSS Backgrounds and Borders 3, 5).
class RoundedBox
{
public:
    RoundedBox(const QRectF &rect, const css::SurroundGroup &surround);

    const QRectF &rect() const { return mRect; }
    bool isRound() const;
    /// The box within these edges, with the corners that are left.
    RoundedBox inset(const layout::Edges &edges) const;
    /// Larger on all sides by that many pixels, smaller where negative; a sharp corner stays one.
    RoundedBox spread(double by) const;
    RoundedBox moved(QPointF by) const;
    QPainterPath path() const;
    double largestRadius() const;

private:
    QRectF mRect;
    QSizeF mTopLeft, mTopRight, mBottomRight, mBottomLeft;
};

} // namespace paint
