// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Position.h"

namespace ranges {

using namespace dom;

uint32_t Position::lengthOf(const Node &node)
{
    if (node.isText() || node.isComment()) return static_cast<const CharacterData &>(node).length();
    return node.childCount();
}

Element *Position::element() const
{
    if (!node) return nullptr;
    return node->isElement() ? node->asElement() : node->parentElement();
}

Node *Position::childAfter() const
{
    if (!node || node->isText() || node->isComment()) return nullptr;
    return offset < node->childCount() ? node->childAt(offset) : nullptr;
}

Node *Position::childBefore() const
{
    if (!node || node->isText() || node->isComment() || offset == 0) return nullptr;
    return node->childAt(offset - 1);
}

namespace {

/// The child of `top` that holds `below`, which is inside of it.
const Node *branch(const Node &top, const Node *below)
{
    while (below->parentNode() != &top)
        below = below->parentNode();
    return below;
}

} // namespace

int Position::compare(const Position &a, const Position &b)
{
    if (a.node == b.node) return a.offset == b.offset ? 0 : (a.offset < b.offset ? -1 : 1);
    if (a.node->isAncestorOf(*b.node)) return a.offset <= branch(*a.node, b.node.get())->index() ? -1 : 1;
    if (b.node->isAncestorOf(*a.node)) return branch(*b.node, a.node.get())->index() < b.offset ? -1 : 1;
    return a.node->compareOrder(*b.node);
}

Position Position::clipped() const
{
    if (!node) return {};
    Position p(node.get(), std::min(offset, lengthOf(*node)));
    if (const Text *in = p.text(); in && p.offset > 0 && p.offset < in->length() &&
                                   in->data()[p.offset].isLowSurrogate() && in->data()[p.offset - 1].isHighSurrogate())
        --p.offset;
    return p;
}

} // namespace ranges
