// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/dom/Document.h"

#include <QPainterPath>
#include <QPointF>
#include <optional>
#include <vector>

class QPainter;

namespace surface {

/// Image maps as shapes. Points are pixels of the image, from its top left corner.
class ImageMap
{
public:
    /// The MAP that an image names; null for none.
    static dom::Element *of(const dom::Element &image);
    /// The image that shows an area; null for none.
    static dom::Element *imageOf(const dom::Element &area);
    static std::vector<dom::Element *> areas(const dom::Element &map);
    /// The first area of the image's map in which the point lies.
    static dom::Element *areaAt(const dom::Element &image, QPointF point);
    /// Empty for an area that isn't well said. "default" covers `size`.
    static QPainterPath shape(const dom::Element &area, QSizeF size = {});
};

/// Draws one hot spot on an image with the mouse: a rectangle from corner to corner, a circle from its middle, a polygon
/// click by click, closed by a click at its start, a double click or Enter. Escape gives it up, and so does a shape too
/// small to be meant.
class HotSpotTool
{
public:
    enum class Shape : uint8_t { None, Rectangle, Circle, Polygon };
    Shape shape() const { return mShape; }
    void setShape(Shape shape);

    bool isDrawing() const { return bool(mImage); }
    dom::Element *image() const { return mImage.get(); }
    /// The button goes down at a point of the image, whose size bounds what is drawn. Whether the shape is closed.
    bool press(dom::Element &image, QPointF point, QSizeF size);
    void move(QPointF point);
    /// Whether the shape is closed.
    bool release(QPointF point);
    bool close() const { return mShape == Shape::Polygon && mPoints.size() >= 3; }
    void giveUp();
    /// So far; with the pointer.
    QPainterPath path() const;

    /// The area that was drawn, in the image's map, which is made if there is none; one record. Null where the shape is
    /// too small. The tool is ready for the next one.
    base::Ref<dom::Element> finish(changes::ChangeTracker &tracker);

private:
    QPointF inside(QPointF point) const;
    QString coords() const;
    static dom::Element &mapFor(dom::Element &image, changes::ChangeTracker &tracker);

    Shape mShape = Shape::None;
    base::Ref<dom::Element> mImage;
    QSizeF mSize;
    std::vector<QPointF> mPoints;
    QPointF mPointer;
};

} // namespace surface
