// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/RangeKeeper.h"

#include <algorithm>

namespace ranges {

using namespace dom;

namespace {

/// The places that are remembered for undo and redo, at most; the oldest steps' go first.
constexpr size_t mostRemembered = 1u << 18;

uint32_t afterReplacement(Grip grip, uint32_t place, uint32_t offset, uint32_t removed, uint32_t added)
{
    const uint32_t end = offset + removed;
    if (place > end) return place - removed + added;
    if (place < offset) return place;
    switch (grip) {
    case Grip::Following:
        return offset + added;
    case Grip::Preceding:
        return offset;
    case Grip::None:
        break;
    }
    if (place == offset) return place;
    return place == end ? offset + added : offset + std::min(place - offset, added);
}

bool isBehind(Grip grip, uint32_t place, uint32_t index)
{
    return place > index || (grip == Grip::Following && place == index);
}

} // namespace

LivePosition::LivePosition(RangeKeeper &keeper, const Position &position, Grip grip)
    : mKeeper(&keeper), mPosition(position), mGrip(grip)
{
    keeper.link(*this);
}

LivePosition::LivePosition(const LivePosition &other)
    : mKeeper(other.mKeeper), mPosition(other.mPosition), mGrip(other.mGrip)
{
    if (mKeeper) mKeeper->link(*this);
}

LivePosition::LivePosition(LivePosition &&other) noexcept : LivePosition(static_cast<const LivePosition &>(other))
{
    if (mKeeper) mKeeper->takeOver(other, *this);
}

LivePosition::~LivePosition()
{
    if (!mKeeper) return;
    mKeeper->forget(*this);
    mKeeper->unlink(*this);
}

LivePosition &LivePosition::operator=(const LivePosition &other)
{
    if (this == &other) return *this;
    if (mKeeper == other.mKeeper) return *this = other.mPosition;
    if (mKeeper) {
        mKeeper->forget(*this);
        mKeeper->unlink(*this);
    }
    mKeeper = other.mKeeper;
    mPosition = other.mPosition;
    if (mKeeper) mKeeper->link(*this);
    return *this;
}

LivePosition &LivePosition::operator=(const Position &position)
{
    if (!mKeeper) {
        mPosition = position;
        return *this;
    }
    // What a step sets, its undo sets back; set by anybody else it stays.
    if (mKeeper->mInStep)
        mKeeper->note(*this, true);
    else if (mTicket)
        mKeeper->forget(*this);
    if (mPosition.node == position.node) { // as mostly: searches and loops go on from where they stand
        mPosition.offset = position.offset;
        return *this;
    }
    mKeeper->relink(*this, position);
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
            at->mTicket = 0;
            at->mNote = 0;
            at = std::exchange(at->mNext, nullptr);
        }
    for (auto &[ticket, position] : mByTicket)
        position->mTicket = 0;
}

void RangeKeeper::link(LivePosition &position)
{
    position.mNext = position.mPrevious = nullptr;
    if (!position.mPosition) return;
    const Node *node = position.mPosition.node.get();
    if (mLastNode != node) {
        mLastFirst = &mByNode[node];
        mLastNode = node;
    }
    LivePosition *&first = *mLastFirst;
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
    else {
        if (mLastNode == position.mPosition.node.get()) mLastNode = nullptr;
        mByNode.erase(position.mPosition.node.get());
    }
    position.mNext = position.mPrevious = nullptr;
}

void RangeKeeper::relink(LivePosition &position, const Position &to)
{
    if (position.mPosition.node == to.node) {
        position.mPosition.offset = to.offset;
        return;
    }
    const Position target = to; // may be a position that goes with the old one
    unlink(position);
    position.mPosition = target;
    link(position);
}

// Steps

void RangeKeeper::note(LivePosition &position, bool lost)
{
    if (!mInStep) return;
    if (position.mNote == 0) {
        const Node *node = position.mPosition.node.get();
        mNotes.push_back({&position, node ? node->id() : 0, position.mPosition.offset, false});
        position.mNote = uint32_t(mNotes.size());
    }
    if (lost) mNotes[position.mNote - 1].lost = true;
}

void RangeKeeper::forget(LivePosition &position)
{
    if (position.mNote) mNotes[position.mNote - 1].who = nullptr;
    if (position.mTicket) mByTicket.erase(position.mTicket);
    position.mNote = 0;
    position.mTicket = 0;
}

void RangeKeeper::takeOver(LivePosition &from, LivePosition &to)
{
    to.mNote = std::exchange(from.mNote, 0);
    to.mTicket = std::exchange(from.mTicket, 0);
    if (to.mNote) mNotes[to.mNote - 1].who = &to;
    if (to.mTicket) mByTicket[to.mTicket] = &to;
}

std::optional<Position> RangeKeeper::noted(NodeId id, uint32_t offset) const
{
    if (id == 0) return Position();
    Node *node = mDocument.nodeById(id);
    if (!node || !node->isConnected()) return std::nullopt;
    return Position(node, offset).clipped();
}

