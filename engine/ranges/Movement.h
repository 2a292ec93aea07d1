// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/Content.h"

#include <QString>
#include <vector>

namespace ranges {

/// Moves carets by what a reader sees: by character (a grapheme, collapsed white space as one), word, block and
/// document. Results are caret places; a move that isn't possible answers where it began. Lines are the surface's.
///
/// A caret goes over breaks and objects as over characters and from the end of one block to the start of the next, into
/// tables, into empty blocks that are held open. Beside a table or a rule it stops only where no text would take it.
class Movement
{
public:
    explicit Movement(const Content &content) : mContent(content) {}
    /// Within the editing host of `p`, else within BODY.
    static Content contentFor(const Position &p, const Rendering &rendering = Rendering::byHtml());

    Position nextCharacter(const Position &p) const;
    Position previousCharacter(const Position &p) const;
    /// The start of the next word; the end of its block first; from there the start of the next block.
    Position nextWord(const Position &p) const;
    /// The start of the word, or of the one before.
    Position previousWord(const Position &p) const;
    /// Where a key that moves a caret from `from` to `to` lets it stand: widgets are passed as one thing, but for their
    /// parts that are edited by themselves.
    Position pastWidgets(const Position &from, const Position &to) const;
    /// The place outside of the field at whose end, respectively start, `from` stands, where that begins or ends a line;
    /// null for none.
    Position outOfField(const Position &from, bool forward) const;
    Position startOfBlock(const Position &p) const;
    Position endOfBlock(const Position &p) const;
    Position startOfDocument() const;
    Position endOfDocument() const;
    /// The word, blanks, or punctuation around `p`, what stands behind it before what stands in front. Empty in an
    /// empty block.
    Span wordAt(const Position &p) const;
    /// The block's content with its end: it ends behind the block where the text fills one.
    Span blockAt(const Position &p) const;

private:
    Position step(const Position &p, bool forward) const;
    Position crossEdges(Item item, const Position &from, bool forward) const;
    Position pastWidget(dom::Element &widget, const Position &from, bool forward) const;
    Position inFrontOf(dom::Element &widget, const Position &from, const Position &at, bool forward) const;
    Position beforeFinalBreak(const Item &item) const;
    Position pastCharacter(const Item &item, bool forward) const;
    struct Stretch
    {
        QString text;
        std::vector<Position> places; ///< one in front of each unit and one behind the last
    };
    /// Visible text from `p` to the line's end in that direction, at most `units` of it. In reading order.
    Stretch stretch(const Position &p, bool forward, int units) const;
    const Content &mContent;
};

} // namespace ranges
