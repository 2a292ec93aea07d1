// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/paint/GradientFill.h"

#include <QConicalGradient>
#include <QLinearGradient>
#include <QRadialGradient>
#include <cmath>

namespace paint {

namespace {

struct Stop {
    double at; // 1 is the whole of the gradient's line
    QColor color;
};

QColor between(const QColor &a, const QColor &b, double part)
{
    // In premultiplied space, as browsers mix.
    const double alpha = a.alphaF() + (b.alphaF() - a.alphaF()) * part;
    if (alpha <= 0) return QColor(0, 0, 0, 0);
    const auto mix = [&](double x, double y) { return std::clamp((x * a.alphaF() * (1 - part) + y * b.alphaF() * part) / alpha, 0.0, 1.0); };
    return QColor::fromRgbF(float(mix(a.redF(), b.redF())), float(mix(a.greenF(), b.greenF())), float(mix(a.blueF(), b.blueF())), float(alpha));
}

// Positions filled in and in order (CSS Images 3, 3.4.3); hints become stops along their curve.
std::vector<Stop> placed(const css::Gradient &gradient, double length)
{
    const auto &given = gradient.stops;
    std::vector<double> at(given.size(), NAN);
    for (std::size_t i = 0; i < given.size(); ++i)
        if (given[i].at.isDefinite()) at[i] = length > 0 ? given[i].at.resolve(length) / length : 0;
    if (std::isnan(at.front())) at.front() = 0;
    if (std::isnan(at.back())) at.back() = 1;
    double highest = at.front();
    for (double &each : at)
        if (!std::isnan(each)) highest = each = std::max(each, highest);
    for (std::size_t i = 0; i < at.size(); ++i) {
        if (!std::isnan(at[i])) continue;
        std::size_t next = i;
        while (std::isnan(at[next])) ++next;
        const double from = at[i - 1], step = (at[next] - from) / double(next - i + 1);
        for (std::size_t k = i; k < next; ++k) at[k] = from + step * double(k - i + 1);
    }
    std::vector<Stop> stops;
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (!given[i].isHint) {
            stops.push_back({at[i], QColor::fromRgba(given[i].color)});
            continue;
        }
        const double from = at[i - 1], span = at[i + 1] - from;
        const QColor a = QColor::fromRgba(given[i - 1].color), b = QColor::fromRgba(given[i + 1].color);
        const double middle = span > 0 ? (at[i] - from) / span : 0;
        if (middle <= 0 || middle >= 1) {
            stops.push_back({at[i], middle <= 0 ? b : a});
            continue;
        }
        const double power = std::log(0.5) / std::log(middle);
        for (int k = 1; k < 16; ++k) stops.push_back({from + span * k / 16.0, between(a, b, std::pow(k / 16.0, power))});
    }
    return stops;
}

QColor colorAt(const std::vector<Stop> &stops, double at)
{
    if (at < stops.front().at) return stops.front().color;
    for (std::size_t i = 1; i < stops.size(); ++i)
        if (at < stops[i].at) {
            const double span = stops[i].at - stops[i - 1].at;
            return span > 0 ? between(stops[i - 1].color, stops[i].color, (at - stops[i - 1].at) / span) : stops[i].color;
        }
    return stops.back().color;
}

// The part from `from` to `to`, as 0 to 1. A gradient of Qt has one colour at a place: the second of two stands just behind.
QGradientStops window(const std::vector<Stop> &stops, double from, double to)
{
    QGradientStops result;
    const double span = to - from;
    const auto add = [&](double at, const QColor &color) {
        double where = std::clamp((at - from) / span, 0.0, 1.0);
        if (!result.isEmpty() && where <= result.back().first) where = result.back().first + 1e-5;
        if (where > 1) { // no room behind the last one
            if (result.size() > 1 && result.back().first >= 1) result.back().first = 1 - 1e-5;
            where = 1;
        }
        result.append({where, color});
    };
    const bool begins = std::any_of(stops.begin(), stops.end(), [&](const Stop &stop) { return stop.at == from; });
    if (!begins) add(from, colorAt(stops, from));
    for (const Stop &stop : stops)
        if (stop.at >= from && stop.at <= to) add(stop.at, stop.color);
    if (result.back().first < 1) add(to, colorAt(stops, to));
    return result;
}

// One period of a repeating gradient, from 0 on.
std::vector<Stop> turned(const std::vector<Stop> &stops, double period)
{
    std::vector<Stop> sum;
    const double first = stops.front().at, shift = first - std::floor(first / period) * period;
    for (int round = -1; round <= 0; ++round)
        for (const Stop &stop : stops) sum.push_back({stop.at - first + shift + round * period, stop.color});
    return sum;
}

constexpr double leastPeriod = 1e-4;

QBrush solid(const std::vector<Stop> &stops)
{
    // No room for the colours: all of them mixed, as good as each.
    double r = 0, g = 0, b = 0, a = 0;
    for (const Stop &stop : stops) {
        r += stop.color.redF();
        g += stop.color.greenF();
        b += stop.color.blueF();
        a += stop.color.alphaF();
    }
    const double n = double(stops.size());
    return QColor::fromRgbF(float(r / n), float(g / n), float(b / n), float(a / n));
}

QBrush linearBrush(const css::Gradient &gradient, const QRectF &tile)
{
    const double w = tile.width(), h = tile.height();
    double dx, dy; // the direction, y downwards
    if (gradient.cornerX) {
        // The line through the centre and the two other corners is where the middle colour shows.
        dx = gradient.cornerX * h;
        dy = gradient.cornerY * w;
        const double size = std::hypot(dx, dy);
        dx /= size;
        dy /= size;
    } else {
        const double radians = gradient.angle * M_PI / 180;
        dx = std::sin(radians);
        dy = -std::cos(radians);
    }
    const double length = std::abs(w * dx) + std::abs(h * dy);
    const std::vector<Stop> stops = placed(gradient, length);
    const QPointF middle = tile.center(), start = middle - QPointF(dx, dy) * (length / 2);
    double from = stops.front().at, to = stops.back().at;
    if (to - from < leastPeriod) {
        if (gradient.repeating) return solid(stops);
        to = from + leastPeriod;
    }
    QLinearGradient line(start + QPointF(dx, dy) * length * from, start + QPointF(dx, dy) * length * to);
    line.setStops(window(stops, from, to));
    if (gradient.repeating) line.setSpread(QGradient::RepeatSpread);
    return line;
}

QSizeF radii(const css::Gradient &gradient, const QRectF &tile, QPointF centre)
{
    using Extent = css::Gradient::Extent;
    const double left = std::abs(centre.x() - tile.left()), right = std::abs(tile.right() - centre.x());
    const double top = std::abs(centre.y() - tile.top()), bottom = std::abs(tile.bottom() - centre.y());
    const bool closest = gradient.extent == Extent::ClosestSide || gradient.extent == Extent::ClosestCorner;
    const double x = closest ? std::min(left, right) : std::max(left, right), y = closest ? std::min(top, bottom) : std::max(top, bottom);
    if (gradient.extent == Extent::Explicit) return {gradient.radiusX.resolve(tile.width()), gradient.radiusY.resolve(tile.height())};
    const bool corner = gradient.extent == Extent::FarthestCorner || gradient.extent == Extent::ClosestCorner;
    if (gradient.circle) {
        const double r = corner ? std::hypot(x, y) : closest ? std::min(x, y) : std::max(x, y);
        return {r, r};
    }
    // An ellipse through the corner has the ratio of the one that touches the sides.
    return corner ? QSizeF(x * M_SQRT2, y * M_SQRT2) : QSizeF(x, y);
}

QBrush radialBrush(const css::Gradient &gradient, const QRectF &tile)
{
    const QPointF centre(tile.left() + gradient.x.resolve(tile.width()), tile.top() + gradient.y.resolve(tile.height()));
    const QSizeF size = radii(gradient, tile, centre);
    const double rx = std::max(size.width(), 1e-3), ry = std::max(size.height(), 1e-3);
    std::vector<Stop> stops = placed(gradient, rx);
    double period = std::max(stops.back().at, leastPeriod);
    if (gradient.repeating) {
        period = stops.back().at - stops.front().at;
        if (period < leastPeriod) return solid(stops);
        stops = turned(stops, period);
    }
    QRadialGradient round(QPointF(), rx * period);
    round.setStops(window(stops, 0, period));
    if (gradient.repeating) round.setSpread(QGradient::RepeatSpread);
    QBrush brush(round);
    brush.setTransform(QTransform::fromTranslate(centre.x(), centre.y()).scale(1, ry / rx));
    return brush;
}

QBrush conicBrush(const css::Gradient &gradient, const QRectF &tile)
{
    const QPointF centre(tile.left() + gradient.x.resolve(tile.width()), tile.top() + gradient.y.resolve(tile.height()));
    std::vector<Stop> stops = placed(gradient, 1);
    if (gradient.repeating) {
        const double period = stops.back().at - stops.front().at;
        if (period < leastPeriod) return solid(stops);
        const std::vector<Stop> one = turned(stops, period);
        stops.clear();
        for (int round = 0; round * period <= 1 + period && round < 1000; ++round)
            for (const Stop &stop : one) stops.push_back({stop.at + round * period, stop.color});
        std::stable_sort(stops.begin(), stops.end(), [](const Stop &a, const Stop &b) { return a.at < b.at; });
    }
    // Qt turns the other way, and begins at the right.
    const QGradientStops forward = window(stops, 0, 1);
    QConicalGradient around(centre, 90 - gradient.angle);
    QGradientStops backward;
    for (auto stop = forward.rbegin(); stop != forward.rend(); ++stop) backward.append({1 - stop->first, stop->second});
    around.setStops(backward);
    return around;
}

} // namespace

QBrush gradientBrush(const css::Gradient &gradient, const QRectF &tile)
{
    switch (gradient.shape) {
    case css::Gradient::Shape::Radial: return radialBrush(gradient, tile);
    case css::Gradient::Shape::Conic: return conicBrush(gradient, tile);
    default: return linearBrush(gradient, tile);
    }
}

} // namespace paint
