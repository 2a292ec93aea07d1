// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/StyleSheet.h"

#include <QSizeF>
#include <optional>

namespace css {

/// What `@page` says of a sheet of paper, in CSS pixels (96 to the inch). Nothing where no rule speaks of it.
struct PageStyle
{
    /// A margin, in pixels or as a share of the paper's width or height.
    struct Margin
    {
        double pixels = 0;
        double percent = 0;
        double resolve(double whole) const { return pixels + whole * percent / 100; }
        friend bool operator==(const Margin &, const Margin &) = default;
    };
    std::optional<QSizeF> size;     ///< of the paper
    enum class Direction : uint8_t { Unset, Portrait, Landscape };
    Direction direction = Direction::Unset; ///< turns the paper, whichever it is; not with `size`
    std::optional<Margin> top, right, bottom, left;
    friend bool operator==(const PageStyle &, const PageStyle &) = default;
};

/// The `@page` rules of a document (CSS 2.1, 13.2, and `size` of CSS Paged Media). Margin boxes and named pages aren't
/// read: a rule for a named page is passed over.
class PageRules
{
public:
    /// The rules of one sheet, behind those that were added before. Those in `@media` count where that suits the medium.
    void add(const std::vector<Rule> &rules, const Medium &medium);
    bool isEmpty() const { return mRules.empty(); }
    /// Of the page with that number, from 0; the first one is a right page.
    PageStyle styleFor(int page) const;

private:
    enum class Which : uint8_t { All, Side, First };
    struct PageRule
    {
        Which which = Which::All;
        bool left = false; ///< Side
        PageStyle plain, important;
    };
    void addRule(const QString &source);
    std::vector<PageRule> mRules;
};

} // namespace css
