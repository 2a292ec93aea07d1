// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DispatchObject.h"

#include <QColor>
#include <QDateTime>

/// Between the types of C++ that signatures spell and late-bound values.
namespace platform {

using base::Error;

namespace {

QHash<QByteArray, TypeConversion> &conversions()
{
    static QHash<QByteArray, TypeConversion> table;
    return table;
}

const TypeConversion *conversionOf(const QByteArray &spelling, QMetaType type)
{
    auto it = conversions().constFind(spelling);
    if (it == conversions().constEnd() && type.isValid()) it = conversions().constFind(QByteArray(type.name()));
    return it == conversions().constEnd() ? nullptr : &*it;
}

[[noreturn]] void mismatch(QMetaType type)
{
    throw Error(base::errors::typeMismatch, QStringLiteral("Type mismatch: %1").arg(QString::fromLatin1(type.name())));
}

QByteArray withoutReference(QByteArray spelling)
{
    if (spelling.endsWith('&')) spelling.chop(1);
    if (spelling.startsWith("const ")) spelling.remove(0, 6);
    return spelling.trimmed();
}

qint64 readNumber(const void *at, qsizetype size, bool isUnsigned)
{
    switch (size) {
    case 1:
        return isUnsigned ? qint64(*static_cast<const quint8 *>(at)) : *static_cast<const qint8 *>(at);
    case 2:
        return isUnsigned ? qint64(*static_cast<const quint16 *>(at)) : *static_cast<const qint16 *>(at);
    case 4:
        return isUnsigned ? qint64(*static_cast<const quint32 *>(at)) : *static_cast<const qint32 *>(at);
    default:
        return *static_cast<const qint64 *>(at);
    }
}

void writeNumber(void *at, qsizetype size, const Value &value)
{
    switch (size) {
    case 1:
        *static_cast<qint8 *>(at) = qint8(value.toInteger());
        break;
    case 2:
        *static_cast<qint16 *>(at) = qint16(value.toInteger());
        break;
    case 4:
        *static_cast<qint32 *>(at) = value.toInt();
        break;
    default:
        *static_cast<qint64 *>(at) = value.toInteger();
    }
}

bool isWholeNumber(QMetaType type)
{
    switch (type.id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return true;
    default:
        return type.flags() & QMetaType::IsEnumeration;
    }
}

bool isUnsignedNumber(QMetaType type)
{
    return type.id() == QMetaType::UInt || type.id() == QMetaType::UShort || type.id() == QMetaType::UChar ||
           type.id() == QMetaType::ULong || type.id() == QMetaType::ULongLong;
}

Value listToValue(const QVariantList &list)
{
    ValueList values;
    for (const QVariant &item : list) values.push_back(variantToValue(item));
    return values;
}

} // namespace

void registerConversion(const TypeConversion &conversion, const std::vector<QByteArray> &spellings)
{
    conversions().insert(QByteArray(conversion.type.name()), conversion);
    for (const QByteArray &spelling : spellings) conversions().insert(spelling, conversion);
}

ParameterType::ParameterType(const QMetaMethod &method, int index)
    : ParameterType(method.parameterMetaType(index), method.parameterTypeName(index))
{
}

ParameterType::ParameterType(QMetaType type, QByteArray spelling) : mType(type), mSpelling(withoutReference(spelling))
{
    if (const TypeConversion *conversion = conversionOf(mSpelling, mType)) mType = conversion->type;
    // moc knows no type behind a reference, and an object is one whether it may be changed or not.
    if (!mType.isValid() || mType.id() == QMetaType::UnknownType || spelling.endsWith('&') || spelling.startsWith("const ")) {
        const QMetaType named = QMetaType::fromName(mSpelling);
        if (named.isValid()) mType = named;
    }
}

Value ParameterType::read(const void *at) const
{
    if (const TypeConversion *conversion = conversionOf(mSpelling, mType)) return conversion->toValue(at);
    if (isWholeNumber(mType)) return readNumber(at, mType.sizeOf(), isUnsignedNumber(mType));
    if (mType.flags() & QMetaType::PointerToQObject) return valueOf(*static_cast<QObject *const *>(at));
    if (mType.id() == QMetaType::QVariant) return variantToValue(*static_cast<const QVariant *>(at));
    switch (mType.id()) {
    case QMetaType::Void:
        return {};
    case QMetaType::Bool:
        return *static_cast<const bool *>(at);
    case QMetaType::Double:
        return *static_cast<const double *>(at);
    case QMetaType::Float:
        return double(*static_cast<const float *>(at));
    case QMetaType::QString:
        return *static_cast<const QString *>(at);
    case QMetaType::QByteArray:
        return QString::fromUtf8(*static_cast<const QByteArray *>(at));
    case QMetaType::QDateTime:
        return static_cast<const QDateTime *>(at)->toString(Qt::ISODate);
    case QMetaType::QColor:
        return static_cast<const QColor *>(at)->name();
    case QMetaType::QStringList: {
        ValueList values;
        for (const QString &text : *static_cast<const QStringList *>(at)) values.push_back(text);
        return values;
    }
    case QMetaType::QVariantList:
        return listToValue(*static_cast<const QVariantList *>(at));
    default:
        if (mType.flags() & QMetaType::IsPointer) return Value::nothing(); // an object that nobody published
        mismatch(mType);
    }
}

void ParameterType::write(void *at, const Value &value) const
{
    if (const TypeConversion *conversion = conversionOf(mSpelling, mType)) {
        conversion->fromValue(value, at);
        return;
    }
    if (isWholeNumber(mType)) return writeNumber(at, mType.sizeOf(), value);
    if (mType.flags() & QMetaType::PointerToQObject) {
        const ObjectRef object = value.toObject();
        QObject *pointer = object.isNothing() ? nullptr : object.qobject();
        const QMetaObject *wanted = mType.metaObject();
        if (!object.isNothing() && (!pointer || (wanted && !pointer->metaObject()->inherits(wanted)))) mismatch(mType);
        *static_cast<QObject **>(at) = pointer;
        return;
    }
    switch (mType.id()) {
    case QMetaType::QVariant:
        *static_cast<QVariant *>(at) = valueToVariant(value);
        return;
    case QMetaType::Bool:
        *static_cast<bool *>(at) = value.toBoolean();
        return;
    case QMetaType::Double:
        *static_cast<double *>(at) = value.toDouble();
        return;
    case QMetaType::Float:
        *static_cast<float *>(at) = float(value.toDouble());
        return;
    case QMetaType::QString:
        *static_cast<QString *>(at) = value.toString();
        return;
    case QMetaType::QByteArray:
        *static_cast<QByteArray *>(at) = value.toString().toUtf8();
        return;
    case QMetaType::QColor:
        *static_cast<QColor *>(at) = QColor(value.toString());
        return;
    case QMetaType::QStringList: {
        QStringList list;
        for (const Value &item : value.toList()) list += item.toString();
        *static_cast<QStringList *>(at) = list;
        return;
    }
    case QMetaType::QVariantList:
        *static_cast<QVariantList *>(at) = valueToVariant(value).toList();
        return;
    default:
        mismatch(mType);
    }
}

Value variantToValue(const QVariant &variant)
{
    if (!variant.isValid()) return {};
    if (variant.metaType().id() == QMetaType::Nullptr) return Value::null();
    if (variant.metaType() == QMetaType::fromType<Value>()) return variant.value<Value>();
    return ParameterType(variant.metaType()).read(variant.constData());
}

QVariant valueToVariant(const Value &value)
{
    if (value.isEmpty()) return {};
    if (value.isNull()) return QVariant::fromValue(nullptr);
    if (value.isBoolean()) return value.toBoolean();
    if (value.isInteger()) {
        const qint64 number = value.toInteger();
        const bool fits = number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
        return fits ? QVariant(int(number)) : QVariant(number);
    }
    if (value.isNumber()) return value.toDouble();
    if (value.isString()) return value.toString();
    if (value.isList()) {
        QVariantList list;
        for (const Value &item : value.toList()) list.push_back(valueToVariant(item));
        return list;
    }
    const ObjectRef &object = value.toObject();
    if (object.isQObject()) return QVariant::fromValue(object.qobject());
    // An object of the document model goes as the late-bound value that it is.
    return QVariant::fromValue(value);
}

} // namespace platform
