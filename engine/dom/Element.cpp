// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Element.h"

#include "base/Error.h"
#include "base/Fault.h"
#include "engine/dom/Assignment.h"
#include "engine/dom/CharacterData.h"
#include "engine/dom/LineEnds.h"
#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"

namespace dom {

namespace {

[[noreturn]] void refuse(const QString &text)
{
    throw base::Error(base::errors::notPossible, text);
}

MarkupServices &markupOf(const Node &node)
{
    MarkupServices *markup = node.document().markup;
    if (!markup) refuse(QStringLiteral("This document can't read or write HTML."));
    return *markup;
}

bool isRoot(const Element &element)
{
    return element.is(names::html) || element.is(names::head) || element.is(names::body);
}

/// A block held open that is written over itself, empty, stays held open.
void keepHeldOpen(const Element &old, DocumentFragment &content)
{
    if (!old.isHeldOpen()) return;
    for (Node *node = content.firstChild(); node; node = node->nextSibling()) {
        Element *element = node->asElement();
        if (element && element->name() == old.name() && !element->hasChildNodes())
            RawTree::setHeldOpen(*element, true);
    }
}

} // namespace

Element::Element(Document &document, Atom name, Namespace space)
    : ParentNode(document, NodeType::Element), mName(name), mSpace(space)
{
}

Element::~Element() = default;

bool Element::isPrefixed() const
{
    return mName.text().contains(u':');
}

QString Element::nodeName() const
{
    return tagName();
}

QString Element::tagName() const
{
    const QString &name = mName.text();
    const qsizetype colon = name.indexOf(u':');
    if (mSpace != Namespace::Html) return name;
    if (colon < 0) return name.toUpper();
    const QString prefix = name.left(colon);
    if (prefix.compare(QLatin1String("o"), Qt::CaseInsensitive) == 0) return name.toUpper();
    const QString declared = QStringLiteral("xmlns:") + prefix;
    for (const Element *at = this; at; at = at->parentElement())
        for (const Attribute &attribute : at->mAttributes)
            if (attribute.name.text().compare(declared, Qt::CaseInsensitive) == 0) return name.mid(colon + 1);
    return document().declaresPrefix(prefix) ? name.mid(colon + 1) : name.toUpper();
}

void Element::setIdAttribute(const QString &value)
{
    if (value.isEmpty())
        removeAttribute(QStringLiteral("id"));
    else
        setAttribute(QStringLiteral("id"), value);
}

void Element::setClassName(const QString &value)
{
    if (value.isEmpty())
        removeAttribute(QStringLiteral("class"));
    else
        setAttribute(QStringLiteral("class"), value);
}

QString Element::innerHTML() const
{
    base::faults::check("IHTMLElement", "innerHTML");
    return markupOf(*this).innerHTML(*this);
}

QString Element::outerHTML() const
{
    base::faults::check("IHTMLElement", "outerHTML");
    return markupOf(*this).outerHTML(*this);
}

QString Element::innerText() const
{
    return markupOf(*this).innerText(*this);
}

void Element::setInnerHTML(const QString &html)
{
    base::faults::check("IHTMLElement", "innerHTML");
    if (isVoid() || is(names::html)) refuse(QStringLiteral("This element can't have content of its own."));
    Ref<Element> keep(this);
    MarkupServices &markup = markupOf(*this);
    Ref<DocumentFragment> content = markup.parseFragment(document(), *this, html);
    if (!markup.canStandIn(*this, *content)) refuse(QStringLiteral("This HTML can't stand in the element."));
    Assignment assignment(*this);
    while (Node *last = lastChild()) last->removeNode();
    insertBefore(*content, nullptr);
    assignment.done();
}

void Element::setOuterHTML(const QString &html)
{
    base::faults::check("IHTMLElement", "outerHTML");
    if (isRoot(*this)) refuse(QStringLiteral("HTML, HEAD and BODY can't be replaced."));
    ParentNode *parent = parentNode();
    if (!parent) refuse(QStringLiteral("The element stands in no document."));
    Ref<Element> keep(this);
    MarkupServices &markup = markupOf(*this);
    Ref<DocumentFragment> content;
    if (!html.isEmpty()) {
        const Element *context = parent->asElement() ? parent->asElement() : this;
        content = markup.parseFragment(document(), *context, html);
        if (!markup.canStandIn(*parent, *content)) refuse(QStringLiteral("This HTML can't stand in the element's place."));
        keepHeldOpen(*this, *content);
    }
    Assignment assignment(*parent);
    if (content) parent->insertBefore(*content, this);
    removeNode();
    assignment.done();
}

void Element::setInnerText(const QString &text)
{
    base::faults::check("IHTMLElement", "innerText");
    if (isVoid()) refuse(QStringLiteral("This element can't have content."));
    Ref<Element> keep(this);
    Assignment assignment(*this);
    const QString plain = withLf(text);
    Node *only = firstChild();
    if (only && only->isText() && only == lastChild() && !plain.isEmpty()) {
        only->setNodeValue(plain);
    } else {
        while (Node *last = lastChild()) last->removeNode();
        if (!plain.isEmpty()) appendChild(*document().createTextNode(plain));
    }
    assignment.done();
}

namespace {

struct Place {
    ParentNode *parent;
    Node *before;
};

Place adjacentPlace(Element &element, const QString &where)
{
    const QString place = where.toLower();
    if (place == QLatin1String("afterbegin")) return {&element, element.firstChild()};
    if (place == QLatin1String("beforeend")) return {&element, nullptr};
    const bool before = place == QLatin1String("beforebegin");
    if (!before && place != QLatin1String("afterend"))
        throw base::Error(base::errors::invalidCall, QStringLiteral("\"%1\" names no place.").arg(where));
    if (isRoot(element)) refuse(QStringLiteral("Nothing can stand around HTML, HEAD and BODY."));
    if (!element.parentNode()) refuse(QStringLiteral("The element stands in no document."));
    return {element.parentNode(), before ? &element : element.nextSibling()};
}

} // namespace

void Element::insertAdjacentHTML(const QString &where, const QString &html)
{
    base::faults::check("IHTMLElement", "insertAdjacentHTML");
    const Place place = adjacentPlace(*this, where);
    if (place.parent == this && isVoid()) refuse(QStringLiteral("This element can't have content."));
    MarkupServices &markup = markupOf(*this);
    const Element *context = place.parent->asElement() ? place.parent->asElement() : this;
    Ref<DocumentFragment> content = markup.parseFragment(document(), *context, html);
    if (!markup.canStandIn(*place.parent, *content)) refuse(QStringLiteral("This HTML can't stand there."));
    place.parent->insertBefore(*content, place.before);
}

void Element::insertAdjacentText(const QString &where, const QString &text)
{
    base::faults::check("IHTMLElement", "insertAdjacentText");
    const Place place = adjacentPlace(*this, where);
    if (place.parent == this && isVoid()) refuse(QStringLiteral("This element can't have content."));
    if (text.isEmpty()) return;
    place.parent->insertBefore(*document().createTextNode(text), place.before);
}

Ref<ElementCollection> Element::children()
{
    return base::make<ElementCollection>(*this, ElementCollection::Kind::Children);
}

Ref<ElementCollection> Element::all()
{
    return base::make<ElementCollection>(*this, ElementCollection::Kind::All);
}

int Element::sourceIndex() const
{
    return isConnected() ? int(elementsBefore()) : -1;
}

css::StyleObject *Element::style()
{
    return document().styles ? document().styles->style(*this) : nullptr;
}

css::StyleObject *Element::runtimeStyle()
{
    return document().styles ? document().styles->runtimeStyle(*this) : nullptr;
}

const QString *Element::attribute(Atom name) const
{
    for (const Attribute &attribute : mAttributes)
        if (attribute.name == name) return &attribute.value;
    return nullptr;
}

QString Element::attributeValue(const char *name) const
{
    const QString *value = attribute(Atom(name));
    return value ? *value : QString();
}

namespace {

/// The name under which the element keeps the attribute: lower case, or that of a foreign attribute of any case.
Atom attributeAtom(const Element &element, const QString &name)
{
    const Atom lower = Atom::lower(name);
    if (element.space() == Namespace::Html || element.attribute(lower)) return lower;
    for (const Attribute &attribute : element.attributeList())
        if (attribute.name.text().compare(name, Qt::CaseInsensitive) == 0) return attribute.name;
    return Atom(name);
}

bool isAttributeName(const QString &name)
{
    if (name.isEmpty()) return false;
    for (const QChar c : name)
        if (c.isSpace() || c == u'"' || c == u'\'' || c == u'>' || c == u'/' || c == u'=' || c == u'<' || c.isNull())
            return false;
    return true;
}

void writeAttribute(Element &element, Atom name, const QString *value)
{
    if (element.isConnected() && element.document().door) {
        Assignment assignment(element);
        element.document().door->setAttribute(element, name, value);
        assignment.done();
    } else {
        RawTree::setAttribute(element, name, value);
    }
}

} // namespace

QString Element::getAttribute(const QString &name) const
{
    const QString *value = attribute(attributeAtom(*this, name));
    return value ? *value : QString();
}

void Element::setAttribute(const QString &name, const QString &value)
{
    if (!isAttributeName(name))
        throw base::Error(base::errors::invalidCall, QStringLiteral("\"%1\" can't name an attribute.").arg(name));
    const Atom atom = attributeAtom(*this, name);
    const QString text = value.isNull() ? QStringLiteral("") : withLf(value);
    if (const QString *now = attribute(atom); now && *now == text) return;
    writeAttribute(*this, atom, &text);
}

bool Element::removeAttribute(const QString &name)
{
    const Atom atom = attributeAtom(*this, name);
    if (!hasAttribute(atom)) return false;
    writeAttribute(*this, atom, nullptr);
    return true;
}

std::vector<Ref<AttributeNode>> Element::attributes()
{
    std::vector<Ref<AttributeNode>> nodes;
    for (const Attribute &attribute : mAttributes) nodes.push_back(base::make<AttributeNode>(*this, attribute.name));
    for (const Atom name : possibleAttributes(mName))
        if (!hasAttribute(name)) nodes.push_back(base::make<AttributeNode>(*this, name));
    return nodes;
}

void Element::removeAttributeNode(const AttributeNode &node)
{
    if (!hasAttribute(node.name())) return;
    writeAttribute(*this, node.name(), nullptr);
}

QString AttributeNode::nodeValue() const
{
    const QString *value = mElement->attribute(mName);
    return value ? *value : defaultAttributeValue(mElement->name(), mName);
}

void AttributeNode::setNodeValue(const QString &value)
{
    mElement->setAttribute(mName.text(), value);
}

bool Element::isContentEditable() const
{
    for (const Element *at = this; at; at = at->parentElement()) {
        const QString *own = at->attribute(names::contenteditable);
        if (!own) continue;
        if (own->compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) return false;
        if (own->compare(QLatin1String("inherit"), Qt::CaseInsensitive) == 0) continue;
        return document().editMode() != EditMode::Disabled;
    }
    return document().editMode() == EditMode::Edit;
}

QRect Element::offsetBox() const
{
    return isConnected() && document().boxes ? document().boxes->offsetBox(*this) : QRect(0, 0, 0, 0);
}

Element *Element::offsetParent() const
{
    return isConnected() && document().boxes ? document().boxes->offsetParent(*this) : nullptr;
}

QSize Element::clientSize() const
{
    return isConnected() && document().boxes ? document().boxes->clientSize(*this) : QSize(0, 0);
}

QSize Element::scrollSize() const
{
    return isConnected() && document().boxes ? document().boxes->scrollSize(*this) : QSize(0, 0);
}

QPoint Element::scrollPosition() const
{
    return isConnected() && document().boxes ? document().boxes->scrollPosition(*this) : QPoint();
}

void Element::setScrollPosition(QPoint position)
{
    if (isConnected() && document().boxes) document().boxes->setScrollPosition(*this, position);
}

void Element::focus()
{
    if (!isConnected() || !document().interaction) refuse(QStringLiteral("The element can't take the focus."));
    document().interaction->focus(*this);
}

void Element::click()
{
    if (isConnected() && document().interaction) document().interaction->click(*this);
}

QString Element::href() const
{
    if (!is(names::a) && !is(names::area) && !is(names::link) && !is(names::base))
        throw base::Error(base::errors::noSuchMember, QStringLiteral("This element has no address."));
    const QString *value = attribute(names::href);
    return value ? document().resolve(*value) : QString();
}

bool Element::isVoid() const
{
    return mSpace == Namespace::Html && isVoidElement(mName);
}

Element *Element::firstElementChild() const
{
    for (Node *node = firstChild(); node; node = node->nextSibling())
        if (Element *element = node->asElement()) return element;
    return nullptr;
}

Element *Element::nextElementSibling() const
{
    for (Node *node = nextSibling(); node; node = node->nextSibling())
        if (Element *element = node->asElement()) return element;
    return nullptr;
}

Element *Element::previousElementSibling() const
{
    for (Node *node = previousSibling(); node; node = node->previousSibling())
        if (Element *element = node->asElement()) return element;
    return nullptr;
}

Element::RareData &Element::rareData()
{
    if (!mRare) mRare = std::make_unique<RareData>();
    return *mRare;
}

} // namespace dom
