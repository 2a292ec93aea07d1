// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Gradient.h"

#include "engine/css/LateValues.h"

namespace css {

namespace {

class Reader
{
public:
    Reader(ValueReader reader, const LateContext &context, QRgb currentColor)
        : mReader(reader), mContext(context), mCurrentColor(currentColor)
    {
    }

    bool linear(Gradient &gradient, bool prefixed);
    bool radial(Gradient &gradient);
    bool conic(Gradient &gradient);

private:
    std::optional<double> angle() { return takeAngle(mReader); }
    std::optional<Length> length(unsigned flags = ValueReader::Percent) { return takeLateLength(mReader, mContext, flags); }
    bool position(Gradient &gradient);
    bool stops(Gradient &gradient, bool angles);
    std::optional<Length> place(bool angles);

    ValueReader mReader;
    const LateContext &mContext;
    QRgb mCurrentColor;
};

bool Reader::linear(Gradient &gradient, bool prefixed)
{
    if (const auto degrees = angle()) {
        // The prefixed form counts from the right, the other way round.
        gradient.angle = prefixed ? 90 - *degrees : *degrees;
        if (!mReader.takeComma()) return false;
    } else {
        const bool to = mReader.takeWord("to");
        int x = 0, y = 0;
        bool any = false;
        for (bool found = true; found;) {
            found = false;
            if (!x && (mReader.takeWord("left") ? (x = -1) : mReader.takeWord("right") ? (x = 1) : 0)) found = any = true;
            if (!y && (mReader.takeWord("top") ? (y = -1) : mReader.takeWord("bottom") ? (y = 1) : 0)) found = any = true;
        }
        if (any != (to || prefixed) && !(prefixed && !any)) return false;
        if (any) {
            if (!to) x = -x, y = -y; // where it starts
            if (x && y)
                gradient.cornerX = x, gradient.cornerY = y;
            else
                gradient.angle = x ? (x > 0 ? 90 : 270) : (y > 0 ? 180 : 0);
            if (!mReader.takeComma()) return false;
        }
    }
    return stops(gradient, false);
}

// "at 20% 30%", "at right 10px top".
bool Reader::position(Gradient &gradient)
{
    Length across = Length::percentage(50), down = Length::percentage(50);
    bool hasAcross = false, hasDown = false;
    int centers = 0;
    for (int i = 0; i < 4 && (!hasAcross || !hasDown || centers); ++i) {
        const bool left = mReader.takeWord("left"), right = !left && mReader.takeWord("right");
        const bool top = !left && !right && mReader.takeWord("top"), bottom = !left && !right && !top && mReader.takeWord("bottom");
        if (left || right || top || bottom) {
            Length &edge = left || right ? across : down;
            bool &has = left || right ? hasAcross : hasDown;
            if (has) return false;
            has = true;
            edge = Length::percentage(right || bottom ? 100 : 0);
            if (const auto offset = length())
                edge = right || bottom ? Length::calc(-offset->px, 100 - offset->percent) : *offset;
        } else if (mReader.takeWord("center")) {
            if (++centers > 2) return false;
        } else if (const auto offset = length()) {
            if (hasAcross && hasDown) return false;
            (hasAcross || centers ? down : across) = *offset;
            (hasAcross || centers ? hasDown : hasAcross) = true;
        } else {
            break;
        }
    }
    gradient.x = across;
    gradient.y = down;
    return hasAcross || hasDown || centers;
}

bool Reader::radial(Gradient &gradient)
{
    bool any = false, ellipse = false;
    for (bool found = true; found;) {
        found = true;
        if (mReader.takeWord("circle"))
            gradient.circle = true;
        else if (mReader.takeWord("ellipse"))
            ellipse = true;
        else if (mReader.takeWord("closest-side"))
            gradient.extent = Gradient::Extent::ClosestSide;
        else if (mReader.takeWord("farthest-side"))
            gradient.extent = Gradient::Extent::FarthestSide;
        else if (mReader.takeWord("closest-corner"))
            gradient.extent = Gradient::Extent::ClosestCorner;
        else if (mReader.takeWord("farthest-corner"))
            gradient.extent = Gradient::Extent::FarthestCorner;
        else if (const auto first = length(ValueReader::Percent | ValueReader::NonNegative)) {
            gradient.extent = Gradient::Extent::Explicit;
            gradient.radiusX = *first;
            const auto second = length(ValueReader::Percent | ValueReader::NonNegative);
            if (!second && (ellipse || first->percent != 0)) return false;
            if (!second) gradient.circle = true;
            gradient.radiusY = second ? *second : *first;
        } else
            found = false;
        any = any || found;
    }
    if (gradient.circle && ellipse) return false;
    if (mReader.takeWord("at")) {
        if (!position(gradient)) return false;
        any = true;
    }
    if (any && !mReader.takeComma()) return false;
    return stops(gradient, false);
}

bool Reader::conic(Gradient &gradient)
{
    bool any = false;
    gradient.angle = 0;
    if (mReader.takeWord("from")) {
        const auto degrees = angle();
        if (!degrees) return false;
        gradient.angle = *degrees;
        any = true;
    }
    if (mReader.takeWord("at")) {
        if (!position(gradient)) return false;
        any = true;
    }
    if (any && !mReader.takeComma()) return false;
    return stops(gradient, true);
}

std::optional<Length> Reader::place(bool angles)
{
    if (!angles) return length();
    if (const auto degrees = angle()) return Length::percentage(float(*degrees / 3.6));
    return length();
}

bool Reader::stops(Gradient &gradient, bool angles)
{
    std::size_t colors = 0;
    do {
        std::optional<Length> at = place(angles);
        const auto color = mReader.takeColor();
        if (!color) { // a hint stands between two colours
            if (!at || gradient.stops.empty() || gradient.stops.back().isHint) return false;
            gradient.stops.push_back({0, *at, true});
            continue;
        }
        if (gradient.stops.size() > 1000) return false;
        ++colors;
        if (!at) at = place(angles);
        const QRgb rgb = color->kind == Value::Kind::CurrentColor ? mCurrentColor : color->rgb;
        gradient.stops.push_back({rgb, at ? *at : Length(), false});
        if (const auto second = at ? place(angles) : std::nullopt) gradient.stops.push_back({rgb, *second, false});
    } while (mReader.takeComma());
    return colors >= 2 && !gradient.stops.back().isHint && mReader.atEnd();
}

} // namespace

std::optional<Gradient> parseGradient(const QString &text, const LateContext &context, QRgb currentColor)
{
    const Tokens tokens = tokenize(text);
    if (tokens.empty() || !tokens[0].is(TokenType::Function)) return {};
    ValueReader outer(tokens, 0, tokens.size() - 1, text, ValueMode::Strict);
    QString name = tokens[0].text.toLower();
    const bool prefixed = name.startsWith(QLatin1Char('-'));
    if (prefixed) name = name.mid(name.indexOf(QLatin1Char('-'), 1) + 1);
    Gradient gradient;
    if (name.startsWith(QLatin1String("repeating-"))) {
        gradient.repeating = true;
        name.remove(0, 10);
    }
    Reader reader(outer.takeFunction(), context, currentColor);
    if (!outer.atEnd()) return {};
    bool good = false;
    if (name == QLatin1String("linear-gradient")) {
        good = reader.linear(gradient, prefixed);
    } else if (name == QLatin1String("radial-gradient") && !prefixed) {
        gradient.shape = Gradient::Shape::Radial;
        good = reader.radial(gradient);
    } else if (name == QLatin1String("conic-gradient") && !prefixed) {
        gradient.shape = Gradient::Shape::Conic;
        good = reader.conic(gradient);
    }
    return good ? std::optional<Gradient>(gradient) : std::nullopt;
}

} // namespace css
