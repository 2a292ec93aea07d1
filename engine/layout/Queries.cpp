// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Queries.h"

#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"

namespace layout {

Point Queries::origin(const BlockBox &box)
{
    Point sum;
    for (const BlockBox *each = &box; each; each = each->container()) {
        sum = sum + each->position() + each->relativeOffset();
        if (each->inlineLevel || each->floating)
            for (const Box *up = each->parent(); up && up->isInline(); up = up->parent()) sum = sum + relativeShift(*up);
        const BlockBox *container = each->container();
        if (container && container->rare) sum = sum - Point{Unit::px(container->rare->scroll.x()), Unit::px(container->rare->scroll.y())};
    }
    return sum;
}

std::vector<QRectF> Queries::clientRects(const dom::Element &element) { return rectsOf(element, true); }

std::vector<QRectF> Queries::rectsOf(const dom::Element &element, bool transformed)
{
    mTree.update();
    std::vector<QRectF> rects;
    const Box *box = boxOf(element);
    if (!box) return rects;
    if (const BlockBox *block = box->asBlock()) {
        return shown(*block, {{}, {}, block->width, block->height}, transformed);
    }
    const BlockBox *block = box->blockParent();
    if (!block || !block->inlineContent) return rects;
    const InlineContent &content = *block->inlineContent;
    Point at;
    for (const Box *up = box; up && !up->isBlockBox(); up = up->parent()) at = at + relativeShift(*up);
    const bool lineBreak = box->kind() == BoxKind::LineBreak;
    const uint32_t from = lineBreak ? static_cast<const LineBreakBox *>(box)->start : static_cast<const InlineBox *>(box)->start;
    const uint32_t to = lineBreak ? from + 1 : static_cast<const InlineBox *>(box)->end;
    const Line *line = content.lineOf(from);
    if (!line) return rects;
    while (line > content.lines.data() && (line - 1)->end >= from) --line;
    for (; line < content.lines.data() + content.lines.size() && line->start <= to; ++line)
        for (const Fragment *f = content.begin(*line); f != content.end(*line); ++f)
            if (f->box == box) {
                const auto each = shown(*block, {at.x + f->x, at.y + line->top + f->y, f->width, f->height}, transformed);
                rects.insert(rects.end(), each.begin(), each.end());
            }
    return rects;
}

namespace {

QRectF unionOf(const std::vector<QRectF> &rects)
{
    // A browser leaves empty rectangles out of the union, if there are others.
    QRectF sum;
    bool any = false;
    for (const QRectF &rect : rects) {
        if (rect.width() <= 0 || rect.height() <= 0) continue;
        sum = any ? sum.united(rect) : rect;
        any = true;
    }
    return any ? sum : rects.empty() ? QRectF() : rects.front();
}

} // namespace

QRectF Queries::borderBox(const dom::Element &element) { return unionOf(clientRects(element)); }

dom::Element *Queries::offsetParent(const dom::Element &element)
{
    mTree.update();
    const Box *box = boxOf(element);
    if (!box || element.is(dom::names::body) || element.is(dom::names::html) || isFixedPosition(*box)) return nullptr;
    const bool isStatic = !isPositionedStyle(*box);
    for (dom::Element *up = element.parentElement(); up; up = up->parentElement()) {
        const Box *outer = boxOf(*up);
        if (up->is(dom::names::body)) return up;
        if (outer && isPositionedStyle(*outer)) return up;
        if (isStatic && (up->is(dom::names::td) || up->is(dom::names::th) || up->is(dom::names::table))) return up;
    }
    return nullptr;
}

QRect Queries::offsetBox(const dom::Element &element)
{
    // Transforms don't count. In columns the offsets are those of the first piece, and the size is that of all in a row.
    const std::vector<QRectF> rects = rectsOf(element, false);
    if (rects.empty()) return {};
    QRectF box = unionOf(rects);
    // An inline element's offsets are those of its first fragment.
    const BlockBox *const laid = boxOf(element)->asBlock();
    QPointF at = laid && rects.size() == 1 ? box.topLeft() : rects.front().topLeft();
    if (laid) box = QRectF(at, QSizeF(laid->width.toDouble(), laid->height.toDouble()));
    if (const dom::Element *parent = offsetParent(element)) {
        const Box *outer = boxOf(*parent);
        if (outer && !parent->is(dom::names::body)) {
            at -= unionOf(rectsOf(*parent, false)).topLeft();
            if (const BlockBox *block = outer->asBlock()) at -= QPointF(block->border.left.toDouble(), block->border.top.toDouble());
        } else if (outer && isPositionedStyle(*outer)) {
            at -= unionOf(rectsOf(*parent, false)).topLeft();
        }
    }
    const auto round = [](double v) { return int(std::floor(v + 0.5)); };
    return {round(at.x()), round(at.y()), round(box.right()) - round(box.left()), round(box.bottom()) - round(box.top())};
}

QSize Queries::clientSize(const dom::Element &element)
{
    mTree.update();
    if (element.is(dom::names::body) || element.is(dom::names::html)) return mTree.viewport();
    const Box *box = boxOf(element);
    const BlockBox *block = box ? box->asBlock() : nullptr;
    if (!block) return {};
    return {(block->width - block->border.horizontal()).rounded(), (block->height - block->border.vertical()).rounded()};
}

QSize Queries::scrollSize(const dom::Element &element)
{
    mTree.update();
    if (element.is(dom::names::body) || element.is(dom::names::html)) return mTree.pageSize();
    const Box *box = boxOf(element);
    const BlockBox *block = box ? box->asBlock() : nullptr;
    if (!block) return {};
    Unit right = block->width - block->border.right, bottom = block->height - block->border.bottom;
    if (!block->flow.empty()) {
        const FlowSum sum = block->flow.total();
        right = std::max(right, Unit::fromRaw(sum.right));
        bottom = std::max(bottom, block->contentTop() + Unit::fromRaw(sum.bottom) + block->padding.bottom);
    }
    if (block->hasItems())
        for (Box *each = block->firstChild(); each; each = each->next())
            if (const BlockBox *item = each->asBlock(); item && item->item) {
                right = std::max(right, item->x + item->overflowRight + item->marginRight + block->padding.right);
                bottom = std::max(bottom, item->gap + item->overflowBottom + item->marginBottom + block->padding.bottom);
            }
    if (block->inlineContent)
        for (const Line &line : block->inlineContent->lines) {
            right = std::max(right, line.left + line.width);
            bottom = std::max(bottom, line.bottom() + block->padding.bottom);
        }
    return {(right - block->border.left).rounded(), (bottom - block->border.top).rounded()};
}

// ---- Text ----

Unit Queries::offsetInFragment(const InlineContent &content, const Fragment &fragment, uint32_t offset)
{
    offset = std::clamp(offset, fragment.start, fragment.end);
    if (fragment.type != FragmentType::Text || fragment.item >= content.items.size()) return offset > fragment.start ? fragment.width : Unit();
    const InlineItem &item = content.items[fragment.item];
    if (item.type != ItemType::Text) return {};
    if (offset == fragment.end && !(fragment.level & 1)) return fragment.width;
    const css::ComputedStyle &style = fragment.box->style();
    double x = 0;
    if (item.simple) {
        const QStringView text = QStringView(content.text).mid(fragment.start, offset - fragment.start);
        Spacing spacing = spacingOf(style);
        x = TextShaper::simpleWidth(text, fontOf(style), spacing);
        if (fragment.wordSpacing != 0)
            for (const QChar c : text)
                if (isJustified(c)) x += double(fragment.wordSpacing);
    } else {
        const ShapedText &shaped = content.shapes[std::size_t(item.shaped)];
        const double left = std::min(double(shaped.edges[fragment.start - item.start]), double(shaped.edges[fragment.end - item.start]));
        x = double(shaped.edges[offset - item.start]) - left;
        const bool falling = fragment.level & 1; // what follows stands on the left
        if (fragment.wordSpacing != 0)
            for (uint32_t i = falling ? offset : fragment.start; i < (falling ? fragment.end : offset); ++i)
                if (isJustified(content.text[i])) x += double(fragment.wordSpacing);
    }
    return std::min(Unit::round(x), fragment.width);
}

uint32_t Queries::offsetAt(const InlineContent &content, const Fragment &fragment, Unit x)
{
    const BreakFinder finder(content.text);
    const bool falling = fragment.level & 1;
    uint32_t low = fragment.start, high = fragment.end;
    while (low < high) { // the last edge that isn't beyond x
        const uint32_t middle = (low + high + 1) / 2;
        const Unit edge = offsetInFragment(content, fragment, middle);
        if (falling ? edge >= x : edge <= x)
            low = middle;
        else
            high = middle - 1;
    }
    while (low > fragment.start && !finder.isCharacterStart(low)) --low;
    uint32_t next = low;
    while (next < fragment.end && (next == low || !finder.isCharacterStart(next))) ++next;
    const Unit left = offsetInFragment(content, fragment, low), right = offsetInFragment(content, fragment, next);
    const auto away = [&](Unit edge) { return std::abs(edge.raw - x.raw); };
    return away(left) <= away(right) ? low : next;
}

std::vector<TextFragment> Queries::textFragments(const dom::Node &text)
{
    mTree.update();
    std::vector<TextFragment> result;
    const Box *box = boxOf(text);
    if (!box || !box->isText()) return result;
    const auto &textBox = static_cast<const TextBox &>(*box);
    const BlockBox *block = box->blockParent();
    if (!block || !block->inlineContent || textBox.end == textBox.start) return result;
    const InlineContent &content = *block->inlineContent;
    const auto place = placing(*block);
    Point at;
    for (const Box *up = box->parent(); up && !up->isBlockBox(); up = up->parent()) at = at + relativeShift(*up);
    const Line *line = content.lineOf(textBox.start);
    for (; line && line < content.lines.data() + content.lines.size() && line->start < textBox.end; ++line)
        for (const Fragment *f = content.begin(*line); f != content.end(*line); ++f)
            if (f->box == box)
                result.push_back({TextMap::source(textBox, f->start), TextMap::source(textBox, f->end),
                                  place({at.x + f->x, at.y + line->top + f->y, f->width, f->height})});
    return result;
}

std::vector<QRectF> Queries::textRects(const dom::Node &text, uint32_t from, uint32_t to)
{
    mTree.update();
    std::vector<QRectF> result;
    const Box *box = boxOf(text);
    if (!box || !box->isText() || from >= to) return result;
    const auto &textBox = static_cast<const TextBox &>(*box);
    const BlockBox *block = box->blockParent();
    if (!block || !block->inlineContent) return result;
    const InlineContent &content = *block->inlineContent;
    const uint32_t start = TextMap::collapsed(textBox, from), end = TextMap::collapsed(textBox, to);
    const auto place = placing(*block);
    const Point at;
    for (const Line *line = content.lineOf(start); line && line < content.lines.data() + content.lines.size() && line->start < end; ++line)
        for (const Fragment *f = content.begin(*line); f != content.end(*line); ++f) {
            if (f->box != box || f->type != FragmentType::Text || f->end < start || f->start >= end) continue;
            const Unit a = offsetInFragment(content, *f, start), b = offsetInFragment(content, *f, end);
            Rect rect{at.x + f->x + std::min(a, b), at.y + line->top, Unit::fromRaw(std::abs(a.raw - b.raw)), line->height};
            if (line->forced && f + 1 == content.end(*line) && f->end < end) rect.width += Unit::px(4); // the line break
            if (rect.width.raw > 0) result.push_back(place(rect));
        }
    return result;
}

} // namespace layout
