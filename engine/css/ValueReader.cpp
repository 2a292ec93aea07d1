// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/ValueReader.h"

#include "engine/css/Color.h"

#include <array>
#include <cmath>

namespace css {

bool ValueReader::takeWord(const char *word)
{
    if (!peek().isIdent(word)) return false;
    next();
    return true;
}

std::optional<int> ValueReader::takeWordOf(PropertyId id)
{
    if (!peek().is(TokenType::Ident)) return {};
    for (const auto &[word, number] : propertyInfo(id).words) {
        if (peek().text.compare(word, Qt::CaseInsensitive) != 0) continue;
        next();
        return number;
    }
    return {};
}

bool ValueReader::takeComma()
{
    if (!peek().is(TokenType::Comma)) return false;
    next();
    return true;
}

bool ValueReader::takeSlash()
{
    if (!peek().isDelim('/')) return false;
    next();
    return true;
}

ValueReader ValueReader::takeFunction()
{
    const size_t from = mAt + 1;
    const size_t behind = skipComponent(mTokens, mAt, mEnd);
    // An unclosed function ends with the value.
    const size_t to = behind > from && mTokens[behind - 1].is(TokenType::CloseParen) ? behind - 1 : behind;
    mAt = behind;
    skipSpace();
    return ValueReader(mTokens, from, to, mText, mMode);
}

std::optional<Value> ValueReader::takeColorFunction()
{
    const size_t back = mAt;
    const bool hsl = peek().text.startsWith(QLatin1String("hsl"), Qt::CaseInsensitive);
    ValueReader arguments = takeFunction();
    double parts[4] = {0, 0, 0, 1};
    bool percent[4] = {};
    int count = 0;
    while (!arguments.atEnd() && count < 4) {
        const Token token = arguments.peek();
        parts[count] = token.number;
        percent[count] = token.is(TokenType::Percentage);
        if (token.is(TokenType::Dimension) && hsl && count == 0) {
            if (token.text == QLatin1String("turn")) parts[0] *= 360;
            if (token.text == QLatin1String("rad")) parts[0] *= 180 / M_PI;
            if (token.text == QLatin1String("grad")) parts[0] *= 0.9;
        } else if (!token.is(TokenType::Number) && !token.is(TokenType::Percentage)) {
            break;
        }
        ++count;
        arguments.skip();
        if (!arguments.takeComma()) arguments.takeSlash();
    }
    if (count < 3 || !arguments.atEnd() || (hsl && (!percent[1] || !percent[2]))) {
        mAt = back;
        return {};
    }
    const double alpha = std::clamp(percent[3] ? parts[3] / 100 : parts[3], 0.0, 1.0);
    if (hsl)
        return Value::ofColor(
            hslColor(parts[0], std::clamp(parts[1] / 100, 0.0, 1.0), std::clamp(parts[2] / 100, 0.0, 1.0), alpha));
    int channels[3];
    for (int i = 0; i < 3; ++i)
        channels[i] = int(std::lround(std::clamp(percent[i] ? parts[i] * 255 / 100 : parts[i], 0.0, 255.0)));
    return Value::ofColor(qRgba(channels[0], channels[1], channels[2], int(std::lround(alpha * 255))));
}

std::optional<Value> ValueReader::takeColor()
{
    const Token &token = peek();
    if (token.is(TokenType::Hash)) {
        const auto color = hexColor(token.text);
        if (!color) return {};
        Value value = Value::ofColor(*color);
        value.text = mText.mid(token.start, token.end - token.start);
        next();
        return value;
    }
    if (token.is(TokenType::Ident)) {
        if (takeWord("currentcolor")) return Value::of(Value::Kind::CurrentColor);
        if (const auto color = namedColor(token.text)) {
            Value value = Value::ofColor(*color);
            value.text = token.text; // read back as the name that was written
            next();
            return value;
        }
    }
    if (token.is(TokenType::Function)) {
        for (const char *name : {"rgb", "rgba", "hsl", "hsla"})
            if (token.isFunction(name)) {
                const size_t from = mAt;
                auto value = takeColorFunction();
                if (value) value->text = sourceOf(mTokens, from, mAt, mText);
                return value;
            }
        return {};
    }
    if (mMode != ValueMode::Quirks) return {};
    // Hashless colours: three or six digits, which may read as a number, a dimension or a name.
    if (!token.is(TokenType::Ident) && !token.is(TokenType::Number) && !token.is(TokenType::Dimension)) return {};
    QString digits = mText.mid(token.start, token.end - token.start);
    if (token.is(TokenType::Number) && token.integer) digits = digits.rightJustified(6, u'0');
    if (digits.size() != 3 && digits.size() != 6) return {};
    const auto color = hexColor(digits);
    if (!color) return {};
    next();
    return Value::ofColor(*color);
}

std::optional<Value> ValueReader::takeNumber()
{
    if (!peek().is(TokenType::Number)) return {};
    const double number = peek().number;
    next();
    return Value::ofNumber(number);
}

std::optional<Value> ValueReader::takeInteger()
{
    if (!peek().is(TokenType::Number) || !peek().integer) return {};
    const double number = std::clamp(peek().number, -2147483647.0, 2147483647.0);
    next();
    return Value::ofNumber(number);
}

namespace {

struct UnitRow
{
    const char *name;
    Unit unit;
    double factor;
};

const UnitRow units[] = {
    {"px", Unit::Px, 1},  {"pt", Unit::Px, 96.0 / 72}, {"em", Unit::Em, 1},         {"rem", Unit::Rem, 1},
    {"ex", Unit::Ex, 1},  {"ch", Unit::Ch, 1},         {"cm", Unit::Px, 96 / 2.54}, {"mm", Unit::Px, 96 / 25.4},
    {"in", Unit::Px, 96}, {"pc", Unit::Px, 16},        {"q", Unit::Px, 96 / 101.6}, {"vw", Unit::Vw, 1},
    {"vh", Unit::Vh, 1},  {"vmin", Unit::Vmin, 1},     {"vmax", Unit::Vmax, 1},
};

const UnitRow *unitOf(const QString &name)
{
    for (const UnitRow &row : units)
        if (name == QLatin1String(row.name)) return &row;
    return nullptr;
}

bool holdsPercent(const Value &value)
{
    return value.unit == Unit::Percent || std::any_of(value.items.begin(), value.items.end(), &holdsPercent);
}

/// What a mathematical expression adds up (CSS Values 4, 10): so much of each unit, and so many times what a comparison
/// gives. Products need a plain number on one side.
struct Terms
{
    std::array<double, unitCount> units{};
    std::vector<Value> comparisons;

