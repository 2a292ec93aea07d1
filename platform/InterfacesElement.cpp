// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterfacesDetail.h"

/// Members that every element has.
namespace platform::interfaces {

using dom::Element;
using dom::Node;

namespace {

QString optionalText(const Value &value)
{
    return value.toString();
}

Value attributeOf(Element &element, Arguments &arguments)
{
    const QString name = arguments[0].toString();
    const QString value = element.getAttribute(name);
    return value.isNull() ? Value::null() : Value(value);
}

Value attributesOf(Element &element)
{
    return liveList("IHTMLAttributeCollection", [held = base::Ref<Element>(&element)] {
        ValueList values;
        for (const base::Ref<dom::AttributeNode> &attribute : held->attributes()) values.push_back(valueOf(attribute));
        return values;
    });
}

Value childNodesOf(Node &node)
{
    return liveList("IHTMLDOMChildrenCollection", [held = base::Ref<Node>(&node)] {
        ValueList values;
        for (Node *child = held->firstChild(); child; child = child->nextSibling()) values.push_back(valueOf(child));
        return values;
    });
}

Node &requiredNode(const Value &value)
{
    Node *node = nodeOf(value);
    if (!node) throw base::Error(base::errors::objectNotSet, QStringLiteral("Object variable not set"));
    return *node;
}

} // namespace

Value attributeText(Element &element, const char *attribute)
{
    return element.attributeValue(attribute);
}

void setAttributeText(Element &element, const char *attribute, const Value &value)
{
    const QString text = value.toString();
    if (text.isEmpty())
        element.removeAttribute(QString::fromLatin1(attribute));
    else
        element.setAttribute(QString::fromLatin1(attribute), text);
}

const Interface &element()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLElement"));
        using E = Element;
        InterfaceTable<E>(*interface)
            .method(1001, "setAttribute(name, value, [flags])",
                    [](E &e, Arguments &a) {
                        e.setAttribute(a[0].toString(), optionalText(a[1]));
                        return Value();
                    })
            .method(1002, "getAttribute(name, [flags])", attributeOf)
            .method(1003, "removeAttribute(name, [flags])",
                    [](E &e, Arguments &a) { return Value(e.removeAttribute(a[0].toString())); })
            .property(
                1004, "className", [](E &e) { return Value(e.className()); },
                [](E &e, const Value &v) { e.setClassName(v.toString()); })
            .property(
                1005, "id", [](E &e) { return Value(e.idAttribute()); },
                [](E &e, const Value &v) { e.setIdAttribute(v.toString()); })
            .read(1006, "tagName", [](E &e) { return Value(e.tagName()); })
            .read(1007, "parentElement", [](E &e) { return valueOf(e.parentElement()); })
            .read(1008, "style", [](E &e) { return styleValue(e.style()); })
            .read(1009, "onclick",
                  [](E &e) {
                      const QString script = e.getAttribute(QStringLiteral("onclick"));
                      return script.isNull() ? Value::null() : Value(script);
                  })
            .read(1010, "document", [](E &e) { return valueOf(&e.document()); })
            .read(1011, "sourceIndex", [](E &e) { return Value(e.sourceIndex()); })
            .read(1012, "offsetLeft", [](E &e) { return Value(e.offsetBox().left()); })
            .read(1013, "offsetTop", [](E &e) { return Value(e.offsetBox().top()); })
            .read(1014, "offsetWidth", [](E &e) { return Value(e.offsetBox().width()); })
            .read(1015, "offsetHeight", [](E &e) { return Value(e.offsetBox().height()); })
            .read(1016, "offsetParent", [](E &e) { return valueOf(e.offsetParent()); })
            .property(
                1017, "innerHTML", [](E &e) { return Value(e.innerHTML()); },
                [](E &e, const Value &v) { e.setInnerHTML(v.toString()); })
            .property(
                1018, "innerText", [](E &e) { return Value(e.innerText()); },
                [](E &e, const Value &v) { e.setInnerText(v.toString()); })
            .property(
                1019, "outerHTML", [](E &e) { return Value(e.outerHTML()); },
                [](E &e, const Value &v) { e.setOuterHTML(v.toString()); })
            .read(1020, "outerText", [](E &e) { return Value(e.outerText()); })
            .method(1021, "insertAdjacentHTML(where, html)",
                    [](E &e, Arguments &a) {
                        e.insertAdjacentHTML(a[0].toString(), a[1].toString());
                        return Value();
                    })
            .method(1022, "insertAdjacentText(where, text)",
                    [](E &e, Arguments &a) {
                        e.insertAdjacentText(a[0].toString(), a[1].toString());
                        return Value();
                    })
            .method(1023, "click()",
                    [](E &e, Arguments &) {
                        e.click();
                        return Value();
                    })
            .read(1024, "children", [](E &e) { return valueOf(e.children()); })
            .read(1025, "all", [](E &e) { return valueOf(e.all()); })
            .property(
                1026, "title", [](E &e) { return attributeText(e, "title"); },
                [](E &e, const Value &v) { setAttributeText(e, "title", v); })
            .property(
                1027, "lang", [](E &e) { return attributeText(e, "lang"); },
                [](E &e, const Value &v) { setAttributeText(e, "lang", v); });
        return interface;
    }();
    return *made;
}

