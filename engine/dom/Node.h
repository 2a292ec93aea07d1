// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "base/Ref.h"
#include "base/SumTree.h"
#include "engine/dom/Atom.h"

#include <QString>

namespace dom {

using base::Ref;

class Document;
class Element;
class ParentNode;

/// The numbers of the DOM standard.
enum class NodeType : uint8_t { Element = 1, Text = 3, Comment = 8, Document = 9, DocumentType = 10, Fragment = 11 };

/// A node's number for life in its document, counted from 1; 0 is no node.
using NodeId = uint32_t;

/// A node of the document tree.
///
/// A parent owns its children: it holds one reference on each. Who keeps a `Ref` on a removed node keeps it alive. Every
/// node belongs to a document, whose memory outlives all of its nodes. Counts of elements are kept up the parents, so that
/// a position in document order is answered in steps of depth and logarithm of siblings.
///
/// Members in the contract's vocabulary mutate through the document's door when the node is attached (`isConnected`), and
/// straight otherwise. Failures that the contract requires throw `base::Error`.
class VELLUMKIT_EXPORT Node
{
public:
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;
    void ref() { ++mReferences; }
    void deref()
    {
        if (--mReferences == 0) lastReferenceGone();
    }

    NodeType type() const { return mType; }
    bool isElement() const { return mType == NodeType::Element; }
    bool isText() const { return mType == NodeType::Text; }
    bool isComment() const { return mType == NodeType::Comment; }
    /// 1 element, 3 text, 8 comment, 9 document, 10 document type, 11 fragment.
    int nodeType() const { return int(mType); }
    virtual QString nodeName() const = 0;
    virtual QString nodeValue() const { return {}; }
    /// A text's or comment's data, literally. Fails on other nodes.
    virtual void setNodeValue(const QString &value);

    NodeId id() const { return mId; }
    Document &document() const { return *mDocument; }

    ParentNode *parentNode() const { return mParent; }
    Element *parentElement() const;
    Node *nextSibling() const { return mNext; }
    Node *previousSibling() const { return mPrevious; }
    Node *firstChild() const;
    Node *lastChild() const;
    Node *childAt(uint32_t index) const;
    uint32_t childCount() const;
    /// The 0-based place among the parent's children; 0 without a parent. Logarithmic.
    uint32_t index() const;
    bool hasChildNodes() const { return firstChild() != nullptr; }
    Element *asElement();
    const Element *asElement() const;

    /// Whether the node stands in its document's tree.
    bool isConnected() const { return mConnected; }
    bool isAncestorOf(const Node &other) const; ///< strictly
    bool contains(const Node &other) const { return this == &other || isAncestorOf(other); }
    /// The topmost node above this one, itself without a parent.
    const Node &root() const;
    uint32_t depth() const;

    // Walking in document order, within the subtree of `within` (null: the whole tree).
    Node *next(const Node *within = nullptr) const;
    Node *nextSkippingChildren(const Node *within = nullptr) const;
    Node *previous(const Node *within = nullptr) const;

    /// Elements in the subtree, itself included.
    uint32_t elementCount() const { return mElementCount; }
    /// Elements of the tree that start in front of this node: an element's `sourceIndex`.
    uint32_t elementsBefore() const;
    /// Below, at or above 0 as this node starts before, is, or starts behind `other`, of the same tree.
    int compareOrder(const Node &other) const;

    /// A deep or shallow copy, detached, in the same document.
    Ref<Node> clone(bool deep) const;

    // Structure, in the contract's vocabulary. Each is one assignment: one record, and nothing written where it fails.
    Ref<Node> appendChild(Node &child) { return insertBefore(child, nullptr); }
    /// Moves `child` where it has a parent, adopts it where it is another document's. Fails where the tree forbids it.
    Ref<Node> insertBefore(Node &child, Node *before);
    Ref<Node> removeChild(Node &child);
    Ref<Node> replaceNode(Node &replacement);
    void removeNode();

    /// Places for what style and layout keep about a node; owned and cleared by them.
    void *styleSlot = nullptr;
    void *layoutSlot = nullptr;

protected:
    Node(Document &document, NodeType type);
    Node(NodeType type); // a document
    virtual ~Node();
    virtual void lastReferenceGone() { delete this; }
    uint32_t references() const { return mReferences; }

private:
    friend class Document;
    friend class ParentNode;
    friend class RawTree;
    friend struct NodeSumTraits;

    Document *mDocument;
    ParentNode *mParent = nullptr;
    Node *mPrevious = nullptr;
    Node *mNext = nullptr;
    base::SumTreeHook<Node, uint32_t> mHook;
    uint32_t mReferences = 0;
    NodeId mId = 0;
    uint32_t mElementCount = 0;
    NodeType mType;
    bool mConnected = false;

protected:
    bool mHeldOpen = false;
};

struct NodeSumTraits {
    using Item = Node;
    using Sum = uint32_t;
    static base::SumTreeHook<Node, uint32_t> &hook(Node &node) { return node.mHook; }
    static uint32_t value(const Node &node) { return node.mElementCount; }
};

/// A node that can have children: a document, an element, a fragment.
class VELLUMKIT_EXPORT ParentNode : public Node
{
protected:
    using Node::Node;
    ~ParentNode() override;
    void dropChildren();

private:
    friend class Node;
    friend class Document;
    friend class RawTree;
    Node *mFirst = nullptr;
    Node *mLast = nullptr;
    base::SumTree<NodeSumTraits> mChildren;
};

/// A list of nodes that isn't in a tree: what a parsed fragment is handed over in.
class VELLUMKIT_EXPORT DocumentFragment final : public ParentNode
{
public:
    explicit DocumentFragment(Document &document) : ParentNode(document, NodeType::Fragment) {}
    QString nodeName() const override { return QStringLiteral("#document-fragment"); }
};

inline Node *Node::firstChild() const
{
    if (mType != NodeType::Element && mType != NodeType::Document && mType != NodeType::Fragment) return nullptr;
    return static_cast<const ParentNode *>(this)->mFirst;
}

inline Node *Node::lastChild() const
{
    if (mType != NodeType::Element && mType != NodeType::Document && mType != NodeType::Fragment) return nullptr;
    return static_cast<const ParentNode *>(this)->mLast;
}

} // namespace dom
