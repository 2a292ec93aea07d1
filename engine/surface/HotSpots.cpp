// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/HotSpots.h"

#include "engine/dom/Names.h"

#include <QRegularExpression>
#include <cmath>

namespace surface {

using namespace dom;

namespace {

constexpr double smallest = 3;    // pixels across below which a drag was a slip
constexpr double closesNear = 6;  // pixels from its start at which a click closes a polygon
constexpr int mostPoints = 10000; // of a shape that is read

QString mapName(const Element &image)
{
    const QString value = image.attributeValue("usemap").trimmed();
    return value.mid(value.indexOf(u'#') + 1);
}

std::vector<double> numbers(const QString &text)
{
    static const QRegularExpression parts(QStringLiteral("[\\s,;]+"));
    std::vector<double> all;
    for (const QString &part : text.trimmed().split(parts, Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const double value = part.toDouble(&isNumber);
        if (!isNumber || !std::isfinite(value) || int(all.size()) >= 2 * mostPoints) break;
        all.push_back(value);
    }
    return all;
}

} // namespace

Element *ImageMap::of(const Element &image)
{
    const QString name = mapName(image);
    if (name.isEmpty()) return nullptr;
    for (Element *map : image.document().elementsNamed(names::map))
        if (map->attributeValue("name").compare(name, Qt::CaseInsensitive) == 0 || map->idAttribute() == name) return map;
    return nullptr;
}

Element *ImageMap::imageOf(const Element &area)
{
    const Element *map = area.parentElement();
    while (map && !map->is(names::map))
        map = map->parentElement();
    if (!map) return nullptr;
    for (Element *image : area.document().elementsNamed(names::img))
        if (image->hasAttribute(names::usemap) && of(*image) == map) return image;
    return nullptr;
}

std::vector<Element *> ImageMap::areas(const Element &map)
{
    std::vector<Element *> all;
    for (Node *node = map.firstChild(); node; node = node->next(&map))
        if (Element *element = node->asElement(); element && element->is(names::area)) all.push_back(element);
    return all;
}

Element *ImageMap::areaAt(const Element &image, QPointF point)
{
    const Element *map = of(image);
    if (!map) return nullptr;
    for (Element *area : areas(*map))
        if (shape(*area).contains(point)) return area;
    return nullptr;
}

QPainterPath ImageMap::shape(const Element &area, QSizeF size)
{
    const QString kind = area.attributeValue("shape").trimmed().toLower();
    const std::vector<double> at = numbers(area.attributeValue("coords"));
    QPainterPath path;
    if (kind == QLatin1String("default")) {
        path.addRect(QRectF(QPointF(), size));
    } else if (kind.startsWith(QLatin1String("circ"))) {
        if (at.size() >= 3 && at[2] > 0) path.addEllipse(QPointF(at[0], at[1]), at[2], at[2]);
    } else if (kind.startsWith(QLatin1String("poly"))) {
        QPolygonF polygon;
        for (size_t i = 0; i + 1 < at.size(); i += 2)
            polygon << QPointF(at[i], at[i + 1]);
        if (polygon.size() >= 3) path.addPolygon(polygon);
        path.closeSubpath();
    } else if (at.size() >= 4) {
        path.addRect(QRectF(QPointF(at[0], at[1]), QPointF(at[2], at[3])).normalized());
    }
    return path;
}

// Drawing

void HotSpotTool::setShape(Shape shape)
{
    giveUp();
    mShape = shape;
}

void HotSpotTool::giveUp()
{
    mImage = nullptr;
    mPoints.clear();
}

QPointF HotSpotTool::inside(QPointF point) const
{
    return {std::clamp(std::round(point.x()), 0.0, std::max(0.0, mSize.width())),
            std::clamp(std::round(point.y()), 0.0, std::max(0.0, mSize.height()))};
}

bool HotSpotTool::press(Element &image, QPointF point, QSizeF size)
{
    if (mShape == Shape::None) return false;
    const bool goesOn = mShape == Shape::Polygon && mImage.get() == &image;
    if (!goesOn) giveUp();
    mImage = &image;
    mSize = size;
    mPointer = inside(point);
    if (goesOn && close() && (mPointer - mPoints.front()).manhattanLength() <= closesNear) return true;
    if (mPoints.empty() || mPoints.back() != mPointer) mPoints.push_back(mPointer);
    return false;
}

void HotSpotTool::move(QPointF point)
{
    if (mImage) mPointer = inside(point);
}

bool HotSpotTool::release(QPointF point)
{
    move(point);
    return mImage && mShape != Shape::Polygon;
}

QPainterPath HotSpotTool::path() const
{
    QPainterPath path;
    if (mPoints.empty()) return path;
    const QPointF from = mPoints.front();
    switch (mShape) {
    case Shape::None: break;
    case Shape::Rectangle: path.addRect(QRectF(from, mPointer).normalized()); break;
    case Shape::Circle: {
        const double radius = std::hypot(mPointer.x() - from.x(), mPointer.y() - from.y());
        path.addEllipse(from, radius, radius);
        break;
    }
    case Shape::Polygon:
        path.moveTo(from);
        for (const QPointF &point : mPoints)
            path.lineTo(point);
        path.lineTo(mPointer);
        break;
    }
    return path;
}

QString HotSpotTool::coords() const
{
    if (mPoints.empty()) return {};
    const QPointF from = mPoints.front();
    std::vector<double> all;
    switch (mShape) {
    case Shape::None: return {};
    case Shape::Rectangle: {
        const QRectF rect = QRectF(from, mPointer).normalized();
        if (rect.width() < smallest || rect.height() < smallest) return {};
        all = {rect.left(), rect.top(), rect.right(), rect.bottom()};
        break;
    }
    case Shape::Circle: {
        const double radius = std::round(std::hypot(mPointer.x() - from.x(), mPointer.y() - from.y()));
        if (radius < smallest) return {};
        all = {from.x(), from.y(), radius};
        break;
    }
    case Shape::Polygon:
        if (!close()) return {};
        for (const QPointF &point : mPoints) {
            all.push_back(point.x());
            all.push_back(point.y());
        }
        break;
    }
    QStringList parts;
    for (const double value : all)
        parts << QString::number(int(value));
    return parts.join(u',');
}

Element &HotSpotTool::mapFor(Element &image, changes::ChangeTracker &tracker)
{
    if (Element *map = ImageMap::of(image)) return *map;
    Document &document = image.document();
    QString name = mapName(image);
    for (int number = 1; name.isEmpty(); ++number) {
        const QString tried = QStringLiteral("Map%1").arg(number);
        bool taken = document.getElementById(tried) != nullptr;
        for (const Element *map : document.elementsNamed(names::map))
            taken = taken || map->attributeValue("name").compare(tried, Qt::CaseInsensitive) == 0;
        if (!taken) name = tried;
    }
    const base::Ref<Element> map = document.createElement(QStringLiteral("map"));
    tracker.insert(*image.parentNode(), *map, image.nextSibling());
    tracker.setAttribute(*map, Atom("name"), &name);
    const QString reference = u'#' + name;
    tracker.setAttribute(image, names::usemap, &reference);
    return *map;
}

base::Ref<Element> HotSpotTool::finish(changes::ChangeTracker &tracker)
{
    const base::Ref<Element> image = mImage;
    const QString where = coords();
    const Shape drawn = mShape;
    giveUp();
    if (!image || !image->isConnected() || !image->parentNode() || where.isEmpty()) return nullptr;
    const QString kind = drawn == Shape::Rectangle ? QStringLiteral("rect")
                         : drawn == Shape::Circle  ? QStringLiteral("circle")
                                                   : QStringLiteral("poly");
    changes::ChangeTracker::Step step(tracker, changes::Kind::Command);
    const base::Ref<Element> area = image->document().createElement(QStringLiteral("area"));
    tracker.insert(mapFor(*image, tracker), *area, nullptr);
    tracker.setAttribute(*area, Atom("shape"), &kind);
    tracker.setAttribute(*area, Atom("coords"), &where);
    step.done();
    return area;
}

} // namespace surface
