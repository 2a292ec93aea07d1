// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Ref.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QMap>
#include <QMetaObject>
#include <QMimeData>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>
#include <concepts>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <typeinfo>
#include <vector>

/// The dump of variables that a failure report carries: text that looks like XML, one variable in a pair of tags named
/// after it. A `DumpValue` is a variable's value at one moment, taken apart as far as the dump shows it; `dumpValue`
/// makes one from a C++ value. Values aren't escaped: a dump is read by people, and their strings should stand in it as
/// they are.
namespace support {

class DumpValue
{
public:
    enum class Kind {
        Empty,
        Null,
        Nothing,
        DataObject,
        Record,
        String,
        Text,
        Collection,
        Object,
        Array,
        External,
        Failure
    };
    /// Bounds of one dimension, both inclusive; an upper bound below the lower one is a dimension without elements.
    struct Bounds
    {
        int lower = 0;
        int upper = -1;
    };

    static DumpValue empty() { return DumpValue(Kind::Empty); }
    static DumpValue null() { return DumpValue(Kind::Null); }
    static DumpValue nothing() { return DumpValue(Kind::Nothing); }
    static DumpValue dataObject() { return DumpValue(Kind::DataObject); }
    static DumpValue record(const QString &typeName) { return DumpValue(Kind::Record, typeName); }
    static DumpValue string(const QString &text) { return DumpValue(Kind::String, text); }
    /// A number, date or flag, by its text.
    static DumpValue text(const QString &text) { return DumpValue(Kind::Text, text); }
    static DumpValue object(const QString &typeName) { return DumpValue(Kind::Object, typeName); }
    /// An object that can be walked. The items are numbered from 1.
    static DumpValue collection(const QString &typeName, std::vector<DumpValue> items);
    /// An array of `dimensions` dimensions. `bounds` holds those that are set, so fewer than `dimensions` means that
    /// the next one has none. `elements` in row order: the last index runs fastest.
    static DumpValue array(int dimensions, std::vector<Bounds> bounds, std::vector<DumpValue> elements);
    /// An object of the document model. Only a local variable of one tells its type; as a member or a parameter it gets
    /// the fixed text of the role.
    static DumpValue external(const QString &typeName, bool isNothing);
    /// A value that couldn't be taken: formats as the error's text.
    static DumpValue failure(const QString &description) { return DumpValue(Kind::Failure, description); }

    Kind kind() const { return mKind; }
    const QString &textOrType() const { return mText; }
    const std::vector<DumpValue> &items() const { return mItems; }
    int dimensions() const { return mDimensions; }
    /// The lower bound of a dimension, counted from 1. Raises error 9 for one that has no bounds.
    int lowerBound(int dimension) const;
    int upperBound(int dimension) const;
    bool isNothing() const { return mIsNothing; }

private:
    explicit DumpValue(Kind kind, const QString &text = {}) : mKind(kind), mText(text) {}

