// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaType>
#include <QPointer>
#include <QString>
#include <memory>
#include <variant>
#include <vector>

namespace platform {

struct ObjectType;

/// A late-bound reference to an object: what it is, and what keeps it alive. Objects of the document model are held; a
/// `QObject` belongs to somebody else, and a reference to one that is gone is Nothing.
class ObjectRef
{
public:
    ObjectRef() = default;
    ObjectRef(const ObjectType &type, void *object, std::shared_ptr<void> holder)
        : mType(&type), mObject(object), mHolder(std::move(holder))
    {
    }
    ObjectRef(const ObjectType &type, QObject *object) : mType(&type), mObject(object), mWatched(object), mIsQObject(true)
    {
    }

    bool isNothing() const { return !mObject || (mIsQObject && !mWatched); }
    const ObjectType *type() const { return mType; }
    /// The object as the class that its type is about.
    template <class T> T *as() const { return static_cast<T *>(mObject); }
    bool isQObject() const { return mIsQObject; }
    QObject *qobject() const { return mWatched; }
    /// Whether both are the same object, whatever the interface.
    bool isSame(const ObjectRef &other) const { return !isNothing() && mObject == other.mObject; }

private:
    const ObjectType *mType = nullptr;
    void *mObject = nullptr;
    std::shared_ptr<void> mHolder;
    QPointer<QObject> mWatched;
    bool mIsQObject = false;
};

class Value;
using ValueList = std::vector<Value>;

struct EmptyValue {
    friend bool operator==(EmptyValue, EmptyValue) { return true; }
};
struct NullValue {
    friend bool operator==(NullValue, NullValue) { return true; }
};

/// A value as late binding knows it. Conversions raise `typeMismatch` where there is none.
class Value
{
public:
    Value() = default; ///< Empty
    Value(bool value) : mData(value) {}
    Value(int value) : mData(qint64(value)) {}
    Value(uint value) : mData(qint64(value)) {}
    Value(qint64 value) : mData(value) {}
    Value(quint64 value) : mData(qint64(value)) {}
    Value(long value) : mData(qint64(value)) {}
    Value(double value) : mData(value) {}
    Value(const QString &value) : mData(value) {}
    Value(const char *ascii) : mData(QString::fromLatin1(ascii)) {}
    Value(ObjectRef object) : mData(std::move(object)) {}
    Value(ValueList list) : mData(std::move(list)) {}
    static Value null();
    static Value nothing() { return Value(ObjectRef()); }

    bool isEmpty() const { return std::holds_alternative<EmptyValue>(mData); }
    bool isNull() const { return std::holds_alternative<NullValue>(mData); }
    bool isNothing() const;
    bool isBoolean() const { return std::holds_alternative<bool>(mData); }
    bool isInteger() const { return std::holds_alternative<qint64>(mData); }
    bool isNumber() const { return isInteger() || std::holds_alternative<double>(mData); }
    bool isString() const { return std::holds_alternative<QString>(mData); }
    bool isObject() const { return std::holds_alternative<ObjectRef>(mData); }
    bool isList() const { return std::holds_alternative<ValueList>(mData); }

    /// Numbers other than 0, "True" and "False" in any case, numbers as text; Empty is False.
    bool toBoolean() const;
    /// Rounded to the even neighbour; True is -1, Empty 0. Raises `overflow` beyond 64 bits.
    qint64 toInteger() const;
    /// Raises `overflow` beyond 32 bits.
    int toInt() const;
    double toDouble() const;
    /// Booleans as "True" and "False"; Empty and Null are "".
    QString toString() const;
    const ObjectRef &toObject() const;
    const ValueList &toList() const;

    /// As JSON: Empty, Null and Nothing are `null`; integers have no decimals, what isn't ASCII stands as it is.
    QString toJson() const;
    /// A string as JSON.
    static QString quoted(const QString &text);

private:
    std::variant<EmptyValue, NullValue, bool, qint64, double, QString, ObjectRef, ValueList> mData;
};

/// Reads a JSON value at `position` (blanks before it are passed over) and moves behind it; `null` is Null, and the words
/// `nothing` and `empty` are values too. Objects of JSON are none. Raises `invalidCall` with a text that says where.
Value readJson(const QString &text, qsizetype &position);
/// The whole text as one value.
Value parseJson(const QString &text);

} // namespace platform
Q_DECLARE_METATYPE(platform::Value)
