// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/RawTree.h"

#include "engine/dom/Observer.h"

namespace dom {

void RawTree::addElementCount(ParentNode &parent, int32_t difference)
{
    if (difference == 0) return;
    for (Node *at = &parent; at; at = at->mParent) {
        at->mElementCount = uint32_t(int32_t(at->mElementCount) + difference);
        if (at->mParent) at->mParent->mChildren.changed(*at);
    }
}

void RawTree::link(ParentNode &parent, Node &child, Node *before)
{
    child.ref();
    child.mParent = &parent;
    child.mNext = before;
    child.mPrevious = before ? before->mPrevious : parent.mLast;
    (child.mPrevious ? child.mPrevious->mNext : parent.mFirst) = &child;
    (before ? before->mPrevious : parent.mLast) = &child;
    parent.mChildren.insert(child, before);
    addElementCount(parent, int32_t(child.mElementCount));
}

void RawTree::unlink(Node &child)
{
    ParentNode &parent = *child.mParent;
    parent.mChildren.remove(child);
    (child.mPrevious ? child.mPrevious->mNext : parent.mFirst) = child.mNext;
    (child.mNext ? child.mNext->mPrevious : parent.mLast) = child.mPrevious;
    child.mParent = nullptr;
    child.mPrevious = child.mNext = nullptr;
    addElementCount(parent, -int32_t(child.mElementCount));
    child.deref();
}

void RawTree::setConnected(Node &top, bool connected)
{
    for (Node *node = &top; node; node = node->next(&top)) node->mConnected = connected;
}

void RawTree::insert(ParentNode &parent, Node &child, Node *before)
{
    link(parent, child, before);
    if (!parent.mConnected) return;
    setConnected(child, true);
    Document &document = *parent.mDocument;
    document.indexSubtree(child);
    for (MutationObserver *observer : document.mObservers) observer->inserted(child);
}

void RawTree::remove(Node &child)
{
    Ref<Node> keep(&child);
    ParentNode &parent = *child.mParent;
    Node *before = child.mNext;
    const bool connected = child.mConnected;
    Document &document = *child.mDocument;
    if (connected) {
        for (MutationObserver *observer : document.mObservers) observer->aboutToRemove(child);
        document.unindexSubtree(child);
    }
    unlink(child);
    if (!connected) return;
    setConnected(child, false);
    for (MutationObserver *observer : document.mObservers) observer->removed(child, parent, before);
}

void RawTree::move(ParentNode &parent, Node &child, Node *before)
{
    Ref<Node> keep(&child);
    ParentNode &oldParent = *child.mParent;
    Node *oldBefore = child.mNext;
    Document &document = *child.mDocument;
    if (child.mConnected) {
        for (MutationObserver *observer : document.mObservers) observer->aboutToMove(child);
        document.unindexSubtree(child);
    }
    unlink(child);
    link(parent, child, before);
    if (!child.mConnected) return;
    document.indexSubtree(child);
    for (MutationObserver *observer : document.mObservers) observer->moved(child, oldParent, oldBefore);
}

void RawTree::replaceText(CharacterData &node, uint32_t offset, uint32_t count, QStringView with)
{
    node.mData.replace(qsizetype(offset), qsizetype(count), with.toString());
    if (!node.isConnected()) return;
    for (MutationObserver *observer : node.document().mObservers)
        observer->textReplaced(node, offset, count, uint32_t(with.size()));
}

void RawTree::setAttribute(Element &element, Atom name, const QString *value, uint32_t at)
{
    auto &list = element.mAttributes;
    auto found = std::find_if(list.begin(), list.end(), [name](const Attribute &a) { return a.name == name; });
    std::optional<QString> old;
    if (found != list.end()) old = found->value;
    if (!value) {
        if (found == list.end()) return;
        list.erase(found);
    } else if (found != list.end()) {
        found->value = *value;
    } else {
        list.insert(list.begin() + std::min<size_t>(at, list.size()), Attribute{name, *value});
    }
    if (!element.isConnected()) return;
    Document &document = element.document();
    const QString *was = old ? &*old : nullptr;
    static const Atom id("id");
    if (name == id) document.idChanged(element, was, value);
    for (MutationObserver *observer : document.mObservers) observer->attributeChanged(element, name, was);
}

void RawTree::setHeldOpen(Element &element, bool heldOpen)
{
    if (element.mHeldOpen == heldOpen) return;
    element.mHeldOpen = heldOpen;
    if (!element.isConnected()) return;
    for (MutationObserver *observer : element.document().mObservers) observer->heldOpenChanged(element);
}

void RawTree::adopt(Node &tree, Document &document)
{
    for (Node *node = &tree; node; node = node->next(&tree)) {
        Document &old = *node->mDocument;
        if (&old == &document) continue;
        node->mDocument = &document;
        const NodeId oldId = node->mId;
        node->mId = document.enrol(*node);
        // The old document's memory may go with its last node, so it is told last.
        old.mNodes[oldId] = nullptr;
        if (--old.mNodeCount == 0 && old.mTornDown) delete &old;
    }
}

void RawTree::setId(Node &node, NodeId id)
{
    if (node.mId == id) return;
    Document &document = *node.mDocument;
    document.mNodes[node.mId] = nullptr;
    document.enrolAs(node, id);
    node.mId = id;
}

} // namespace dom
