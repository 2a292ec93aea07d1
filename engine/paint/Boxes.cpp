// SPDX-License-Identifier: GPL-3.0-or-later
// Borders and outlines.
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"
#include "engine/paint/Painter.h"
#include "engine/paint/RoundedBox.h"

#include <QGlyphRun>
#include <QPainterPath>

namespace paint {

using namespace layout;

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
        // Rounded borders are the ring between two rounded boxes; one fill where all sides are alike, so that none shows a seam.
        mPainter->setRenderHint(QPainter::Antialiasing);
        const RoundedBox outer(rect, style.surround());
        const QPainterPath ring = outer.path().subtracted(outer.inset(widths).path());
        const css::BorderStyle kind = border.top.style;
        const bool plain = kind == css::BorderStyle::Solid || kind == css::BorderStyle::None || kind == css::BorderStyle::Hidden;
        const bool alike = [&] {
            for (const css::Border *side : {&border.right, &border.bottom, &border.left})
                if (side->style != kind || side->color != border.top.color) return false;
            return plain;
        }();
        if (alike) {
            if (kind == css::BorderStyle::Solid) mPainter->fillPath(ring, QColor::fromRgba(border.top.color));
            mPainter->restore();
            return;
        }
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

} // namespace paint
