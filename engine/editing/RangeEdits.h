// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/editing/Removal.h"
#include "engine/ranges/TextRange.h"

namespace editing {

class Editor;

/// What a script writes through a text range. Each call is one assignment: one record, nothing where it fails.
/// Afterwards the range, and a selection that stood in it, stand behind what was written.
class RangeEdits
{
public:
    /// Fails for a range that doesn't lie within one part that can be edited. What takes in the end of such a part, and
    /// nothing behind it, lies within.
    RangeEdits(Editor &editor, const ranges::TextRange &range);
    /// Within `host`.
    RangeEdits(Editor &editor, dom::Element &host);

    /// Literally; line ends become breaks. A block whose end was in the range stays.
    void write(ranges::TextRange &range, const QString &text);
    /// A block whose end was in the range stays unless the HTML brings blocks; a cell always. Fails over two cells, but
    /// for "", and for what can't stand there.
    void paste(ranges::TextRange &range, const QString &html);

    // For an operation that has a step open and has made room: puts content at a place, and answers the caret behind it.
    bool bringsBlocks(const dom::DocumentFragment &content) const;
    bool takesBlocks(const ranges::Position &p, const dom::DocumentFragment &content) const;
    ranges::Position insertBlocks(const ranges::Position &p, dom::DocumentFragment &content)
    {
        return insertBlocks(Taken{p, {}}, content);
    }
    ranges::Position insertInline(const ranges::Position &p, dom::DocumentFragment &content);

private:
    struct Taken
    {
        ranges::Position place;
        base::Ref<dom::Element> whole; ///< the block that was covered with its end
    };
    bool holdsTwoCells(ranges::TextRange &range) const;
    bool selectionStandsIn(const ranges::TextRange &range) const;
    /// What it covers, without the boundary that ends it; empty where that is all.
    static ranges::Span contentOf(const ranges::TextRange &range);
    static dom::Element &hostOf(const ranges::TextRange &range);
    Taken takeOut(ranges::TextRange &range);
    ranges::Position insertLines(ranges::Position p, const QString &text);
    ranges::Position insertText(const ranges::Position &p, const QString &text);
    ranges::Position insertBlocks(const Taken &taken, dom::DocumentFragment &content);
    /// Null where it can't stand.
    dom::Element *parentFor(const ranges::Position &p, const dom::DocumentFragment &content) const;
    /// Whether writing that would change nothing.
    bool isThere(const ranges::TextRange &range, const QString &text) const;
    bool isThere(const ranges::TextRange &range, const dom::DocumentFragment &html) const;
    void settle(ranges::TextRange &range, const ranges::Position &p, bool withSelection);

    Editor &mEditor;
    changes::ChangeTracker &mTracker;
    ranges::Content mContent;
    TreeEdits mEdits;
    Removal mRemoval;
};

} // namespace editing
