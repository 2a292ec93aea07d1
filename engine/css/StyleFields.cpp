// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/FontUnits.h"
#include "engine/css/StyleBuilder.h"

#include <algorithm>
#include <cmath>

/// Each property's field: how it is copied from another style, and set from a value.
namespace css {

using Id = PropertyId;

// property, group, field, type
#define CSS_WORD_FIELDS(X)                                                                                             \
    X(FontStyle, Font, font, style, FontStyle)                                                                         \
    X(TextJustify, Text, text, textJustify, TextJustify)                                                               \
    X(TextTransform, Text, text, textTransform, TextTransform)                                                         \
    X(WhiteSpace, Text, text, whiteSpace, WhiteSpace)                                                                  \
    X(OverflowWrap, Text, text, overflowWrap, OverflowWrap)                                                            \
    X(WordBreak, Text, text, wordBreak, WordBreak)                                                                     \
    X(Hyphens, Text, text, hyphens, Hyphens)                                                                           \
    X(Direction, Text, text, direction, Direction)                                                                     \
    X(Visibility, Text, text, visibility, Visibility)                                                                  \
    X(Cursor, Text, text, cursor, Cursor)                                                                              \
    X(ListStylePosition, Text, text, listStylePosition, ListStylePosition)                                             \
    X(BorderCollapse, Text, text, borderCollapse, BorderCollapse)                                                      \
    X(CaptionSide, Text, text, captionSide, CaptionSide)                                                               \
    X(EmptyCells, Text, text, emptyCells, EmptyCells)                                                                  \
    X(PointerEvents, Text, text, pointerEvents, bool)                                                                  \
    X(UserSelect, Text, text, userSelect, bool)                                                                        \
    X(FontVariant, Font, font, smallCaps, bool)                                                                        \
    X(Display, Box, box, display, Display)                                                                             \
    X(Position, Box, box, position, Position)                                                                          \
    X(Float, Box, box, floating, Float)                                                                                \
    X(Clear, Box, box, clear, Clear)                                                                                   \
    X(OverflowX, Box, box, overflowX, Overflow)                                                                        \
    X(OverflowY, Box, box, overflowY, Overflow)                                                                        \
    X(BoxSizing, Box, box, boxSizing, BoxSizing)                                                                       \
    X(UnicodeBidi, Box, box, unicodeBidi, UnicodeBidi)                                                                 \
    X(TableLayout, Box, box, tableLayout, TableLayout)                                                                 \
    X(BorderTopStyle, Surround, surround, border.top.style, BorderStyle)                                               \
    X(BorderRightStyle, Surround, surround, border.right.style, BorderStyle)                                           \
    X(BorderBottomStyle, Surround, surround, border.bottom.style, BorderStyle)                                         \
    X(BorderLeftStyle, Surround, surround, border.left.style, BorderStyle)                                             \
    X(OutlineStyle, Rare, rare, outlineStyle, OutlineStyle)                                                            \
    X(PageBreakBefore, Rare, rare, pageBreakBefore, PageBreak)                                                         \
    X(PageBreakAfter, Rare, rare, pageBreakAfter, PageBreak)                                                           \
    X(TextOverflow, Rare, rare, textOverflowEllipsis, bool)                                                            \
    X(ColumnRuleStyle, Rare, rare, columnRuleStyle, BorderStyle)                                                       \
    X(ColumnFill, Rare, rare, columnFillAuto, bool)                                                                    \
    X(ColumnSpan, Rare, rare, columnSpanAll, bool)                                                                     \
    X(ObjectFit, Rare, rare, objectFit, ObjectFit)                                                                     \
    X(FlexDirection, Rare, rare, flexDirection, FlexDirection)                                                         \
    X(FlexWrap, Rare, rare, flexWrap, FlexWrap)                                                                        \
    X(TextDecorationLine, Rare, rare, textDecoration, uint8_t)

#define CSS_LENGTH_FIELDS(X)                                                                                           \
    X(TextIndent, Text, text, textIndent)                                                                              \
    X(Width, Box, box, width)                                                                                          \
    X(Height, Box, box, height)                                                                                        \
    X(MinWidth, Box, box, minWidth)                                                                                    \
    X(MinHeight, Box, box, minHeight)                                                                                  \
    X(MaxWidth, Box, box, maxWidth)                                                                                    \
    X(MaxHeight, Box, box, maxHeight)                                                                                  \
    X(Top, Box, box, offsets.top)                                                                                      \
    X(Right, Box, box, offsets.right)                                                                                  \
    X(Bottom, Box, box, offsets.bottom)                                                                                \
    X(Left, Box, box, offsets.left)                                                                                    \
    X(MarginTop, Surround, surround, margin.top)                                                                       \
    X(MarginRight, Surround, surround, margin.right)                                                                   \
    X(MarginBottom, Surround, surround, margin.bottom)                                                                 \
    X(MarginLeft, Surround, surround, margin.left)                                                                     \
    X(PaddingTop, Surround, surround, padding.top)                                                                     \
    X(PaddingRight, Surround, surround, padding.right)                                                                 \
    X(PaddingBottom, Surround, surround, padding.bottom)                                                               \
    X(PaddingLeft, Surround, surround, padding.left)                                                                   \
    X(TextDecorationThickness, Rare, rare, textDecorationThickness)                                                    \
    X(FlexBasis, Rare, rare, flexBasis)                                                                                \
    X(ColumnWidth, Rare, rare, columnWidth)                                                                            \
    X(ColumnGap, Rare, rare, columnGap)                                                                                \
    X(RowGap, Rare, rare, rowGap)

#define CSS_COLOR_FIELDS(X)                                                                                            \
    X(BorderTopColor, Surround, surround, border.top.color)                                                            \
    X(BorderRightColor, Surround, surround, border.right.color)                                                        \
    X(BorderBottomColor, Surround, surround, border.bottom.color)                                                      \
    X(BorderLeftColor, Surround, surround, border.left.color)                                                          \
    X(ColumnRuleColor, Rare, rare, columnRuleColor)                                                                    \
    X(OutlineColor, Rare, rare, outlineColor)                                                                          \
    X(TextDecorationColor, Rare, rare, textDecorationColor)

#define CSS_RAW_FIELDS(X)                                                                                              \
    X(Transform, transform)                                                                                            \
    X(Translate, translate)                                                                                            \
    X(Rotate, rotate)                                                                                                  \
    X(Scale, scale)                                                                                                    \
    X(TransformOrigin, transformOrigin)                                                                                \
    X(Filter, filter)

#define CSS_BORDER_WIDTHS(X)                                                                                           \
    X(BorderTopWidth, border.top.width)                                                                                \
    X(BorderRightWidth, border.right.width)                                                                            \
    X(BorderBottomWidth, border.bottom.width)                                                                          \
    X(BorderLeftWidth, border.left.width)

#define CSS_RADII(X)                                                                                                   \
    X(BorderTopLeftRadius, topLeft)                                                                                    \
    X(BorderTopRightRadius, topRight)                                                                                  \
    X(BorderBottomRightRadius, bottomRight)                                                                            \
    X(BorderBottomLeftRadius, bottomLeft)

namespace {

double within(double value)
{
    constexpr double limit = 33554431;
    return std::isfinite(value) ? std::clamp(value, -limit, limit) : 0;
}

} // namespace

double StyleBuilder::pixels(const Value &value, double fontSize)
{
    if (value.kind == Value::Kind::Calc) {
        double sum = 0;
        for (const Value &term : value.items)
            if (term.unit != Unit::Percent) sum += pixels(term, fontSize);
        return within(value.word == 1 && value.items.size() == 1 ? std::max(0.0, sum) : sum);
    }
    if (value.kind == Value::Kind::Comparison) return within(value.number * comparison(value, fontSize).resolve(0));
    if (value.kind != Value::Kind::Length) return 0;
    const QSizeF viewport = mContext.medium.viewport;
    if (value.unit >= Unit::Vw && value.unit <= Unit::Vmax) mUsedViewport = true;
    switch (value.unit) {
    case Unit::Px:
        return within(value.number);
    case Unit::Em:
        return within(value.number * fontSize);
    case Unit::Rem:
        return within(value.number * (mContext.isRoot ? fontSize : mContext.rootFontSize));
    case Unit::Ex:
        return within(value.number * fontUnits(mStyle->font(), fontSize).ex);
    case Unit::Ch:
        return within(value.number * fontUnits(mStyle->font(), fontSize).ch);
    case Unit::Vw:
        return within(value.number * viewport.width() / 100);
    case Unit::Vh:
        return within(value.number * viewport.height() / 100);
    case Unit::Vmin:
        return within(value.number * std::min(viewport.width(), viewport.height()) / 100);
    case Unit::Vmax:
        return within(value.number * std::max(viewport.width(), viewport.height()) / 100);
    case Unit::Percent:
    case Unit::Number:
        return 0;
    }
    return 0;
}

namespace {

/// The smaller or the larger of two lengths. What can't be told before the containing block is known is kept: pixels
/// against per cents. Sums of both among them are rare; the other one stands for them.
Length compared(const Length &a, const Length &b, bool least)
{
    if (a.isFixed() && b.isFixed()) return Length::fixed(least ? std::min(a.px, b.px) : std::max(a.px, b.px));
    if (a.isPercent() && b.isPercent())
        return Length::percentage(least ? std::min(a.percent, b.percent) : std::max(a.percent, b.percent));
    const Length::Kind kind = least ? Length::Kind::Least : Length::Kind::Most;
    const auto both = [kind](float px, float percent) {
        Length length = Length::fixed(px);
        length.kind = kind;
        length.percent = percent;
        return length;
    };
    const Length &first = a.isPercent() ? b : a, &second = a.isPercent() ? a : b;
    if (first.isFixed() && second.isPercent()) return both(first.px, second.percent);
    if (first.kind == kind && second.isFixed()) return both(least ? std::min(first.px, second.px) : std::max(first.px, second.px), first.percent);
    if (second.kind == kind && first.isFixed()) return both(least ? std::min(first.px, second.px) : std::max(first.px, second.px), second.percent);
    if (first.kind == kind && second.isPercent())
        return both(first.px, least ? std::min(first.percent, second.percent) : std::max(first.percent, second.percent));
    return first.isFixed() || first.isPercent() ? second : first;
}

} // namespace

Length StyleBuilder::comparison(const Value &value, double fontSize)
{
    const auto item = [&](size_t i) { return length(value.items[i], fontSize); };
    if (value.word == 2) { // clamp(): the lower bound wins
        const Length bound = item(0);
        Length result = compared(item(1), item(2), true);
        if (result.kind != Length::Kind::Least || !bound.isFixed()) return compared(bound, result, false);
        result.least = bound.px;
        return result;
    }
    Length result = item(0);
    for (size_t i = 1; i < value.items.size(); ++i)
        result = compared(result, item(i), value.word == 0);
    return result;
}

Length StyleBuilder::length(const Value &value)
{
    return length(value, mStyle->font().size);
}

Length StyleBuilder::length(const Value &value, double fontSize)
{
    if (value.kind == Value::Kind::Length)
        return value.unit == Unit::Percent ? Length::percentage(float(within(value.number)))
                                           : Length::fixed(float(pixels(value, fontSize)));
    if (value.kind != Value::Kind::Calc) return Length::automatic();
    double percent = 0, px = 0;
    for (const Value &term : value.items) {
        if (term.kind == Value::Kind::Comparison) {
            const Length result = comparison(term, fontSize);
            const bool isOpen = result.kind == Length::Kind::Least || result.kind == Length::Kind::Most;
            if (isOpen && value.items.size() == 1 && term.number == 1) return result;
            // Within a sum, what only the containing block can decide counts by its per cents.
            if (!isOpen) px += term.number * result.px;
            percent += term.number * result.percent;
        } else if (term.unit == Unit::Percent) {
            percent += term.number;
        } else {
            px += pixels(term, fontSize);
        }
    }
    px = within(px);
    if (percent == 0) return Length::fixed(float(value.word == 1 ? std::max(0.0, px) : px));
    if (px == 0) return Length::percentage(float(within(percent)));
    return Length::calc(float(px), float(within(percent)));
}

float StyleBuilder::fixed(const Value &value)
{
    return float(pixels(value, mStyle->font().size));
}

QRgb StyleBuilder::color(const Value &value)
{
    return value.kind == Value::Kind::Color ? value.rgb : mStyle->text().color;
}

void StyleBuilder::apply(Id id)
{
    if ((id >= Id::MarginInlineStart && id <= Id::InsetInlineEnd)) return; // stand for others
    const Winner &won = winner(id);
    if (const ComputedStyle *from = sourceOf(id, *won.value))
        copyField(id, *from);
    else if (won.value->kind == Value::Kind::Word && setWord(id, won.value->word))
        return;
    else if (!setLength(id, *won.value) && !setGridField(id, *won.value))
        setField(id, *won.value);
}

void StyleBuilder::copyField(Id id, const ComputedStyle &from)
{
    const bool initial = &from == &ComputedStyle::initial();
#define CSS_COPY(Group, group, field)                                                                                  \
    if (!(mStyle->group().field == from.group().field)) mStyle->write##Group().field = from.group().field;             \
    break;
    switch (id) {
#define CSS_CASE(ID, Group, group, field, type)                                                                        \
    case Id::ID:                                                                                                       \
        CSS_COPY(Group, group, field)
        CSS_WORD_FIELDS(CSS_CASE)
#undef CSS_CASE
#define CSS_CASE(ID, Group, group, field)                                                                              \
    case Id::ID:                                                                                                       \
        CSS_COPY(Group, group, field)
        CSS_LENGTH_FIELDS(CSS_CASE)
#undef CSS_CASE
#define CSS_CASE(ID, Group, group, field)                                                                              \
    case Id::ID:                                                                                                       \
        mStyle->write##Group().field = initial ? mStyle->text().color : from.group().field;                            \
        break;
        CSS_COLOR_FIELDS(CSS_CASE)
#undef CSS_CASE
#define CSS_CASE(ID, field)                                                                                            \
    case Id::ID:                                                                                                       \
        CSS_COPY(Rare, rare, field)
        CSS_RAW_FIELDS(CSS_CASE)
#undef CSS_CASE
#define CSS_CASE(ID, field)                                                                                            \
    case Id::ID:                                                                                                       \
        mStyle->writeSurround().field = initial ? 3 : from.surround().field;                                           \
        break;
        CSS_BORDER_WIDTHS(CSS_CASE)
#undef CSS_CASE
#define CSS_CASE(ID, field)                                                                                            \
    case Id::ID:                                                                                                       \
        CSS_COPY(Surround, surround, field)
        CSS_RADII(CSS_CASE)
#undef CSS_CASE
    case Id::Color:
        CSS_COPY(Text, text, color)
    case Id::BackgroundColor:
        CSS_COPY(Background, background, color)
    case Id::TextAlign:
        CSS_COPY(Text, text, textAlign)
    case Id::TextAlignLast:
        mStyle->writeText().textAlignLast = from.text().textAlignLast;
        CSS_COPY(Text, text, hasTextAlignLast)
    case Id::LetterSpacing:
        CSS_COPY(Text, text, letterSpacing)
    case Id::WordSpacing:
        CSS_COPY(Text, text, wordSpacing)
    case Id::FontStretch:
        CSS_COPY(Font, font, stretch)
    case Id::TabSize:
        mStyle->writeText().tabSizeIsLength = from.text().tabSizeIsLength;
        CSS_COPY(Text, text, tabSize)
    case Id::ListStyleType:
        mStyle->writeText().listStyleString = from.text().listStyleString;
        CSS_COPY(Text, text, listStyleType)
    case Id::ListStyleImage:
        CSS_COPY(Text, text, listStyleImage)
    case Id::BorderSpacing:
        mStyle->writeText().borderSpacingX = from.text().borderSpacingX;
        CSS_COPY(Text, text, borderSpacingY)
    case Id::TextShadow:
        CSS_COPY(Text, text, textShadow)
    case Id::Quotes:
        CSS_COPY(Text, text, quotes)
    case Id::Orphans:
        CSS_COPY(Text, text, orphans)
    case Id::Widows:
        CSS_COPY(Text, text, widows)
    case Id::VerticalAlign:
        CSS_COPY(Box, box, verticalAlign)
    case Id::ZIndex:
        mStyle->writeBox().hasZIndex = from.box().hasZIndex;
        CSS_COPY(Box, box, zIndex)
    case Id::Clip:
        CSS_COPY(Box, box, clip)
    case Id::Opacity:
        CSS_COPY(Rare, rare, opacity)
    case Id::TextDecorationStyle:
        CSS_COPY(Rare, rare, textDecorationStyle)
    case Id::OutlineWidth:
        mStyle->writeRare().outlineWidth = initial ? 3 : from.rare().outlineWidth;
        break;
    case Id::ColumnRuleWidth:
        mStyle->writeRare().columnRuleWidth = initial ? 3 : from.rare().columnRuleWidth;
        break;
    case Id::ObjectPosition:
        mStyle->writeRare().objectX = from.rare().objectX;
        CSS_COPY(Rare, rare, objectY)
    case Id::OutlineOffset:
        CSS_COPY(Rare, rare, outlineOffset)
    case Id::BoxShadow:
        CSS_COPY(Rare, rare, boxShadow)
    case Id::Content:
        mStyle->writeRare().content = from.rare().content;
        mStyle->writeRare().contentNone = from.rare().contentNone;
        CSS_COPY(Rare, rare, hasContent)
    case Id::CounterReset:
        CSS_COPY(Rare, rare, counterReset)
    case Id::CounterIncrement:
        CSS_COPY(Rare, rare, counterIncrement)
    case Id::PageBreakInside:
        CSS_COPY(Rare, rare, pageBreakInside)
    case Id::FlexGrow:
        CSS_COPY(Rare, rare, flexGrow)
    case Id::FlexShrink:
        CSS_COPY(Rare, rare, flexShrink)
    case Id::Order:
        CSS_COPY(Rare, rare, order)
    case Id::ColumnCount:
        CSS_COPY(Rare, rare, columnCount)
    default:
        copyGridField(id, from);
        break; // the font and the background are done apart
    }
#undef CSS_COPY
}

bool StyleBuilder::setWord(Id id, int word)
{
    switch (id) {
#define CSS_CASE(ID, Group, group, field, type)                                                                        \
    case Id::ID:                                                                                                       \
        if (mStyle->group().field != type(word)) mStyle->write##Group().field = type(word);                            \
        return true;
        CSS_WORD_FIELDS(CSS_CASE)
#undef CSS_CASE
    default:
        return false;
    }
}

bool StyleBuilder::setLength(Id id, const Value &value)
{
    Length computed;
    if (value.kind == Value::Kind::Word) {
        // auto (none), min-content, max-content, fit-content
        static constexpr Length::Kind kinds[] = {Length::Kind::Auto, Length::Kind::MinContent, Length::Kind::MaxContent,
                                                 Length::Kind::FitContent, Length::Kind::Content};
        computed.kind = kinds[std::clamp(value.word, 0, 4)];
        if (value.word == 0 && (id == Id::MaxWidth || id == Id::MaxHeight)) computed.kind = Length::Kind::None;
    } else {
        computed = length(value);
    }
    switch (id) {
#define CSS_CASE(ID, Group, group, field)                                                                              \
    case Id::ID:                                                                                                       \
        if (!(mStyle->group().field == computed)) mStyle->write##Group().field = computed;                             \
        return true;
        CSS_LENGTH_FIELDS(CSS_CASE)
#undef CSS_CASE
    default:
        return false;
    }
}

void StyleBuilder::setField(Id id, const Value &value)
{
    switch (id) {
#define CSS_CASE(ID, Group, group, field)                                                                              \
    case Id::ID:                                                                                                       \
        mStyle->write##Group().field = color(value);                                                                   \
        break;
        CSS_COLOR_FIELDS(CSS_CASE)
#undef CSS_CASE
#define CSS_CASE(ID, field)                                                                                            \
    case Id::ID: {                                                                                                     \
        static constexpr float widths[] = {1, 3, 5};                                                                   \
        const float width = value.kind == Value::Kind::Word ? widths[value.word % 3] : fixed(value);                   \
        /* A border that is there shows: a part of a pixel is one, more are cut to whole ones. */                      \
        mStyle->writeSurround().field = width > 0 && width < 1 ? 1 : std::floor(width);                                \
        break;                                                                                                         \
    }
        CSS_BORDER_WIDTHS(CSS_CASE)
#undef CSS_CASE
#define CSS_CASE(ID, field)                                                                                            \
    case Id::ID:                                                                                                       \
        mStyle->writeSurround().field = Radius{length(value.items[0]), length(value.items[1])};                        \
        break;
        CSS_RADII(CSS_CASE)
#undef CSS_CASE
    case Id::BackgroundColor:
        mStyle->writeBackground().color = color(value);
        break;
    case Id::VerticalAlign: {
        VerticalAlign align{VerticalAlign::Kind::Raise, {}};
        if (value.kind == Value::Kind::Word)
            align.kind = VerticalAlign::Kind(value.word);
        else
            align.raise = length(value);
        mStyle->writeBox().verticalAlign = align;
        break;
    }
    case Id::ZIndex:
        mStyle->writeBox().hasZIndex = value.kind == Value::Kind::Number;
        mStyle->writeBox().zIndex = int(value.number);
        break;
    case Id::Clip: {
        ClipRect clip;
        if (value.items.size() == 4) {
            clip.isSet = true;
            clip.edges = {length(value.items[0]), length(value.items[1]), length(value.items[2]),
                          length(value.items[3])};
        }
        mStyle->writeBox().clip = clip;
        break;
    }
    default:
        if (propertyInfo(id).inherited)
            setTextField(id, value);
        else
            setRareField(id, value);
    }
}

void StyleBuilder::setTextAlign(const Value &value)
{
    TextAlign align = TextAlign(value.word);
    // Headings of a table are centred, unless someone above said how text stands.
    if (value.word == 9)
        align =
            mContext.parent.text().textAlign == TextAlign::Start ? TextAlign::Center : mContext.parent.text().textAlign;
    if (mStyle->text().textAlign != align) mStyle->writeText().textAlign = align;
}

void StyleBuilder::setTextField(Id id, const Value &value)
{
    if (id == Id::TextAlign) return setTextAlign(value);
    if (id == Id::FontStretch) {
        mStyle->writeFont().stretch = int(std::lround(std::clamp(value.number, 1.0, 1000.0)));
        return;
    }
    TextGroup &text = mStyle->writeText();
    switch (id) {
    case Id::Color:
        text.color = value.kind == Value::Kind::CurrentColor ? mContext.parent.text().color : value.rgb;
        break;
    case Id::TextAlignLast:
        text.hasTextAlignLast = value.word != 6;
        text.textAlignLast = text.hasTextAlignLast ? TextAlign(value.word) : TextAlign::Start;
        break;
    case Id::LetterSpacing:
        text.letterSpacing = value.kind == Value::Kind::Word ? 0 : fixed(value);
        break;
    case Id::WordSpacing:
        text.wordSpacing = value.kind == Value::Kind::Word ? 0 : fixed(value);
        break;
    case Id::TabSize:
        text.tabSizeIsLength = value.kind != Value::Kind::Number;
        text.tabSize = text.tabSizeIsLength ? fixed(value) : float(std::clamp(value.number, 0.0, 1000.0));
        break;
    case Id::ListStyleType:
        text.listStyleString = value.kind == Value::Kind::String ? value.text : QString();
        text.listStyleType = value.kind == Value::Kind::Word ? ListStyleType(value.word) : ListStyleType::Disc;
        break;
    case Id::ListStyleImage:
        text.listStyleImage = image(value, winner(id).block);
        break;
    case Id::BorderSpacing:
        text.borderSpacingX = fixed(value.items[0]);
        text.borderSpacingY = fixed(value.items[1]);
        break;
    case Id::TextShadow:
        text.textShadow = shadows(value);
        break;
    case Id::Quotes:
        text.quotes.clear();
        for (const Value &item : value.items)
            text.quotes << item.text;
        break;
    case Id::Orphans:
        text.orphans = int(value.number);
        break;
    case Id::Widows:
        text.widows = int(value.number);
        break;
    default:
        break;
    }
}

void StyleBuilder::setRareField(Id id, const Value &value)
{
    if (id == Id::Content) return setContent(value);
    RareGroup &rare = mStyle->writeRare();
    const auto counters = [&value] {
        std::vector<CounterChange> changes;
        for (size_t i = 0; i + 1 < value.items.size(); i += 2)
            changes.push_back({value.items[i].text, int(value.items[i + 1].number)});
        return changes;
    };
    switch (id) {
#define CSS_CASE(ID, field)                                                                                            \
    case Id::ID:                                                                                                       \
        rare.field = value.text == QLatin1String("none") ? QString() : value.text;                                     \
        break;
        CSS_RAW_FIELDS(CSS_CASE)
#undef CSS_CASE
    case Id::Opacity:
        rare.opacity = float(std::clamp(value.number, 0.0, 1.0));
        break;
    case Id::TextDecorationStyle: {
        // solid double dotted dashed wavy; Hidden stands for the last.
        static constexpr BorderStyle styles[] = {BorderStyle::Solid, BorderStyle::Double, BorderStyle::Dotted,
                                                 BorderStyle::Dashed, BorderStyle::Hidden};
        rare.textDecorationStyle = styles[value.word % 5];
        break;
    }
    case Id::OutlineWidth: {
        static constexpr float widths[] = {1, 3, 5};
        rare.outlineWidth = value.kind == Value::Kind::Word ? widths[value.word % 3] : fixed(value);
        break;
    }
    case Id::ColumnRuleWidth: {
        static constexpr float widths[] = {1, 3, 5};
        const float width = value.kind == Value::Kind::Word ? widths[value.word % 3] : fixed(value);
        rare.columnRuleWidth = width > 0 && width < 1 ? 1 : std::floor(width);
        break;
    }
    case Id::ObjectPosition:
        rare.objectX = length(value.items[0]);
        rare.objectY = length(value.items[1]);
        break;
    case Id::OutlineOffset:
        rare.outlineOffset = fixed(value);
        break;
    case Id::BoxShadow:
        rare.boxShadow = shadows(value);
        break;
    case Id::CounterReset:
        rare.counterReset = counters();
        break;
    case Id::CounterIncrement:
        rare.counterIncrement = counters();
        break;
    case Id::PageBreakInside:
        rare.pageBreakInside = value.word ? PageBreak::Avoid : PageBreak::Auto;
        break;
    case Id::FlexGrow:
        rare.flexGrow = float(value.number);
        break;
    case Id::FlexShrink:
        rare.flexShrink = float(value.number);
        break;
    case Id::Order:
        rare.order = int(value.number);
        break;
    case Id::ColumnCount:
        rare.columnCount = std::clamp(int(value.number), 0, 1000);
        break;
    default:
        break;
    }
}

} // namespace css
