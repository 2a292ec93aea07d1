// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <algorithm>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

/// The values of which a computed style is made. All lengths are CSS pixels; percentages are per cent (50 is a half).
namespace css {

/// A length as layout reads it. `em`, `rem`, `ex`, `ch`, `vw`, `vh` and the absolute units are pixels by then; only
/// percentages wait for layout.
struct Length
{
    enum class Kind : uint8_t { Auto, None, Fixed, Percent, Calc, MinContent, MaxContent, FitContent, Content, Least, Most };

    Kind kind = Kind::Auto;
    float px = 0;      ///< Fixed, Calc; Least and Most: the smaller and the larger of the two
    float percent = 0; ///< Percent, Calc, Least, Most
    float least = -1;  ///< Least: not below these pixels, where it isn't negative

    static Length automatic() { return {}; }
    static Length none() { return {Kind::None}; }
    static Length fixed(float px) { return {Kind::Fixed, px}; }
    static Length percentage(float percent) { return {Kind::Percent, 0, percent}; }
    static Length calc(float px, float percent) { return {Kind::Calc, px, percent}; }

    bool isAuto() const { return kind == Kind::Auto; }
    bool isNone() const { return kind == Kind::None; }
    bool isFixed() const { return kind == Kind::Fixed; }
    bool isPercent() const { return kind == Kind::Percent; }
    bool hasPercent() const { return kind == Kind::Percent || kind == Kind::Calc || kind == Kind::Least || kind == Kind::Most; }
    /// A length or percentage, so that `resolve` answers.
    bool isDefinite() const { return kind == Kind::Fixed || hasPercent(); }
    /// Pixels, with per cents of `base` pixels; 0 for the keywords.
    double resolve(double base) const
    {
        switch (kind) {
        case Kind::Fixed:
            return double(px);
        case Kind::Percent:
            return double(percent) * base / 100.0;
        case Kind::Calc:
            return double(px) + double(percent) * base / 100.0;
        case Kind::Least:
            return std::max(std::min(double(px), double(percent) * base / 100.0), least < 0 ? -1e9 : double(least));
        case Kind::Most:
            return std::max(double(px), double(percent) * base / 100.0);
        default:
            return 0;
        }
    }
    friend bool operator==(const Length &, const Length &) = default;
};

/// Values by side, in the order in which CSS writes them.
template <class T> struct Sides
{
    T top{}, right{}, bottom{}, left{};
    friend bool operator==(const Sides &, const Sides &) = default;
};
enum class Side : uint8_t { Top, Right, Bottom, Left };

struct LineHeight
{
    enum class Kind : uint8_t { Normal, Number, Fixed };
    Kind kind = Kind::Normal;
    float value = 0; ///< the number to multiply the font size with, or pixels
    friend bool operator==(const LineHeight &, const LineHeight &) = default;
};

/// `baseline` and the like, or a raise by a length (per cents are of the line height).
struct VerticalAlign
{
    enum class Kind : uint8_t { Baseline, Sub, Super, Top, TextTop, Middle, Bottom, TextBottom, BaselineMiddle, Raise };
    Kind kind = Kind::Baseline; ///< BaselineMiddle: the box's middle on the baseline, as `align=absmiddle` wants
    Length raise;
    friend bool operator==(const VerticalAlign &, const VerticalAlign &) = default;
};

enum class Display : uint8_t {
    None,
    Inline,
    Block,
    ListItem,
    InlineBlock,
    Table,
    InlineTable,
    TableRowGroup,
    TableHeaderGroup,
    TableFooterGroup,
    TableRow,
    TableColumnGroup,
    TableColumn,
    TableCell,
    TableCaption,
    FlowRoot,
    Flex,
    InlineFlex,
    Grid,
    InlineGrid,
    Contents
};
enum class Position : uint8_t { Static, Relative, Absolute, Fixed, Sticky };
enum class Float : uint8_t { None, Left, Right };
enum class Clear : uint8_t { None, Left, Right, Both };
enum class Overflow : uint8_t { Visible, Hidden, Clip, Scroll, Auto };
enum class Visibility : uint8_t { Visible, Hidden, Collapse };
enum class BoxSizing : uint8_t { ContentBox, BorderBox };
/// The `Webkit` values come from `align` attributes and CENTER: they move blocks, tables too, and not just lines.
enum class TextAlign : uint8_t { Start, End, Left, Right, Center, Justify, WebkitLeft, WebkitRight, WebkitCenter };
enum class TextJustify : uint8_t { Auto, None, InterWord, InterCharacter };
enum class TextTransform : uint8_t { None, Capitalize, Uppercase, Lowercase };
enum class WhiteSpace : uint8_t { Normal, Nowrap, Pre, PreWrap, PreLine, BreakSpaces };
enum class OverflowWrap : uint8_t { Normal, BreakWord, Anywhere };
enum class WordBreak : uint8_t { Normal, BreakAll, KeepAll, BreakWord };
enum class Hyphens : uint8_t { None, Manual, Auto };
enum class Direction : uint8_t { Ltr, Rtl };
enum class UnicodeBidi : uint8_t { Normal, Embed, Isolate, BidiOverride, IsolateOverride, Plaintext };
enum class FontStyle : uint8_t { Normal, Italic, Oblique };
enum class ListStyleType : uint8_t {
    None,
    Disc,
    Circle,
    Square,
    Decimal,
    DecimalLeadingZero,
    LowerRoman,
    UpperRoman,
    LowerAlpha,
    UpperAlpha,
    LowerGreek,
    Armenian,
    Georgian
};
enum class ListStylePosition : uint8_t { Outside, Inside };
enum class CaptionSide : uint8_t { Top, Bottom };
enum class EmptyCells : uint8_t { Show, Hide };
enum class BorderCollapse : uint8_t { Separate, Collapse };
enum class TableLayout : uint8_t { Auto, Fixed };
enum class BorderStyle : uint8_t { None, Hidden, Dotted, Dashed, Solid, Double, Groove, Ridge, Inset, Outset };
enum class OutlineStyle : uint8_t { None, Auto, Dotted, Dashed, Solid, Double, Groove, Ridge, Inset, Outset };
enum class PageBreak : uint8_t { Auto, Always, Avoid, Left, Right, Column };
enum class Cursor : uint8_t {
    Auto,
    Default,
    None,
    Pointer,
    Text,
    VerticalText,
    Move,
    Wait,
    Progress,
    Help,
    Crosshair,
    NotAllowed,
    NoDrop,
    Cell,
    ContextMenu,
    Alias,
    Copy,
    Grab,
    Grabbing,
    AllScroll,
    ColResize,
    RowResize,
    NResize,
    EResize,
    SResize,
    WResize,
    NeResize,
    NwResize,
    SeResize,
    SwResize,
    EwResize,
    NsResize,
    NeswResize,
    NwseResize,
    ZoomIn,
    ZoomOut
};
enum class ObjectFit : uint8_t { Fill, Contain, Cover, None, ScaleDown };
enum class FlexDirection : uint8_t { Row, RowReverse, Column, ColumnReverse };
enum class FlexWrap : uint8_t { Nowrap, Wrap, WrapReverse };
enum class BackgroundRepeat : uint8_t { Repeat, NoRepeat, Space, Round };
enum class BackgroundAttachment : uint8_t { Scroll, Fixed, Local };
enum class BackgroundBox : uint8_t { BorderBox, PaddingBox, ContentBox };

/// An image named in a style.
struct Image
{
    enum class Kind : uint8_t { None, Url, Other };
    Kind kind = Kind::None;
    QString text; ///< Url: the address, resolved; Other: a gradient or the like, as written
    friend bool operator==(const Image &, const Image &) = default;
};

struct BackgroundLayer
{
    /// The size: `auto auto` by default, or one of the words.
    enum class Sizing : uint8_t { Explicit, Cover, Contain };

