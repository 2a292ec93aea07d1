// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Ref.h"
#include "engine/css/GridValues.h"
#include "engine/css/Values.h"

#include <QHash>
#include <map>
#include <memory>

/// The computed style of an element or a pseudo-element, as layout and painting read it.
///
/// A style is immutable once it has been handed out (it is handed out as `const`) and shared between elements that look
/// alike: the same pointer means the same style. Its fields stand in groups, each shared too, by reference: the two
/// inherited groups (`font`, `text`) with the parent where the element changes nothing of them, the others with a
/// default. Two styles can be told apart group by group at the price of a comparison of pointers.
///
/// What always holds:
/// - Every length is CSS pixels, finite, and at most 33,554,431 either way; only percentages wait for layout. Widths,
///   heights, paddings and border widths aren't negative. A border whose style is `none` or `hidden` is 0 wide.
/// - Colours are final: `currentcolor` has been replaced, whatever the property.
/// - `display` is what the box is: floated, absolutely positioned and root elements are blockified already
///   (`box().originalInline` says that an absolutely positioned one would have stood in a line), and `float` is None
///   where `position` is absolute or fixed. Children of flex and grid containers are blockified.
/// - If one of `overflowX`, `overflowY` is neither visible nor clip, the other isn't visible or clip either.
/// - Of `background().layers` there is always one; the first is the topmost.
/// - Lines of `text-decoration` are the element's own; who lays out or paints carries them to the text inside.
/// - `font().size` is at least 0 and at most 10,000.
namespace css {

/// The font. Inherited as a whole.
struct FontGroup
{
    QStringList families; ///< never empty; generic names (`serif`, `monospace`) as they stand, lower case
    double size = 16;     ///< pixels
    int weight = 400;     ///< 1 .. 1000
    FontStyle style = FontStyle::Normal;
    bool smallCaps = false;
    int stretch = 100;       ///< per cent
    bool monospace = false;  ///< whether the family is exactly `monospace`, whose sizes by keyword count from 13 pixels
    uint8_t sizeKeyword = 4; ///< 1 xx-small .. 4 medium .. 8 xxx-large, 0 where the size is none of them
    bool sizeIsAbsolute = false; ///< written in pixels or the like, here or above
    friend bool operator==(const FontGroup &, const FontGroup &) = default;
};

/// Everything else that is inherited.
struct TextGroup
{
    QRgb color = 0xff000000;
    LineHeight lineHeight;
    TextAlign textAlign = TextAlign::Start;
    TextAlign textAlignLast = TextAlign::Start; ///< Start where it says nothing (`auto`)
    bool hasTextAlignLast = false;
    TextJustify textJustify = TextJustify::Auto;
    Length textIndent = Length::fixed(0); ///< may be negative
    TextTransform textTransform = TextTransform::None;
    float letterSpacing = 0;
    float wordSpacing = 0;
    WhiteSpace whiteSpace = WhiteSpace::Normal;
    OverflowWrap overflowWrap = OverflowWrap::Normal;
    WordBreak wordBreak = WordBreak::Normal;
    Hyphens hyphens = Hyphens::Manual;
    float tabSize = 8; ///< of the width of a blank, or pixels where `tabSizeIsLength`
    bool tabSizeIsLength = false;
    Direction direction = Direction::Ltr;
    Visibility visibility = Visibility::Visible;
    Cursor cursor = Cursor::Auto;
    ListStyleType listStyleType = ListStyleType::Disc;
    ListStylePosition listStylePosition = ListStylePosition::Outside;
    QString listStyleString; ///< a marker written as a string; null where there is none
    Image listStyleImage;
    BorderCollapse borderCollapse = BorderCollapse::Separate;
    float borderSpacingX = 0, borderSpacingY = 0;
    CaptionSide captionSide = CaptionSide::Top;
    EmptyCells emptyCells = EmptyCells::Show;
    std::vector<Shadow> textShadow;
    QStringList quotes; ///< in pairs, open and close, a pair for each depth; empty: none
    int orphans = 2, widows = 2;
    bool pointerEvents = true;
    bool userSelect = true; ///< false: `none`
    friend bool operator==(const TextGroup &, const TextGroup &) = default;
};

/// Kind, place and size of the box.
struct BoxGroup
{
    Display display = Display::Inline;
    bool originalInline = false;
    bool blockifiesChildren = false; ///< a flex or grid container, or within one with `display: contents`
    Position position = Position::Static;
    Float floating = Float::None;
    Clear clear = Clear::None;
    Overflow overflowX = Overflow::Visible, overflowY = Overflow::Visible;
    BoxSizing boxSizing = BoxSizing::ContentBox;
    UnicodeBidi unicodeBidi = UnicodeBidi::Normal;
    TableLayout tableLayout = TableLayout::Auto;
    VerticalAlign verticalAlign;
    bool hasZIndex = false; ///< else `auto`
    int zIndex = 0;
    Length width, height;
    Length minWidth, minHeight; ///< auto by default
    Length maxWidth = Length::none(), maxHeight = Length::none();
    Sides<Length> offsets; ///< top, right, bottom, left
    ClipRect clip;
    friend bool operator==(const BoxGroup &, const BoxGroup &) = default;
};

/// What surrounds the content.
struct SurroundGroup
{
    Sides<Length> margin{Length::fixed(0), Length::fixed(0), Length::fixed(0), Length::fixed(0)};
    Sides<Length> padding{Length::fixed(0), Length::fixed(0), Length::fixed(0), Length::fixed(0)};
    Sides<Border> border;
    Radius topLeft, topRight, bottomRight, bottomLeft;
    friend bool operator==(const SurroundGroup &, const SurroundGroup &) = default;
    bool hasRadius() const
    {
        return !(topLeft == Radius() && topRight == Radius() && bottomRight == Radius() && bottomLeft == Radius());
    }
};

struct BackgroundGroup
{
    QRgb color = 0; ///< transparent by default
    std::vector<BackgroundLayer> layers{BackgroundLayer()};
    friend bool operator==(const BackgroundGroup &, const BackgroundGroup &) = default;
    bool hasImage() const
    {
        for (const BackgroundLayer &layer : layers)
            if (layer.image.kind != Image::Kind::None) return true;
        return false;
    }
};

/// What few elements have.
struct RareGroup
{
    uint8_t textDecoration = 0; ///< flags of `decoration`
    QRgb textDecorationColor = 0xff000000;
    BorderStyle textDecorationStyle = BorderStyle::Solid; ///< Hidden stands for `wavy`
    Length textDecorationThickness;                       ///< auto, or fixed
    float opacity = 1;
    OutlineStyle outlineStyle = OutlineStyle::None;
    float outlineWidth = 0; ///< 0 where the style is none
    float outlineOffset = 0;
    QRgb outlineColor = 0xff000000;
    std::vector<Shadow> boxShadow;
    bool hasContent = false;  ///< whether `content` is a list, an empty one too; else normal or none
    bool contentNone = false; ///< `none`; `normal` otherwise, where `hasContent` is false
    std::vector<ContentItem> content;
    std::vector<CounterChange> counterReset, counterIncrement;
    PageBreak pageBreakBefore = PageBreak::Auto, pageBreakAfter = PageBreak::Auto, pageBreakInside = PageBreak::Auto;
    QString transform; ///< as written; empty: none
    QString transformOrigin;
    QString translate, rotate, scale; ///< as written, like `transform`
    QString filter;
    bool textOverflowEllipsis = false;
    ObjectFit objectFit = ObjectFit::Fill;
    Length objectX = Length::percentage(50), objectY = Length::percentage(50);
    // Flexible boxes and columns: read, and for those who come to lay them out.
    FlexDirection flexDirection = FlexDirection::Row;
    FlexWrap flexWrap = FlexWrap::Nowrap;
    float flexGrow = 0, flexShrink = 1;
    Length flexBasis;
    Alignment justifyContent, justifyItems, alignItems, alignContent;
    Alignment justifySelf{Align::Auto, false}, alignSelf{Align::Auto, false};
    int order = 0;
    int columnCount = 0; ///< 0: auto
    Length columnWidth;
    float columnRuleWidth = 0; ///< 0 where the style is none or hidden
    BorderStyle columnRuleStyle = BorderStyle::None;
    QRgb columnRuleColor = 0xff000000;
    bool columnFillAuto = false; ///< false: balanced
    bool columnSpanAll = false;
    Length columnGap, rowGap; ///< auto: normal
    bool isTransformed() const
    {
        const auto does = [](const QString &text) { return !text.isEmpty() && text != QLatin1String("none"); };
        return does(transform) || does(translate) || does(rotate) || does(scale);
    }
    bool isMultiColumn() const { return columnCount > 0 || columnWidth.isFixed(); }
    friend bool operator==(const RareGroup &, const RareGroup &) = default;
};

/// Custom properties (`--name`) and their texts; inherited.
using CustomProperties = std::map<QString, QString>;

class ComputedStyle final : public base::RefCounted
{
public:
    /// Initial values.
    ComputedStyle();
    /// What an element without any declarations has under `parent`.
    explicit ComputedStyle(const ComputedStyle &parent, bool);
    static base::Ref<ComputedStyle> inheriting(const ComputedStyle &parent);
    static const ComputedStyle &initial();
    base::Ref<ComputedStyle> copy() const;