    Kind mKind;
    QString mText;
    std::vector<DumpValue> mItems;
    std::vector<Bounds> mBounds;
    int mDimensions = 0;
    bool mIsNothing = false;
};

/// The nesting depth at which a variable's dump starts.
inline constexpr int dumpDepth = 99;

/// One variable as dumped, with its line end (CR LF). `Depth` goes down by one per nesting; a collection's items have a
/// depth of 3 at most. What lies deeper than 0 is named, not opened. Raises nothing.
QString FormatVariable(const QString &Name, const DumpValue &Value, int Depth = dumpDepth);

// --- from C++ values ---

namespace detail {
/// Last part of a demangled type name, without pointer, const and namespaces.
QString shortTypeName(const std::type_info &type);
/// A class's name without its namespace.
QString className(const QMetaObject &type);
/// Is this a type of the document engine? (One whose outermost namespace is the engine's.)
bool isEngineType(const std::type_info &type);
/// A pointer that tells only its static type.
DumpValue pointerValue(const std::type_info &pointerType, bool isNothing);
DumpValue variantValue(const QVariant &value);
QString numberText(double value);

template <class T> inline constexpr bool alwaysFalse = false;
template <class T>
concept Complete = requires
{
    sizeof(T);
};
/// The project's own collections: counted from 1.
template <class T>
concept CountedCollection = requires(const T &c)
{
    {
        c.Count()
        } -> std::integral;
    c.Item(1);
};
template <class T>
concept Sequence = requires(const T &c)
{
    typename T::value_type;
    c.begin();
    c.end();
    c.size();
}
&&!requires
{
    typename T::mapped_type;
};
template <class T>
concept Mapping = requires(const T &c)
{
    typename T::mapped_type;
    c.begin();
    c.end();
};
} // namespace detail

/// A type gets a dump of its own by a function `DumpValue toDumpValue(const T &)` in its namespace.
template <class T>
concept HasOwnDump = requires(const T &value)
{
    {
        toDumpValue(value)
        } -> std::same_as<DumpValue>;
};

template <class T> DumpValue dumpValue(const T &value);

namespace detail {

template <class T> DumpValue pointerTo(T *pointer)
{
    using Bare = std::remove_cv_t<T>;
    if constexpr (std::is_function_v<Bare> || std::is_void_v<Bare>) {
        return pointer ? DumpValue::object(QStringLiteral("Pointer")) : DumpValue::nothing();
    } else {
        if (isEngineType(typeid(Bare *))) return DumpValue::external(shortTypeName(typeid(Bare *)), pointer == nullptr);
        if constexpr (Complete<Bare>) {
            if constexpr (CountedCollection<Bare>) {
                if (pointer) return dumpValue(*pointer);
            } else if constexpr (std::is_base_of_v<QMimeData, Bare>) {
                if (pointer) return DumpValue::dataObject();
            } else if constexpr (std::is_base_of_v<QObject, Bare>) {
                if (pointer) return DumpValue::object(className(*pointer->metaObject()));
            } else if constexpr (std::is_polymorphic_v<Bare>) {
                if (pointer) return DumpValue::object(shortTypeName(typeid(*pointer)));
            }
        }
        return pointerValue(typeid(Bare *), pointer == nullptr);
    }
}

template <class T> DumpValue sequenceValue(const T &sequence)
{
    std::vector<DumpValue> elements;
    elements.reserve(std::size_t(sequence.size()));
    // The cast turns the stand-ins of a bit vector into flags.
    for (const auto &element : sequence)
        elements.push_back(dumpValue(static_cast<const typename T::value_type &>(element)));
    // An empty sequence is what an array is before it gets bounds.
    std::vector<DumpValue::Bounds> bounds;
    if (!elements.empty()) bounds.push_back({0, int(elements.size()) - 1});
    return DumpValue::array(1, std::move(bounds), std::move(elements));
}

template <class T> DumpValue collectionValue(const T &collection)
{
    std::vector<DumpValue> items;
    const auto count = collection.Count();
    for (auto i = count - count; i < count; ++i)
        items.push_back(dumpValue(collection.Item(i + 1)));
    return DumpValue::collection(shortTypeName(typeid(T)), std::move(items));
}

template <class T> struct Smart : std::false_type
{
};
template <class T> struct Smart<base::Ref<T>> : std::true_type
{
};
template <class T, class D> struct Smart<std::unique_ptr<T, D>> : std::true_type
{
};
template <class T> struct Smart<std::shared_ptr<T>> : std::true_type
{
};
template <class T> struct Optional : std::false_type
{
};
template <class T> struct Optional<std::optional<T>> : std::true_type
{
};
template <class T> struct QtPointer : std::false_type
{
};
template <class T> struct QtPointer<QPointer<T>> : std::true_type
{
};
template <class T> struct Function : std::false_type
{
};
template <class T> struct Function<std::function<T>> : std::true_type
{
};

} // namespace detail

/// The dump of a value. May raise what reading the value raises.
template <class T> DumpValue dumpValue(const T &value)
{
    using namespace detail;
    if constexpr (HasOwnDump<T>)
        return toDumpValue(value);
    else if constexpr (std::is_same_v<T, DumpValue>)
        return value;
    else if constexpr (std::is_same_v<T, bool>)
        return DumpValue::text(value ? "True" : "False");
    else if constexpr (std::is_same_v<T, QChar>)
        return DumpValue::string(QString(value));
    else if constexpr (std::is_enum_v<T>)
        return DumpValue::text(QString::number(qlonglong(value)));
    else if constexpr (std::is_unsigned_v<T>)
        return DumpValue::text(QString::number(qulonglong(value)));
    else if constexpr (std::is_integral_v<T>)
        return DumpValue::text(QString::number(qlonglong(value)));
    else if constexpr (std::is_floating_point_v<T>)
        return DumpValue::text(numberText(value));
    else if constexpr (std::is_same_v<T, std::nullptr_t>)
        return DumpValue::nothing();
    else if constexpr (std::is_same_v<T, QVariant>)
        return variantValue(value);
    else if constexpr (std::is_same_v<T, QDateTime>)
        return variantValue(QVariant(value));
    else if constexpr (std::is_same_v<T, QByteArray>)
        return DumpValue::string(QString::fromUtf8(value));
    else if constexpr (std::is_same_v<std::decay_t<T>, const char *> || std::is_same_v<std::decay_t<T>, char *>)
        return DumpValue::string(QString::fromUtf8(static_cast<const char *>(value)));
    else if constexpr (std::is_convertible_v<const T &, QString>)
        return DumpValue::string(value);
    else if constexpr (Smart<T>::value)
        return pointerTo(value.get());
    else if constexpr (QtPointer<T>::value)
        return pointerTo(value.data());
    else if constexpr (Optional<T>::value)
        return value ? dumpValue(*value) : DumpValue::empty();
    else if constexpr (Function<T>::value)
        return value ? DumpValue::object("Function") : DumpValue::nothing();
    else if constexpr (std::is_pointer_v<T>)
        return pointerTo(value);
    else if constexpr (CountedCollection<T>)
        return collectionValue(value);
    else if constexpr (Sequence<T>)
        return sequenceValue(value);
    else if constexpr (Mapping<T>) {
        std::vector<DumpValue> items;
        for (const auto &item : value) {
            if constexpr (requires { item.second; })
                items.push_back(dumpValue(item.second));
            else
                items.push_back(dumpValue(item));
        }
        return DumpValue::collection(QStringLiteral("Collection"), std::move(items));
    } else if constexpr (std::is_array_v<T>) {
        std::vector<DumpValue> elements;
        for (const auto &element : value)
            elements.push_back(dumpValue(element));
        return DumpValue::array(1, {{0, int(std::extent_v<T>) - 1}}, std::move(elements));
    } else if (isEngineType(typeid(T)))
        return DumpValue::external(shortTypeName(typeid(T)), false);
    else if constexpr (std::is_base_of_v<base::RefCounted, T> || std::is_base_of_v<QObject, T>)
        return DumpValue::object(shortTypeName(typeid(T)));
    else
        return DumpValue::record(shortTypeName(typeid(T)));
}

/// A list as a collection: its items are numbered from 1 and an empty one is just empty.
template <class T> DumpValue dumpCollection(const T &list, const QString &typeName = QStringLiteral("Collection"))
{
    std::vector<DumpValue> items;
    for (const auto &item : list)
        items.push_back(dumpValue(item));
    return DumpValue::collection(typeName, std::move(items));
}

/// What a variable is to the procedure that failed.
enum class VariableRole { Local, Member, Parameter };

/// Builds one section of a dump. A variable that can't be read is written with the error's text, and the rest goes on.
class VariableDump
{
public:
    explicit VariableDump(VariableRole role = VariableRole::Member) : mRole(role) {}

    template <class T> VariableDump &add(const char *name, const T &value)
    {
        addGuarded(name, [&value] { return dumpValue(value); });
        return *this;
    }
    /// A member that no dump can show.
    VariableDump &addExternal(const char *name);
    /// A variable whose value `getter` makes; what it raises becomes the variable's text.
    void addGuarded(const QString &name, const std::function<DumpValue()> &getter);

    const QString &text() const { return mText; }

private:
    VariableRole mRole;
    QString mText;
};

} // namespace support
