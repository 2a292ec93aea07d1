// SPDX-License-Identifier: GPL-3.0-or-later
// Colours and images behind a box (CSS Backgrounds and Borders 3).
#include "engine/dom/Document.h"
#include "engine/layout/BoxStyle.h"
#include "engine/paint/GradientFill.h"
#include "engine/paint/Painter.h"
#include "engine/paint/RoundedBox.h"

namespace paint {

using namespace layout;

namespace {

constexpr int mostTiles = 400; // painted one by one; more are copies of a picture

// What a tile shows.
struct LayerImage {
    std::optional<css::Gradient> gradient;
    QString url;
    ImageSource *images = nullptr;
    QPixmap pixmap;

    bool isVector() const { return gradient || pixmap.isNull(); }
    void paint(QPainter &painter, const QRectF &tile) const
    {
        if (gradient)
            painter.fillRect(tile, gradientBrush(*gradient, tile));
        else if (pixmap.isNull())
            images->paintVector(painter, url, tile);
        else
            painter.drawPixmap(tile, pixmap, QRectF(pixmap.rect()));
    }
};

// Concrete sizes (CSS Images 3, 5.3): a gradient has none of its own.
QSizeF tileSize(const css::BackgroundLayer &layer, const QSizeF &natural, const QRectF &area)
{
    const bool sized = !natural.isEmpty();
    if (layer.sizing != css::BackgroundLayer::Sizing::Explicit) {
        if (!sized) return area.size();
        const double fitX = area.width() / natural.width(), fitY = area.height() / natural.height();
        return natural * (layer.sizing == css::BackgroundLayer::Sizing::Cover ? std::max(fitX, fitY) : std::min(fitX, fitY));
    }
    const bool width = layer.width.isDefinite(), height = layer.height.isDefinite();
    const double w = layer.width.resolve(area.width()), h = layer.height.resolve(area.height());
    if (width && height) return {w, h};
    if (width) return {w, sized ? w * natural.height() / natural.width() : area.height()};
    if (height) return {sized ? h * natural.width() / natural.height() : area.width(), h};
    return sized ? natural : area.size();
}

// Tiles along one axis.
struct Tiling {
    double first = 0, step = 0, end = 0;
};

Tiling tilesAlong(css::BackgroundRepeat repeat, const css::Length &place, double areaStart, double areaSize, double shownStart, double shownEnd, double &size)
{
    if (repeat == css::BackgroundRepeat::Round && size > 0) size = areaSize / std::max(1.0, std::round(areaSize / size));
    double start = areaStart + place.resolve(areaSize - size), step = size;
    if (repeat == css::BackgroundRepeat::Space) {
        const int whole = int(std::min(1e6, std::floor(areaSize / size + 1e-6)));
        if (whole < 2) return {start, step, start + size}; // one, where its position puts it
        start = areaStart;
        step = size + (areaSize - whole * size) / (whole - 1);
    }
    if (repeat == css::BackgroundRepeat::NoRepeat) return {start, step, start + size};
    return {start - std::ceil((start - shownStart) / step) * step, step, shownEnd};
}

} // namespace

void Painter::paintBackground(const css::ComputedStyle &style, const QRectF &border, const Edges &borders, const Edges &padding)
{
    const css::BackgroundGroup &background = style.background();
    const bool image = background.hasImage();
    if (!mOptions.backgrounds || (!qAlpha(background.color) && !image) || border.isEmpty() || !border.intersects(mClip)) return;
    const RoundedBox outer(border, style.surround());
    const auto box = [&](css::BackgroundBox which) {
        if (which == css::BackgroundBox::BorderBox) return outer;
        const RoundedBox inner = outer.inset(borders);
        return which == css::BackgroundBox::PaddingBox ? inner : inner.inset(padding);
    };
    mPainter->save();
    const bool rounded = outer.isRound();
    if (rounded) mPainter->setRenderHint(QPainter::Antialiasing);
    if (qAlpha(background.color)) {
        // The colour lies below the last image and ends where that ends.
        const RoundedBox area = box(background.layers.back().clip);
        if (rounded)
            mPainter->fillPath(area.path(), QColor::fromRgba(background.color));
        else
            mPainter->fillRect(area.rect(), QColor::fromRgba(background.color));
    }
    for (auto layer = background.layers.rbegin(); image && layer != background.layers.rend(); ++layer) {
        if (layer->image.kind == css::Image::Kind::None) continue;
        const RoundedBox clip = box(layer->clip);
        if (clip.isRound()) {
            mPainter->save();
            mPainter->setClipPath(clip.path(), Qt::IntersectClip);
        }
        paintImageLayer(style, *layer, box(layer->origin).rect(), clip.rect());
        if (clip.isRound()) mPainter->restore();
    }
    mPainter->restore();
}

void Painter::paintImageLayer(const css::ComputedStyle &style, const css::BackgroundLayer &layer, const QRectF &origin, const QRectF &clip)
{
    LayerImage image{{}, layer.image.text, mTree.images(), {}};
    QSizeF natural;
    if (layer.image.kind == css::Image::Kind::Other) {
        const QSize view = mTree.viewport();
        image.gradient = css::parseGradient(layer.image.text, {style.font().size, 16, double(view.width()), double(view.height())}, style.color());
        if (!image.gradient) return;
    } else {
        if (layer.image.kind != css::Image::Kind::Url || !mTree.images()) return;
        if (!mTree.images()->isVector(layer.image.text)) image.pixmap = mTree.images()->imagePixmap(layer.image.text);
        natural = image.pixmap.isNull() ? QSizeF(mTree.images()->imageSize(layer.image.text)) : image.pixmap.size() / image.pixmap.devicePixelRatio();
        if (natural.isEmpty()) return;
    }
    const bool fixed = layer.attachment == css::BackgroundAttachment::Fixed;
    const QRectF area = fixed ? QRectF(mOptions.scroll, QSizeF(mTree.viewport())) : origin;
    const QRectF shown = clip.intersected(mClip);
    if (area.isEmpty() || shown.isEmpty()) return;
    QSizeF size = tileSize(layer, natural, area);
    if (size.width() < 0.1 || size.height() < 0.1) return;
    double width = size.width(), height = size.height();
    const Tiling across = tilesAlong(layer.repeatX, layer.x, area.left(), area.width(), shown.left(), shown.right(), width);
    const Tiling down = tilesAlong(layer.repeatY, layer.y, area.top(), area.height(), shown.top(), shown.bottom(), height);
    size = QSizeF(width, height);
    mPainter->save();
    mPainter->setClipRect(clip, Qt::IntersectClip);
    const double count = std::max(1.0, (across.end - across.first) / across.step) * std::max(1.0, (down.end - down.first) / down.step);
    const bool gapless = std::abs(across.step - width) < 1e-6 && std::abs(down.step - height) < 1e-6;
    const QRectF all(across.first, down.first, across.end - across.first, down.end - down.first);
    if (gapless && !image.isVector() && size == QSizeF(image.pixmap.size())) {
        mPainter->drawTiledPixmap(all, image.pixmap);
    } else if (count > mostTiles) {
        QPixmap tile(QSize(std::max(1, int(std::lround(across.step))), std::max(1, int(std::lround(down.step)))));
        tile.fill(Qt::transparent);
        QPainter inner(&tile);
        inner.setRenderHint(QPainter::SmoothPixmapTransform);
        image.paint(inner, QRectF({}, size));
        inner.end();
        mPainter->drawTiledPixmap(all, tile);
    } else {
        mPainter->setRenderHint(QPainter::SmoothPixmapTransform);
        for (double y = down.first; y < down.end - 0.01; y += down.step)
            for (double x = across.first; x < across.end - 0.01; x += across.step)
                if (const QRectF tile({x, y}, size); tile.intersects(shown)) image.paint(*mPainter, tile);
    }
    mPainter->restore();
}

} // namespace paint