    bool isNumber() const
    {
        for (size_t i = 0; i < unitCount; ++i)
            if (Unit(i) != Unit::Number && units[i] != 0) return false;
        return comparisons.empty();
    }
    double number() const { return units[size_t(Unit::Number)]; }
    void multiply(double factor)
    {
        for (double &each : units)
            each *= factor;
        for (Value &each : comparisons)
            each.number *= factor;
    }
    void add(const Terms &other)
    {
        for (size_t i = 0; i < unitCount; ++i)
            units[i] += other.units[i];
        comparisons.insert(comparisons.end(), other.comparisons.begin(), other.comparisons.end());
    }
    bool hasPercent() const
    {
        if (units[size_t(Unit::Percent)] != 0) return true;
        return std::any_of(comparisons.begin(), comparisons.end(), &holdsPercent);
    }
    Value toValue() const
    {
        Value value = Value::of(Value::Kind::Calc);
        for (size_t i = 0; i < unitCount; ++i)
            if (units[i] != 0) value.items.push_back(Value::ofLength(units[i], Unit(i)));
        value.items.insert(value.items.end(), comparisons.begin(), comparisons.end());
        return value;
    }
};

class Calculator
{
public:
    static bool isFunction(const Token &token)
    {
        for (const char *name : {"calc", "-webkit-calc", "min", "max", "clamp"})
            if (token.isFunction(name)) return true;
        return false;
    }

    /// A number, a length, brackets or a function.
    static std::optional<Terms> operand(ValueReader &reader, int depth = 0)
    {
        if (depth > 30) return {};
        Terms terms;
        const Token &token = reader.peek();
        switch (token.type) {
        case TokenType::Number:
            terms.units[size_t(Unit::Number)] = token.number;
            break;
        case TokenType::Percentage:
            terms.units[size_t(Unit::Percent)] = token.number;
            break;
        case TokenType::Dimension: {
            const UnitRow *unit = unitOf(token.text);
            if (!unit) return {};
            terms.units[size_t(unit->unit)] = token.number * unit->factor;
            break;
        }
        case TokenType::Function:
            if (!isFunction(token)) return {};
            if (const int kind = comparisonOf(token); kind >= 0)
                return comparison(kind, reader.takeFunction(), depth + 1);
            [[fallthrough]];
        case TokenType::OpenParen:
            return whole(reader.takeFunction(), depth + 1);
        default:
            return {};
        }
        reader.skip();
        return terms;
    }

private:
    static int comparisonOf(const Token &token)
    {
        return token.isFunction("min") ? 0 : token.isFunction("max") ? 1 : token.isFunction("clamp") ? 2 : -1;
    }

    static std::optional<Terms> whole(ValueReader reader, int depth)
    {
        auto terms = sum(reader, depth);
        return reader.atEnd() ? terms : std::nullopt;
    }

    /// Up to the end or a comma.
    static std::optional<Terms> sum(ValueReader &reader, int depth)
    {
        auto terms = product(reader, depth);
        while (terms && !reader.atEnd()) {
            const bool minus = reader.peek().isDelim('-');
            if (!minus && !reader.peek().isDelim('+')) return terms;
            reader.skip();
            auto more = product(reader, depth);
            if (!more) return {};
            if (minus) more->multiply(-1);
            terms->add(*more);
        }
        return terms;
    }

