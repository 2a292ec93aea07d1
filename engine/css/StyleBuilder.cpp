// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleBuilder.h"

#include <QUrl>
#include <algorithm>
#include <cmath>

/// From declared values to computed ones: the order of things, variables, the font, and what is settled at the end.
namespace css {

using Id = PropertyId;

StyleBuilder::StyleBuilder(const BuildContext &context)
    : mContext(context), mStyle(ComputedStyle::inheriting(context.parent))
{
}

void StyleBuilder::add(const DeclarationBlock &block, Weight weight)
{
    for (const Declaration &declaration : block.declarations()) {
        if (declaration.important != (weight == Weight::Important)) continue;
        for (const PropertyValue &entry : declaration.values) {
            if (entry.id == Id::Custom) {
                mCustomDeclared.emplace_back(declaration.name, &entry.value);
                continue;
            }
            Winner &winner = mWinners[size_t(entry.id)];
            if (!winner.value) mSet.push_back(uint8_t(entry.id));
            winner = {&entry.value, &block, ++mOrder};
        }
    }
}

base::Ref<ComputedStyle> StyleBuilder::build()
{
    resolveVariables();
    applyFont();
    if (isDeclared(Id::Color)) {
        apply(Id::Color);
    } else if (mContext.quirkColor && mStyle->text().color != *mContext.quirkColor) {
        mStyle->writeText().color = *mContext.quirkColor;
    }
    // Direction first: alignment is told by it.
    if (isDeclared(Id::Direction)) apply(Id::Direction);
    resolveDirections();
    for (const uint8_t index : mSet) {
        const Id id = Id(index);
        const bool done = id == Id::Color || id == Id::Direction || id <= Id::LineHeight ||
                          (id >= Id::BackgroundImage && id <= Id::BackgroundClip);
        if (!done && isDeclared(id)) apply(id);
    }
    applyBackground();
    finishColors();
    finishBorders();
    finishBox();
    mStyle->shareGroups(&mContext.parent);
    return mStyle;
}

// Properties that speak of the writing direction stand for the left or the right one, whichever was declared later.
void StyleBuilder::resolveDirections()
{
    const bool rtl = mStyle->text().direction == Direction::Rtl;
    static constexpr std::array<Id, 4> rows[] = {
        {Id::MarginInlineStart, Id::MarginInlineEnd, Id::MarginLeft, Id::MarginRight},
        {Id::PaddingInlineStart, Id::PaddingInlineEnd, Id::PaddingLeft, Id::PaddingRight},
        {Id::InsetInlineStart, Id::InsetInlineEnd, Id::Left, Id::Right}};
    for (const auto &row : rows)
        for (size_t i = 0; i < 2; ++i) {
            const Winner &logical = winner(row[i]);
            const Id physical = row[2 + (rtl ? 1 - i : i)];
            Winner &other = mWinners[size_t(physical)];
            if (!logical.value || (other.value && other.order > logical.order)) continue;
            if (!other.value) mSet.push_back(uint8_t(physical));
            other = logical;
        }
}

// Variables

QString StyleBuilder::substitute(const QString &text, int depth, bool &ok)
{
    const Tokens tokens = tokenize(text);
    QString result;
    for (size_t i = 0; i + 1 < tokens.size() && ok;) {
        const Token &token = tokens[i];
        if (!token.isFunction("var")) {
            result += QStringView(text).mid(token.start, token.end - token.start);
            // Where a comment parted two tokens, they stay apart.
            if (tokens[i + 1].start != token.end) result += u' ';
            ++i;
            continue;
        }
        const size_t end = skipComponent(tokens, i, tokens.size() - 1);
        size_t at = i + 1;
        while (at < end && tokens[at].is(TokenType::Whitespace))
            ++at;
        if (at >= end || depth > 8 || !tokens[at].is(TokenType::Ident)) {
            ok = false;
            break;
        }
        const auto &custom = mStyle->custom();
        const auto found = custom.find(tokens[at].text);
        if (found != custom.end()) {
            result += found->second;
        } else {
            while (at < end && !tokens[at].is(TokenType::Comma))
                ++at;
            const size_t to = tokens[end - 1].is(TokenType::CloseParen) ? end - 1 : end;
            if (at >= to)
                ok = false;
            else
                result += substitute(css::sourceOf(tokens, at + 1, to, text), depth + 1, ok);
        }
        // What a variable holds may double with every reference; nobody needs that much.
        if (result.size() > 65536) ok = false;
        i = end;
    }
    return result;
}

bool StyleBuilder::resolveOne(Id id, Winner &winner)
{
    bool ok = true;
    const QString text = substitute(winner.value->text, 0, ok);
    const Shorthand shorthand = winner.value->shorthand;
    const QString name = shorthand == Shorthand::None ? propertyInfo(id).name : shorthandName(shorthand);
    auto values =
        ok ? parseDeclaration(name, text, mContext.quirks ? ValueMode::Quirks : ValueMode::Strict) : std::nullopt;
    if (!values) return false;
    for (PropertyValue &value : *values) {
        if (value.id != id || value.value.kind == Value::Kind::Unresolved) continue;
        mResolved.push_back(std::move(value.value));
        winner.value = &mResolved.back();
        return true;
    }
    return false;
}

void StyleBuilder::resolveVariables()
{
    for (const auto &[name, value] : mCustomDeclared) {
        if (value->text == QLatin1String("initial")) {
            mStyle->writeCustom().erase(name);
        } else if (value->text != QLatin1String("inherit") && value->text != QLatin1String("unset")) {
            mStyle->writeCustom()[name] = value->text;
        }
    }
    // Variables that speak of variables: once for each, over the texts as declared.
    for (const auto &[name, value] : mCustomDeclared) {
        if (!value->text.contains(QLatin1String("var("), Qt::CaseInsensitive)) continue;
        QString text = value->text;
        bool ok = true;
        for (int round = 0; round < 8 && ok && text.contains(QLatin1String("var("), Qt::CaseInsensitive); ++round)
            text = substitute(text, 0, ok);
        if (ok && !text.contains(QLatin1String("var("), Qt::CaseInsensitive))
            mStyle->writeCustom()[name] = text;
        else
            mStyle->writeCustom().erase(name);
    }
    static const Value unset = Value::of(Value::Kind::Unset);
    for (const uint8_t index : mSet) {
        Winner &winner = mWinners[index];
        if (winner.value->kind == Value::Kind::Unresolved && !resolveOne(Id(index), winner)) winner.value = &unset;
    }
}

// What is settled at the end

void StyleBuilder::finishColors()
{
    // Colours that nobody declared are the text's. Groups that are all initial stay shared.
    const QRgb own = mStyle->text().color;
    const SurroundGroup &surround = mStyle->surround();
    if (surround.border != ComputedStyle::initial().surround().border) {
        const Sides<Border> &border = surround.border;
        const auto missing = [&](Id id, const Border &side) { return !isDeclared(id) && side.color != own; };
        if (missing(Id::BorderTopColor, border.top)) mStyle->writeSurround().border.top.color = own;
        if (missing(Id::BorderRightColor, border.right)) mStyle->writeSurround().border.right.color = own;
        if (missing(Id::BorderBottomColor, border.bottom)) mStyle->writeSurround().border.bottom.color = own;
        if (missing(Id::BorderLeftColor, border.left)) mStyle->writeSurround().border.left.color = own;
    }
    const RareGroup &rare = mStyle->rare();
    if (rare.outlineStyle != OutlineStyle::None && !isDeclared(Id::OutlineColor) && rare.outlineColor != own)
        mStyle->writeRare().outlineColor = own;
    if (rare.columnRuleStyle != BorderStyle::None && !isDeclared(Id::ColumnRuleColor) && rare.columnRuleColor != own)
        mStyle->writeRare().columnRuleColor = own;
    if (rare.textDecoration && !isDeclared(Id::TextDecorationColor) && rare.textDecorationColor != own)
        mStyle->writeRare().textDecorationColor = own;
}

void StyleBuilder::finishBorders()
{
    const auto finish = [this](Id widthId, Border Sides<Border>::*side) {
        const Border &border = mStyle->surround().border.*side;
        const bool none = border.style == BorderStyle::None || border.style == BorderStyle::Hidden;
        if (none && border.width != 0) (mStyle->writeSurround().border.*side).width = 0;
        if (!none && !isDeclared(widthId)) (mStyle->writeSurround().border.*side).width = 3; // medium
    };
    finish(Id::BorderTopWidth, &Sides<Border>::top);
    finish(Id::BorderRightWidth, &Sides<Border>::right);
    finish(Id::BorderBottomWidth, &Sides<Border>::bottom);
    finish(Id::BorderLeftWidth, &Sides<Border>::left);
    const RareGroup &rare = mStyle->rare();
    if (rare.outlineStyle == OutlineStyle::None) {
        if (rare.outlineWidth != 0) mStyle->writeRare().outlineWidth = 0;
    } else if (!isDeclared(Id::OutlineWidth)) {
        mStyle->writeRare().outlineWidth = 3;
    }
    if (rare.columnRuleStyle == BorderStyle::None || rare.columnRuleStyle == BorderStyle::Hidden) {
        if (rare.columnRuleWidth != 0) mStyle->writeRare().columnRuleWidth = 0;
    } else if (!isDeclared(Id::ColumnRuleWidth)) {
        mStyle->writeRare().columnRuleWidth = 3;
    }
}

namespace {

Display blockified(Display display)
{
    switch (display) {
    case Display::InlineTable:
        return Display::Table;
    case Display::InlineFlex:
        return Display::Flex;
    case Display::InlineGrid:
        return Display::Grid;
    case Display::None:
    case Display::Contents:
    case Display::Block:
    case Display::ListItem:
    case Display::Table:
    case Display::FlowRoot:
    case Display::Flex:
    case Display::Grid:
        return display;
    default:
        return Display::Block;
    }
}

bool isInlineDisplay(Display display)
{
    return display == Display::Inline || display == Display::InlineBlock || display == Display::InlineTable ||
           display == Display::InlineFlex || display == Display::InlineGrid;
}

} // namespace

void StyleBuilder::finishBox()
{
    const BoxGroup &box = mStyle->box();
    const Display display = box.display;
    const bool absolute = box.position == Position::Absolute || box.position == Position::Fixed;
    if (absolute && box.floating != Float::None) mStyle->writeBox().floating = Float::None;
    const bool item = !mContext.isRoot && mContext.parent.box().blockifiesChildren;
    if (item && box.floating != Float::None) mStyle->writeBox().floating = Float::None;
    if (absolute || box.floating != Float::None || mContext.isRoot || item) {
        const Display block = blockified(display);
        if (block != display) mStyle->writeBox().display = block;
        if (absolute && isInlineDisplay(display)) mStyle->writeBox().originalInline = true;
    }
    const Display now = mStyle->display();
    const bool container = now == Display::Flex || now == Display::InlineFlex || now == Display::Grid ||
                           now == Display::InlineGrid || (now == Display::Contents && item);
    if (container) mStyle->writeBox().blockifiesChildren = true;
    const auto scrolls = [](Overflow o) { return o != Overflow::Visible && o != Overflow::Clip; };
    const auto settle = [](Overflow o) { return o == Overflow::Clip ? Overflow::Hidden : Overflow::Auto; };
    if (scrolls(box.overflowX) && !scrolls(box.overflowY)) mStyle->writeBox().overflowY = settle(box.overflowY);
    if (scrolls(box.overflowY) && !scrolls(box.overflowX)) mStyle->writeBox().overflowX = settle(box.overflowX);
}

} // namespace css
