// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/ranges/Content.h"
#include "engine/ranges/RangeKeeper.h"

#include <vector>

namespace editing {

/// Keeps blanks looking as they were typed while the text around them changes.
///
/// Blanks beside the place of an edit are noted before it: plain ones that show, and no-break ones that had to be,
/// because a plain one would have collapsed there. Afterwards each becomes what it must be: a no-break space at a
/// line's start or end or beside another plain blank, a plain one elsewhere. A no-break space that didn't have to be
/// one was somebody's wish and stays.
class Blanks
{
public:
    Blanks(const ranges::Content &content, changes::ChangeTracker &tracker, ranges::RangeKeeper &keeper)
        : mContent(content), mTracker(tracker), mKeeper(keeper)
    {
    }
    /// The blanks that end at `left` and those that begin at `right`.
    void note(const ranges::Position &left, const ranges::Position &right);
    /// Only those behind, or in front of it.
    void noteBefore(const ranges::Position &p);
    void noteAfter(const ranges::Position &p);
    void mend();

    /// `text` as it has to be put between these two places, with plain or no-break blanks.
    QString fitted(const QString &text, const ranges::Position &left, const ranges::Position &right) const;

private:
    static constexpr int reach = 8; ///< how far a change of one blank can matter to the next ones
    bool wouldCollapse(const ranges::Item &character) const;
    bool noteOne(const ranges::Item &item);
    void dropHidden(const ranges::Position &from);

    const ranges::Content &mContent;
    changes::ChangeTracker &mTracker;
    ranges::RangeKeeper &mKeeper;
    std::vector<ranges::LivePosition> mNoted; // each behind one character: what is typed beside it leaves it there
};

} // namespace editing
