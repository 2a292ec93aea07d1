// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/ComputedStyle.h"

namespace css {

namespace {

struct Defaults
{
    std::shared_ptr<const FontGroup> font;
    std::shared_ptr<const TextGroup> text;
    std::shared_ptr<const BoxGroup> box = std::make_shared<BoxGroup>();
    std::shared_ptr<const SurroundGroup> surround = std::make_shared<SurroundGroup>();
    std::shared_ptr<const BackgroundGroup> background = std::make_shared<BackgroundGroup>();
    std::shared_ptr<const RareGroup> rare = std::make_shared<RareGroup>();
    std::shared_ptr<const GridGroup> grid = std::make_shared<GridGroup>();
    Defaults()
    {
        auto f = std::make_shared<FontGroup>();
        f->families = {QStringLiteral("serif")};
        font = f;
        auto t = std::make_shared<TextGroup>();
        t->quotes = {QString(QChar(0x201c)), QString(QChar(0x201d)), QString(QChar(0x2018)), QString(QChar(0x2019))};
        text = t;
    }
};

const Defaults &defaults()
{
    static const Defaults *const defaults = new Defaults;
    return *defaults;
}

template <class T> bool same(const std::shared_ptr<const T> &a, const std::shared_ptr<const T> &b)
{
    return a == b || (a && b && *a == *b);
}

template <class T> void share(std::shared_ptr<const T> &group, const std::shared_ptr<const T> &other)
{
    if (group != other && *group == *other) group = other;
}

} // namespace

ComputedStyle::ComputedStyle()
    : mFont(defaults().font), mText(defaults().text), mBox(defaults().box), mSurround(defaults().surround),
      mBackground(defaults().background), mRare(defaults().rare), mGrid(defaults().grid)
{
}

ComputedStyle::ComputedStyle(const ComputedStyle &parent, bool)
    : mFont(parent.mFont), mText(parent.mText), mBox(defaults().box), mSurround(defaults().surround),
      mBackground(defaults().background), mRare(defaults().rare), mGrid(defaults().grid), mCustom(parent.mCustom)
{
}

base::Ref<ComputedStyle> ComputedStyle::inheriting(const ComputedStyle &parent)
{
    return base::Ref<ComputedStyle>(new ComputedStyle(parent, true));
}

const ComputedStyle &ComputedStyle::initial()
{
    static const base::Ref<ComputedStyle> *const style = new base::Ref<ComputedStyle>(new ComputedStyle);
    return **style;
}

base::Ref<ComputedStyle> ComputedStyle::copy() const
{
    base::Ref<ComputedStyle> copy(new ComputedStyle);
    copy->mFont = mFont;
    copy->mText = mText;
    copy->mBox = mBox;
    copy->mSurround = mSurround;
    copy->mBackground = mBackground;
    copy->mRare = mRare;
    copy->mGrid = mGrid;
    copy->mCustom = mCustom;
    return copy;
}

const CustomProperties &ComputedStyle::custom() const
{
    static const CustomProperties none;
    return mCustom ? *mCustom : none;
}

CustomProperties &ComputedStyle::writeCustom()
{
    if (!mCustom) mCustom = std::make_shared<CustomProperties>();
    return own(mCustom);
}

void ComputedStyle::shareGroups(const ComputedStyle *parent)
{
    if (parent) {
        share(mFont, parent->mFont);
        share(mText, parent->mText);
        if (same(mCustom, parent->mCustom)) mCustom = parent->mCustom;
    }
    share(mBox, defaults().box);
    share(mSurround, defaults().surround);
    share(mBackground, defaults().background);
    share(mRare, defaults().rare);
    share(mGrid, defaults().grid);
}

bool operator==(const ComputedStyle &a, const ComputedStyle &b)
{
    return same(a.mFont, b.mFont) && same(a.mText, b.mText) && same(a.mBox, b.mBox) && same(a.mSurround, b.mSurround) &&
           same(a.mBackground, b.mBackground) && same(a.mRare, b.mRare) && same(a.mGrid, b.mGrid) && same(a.mCustom, b.mCustom);
}

namespace {

bool textNeedsLayout(const TextGroup &before, const TextGroup &after)
{
    TextGroup painted = before;
    painted.color = after.color;
    painted.visibility = after.visibility;
    painted.cursor = after.cursor;
    painted.textShadow = after.textShadow;
    painted.pointerEvents = after.pointerEvents;
    painted.userSelect = after.userSelect;
    painted.emptyCells = after.emptyCells;
    return !(painted == after) ||
           (before.visibility != after.visibility &&
            (before.visibility == Visibility::Collapse || after.visibility == Visibility::Collapse));
}

bool surroundNeedsLayout(const SurroundGroup &before, const SurroundGroup &after)
{
    const auto widths = [](const SurroundGroup &s) {
        return Sides<float>{s.border.top.width, s.border.right.width, s.border.bottom.width, s.border.left.width};
    };
    // In tables the style, too, decides which border wins.
    const auto styles = [](const SurroundGroup &s) {
        return Sides<BorderStyle>{s.border.top.style, s.border.right.style, s.border.bottom.style, s.border.left.style};
    };
    return !(before.margin == after.margin) || !(before.padding == after.padding) ||
           !(widths(before) == widths(after)) || !(styles(before) == styles(after));
}

Difference rareDifference(const RareGroup &before, const RareGroup &after)
{
    if (before.hasContent != after.hasContent || before.contentNone != after.contentNone ||
        before.content != after.content || before.counterReset != after.counterReset ||
        before.counterIncrement != after.counterIncrement || before.columnCount != after.columnCount ||
        !(before.columnWidth == after.columnWidth) || before.columnSpanAll != after.columnSpanAll ||
        before.isTransformed() != after.isTransformed())
        return Difference::Reframe;
    RareGroup painted = before;
    painted.textDecoration = after.textDecoration;
    painted.textDecorationColor = after.textDecorationColor;
    painted.textDecorationStyle = after.textDecorationStyle;
    painted.textDecorationThickness = after.textDecorationThickness;
    painted.opacity = after.opacity;
    painted.outlineStyle = after.outlineStyle;
    painted.outlineWidth = after.outlineWidth;
    painted.outlineOffset = after.outlineOffset;
    painted.outlineColor = after.outlineColor;
    painted.boxShadow = after.boxShadow;
    painted.columnRuleStyle = after.columnRuleStyle;
    painted.columnRuleColor = after.columnRuleColor;
    painted.columnRuleWidth = after.columnRuleWidth;
    painted.objectFit = after.objectFit;
    painted.objectX = after.objectX;
    painted.objectY = after.objectY;
    painted.filter = after.filter;
    return painted == after ? Difference::Paint : Difference::Layout;
}

Difference boxDifference(const BoxGroup &before, const BoxGroup &after)
{
    if (before.display != after.display || before.position != after.position || before.floating != after.floating ||
        before.originalInline != after.originalInline)
        return Difference::Reframe;
    BoxGroup painted = before;
    painted.hasZIndex = after.hasZIndex;
    painted.zIndex = after.zIndex;
    painted.clip = after.clip;
    return painted == after ? Difference::Paint : Difference::Layout;
}

} // namespace

Difference difference(const ComputedStyle &before, const ComputedStyle &after)
{
    if (&before == &after) return Difference::None;
    Difference result = Difference::None;
    const auto raise = [&result](Difference to) { result = std::max(result, to); };
    const auto differ = [](const auto &a, const auto &b) { return &a != &b && !(a == b); };
    if (differ(before.box(), after.box())) raise(boxDifference(before.box(), after.box()));
    if (differ(before.rare(), after.rare())) raise(rareDifference(before.rare(), after.rare()));
    if (differ(before.grid(), after.grid())) raise(Difference::Layout);
    if (differ(before.font(), after.font())) raise(Difference::Layout);
    if (differ(before.text(), after.text())) {
        const bool list = before.text().listStyleType != after.text().listStyleType ||
                          before.text().listStyleString != after.text().listStyleString ||
                          !(before.text().listStyleImage == after.text().listStyleImage) ||
                          before.text().listStylePosition != after.text().listStylePosition;
        raise(list && after.display() == Display::ListItem   ? Difference::Reframe
              : textNeedsLayout(before.text(), after.text()) ? Difference::Layout
                                                             : Difference::Paint);
    }
    if (differ(before.surround(), after.surround()))
        raise(surroundNeedsLayout(before.surround(), after.surround()) ? Difference::Layout : Difference::Paint);
    if (differ(before.background(), after.background())) raise(Difference::Paint);
    return result;
}

} // namespace css
