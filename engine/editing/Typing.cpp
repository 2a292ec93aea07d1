// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"
#include "engine/editing/Operation.h"

namespace editing {

using namespace dom;
using namespace ranges;

/// The only no-break space of a block stands for nothing: `<p>&nbsp;|</p>` is typed over.
Span Operation::placeholder(const Position &p) const
{
    if (mContent.emptyField(p)) return {p, p};
    Item item = mContent.before(p);
    if (!item.isCharacter()) item = mContent.after(p);
    if (!item.isCharacter() || item.unit() != noBreakSpace) return {p, p};
    const Position start(item.node, item.from), end(item.node, item.to);
    if (!mContent.pastBlanksBefore(start).isEdge() || !mContent.pastBlanksAfter(end).isEdge()) return {p, p};
    const auto &typed = mEditor.mTypedBlank;
    if (typed.node == item.node->id() && typed.records == mTracker.recordCount()) return {p, p};
    return {start, end};
}

/// A place in which text can stand, with a block made for it if none is there; null where no text can stand.
Position Operation::roomForText(const Position &p)
{
    if (!mContent.pastBlanksBefore(p).isEdge() || !mContent.pastBlanksAfter(p).isEdge()) return p;
    Element *around = mContent.container(p);
    if (around == &mContent.limit() && !mContent.isBlock(*around)) return p;
    const bool empty = mContent.isEmpty(*around);
    const bool list = isList(*around);
    if (isTableStructure(*around) || around->is(names::dl)) return {};
    if (list || ((around->is(names::body) || !empty) && TreeEdits::canHoldParagraph(*around)))
    {
        const bool inField = mContent.emptyField(p) != nullptr;
        Element &made = mEdits.wrapRun(*around, p, list ? "li" : "p");
        return inField ? p : Position::startOf(made);
    }
    mTracker.setHeldOpen(*around, false);
    return p;
}

Position Operation::placeForText(const Span &span) const
{
    if (!span.isEmpty()) {
        const Item replaced = mContent.after(span.start);
        if (replaced.isCharacter() && !mContent.isHidden(replaced)) return replaced.near;
    }
    if (mContent.emptyField(span.start)) return span.start;
    const Item previous = mContent.before(span.start), next = mContent.after(span.start);
    // The caret of a field's first letter stands in front of that one, and text comes there too.
    if (next.isCharacter() && next.near == span.start) return next.near;
    if (previous.isCharacter()) return previous.near;
    if (next.isCharacter()) return next.near;
    return span.start;
}

/// `<br>|<br>` and `<p>|<br></p>`: the last break only kept the line, and text keeps it better.
void Operation::dropPlaceholderBreak(const Position &caret)
{
    const Item next = mContent.pastBlanksAfter(caret);
    if (mContent.isFinalBreak(next)) mTracker.remove(*next.node);
}

void Operation::rememberTypedBlank(const Position &caret)
{
    const Item typed = mContent.before(caret);
    mEditor.mTypedBlank = {};
    if (typed.isCharacter() && typed.unit() == noBreakSpace) mEditor.mTypedBlank = {typed.node->id(), ~0ull};
}

/// The inline elements around `p` within the block that a line break carries on, as copies. A link ends with its line.
std::vector<Ref<Element>> Operation::styleAround(const Position &p, const Element &block) const
{
    const auto &coming = mEditor.mComingStyle;
    if (coming.block == block.id() && coming.records == mTracker.recordCount()) return coming.shells;
    std::vector<Ref<Element>> shells;
    for (const Element *at = p.element(); at && at != &block; at = at->parentElement()) {
        if (mContent.isBlock(*at)) return {};
        if (at->is(names::a) || mContent.rendering().roleOf(*at) != Role::None) continue;
        shells.insert(shells.begin(), mEdits.cloneShell(*at));
    }
    return shells;
}

void Operation::rememberStyle(const Element &block, std::vector<Ref<Element>> shells)
{
    mEditor.mComingStyle = {};
    if (!shells.empty()) mEditor.mComingStyle = {block.id(), ~0ull, std::move(shells)};
}

/// The first text of a block, in the style that is to come there.
void Operation::insertStyled(const Position &p, Text &text)
{
    const auto &coming = mEditor.mComingStyle;
    const bool comes = coming.block && p.node->id() == coming.block && coming.records == mTracker.recordCount();
    if (!comes) return mEdits.insert(p, text);
    // Copies again: undo may bring this place back while those are in use.
    Ref<Element> outermost;
    Element *around = nullptr;
    for (const Ref<Element> &shell : coming.shells) {
        Ref<Element> copy = mEdits.cloneShell(*shell);
        if (around)
            RawTree::append(*around, *copy);
        else
            outermost = copy;
        around = copy.get();
    }
    RawTree::append(*around, text);
    mEdits.insert(p, *outermost);
}

bool Operation::type(const QString &given, Span span)
{
    RangeKeeper &keeper = mSelection.keeper();
    if (span.isEmpty()) span = placeholder(span.start);
    const bool heldByBreak = mContent.isLineEmpty(span.start);
    mBlanks.note(span.start, span.end);
    LivePosition end(keeper, span.end);
    const bool overSelection = !span.isEmpty();
    if (!overSelection) {
        const Position room = roomForText(span.start);
        if (!room) return false;
        span = {room, room};
    }
    QString text = given;
    if (!preserves(span.start)) {
        text.replace(u'\n', u' ').replace(u'\t', u' ');
        text = mBlanks.fitted(text, span.start, span.end);
    }
    const Position place = placeForText(span);
    Position caret;
    if (Text *in = place.text()) {
        const bool oneText = overSelection && span.end.node == in && span.end.offset >= place.offset;
        mTracker.replaceText(*in, place.offset, oneText ? span.end.offset - place.offset : 0, text);
        caret = {in, place.offset + uint32_t(text.size())};
        if (oneText) span.end = caret;
    } else {
        Element &around = *place.element();
        if (isTableStructure(around)) return false;
        Ref<Text> fresh = around.document().createTextNode(text);
        insertStyled(place, *fresh);
        if (Element *block = mContent.container(place)) mTracker.setHeldOpen(*block, false);
        caret = Position::endOf(*fresh);
    }
    LivePosition at(keeper, caret);
    if (overSelection && !(span.end == caret)) {
        const Position rest = end.position();
        if (caret < rest) mRemoval.remove({caret, rest});
    }
    if (heldByBreak && !overSelection) dropPlaceholderBreak(at);
    mBlanks.mend();
    mSelection.setCaret(at);
    rememberTypedBlank(at);
    return true;
}

} // namespace editing
