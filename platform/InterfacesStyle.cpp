// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleObject.h"
#include "engine/css/StyleSheetObject.h"
#include "platform/DispatchObject.h"
#include "platform/InterfacesDetail.h"

/// Style objects, sheets and rules.
namespace platform::interfaces {

using css::RuleObject;
using css::StyleObject;
using css::StyleSheetObject;
using dom::Document;

namespace {

/// The named members of a style, in the order of their numbers, which count from `firstProperty`. New ones go to the end.
constexpr int firstProperty = 4101;
constexpr const char *styleProperties[] = {
    // Font and text
    "fontFamily", "fontSize", "fontWeight", "fontStyle", "fontVariant", "font", "color", "textTransform",
    "textDecoration", "textDecorationNone", "textDecorationUnderline", "textDecorationOverline",
    "textDecorationLineThrough", "textAlign", "textJustify", "textIndent", "verticalAlign", "direction",
    "letterSpacing", "wordSpacing", "lineHeight", "whiteSpace",
    // Background
    "background", "backgroundColor", "backgroundImage", "backgroundRepeat", "backgroundAttachment",
    "backgroundPosition", "backgroundPositionX", "backgroundPositionY",
    // Border
    "border", "borderTop", "borderRight", "borderBottom", "borderLeft", "borderWidth", "borderTopWidth",
    "borderRightWidth", "borderBottomWidth", "borderLeftWidth", "borderColor", "borderTopColor", "borderRightColor",
    "borderBottomColor", "borderLeftColor", "borderStyle", "borderTopStyle", "borderRightStyle", "borderBottomStyle",
    "borderLeftStyle", "borderCollapse",
    // List
    "listStyle", "listStyleType", "listStyleImage", "listStylePosition",
    // Box and position
    "margin", "marginTop", "marginRight", "marginBottom", "marginLeft", "padding", "paddingTop", "paddingRight",
    "paddingBottom", "paddingLeft", "left", "top", "width", "height", "zIndex", "position", "display", "visibility",
    "overflow", "styleFloat", "clear", "clip", "cursor", "pageBreakBefore", "pageBreakAfter",
};

Interface *makeStyle(const char *name)
{
    auto *interface = new Interface(QString::fromLatin1(name));
    using S = StyleObject;
    InterfaceTable<S> table(*interface);
    table
        .property(
            4001, "cssText", [](S &s) { return Value(s.cssText()); },
            [](S &s, const Value &v) { s.setCssText(v.toString()); })
        .method(4002, "setAttribute(name, value, [flags])",
                [](S &s, Arguments &a) {
                    s.setAttribute(a[0].toString(), valueToVariant(a[1]));
                    return Value();
                })
        .method(4003, "getAttribute(name, [flags])",
                [](S &s, Arguments &a) {
                    const QString value = s.getAttribute(a[0].toString());
                    return value.isNull() ? Value::null() : Value(value);
                })
        .method(4004, "removeAttribute(name, [flags])",
                [](S &s, Arguments &a) { return Value(s.removeAttribute(a[0].toString())); });
    int id = firstProperty;
    for (const char *property : styleProperties) {
        const QString key = QString::fromLatin1(property);
        table.property(
            id++, property, [key](S &s) { return Value(s.property(key)); },
            [key](S &s, const Value &v) { s.setProperty(key, valueToVariant(v)); });
    }
    return interface;
}

Value sheetValue(StyleSheetObject *sheet)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLStyleSheet"), {&styleSheet()});
    return countedValue(type, sheet);
}

Value ruleValue(RuleObject *rule)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLStyleSheetRule"), {&styleSheetRule()});
    return countedValue(type, rule);
}

Value rulesOf(StyleSheetObject &sheet)
{
    return liveList("IHTMLStyleSheetRulesCollection", [held = base::Ref<StyleSheetObject>(&sheet)] {
        ValueList values;
        for (uint32_t i = 0; i < held->ruleCount(); ++i) values.push_back(ruleValue(held->rule(i).get()));
        return values;
    });
}

int indexOr(const Value &value, int fallback)
{
    return value.isEmpty() ? fallback : value.toInt();
}

} // namespace

const Interface &style()
{
    static const Interface *made = makeStyle("IHTMLStyle");
    return *made;
}

const Interface &ruleStyle()
{
    static const Interface *made = makeStyle("IHTMLRuleStyle");
    return *made;
}

const Interface &styleSheet()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLStyleSheet"));
        using S = StyleSheetObject;
        InterfaceTable<S>(*interface)
            .property(
                4301, "cssText", [](S &s) { return Value(s.cssText()); },
                [](S &s, const Value &v) { s.setCssText(v.toString()); })
            .read(4302, "rules", rulesOf)
            .method(4303, "addRule(selector, style, [index])",
                    [](S &s, Arguments &a) {
                        return Value(s.addRule(a[0].toString(), a[1].toString(), indexOr(a[2], -1)));
                    })
            .method(4304, "removeRule(index)",
                    [](S &s, Arguments &a) {
                        s.removeRule(a[0].toInt());
                        return Value();
                    })
            .read(4305, "href", [](S &s) { return Value(s.href()); })
            .read(4306, "media", [](S &s) { return Value(s.media()); })
            .property(
                4307, "disabled", [](S &s) { return Value(s.disabled()); },
                [](S &s, const Value &v) { s.setDisabled(v.toBoolean()); })
            .read(4308, "owningElement", [](S &s) { return valueOf(s.owningElement()); });
        return interface;
    }();
    return *made;
}

const Interface &styleSheets()
{
    return list("IHTMLStyleSheetsCollection");
}

const Interface &styleSheetRule()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLStyleSheetRule"));
        using R = RuleObject;
        InterfaceTable<R>(*interface)
            .property(
                4401, "selectorText", [](R &r) { return Value(r.selectorText()); },
                [](R &r, const Value &v) { r.setSelectorText(v.toString()); })
            .read(4402, "style", [](R &r) { return styleValue(r.style()); });
        return interface;
    }();
    return *made;
}

const Interface &styleSheetRules()
{
    return list("IHTMLStyleSheetRulesCollection");
}

Value styleValue(StyleObject *object)
{
    static const ObjectType inlineType = plainType(QStringLiteral("IHTMLStyle"), {&style()});
    static const ObjectType ruleType = plainType(QStringLiteral("IHTMLRuleStyle"), {&ruleStyle()});
    const bool isRule = object && object->kind() == StyleObject::Kind::Rule;
    return countedValue(isRule ? ruleType : inlineType, object);
}

Value styleSheetsOf(Document &document)
{
    return liveList("IHTMLStyleSheetsCollection", [held = base::Ref<Document>(&document)] {
        ValueList values;
        dom::StyleServices *styles = held->styles;
        const uint32_t count = styles ? styles->styleSheetCount(*held) : 0;
        for (uint32_t i = 0; i < count; ++i) values.push_back(sheetValue(styles->styleSheet(*held, i)));
        return values;
    });
}

Value createStyleSheet(Document &document, const QString &href)
{
    if (!document.styles)
        throw base::Error(base::errors::notPossible, QStringLiteral("The document has no styles"));
    return sheetValue(document.styles->createStyleSheet(document, href));
}

} // namespace platform::interfaces
