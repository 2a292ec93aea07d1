// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "engine/dom/CharacterData.h"
#include "engine/dom/DocumentServices.h"
#include "engine/dom/Element.h"

#include <QHash>
#include <QSet>
#include <QUrl>
#include <unordered_map>

namespace dom {

class MutationObserver;
class ElementCollection;

/// How the doctype asks the page to be laid out (HTML standard, 13.2.6.4.1).
enum class DocumentMode : uint8_t { Standards, LimitedQuirks, Quirks };
enum class EditMode : uint8_t { Browse = 0, Edit = 1, Disabled = 2 };

/// A document: the tree's root, the numbering of its nodes and the indexes that answer by id and by name.
///
/// It lives as long as someone holds it; its memory lives until its last node is gone.
class VELLUMKIT_EXPORT Document final : public ParentNode
{
public:
    static Ref<Document> create();

    QString nodeName() const override { return QStringLiteral("#document"); }

    Element *documentElement() const;
    Element *head() const;
    /// The BODY (or FRAMESET) element.
    Element *body() const;

    /// HTML, HEAD and BODY: without them it is no document, so they stay.
    bool isSkeleton(const Node &node) const;

    DocumentMode mode() const { return mMode; }
    void setMode(DocumentMode mode) { mMode = mode; }
    bool isQuirks() const { return mMode == DocumentMode::Quirks; }
    EditMode editMode() const { return mEditMode; }
    void setEditMode(EditMode mode) { mEditMode = mode; }

    /// Where relative references are resolved: the first BASE's `href`, else `baseURL`.
    QString base() const;
    QString baseURL() const { return mBaseURL; }
    void setBaseURL(const QString &url) { mBaseURL = url; }
    QString resolve(const QString &reference) const;

    /// By id attribute (the first in document order) or by `uniqueID`; null for none.
    Element *getElementById(const QString &id) const;
    /// The live or removed-but-held node of that number; null for none.
    Node *nodeById(NodeId id) const { return id < mNodes.size() ? mNodes[id] : nullptr; }
    NodeId lastId() const { return NodeId(mNodes.size() - 1); }
    /// The n-th element of the tree, 0-based.
    Element *elementAt(uint32_t index) const;
    Ref<ElementCollection> all();
    /// Elements of that name in document order; kept current without walking the tree.
    const std::vector<Element *> &elementsNamed(Atom name) const;
    /// Elements with that id attribute, in document order.
    std::vector<Element *> elementsWithId(const QString &id) const;

    /// Whether an `xml:namespace` instruction of the page declares the prefix, any case.
    bool declaresPrefix(const QString &prefix) const { return mPrefixes.contains(prefix.toLower()); }
    void declarePrefix(const QString &prefix) { mPrefixes.insert(prefix.toLower()); }

    Ref<Element> createElement(const QString &name);
    Ref<Text> createTextNode(const QString &data);

    void addObserver(MutationObserver *observer) { mObservers.push_back(observer); }
    void removeObserver(MutationObserver *observer) { std::erase(mObservers, observer); }

    // Set by the folders that supply them; not owned.
    MarkupServices *markup = nullptr;
    MutationDoor *door = nullptr;
    StyleServices *styles = nullptr;
    BoxServices *boxes = nullptr;
    InteractionServices *interaction = nullptr;

    /// Raised by one with every change of the tree's elements; a cache over them compares it.
    uint64_t structureVersion() const { return mStructureVersion; }

private:
    friend class Node;
    friend class RawTree;
    Document();
    ~Document() override;
    void lastReferenceGone() override;
    void nodeGone(Node &node);
    NodeId enrol(Node &node);
    void enrolAs(Node &node, NodeId id);
    void indexSubtree(Node &top);
    void unindexSubtree(Node &top);
    void idChanged(Element &element, const QString *old, const QString *now);

    std::vector<Node *> mNodes; // by id
    uint32_t mNodeCount = 0;
    bool mTornDown = false;
    DocumentMode mMode = DocumentMode::Standards;
    EditMode mEditMode = EditMode::Browse;
    QString mBaseURL;
    std::vector<MutationObserver *> mObservers;
    QHash<QString, std::vector<Element *>> mById; // unordered; ids are rarely shared
    mutable std::unordered_map<Atom, std::vector<Element *>> mByName; // built at the first question, in order
    uint64_t mStructureVersion = 0;
    QSet<QString> mPrefixes;
};

/// A live collection of elements: a parent's children, all below a node, or those of a name.
class VELLUMKIT_EXPORT ElementCollection final : public base::RefCounted
{
public:
    enum class Kind : uint8_t { Children, All };
    ElementCollection(ParentNode &root, Kind kind) : mRoot(&root), mKind(kind) {}
    uint32_t length() const;
    /// 0-based; null for an index that isn't there.
    Element *item(uint32_t index) const;
    /// The first with that id, else with that name; null for none.
    Element *item(const QString &idOrName) const;
    Ref<ElementCollection> tags(const QString &name) const;

private:
    Ref<ParentNode> mRoot;
    Kind mKind;
    Atom mTag;
    const std::vector<Element *> &cached() const;
    mutable std::vector<Element *> mCache;
    mutable uint64_t mCacheVersion = ~0ull;
};

} // namespace dom
