// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/paint/RoundedBox.h"

namespace paint {

RoundedBox::RoundedBox(const QRectF &rect, const css::SurroundGroup &surround) : mRect(rect)
{
    const auto corner = [&](const css::Radius &radius) {
        const QSizeF size(std::max(0.0, radius.x.resolve(rect.width())), std::max(0.0, radius.y.resolve(rect.height())));
        return size.width() > 0 && size.height() > 0 ? size : QSizeF(0, 0);
    };
    mTopLeft = corner(surround.topLeft);
    mTopRight = corner(surround.topRight);
    mBottomRight = corner(surround.bottomRight);
    mBottomLeft = corner(surround.bottomLeft);
    // Curves that would overlap shrink together.
    double factor = 1;
    const auto fit = [&](double side, double sum) {
        if (sum > side && sum > 0) factor = std::min(factor, side / sum);
    };
    fit(rect.width(), mTopLeft.width() + mTopRight.width());
    fit(rect.width(), mBottomLeft.width() + mBottomRight.width());
    fit(rect.height(), mTopLeft.height() + mBottomLeft.height());
    fit(rect.height(), mTopRight.height() + mBottomRight.height());
    if (factor < 1)
        for (QSizeF *each : {&mTopLeft, &mTopRight, &mBottomRight, &mBottomLeft}) *each *= factor;
}

bool RoundedBox::isRound() const
{
    return mTopLeft.width() > 0 || mTopRight.width() > 0 || mBottomRight.width() > 0 || mBottomLeft.width() > 0;
}

double RoundedBox::largestRadius() const
{
    double most = 0;
    for (const QSizeF &each : {mTopLeft, mTopRight, mBottomRight, mBottomLeft}) most = std::max({most, each.width(), each.height()});
    return most;
}

RoundedBox RoundedBox::inset(const layout::Edges &edges) const
{
    RoundedBox box = *this;
    const double l = edges.left.toDouble(), t = edges.top.toDouble(), r = edges.right.toDouble(), b = edges.bottom.toDouble();
    box.mRect = mRect.adjusted(l, t, -r, -b);
    const auto less = [](QSizeF &size, double x, double y) {
        size = QSizeF(size.width() - x, size.height() - y);
        if (size.width() <= 0 || size.height() <= 0) size = QSizeF(0, 0);
    };
    less(box.mTopLeft, l, t);
    less(box.mTopRight, r, t);
    less(box.mBottomRight, r, b);
    less(box.mBottomLeft, l, b);
    return box;
}

RoundedBox RoundedBox::spread(double by) const
{
    RoundedBox box = *this;
    box.mRect = mRect.adjusted(-by, -by, by, by);
    for (QSizeF *each : {&box.mTopLeft, &box.mTopRight, &box.mBottomRight, &box.mBottomLeft}) {
        if (each->width() <= 0) continue;
        // A small radius grows more slowly, so that it doesn't jump when it was nothing.
        const auto grown = [by](double radius) {
            if (by <= 0 || radius >= by) return radius + by;
            const double part = radius / by - 1;
            return radius + by * (1 + part * part * part);
        };
        *each = QSizeF(grown(each->width()), grown(each->height()));
        if (each->width() <= 0 || each->height() <= 0) *each = QSizeF(0, 0);
    }
    return box;
}

RoundedBox RoundedBox::moved(QPointF by) const
{
    RoundedBox box = *this;
    box.mRect.translate(by);
    return box;
}

QPainterPath RoundedBox::path() const
{
    QPainterPath path;
    if (mRect.isEmpty()) return path;
    if (!isRound()) {
        path.addRect(mRect);
        return path;
    }
    const QRectF &rect = mRect;
    const QSizeF tl = mTopLeft, tr = mTopRight, br = mBottomRight, bl = mBottomLeft;
    path.moveTo(rect.left() + tl.width(), rect.top());
    path.lineTo(rect.right() - tr.width(), rect.top());
    path.arcTo(QRectF(rect.right() - 2 * tr.width(), rect.top(), 2 * tr.width(), 2 * tr.height()), 90, -90);
    path.lineTo(rect.right(), rect.bottom() - br.height());
    path.arcTo(QRectF(rect.right() - 2 * br.width(), rect.bottom() - 2 * br.height(), 2 * br.width(), 2 * br.height()), 0, -90);
    path.lineTo(rect.left() + bl.width(), rect.bottom());
    path.arcTo(QRectF(rect.left(), rect.bottom() - 2 * bl.height(), 2 * bl.width(), 2 * bl.height()), 270, -90);
    path.lineTo(rect.left(), rect.top() + tl.height());
    path.arcTo(QRectF(rect.left(), rect.top(), 2 * tl.width(), 2 * tl.height()), 180, -90);
    path.closeSubpath();
    return path;
}

} // namespace paint
