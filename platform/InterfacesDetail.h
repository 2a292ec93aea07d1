// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/HtmlElements.h"
#include "platform/DispatchTable.h"
#include "platform/Interfaces.h"

/// The pieces of the document model's tables, one function an interface. Each makes its table at the first question.
namespace platform::interfaces {

const Interface &document2();
const Interface &document3();
const Interface &window2();
const Interface &node();
const Interface &element();
const Interface &element2();
const Interface &element3();
const Interface &element4();
const Interface &uniqueName();
const Interface &elementCollection();
const Interface &attributeCollection();
const Interface &nodeCollection();
const Interface &attribute();
const Interface &event();
const Interface &list(const char *name);

// By tag
const Interface &anchor();
const Interface &area();
const Interface &image();
const Interface &body();
const Interface &table();
const Interface &tableSection();
const Interface &tableRow();
const Interface &tableCell();
/// The interface of elements of that name, null for none of its own.
const Interface *ofTag(const dom::Element &element);

// Style
const Interface &style();
const Interface &ruleStyle();
const Interface &styleSheet();
const Interface &styleSheets();
const Interface &styleSheetRule();
const Interface &styleSheetRules();
Value styleValue(css::StyleObject *style);
Value styleSheetsOf(dom::Document &document);
Value createStyleSheet(dom::Document &document, const QString &href);

// Ranges
const Interface &selection();
const Interface &textRange();
const Interface &controlRange();
const Interface &caret();
const Interface &displayServices();
const Interface &markupPointer();
const Interface &markupServices();
const Interface &selectedCells();
Value selectionOf(dom::Document &document);
Value displayServicesOf(dom::Document &document);
Value markupServicesOf(dom::Document &document);
/// Over the element's text.
Value createTextRange(dom::Element &body);
Value createControlRange(dom::Element &body);

/// `attribute` as a property that reads "" when unset and is taken away by "".
Value attributeText(dom::Element &element, const char *attribute);
void setAttributeText(dom::Element &element, const char *attribute, const Value &value);

} // namespace platform::interfaces
