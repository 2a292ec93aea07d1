// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/BreakFinder.h"
#include "engine/layout/FloatContext.h"
#include "engine/layout/InlineContent.h"

#include <QTransform>
#include <optional>

namespace layout {

class Engine;
struct Constraint;
struct CollapsedEdge;

/// What layout asks of computed styles: used values against a containing block. An anonymous box answers as if nothing
/// that isn't inherited were set.

enum class Side : uint8_t { Top, Right, Bottom, Left };
enum class TextTransform : uint8_t { None, Uppercase, Lowercase, Capitalize };
enum class LineAlign : uint8_t { Left, Right, Center, Justify };
enum class CellAlign : uint8_t { Baseline, Top, Middle, Bottom };
enum class SectionKind : uint8_t { Body, Head, Foot };
enum class VerticalAlignKind : uint8_t { Baseline, Sub, Super, Middle, BaselineMiddle, TextTop, TextBottom, Length, Top, Bottom };
struct VerticalAlign {
    VerticalAlignKind kind = VerticalAlignKind::Baseline;
    Unit length;
    double percent = 0;
};
struct Offsets {
    std::optional<Unit> top, right, bottom, left;
};

// Text
bool collapsesBlanks(const css::ComputedStyle &style);
bool preservesLineBreaks(const css::ComputedStyle &style);
bool wrapsLines(const css::ComputedStyle &style);
/// Blanks at a line's end take no room.
bool hangsBlanks(const css::ComputedStyle &style);
bool breaksWords(const css::ComputedStyle &style);
/// The same, and a word's preferred width is a character's.
bool breaksAnywhere(const css::ComputedStyle &style);
BreakFinder::Words wordBreakOf(const css::ComputedStyle &style);
TextTransform textTransformOf(const css::ComputedStyle &style);
bool isRightToLeft(const css::ComputedStyle &style);
double tabWidthOf(const css::ComputedStyle &style);
bool lineHeightIsNormal(const css::ComputedStyle &style);
VerticalAlign verticalAlignOf(const css::ComputedStyle &style);
LineAlign textAlignOf(const css::ComputedStyle &style, bool lastLine);
Unit textIndentOf(const css::ComputedStyle &style, Unit width);

// Edges
Edges bordersOf(const css::ComputedStyle &style);
Edges paddingsOf(const BlockBox &box, Unit containingWidth);
Edges marginsOf(const css::ComputedStyle &style, Unit containingWidth); ///< auto is 0
bool marginIsAuto(const BlockBox &box, Side side);
bool hasInlineEdges(const InlineBox &box);
Edges inlineMargins(const InlineBox &box, Unit containingWidth);
Edges inlineFrame(const InlineBox &box, Unit containingWidth); ///< borders and paddings

/// Stands for the width of a containing block that isn't known: limits in per cents of it are none.
inline constexpr Unit unknownWidth = Unit::px(1000000);

// Sizes of border boxes; nothing for `auto` and what can't be resolved
std::optional<Unit> usedWidth(const BlockBox &box, Unit containingWidth);
std::optional<Unit> fixedWidth(const BlockBox &box); ///< percentages count as auto
std::optional<double> widthPercent(const BlockBox &box);
bool widthIsAuto(const BlockBox &box);
bool widthIsPercent(const BlockBox &box);
std::pair<Unit, Unit> fixedWidthLimits(const BlockBox &box);
Unit clampedWidth(const BlockBox &box, Unit width, Unit containingWidth);
std::optional<Unit> usedHeight(const BlockBox &box, const Constraint &constraint);
std::optional<Unit> fixedHeight(const BlockBox &box);
Unit clampedHeight(const BlockBox &box, Unit height, const Constraint &constraint);
bool heightIsAuto(const BlockBox &box);
bool heightIsZero(const BlockBox &box);
bool hasMinimumHeight(const BlockBox &box);
bool dependsOnContainingHeight(const BlockBox &box);
Offsets offsetsOf(const BlockBox &box, const Constraint &constraint);

// Position
bool isPositioned(const css::ComputedStyle &style);
bool isFixedPosition(const Box &box);
/// Anything but static.
bool isPositionedStyle(const Box &box);
Point relativeShift(const Box &box);
/// Transformed or sticky: shown elsewhere than where it is laid out.
bool movesWhenShown(const css::ComputedStyle &style);
/// By its transforms, in its own coordinates; the identity where there are none.
QTransform transformOf(const BlockBox &box);
/// What stickiness moves it by, where its scroller is scrolled to now.
Point stickyShift(const BlockBox &box);

// Flow
std::optional<FloatSide> clearOf(const Box &box);
bool floatsLeft(const BlockBox &box);
bool shrinksToFit(const BlockBox &box);
/// A button's content stands in the middle of its height.
bool centresContent(const BlockBox &box);
/// The first legend of a fieldset: it stands in the frame's upper edge.
bool isFrameLegend(const BlockBox &box);
const BlockBox *frameLegendOf(const BlockBox &box);
/// What `align` of the parent moves a narrower block by.
Unit blockAlignShift(const BlockBox &box, Unit free);
/// A cell, or the body, in quirks mode.
bool dropsQuirkyMargins(const Engine &engine, const BlockBox &box);
bool isQuirkyMargin(const BlockBox &box, bool top);
Unit quirkHeight(const Engine &engine, const BlockBox &box, Unit height);
Unit quirkPercentBase(const Engine &engine, const BlockBox &box, const Constraint &constraint);
std::optional<Unit> atomicBaseline(const Engine &engine, const BlockBox &box);
Unit paintExtra(const BlockBox &box);

// Tables
bool bordersCollapse(const css::ComputedStyle &style);
Size borderSpacingOf(const css::ComputedStyle &style);
bool hasCollapsedBorders(const BlockBox &box); ///< a cell or table whose borders the table works out
bool tableLayoutIsFixed(const css::ComputedStyle &style);
/// Of closed details, the summary: all that shows of them. Null where everything shows, also where they have none, since
/// nobody could open them then.
const dom::Element *closedSummary(const dom::Element &details);
bool isCaption(const BlockBox &box);
bool captionIsBelow(const BlockBox &box);
SectionKind sectionKindOf(const BlockBox &box);
uint32_t columnSpanOf(const BlockBox &cell);
uint32_t rowSpanOf(const BlockBox &cell);
uint32_t spanOf(const BlockBox &column);
CellAlign cellAlign(const BlockBox &cell);
bool cellIsNoWrap(const Engine &engine, const BlockBox &cell);
CollapsedEdge collapsedEdgeOf(const BlockBox &box, Side side);

Unit markerWidth(const BlockBox &item, const MarkerData &marker);

} // namespace layout