const Interface &element2()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLElement2"));
        using E = Element;
        InterfaceTable<E>(*interface)
            .property(
                1101, "scrollTop", [](E &e) { return Value(e.scrollPosition().y()); },
                [](E &e, const Value &v) { e.setScrollPosition({e.scrollPosition().x(), v.toInt()}); })
            .property(
                1102, "scrollLeft", [](E &e) { return Value(e.scrollPosition().x()); },
                [](E &e, const Value &v) { e.setScrollPosition({v.toInt(), e.scrollPosition().y()}); })
            .read(1103, "scrollHeight", [](E &e) { return Value(e.scrollSize().height()); })
            .read(1104, "scrollWidth", [](E &e) { return Value(e.scrollSize().width()); })
            .read(1105, "clientHeight", [](E &e) { return Value(e.clientSize().height()); })
            .read(1106, "clientWidth", [](E &e) { return Value(e.clientSize().width()); })
            .read(1107, "runtimeStyle", [](E &e) { return styleValue(e.runtimeStyle()); })
            .method(1108, "focus()",
                    [](E &e, Arguments &) {
                        e.focus();
                        return Value();
                    })
            .read(1109, "canHaveChildren", [](E &e) { return Value(!e.isVoid()); });
        return interface;
    }();
    return *made;
}

const Interface &element3()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLElement3"));
        using E = Element;
        InterfaceTable<E>(*interface)
            .read(1201, "isContentEditable", [](E &e) { return Value(e.isContentEditable()); })
            .property(
                1202, "contentEditable",
                [](E &e) {
                    const QString value = e.attributeValue("contenteditable");
                    return value.isEmpty() ? Value("inherit") : Value(value);
                },
                [](E &e, const Value &v) {
                    const bool inherits = v.toString().compare(QLatin1String("inherit"), Qt::CaseInsensitive) == 0;
                    setAttributeText(e, "contenteditable", inherits ? Value("") : v);
                });
        return interface;
    }();
    return *made;
}

const Interface &element4()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLElement4"));
        InterfaceTable<Element>(*interface)
            .method(1301, "getAttributeNode(name)",
                    [](Element &e, Arguments &a) {
                        const QString name = a[0].toString();
                        for (const base::Ref<dom::AttributeNode> &attribute : e.attributes()) {
                            if (attribute->nodeName().compare(name, Qt::CaseInsensitive) == 0) return valueOf(attribute);
                        }
                        return Value::nothing();
                    })
            .method(1302, "removeAttributeNode(attribute)", [](Element &e, Arguments &a) {
                const ObjectRef object = a[0].toObject();
                if (object.isNothing() || object.type()->name != QLatin1String("IHTMLDOMAttribute"))
                    throw base::Error(base::errors::typeMismatch, QStringLiteral("Type mismatch"));
                e.removeAttributeNode(*object.as<dom::AttributeNode>());
                return a[0];
            });
        return interface;
    }();
    return *made;
}

const Interface &uniqueName()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLUniqueName"));
        InterfaceTable<Element>(*interface).read(1401, "uniqueID", [](Element &e) { return Value(e.uniqueID()); });
        return interface;
    }();
    return *made;
}

const Interface &node()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLDOMNode"));
        using N = Node;
        InterfaceTable<N>(*interface)
            .read(1501, "nodeType", [](N &n) { return Value(n.nodeType()); })
            .read(1502, "nodeName", [](N &n) { return Value(n.nodeName()); })
            .property(
                1503, "nodeValue",
                [](N &n) { return n.isText() || n.isComment() ? Value(n.nodeValue()) : Value::null(); },
                [](N &n, const Value &v) { n.setNodeValue(v.toString()); })
            .read(1504, "parentNode", [](N &n) { return valueOf(static_cast<Node *>(n.parentNode())); })
            .read(1505, "childNodes", childNodesOf)
            .read(1506, "attributes",
                  [](N &n) { return n.isElement() ? attributesOf(*n.asElement()) : Value::nothing(); })
            .read(1507, "firstChild", [](N &n) { return valueOf(n.firstChild()); })
            .read(1508, "lastChild", [](N &n) { return valueOf(n.lastChild()); })
            .read(1509, "previousSibling", [](N &n) { return valueOf(n.previousSibling()); })
            .read(1510, "nextSibling", [](N &n) { return valueOf(n.nextSibling()); })
            .method(1511, "hasChildNodes()", [](N &n, Arguments &) { return Value(n.hasChildNodes()); })
            .method(1512, "appendChild(newChild)",
                    [](N &n, Arguments &a) { return valueOf(n.appendChild(requiredNode(a[0])).get()); })
            .method(1513, "insertBefore(newChild, [refChild])",
                    [](N &n, Arguments &a) { return valueOf(n.insertBefore(requiredNode(a[0]), nodeOf(a[1])).get()); })
            .method(1514, "removeChild(oldChild)",
                    [](N &n, Arguments &a) { return valueOf(n.removeChild(requiredNode(a[0])).get()); })
            .method(1515, "replaceNode(replacement)",
                    [](N &n, Arguments &a) { return valueOf(n.replaceNode(requiredNode(a[0])).get()); })
            .method(1516, "removeNode([deep])",
                    [](N &n, Arguments &) {
                        const base::Ref<Node> held(&n);
                        n.removeNode();
                        return valueOf(held.get());
                    })
            .method(1517, "cloneNode([deep])",
                    [](N &n, Arguments &a) { return valueOf(n.clone(a[0].toBoolean()).get()); });
        return interface;
    }();
    return *made;
}

const Interface &attribute()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLDOMAttribute"));
        using A = dom::AttributeNode;
        InterfaceTable<A>(*interface)
            .read(1601, "nodeName", [](A &a) { return Value(a.nodeName()); })
            .property(
                1602, "nodeValue", [](A &a) { return Value(a.nodeValue()); },
                [](A &a, const Value &v) { a.setNodeValue(v.toString()); })
            .read(1603, "specified", [](A &a) { return Value(a.specified()); });
        return interface;
    }();
    return *made;
}

} // namespace platform::interfaces
