// SPDX-License-Identifier: GPL-3.0-or-later
// Backgrounds, borders, outlines, images, controls.
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"
#include "engine/paint/Painter.h"

#include <QGlyphRun>
#include <QPainterPath>

namespace paint {

using namespace layout;

namespace {

QPainterPath roundedPath(const QRectF &rect, const css::SurroundGroup &surround)
{
    QPainterPath path;
    const auto corner = [&](const css::Radius &radius) {
        return QSizeF(std::min(radius.x.resolve(rect.width()), rect.width() / 2), std::min(radius.y.resolve(rect.height()), rect.height() / 2));
    };
    const QSizeF tl = corner(surround.topLeft), tr = corner(surround.topRight), br = corner(surround.bottomRight), bl = corner(surround.bottomLeft);
    path.moveTo(rect.left() + tl.width(), rect.top());
    path.lineTo(rect.right() - tr.width(), rect.top());
    path.arcTo(QRectF(rect.right() - 2 * tr.width(), rect.top(), 2 * tr.width(), 2 * tr.height()), 90, -90);
    path.lineTo(rect.right(), rect.bottom() - br.height());
    path.arcTo(QRectF(rect.right() - 2 * br.width(), rect.bottom() - 2 * br.height(), 2 * br.width(), 2 * br.height()), 0, -90);
    path.lineTo(rect.left() + bl.width(), rect.bottom());
    path.arcTo(QRectF(rect.left(), rect.bottom() - 2 * bl.height(), 2 * bl.width(), 2 * bl.height()), 270, -90);
    path.lineTo(rect.left(), rect.top() + tl.height());
    path.arcTo(QRectF(rect.left(), rect.top(), 2 * tl.width(), 2 * tl.height()), 180, -90);
    path.closeSubpath();
    return path;
}

} // namespace

void Painter::paintBackground(const css::ComputedStyle &style, const QRectF &border, const Edges &borders, const Edges &padding)
{
    const css::BackgroundGroup &background = style.background();
    const bool image = background.hasImage();
    if (!mOptions.backgrounds || (!qAlpha(background.color) && !image) || border.isEmpty() || !border.intersects(mClip)) return;
    const bool rounded = style.surround().hasRadius();
    mPainter->save();
    if (rounded) {
        mPainter->setRenderHint(QPainter::Antialiasing);
        mPainter->setClipPath(roundedPath(border, style.surround()), Qt::IntersectClip);
    }
    if (qAlpha(background.color)) mPainter->fillRect(border, QColor::fromRgba(background.color));
    if (image) {
        const QRectF paddingBox = border.adjusted(borders.left.toDouble(), borders.top.toDouble(), -borders.right.toDouble(), -borders.bottom.toDouble());
        const QRectF contentBox = paddingBox.adjusted(padding.left.toDouble(), padding.top.toDouble(), -padding.right.toDouble(), -padding.bottom.toDouble());
        const auto box = [&](css::BackgroundBox which) {
            return which == css::BackgroundBox::BorderBox ? border : which == css::BackgroundBox::PaddingBox ? paddingBox : contentBox;
        };
        for (auto layer = background.layers.rbegin(); layer != background.layers.rend(); ++layer) paintImageLayer(*layer, box(layer->origin), box(layer->clip));
    }
    mPainter->restore();
}

void Painter::paintImageLayer(const css::BackgroundLayer &layer, const QRectF &area, const QRectF &clip)
{
    if (layer.image.kind != css::Image::Kind::Url || !mTree.images()) return;
    const QPixmap pixmap = mTree.images()->imagePixmap(layer.image.text);
    if (pixmap.isNull() || area.isEmpty()) return;
    QSizeF size = pixmap.size() / pixmap.devicePixelRatio();
    const double fitX = area.width() / size.width(), fitY = area.height() / size.height();
    if (layer.sizing == css::BackgroundLayer::Sizing::Cover) {
        size *= std::max(fitX, fitY);
    } else if (layer.sizing == css::BackgroundLayer::Sizing::Contain) {
        size *= std::min(fitX, fitY);
    } else {
        const double ratio = size.height() / size.width();
        if (layer.width.isDefinite()) size = QSizeF(layer.width.resolve(area.width()), layer.height.isDefinite() ? layer.height.resolve(area.height()) : layer.width.resolve(area.width()) * ratio);
        else if (layer.height.isDefinite()) size = QSizeF(layer.height.resolve(area.height()) / ratio, layer.height.resolve(area.height()));
    }
    if (size.width() < 1 || size.height() < 1) return;
    const QPointF first(area.left() + layer.x.resolve(area.width() - size.width()), area.top() + layer.y.resolve(area.height() - size.height()));
    const QRectF shown = clip.intersected(mClip);
    mPainter->save();
    mPainter->setClipRect(clip, Qt::IntersectClip);
    double startX = first.x(), startY = first.y(), endX = startX + size.width(), endY = startY + size.height();
    if (layer.repeatX != css::BackgroundRepeat::NoRepeat) {
        startX -= std::ceil((startX - shown.left()) / size.width()) * size.width();
        endX = shown.right();
    }
    if (layer.repeatY != css::BackgroundRepeat::NoRepeat) {
        startY -= std::ceil((startY - shown.top()) / size.height()) * size.height();
        endY = shown.bottom();
    }
    if (size == QSizeF(pixmap.size())) {
        const QRectF tiles(startX, startY, endX - startX, endY - startY);
        mPainter->drawTiledPixmap(tiles, pixmap);
    } else {
        for (double y = startY; y < endY - 0.01; y += size.height())
            for (double x = startX; x < endX - 0.01; x += size.width()) mPainter->drawPixmap(QRectF({x, y}, size), pixmap, QRectF(pixmap.rect()));
    }
    mPainter->restore();
}

namespace {

QColor shaded(const QColor &color, bool dark)
{
    if (!dark) return color;
    return color.value() < 30 ? color : color.darker(200);
}

} // namespace

void Painter::paintEdge(css::Side side, const QRectF &rect, const Edges &widths, css::BorderStyle kind, QColor color)
{
    const double l = widths.left.toDouble(), t = widths.top.toDouble(), r = widths.right.toDouble(), b = widths.bottom.toDouble();
    const bool first = side == css::Side::Top || side == css::Side::Left;
    const double width = side == css::Side::Top ? t : side == css::Side::Right ? r : side == css::Side::Bottom ? b : l;
    if (width <= 0 || kind == css::BorderStyle::None || kind == css::BorderStyle::Hidden) return;
    // Each side is a trapezoid between the outer and the inner corner.
    const auto band = [&](double from, double to) {
        const QRectF outer = rect.adjusted(l * from, t * from, -r * from, -b * from), in = rect.adjusted(l * to, t * to, -r * to, -b * to);
        QPolygonF p;
        switch (side) {
        case css::Side::Top: p << outer.topLeft() << outer.topRight() << in.topRight() << in.topLeft(); break;
        case css::Side::Right: p << outer.topRight() << outer.bottomRight() << in.bottomRight() << in.topRight(); break;
        case css::Side::Bottom: p << outer.bottomRight() << outer.bottomLeft() << in.bottomLeft() << in.bottomRight(); break;
        case css::Side::Left: p << outer.bottomLeft() << outer.topLeft() << in.topLeft() << in.bottomLeft(); break;
        }
        return p;
    };
    mPainter->setPen(Qt::NoPen);
    const auto fill = [&](double from, double to, const QColor &c) {
        mPainter->setBrush(c);
        mPainter->drawPolygon(band(from, to));
    };
    switch (kind) {
    case css::BorderStyle::Dotted:
    case css::BorderStyle::Dashed: {
        QPen pen(color, width, kind == css::BorderStyle::Dotted ? Qt::DotLine : Qt::DashLine, kind == css::BorderStyle::Dotted && width > 2 ? Qt::RoundCap : Qt::FlatCap);
        mPainter->setPen(pen);
        const QRectF middle = rect.adjusted(l / 2, t / 2, -r / 2, -b / 2);
        if (side == css::Side::Top) mPainter->drawLine(middle.topLeft(), middle.topRight());
        if (side == css::Side::Right) mPainter->drawLine(middle.topRight(), middle.bottomRight());
        if (side == css::Side::Bottom) mPainter->drawLine(middle.bottomLeft(), middle.bottomRight());
        if (side == css::Side::Left) mPainter->drawLine(middle.topLeft(), middle.bottomLeft());
        break;
    }
    case css::BorderStyle::Double:
        if (width < 3) {
            fill(0, 1, color);
        } else {
            fill(0, 1.0 / 3, color);
            fill(2.0 / 3, 1, color);
        }
        break;
    case css::BorderStyle::Groove:
    case css::BorderStyle::Ridge: {
        const bool dark = (kind == css::BorderStyle::Groove) == first;
        fill(0, 0.5, shaded(color, dark));
        fill(0.5, 1, shaded(color, !dark));
        break;
    }
    case css::BorderStyle::Inset: fill(0, 1, shaded(color, first)); break;
    case css::BorderStyle::Outset: fill(0, 1, shaded(color, !first)); break;
    default: fill(0, 1, color);
    }
}

void Painter::paintBorders(const css::ComputedStyle &style, const QRectF &rect, const Edges &all, bool left, bool right)
{
    Edges widths = all;
    if (!left) widths.left = {};
    if (!right) widths.right = {};
    if (widths == Edges{} || !rect.intersects(mClip)) return;
    const auto &border = style.border();
    mPainter->save();
    if (style.surround().hasRadius()) {
        // Rounded borders are the ring between two rounded boxes, in the top side's colour where sides are alike.
        mPainter->setRenderHint(QPainter::Antialiasing);
        QPainterPath ring = roundedPath(rect, style.surround());
        css::SurroundGroup innerGroup = style.surround();
        for (css::Radius *radius : {&innerGroup.topLeft, &innerGroup.topRight, &innerGroup.bottomRight, &innerGroup.bottomLeft}) {
            radius->x = css::Length::fixed(float(std::max(0.0, radius->x.resolve(rect.width()) - widths.left.toDouble())));
            radius->y = css::Length::fixed(float(std::max(0.0, radius->y.resolve(rect.height()) - widths.top.toDouble())));
        }
        const QRectF inner = rect.adjusted(widths.left.toDouble(), widths.top.toDouble(), -widths.right.toDouble(), -widths.bottom.toDouble());
        ring = ring.subtracted(roundedPath(inner, innerGroup));
        mPainter->setClipPath(ring, Qt::IntersectClip);
    }
    paintEdge(css::Side::Top, rect, widths, border.top.style, QColor::fromRgba(border.top.color));
    paintEdge(css::Side::Right, rect, widths, border.right.style, QColor::fromRgba(border.right.color));
    paintEdge(css::Side::Bottom, rect, widths, border.bottom.style, QColor::fromRgba(border.bottom.color));
    paintEdge(css::Side::Left, rect, widths, border.left.style, QColor::fromRgba(border.left.color));
    mPainter->restore();
}

void Painter::paintCollapsed(const BlockBox &box, Point origin)
{
    const auto &table = static_cast<const TableBox &>(box);
    for (const TableCell &cell : table.cells) {
        const BlockBox *row = cell.box->container();
        if (!row || !row->container()) continue;
        const Point at = origin + cell.box->position() + row->position() + row->container()->position();
        const QRectF rect = snapped(Rect{at.x, at.y, cell.box->width, cell.box->height}.toRectF());
        if (!rect.adjusted(-20, -20, 20, 20).intersects(mClip)) continue;
        const auto stroke = [&](const CollapsedEdge &edge, css::Side side, QRectF line, double width) {
            if (width <= 0) return;
            const bool vertical = side == css::Side::Left || side == css::Side::Right;
            if (vertical)
                line = QRectF(std::floor(line.x() - width / 2), line.y(), width, line.height());
            else
                line = QRectF(line.x(), std::floor(line.y() - width / 2), line.width(), width);
            Edges only;
            (vertical ? only.left : only.top) = Unit::from(width);
            paintEdge(vertical ? css::Side::Left : css::Side::Top, line, only, edge.style, edge.color);
        };
        const double l = cell.left.width.toDouble(), r = cell.right.width.toDouble(), t = cell.top.width.toDouble(), b = cell.bottom.width.toDouble();
        // Lines across end where the outer sides of the lines down are, at whole pixels as these.
        const double from = std::floor(rect.left() - l / 2), to = std::floor(rect.right() - r / 2) + r;
        stroke(cell.top, css::Side::Top, {from, rect.top(), to - from, 0}, t);
        stroke(cell.bottom, css::Side::Bottom, {from, rect.bottom(), to - from, 0}, b);
        stroke(cell.left, css::Side::Left, {rect.left(), rect.top(), 0, rect.height()}, l);
        stroke(cell.right, css::Side::Right, {rect.right(), rect.top(), 0, rect.height()}, r);
    }
}

void Painter::paintOutline(const css::ComputedStyle &style, const QRectF &rect)
{
    const auto &rare = style.rare();
    if (rare.outlineWidth <= 0 || rare.outlineStyle == css::OutlineStyle::None) return;
    const double width = double(rare.outlineWidth), away = double(rare.outlineOffset) + width / 2;
    QPen pen(QColor::fromRgba(rare.outlineColor), width);
    if (rare.outlineStyle == css::OutlineStyle::Dotted) pen.setStyle(Qt::DotLine);
    if (rare.outlineStyle == css::OutlineStyle::Dashed) pen.setStyle(Qt::DashLine);
    mPainter->setPen(pen);
    mPainter->setBrush(Qt::NoBrush);
    mPainter->drawRect(rect.adjusted(-away, -away, away, away));
}

// ---- Replaced content ----

void Painter::paintReplaced(const BlockBox &box, Point origin)
{
    const dom::Element *element = box.element();
    if (!element || box.style().text().visibility != css::Visibility::Visible) return;
    const Edges frame = box.frame();
    const QRectF content = snapped(Rect{origin.x + frame.left, origin.y + frame.top, box.width - frame.horizontal(), box.height - frame.vertical()}.toRectF());
    if (!content.intersects(mClip)) return;
    const bool image = element->is(dom::names::img) ||
                       (element->is(dom::names::input) && element->attributeValue("type").compare(QLatin1String("image"), Qt::CaseInsensitive) == 0);
    if (image) {
        const QString url = element->attributeValue("src");
        const QPixmap pixmap = mTree.images() && !url.isEmpty() ? mTree.images()->imagePixmap(mTree.document().resolve(url)) : QPixmap();
        if (!pixmap.isNull()) {
            mPainter->save();
            mPainter->setRenderHint(QPainter::SmoothPixmapTransform);
            mPainter->drawPixmap(content, pixmap, QRectF(pixmap.rect()));
            mPainter->restore();
            return;
        }
    }
    const bool control = element->is(dom::names::input) || element->is(dom::names::select) || element->is(dom::names::textarea) || element->is(dom::names::progress);
    if (control && !image) {
        paintControl(box, content);
        return;
    }
    // What can't be shown is a frame with its text.
    mPainter->setPen(QPen(QColor(0xc0, 0xc0, 0xc0), 1));
    mPainter->setBrush(Qt::NoBrush);
    if (content.width() > 2 && content.height() > 2) mPainter->drawRect(content.adjusted(0.5, 0.5, -0.5, -0.5));
    const QString text = element->attributeValue(image ? "alt" : "title");
    if (text.isEmpty()) return;
    const Font &font = fontOf(box.style());
    const ShapedText shaped = TextShaper::shape(text, font, {});
    mPainter->save();
    mPainter->setClipRect(content, Qt::IntersectClip);
    mPainter->setPen(QColor::fromRgba(box.style().color()));
    for (const GlyphSpan &span : shaped.spans) {
        QGlyphRun run;
        run.setRawFont(span.face->rawAt(font.size()));
        run.setGlyphIndexes(QList<quint32>(span.glyphs.begin(), span.glyphs.end()));
        run.setPositions(QList<QPointF>(span.positions.begin(), span.positions.end()));
        mPainter->drawGlyphRun(content.topLeft() + QPointF(2, font.ascent().toDouble()), run);
    }
    mPainter->restore();
}

void Painter::paintControl(const BlockBox &box, const QRectF &content)
{
    const dom::Element &element = *box.element();
    const QString kind = element.is(dom::names::input) ? element.attributeValue("type").toLower() : QString();
    mPainter->save();
    mPainter->setRenderHint(QPainter::Antialiasing);
    mPainter->setPen(QPen(QColor(0x76, 0x76, 0x76), 1));
    mPainter->setBrush(Qt::white);
    const QRectF frame = content.adjusted(0.5, 0.5, -0.5, -0.5);
    QString label = element.attributeValue("value");
    if (kind == QLatin1String("checkbox") || kind == QLatin1String("radio")) {
        const bool on = element.hasAttribute("checked");
        if (kind == QLatin1String("radio")) {
            mPainter->drawEllipse(frame);
            if (on) {
                mPainter->setBrush(QColor(0x00, 0x75, 0xff));
                mPainter->drawEllipse(frame.adjusted(3, 3, -3, -3));
            }
        } else {
            if (on) mPainter->setBrush(QColor(0x00, 0x75, 0xff));
            mPainter->drawRoundedRect(frame, 2, 2);
        }
        mPainter->restore();
        return;
    }
    if (box.border == Edges{}) mPainter->drawRoundedRect(frame, 2, 2);
    if (kind == QLatin1String("submit") && !element.hasAttribute("value")) label = QStringLiteral("Submit");
    if (kind == QLatin1String("reset") && !element.hasAttribute("value")) label = QStringLiteral("Reset");
    if (kind == QLatin1String("password")) label = QString(label.size(), QChar(0x2022));
    if (element.is(dom::names::select) || element.is(dom::names::textarea)) {
        label.clear();
        for (dom::Node *node = element.firstChild(); node; node = node->next(&element)) {
            if (!node->isText()) continue;
            const QString text = element.is(dom::names::select) ? node->nodeValue().simplified() : node->nodeValue();
            if (text.isEmpty()) continue;
            label = text;
            break;
        }
    }
    const Font &font = fontOf(box.style());
    const QRectF area = element.is(dom::names::select) ? content.adjusted(4, 0, -18, 0) : content;
    mPainter->setClipRect(content, Qt::IntersectClip);
    mPainter->setPen(QColor::fromRgba(box.style().color()));
    double y = element.is(dom::names::textarea) ? area.top() + font.ascent().toDouble() : area.center().y() - font.height().toDouble() / 2 + font.ascent().toDouble();
    for (const QString &line : label.split(QLatin1Char('\n'))) {
        const ShapedText shaped = TextShaper::shape(line, font, {});
        const bool centered = kind == QLatin1String("submit") || kind == QLatin1String("reset") || kind == QLatin1String("button");
        const double x = centered ? area.center().x() - shaped.width / 2 : area.left();
        for (const GlyphSpan &span : shaped.spans) {
            QGlyphRun run;
            run.setRawFont(span.face->rawAt(font.size()));
            run.setGlyphIndexes(QList<quint32>(span.glyphs.begin(), span.glyphs.end()));
            run.setPositions(QList<QPointF>(span.positions.begin(), span.positions.end()));
            mPainter->drawGlyphRun(QPointF(x, y), run);
        }
        y += font.lineSpacing().toDouble();
    }
    if (element.is(dom::names::select)) {
        mPainter->setPen(QPen(Qt::black, 1.5));
        const QPointF c(content.right() - 10, content.center().y() - 1);
        mPainter->drawPolyline(QPolygonF{c + QPointF(-4, -1), c + QPointF(0, 3), c + QPointF(4, -1)});
    }
    mPainter->restore();
}

} // namespace paint
