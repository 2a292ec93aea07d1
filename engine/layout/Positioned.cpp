// SPDX-License-Identifier: GPL-3.0-or-later
// Boxes out of flow: absolute and fixed positions, list markers, baselines.
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Generated.h"
#include "engine/layout/Engine.h"
#include "engine/layout/ItemLayout.h"

namespace layout {

void Engine::noteStaticPosition(BlockBox &parent, BlockBox &child, Point at)
{
    BlockBox *block = child.containingBlock();
    if (!block) return;
    child.staticPosition = at; // the parent itself has no place yet
    if (child.rare && child.rare->item) child.rare->item->aligned = false;
    auto &list = block->rareData().positioned;
    if (std::find(list.begin(), list.end(), &child) == list.end()) list.push_back(&child);
}

namespace {

// The inline element in `block` that a positioned box goes by.
const InlineBox *inlineContainer(const BlockBox &box, const BlockBox &block)
{
    if (isFixedPosition(box)) return nullptr;
    for (const Box *up = box.parent(); up && up != &block; up = up->parent())
        if (up->isInline() && isPositionedStyle(*up)) return static_cast<const InlineBox *>(up);
    return nullptr;
}

Point inlineShift(const BlockBox &box)
{
    Point shift;
    for (const Box *up = box.parent(); up && up->isInline(); up = up->parent()) shift = shift + relativeShift(*up);
    return shift;
}

// From the start of its first fragment to the end of its last, within its borders (CSS 2.1, 10.1).
std::optional<std::pair<Point, Size>> areaOf(const InlineBox &box, const BlockBox &block)
{
    if (!block.inlineContent) return {};
    const InlineContent &content = *block.inlineContent;
    const Edges border = bordersOf(box.style());
    std::optional<std::pair<Point, Size>> area;
    for (const Line &line : content.lines)
        for (const Fragment *f = content.begin(line); f != content.end(line); ++f) {
            if (f->box != &box) continue;
            const Point end{f->x + f->width - border.right, line.top + f->y + f->height - border.bottom};
            if (!area) area.emplace(Point{f->x + border.left, line.top + f->y + border.top}, Size{});
            area->second = {std::max(Unit(), end.x - area->first.x), std::max(Unit(), end.y - area->first.y)};
        }
    return area;
}

} // namespace

// Against what a positioned box is placed: the padding box of its containing block, or what an inline element covers.
Engine::PositionedArea Engine::positionedArea(const BlockBox &box, const BlockBox &block) const
{
    if (const InlineBox *inner = inlineContainer(box, block)) {
        const Point shift = inlineShift(box);
        if (const auto area = areaOf(*inner, block)) return {area->first + shift, area->second, shift};
    }
    const Point origin{block.border.left, block.border.top};
    if (!block.parent()) return {origin, mViewport, {}};
    return {origin, {block.width - block.border.horizontal(), block.height - block.border.vertical()}, {}};
}

void Engine::layoutPositioned(BlockBox &block)
{
    // The list grows where positioned boxes hold others whose containing block this is, too.
    for (std::size_t i = 0; i < block.rare->positioned.size(); ++i) {
        BlockBox &box = *block.rare->positioned[i];
        const PositionedArea area = positionedArea(box, block);
        const Unit width = area.size.width, height = area.size.height;
        const Constraint constraint{width, height};
        const Offsets offsets = offsetsOf(box, constraint);
        resolveEdges(box, width);
        const Unit originX = area.origin.x, originY = area.origin.y;
        const BlockBox *parent = box.blockParent();
        // Its static place is where it would begin: at the right, where lines do.
        const bool fromRight = parent && isRightToLeft(parent->style());
        // From the parent's coordinates to the containing block's.
        Point place = box.staticPosition + area.shift;
        for (BlockBox *up = box.blockParent(); up && up != &block; up = up->container()) place = place + up->position() + up->relativeOffset();
        std::optional<Unit> used = usedWidth(box, width);
        const Unit margins = box.marginLeft + box.marginRight;
        if (used) used = clampedWidth(box, *used, width);
        if (!used && offsets.left && offsets.right && !box.isReplaced() && !box.isTable())
            used = clampedWidth(box, std::max(Unit(), width - *offsets.left - *offsets.right - margins), width);
        Unit available = width;
        if (offsets.left) available = available - *offsets.left;
        else if (!offsets.right) available = fromRight ? place.x - originX : available - (place.x - originX);
        if (offsets.right) available = available - *offsets.right;
        if (box.isReplaced() || box.isTable()) used = {};
        // Between two offsets the height is known before the content is, and percentages below count on it.
        const bool wasForced = box.heightForced;
        box.heightForced = false;
        std::optional<Unit> stretched;
        if (!usedHeight(box, constraint) && offsets.top && offsets.bottom && !box.isReplaced() && !box.isTable())
            stretched = clampedHeight(box, std::max(box.frame().vertical(), height - *offsets.top - *offsets.bottom - box.marginTop - box.marginBottom), constraint);
        box.heightForced = wasForced;
        forceHeight(box, stretched, true);
        layoutIndependent(box, constraint, std::max(Unit(), available), used);
        const ItemData *data = box.rare ? box.rare->item.get() : nullptr;
        if (data && data->aligned) {
            place.x += Unit::from(data->alignX * (data->room.width - box.marginLeft - box.width - box.marginRight).toDouble());
            place.y += Unit::from(data->alignY * (data->room.height - box.marginTop - box.height - box.marginBottom).toDouble());
        }
        Unit left = box.marginLeft, top = box.marginTop;
        if (offsets.left && offsets.right && marginIsAuto(box, Side::Left) && marginIsAuto(box, Side::Right))
            left = std::max(Unit(), (width - *offsets.left - *offsets.right - box.width) / 2);
        if (offsets.top && offsets.bottom && marginIsAuto(box, Side::Top) && marginIsAuto(box, Side::Bottom))
            top = (height - *offsets.top - *offsets.bottom - box.height) / 2;
        // Of two offsets that can't both hold, the one at the start does.
        const bool prefersRight = offsets.left && offsets.right && used && isRightToLeft(block.style()) &&
                                  !marginIsAuto(box, Side::Left) && !marginIsAuto(box, Side::Right);
        if (offsets.left && !prefersRight)
            box.x = originX + *offsets.left + left;
        else if (offsets.right)
            box.x = originX + width - *offsets.right - box.marginRight - box.width;
        else
            box.x = fromRight ? place.x - box.marginRight - box.width : place.x + left;
        if (offsets.top)
            box.gap = originY + *offsets.top + top;
        else if (offsets.bottom)
            box.gap = originY + height - *offsets.bottom - box.marginBottom - box.height;
        else
            box.gap = place.y + top;
    }
}

std::optional<Unit> Engine::firstBaseline(const BlockBox &box) const
{
    if (box.isReplaced()) return {};
    if (box.hasItems()) return box.rare ? box.rare->firstBaseline : std::nullopt;
    if (box.inlineContent) {
        for (const Line &line : box.inlineContent->lines) {
            if (!line.block) {
                if (box.inlineContent->hasContent) return line.top + line.baseline;
                continue;
            }
            if (const auto inner = firstBaseline(*line.block)) return line.block->top() + *inner;
        }
        return {};
    }
    if (box.isTable() || box.kind() == BoxKind::TableSection || box.kind() == BoxKind::TableRow) {
        for (const Box *each = box.firstChild(); each; each = each->next()) {
            const BlockBox *child = each->asBlock();
            if (!child || child->isOutOfFlow() || isCaption(*child)) continue;
            if (const auto inner = firstBaseline(*child)) return child->top() + *inner;
        }
        return {};
    }
    for (const BlockBox *child = box.flow.at(0); child; child = child->nextInFlow())
        if (const auto inner = firstBaseline(*child)) return child->top() + *inner;
    return {};
}

std::optional<Unit> Engine::lastBaseline(const BlockBox &box) const
{
    if (box.isReplaced()) return {};
    if (box.isTable()) return firstBaseline(box);
    if (box.hasItems()) return box.rare ? box.rare->lastBaseline : std::nullopt;
    if (box.inlineContent) {
        for (auto line = box.inlineContent->lines.rbegin(); line != box.inlineContent->lines.rend(); ++line) {
            if (!line->block) {
                if (box.inlineContent->hasContent) return line->top + line->baseline;
                continue;
            }
            if (const auto inner = lastBaseline(*line->block)) return line->block->top() + *inner;
        }
        return {};
    }
    if (box.flow.empty()) return {};
    for (const BlockBox *child = box.flow.at(box.flow.size() - 1); child; child = child->previousInFlow())
        if (const auto inner = lastBaseline(*child)) return child->top() + *inner;
    return {};
}

void Engine::placeMarker(BlockBox &item)
{
    if (!item.rare || !item.rare->marker || item.rare->marker->inside) return;
    MarkerData &marker = *item.rare->marker;
    const Font &font = fontOf(markerStyle(item, marker));
    const std::optional<Unit> baseline = firstBaseline(item);
    marker.baseline = baseline ? *baseline : item.contentTop() + font.ascent();
    marker.width = markerWidth(item, marker);
    const bool rightToLeft = isRightToLeft(item.style());
    marker.x = rightToLeft ? item.width : -marker.width;
}

} // namespace layout
