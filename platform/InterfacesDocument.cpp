// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/View.h"
#include "platform/DispatchObject.h"
#include "platform/InterfacesDetail.h"

#include <map>
#include <string>

/// The document, its collections and the event object.
namespace platform::interfaces {

using dom::Document;
using dom::Element;

namespace {

/// A elements with a name.
Value anchorsOf(Document &document)
{
    return liveList("IHTMLElementCollection", [held = base::Ref<Document>(&document)] {
        ValueList values;
        for (Element *element : held->elementsNamed("a")) {
            if (!element->attributeValue("name").isEmpty()) values.push_back(valueOf(element));
        }
        return values;
    });
}

Value elementFromPoint(Document &document, Arguments &arguments)
{
    if (!document.boxes) return Value::nothing();
    return valueOf(document.boxes->elementFromPoint({arguments[0].toInt(), arguments[1].toInt()}));
}

/// By a number or by an id; what isn't there is Nothing.
Value itemOf(dom::ElementCollection &collection, const Value &key)
{
    // Elements without an id aren't found by an empty one.
    if (key.isString()) return key.toString().isEmpty() ? Value::nothing() : valueOf(collection.item(key.toString()));
    const int index = key.toInt();
    return index < 0 ? Value::nothing() : valueOf(collection.item(uint32_t(index)));
}

/// One for one, a list for several, Nothing for none.
Value named(const ValueList &values, const QString &name)
{
    ValueList found;
    for (const Value &value : values) {
        if (!value.isObject()) continue;
        Element *element = elementOf(value);
        if (!element) continue;
        if (element->idAttribute() == name || element->attributeValue("name") == name) found.push_back(value);
    }
    if (found.empty()) return Value::nothing();
    if (found.size() == 1) return found.front();
    return liveList("IHTMLElementCollection", [found] { return found; });
}

Value listItem(LiveList &list, const Value &key)
{
    const ValueList values = list.values();
    if (key.isString()) {
        for (const Value &value : values) {
            if (value.isObject() && value.toObject().type()->name == QLatin1String("IHTMLDOMAttribute") &&
                value.toObject().as<dom::AttributeNode>()->nodeName().compare(key.toString(), Qt::CaseInsensitive) == 0)
                return value;
        }
        if (!values.empty() && values.front().toObject().type()->name != QLatin1String("IHTMLElement"))
            return Value::nothing();
        return named(values, key.toString());
    }
    const qint64 index = key.toInteger();
    return index < 0 || index >= qint64(values.size()) ? Value::nothing() : values[std::size_t(index)];
}

} // namespace

const Interface &document2()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLDocument2"));
        using D = Document;
        InterfaceTable<D>(*interface)
            .read(101, "all", [](D &d) { return valueOf(d.all()); })
            .read(102, "body", [](D &d) { return valueOf(d.body()); })
            .read(103, "anchors", anchorsOf)
            .read(104, "selection", [](D &d) { return selectionOf(d); })
            .read(105, "styleSheets", styleSheetsOf)
            .method(106, "createStyleSheet([href], [index])",
                    [](D &d, Arguments &a) { return createStyleSheet(d, a[0].toString()); })
            .method(107, "createElement(tag)",
                    [](D &d, Arguments &a) { return valueOf(d.createElement(a[0].toString()).get()); })
            .method(108, "elementFromPoint(x, y)", elementFromPoint)
            .read(109, "URL",
                  [](D &d) {
                      const QString url = d.baseURL();
                      return Value(url.isEmpty() ? QStringLiteral("about:blank") : url);
                  })
            .read(110, "parentWindow",
                  [](D &d) {
                      static const ObjectType type = plainType(QStringLiteral("IHTMLWindow2"), {&window2()});
                      return countedValue<D>(type, &d);
                  })
            .property(
                111, "title",
                [](D &d) {
                    const std::vector<Element *> &titles = d.elementsNamed("title");
                    return titles.empty() ? Value("") : Value(titles.front()->innerText());
                },
                [](D &d, const Value &v) {
                    const std::vector<Element *> &titles = d.elementsNamed("title");
                    if (!titles.empty()) return titles.front()->setInnerText(v.toString());
                    const std::vector<Element *> &heads = d.elementsNamed("head");
                    if (heads.empty()) return;
                    const base::Ref<Element> title = d.createElement(QStringLiteral("title"));
                    title->setInnerText(v.toString());
                    heads.front()->appendChild(*title);
                })
            .read(112, "displayServices", displayServicesOf)
            .read(113, "markupServices", markupServicesOf);
        return interface;
    }();
    return *made;
}

