// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/ranges/Content.h"
#include "engine/ranges/RangeKeeper.h"

namespace editing {

/// The cuts and joints of which editing operations are made; each is some primitives of the door, within the step that
/// is open. Positions that a caller needs afterwards are live ones.
class TreeEdits
{
public:
    TreeEdits(const ranges::Content &content, changes::ChangeTracker &tracker, ranges::RangeKeeper &keeper)
        : mContent(content), mTracker(tracker), mKeeper(keeper)
    {
    }

    /// A place between children at the same spot: the text is split if need be, the first half stays the node it was.
    ranges::Position splitText(const ranges::Position &p);
    /// Splits all elements between `p` and `top`, which isn't split; nothing is split where `p` stands at an end.
    /// Clones have the attributes but the id. The place in `top`.
    ranges::Position splitUpTo(const ranges::Position &p, dom::Element &top);
    /// A new element, not in the tree yet, with the attributes but the id.
    static base::Ref<dom::Element> cloneShell(const dom::Element &element);
    /// Moves the siblings from `first` up to, not including, `end`.
    void moveSiblings(dom::Node *first, const dom::Node *end, dom::ParentNode &to, dom::Node *before);
    void insert(const ranges::Position &p, dom::Node &node);

    /// `block|`: cut at `p`, which is inside; what follows goes into a new block behind it, which is returned: a clone,
    /// or a plain one of that name.
    dom::Element &splitBlock(dom::Element &block, const ranges::Position &p, const char *newName = nullptr);
    /// The children of `parent` that make up the line or lines around `p`, undisplayed ones at the ends left out.
    struct Run
    {
        dom::Node *first = nullptr; ///< both null: nothing is there
        dom::Node *last = nullptr;
    };
    Run runAround(const dom::Element &parent, const ranges::Position &p) const;
    /// Puts the run into a new element, an empty one at `p` where there is no run.
    dom::Element &wrapRun(dom::Element &parent, const ranges::Position &p, const char *name);

    /// Removes inline elements that hold nothing any more, from `at` upwards to the first that holds lines.
    void tidyUpwards(dom::Node *at);
    /// Removes `element` if it holds nothing, then its parents likewise, but no cell and nothing that holds `keep`.
    void removeEmptied(dom::Element *element, const dom::Node &keep);
    /// The block loses what doesn't show, and is held open.
    void holdOpen(dom::Element &block);
    /// Sees to it that the line of `p` shows though it is empty: by the mark where it is a block's all, else by a BR.
    void showLine(const ranges::Position &p);
    /// An item leaves its list: it becomes an item of the list around, or its content becomes blocks.
    /// The start of what it became.
    /// Whether the item can leave its list: one that stands in a list, within what is edited.
    bool leavesList(const dom::Element &item) const;
    ranges::Position leaveList(dom::Element &item);

    /// Whether a P in `parent` would be read back as it stands.
    static bool canHoldParagraph(const dom::Element &parent);
    /// Whether it must stay, however empty: cells, rows, what the content ends at.
    bool isFixed(const dom::Element &element) const;
    /// Whether it doesn't go because what it held has gone: what is fixed, fields, frames.
    bool stays(const dom::Element &element) const;
    bool holdsField(const dom::Element &block) const;

private:
    const ranges::Content &mContent;
    changes::ChangeTracker &mTracker;
    ranges::RangeKeeper &mKeeper;
};

} // namespace editing
