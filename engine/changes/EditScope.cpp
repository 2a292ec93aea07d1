// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/EditScope.h"

#include "engine/changes/ChangeTracker.h"

#include <QPointer>
#include <QThread>
#include <algorithm>
#include <vector>

namespace changes {

namespace {

int depth = 0;
int loopLevelOfScope = 0;
std::vector<ChangeTracker *> waiting;

struct Call {
    QPointer<QObject> owner;
    std::function<void()> call;
};
std::vector<Call> calls;

int loopLevel()
{
    return QThread::currentThread()->loopLevel();
}

void tellAll()
{
    Waiting::tell();
    // A call may open scopes of its own, and ask for calls after those.
    for (const Call &call : std::exchange(calls, {})) {
        if (call.owner) call.call();
    }
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
        tellAll();
    }
    depth = mOldDepth;
    loopLevelOfScope = mOldLoopLevel;
}

bool EditScope::isOpen()
{
    return depth > 0 && loopLevel() <= loopLevelOfScope;
}

void EditScope::whenTold(QObject *owner, std::function<void()> call)
{
    if (!isOpen() || waiting.empty()) return call();
    if (std::none_of(calls.begin(), calls.end(), [&](const Call &other) { return other.owner == owner; })) {
        calls.push_back({owner, std::move(call)});
    }
}

EditScope::Suspension::Suspension() : mDepth(depth)
{
    depth = 0;
    tellAll();
}

EditScope::Suspension::~Suspension()
{
    tellAll();
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
