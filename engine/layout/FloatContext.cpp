// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/FloatContext.h"

namespace layout {

Unit FloatContext::clearance(FloatSide side) const
{
    Unit lowest = Unit::fromRaw(INT32_MIN / 4);
    for (const Entry &f : mFloats) {
        const bool counts = side == FloatSide::Both || (side == FloatSide::Left) == f.left;
        if (counts) lowest = std::max(lowest, f.rect.bottom());
    }
    return lowest;
}

FloatContext::Span FloatContext::spanAt(Unit y, Unit height, Unit left, Unit right) const
{
    Span span{left, right};
    if (mLowest <= y) return span;
    const Unit bottom = y + std::max(height, Unit::fromRaw(1));
    for (const Entry &f : mFloats) {
        if (f.rect.y >= bottom || f.rect.bottom() <= y) continue;
        if (f.left)
            span.left = std::max(span.left, f.rect.right());
        else
            span.right = std::min(span.right, f.rect.x);
    }
    return span;
}

Unit FloatContext::nextEdge(Unit y) const
{
    Unit next = Unit::max();
    for (const Entry &f : mFloats)
        if (f.rect.bottom() > y) next = std::min(next, f.rect.bottom());
    return next == Unit::max() ? y : next;
}

Point FloatContext::place(bool isLeft, Size size, Unit y, Unit left, Unit right)
{
    y = std::max(y, mLastTop);
    for (;;) {
        const Span span = spanAt(y, size.height, left, right);
        const Unit next = nextEdge(y);
        if (span.width() >= size.width || next <= y) {
            const Unit x = isLeft ? span.left : span.right - size.width;
            add({x, y, size.width, size.height}, isLeft);
            return {x, y};
        }
        y = next;
    }
}

void FloatContext::truncate(std::size_t count)
{
    if (mFloats.size() <= count) return;
    std::vector<Entry> kept(mFloats.begin(), mFloats.begin() + std::ptrdiff_t(count));
    clear();
    mFloats.clear();
    for (const Entry &f : kept) add(f.rect, f.left);
}

void FloatContext::add(const Rect &rect, bool isLeft)
{
    mFloats.push_back({rect, isLeft});
    mLastTop = std::max(mLastTop, rect.y);
    mLowest = std::max(mLowest, rect.bottom());
}

} // namespace layout
