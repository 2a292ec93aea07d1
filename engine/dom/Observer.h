// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Node.h"

namespace dom {

class CharacterData;

/// Is told of every change of an attached tree, from within the primitive: it notes, it doesn't mutate. Layout, style,
/// ranges and decorations observe.
class MutationObserver
{
public:
    virtual ~MutationObserver() = default;
    virtual void inserted(Node &) {}
    /// The node still stands in the tree.
    virtual void aboutToRemove(Node &) {}
    /// The node stood in `parent` in front of `before`.
    virtual void removed(Node &, ParentNode & /*parent*/, Node * /*before*/) {}
    /// A move keeps identities; who doesn't care sees a removal and an insertion.
    virtual void aboutToMove(Node &node) { aboutToRemove(node); }
    virtual void moved(Node &node, ParentNode &oldParent, Node *oldBefore)
    {
        removed(node, oldParent, oldBefore);
        inserted(node);
    }
    virtual void textReplaced(CharacterData &, uint32_t /*offset*/, uint32_t /*removed*/, uint32_t /*added*/) {}
    /// Null: unset. `old` as it was, the element has the new one.
    virtual void attributeChanged(Element &, Atom /*name*/, const QString * /*old*/) {}
    virtual void heldOpenChanged(Element &) {}
};

} // namespace dom
