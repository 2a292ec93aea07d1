// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/paint/Painter.h"
#include "engine/paint/RoundedBox.h"

#include "engine/layout/Generated.h"
#include "engine/layout/ItemLayout.h"

#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"

#include <QGlyphRun>
#include <QPaintEngine>
#include <QPainterPath>

namespace paint {

using namespace layout;

// Browsers paint boxes at whole pixels.
QRectF Painter::snapped(const QRectF &rect)
{
    const double left = std::floor(rect.left() + 0.5), top = std::floor(rect.top() + 0.5);
    return {left, top, std::floor(rect.right() + 0.5) - left, std::floor(rect.bottom() + 0.5) - top};
}

bool Painter::meetsClip(const BlockBox &box, Point origin) const
{
    const double top = (origin.y - box.paintUp).toDouble(), bottom = (origin.y + box.height + box.paintDown).toDouble();
    return bottom >= mClip.top() && top <= mClip.bottom();
}

void Painter::paint(QPainter &painter)
{
    BlockBox &root = mTree.root();
    mPainter = &painter;
    mVisited = 0;
    mClip = mOptions.clip.isEmpty() ? QRectF(mOptions.scroll, QSizeF(mTree.viewport())) : mOptions.clip;
    painter.save();
    mTree.setViewScroll(mOptions.scroll);
    painter.translate(-mOptions.scroll);
    painter.setClipRect(mClip, Qt::IntersectClip);
    painter.setRenderHint(QPainter::TextAntialiasing);
    paintCanvas();
    paintContext(root, {});
    for (const QRectF &rect : mOptions.highlightRects)
        if (rect.intersects(mClip)) painter.fillRect(rect, mOptions.highlightColor);
    if (!mOptions.caret.isEmpty()) painter.fillRect(snapped(mOptions.caret), mOptions.caretColor);
    painter.restore();
    mPainter = nullptr;
}

// The root's background, or the body's where it has none, covers the whole canvas.
void Painter::paintCanvas()
{
    mPainter->fillRect(mClip, mOptions.background);
    mCanvasElement = nullptr;
    if (!mOptions.backgrounds) return;
    dom::Element *html = mTree.document().documentElement();
    for (dom::Element *element : {html, mTree.document().body()}) {
        Box *box = element ? boxOf(*element) : nullptr;
        if (!box || !box->isBlockBox()) continue;
        const css::BackgroundGroup &background = box->style().background();
        if (!qAlpha(background.color) && !background.hasImage()) continue;
        mCanvasElement = element;
        const QSize page = mTree.pageSize();
        const QRectF area(0, 0, std::max<double>(page.width(), mClip.right()), std::max<double>(page.height(), mClip.bottom()));
        mPainter->fillRect(mClip, QColor::fromRgba(background.color));
        for (auto layer = background.layers.rbegin(); layer != background.layers.rend(); ++layer) paintImageLayer(box->style(), *layer, area, area);
        return;
    }
}

// What stands inside a box that clips ends at its padding box, whose corners are round where the border's are.
void Painter::clipToPadding(const BlockBox &box, Point origin)
{
    const QRectF border = snapped(Rect{origin.x, origin.y, box.width, box.height}.toRectF());
    if (!box.style().surround().hasRadius()) {
        mPainter->setClipRect(border.adjusted(box.border.left.toDouble(), box.border.top.toDouble(), -box.border.right.toDouble(), -box.border.bottom.toDouble()), Qt::IntersectClip);
        return;
    }
    mPainter->setRenderHint(QPainter::Antialiasing);
    mPainter->setClipPath(RoundedBox(border, box.style().surround()).inset(box.border).path(), Qt::IntersectClip);
    mPainter->setRenderHint(QPainter::Antialiasing, false);
}

// Faint things are painted as one: where two of them lie over each other, only the upper one shows.
template <class Draw> void Painter::paintGroup(double opacity, const QRectF &extent, Draw draw)
{
    QPaintEngine *engine = mPainter->paintEngine();
    const QRectF shown = extent.intersected(mClip);
    if (opacity <= 0 || shown.isEmpty()) return;
    const QTransform device = mPainter->deviceTransform();
    const QRect pixels = device.mapRect(shown).toAlignedRect();
    const bool raster = engine && (engine->type() == QPaintEngine::Raster || engine->type() == QPaintEngine::OpenGL2);
    if (!raster || pixels.width() > 16000 || pixels.height() > 16000) { // a printer keeps its letters
        mPainter->save();
        mPainter->setOpacity(mPainter->opacity() * opacity);
        draw();
        mPainter->restore();
        return;
    }
    QImage layer(pixels.size(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    QPainter inner(&layer);
    inner.setRenderHints(mPainter->renderHints());
    inner.setTransform(device * QTransform::fromTranslate(-pixels.left(), -pixels.top()));
    QPainter *outer = std::exchange(mPainter, &inner);
    draw();
    inner.end();
    mPainter = outer;
    mPainter->save();
    mPainter->setOpacity(mPainter->opacity() * opacity);
    mPainter->setTransform(device.inverted() * mPainter->transform()); // pixels of the device
    mPainter->drawImage(pixels.topLeft(), layer);
    mPainter->restore();
}

// One stacking context, or a box that is painted like one: the order of CSS 2.1, appendix E.
void Painter::paintContext(BlockBox &box, Point origin)
{
    if (box.unseen) return;
    const QTransform transform = transformOf(box);
    if (transform.isIdentity()) {
        paintUntransformed(box, origin);
        return;
    }
    const QPointF at = origin.toPointF();
    const QTransform around = QTransform::fromTranslate(-at.x(), -at.y()) * transform * QTransform::fromTranslate(at.x(), at.y());
    bool possible = false;
    const QTransform back = around.inverted(&possible);
    if (!possible) return; // seen from the edge
    const QRectF clip = std::exchange(mClip, back.mapRect(mClip));
    mPainter->save();
    mPainter->setTransform(around, true);
    mPainter->setRenderHint(QPainter::SmoothPixmapTransform);
    if (transform.isRotating()) mPainter->setRenderHint(QPainter::Antialiasing);
    paintUntransformed(box, origin);
    mPainter->restore();
    mClip = clip;
}

void Painter::paintUntransformed(BlockBox &box, Point origin)
{
    ++mVisited;
    const double opacity = box.anonymous ? 1 : double(box.style().rare().opacity);
    if (opacity >= 1) {
        paintContextContent(box, origin);
        return;
    }
    const double reach = 1e6; // what sticks out at the sides isn't known: the clip bounds it
    const QRectF extent((origin.x).toDouble() - reach, (origin.y - box.paintUp).toDouble(), box.width.toDouble() + 2 * reach,
                        (box.paintUp + box.height + box.paintDown).toDouble());
    paintGroup(opacity, extent, [&] { paintContextContent(box, origin); });
}

void Painter::paintContextContent(BlockBox &box, Point origin)
{
    std::vector<Layer> layers;
    if (box.rare)
        for (BlockBox *child : box.rare->positioned) {
            const auto &group = child->style().box();
            layers.push_back({child, origin + child->position() + child->shownOffset(), group.hasZIndex ? group.zIndex : 0});
        }
    std::stable_sort(layers.begin(), layers.end(), [](const Layer &a, const Layer &b) { return a.z < b.z; });
    const bool clips = box.clips;
    paintDecoration(box, origin);
    if (clips) {
        mPainter->save();
        clipToPadding(box, origin);
        if (box.rare) origin = origin - Point{Unit::px(box.rare->scroll.x()), Unit::px(box.rare->scroll.y())};
    }
    for (const Layer &layer : layers)
        if (layer.z < 0 && meetsClip(*layer.box, layer.origin)) paintContext(*layer.box, layer.origin);
    // Relative boxes are met on the way, and painted with those that are out of flow.
    std::vector<Layer> raised;
    std::vector<Layer> *outer = std::exchange(mRaised, &raised);
    for (const Phase phase : {Phase::Backgrounds, Phase::Floats, Phase::Lines}) paintPhase(box, origin, phase, true);
    mRaised = outer;
    layers.insert(layers.end(), raised.begin(), raised.end());
    std::stable_sort(layers.begin(), layers.end(), [](const Layer &a, const Layer &b) {
        if (a.z != b.z) return a.z < b.z;
        const bool known = a.box->element() && b.box->element() && a.box != b.box;
        return known && a.box->element()->sourceIndex() < b.box->element()->sourceIndex();
    });
    for (const Layer &layer : layers)
        if (layer.z >= 0 && meetsClip(*layer.box, layer.origin)) paintContext(*layer.box, layer.origin);
    if (clips) mPainter->restore();
}

namespace {

bool isRaised(const BlockBox &box)
{
    return !box.anonymous && isPositionedStyle(box) && !box.positioned;
}

} // namespace

// Waits for its turn above the flow, if it is positioned or a stacking context.
void Painter::raise(BlockBox &box, Point origin)
{
    const bool waits = mRaised && !mInColumns && (isRaised(box) || box.moved || (!box.anonymous && box.style().rare().opacity < 1));
    const auto &group = box.style().box();
    const int z = group.hasZIndex ? group.zIndex : 0;
    if (!waits || (z < 0 && isRaised(box)))
        paintContext(box, origin);
    else
        mRaised->push_back({&box, origin, z});
}

void Painter::paintPhase(BlockBox &box, Point origin, Phase phase, bool isRoot)
{
    if (box.unseen) return;
    ++mVisited;
    // What clips, or fades, or moves is painted as one.
    if (!isRoot && (box.clips || box.moved || (!box.anonymous && box.style().rare().opacity < 1))) {
        if (phase == Phase::Lines) raise(box, origin);
        return;
    }
    if (!isRoot && isRaised(box)) {
        // Those below what is in flow are painted as soon as they are met.
        if (box.style().box().zIndex < 0 ? phase == Phase::Backgrounds : phase == Phase::Lines) raise(box, origin);
        return;
    }
    if (!isRoot && phase == Phase::Backgrounds) paintDecoration(box, origin);
    if (box.isReplaced()) {
        if (phase == Phase::Lines) paintReplaced(box, origin);
        return;
    }
    if (phase == Phase::Lines) paintMarker(box, origin);
    if (!box.columns()) {
        paintInside(box, origin, phase);
        return;
    }
    if (phase == Phase::Backgrounds) paintColumnRules(box, origin);
    eachColumn(box, origin, [&](Point at) { paintInside(box, at, phase); });
}

// What was laid out as one strip shows piece by piece.
template <class Draw> void Painter::eachColumn(const BlockBox &box, Point origin, Draw draw)
{
    const ColumnSet &set = *box.columns();
    const double half = set.gap.toDouble() / 2, far = 1e6;
    for (const ColumnPiece &piece : set.pieces) {
        const bool first = piece.left <= box.contentLeft(), last = piece.right >= box.contentLeft() + box.contentWidth();
        const double left = (origin.x + piece.left).toDouble() - (first ? far : half), right = (origin.x + piece.right).toDouble() + (last ? far : half);
        const double top = (origin.y + piece.from + piece.shift.y).toDouble(), bottom = (origin.y + piece.to + piece.shift.y).toDouble();
        // Letters and shadows may reach out at the very start and end.
        const bool begins = &piece == &set.pieces.front(), ends = &piece == &set.pieces.back();
        const QRectF area(left, begins ? top - 40 : top, right - left, bottom - top + (begins ? 40 : 0) + (ends ? 40 : 0));
        const QRectF shown = area.intersected(mClip);
        if (shown.isEmpty()) continue;
        const QRectF clip = std::exchange(mClip, shown);
        mPainter->save();
        mPainter->setClipRect(area, Qt::IntersectClip);
        ++mInColumns; // what waited would be painted outside of its column
        draw(origin + piece.shift);
        --mInColumns;
        mPainter->restore();
        mClip = clip;
    }
}

// Lines between columns that both hold something, as high as their row.
void Painter::paintColumnRules(const BlockBox &box, Point origin)
{
    const auto &rare = box.style().rare();
    if (box.anonymous || rare.columnRuleWidth <= 0) return;
    const ColumnSet &set = *box.columns();
    const double width = double(rare.columnRuleWidth);
    for (std::size_t i = 0; i < set.pieces.size(); ++i) {
        if (!set.pieces[i].startsRow) continue;
        std::size_t end = i + 1;
        while (end < set.pieces.size() && !set.pieces[end].startsRow) ++end;
        const Unit bottom = set.pieces[i].rowBottom;
        const Unit top = set.pieces[i].from + set.pieces[i].shift.y;
        for (std::size_t k = i + 1; k < end; ++k) {
            const Unit a = std::min(set.pieces[k - 1].right, set.pieces[k].right), b = std::max(set.pieces[k - 1].left, set.pieces[k].left);
            const double x = ((origin.x + a).toDouble() + (origin.x + b).toDouble() - width) / 2;
            const QRectF line = snapped(QRectF(x, (origin.y + top).toDouble(), width, (bottom - top).toDouble()));
            Edges only;
            only.left = Unit::from(width);
            if (line.intersects(mClip)) paintEdge(css::Side::Left, line, only, rare.columnRuleStyle, QColor::fromRgba(rare.columnRuleColor));
        }
    }
}

void Painter::paintInside(BlockBox &box, Point origin, Phase phase)
{
    if (box.inlineContent) {
        for (const Line &line : box.inlineContent->lines)
            if (line.block && meetsClip(*line.block, origin + line.block->position()))
                paintPhase(*line.block, origin + line.block->position() + line.block->shownOffset(), phase, false);
        if (phase == Phase::Floats && box.inlineContent->hasFloats)
            for (const InlineItem &item : box.inlineContent->items)
                if (item.type == ItemType::Float) paintContext(*item.box->asBlock(), origin + item.box->asBlock()->position());
        if (phase == Phase::Lines) paintLines(box, origin);
        return;
    }
    paintChildren(box, origin, phase);
    if (box.isTable() && phase == Phase::Backgrounds && static_cast<TableBox &>(box).collapsed) paintCollapsed(box, origin);
}

void Painter::paintChildren(BlockBox &box, Point origin, Phase phase)
{
    const auto paintChild = [&](BlockBox &child) {
        const Point at = origin + child.position() + child.shownOffset();
        if (meetsClip(child, at)) paintPhase(child, at, phase, false);
    };
    if (box.isTable()) {
        auto &table = static_cast<TableBox &>(box);
        for (Box *each = box.firstChild(); each; each = each->next())
            if (BlockBox *child = each->asBlock(); child && !child->isTablePart() && !child->positioned) paintChild(*child);
        if (phase == Phase::Backgrounds) paintTableParts(table, origin);
        // Rows are in order of height: those above the clip are passed over.
        const Unit top = Unit::from(mClip.top()) - origin.y;
        const TableRow *row = table.rowAt(top);
        const uint32_t first = row ? uint32_t(row - table.rows.data()) : 0;
        for (const TableCell &cell : table.cells) {
            if (cell.row + cell.rowSpan <= first || !cell.box->container() || !cell.box->container()->container()) continue;
            if ((origin.y + table.rows[cell.row].top).toDouble() > mClip.bottom()) break;
            BlockBox &rowBox = *cell.box->container();
            const Point at = origin + cell.box->position() + rowBox.position() + rowBox.container()->position() + cell.box->shownOffset();
            paintPhase(*cell.box, at, phase, false);
        }
        return;
    }
    if (box.hasItems()) {
        // Each item is painted as one, in the order of `order` and `z-index` (CSS Flexible Box Layout 1, 5.4).
        if (phase != Phase::Lines) return;
        std::vector<BlockBox *> items = layout::itemsInOrder(box);
        const auto level = [](const BlockBox *item) { return item->anonymous ? 0 : item->style().box().zIndex; };
        std::stable_sort(items.begin(), items.end(), [&](const BlockBox *a, const BlockBox *b) { return level(a) < level(b); });
        for (BlockBox *item : items) {
            const Point at = origin + item->position() + item->shownOffset();
            if (meetsClip(*item, at)) paintContext(*item, at);
        }
        return;
    }
    if (phase == Phase::Floats)
        for (Box *each = box.subtreeHasFloats || box.formattingRoot ? box.firstChild() : nullptr; each; each = each->next())
            if (BlockBox *child = each->asBlock(); child && child->floating) {
                const Point at = origin + child->position() + child->shownOffset();
                if (meetsClip(*child, at)) paintContext(*child, at);
            }
    if (box.flow.empty()) return;
    const FlowSum sum = box.flow.total();
    const Unit from = Unit::from(mClip.top()) - origin.y - Unit::fromRaw(sum.down);
    const Unit to = Unit::from(mClip.bottom()) - origin.y + Unit::fromRaw(sum.up);
    Unit top;
    BlockBox *child = box.childAt(from, &top);
    // Empty blocks may stand in front at the same height; their borders don't show.
    for (; child; child = child->nextInFlow()) {
        if (top > to) break;
        const Point at = origin + Point{child->x, top} + child->shownOffset();
        if (meetsClip(*child, at)) paintPhase(*child, at, phase, false);
        const Unit bottom = top + child->height;
        const BlockBox *next = child->nextInFlow();
        if (next) top = bottom + next->gap;
    }
}

void Painter::paintDecoration(const BlockBox &box, Point origin)
{
    if (box.anonymous || (box.isTablePart() && !box.isCell())) return;
    const css::ComputedStyle &style = box.style();
    if (style.text().visibility != css::Visibility::Visible) return;
    QRectF rect = Rect{origin.x, origin.y, box.width, box.height}.toRectF();
    if (box.isTable()) { // captions stand outside of the frame
        const auto &table = static_cast<const TableBox &>(box);
        rect = QRectF(rect.x(), rect.y() + table.gridTop.toDouble(), rect.width(), table.gridHeight.toDouble());
    }
    const BlockBox *legend = frameLegendOf(box);
    if (legend) { // the frame's edge runs through the legend's middle
        const double top = legend->top().toDouble() + legend->height.toDouble() / 2 - box.border.top.toDouble() / 2;
        if (top > 0) rect.setTop(rect.top() + top);
    }
    const QRectF outer = snapped(rect);
    const bool hidden = box.isCell() && style.text().emptyCells == css::EmptyCells::Hide && !box.firstChild();
    if (!hidden) paintOuterShadows(style, outer);
    if (!hidden && box.element() != mCanvasElement && !hasNativeFrame(box)) paintBackground(style, outer, box.border, box.padding);
    if (!hidden) paintInnerShadows(style, outer, box.border);
    if (!hidden && hasNativeFrame(box)) {
        paintNativeFrame(box, outer);
    } else if (!hidden && !hasCollapsedBorders(box)) {
        if (legend) {
            QPainterPath around;
            around.addRect(outer.adjusted(-1, -1000, 1, 1));
            const Point at = origin + legend->position();
            QPainterPath hole;
            hole.addRect(Rect{at.x, at.y, legend->width, legend->height}.toRectF());
            mPainter->save();
            mPainter->setClipPath(around.subtracted(hole), Qt::IntersectClip);
        }
        paintBorders(style, outer, box.border);
        if (legend) mPainter->restore();
    }
    paintOutline(style, outer);
    if (mOptions.showBorders && (box.isCell() || box.isTable()) && box.border == Edges{}) {
        QPen pen(QColor(0xa0, 0xa0, 0xa0), 1, Qt::DashLine);
        mPainter->setPen(pen);
        mPainter->setBrush(Qt::NoBrush);
        mPainter->drawRect(outer.adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

// ---- Lines ----

void Painter::paintLines(BlockBox &box, Point origin)
{
    const InlineContent &content = *box.inlineContent;
    const Unit top = Unit::from(mClip.top()) - origin.y - Unit::px(40), bottom = Unit::from(mClip.bottom()) - origin.y + Unit::px(40);
    const Line *line = content.lineAt(top);
    for (; line && line < content.lines.data() + content.lines.size() && line->top <= bottom; ++line) {
        if (line->block) continue;
        for (const Fragment *f = content.begin(*line); f != content.end(*line); ++f) {
            Point at = origin;
            for (const Box *up = f->box; up && !up->isBlockBox(); up = up->parent()) at = at + relativeShift(*up);
            paintFragment(box, *line, *f, at);
        }
    }
}

void Painter::paintFragment(const BlockBox &box, const Line &line, const Fragment &fragment, Point origin)
{
    if (fragment.type == FragmentType::Atomic) {
        BlockBox &child = *fragment.box->asBlock();
        paintContext(child, origin + child.position() + child.shownOffset());
        return;
    }
    const css::ComputedStyle &style = fragment.box->style();
    if (style.text().visibility != css::Visibility::Visible) return;
    if (fragment.type == FragmentType::Text) {
        paintText(box, line, fragment, origin);
        return;
    }
    const auto &inlineBox = static_cast<const InlineBox &>(*fragment.box);
    const QRectF rect = snapped(Rect{origin.x + fragment.x, origin.y + line.top + fragment.y, fragment.width, fragment.height}.toRectF());
    const Edges borders = bordersOf(inlineBox.style());
    paintOuterShadows(style, rect);
    paintBackground(style, rect, borders, {});
    paintInnerShadows(style, rect, borders);
    paintBorders(style, rect, borders, fragment.first, fragment.last);
    paintOutline(style, rect);
}

namespace {

// Faces that stand in for missing characters are regular ones: what they lack in weight and slant is made up for here.
void drawGlyphs(QPainter &painter, const Font &font, const GlyphSpan &span, QPointF baseline, double shift)
{
    QGlyphRun run;
    run.setRawFont(span.face->rawAt(font.size()));
    run.setGlyphIndexes(QList<quint32>(span.glyphs.begin(), span.glyphs.end()));
    QList<QPointF> positions;
    positions.reserve(qsizetype(span.positions.size()));
    for (const QPointF &at : span.positions) positions.append({at.x() + shift, at.y()});
    run.setPositions(positions);
    if (span.face == &font.face()) return painter.drawGlyphRun(baseline, run);
    const QFont &wanted = font.face().shapingFont(), &own = span.face->shapingFont();
    const bool slants = wanted.italic() && !own.italic(), thickens = wanted.weight() >= QFont::DemiBold && own.weight() < QFont::DemiBold;
    painter.save();
    painter.translate(baseline);
    if (slants) painter.shear(-0.25, 0);
    painter.drawGlyphRun({}, run);
    if (thickens) painter.drawGlyphRun({font.size() / 28, 0}, run);
    painter.restore();
}

} // namespace

void Painter::paintGlyphs(const InlineContent &content, const Fragment &fragment, QPointF baseline, const QColor &color)
{
    const InlineItem &item = content.items[fragment.item];
    const css::ComputedStyle &style = fragment.box->style();
    const Font &font = fontOf(style);
    mPainter->setPen(color);
    const auto draw = [&](const GlyphSpan &span, double shift) {
        drawGlyphs(*mPainter, font, span, baseline, shift);
    };
    if (!item.simple) {
        const ShapedText &shaped = content.shapes[std::size_t(item.shaped)];
        const double a = double(shaped.edges[fragment.start - item.start]), b = double(shaped.edges[fragment.end - item.start]);
        const double left = std::min(a, b), right = std::max(a, b);
        std::vector<double> blanks; // what justification adds to them moves the glyphs on their right
        for (uint32_t i = fragment.wordSpacing != 0 ? fragment.start : fragment.end; i < fragment.end; ++i)
            if (isJustified(content.text[i]))
                blanks.push_back(std::min(double(shaped.edges[i - item.start]), double(shaped.edges[i + 1 - item.start])));
        std::sort(blanks.begin(), blanks.end());
        const auto added = [&](double x) {
            return double(fragment.wordSpacing) * double(std::lower_bound(blanks.begin(), blanks.end(), x - 0.01) - blanks.begin());
        };
        for (const GlyphSpan &span : shaped.spans) {
            GlyphSpan part;
            part.face = span.face;
            for (std::size_t i = 0; i < span.glyphs.size(); ++i)
                if (span.positions[i].x() >= left - 0.01 && (span.positions[i].x() < right - 0.01 || left == right)) {
                    part.glyphs.push_back(span.glyphs[i]);
                    part.positions.push_back(span.positions[i] + QPointF(added(span.positions[i].x()), 0));
                }
            draw(part, -left);
        }
        return;
    }
    QString text = content.text.mid(fragment.start, fragment.end - fragment.start);
    if (fragment.hyphen) text.append(QLatin1Char('-'));
    Spacing spacing = spacingOf(style);
    spacing.word += double(fragment.wordSpacing);
    const ShapedText shaped = TextShaper::shape(text, font, spacing);
    for (const GlyphSpan &span : shaped.spans) draw(span, 0);
}

void Painter::paintDecorations(const Fragment &fragment, QPointF baseline)
{
    const Font &font = fontOf(fragment.box->style());
    // Lines come from whatever element around asks for them, in its colour.
    for (const Box *up = fragment.box->isText() ? fragment.box->parent() : fragment.box; up; up = up->parent()) {
        if (up->isAnonymous()) continue;
        const auto &rare = up->style().rare();
        if (rare.textDecoration) {
            const double width = std::max(1.0, rare.textDecorationThickness.isFixed() ? double(rare.textDecorationThickness.px) : std::round(font.size() / 10));
            QPen pen(QColor::fromRgba(rare.textDecorationColor), width);
            if (rare.textDecorationStyle == css::BorderStyle::Dotted) pen.setStyle(Qt::DotLine);
            if (rare.textDecorationStyle == css::BorderStyle::Dashed) pen.setStyle(Qt::DashLine);
            mPainter->setPen(pen);
            const double right = baseline.x() + fragment.width.toDouble();
            const auto stroke = [&](double y) {
                const double at = std::floor(y) + width / 2;
                mPainter->drawLine(QPointF(baseline.x(), at), QPointF(right, at));
            };
            if (rare.textDecoration & css::decoration::underline) stroke(baseline.y() + std::max(1.0, font.size() / 10));
            if (rare.textDecoration & css::decoration::overline) stroke(baseline.y() - font.ascent().toDouble());
            if (rare.textDecoration & css::decoration::lineThrough) stroke(baseline.y() - font.ascent().toDouble() / 3);
        }
        if (up->isBlockBox() && (up->inlineLevel || up->isOutOfFlow())) break;
    }
}

void Painter::paintText(const BlockBox &box, const Line &line, const Fragment &fragment, Point origin)
{
    const InlineContent &content = *box.inlineContent;
    if (content.items[fragment.item].type != ItemType::Text) return;
    const css::ComputedStyle &style = fragment.box->style();
    const Font &font = fontOf(style);
    // Letters stand on whole pixels, or they blur; across they may stand anywhere.
    const QPointF baseline((origin.x + fragment.x).toDouble(), (origin.y + line.top + fragment.y + font.ascent()).rounded());
    const QColor color = QColor::fromRgba(style.color());
    if (font.size() > 0) paintTextShadows(content, fragment, baseline);
    if (font.size() > 0) paintGlyphs(content, fragment, baseline, color);
    paintDecorations(fragment, baseline);
    if (mOptions.highlights.empty() || !fragment.box->isText()) return;
    const auto &textBox = static_cast<const TextBox &>(*fragment.box);
    for (const Highlight &highlight : mOptions.highlights) {
        if (highlight.text != textBox.node()) continue;
        const uint32_t from = std::max(fragment.start, TextMap::collapsed(textBox, highlight.from));
        const uint32_t to = std::min(fragment.end, TextMap::collapsed(textBox, highlight.to));
        if (from >= to) continue;
        const Unit a = Queries::offsetInFragment(content, fragment, from), b = Queries::offsetInFragment(content, fragment, to);
        const QRectF rect((origin.x + fragment.x + std::min(a, b)).toDouble(), (origin.y + line.top).toDouble(), std::abs((b - a).toDouble()), line.height.toDouble());
        mPainter->save();
        mPainter->fillRect(snapped(rect), highlight.background);
        mPainter->setClipRect(rect, Qt::IntersectClip);
        paintGlyphs(content, fragment, baseline, highlight.foreground.isValid() ? highlight.foreground : color);
        mPainter->restore();
    }
}

void Painter::paintMarker(BlockBox &box, Point origin)
{
    if (!box.rare || !box.rare->marker || box.rare->marker->inside || box.style().text().visibility != css::Visibility::Visible) return;
    mTree.markerText(box);
    const MarkerData &marker = *box.rare->marker;
    const css::ComputedStyle &style = layout::markerStyle(box, marker);
    const Font &font = fontOf(style);
    const QPointF baseline((origin.x + marker.x).toDouble(), (origin.y + marker.baseline).toDouble());
    const QColor color = QColor::fromRgba(style.color());
    const auto type = style.text().listStyleType;
    if (marker.image) {
        const QSizeF size(marker.imageSize.width.toDouble(), marker.imageSize.height.toDouble());
        paintPicture(style.text().listStyleImage.text, style.rare(), QRectF(baseline - QPointF(isRightToLeft(style) ? -7 : 0, size.height()), size));
        return;
    }
    if (layout::showsBullet(box, marker)) {
        const int ascent = font.ascent().rounded();
        const double size = (ascent * 2 / 3 + 1) / 2;
        const QRectF dot(baseline.x(), std::round(baseline.y() - ascent) + 3 * (ascent - ascent * 2 / 3) / 2.0, size, size);
        mPainter->save();
        mPainter->setRenderHint(QPainter::Antialiasing, type != css::ListStyleType::Square);
        mPainter->setPen(type == css::ListStyleType::Circle ? QPen(color, 1) : QPen(Qt::NoPen));
        mPainter->setBrush(type == css::ListStyleType::Circle ? QBrush() : QBrush(color));
        if (type == css::ListStyleType::Square)
            mPainter->drawRect(dot);
        else
            mPainter->drawEllipse(dot);
        mPainter->restore();
        return;
    }
    const ShapedText shaped = TextShaper::shape(marker.text, font, {});
    mPainter->setPen(color);
    for (const GlyphSpan &span : shaped.spans) drawGlyphs(*mPainter, font, span, baseline, 0);
}

} // namespace paint