void RangeKeeper::stepBegins()
{
    mInStep = true;
}

void RangeKeeper::remember(std::vector<Place> &places)
{
    mRemembered -= places.size();
    places.clear();
    for (const Note &note : mNotes) {
        if (!note.who || !note.lost) continue;
        if (!note.who->mTicket) mByTicket[note.who->mTicket = ++mLastTicket] = note.who;
        places.push_back({note.who->mTicket, note.node, note.offset});
    }
    mRemembered += places.size();
}

void RangeKeeper::stepEnds(changes::StepName step)
{
    mInStep = false;
    if (step.number == 0) { // nothing was written: what it set nobody sets back
        for (const Note &note : mNotes) {
            if (!note.who) continue;
            note.who->mNote = 0;
            if (note.lost) forget(*note.who);
        }
        mNotes.clear();
        return;
    }
    const bool any = std::any_of(mNotes.begin(), mNotes.end(), [](const Note &note) { return note.who && note.lost; });
    // An earlier memory of the same side is of another time.
    if (any || mMemories.count(step.number)) {
        Memory &memory = mMemories[step.number];
        remember(step.inverse ? memory.after : memory.before);
    }
    for (const Note &note : mNotes)
        if (note.who) note.who->mNote = 0;
    mNotes.clear();
    while (mRemembered > mostRemembered && mMemories.size() > 1) {
        const auto oldest = mMemories.begin();
        mRemembered -= oldest->second.before.size() + oldest->second.after.size();
        mMemories.erase(oldest);
    }
}

void RangeKeeper::stepFails()
{
    mInStep = false;
    for (const Note &note : mNotes) {
        if (!note.who) continue;
        note.who->mNote = 0;
        if (const auto to = note.lost ? noted(note.node, note.offset) : std::nullopt) relink(*note.who, *to);
    }
    mNotes.clear();
}

void RangeKeeper::stepPlayed(changes::StepName step)
{
    const auto found = mMemories.find(step.number);
    if (found == mMemories.end()) return;
    for (const Place &place : step.inverse ? found->second.before : found->second.after) {
        const auto who = mByTicket.find(place.ticket);
        if (who == mByTicket.end()) continue;
        const auto to = noted(place.node, place.offset);
        if (!to || who->second->mPosition == *to) continue;
        note(*who->second, true);
        relink(*who->second, *to);
    }
}

// Edits

void RangeKeeper::childPutIn(Node &parent, uint32_t index)
{
    const auto found = mByNode.find(&parent);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at; at = at->mNext) {
        if (!isBehind(at->mGrip, at->mPosition.offset, index)) continue;
        note(*at, false);
        ++at->mPosition.offset;
    }
}

void RangeKeeper::childTakenOut(Node &parent, uint32_t index)
{
    const auto found = mByNode.find(&parent);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at; at = at->mNext) {
        const uint32_t place = at->mPosition.offset, to = place > index ? place - 1 : place;
        const uint32_t back = isBehind(at->mGrip, to, index) ? to + 1 : to;
        if (to != place || back != place) note(*at, back != place);
        at->mPosition.offset = to;
    }
}

void RangeKeeper::moveAll(Node *from, const Position &to)
{
    const auto found = mByNode.find(from);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at;) {
        LivePosition *next = at->mNext;
        note(*at, true);
        relink(*at, to); // the last one takes the entry with it
        at = next;
    }
}

void RangeKeeper::carryOver(Text &text, uint32_t offset, Text &rest)
{
    const auto found = mByNode.find(&text);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at;) {
        LivePosition *next = at->mNext;
        if (isBehind(at->mGrip, at->mPosition.offset, offset)) {
            note(*at, true);
            relink(*at, Position(&rest, at->mPosition.offset - offset));
        }
        at = next;
    }
}

void RangeKeeper::inserted(Node &node)
{
    if (!mByNode.empty() && mByNode.count(node.parentNode())) childPutIn(*node.parentNode(), node.index());
}

void RangeKeeper::removed(Node &node, ParentNode &parent, Node *before)
{
    if (mByNode.empty()) return;
    const uint32_t index = before ? before->index() : parent.childCount();
    childTakenOut(parent, index);
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
    childTakenOut(oldParent, oldIndex);
    childPutIn(newParent, newIndex);
}

void RangeKeeper::textReplaced(CharacterData &node, uint32_t offset, uint32_t removed, uint32_t added)
{
    const auto found = mByNode.find(&node);
    if (found == mByNode.end()) return;
    for (LivePosition *at = found->second; at; at = at->mNext) {
        const uint32_t place = at->mPosition.offset;
        const uint32_t carried = afterReplacement(at->mGrip, place, offset, removed, added);
        const uint32_t to = Position(&node, carried).clipped().offset;
        const bool lost = afterReplacement(at->mGrip, to, offset, added, removed) != place;
        if (to != place || lost) note(*at, lost);
        at->mPosition.offset = to;
    }
}

} // namespace ranges
