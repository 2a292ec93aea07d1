// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "engine/dom/Node.h"

#include <QPoint>
#include <QRect>
#include <memory>
#include <vector>

namespace css {
class StyleObject;
}

namespace dom {

class ElementCollection;
class AttributeNode;

struct Attribute {
    Atom name; ///< lower case, or as written on a foreign element
    QString value;
};

enum class Namespace : uint8_t { Html, Svg, MathMl };

/// An element. Names of HTML elements are kept in lower case and answered in capitals; prefixed and foreign ones are kept
/// as written.
class VELLUMKIT_EXPORT Element : public ParentNode
{
public:
    Element(Document &document, Atom name, Namespace space = Namespace::Html);
    ~Element() override;

    /// The name as kept: "p", "brimfield:widget", "linearGradient".
    Atom name() const { return mName; }
    bool is(Atom name) const { return mName == name && mSpace == Namespace::Html; }
    Namespace space() const { return mSpace; }
    bool isPrefixed() const;

    // The contract's members.
    QString nodeName() const override;
    /// Capitals for HTML elements. A prefixed element answers its local name as written where the prefix is declared on an
    /// ancestor or by an `xml:namespace` instruction, else the whole name in capitals ("O:P", always for that one).
    QString tagName() const;
    /// The attribute; "" takes it away.
    QString idAttribute() const { return attributeValue("id"); }
    void setIdAttribute(const QString &value);
    QString className() const { return attributeValue("class"); }
    void setClassName(const QString &value);
    QString uniqueID() const;

    QString innerHTML() const;
    QString outerHTML() const;
    QString innerText() const;
    QString outerText() const { return innerText(); }
    void setInnerHTML(const QString &html);
    /// "" removes the element. Fails on HTML, HEAD and BODY, and for HTML that can't stand here.
    void setOuterHTML(const QString &html);
    void setInnerText(const QString &text);
    /// "beforeBegin", "afterBegin", "beforeEnd", "afterEnd", any case. Fails around BODY, inside a void element, and for
    /// HTML that can't stand there.
    void insertAdjacentHTML(const QString &where, const QString &html);
    void insertAdjacentText(const QString &where, const QString &text);

    Ref<ElementCollection> children();
    Ref<ElementCollection> all();
    /// The 0-based place in the document's `all`; -1 when detached.
    int sourceIndex() const;

    css::StyleObject *style();
    css::StyleObject *runtimeStyle();

    // Attributes. Names in any case.
    const std::vector<Attribute> &attributeList() const { return mAttributes; }
    const QString *attribute(Atom name) const;
    QString attributeValue(const char *name) const;
    bool hasAttribute(Atom name) const { return attribute(name) != nullptr; }
    /// Null where unset and unknown.
    QString getAttribute(const QString &name) const;
    void setAttribute(const QString &name, const QString &value);
    /// Whether there was one. Silent for an unset one.
    bool removeAttribute(const QString &name);
    /// Every attribute that the element could have, set ones first in their order.
    std::vector<Ref<AttributeNode>> attributes();
    void removeAttributeNode(const AttributeNode &node);

    bool isContentEditable() const;
    QRect offsetBox() const;
    Element *offsetParent() const;
    QSize clientSize() const;
    QSize scrollSize() const;
    QPoint scrollPosition() const;
    void setScrollPosition(QPoint position);
    void focus();
    void click();
    /// Resolved against the document's base; A and AREA only, fails on others.
    QString href() const;

    bool isHeldOpen() const { return mHeldOpen; }
    bool isVoid() const;

    Element *firstElementChild() const;
    Element *nextElementSibling() const;
    Element *previousElementSibling() const;

    /// What style keeps about the element: its two style objects, held for as long as the element lives.
    struct RareData {
        Ref<base::RefCounted> style;
        Ref<base::RefCounted> runtimeStyle;
        QPoint scroll;
    };
    RareData &rareData();
    RareData *rareDataIfAny() const { return mRare.get(); }

private:
    friend class RawTree;
    Atom mName;
    Namespace mSpace;
    std::vector<Attribute> mAttributes;
    std::unique_ptr<RareData> mRare;
};

/// An attribute as an object: one that is set, or one that the element could have.
class VELLUMKIT_EXPORT AttributeNode final : public base::RefCounted
{
public:
    AttributeNode(Element &element, Atom name) : mElement(&element), mName(name) {}
    QString nodeName() const { return mName.text(); }
    Atom name() const { return mName; }
    /// The value, the default value when unset.
    QString nodeValue() const;
    void setNodeValue(const QString &value);
    bool specified() const { return mElement->hasAttribute(mName); }

private:
    Ref<Element> mElement;
    Atom mName;
};

inline Element *Node::asElement()
{
    return isElement() ? static_cast<Element *>(this) : nullptr;
}
inline const Element *Node::asElement() const
{
    return isElement() ? static_cast<const Element *>(this) : nullptr;
}

/// Names of attributes that an element of this name can have, and the default of one. (HTML 4.01, index of attributes.)
const std::vector<Atom> &possibleAttributes(Atom elementName);
QString defaultAttributeValue(Atom elementName, Atom attribute);

/// Whether an HTML element of this name has no content (HTML standard, 13.1.2 "Void elements", with the older ones).
bool isVoidElement(Atom name);

} // namespace dom
