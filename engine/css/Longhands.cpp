// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/GridGrammar.h"

/// The grammar of each property: what `readLonghand` takes.
namespace css {

namespace {

using Result = std::optional<Value>;
constexpr unsigned percent = ValueReader::Percent;
constexpr unsigned nonNegative = ValueReader::NonNegative;
constexpr unsigned unitless = ValueReader::Unitless;

Result wordOf(PropertyId id, ValueReader &reader)
{
    const auto word = reader.takeWordOf(id);
    return word ? Result(Value::ofWord(*word)) : Result();
}

Result ofWords(ValueReader &reader, std::initializer_list<const char *> words)
{
    int number = 0;
    for (const char *word : words) {
        if (reader.takeWord(word)) return Value::ofWord(number);
        ++number;
    }
    return {};
}

/// Values between commas.
template <class Read> Result listOf(ValueReader &reader, Read read)
{
    std::vector<Value> items;
    do {
        Result item = read(reader);
        if (!item) return {};
        items.push_back(std::move(*item));
    } while (reader.takeComma());
    return Value::ofList(std::move(items));
}

Result fontFamily(ValueReader &reader)
{
    return listOf(reader, [](ValueReader &r) -> Result {
        if (auto string = r.takeString()) return string;
        QString name;
        while (r.peek().is(TokenType::Ident)) {
            if (!name.isEmpty()) name += u' ';
            name += r.peek().text;
            r.skip();
        }
        if (name.isEmpty()) return {};
        return Value::ofText(Value::Kind::Raw, name);
    });
}

Result fontSize(ValueReader &reader)
{
    // Words: 1 .. 8 the sizes, 9 larger, 10 smaller.
    static constexpr std::initializer_list<const char *> words{
        "", "xx-small", "x-small", "small", "medium", "large", "x-large", "xx-large", "xxx-large", "larger", "smaller"};
    if (Result word = ofWords(reader, words)) return word;
    return reader.takeLength(percent | nonNegative | unitless);
}

Result fontWeight(ValueReader &reader)
{
    // A number, or the words 1 bolder, 2 lighter.
    if (Result word = ofWords(reader, {"", "bolder", "lighter"})) return word;
    if (reader.takeWord("normal")) return Value::ofNumber(400);
    if (reader.takeWord("bold")) return Value::ofNumber(700);
    const double number = reader.peek().number;
    if (!reader.peek().is(TokenType::Number) || number < 1 || number > 1000) return {};
    return reader.takeNumber();
}

Result fontStretch(ValueReader &reader)
{
    static const std::pair<const char *, double> words[] = {
        {"normal", 100},   {"ultra-condensed", 50},  {"extra-condensed", 62.5},
        {"condensed", 75}, {"semi-condensed", 87.5}, {"semi-expanded", 112.5},
        {"expanded", 125}, {"extra-expanded", 150},  {"ultra-expanded", 200}};
    for (const auto &[word, value] : words)
        if (reader.takeWord(word)) return Value::ofNumber(value);
    if (!reader.peek().is(TokenType::Percentage) || reader.peek().number < 0) return {};
    const double number = reader.peek().number;
    reader.skip();
    return Value::ofNumber(number);
}

Result lineHeight(ValueReader &reader)
{
    if (reader.takeWord("normal")) return Value::ofWord(0);
    if (reader.peek().is(TokenType::Number)) {
        if (reader.peek().number < 0) return {};
        return reader.takeNumber();
    }
    return reader.takeLength(percent | nonNegative);
}

Result verticalAlign(ValueReader &reader)
{
    if (Result word = ofWords(reader, {"baseline", "sub", "super", "top", "text-top", "middle", "bottom", "text-bottom",
                                       "-webkit-baseline-middle"}))
        return word;
    return reader.takeLength(percent | unitless);
}

Result spacing(ValueReader &reader)
{
    if (reader.takeWord("normal")) return Value::ofWord(0);
    return reader.takeLength(unitless);
}

Result autoInteger(ValueReader &reader)
{
    if (reader.takeWord("auto")) return Value::ofWord(0);
    return reader.takeInteger();
}

Result listStyleType(ValueReader &reader)
{
    if (Result word = wordOf(PropertyId::ListStyleType, reader)) return word;
    if (auto string = reader.takeString()) return string;
    // Styles that we don't count in show as decimal numbers.
    if (!reader.peek().is(TokenType::Ident) || reader.peek().isIdent("inside") || reader.peek().isIdent("outside"))
        return {};
    Value value = Value::ofWord(4);
    value.text = reader.peek().text;
    reader.skip();
    return value;
}

Result cursor(ValueReader &reader)
{
    for (;;) {
        if (!reader.takeUrl()) break;
        while (reader.takeNumber()) {
        }
        if (!reader.takeComma()) return reader.atEnd() ? Result(Value::ofWord(0)) : Result();
    }
    return wordOf(PropertyId::Cursor, reader);
}

Result lengthPair(ValueReader &reader)
{
    const auto first = reader.takeLength(nonNegative | unitless);
    if (!first) return {};
    const auto second = reader.takeLength(nonNegative | unitless);
    return Value::ofList({*first, second ? *second : *first});
}

/// x, y, blur, spread, colour (Initial: currentcolor), Word 1 for inset.
Result shadow(PropertyId id, ValueReader &reader)
{
    if (reader.takeWord("none")) return Value::ofList({});
    return listOf(reader, [id](ValueReader &r) -> Result {
        const bool box = id == PropertyId::BoxShadow;
        std::vector<Value> parts(6, Value::ofLength(0, Unit::Px));
        parts[4] = Value::of(Value::Kind::CurrentColor);
        parts[5] = Value::ofWord(0);
        bool lengths = false;
        for (;;) {
            if (auto color = r.takeColor()) {
                parts[4] = *color;
            } else if (box && r.takeWord("inset")) {
                parts[5] = Value::ofWord(1);
            } else if (auto x = lengths ? std::nullopt : r.takeLength(unitless)) {
                lengths = true;
                parts[0] = *x;
                auto y = r.takeLength(unitless);
                if (!y) return {};
                parts[1] = *y;
                if (auto blur = r.takeLength(nonNegative | unitless)) {
                    parts[2] = *blur;
                    if (auto spread = box ? r.takeLength(unitless) : std::nullopt) parts[3] = *spread;
                }
            } else {
                break;
            }
        }
        if (!lengths) return {};
        return Value::ofList(std::move(parts));
    });
}

Result quotes(ValueReader &reader)
{
    if (reader.takeWord("none")) return Value::ofList({});
    if (reader.takeWord("auto")) return Value::of(Value::Kind::Initial);
    std::vector<Value> items;
    while (auto string = reader.takeString())
        items.push_back(*string);
    if (items.empty() || items.size() % 2) return {};
    return Value::ofList(std::move(items));
}

Result clip(ValueReader &reader)
{
    if (reader.takeWord("auto")) return Value::ofWord(0);
    if (!reader.peek().isFunction("rect")) return {};
    ValueReader arguments = reader.takeFunction();
    std::vector<Value> edges;
    while (!arguments.atEnd() && edges.size() < 4) {
        if (arguments.takeWord("auto"))
            edges.push_back(Value::ofWord(0));
        else if (auto length = arguments.takeLength(unitless))
            edges.push_back(*length);
        else
            return {};
        arguments.takeComma();
    }
    if (edges.size() != 4 || !arguments.atEnd()) return {};
    return Value::ofList(std::move(edges));
}

Result radius(ValueReader &reader)
{
    const auto first = reader.takeLength(percent | nonNegative | unitless);
    if (!first) return {};
    const auto second = reader.takeLength(percent | nonNegative | unitless);
    return Value::ofList({*first, second ? *second : *first});
}

/// Two words: how it repeats across and down.
Result repeat(ValueReader &reader)
{
    if (reader.takeWord("repeat-x")) return Value::ofList({Value::ofWord(0), Value::ofWord(1)});
    if (reader.takeWord("repeat-y")) return Value::ofList({Value::ofWord(1), Value::ofWord(0)});
    const auto one = [&reader] { return ofWords(reader, {"repeat", "no-repeat", "space", "round"}); };
    const Result x = one();
    if (!x) return {};
    const Result y = one();
    return Value::ofList({*x, y ? *y : *x});
}

/// A length or per cents; an edge with an offset behind it becomes a calculation.
Result position(ValueReader &reader, const char *start, const char *end)
{
    if (reader.takeWord("center")) return Value::ofLength(50, Unit::Percent);
    const bool fromStart = reader.takeWord(start);
    const bool fromEnd = !fromStart && reader.takeWord(end);
    if (!fromStart && !fromEnd) return reader.takeLength(percent | unitless);
    const auto offset = reader.takeLength(percent | unitless);
    if (!offset || fromStart) return offset ? *offset : Value::ofLength(fromEnd ? 100 : 0, Unit::Percent);
    Value value = Value::of(Value::Kind::Calc);
    value.text = QLatin1String(end) + u' ' + valueText(PropertyId::Width, *offset);
    value.items = {Value::ofLength(100, Unit::Percent)};
    for (Value term : offset->kind == Value::Kind::Calc ? offset->items : std::vector<Value>{*offset}) {
        term.number = -term.number;
        value.items.push_back(term);
    }
    return value;
}

/// Word 1 cover, 2 contain, or two of Word 0 (auto) and lengths.
Result backgroundSize(ValueReader &reader)
{
    if (Result word = ofWords(reader, {"", "cover", "contain"})) return word;
    const auto one = [&reader]() -> Result {
        if (reader.takeWord("auto")) return Value::ofWord(0);
        return reader.takeLength(percent | nonNegative | unitless);
    };
    const Result x = one();
    if (!x) return {};
    const Result y = one();
    return Value::ofList({*x, y ? *y : Value::ofWord(0)});
}

/// Word: flags of the lines.
Result decorationLine(ValueReader &reader)
{
    if (reader.takeWord("none")) return Value::ofWord(0);
    int flags = 0;
    for (bool found = true; found;) {
        found = false;
        for (const auto &[word, flag] : {std::pair("underline", 1), std::pair("overline", 2),
                                         std::pair("line-through", 4), std::pair("blink", 8)}) {
            if (!reader.takeWord(word)) continue;
            flags |= flag;
            found = true;
        }
    }
    return flags ? Result(Value::ofWord(flags)) : Result();
}

Result content(ValueReader &reader)
{
    if (reader.takeWord("normal")) return Value::ofWord(0);
    if (reader.takeWord("none")) return Value::ofWord(1);
    std::vector<Value> items;
    while (!reader.atEnd()) {
        if (auto string = reader.takeString()) {
            items.push_back(*string);
        } else if (auto url = reader.takeUrl()) {
            items.push_back(*url);
        } else if (Result quote = ofWords(reader, {"open-quote", "close-quote", "no-open-quote", "no-close-quote"})) {
            items.push_back(*quote);
        } else if (reader.peek().is(TokenType::Function)) {
            Value function = Value::ofText(Value::Kind::Function, reader.peek().text.toLower());
            const bool known = function.text == QLatin1String("attr") || function.text == QLatin1String("counter") ||
                               function.text == QLatin1String("counters");
            ValueReader arguments = reader.takeFunction();
            while (known && !arguments.atEnd()) {
                if (arguments.peek().is(TokenType::Ident) || arguments.peek().is(TokenType::String))
                    function.items.push_back(Value::ofText(Value::Kind::String, arguments.peek().text));
                arguments.skip();
                arguments.takeComma();
            }
            if (function.items.empty()) return {};
            items.push_back(std::move(function));
        } else {
            return {};
        }
    }
    return items.empty() ? Result() : Result(Value::ofList(std::move(items)));
}

/// Names with numbers behind them, alternating.
Result counters(PropertyId id, ValueReader &reader)
{
    if (reader.takeWord("none")) return Value::ofList({});
    std::vector<Value> items;
    while (reader.peek().is(TokenType::Ident)) {
        items.push_back(Value::ofText(Value::Kind::String, reader.peek().text));
        reader.skip();
        const auto number = reader.takeInteger();
        items.push_back(number ? *number : Value::ofNumber(id == PropertyId::CounterIncrement ? 1 : 0));
    }
    return items.empty() ? Result() : Result(Value::ofList(std::move(items)));
}

Result number(ValueReader &reader, double least)
{
    if (reader.peek().number < least) return {};
    return reader.takeNumber();
}

Result alpha(ValueReader &reader)
{
    if (reader.peek().is(TokenType::Percentage)) {
        const double value = reader.peek().number / 100;
        reader.skip();
        return Value::ofNumber(value);
    }
    return reader.takeNumber();
}

Result lengthGrammar(PropertyId id, Grammar grammar, ValueReader &reader)
{
    switch (grammar) {
    case Grammar::LengthPercent:
        return reader.takeLength(percent | unitless);
    case Grammar::Length:
        return reader.takeLength(unitless);
    case Grammar::Positive:
        return reader.takeLength(percent | nonNegative | unitless);
    case Grammar::AutoLength:
        if (reader.takeWord("auto")) return Value::ofWord(0);
        return reader.takeLength(percent | unitless);
    case Grammar::AutoPositive:
        if (reader.takeWord("auto")) return Value::ofWord(0);
        return reader.takeLength(nonNegative | unitless);
    case Grammar::Size:
    case Grammar::Gap:
        if (Result word = wordOf(id, reader)) return word;
        return reader.takeLength(percent | nonNegative | unitless);
    case Grammar::BorderWidth:
        if (Result word = wordOf(id, reader)) return word;
        return reader.takeLength(nonNegative | unitless);
    case Grammar::NumberOrLength:
        if (reader.peek().is(TokenType::Number) && reader.peek().number >= 0) return reader.takeNumber();
        return reader.takeLength(nonNegative);
    default:
        return {};
    }
}

Result backgroundGrammar(PropertyId id, Grammar grammar, ValueReader &reader)
{
    switch (grammar) {
    case Grammar::ImageList:
        return listOf(reader, [](ValueReader &r) { return r.takeImage(); });
    case Grammar::RepeatList:
        return listOf(reader, repeat);
    case Grammar::WordList:
        return listOf(reader, [id](ValueReader &r) { return wordOf(id, r); });
    case Grammar::PositionXList:
        return listOf(reader, [](ValueReader &r) { return position(r, "left", "right"); });
    case Grammar::PositionYList:
        return listOf(reader, [](ValueReader &r) { return position(r, "top", "bottom"); });
    case Grammar::SizeList:
        return listOf(reader, backgroundSize);
    default:
        return {};
    }
}

} // namespace

std::optional<Value> readLonghand(PropertyId id, ValueReader &reader)
{
    const Grammar grammar = propertyInfo(id).grammar;
    switch (grammar) {
    case Grammar::Words:
        return wordOf(id, reader);
    case Grammar::Color:
        return reader.takeColor();
    case Grammar::FontFamily:
        return fontFamily(reader);
    case Grammar::FontSize:
        return fontSize(reader);
    case Grammar::FontWeight:
        return fontWeight(reader);
    case Grammar::FontStretch:
        return fontStretch(reader);
    case Grammar::LineHeight:
        return lineHeight(reader);
    case Grammar::Spacing:
        return spacing(reader);
    case Grammar::Cursor:
        return cursor(reader);
    case Grammar::ListStyleType:
        return listStyleType(reader);
    case Grammar::Image:
        return reader.takeImage();
    case Grammar::LengthPair:
        return lengthPair(reader);
    case Grammar::Shadow:
        return shadow(id, reader);
    case Grammar::Quotes:
        return quotes(reader);
    case Grammar::VerticalAlign:
        return verticalAlign(reader);
    case Grammar::AutoInteger:
        return autoInteger(reader);
    case Grammar::Integer:
        return reader.takeInteger();
    case Grammar::PositiveInteger:
        return reader.peek().number < 1 ? Result() : reader.takeInteger();
    case Grammar::PositiveNumber:
        return number(reader, 0);
    case Grammar::Clip:
        return clip(reader);
    case Grammar::Radius:
        return radius(reader);
    case Grammar::DecorationLine:
        return decorationLine(reader);
    case Grammar::Alpha:
        return alpha(reader);
    case Grammar::Content:
        return content(reader);
    case Grammar::Counters:
        return counters(id, reader);
    case Grammar::Place:
        return readPlace(reader);
    case Grammar::Raw:
        return reader.takeRaw();
    case Grammar::Alignment:
    case Grammar::TrackList:
    case Grammar::AutoTracks:
    case Grammar::GridAreas:
    case Grammar::GridFlow:
    case Grammar::GridLine:
        return readGridLonghand(id, reader);
    case Grammar::ImageList:
    case Grammar::RepeatList:
    case Grammar::WordList:
    case Grammar::PositionXList:
    case Grammar::PositionYList:
    case Grammar::SizeList:
        return backgroundGrammar(id, grammar, reader);
    default:
        return lengthGrammar(id, grammar, reader);
    }
}

} // namespace css
