// SPDX-License-Identifier: GPL-3.0-or-later
// Shadows of boxes and of text.
#include "engine/layout/BoxStyle.h"
#include "engine/paint/Blur.h"
#include "engine/paint/Painter.h"
#include "engine/paint/RoundedBox.h"

namespace paint {

using namespace layout;

namespace {

constexpr double mostBlur = 600; // pixels of the radius; beyond, nothing but a haze is left

// Pixels of the device that a pixel of the page takes.
double resolutionOf(const QPainter &painter)
{
    return std::clamp(std::sqrt(std::abs(painter.deviceTransform().determinant())), 0.1, 4.0);
}

// Draws what `draw` fills, blurred. Only what can reach `shown` is drawn.
template <class Draw> void paintBlurred(QPainter &painter, QRectF extent, const QRectF &shown, double blur, QRgb color, Draw draw)
{
    extent = extent.adjusted(-blur, -blur, blur, blur).intersected(shown.adjusted(-2 * blur, -2 * blur, 2 * blur, 2 * blur));
    if (extent.isEmpty()) return;
    double scale = resolutionOf(painter);
    // A wide blur has nothing sharp to show: fewer pixels do.
    if (blur * scale > 24) scale = 24 / blur;
    const QSize size(int(std::ceil(extent.width() * scale)) + 1, int(std::ceil(extent.height() * scale)) + 1);
    if (size.width() > 8000 || size.height() > 8000) return;
    QImage mask(size, QImage::Format_Alpha8);
    mask.fill(0);
    {
        QPainter inner(&mask);
        inner.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        inner.scale(scale, scale);
        inner.translate(-extent.topLeft());
        draw(inner);
    }
    blurAlpha(mask, blur / 2 * scale);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(extent.topLeft(), QSizeF(size) / scale), colored(mask, color));
    painter.restore();
}

} // namespace

void Painter::paintOuterShadows(const css::ComputedStyle &style, const QRectF &rect)
{
    const auto &shadows = style.rare().boxShadow;
    if (shadows.empty() || rect.isEmpty()) return;
    const RoundedBox box(rect, style.surround());
    for (auto shadow = shadows.rbegin(); shadow != shadows.rend(); ++shadow) {
        if (shadow->inset || !qAlpha(shadow->color)) continue;
        const double blur = std::min(double(shadow->blur), mostBlur);
        const RoundedBox cast = box.spread(double(shadow->spread)).moved({double(shadow->x), double(shadow->y)});
        const QRectF reach = cast.rect().adjusted(-blur, -blur, blur, blur);
        if (cast.rect().isEmpty() || !reach.intersects(mClip)) continue;
        mPainter->save();
        // A shadow isn't seen through its box.
        QPainterPath around;
        around.addRect(reach.united(rect).adjusted(-1, -1, 1, 1));
        if (box.isRound()) mPainter->setRenderHint(QPainter::Antialiasing);
        mPainter->setClipPath(around.subtracted(box.path()), Qt::IntersectClip);
        if (blur <= 0) {
            mPainter->setRenderHint(QPainter::Antialiasing, cast.isRound());
            mPainter->fillPath(cast.path(), QColor::fromRgba(shadow->color));
        } else {
            paintBlurred(*mPainter, cast.rect(), mClip, blur, shadow->color, [&](QPainter &mask) { mask.fillPath(cast.path(), Qt::black); });
        }
        mPainter->restore();
    }
}

void Painter::paintInnerShadows(const css::ComputedStyle &style, const QRectF &rect, const Edges &borders)
{
    const auto &shadows = style.rare().boxShadow;
    if (shadows.empty() || rect.isEmpty() || !rect.intersects(mClip)) return;
    const RoundedBox box = RoundedBox(rect, style.surround()).inset(borders);
    if (box.rect().isEmpty()) return;
    for (auto shadow = shadows.rbegin(); shadow != shadows.rend(); ++shadow) {
        if (!shadow->inset || !qAlpha(shadow->color)) continue;
        const double blur = std::min(double(shadow->blur), mostBlur);
        const RoundedBox hole = box.spread(-double(shadow->spread)).moved({double(shadow->x), double(shadow->y)});
        QPainterPath around;
        around.addRect(box.rect().united(hole.rect()).adjusted(-2 * blur - 2, -2 * blur - 2, 2 * blur + 2, 2 * blur + 2));
        around = around.subtracted(hole.path());
        mPainter->save();
        if (box.isRound()) mPainter->setRenderHint(QPainter::Antialiasing);
        mPainter->setClipPath(box.path(), Qt::IntersectClip);
        if (blur <= 0) {
            mPainter->setRenderHint(QPainter::Antialiasing, hole.isRound());
            mPainter->fillPath(around, QColor::fromRgba(shadow->color));
        } else {
            paintBlurred(*mPainter, box.rect(), mClip, blur, shadow->color, [&](QPainter &mask) { mask.fillPath(around, Qt::black); });
        }
        mPainter->restore();
    }
}

// The last shadow in the list lies lowest.
void Painter::paintTextShadows(const InlineContent &content, const Fragment &fragment, QPointF baseline)
{
    const css::ComputedStyle &style = fragment.box->style();
    const auto &shadows = style.text().textShadow;
    for (auto shadow = shadows.rbegin(); shadow != shadows.rend(); ++shadow) {
        if (!qAlpha(shadow->color)) continue;
        const QPointF at = baseline + QPointF(double(shadow->x), double(shadow->y));
        const double blur = std::min(double(shadow->blur), mostBlur);
        if (blur <= 0) {
            paintGlyphs(content, fragment, at, QColor::fromRgba(shadow->color));
            continue;
        }
        const double size = style.font().size;
        const QRectF extent(at.x() - size, at.y() - 1.5 * size, fragment.width.toDouble() + 2 * size, 2.2 * size);
        if (!extent.adjusted(-blur, -blur, blur, blur).intersects(mClip)) continue;
        paintBlurred(*mPainter, extent, mClip, blur, shadow->color, [&](QPainter &mask) {
            QPainter *painter = std::exchange(mPainter, &mask);
            paintGlyphs(content, fragment, at, Qt::black);
            mPainter = painter;
        });
    }
}

} // namespace paint
