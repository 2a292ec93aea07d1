// SPDX-License-Identifier: GPL-3.0-or-later
// How far what a box holds reaches out of it: for scrolling, and for what must be painted.
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Engine.h"
#include "engine/layout/MultiColumn.h"

namespace layout {

void Engine::finishOverflow(BlockBox &box)
{
    Unit bottom = box.height, right = box.width, up, down;
    const auto include = [&](Unit top, Unit left, const BlockBox &child) {
        const Point moved = child.relativeOffset();
        bottom = std::max(bottom, top + child.overflowBottom + moved.y);
        right = std::max(right, left + child.overflowRight + moved.x);
        up = std::max(up, child.paintUp - top);
        down = std::max(down, top + child.height + child.paintDown - box.height);
    };
    const bool inColumns = box.columns() != nullptr;
    if (inColumns)
        for (const ColumnPiece &piece : box.columns()->pieces) {
            bottom = std::max(bottom, piece.to + piece.shift.y);
            right = std::max(right, piece.right);
        }
    if (!box.flow.empty() && !inColumns) {
        const FlowSum sum = box.flow.total();
        bottom = std::max(bottom, box.contentTop() + Unit::fromRaw(sum.bottom));
        right = std::max(right, Unit::fromRaw(sum.right));
        up = std::max(up, Unit::fromRaw(sum.up));
        down = std::max(down, Unit::fromRaw(sum.down));
        down = std::max(down, bottom - box.height);
    }
    if (box.inlineContent && !inColumns) {
        for (const Line &line : box.inlineContent->lines) {
            bottom = std::max(bottom, line.bottom());
            right = std::max(right, line.left + line.width);
            if (line.block) include(line.top, line.left, *line.block);
            for (const Fragment *f = box.inlineContent->begin(line); f != box.inlineContent->end(line); ++f) {
                const Unit top = line.top + f->y;
                if (f->type == FragmentType::Atomic) {
                    include(top, f->x, *f->box->asBlock());
                    continue;
                }
                up = std::max(up, -top);
                down = std::max(down, top + f->height - box.height);
            }
        }
    }
    const bool placed = (box.subtreeHasFloats && !inColumns) || box.hasItems() || box.isTable() || box.isTablePart();
    for (Box *each = placed ? box.firstChild() : nullptr; each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (child && !child->inSumTree && !child->positioned && !child->inlineLevel) include(child->gap, child->x, *child);
    }
    if (box.inlineContent && box.inlineContent->hasFloats && !inColumns)
        for (const InlineItem &item : box.inlineContent->items)
            if (item.type == ItemType::Float) include(item.box->asBlock()->gap, item.box->asBlock()->x, *item.box->asBlock());
    if (box.rare)
        for (const BlockBox *child : box.rare->positioned) {
            include(child->gap, child->x, *child);
        }
    if (box.rare && box.rare->marker) up = std::max(up, Unit::px(4));
    if (box.clips) {
        bottom = box.height;
        right = box.width;
        up = down = Unit();
    }
    // Outlines, and letters that reach beyond their line.
    const Unit extra = paintExtra(box);
    box.overflowBottom = bottom;
    box.overflowRight = right;
    box.paintUp = std::max(up, extra);
    box.paintDown = std::max(std::max(down, extra), bottom - box.height);
    const Point moved = box.relativeOffset();
    if (moved.y.raw) {
        box.paintUp = std::max(box.paintUp, box.paintUp - moved.y);
        box.paintDown = std::max(box.paintDown, box.paintDown + moved.y);
    }
    box.forcedBreaks = forcedBreaksOf(box);
    if (box.moved) finishMoved(box);
}

// A box that is shown elsewhere reaches there: what is transformed counts as overflow, what sticks may be anywhere in view.
void Engine::finishMoved(BlockBox &box)
{
    if (box.style().position() == css::Position::Sticky) {
        constexpr Unit anywhere = Unit::px(4000000);
        box.paintUp = box.paintDown = anywhere;
    }
    const QTransform transform = transformOf(box);
    if (transform.isIdentity()) return;
    const auto mapped = [&](Unit top, Unit right, Unit bottom) {
        return transform.mapRect(QRectF(0, top.toDouble(), std::max(box.width, right).toDouble(), (bottom - top).toDouble()));
    };
    const QRectF content = mapped(Unit(), box.overflowRight, std::max(box.height, box.overflowBottom));
    const QRectF painted = mapped(-box.paintUp, box.overflowRight, box.height + box.paintDown);
    box.overflowRight = Unit::ceil(content.right());
    box.overflowBottom = Unit::ceil(content.bottom());
    box.paintUp = std::max(box.paintUp, Unit::ceil(-painted.top()));
    box.paintDown = std::max(box.paintDown, Unit::ceil(painted.bottom()) - box.height);
}

} // namespace layout