const Interface &document3()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLDocument3"));
        using D = Document;
        InterfaceTable<D>(*interface)
            .read(201, "documentElement", [](D &d) { return valueOf(d.documentElement()); })
            .method(202, "getElementById(id)",
                    [](D &d, Arguments &a) { return valueOf(d.getElementById(a[0].toString())); })
            .method(203, "createTextNode(text)",
                    [](D &d, Arguments &a) { return valueOf(d.createTextNode(a[0].toString()).get()); })
            .method(204, "getElementsByTagName(name)",
                    [](D &d, Arguments &a) {
                        const QString name = a[0].toString();
                        return valueOf(name == u'*' ? d.all() : d.all()->tags(name));
                    });
        return interface;
    }();
    return *made;
}

const Interface &window2()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLWindow2"));
        using D = Document;
        InterfaceTable<D>(*interface)
            .read(301, "event",
                  [](D &d) { return d.interaction ? valueOf(d.interaction->currentEvent()) : Value::nothing(); })
            .read(302, "document", [](D &d) { return valueOf(&d); })
            .read(303, "external", [](D &d) {
                // What the host gave the surface that shows the document.
                const auto *view = dynamic_cast<surface::View *>(d.interaction);
                QObject *const external = view ? view->widget().externalObject() : nullptr;
                return external ? platform::valueOf(external) : Value::nothing();
            });
        return interface;
    }();
    return *made;
}

const Interface &elementCollection()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLElementCollection"));
        using C = dom::ElementCollection;
        InterfaceTable<C>(*interface)
            .method(defaultMemberId, "item(index)", [](C &c, Arguments &a) { return itemOf(c, a[0]); })
            .read(401, "length", [](C &c) { return Value(c.length()); })
            .method(402, "tags(name)", [](C &c, Arguments &a) { return valueOf(c.tags(a[0].toString())); });
        return interface;
    }();
    return *made;
}

const Interface &list(const char *name)
{
    static std::map<std::string, const Interface *> lists;
    const Interface *&made = lists[name];
    if (!made) {
        auto *interface = new Interface(QString::fromLatin1(name));
        InterfaceTable<LiveList>(*interface)
            .method(defaultMemberId, "item(index)", [](LiveList &l, Arguments &a) { return listItem(l, a[0]); })
            .read(401, "length", [](LiveList &l) { return Value(uint(l.values().size())); });
        made = interface;
    }
    return *made;
}

const Interface &attributeCollection()
{
    return list("IHTMLAttributeCollection");
}

const Interface &nodeCollection()
{
    return list("IHTMLDOMChildrenCollection");
}

const Interface &event()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLEventObj"));
        using E = dom::EventObject;
        InterfaceTable<E>(*interface)
            .read(501, "srcElement", [](E &e) { return valueOf(e.srcElement.get()); })
            .read(502, "altKey", [](E &e) { return Value(e.altKey); })
            .read(503, "ctrlKey", [](E &e) { return Value(e.ctrlKey); })
            .read(504, "shiftKey", [](E &e) { return Value(e.shiftKey); })
            .property(
                505, "returnValue", [](E &e) { return Value(e.returnValue); },
                [](E &e, const Value &v) { e.returnValue = v.toBoolean(); })
            .property(
                506, "cancelBubble", [](E &e) { return Value(e.cancelBubble); },
                [](E &e, const Value &v) { e.cancelBubble = v.toBoolean(); })
            .property(
                507, "keyCode", [](E &e) { return Value(e.keyCode); },
                [](E &e, const Value &v) { e.keyCode = v.toInt(); })
            .read(508, "button", [](E &e) { return Value(e.button); })
            .read(509, "x", [](E &e) { return Value(e.x); })
            .read(510, "y", [](E &e) { return Value(e.y); });
        return interface;
    }();
    return *made;
}

} // namespace platform::interfaces
