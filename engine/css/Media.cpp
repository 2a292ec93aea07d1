// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Media.h"

#include "engine/css/ValueReader.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace css {

namespace {

/// What a screen in front of a person with a mouse answers, whatever its size; pages are shown in light colours,
/// without scripts. `isNothing`: the word says that there is none of it.
struct WordFeature
{
    const char *name, *word;
    bool isNothing;
};

const WordFeature wordFeatures[] = {
    {"prefers-color-scheme", "light", false},
    {"prefers-reduced-motion", "no-preference", true},
    {"prefers-contrast", "no-preference", true},
    {"prefers-reduced-transparency", "no-preference", true},
    {"hover", "hover", false},
    {"any-hover", "hover", false},
    {"pointer", "fine", false},
    {"any-pointer", "fine", false},
    {"forced-colors", "none", true},
    {"scripting", "none", true},
    {"display-mode", "browser", false},
    {"color-gamut", "srgb", false},
    {"dynamic-range", "standard", false},
    {"update", "fast", false},
    {"overflow-block", "scroll", false},
    {"overflow-inline", "scroll", false},
};

/// A number in front of or behind a feature's name.
struct MediaValue
{
    enum class Kind : uint8_t { Word, Number, Ratio, Length, Resolution };
    Kind kind = Kind::Number;
    double number = 0; ///< pixels, dots a pixel
    QString word;
};

/// Relative lengths go by the initial font, whatever the page says; those of the viewport aren't known here.
std::optional<double> pixelsOf(const Value &value)
{
    const auto of = [](const Value &term) -> std::optional<double> {
        if (term.kind != Value::Kind::Length) return {};
        switch (term.unit) {
        case Unit::Px:
            return term.number;
        case Unit::Em:
        case Unit::Rem:
            return term.number * 16;
        case Unit::Ex:
        case Unit::Ch:
            return term.number * 8;
        default:
            return {};
        }
    };
    if (value.kind == Value::Kind::Length) return of(value);
    double sum = 0;
    for (const Value &term : value.items) {
        const auto pixels = of(term);
        if (!pixels) return {};
        sum += *pixels;
    }
    return sum;
}

std::optional<MediaValue> takeMediaValue(ValueReader &reader)
{
    MediaValue value;
    const Token &token = reader.peek();
    if (token.is(TokenType::Ident)) {
        value.kind = MediaValue::Kind::Word;
        value.word = token.text.toLower();
        reader.skip();
        return value;
    }
    if (token.is(TokenType::Number)) {
        value.number = token.number;
        reader.skip();
        if (!reader.peek().isDelim('/')) return value;
        reader.skip();
        if (!reader.peek().is(TokenType::Number)) return {};
        value.kind = MediaValue::Kind::Ratio;
        value.number /= reader.peek().number;
        reader.skip();
        return value;
    }
    if (token.is(TokenType::Dimension))
        for (const auto &[name, factor] :
             {std::pair("dppx", 1.0), std::pair("x", 1.0), std::pair("dpi", 1 / 96.0), std::pair("dpcm", 2.54 / 96)}) {
            if (token.text.compare(QLatin1String(name), Qt::CaseInsensitive) != 0) continue;
            value.kind = MediaValue::Kind::Resolution;
            value.number = token.number * factor;
            reader.skip();
            return value;
        }
    const auto length = reader.takeLength(0);
    const auto pixels = length ? pixelsOf(*length) : std::nullopt;
    if (!pixels) return {};
    value.kind = MediaValue::Kind::Length;
    value.number = *pixels;
    return value;
}

} // namespace

/// Reads one query. What can't be read at all suits nothing.
class MediaList::Reader
{
public:
    Reader(const Tokens &tokens, size_t from, size_t to) : mTokens(tokens), mAt(from), mEnd(to) { skipSpace(); }

