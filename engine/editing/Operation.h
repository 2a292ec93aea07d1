// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/editing/Blanks.h"
#include "engine/editing/Editor.h"

namespace editing {

/// One editing operation under way: what it works with, and where it works. Lives as long as the step that it belongs
/// to.
class Operation
{
public:
    Operation(Editor &editor, dom::Element &host);

    /// The selection as far as it can be edited; an empty span for a caret, normalised.
    ranges::Span span() const;
    /// The span that what comes in takes the place of; selected objects have gone from it.
    ranges::Span spanToReplace();
    /// Whether the selected objects stand in lines of one block.
    bool objectsAreWithinBlock() const;
    /// Takes the selected objects away; a place where they were.
    ranges::Position removeObjects();

    // Each is the whole of an operation but for the step around it. They set the selection.
    bool type(const QString &text, ranges::Span span);
    bool paste(dom::DocumentFragment &content, ranges::Span span);
    /// Empties the cells; what is typed next in the first has the style of what it held. The caret goes there.
    void empty(const std::vector<base::Ref<dom::Element>> &cells, bool typesNow);
    bool breakParagraph(const ranges::Span &span);
    bool breakLine(const ranges::Span &span);
    bool removeSpan(const ranges::Span &span);
    /// The caret goes to `p`, where objects were.
    void settle(const ranges::Position &p) { finish(p, isBetweenBlocks(p) ? Line::Goes : Line::Stays); }
    bool removeFrom(const ranges::Position &p, bool forward, Unit unit);

    bool isWithinBlock(const ranges::Span &span) const { return mRemoval.isWithinBlock(span); }
    const ranges::Content &content() const { return mContent; }
    /// Whether blanks and line ends show there as they are.
    bool preserves(const ranges::Position &p) const;

private:
    ranges::Position roomForText(const ranges::Position &p);
    ranges::Position placeForText(const ranges::Span &span) const;
    ranges::Span placeholder(const ranges::Position &p) const;
    void rememberTypedBlank(const ranges::Position &caret);
    using Style = std::vector<base::Ref<dom::Element>>; // inline elements of a block, outermost first
    Style styleAround(const ranges::Position &p, const dom::Element &block) const;
    Style comingStyle(const ranges::Position &p) const;
    Style styleBehind(const ranges::Position &p) const;
    void rememberStyle(const ranges::Position &caret, Style style, uint64_t records = Editor::unsettled);
    bool carriesOn(const dom::Element &element) const;
    ranges::Position placeInStyle(const ranges::Position &p, const Style &style);
    void dropPlaceholderBreak(const ranges::Position &caret);

    bool lineFeed(const ranges::Position &p);
    bool lineBreakAt(const ranges::Position &p);
    bool isWithinPart(const ranges::Position &p) const;
    dom::Element *blockToSplit(const ranges::Position &p);
    bool split(dom::Element &block, const ranges::Position &p);
    void closeHalf(dom::Element &half, const ranges::Position &line);

    ranges::Position withinCharacter(const ranges::Position &p, const ranges::Position &start) const;
    bool isInItem(const ranges::Position &p) const;
    bool joinOver(const ranges::Position &p, bool forward);
    bool leaveListAtStart(const ranges::Position &p);
    ranges::Position edgeOfTable(dom::Element &table, bool first) const;
    bool isBlankBlock(const dom::Element &block) const;
    bool takeAway(dom::Element &element, const ranges::Position &caret);
    /// Whether `p` lies between blocks, in no line.
    bool isBetweenBlocks(const ranges::Position &p) const { return mRemoval.isBetweenBlocks(p); }
    enum class Line : uint8_t { Stays, Goes };
    void finish(const ranges::Position &caret, Line line = Line::Stays);

    Editor &mEditor;
    changes::ChangeTracker &mTracker;
    ranges::SelectionObject &mSelection;
    ranges::Content mContent;
    ranges::Movement mMovement;
    TreeEdits mEdits;
    Removal mRemoval;
    Blanks mBlanks;
};

} // namespace editing
