// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/TreeEdits.h"

#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"
#include "engine/html/Blocks.h"

namespace editing {

using namespace dom;
using namespace ranges;

namespace {

/// The child of `top` that holds `below`; null where it isn't inside.
Node *branch(const Node &top, Node *below)
{
    while (below && below->parentNode() != &top)
        below = below->parentNode();
    return below;
}

bool isLonelyText(const Node &node)
{
    if (!node.isText()) return false;
    for (const QChar c : static_cast<const Text &>(node).data())
        if (!isBlank(c.unicode())) return false;
    return true;
}

} // namespace

void TreeEdits::insert(const Position &p, Node &node)
{
    mTracker.insert(static_cast<ParentNode &>(*p.node), node, p.childAfter());
}

Position TreeEdits::splitText(const Position &p)
{
    Text *text = p.text();
    if (!text) return p;
    if (p.offset == 0) return Position::before(*text);
    if (p.offset >= text->length()) return Position::after(*text);
    const QString rest = text->data().mid(p.offset);
    Ref<Text> second = text->document().createTextNode(rest);
    const uint32_t cut = p.offset; // `p` may live
    mTracker.insert(*text->parentNode(), *second, text->nextSibling());
    mKeeper.carryOver(*text, cut, *second);
    mTracker.replaceText(*text, cut, text->length() - cut, {});
    return Position::before(*second);
}

base::Ref<Element> TreeEdits::cloneShell(const Element &element)
{
    Ref<Node> copy = element.clone(false);
    RawTree::setAttribute(*copy->asElement(), names::id, nullptr);
    RawTree::setHeldOpen(*copy->asElement(), false);
    return copy->asElement();
}

void TreeEdits::moveSiblings(Node *first, const Node *end, ParentNode &to, Node *before)
{
    while (first && first != end) {
        Node *next = first->nextSibling();
        mTracker.move(to, *first, before);
        first = next;
    }
}

Position TreeEdits::splitUpTo(const Position &p, Element &top)
{
    Position at = splitText(p);
    while (at.node && at.node != &top) {
        Element &element = *at.node->asElement();
        if (at.offset == 0) {
            at = Position::before(element);
        } else if (at.offset >= element.childCount()) {
            at = Position::after(element);
        } else {
            Ref<Element> second = cloneShell(element);
            Node *first = at.childAfter();
            mTracker.insert(*element.parentNode(), *second, element.nextSibling());
            moveSiblings(first, nullptr, *second, nullptr);
            at = Position::before(*second);
        }
    }
    return at;
}

Element &TreeEdits::splitBlock(Element &block, const Position &p, const char *newName)
{
    const Position cut = splitUpTo(p, block);
    Node *first = cut.childAfter();
    Ref<Element> second = newName ? block.document().createElement(QLatin1String(newName)) : cloneShell(block);
    mTracker.insert(*block.parentNode(), *second, block.nextSibling());
    moveSiblings(first, nullptr, *second, nullptr);
    return *second;
}

TreeEdits::Run TreeEdits::runAround(const Element &parent, const Position &p) const
{
    Run run;
    Node *behind, *ahead;
    if (p.node == &parent) {
        behind = p.childBefore();
        ahead = p.childAfter();
    } else {
        behind = ahead = branch(parent, p.node.get());
        if (!behind) return run;
    }
    Node *first = ahead, *last = behind;
    for (Node *node = behind; node && !mContent.delimitsLines(*node); node = node->previousSibling())
        first = node;
    for (Node *node = ahead; node && !mContent.delimitsLines(*node); node = node->nextSibling())
        last = node;
    if (!first || !last || mContent.delimitsLines(*first) || mContent.delimitsLines(*last)) return run;
    if (first->index() > last->index()) return run;
    const auto unseen = [this](const Node &node) {
        return isLonelyText(node) ? !mContent.rendering().preservesSpace(static_cast<const Text &>(node))
                                  : !node.isText() && !mContent.rendering().isDisplayed(node);
    };
    while (first != last && unseen(*first))
        first = first->nextSibling();
    while (first != last && unseen(*last))
        last = last->previousSibling();
    if (unseen(*first)) return run;
    return {first, last};
}

Element &TreeEdits::wrapRun(Element &parent, const Position &p, const char *name)
{
    Ref<Element> block = parent.document().createElement(QLatin1String(name));
    const Run run = runAround(parent, p);
    if (!run.first) {
        const Position at = splitUpTo(p, parent);
        mTracker.insert(parent, *block, at.childAfter());
    } else {
        const Node *end = run.last->nextSibling();
        mTracker.insert(parent, *block, run.first);
        moveSiblings(run.first, end, *block, nullptr);
    }
    mTracker.setHeldOpen(parent, false);
    return *block;
}

void TreeEdits::tidyUpwards(Node *at)
{
    while (at && at->isConnected()) {
        Node *parent = at->parentNode();
        if (at->isText()) {
            if (static_cast<Text *>(at)->length() > 0) return;
        } else if (Element *element = at->asElement()) {
            if (element->hasChildNodes() || element == &mContent.limit() || isObject(*element) || element->isVoid() ||
                mContent.isBlock(*element) || mContent.rendering().isField(*element))
                return;
        } else {
            return;
        }
        mTracker.remove(*at);
        at = parent;
    }
}

bool TreeEdits::isFixed(const Element &element) const
{
    return &element == &mContent.limit() || isCell(element) || isTableStructure(element) ||
           element.contains(mContent.limit());
}

bool TreeEdits::stays(const Element &element) const
{
    return isFixed(element) || mContent.rendering().roleOf(element) >= Role::Field;
}

bool TreeEdits::holdsField(const Element &block) const
{
    for (const Node *node = block.firstChild(); node; node = node->next(&block))
        if (const Element *element = node->asElement(); element && mContent.rendering().isField(*element)) return true;
    return false;
}

void TreeEdits::removeEmptied(Element *element, const Node &keep)
{
    while (element && element->isConnected() && !stays(*element) && !element->contains(keep)) {
        for (const Node *child = element->firstChild(); child; child = child->nextSibling())
            if (!isLonelyText(*child)) return;
        Element *parent = element->parentElement();
        mTracker.remove(*element);
        element = parent;
    }
}

void TreeEdits::holdOpen(Element &block)
{
    while (Node *child = block.lastChild())
        mTracker.remove(*child);
    mTracker.setHeldOpen(block, true);
}

void TreeEdits::showLine(const Position &p)
{
    if (!p || !p.node->isConnected() || !mContent.contains(p)) return;
    const Item left = mContent.pastBlanksBefore(p), right = mContent.pastBlanksAfter(p);
    if (!left.isLineEdge() || !right.isEdge()) return;
    Element *block = mContent.container(p);
    if (!block || isTableStructure(*block) || isList(*block)) return;
    if (mContent.isEmpty(*block)) {
        const bool takesMark = html::isTextBlock(*block) && !block->is(names::body);
        if (!takesMark) return;
        if (!holdsField(*block)) return holdOpen(*block);
    }
    // Beside blocks, and around fields, an empty line stands only where it has a break.
    Ref<Element> line = block->document().createElement(QStringLiteral("br"));
    Position place = left.isBreak() ? left.near : p;
    while (Element *field = mContent.fieldAround(place.node.get()))
        place = Position::after(*field);
    insert(splitText(place), *line);
}

bool TreeEdits::canHoldParagraph(const Element &parent)
{
    for (const Element *at = &parent; at; at = at->parentElement()) {
        if (at->is(names::p) || at->is(names::pre)) return false;
        if (isTableStructure(*at) || isList(*at) || at->is(names::dl) || at->is(names::option)) return at != &parent;
        if (isCell(*at) || at->is(names::body)) return true;
    }
    return true;
}

// Lists

namespace {

Node *firstButBlanks(Element &element)
{
    Node *node = element.firstChild();
    while (node && isLonelyText(*node))
        node = node->nextSibling();
    return node;
}

} // namespace

bool TreeEdits::leavesList(const Element &item) const
{
    const Element *list = item.is(names::li) && &item != &mContent.limit() ? item.parentElement() : nullptr;
    return list && isList(*list) && list != &mContent.limit() && mContent.limit().contains(*list);
}

Position TreeEdits::leaveList(Element &item)
{
    Element *list = item.parentElement();
    if (!list) return {};
    Position start(&item, 0);
    // Items that follow go into a list of their own behind.
    Ref<Element> rest;
    Node *following = item.nextSibling();
    while (following && isLonelyText(*following))
        following = following->nextSibling();
    if (following) {
        rest = cloneShell(*list);
        mTracker.insert(*list->parentNode(), *rest, list->nextSibling());
        moveSiblings(following, nullptr, *rest, nullptr);
    }
    Element *outer = list->parentElement();
    if (outer && outer->is(names::li)) { // `<li>a<ul><li>|b` becomes `<li>a<li>|b`
        Node *behindList = rest ? rest.get() : list->nextSibling();
        mTracker.move(*outer->parentNode(), item, outer->nextSibling());
        if (behindList) {
            mTracker.setHeldOpen(item, false);
            moveSiblings(behindList, nullptr, item, nullptr);
        }
    } else if (outer && isList(*outer)) {
        mTracker.move(*outer, item, list->nextSibling());
    } else {
        Node *before = rest ? rest.get() : list->nextSibling();
        ParentNode &parent = *list->parentNode();
        start = {};
        while (Node *first = firstButBlanks(item)) {
            const Run run = runAround(item, Position::before(*first));
            const bool wraps = run.first == first && !mContent.delimitsLines(*first);
            Node *moved = wraps ? &wrapRun(item, Position::before(*first), "p") : first;
            mTracker.move(parent, *moved, before);
            if (!start && moved->isElement() && mContent.delimitsLines(*moved)) start = Position::startOf(*moved);
        }
        if (!start) {
            Ref<Element> line = item.document().createElement(QStringLiteral("p"));
            mTracker.insert(parent, *line, before);
            mTracker.setHeldOpen(*line, true);
            start = Position::startOf(*line);
        }
        mTracker.remove(item);
    }
    removeEmptied(list, item);
    return start;
}

} // namespace editing
