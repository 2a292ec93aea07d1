// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Media.h"

#include "engine/css/ValueReader.h"

#include <cmath>

namespace css {

MediaList MediaList::parse(const QString &text)
{
    const Tokens tokens = tokenize(text);
    return parse(tokens, 0, tokens.size() - 1, text);
}

MediaList MediaList::parse(const Tokens &tokens, size_t from, size_t to, const QString &text)
{
    MediaList list;
    while (from < to && tokens[from].is(TokenType::Whitespace))
        ++from;
    if (from >= to) return list;
    while (from <= to) {
        size_t end = from;
        while (end < to && !tokens[end].is(TokenType::Comma))
            end = skipComponent(tokens, end, to);
        Query query;
        if (!readQuery(tokens, from, end, query)) {
            // One that can't be read suits nothing; the others stand.
            query = {};
            query.features.push_back({});
        }
        list.mQueries.push_back(std::move(query));
        from = end + 1;
    }
    return list;
}

bool MediaList::readQuery(const Tokens &tokens, size_t from, size_t to, Query &query)
{
    bool expectAnd = false;
    for (size_t at = from; at < to;) {
        const Token &token = tokens[at];
        if (token.is(TokenType::Whitespace)) {
            ++at;
            continue;
        }
        if (expectAnd) {
            if (!token.isIdent("and")) return false;
            expectAnd = false;
            ++at;
        } else if (token.is(TokenType::OpenParen)) {
            const size_t behind = skipComponent(tokens, at, to);
            query.features.push_back(readFeature(tokens, at + 1, behind - 1));
            expectAnd = true;
            at = behind;
        } else if (token.is(TokenType::Ident) && query.type.isEmpty() && query.features.empty()) {
            ++at;
            if (token.isIdent("only")) continue;
            if (token.isIdent("not")) {
                query.negated = true;
                continue;
            }
            query.type = token.text.toLower();
            expectAnd = true;
        } else {
            return false;
        }
    }
    if (query.type == QLatin1String("all")) query.type.clear();
    return expectAnd || (!query.negated && query.features.empty() && query.type.isEmpty() && from < to);
}

MediaList::Feature MediaList::readFeature(const Tokens &tokens, size_t from, size_t to)
{
    Feature feature;
    const QString none;
    ValueReader reader(tokens, from, to, none, ValueMode::Strict);
    if (!reader.peek().is(TokenType::Ident)) return feature;
    QString name = reader.peek().text.toLower();
    reader.skip();
    if (name.startsWith(QLatin1String("min-"))) feature.compare = Feature::Compare::Least;
    if (name.startsWith(QLatin1String("max-"))) feature.compare = Feature::Compare::Most;
    if (feature.compare != Feature::Compare::Equal) name = name.mid(4);
    if (name.startsWith(QLatin1String("device-"))) name = name.mid(7);
    const bool bare = reader.atEnd();
    if (!bare) {
        if (!reader.peek().is(TokenType::Colon)) return feature;
        reader.skip();
    }
    if (name == QLatin1String("orientation")) {
        if (reader.takeWord("portrait")) feature.kind = Feature::Kind::Portrait;
        if (reader.takeWord("landscape")) feature.kind = Feature::Kind::Landscape;
        return feature;
    }
    if (name == QLatin1String("color") || name == QLatin1String("monochrome")) {
        feature.kind = name == QLatin1String("color") && bare ? Feature::Kind::True : Feature::Kind::False;
        return feature;
    }
    if (name != QLatin1String("width") && name != QLatin1String("height")) return feature;
    feature.kind = name == QLatin1String("width") ? Feature::Kind::Width : Feature::Kind::Height;
    if (bare) {
        feature.compare = Feature::Compare::Least;
        feature.value = 0.001;
        return feature;
    }
    const auto length = reader.takeLength(0);
    if (!length || length->kind != Value::Kind::Length) {
        feature.kind = Feature::Kind::False;
        return feature;
    }
    // Relative to the initial font, whatever the page says.
    const bool ofFont = length->unit == Unit::Em || length->unit == Unit::Rem;
    feature.value = ofFont ? length->number * 16 : length->number;
    return feature;
}

bool MediaList::holds(const Feature &feature, const Medium &medium)
{
    const auto compare = [&feature](double value) {
        switch (feature.compare) {
        case Feature::Compare::Least:
            return value >= feature.value;
        case Feature::Compare::Most:
            return value <= feature.value;
        case Feature::Compare::Equal:
            break;
        }
        return std::abs(value - feature.value) < 0.01;
    };
    switch (feature.kind) {
    case Feature::Kind::Width:
        return compare(medium.viewport.width());
    case Feature::Kind::Height:
        return compare(medium.viewport.height());
    case Feature::Kind::Portrait:
        return medium.viewport.height() >= medium.viewport.width();
    case Feature::Kind::Landscape:
        return medium.viewport.height() < medium.viewport.width();
    case Feature::Kind::True:
        return true;
    case Feature::Kind::AspectRatio:
    case Feature::Kind::False:
        return false;
    }
    return false;
}

bool MediaList::suits(const Medium &medium) const
{
    if (mQueries.empty()) return true;
    for (const Query &query : mQueries) {
        bool suits = query.type.isEmpty() || query.type == medium.type;
        for (const Feature &feature : query.features)
            suits = suits && holds(feature, medium);
        if (suits != query.negated) return true;
    }
    return false;
}

bool MediaList::asksForSize() const
{
    for (const Query &query : mQueries)
        for (const Feature &feature : query.features)
            if (feature.kind != Feature::Kind::True && feature.kind != Feature::Kind::False) return true;
    return false;
}

} // namespace css
