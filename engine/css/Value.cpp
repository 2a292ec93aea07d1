// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Value.h"

#include "engine/css/Color.h"
#include "engine/css/ValueReader.h"

namespace css {

namespace {

bool containsVar(const Tokens &tokens, size_t from, size_t to)
{
    for (size_t i = from; i < to; ++i)
        if (tokens[i].isFunction("var")) return true;
    return false;
}

bool isBroken(const Tokens &tokens, size_t from, size_t to)
{
    for (size_t i = from; i < to; ++i)
        if (tokens[i].is(TokenType::BadString) || tokens[i].is(TokenType::BadUrl)) return true;
    return false;
}

std::vector<PropertyId> targets(PropertyId id, Shorthand shorthand)
{
    return shorthand == Shorthand::None ? std::vector<PropertyId>{id} : longhandsOf(shorthand);
}

} // namespace

std::optional<std::vector<PropertyValue>> parseDeclaration(const QString &name, const Tokens &tokens, size_t from,
                                                           size_t to, const QString &text, ValueMode mode)
{
    const PropertyId id = propertyId(name);
    if (id == PropertyId::Custom)
        return std::vector<PropertyValue>{{id, Value::ofText(Value::Kind::Raw, sourceOf(tokens, from, to, text))}};
    const Shorthand shorthand = shorthandId(name);
    if (id == PropertyId::Unknown && shorthand == Shorthand::None) return {};
    ValueReader reader(tokens, from, to, text, mode);
    if (reader.atEnd() || isBroken(tokens, from, to)) return {};
    std::optional<Value> wide;
    if (containsVar(tokens, from, to)) {
        wide = Value::ofText(Value::Kind::Unresolved, reader.restText());
        wide->shorthand = shorthand;
        reader.setPosition(reader.end());
    } else if (reader.takeWord("inherit")) {
        wide = Value::of(Value::Kind::Inherit);
    } else if (reader.takeWord("initial")) {
        wide = Value::of(Value::Kind::Initial);
    } else if (reader.takeWord("unset") || reader.takeWord("revert") || reader.takeWord("revert-layer")) {
        wide = Value::of(Value::Kind::Unset);
    }
    if (wide) {
        if (!reader.atEnd()) return {};
        std::vector<PropertyValue> values;
        for (const PropertyId target : targets(id, shorthand))
            values.push_back({target, *wide});
        return values;
    }
    if (shorthand != Shorthand::None) {
        auto values = readShorthand(shorthand, reader);
        if (!values || !reader.atEnd()) return {};
        return values;
    }
    auto value = readLonghand(id, reader);
    if (!value || !reader.atEnd()) return {};
    return std::vector<PropertyValue>{{id, std::move(*value)}};
}

std::optional<std::vector<PropertyValue>> parseDeclaration(const QString &name, const QString &value, ValueMode mode)
{
    const Tokens tokens = tokenize(value);
    return parseDeclaration(name, tokens, 0, tokens.size() - 1, value, mode);
}

namespace {

QString wordText(PropertyId id, int word)
{
    for (const auto &[text, number] : propertyInfo(id).words)
        if (number == word) return text;
    static const char *const sizes[] = {"medium",  "xx-small", "x-small",   "small",  "medium", "large",
                                        "x-large", "xx-large", "xxx-large", "larger", "smaller"};
    static const char *const aligns[] = {
        "baseline", "sub", "super", "top", "text-top", "middle", "bottom", "text-bottom", "-webkit-baseline-middle"};
    switch (propertyInfo(id).grammar) {
    case Grammar::FontSize:
        return QString::fromLatin1(sizes[std::clamp(word, 0, 10)]);
    case Grammar::VerticalAlign:
        return QString::fromLatin1(aligns[std::clamp(word, 0, 8)]);
    case Grammar::FontWeight:
        return word == 1 ? QStringLiteral("bolder") : QStringLiteral("lighter");
    case Grammar::LineHeight:
        return QStringLiteral("normal");
    case Grammar::Alignment:
        return id == PropertyId::AlignSelf || id == PropertyId::JustifySelf ? QStringLiteral("auto") : QStringLiteral("normal");
    case Grammar::TrackList:
    case Grammar::GridAreas:
        return QStringLiteral("none");
    case Grammar::GridFlow: {
        static const char *const flows[] = {"row", "column", "row dense", "column dense"};
        return QString::fromLatin1(flows[word & 3]);
    }
    case Grammar::Image:
    case Grammar::ImageList:
        return QStringLiteral("none");
    case Grammar::Content:
        return word ? QStringLiteral("none") : QStringLiteral("normal");
    case Grammar::SizeList:
        return QString::fromLatin1(word == 1 ? "cover" : word == 2 ? "contain" : "auto");
    case Grammar::RepeatList: {
        static const char *const repeats[] = {"repeat", "no-repeat", "space", "round"};
        return QString::fromLatin1(repeats[word & 3]);
    }
    case Grammar::DecorationLine: {
        QStringList lines;
        if (word & 1) lines << QStringLiteral("underline");
        if (word & 2) lines << QStringLiteral("overline");
        if (word & 4) lines << QStringLiteral("line-through");
        if (word & 8) lines << QStringLiteral("blink");
        return lines.isEmpty() ? QStringLiteral("none") : lines.join(u' ');
    }
    default:
        return QStringLiteral("auto");
    }
}

QString repeatText(const Value &value)
{
    const int x = value.items[0].word, y = value.items[1].word;
    if (x == 0 && y == 1) return QStringLiteral("repeat-x");
    if (x == 1 && y == 0) return QStringLiteral("repeat-y");
    const QString first = wordText(PropertyId::BackgroundRepeat, x);
    return x == y ? first : first + u' ' + wordText(PropertyId::BackgroundRepeat, y);
}

QString lengthText(const Value &value)
{
    static const char *const names[] = {"px", "em", "rem", "ex", "ch", "vw", "vh", "vmin", "vmax", "%", ""};
    if (!value.text.isEmpty()) return value.text;
    return QString::number(value.number) + QString::fromLatin1(names[size_t(value.unit)]);
}

QString initialText(PropertyId id)
{
    switch (propertyInfo(id).grammar) {
    case Grammar::Words:
        if (id == PropertyId::Display) return QStringLiteral("inline");
        if (id == PropertyId::Hyphens) return QStringLiteral("manual");
        return wordText(id, 0);
    case Grammar::Color:
        return id == PropertyId::BackgroundColor ? QStringLiteral("transparent") : QStringLiteral("currentcolor");
    case Grammar::BorderWidth:
        return QStringLiteral("medium");
    case Grammar::ListStyleType:
        return QStringLiteral("disc");
    case Grammar::FontSize:
        return QStringLiteral("medium");
    case Grammar::FontWeight:
    case Grammar::FontStretch:
        return QStringLiteral("normal");
    default:
        return wordText(id, 0);
    }
}

QString listText(PropertyId id, const Value &value)
{
    const Grammar grammar = propertyInfo(id).grammar;
    if (grammar == Grammar::Radius || grammar == Grammar::LengthPair) {
        const QString first = lengthText(value.items[0]), second = lengthText(value.items[1]);
        return first == second ? first : first + u' ' + second;
    }
    QStringList parts;
    for (const Value &item : value.items) {
        if (grammar == Grammar::RepeatList && item.kind == Value::Kind::List)
            parts << repeatText(item);
        else if (grammar == Grammar::SizeList && item.kind == Value::Kind::List)
            parts << valueText(id, item.items[0]) + u' ' + valueText(id, item.items[1]);
        else
            parts << valueText(id, item);
    }
    return parts.join(QStringLiteral(", "));
}

} // namespace

QString valueText(PropertyId id, const Value &value)
{
    switch (value.kind) {
    case Value::Kind::Inherit:
        return QStringLiteral("inherit");
    case Value::Kind::Unset:
        return QStringLiteral("unset");
    case Value::Kind::Initial:
        return initialText(id);
    case Value::Kind::Word:
        return value.text.isEmpty() ? wordText(id, value.word) : value.text;
    case Value::Kind::Number:
        return QString::number(value.number);
    case Value::Kind::Calc:
    case Value::Kind::Comparison: // stands in a sum, which keeps its text
    case Value::Kind::Length:
        return lengthText(value);
    case Value::Kind::Color:
        return value.text.isEmpty() ? colorText(value.rgb) : value.text;
    case Value::Kind::CurrentColor:
        return QStringLiteral("currentcolor");
    case Value::Kind::String:
        return quoteString(value.text);
    case Value::Kind::Url:
        return QStringLiteral("url(%1)").arg(quoteString(value.text));
    case Value::Kind::Raw:
        return value.text;
    case Value::Kind::List:
        return value.text.isEmpty() ? listText(id, value) : value.text;
    case Value::Kind::Function:
        return value.text;
    case Value::Kind::Unresolved:
        return {};
    }
    return {};
}

} // namespace css