    std::optional<Query> query()
    {
        Query query;
        if (atEnd()) return {};
        // "not" may deny a medium or a condition.
        const bool negates = peek().isIdent("not");
        if (peek().is(TokenType::Ident) && !(negates && !nextIsIdent())) {
            if (negates || peek().isIdent("only")) skip();
            query.negated = negates;
            if (atEnd() || !peek().is(TokenType::Ident)) return {};
            for (const char *word : {"not", "only", "and", "or", "layer"})
                if (peek().isIdent(word)) return {};
            query.type = peek().text.toLower();
            if (query.type == QLatin1String("all")) query.type.clear();
            skip();
            if (atEnd()) return query;
            if (!peek().isIdent("and")) return {};
            skip();
            const auto condition = this->condition(false, 0);
            if (!condition || !atEnd()) return {};
            query.condition = *condition;
            return query;
        }
        const auto condition = this->condition(true, 0);
        if (!condition || !atEnd()) return {};
        query.condition = *condition;
        return query;
    }

private:
    bool atEnd() const { return mAt >= mEnd; }
    const Token &peek() const { return mTokens[mAt]; }
    void skipSpace()
    {
        while (mAt < mEnd && mTokens[mAt].is(TokenType::Whitespace))
            ++mAt;
    }
    void skip()
    {
        ++mAt;
        skipSpace();
    }
    bool nextIsIdent() const
    {
        size_t at = mAt + 1;
        while (at < mEnd && mTokens[at].is(TokenType::Whitespace))
            ++at;
        return at < mEnd && mTokens[at].is(TokenType::Ident);
    }

    std::optional<Condition> condition(bool allowsOr, int depth)
    {
        if (atEnd()) return {};
        if (peek().isIdent("not")) {
            skip();
            auto denied = inBrackets(depth);
            if (!denied) return {};
            return Condition{Condition::Kind::Not, {}, {std::move(*denied)}};
        }
        auto first = inBrackets(depth);
        if (!first || atEnd()) return first;
        const bool isOr = peek().isIdent("or");
        if (!isOr && !peek().isIdent("and")) return first;
        if (isOr && !allowsOr) return {};
        Condition all{isOr ? Condition::Kind::Or : Condition::Kind::And, {}, {std::move(*first)}};
        while (!atEnd()) {
            if (!peek().isIdent(isOr ? "or" : "and")) return {}; // the two don't mix without brackets
            skip();
            auto next = inBrackets(depth);
            if (!next) return {};
            all.parts.push_back(std::move(*next));
        }
        return all;
    }

    std::optional<Condition> inBrackets(int depth)
    {
        if (atEnd() || depth > 30) return {};
        const bool isFunction = peek().is(TokenType::Function);
        if (!isFunction && !peek().is(TokenType::OpenParen)) return {};
        const size_t behind = skipComponent(mTokens, mAt, mEnd);
        Reader inner(mTokens, mAt + 1, behind - 1);
        mAt = behind;
        skipSpace();
        if (isFunction || inner.atEnd()) return Condition{};
        if (inner.peek().is(TokenType::OpenParen) || inner.peek().isIdent("not")) {
            auto condition = inner.condition(true, depth + 1);
            return condition && inner.atEnd() ? condition : Condition{};
        }
        const auto feature = inner.feature();
        return feature ? Condition{Condition::Kind::Feature, *feature, {}} : Condition{};
    }

    static std::optional<Feature::Compare> takeCompare(ValueReader &reader)
    {
        using Compare = Feature::Compare;
        const Token &token = reader.peek();
        if (token.isDelim('=')) {
            reader.skip();
            return Compare::Equal;
        }
        const bool less = token.isDelim('<');
        if (!less && !token.isDelim('>')) return {};
        reader.skip();
        if (!reader.peek().isDelim('=')) return less ? Compare::Less : Compare::Greater;
        reader.skip();
        return less ? Compare::Most : Compare::Least;
    }

    static Feature::Compare turned(Feature::Compare compare)
    {
        return Feature::Compare(int(Feature::Compare::Greater) - int(compare));
    }

