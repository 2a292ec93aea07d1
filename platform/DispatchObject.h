// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dispatch.h"

#include <QMetaMethod>
#include <QMetaType>
#include <QVariant>
#include <memory>

class QObject;

/// Late binding for classes that tell of their members themselves: a `QObject`'s properties and invokable methods, with
/// default arguments and arguments by reference. `setX(…, value)` is the write of a property X that takes arguments.
///
/// A class that is published (`publish`) has the members of its table, each with its id; a member of the table that the
/// class hasn't got yet raises `actionNotSupported` with "not available yet". Of a class that isn't, all members are
/// reachable that stand above Qt's own classes, numbered in their order.
namespace platform {

/// Between a type of C++ and late-bound values. Numbers, booleans, texts, enumerations, colours, lists, `QVariant` and
/// pointers to `QObject`s convert by themselves; a class of objects registers its own.
struct TypeConversion {
    QMetaType type;
    std::function<Value(const void *)> toValue;
    std::function<void(const Value &, void *)> fromValue;
};
/// Also under the names by which signatures may spell the type ("IHTMLElement*").
void registerConversion(const TypeConversion &conversion, const std::vector<QByteArray> &spellings = {});
template <class T>
void registerConversion(std::function<Value(const T &)> toValue, std::function<T(const Value &)> fromValue,
                        const std::vector<QByteArray> &spellings = {})
{
    registerConversion({QMetaType::fromType<T>(), [toValue](const void *at) { return toValue(*static_cast<const T *>(at)); },
                        [fromValue](const Value &value, void *at) { *static_cast<T *>(at) = fromValue(value); }},
                       spellings);
}

Value variantToValue(const QVariant &variant);
QVariant valueToVariant(const Value &value);

/// A parameter's type as a signature spells it, without a trailing "&".
class ParameterType
{
public:
    ParameterType(const QMetaMethod &method, int index);
    explicit ParameterType(QMetaType type, QByteArray spelling = {});
    bool isKnown() const { return mType.isValid(); }
    QMetaType type() const { return mType; }
    Value read(const void *at) const;
    void write(void *at, const Value &value) const;

private:
    QMetaType mType;
    QByteArray mSpelling;
};

/// What stands behind one name of a published class in place of the class's own member (or where the class can't tell
/// of it: an object of the document model).
struct MemberBinding {
    const char *name;
    std::function<Value(QObject &)> get;
    std::function<void(QObject &, const Value &)> put;
};

/// Publishes a class under an interface's name. To be called once a process for a class; the rows must live for good.
void publish(const QMetaObject &meta, const char *interfaceName, const std::vector<MemberRow> &rows,
             const std::vector<MemberBinding> &bindings = {});
/// Publishes a class by a table that does its members itself (`InterfaceTable`), for one whose members have other names
/// in C++, or none.
void publish(const QMetaObject &meta, std::unique_ptr<Interface> interface);
/// Publishes an interface whose objects are no `QObject`s.
void publish(const Interface &interface);
/// A function that publishes, to be called before the first question for a published class. A static of this type lets a
/// class stand above this folder and be in the type library before anybody has made an object of it.
struct Publisher {
    explicit Publisher(void (*publishing)());
};
/// All interfaces that were published here, in their order.
std::vector<const Interface *> publishedInterfaces();
/// The interface of a class: the published one, or one made of what the class tells.
const Interface &interfaceOf(const QMetaObject &meta);

/// A reference to a `QObject`; Nothing for null.
ObjectRef reference(QObject *object);
inline Value valueOf(QObject *object)
{
    return Value(reference(object));
}

} // namespace platform
