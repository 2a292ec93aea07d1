// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"

namespace dom {

/// The tree's own hands: what the parser and the door use. Everything is done at once, indexes are kept, observers of an
/// attached tree are told; nothing is checked and nothing is logged. Nobody else calls it: a mutation of an attached tree
/// that goes round the door is lost to undo.
class RawTree
{
public:
    static void insert(ParentNode &parent, Node &child, Node *before);
    static void remove(Node &child);
    static void move(ParentNode &parent, Node &child, Node *before);
    static void replaceText(CharacterData &node, uint32_t offset, uint32_t count, QStringView with);
    /// Null removes. `at` is the 0-based place for a new attribute, at the end by default.
    static void setAttribute(Element &element, Atom name, const QString *value, uint32_t at = ~0u);
    static void setHeldOpen(Element &element, bool heldOpen);
    /// Whether `tree`, not connected, belongs to `document` from now on; ids are given anew.
    static void adopt(Node &tree, Document &document);
    /// Gives a detached node the id that a record holds for it. The id must be free.
    static void setId(Node &node, NodeId id);
    /// Appends without observers or indexes: for a parser that builds a tree nobody sees yet.
    static void append(ParentNode &parent, Node &child) { insert(parent, child, nullptr); }

private:
    static void link(ParentNode &parent, Node &child, Node *before);
    static void unlink(Node &child);
    static void addElementCount(ParentNode &parent, int32_t difference);
    static void setConnected(Node &top, bool connected);
};

} // namespace dom
