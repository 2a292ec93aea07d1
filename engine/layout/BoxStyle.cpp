// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/BoxStyle.h"

#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/layout/Engine.h"
#include "engine/layout/TableLayout.h"

namespace layout {

using css::ComputedStyle;

// ---- Text ----

const Font &fontOf(const ComputedStyle &style)
{
    // Styles are shared, and so is what they ask of the fonts: the group's address is remembered for the last ones.
    const css::FontGroup &group = style.font();
    struct Memo {
        const css::FontGroup *group = nullptr;
        css::FontGroup copy;
        const Font *font = nullptr;
    };
    static std::array<Memo, 64> memos;
    Memo &memo = memos[(reinterpret_cast<quintptr>(&group) >> 5) % memos.size()];
    if (memo.group == &group && memo.font && memo.copy.size == group.size && memo.copy.weight == group.weight &&
        memo.copy.style == group.style && memo.copy.families.constData() == group.families.constData())
        return *memo.font;
    const Font &font = FontCache::instance().font(group.families, group.size, group.weight, group.style != css::FontStyle::Normal);
    memo = {&group, group, &font};
    return font;
}

Spacing spacingOf(const ComputedStyle &style)
{
    return {double(style.text().letterSpacing), double(style.text().wordSpacing)};
}

Unit lineHeightOf(const ComputedStyle &style)
{
    const css::LineHeight &height = style.text().lineHeight;
    switch (height.kind) {
    case css::LineHeight::Kind::Number:
        // COMPAT: reckoned in single precision, of a font size in whole 64ths of a pixel.
        return Unit::from(double(float(height.value) * float(Unit::round(double(style.font().size)).toDouble())));
    case css::LineHeight::Kind::Fixed:
        return Unit::round(double(height.value)); // lengths and percentages to the nearest unit, numbers towards zero
    default:
        return fontOf(style).lineSpacing();
    }
}

bool lineHeightIsNormal(const ComputedStyle &style)
{
    return style.text().lineHeight.kind == css::LineHeight::Kind::Normal;
}

bool collapsesBlanks(const ComputedStyle &style) { return style.collapsesSpaces(); }
bool preservesLineBreaks(const ComputedStyle &style) { return !style.collapsesNewlines(); }
bool wrapsLines(const ComputedStyle &style) { return style.wraps(); }
bool hangsBlanks(const ComputedStyle &style)
{
    const auto space = style.text().whiteSpace;
    return space != css::WhiteSpace::Pre && space != css::WhiteSpace::BreakSpaces;
}
bool breaksAnywhere(const ComputedStyle &style)
{
    return style.text().overflowWrap == css::OverflowWrap::Anywhere || style.text().wordBreak == css::WordBreak::BreakWord;
}
bool breaksWords(const ComputedStyle &style)
{
    return style.text().overflowWrap == css::OverflowWrap::BreakWord || breaksAnywhere(style);
}
BreakFinder::Words wordBreakOf(const ComputedStyle &style)
{
    if (style.text().whiteSpace == css::WhiteSpace::BreakSpaces) return BreakFinder::Words::EveryBlank;
    switch (style.text().wordBreak) {
    case css::WordBreak::BreakAll: return BreakFinder::Words::BreakAll;
    case css::WordBreak::KeepAll: return BreakFinder::Words::KeepAll;
    default: return BreakFinder::Words::Normal;
    }
}
TextTransform textTransformOf(const ComputedStyle &style)
{
    switch (style.text().textTransform) {
    case css::TextTransform::Capitalize: return TextTransform::Capitalize;
    case css::TextTransform::Uppercase: return TextTransform::Uppercase;
    case css::TextTransform::Lowercase: return TextTransform::Lowercase;
    default: return TextTransform::None;
    }
}
bool isRightToLeft(const ComputedStyle &style) { return style.text().direction == css::Direction::Rtl; }
double tabWidthOf(const ComputedStyle &style)
{
    if (style.text().tabSizeIsLength) return double(style.text().tabSize);
    return double(style.text().tabSize) * (fontOf(style).spaceWidth() + double(style.text().letterSpacing + style.text().wordSpacing));
}

VerticalAlign verticalAlignOf(const ComputedStyle &style)
{
    using Kind = css::VerticalAlign::Kind;
    const css::VerticalAlign &align = style.box().verticalAlign;
    switch (align.kind) {
    case Kind::Sub: return {VerticalAlignKind::Sub, {}, 0};
    case Kind::Super: return {VerticalAlignKind::Super, {}, 0};
    case Kind::Top: return {VerticalAlignKind::Top, {}, 0};
    case Kind::Bottom: return {VerticalAlignKind::Bottom, {}, 0};
    case Kind::TextTop: return {VerticalAlignKind::TextTop, {}, 0};
    case Kind::TextBottom: return {VerticalAlignKind::TextBottom, {}, 0};
    case Kind::Middle: return {VerticalAlignKind::Middle, {}, 0};
    case Kind::BaselineMiddle: return {VerticalAlignKind::BaselineMiddle, {}, 0};
    case Kind::Raise:
        return {VerticalAlignKind::Length, Unit::from(align.raise.resolve(lineHeightOf(style).toDouble())), 0};
    default: return {};
    }
}

LineAlign textAlignOf(const ComputedStyle &style, bool lastLine)
{
    css::TextAlign align = style.text().textAlign;
    if (lastLine && style.text().hasTextAlignLast) align = style.text().textAlignLast;
    const bool rtl = isRightToLeft(style);
    switch (align) {
    case css::TextAlign::Left:
    case css::TextAlign::WebkitLeft: return LineAlign::Left;
    case css::TextAlign::Right:
    case css::TextAlign::WebkitRight: return LineAlign::Right;
    case css::TextAlign::Center:
    case css::TextAlign::WebkitCenter: return LineAlign::Center;
    case css::TextAlign::Justify:
        if (!lastLine) return LineAlign::Justify;
        [[fallthrough]];
    case css::TextAlign::Start: return rtl ? LineAlign::Right : LineAlign::Left;
    case css::TextAlign::End: return rtl ? LineAlign::Left : LineAlign::Right;
    }
    return LineAlign::Left;
}

Unit textIndentOf(const ComputedStyle &style, Unit width) { return Unit::from(style.text().textIndent.resolve(width.toDouble())); }

// ---- Edges ----

Edges bordersOf(const ComputedStyle &style)
{
    const auto &b = style.border();
    const auto snap = [](float width) { return width > 0 && width < 1 ? Unit::px(1) : Unit::px(int(width)); };
    return {snap(b.top.width), snap(b.right.width), snap(b.bottom.width), snap(b.left.width)};
}

namespace {

Edges resolveSides(const css::Sides<css::Length> &sides, Unit width)
{
    const double base = width.toDouble();
    return {Unit::from(sides.top.resolve(base)), Unit::from(sides.right.resolve(base)), Unit::from(sides.bottom.resolve(base)),
            Unit::from(sides.left.resolve(base))};
}

const css::Length &lengthOf(const css::Sides<css::Length> &sides, Side side)
{
    return side == Side::Top ? sides.top : side == Side::Right ? sides.right : side == Side::Bottom ? sides.bottom : sides.left;
}

} // namespace

Edges paddingsOf(const BlockBox &box, Unit containingWidth)
{
    if (box.anonymous) return {};
    if (box.isTable() && bordersCollapse(box.style())) return {};
    return resolveSides(box.style().padding(), containingWidth);
}
Edges marginsOf(const ComputedStyle &style, Unit containingWidth) { return resolveSides(style.margin(), containingWidth); }
bool marginIsAuto(const BlockBox &box, Side side) { return !box.anonymous && lengthOf(box.style().margin(), side).isAuto(); }

bool hasInlineEdges(const InlineBox &box)
{
    if (&box.style().surround() == &ComputedStyle::initial().surround()) return false;
    const Edges edges = inlineMargins(box, Unit::px(100)) + inlineFrame(box, Unit::px(100));
    return edges.left.raw || edges.right.raw;
}
Edges inlineMargins(const InlineBox &box, Unit containingWidth)
{
    if (&box.style().surround() == &ComputedStyle::initial().surround()) return {};
    return resolveSides(box.style().margin(), containingWidth);
}
Edges inlineFrame(const InlineBox &box, Unit containingWidth)
{
    if (&box.style().surround() == &ComputedStyle::initial().surround()) return {};
    return bordersOf(box.style()) + resolveSides(box.style().padding(), containingWidth);
}

// ---- Sizes ----

namespace {

Unit borderBox(const BlockBox &box, double length, Unit frame)
{
    const Unit value = Unit::from(length);
    return box.style().box().boxSizing == css::BoxSizing::BorderBox ? std::max(value, frame) : value + frame;
}

// COMPAT: in quirks mode a cell's height holds its edges.
Unit heightBox(const BlockBox &box, double length)
{
    const bool holds = box.isCell() && box.element() && box.element()->document().isQuirks();
    return holds ? std::max(Unit::from(length), box.frame().vertical()) : borderBox(box, length, box.frame().vertical());
}

Unit widthFrame(const BlockBox &box) { return box.frame().horizontal(); }

} // namespace

std::optional<Unit> usedWidth(const BlockBox &box, Unit containingWidth)
{
    if (box.anonymous) return {};
    const css::Length &width = box.style().box().width;
    if (!width.isDefinite()) return {};
    return borderBox(box, width.resolve(containingWidth.toDouble()), widthFrame(box));
}
std::optional<Unit> fixedWidth(const BlockBox &box)
{
    if (box.anonymous || !box.style().box().width.isFixed()) return {};
    if (box.kind() == BoxKind::TableColumn) return Unit::from(double(box.style().box().width.px));
    if (box.isCell() && box.style().box().width.px <= 0) return {};
    return borderBox(box, double(box.style().box().width.px), widthFrame(box));
}
std::optional<double> widthPercent(const BlockBox &box)
{
    if (box.anonymous || !box.style().box().width.isPercent() || box.style().box().width.percent <= 0) return {};
    return double(box.style().box().width.percent);
}
bool widthIsAuto(const BlockBox &box) { return box.anonymous || !box.style().box().width.isDefinite(); }
bool widthIsPercent(const BlockBox &box) { return !box.anonymous && box.style().box().width.hasPercent(); }

std::pair<Unit, Unit> fixedWidthLimits(const BlockBox &box)
{
    std::pair<Unit, Unit> limits{Unit(), Unit::max()};
    if (box.anonymous) return limits;
    const auto &group = box.style().box();
    if (group.minWidth.isFixed()) limits.first = borderBox(box, double(group.minWidth.px), widthFrame(box));
    if (group.maxWidth.isFixed()) limits.second = borderBox(box, double(group.maxWidth.px), widthFrame(box));
    return limits;
}
Unit clampedWidth(const BlockBox &box, Unit width, Unit containingWidth)
{
    if (box.anonymous) return width;
    const auto &group = box.style().box();
    const double base = containingWidth.toDouble();
    if (group.maxWidth.isDefinite()) width = std::min(width, borderBox(box, group.maxWidth.resolve(base), widthFrame(box)));
    if (group.minWidth.isDefinite()) width = std::max(width, borderBox(box, group.minWidth.resolve(base), widthFrame(box)));
    return width;
}

std::optional<Unit> usedHeight(const BlockBox &box, const Constraint &constraint)
{
    if (box.heightForced) return box.rare->item->forcedHeight;
    if (box.anonymous) return {};
    const css::Length &height = box.style().box().height;
    if (!height.isDefinite() || (height.hasPercent() && !constraint.hasHeight())) return {};
    return heightBox(box, height.resolve(constraint.height.toDouble()));
}
std::optional<Unit> fixedHeight(const BlockBox &box)
{
    if (box.anonymous || !box.style().box().height.isFixed()) return {};
    return heightBox(box, double(box.style().box().height.px));
}
Unit clampedHeight(const BlockBox &box, Unit height, const Constraint &constraint)
{
    if (box.anonymous) return height;
    const auto &group = box.style().box();
    const double base = constraint.height.toDouble();
    const auto usable = [&](const css::Length &l) { return l.isDefinite() && (!l.hasPercent() || constraint.hasHeight()); };
    if (usable(group.maxHeight)) height = std::min(height, borderBox(box, group.maxHeight.resolve(base), box.frame().vertical()));
    if (usable(group.minHeight)) height = std::max(height, borderBox(box, group.minHeight.resolve(base), box.frame().vertical()));
    return height;
}
bool heightIsAuto(const BlockBox &box) { return box.anonymous || !box.style().box().height.isDefinite() || (box.style().box().height.hasPercent() && box.layoutHeight.raw < 0); }
bool heightIsZero(const BlockBox &box) { return !box.anonymous && box.style().box().height.isFixed() && box.style().box().height.px <= 0; }
bool hasMinimumHeight(const BlockBox &box) { return !box.anonymous && box.style().box().minHeight.isDefinite() && box.style().box().minHeight.resolve(1) > 0; }
bool dependsOnContainingHeight(const BlockBox &box)
{
    const auto &group = box.style().box();
    return !box.anonymous && (group.height.hasPercent() || group.minHeight.hasPercent() || group.maxHeight.hasPercent());
}

// ---- Position ----

namespace {

bool styled(const Box &box) { return !box.isAnonymous() && !box.isText(); }

} // namespace

bool isPositioned(const ComputedStyle &style) { return style.position() != css::Position::Static; }
bool isPositionedStyle(const Box &box) { return styled(box) && isPositioned(box.style()); }
bool isFixedPosition(const Box &box) { return styled(box) && box.style().position() == css::Position::Fixed; }

Offsets offsetsOf(const BlockBox &box, const Constraint &constraint)
{
    Offsets result;
    const auto &sides = box.style().box().offsets;
    const auto take = [](const css::Length &l, Unit base) { return l.isDefinite() ? std::optional<Unit>(Unit::from(l.resolve(base.toDouble()))) : std::nullopt; };
    result.left = take(sides.left, constraint.width);
    result.right = take(sides.right, constraint.width);
    result.top = take(sides.top, constraint.height);
    result.bottom = take(sides.bottom, constraint.height);
    return result;
}

Point relativeShift(const Box &box)
{
    if (!styled(box) || box.style().position() != css::Position::Relative) return {};
    const auto &sides = box.style().box().offsets;
    const BlockBox *parent = box.blockParent();
    const double width = parent ? parent->contentWidth().toDouble() : 0;
    Point shift;
    if (sides.left.isDefinite())
        shift.x = Unit::from(sides.left.resolve(width));
    else if (sides.right.isDefinite())
        shift.x = -Unit::from(sides.right.resolve(width));
    if (sides.top.isFixed())
        shift.y = Unit::from(double(sides.top.px));
    else if (sides.bottom.isFixed())
        shift.y = -Unit::from(double(sides.bottom.px));
    return shift;
}

// ---- Flow ----

std::optional<FloatSide> clearOf(const Box &box)
{
    if (box.anonymous) return {};
    switch (box.style().box().clear) {
    case css::Clear::Left: return FloatSide::Left;
    case css::Clear::Right: return FloatSide::Right;
    case css::Clear::Both: return FloatSide::Both;
    default: return {};
    }
}
bool floatsLeft(const BlockBox &box) { return box.style().floating() != css::Float::Right; }
bool shrinksToFit(const BlockBox &box)
{
    if (box.anonymous) return false;
    const auto kind = box.style().box().width.kind;
    if (kind == css::Length::Kind::FitContent || kind == css::Length::Kind::MinContent || kind == css::Length::Kind::MaxContent) return true;
    return box.element() && !box.style().box().width.isDefinite() && (box.element()->is(dom::names::legend) || box.element()->is(dom::names::button));
}
bool centresContent(const BlockBox &box)
{
    return !box.anonymous && box.kind() == BoxKind::Block && !box.hasItems() && box.element() &&
           box.element()->is(dom::names::button);
}

bool isFrameLegend(const BlockBox &box)
{
    if (box.anonymous || !box.element() || !box.element()->is(dom::names::legend) || !box.inSumTree) return false;
    const BlockBox *parent = box.blockParent();
    return parent && frameLegendOf(*parent) == &box;
}
const BlockBox *frameLegendOf(const BlockBox &box)
{
    if (box.anonymous || !box.element() || !box.element()->is(dom::names::fieldset) || box.flow.empty() || box.hasItems() || box.columns()) return nullptr;
    const BlockBox *first = box.flow.at(0);
    return !first->anonymous && first->element() && first->element()->is(dom::names::legend) ? first : nullptr;
}
Unit blockAlignShift(const BlockBox &box, Unit free)
{
    const BlockBox *parent = box.blockParent();
    if (!parent || free.raw <= 0) return {};
    switch (parent->style().text().textAlign) {
    case css::TextAlign::WebkitCenter: return free / 2;
    case css::TextAlign::WebkitRight: return free;
    case css::TextAlign::WebkitLeft: return {};
    default: return isRightToLeft(parent->style()) ? free : Unit();
    }
}

// Whether a margin is the one that the browser's own sheet gives: such margins vanish at the edges of cells and of the
// body in quirks mode. COMPAT: of the margins below, only those of paragraphs and of preformatted text do.
bool isQuirkyMargin(const BlockBox &box, bool top)
{
    const dom::Element *element = box.element();
    if (!element || box.anonymous) return false;
    using namespace dom::names;
    if (!top && !element->is(p) && !element->is(pre) && !element->is(listing) && !element->is(xmp) && !element->is(plaintext)) return false;
    static const std::pair<dom::Atom, double> known[] = {{p, 1}, {ul, 1}, {ol, 1}, {dl, 1}, {dir, 1}, {menu, 1}, {pre, 1}, {blockquote, 1},
        {h1, .67}, {h2, .83}, {h3, 1}, {h4, 1.33}, {h5, 1.67}, {h6, 2.33}, {listing, 1}, {xmp, 1}, {plaintext, 1}};
    for (const auto &[name, ems] : known)
        if (element->is(name)) {
            const css::Length &margin = top ? box.style().margin().top : box.style().margin().bottom;
            return margin.isFixed() && std::abs(double(margin.px) - ems * box.style().font().size) < 0.02;
        }
    return false;
}

bool dropsQuirkyMargins(const Engine &engine, const BlockBox &box)
{
    return engine.quirks() && (box.isCell() || (box.element() && box.element()->is(dom::names::body)));
}
Unit quirkHeight(const Engine &engine, const BlockBox &box, Unit height)
{
    if (!engine.quirks() || !box.element() || box.floating || box.positioned) return height;
    if (box.element()->is(dom::names::body) && box.parent() && box.parent()->element() && box.parent()->element()->is(dom::names::html) && heightIsAuto(box))
        return std::max(height, engine.viewport().height - box.marginTop - box.marginBottom);
    if (box.element()->is(dom::names::html) && heightIsAuto(box)) return std::max(height, engine.viewport().height);
    return height;
}
Unit quirkPercentBase(const Engine &engine, const BlockBox &box, const Constraint &constraint)
{
    if (!engine.quirks() || box.isCell() || box.isTable() || box.isTablePart() || box.positioned || box.floating || box.inlineLevel) return Unit::fromRaw(-1);
    // COMPAT: there the root and the body fill the view, with their own edges.
    const bool fills = box.element() && (box.element()->is(dom::names::body) || box.element()->is(dom::names::html));
    if (!fills || !constraint.hasHeight()) return constraint.height;
    return std::max(Unit(), constraint.height - box.marginTop - box.marginBottom - box.frame().vertical());
}
Unit paintExtra(const BlockBox &box)
{
    if (box.anonymous) return Unit::px(2);
    const auto &rare = box.style().rare();
    double shadows = 0;
    for (const css::Shadow &shadow : rare.boxShadow)
        if (!shadow.inset) shadows = std::max(shadows, double(std::abs(shadow.y)) + std::max(0.0, double(shadow.blur) + double(shadow.spread)));
    for (const css::Shadow &shadow : box.style().text().textShadow) shadows = std::max(shadows, double(std::abs(shadow.y)) + double(shadow.blur));
    return Unit::from(2 + std::max(double(rare.outlineWidth) + std::max(0.0, double(rare.outlineOffset)), shadows));
}

// ---- Tables ----

bool bordersCollapse(const ComputedStyle &style) { return style.text().borderCollapse == css::BorderCollapse::Collapse; }
// COMPAT: browsers drop parts of a pixel here.
Size borderSpacingOf(const ComputedStyle &style) { return {Unit::px(int(style.text().borderSpacingX)), Unit::px(int(style.text().borderSpacingY))}; }
bool hasCollapsedBorders(const BlockBox &box)
{
    if (box.isTable()) return static_cast<const TableBox &>(box).collapsed;
    if (!box.isCell()) return false;
    for (const Box *up = box.parent(); up; up = up->parent())
        if (up->isTable()) return static_cast<const TableBox *>(up)->collapsed;
    return false;
}
bool tableLayoutIsFixed(const ComputedStyle &style) { return style.box().tableLayout == css::TableLayout::Fixed; }
const dom::Element *closedSummary(const dom::Element &details)
{
    static const dom::Atom open("open");
    if (!details.is(dom::names::details) || details.attribute(open)) return nullptr;
    for (const dom::Node *child = details.firstChild(); child; child = child->nextSibling())
        if (const dom::Element *element = child->asElement(); element && element->is(dom::names::summary)) return element;
    return nullptr;
}

bool isCaption(const BlockBox &box) { return !box.anonymous && box.kind() == BoxKind::Block && box.style().display() == css::Display::TableCaption; }
bool captionIsBelow(const BlockBox &box) { return box.style().text().captionSide == css::CaptionSide::Bottom; }
SectionKind sectionKindOf(const BlockBox &box)
{
    if (box.anonymous) return SectionKind::Body;
    if (box.style().display() == css::Display::TableHeaderGroup) return SectionKind::Head;
    return box.style().display() == css::Display::TableFooterGroup ? SectionKind::Foot : SectionKind::Body;
}

namespace {

uint32_t numberOf(const BlockBox &box, const char *name, uint32_t least, uint32_t most, uint32_t standard)
{
    if (!box.element()) return standard;
    const QString text = box.element()->attributeValue(name).trimmed();
    qsizetype digits = 0;
    while (digits < text.size() && digits < 9 && text[digits].isDigit()) ++digits;
    if (!digits) return standard;
    return std::clamp(text.left(digits).toUInt(), least, most);
}

} // namespace

uint32_t columnSpanOf(const BlockBox &cell)
{
    const uint32_t span = numberOf(cell, "colspan", 0, 1000, 1);
    return span ? span : 1;
}
uint32_t rowSpanOf(const BlockBox &cell) { return numberOf(cell, "rowspan", 0, 65534, 1); }
uint32_t spanOf(const BlockBox &column) { return std::max(1u, numberOf(column, "span", 1, 1000, 1)); }
CellAlign cellAlign(const BlockBox &cell)
{
    if (cell.anonymous) return CellAlign::Baseline;
    switch (cell.style().box().verticalAlign.kind) {
    case css::VerticalAlign::Kind::Top: return CellAlign::Top;
    case css::VerticalAlign::Kind::Middle: return CellAlign::Middle;
    case css::VerticalAlign::Kind::Bottom: return CellAlign::Bottom;
    default: return CellAlign::Baseline;
    }
}
bool cellIsNoWrap(const Engine &, const BlockBox &cell) { return cell.element() && cell.element()->hasAttribute(dom::names::nowrap); }
CollapsedEdge collapsedEdgeOf(const BlockBox &box, Side side)
{
    const auto &sides = box.style().border();
    const css::Border &border = side == Side::Top ? sides.top : side == Side::Right ? sides.right : side == Side::Bottom ? sides.bottom : sides.left;
    const Edges widths = bordersOf(box.style());
    CollapsedEdge edge;
    edge.width = side == Side::Top ? widths.top : side == Side::Right ? widths.right : side == Side::Bottom ? widths.bottom : widths.left;
    edge.style = border.style;
    edge.color = QColor::fromRgba(border.color);
    return edge;
}

} // namespace layout
