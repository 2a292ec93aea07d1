// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QRectF>
#include <algorithm>
#include <cmath>
#include <cstdint>

namespace layout {

/// A length of layout: whole 64ths of a CSS pixel. Browsers lay out in these steps, so line breaks and offsets come out
/// equal only if we do. Sums saturate: a page can ask for any size.
struct Unit {
    int32_t raw = 0;

    static constexpr int32_t perPixel = 64;
    static constexpr Unit fromRaw(int64_t raw)
    {
        Unit unit;
        unit.raw = int32_t(std::clamp<int64_t>(raw, INT32_MIN / 4, INT32_MAX / 4));
        return unit;
    }
    static constexpr Unit px(int pixels) { return fromRaw(int64_t(pixels) * perPixel); }
    /// Towards zero, as a browser takes a style's length.
    static Unit from(double pixels)
    {
        return fromRaw(int64_t(std::clamp(pixels * perPixel, -4e8, 4e8)));
    }
    static Unit ceil(double pixels) { return fromRaw(int64_t(std::ceil(std::clamp(pixels * perPixel, -4e8, 4e8)))); }
    static Unit round(double pixels) { return fromRaw(std::llround(std::clamp(pixels * perPixel, -4e8, 4e8))); }
    static constexpr Unit max() { return fromRaw(INT32_MAX / 4); }

    double toDouble() const { return double(raw) / perPixel; }
    /// Half up, as a browser snaps to pixels.
    int rounded() const { return int((int64_t(raw) + perPixel / 2) >> 6); }
    int floored() const { return raw >> 6; }
    int ceiled() const { return (raw + perPixel - 1) >> 6; }

    friend constexpr Unit operator+(Unit a, Unit b) { return fromRaw(int64_t(a.raw) + b.raw); }
    friend constexpr Unit operator-(Unit a, Unit b) { return fromRaw(int64_t(a.raw) - b.raw); }
    friend constexpr Unit operator-(Unit a) { return fromRaw(-int64_t(a.raw)); }
    friend constexpr Unit operator*(Unit a, int n) { return fromRaw(int64_t(a.raw) * n); }
    friend constexpr Unit operator/(Unit a, int n) { return fromRaw(n ? int64_t(a.raw) / n : 0); }
    Unit &operator+=(Unit b) { return *this = *this + b; }
    Unit &operator-=(Unit b) { return *this = *this - b; }
    friend constexpr auto operator<=>(Unit a, Unit b) = default;
    explicit constexpr operator bool() const { return raw != 0; }
};

struct Point {
    Unit x, y;
    friend Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
    friend Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
    friend bool operator==(Point, Point) = default;
    QPointF toPointF() const { return {x.toDouble(), y.toDouble()}; }
};

struct Size {
    Unit width, height;
    friend bool operator==(Size, Size) = default;
};

struct Rect {
    Unit x, y, width, height;
    Unit right() const { return x + width; }
    Unit bottom() const { return y + height; }
    Rect translated(Point by) const { return {x + by.x, y + by.y, width, height}; }
    bool contains(Point p) const { return p.x >= x && p.x < right() && p.y >= y && p.y < bottom(); }
    bool intersects(const Rect &o) const { return x < o.right() && o.x < right() && y < o.bottom() && o.y < bottom(); }
    bool isEmpty() const { return width.raw <= 0 || height.raw <= 0; }
    Rect united(const Rect &o) const
    {
        const Unit left = std::min(x, o.x), top = std::min(y, o.y);
        return {left, top, std::max(right(), o.right()) - left, std::max(bottom(), o.bottom()) - top};
    }
    Rect intersected(const Rect &o) const
    {
        const Unit left = std::max(x, o.x), top = std::max(y, o.y);
        return {left, top, std::max(Unit(), std::min(right(), o.right()) - left),
                std::max(Unit(), std::min(bottom(), o.bottom()) - top)};
    }
    friend bool operator==(const Rect &, const Rect &) = default;
    QRectF toRectF() const { return {x.toDouble(), y.toDouble(), width.toDouble(), height.toDouble()}; }
};

/// Four sides of a box.
struct Edges {
    Unit top, right, bottom, left;
    Unit horizontal() const { return left + right; }
    Unit vertical() const { return top + bottom; }
    friend Edges operator+(const Edges &a, const Edges &b)
    {
        return {a.top + b.top, a.right + b.right, a.bottom + b.bottom, a.left + b.left};
    }
    friend bool operator==(const Edges &, const Edges &) = default;
};

/// Margins that meet: the largest positive and the most negative of them count.
/// Those of the browser's own sheet are kept apart: at the top of a cell or of the body they vanish in quirks mode.
struct MarginStrut {
    Unit positive, negative, quirky;
    void add(Unit margin, bool isQuirky = false)
    {
        if (margin.raw >= 0)
            (isQuirky ? quirky : positive) = std::max(isQuirky ? quirky : positive, margin);
        else
            negative = std::min(negative, margin);
    }
    void add(const MarginStrut &o)
    {
        positive = std::max(positive, o.positive);
        negative = std::min(negative, o.negative);
        quirky = std::max(quirky, o.quirky);
    }
    MarginStrut withoutQuirky() const { return {positive, negative, {}}; }
    Unit sum() const { return std::max(positive, quirky) + negative; }
    friend bool operator==(const MarginStrut &, const MarginStrut &) = default;
};

} // namespace layout
