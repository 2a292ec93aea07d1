// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Value.h"

#include "base/Error.h"
#include "platform/Dispatch.h"

#include <cmath>

namespace platform {

using base::Error;

namespace {

[[noreturn]] void mismatch()
{
    throw Error(base::errors::typeMismatch, QStringLiteral("Type mismatch"));
}

double numberOf(const QString &text)
{
    bool ok = false;
    const double number = text.trimmed().toDouble(&ok);
    if (!ok) mismatch();
    return number;
}

constexpr int deepestList = 200;

/// Takes a text apart as JSON.
class JsonReader
{
public:
    JsonReader(const QString &text, qsizetype position) : mText(text), mAt(position) {}
    qsizetype position() const { return mAt; }

    Value value(int depth = 0)
    {
        skipBlanks();
        if (mAt >= mText.size()) fail("a value is missing");
        const QChar c = mText[mAt];
        if (c == u'"') return Value(string());
        if (c == u'[') return list(depth);
        if (c == u'-' || c.isDigit()) return number();
        return word();
    }

private:
    [[noreturn]] void fail(const char *what)
    {
        throw Error(base::errors::invalidCall,
                    QStringLiteral("%1: %2").arg(QLatin1String(what), mText.mid(mAt, 40).simplified()));
    }
    void skipBlanks()
    {
        while (mAt < mText.size() && mText[mAt].isSpace()) ++mAt;
    }

    Value list(int depth)
    {
        if (depth > deepestList) fail("lists are too deep");
        ++mAt;
        ValueList values;
        skipBlanks();
        if (mAt < mText.size() && mText[mAt] == u']') {
            ++mAt;
            return values;
        }
        for (;;) {
            values.push_back(value(depth + 1));
            skipBlanks();
            const QChar c = mAt < mText.size() ? mText[mAt] : QChar();
            if (c != u',' && c != u']') fail("a list has no end");
            ++mAt;
            if (c == u']') return values;
        }
    }

    QString string()
    {
        QString out;
        for (++mAt; mAt < mText.size(); ++mAt) {
            const QChar c = mText[mAt];
            if (c == u'"') {
                ++mAt;
                return out;
            }
            out += c == u'\\' ? escape() : c;
        }
        fail("a string has no end");
    }

    /// At the backslash; leaves the position on the last character of the escape.
    QChar escape()
    {
        ++mAt;
        const char16_t c = mAt < mText.size() ? mText[mAt].unicode() : 0;
        switch (c) {
        case u'"':
        case u'\\':
        case u'/':
            return c;
        case u'b':
            return u'\b';
        case u'f':
            return u'\f';
        case u'n':
            return u'\n';
        case u'r':
            return u'\r';
        case u't':
            return u'\t';
        case u'u': {
            bool ok = false;
            const uint code = QStringView(mText).mid(mAt + 1, 4).toUInt(&ok, 16);
            if (!ok || mAt + 4 >= mText.size()) fail("a string has an unknown escape");
            mAt += 4;
            return QChar(char16_t(code));
        }
        default:
            fail("a string has an unknown escape");
        }
    }

    Value number()
    {
        const qsizetype start = mAt;
        bool whole = true;
        for (++mAt; mAt < mText.size(); ++mAt) {
            const QChar c = mText[mAt];
            if (c == u'.' || c == u'e' || c == u'E')
                whole = false;
            else if (!c.isDigit() && !((c == u'+' || c == u'-') && mText[mAt - 1].toLower() == u'e'))
                break;
        }
        const QString text = mText.mid(start, mAt - start);
        bool ok = false;
        if (whole) {
            const qint64 integer = text.toLongLong(&ok);
            if (ok && !followedByWord()) return integer;
        }
        const double number = text.toDouble(&ok);
        if (!ok || followedByWord()) {
            mAt = start;
            fail("not a value");
        }
        return number;
    }

    bool followedByWord() const { return mAt < mText.size() && (mText[mAt].isLetter() || mText[mAt] == u'_'); }

    Value word()
    {
        const qsizetype start = mAt;
        while (mAt < mText.size() && mText[mAt].isLetter()) ++mAt;
        const QString text = mText.mid(start, mAt - start);
        if (text == QLatin1String("true")) return true;
        if (text == QLatin1String("false")) return false;
        if (text == QLatin1String("null")) return Value::null();
        if (text == QLatin1String("nothing")) return Value::nothing();
        if (text == QLatin1String("empty")) return {};
        mAt = start;
        fail("not a value");
    }

