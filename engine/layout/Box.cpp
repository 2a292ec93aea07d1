// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Box.h"

#include "engine/dom/CharacterData.h"
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Engine.h"

namespace layout {

Box::~Box()
{
    // Children go with their parent. Trees are as deep as documents, so the chain is unwound by hand.
    while (Box *child = mFirst) {
        Box *deepest = child;
        while (deepest->mFirst) deepest = deepest->mFirst;
        deepest->mParent->unlinkChild(deepest);
        if (deepest->mNode && deepest->mNode->layoutSlot == deepest) deepest->mNode->layoutSlot = nullptr;
        delete deepest;
    }
    if (mNode && mNode->layoutSlot == this) mNode->layoutSlot = nullptr;
}

BlockBox::~BlockBox() = default;

BlockBox *Box::blockParent() const
{
    Box *box = mParent;
    while (box && !box->isBlockBox()) box = box->mParent;
    return static_cast<BlockBox *>(box);
}

void Box::insertChild(Box *child, Box *before)
{
    child->mParent = this;
    child->mNext = before;
    child->mPrevious = before ? before->mPrevious : mLast;
    (child->mPrevious ? child->mPrevious->mNext : mFirst) = child;
    (before ? before->mPrevious : mLast) = child;
}

void Box::unlinkChild(Box *child)
{
    (child->mPrevious ? child->mPrevious->mNext : mFirst) = child->mNext;
    (child->mNext ? child->mNext->mPrevious : mLast) = child->mPrevious;
    child->mParent = child->mNext = child->mPrevious = nullptr;
}

const QString &TextBox::source() const
{
    return mNode ? static_cast<const dom::CharacterData *>(mNode)->data() : generated;
}

Unit BlockBox::top() const
{
    if (!inSumTree) return gap;
    const auto *parent = static_cast<const BlockBox *>(mParent);
    return parent->contentTop() + Unit::fromRaw(parent->flow.sumBefore(*this).height) + gap;
}

BlockBox *BlockBox::container() const
{
    return positioned ? containingBlock() : blockParent();
}

BlockBox *BlockBox::containingBlock() const
{
    const bool fixed = isFixedPosition(*this);
    BlockBox *box = blockParent();
    const Box *up = mParent;
    while (up) {
        if (up->unseen) return const_cast<BlockBox *>(static_cast<const BlockBox *>(up)); // nothing leaves it
        if (up->isBlockBox()) box = const_cast<BlockBox *>(static_cast<const BlockBox *>(up));
        if (!up->parent()) break;
        // What is transformed holds everything inside, fixed boxes too.
        if ((!fixed && isPositionedStyle(*up)) || (up->isBlockBox() && !up->anonymous && up->style().rare().isTransformed())) {
            return up->isBlockBox() ? box : up->blockParent();
        }
        up = up->parent();
    }
    return box;
}

BlockBox *BlockBox::childAt(Unit y, Unit *childTop) const
{
    const int32_t wanted = (y - contentTop()).raw;
    FlowSum before;
    BlockBox *child = flow.find([&](const FlowSum &sum) { return sum.height > wanted; }, &before);
    if (!child && !flow.empty()) {
        child = flow.at(flow.size() - 1);
        before = flow.sumBefore(*child);
    }
    if (child && childTop) *childTop = contentTop() + Unit::fromRaw(before.height) + child->gap;
    return child;
}

BlockBox *BlockBox::nextInFlow() const
{
    for (Box *box = mNext; box; box = box->next())
        if (box->isBlockBox() && static_cast<BlockBox *>(box)->inSumTree) return static_cast<BlockBox *>(box);
    return nullptr;
}

BlockBox *BlockBox::previousInFlow() const
{
    for (Box *box = mPrevious; box; box = box->previous())
        if (box->isBlockBox() && static_cast<BlockBox *>(box)->inSumTree) return static_cast<BlockBox *>(box);
    return nullptr;
}

Point BlockBox::relativeOffset() const
{
    return relativeShift(*this);
}

Point BlockBox::shownOffset() const
{
    return moved ? relativeOffset() + stickyShift(*this) : relativeOffset();
}

} // namespace layout
