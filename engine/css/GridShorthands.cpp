// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/GridGrammar.h"

/// Shorthands of box alignment and of grids (CSS Grid Layout 1, 7.4, 7.8, 8.4; CSS Box Alignment 3, 5 to 7).
namespace css {

namespace {

using Id = PropertyId;
using Values = std::vector<PropertyValue>;
using Result = std::optional<Values>;

Value initial()
{
    return Value::of(Value::Kind::Initial);
}

/// The second as the first where it is missing.
Result place(const std::vector<Id> &ids, ValueReader &reader)
{
    const auto first = readGridLonghand(ids[0], reader);
    if (!first) return {};
    if (!reader.atEnd()) {
        const auto second = readGridLonghand(ids[1], reader);
        return second ? Result(Values{{ids[0], *first}, {ids[1], *second}}) : Result();
    }
    // What only columns of a block know isn't taken over.
    const auto align = Align(first->word & 63);
    const bool baseline = align == Align::Baseline || align == Align::LastBaseline;
    const bool content = ids[1] == Id::JustifyContent;
    return Values{{ids[0], *first}, {ids[1], baseline && content ? Value::ofWord(int(Align::Start)) : *first}};
}

/// A name that is left out is that of the opposite line, if that is a name alone.
Value opposite(const Value &line)
{
    const bool nameAlone = line.kind == Value::Kind::List && line.word == int(GridLine::Kind::Line) && line.number == 0;
    return nameAlone ? line : initial();
}

Result lines(const std::vector<Id> &ids, ValueReader &reader)
{
    std::vector<Value> given;
    do {
        auto line = readGridLonghand(ids[0], reader);
        if (!line) return {};
        given.push_back(std::move(*line));
    } while (given.size() < ids.size() && reader.takeSlash());
    // Of grid-area: row start, column start, row end, column end.
    if (ids.size() == 4) {
        if (given.size() < 2) given.push_back(opposite(given[0]));
        if (given.size() < 3) given.push_back(opposite(given[0]));
        if (given.size() < 4) given.push_back(opposite(given[1]));
    } else if (given.size() < 2) {
        given.push_back(opposite(given[0]));
    }
    Values result;
    for (size_t i = 0; i < ids.size(); ++i)
        result.push_back({ids[i], given[i]});
    return result;
}

/// [names]? "a b" size? [names]? ... / columns
Result templateWithAreas(ValueReader &reader)
{
    Value rows = Value::ofList({}), areas = Value::ofList({});
    QStringList names;
    const size_t from = reader.position();
    while (!reader.atEnd()) {
        if (reader.peek().is(TokenType::String)) {
            names << reader.peek().text;
            areas.items.push_back(*reader.takeString());
            // A size, or auto where none is told.
            ValueReader one = reader;
            auto size = reader.peek().is(TokenType::OpenSquare) ? std::nullopt : readGridLonghand(Id::GridAutoRows, one);
            if (size && size->items.size() == 1) {
                rows.items.push_back(size->items[0]);
                reader.setPosition(one.position());
            } else if (size) {
                return {};
            } else {
                rows.items.push_back(Value::ofWord(0));
            }
            continue;
        }
        if (!reader.peek().is(TokenType::OpenSquare)) break;
        const Tokens &tokens = reader.tokens();
        Value group = Value::ofList({});
        for (size_t at = reader.position() + 1; at < reader.end() && !tokens[at].is(TokenType::CloseSquare); ++at)
            if (tokens[at].is(TokenType::Ident)) group.items.push_back(Value::ofText(Value::Kind::String, tokens[at].text));
        rows.items.push_back(std::move(group));
        reader.skip();
    }
    if (names.isEmpty() || !gridAreas(names)) return {};
    areas.text = sourceOf(reader.tokens(), from, reader.position(), reader.text());
    rows.text = areas.text;
    QStringList quoted;
    for (const QString &row : names)
        quoted << quoteString(row);
    areas.text = quoted.join(u' ');
    Value columns = initial();
    if (reader.takeSlash()) {
        const auto given = readGridLonghand(Id::GridTemplateColumns, reader);
        if (!given) return {};
        columns = *given;
    }
    return Values{{Id::GridTemplateRows, rows}, {Id::GridTemplateColumns, columns}, {Id::GridTemplateAreas, areas}};
}

Result gridTemplate(ValueReader &reader)
{
    const size_t from = reader.position();
    if (reader.takeWord("none") && reader.atEnd())
        return Values{{Id::GridTemplateRows, initial()}, {Id::GridTemplateColumns, initial()}, {Id::GridTemplateAreas, initial()}};
    reader.setPosition(from);
    if (const auto rows = readGridLonghand(Id::GridTemplateRows, reader); rows && reader.takeSlash()) {
        const auto columns = readGridLonghand(Id::GridTemplateColumns, reader);
        if (!columns) return {};
        return Values{{Id::GridTemplateRows, *rows}, {Id::GridTemplateColumns, *columns}, {Id::GridTemplateAreas, initial()}};
    }
    reader.setPosition(from);
    return templateWithAreas(reader);
}

/// auto-flow and dense, in any order; whether auto-flow was there.
bool takeAutoFlow(ValueReader &reader, bool &dense)
{
    dense = reader.takeWord("dense");
    const bool flow = reader.takeWord("auto-flow");
    dense = dense || (flow && reader.takeWord("dense"));
    return flow;
}

Result grid(ValueReader &reader)
{
    const size_t from = reader.position();
    Value flow = initial(), autoRows = initial(), autoColumns = initial(), rows = initial(), columns = initial();
    const auto result = [&] {
        return Values{{Id::GridTemplateRows, rows}, {Id::GridTemplateColumns, columns}, {Id::GridTemplateAreas, initial()},
                      {Id::GridAutoRows, autoRows}, {Id::GridAutoColumns, autoColumns}, {Id::GridAutoFlow, flow}};
    };
    bool dense = false;
    if (takeAutoFlow(reader, dense)) {
        flow = Value::ofWord(dense ? 2 : 0);
        if (auto tracks = readGridLonghand(Id::GridAutoRows, reader)) autoRows = *tracks;
        if (!reader.takeSlash()) return {};
        const auto given = readGridLonghand(Id::GridTemplateColumns, reader);
        if (!given) return {};
        columns = *given;
        return result();
    }
    reader.setPosition(from);
    if (const auto given = readGridLonghand(Id::GridTemplateRows, reader); given && reader.takeSlash() && takeAutoFlow(reader, dense)) {
        rows = *given;
        flow = Value::ofWord(dense ? 3 : 1);
        if (auto tracks = readGridLonghand(Id::GridAutoColumns, reader)) autoColumns = *tracks;
        return result();
    }
    reader.setPosition(from);
    Result values = gridTemplate(reader);
    if (values)
        for (const Id id : {Id::GridAutoRows, Id::GridAutoColumns, Id::GridAutoFlow}) values->push_back({id, initial()});
    return values;
}

} // namespace

std::optional<std::vector<PropertyValue>> readGridShorthand(Shorthand shorthand, ValueReader &reader)
{
    const std::vector<Id> &ids = longhandsOf(shorthand);
    switch (shorthand) {
    case Shorthand::PlaceContent:
    case Shorthand::PlaceItems:
    case Shorthand::PlaceSelf:
        return place(ids, reader);
    case Shorthand::GridRow:
    case Shorthand::GridColumn:
    case Shorthand::GridArea:
        return lines(ids, reader);
    case Shorthand::GridTemplate:
        return gridTemplate(reader);
    case Shorthand::Grid:
        return grid(reader);
    default:
        return {};
    }
}

} // namespace css
