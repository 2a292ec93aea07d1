// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Objects.h"

#include "platform/DispatchObject.h"
#include "platform/Interfaces.h"

namespace scripting {

using platform::Value;

Value objectValue(QObject *object)
{
    return object ? platform::valueOf(object) : Value::nothing();
}

Value elementValue(dom::Element *element)
{
    return platform::valueOf(static_cast<dom::Node *>(element));
}

Value documentValue(dom::Document *document)
{
    return platform::valueOf(static_cast<dom::Node *>(document));
}

Value eventValue(dom::EventObject *event)
{
    return platform::valueOf(base::Ref<dom::EventObject>(event));
}

Value attributeValue(dom::AttributeNode *node)
{
    return platform::valueOf(base::Ref<dom::AttributeNode>(node));
}

dom::Element *elementOf(const Value &value)
{
    return platform::elementOf(value);
}

/// Collections list what is in them: the control's own, which count from 1, and the document model's, which count from 0.
static support::DumpValue dumpOfObject(const platform::ObjectRef &object)
{
    using support::DumpValue;
    const QString &name = object.type()->name;
    const bool counts = platform::hasMember(object, QStringLiteral("Count"));
    const bool isList = platform::hasMember(object, QStringLiteral("item")) &&
                        (counts || name.endsWith(QLatin1String("Collection")));
    if (!isList) return DumpValue::object(name);
    const qint64 count = platform::getMember(object, counts ? QStringLiteral("Count") : QStringLiteral("length")).toInt();
    std::vector<DumpValue> items;
    for (qint64 i = 0; i < count; ++i) {
        const Value item = platform::callMember(object, QStringLiteral("item"), {Value(i + (counts ? 1 : 0))}).value;
        items.push_back(item.isObject() && !item.isNothing() ? DumpValue::object(item.toObject().type()->name) : dumpOf(item));
    }
    return DumpValue::collection(name, std::move(items));
}

support::DumpValue dumpOf(const Value &value)
{
    using support::DumpValue;
    if (value.isEmpty()) return DumpValue::empty();
    if (value.isNull()) return DumpValue::null();
    if (value.isNothing()) return DumpValue::nothing();
    if (value.isString()) return DumpValue::string(value.toString());
    if (value.isList()) {
        std::vector<DumpValue> elements;
        for (const Value &item : value.toList()) elements.push_back(dumpOf(item));
        if (elements.empty()) return DumpValue::array(1, {}, {}); // nobody has given it bounds
        const int last = int(elements.size()) - 1;
        return DumpValue::array(1, {{0, last}}, std::move(elements));
    }
    if (value.isObject()) return dumpOfObject(value.toObject());
    return DumpValue::text(value.toString());
}

} // namespace scripting
