// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/GridLayout.h"

#include "engine/dom/Names.h"
#include "engine/layout/TableLayout.h"

namespace layout {

using css::Align;

GridLayout::GridLayout(Engine &engine, BlockBox &box, const Constraint &constraint)
    : mEngine(engine), mBox(box), mConstraint(constraint), mRightToLeft(isRightToLeft(box.style()))
{
    const Unit frame = box.frame().vertical();
    if (const auto given = usedHeight(box, constraint)) {
        const Unit height = box.heightForced ? *given : clampedHeight(box, *given, constraint);
        mHeight = std::max(Unit(), height - frame);
    }
}

Unit GridLayout::run()
{
    const Unit width = mBox.contentWidth();
    place(width, mHeight);
    sizeColumns(width, GridTracks::Mode::Definite);
    const css::Alignment justify = mBox.style().rare().justifyContent;
    mColumns.align({sided(justify.align, true), justify.safe}, width);
    sizeRows();
    const Unit frame = mBox.frame().vertical();
    mContentHeight = mHeight ? *mHeight : std::max(Unit(), clampedHeight(mBox, mRows.total() + frame, mConstraint) - frame);
    const css::Alignment align = mBox.style().rare().alignContent;
    mRows.align({sided(align.align, false), align.safe}, mContentHeight);
    layoutItems();
    noteBaselines();
    notePositioned();
    return mContentHeight;
}

PreferredWidths GridLayout::preferred(Engine &engine, BlockBox &box)
{
    GridLayout grid(engine, box, {Unit(), Unit::fromRaw(-1)});
    grid.place({}, {});
    PreferredWidths widths;
    grid.sizeColumns({}, GridTracks::Mode::MinContent);
    widths.min = grid.mColumns.total();
    grid.sizeColumns({}, GridTracks::Mode::MaxContent);
    widths.max = grid.mColumns.total();
    return widths;
}

// ---- Placement ----

// 7.2.3.2: as many as fit, at least one.
int GridLayout::repeatsOf(const css::TrackList &list, std::optional<Unit> room, Unit gap) const
{
    if (list.repeat == css::TrackList::Repeat::None || list.repeated.empty()) return 0;
    if (!room) return 1;
    const auto sizeOf = [&](const css::TrackEntry &entry) {
        const auto fixed = [](const css::TrackBreadth &b) { return b.kind == css::TrackBreadth::Kind::Length; };
        const css::TrackBreadth &max = entry.size.max, &min = entry.size.min;
        double size = fixed(max) ? max.length.resolve(room->toDouble()) : fixed(min) ? min.length.resolve(room->toDouble()) : 0;
        if (fixed(max) && fixed(min)) size = std::max(size, min.length.resolve(room->toDouble()));
        return Unit::from(std::max(0.0, size));
    };
    Unit once, others;
    for (const css::TrackEntry &entry : list.repeated) once += sizeOf(entry) + gap;
    for (const css::TrackEntry &entry : list.tracks) others += sizeOf(entry) + gap;
    if (once < Unit::px(1)) once = Unit::px(1);
    return std::clamp((*room + gap - others).raw / once.raw, 1, 1000);
}

void GridLayout::place(std::optional<Unit> width, std::optional<Unit> height)
{
    const css::GridGroup &style = mBox.style().grid();
    const auto &rare = mBox.style().rare();
    const Unit columnGap = gapOf(rare.columnGap, width.value_or(Unit::fromRaw(-1)));
    const Unit rowGap = gapOf(rare.rowGap, height.value_or(Unit::fromRaw(-1)));
    const GridAxis columns(style.columns, style.areas, false, repeatsOf(style.columns, width, columnGap));
    const GridAxis rows(style.rows, style.areas, true, repeatsOf(style.rows, height, rowGap));
    std::vector<GridPlacement::Item> places;
    mItems.clear();
    for (BlockBox *box : itemsInOrder(mBox)) {
        Item item{};
        item.box = box;
        item.align = alignSelfOf(mBox, *box);
        item.justify = justifySelfOf(mBox, *box);
        mItems.push_back(item);
        const css::GridGroup &own = box->anonymous ? css::ComputedStyle::initial().grid() : box->style().grid();
        GridPlacement::Item place;
        place.rows = rows.place(own.rowStart, own.rowEnd);
        place.columns = columns.place(own.columnStart, own.columnEnd);
        places.push_back(place);
    }
    mPlacement.run(places, rows, columns, style);
    std::vector<bool> filled(std::size_t(mPlacement.columnCount)), filledRows(std::size_t(mPlacement.rowCount));
    for (std::size_t i = 0; i < mItems.size(); ++i) {
        mItems[i].rows = places[i].rowSpan;
        mItems[i].columns = places[i].columnSpan;
        for (int k = mItems[i].columns.start; k < mItems[i].columns.end; ++k) filled[std::size_t(k)] = true;
        for (int k = mItems[i].rows.start; k < mItems[i].rows.end; ++k) filledRows[std::size_t(k)] = true;
    }
    const auto assemble = [](GridTracks &tracks, const GridAxis &axis, int first, const std::vector<bool> &used,
                             const std::vector<css::TrackSize> &automatic, Unit gap) {
        std::vector<css::TrackSize> sizes;
        std::vector<bool> vanished;
        for (int i = 0; i < int(used.size()); ++i) {
            sizes.push_back(axis.sizeOf(i - first, automatic));
            vanished.push_back(!used[std::size_t(i)] && axis.vanishes(i - first));
        }
        tracks.reset(std::move(sizes), std::move(vanished), gap);
    };
    assemble(mColumns, columns, mPlacement.firstColumn, filled, style.autoColumns, columnGap);
    assemble(mRows, rows, mPlacement.firstRow, filledRows, style.autoRows, rowGap);
}

// ---- Sizes ----

// 6.6 and 11.5: what an item asks at the least of tracks with an automatic minimum. `content` is its outer size by its
// content.
Unit GridLayout::minimumOf(const Item &item, bool columns, Unit content) const
{
    const BlockBox &box = *item.box;
    if (box.anonymous) return content;
    const auto &style = box.style().box();
    const css::Length &size = columns ? style.width : style.height, &least = columns ? style.minWidth : style.minHeight;
    if (size.isFixed() || (!size.isAuto() && !size.isDefinite())) return content;
    const Edges margin = marginsOf(box.style(), Unit());
    const Unit outer = columns ? margin.horizontal() : margin.vertical();
    const Unit frame = (columns ? box.frame().horizontal() : box.frame().vertical()) + outer;
    if (const auto given = definiteSize(box, least, Unit::fromRaw(-1), columns)) return std::max(frame, *given + outer);
    if (isScrollContainer(box)) return frame;
    const GridSpan &span = columns ? item.columns : item.rows;
    const GridTracks &tracks = columns ? mColumns : mRows;
    bool automatic = false, flexible = false;
    for (int i = span.start; i < span.end; ++i) {
        automatic = automatic || tracks.hasAutomaticMinimum(i);
        flexible = flexible || tracks.isFlexible(i);
    }
    if (!automatic || (flexible && span.count() > 1)) return frame;
    const auto limit = tracks.fixedLimit(span);
    return limit ? std::max(frame, std::min(content, *limit)) : content;
}

void GridLayout::sizeColumns(std::optional<Unit> room, GridTracks::Mode mode)
{
    std::vector<GridContribution> contributions;
    for (const Item &item : mItems) {
        const PreferredWidths outer = mEngine.outerPreferredWidths(*item.box);
        mEngine.resolveEdges(*item.box, Unit());
        contributions.push_back({item.columns, minimumOf(item, true, outer.min), outer.min, outer.max});
    }
    const Align justify = mBox.style().rare().justifyContent.align;
    mColumns.size(contributions, room, mode, room && (justify == Align::Normal || justify == Align::Stretch));
}

bool GridLayout::stretches(const Item &item, bool width) const
{
    const Align align = (width ? item.justify : item.align).align;
    const BlockBox &box = *item.box;
    if (align != Align::Normal && align != Align::Stretch) return false;
    if (box.anonymous) return true;
    const auto &style = box.style().box();
    const bool automatic = width ? style.width.isAuto() : style.height.isAuto();
    const bool margins = width ? marginIsAuto(box, Side::Left) || marginIsAuto(box, Side::Right)
                               : marginIsAuto(box, Side::Top) || marginIsAuto(box, Side::Bottom);
    if (!automatic || margins) return false;
    if (!box.isReplaced() || align == Align::Stretch) return true;
    // Controls have no size of their own that `normal` would keep.
    const dom::Element *element = box.element();
    using namespace dom::names;
    return element && (element->is(input) || element->is(dom::names::select) || element->is(textarea));
}

Unit GridLayout::itemWidth(const Item &item, Unit room) const
{
    BlockBox &box = *item.box;
    const Unit available = std::max(Unit(), room - box.marginLeft - box.marginRight);
    if (stretches(item, true)) return clampedWidth(box, std::max(available, box.frame().horizontal()), room);
    if (box.isReplaced()) {
        forceHeight(box, {});
        return mEngine.replacedSize(box, {room, Unit::fromRaw(-1)}).width;
    }
    if (box.isTable()) return TableLayout::usedWidth(mEngine, box, room, available);
    if (!box.anonymous) {
        const css::Length &width = box.style().box().width;
        if (const auto given = definiteSize(box, width, room, true)) return clampedWidth(box, *given, room);
        if (const auto given = keywordWidth(width, item.widths, available)) return clampedWidth(box, *given, room);
    }
    return clampedWidth(box, std::min(std::max(item.widths.min, available), item.widths.max), room);
}

// 10.6: items of a row that are aligned by their baselines.
void GridLayout::alignBaselines()
{
    std::vector<Unit> ascents(std::size_t(mRows.count()), Unit::fromRaw(INT32_MIN / 4));
    for (Item &item : mItems) {
        if (item.align.align != Align::Baseline) continue;
        if (marginIsAuto(*item.box, Side::Top) || marginIsAuto(*item.box, Side::Bottom)) continue;
        const Unit areaWidth = mColumns.extent(item.columns);
        layoutItem(mEngine, *item.box, {areaWidth, Unit::fromRaw(-1)}, item.width, {}, false);
        item.byBaseline = true;
        item.baseline = item.box->marginTop + mEngine.firstBaseline(*item.box).value_or(item.box->height);
        Unit &ascent = ascents[std::size_t(item.rows.start)];
        ascent = std::max(ascent, item.baseline);
    }
    for (Item &item : mItems)
        if (item.byBaseline) item.shim = ascents[std::size_t(item.rows.start)] - item.baseline;
}

void GridLayout::sizeRows()
{
    for (Item &item : mItems) {
        const Unit areaWidth = mColumns.extent(item.columns);
        item.widths = itemWidths(mEngine, *item.box, areaWidth);
        item.width = itemWidth(item, areaWidth);
        item.height = measureHeight(mEngine, *item.box, {areaWidth, Unit::fromRaw(-1)}, item.width);
    }
    alignBaselines();
    std::vector<GridContribution> contributions;
    for (const Item &item : mItems) {
        const Unit outer = item.height + item.box->marginTop + item.box->marginBottom + item.shim;
        contributions.push_back({item.rows, minimumOf(item, false, outer), outer, outer});
    }
    const Align align = mBox.style().rare().alignContent.align;
    const Unit frame = mBox.frame().vertical();
    const Unit least = clampedHeight(mBox, frame, mConstraint) - frame;
    mRows.size(contributions, mHeight, mHeight ? GridTracks::Mode::Definite : GridTracks::Mode::MaxContent,
               align == Align::Normal || align == Align::Stretch, least);
}

// ---- Places ----

Align GridLayout::sided(Align align, bool columns) const
{
    const bool rtl = columns && mRightToLeft;
    if (align == Align::Left) return rtl ? Align::End : Align::Start;
    if (align == Align::Right) return columns && !rtl ? Align::End : Align::Start;
    return align;
}

void GridLayout::layoutItems()
{
    const Unit width = mBox.contentWidth();
    for (const Item &item : mItems) {
        BlockBox &box = *item.box;
        const Unit areaWidth = mColumns.extent(item.columns), areaHeight = mRows.extent(item.rows);
        const Constraint area{areaWidth, areaHeight};
        std::optional<Unit> height;
        if (stretches(item, false)) {
            const Unit room = areaHeight - box.marginTop - box.marginBottom;
            height = std::max(clampedHeight(box, std::max(Unit(), room), area), box.frame().vertical());
        }
        layoutItem(mEngine, box, area, item.width, height, true);
        Unit x = mColumns.start(item.columns);
        if (mRightToLeft) x = width - x - areaWidth;
        placeItem(item, mBox.contentLeft() + x, mBox.contentTop() + mRows.start(item.rows), areaWidth, areaHeight);
    }
}

void GridLayout::placeItem(const Item &item, Unit areaX, Unit areaY, Unit areaWidth, Unit areaHeight)
{
    BlockBox &box = *item.box;
    const auto shiftOf = [](Unit free, const css::Alignment &align, Align side, bool autoBefore, bool autoAfter) {
        if (autoBefore || autoAfter) return free.raw <= 0 || !autoBefore ? Unit() : autoAfter ? free / 2 : free;
        if (align.safe && free.raw < 0) return Unit();
        const double factor = alignFactor(side);
        return factor == 1 ? free : factor == 0 ? Unit() : free / 2;
    };
    const Unit freeX = areaWidth - box.marginLeft - box.width - box.marginRight;
    const Unit freeY = areaHeight - box.marginTop - box.height - box.marginBottom;
    const bool autoLeft = marginIsAuto(box, Side::Left), autoRight = marginIsAuto(box, Side::Right);
    Unit shift = mRightToLeft ? shiftOf(freeX, item.justify, sided(item.justify.align, true), autoRight, autoLeft)
                              : shiftOf(freeX, item.justify, sided(item.justify.align, true), autoLeft, autoRight);
    if (mRightToLeft) shift = freeX - shift;
    box.x = areaX + box.marginLeft + shift;
    const Unit down = item.byBaseline ? item.shim
                                      : shiftOf(freeY, item.align, sided(item.align.align, false), marginIsAuto(box, Side::Top),
                                                marginIsAuto(box, Side::Bottom));
    box.gap = areaY + box.marginTop + down;
}

// 10.7: the baselines of the first and the last row.
void GridLayout::noteBaselines()
{
    auto &rare = mBox.rareData();
    rare.firstBaseline = rare.lastBaseline = std::nullopt;
    if (mItems.empty()) return;
    int first = mRows.count(), last = 0;
    for (const Item &item : mItems) {
        first = std::min(first, item.rows.start);
        last = std::max(last, item.rows.end);
    }
    const auto chosen = [&](bool end) {
        const Item *best = nullptr;
        for (const Item &item : mItems) {
            if (end ? item.rows.end != last : item.rows.start != first) continue;
            if (!best || (item.byBaseline && !best->byBaseline) ||
                (item.byBaseline == best->byBaseline && item.columns.start < best->columns.start))
                best = &item;
        }
        return best;
    };
    if (const Item *item = chosen(false)) rare.firstBaseline = item->box->gap + mEngine.firstBaseline(*item->box).value_or(item->box->height);
    if (const Item *item = chosen(true)) rare.lastBaseline = item->box->gap + mEngine.lastBaseline(*item->box).value_or(item->box->height);
}

// 9.2: a positioned child without offsets stands as if it were the only item of an area as big as the content.
void GridLayout::notePositioned()
{
    for (Box *each = mBox.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (!child || !child->positioned) continue;
        mEngine.noteStaticPosition(mBox, *child, {mBox.contentLeft(), mBox.contentTop()});
        ItemData &data = child->itemData();
        data.aligned = true;
        data.room = {mBox.contentWidth(), mContentHeight};
        data.alignX = alignFactor(sided(justifySelfOf(mBox, *child).align, true));
        if (mRightToLeft) data.alignX = 1 - data.alignX;
        data.alignY = alignFactor(sided(alignSelfOf(mBox, *child).align, false));
    }
}

} // namespace layout
