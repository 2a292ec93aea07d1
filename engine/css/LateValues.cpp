// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/LateValues.h"

namespace css {

namespace {

double pixelsOf(Unit unit, const LateContext &context)
{
    switch (unit) {
    case Unit::Em:
        return context.fontSize;
    case Unit::Rem:
        return context.rootFontSize;
    case Unit::Ex:
    case Unit::Ch:
        return context.fontSize / 2;
    case Unit::Vw:
        return context.viewWidth / 100;
    case Unit::Vh:
        return context.viewHeight / 100;
    case Unit::Vmin:
        return std::min(context.viewWidth, context.viewHeight) / 100;
    case Unit::Vmax:
        return std::max(context.viewWidth, context.viewHeight) / 100;
    default:
        return 1;
    }
}

/// Per cents count as nothing.
double comparedPixels(const Value &value, const LateContext &context)
{
    const auto item = [&](size_t i) {
        double sum = 0;
        for (const Value &term : value.items[i].items)
            if (term.unit != Unit::Percent)
                sum += term.number * (term.kind == Value::Kind::Comparison ? comparedPixels(term, context)
                                                                           : pixelsOf(term.unit, context));
        return sum;
    };
    if (value.word == 2) return std::max(item(0), std::min(item(1), item(2)));
    double result = item(0);
    for (size_t i = 1; i < value.items.size(); ++i)
        result = value.word == 0 ? std::min(result, item(i)) : std::max(result, item(i));
    return result;
}

} // namespace

std::optional<Length> takeLateLength(ValueReader &reader, const LateContext &context, unsigned flags)
{
    const auto value = reader.takeLength(flags);
    if (!value) return {};
    double pixels = 0, percent = 0;
    const std::vector<Value> terms = value->kind == Value::Kind::Calc ? value->items : std::vector<Value>{*value};
    for (const Value &term : terms) {
        if (term.kind == Value::Kind::Comparison)
            pixels += term.number * comparedPixels(term, context);
        else if (term.unit == Unit::Percent)
            percent += term.number;
        else
            pixels += term.number * pixelsOf(term.unit, context);
    }
    const auto within = [](double number) { return float(std::clamp(number, -33554431.0, 33554431.0)); };
    return Length::calc(within(pixels), within(percent));
}

std::optional<double> takeAngle(ValueReader &reader)
{
    const Token &token = reader.peek();
    if (token.is(TokenType::Number) && token.number == 0) {
        reader.skip();
        return 0;
    }
    if (!token.is(TokenType::Dimension)) return {};
    const QString unit = token.text.toLower();
    for (const auto &[name, factor] :
         {std::pair("deg", 1.0), std::pair("grad", 0.9), std::pair("rad", 57.29577951308232), std::pair("turn", 360.0)})
        if (unit == QLatin1String(name)) {
            const double degrees = std::clamp(token.number * factor, -1e7, 1e7);
            reader.skip();
            return degrees;
        }
    return {};
}

} // namespace css
