// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/PageFlow.h"

namespace layout {

/// Decides where a flow's pages end (CSS 2.1, 13.3): each page takes what fits, and ends at the latest of its best places.
/// Moves nothing; what it finds stands in the chunks.
class PageBreaker
{
public:
    enum class Kind : uint8_t { Main, Beside }; ///< forced breaks count in the main flow only

    PageBreaker(PageFlow &flow, const PageSpace &space, Kind kind) : mFlow(flow), mSpace(space), mKind(kind) {}
    /// Moves the flow's origin to `base` on the pages.
    void run(Unit base);

private:
    struct Crossing { // by ascending top: how far down solid floats reach that start above
        Unit top, reach;
    };
    struct Floor { // what stands below a float's end keeps below it
        Unit bottom, shift;
    };
    bool place(std::size_t k);
    void breakBefore(std::size_t k, int page);
    bool isAtPageStart(std::size_t k) const { return mFlow.chunks[k].broken || int64_t(k) == mPageStart; }
    void force(std::size_t k);
    Unit endOf(std::size_t k) const;
    Unit startOf(int page, const Chunk &chunk) const;
    Unit shiftBefore(std::size_t k) const;
    bool crossesFloat(Unit y) const;
    Unit floorShift(Unit y);
    void rewindFloors(Unit y);
    void placeFloats(Unit above);
    Unit placeSide(SideBox &side, Unit base);
    void collectMembers(ParallelBoxes &parallel, Unit reserved);
    Unit firstNeed(std::size_t k);
    void divide(std::size_t k, bool all);
    void divideColumns(Chunk &chunk, ParallelBoxes &parallel);

    PageFlow &mFlow;
    const PageSpace &mSpace;
    Kind mKind;
    Unit mBase;
    int64_t mPageStart = -1; ///< the chunk that the page begins with
    std::vector<Crossing> mCrossings;
    std::vector<uint32_t> mByBottom; ///< floats
    std::vector<Floor> mFloors;
};

} // namespace layout
