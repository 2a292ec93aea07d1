// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/DragSelect.h"

#include <QRect>

namespace surface {

namespace {

constexpr int scrollIntervalMs = 30;

/// Pixels to scroll for a pointer that stands so many pixels outside.
int speed(double outside)
{
    if (outside == 0) return 0;
    const int pixels = 2 + int(std::abs(outside) / 3);
    return outside < 0 ? -std::min(pixels, 120) : std::min(pixels, 120);
}

double beyond(double at, double from, double to)
{
    return at < from ? at - from : at > to ? at - to : 0;
}

} // namespace

DragSelect::DragSelect(Page page) : mPage(std::move(page))
{
    mScrolling.setInterval(scrollIntervalMs);
    connect(&mScrolling, &base::Timer::timeout, this, &DragSelect::scroll);
}

void DragSelect::begin(Unit unit, const ranges::Span &origin)
{
    mUnit = unit;
    mOrigin = origin;
    mActive = bool(origin.start);
}

void DragSelect::moveTo(QPointF client)
{
    if (!mActive) return;
    mPointer = client;
    extend();
    const QRectF inside(mPage.viewport());
    mScrolling.setEnabled(beyond(client.x(), inside.left(), inside.right()) != 0 ||
                          beyond(client.y(), inside.top(), inside.bottom()) != 0);
}

void DragSelect::end()
{
    mActive = false;
    mOrigin = {};
    mScrolling.setEnabled(false);
}

void DragSelect::extend()
{
    const ranges::Span span = mPage.spanAt(mPointer, mUnit);
    if (!span.start || !mOrigin.start.node->isConnected() || !mOrigin.end.node->isConnected()) return;
    if (span.start < mOrigin.start)
        mPage.select(mOrigin.end, span.start);
    else
        mPage.select(mOrigin.start, mOrigin.end < span.end ? span.end : mOrigin.end);
}

void DragSelect::scroll()
{
    const QRectF inside(mPage.viewport());
    const int dx = speed(beyond(mPointer.x(), inside.left(), inside.right()));
    const int dy = speed(beyond(mPointer.y(), inside.top(), inside.bottom()));
    if (!mActive || !mPage.scrollBy(dx, dy)) return mScrolling.setEnabled(false);
    extend();
}

} // namespace surface
