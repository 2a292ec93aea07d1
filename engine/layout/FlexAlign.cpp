// SPDX-License-Identifier: GPL-3.0-or-later
// Cross sizes of flex lines, and where lines and items stand: CSS Flexible Box Layout 1, 9.4 to 9.6, 8 and 4.1.
#include "engine/layout/FlexLayout.h"

namespace layout {

using css::Align;

bool FlexLayout::alignsBaseline(const Item &item) const
{
    return mRow && !item.hasAutoCross() && (item.align.align == Align::Baseline || item.align.align == Align::LastBaseline);
}

// From the outer cross start edge. A box without a baseline stands on its border box.
Unit FlexLayout::itemBaseline(const Item &item) const
{
    const auto own = item.align.align == Align::LastBaseline ? mEngine.lastBaseline(*item.box) : mEngine.firstBaseline(*item.box);
    Unit baseline = own.value_or(item.box->height);
    if (mReverseCross) baseline = item.box->height - baseline;
    return item.crossBefore + baseline;
}

// 9.4, 7 and 8: each item's hypothetical cross size, then each line's.
void FlexLayout::crossSizes()
{
    for (Item &item : mItems) {
        if (!mRow) {
            layoutItem(mEngine, *item.box, mArea, item.width, item.main, mArea.height.raw >= 0);
            item.cross = item.width;
            continue;
        }
        item.cross = measureHeight(mEngine, *item.box, mArea, item.main);
        if (alignsBaseline(item)) {
            layoutItem(mEngine, *item.box, mArea, item.main, {}, false); // its lines must stand where they were measured
            item.baseline = itemBaseline(item);
        }
    }
    for (Line &line : mLines) lineCross(line);
}

void FlexLayout::lineCross(Line &line)
{
    Unit ascent = Unit::fromRaw(INT32_MIN / 4), descent = Unit::fromRaw(INT32_MIN / 4), largest;
    for (std::size_t i = line.first; i < line.first + line.count; ++i) {
        const Item &item = mItems[i];
        if (alignsBaseline(item)) {
            ascent = std::max(ascent, item.baseline);
            descent = std::max(descent, item.outerCross() - item.baseline);
        } else {
            largest = std::max(largest, item.outerCross());
        }
    }
    line.ascent = ascent;
    line.cross = std::max(largest, ascent + descent);
    if (mWraps) return;
    // The line of a container that doesn't wrap is as wide as it.
    if (!mRow) {
        line.cross = mArea.width;
    } else if (mHeight) {
        line.cross = *mHeight;
    } else {
        const Unit frame = mBox.frame().vertical();
        line.cross = std::max(Unit(), clampedHeight(mBox, line.cross + frame, mConstraint) - frame);
    }
}

// 9.4, 9 and 9.6, 16: lines are stretched and aligned within the container.
void FlexLayout::placeLines()
{
    Unit sum;
    for (const Line &line : mLines) sum += line.cross;
    if (mLines.size() > 1) sum += mCrossGap * int(mLines.size() - 1);
    const Unit frame = mBox.frame().vertical();
    mCross = !mRow ? mArea.width : mHeight ? *mHeight : std::max(Unit(), clampedHeight(mBox, sum + frame, mConstraint) - frame);
    if (!mWraps || mLines.empty()) return;
    css::Alignment align = mBox.style().rare().alignContent;
    if (align.align == Align::Normal) align.align = Align::Stretch;
    Unit free = mCross - sum;
    if (align.align == Align::Stretch && free.raw > 0) {
        const int32_t count = int32_t(mLines.size());
        for (std::size_t i = 0; i < mLines.size(); ++i) {
            const Unit share = free / (count - int32_t(i));
            mLines[i].cross += share;
            free -= share;
        }
    }
    const Distribution shares = distribute(sided(align.align, false), align.safe, free, mLines.size());
    Unit at = shares.before;
    for (Line &line : mLines) {
        line.at = at;
        at += line.cross + shares.between + mCrossGap;
    }
}

// 9.4, 11: the used cross size of items that stretch to their line.
void FlexLayout::stretchItems()
{
    for (const Line &line : mLines)
        for (std::size_t i = line.first; i < line.first + line.count; ++i) {
            Item &item = mItems[i];
            BlockBox &box = *item.box;
            const bool stretch = stretches(item);
            const Unit room = std::max(Unit(), line.cross - item.crossBefore - item.crossAfter);
            if (!mRow) {
                if (!stretch || !mWraps) continue;
                item.cross = clampedWidth(box, std::max(room, box.frame().horizontal()), mArea.width);
                layoutItem(mEngine, box, mArea, item.cross, item.main, mArea.height.raw >= 0);
            } else if (stretch) {
                item.cross = std::max(clampedHeight(box, room, mArea), box.frame().vertical());
                layoutItem(mEngine, box, mArea, item.main, item.cross, true);
            } else {
                layoutItem(mEngine, box, mArea, item.main, {}, false);
                item.cross = box.height;
            }
        }
}

// An alignment as seen from the start of an axis that may run the other way.
Align FlexLayout::sided(Align align, bool main) const
{
    const bool reversed = main ? mReverseMain : mReverseCross;
    const bool rtl = isRightToLeft(mBox.style());
    const bool horizontal = main == mRow;
    switch (align) {
    case Align::FlexStart:
    case Align::FlexEnd: return align == Align::FlexStart ? Align::Start : Align::End;
    case Align::Start:
    case Align::SelfStart: // of the writing direction, which a reversed axis runs against
        return reversed != (horizontal && rtl) ? Align::End : Align::Start;
    case Align::End:
    case Align::SelfEnd: return reversed != (horizontal && rtl) ? Align::Start : Align::End;
    case Align::Left:
    case Align::Right:
        if (!horizontal) return reversed ? Align::End : Align::Start;
        return (align == Align::Left) != reversed ? Align::Start : Align::End;
    case Align::Baseline: return Align::Start;
    case Align::LastBaseline: return Align::End;
    case Align::Normal:
    case Align::Stretch: return Align::Start;
    default: return align;
    }
}

// 9.5: auto margins take what is free, or else `justify-content` shares it out.
void FlexLayout::alignMain(Line &line)
{
    const std::size_t end = line.first + line.count;
    Unit free = mMain - mMainGap * int(line.count - 1);
    int autos = 0;
    for (std::size_t i = line.first; i < end; ++i) {
        free -= mItems[i].outerMain(mItems[i].main);
        autos += int(mItems[i].autoMainBefore) + int(mItems[i].autoMainAfter);
    }
    const Unit share = autos && free.raw > 0 ? free / autos : Unit();
    const css::Alignment justify = mBox.style().rare().justifyContent;
    const Distribution shares = autos && free.raw > 0 ? Distribution{} : distribute(sided(justify.align, true), justify.safe, free, line.count);
    Unit at = shares.before;
    for (std::size_t i = line.first; i < end; ++i) {
        Item &item = mItems[i];
        at += item.mainBefore + (item.autoMainBefore ? share : Unit());
        item.mainAt = at;
        at += item.main + item.mainAfter + (item.autoMainAfter ? share : Unit()) + shares.between + mMainGap;
    }
}

// 9.6, 13 and 14.
void FlexLayout::alignCross(Line &line)
{
    for (std::size_t i = line.first; i < line.first + line.count; ++i) {
        Item &item = mItems[i];
        const Unit free = line.cross - item.outerCross();
        Unit shift;
        if (item.hasAutoCross()) {
            if (free.raw > 0 && item.autoCrossBefore) shift = item.autoCrossAfter ? free / 2 : free;
        } else if (alignsBaseline(item)) {
            shift = line.ascent - item.baseline;
            if (item.align.align == Align::LastBaseline) { // the group stands at the line's end
                Unit descent;
                for (std::size_t k = line.first; k < line.first + line.count; ++k)
                    if (alignsBaseline(mItems[k])) descent = std::max(descent, mItems[k].outerCross() - mItems[k].baseline);
                shift = line.cross - descent - item.baseline;
            }
        } else if (!(item.align.safe && free.raw < 0)) {
            const double factor = alignFactor(sided(item.align.align, false));
            shift = factor == 1 ? free : factor == 0 ? Unit() : free / 2;
        }
        item.crossAt = line.at + item.crossBefore + shift;
    }
}

void FlexLayout::placeItems()
{
    for (const Item &item : mItems) {
        const Unit main = mReverseMain ? mMain - item.mainAt - item.main : item.mainAt;
        const Unit cross = mReverseCross ? mCross - item.crossAt - item.cross : item.crossAt;
        item.box->x = mBox.contentLeft() + (mRow ? main : cross);
        item.box->gap = mBox.contentTop() + (mRow ? cross : main);
    }
}

// 8.5: the container's baselines are those of the items of its first and last line.
void FlexLayout::noteBaselines()
{
    auto &rare = mBox.rareData();
    rare.firstBaseline = rare.lastBaseline = std::nullopt;
    if (mLines.empty()) return;
    const bool swapped = mRow && mReverseCross;
    const auto baselineIn = [&](const Line &line, bool last) -> Unit {
        const Item *chosen = nullptr;
        for (std::size_t i = line.first; i < line.first + line.count && !chosen && mRow; ++i)
            if (alignsBaseline(mItems[i])) chosen = &mItems[i];
        if (!chosen) chosen = &mItems[last && !mRow ? line.first + line.count - 1 : line.first];
        const auto own = last ? mEngine.lastBaseline(*chosen->box) : mEngine.firstBaseline(*chosen->box);
        return chosen->box->gap + own.value_or(chosen->box->height);
    };
    rare.firstBaseline = baselineIn(swapped ? mLines.back() : mLines.front(), false);
    rare.lastBaseline = baselineIn(swapped ? mLines.front() : mLines.back(), true);
}

// 4.1: a positioned child without offsets stands as if it were the only item.
void FlexLayout::notePositioned()
{
    for (Box *each = mBox.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (!child || !child->positioned) continue;
        mEngine.noteStaticPosition(mBox, *child, {mBox.contentLeft(), mBox.contentTop()});
        Align justify = mBox.style().rare().justifyContent.align;
        if (justify == Align::SpaceAround || justify == Align::SpaceEvenly) justify = Align::Center;
        const double main = alignFactor(sided(justify == Align::SpaceBetween ? Align::FlexStart : justify, true));
        const double cross = alignFactor(sided(alignSelfOf(mBox, *child).align, false));
        const double mainPart = mReverseMain ? 1 - main : main, crossPart = mReverseCross ? 1 - cross : cross;
        ItemData &data = child->itemData();
        data.aligned = true;
        data.room = {mBox.contentWidth(), mRow ? mCross : mMain};
        data.alignX = mRow ? mainPart : crossPart;
        data.alignY = mRow ? crossPart : mainPart;
    }
}

} // namespace layout