    const QString &mText;
    qsizetype mAt;
};

} // namespace

Value Value::null()
{
    Value value;
    value.mData = NullValue{};
    return value;
}

bool Value::isNothing() const
{
    const ObjectRef *object = std::get_if<ObjectRef>(&mData);
    return object && object->isNothing();
}

bool Value::toBoolean() const
{
    if (const bool *b = std::get_if<bool>(&mData)) return *b;
    if (isEmpty()) return false;
    if (const QString *s = std::get_if<QString>(&mData)) {
        if (s->compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) return true;
        if (s->compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) return false;
    }
    return toDouble() != 0;
}

qint64 Value::toInteger() const
{
    if (const qint64 *i = std::get_if<qint64>(&mData)) return *i;
    const double number = std::nearbyint(toDouble());
    if (!(std::abs(number) < 9.2e18)) throw Error(base::errors::overflow, QStringLiteral("Overflow"));
    return qint64(number);
}

int Value::toInt() const
{
    const qint64 number = toInteger();
    // A colour or a window handle may come with its highest bit set.
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<uint>::max())
        throw Error(base::errors::overflow, QStringLiteral("Overflow"));
    return int(uint(number));
}

double Value::toDouble() const
{
    if (const qint64 *i = std::get_if<qint64>(&mData)) return double(*i);
    if (const double *d = std::get_if<double>(&mData)) return *d;
    if (const bool *b = std::get_if<bool>(&mData)) return *b ? -1 : 0;
    if (const QString *s = std::get_if<QString>(&mData)) return numberOf(*s);
    if (isEmpty()) return 0;
    mismatch();
}

QString Value::toString() const
{
    if (const QString *s = std::get_if<QString>(&mData)) return *s;
    if (const bool *b = std::get_if<bool>(&mData)) return *b ? QStringLiteral("True") : QStringLiteral("False");
    if (isNumber()) return toJson();
    if (isEmpty() || isNull()) return {};
    mismatch();
}

const ObjectRef &Value::toObject() const
{
    static const ObjectRef nothing;
    if (const ObjectRef *object = std::get_if<ObjectRef>(&mData)) return *object;
    if (isEmpty() || isNull()) return nothing;
    mismatch();
}

const ValueList &Value::toList() const
{
    if (const ValueList *list = std::get_if<ValueList>(&mData)) return *list;
    mismatch();
}

QString Value::quoted(const QString &text)
{
    QString out;
    out.reserve(text.size() + 2);
    out += u'"';
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const bool pair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        switch (c.unicode()) {
        case u'"':
            out += QLatin1String("\\\"");
            break;
        case u'\\':
            out += QLatin1String("\\\\");
            break;
        case u'\b':
            out += QLatin1String("\\b");
            break;
        case u'\f':
            out += QLatin1String("\\f");
            break;
        case u'\n':
            out += QLatin1String("\\n");
            break;
        case u'\r':
            out += QLatin1String("\\r");
            break;
        case u'\t':
            out += QLatin1String("\\t");
            break;
        default:
            // A lone surrogate can't be written as UTF-8.
            if (c.unicode() < 0x20 || (c.isSurrogate() && !pair))
                out += QStringLiteral("\\u%1").arg(int(c.unicode()), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
        if (pair) out += text[++i];
    }
    return out += u'"';
}

QString Value::toJson() const
{
    if (const bool *b = std::get_if<bool>(&mData)) return *b ? QStringLiteral("true") : QStringLiteral("false");
    if (const qint64 *i = std::get_if<qint64>(&mData)) return QString::number(*i);
    if (const double *d = std::get_if<double>(&mData)) {
        if (!std::isfinite(*d)) return QStringLiteral("null");
        if (*d == std::trunc(*d) && std::abs(*d) < 1e15) return QString::number(qint64(*d));
        return QString::number(*d, 'g', QLocale::FloatingPointShortest);
    }
    if (const QString *s = std::get_if<QString>(&mData)) return quoted(*s);
    if (const ObjectRef *object = std::get_if<ObjectRef>(&mData))
        return object->isNothing() ? QStringLiteral("null") : describe(*object);
    if (const ValueList *list = std::get_if<ValueList>(&mData)) {
        QStringList texts;
        for (const Value &value : *list) texts += value.toJson();
        return u'[' + texts.join(QLatin1String(", ")) + u']';
    }
    return QStringLiteral("null");
}

Value readJson(const QString &text, qsizetype &position)
{
    JsonReader reader(text, position);
    Value value = reader.value();
    position = reader.position();
    return value;
}

Value parseJson(const QString &text)
{
    qsizetype position = 0;
    Value value = readJson(text, position);
    if (!text.mid(position).trimmed().isEmpty())
        throw Error(base::errors::invalidCall, QStringLiteral("not a value: %1").arg(text.left(40)));
    return value;
}

} // namespace platform
