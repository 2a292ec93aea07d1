// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"
#include "engine/dom/EventObject.h"
#include "platform/Dispatch.h"

namespace ranges {
class ControlRange;
class TextRange;
}

/// The published interfaces of the document model: their tables, and its objects as late-bound values.
///
/// Numbers count from a base of each interface, so that those of one object never meet. They are for good.
namespace platform {

/// Every published interface of the document model, in the order of the type library.
const std::vector<const Interface *> &documentInterfaces();
/// The document model's classes convert in signatures of `QObject`s from then on. Calling it again does nothing.
void registerDocumentTypes();

// Objects as values; Nothing for null. The value holds the object.
Value valueOf(dom::Node *node);
Value valueOf(const base::Ref<dom::ElementCollection> &collection);
Value valueOf(const base::Ref<dom::AttributeNode> &attribute);
Value valueOf(const base::Ref<dom::EventObject> &event);
Value valueOf(const base::Ref<ranges::TextRange> &range);
Value valueOf(const base::Ref<ranges::ControlRange> &range);

/// The node behind a value; null for Nothing. Raises `typeMismatch` for anything else.
dom::Node *nodeOf(const Value &value);
dom::Element *elementOf(const Value &value);

/// The type of objects that support exactly the given interfaces.
ObjectType plainType(const QString &name, const std::vector<const Interface *> &interfaces);

/// Makes a value of a counted object of that type.
template <class T> Value countedValue(const ObjectType &type, T *object)
{
    if (!object) return Value::nothing();
    return Value(ObjectRef(type, object, std::make_shared<base::Ref<T>>(object)));
}

/// A list made of a function: what the model has as plain vectors. Indexes are 0-based, the list is live.
class LiveList final : public base::RefCounted
{
public:
    explicit LiveList(std::function<ValueList()> read) : mRead(std::move(read)) {}
    ValueList values() const { return mRead(); }

private:
    std::function<ValueList()> mRead;
};
/// `name` is the interface under which the list prints; it has `length`, `item(index)` and `item(name)`.
Value liveList(const char *name, std::function<ValueList()> read);

} // namespace platform