    static std::optional<Terms> product(ValueReader &reader, int depth)
    {
        auto value = operand(reader, depth);
        while (value && (reader.peek().isDelim('*') || reader.peek().isDelim('/'))) {
            const bool divide = reader.peek().isDelim('/');
            reader.skip();
            auto other = operand(reader, depth);
            if (!other) return {};
            if (!other->isNumber()) {
                if (divide || !value->isNumber()) return {};
                std::swap(*value, *other);
            }
            if (divide && other->number() == 0) return {};
            value->multiply(divide ? 1 / other->number() : other->number());
        }
        return value;
    }

    static std::optional<Terms> comparison(int kind, ValueReader reader, int depth)
    {
        std::vector<Terms> compared;
        do {
            auto terms = sum(reader, depth);
            if (!terms) return {};
            compared.push_back(*terms);
        } while (reader.takeComma());
        if (!reader.atEnd() || (kind == 2 && compared.size() != 3)) return {};
        Terms terms;
        const auto isNumber = [](const Terms &each) { return each.isNumber(); };
        if (std::all_of(compared.begin(), compared.end(), isNumber)) {
            double result = compared[kind == 2 ? 1 : 0].number();
            if (kind == 2) {
                result = std::max(compared[0].number(), std::min(result, compared[2].number()));
            } else {
                for (const Terms &each : compared)
                    result = kind == 0 ? std::min(result, each.number()) : std::max(result, each.number());
            }
            terms.units[size_t(Unit::Number)] = result;
            return terms;
        }
        Value value = Value::of(Value::Kind::Comparison);
        value.word = kind;
        value.number = 1;
        for (const Terms &each : compared) {
            if (each.number() != 0) return {}; // a number among lengths
            value.items.push_back(each.toValue());
        }
        terms.comparisons.push_back(std::move(value));
        return terms;
    }
};

} // namespace

std::optional<Value> ValueReader::takeCalculation(unsigned flags)
{
    const size_t back = mAt;
    const auto terms = Calculator::operand(*this);
    if (!terms || terms->number() != 0 || (terms->hasPercent() && !(flags & Percent))) {
        mAt = back;
        return {};
    }
    Value value = terms->toValue();
    value.text = sourceOf(mTokens, back, skipComponent(mTokens, back, mEnd), mText);
    // `word` tells who computes the value whether it mustn't be negative.
    value.word = flags & NonNegative ? 1 : 0;
    return value;
}

std::optional<Value> ValueReader::takeLength(unsigned flags)
{
    const Token &token = peek();
    if (Calculator::isFunction(token)) return takeCalculation(flags);
    if ((flags & NonNegative) && token.number < 0) return {};
    const double number = token.number;
    if (token.is(TokenType::Dimension)) {
        const UnitRow *unit = unitOf(token.text);
        if (!unit) return {};
        Value value = Value::ofLength(number * unit->factor, unit->unit);
        value.text = mText.mid(token.start, token.end - token.start);
        next();
        return value;
    }
    if (token.is(TokenType::Percentage) && (flags & Percent)) {
        next();
        return Value::ofLength(number, Unit::Percent);
    }
    if (token.is(TokenType::Number) && (number == 0 || ((flags & Unitless) && mMode != ValueMode::Strict))) {
        next();
        return Value::ofLength(number, Unit::Px);
    }
    return {};
}

std::optional<Value> ValueReader::takeString()
{
    if (!peek().is(TokenType::String)) return {};
    Value value = Value::ofText(Value::Kind::String, peek().text);
    next();
    return value;
}

std::optional<Value> ValueReader::takeUrl()
{
    if (peek().is(TokenType::Url)) {
        Value value = Value::ofText(Value::Kind::Url, peek().text);
        next();
        return value;
    }
    if (!peek().isFunction("url")) return {};
    const size_t back = mAt;
    ValueReader arguments = takeFunction();
    const auto text = arguments.takeString();
    if (!text || !arguments.atEnd()) {
        mAt = back;
        return {};
    }
    return Value::ofText(Value::Kind::Url, text->text);
}

std::optional<Value> ValueReader::takeImage()
{
    if (takeWord("none")) return Value::ofWord(0);
    if (const auto url = takeUrl()) return url;
    if (!peek().is(TokenType::Function)) return {};
    const QString name = peek().text.toLower();
    if (!name.contains(QLatin1String("gradient")) && !name.contains(QLatin1String("image-set")) &&
        !name.contains(QLatin1String("cross-fade")))
        return {};
    const size_t from = mAt;
    const size_t behind = skipComponent(mTokens, mAt, mEnd);
    mAt = behind;
    skipSpace();
    return Value::ofText(Value::Kind::Raw, sourceOf(mTokens, from, behind, mText));
}

std::optional<Value> ValueReader::takeRaw()
{
    if (atEnd()) return {};
    Value value = Value::ofText(Value::Kind::Raw, restText());
    mAt = mEnd;
    return value;
}

} // namespace css
