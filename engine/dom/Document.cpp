// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Document.h"

#include "engine/dom/CharacterData.h"
#include "engine/dom/LineEnds.h"
#include "engine/dom/Names.h"

namespace dom {

Ref<Document> Document::create()
{
    return Ref<Document>(new Document);
}

Document::Document() : ParentNode(NodeType::Document)
{
    mDocument = this;
    mConnected = true;
    mNodes.push_back(nullptr); // 0 is no node
}

Document::~Document() = default;

void Document::lastReferenceGone()
{
    if (mTornDown) return;
    mTornDown = true;
    // Removed nodes that someone holds outlive the tree, and keep this memory.
    ++mNodeCount;
    door = nullptr;
    mObservers.clear();
    mById.clear();
    mByName.clear();
    for (Node *node = next(this); node; node = node->next(this)) node->mConnected = false;
    dropChildren();
    if (--mNodeCount == 0) delete this;
}

NodeId Document::enrol(Node &node)
{
    ++mNodeCount;
    mNodes.push_back(&node);
    return NodeId(mNodes.size() - 1);
}

void Document::enrolAs(Node &node, NodeId id)
{
    if (id >= mNodes.size()) mNodes.resize(size_t(id) + 1);
    mNodes[id] = &node;
}

void Document::nodeGone(Node &node)
{
    mNodes[node.mId] = nullptr;
    if (--mNodeCount == 0 && mTornDown) delete this;
}

Element *Document::documentElement() const
{
    for (Node *child = firstChild(); child; child = child->nextSibling())
        if (Element *element = child->asElement()) return element;
    return nullptr;
}

static Element *childOfRoot(const Document &document, Atom name, Atom other)
{
    Element *root = document.documentElement();
    for (Element *child = root ? root->firstElementChild() : nullptr; child; child = child->nextElementSibling())
        if (child->is(name) || child->is(other)) return child;
    return nullptr;
}

Element *Document::head() const
{
    return childOfRoot(*this, names::head, names::head);
}

Element *Document::body() const
{
    return childOfRoot(*this, names::body, names::frameset);
}

QString Document::base() const
{
    for (const Element *element : elementsNamed(names::base))
        if (const QString *href = element->attribute(names::href))
            return mBaseURL.isEmpty() ? *href : QUrl(mBaseURL).resolved(QUrl(*href)).toString();
    return mBaseURL;
}

QString Document::resolve(const QString &reference) const
{
    const QString from = base();
    if (from.isEmpty()) return reference;
    return QUrl(from).resolved(QUrl(reference)).toString();
}

bool Document::isSkeleton(const Node &node) const
{
    return node.isElement() && node.isConnected() && (&node == documentElement() || &node == head() || &node == body());
}

static const QString uniquePrefix = QStringLiteral("ms__id");

QString Element::uniqueID() const
{
    return uniquePrefix + QString::number(id());
}

Element *Document::getElementById(const QString &id) const
{
    const auto found = mById.constFind(id);
    if (found != mById.constEnd() && !found->empty()) {
        Element *first = found->front();
        for (Element *element : *found)
            if (element != first && element->compareOrder(*first) < 0) first = element;
        return first;
    }
    if (!id.startsWith(uniquePrefix)) return nullptr;
    Node *node = nodeById(QStringView(id).mid(uniquePrefix.size()).toUInt());
    return node && node->isConnected() ? node->asElement() : nullptr;
}

std::vector<Element *> Document::elementsWithId(const QString &id) const
{
    std::vector<Element *> found = mById.value(id);
    std::sort(found.begin(), found.end(), [](Element *a, Element *b) { return a->compareOrder(*b) < 0; });
    return found;
}

Element *Document::elementAt(uint32_t index) const
{
    const Node *at = this;
    if (index >= elementCount()) return nullptr;
    for (;;) {
        for (Node *child = at->firstChild();; child = child->nextSibling()) {
            // Few children are walked faster than searched; many never are.
            if (at->childCount() > 16) {
                uint32_t before = 0;
                child = static_cast<const ParentNode *>(at)->mChildren.find(
                    [index](uint32_t sum) { return sum > index; }, &before);
                index -= before;
            }
            if (index >= child->elementCount()) {
                index -= child->elementCount();
                continue;
            }
            if (child->isElement() && index-- == 0) return child->asElement();
            at = child;
            break;
        }
    }
}

Ref<ElementCollection> Document::all()
{
    return base::make<ElementCollection>(*this, ElementCollection::Kind::All);
}

const std::vector<Element *> &Document::elementsNamed(Atom name) const
{
    const auto known = mByName.find(name);
    if (known != mByName.end()) return known->second;
    std::vector<Element *> &list = mByName[name];
    for (Node *node = next(this); node; node = node->next(this))
        if (Element *element = node->asElement(); element && element->name() == name) list.push_back(element);
    return list;
}

static bool startsBefore(const Element *a, const Element *b)
{
    return a->compareOrder(*b) < 0;
}

void Document::indexSubtree(Node &top)
{
    if (top.elementCount() == 0) return;
    ++mStructureVersion;
    std::unordered_map<Atom, std::vector<Element *>> added;
    for (Node *node = &top; node; node = node->next(&top)) {
        Element *element = node->asElement();
        if (!element) continue;
        if (const QString *id = element->attribute(names::id)) mById[*id].push_back(element);
        if (!mByName.empty() && mByName.contains(element->name())) added[element->name()].push_back(element);
    }
    // The elements of a name in one subtree stand together in that name's list.
    for (auto &[name, list] : added) {
        auto &all = mByName[name];
        all.insert(std::lower_bound(all.begin(), all.end(), list.front(), startsBefore), list.begin(), list.end());
    }
}

void Document::unindexSubtree(Node &top)
{
    if (top.elementCount() == 0) return;
    ++mStructureVersion;
    std::unordered_map<Atom, std::pair<Element *, size_t>> gone;
    for (Node *node = &top; node; node = node->next(&top)) {
        Element *element = node->asElement();
        if (!element) continue;
        if (const QString *id = element->attribute(names::id)) {
            auto found = mById.find(*id);
            std::erase(*found, element);
            if (found->empty()) mById.erase(found);
        }
        if (!mByName.empty() && mByName.contains(element->name()))
            ++gone.try_emplace(element->name(), element, 0).first->second.second;
    }
    for (auto &[name, run] : gone) {
        auto &all = mByName[name];
        const auto first = std::lower_bound(all.begin(), all.end(), run.first, startsBefore);
        all.erase(first, first + long(run.second));
    }
}

void Document::idChanged(Element &element, const QString *old, const QString *now)
{
    if (old) {
        auto found = mById.find(*old);
        if (found != mById.end()) {
            std::erase(*found, &element);
            if (found->empty()) mById.erase(found);
        }
    }
    if (now) mById[*now].push_back(&element);
}

Ref<Element> Document::createElement(const QString &name)
{
    return base::make<Element>(*this, name.contains(u':') ? Atom(name) : Atom::lower(name));
}

Ref<Text> Document::createTextNode(const QString &data)
{
    return base::make<Text>(*this, withLf(data));
}

// ElementCollection

const std::vector<Element *> &ElementCollection::cached() const
{
    const Document &document = mRoot->document();
    const bool whole = mRoot->type() == NodeType::Document;
    if (whole && mKind == Kind::All && mTag) return document.elementsNamed(mTag);
    // A detached tree changes without the document's version, so nothing is kept for it.
    if (mRoot->isConnected() && mCacheVersion == document.structureVersion()) return mCache;
    mCache.clear();
    if (mKind == Kind::All && mTag && mRoot->isConnected()) {
        // The descendants of that name stand side by side in the document's index.
        const auto &named = document.elementsNamed(mTag);
        const uint32_t before = mRoot->elementsBefore(), behind = before + mRoot->elementCount();
        const auto from = std::partition_point(named.begin(), named.end(),
                                               [before](const Element *e) { return e->elementsBefore() <= before; });
        const auto to = std::partition_point(from, named.end(),
                                             [behind](const Element *e) { return e->elementsBefore() < behind; });
        mCache.assign(from, to);
        mCacheVersion = document.structureVersion();
        return mCache;
    }
    const auto take = [this](Node *node) {
        Element *element = node->asElement();
        if (element && (!mTag || element->name() == mTag)) mCache.push_back(element);
    };
    if (mKind == Kind::Children) {
        for (Node *node = mRoot->firstChild(); node; node = node->nextSibling()) take(node);
    } else {
        for (Node *node = mRoot->next(mRoot.get()); node; node = node->next(mRoot.get())) take(node);
    }
    mCacheVersion = document.structureVersion();
    return mCache;
}

uint32_t ElementCollection::length() const
{
    if (mKind == Kind::All && !mTag) return mRoot->elementCount() - (mRoot->isElement() ? 1 : 0);
    return uint32_t(cached().size());
}

Element *ElementCollection::item(uint32_t index) const
{
    if (mKind == Kind::All && !mTag && mRoot->isConnected()) {
        if (index >= length()) return nullptr;
        const uint32_t first = mRoot->isElement() ? mRoot->elementsBefore() + 1 : 0;
        return mRoot->document().elementAt(first + index);
    }
    const auto &list = cached();
    return index < list.size() ? list[index] : nullptr;
}

Element *ElementCollection::item(const QString &idOrName) const
{
    const auto within = [this](const Element *e) {
        return mKind == Kind::All ? mRoot->isAncestorOf(*e) : e->parentNode() == mRoot.get();
    };
    if (mRoot->isConnected())
        for (Element *element : mRoot->document().elementsWithId(idOrName))
            if (within(element) && (!mTag || element->name() == mTag)) return element;
    for (Element *element : cached())
        if (element->attributeValue("id") == idOrName || element->attributeValue("name") == idOrName) return element;
    return nullptr;
}

Ref<ElementCollection> ElementCollection::tags(const QString &name) const
{
    auto tagged = base::make<ElementCollection>(*mRoot, mKind);
    tagged->mTag = name.contains(u':') ? Atom(name) : Atom::lower(name);
    return tagged;
}

} // namespace dom
