// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

namespace css {

// name, script-insensitive spelling in the sheet, inherited, grammar, words (in the order of the enum that holds them;
// "hand=pointer" is another spelling of a word)
#define CSS_FOUR(X, prefix, suffix, p, s, grammar, words)                                                              \
    X(prefix##Top##suffix, p "-top" s, false, grammar, words)                                                          \
    X(prefix##Right##suffix, p "-right" s, false, grammar, words)                                                      \
    X(prefix##Bottom##suffix, p "-bottom" s, false, grammar, words)                                                    \
    X(prefix##Left##suffix, p "-left" s, false, grammar, words)

#define CSS_BORDER_STYLES "none hidden dotted dashed solid double groove ridge inset outset"
#define CSS_PAGE_BREAKS                                                                                                \
    "auto always avoid left right column page=always avoid-page=avoid avoid-column=avoid recto=right verso=left"

#define CSS_PROPERTIES(X)                                                                                              \
    X(Color, "color", true, Color, "")                                                                                 \
    X(FontFamily, "font-family", true, FontFamily, "")                                                                 \
    X(FontSize, "font-size", true, FontSize, "")                                                                       \
    X(FontStyle, "font-style", true, Words, "normal italic oblique")                                                   \
    X(FontVariant, "font-variant", true, Words, "normal small-caps")                                                   \
    X(FontWeight, "font-weight", true, FontWeight, "")                                                                 \
    X(FontStretch, "font-stretch", true, FontStretch, "")                                                              \
    X(LineHeight, "line-height", true, LineHeight, "")                                                                 \
    X(Direction, "direction", true, Words, "ltr rtl")                                                                  \
    X(TextAlign, "text-align", true, Words,                                                                            \
      "start end left right center justify -webkit-left -webkit-right -webkit-center -internal-center "                \
      "-moz-center=-webkit-center")                                                                                    \
    X(TextAlignLast, "text-align-last", true, Words, "start end left right center justify auto")                       \
    X(TextJustify, "text-justify", true, Words,                                                                        \
      "auto none inter-word inter-character newspaper=inter-character distribute=inter-character "                     \
      "distribute-all-lines=inter-character inter-ideograph=inter-character inter-cluster=inter-character "            \
      "kashida=inter-word")                                                                                            \
    X(TextIndent, "text-indent", true, LengthPercent, "")                                                              \
    X(TextTransform, "text-transform", true, Words, "none capitalize uppercase lowercase")                             \
    X(LetterSpacing, "letter-spacing", true, Spacing, "normal")                                                        \
    X(WordSpacing, "word-spacing", true, Spacing, "normal")                                                            \
    X(WhiteSpace, "white-space", true, Words, "normal nowrap pre pre-wrap pre-line break-spaces")                      \
    X(OverflowWrap, "overflow-wrap", true, Words, "normal break-word anywhere")                                        \
    X(WordBreak, "word-break", true, Words, "normal break-all keep-all break-word")                                    \
    X(Hyphens, "hyphens", true, Words, "none manual auto")                                                             \
    X(TabSize, "tab-size", true, NumberOrLength, "")                                                                   \
    X(Visibility, "visibility", true, Words, "visible hidden collapse")                                                \
    X(Cursor, "cursor", true, Cursor,                                                                                  \
      "auto default none pointer text vertical-text move wait progress help crosshair not-allowed no-drop cell "       \
      "context-menu alias copy grab grabbing all-scroll col-resize row-resize n-resize e-resize s-resize w-resize "    \
      "ne-resize nw-resize se-resize sw-resize ew-resize ns-resize nesw-resize nwse-resize zoom-in zoom-out "          \
      "hand=pointer")                                                                                                  \
    X(ListStyleType, "list-style-type", true, ListStyleType,                                                           \
      "none disc circle square decimal decimal-leading-zero lower-roman upper-roman lower-alpha upper-alpha "          \
      "lower-greek armenian georgian lower-latin=lower-alpha upper-latin=upper-alpha")                                 \
    X(ListStylePosition, "list-style-position", true, Words, "outside inside")                                         \
    X(ListStyleImage, "list-style-image", true, Image, "")                                                             \
    X(BorderCollapse, "border-collapse", true, Words, "separate collapse")                                             \
    X(BorderSpacing, "border-spacing", true, LengthPair, "")                                                           \
    X(CaptionSide, "caption-side", true, Words, "top bottom left=top right=top")                                       \
    X(EmptyCells, "empty-cells", true, Words, "show hide")                                                             \
    X(TextShadow, "text-shadow", true, Shadow, "")                                                                     \
    X(Quotes, "quotes", true, Quotes, "")                                                                              \
    X(Orphans, "orphans", true, PositiveInteger, "")                                                                   \
    X(Widows, "widows", true, PositiveInteger, "")                                                                     \
    X(PointerEvents, "pointer-events", true, Words, "none auto all=auto")                                              \
    X(UserSelect, "user-select", true, Words, "none auto text=auto all=auto contain=auto")                             \
    X(Display, "display", false, Words,                                                                                \
      "none inline block list-item inline-block table inline-table table-row-group table-header-group "                \
      "table-footer-group table-row table-column-group table-column table-cell table-caption flow-root flex "          \
      "inline-flex grid inline-grid contents -webkit-box=flex -webkit-inline-box=inline-flex -webkit-flex=flex "       \
      "run-in=inline ruby=inline ruby-text=inline ruby-base=inline")                                                   \
    X(Position, "position", false, Words, "static relative absolute fixed sticky -webkit-sticky=sticky")               \
    X(Float, "float", false, Words, "none left right inline-start=left inline-end=right")                              \
    X(Clear, "clear", false, Words, "none left right both inline-start=left inline-end=right")                         \
    X(OverflowX, "overflow-x", false, Words, "visible hidden clip scroll auto overlay=auto")                           \
    X(OverflowY, "overflow-y", false, Words, "visible hidden clip scroll auto overlay=auto")                           \
    X(BoxSizing, "box-sizing", false, Words, "content-box border-box")                                                 \
    X(UnicodeBidi, "unicode-bidi", false, Words, "normal embed isolate bidi-override isolate-override plaintext")      \
    X(TableLayout, "table-layout", false, Words, "auto fixed")                                                         \
    X(VerticalAlign, "vertical-align", false, VerticalAlign, "")                                                       \
    X(ZIndex, "z-index", false, AutoInteger, "")                                                                       \
    X(Width, "width", false, Size, "auto min-content max-content fit-content")                                         \
    X(Height, "height", false, Size, "auto min-content max-content fit-content")                                       \
    X(MinWidth, "min-width", false, Size, "auto min-content max-content fit-content")                                  \
    X(MinHeight, "min-height", false, Size, "auto min-content max-content fit-content")                                \
    X(MaxWidth, "max-width", false, Size, "none min-content max-content fit-content")                                  \
    X(MaxHeight, "max-height", false, Size, "none min-content max-content fit-content")                                \
    X(Top, "top", false, AutoLength, "")                                                                               \
    X(Right, "right", false, AutoLength, "")                                                                           \
    X(Bottom, "bottom", false, AutoLength, "")                                                                         \
    X(Left, "left", false, AutoLength, "")                                                                             \
    X(Clip, "clip", false, Clip, "")                                                                                   \
    CSS_FOUR(X, Margin, , "margin", "", AutoLength, "")                                                                \
    CSS_FOUR(X, Padding, , "padding", "", Positive, "")                                                                \
    X(MarginInlineStart, "margin-inline-start", false, AutoLength, "")                                                 \
    X(MarginInlineEnd, "margin-inline-end", false, AutoLength, "")                                                     \
    X(PaddingInlineStart, "padding-inline-start", false, Positive, "")                                                 \
    X(PaddingInlineEnd, "padding-inline-end", false, Positive, "")                                                     \
    X(InsetInlineStart, "inset-inline-start", false, AutoLength, "")                                                   \
    X(InsetInlineEnd, "inset-inline-end", false, AutoLength, "")                                                       \
    CSS_FOUR(X, Border, Width, "border", "-width", BorderWidth, "thin medium thick")                                   \
    CSS_FOUR(X, Border, Style, "border", "-style", Words, CSS_BORDER_STYLES)                                           \
    CSS_FOUR(X, Border, Color, "border", "-color", Color, "")                                                          \
    X(BorderTopLeftRadius, "border-top-left-radius", false, Radius, "")                                                \
    X(BorderTopRightRadius, "border-top-right-radius", false, Radius, "")                                              \
    X(BorderBottomRightRadius, "border-bottom-right-radius", false, Radius, "")                                        \
    X(BorderBottomLeftRadius, "border-bottom-left-radius", false, Radius, "")                                          \
    X(BackgroundColor, "background-color", false, Color, "")                                                           \
    X(BackgroundImage, "background-image", false, ImageList, "")                                                       \
    X(BackgroundRepeat, "background-repeat", false, RepeatList, "")                                                    \
    X(BackgroundAttachment, "background-attachment", false, WordList, "scroll fixed local")                            \
    X(BackgroundPositionX, "background-position-x", false, PositionXList, "")                                          \
    X(BackgroundPositionY, "background-position-y", false, PositionYList, "")                                          \
    X(BackgroundSize, "background-size", false, SizeList, "")                                                          \
    X(BackgroundOrigin, "background-origin", false, WordList, "border-box padding-box content-box")                    \
    X(BackgroundClip, "background-clip", false, WordList, "border-box padding-box content-box text=border-box")        \
    X(TextDecorationLine, "text-decoration-line", false, DecorationLine, "")                                           \
    X(TextDecorationStyle, "text-decoration-style", false, Words, "solid double dotted dashed wavy")                   \
    X(TextDecorationColor, "text-decoration-color", false, Color, "")                                                  \
    X(TextDecorationThickness, "text-decoration-thickness", false, AutoLength, "")                                     \
    X(Opacity, "opacity", false, Alpha, "")                                                                            \
    X(OutlineStyle, "outline-style", false, Words, "none auto dotted dashed solid double groove ridge inset outset")   \
    X(OutlineWidth, "outline-width", false, BorderWidth, "thin medium thick")                                          \
    X(OutlineColor, "outline-color", false, Color, "")                                                                 \
    X(OutlineOffset, "outline-offset", false, Length, "")                                                              \
    X(BoxShadow, "box-shadow", false, Shadow, "")                                                                      \
    X(Content, "content", false, Content, "")                                                                          \
    X(CounterReset, "counter-reset", false, Counters, "")                                                              \
    X(CounterIncrement, "counter-increment", false, Counters, "")                                                      \
    X(PageBreakBefore, "page-break-before", false, Words, CSS_PAGE_BREAKS)                                             \
    X(PageBreakAfter, "page-break-after", false, Words, CSS_PAGE_BREAKS)                                               \
    X(PageBreakInside, "page-break-inside", false, Words, "auto avoid avoid-page=avoid avoid-column=avoid")            \
    X(Transform, "transform", false, Raw, "")                                                                          \
    X(TransformOrigin, "transform-origin", false, Raw, "")                                                             \
    X(Translate, "translate", false, Raw, "")                                                                          \
    X(Rotate, "rotate", false, Raw, "")                                                                                \
    X(Scale, "scale", false, Raw, "")                                                                                  \
    X(Filter, "filter", false, Raw, "")                                                                                \
    X(TextOverflow, "text-overflow", false, Words, "clip ellipsis")                                                    \
    X(ObjectFit, "object-fit", false, Words, "fill contain cover none scale-down")                                     \
    X(ObjectPosition, "object-position", false, Place, "")                                                             \
    X(FlexDirection, "flex-direction", false, Words, "row row-reverse column column-reverse")                          \
    X(FlexWrap, "flex-wrap", false, Words, "nowrap wrap wrap-reverse")                                                 \
    X(FlexGrow, "flex-grow", false, PositiveNumber, "")                                                                \
    X(FlexShrink, "flex-shrink", false, PositiveNumber, "")                                                            \
    X(FlexBasis, "flex-basis", false, Size, "auto min-content max-content fit-content content")                        \
    X(JustifyContent, "justify-content", false, Alignment, "")                                                         \
    X(JustifyItems, "justify-items", false, Alignment, "")                                                             \
    X(JustifySelf, "justify-self", false, Alignment, "")                                                               \
    X(AlignItems, "align-items", false, Alignment, "")                                                                 \
    X(AlignSelf, "align-self", false, Alignment, "")                                                                   \
    X(AlignContent, "align-content", false, Alignment, "")                                                             \
    X(Order, "order", false, Integer, "")                                                                              \
    X(ColumnCount, "column-count", false, AutoInteger, "")                                                             \
    X(ColumnWidth, "column-width", false, AutoPositive, "")                                                            \
    X(ColumnRuleWidth, "column-rule-width", false, BorderWidth, "thin medium thick")                                   \
    X(ColumnRuleStyle, "column-rule-style", false, Words, CSS_BORDER_STYLES)                                           \
    X(ColumnRuleColor, "column-rule-color", false, Color, "")                                                          \
    X(ColumnFill, "column-fill", false, Words, "balance auto balance-all=balance")                                     \
    X(ColumnSpan, "column-span", false, Words, "none all")                                                             \
    X(ColumnGap, "column-gap", false, Gap, "normal")                                                                   \
    X(RowGap, "row-gap", false, Gap, "normal")                                                                         \
    X(GridTemplateColumns, "grid-template-columns", false, TrackList, "")                                              \
    X(GridTemplateRows, "grid-template-rows", false, TrackList, "")                                                    \
    X(GridTemplateAreas, "grid-template-areas", false, GridAreas, "")                                                  \
    X(GridAutoColumns, "grid-auto-columns", false, AutoTracks, "")                                                     \
    X(GridAutoRows, "grid-auto-rows", false, AutoTracks, "")                                                           \
    X(GridAutoFlow, "grid-auto-flow", false, GridFlow, "")                                                             \
    X(GridRowStart, "grid-row-start", false, GridLine, "")                                                             \
    X(GridRowEnd, "grid-row-end", false, GridLine, "")                                                                 \
    X(GridColumnStart, "grid-column-start", false, GridLine, "")                                                       \
    X(GridColumnEnd, "grid-column-end", false, GridLine, "")

enum class PropertyId : uint8_t {
#define CSS_ID(name, text, inherited, grammar, words) name,
    CSS_PROPERTIES(CSS_ID)
#undef CSS_ID
        Count, ///< how many there are
    Custom = 254,
    Unknown = 255
};
inline constexpr size_t propertyCount = size_t(PropertyId::Count);

enum class Grammar : uint8_t {
    Words,
    Color,
    FontFamily,
    FontSize,
    FontWeight,
    FontStretch,
    LineHeight,
    LengthPercent,
    Length,
    Spacing,
    NumberOrLength,
    Cursor,
    ListStyleType,
    Image,
    LengthPair,
    Shadow,
    Quotes,
    PositiveInteger,
    VerticalAlign,
    AutoInteger,
    Integer,
    Size,
    AutoLength,
    AutoPositive,
    Positive,
    Clip,
    BorderWidth,
    Radius,
    ImageList,
    RepeatList,
    WordList,
    PositionXList,
    PositionYList,
    SizeList,
    DecorationLine,
    Alpha,
    PositiveNumber,
    Content,
    Counters,
    Raw,
    Place,
    Gap,
    Alignment,
    TrackList,
    AutoTracks,
    GridAreas,
    GridFlow,
    GridLine
};

struct PropertyInfo
{
    QString name;
    bool inherited;
    Grammar grammar;
    std::vector<std::pair<QString, int>> words; ///< a word and its number
};

const PropertyInfo &propertyInfo(PropertyId id);
/// By name in lower case with hyphens; Unknown for others, Custom for `--name`.
PropertyId propertyId(const QString &name);

enum class Shorthand : uint8_t {
    None,
    Margin,
    Padding,
    Border,
    BorderWidth,
    BorderStyle,
    BorderColor,
    BorderTop,
    BorderRight,
    BorderBottom,
    BorderLeft,
    BorderRadius,
    Background,
    BackgroundPosition,
    Font,
    ListStyle,
    Outline,
    Overflow,
    TextDecoration,
    Flex,
    FlexFlow,
    Columns,
    ColumnRule,
    Gap,
    PlaceContent,
    PlaceItems,
    PlaceSelf,
    GridRow,
    GridColumn,
    GridArea,
    GridTemplate,
    Grid,
    MarginInline,
    MarginBlock,
    PaddingInline,
    PaddingBlock,
    Inset,
    InsetInline,
    InsetBlock,
    All
};
/// By name in lower case; None for what isn't one.
Shorthand shorthandId(const QString &name);
QString shorthandName(Shorthand shorthand);
/// What a shorthand sets, in its own order.
const std::vector<PropertyId> &longhandsOf(Shorthand shorthand);

/// The name as CSS writes it, for one in any case and any of the forms of scripts: "backgroundColor",
/// "BACKGROUND-COLOR", "backgroundimage", "styleFloat", "word-wrap". An unknown name comes back in lower case, except
/// that a custom property keeps its case.
QString canonicalName(const QString &name);
/// A name of the writing direction that is a physical one in horizontal writing ("margin-block-start", "inline-size"),
/// as that; others as they are.
QString physicalName(const QString &lower);
/// Whether the style knows the property (a shorthand too).
bool isKnownProperty(const QString &canonical);
/// "background-color" -> "backgroundColor", "float" -> "styleFloat".
QString scriptName(const QString &canonical);
/// All names of properties and shorthands, canonical.
const QStringList &propertyNames();

} // namespace css