    const FontGroup &font() const { return *mFont; }
    const TextGroup &text() const { return *mText; }
    const BoxGroup &box() const { return *mBox; }
    const SurroundGroup &surround() const { return *mSurround; }
    const BackgroundGroup &background() const { return *mBackground; }
    const RareGroup &rare() const { return *mRare; }
    const GridGroup &grid() const { return *mGrid; }
    const CustomProperties &custom() const;

    // Shorter ways to what is asked most.
    Display display() const { return mBox->display; }
    Position position() const { return mBox->position; }
    Float floating() const { return mBox->floating; }
    const Sides<Length> &margin() const { return mSurround->margin; }
    const Sides<Length> &padding() const { return mSurround->padding; }
    const Sides<Border> &border() const { return mSurround->border; }
    QRgb color() const { return mText->color; }
    bool isOutOfFlow() const { return position() == Position::Absolute || position() == Position::Fixed; }
    bool isFloating() const { return mBox->floating != Float::None; }
    /// A box that takes part in a line.
    bool isInlineLevel() const
    {
        const Display d = mBox->display;
        return d == Display::Inline || d == Display::InlineBlock || d == Display::InlineTable ||
               d == Display::InlineFlex || d == Display::InlineGrid;
    }
    bool collapsesSpaces() const
    {
        return mText->whiteSpace == WhiteSpace::Normal || mText->whiteSpace == WhiteSpace::Nowrap ||
               mText->whiteSpace == WhiteSpace::PreLine;
    }
    bool collapsesNewlines() const
    {
        return mText->whiteSpace == WhiteSpace::Normal || mText->whiteSpace == WhiteSpace::Nowrap;
    }
    bool wraps() const { return mText->whiteSpace != WhiteSpace::Nowrap && mText->whiteSpace != WhiteSpace::Pre; }

