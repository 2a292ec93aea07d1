// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/GridGrammar.h"

/// What each shorthand sets. A longhand that it leaves out gets its initial value.
namespace css {

namespace {

using Id = PropertyId;
using Values = std::vector<PropertyValue>;
using Result = std::optional<Values>;

Value initial()
{
    return Value::of(Value::Kind::Initial);
}

/// One to four values, for top, right, bottom and left.
Result fourSides(const std::vector<Id> &ids, ValueReader &reader)
{
    std::vector<Value> values;
    while (!reader.atEnd() && values.size() < 4) {
        auto value = readLonghand(ids[0], reader);
        if (!value) return {};
        values.push_back(std::move(*value));
    }
    if (values.empty()) return {};
    static constexpr size_t from[4][4] = {{0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 1}, {0, 1, 2, 3}};
    Values result;
    for (size_t i = 0; i < 4; ++i)
        result.push_back({ids[i], values[from[values.size() - 1][i]]});
    return result;
}

/// Each longhand at most once, in any order.
Result anyOrder(const std::vector<Id> &ids, ValueReader &reader)
{
    std::vector<std::optional<Value>> found(ids.size());
    while (!reader.atEnd()) {
        bool taken = false;
        for (size_t i = 0; i < ids.size() && !taken; ++i) {
            if (found[i]) continue;
            found[i] = readLonghand(ids[i], reader);
            taken = found[i].has_value();
        }
        if (!taken) return {};
    }
    Values result;
    for (size_t i = 0; i < ids.size(); ++i)
        result.push_back({ids[i], found[i] ? *found[i] : initial()});
    return result;
}

Result border(ValueReader &reader)
{
    const auto one = anyOrder(longhandsOf(Shorthand::BorderTop), reader);
    if (!one) return {};
    Values result;
    for (const Id id : longhandsOf(Shorthand::Border)) {
        const size_t aspect = result.size() / 4; // widths, styles, colours
        result.push_back({id, (*one)[aspect].value});
    }
    return result;
}

Result borderRadius(ValueReader &reader)
{
    static constexpr size_t from[4][4] = {{0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 1}, {0, 1, 2, 3}};
    std::vector<Value> axes[2];
    for (auto &axis : axes) {
        while (axis.size() < 4) {
            auto length = reader.takeLength(ValueReader::Percent | ValueReader::NonNegative | ValueReader::Unitless);
            if (!length) break;
            axis.push_back(*length);
        }
        if (axis.empty()) return {};
        if (&axis == &axes[0] && !reader.takeSlash()) {
            axes[1] = axes[0];
            break;
        }
    }
    Values result;
    for (size_t i = 0; i < 4; ++i)
        result.push_back({longhandsOf(Shorthand::BorderRadius)[i],
                          Value::ofList({axes[0][from[axes[0].size() - 1][i]], axes[1][from[axes[1].size() - 1][i]]})});
    return result;
}

struct Place
{
    Value x, y;
};

/// One to four words and lengths of a position.
std::optional<Place> takePosition(ValueReader &reader)
{
    const size_t start = reader.position();
    // Which way round: "top left" and "center left" have the vertical one first.
    const auto tryOrder = [&](Id first, Id second) -> std::optional<Place> {
        reader.setPosition(start);
        const bool center = reader.peek().isIdent("center");
        const auto takeOne = [&reader](Id id) -> std::optional<Value> {
            const auto list = [&]() -> std::optional<Value> {
                // A single one of the list's grammar, without its commas.
                const size_t back = reader.position();
                auto value = readLonghand(id, reader);
                if (value && value->items.size() == 1) return value->items[0];
                reader.setPosition(back);
                return {};
            };
            return list();
        };
        auto a = takeOne(first);
        if (!a) return {};
        auto b = takeOne(second);
        if (!b && center && first == Id::BackgroundPositionX && reader.peek().isIdent("left")) return {};
        if (!b) b = Value::ofLength(50, Unit::Percent);
        return first == Id::BackgroundPositionX ? Place{*a, *b} : Place{*b, *a};
    };
    auto across = tryOrder(Id::BackgroundPositionX, Id::BackgroundPositionY);
    const size_t acrossEnd = reader.position();
    auto down = tryOrder(Id::BackgroundPositionY, Id::BackgroundPositionX);
    const size_t downEnd = reader.position();
    if (across && (!down || acrossEnd >= downEnd)) {
        reader.setPosition(acrossEnd);
        return across;
    }
    if (!down) reader.setPosition(start);
    return down;
}

} // namespace

std::optional<Value> readPlace(ValueReader &reader)
{
    const auto place = takePosition(reader);
    return place ? std::optional<Value>(Value::ofList({place->x, place->y})) : std::nullopt;
}

namespace {

Value firstOf(const Value &list)
{
    return list.items.empty() ? list : list.items[0];
}

/// Cuts a reader at the next comma outside of parentheses.
size_t layerEnd(const ValueReader &reader)
{
    size_t at = reader.position();
    while (at < reader.end() && !reader.tokens()[at].is(TokenType::Comma))
        at = skipComponent(reader.tokens(), at, reader.end());
    return at;
}

struct Layer
{
    std::optional<Value> image, repeat, attachment, x, y, size, origin, clip, color;
};

bool readLayer(ValueReader &reader, Layer &layer)
{
    while (!reader.atEnd()) {
        if (!layer.color && (layer.color = reader.takeColor())) continue;
        if (!layer.image && (layer.image = reader.takeImage())) continue;
        if (!layer.repeat)
            if (auto value = readLonghand(Id::BackgroundRepeat, reader)) {
                layer.repeat = firstOf(*value);
                continue;
            }
        if (!layer.attachment)
            if (auto value = readLonghand(Id::BackgroundAttachment, reader)) {
                layer.attachment = firstOf(*value);
                continue;
            }
        if (!layer.origin || !layer.clip)
            if (auto value = readLonghand(Id::BackgroundOrigin, reader)) {
                (layer.origin ? layer.clip : layer.origin) = firstOf(*value);
                continue;
            }
        if (layer.x) return false;
        const auto place = takePosition(reader);
        if (!place) return false;
        layer.x = place->x;
        layer.y = place->y;
        if (!reader.takeSlash()) continue;
        const auto size = readLonghand(Id::BackgroundSize, reader);
        if (!size) return false;
        layer.size = firstOf(*size);
    }
    if (layer.origin && !layer.clip) layer.clip = layer.origin;
    return true;
}

Result background(ValueReader &whole, const QString &text)
{
    std::vector<Layer> layers;
    for (;;) {
        const size_t end = layerEnd(whole);
        ValueReader reader(whole.tokens(), whole.position(), end, text, whole.mode());
        Layer layer;
        if (reader.atEnd() || !readLayer(reader, layer)) return {};
        if (layer.color && end != whole.end()) return {}; // only the last has one
        layers.push_back(std::move(layer));
        whole.setPosition(end);
        if (!whole.takeComma()) break;
    }
    const Value zero = Value::ofLength(0, Unit::Percent), first = Value::ofWord(0);
    const auto list = [&layers](std::optional<Value> Layer::*part, const Value &otherwise) {
        std::vector<Value> items;
        for (const Layer &layer : layers)
            items.push_back(layer.*part ? *(layer.*part) : otherwise);
        return Value::ofList(std::move(items));
    };
    Values result;
    result.push_back({Id::BackgroundColor, layers.back().color ? *layers.back().color : initial()});
    result.push_back({Id::BackgroundImage, list(&Layer::image, first)});
    result.push_back({Id::BackgroundRepeat, list(&Layer::repeat, Value::ofList({first, first}))});
    result.push_back({Id::BackgroundAttachment, list(&Layer::attachment, first)});
    result.push_back({Id::BackgroundPositionX, list(&Layer::x, zero)});
    result.push_back({Id::BackgroundPositionY, list(&Layer::y, zero)});
    result.push_back({Id::BackgroundSize, list(&Layer::size, Value::ofList({first, first}))});
    result.push_back({Id::BackgroundOrigin, list(&Layer::origin, Value::ofWord(1))});
    result.push_back({Id::BackgroundClip, list(&Layer::clip, first)});
    return result;
}

Result backgroundPosition(ValueReader &reader)
{
    std::vector<Value> xs, ys;
    do {
        const auto place = takePosition(reader);
        if (!place) return {};
        xs.push_back(place->x);
        ys.push_back(place->y);
    } while (reader.takeComma());
    return Values{{Id::BackgroundPositionX, Value::ofList(std::move(xs))},
                  {Id::BackgroundPositionY, Value::ofList(std::move(ys))}};
}

Result font(ValueReader &reader)
{
    Values result;
    for (const Id id : longhandsOf(Shorthand::Font))
        result.push_back({id, initial()});
    enum { Style, Variant, Weight, Stretch, Size, Line, Family };
    for (const char *system : {"caption", "icon", "menu", "message-box", "small-caption", "status-bar"})
        if (reader.takeWord(system)) {
            result[Size].value = Value::ofLength(13.333, Unit::Px);
            result[Family].value = Value::ofList({Value::ofText(Value::Kind::Raw, QStringLiteral("system-ui"))});
            return result;
        }
    for (int count = 0; count < 4; ++count) {
        if (reader.takeWord("normal")) continue;
        bool taken = false;
        for (const int part : {Style, Variant, Weight, Stretch}) {
            if (taken || (part == Weight && reader.peek().is(TokenType::Dimension))) continue;
            if (part == Stretch && !reader.peek().is(TokenType::Ident)) continue;
            if (auto value = readLonghand(result[size_t(part)].id, reader)) {
                result[size_t(part)].value = *value;
                taken = true;
            }
        }
        if (!taken) break;
    }
    auto size = readLonghand(Id::FontSize, reader);
    if (!size) return {};
    result[Size].value = *size;
    if (reader.takeSlash()) {
        auto line = readLonghand(Id::LineHeight, reader);
        if (!line) return {};
        result[Line].value = *line;
    }
    auto family = readLonghand(Id::FontFamily, reader);
    if (!family) return {};
    result[Family].value = *family;
    return result;
}

Result listStyle(ValueReader &reader)
{
    std::optional<Value> type, position, image;
    int nones = 0;
    while (!reader.atEnd()) {
        if (reader.takeWord("none")) {
            ++nones;
            continue;
        }
        if (!position && (position = readLonghand(Id::ListStylePosition, reader))) continue;
        if (!image && (image = reader.takeImage())) continue;
        if (!type && (type = readLonghand(Id::ListStyleType, reader))) continue;
        return {};
    }
    if (nones + int(type.has_value()) + int(image.has_value()) > 2) return {};
    if (nones && !type) type = Value::ofWord(0);
    return Values{{Id::ListStyleType, type ? *type : initial()},
                  {Id::ListStylePosition, position ? *position : initial()},
                  {Id::ListStyleImage, image ? *image : initial()}};
}

/// Two of one kind, the second as the first where it is missing.
Result pair(const std::vector<Id> &ids, ValueReader &reader)
{
    const auto first = readLonghand(ids[0], reader);
    if (!first) return {};
    const auto second = readLonghand(ids[1], reader);
    return Values{{ids[0], *first}, {ids[1], second ? *second : *first}};
}

Result flex(ValueReader &reader)
{
    const auto make = [](double grow, double shrink, Value basis) {
        return Values{{Id::FlexGrow, Value::ofNumber(grow)},
                      {Id::FlexShrink, Value::ofNumber(shrink)},
                      {Id::FlexBasis, std::move(basis)}};
    };
    if (reader.takeWord("none")) return make(0, 0, Value::ofWord(0));
    std::optional<Value> grow, shrink, basis;
    while (!reader.atEnd()) {
        if (!grow && (grow = readLonghand(Id::FlexGrow, reader))) {
            shrink = readLonghand(Id::FlexShrink, reader);
            continue;
        }
        if (!basis && (basis = readLonghand(Id::FlexBasis, reader))) continue;
        return {};
    }
    if (!grow && !basis) return {};
    return make(grow ? grow->number : 1, shrink ? shrink->number : 1,
                basis ? *basis : Value::ofLength(0, Unit::Percent));
}

} // namespace

std::optional<std::vector<PropertyValue>> readShorthand(Shorthand shorthand, ValueReader &reader)
{
    const std::vector<Id> &ids = longhandsOf(shorthand);
    switch (shorthand) {
    case Shorthand::Margin:
    case Shorthand::Padding:
    case Shorthand::Inset:
    case Shorthand::BorderWidth:
    case Shorthand::BorderStyle:
    case Shorthand::BorderColor:
        return fourSides(ids, reader);
    case Shorthand::Border:
        return border(reader);
    case Shorthand::BorderRadius:
        return borderRadius(reader);
    case Shorthand::Background:
        return background(reader, reader.text());
    case Shorthand::BackgroundPosition:
        return backgroundPosition(reader);
    case Shorthand::Font:
        return font(reader);
    case Shorthand::ListStyle:
        return listStyle(reader);
    case Shorthand::Overflow:
    case Shorthand::Gap:
    case Shorthand::MarginInline:
    case Shorthand::MarginBlock:
    case Shorthand::PaddingInline:
    case Shorthand::PaddingBlock:
    case Shorthand::InsetInline:
    case Shorthand::InsetBlock:
        return pair(ids, reader);
    case Shorthand::Flex:
        return flex(reader);
    case Shorthand::BorderTop:
    case Shorthand::BorderRight:
    case Shorthand::BorderBottom:
    case Shorthand::BorderLeft:
    case Shorthand::Outline:
    case Shorthand::TextDecoration:
    case Shorthand::FlexFlow:
    case Shorthand::Columns:
    case Shorthand::ColumnRule:
        return anyOrder(ids, reader);
    case Shorthand::PlaceContent:
    case Shorthand::PlaceItems:
    case Shorthand::PlaceSelf:
    case Shorthand::GridRow:
    case Shorthand::GridColumn:
    case Shorthand::GridArea:
    case Shorthand::GridTemplate:
    case Shorthand::Grid:
        return readGridShorthand(shorthand, reader);
    case Shorthand::None:
    case Shorthand::All:
        return {};
    }
    return {};
}

} // namespace css
