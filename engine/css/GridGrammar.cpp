// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/GridGrammar.h"

#include "engine/css/GridValues.h"

#include <QSet>

/// The grammar of box alignment and of grids. How values are held: an alignment is a Word of `Align`, plus 64 where it
/// is safe. A list of tracks is a List: lengths, Words (0 auto, 1 min-content, 2 max-content), Numbers for fractions,
/// functions, and Lists of Strings for the names of lines. A line is a List whose word is the `GridLine::Kind`.
namespace css {

namespace {

using Result = std::optional<Value>;
using Id = PropertyId;
constexpr int mostRepeats = 1000; // tracks beyond are of no use to anybody

Result withSource(Result value, const ValueReader &reader, size_t from)
{
    if (value) value->text = sourceOf(reader.tokens(), from, reader.position(), reader.text());
    return value;
}

struct AlignWord
{
    const char *word;
    Align align;
};

std::optional<Align> takeOf(ValueReader &reader, std::initializer_list<AlignWord> words)
{
    for (const AlignWord &each : words)
        if (reader.takeWord(each.word)) return each.align;
    return {};
}

Result alignWord(Align align, bool safe = false)
{
    return Value::ofWord(int(align) | (safe ? 64 : 0));
}

Result readAlign(Id id, ValueReader &reader)
{
    const bool content = id == Id::AlignContent || id == Id::JustifyContent;
    const bool justify = id == Id::JustifyContent || id == Id::JustifyItems || id == Id::JustifySelf;
    const bool self = id == Id::AlignSelf || id == Id::JustifySelf;
    if (const auto word = takeOf(reader, {{"normal", Align::Normal}, {"stretch", Align::Stretch}})) return alignWord(*word);
    if (self && reader.takeWord("auto")) return alignWord(Align::Auto);
    if (content)
        if (const auto word = takeOf(reader, {{"space-between", Align::SpaceBetween},
                                              {"space-around", Align::SpaceAround},
                                              {"space-evenly", Align::SpaceEvenly}}))
            return alignWord(*word);
    if (id == Id::JustifyItems && reader.takeWord("legacy")) {
        const auto side = takeOf(reader, {{"left", Align::Left}, {"right", Align::Right}, {"center", Align::Center}});
        return alignWord(side.value_or(Align::Normal));
    }
    if (id != Id::JustifyContent) {
        if (reader.takeWord("baseline")) return alignWord(Align::Baseline);
        const bool first = reader.takeWord("first"), last = !first && reader.takeWord("last");
        if (first || last)
            return reader.takeWord("baseline") ? alignWord(last ? Align::LastBaseline : Align::Baseline) : Result();
    }
    const bool safe = reader.takeWord("safe");
    if (!safe) reader.takeWord("unsafe");
    auto place = takeOf(reader, {{"center", Align::Center},
                                 {"start", Align::Start},
                                 {"end", Align::End},
                                 {"flex-start", Align::FlexStart},
                                 {"flex-end", Align::FlexEnd}});
    if (!place && !content) place = takeOf(reader, {{"self-start", Align::SelfStart}, {"self-end", Align::SelfEnd}});
    if (!place && justify) place = takeOf(reader, {{"left", Align::Left}, {"right", Align::Right}});
    return place ? alignWord(*place, safe) : Result();
}

// ---- Tracks ----

bool isReserved(const Token &token)
{
    return token.isIdent("auto") || token.isIdent("span") || token.isIdent("none") || token.isIdent("inherit") ||
           token.isIdent("initial") || token.isIdent("unset");
}

/// [a b]; nothing where no bracket stands.
Result lineNames(ValueReader &reader)
{
    if (!reader.peek().is(TokenType::OpenSquare)) return {};
    const Tokens &tokens = reader.tokens();
    Value names = Value::ofList({});
    size_t at = reader.position() + 1;
    for (; at < reader.end() && !tokens[at].is(TokenType::CloseSquare); ++at) {
        if (tokens[at].is(TokenType::Whitespace)) continue;
        if (!tokens[at].is(TokenType::Ident) || isReserved(tokens[at])) return {};
        names.items.push_back(Value::ofText(Value::Kind::String, tokens[at].text));
    }
    if (at >= reader.end()) return {};
    reader.skip();
    return names;
}

Result breadth(ValueReader &reader, bool fractions)
{
    if (reader.takeWord("auto")) return Value::ofWord(0);
    if (reader.takeWord("min-content")) return Value::ofWord(1);
    if (reader.takeWord("max-content")) return Value::ofWord(2);
    const Token &token = reader.peek();
    if (token.is(TokenType::Dimension) && token.text == QLatin1String("fr")) {
        if (!fractions || token.number < 0) return {};
        Value value = Value::ofNumber(token.number);
        reader.skip();
        return value;
    }
    return reader.takeLength(ValueReader::Percent | ValueReader::NonNegative);
}

Result trackSize(ValueReader &reader)
{
    if (reader.peek().isFunction("minmax")) {
        ValueReader arguments = reader.takeFunction();
        Value value = Value::ofText(Value::Kind::Function, QStringLiteral("minmax"));
        const Result low = breadth(arguments, false);
        if (!low || !arguments.takeComma()) return {};
        const Result high = breadth(arguments, true);
        if (!high || !arguments.atEnd()) return {};
        value.items = {*low, *high};
        return value;
    }
    if (reader.peek().isFunction("fit-content")) {
        ValueReader arguments = reader.takeFunction();
        Value value = Value::ofText(Value::Kind::Function, QStringLiteral("fit-content"));
        const Result limit = arguments.takeLength(ValueReader::Percent | ValueReader::NonNegative);
        if (!limit || !arguments.atEnd()) return {};
        value.items = {*limit};
        return value;
    }
    return breadth(reader, true);
}

/// repeat(): word is the count, -1 auto-fill, -2 auto-fit.
Result repeatFunction(ValueReader &reader)
{
    ValueReader arguments = reader.takeFunction();
    Value value = Value::ofText(Value::Kind::Function, QStringLiteral("repeat"));
    if (arguments.takeWord("auto-fill")) {
        value.word = -1;
    } else if (arguments.takeWord("auto-fit")) {
        value.word = -2;
    } else {
        const Result count = arguments.takeInteger();
        if (!count || count->number < 1) return {};
        value.word = int(std::min(count->number, double(mostRepeats)));
    }
    if (!arguments.takeComma()) return {};
    bool any = false;
    while (!arguments.atEnd()) {
        Result item = lineNames(arguments);
        if (!item) {
            item = trackSize(arguments);
            any = any || item;
        }
        if (!item) return {};
        value.items.push_back(std::move(*item));
    }
    return any ? Result(value) : Result();
}

/// Up to something that is no track; nothing where there is none.
Result readTracks(ValueReader &reader, bool repeats)
{
    const size_t from = reader.position();
    if (reader.takeWord("none")) return withSource(Value::ofList({}), reader, from);
    Value list = Value::ofList({});
    bool any = false, automatic = false;
    while (!reader.atEnd()) {
        Result item = lineNames(reader);
        if (!item && repeats && reader.peek().isFunction("repeat")) {
            item = repeatFunction(reader);
            if (!item) return {};
            if (item->word < 0 && automatic) return {}; // only one repetition may depend on the room
            automatic = automatic || item->word < 0;
            any = true;
        } else if (!item) {
            item = trackSize(reader);
            any = any || item;
        }
        if (!item) break;
        list.items.push_back(std::move(*item));
    }
    return any ? withSource(list, reader, from) : Result();
}

Result readAutoTracks(ValueReader &reader)
{
    const size_t from = reader.position();
    Value list = Value::ofList({});
    while (!reader.atEnd()) {
        Result item = trackSize(reader);
        if (!item) break;
        list.items.push_back(std::move(*item));
    }
    return list.items.empty() ? Result() : withSource(list, reader, from);
}

Result readAreas(ValueReader &reader)
{
    const size_t from = reader.position();
    if (reader.takeWord("none")) return withSource(Value::ofList({}), reader, from);
    Value list = Value::ofList({});
    while (auto row = reader.takeString())
        list.items.push_back(std::move(*row));
    QStringList rows;
    for (const Value &row : list.items)
        rows << row.text;
    if (rows.isEmpty() || !gridAreas(rows)) return {};
    return withSource(list, reader, from);
}

Result readFlow(ValueReader &reader)
{
    bool row = false, column = false, dense = false;
    for (;;) {
        if (!row && !column && reader.takeWord("row"))
            row = true;
        else if (!row && !column && reader.takeWord("column"))
            column = true;
        else if (!dense && reader.takeWord("dense"))
            dense = true;
        else
            break;
    }
    if (!row && !column && !dense) return {};
    return Value::ofWord((column ? 1 : 0) | (dense ? 2 : 0));
}

Result readLine(ValueReader &reader)
{
    const size_t from = reader.position();
    Value line = Value::ofList({});
    if (reader.takeWord("auto")) return withSource(line, reader, from);
    line.word = int(GridLine::Kind::Line);
    for (bool found = true; found && !reader.atEnd();) {
        found = false;
        if (line.word != int(GridLine::Kind::Span) && reader.takeWord("span")) {
            line.word = int(GridLine::Kind::Span);
            found = true;
        } else if (const Result number = line.number == 0 ? reader.takeInteger() : Result()) {
            if (number->number == 0) return {};
            line.number = std::clamp(number->number, -10000.0, 10000.0);
            found = true;
        } else if (line.items.empty() && reader.peek().is(TokenType::Ident) && !isReserved(reader.peek())) {
            line.items.push_back(Value::ofText(Value::Kind::String, reader.peek().text));
            reader.skip();
            found = true;
        }
    }
    const bool span = line.word == int(GridLine::Kind::Span);
    if ((line.number == 0 && line.items.empty()) || (span && line.number < 0)) return {};
    return withSource(line, reader, from);
}

} // namespace

std::optional<GridAreas> gridAreas(const QStringList &rows)
{
    GridAreas result;
    result.rows = int(rows.size());
    std::vector<QStringList> cells;
    for (const QString &row : rows) {
        QString spaced = row;
        const QStringList words = spaced.simplified().split(u' ', Qt::SkipEmptyParts);
        if (words.isEmpty() || (!cells.empty() && words.size() != cells.front().size())) return {};
        cells.push_back(words);
    }
    result.columns = int(cells.front().size());
    QSet<QString> done;
    for (int r = 0; r < result.rows; ++r)
        for (int c = 0; c < result.columns; ++c) {
            const QString &name = cells[size_t(r)][c];
            if (name.count(u'.') == name.size() || done.contains(name)) continue;
            done.insert(name);
            GridArea area{name, r, r, c, c};
            while (area.columnEnd < result.columns && cells[size_t(r)][area.columnEnd] == name) ++area.columnEnd;
            while (area.rowEnd < result.rows && cells[size_t(area.rowEnd)][c] == name) ++area.rowEnd;
            int filled = 0;
            for (const QStringList &words : cells) filled += int(words.count(name));
            bool whole = filled == (area.rowEnd - area.rowStart) * (area.columnEnd - area.columnStart);
            for (int y = area.rowStart; y < area.rowEnd; ++y)
                for (int x = area.columnStart; x < area.columnEnd; ++x) whole = whole && cells[size_t(y)][x] == name;
            if (!whole) return {}; // an area must be a rectangle
            result.areas.push_back(area);
        }
    return result;
}

std::optional<Value> readGridLonghand(PropertyId id, ValueReader &reader)
{
    const size_t from = reader.position();
    switch (propertyInfo(id).grammar) {
    case Grammar::Alignment:
        return withSource(readAlign(id, reader), reader, from);
    case Grammar::TrackList:
        return readTracks(reader, true);
    case Grammar::AutoTracks:
        return readAutoTracks(reader);
    case Grammar::GridAreas:
        return readAreas(reader);
    case Grammar::GridFlow:
        return withSource(readFlow(reader), reader, from);
    case Grammar::GridLine:
        return readLine(reader);
    default:
        return {};
    }
}

} // namespace css
