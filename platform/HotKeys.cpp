// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/HotKeys.h"

#include "platform/CodeMaxCommands.h"

HotKeys &HotKeys::global()
{
    static HotKeys keys;
    return keys;
}

HotKeys::HotKeys()
{
    reset();
}

void HotKeys::reset()
{
    using namespace codemax;
    mKeys.clear();
    add(undo, Qt::CTRL | Qt::Key_Z);
    add(undo, Qt::ALT | Qt::Key_Backspace);
    add(redo, Qt::CTRL | Qt::Key_Y);
    add(redo, Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    add(paste, Qt::CTRL | Qt::Key_V);
    add(paste, Qt::SHIFT | Qt::Key_Insert);
    add(cut, Qt::CTRL | Qt::Key_X);
    add(cut, Qt::SHIFT | Qt::Key_Delete);
    add(copy, Qt::CTRL | Qt::Key_C);
    add(copy, Qt::CTRL | Qt::Key_Insert);
    add(deleteSelection, Qt::Key_Delete);
    add(findNext, Qt::Key_F3);
    add(findPrevious, Qt::SHIFT | Qt::Key_F3);
}

bool HotKeys::add(int command, const QKeySequence &keys)
{
    if (keys.count() != 1) return false;
    const int holder = commandFor(keys);
    if (holder == command && holder != 0) return true;
    if (holder != 0) remove(holder, keys);
    mKeys[command].append(keys);
    return true;
}

bool HotKeys::remove(int command, const QKeySequence &keys)
{
    const auto found = mKeys.find(command);
    if (found == mKeys.end() || !found->removeOne(keys)) return false;
    if (found->isEmpty()) mKeys.erase(found);
    return true;
}

int HotKeys::commandFor(const QKeySequence &keys) const
{
    for (auto it = mKeys.cbegin(); it != mKeys.cend(); ++it) {
        if (it->contains(keys)) return it.key();
    }
    return 0;
}
