// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Node.h"

#include "base/Error.h"
#include "engine/dom/Assignment.h"
#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/dom/RawTree.h"

namespace dom {

Node::Node(Document &document, NodeType type) : mDocument(&document), mType(type)
{
    mElementCount = type == NodeType::Element ? 1 : 0;
    mId = document.enrol(*this);
}

Node::Node(NodeType type) : mDocument(nullptr), mType(type) {}

Node::~Node()
{
    if (mType != NodeType::Document) mDocument->nodeGone(*this);
}

ParentNode::~ParentNode()
{
    dropChildren();
}

void ParentNode::dropChildren()
{
    // Without recursion: a child about to die hands its children up, so that depth costs no stack.
    std::vector<Node *> pending;
    const auto take = [&pending](ParentNode &parent) {
        for (Node *child = parent.mFirst; child;) {
            Node *next = child->mNext;
            child->mParent = nullptr;
            child->mPrevious = child->mNext = nullptr;
            child->mHook = {};
            pending.push_back(child);
            child = next;
        }
        parent.mFirst = parent.mLast = nullptr;
        parent.mChildren.clear();
    };
    take(*this);
    while (!pending.empty()) {
        Node *node = pending.back();
        pending.pop_back();
        if (node->mReferences == 1 && (node->isElement() || node->type() == NodeType::Fragment))
            take(*static_cast<ParentNode *>(node));
        node->deref();
    }
}

void Node::setNodeValue(const QString &)
{
    throw base::Error(base::errors::invalidCall, QStringLiteral("This node has no value."));
}

Element *Node::parentElement() const
{
    return mParent ? mParent->asElement() : nullptr;
}

Node *Node::childAt(uint32_t index) const
{
    if (!firstChild()) return nullptr;
    return static_cast<const ParentNode *>(this)->mChildren.at(index);
}

uint32_t Node::childCount() const
{
    if (!firstChild()) return 0;
    return uint32_t(static_cast<const ParentNode *>(this)->mChildren.size());
}

uint32_t Node::index() const
{
    return mParent ? uint32_t(mParent->mChildren.indexOf(*this)) : 0;
}

bool Node::isAncestorOf(const Node &other) const
{
    for (const Node *at = other.mParent; at; at = at->mParent)
        if (at == this) return true;
    return false;
}

const Node &Node::root() const
{
    const Node *at = this;
    while (at->mParent) at = at->mParent;
    return *at;
}

uint32_t Node::depth() const
{
    uint32_t depth = 0;
    for (const Node *at = mParent; at; at = at->mParent) ++depth;
    return depth;
}

Node *Node::next(const Node *within) const
{
    if (Node *child = firstChild()) return child;
    return nextSkippingChildren(within);
}

Node *Node::nextSkippingChildren(const Node *within) const
{
    for (const Node *at = this; at && at != within; at = at->mParent)
        if (at->mNext) return at->mNext;
    return nullptr;
}

Node *Node::previous(const Node *within) const
{
    if (this == within) return nullptr;
    if (!mPrevious) return mParent;
    Node *at = mPrevious;
    while (Node *last = at->lastChild()) at = last;
    return at;
}

uint32_t Node::elementsBefore() const
{
    uint32_t count = 0;
    for (const Node *at = this; at->mParent; at = at->mParent) {
        count += at->mParent->mChildren.sumBefore(*at);
        if (at->mParent->isElement()) ++count;
    }
    return count;
}

int Node::compareOrder(const Node &other) const
{
    if (this == &other) return 0;
    const Node *a = this, *b = &other;
    uint32_t depthA = a->depth(), depthB = b->depth();
    const bool deeper = depthA > depthB;
    for (; depthA > depthB; --depthA) a = a->mParent;
    for (; depthB > depthA; --depthB) b = b->mParent;
    if (a == b) return deeper ? 1 : -1; // the ancestor starts first
    while (a->mParent != b->mParent) {
        a = a->mParent;
        b = b->mParent;
    }
    if (!a->mParent) return a < b ? -1 : 1; // different trees: any steady order
    return a->index() < b->index() ? -1 : 1;
}

namespace {

Ref<Node> copyOf(const Node &node)
{
    Document &document = node.document();
    switch (node.type()) {
    case NodeType::Element: {
        const auto &element = static_cast<const Element &>(node);
        auto copy = base::make<Element>(document, element.name(), element.space());
        for (const Attribute &attribute : element.attributeList())
            RawTree::setAttribute(*copy, attribute.name, &attribute.value);
        if (element.isHeldOpen()) RawTree::setHeldOpen(*copy, true);
        return copy;
    }
    case NodeType::Text: return base::make<Text>(document, static_cast<const Text &>(node).data());
    case NodeType::Comment: {
        const auto &comment = static_cast<const Comment &>(node);
        return base::make<Comment>(document, comment.data(), comment.form());
    }
    case NodeType::DocumentType: {
        const auto &doctype = static_cast<const DocumentType &>(node);
        return base::make<DocumentType>(document, doctype.source(), doctype.spaceBehind());
    }
    default: return base::make<DocumentFragment>(document);
    }
}

} // namespace

Ref<Node> Node::clone(bool deep) const
{
    Ref<Node> top = copyOf(*this);
    if (!deep) return top;
    // Walks both trees in step.
    Node *into = top.get();
    const Node *at = this;
    for (const Node *node = next(this); node; node = node->next(this)) {
        while (node->mParent != at) {
            at = at->mParent;
            into = into->mParent;
        }
        Ref<Node> copy = copyOf(*node);
        RawTree::append(static_cast<ParentNode &>(*into), *copy);
        if (node->firstChild()) {
            at = node;
            into = copy.get();
        }
    }
    return top;
}

namespace {

[[noreturn]] void refuse(const char *text)
{
    throw base::Error(base::errors::notPossible, QString::fromLatin1(text));
}

void checkParent(const Node &parent, const Node &child)
{
    if (!parent.isElement() && parent.type() != NodeType::Fragment && parent.type() != NodeType::Document)
        refuse("This node can't have children.");
    if (child.contains(parent)) refuse("A node can't be put into itself.");
    if (child.document().isSkeleton(child)) refuse("HTML, HEAD and BODY can't be moved.");
    if (child.type() == NodeType::Document) refuse("A document can't be put into a tree.");
    if (parent.type() == NodeType::Document && (child.isText() || child.isElement()))
        refuse("The document has its element already.");
    if (const Element *element = parent.asElement(); element && element->isVoid())
        refuse("This element can't have content.");
}

void insertOne(ParentNode &parent, Node &child, Node *before)
{
    MutationDoor *door = parent.isConnected() ? parent.document().door : nullptr;
    const bool sameTree = child.isConnected() && &child.document() == &parent.document();
    if (door && sameTree) {
        if (before != &child && !(child.parentNode() == &parent && child.nextSibling() == before))
            door->move(parent, child, before);
        return;
    }
    Ref<Node> keep(&child);
    if (child.parentNode()) child.parentNode()->removeChild(child);
    if (&child.document() != &parent.document()) RawTree::adopt(child, parent.document());
    if (door)
        door->insert(parent, child, before);
    else
        RawTree::insert(parent, child, before);
}

} // namespace

Ref<Node> Node::insertBefore(Node &child, Node *before)
{
    checkParent(*this, child);
    if (before && before->mParent != this) refuse("The node to stand before isn't a child here.");
    auto &parent = static_cast<ParentNode &>(*this);
    Assignment assignment(*this);
    Ref<Node> keep(&child);
    if (child.type() == NodeType::Fragment) {
        while (Node *first = child.firstChild()) insertOne(parent, *first, before);
    } else {
        insertOne(parent, child, before == &child ? child.mNext : before);
    }
    assignment.done();
    return keep;
}

Ref<Node> Node::removeChild(Node &child)
{
    if (child.mParent != this) refuse("The node to remove isn't a child here.");
    Ref<Node> keep(&child);
    child.removeNode();
    return keep;
}

void Node::removeNode()
{
    if (!mParent) return;
    if (mDocument->isSkeleton(*this)) refuse("HTML, HEAD and BODY can't be removed.");
    Ref<Node> keep(this);
    if (mConnected && mDocument->door) {
        Assignment assignment(*this);
        mDocument->door->remove(*this);
        assignment.done();
    } else {
        RawTree::remove(*this);
    }
}

Ref<Node> Node::replaceNode(Node &replacement)
{
    if (!mParent) refuse("A node without a parent can't be replaced.");
    Ref<Node> keep(this), keepNew(&replacement);
    if (this == &replacement) return keep;
    Assignment assignment(*mParent);
    Ref<Node> parent(mParent);
    parent->insertBefore(replacement, this);
    removeNode();
    assignment.done();
    return keep;
}

} // namespace dom
