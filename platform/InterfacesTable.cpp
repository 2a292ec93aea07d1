// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterfacesDetail.h"

/// Members that only elements of some tags have.
namespace platform::interfaces {

using dom::Element;

namespace {

Value elementList(std::function<std::vector<Element *>()> read)
{
    return liveList("IHTMLElementCollection", [read] {
        ValueList values;
        for (Element *element : read()) values.push_back(valueOf(element));
        return values;
    });
}

int indexOr(const Value &value, int fallback)
{
    return value.isEmpty() ? fallback : value.toInt();
}

void setSpan(Element &cell, const char *attribute, const Value &value)
{
    const int span = value.toInt();
    if (span < 1) throw base::Error(base::errors::invalidValue, QStringLiteral("Invalid property value"));
    cell.setAttribute(QString::fromLatin1(attribute), QString::number(span));
}

/// Properties that are the attribute of that name. `ids` count on from `firstId`.
void attributes(Interface &interface, int firstId, std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        const QByteArray attribute = QByteArray(name).toLower();
        InterfaceTable<Element>(interface).property(
            firstId++, name, [attribute](Element &e) { return attributeText(e, attribute.constData()); },
            [attribute](Element &e, const Value &v) { setAttributeText(e, attribute.constData(), v); });
    }
}

void hrefMember(Interface &interface, int id)
{
    InterfaceTable<Element>(interface).property(
        id, "href", [](Element &e) { return Value(e.href()); },
        [](Element &e, const Value &v) { e.setAttribute(QStringLiteral("href"), v.toString()); });
}

} // namespace

const Interface &anchor()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLAnchorElement"));
        hrefMember(*interface, 2001);
        attributes(*interface, 2002, {"target", "name", "rel", "rev"});
        return interface;
    }();
    return *made;
}

const Interface &area()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLAreaElement"));
        hrefMember(*interface, 2101);
        attributes(*interface, 2102, {"target", "alt", "shape", "coords"});
        return interface;
    }();
    return *made;
}

const Interface &image()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLImgElement"));
        attributes(*interface, 2201, {"align", "alt", "name", "src", "border", "hspace", "vspace", "useMap"});
        return interface;
    }();
    return *made;
}

const Interface &body()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLBodyElement"));
        attributes(*interface, 2301, {"background", "bgColor", "text", "link", "vLink", "aLink"});
        InterfaceTable<Element>(*interface)
            .method(2311, "createTextRange()", [](Element &e, Arguments &) { return createTextRange(e); })
            .method(2312, "createControlRange()", [](Element &e, Arguments &) { return createControlRange(e); });
        return interface;
    }();
    return *made;
}

const Interface &table()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLTable"));
        using E = Element;
        InterfaceTable<E>(*interface)
            .read(2401, "rows",
                  [](E &e) {
                      return elementList([held = base::Ref<E>(&e)] { return dom::table::rows(*held); });
                  })
            .read(2402, "tHead", [](E &e) { return valueOf(dom::table::tHead(e)); })
            .method(2403, "createTHead()", [](E &e, Arguments &) { return valueOf(dom::table::createTHead(e).get()); })
            .method(2404, "insertRow([index])",
                    [](E &e, Arguments &a) { return valueOf(dom::table::insertRow(e, indexOr(a[0], -1)).get()); })
            .method(2405, "deleteRow([index])", [](E &e, Arguments &a) {
                dom::table::deleteRow(e, indexOr(a[0], -1));
                return Value();
            });
        attributes(*interface, 2406,
                   {"align", "bgColor", "background", "border", "borderColor", "cellPadding", "cellSpacing", "width",
                    "height", "cols", "rules", "frame"});
        return interface;
    }();
    return *made;
}

const Interface &tableSection()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLTableSection"));
        using E = Element;
        InterfaceTable<E>(*interface)
            .read(2501, "rows",
                  [](E &e) {
                      return elementList([held = base::Ref<E>(&e)] { return dom::table::sectionRows(*held); });
                  })
            .method(2502, "insertRow([index])",
                    [](E &e, Arguments &a) { return valueOf(dom::table::insertRow(e, indexOr(a[0], -1)).get()); })
            .method(2503, "deleteRow([index])", [](E &e, Arguments &a) {
                dom::table::deleteRow(e, indexOr(a[0], -1));
                return Value();
            });
        attributes(*interface, 2504, {"align", "vAlign", "bgColor"});
        return interface;
    }();
    return *made;
}

