// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/ItemLayout.h"

namespace layout {

/// Lays a flex container out: the algorithm of CSS Flexible Box Layout 1, section 9.
///
/// "Main" and "cross" are lengths along and across the direction of the items; places count from the main and cross
/// start, and are mirrored only when boxes are placed.
class FlexLayout
{
public:
    FlexLayout(Engine &engine, BlockBox &box, const Constraint &constraint);
    /// Places the items; answers the height of the content.
    Unit run();
    /// Preferred widths of the content (9.9).
    static PreferredWidths preferred(Engine &engine, BlockBox &box);

private:
    struct Item {
        BlockBox *box;
        PreferredWidths widths;
        Unit width;              ///< cross size of an item of a column, before it is stretched
        Unit base, hypothetical; ///< border box
        Unit frame;              ///< borders and paddings along the main axis
        Unit min, max = Unit::max();
        Unit main, cross;
        Unit mainBefore, mainAfter, crossBefore, crossAfter; ///< margins, auto ones 0
        bool autoMainBefore = false, autoMainAfter = false, autoCrossBefore = false, autoCrossAfter = false;
        css::Alignment align;
        Unit baseline;
        Unit mainAt, crossAt;
        bool frozen = false, violatesMin = false, violatesMax = false;
        bool hasAutoMain() const { return autoMainBefore || autoMainAfter; }
        bool hasAutoCross() const { return autoCrossBefore || autoCrossAfter; }
        Unit outerMain(Unit size) const { return mainBefore + size + mainAfter; }
        Unit outerCross() const { return crossBefore + cross + crossAfter; }
    };
    struct Line {
        std::size_t first = 0, count = 0;
        Unit cross, at;
        Unit ascent; ///< of items aligned by their baselines, from the line's cross start
    };

    void collectItems();
    void takeMargins(Item &item);
    void measureItem(Item &item);
    Unit rowBase(Item &item);
    Unit columnBase(Item &item);
    Unit columnWidth(const Item &item) const;
    void mainLimits(Item &item);
    Unit automaticMinimum(Item &item);
    Unit limited(const Item &item, Unit size) const { return std::max(std::min(size, item.max), item.min); }
    void collectLines();
    void decideMain();
    void flexLine(Line &line);
    void distributeFree(Line &line, Unit free, bool grows, double sum);
    void crossSizes();
    void lineCross(Line &line);
    void placeLines();
    void stretchItems();
    void alignMain(Line &line);
    void alignCross(Line &line);
    void placeItems();
    void noteBaselines();
    void notePositioned();
    bool stretches(const Item &item) const;
    bool alignsBaseline(const Item &item) const;
    css::Align sided(css::Align align, bool main) const;
    Unit itemBaseline(const Item &item) const;

    Engine &mEngine;
    BlockBox &mBox;
    Constraint mConstraint;
    Constraint mArea;             ///< the containing block of the items
    bool mRow, mReverseMain, mReverseCross, mWraps;
    std::optional<Unit> mHeight;  ///< of the content, where it is known before the items
    Unit mMain, mCross;
    Unit mMainGap, mCrossGap;
    std::vector<Item> mItems;
    std::vector<Line> mLines;
};

} // namespace layout
