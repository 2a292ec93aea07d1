// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Property.h"
#include "engine/css/Tokenizer.h"

#include <QColor>
#include <optional>

namespace css {

enum class Unit : uint8_t { Px, Em, Rem, Ex, Ch, Vw, Vh, Vmin, Vmax, Percent, Number };
inline constexpr size_t unitCount = 11;

/// A value as declared, checked against its property's grammar, before anything is known of the element.
struct Value
{
    enum class Kind : uint8_t {
        Inherit,
        Initial,
        Unset,
        Word,   ///< `word` is the number of the enum that holds it
        Number, ///< `number`
        Length, ///< `number` of `unit`; per cents too
        Calc,   ///< `items`, lengths and comparisons, added up; `word` 1: at least nothing
        Comparison, ///< `word` 0 the smallest of `items`, 1 the largest, 2 the second between the others; `number` times
        Color,  ///< `rgb`
        CurrentColor,
        String,
        Url,       ///< `text`
        Raw,       ///< `text`, kept as written
        Function,  ///< `text` is the name, `items` the arguments
        List,      ///< `items`
        Unresolved ///< `text` holds var(); `shorthand` tells of which shorthand it is
    };

    Kind kind = Kind::Initial;
    Unit unit = Unit::Px;
    Shorthand shorthand = Shorthand::None;
    int word = 0;
    double number = 0;
    QRgb rgb = 0;
    QString text;
    std::vector<Value> items;

    static Value of(Kind kind)
    {
        Value value;
        value.kind = kind;
        return value;
    }
    static Value ofWord(int word)
    {
        Value value = of(Kind::Word);
        value.word = word;
        return value;
    }
    static Value ofNumber(double number)
    {
        Value value = of(Kind::Number);
        value.number = number;
        return value;
    }
    static Value ofLength(double number, Unit unit)
    {
        Value value = of(Kind::Length);
        value.number = number;
        value.unit = unit;
        return value;
    }
    static Value ofColor(QRgb rgb)
    {
        Value value = of(Kind::Color);
        value.rgb = rgb;
        return value;
    }
    static Value ofText(Kind kind, const QString &text)
    {
        Value value = of(kind);
        value.text = text;
        return value;
    }
    static Value ofList(std::vector<Value> items)
    {
        Value value = of(Kind::List);
        value.items = std::move(items);
        return value;
    }
    bool isWord(int w) const { return kind == Kind::Word && word == w; }
};

/// A longhand and what it was declared to be.
struct PropertyValue
{
    PropertyId id;
    Value value;
};

/// How leniently values are read.
enum class ValueMode : uint8_t {
    Strict,
    Quirks, ///< of a page in quirks mode: lengths without unit, colours without "#"
    Script  ///< as the style object takes them: lengths without unit, everywhere
};

/// What a declaration sets: the longhands of a shorthand, one value of a longhand. Nothing where the value is invalid.
/// `tokens` from `from` to `to` are the value without "!important"; `text` is what they were made of.
std::optional<std::vector<PropertyValue>> parseDeclaration(const QString &name, const Tokens &tokens, size_t from,
                                                           size_t to, const QString &text, ValueMode mode);
std::optional<std::vector<PropertyValue>> parseDeclaration(const QString &name, const QString &value, ValueMode mode);

/// As it is written. `id` gives the words their names.
QString valueText(PropertyId id, const Value &value);

} // namespace css