const Interface &tableRow()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLTableRow"));
        using E = Element;
        InterfaceTable<E>(*interface)
            .read(2601, "rowIndex", [](E &e) { return Value(dom::table::rowIndex(e)); })
            .read(2602, "cells",
                  [](E &e) {
                      return elementList([held = base::Ref<E>(&e)] { return dom::table::cells(*held); });
                  })
            .method(2603, "insertCell([index])",
                    [](E &e, Arguments &a) { return valueOf(dom::table::insertCell(e, indexOr(a[0], -1)).get()); })
            .method(2604, "deleteCell([index])", [](E &e, Arguments &a) {
                dom::table::deleteCell(e, indexOr(a[0], -1));
                return Value();
            });
        attributes(*interface, 2605, {"align", "vAlign", "bgColor", "borderColor", "height"});
        return interface;
    }();
    return *made;
}

const Interface &tableCell()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLTableCell"));
        using E = Element;
        InterfaceTable<E>(*interface)
            .read(2701, "cellIndex", [](E &e) { return Value(dom::table::cellIndex(e)); })
            .property(
                2702, "colSpan", [](E &e) { return Value(dom::table::span(e, "colspan")); },
                [](E &e, const Value &v) { setSpan(e, "colspan", v); })
            .property(
                2703, "rowSpan", [](E &e) { return Value(dom::table::span(e, "rowspan")); },
                [](E &e, const Value &v) { setSpan(e, "rowspan", v); })
            .property(
                2704, "noWrap", [](E &e) { return Value(e.hasAttribute("nowrap")); },
                [](E &e, const Value &v) {
                    if (v.toBoolean())
                        e.setAttribute(QStringLiteral("nowrap"), QStringLiteral("nowrap"));
                    else
                        e.removeAttribute(QStringLiteral("nowrap"));
                });
        attributes(*interface, 2705,
                   {"align", "vAlign", "bgColor", "background", "borderColor", "width", "height"});
        return interface;
    }();
    return *made;
}

namespace {

const Interface &attributeInterface(const char *name, int firstId, std::initializer_list<const char *> names)
{
    auto *interface = new Interface(QString::fromLatin1(name));
    attributes(*interface, firstId, names);
    return *interface;
}

} // namespace

const Interface *ofTag(const Element &element)
{
    static const QHash<QString, const Interface *> tags = [] {
        const Interface &rule = attributeInterface("IHTMLHRElement", 2801, {"align", "width", "size", "color", "noShade"});
        const Interface &font = attributeInterface("IHTMLFontElement", 2901, {"color", "face", "size"});
        const Interface &link = attributeInterface("IHTMLLinkElement", 3001, {"href", "rel", "rev", "type", "media"});
        const Interface &input = attributeInterface("IHTMLInputElement", 3101, {"type", "value", "name", "size", "maxLength"});
        const Interface &map = attributeInterface("IHTMLMapElement", 3201, {"name"});
        const Interface &span = attributeInterface("IHTMLSpanElement", 3301, {});
        const Interface &block = attributeInterface("IHTMLBlockElement", 3401, {"align"});
        QHash<QString, const Interface *> table{
            {QStringLiteral("a"), &anchor()},          {QStringLiteral("area"), &area()},
            {QStringLiteral("img"), &image()},         {QStringLiteral("body"), &body()},
            {QStringLiteral("table"), &interfaces::table()}, {QStringLiteral("thead"), &tableSection()},
            {QStringLiteral("tbody"), &tableSection()}, {QStringLiteral("tfoot"), &tableSection()},
            {QStringLiteral("tr"), &tableRow()},       {QStringLiteral("td"), &tableCell()},
            {QStringLiteral("th"), &tableCell()},      {QStringLiteral("hr"), &rule},
            {QStringLiteral("font"), &font},           {QStringLiteral("link"), &link},
            {QStringLiteral("input"), &input},         {QStringLiteral("map"), &map},
            {QStringLiteral("span"), &span},
        };
        for (const char *name : {"p", "div", "h1", "h2", "h3", "h4", "h5", "h6", "caption"})
            table.insert(QLatin1String(name), &block);
        return table;
    }();
    if (element.space() != dom::Namespace::Html) return nullptr;
    return tags.value(element.name().text());
}

} // namespace platform::interfaces
