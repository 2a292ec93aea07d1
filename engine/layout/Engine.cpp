// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Engine.h"

#include "engine/layout/BoxStyle.h"
#include "engine/layout/FlexLayout.h"
#include "engine/layout/Generated.h"
#include "engine/layout/GridLayout.h"
#include "engine/layout/InlineLayout.h"
#include "engine/layout/MultiColumn.h"
#include "engine/layout/TableLayout.h"

namespace layout {

namespace {

bool isBlockContainer(const BlockBox &box)
{
    return box.kind() == BoxKind::Block || box.kind() == BoxKind::TableCell;
}

// Margins of the first and last child become the block's own where nothing stands between them.
bool collapsesWithFirst(const BlockBox &box)
{
    return isBlockContainer(box) && !box.formattingRoot && !box.border.top && !box.padding.top;
}

bool collapsesWithLast(const BlockBox &box)
{
    return isBlockContainer(box) && !box.formattingRoot && !box.border.bottom && !box.padding.bottom && heightIsAuto(box);
}

// A block without content that is as high as a line: one that is held open, an item with its marker beside it.
bool keepsLine(const BlockBox &box)
{
    if (!box.element() || box.firstChild()) return false;
    return box.element()->isHeldOpen() || (box.rare && box.rare->marker && !box.rare->marker->inside);
}

} // namespace

void Engine::resolveEdges(BlockBox &box, Unit containingWidth)
{
    box.marginLeft = box.marginRight = box.marginTop = box.marginBottom = Unit();
    if (box.anonymous) {
        box.border = {};
        box.padding = {};
        return;
    }
    if (box.kind() == BoxKind::TableSection || box.kind() == BoxKind::TableRow) {
        box.border = box.padding = {};
        return;
    }
    if (!hasCollapsedBorders(box)) box.border = bordersOf(box.style());
    box.padding = paddingsOf(box, containingWidth);
    if (box.isCell()) return;
    const Edges margin = marginsOf(box.style(), containingWidth);
    box.marginLeft = margin.left;
    box.marginRight = margin.right;
    box.marginTop = margin.top;
    box.marginBottom = margin.bottom;
}

void Engine::prepareInline(BlockBox &box)
{
    if (!box.inlineContent->itemsValid) InlineCollector(box).run();
}

void Engine::updateFlowMemo(BlockBox &box, Unit containingWidth)
{
    if (box.flowValid && box.layoutWidth == containingWidth) return;
    resolveEdges(box, containingWidth);
    box.topStrut = {};
    box.topStrut.add(box.marginTop, mQuirks && isQuirkyMargin(box, true));
    box.collapsesThrough = false;
    box.flowValid = true;
    if (box.formattingRoot || !isBlockContainer(box)) return;
    const bool open = !box.border.top && !box.padding.top;
    bool empty = true;
    const std::optional<Unit> given = usedWidth(box, containingWidth);
    const Unit inner = given ? std::max(Unit(), *given - box.frame().horizontal())
                             : containingWidth - box.marginLeft - box.marginRight - box.frame().horizontal();
    if (box.inlineContent) {
        prepareInline(box);
        empty = !box.inlineContent->hasContent;
        if (empty || box.inlineContent->hasBlocks) {
            for (const InlineItem &item : box.inlineContent->items) {
                const bool blank = item.type == ItemType::Open || item.type == ItemType::Close || item.type == ItemType::Float ||
                                   item.type == ItemType::Positioned ||
                                   (item.type == ItemType::Text && item.end <= item.start + 1);
                if (item.type == ItemType::Block) {
                    BlockBox &child = *item.box->asBlock();
                    updateFlowMemo(child, inner);
                    if (open) box.topStrut.add(child.topStrut);
                    if (child.collapsesThrough) continue;
                    empty = false;
                    break;
                }
                if (!blank) break;
            }
        }
    } else {
        for (Box *each = box.firstChild(); each; each = each->next()) {
            BlockBox *child = each->asBlock();
            if (!child || child->isOutOfFlow()) continue;
            updateFlowMemo(*child, inner);
            if (open) box.topStrut.add(dropsQuirkyMargins(*this, box) ? child->topStrut.withoutQuirky() : child->topStrut);
            if (child->collapsesThrough) continue;
            empty = false;
            break;
        }
        if (empty && keepsLine(box)) empty = false;
    }
    if (!empty || !open || box.border.bottom || box.padding.bottom || hasMinimumHeight(box)) return;
    if (!heightIsAuto(box) && !heightIsZero(box)) return;
    box.collapsesThrough = true;
    box.topStrut.add(box.marginBottom, mQuirks && isQuirkyMargin(box, false));
}

bool Engine::avoidsFloats(const BlockBox &box) const
{
    return box.formattingRoot || box.isReplaced() || box.isTable();
}

Unit Engine::minimumWidth(BlockBox &box, Unit containingWidth) const
{
    if (const auto given = usedWidth(box, containingWidth)) return *given;
    return const_cast<Engine *>(this)->preferredWidths(box).min;
}

void Engine::resolveInFlowWidth(BlockBox &box, const Constraint &constraint, FloatArea area)
{
    const Unit start = box.container() ? box.container()->contentLeft() : Unit();
    Unit left, width = constraint.width;
    if (avoidsFloats(box) && area.context && !area.context->empty()) {
        const auto span = area.context->spanAt(area.origin.y, Unit::fromRaw(1), area.origin.x + start, area.origin.x + start + width);
        // A margin reaches under a float; what doesn't fit between is taken from the width.
        left = std::max(Unit(), span.left - area.origin.x - start - box.marginLeft);
        if (span.left <= area.origin.x + start) left = Unit();
        const Unit right = std::max(Unit(), area.origin.x + start + width - span.right - box.marginRight);
        width = width - left - (span.right >= area.origin.x + start + width ? Unit() : right);
    }
    const Unit available = width - box.marginLeft - box.marginRight;
    Unit used;
    if (box.isReplaced()) {
        const Size size = replacedSize(box, constraint);
        used = size.width;
        box.height = size.height;
    } else if (box.isTable() || shrinksToFit(box)) {
        used = TableLayout::usedWidth(*this, box, constraint.width, available);
    } else {
        const std::optional<Unit> given = usedWidth(box, constraint.width);
        used = clampedWidth(box, given ? *given : std::max(available, box.frame().horizontal()), constraint.width);
    }
    box.width = used;
    const Unit free = available - used;
    const bool autoLeft = marginIsAuto(box, Side::Left), autoRight = marginIsAuto(box, Side::Right);
    Unit shift;
    if (autoLeft && autoRight)
        shift = free.raw > 0 ? free / 2 : Unit();
    else if (autoLeft)
        shift = std::max(free, Unit());
    else if (!autoRight)
        shift = blockAlignShift(box, free);
    box.x = start + left + box.marginLeft + shift;
    box.layoutLeft = start;
}

bool Engine::canReuse(const BlockBox &box, const Constraint &constraint, FloatArea area) const
{
    if (box.needsLayout || box.childNeedsLayout || box.layoutWidth != constraint.width) return false;
    // In quirks mode a percentage finds its base through parents of automatic height, up to the view's.
    if (box.layoutHeight != constraint.height && (box.dependsOnHeight || quirks())) return false;
    if (box.enteredWithFloats) return false;
    return !area.context || !area.context->activeBelow(area.origin.y);
}

// A subtree that keeps its layout still puts its floats into the context that is being built.
void Engine::replayFloats(BlockBox &box, FloatArea area)
{
    if (!box.subtreeHasFloats || box.formattingRoot || !area.context) return;
    const auto visit = [&](auto &&self, Box &parent) -> void {
        for (Box *child = parent.firstChild(); child; child = child->next()) {
            BlockBox *block = child->asBlock();
            if (block && block->floating) {
                const Point at = area.origin + block->position();
                area.context->add({at.x - block->marginLeft, at.y - block->marginTop,
                                   block->marginLeft + block->width + block->marginRight,
                                   block->marginTop + block->height + block->marginBottom},
                                  floatsLeft(*block));
            } else if (block && !block->isOutOfFlow() && !block->inlineLevel) {
                replayFloats(*block, area.movedBy(block->position()));
            } else if (child->isInline()) {
                self(self, *child);
            }
        }
    };
    visit(visit, box);
}

// The container's border or padding may be another while its content is as wide as before.
void Engine::keepPlace(BlockBox &box)
{
    const Unit start = box.container() ? box.container()->contentLeft() : Unit();
    box.x += start - box.layoutLeft;
    box.layoutLeft = start;
}

void Engine::layoutInFlow(BlockBox &box, const Constraint &constraint, FloatArea area)
{
    if (canReuse(box, constraint, area)) {
        keepPlace(box);
        replayFloats(box, area.movedBy({box.x, Unit()}));
        return;
    }
    const bool active = area.context && area.context->activeBelow(area.origin.y);
    const Unit oldWidth = box.width;
    const bool sameWidth = box.layoutWidth == constraint.width && box.layoutHeight == constraint.height;
    if (active || box.enteredWithFloats || !sameWidth) box.needsLayout = true;
    box.enteredWithFloats = active;
    if (box.needsLayout || box.isReplaced() || box.isTable() || shrinksToFit(box)) {
        if (!box.flowValid) resolveEdges(box, constraint.width);
        resolveInFlowWidth(box, constraint, area);
        if (box.width != oldWidth) box.needsLayout = true;
    } else {
        keepPlace(box);
    }
    layoutContents(box, constraint, area.movedBy({box.x, Unit()}));
}

void Engine::placeChild(BlockBox &parent, BlockBox &child, FlowState &state, const Constraint &column, FloatArea area,
                        Unit runningSum)
{
    ++mWork.childrenPlaced;
    const Constraint constraint = spansColumns(child) ? Constraint{parent.contentWidth(), column.height} : column;
    if (child.layoutWidth != constraint.width) child.flowValid = false;
    updateFlowMemo(child, constraint.width);
    const bool joins = state.atTop && collapsesWithFirst(parent);
    MarginStrut strut = state.strut;
    strut.add(child.topStrut);
    Unit top = state.y;
    if (state.atTop && dropsQuirkyMargins(*this, parent)) strut.quirky = {};
    if (!joins) top += strut.sum();
    const Unit contentTop = parent.contentTop();
    const Unit originY = area.origin.y + contentTop;
    bool cleared = false;
    if (area.context && !area.context->empty()) {
        if (const auto side = clearOf(child)) {
            const Unit clear = area.context->clearance(*side) - originY;
            if (clear > top) {
                top = clear;
                state.atTop = false;
                cleared = true;
            }
        }
        if (avoidsFloats(child) && area.context->activeBelow(originY + top)) {
            const Unit left = area.origin.x + parent.contentLeft();
            const Unit needed = child.isReplaced() ? replacedSize(child, constraint).width : minimumWidth(child, constraint.width);
            for (int tries = 0; tries < 1000; ++tries) {
                const auto span = area.context->spanAt(originY + top, Unit::fromRaw(1), left, left + constraint.width);
                if (span.width() >= needed || (span.left <= left && span.right >= left + constraint.width)) break;
                const Unit next = area.context->nextEdge(originY + top) - originY;
                if (next <= top) break;
                top = next;
            }
        }
    }
    layoutInFlow(child, constraint, {area.context, {area.origin.x, originY + top}});
    if (isFrameLegend(child)) { // it stands in the frame; what follows begins as if the frame's edge were as high as it
        child.gap = child.marginTop - parent.contentTop();
        state.y = child.marginTop + child.height + child.marginBottom - parent.border.top;
        if (state.y.raw < 0) { // a low one stands in the middle of a thick edge
            child.gap += -state.y / 2;
            state.y = {};
        }
        state.strut = {};
        state.atTop = false;
        return;
    }
    child.gap = top - runningSum;
    if (child.collapsesThrough) {
        if (cleared) { // what follows stands below the floats, too
            state.y = top;
            state.strut = {};
            state.strut.add(child.marginBottom, mQuirks && isQuirkyMargin(child, false));
        } else if (!joins) {
            state.strut = strut;
        }
        return;
    }
    state.y = top + child.height;
    state.strut = child.bottomStrut;
    state.atTop = false;
}

void Engine::placeFloat(BlockBox &parent, BlockBox &child, Unit y, const Constraint &constraint, FloatArea area)
{
    if (child.needsLayout || child.childNeedsLayout || child.layoutWidth != constraint.width || child.layoutHeight != constraint.height)
        layoutIndependent(child, constraint, constraint.width);
    const Size outer{child.marginLeft + child.width + child.marginRight, child.marginTop + child.height + child.marginBottom};
    const Unit originY = area.origin.y + parent.contentTop(), left = area.origin.x + parent.contentLeft();
    Unit top = originY + y;
    FloatContext fallback;
    fallback.clear();
    FloatContext &context = area.context ? *area.context : fallback;
    if (const auto side = clearOf(child)) top = std::max(top, context.clearance(*side));
    const Point at = context.place(floatsLeft(child), outer, top, left, left + constraint.width);
    child.x = at.x - area.origin.x + child.marginLeft;
    child.gap = at.y - area.origin.y + child.marginTop;
}

void Engine::layoutFlowChildren(BlockBox &box, const Constraint &inner, FloatArea area, FlowState &state)
{
    Unit sum;
    for (Box *each = box.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (!child) continue;
        const bool joins = state.atTop && collapsesWithFirst(box);
        const Unit here = state.y + (joins ? Unit() : state.strut.sum());
        if (child->floating) {
            placeFloat(box, *child, here, inner, area);
        } else if (child->positioned) {
            const Unit start = isRightToLeft(box.style()) ? box.contentLeft() + inner.width : box.contentLeft();
            noteStaticPosition(box, *child, {start, box.contentTop() + here});
        } else {
            const FlowSum before = FlowTraits::value(*child);
            placeChild(box, *child, state, inner, area, sum);
            const FlowSum after = FlowTraits::value(*child);
            if (std::memcmp(&before, &after, sizeof before) != 0) box.flow.changed(*child);
            sum += child->gap + child->height;
        }
    }
    box.flowEnd = {state.strut, sum - state.y, state.atTop};
}

// Lays out again only the children that ask for it, and those behind them whose place against the one in front changes.
// False where floats or positioned children make the whole flow depend on it.
bool Engine::relayoutDirtyChildren(BlockBox &box, const Constraint &inner, FloatArea area, FlowState &state)
{
    if (frameLegendOf(box)) return false; // what follows a legend doesn't begin where it ends
    if (!box.rare || box.rare->allDirty || box.subtreeHasFloats || box.enteredWithFloats || box.hasOutOfFlow) return false;
    for (BlockBox *child : box.rare->dirty)
        if (!child->inSumTree) return false;
    std::vector<BlockBox *> dirty = box.rare->dirty;
    std::sort(dirty.begin(), dirty.end(), [&](BlockBox *a, BlockBox *b) { return box.flow.indexOf(*a) < box.flow.indexOf(*b); });
    for (BlockBox *start : dirty) {
        if (!start->needsLayout && !start->childNeedsLayout) continue; // done on the way from an earlier one
        BlockBox *before = start->previousInFlow();
        while (before && before->collapsesThrough) before = before->previousInFlow();
        FlowState at;
        Unit sum;
        BlockBox *child = before ? before->nextInFlow() : box.flow.at(0);
        if (before) {
            sum = Unit::fromRaw(box.flow.sumBefore(*before).height) + before->gap + before->height;
            at.y = sum;
            at.strut = before->bottomStrut;
            at.atTop = false;
        }
        bool passed = false;
        for (; child; child = child->nextInFlow()) {
            passed = passed || child == start;
            const bool clean = !child->needsLayout && !child->childNeedsLayout;
            const FlowSum old = FlowTraits::value(*child);
            placeChild(box, *child, at, inner, area, sum);
            const FlowSum now = FlowTraits::value(*child);
            if (std::memcmp(&old, &now, sizeof old) != 0) box.flow.changed(*child);
            sum += child->gap + child->height;
            if (child->subtreeHasFloats && !child->formattingRoot) return false;
            if (passed && clean && old.height == now.height && !child->collapsesThrough) break;
        }
        if (!child) box.flowEnd = {at.strut, sum - at.y, at.atTop};
    }
    state.strut = box.flowEnd.strut;
    state.atTop = box.flowEnd.atTop;
    state.y = Unit::fromRaw(box.flow.total().height) - box.flowEnd.lead;
    return true;
}

void Engine::layoutContents(BlockBox &box, const Constraint &constraint, FloatArea area)
{
    ++mWork.boxesLaidOut;
    Constraint inner{box.contentWidth(), definiteHeight(box, constraint)};
    const std::optional<ColumnSet> columns = columnsFor(box, inner.width);
    if (columns)
        inner.width = columns->width;
    else if (box.rare)
        box.rare->columns.reset();
    if (centresContent(box) || box.isListItem) box.shift = {};
    FloatContext own;
    if (box.formattingRoot || !area.context) {
        own.clear();
        area = {&own, {}};
    }
    FlowState state;
    const std::size_t floatsBefore = area.context->entries().size();
    if (box.isReplaced()) {
        layoutReplaced(box, constraint);
    } else if (box.isTable()) {
        TableLayout(*this, box, constraint).run();
    } else if (box.hasItems()) {
        state.y = box.mode == ChildLayout::Flex ? FlexLayout(*this, box, constraint).run() : GridLayout(*this, box, constraint).run();
        state.atTop = false;
    } else if (box.inlineContent) {
        prepareInline(box);
        InlineLayout(*this, box, inner, area).run(state);
    } else if (box.needsLayout || !relayoutDirtyChildren(box, inner, area, state)) {
        state = {};
        area.context->truncate(floatsBefore); // what an attempt in vain has placed
        layoutFlowChildren(box, inner, area, state);
    }
    const bool hasOwn = area.context == &own;
    if (!box.isReplaced() && !box.isTable()) {
        if (hasOwn && own.lowest() > Unit::fromRaw(INT32_MIN / 4)) {
            const Unit low = own.lowest() - box.contentTop();
            if (low > state.y + state.strut.sum()) {
                state.y = low;
                state.strut = {};
                state.atTop = false;
            }
        }
        if (columns) {
            state.y = cutIntoColumns(box, *columns, state.y, state.strut.sum(), columnRoom(box, constraint));
            state.strut = {};
            state.atTop = false;
        }
        finishHeight(box, constraint, state);
    }
    box.subtreeHasFloats = area.context->entries().size() > floatsBefore;
    Unit reach = Unit::fromRaw(INT32_MIN / 4);
    if (!hasOwn)
        for (std::size_t i = floatsBefore; i < area.context->entries().size(); ++i)
            reach = std::max(reach, area.context->entries()[i].rect.bottom() - area.origin.y);
    box.floatReach = reach;
    box.layoutWidth = constraint.width;
    box.layoutHeight = constraint.height;
    box.needsLayout = box.childNeedsLayout = false;
    if (box.rare) {
        box.rare->dirty.clear();
        box.rare->allDirty = false;
    }
    placeMarker(box);
    if (box.rare && !box.rare->positioned.empty()) layoutPositioned(box);
    finishOverflow(box);
}

// How high columns may be; nothing where they are as high as they must.
std::optional<Unit> Engine::columnRoom(const BlockBox &box, const Constraint &constraint)
{
    const auto given = usedHeight(box, constraint);
    const Unit boundless = Unit::px(4000000);
    const Unit most = box.heightForced && given ? *given : clampedHeight(box, given ? *given : boundless, constraint);
    if (most >= boundless) return {};
    return std::max(Unit(), most - box.frame().vertical());
}

void Engine::finishHeight(BlockBox &box, const Constraint &constraint, const FlowState &state)
{
    const Edges frame = box.frame();
    Unit content = state.y;
    MarginStrut below;
    const bool joinsTop = state.atTop && collapsesWithFirst(box);
    if (collapsesWithLast(box)) {
        below = joinsTop ? MarginStrut{} : state.strut;
    } else if (!joinsTop && !(state.atTop && !box.formattingRoot && false)) {
        content += (quirks() && box.isCell() ? state.strut.withoutQuirky() : state.strut).sum();
    }
    if (box.isListItem) {
        box.shift = roomForMarker(box);
        content += box.shift;
    }
    if (keepsLine(box) && !box.inlineContent)
        content = std::max(content, lineHeightOf(box.style()));
    Unit height = content + frame.vertical();
    if (box.item) box.itemData().natural = height;
    if (const auto given = usedHeight(box, constraint)) height = *given;
    if (!box.heightForced) {
        const Unit clamped = clampedHeight(box, height, constraint);
        if (clamped > height) below = {}; // COMPAT: a margin ends in the room that a least height adds
        height = clamped;
    }
    if (box.isCell() && usedHeight(box, constraint)) height = std::max(height, content + frame.vertical());
    height = quirkHeight(*this, box, height);
    if (box.unseen) height = {};
    if (box.isCell()) box.shift = {};
    box.height = std::max(height, frame.vertical());
    if (centresContent(box)) {
        box.shift = std::max(Unit(), box.height - frame.vertical() - content) / 2;
        shiftLines(box);
    }
    if (box.collapsesThrough && box.height.raw == 0) {
        box.bottomStrut = box.topStrut;
        return;
    }
    box.collapsesThrough = false;
    below.add(box.marginBottom, mQuirks && isQuirkyMargin(box, false));
    box.bottomStrut = below;
}

// A marker beside an item stands on the first line that the item's blocks have. Where that one's baseline is too high for it
// they stand lower.
Unit Engine::roomForMarker(const BlockBox &item) const
{
    const MarkerData *marker = item.rare ? item.rare->marker.get() : nullptr;
    if (!marker || marker->inside || item.inlineContent) return {};
    Unit ascent = lineAscentOf(markerStyle(item, *marker));
    if (marker->image) ascent = std::max(ascent, marker->imageSize.height);
    for (const Box *each = item.firstChild(); each; each = each->next()) {
        const BlockBox *child = each->asBlock();
        if (!child || child->isOutOfFlow()) continue;
        if (const std::optional<Unit> baseline = firstBaseline(*child)) return std::max(Unit(), ascent - *baseline);
    }
    return {};
}

// Lines and what stands on them keep places from the border box.
void Engine::shiftLines(BlockBox &box)
{
    if (!box.inlineContent || box.linesShift == box.shift) return;
    const Unit by = box.shift - box.linesShift;
    for (Line &line : box.inlineContent->lines) line.top += by;
    for (const InlineItem &item : box.inlineContent->items) {
        BlockBox *inner = item.box ? item.box->asBlock() : nullptr;
        if (inner && item.type != ItemType::Positioned) inner->gap += by;
    }
    box.linesShift = box.shift;
}

Unit Engine::definiteHeight(const BlockBox &box, const Constraint &constraint) const
{
    if (box.unseen && !mQuirks) return Unit::fromRaw(-1);
    if (box.anonymous && !box.item) return constraint.height;
    const auto given = usedHeight(box, constraint);
    if (box.heightForced)
        return box.rare->item->forcedDefinite ? std::max(Unit(), *given - box.frame().vertical()) : Unit::fromRaw(-1);
    if (!given) return box.item ? Unit::fromRaw(-1) : quirkPercentBase(*this, box, constraint);
    return std::max(Unit(), clampedHeight(box, *given, constraint) - box.frame().vertical());
}

void Engine::layoutRoot(BlockBox &root)
{
    const Constraint constraint{mViewport.width, mViewport.height};
    root.x = {};
    if (root.needsLayout || root.layoutWidth != constraint.width || root.layoutHeight != constraint.height) {
        root.needsLayout = true;
        resolveEdges(root, constraint.width);
        root.width = constraint.width;
    }
    root.gap = {};
    layoutContents(root, constraint, {});
}

void Engine::layoutIndependent(BlockBox &box, const Constraint &constraint, Unit available, std::optional<Unit> width)
{
    const bool clean = !box.needsLayout && !box.childNeedsLayout && box.layoutWidth == constraint.width && box.layoutHeight == constraint.height;
    // What is available to a positioned box hangs on where it would have stood, too.
    if (clean && (width ? *width == box.width : !box.positioned)) return;
    resolveEdges(box, constraint.width);
    Unit used;
    if (width) {
        used = *width;
    } else if (box.isReplaced()) {
        used = replacedSize(box, constraint).width;
    } else if (box.isTable()) {
        used = TableLayout::usedWidth(*this, box, constraint.width, available - box.marginLeft - box.marginRight);
    } else if (const auto given = usedWidth(box, constraint.width)) {
        used = clampedWidth(box, *given, constraint.width);
    } else {
        const Unit room = available - box.marginLeft - box.marginRight;
        used = clampedWidth(box, contentWidthOf(box, room), constraint.width);
    }
    if (clean && used == box.width) return;
    if (used != box.width || box.layoutWidth != constraint.width || box.layoutHeight != constraint.height) box.needsLayout = true;
    box.width = used;
    layoutContents(box, constraint, {});
}

} // namespace layout
