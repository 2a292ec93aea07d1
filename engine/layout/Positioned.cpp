// SPDX-License-Identifier: GPL-3.0-or-later
// Boxes out of flow: absolute and fixed positions, list markers, baselines.
#include "engine/layout/BoxStyle.h"
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

void Engine::layoutPositioned(BlockBox &block)
{
    // The list grows where positioned boxes hold others whose containing block this is, too.
    for (std::size_t i = 0; i < block.rare->positioned.size(); ++i) {
        BlockBox &box = *block.rare->positioned[i];
        const bool viewport = !block.parent();
        const Unit width = viewport ? mViewport.width : block.width - block.border.horizontal();
        const Unit height = viewport ? mViewport.height : block.height - block.border.vertical();
        const Constraint constraint{width, height};
        const Offsets offsets = offsetsOf(box, constraint);
        resolveEdges(box, width);
        const Unit originX = block.border.left, originY = block.border.top;
        // From the parent's coordinates to the containing block's.
        Point place = box.staticPosition;
        for (BlockBox *up = box.blockParent(); up && up != &block; up = up->container()) place = place + up->position() + up->relativeOffset();
        std::optional<Unit> used = usedWidth(box, width);
        const Unit margins = box.marginLeft + box.marginRight;
        if (used) used = clampedWidth(box, *used, width);
        if (!used && offsets.left && offsets.right && !box.isReplaced() && !box.isTable())
            used = clampedWidth(box, std::max(Unit(), width - *offsets.left - *offsets.right - margins), width);
        Unit available = width;
        if (offsets.left) available = available - *offsets.left;
        else if (!offsets.right) available = available - (place.x - originX);
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
        if (offsets.left)
            box.x = originX + *offsets.left + left;
        else if (offsets.right)
            box.x = originX + width - *offsets.right - box.marginRight - box.width;
        else
            box.x = place.x + left;
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
    const Font &font = fontOf(item.style());
    const std::optional<Unit> baseline = firstBaseline(item);
    marker.baseline = baseline ? *baseline : item.contentTop() + font.ascent();
    marker.width = markerWidth(item, marker);
    const bool rightToLeft = isRightToLeft(item.style());
    marker.x = rightToLeft ? item.width : -marker.width;
}

} // namespace layout