    std::optional<Feature> feature()
    {
        const QString none;
        ValueReader reader(mTokens, mAt, mEnd, none, ValueMode::Strict);
        Feature feature;
        if (reader.peek().is(TokenType::Ident)) {
            QString name = reader.peek().text.toLower();
            reader.skip();
            if (reader.peek().is(TokenType::Colon)) {
                reader.skip();
                const auto value = takeMediaValue(reader);
                if (!value || !reader.atEnd()) return {};
                if (wordFeature(feature, name, value->word)) return feature;
                const Feature::Compare compare = takePrefix(name);
                if (!kindOf(feature, name) || !addBound(feature, compare, *value)) return {};
                return feature;
            }
            if (!reader.atEnd() && !isRange(reader)) return {};
            if (wordFeature(feature, name, QString())) return reader.atEnd() ? std::optional(feature) : std::nullopt;
            if (!kindOf(feature, name)) return {};
            return takeBound(reader, feature) ? std::optional(feature) : std::nullopt;
        }
        const auto value = takeMediaValue(reader);
        const auto compare = value ? takeCompare(reader) : std::nullopt;
        if (!compare || !reader.peek().is(TokenType::Ident)) return {};
        const QString name = reader.peek().text.toLower();
        reader.skip();
        if (!kindOf(feature, name) || !addBound(feature, turned(*compare), *value) || !takeBound(reader, feature))
            return {};
        return feature;
    }

    static bool isRange(ValueReader &reader)
    {
        return reader.peek().isDelim('<') || reader.peek().isDelim('>') || reader.peek().isDelim('=');
    }

    static bool takeBound(ValueReader &reader, Feature &feature)
    {
        if (reader.atEnd()) return true;
        const auto compare = takeCompare(reader);
        const auto value = compare ? takeMediaValue(reader) : std::nullopt;
        return value && reader.atEnd() && addBound(feature, *compare, *value);
    }

    static Feature::Compare takePrefix(QString &name)
    {
        for (const char *vendor : {"", "-webkit-", "-moz-"}) {
            const QString front = QLatin1String(vendor);
            for (const bool least : {true, false}) {
                const QString prefix = front + (least ? QLatin1String("min-") : QLatin1String("max-"));
                if (!name.startsWith(prefix)) continue;
                name = front + name.mid(prefix.size());
                return least ? Feature::Compare::Least : Feature::Compare::Most;
            }
        }
        return Feature::Compare::Equal;
    }

    static bool kindOf(Feature &feature, QString name)
    {
        if (name.startsWith(QLatin1String("device-"))) name = name.mid(7);
        using Kind = Feature::Kind;
        static constexpr std::pair<const char *, Kind> kinds[] = {
            {"width", Kind::Width},
            {"height", Kind::Height},
            {"aspect-ratio", Kind::AspectRatio},
            {"resolution", Kind::Resolution},
            {"-webkit-device-pixel-ratio", Kind::Resolution},
            {"color", Kind::Color},
            {"monochrome", Kind::None},
            {"color-index", Kind::None},
            {"grid", Kind::None},
            {"-webkit-transform-3d", Kind::One},
            {"horizontal-viewport-segments", Kind::One},
            {"vertical-viewport-segments", Kind::One},
        };
        for (const auto &[each, kind] : kinds)
            if (name == QLatin1String(each)) {
                feature.kind = kind;
                return true;
            }
        return false;
    }

    static bool addBound(Feature &feature, Feature::Compare compare, const MediaValue &value)
    {
        using Kind = Feature::Kind;
        const bool isNumber = value.kind == MediaValue::Kind::Number;
        bool fits = isNumber;
        if (feature.kind == Kind::Width || feature.kind == Kind::Height)
            fits = value.kind == MediaValue::Kind::Length || (isNumber && value.number == 0);
        else if (feature.kind == Kind::AspectRatio)
            fits = isNumber || value.kind == MediaValue::Kind::Ratio;
        else if (feature.kind == Kind::Resolution)
            fits = isNumber || value.kind == MediaValue::Kind::Resolution;
        if (fits) feature.bounds.push_back({compare, value.number});
        return fits;
    }

    static bool wordFeature(Feature &feature, const QString &name, const QString &word)
    {
        feature.kind = Feature::Kind::Word;
        if (name == QLatin1String("orientation")) {
            feature.portrait = word == QLatin1String("portrait");
            feature.landscape = word == QLatin1String("landscape");
            feature.holds = word.isEmpty();
            return true;
        }
        for (const WordFeature &row : wordFeatures) {
            if (name != QLatin1String(row.name)) continue;
            feature.holds = word.isEmpty() ? !row.isNothing : word == QLatin1String(row.word);
            return true;
        }
        return false;
    }

