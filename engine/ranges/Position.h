// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/CharacterData.h"
#include "engine/dom/Element.h"

/// Places in a document and what stands on both sides of them.
///
/// A `Position` is a node and an offset, nothing more. Positions that must survive edits are `LivePosition`s, which the
/// document's `RangeKeeper` moves along. What a reader sees beside a position (a character, a line break, an object,
/// the edge of a block) is answered by `Content`, which knows about collapsed white space and undisplayed nodes; carets
/// are moved by `Movement`, which is made of it. Nothing here walks further than the answer lies.
namespace ranges {

using base::Ref;

/// A place in a tree: in a text or comment between its UTF-16 units (never between surrogates), in an element or
/// document between its children. 0-based. A null node is no place.
struct Position
{
    Ref<dom::Node> node;
    uint32_t offset = 0;

    Position() = default;
    Position(dom::Node *node, uint32_t offset) : node(node), offset(offset) {}

    static Position before(dom::Node &node) { return {node.parentNode(), node.index()}; }
    static Position after(dom::Node &node) { return {node.parentNode(), node.index() + 1}; }
    static Position startOf(dom::Node &node) { return {&node, 0}; }
    static Position endOf(dom::Node &node) { return {&node, lengthOf(node)}; }
    /// Units of a text or comment, children of what has some.
    static uint32_t lengthOf(const dom::Node &node);

    explicit operator bool() const { return bool(node); }
    friend bool operator==(const Position &a, const Position &b) = default;

    bool inText() const { return node && node->isText(); }
    dom::Text *text() const { return inText() ? static_cast<dom::Text *>(node.get()) : nullptr; }
    /// The node itself where it is an element, else its parent.
    dom::Element *element() const;
    /// The child in front of which an element's position stands; null at its end and in texts.
    dom::Node *childAfter() const;
    dom::Node *childBefore() const;

    /// Below, at or above 0 in document order; both in one tree. Steps of depth and logarithm of siblings.
    static int compare(const Position &a, const Position &b);
    /// With the offset cut to what is there, and not between surrogates.
    Position clipped() const;
};

inline bool operator<(const Position &a, const Position &b)
{
    return Position::compare(a, b) < 0;
}
inline bool operator<=(const Position &a, const Position &b)
{
    return Position::compare(a, b) <= 0;
}

/// Two positions of one tree, the first not behind the second.
struct Span
{
    Position start;
    Position end;
    bool isEmpty() const { return start == end; }
};

} // namespace ranges
