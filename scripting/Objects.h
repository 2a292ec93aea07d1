// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"
#include "engine/dom/EventObject.h"
#include "platform/Value.h"
#include "support/VariableDump.h"

#include <QObject>

namespace scripting {

/// Late-bound values of objects that scripts meet; Nothing for a null pointer.
platform::Value objectValue(QObject *object);
platform::Value elementValue(dom::Element *element);
platform::Value documentValue(dom::Document *document);
platform::Value eventValue(dom::EventObject *event);
platform::Value attributeValue(dom::AttributeNode *node);
/// The value as a failure's dump would show it.
support::DumpValue dumpOf(const platform::Value &value);
/// The element behind a value; null if it is none.
dom::Element *elementOf(const platform::Value &value);

} // namespace scripting
