// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/FloatContext.h"

namespace layout {

FloatContext::Span FloatContext::spanAt(Unit y, Unit height, Unit left, Unit right) const
{
    Span span{left, right};
    if (mLowest <= y) return span;
    const Unit bottom = y + std::max(height, Unit::fromRaw(1));
    for (std::size_t c = 0; c < mChunks.size(); ++c) {
        const Chunk &chunk = mChunks[c];
        if (chunk.lastBottom <= y || chunk.firstTop >= bottom) continue;
        if (chunk.firstBottom > y && chunk.lastTop < bottom) { // all of them count
            span.left = std::max(span.left, chunk.left);
            span.right = std::min(span.right, chunk.right);
            continue;
        }
        const std::size_t end = std::min(mFloats.size(), (c + 1) * chunkSize);
        for (std::size_t i = c * chunkSize; i < end; ++i) {
            const Entry &f = mFloats[i];
            if (f.rect.y >= bottom || f.rect.bottom() <= y) continue;
            if (f.left)
                span.left = std::max(span.left, f.rect.right());
            else
                span.right = std::min(span.right, f.rect.x);
        }
    }
    return span;
}

Unit FloatContext::nextEdge(Unit y) const
{
    Unit next = Unit::max();
    for (std::size_t c = 0; c < mChunks.size(); ++c) {
        const Chunk &chunk = mChunks[c];
        if (chunk.lastBottom <= y || chunk.firstBottom >= next) continue;
        if (chunk.firstBottom > y) {
            next = chunk.firstBottom;
            continue;
        }
        const std::size_t end = std::min(mFloats.size(), (c + 1) * chunkSize);
        for (std::size_t i = c * chunkSize; i < end; ++i)
            if (mFloats[i].rect.bottom() > y) next = std::min(next, mFloats[i].rect.bottom());
    }
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
    if (mFloats.size() % chunkSize == 0) mChunks.emplace_back();
    mFloats.push_back({rect, isLeft});
    Chunk &chunk = mChunks.back();
    chunk.firstTop = std::min(chunk.firstTop, rect.y);
    chunk.lastTop = std::max(chunk.lastTop, rect.y);
    chunk.firstBottom = std::min(chunk.firstBottom, rect.bottom());
    chunk.lastBottom = std::max(chunk.lastBottom, rect.bottom());
    if (isLeft)
        chunk.left = std::max(chunk.left, rect.right());
    else
        chunk.right = std::min(chunk.right, rect.x);
    mLastTop = std::max(mLastTop, rect.y);
    mLowest = std::max(mLowest, rect.bottom());
    Unit &side = isLeft ? mLowestLeft : mLowestRight;
    side = std::max(side, rect.bottom());
}

} // namespace layout
