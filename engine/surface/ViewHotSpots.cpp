// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Names.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QKeyEvent>
#include <QPainter>

// Areas of image maps: selecting and drawing them.

namespace surface {

dom::Element *View::selectedArea() const
{
    return mArea && mArea->isConnected() ? mArea.get() : nullptr;
}

void View::selectArea(dom::Element *area)
{
    if (mArea.get() == area) return;
    mArea = area;
    if (area) mCells.clear();
    mWidget.viewport()->update();
    Q_EMIT mWidget.selectionChanged();
    Q_EMIT mWidget.commandStateChange(-1, true);
}

void View::setHotSpotShape(HotSpotTool::Shape shape)
{
    mHotSpots.setShape(shape);
    if (mLoaded) mWidget.viewport()->update();
}

/// Of the picture itself, in document coordinates.
QRectF View::imageBox(const dom::Element &image)
{
    const QRectF box = mLoaded->queries().borderBox(image);
    const layout::Box *made = layout::boxOf(image);
    const layout::BlockBox *block = made ? made->asBlock() : nullptr;
    if (!block) return box;
    const auto pixels = [](layout::Unit unit) { return unit.toDouble(); };
    return box.adjusted(pixels(block->border.left + block->padding.left), pixels(block->border.top + block->padding.top),
                        -pixels(block->border.right + block->padding.right),
                        -pixels(block->border.bottom + block->padding.bottom));
}

QPointF View::toImage(const dom::Element &image, QPointF client)
{
    return toDocument(client) - imageBox(image).topLeft();
}

void View::areaDrawn()
{
    const base::Ref<dom::Element> area = mHotSpots.finish(mLoaded->tracker());
    mWidget.viewport()->update();
    if (!area) return;
    selectArea(area.get());
    Q_EMIT mWidget.areaCreated(area.get());
}

/// A press while the tool is on, or on an area of a map. Whether nothing else is meant.
bool View::pressOnImage(QPoint client)
{
    dom::Element *image = elementAt(client);
    const bool onImage = image && image->is(dom::names::img) && image->parentElement() &&
                         image->parentElement()->isContentEditable();
    if (mHotSpots.shape() == HotSpotTool::Shape::None) {
        dom::Element *area = onImage ? ImageMap::areaAt(*image, toImage(*image, client)) : nullptr;
        if (!area) return false;
        mLoaded->selection().setCaret(ranges::Position::before(*image));
        selectArea(area);
        return true;
    }
    if (!onImage || mWidget.isReadOnly()) {
        mHotSpots.giveUp();
        mWidget.viewport()->update();
        return false;
    }
    if (mHotSpots.press(*image, toImage(*image, client), imageBox(*image).size())) areaDrawn();
    mWidget.viewport()->update();
    return true;
}

bool View::moveOnImage(QPoint client)
{
    if (!mHotSpots.isDrawing() || !mHotSpots.image()->isConnected()) return false;
    mHotSpots.move(toImage(*mHotSpots.image(), client));
    mWidget.viewport()->update();
    return true;
}

bool View::releaseOnImage(QPoint client)
{
    if (!mHotSpots.isDrawing() || !mHotSpots.image()->isConnected()) return false;
    if (mHotSpots.release(toImage(*mHotSpots.image(), client))) areaDrawn();
    return true;
}

bool View::hotSpotKey(const QKeyEvent &event)
{
    if (event.key() == Qt::Key_Delete && mLoaded->editor().canEdit() && !mWidget.isReadOnly()) {
        const base::Ref<dom::Element> area(selectedArea());
        if (!area) return false;
        selectArea(nullptr);
        changes::ChangeTracker::Step step(mLoaded->tracker(), changes::Kind::Command);
        mLoaded->tracker().remove(*area);
        step.done();
        return true;
    }
    if (!mHotSpots.isDrawing()) return false;
    if (event.key() == Qt::Key_Escape) {
        mHotSpots.giveUp();
        mWidget.viewport()->update();
        return true;
    }
    if ((event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter) || !mHotSpots.close()) return false;
    areaDrawn();
    return true;
}

void View::paintHotSpots(QPainter &painter)
{
    const dom::Element *image = mHotSpots.isDrawing() ? mHotSpots.image() : nullptr;
    if (!image && selectedArea()) image = ImageMap::imageOf(*mArea);
    if (!image || !image->isConnected()) return;
    painter.save();
    const QRectF box = imageBox(*image);
    painter.translate(box.topLeft());
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor mark = mWidget.palette().color(QPalette::Highlight);
    const auto draw = [&](const QPainterPath &path, bool filled) {
        QColor inside = mark;
        inside.setAlpha(filled ? 80 : 0);
        painter.fillPath(path, inside);
        painter.strokePath(path, QPen(Qt::white, 1));
        painter.strokePath(path, QPen(mark, 1, Qt::DashLine));
    };
    if (const dom::Element *map = ImageMap::of(*image))
        for (const dom::Element *area : ImageMap::areas(*map))
            draw(ImageMap::shape(*area, box.size()), area == mArea.get());
    if (mHotSpots.isDrawing()) draw(mHotSpots.path(), false);
    painter.restore();
}

} // namespace surface
