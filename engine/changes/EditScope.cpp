// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/EditScope.h"

#include "engine/changes/ChangeTracker.h"

#include <QThread>

namespace changes {

namespace {

int depth = 0;
int loopLevelOfScope = 0;
std::vector<ChangeTracker *> waiting;

int loopLevel()
{
    return QThread::currentThread()->loopLevel();
}

} // namespace

EditScope::EditScope(Opening opening) : mOldDepth(depth), mOldLoopLevel(loopLevelOfScope)
{
    mOutermost = depth == 0 || loopLevel() > loopLevelOfScope;
    if (mOutermost) {
        if (opening == Opening::Tells) Waiting::tell();
        loopLevelOfScope = loopLevel();
    }
    ++depth;
}

EditScope::~EditScope()
{
    if (mOutermost) {
        depth = 0;
        Waiting::tell();
    }
    depth = mOldDepth;
    loopLevelOfScope = mOldLoopLevel;
}

bool EditScope::isOpen()
{
    return depth > 0 && loopLevel() <= loopLevelOfScope;
}

EditScope::Suspension::Suspension() : mDepth(depth)
{
    depth = 0;
    Waiting::tell();
}

EditScope::Suspension::~Suspension()
{
    Waiting::tell();
    depth = mDepth;
}

void Waiting::add(ChangeTracker &tracker)
{
    if (std::find(waiting.begin(), waiting.end(), &tracker) == waiting.end()) waiting.push_back(&tracker);
}

void Waiting::remove(ChangeTracker &tracker)
{
    std::erase(waiting, &tracker);
}

void Waiting::tell()
{
    // Being told may write, and may end a tracker: each is taken off before it tells.
    const size_t rounds = waiting.size();
    for (size_t i = 0; i < rounds && !waiting.empty(); ++i) {
        ChangeTracker *tracker = waiting.front();
        waiting.erase(waiting.begin());
        tracker->tellSinks();
    }
}

} // namespace changes
