// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/editing/TreeEdits.h"

namespace editing {

/// Takes content away and joins what is left, within the step that is open.
///
/// `<p>a^b</p><p>c|d</p>` becomes `<p>a|d</p>`: the first block stays, the inline content of the last comes to it, and
/// what was emptied on the way goes. Cells are emptied and stay unless their whole table, or whole rows of it, are
/// covered, and nothing is joined over a cell's edge.
class Removal
{
public:
    Removal(const ranges::Content &content, changes::ChangeTracker &tracker, ranges::RangeKeeper &keeper)
        : mContent(content), mTracker(tracker), mKeeper(keeper), mEdits(content, tracker, keeper)
    {
    }
    /// The span as far as it can be taken away: ends between blocks go to the text that they take in.
    ranges::Span fitted(const ranges::Span &span) const;
    /// Whether it lies in one line-holding element with no block in between.
    bool isWithinBlock(const ranges::Span &fitted) const;
    /// Removes; the place where it was. The line there may be empty: see `TreeEdits::showLine`.
    ranges::Position remove(const ranges::Span &fitted);
    bool isBetweenBlocks(const ranges::Position &p) const;

private:
    struct Victims
    {
        std::vector<base::Ref<dom::Node>> nodes;
        std::vector<base::Ref<dom::Element>> cells; ///< they stay, emptied
    };
    ranges::Span withWholeWidgets(const ranges::Span &span) const;
    Victims collect(const ranges::Span &span) const;
    bool rowsAreMeant(const ranges::Span &span) const;
    void join(const ranges::LivePosition &start, const ranges::LivePosition &end, dom::Element &first,
              dom::Element &last);
    void joinOuterIntoInner(const ranges::LivePosition &start, dom::Element &first, dom::Element &last);

    const ranges::Content &mContent;
    changes::ChangeTracker &mTracker;
    ranges::RangeKeeper &mKeeper;
    TreeEdits mEdits;
};

} // namespace editing
