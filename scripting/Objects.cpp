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
        const int last = int(elements.size()) - 1;
        return DumpValue::array(1, {{0, last}}, std::move(elements));
    }
    if (value.isObject()) return DumpValue::object(value.toObject().type()->name);
    return DumpValue::text(value.toString());
}

} // namespace scripting
