// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Node.h"

#include <QPoint>
#include <QRect>

namespace css {
class StyleObject;
class StyleSheetObject;
}
namespace ranges {
class SelectionObject;
class TextRange;
class ControlRange;
}

namespace dom {

class CharacterData;
class EventObject;

/// What members of nodes need of folders above this one. Each group is an interface that a higher folder implements and
/// gives to the document; a document without one answers as a detached document does: no boxes, no selection.

/// Text to nodes and back (`engine/html`).
class MarkupServices
{
public:
    virtual ~MarkupServices() = default;
    /// Parsed for the place `context` stands for, in the document's mode; detached nodes of `document`.
    virtual Ref<DocumentFragment> parseFragment(Document &document, const Element &context, const QString &html) = 0;
    /// With CR LF as line ends. The document element's is the whole document.
    virtual QString outerHTML(const Node &node) const = 0;
    virtual QString innerHTML(const Node &node) const = 0;
    /// Whether `content`, put into `parent`, would be read back as it stands (no block in a P, no P between cells).
    virtual bool canStandIn(const ParentNode &parent, const Node &content) const = 0;
    virtual QString innerText(const Node &node) const = 0;
};

/// The one door for mutation of an attached tree (`engine/changes`). The few primitives of which every change is made.
class MutationDoor
{
public:
    virtual ~MutationDoor() = default;
    virtual void insert(ParentNode &parent, Node &child, Node *before) = 0;
    virtual void remove(Node &child) = 0;
    virtual void move(ParentNode &parent, Node &child, Node *before) = 0;
    virtual void replaceText(CharacterData &node, uint32_t offset, uint32_t count, const QString &with) = 0;
    /// A null `value` removes.
    virtual void setAttribute(Element &element, Atom name, const QString *value) = 0;
    virtual void setHeldOpen(Element &element, bool heldOpen) = 0;
    /// One assignment of the contract, however many primitives it makes. Nested ones belong to the outermost.
    virtual void beginAssignment() = 0;
    /// With `failed`, what was done since the outermost begin is inverted and nothing is written.
    virtual void endAssignment(bool failed) = 0;
};

/// Style objects and sheets (`engine/css`).
class StyleServices
{
public:
    virtual ~StyleServices() = default;
    virtual css::StyleObject *style(Element &element) = 0;
    virtual css::StyleObject *runtimeStyle(Element &element) = 0;
    virtual uint32_t styleSheetCount(Document &document) = 0;
    virtual css::StyleSheetObject *styleSheet(Document &document, uint32_t index) = 0;
    virtual css::StyleSheetObject *createStyleSheet(Document &document, const QString &href) = 0;
};

/// Boxes, in CSS pixels (`engine/layout`, the surface). Every answer is exact at the time of the call.
class BoxServices
{
public:
    virtual ~BoxServices() = default;
    virtual QRect offsetBox(const Element &element) = 0; ///< against `offsetParent`; empty without a box
    virtual Element *offsetParent(const Element &element) = 0;
    virtual QSize clientSize(const Element &element) = 0;
    virtual QSize scrollSize(const Element &element) = 0;
    virtual QPoint scrollPosition(const Element &element) = 0;
    virtual void setScrollPosition(Element &element, QPoint position) = 0;
    virtual Element *elementFromPoint(QPoint client) = 0;
};

/// Selection, focus and clicks (`engine/ranges`, the surface).
class InteractionServices
{
public:
    virtual ~InteractionServices() = default;
    virtual ranges::SelectionObject *selection() = 0;
    virtual Ref<EventObject> currentEvent() = 0;
    virtual void focus(Element &element) = 0; ///< fails for one that can't take it
    virtual void click(Element &element) = 0;
};

} // namespace dom
