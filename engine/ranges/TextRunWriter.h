// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/TextIndex.h"

namespace ranges {

/// Makes a run of its leaves, in order: collapses white space, and takes back what shows nothing at a line's end.
class TextRunWriter
{
public:
    TextRunWriter(TextRun &run, const Rendering &rendering) : mRun(run), mRendering(rendering) {}
    /// Nothing was added that shows, or a blank at most.
    bool isEmpty() const { return mRun.length == 0 && !mLastBreak; }
    void addText(dom::Text &text);
    void addBreak(dom::Element &element);
    void addObject(dom::Element &element);
    /// The run is that object, which stands on a line of its own.
    void setRule(dom::Element &element);
    /// The run is the empty line of that block, if it has nothing else.
    void holdOpen(dom::Element &block);
    /// A run without anything to see has no pieces afterwards.
    void finish();

private:
    void dropBlank();
    TextRun &mRun;
    const Rendering &mRendering;
    bool mAfterBlank = true;  ///< a blank here would collapse
    bool mEndsBlank = false;  ///< the last character is a collapsible blank
    bool mLastBreak = false;  ///< a break is the last thing
};

/// How many of the piece's units in front of `offset` (of the text) show.
uint32_t countVisible(const TextRun::Piece &piece, const dom::Text &text, uint32_t offset);
/// Beside the n-th of the piece's visible units, 0-based.
Position placeInText(const TextRun::Piece &piece, dom::Text &text, uint32_t n, TextIndex::Side side);
/// Of the plain part of a piece.
void readPlain(const TextRun::Piece &piece, const dom::Text &text, uint32_t skip, uint32_t count, QString &out);
void readText(const TextRun::Piece &piece, const dom::Text &text, uint32_t skip, uint32_t count, QString &out);
/// An object by its name, whatever may be edited.
bool isReplacedName(const dom::Element &element);

} // namespace ranges
