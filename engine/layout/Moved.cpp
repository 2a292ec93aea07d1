// SPDX-License-Identifier: GPL-3.0-or-later
// Boxes that are shown elsewhere than where they are laid out: transforms, and what sticks while the page scrolls.
#include "engine/css/Transform.h"
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Queries.h"

namespace layout {

bool movesWhenShown(const css::ComputedStyle &style)
{
    return style.position() == css::Position::Sticky || style.rare().isTransformed();
}

QTransform transformOf(const BlockBox &box)
{
    if (!box.moved || box.anonymous || !box.style().rare().isTransformed()) return {};
    const BlockBox *root = &box;
    while (const BlockBox *up = root->blockParent()) root = up;
    return css::transformOf(box.style(), {box.width.toDouble(), box.height.toDouble()},
                            {box.style().font().size, 16, root->width.toDouble(), root->layoutHeight.toDouble()});
}

namespace {

struct Scroller {
    const BlockBox *box;
    Rect port; ///< what shows of its content, in the content's coordinates
};

// The nearest box that scrolls, or the view.
Scroller scrollerOf(const BlockBox &box)
{
    for (const BlockBox *up = box.container();; up = up->container()) {
        if (!up->container()) {
            const QPointF at = up->rare ? up->rare->viewScroll : QPointF();
            return {up, {Unit::from(at.x()), Unit::from(at.y()), up->width, up->layoutHeight}};
        }
        if (!up->clips || up->style().box().overflowX == css::Overflow::Clip) continue;
        const QPoint at = up->rare ? up->rare->scroll : QPoint();
        return {up, {Unit::px(at.x()) + up->contentLeft(), Unit::px(at.y()) + up->border.top + up->padding.top, up->contentWidth(),
                     up->height - up->frame().vertical()}};
    }
}

// Along one axis: between where it would stand and the end of what holds it, towards the edge it sticks to.
Unit pulled(std::optional<Unit> start, std::optional<Unit> end, Unit portStart, Unit portEnd, Unit at, Unit size, Unit before, Unit behind, Unit holdStart, Unit holdEnd)
{
    Unit shift;
    if (end) {
        const Unit wanted = portEnd - *end - (at + size);
        const Unit most = holdStart + before - at;
        if (wanted.raw < 0) shift = std::max(wanted, std::min(most, Unit()));
    }
    if (start) {
        const Unit wanted = portStart + *start - at;
        const Unit most = holdEnd - behind - (at + size);
        if (wanted.raw > 0) shift = std::min(wanted, std::max(most, Unit()));
    }
    return shift;
}

} // namespace

Point stickyShift(const BlockBox &box)
{
    if (!box.moved || box.anonymous || box.style().position() != css::Position::Sticky) return {};
    // A part of a table sticks within its table.
    const BlockBox *holder = box.container();
    while (holder && holder->isTablePart() && !holder->isCell()) holder = holder->container();
    if (!holder) return {};
    const Scroller scroller = scrollerOf(box);
    const Offsets offsets = offsetsOf(box, {scroller.port.width, scroller.port.height});
    // Where both stand in the scroller's content.
    Point at = box.position(), hold;
    for (const BlockBox *up = box.container(); up && up != holder; up = up->container()) at = at + up->position() + up->shownOffset();
    for (const BlockBox *up = holder; up != scroller.box && up->container(); up = up->container()) hold = hold + up->position() + up->shownOffset();
    at = at + hold;
    const Edges frame = holder->isTable() ? Edges{} : holder->frame();
    // What holds it may be what scrolls, and then its content is what counts.
    Unit contentBottom;
    if (holder == scroller.box) {
        contentBottom = holder->overflowBottom;
        if (!holder->flow.empty()) contentBottom = holder->contentTop() + Unit::fromRaw(holder->flow.total().height) + frame.bottom;
    }
    const Unit top = hold.y + frame.top, bottom = hold.y + std::max(holder->height, contentBottom) - frame.bottom;
    const Unit left = hold.x + frame.left, right = hold.x + std::max(holder->width, holder == scroller.box ? holder->overflowRight : Unit()) - frame.right;
    return {pulled(offsets.left, offsets.right, scroller.port.x, scroller.port.right(), at.x, box.width, box.marginLeft, box.marginRight, left, right),
            pulled(offsets.top, offsets.bottom, scroller.port.y, scroller.port.bottom(), at.y, box.height, box.marginTop, box.marginBottom, top, bottom)};
}

// ---- From boxes to the document and back ----

namespace {

// A box in a line stands where the inline elements around it were moved to.
Point inlineShift(const BlockBox &box)
{
    Point sum;
    if (box.inlineLevel || box.floating)
        for (const Box *up = box.parent(); up && up->isInline(); up = up->parent()) sum = sum + relativeShift(*up);
    return sum;
}

Point scrollOf(const BlockBox *container)
{
    if (!container || !container->rare) return {};
    return {Unit::px(container->rare->scroll.x()), Unit::px(container->rare->scroll.y())};
}

} // namespace

std::vector<QRectF> Queries::shown(const BlockBox &box, const Rect &part, bool transformed) const
{
    std::vector<QRectF> rects{part.toRectF()};
    // Sums are exact while nothing on the way needs fractions.
    Point exact;
    const auto settle = [&] {
        for (QRectF &rect : rects) rect.translate(exact.toPointF());
        exact = {};
    };
    for (const BlockBox *each = &box; each; each = each->container()) {
        const BlockBox *container = each->container();
        if (transformed && each->moved && each->style().rare().isTransformed()) {
            settle();
            const QTransform transform = transformOf(*each);
            for (QRectF &rect : rects) rect = transform.mapRect(rect);
        }
        exact = exact + each->position() + each->shownOffset() + inlineShift(*each) - scrollOf(container);
        if (!container || !container->columns() || each->positioned) continue;
        settle();
        std::vector<QRectF> cut;
        for (const QRectF &rect : rects) {
            const std::size_t before = cut.size();
            const auto &pieces = container->columns()->pieces;
            for (const ColumnPiece &piece : pieces) {
                const double from = piece.from.toDouble(), to = piece.to.toDouble();
                const bool first = &piece == &pieces.front(), last = &piece == &pieces.back();
                const double top = first ? rect.top() : std::max(rect.top(), from), bottom = last ? rect.bottom() : std::min(rect.bottom(), to);
                if (bottom < top || (bottom == top && (rect.height() > 0 || (top >= to && !last)))) continue;
                cut.push_back(QRectF(rect.left(), top, rect.width(), bottom - top).translated(piece.shift.toPointF()));
            }
            if (cut.size() == before && !pieces.empty()) cut.push_back(rect.translated(container->columns()->pieceAt(Unit::from(rect.top())).shift.toPointF()));
        }
        if (!cut.empty()) rects = std::move(cut);
    }
    settle();
    return rects;
}

// From a block's coordinates to the document, for what lies in one column: a sum where nothing on the way moves or is cut.
std::function<QRectF(const Rect &)> Queries::placing(const BlockBox &block) const
{
    for (const BlockBox *each = &block; each; each = each->container())
        if (each->moved || each->columns())
            return [this, &block](const Rect &rect) {
                const auto rects = shown(block, rect);
                return rects.empty() ? rect.toRectF() : rects.front();
            };
    return [at = origin(block)](const Rect &rect) { return rect.translated(at).toRectF(); };
}

// The same way backwards: from the root's coordinates to the box's, container by container.
Point Queries::localPoint(const BlockBox &box, QPointF point) const
{
    std::vector<const BlockBox *> chain;
    for (const BlockBox *each = &box; each; each = each->container()) chain.push_back(each);
    Point at{Unit::from(point.x()), Unit::from(point.y())};
    for (auto each = chain.rbegin(); each != chain.rend(); ++each) {
        const BlockBox *container = (*each)->container();
        at = at + scrollOf(container);
        if (container && container->columns() && !(*each)->positioned && !container->columns()->pieces.empty())
            at = at - container->columns()->pieceNear(at).shift;
        at = intoChild(**each, at - inlineShift(**each));
    }
    return at;
}

Point Queries::intoChild(const BlockBox &child, Point point) const
{
    Point inner = point - child.position() - child.shownOffset();
    if (!child.moved || !child.style().rare().isTransformed()) return inner;
    bool possible = false;
    const QTransform back = transformOf(child).inverted(&possible);
    if (!possible) return {Unit::px(-1000000), Unit::px(-1000000)}; // flat: nothing of it can be hit
    const QPointF mapped = back.map(inner.toPointF());
    return {Unit::from(mapped.x()), Unit::from(mapped.y())};
}

// The topmost transformed or sticky box at a point: what is in flow is looked for where it was laid out, so these come
// first. A box that the one found holds is found through it.
BlockBox *Queries::hitMoved(QPointF point, Point &local)
{
    BlockBox *best = nullptr;
    Point inBest;
    const auto above = [](const BlockBox &a, const BlockBox &b) {
        const int za = a.style().box().zIndex, zb = b.style().box().zIndex;
        if (za != zb) return za > zb;
        return a.element()->sourceIndex() > b.element()->sourceIndex();
    };
    for (BlockBox *box : mTree.movedBoxes()) {
        if (box->positioned || box->style().text().visibility != css::Visibility::Visible) continue;
        const Point at = localPoint(*box, point);
        // The overflow of a transformed box is known only as it shows.
        const bool own = box->clips || box->style().rare().isTransformed();
        const Rect reach{{}, {}, own ? box->width : std::max(box->width, box->overflowRight), own ? box->height : std::max(box->height, box->overflowBottom)};
        if (!reach.contains(at)) continue;
        // What an outer box clips away can't be hit.
        bool cut = false;
        for (const BlockBox *up = box->container(); up && !cut; up = up->container())
            cut = up->clips && !Rect{{}, {}, up->width, up->height}.contains(localPoint(*up, point));
        if (cut || (best && !above(*box, *best))) continue;
        best = box;
        inBest = at;
    }
    return best ? hitBlock(*best, inBest, local) : nullptr;
}

} // namespace layout
