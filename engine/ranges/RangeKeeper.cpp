// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/RangeKeeper.h"

namespace ranges {

using namespace dom;

LivePosition::LivePosition(RangeKeeper &keeper, const Position &position) : mKeeper(&keeper), mPosition(position)
{
    keeper.link(*this);
}

LivePosition::LivePosition(const LivePosition &other) : mKeeper(other.mKeeper), mPosition(other.mPosition)
{
    if (mKeeper) mKeeper->link(*this);
}

LivePosition::LivePosition(LivePosition &&other) noexcept : LivePosition(static_cast<const LivePosition &>(other)) {}

LivePosition::~LivePosition()
{
    if (mKeeper) mKeeper->unlink(*this);
}

LivePosition &LivePosition::operator=(const LivePosition &other)
{
    if (this == &other) return *this;
    if (mKeeper) mKeeper->unlink(*this);
    mKeeper = other.mKeeper;
    mPosition = other.mPosition;
    if (mKeeper) mKeeper->link(*this);
    return *this;
}

LivePosition &LivePosition::operator=(const Position &position)
{
    if (mKeeper) mKeeper->unlink(*this);
    mPosition = position;
    if (mKeeper) mKeeper->link(*this);
    return *this;
}

RangeKeeper::RangeKeeper(Document &document) : mDocument(document)
{
    document.addObserver(this);
}

RangeKeeper::~RangeKeeper()
{
    mDocument.removeObserver(this);
    for (auto &[node, first] : mByNode)
        for (LivePosition *at = first; at;) {
            at->mKeeper = nullptr;
            at = std::exchange(at->mNext, nullptr);
        }
}

void RangeKeeper::link(LivePosition &position)
{
    position.mNext = position.mPrevious = nullptr;
    if (!position.mPosition) return;
    LivePosition *&first = mByNode[position.mPosition.node.get()];
    position.mNext = first;
    if (first) first->mPrevious = &position;
    first = &position;
}

void RangeKeeper::unlink(LivePosition &position)
{
    if (!position.mPosition) return;
    if (position.mNext) position.mNext->mPrevious = position.mPrevious;
    if (position.mPrevious)
        position.mPrevious->mNext = position.mNext;
    else if (position.mNext)
        mByNode[position.mPosition.node.get()] = position.mNext;
    else
        mByNode.erase(position.mPosition.node.get());
    position.mNext = position.mPrevious = nullptr;
}

void RangeKeeper::shift(Node &parent, uint32_t behind, int32_t by)
{
    const auto found = mByNode.find(&parent);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at; at = at->mNext)
        if (at->mPosition.offset > behind) at->mPosition.offset = uint32_t(int32_t(at->mPosition.offset) + by);
}

void RangeKeeper::moveAll(Node *from, const Position &to)
{
    const auto found = mByNode.find(from);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at;) {
        LivePosition *next = at->mNext;
        *at = to; // the last one takes the entry with it
        at = next;
    }
}

void RangeKeeper::carryOver(Text &text, uint32_t offset, Text &rest)
{
    const auto found = mByNode.find(&text);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at;) {
        LivePosition *next = at->mNext;
        if (at->mPosition.offset > offset) *at = Position(&rest, at->mPosition.offset - offset);
        at = next;
    }
}

void RangeKeeper::inserted(Node &node)
{
    if (!mByNode.empty() && mByNode.count(node.parentNode())) shift(*node.parentNode(), node.index(), 1);
}

void RangeKeeper::removed(Node &node, ParentNode &parent, Node *before)
{
    if (mByNode.empty()) return;
    const uint32_t index = before ? before->index() : parent.childCount();
    shift(parent, index, -1);
    // Either the removed nodes or the nodes with positions are looked through, whichever are fewer.
    std::vector<Node *> inside;
    size_t seen = 0;
    Node *at = &node;
    for (; at && seen <= mByNode.size(); at = at->next(&node), ++seen)
        if (mByNode.count(at)) inside.push_back(at);
    if (at) {
        inside.clear();
        for (const auto &[holder, first] : mByNode)
            if (node.contains(*holder)) inside.push_back(const_cast<Node *>(holder));
    }
    const Position place(&parent, index);
    for (Node *holder : inside)
        moveAll(holder, place);
}

void RangeKeeper::moved(Node &node, ParentNode &oldParent, Node *oldBefore)
{
    if (mByNode.empty()) return;
    // Where it stood, as counted without it.
    ParentNode &newParent = *node.parentNode();
    const uint32_t newIndex = node.index();
    uint32_t oldIndex = 0;
    if (oldBefore == &node)
        oldIndex = newIndex;
    else if (oldBefore)
        oldIndex = oldBefore->index() - (&oldParent == &newParent && oldBefore->index() > newIndex ? 1 : 0);
    else
        oldIndex = oldParent.childCount() - (&oldParent == &newParent ? 1 : 0);
    shift(oldParent, oldIndex, -1);
    shift(newParent, newIndex, 1);
}

void RangeKeeper::textReplaced(CharacterData &node, uint32_t offset, uint32_t removed, uint32_t added)
{
    const auto found = mByNode.find(&node);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at; at = at->mNext) {
        uint32_t &place = at->mPosition.offset;
        if (place <= offset) continue;
        if (place >= offset + removed)
            place = place - removed + added;
        else
            place = offset + std::min(place - offset, added);
        place = at->mPosition.clipped().offset;
    }
}

} // namespace ranges