    Image image;
    Length x = Length::percentage(0), y = Length::percentage(0);
    BackgroundRepeat repeatX = BackgroundRepeat::Repeat, repeatY = BackgroundRepeat::Repeat;
    BackgroundAttachment attachment = BackgroundAttachment::Scroll;
    BackgroundBox origin = BackgroundBox::PaddingBox, clip = BackgroundBox::BorderBox;
    Sizing sizing = Sizing::Explicit;
    Length width, height;
    friend bool operator==(const BackgroundLayer &, const BackgroundLayer &) = default;
};

struct Border
{
    float width = 0; ///< 0 where the style is none or hidden
    BorderStyle style = BorderStyle::None;
    QRgb color = 0xff000000;
    friend bool operator==(const Border &, const Border &) = default;
};

struct Radius
{
    Length x = Length::fixed(0), y = Length::fixed(0);
    friend bool operator==(const Radius &, const Radius &) = default;
};

struct Shadow
{
    float x = 0, y = 0, blur = 0, spread = 0; ///< spread: of boxes only
    QRgb color = 0xff000000;
    bool inset = false;
    friend bool operator==(const Shadow &, const Shadow &) = default;
};

/// A piece of `content`.
struct ContentItem
{
    enum class Kind : uint8_t { Text, Url, Counter, Counters, OpenQuote, CloseQuote, NoOpenQuote, NoCloseQuote };
    Kind kind = Kind::Text;
    QString text;      ///< text (attr() is text by now), address, or the counter's name
    QString separator; ///< Counters
    ListStyleType listStyle = ListStyleType::Decimal;
    friend bool operator==(const ContentItem &, const ContentItem &) = default;
};

struct CounterChange
{
    QString name;
    int value = 0;
    friend bool operator==(const CounterChange &, const CounterChange &) = default;
};

/// A rectangle of `clip`, whose edges may be auto. Null where `clip` is auto.
struct ClipRect
{
    bool isSet = false;
    Sides<Length> edges;
    friend bool operator==(const ClipRect &, const ClipRect &) = default;
};

/// Lines through and under text: flags.
namespace decoration {
inline constexpr uint8_t underline = 1;
inline constexpr uint8_t overline = 2;
inline constexpr uint8_t lineThrough = 4;
inline constexpr uint8_t blink = 8;
} // namespace decoration

} // namespace css
