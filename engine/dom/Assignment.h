// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"

#include <exception>

namespace dom {

/// One assignment of the contract: what is written between its construction and `done` is one record; left by an
/// exception, it is inverted and nothing is written. On a detached tree it does nothing.
class Assignment
{
public:
    explicit Assignment(const Node &node) : mDoor(node.isConnected() ? node.document().door : nullptr)
    {
        if (mDoor) mDoor->beginAssignment();
    }
    ~Assignment()
    {
        if (mDoor) mDoor->endAssignment(true);
    }
    Assignment(const Assignment &) = delete;
    Assignment &operator=(const Assignment &) = delete;
    void done()
    {
        if (MutationDoor *door = std::exchange(mDoor, nullptr)) door->endAssignment(false);
    }

private:
    MutationDoor *mDoor;
};

} // namespace dom
