// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleBuilder.h"

#include <algorithm>
#include <cmath>

/// The font of a style: what every other length may be relative to.
namespace css {

using Id = PropertyId;

namespace {

/// Sizes of the words xx-small to xxx-large, as browsers agree on them.
double sizeOfWord(int word, bool monospace, bool quirks)
{
    static constexpr double proportional[] = {9, 10, 13, 16, 18, 24, 32, 48};
    static constexpr double fixedPitch[] = {9, 10, 12, 13, 16, 20, 26, 39};
    static constexpr double fixedPitchQuirks[] = {9, 9, 10, 13, 16, 20, 26, 40};
    const int index = std::clamp(word, 1, 8) - 1;
    return !monospace ? proportional[index] : quirks ? fixedPitchQuirks[index] : fixedPitch[index];
}

} // namespace

const ComputedStyle *StyleBuilder::sourceOf(Id id, const Value &value)
{
    const bool inherited = propertyInfo(id).inherited;
    switch (value.kind) {
    case Value::Kind::Inherit:
        if (!inherited) mInheritedExplicitly = true;
        return &mContext.parent;
    case Value::Kind::Initial:
        return &ComputedStyle::initial();
    case Value::Kind::Unset:
        return inherited ? &mContext.parent : &ComputedStyle::initial();
    default:
        return nullptr;
    }
}

void StyleBuilder::applyFont()
{
    bool any = false;
    for (const uint8_t index : mSet)
        any = any || Id(index) <= Id::LineHeight;
    if (!any) return;
    applyFontFamily();
    applyFontSize();
    for (const Id id : {Id::FontStyle, Id::FontVariant, Id::FontStretch})
        if (isDeclared(id)) apply(id);
    applyFontWeight();
    applyLineHeight();
}

void StyleBuilder::applyFontFamily()
{
    if (!isDeclared(Id::FontFamily)) return;
    const Value &value = *winner(Id::FontFamily).value;
    FontGroup &font = mStyle->writeFont();
    if (const ComputedStyle *from = sourceOf(Id::FontFamily, value)) {
        font.families = from->font().families;
        font.monospace = from->font().monospace;
        return;
    }
    static const QStringList generic{QStringLiteral("serif"),     QStringLiteral("sans-serif"),
                                     QStringLiteral("monospace"), QStringLiteral("cursive"),
                                     QStringLiteral("fantasy"),   QStringLiteral("system-ui")};
    font.families.clear();
    for (const Value &item : value.items) {
        const QString lower = item.text.toLower();
        const bool isGeneric = item.kind == Value::Kind::Raw && generic.contains(lower);
        // In quotes it is a family's name; the capital keeps the two apart.
        const bool isName = !isGeneric && generic.contains(item.text);
        font.families << (isGeneric ? lower : isName ? item.text.at(0).toUpper() + item.text.mid(1) : item.text);
    }
    if (font.families.isEmpty()) font.families = mContext.parent.font().families;
    font.monospace = font.families.size() == 1 && font.families[0] == QLatin1String("monospace") &&
                     value.items[0].kind == Value::Kind::Raw;
}

void StyleBuilder::applyFontSizeWord(int word)
{
    FontGroup &font = mStyle->writeFont();
    const double parent = mContext.parent.font().size;
    if (word >= 9) { // larger, smaller
        font.size = word == 9 ? parent * 1.2 : parent / 1.2;
        font.sizeKeyword = 0;
        font.sizeIsAbsolute = mContext.parent.font().sizeIsAbsolute;
        return;
    }
    font.size = sizeOfWord(word, font.monospace, mContext.quirks);
    font.sizeKeyword = uint8_t(word);
    font.sizeIsAbsolute = false;
}

void StyleBuilder::applyFontSize()
{
    const FontGroup &parent = mContext.parent.font();
    bool inherits = true;
    if (isDeclared(Id::FontSize)) {
        const Value &value = *winner(Id::FontSize).value;
        const ComputedStyle *from = sourceOf(Id::FontSize, value);
        inherits = from == &mContext.parent;
        if (from && !inherits) {
            applyFontSizeWord(4);
        } else if (value.kind == Value::Kind::Word) {
            applyFontSizeWord(value.word);
        } else if (!from) {
            const bool relative =
                value.kind == Value::Kind::Length && (value.unit == Unit::Em || value.unit == Unit::Ex ||
                                                      value.unit == Unit::Ch || value.unit == Unit::Percent);
            FontGroup &font = mStyle->writeFont();
            // Per cents, too, are of the parent's size here. Not by way of a float where it isn't needed.
            const bool length = value.kind == Value::Kind::Length;
            font.size = !length                       ? this->length(value, parent.size).resolve(parent.size)
                        : value.unit == Unit::Percent ? value.number * parent.size / 100
                                                      : pixels(value, parent.size);
            font.sizeKeyword = 0;
            font.sizeIsAbsolute = !relative || parent.sizeIsAbsolute;
        }
    }
    // Browsers hold that `monospace` alone is meant smaller: 13 pixels where others have 16.
    const FontGroup &now = mStyle->font();
    const bool keyword = now.sizeKeyword != 0;
    if (now.monospace != parent.monospace && !now.sizeIsAbsolute) {
        const bool fromWord = isDeclared(Id::FontSize) && !inherits && keyword;
        FontGroup &font = mStyle->writeFont();
        if (keyword)
            font.size = sizeOfWord(font.sizeKeyword, font.monospace, mContext.quirks);
        else if (!fromWord)
            font.size *= font.monospace ? 13.0 / 16 : 16.0 / 13;
    }
    const double bounded = std::isfinite(now.size) ? std::clamp(now.size, 0.0, 10000.0) : 16;
    if (bounded != now.size) mStyle->writeFont().size = bounded;
}

void StyleBuilder::applyFontWeight()
{
    if (!isDeclared(Id::FontWeight)) return;
    const Value &value = *winner(Id::FontWeight).value;
    int weight = mContext.parent.font().weight;
    if (const ComputedStyle *from = sourceOf(Id::FontWeight, value))
        weight = from->font().weight;
    else if (value.kind == Value::Kind::Number)
        weight = int(std::lround(value.number));
    else if (value.isWord(1)) // bolder
        weight = weight < 350 ? 400 : weight < 550 ? 700 : std::max(weight, 900);
    else // lighter
        weight = weight < 100 ? weight : weight < 550 ? 100 : weight < 750 ? 400 : 700;
    if (mStyle->font().weight != weight) mStyle->writeFont().weight = weight;
}

void StyleBuilder::applyLineHeight()
{
    if (!isDeclared(Id::LineHeight)) return;
    const Value &value = *winner(Id::LineHeight).value;
    LineHeight height;
    const double size = mStyle->font().size;
    if (const ComputedStyle *from = sourceOf(Id::LineHeight, value)) {
        height = from->text().lineHeight;
    } else if (value.kind == Value::Kind::Number) {
        height = {LineHeight::Kind::Number, float(std::clamp(value.number, 0.0, 100000.0))};
    } else if (value.kind != Value::Kind::Word) {
        const double px = length(value, size).resolve(size);
        height = {LineHeight::Kind::Fixed, float(std::clamp(px, 0.0, 100000.0))};
    }
    if (!(mStyle->text().lineHeight == height)) mStyle->writeText().lineHeight = height;
}

} // namespace css
