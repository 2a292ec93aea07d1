// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/ItemLayout.h"

namespace layout {

using css::Align;

std::vector<BlockBox *> itemsInOrder(const BlockBox &container)
{
    std::vector<BlockBox *> items;
    bool ordered = true;
    const auto orderOf = [](const BlockBox &box) { return box.anonymous ? 0 : box.style().rare().order; };
    for (Box *each = container.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (!child || !child->item) continue;
        ordered = ordered && (items.empty() || orderOf(*items.back()) <= orderOf(*child));
        items.push_back(child);
    }
    if (!ordered)
        std::stable_sort(items.begin(), items.end(), [&](const BlockBox *a, const BlockBox *b) { return orderOf(*a) < orderOf(*b); });
    return items;
}

void forceHeight(BlockBox &box, std::optional<Unit> height, bool definite)
{
    if (!height) {
        if (box.heightForced) box.needsLayout = true;
        box.heightForced = false;
        return;
    }
    ItemData &data = box.itemData();
    if (!box.heightForced || data.forcedHeight != *height || data.forcedDefinite != definite) box.needsLayout = true;
    box.heightForced = true;
    data.forcedHeight = *height;
    data.forcedDefinite = definite;
}

void layoutItem(Engine &engine, BlockBox &item, const Constraint &area, Unit width, std::optional<Unit> height, bool definite)
{
    if (item.needsLayout || item.childNeedsLayout) item.itemData().measured = false;
    forceHeight(item, height, definite);
    engine.layoutIndependent(item, area, area.width, width);
}

Unit measureHeight(Engine &engine, BlockBox &item, const Constraint &area, Unit width)
{
    ItemData &data = item.itemData();
    const bool dirty = item.needsLayout || item.childNeedsLayout;
    const bool sameHeight = data.areaHeight == area.height || (!item.dependsOnHeight && !engine.quirks());
    if (!dirty && data.measured && data.measuredWidth == width && data.areaWidth == area.width && sameHeight) {
        data.natural = data.measuredNatural;
        return data.measuredHeight;
    }
    layoutItem(engine, item, area, width, {}, false);
    if (item.isReplaced() || item.isTable()) data.natural = item.height;
    data.measured = true;
    data.measuredWidth = width;
    data.measuredHeight = item.height;
    data.measuredNatural = data.natural;
    data.areaWidth = area.width;
    data.areaHeight = area.height;
    return item.height;
}

PreferredWidths itemWidths(Engine &engine, BlockBox &item, Unit areaWidth)
{
    PreferredWidths widths = engine.preferredWidths(item);
    engine.resolveEdges(item, areaWidth);
    // Preferred widths take percentages of the padding as nothing.
    const Unit more = paddingsOf(item, areaWidth).horizontal() - paddingsOf(item, Unit()).horizontal();
    widths.min += more;
    widths.max += more;
    return widths;
}

std::optional<Unit> definiteSize(const BlockBox &item, const css::Length &length, Unit base, bool horizontal)
{
    if (item.anonymous || !length.isDefinite() || (length.hasPercent() && base.raw < 0)) return {};
    const Unit frame = horizontal ? item.frame().horizontal() : item.frame().vertical();
    const Unit value = Unit::from(length.resolve(base.toDouble()));
    return item.style().box().boxSizing == css::BoxSizing::BorderBox ? std::max(value, frame) : std::max(Unit(), value) + frame;
}

std::optional<Unit> keywordWidth(const css::Length &length, const PreferredWidths &widths, Unit available)
{
    switch (length.kind) {
    case css::Length::Kind::MinContent: return widths.min;
    case css::Length::Kind::MaxContent: return widths.max;
    case css::Length::Kind::FitContent: return std::min(std::max(widths.min, available), widths.max);
    default: return {};
    }
}

bool isScrollContainer(const BlockBox &box)
{
    if (box.anonymous) return false;
    const css::Overflow overflow = box.style().box().overflowX;
    return overflow != css::Overflow::Visible && overflow != css::Overflow::Clip;
}

css::Alignment alignItemsOf(const BlockBox &container) { return container.anonymous ? css::Alignment{} : container.style().rare().alignItems; }
css::Alignment justifyItemsOf(const BlockBox &container) { return container.anonymous ? css::Alignment{} : container.style().rare().justifyItems; }

css::Alignment alignSelfOf(const BlockBox &container, const BlockBox &item)
{
    if (item.anonymous || item.style().rare().alignSelf.align == Align::Auto) return alignItemsOf(container);
    return item.style().rare().alignSelf;
}

css::Alignment justifySelfOf(const BlockBox &container, const BlockBox &item)
{
    if (item.anonymous || item.style().rare().justifySelf.align == Align::Auto) return justifyItemsOf(container);
    return item.style().rare().justifySelf;
}

Unit gapOf(const css::Length &gap, Unit base)
{
    if (!gap.isDefinite() || (gap.hasPercent() && base.raw < 0)) return {};
    return std::max(Unit(), Unit::from(gap.resolve(base.toDouble())));
}

double alignFactor(Align align)
{
    switch (align) {
    case Align::Center: return 0.5;
    case Align::End:
    case Align::FlexEnd:
    case Align::SelfEnd:
    case Align::Right:
    case Align::LastBaseline: return 1;
    default: return 0;
    }
}

Distribution distribute(Align align, bool safe, Unit free, std::size_t count)
{
    const int n = int(std::min<std::size_t>(count, 1000000));
    const bool spread = align == Align::SpaceBetween || align == Align::SpaceAround || align == Align::SpaceEvenly;
    if (free.raw < 0 && (safe || spread)) return {};
    if (!n) return {};
    switch (align) {
    case Align::SpaceBetween: return {Unit(), n > 1 ? free / (n - 1) : Unit()};
    case Align::SpaceAround: return {free / (2 * n), free / n};
    case Align::SpaceEvenly: return {free / (n + 1), free / (n + 1)};
    default: break;
    }
    const double factor = alignFactor(align);
    return {factor == 1 ? free : factor == 0 ? Unit() : free / 2, Unit()};
}

} // namespace layout
