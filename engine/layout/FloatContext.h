// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/Unit.h"

#include <vector>

namespace layout {

enum class FloatSide : uint8_t { Left = 1, Right = 2, Both = 3 };

/// The floats of one block formatting context, in its root's content coordinates. A block asks in its own coordinates by
/// way of `FloatArea`.
class FloatContext
{
public:
    struct Entry {
        Rect rect; // margin box
        bool left;
    };
    struct Span {
        Unit left, right;
        Unit width() const { return right - left; }
    };

    bool empty() const { return mFloats.empty(); }
    void clear()
    {
        mFloats.clear();
        mChunks.clear();
        mLowest = mLowestLeft = mLowestRight = mLastTop = none;
    }
    /// Forgets all but the first `count` floats.
    void truncate(std::size_t count);
    Unit lowest() const { return mLowest; }
    bool activeBelow(Unit y) const { return mLowest > y; }
    /// The bottom of the lowest float of the sides; far above everything where there is none.
    Unit clearance(FloatSide side) const
    {
        return side == FloatSide::Both ? mLowest : side == FloatSide::Left ? mLowestLeft : mLowestRight;
    }
    /// What floats leave of [left, right) between `y` and `y + height`.
    Span spanAt(Unit y, Unit height, Unit left, Unit right) const;
    /// The next place below `y` where a float ends; `y` itself if none does.
    Unit nextEdge(Unit y) const;
    /// Finds the place of a float of that margin-box size, not above `y`, and notes it.
    Point place(bool isLeft, Size size, Unit y, Unit left, Unit right);
    void add(const Rect &rect, bool isLeft);
    const std::vector<Entry> &entries() const { return mFloats; }

private:
    static constexpr Unit none = Unit::fromRaw(INT32_MIN / 4);
    static constexpr std::size_t chunkSize = 64;
    /// What some floats that follow each other have in common: thousands of them are asked about a chunk at a time.
    struct Chunk {
        Unit firstTop = Unit::max(), lastTop = none;
        Unit firstBottom = Unit::max(), lastBottom = none;
        Unit left = none, right = Unit::max(); ///< how far those at the left and at the right reach in
    };
    std::vector<Entry> mFloats;
    std::vector<Chunk> mChunks;
    Unit mLowest = none, mLowestLeft = none, mLowestRight = none;
    Unit mLastTop = none; // a float never stands above an earlier one
};

/// A context as seen from a block inside it.
struct FloatArea {
    FloatContext *context = nullptr;
    Point origin; ///< of the block's border box in the context's coordinates
    FloatArea movedBy(Point by) const { return {context, origin + by}; }
};

} // namespace layout
