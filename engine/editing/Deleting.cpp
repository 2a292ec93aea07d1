// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Names.h"
#include "engine/editing/Clusters.h"
#include "engine/editing/Operation.h"

namespace editing {

using namespace dom;
using namespace ranges;
using changes::Kind;

bool Operation::removeSpan(const Span &span)
{
    mBlanks.note(span.start, span.end);
    const bool noLine = isBetweenBlocks(span.start);
    Style style = styleBehind(span.start);
    LivePosition left(mSelection.keeper(), mRemoval.remove(span));
    finish(left, noLine && isBetweenBlocks(left) ? Line::Goes : Line::Stays);
    rememberStyle(mSelection.focus(), std::move(style));
    return true;
}

/// Where Backspace takes away to from `p`, in front of which a character starts at `start`.
Position Operation::withinCharacter(const Position &p, const Position &start) const
{
    const Item item = mContent.visibleBefore(p);
    if (!item.isCharacter() || item.node != start.node || start.offset >= item.to || mContent.isCollapsible(item))
        return start;
    const auto cluster = QStringView(item.text()->data()).mid(start.offset, item.to - start.offset);
    return {item.node, item.to - uint32_t(unitsForBackspace(cluster))};
}

bool Operation::removeFrom(const Position &p, bool forward, Unit unit)
{
    if (unit != Unit::ToBlockEdge) {
        const Item item = forward ? mContent.visibleAfter(p) : mContent.visibleBefore(p);
        Element *widget = item.isEdge() ? nullptr : mContent.widgetAround(item.node);
        if (widget && widget != mContent.widgetAround(p.node.get())) {
            if (widget->contains(*p.node)) return false; // of a part of it only the part is edited
            // As beside the one that is a block: the next key takes what is selected.
            mSelection.setControl({Ref<Element>(widget)});
            return true;
        }
    }
    Position other;
    switch (unit) {
    case Unit::Character:
        other = forward ? mMovement.nextCharacter(p) : mMovement.previousCharacter(p);
        break;
    case Unit::Word:
        other = forward ? mMovement.nextWord(p) : mMovement.previousWord(p);
        break;
    case Unit::ToBlockEdge:
        other = forward ? mMovement.endOfBlock(p) : mMovement.startOfBlock(p);
        break;
    }
    if (unit == Unit::Character && !forward) other = withinCharacter(p, other);
    const Span span = forward ? Span{p, other} : Span{other, p};
    if (span.isEmpty() || !mRemoval.isWithinBlock(span)) {
        if (unit == Unit::ToBlockEdge) return false;
        mTracker.setKind(Kind::Command);
        return joinOver(p, forward);
    }
    const bool overBreak = (forward ? mContent.visibleAfter(p) : mContent.visibleBefore(p)).isBreak();
    mBlanks.note(span.start, span.end);
    Style style = styleBehind(span.start);
    LivePosition caret(mSelection.keeper(), mRemoval.remove(span));
    if (overBreak && !mContent.pastBlanksBefore(caret).isLineEdge()) {
        // `a<br>|<br>`: the second only kept the line that goes.
        const Item next = mContent.pastBlanksAfter(caret);
        if (mContent.isFinalBreak(next)) mTracker.remove(*next.node);
    }
    finish(caret);
    rememberStyle(mSelection.focus(), std::move(style));
    return true;
}

/// The first item of a list leaves it: `<ul><li>|a</li></ul>` becomes `<p>|a</p>`.
bool Operation::leaveListAtStart(const Position &p)
{
    Item edge = mContent.pastBlanksBefore(p);
    for (; edge.kind == Item::Kind::Edge && edge.start; edge = mContent.pastBlanksBefore(edge.far)) {
        Element &element = *edge.element();
        if (isCell(element) || mContent.rendering().isFrame(element)) return false;
        if (!mEdits.leavesList(element)) continue;
        if (element.previousElementSibling()) return false;
        LivePosition caret(mSelection.keeper(), p);
        const bool empty = isBlankBlock(element);
        const Position start = mEdits.leaveList(element);
        finish(empty ? start : caret.position());
        return true;
    }
    return false;
}

bool Operation::takeAway(Element &element, const Position &caret)
{
    LivePosition p(mSelection.keeper(), caret);
    mBlanks.note(caret, caret);
    Element *parent = element.parentElement();
    mTracker.remove(element);
    mEdits.removeEmptied(parent, *p.position().node);
    finish(p);
    return true;
}

/// Where the caret comes into a table from outside; beside it if it has no cells.
Position Operation::edgeOfTable(Element &table, bool first) const
{
    Node *cell = nullptr;
    for (Node *node = table.firstChild(); node; node = node->next(&table)) {
        const bool isOwn = node->isElement() && isCell(*node->asElement());
        if (isOwn) cell = node;
        if (isOwn && first) break;
    }
    if (!cell) return first ? Position::before(table) : Position::after(table);
    return mContent.normalised(first ? Position::startOf(*cell) : Position::endOf(*cell));
}

/// Backspace at a block's start, Delete at its end.
bool Operation::joinOver(const Position &p, bool forward)
{
    if (!forward && leaveListAtStart(p)) return true;
    const auto pastBlanks = [&](const Position &at) {
        return forward ? mContent.pastBlanksAfter(at) : mContent.pastBlanksBefore(at);
    };
    Element *here = mContent.container(p);
    const bool blankHere = !mEdits.stays(*here) && !mEdits.holdsField(*here) && isBlankBlock(*here);
    const auto removeHere = [&](const Position &to) {
        LivePosition caret(mSelection.keeper(), to);
        Element *parent = here->parentElement();
        mTracker.remove(*here);
        mEdits.removeEmptied(parent, *to.node);
        finish(caret);
        return true;
    };
    Item item = pastBlanks(p);
    if (forward && mContent.isFinalBreak(item)) item = pastBlanks(item.far);
    while (item.isEdge()) {
        if (item.kind == Item::Kind::End) return false;
        Element &element = *item.element();
        if (item.isObject()) return takeAway(element, p);
        if (item.start != forward) { // out of a block
            if (isCell(element) || mContent.rendering().isFrame(element)) return false;
            item = pastBlanks(item.far);
            continue;
        }
        const bool isFrame = mContent.rendering().isFrame(element);
        if (isFrame && !blankHere && mContent.rendering().roleOf(element) != Role::Widget) return false;
        if (element.is(names::table) || (isFrame && !blankHere)) {
            if (blankHere) return removeHere(edgeOfTable(element, forward));
            // Too much to go unseen: the next key takes what is selected.
            mSelection.setControl({Ref<Element>(&element)});
            return true;
        }
        // An empty item is a place for what comes from outside of its list.
        if (!forward && element.is(names::li) && isBlankBlock(element) && !element.parentElement()->contains(*here)) {
            const Position start = Position::startOf(element);
            return blankHere ? removeHere(mContent.normalised(start)) : removeSpan({start, p});
        }
        const Position beyond = forward ? Position::after(element) : Position::before(element);
        if (isBlankBlock(element)) {
            if (mContent.takesCaretEmpty(element) || !mContent.isEmpty(element)) return takeAway(element, p);
            item = pastBlanks(beyond); // nobody sees it
            continue;
        }
        item = pastBlanks(item.far);
    }
    // `<br>` in no block of its own, in front of one: an empty line, which goes like an empty block.
    if (!forward && mContent.isFinalBreak(item) && mContent.pastBlanksBefore(item.far).isLineEdge() && !blankHere &&
        mContent.container(item.far)->isAncestorOf(*here))
        return takeAway(*item.element(), p);
    Position other = mContent.normalised(item.near);
    if (!forward && mContent.isFinalBreak(item)) other = item.far;
    if (blankHere) return removeHere(mContent.normalised(other));
    // `a<br><br>|` before another block: the last break only kept the empty line that the other's text now stands in.
    const Item back = mContent.pastBlanksBefore(p);
    const Position from = forward && back.isBreak() ? back.far : p;
    return removeSpan(forward ? Span{from, other} : Span{other, p});
}

} // namespace editing
