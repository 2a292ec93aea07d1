// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Transform.h"

namespace css {

namespace {

class Reader
{
public:
    Reader(ValueReader reader, QSizeF box, const LateContext &context) : mReader(reader), mBox(box), mContext(context) {}

    ValueReader &values() { return mReader; }
    std::optional<double> pixels(bool across)
    {
        const auto length = takeLateLength(mReader, mContext);
        return length ? std::optional<double>(length->resolve(across ? mBox.width() : mBox.height())) : std::nullopt;
    }
    std::optional<double> number()
    {
        const bool percent = mReader.peek().is(TokenType::Percentage);
        if (!percent && !mReader.peek().is(TokenType::Number)) return {};
        const double value = std::clamp(mReader.peek().number * (percent ? 0.01 : 1), -1e6, 1e6);
        mReader.skip();
        return value;
    }
    std::optional<double> angle() { return takeAngle(mReader); }
    /// Numbers with commas between; fewer than `least` or more than `most` are none.
    std::vector<double> numbers(std::size_t least, std::size_t most)
    {
        std::vector<double> result;
        while (const auto each = number()) {
            result.push_back(*each);
            if (!mReader.takeComma()) break;
        }
        if (result.size() < least || result.size() > most) result.clear();
        return result;
    }

private:
    ValueReader mReader;
    QSizeF mBox;
    const LateContext &mContext;
};

double tangent(double degrees) { return std::clamp(std::tan(degrees * M_PI / 180), -1e6, 1e6); }

std::optional<QTransform> translated(Reader &reader, const QString &name)
{
    QTransform move;
    const bool y = name == QLatin1String("translatey");
    const auto first = reader.pixels(!y);
    if (!first) return {};
    if (name == QLatin1String("translatez")) return move;
    if (y) return move.translate(0, *first);
    double second = 0;
    if (name != QLatin1String("translatex") && reader.values().takeComma()) {
        const auto down = reader.pixels(false);
        if (!down) return {};
        second = *down;
        if (name == QLatin1String("translate3d") && !(reader.values().takeComma() && reader.pixels(true))) return {};
    }
    return move.translate(*first, second);
}

std::optional<QTransform> skewed(Reader &reader, const QString &name)
{
    const auto first = reader.angle();
    if (!first) return {};
    if (name == QLatin1String("skewy")) return QTransform(1, tangent(*first), 0, 1, 0, 0);
    double second = 0;
    if (name == QLatin1String("skew") && reader.values().takeComma()) {
        const auto down = reader.angle();
        if (!down) return {};
        second = *down;
    }
    return QTransform(1, tangent(second), tangent(*first), 1, 0, 0);
}

std::optional<QTransform> function(Reader &reader, const QString &name)
{
    QTransform result;
    if (name.startsWith(QLatin1String("translate"))) return translated(reader, name);
    if (name.startsWith(QLatin1String("skew"))) return skewed(reader, name);
    if (name == QLatin1String("rotate") || name == QLatin1String("rotatez")) {
        const auto degrees = reader.angle();
        return degrees ? std::optional<QTransform>(result.rotate(*degrees)) : std::nullopt;
    }
    if (name == QLatin1String("rotatex") || name == QLatin1String("rotatey")) { // seen from the front it is narrower
        const auto degrees = reader.angle();
        if (!degrees) return {};
        const double cosine = std::cos(*degrees * M_PI / 180);
        return name == QLatin1String("rotatex") ? result.scale(1, cosine) : result.scale(cosine, 1);
    }
    if (name == QLatin1String("perspective")) return reader.pixels(true) || reader.values().takeWord("none") ? std::optional<QTransform>(result) : std::nullopt;
    if (name == QLatin1String("matrix")) {
        const auto n = reader.numbers(6, 6);
        return n.empty() ? std::nullopt : std::optional<QTransform>(QTransform(n[0], n[1], n[2], n[3], n[4], n[5]));
    }
    if (name == QLatin1String("matrix3d")) {
        const auto n = reader.numbers(16, 16);
        return n.empty() ? std::nullopt : std::optional<QTransform>(QTransform(n[0], n[1], n[4], n[5], n[12], n[13]));
    }
    if (!name.startsWith(QLatin1String("scale"))) return {};
    const bool solid = name == QLatin1String("scale3d"), both = name == QLatin1String("scale");
    const auto n = reader.numbers(solid ? 3 : 1, solid ? 3 : both ? 2 : 1);
    if (n.empty()) return {};
    if (name == QLatin1String("scalex")) return result.scale(n[0], 1);
    if (name == QLatin1String("scaley")) return result.scale(1, n[0]);
    if (name == QLatin1String("scalez")) return result;
    if (!both && !solid) return {};
    return result.scale(n[0], n.size() > 1 ? n[1] : n[0]);
}

QTransform functions(const QString &text, QSizeF box, const LateContext &context)
{
    const Tokens tokens = tokenize(text);
    ValueReader reader(tokens, 0, tokens.size() - 1, text, ValueMode::Strict);
    QTransform sum;
    for (int count = 0; !reader.atEnd() && count < 1000; ++count) {
        if (!reader.peek().is(TokenType::Function)) return {};
        const QString name = reader.peek().text.toLower();
        Reader arguments(reader.takeFunction(), box, context);
        const auto each = function(arguments, name);
        if (!each || !arguments.values().atEnd()) return {};
        sum = *each * sum; // the last one comes first to the point
    }
    return sum;
}

template <class Use> void with(const QString &text, QSizeF box, const LateContext &context, Use use)
{
    if (text.isEmpty() || text == QLatin1String("none")) return;
    const Tokens tokens = tokenize(text);
    Reader reader(ValueReader(tokens, 0, tokens.size() - 1, text, ValueMode::Strict), box, context);
    use(reader);
}

QPointF originOf(const QString &text, QSizeF box, const LateContext &context)
{
    QPointF origin(box.width() / 2, box.height() / 2);
    with(text, box, context, [&](Reader &reader) {
        bool across = false, down = false;
        for (int i = 0; i < 2; ++i) {
            ValueReader &values = reader.values();
            if (values.takeWord("left"))
                origin.setX(0), across = true;
            else if (values.takeWord("right"))
                origin.setX(box.width()), across = true;
            else if (values.takeWord("top"))
                origin.setY(0), down = true;
            else if (values.takeWord("bottom"))
                origin.setY(box.height()), down = true;
            else if (values.takeWord("center"))
                (i == 0 && !down ? across : down) = true;
            else if (const auto length = reader.pixels(!across))
                (across ? origin.ry() : origin.rx()) = *length, (across ? down : across) = true;
        }
    });
    return origin;
}

} // namespace

QTransform transformOf(const ComputedStyle &style, QSizeF box, const LateContext &context)
{
    const RareGroup &rare = style.rare();
    if (!rare.isTransformed()) return {};
    QTransform sum = functions(rare.transform, box, context);
    with(rare.scale, box, context, [&](Reader &reader) {
        const auto x = reader.number();
        if (!x) return;
        const auto y = reader.number();
        sum *= QTransform::fromScale(*x, y ? *y : *x);
    });
    with(rare.rotate, box, context, [&](Reader &reader) {
        reader.values().takeWord("z");
        if (const auto degrees = reader.angle()) sum *= QTransform().rotate(*degrees);
    });
    with(rare.translate, box, context, [&](Reader &reader) {
        const auto x = reader.pixels(true);
        if (!x) return;
        const auto y = reader.pixels(false);
        sum *= QTransform::fromTranslate(*x, y ? *y : 0);
    });
    const QPointF origin = originOf(rare.transformOrigin, box, context);
    return QTransform::fromTranslate(-origin.x(), -origin.y()) * sum * QTransform::fromTranslate(origin.x(), origin.y());
}

} // namespace css