    const Tokens &mTokens;
    size_t mAt, mEnd;
};

MediaList MediaList::parse(const QString &text)
{
    const Tokens tokens = tokenize(text);
    return parse(tokens, 0, tokens.size() - 1, text);
}

MediaList MediaList::parse(const Tokens &tokens, size_t from, size_t to, const QString &)
{
    MediaList list;
    while (from < to && tokens[from].is(TokenType::Whitespace))
        ++from;
    if (from >= to) return list;
    while (from <= to) {
        size_t end = from;
        while (end < to && !tokens[end].is(TokenType::Comma))
            end = skipComponent(tokens, end, to);
        // One that can't be read suits nothing; the others stand.
        Query nothing;
        nothing.condition.kind = Condition::Kind::Unknown;
        list.mQueries.push_back(Reader(tokens, from, end).query().value_or(nothing));
        from = end + 1;
    }
    return list;
}

MediaList::Answer MediaList::answer(const Feature &feature, const Medium &medium)
{
    using Kind = Feature::Kind;
    const double width = medium.viewport.width(), height = medium.viewport.height();
    double now = 0;
    switch (feature.kind) {
    case Kind::Width:
        now = width;
        break;
    case Kind::Height:
        now = height;
        break;
    case Kind::AspectRatio:
        now = height > 0 ? width / height : 0;
        break;
    case Kind::Resolution:
    case Kind::One:
        now = 1;
        break;
    case Kind::Color:
        now = 8;
        break; // bits of each
    case Kind::None:
        break;
    case Kind::Word:
        return feature.holds || (feature.portrait && height >= width) || (feature.landscape && height < width)
                   ? Answer::Yes
                   : Answer::No;
    }
    const auto suits = [now](const Feature::Bound &bound) {
        using Compare = Feature::Compare;
        switch (bound.compare) {
        case Compare::Less:
            return now < bound.value;
        case Compare::Most:
            return now <= bound.value;
        case Compare::Equal:
            return std::abs(now - bound.value) < 0.001;
        case Compare::Least:
            return now >= bound.value;
        case Compare::Greater:
            return now > bound.value;
        }
        return false;
    };
    const bool holds =
        feature.bounds.empty() ? now > 0 : std::all_of(feature.bounds.begin(), feature.bounds.end(), suits);
    return holds ? Answer::Yes : Answer::No;
}

MediaList::Answer MediaList::answer(const Condition &condition, const Medium &medium)
{
    switch (condition.kind) {
    case Condition::Kind::Feature:
        return answer(condition.feature, medium);
    case Condition::Kind::Not:
        return Answer(int(Answer::Yes) - int(answer(condition.parts.front(), medium)));
    case Condition::Kind::And: {
        Answer all = Answer::Yes;
        for (const Condition &part : condition.parts)
            all = std::min(all, answer(part, medium));
        return all;
    }
    case Condition::Kind::Or: {
        Answer any = Answer::No;
        for (const Condition &part : condition.parts)
            any = std::max(any, answer(part, medium));
        return any;
    }
    case Condition::Kind::Unknown:
        break;
    }
    return Answer::Unknown;
}

bool MediaList::suits(const Medium &medium) const
{
    if (mQueries.empty()) return true;
    return std::any_of(mQueries.begin(), mQueries.end(), [&](const Query &query) {
        const Answer type = query.type.isEmpty() || query.type == medium.type ? Answer::Yes : Answer::No;
        const Answer both = std::min(type, answer(query.condition, medium));
        return both == (query.negated ? Answer::No : Answer::Yes);
    });
}

bool MediaList::asksForSize(const Condition &condition)
{
    using Kind = Feature::Kind;
    const Feature &feature = condition.feature;
    if (condition.kind == Condition::Kind::Feature)
        return feature.kind == Kind::Width || feature.kind == Kind::Height || feature.kind == Kind::AspectRatio ||
               feature.portrait || feature.landscape;
    return std::any_of(condition.parts.begin(), condition.parts.end(),
                       [](const Condition &part) { return asksForSize(part); });
}

bool MediaList::asksForSize() const
{
    return std::any_of(mQueries.begin(), mQueries.end(),
                       [](const Query &query) { return asksForSize(query.condition); });
}

} // namespace css