    friend bool operator==(const ComputedStyle &a, const ComputedStyle &b);

    // For who computes styles: a group of one's own, to write to before the style is handed out.
    FontGroup &writeFont() { return own(mFont); }
    TextGroup &writeText() { return own(mText); }
    BoxGroup &writeBox() { return own(mBox); }
    SurroundGroup &writeSurround() { return own(mSurround); }
    BackgroundGroup &writeBackground() { return own(mBackground); }
    RareGroup &writeRare() { return own(mRare); }
    GridGroup &writeGrid() { return own(mGrid); }
    CustomProperties &writeCustom();
    /// Lets groups that equal the parent's, or the initial ones, be the same object.
    void shareGroups(const ComputedStyle *parent);
    bool sharesInheritedWith(const ComputedStyle &other) const
    {
        return mFont == other.mFont && mText == other.mText && mCustom == other.mCustom;
    }

private:
    template <class Group> static Group &own(std::shared_ptr<const Group> &group)
    {
        if (group.use_count() != 1) group = std::make_shared<Group>(*group);
        return const_cast<Group &>(*group);
    }
    std::shared_ptr<const FontGroup> mFont;
    std::shared_ptr<const TextGroup> mText;
    std::shared_ptr<const BoxGroup> mBox;
    std::shared_ptr<const SurroundGroup> mSurround;
    std::shared_ptr<const BackgroundGroup> mBackground;
    std::shared_ptr<const RareGroup> mRare;
    std::shared_ptr<const GridGroup> mGrid;
    std::shared_ptr<const CustomProperties> mCustom; // null: none
};

/// What a change of style asks of who shows the element, from nothing to everything.
enum class Difference : uint8_t {
    None,
    Paint,  ///< boxes stay as they are
    Layout, ///< boxes stay, their geometry may not
    Reframe ///< other boxes: display, position, float, generated content
};

/// What must be done when `before` gives way to `after`.
Difference difference(const ComputedStyle &before, const ComputedStyle &after);

} // namespace css
