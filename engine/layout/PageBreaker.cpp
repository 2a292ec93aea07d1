// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/PageBreaker.h"

#include "engine/layout/MultiColumn.h"

namespace layout {

namespace {

constexpr Unit oneStep = Unit::fromRaw(1);
constexpr Unit leastColumn = Unit::px(60); // what is worth beginning at a page's end
constexpr Unit nowhere = Unit::fromRaw(INT32_MIN / 4);

} // namespace

void PageBreaker::run(Unit base)
{
    mBase = base;
    mFlow.base = base;
    mFlow.isDone = true;
    mPageStart = mKind == Kind::Main ? 0 : -1;
    for (Chunk &chunk : mFlow.chunks) {
        chunk.broken = false;
        chunk.growth = {};
    }
    auto &floats = mFlow.floats;
    mByBottom.resize(floats.size());
    for (uint32_t i = 0; i < floats.size(); ++i) mByBottom[i] = i;
    std::stable_sort(mByBottom.begin(), mByBottom.end(), [&](uint32_t a, uint32_t b) { return floats[a].top < floats[b].top; });
    Unit reach = nowhere;
    for (const uint32_t i : mByBottom) {
        if (!floats[i].solid) continue;
        reach = std::max(reach, floats[i].bottom);
        mCrossings.push_back({floats[i].top, reach});
    }
    std::stable_sort(mByBottom.begin(), mByBottom.end(), [&](uint32_t a, uint32_t b) { return floats[a].bottom < floats[b].bottom; });
    for (std::size_t k = 0; k < mFlow.chunks.size();) {
        if (place(k))
            ++k;
        else
            k = std::size_t(mPageStart); // a break was set; on from what starts the page
    }
    placeFloats(Unit::max());
    for (SideBox &side : mFlow.positioned) placeSide(side, side.top + mFlow.shiftAt(side.top));
}

Unit PageBreaker::endOf(std::size_t k) const
{
    const Chunk &chunk = mFlow.chunks[k];
    return chunk.bottom + chunk.shift + chunk.growth;
}

// Heads of tables take at most half a page.
Unit PageBreaker::startOf(int page, const Chunk &chunk) const
{
    return mSpace.top(page) + std::min(chunk.reserved, mSpace.height(page) / 2);
}

Unit PageBreaker::shiftBefore(std::size_t k) const
{
    return k ? mFlow.chunks[k - 1].shift + mFlow.chunks[k - 1].growth : mBase;
}

// ---- Floats ----

bool PageBreaker::crossesFloat(Unit y) const
{
    const auto behind = std::lower_bound(mCrossings.begin(), mCrossings.end(), y, [](const Crossing &c, Unit at) { return c.top < at; });
    return behind != mCrossings.begin() && std::prev(behind)->reach > y;
}

Unit PageBreaker::placeSide(SideBox &side, Unit base)
{
    PageFlow &flow = *side.flow;
    flow.isDone = false;
    flow.base = base - side.top;
    const Unit end = base + (side.bottom - side.top);
    if (flow.chunks.empty()) return {};
    const int page = mSpace.pageAt(base);
    if (page == mSpace.pageAt(std::max(base, end - oneStep)) && base >= startOf(page, flow.chunks.front())) return {};
    PageBreaker(flow, mSpace, Kind::Beside).run(base - side.top);
    return flow.bottomShift(flow.spans.front()) - flow.base;
}

void PageBreaker::placeFloats(Unit above)
{
    while (mFloors.size() < mByBottom.size()) {
        SideBox &side = mFlow.floats[mByBottom[mFloors.size()]];
        if (side.bottom > above) return;
        const Unit shift = mFlow.shiftAt(side.top);
        const Unit growth = placeSide(side, side.top + shift);
        const Unit highest = mFloors.empty() ? nowhere : mFloors.back().shift;
        mFloors.push_back({side.bottom, std::max(highest, shift + growth)});
    }
}

Unit PageBreaker::floorShift(Unit y)
{
    placeFloats(y);
    return mFloors.empty() || mFloors.back().bottom > y ? nowhere : mFloors.back().shift;
}

void PageBreaker::rewindFloors(Unit y)
{
    while (!mFloors.empty() && mFloors.back().bottom > y) mFloors.pop_back();
}

// ---- Breaks ----

// What starts the next page: of the places since the page began the latest one that costs least.
void PageBreaker::breakBefore(std::size_t k, int page)
{
    auto &chunks = mFlow.chunks;
    std::size_t best = k;
    int cheapest = INT32_MAX;
    for (std::size_t j = k;; --j) {
        const int cost = j == 0 ? 0 : chunks[j].cost + (crossesFloat(chunks[j].top) ? breakcost::floats : 0);
        if (cost < cheapest) {
            cheapest = cost;
            best = j;
        }
        if (cheapest == 0 || j == 0 || int64_t(j) - 1 <= mPageStart) break;
    }
    for (std::size_t j = best + 1; j <= k; ++j) {
        chunks[j].broken = false;
        chunks[j].growth = {};
    }
    Chunk &chunk = chunks[best];
    rewindFloors(chunk.top);
    const Unit start = startOf(page, chunk);
    chunk.broken = true;
    chunk.shift = std::max(start - chunk.top, floorShift(chunk.top));
    mPageStart = int64_t(best);
}

void PageBreaker::force(std::size_t k)
{
    Chunk &chunk = mFlow.chunks[k];
    int page = mSpace.pageAt(std::max(mBase, endOf(k - 1) - oneStep)) + 1;
    const bool isLeft = page % 2 == 1;
    if ((chunk.forced == ForcedBreak::Left && !isLeft) || (chunk.forced == ForcedBreak::Right && isLeft)) ++page;
    const Unit start = startOf(page, chunk);
    chunk.broken = true;
    const Unit margin = std::clamp(chunk.margin, Unit(), mSpace.height(page) / 2);
    chunk.shift = std::max(start + margin - chunk.top, floorShift(chunk.top));
    mPageStart = int64_t(k);
}

// Whether it has its place; else a break was set in front of it, or of what belongs to it.
bool PageBreaker::place(std::size_t k)
{
    Chunk &chunk = mFlow.chunks[k];
    chunk.growth = {};
    if (!chunk.broken) {
        chunk.shift = std::max(shiftBefore(k), floorShift(chunk.top));
        if (k && chunk.forced != ForcedBreak::None && mKind == Kind::Main) force(k);
    }
    const Unit top = chunk.top + chunk.shift, bottom = chunk.bottom + chunk.shift;
    const int page = mSpace.pageAt(top);
    if (!chunk.broken && !chunk.loose && k) {
        const int before = mSpace.pageAt(std::max(mBase, endOf(k - 1) - oneStep));
        if (page > before) { // the page ended within the room in front
            breakBefore(k, before + 1);
            return false;
        }
    }
    if (!chunk.loose && top < startOf(page, chunk)) {
        // Empty room or a float in front has crossed the boundary, and left it where a head will be.
        chunk.broken = true;
        chunk.shift += startOf(page, chunk) - top;
        mPageStart = int64_t(k);
        return false;
    }
    if (chunk.loose) {
        // Room that floats have made is as high as they have become.
        chunk.growth = std::max(Unit(), floorShift(chunk.bottom) - chunk.shift);
        if (mSpace.pageAt(top) != mSpace.pageAt(std::max(top, endOf(k) - oneStep))) mPageStart = int64_t(k);
        return true;
    }
    const Unit height = bottom - top;
    if (bottom <= mSpace.bottom(page)) {
        divide(k, false);
        return true;
    }
    const bool fitsBelow = height <= mSpace.bottom(page + 1) - startOf(page + 1, chunk);
    if (fitsBelow && !(isAtPageStart(k) && top <= startOf(page, chunk) + chunk.margin)) {
        breakBefore(k, page + 1);
        return false;
    }
    if (!fitsBelow && !isAtPageStart(k)) {
        // What is higher than a page starts one, unless some of it fits here.
        const bool starts = chunk.parallel >= 0 && top + firstNeed(k) <= mSpace.bottom(page);
        if (!starts) {
            breakBefore(k, page + 1);
            return false;
        }
    }
    mPageStart = int64_t(k);
    divide(k, true);
    return true;
}

// ---- What stands side by side ----

void PageBreaker::collectMembers(ParallelBoxes &parallel, Unit reserved)
{
    for (ParallelBoxes::Member &member : parallel.members) {
        if (member.flow) continue;
        member.flow = std::make_unique<PageFlow>();
        member.flow->movesRoot = false;
        FlowCollector(*member.flow, mSpace).run(*member.box, member.top, reserved);
    }
}

// The height down to the end of the first piece of each.
Unit PageBreaker::firstNeed(std::size_t k)
{
    const Chunk &chunk = mFlow.chunks[k];
    ParallelBoxes &parallel = mFlow.parallels[std::size_t(chunk.parallel)];
    if (parallel.isColumns) return leastColumn;
    collectMembers(parallel, chunk.reserved);
    Unit need;
    for (const auto &member : parallel.members) {
        if (member.chunk == k && !member.flow->chunks.empty() && !member.flow->chunks.front().loose) need = std::max(need, member.flow->chunks.front().bottom - member.top);
    }
    return need;
}

// Breaks what stands in chunk `k` on its own, side by side. Without `all` only cells that reach it from an earlier page.
void PageBreaker::divide(std::size_t k, bool all)
{
    Chunk &chunk = mFlow.chunks[k];
    if (chunk.parallel < 0) return;
    ParallelBoxes &parallel = mFlow.parallels[std::size_t(chunk.parallel)];
    parallel.divided = all;
    if (parallel.isColumns) {
        if (all) divideColumns(chunk, parallel);
        return;
    }
    Unit growth;
    for (ParallelBoxes::Member &member : parallel.members) {
        const Unit shift = mFlow.chunks[member.chunk].shift;
        const bool crosses = mSpace.pageAt(member.top + shift) != mSpace.pageAt(std::max(member.top + shift, chunk.bottom + chunk.shift - oneStep));
        if (!crosses || (!all && member.chunk == k)) {
            member.flow.reset();
            continue;
        }
        parallel.divided = true;
        if (!member.flow) {
            member.flow = std::make_unique<PageFlow>();
            member.flow->movesRoot = false;
            FlowCollector(*member.flow, mSpace).run(*member.box, member.top, chunk.reserved);
        }
        PageFlow &flow = *member.flow;
        PageBreaker(flow, mSpace, Kind::Beside).run(shift);
        // Room that was free at its end is used up first.
        const Unit free = member.box->height - (flow.contentBottom() - member.top) - member.box->border.bottom - member.box->padding.bottom;
        const Unit end = flow.contentEnd() + std::max(Unit(), member.bottom - flow.contentBottom() - std::max(Unit(), free));
        growth = std::max(growth, end - (parallel.bottom + chunk.shift));
    }
    chunk.growth = growth;
}

// Each page has its own row of columns.
void PageBreaker::divideColumns(Chunk &chunk, ParallelBoxes &parallel)
{
    BlockBox &box = *parallel.members.front().box;
    const Unit top = parallel.members.front().top + chunk.shift + box.contentTop();
    const Unit before = box.height - box.frame().vertical();
    Unit height;
    parallel.columns = cutIntoRows(
        box,
        [&](Unit y) {
            const int page = mSpace.pageAt(top + y);
            return ColumnRoom{mSpace.bottom(page) - top - y, startOf(page + 1, chunk) - top};
        },
        height);
    chunk.growth = height - before;
}

} // namespace layout
