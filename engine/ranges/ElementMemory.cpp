// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/ElementMemory.h"

namespace ranges {

namespace {
/// The oldest steps are forgotten first.
constexpr size_t mostSteps = 4096;
} // namespace

void ElementMemory::keep(changes::StepName step, const Choice &before, const Choice &now)
{
    ++mLastStep;
    if (step.number == 0) return;
    const auto found = mSides.find(step.number);
    if (found == mSides.end() && before->empty() && now->empty()) return;
    Sides &sides = mSides[step.number];
    (step.inverse ? sides.after : sides.before) = before;
    sides.last = mLastStep;
    if (mSides.size() > mostSteps) mSides.erase(mSides.begin());
}

ElementMemory::Choice ElementMemory::playedTo(changes::StepName step) const
{
    const auto found = mSides.find(step.number);
    if (found == mSides.end()) return {};
    return step.inverse ? found->second.before : found->second.after;
}

ElementMemory::Choice ElementMemory::untouchedSince(changes::StepName step) const
{
    const auto found = mSides.find(step.number);
    if (found == mSides.end() || found->second.last <= mChosenBehind) return {};
    return playedTo(step);
}

} // namespace ranges
