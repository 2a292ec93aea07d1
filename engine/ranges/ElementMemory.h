// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/Record.h"

#include <map>
#include <memory>
#include <vector>

namespace ranges {

/// Which elements were chosen on either side of the steps that a document went through, so that playing a step the
/// other way can choose them again. Elements are named by their ids: one that went and came back may be another object.
class ElementMemory
{
public:
    using Ids = std::vector<dom::NodeId>;
    /// Shared by all steps through which the choice stays the same; never null.
    using Choice = std::shared_ptr<const Ids>;

    /// At a step's end: what was chosen at its begin and is now. A step without a number isn't remembered.
    void keep(changes::StepName step, const Choice &before, const Choice &now);
    /// Behind the playing of that step: what was chosen on the side to which it went; null where nothing is known.
    Choice playedTo(changes::StepName step) const;
    /// As `playedTo`, but null too where somebody has chosen something else meanwhile.
    Choice untouchedSince(changes::StepName step) const;
    /// Somebody chose, outside of any step.
    void chosen() { mChosenBehind = mLastStep; }

private:
    struct Sides
    {
        Choice before, after;
        uint64_t last = 0; ///< the last step that was ended when it was played, or made
    };
    std::map<uint64_t, Sides> mSides; // by the steps' numbers, which grow
    uint64_t mLastStep = 0;           ///< counts ended steps, echoes too
    uint64_t mChosenBehind = 0;
};

} // namespace ranges
