// SPDX-License-Identifier: GPL-3.0-or-later
// Sizes of flex items and lines: CSS Flexible Box Layout 1, 9.2 to 9.4, 9.7 and 9.9. FlexAlign.cpp places them.
#include "engine/layout/FlexLayout.h"

#include "engine/layout/TableLayout.h"

namespace layout {

using css::Align;

FlexLayout::FlexLayout(Engine &engine, BlockBox &box, const Constraint &constraint)
    : mEngine(engine), mBox(box), mConstraint(constraint)
{
    const auto &style = box.style().rare();
    const bool rtl = isRightToLeft(box.style());
    mRow = style.flexDirection == css::FlexDirection::Row || style.flexDirection == css::FlexDirection::RowReverse;
    mReverseMain = style.flexDirection == css::FlexDirection::RowReverse || style.flexDirection == css::FlexDirection::ColumnReverse;
    mReverseCross = style.flexWrap == css::FlexWrap::WrapReverse;
    if (rtl) (mRow ? mReverseMain : mReverseCross) ^= true;
    mWraps = style.flexWrap != css::FlexWrap::Nowrap;
    const Unit frame = box.frame().vertical();
    if (const auto given = usedHeight(box, constraint)) {
        const Unit height = box.heightForced ? *given : clampedHeight(box, *given, constraint);
        mHeight = std::max(Unit(), height - frame);
    }
    const bool definite = mHeight && (!box.heightForced || box.rare->item->forcedDefinite);
    mArea = {box.contentWidth(), definite ? *mHeight : Unit::fromRaw(-1)};
    mMainGap = mRow ? gapOf(style.columnGap, mArea.width) : gapOf(style.rowGap, mArea.height);
    mCrossGap = mRow ? gapOf(style.rowGap, mArea.height) : gapOf(style.columnGap, mArea.width);
}

Unit FlexLayout::run()
{
    collectItems();
    collectLines();
    decideMain();
    for (Line &line : mLines) flexLine(line);
    crossSizes();
    placeLines();
    stretchItems();
    for (Line &line : mLines) {
        alignMain(line);
        alignCross(line);
    }
    placeItems();
    noteBaselines();
    notePositioned();
    return mRow ? mCross : mMain;
}

// ---- Items ----

void FlexLayout::takeMargins(Item &item)
{
    const BlockBox &box = *item.box;
    Unit left = box.marginLeft, right = box.marginRight, top = box.marginTop, bottom = box.marginBottom;
    bool autoLeft = marginIsAuto(box, Side::Left), autoRight = marginIsAuto(box, Side::Right);
    bool autoTop = marginIsAuto(box, Side::Top), autoBottom = marginIsAuto(box, Side::Bottom);
    if (mRow ? mReverseMain : mReverseCross) {
        std::swap(left, right);
        std::swap(autoLeft, autoRight);
    }
    if (mRow ? mReverseCross : mReverseMain) {
        std::swap(top, bottom);
        std::swap(autoTop, autoBottom);
    }
    if (!mRow) {
        std::swap(left, top);
        std::swap(right, bottom);
        std::swap(autoLeft, autoTop);
        std::swap(autoRight, autoBottom);
    }
    item.mainBefore = left;
    item.mainAfter = right;
    item.crossBefore = top;
    item.crossAfter = bottom;
    item.autoMainBefore = autoLeft;
    item.autoMainAfter = autoRight;
    item.autoCrossBefore = autoTop;
    item.autoCrossAfter = autoBottom;
}

void FlexLayout::collectItems()
{
    for (BlockBox *box : itemsInOrder(mBox)) {
        Item item{};
        item.box = box;
        item.max = Unit::max();
        item.align = alignSelfOf(mBox, *box);
        if (item.align.align == Align::Normal) item.align.align = Align::Stretch;
        item.widths = itemWidths(mEngine, *box, mArea.width);
        takeMargins(item);
        item.frame = mRow ? box->frame().horizontal() : box->frame().vertical();
        measureItem(item);
        mItems.push_back(item);
    }
}

bool FlexLayout::stretches(const Item &item) const
{
    if (item.align.align != Align::Stretch || item.hasAutoCross()) return false;
    if (item.box->anonymous) return true;
    const auto &style = item.box->style().box();
    return mRow ? style.height.isAuto() || (style.height.hasPercent() && mArea.height.raw < 0) : style.width.isAuto();
}

// 9.2, 3: the flex base size and the hypothetical main size of an item.
void FlexLayout::measureItem(Item &item)
{
    if (!mRow) item.width = columnWidth(item);
    const css::Length basis = item.box->anonymous ? css::Length() : item.box->style().rare().flexBasis;
    const Unit base = mRow ? mArea.width : mArea.height;
    if (const auto given = definiteSize(*item.box, basis, base, mRow))
        item.base = *given;
    else
        item.base = mRow ? rowBase(item) : columnBase(item);
    mainLimits(item);
    item.base = std::max(item.base, item.frame);
    item.hypothetical = limited(item, item.base);
}

Unit FlexLayout::rowBase(Item &item)
{
    BlockBox &box = *item.box;
    const bool byContent = box.anonymous || box.style().rare().flexBasis.kind == css::Length::Kind::Content;
    const css::Length basis = box.anonymous ? css::Length() : box.style().rare().flexBasis;
    const Unit available = mArea.width - item.mainBefore - item.mainAfter;
    if (const auto width = keywordWidth(basis, item.widths, available)) return *width;
    if (!byContent) {
        const css::Length &width = box.style().box().width;
        if (const auto given = definiteSize(box, width, mArea.width, true)) return *given;
        if (const auto given = keywordWidth(width, item.widths, available)) return *given;
    }
    if (box.isReplaced()) {
        // A ratio turns a definite height into a width; that of a stretched item of a single line is definite (9.8).
        if (mArea.height.raw >= 0 && !mWraps && stretches(item) && mEngine.hasRatio(box))
            forceHeight(box, clampedHeight(box, std::max(Unit(), mArea.height - item.crossBefore - item.crossAfter), mArea), true);
        else
            forceHeight(box, {});
        return mEngine.replacedSize(box, mArea).width;
    }
    return item.widths.max;
}

// The width of an item of a column: its hypothetical cross size.
Unit FlexLayout::columnWidth(const Item &item) const
{
    BlockBox &box = *item.box;
    const Unit available = std::max(Unit(), mArea.width - item.crossBefore - item.crossAfter);
    if (!box.anonymous && !box.isTable()) {
        if (box.isReplaced() && !(stretches(item) && !mWraps)) {
            forceHeight(box, {});
            return mEngine.replacedSize(box, mArea).width;
        }
        const css::Length &width = box.style().box().width;
        if (const auto given = definiteSize(box, width, mArea.width, true)) return clampedWidth(box, *given, mArea.width);
        if (const auto given = keywordWidth(width, item.widths, available)) return clampedWidth(box, *given, mArea.width);
    }
    if (box.isTable() && !widthIsAuto(box)) return TableLayout::usedWidth(mEngine, box, mArea.width, available);
    if (stretches(item) && !mWraps) return clampedWidth(box, std::max(available, box.frame().horizontal()), mArea.width);
    return clampedWidth(box, std::min(std::max(item.widths.min, available), item.widths.max), mArea.width);
}

Unit FlexLayout::columnBase(Item &item)
{
    BlockBox &box = *item.box;
    const bool byContent = box.anonymous || box.style().rare().flexBasis.kind == css::Length::Kind::Content;
    if (!byContent && !box.isReplaced())
        if (const auto given = definiteSize(box, box.style().box().height, mArea.height, false)) return *given;
    return measureHeight(mEngine, box, mArea, item.width);
}

void FlexLayout::mainLimits(Item &item)
{
    BlockBox &box = *item.box;
    item.min = item.frame;
    if (box.anonymous) {
        item.min = std::max(item.frame, automaticMinimum(item));
        return;
    }
    const auto &style = box.style().box();
    const css::Length &low = mRow ? style.minWidth : style.minHeight, &high = mRow ? style.maxWidth : style.maxHeight;
    const Unit base = mRow ? mArea.width : mArea.height, available = mArea.width - item.mainBefore - item.mainAfter;
    if (const auto given = definiteSize(box, high, base, mRow))
        item.max = *given;
    else if (const auto keyword = mRow ? keywordWidth(high, item.widths, available) : std::nullopt)
        item.max = *keyword;
    if (const auto given = definiteSize(box, low, base, mRow))
        item.min = std::max(item.min, *given);
    else if (const auto keyword = mRow ? keywordWidth(low, item.widths, available) : std::nullopt)
        item.min = std::max(item.min, *keyword);
    else if (low.isAuto() && !isScrollContainer(box))
        item.min = std::max(item.min, automaticMinimum(item));
}

// 4.5: an item isn't flexed below its content, nor below what it was told to be if that is less.
Unit FlexLayout::automaticMinimum(Item &item)
{
    BlockBox &box = *item.box;
    const auto &style = box.style().box();
    std::optional<Unit> specified;
    if (!box.anonymous)
        specified = definiteSize(box, mRow ? style.width : style.height, mRow ? mArea.width : mArea.height, mRow);
    Unit content;
    if (box.isReplaced() && (mRow || mEngine.hasRatio(box))) {
        const Size size = mEngine.replacedSize(box, mArea);
        content = mRow ? size.width : mEngine.replacedSize(box, mArea, item.width).height;
    } else if (mRow) {
        content = item.widths.min;
    } else {
        measureHeight(mEngine, box, mArea, item.width);
        content = box.itemData().natural;
    }
    content = std::min(content, item.max);
    return specified ? std::min(*specified, content) : content;
}

// ---- Lines and main sizes ----

// 9.3: items go into a line while they fit.
void FlexLayout::collectLines()
{
    Unit room = Unit::max();
    if (mRow) {
        room = mArea.width;
    } else if (mHeight) {
        room = *mHeight;
    } else {
        const Unit most = clampedHeight(mBox, Unit::max(), mConstraint);
        if (most < Unit::max()) room = std::max(Unit(), most - mBox.frame().vertical());
    }
    Unit used;
    for (std::size_t i = 0; i < mItems.size(); ++i) {
        const Unit outer = mItems[i].outerMain(mItems[i].hypothetical);
        if (mLines.empty() || (mWraps && mLines.back().count && used + mMainGap + outer > room)) {
            Line line;
            line.first = i;
            mLines.push_back(line);
            used = outer;
        } else {
            used += mMainGap + outer;
        }
        ++mLines.back().count;
    }
}

void FlexLayout::decideMain()
{
    if (mRow || mHeight) {
        mMain = mRow ? mArea.width : *mHeight;
        return;
    }
    Unit longest;
    for (const Line &line : mLines) {
        Unit sum = mMainGap * int(line.count - 1);
        for (std::size_t i = line.first; i < line.first + line.count; ++i) sum += mItems[i].outerMain(mItems[i].hypothetical);
        longest = std::max(longest, sum);
    }
    const Unit frame = mBox.frame().vertical();
    mMain = std::max(Unit(), clampedHeight(mBox, longest + frame, mConstraint) - frame);
}

void FlexLayout::distributeFree(Line &line, Unit free, bool grows, double sum)
{
    for (std::size_t i = line.first; i < line.first + line.count; ++i) {
        Item &item = mItems[i];
        if (item.frozen) continue;
        item.main = item.base;
        if (sum <= 0 || !free.raw) continue;
        const bool bare = item.box->anonymous;
        const double factor = grows ? (bare ? 0 : double(item.box->style().rare().flexGrow))
                                    : (bare ? 1 : double(item.box->style().rare().flexShrink)) * double((item.base - item.frame).raw);
        item.main += Unit::fromRaw(std::llround(double(free.raw) * factor / sum));
    }
}

// 9.7: free room is given to those who grow, or taken from those who shrink, until none passes its limits.
void FlexLayout::flexLine(Line &line)
{
    const std::size_t end = line.first + line.count;
    const Unit gaps = mMainGap * int(line.count - 1);
    Unit sum = gaps;
    for (std::size_t i = line.first; i < end; ++i) sum += mItems[i].outerMain(mItems[i].hypothetical);
    const bool grows = sum < mMain;
    const auto factorOf = [&](const Item &item) {
        if (item.box->anonymous) return grows ? 0.0 : 1.0;
        return double(grows ? item.box->style().rare().flexGrow : item.box->style().rare().flexShrink);
    };
    const auto freeRoom = [&] {
        Unit used = gaps;
        for (std::size_t i = line.first; i < end; ++i) used += mItems[i].outerMain(mItems[i].frozen ? mItems[i].main : mItems[i].base);
        return mMain - used;
    };
    for (std::size_t i = line.first; i < end; ++i) {
        Item &item = mItems[i];
        item.frozen = factorOf(item) <= 0 || (grows ? item.base > item.hypothetical : item.base < item.hypothetical);
        if (item.frozen) item.main = item.hypothetical;
    }
    const Unit initial = freeRoom();
    for (std::size_t round = 0; round <= line.count; ++round) {
        double factors = 0, scaled = 0;
        bool any = false;
        for (std::size_t i = line.first; i < end; ++i) {
            if (mItems[i].frozen) continue;
            any = true;
            factors += factorOf(mItems[i]);
            scaled += factorOf(mItems[i]) * double((mItems[i].base - mItems[i].frame).raw);
        }
        if (!any) break;
        Unit free = freeRoom();
        if (factors < 1) { // together they take only that part of the room
            const Unit part = Unit::fromRaw(std::llround(double(initial.raw) * factors));
            if (std::abs(part.raw) < std::abs(free.raw)) free = part;
        }
        distributeFree(line, free, grows, grows ? factors : scaled);
        int64_t violation = 0;
        for (std::size_t i = line.first; i < end; ++i) {
            Item &item = mItems[i];
            if (item.frozen) continue;
            const Unit clamped = limited(item, item.main);
            item.violatesMin = clamped > item.main;
            item.violatesMax = clamped < item.main;
            violation += clamped.raw - item.main.raw;
            item.main = clamped;
        }
        for (std::size_t i = line.first; i < end; ++i) {
            Item &item = mItems[i];
            if (!item.frozen) item.frozen = violation == 0 || (violation > 0 ? item.violatesMin : item.violatesMax);
        }
    }
}

// ---- Preferred widths ----

PreferredWidths FlexLayout::preferred(Engine &engine, BlockBox &box)
{
    const auto &style = box.style().rare();
    const bool row = style.flexDirection == css::FlexDirection::Row || style.flexDirection == css::FlexDirection::RowReverse;
    const bool wraps = style.flexWrap != css::FlexWrap::Nowrap;
    PreferredWidths sum;
    int count = 0;
    for (BlockBox *item : itemsInOrder(box)) {
        const PreferredWidths outer = engine.outerPreferredWidths(*item);
        ++count;
        if (!row) {
            sum.min = std::max(sum.min, outer.min);
            sum.max = std::max(sum.max, outer.max);
            continue;
        }
        sum.max += outer.max;
        sum.min = wraps ? std::max(sum.min, outer.min) : sum.min + outer.min;
    }
    if (row && count > 1) {
        const Unit gaps = gapOf(style.columnGap, Unit::fromRaw(-1)) * (count - 1);
        sum.max += gaps;
        if (!wraps) sum.min += gaps;
    }
    return sum;
}

} // namespace layout
