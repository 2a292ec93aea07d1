// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Interfaces.h"

#include "platform/DispatchObject.h"
#include "platform/InterfacesDetail.h"

#include <map>
#include <string>

namespace platform {

using base::Error;
using base::Ref;

namespace {

const ObjectType &elementType()
{
    static const ObjectType type{
        QStringLiteral("IHTMLElement"),
        [](const ObjectRef &object) {
            using namespace interfaces;
            std::vector<const Interface *> list{&element(), &element2(), &element3(), &element4(), &uniqueName(), &node()};
            const dom::Element &e = *object.as<dom::Element>();
            if (const Interface *own = ofTag(e)) list.push_back(own);
            return list;
        },
        [](const ObjectRef &object) {
            const dom::Element &e = *object.as<dom::Element>();
            return std::vector<std::pair<QString, Value>>{{QStringLiteral("tagName"), e.tagName()},
                                                          {QStringLiteral("id"), e.idAttribute()}};
        }};
    return type;
}

[[noreturn]] void mismatch()
{
    throw Error(base::errors::typeMismatch, QStringLiteral("Type mismatch"));
}

} // namespace

ObjectType plainType(const QString &name, const std::vector<const Interface *> &interfaces)
{
    return {name, [interfaces](const ObjectRef &) { return interfaces; }, {}};
}

Value valueOf(dom::Node *node)
{
    static const ObjectType documentType = plainType(
        QStringLiteral("IHTMLDocument2"), {&interfaces::document2(), &interfaces::document3(), &interfaces::node()});
    static const ObjectType nodeType = plainType(QStringLiteral("IHTMLDOMNode"), {&interfaces::node()});
    if (!node) return Value::nothing();
    // Each table reads the object as its own class; these classes have one base, so the address is the same.
    if (dom::Element *element = node->asElement()) return countedValue(elementType(), element);
    if (node->type() == dom::NodeType::Document) return countedValue(documentType, static_cast<dom::Document *>(node));
    return countedValue(nodeType, node);
}

Value valueOf(const Ref<dom::ElementCollection> &collection)
{
    static const ObjectType type =
        plainType(QStringLiteral("IHTMLElementCollection"), {&interfaces::elementCollection()});
    return countedValue(type, collection.get());
}

Value valueOf(const Ref<dom::AttributeNode> &attribute)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLDOMAttribute"), {&interfaces::attribute()});
    return countedValue(type, attribute.get());
}

Value valueOf(const Ref<dom::EventObject> &event)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLEventObj"), {&interfaces::event()});
    return countedValue(type, event.get());
}

dom::Node *nodeOf(const Value &value)
{
    const ObjectRef &object = value.toObject();
    if (object.isNothing()) return nullptr;
    const QString &name = object.type()->name;
    if (name != QLatin1String("IHTMLElement") && name != QLatin1String("IHTMLDOMNode") &&
        name != QLatin1String("IHTMLDocument2"))
        mismatch();
    return object.as<dom::Node>();
}

dom::Element *elementOf(const Value &value)
{
    dom::Node *node = nodeOf(value);
    if (node && !node->isElement()) mismatch();
    return node ? node->asElement() : nullptr;
}

Value liveList(const char *name, std::function<ValueList()> read)
{
    static std::map<std::string, ObjectType> types;
    ObjectType &type = types[name];
    if (type.name.isEmpty()) type = plainType(QString::fromLatin1(name), {&interfaces::list(name)});
    return countedValue(type, new LiveList(std::move(read)));
}

const std::vector<const Interface *> &documentInterfaces()
{
    using namespace interfaces;
    static const std::vector<const Interface *> all = [] {
        std::vector<const Interface *> list{
            &document2(), &document3(), &window2(), &element(), &element2(), &element3(), &element4(), &uniqueName(),
            &node(), &attribute(), &elementCollection(), &attributeCollection(), &nodeCollection(), &style(),
            &ruleStyle(), &styleSheet(), &styleSheets(), &styleSheetRule(), &styleSheetRules(), &selection(),
            &textRange(), &controlRange(), &caret(), &displayServices(), &markupPointer(), &markupServices(),
            &selectedCells(), &event()};
        // Those by tag, each once.
        const base::Ref<dom::Document> document = dom::Document::create();
        for (const char *tag : {"a", "area", "img", "body", "table", "thead", "tr", "td", "hr", "font", "link", "input",
                                "map", "span", "p"})
            list.push_back(ofTag(*document->createElement(QLatin1String(tag))));
        return list;
    }();
    return all;
}

namespace {

template <class T> T *counted(const Value &value, const char *typeName)
{
    const ObjectRef &object = value.toObject();
    if (object.isNothing()) return nullptr;
    if (object.type()->name != QLatin1String(typeName)) mismatch();
    return object.as<T>();
}

/// Pointers and references of one class, under the spellings that signatures use.
template <class T, class ToValue, class FromValue>
void registerObject(ToValue toValue, FromValue fromValue, const std::vector<QByteArray> &names)
{
    std::vector<QByteArray> pointers, references;
    for (const QByteArray &name : names) {
        pointers.push_back(name + '*');
        for (const char *prefix : {"base::Ref<", "dom::Ref<", "Ref<"}) references.push_back(prefix + name + '>');
    }
    registerConversion<T *>([toValue](T *const &object) { return toValue(object); }, fromValue, pointers);
    registerConversion<Ref<T>>([toValue](const Ref<T> &object) { return toValue(object.get()); },
                               [fromValue](const Value &value) { return Ref<T>(fromValue(value)); }, references);
}

} // namespace

void registerDocumentTypes()
{
    static bool done = false;
    if (std::exchange(done, true)) return;
    registerObject<dom::Element>([](dom::Element *e) { return valueOf(e); }, elementOf,
                                 {"dom::Element", "Element", "IHTMLElement"});
    registerObject<dom::Node>([](dom::Node *n) { return valueOf(n); }, nodeOf, {"dom::Node", "Node", "IHTMLDOMNode"});
    registerObject<dom::Document>(
        [](dom::Document *d) { return valueOf(d); },
        [](const Value &value) { return counted<dom::Document>(value, "IHTMLDocument2"); },
        {"dom::Document", "Document", "IHTMLDocument2", "IHTMLDocument3"});
    registerObject<dom::EventObject>(
        [](dom::EventObject *e) { return valueOf(Ref<dom::EventObject>(e)); },
        [](const Value &value) { return counted<dom::EventObject>(value, "IHTMLEventObj"); },
        {"dom::EventObject", "EventObject", "IHTMLEventObj"});
}

} // namespace platform
