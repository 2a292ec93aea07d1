// SPDX-License-Identifier: GPL-3.0-or-later
// From points to places and back: hit tests, carets, lines.
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Queries.h"

namespace layout {

namespace {

Point pointOf(QPointF point) { return {Unit::from(point.x()), Unit::from(point.y())}; }
bool holds(const BlockBox &box, Point local) { return Rect{{}, {}, box.width, box.height}.contains(local); }

} // namespace

// Positioned boxes lie above what is in flow; the last one in order is the topmost.
BlockBox *Queries::hitPositioned(BlockBox &box, Point point, Point &local)
{
    if (!box.rare) return nullptr;
    for (auto it = box.rare->positioned.rbegin(); it != box.rare->positioned.rend(); ++it) {
        const Point inner = (*it)->moved ? intoChild(**it, point) : point - (*it)->position();
        if ((*it)->style().text().visibility != css::Visibility::Visible) continue;
        if (BlockBox *found = holds(**it, inner) || (!(*it)->clips && (*it)->overflowBottom > (*it)->height) ? hitBlock(**it, inner, local) : nullptr) {
            if (found != *it || holds(**it, inner)) return found;
        }
    }
    return nullptr;
}

// The item at a point, the topmost one, or else the nearest: a click beside one puts the caret into it.
BlockBox *Queries::itemAt(const BlockBox &box, Point point)
{
    BlockBox *nearest = nullptr;
    int64_t least = INT64_MAX;
    for (Box *each = box.lastChild(); each; each = each->previous()) {
        BlockBox *item = each->asBlock();
        if (!item || !item->item || item->unseen) continue;
        const Point inner = point - item->position() - item->shownOffset();
        if (holds(*item, inner)) return item;
        const auto away = [](Unit at, Unit size) { return int64_t(at.raw < 0 ? -at.raw : at >= size ? at.raw - size.raw + 1 : 0); };
        const Unit reachX = item->clips ? item->width : std::max(item->width, item->overflowRight);
        const Unit reachY = item->clips ? item->height : std::max(item->height, item->overflowBottom);
        const int64_t x = away(inner.x, reachX), y = away(inner.y, reachY);
        // What lies beside at the same height is nearer than what lies above or below.
        const int64_t distance = y * 4 + x;
        if (distance >= least) continue;
        least = distance;
        nearest = item;
    }
    return nearest;
}

// The innermost block at a point of `box`'s coordinates; `local` becomes the point in the found one's.
BlockBox *Queries::hitBlock(BlockBox &box, Point point, Point &local)
{
    if (box.rare) point = point + Point{Unit::px(box.rare->scroll.x()), Unit::px(box.rare->scroll.y())};
    if (BlockBox *found = hitPositioned(box, point, local)) return found;
    if (const ColumnSet *columns = box.columns(); columns && !columns->pieces.empty()) point = point - columns->pieceNear(point).shift;
    const auto enter = [&](BlockBox &child) -> BlockBox * {
        return hitBlock(child, intoChild(child, point), local);
    };
    // Floats, captions and other children that keep places of their own.
    if (box.subtreeHasFloats || box.isTable() || (box.inlineContent && box.inlineContent->hasFloats))
        for (Box *each = box.firstChild(); each; each = each->next()) {
            BlockBox *child = each->asBlock();
            if (!child || child->inSumTree || child->positioned || child->inlineLevel || child->isTablePart()) continue;
            if (holds(*child, intoChild(*child, point))) return enter(*child);
        }
    if (box.hasItems()) {
        BlockBox *item = itemAt(box, point);
        if (item) return enter(*item);
        local = point;
        return &box;
    }
    if (box.isTable()) {
        const auto &table = static_cast<const TableBox &>(box);
        const TableRow *row = table.rowAt(point.y);
        BlockBox *nearest = nullptr;
        Point inNearest;
        int64_t least = INT64_MAX;
        for (const TableCell &cell : table.cells) {
            if (!row || cell.row > uint32_t(row - table.rows.data())) break;
            if (cell.row + cell.rowSpan <= uint32_t(row - table.rows.data())) continue;
            const Point at = cell.box->position() + cell.box->container()->position() + cell.box->container()->container()->position();
            const Point inner = point - at - cell.box->shownOffset();
            if (inner.x.raw >= 0 && inner.x < cell.box->width) return hitBlock(*cell.box, inner, local);
            // Between the cells the nearest one is meant; beside the table none is.
            const int64_t away = inner.x.raw < 0 ? -int64_t(inner.x.raw) : int64_t(inner.x.raw) - cell.box->width.raw;
            if (!holds(box, point) || away >= least) continue;
            least = away;
            nearest = cell.box;
            inNearest = inner;
        }
        if (nearest) return hitBlock(*nearest, inNearest, local);
        local = point;
        return &box;
    }
    if (box.inlineContent) {
        const InlineContent &content = *box.inlineContent;
        if (const Line *line = content.lineAt(point.y)) {
            if (line->block) return enter(*line->block);
            for (const Fragment *f = content.begin(*line); f != content.end(*line); ++f)
                if (f->type == FragmentType::Atomic && holds(*f->box->asBlock(), point - f->box->asBlock()->position()) && !f->box->isReplaced())
                    return enter(*f->box->asBlock());
        }
        local = point;
        return &box;
    }
    Unit top;
    BlockBox *child = box.flow.empty() ? nullptr : box.childAt(point.y, &top);
    while (child && child->unseen) child = child->previousInFlow();
    if (child) return enter(*child);
    local = point;
    return &box;
}

TextPosition Queries::positionOf(BlockBox &block, uint32_t offset)
{
    const InlineContent &content = *block.inlineContent;
    TextPosition best;
    for (const InlineItem &item : content.items) {
        if (item.start > offset && best.node) break;
        if (item.type == ItemType::Text || (item.type == ItemType::Break && item.box->isText())) {
            const auto &text = static_cast<const TextBox &>(*item.box);
            if (!text.node()) continue;
            if (offset >= text.start && (offset <= text.end || !best.node)) {
                best = {text.node(), TextMap::source(text, std::clamp(offset, text.start, text.end))};
                if (offset < text.end) break;
            }
        } else if (item.type == ItemType::Atomic || item.type == ItemType::Break) {
            dom::Node *node = item.box->node();
            if (!node || !node->parentNode() || item.box->pseudo != Pseudo::None) continue;
            if (offset == item.start && !(best.node && best.node->isText())) best = {node->parentNode(), node->index()};
            if (offset == item.end && item.type == ItemType::Atomic) best = {node->parentNode(), node->index() + 1};
        }
    }
    if (!best.node) best = {block.node() ? block.node() : block.blockParent() ? block.blockParent()->node() : nullptr, 0};
    return best;
}

TextPosition Queries::positionOn(BlockBox &block, const Line &line, Unit x, bool *inside)
{
    const InlineContent &content = *block.inlineContent;
    const Fragment *nearest = nullptr;
    Unit distance = Unit::max();
    for (const Fragment *f = content.begin(line); f != content.end(line); ++f) {
        if (f->type == FragmentType::Box) continue;
        if (f->type == FragmentType::Text && f->box->isText() && !f->box->node()) continue;
        const Unit away = x < f->x ? f->x - x : x > f->x + f->width ? x - f->x - f->width : Unit();
        if (away < distance) {
            distance = away;
            nearest = f;
        }
    }
    if (inside) *inside = nearest && !distance.raw;
    if (!nearest) return positionOf(block, line.start);
    uint32_t offset = 0;
    if (nearest->type == FragmentType::Atomic)
        offset = x < nearest->x + nearest->width / 2 ? nearest->start : nearest->end;
    else
        offset = content.items[nearest->item].type == ItemType::Break ? nearest->start : offsetAt(content, *nearest, x - nearest->x);
    if (nearest->box->isText() && offset > nearest->start) {
        // Behind a fragment's last character the place is the node's, not that of the one that follows.
        const auto &text = static_cast<const TextBox &>(*nearest->box);
        return {text.node(), TextMap::source(text, offset)};
    }
    return positionOf(block, offset);
}

/// Text can't stand in it: a table beside whose cells the point lies, a rule, a picture.
static bool standsApart(const BlockBox &block)
{
    const dom::Element *element = block.element();
    return block.isReplaced() || block.isTable() || (element && element->isVoid());
}

/// The place before or behind such a box.
static TextPosition beside(const BlockBox &block, Point local)
{
    dom::Node *const node = block.node();
    dom::Node *const parent = node ? node->parentNode() : nullptr;
    if (!standsApart(block) || !parent) return {node, 0};
    const bool isBeside = local.x.raw < 0 || local.x >= block.width;
    const bool behind = isBeside || !block.isTable() ? local.x >= block.width / 2 : local.y >= block.height / 2;
    return {parent, node->index() + (behind ? 1 : 0)};
}

/// The innermost box around a block, itself at first, in which the point lies; at most BODY. Of a table the rows and
/// sections are only its shape: between the cells lies the table.
Box *Queries::holderOf(BlockBox &block, QPointF point) const
{
    const dom::Element *body = mTree.document().body();
    BlockBox *holder = &block;
    const auto isHolder = [&](const BlockBox &box) {
        if (box.element() == body || !box.blockParent()) return true;
        return (!box.isTablePart() || box.isCell()) && holds(box, localPoint(box, point));
    };
    while (!isHolder(*holder))
        holder = holder->blockParent();
    Box *start = holder;
    for (BlockBox *up = holder; up; up = up->blockParent()) {
        if (!up->item) continue;
        // Beside its items a container is hit itself, though the caret goes into one of them.
        const Point inner = localPoint(*up, point);
        const bool inside = inner.x.raw >= 0 && inner.y.raw >= 0 && inner.x < std::max(up->width, up->overflowRight) &&
                            inner.y < std::max(up->height, up->overflowBottom);
        if (!inside) start = up->blockParent();
    }
    return start;
}

Hit Queries::hitTest(QPointF point)
{
    mTree.update();
    Hit hit;
    BlockBox &root = mTree.root();
    Point local;
    BlockBox *block = hitMoved(point, local);
    if (!block) block = hitBlock(root, pointOf(point), local);
    if (!block) return hit;
    for (Box *up = holderOf(*block, point); up && !hit.element; up = up->parent()) hit.element = up->element();
    if (!hit.element) hit.element = mTree.document().documentElement();
    if (!block->inlineContent || block->inlineContent->lines.empty()) {
        hit.position = beside(*block, local);
        if (!hit.position.node) hit.position = {hit.element, 0};
        hit.inside = block->isReplaced();
        return hit;
    }
    const Line &line = *block->inlineContent->lineAt(local.y);
    bool inside = false;
    hit.position = positionOn(*block, line, local.x, &inside);
    hit.inside = inside && local.y >= line.top && local.y < line.bottom();
    if (local.y >= line.top && local.y < line.bottom())
        for (const Fragment *f = block->inlineContent->begin(line); f != block->inlineContent->end(line); ++f) {
            if (local.x < f->x || local.x >= f->x + f->width) continue;
            // What is written beyond the block's edge is still the block's.
            Box *up = f->box;
            while (up && !up->element())
                up = up->parent();
            if (up) hit.element = up->element();
        }
    return hit;
}

bool Queries::isOnMarker(const dom::Element &item, QPointF point)
{
    mTree.update();
    Box *box = boxOf(item);
    BlockBox *block = box ? box->asBlock() : nullptr;
    if (!block || !block->rare || !block->rare->marker) return false;
    const MarkerData &marker = *block->rare->marker;
    if (!marker.inside) {
        const Point at = localPoint(*block, point);
        const Unit height = marker.image ? marker.imageSize.height : fontOf(block->style()).height();
        const Unit top = marker.baseline - (marker.image ? height : fontOf(block->style()).ascent());
        return Rect{marker.x, top, marker.width, height}.contains(at);
    }
    // It begins the item's first line, which may stand in an anonymous block.
    while (block && !block->inlineContent) block = block->flow.empty() || !block->flow.at(0)->anonymous ? nullptr : block->flow.at(0);
    if (!block || block->inlineContent->lines.empty()) return false;
    const Point at = localPoint(*block, point);
    const Line &line = block->inlineContent->lines.front();
    for (const Fragment *f = block->inlineContent->begin(line); f != block->inlineContent->end(line); ++f)
        if (f->box->pseudo == Pseudo::Marker && Rect{f->x, line.top, f->width, line.height}.contains(at)) return true;
    return false;
}

Queries::Where Queries::locate(TextPosition position, bool atLineEnd)
{
    Where where;
    if (!position.node) return where;
    mTree.update();
    uint32_t offset = 0;
    Box *box = boxOf(*position.node);
    if (position.node->isText()) {
        if (!box) return where;
        offset = TextMap::collapsed(static_cast<TextBox &>(*box), position.offset);
        where.block = box->blockParent();
    } else {
        // In front of a child, behind the one before it, or in an element without any.
        dom::Node *child = position.node->childAt(position.offset);
        Box *at = child ? boxOf(*child) : nullptr;
        const bool before = at != nullptr;
        if (!at) {
            dom::Node *last = position.offset ? position.node->childAt(position.offset - 1) : nullptr;
            at = last ? boxOf(*last) : nullptr;
        }
        if (!at) {
            where.block = box ? (box->isBlockBox() ? box->asBlock() : box->blockParent()) : nullptr;
            if (box && box->isInline()) offset = static_cast<InlineBox *>(box)->start;
        } else if (at->isText()) {
            where.block = at->blockParent();
            offset = before ? static_cast<TextBox *>(at)->start : static_cast<TextBox *>(at)->end;
        } else if (at->isInline()) {
            where.block = at->blockParent();
            offset = before ? static_cast<InlineBox *>(at)->start : static_cast<InlineBox *>(at)->end;
        } else if (at->kind() == BoxKind::LineBreak) {
            where.block = at->blockParent();
            offset = static_cast<LineBreakBox *>(at)->start + (before ? 0 : 1);
        } else if (at->inlineLevel) {
            where.block = at->blockParent();
            if (where.block && where.block->inlineContent)
                for (const InlineItem &item : where.block->inlineContent->items)
                    if (item.box == at) offset = before ? item.start : item.end;
        } else { // a block: its first or last line
            BlockBox *inner = at->asBlock();
            while (inner && !inner->inlineContent) {
                BlockBox *next = nullptr;
                if (!inner->flow.empty()) {
                    next = before ? inner->flow.at(0) : inner->flow.at(inner->flow.size() - 1);
                } else if (inner->hasItems()) {
                    Box *child = before ? inner->firstChild() : inner->lastChild();
                    while (child && !(child->asBlock() && child->item)) child = before ? child->next() : child->previous();
                    next = child ? child->asBlock() : nullptr;
                }
                if (!next) break;
                inner = next;
            }
            where.block = inner;
            offset = before || !inner || !inner->inlineContent ? 0 : uint32_t(inner->inlineContent->text.size());
        }
    }
    if (!where.block || !where.block->inlineContent) return where;
    where.offset = offset;
    where.line = where.block->inlineContent->lineOf(offset);
    if (atLineEnd && where.line && where.line > where.block->inlineContent->lines.data() && where.line->start == offset && !(where.line - 1)->forced)
        --where.line;
    return where;
}

QRectF Queries::caretRect(TextPosition position, bool atLineEnd)
{
    const Where where = locate(position, atLineEnd);
    if (!where.block) return {};
    const auto place = placing(*where.block);
    const Point at;
    if (!where.line) {
        const Font &font = fontOf(where.block->style());
        return place({at.x + where.block->contentLeft(), at.y + where.block->contentTop(), Unit::px(1), font.height()});
    }
    const InlineContent &content = *where.block->inlineContent;
    const Font &font = fontOf(where.block->style());
    Rect rect{at.x + where.line->left, at.y + where.line->top + where.line->baseline - font.ascent(), Unit::px(1), font.height()};
    const Fragment *best = nullptr;
    for (const Fragment *f = content.begin(*where.line); f != content.end(*where.line); ++f) {
        if (f->type == FragmentType::Box || f->start > where.offset || f->end < where.offset) continue;
        const bool own = f->box->node() == position.node;
        if (!best || own || (best->box->node() != position.node && f->type == FragmentType::Text)) best = f;
        if (own && f->start < where.offset) break;
    }
    if (!best) // behind blanks that hang at the line's end
        for (const Fragment *f = content.begin(*where.line); f != content.end(*where.line); ++f)
            if (f->type != FragmentType::Box && f->end <= where.offset) best = f;
    if (!best) return place(rect);
    rect.x = at.x + best->x;
    if (best->type == FragmentType::Atomic)
        rect.x += where.offset >= best->end ? best->width : Unit();
    else
        rect.x += offsetInFragment(content, *best, where.offset);
    if (best->type == FragmentType::Text) {
        rect.y = at.y + where.line->top + best->y;
        rect.height = best->height;
    }
    return place(rect);
}

namespace {

bool hasLines(const BlockBox *block)
{
    return block && block->inlineContent && block->inlineContent->hasContent && !block->inlineContent->lines.empty();
}

// The next block with lines in document order of boxes.
BlockBox *neighbour(BlockBox &block, int direction)
{
    const auto step = [&](Box *box) -> Box * {
        while (box) {
            if (Box *sibling = direction > 0 ? box->next() : box->previous()) {
                box = sibling;
                while (Box *child = direction > 0 ? box->firstChild() : box->lastChild()) {
                    if (box->isBlockBox() && box->asBlock()->inlineContent) break;
                    box = child;
                }
                return box;
            }
            box = box->parent();
        }
        return nullptr;
    };
    for (Box *box = step(&block); box; box = step(box)) {
        BlockBox *found = box->asBlock();
        if (hasLines(found)) return found;
    }
    return nullptr;
}

/// The first block with lines in a box, or the last one.
BlockBox *lineBlockIn(BlockBox &within, int direction)
{
    Box *box = &within;
    while (box) {
        if (hasLines(box->asBlock())) return box->asBlock();
        Box *next = direction > 0 ? box->firstChild() : box->lastChild();
        while (!next && box != &within) {
            next = direction > 0 ? box->next() : box->previous();
            if (!next) box = box->parent();
        }
        box = next;
    }
    return nullptr;
}

} // namespace

/// Of the cells that stand side by side with the one that `found` lies in, the one at `x`; `from` isn't in that row.
BlockBox *Queries::besideInRow(BlockBox &found, const BlockBox &from, double x, int direction)
{
    BlockBox *cell = nullptr;
    for (Box *up = &found; up; up = up->parent()) {
        if (up->asBlock() == &from) return &found;
        bool holdsFrom = false;
        for (const Box *at = &from; at && !holdsFrom; at = at->parent()) holdsFrom = at == up;
        if (holdsFrom) break;
        if (up->kind() == BoxKind::TableCell) cell = up->asBlock();
    }
    if (!cell || !cell->parent()) return &found;
    BlockBox *best = nullptr;
    double least = 0;
    for (Box *each = cell->parent()->firstChild(); each; each = each->next()) {
        BlockBox *other = each->kind() == BoxKind::TableCell ? each->asBlock() : nullptr;
        BlockBox *lines = other ? lineBlockIn(*other, direction) : nullptr;
        if (!lines) continue;
        const double left = origin(*other).x.toDouble(), right = left + other->width.toDouble();
        const double away = x < left ? left - x : x > right ? x - right : 0;
        if (best && away >= least) continue;
        best = lines;
        least = away;
    }
    return best ? best : &found;
}

TextPosition Queries::nearLine(TextPosition position, double x, int direction)
{
    const Where where = locate(position);
    if (!where.block) return {};
    // `x` in the coordinates of a block, at one of its lines.
    const auto along = [&](const BlockBox &target, const Line &at) {
        return Unit::from(x - placing(target)({{}, at.top, Unit::px(1), at.height}).left());
    };
    BlockBox *block = where.block;
    const Line *line = where.line;
    if (line) {
        const auto &lines = block->inlineContent->lines;
        const std::ptrdiff_t index = (line - lines.data()) + direction;
        if (index >= 0 && index < std::ptrdiff_t(lines.size()) && !lines[std::size_t(index)].block)
            return positionOn(*block, lines[std::size_t(index)], along(*block, lines[std::size_t(index)]));
    }
    // A row of cells stands side by side: the line must lie beyond this one, not just behind it in order.
    // Compared where they were laid out: the next column begins higher than the last one ends.
    const double here = (origin(*block).y + (line ? line->top + line->height / 2 : block->height / 2)).toDouble();
    for (BlockBox *next = neighbour(*block, direction); next; next = neighbour(*next, direction)) {
        const Point at = origin(*next);
        const auto &lines = next->inlineContent->lines;
        const Line &candidate = direction > 0 ? lines.front() : lines.back();
        if (candidate.block) continue;
        const double top = (at.y + candidate.top).toDouble(), bottom = (at.y + candidate.bottom()).toDouble();
        if (direction > 0 ? top < here : bottom > here) continue;
        BlockBox *const meant = besideInRow(*next, *block, x, direction);
        const auto &theirs = meant->inlineContent->lines;
        const Line &there = direction > 0 ? theirs.front() : theirs.back();
        return there.block ? positionOn(*next, candidate, along(*next, candidate)) : positionOn(*meant, there, along(*meant, there));
    }
    return {};
}

TextPosition Queries::lineAbove(TextPosition position, double x) { return nearLine(position, x, -1); }
TextPosition Queries::lineBelow(TextPosition position, double x) { return nearLine(position, x, 1); }

TextPosition Queries::lineStart(TextPosition position)
{
    const Where where = locate(position);
    return where.line ? positionOf(*where.block, where.line->start) : position;
}

TextPosition Queries::lineEnd(TextPosition position)
{
    const Where where = locate(position);
    if (!where.line) return position;
    uint32_t end = where.line->end;
    const InlineContent &content = *where.block->inlineContent;
    if (where.line->forced && end > where.line->start) --end;
    const bool last = where.line == &content.lines.back();
    if (!last && !where.line->forced)
        while (end > where.line->start && (content.text[end - 1] == QLatin1Char(' '))) --end;
    return positionOf(*where.block, end);
}

} // namespace layout
