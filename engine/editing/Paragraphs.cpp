// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/editing/Operation.h"

#include <QSet>

namespace editing {

using namespace dom;
using namespace ranges;

namespace {

bool isHeading(const Element &e)
{
    return e.is(names::h1) || e.is(names::h2) || e.is(names::h3) || e.is(names::h4) || e.is(names::h5) ||
           e.is(names::h6);
}

bool splits(const Element &e)
{
    return e.is(names::p) || isHeading(e) || e.is(names::li) || e.is(names::dt) || e.is(names::dd);
}

/// One line of their own, in which no paragraphs are wanted.
bool isOneLiner(const Element &e)
{
    return e.is(names::caption) || e.is(names::legend) || e.is(names::summary) || e.is(names::address);
}

bool isItem(const Element &e)
{
    return e.is(names::li) || e.is(names::dt) || e.is(names::dd);
}

/// Whether it is all that an item holds, but for blanks.
bool fillsItem(const Element &e)
{
    const Element *item = e.parentElement();
    if (!item || !isItem(*item)) return false;
    for (const Node *child = item->firstChild(); child; child = child->nextSibling())
        if (child != &e && !(child->isText() && child->nodeValue().trimmed().isEmpty())) return false;
    return true;
}

} // namespace

bool Operation::isBlankBlock(const Element &block) const
{
    if (mContent.isEmpty(block)) return true;
    const Item first = mContent.pastBlanksAfter(Position::startOf(const_cast<Element &>(block)));
    if (!mContent.isFinalBreak(first)) return false;
    const Item end = mContent.pastBlanksAfter(first.far);
    return end.kind == Item::Kind::Edge && !end.start && end.element() == &block;
}

/// In preformatted text. A line feed at the very end adds no line, so it takes two there.
bool Operation::lineFeed(const Position &p)
{
    const bool last = mContent.after(p).isEdge();
    LivePosition at(mSelection.keeper(), p);
    if (!type(last ? QStringLiteral("\n\n") : QStringLiteral("\n"), {p, p})) return false;
    if (last) {
        const Position caret = mSelection.focus();
        mSelection.setCaret({caret.node.get(), caret.offset - 1});
    }
    return true;
}

bool Operation::lineBreakAt(const Position &p)
{
    if (preserves(p)) return lineFeed(p);
    const Position room = roomForText(p);
    if (!room) return false;
    mBlanks.note(room, room);
    const bool last = mContent.pastBlanksAfter(room).isEdge();
    LivePosition place(mSelection.keeper(), placeForText({room, room}));
    Element *block = mContent.container(place);
    Ref<Element> line = block->document().createElement(QStringLiteral("br"));
    mEdits.insert(mEdits.splitText(place), *line);
    if (last) {
        Ref<Element> shown = block->document().createElement(QStringLiteral("br"));
        mEdits.insert(Position::after(*line), *shown);
    }
    mTracker.setHeldOpen(*block, false);
    mBlanks.mend();
    mSelection.setCaret(mContent.normalised(Position::after(*line)));
    return true;
}

bool Operation::breakLine(const Span &span)
{
    Position p = span.start;
    Style style;
    if (!span.isEmpty()) {
        mBlanks.note(span.start, span.end);
        style = styleBehind(span.start);
        p = mContent.normalised(mRemoval.remove(span));
    }
    if (!lineBreakAt(p)) return false;
    if (!style.empty()) rememberStyle(mSelection.focus(), std::move(style));
    return true;
}

/// Whether `p` stands within an inline part that is edited by itself: two of it wouldn't be what the page means.
bool Operation::isWithinPart(const Position &p) const
{
    Element *part = mContent.fieldAround(p.node.get());
    while (part && !part->hasAttribute(names::contenteditable))
        part = mContent.fieldAround(part->parentNode());
    if (!part) return false;
    const Item left = mContent.before(p), right = mContent.after(p);
    const auto isInside = [part](const Item &item) { return item.node && !item.isEdge() && part->contains(*item.node); };
    return isInside(left) && isInside(right);
}

/// The block around `p` that Enter splits: made of the line where text stands in none of its own; null where paragraphs
/// can't be.
Element *Operation::blockToSplit(const Position &p)
{
    Element *around = mContent.container(p);
    const bool isLimit = around == &mContent.limit();
    if (isWithinPart(p)) return nullptr;
    if (isOneLiner(*around) || (isLimit && !mContent.isBlock(*around))) return nullptr;
    if (!isLimit && (splits(*around) || (around->is(names::div) && fillsItem(*around)))) return around;
    if (isList(*around)) return &mEdits.wrapRun(*around, p, "li");
    if (!TreeEdits::canHoldParagraph(*around)) return nullptr;
    return &mEdits.wrapRun(*around, p, "p");
}

bool Operation::breakParagraph(const Span &span)
{
    RangeKeeper &keeper = mSelection.keeper();
    LivePosition at(keeper, span.start);
    if (!span.isEmpty()) {
        mBlanks.note(span.start, span.end);
        Style style = styleBehind(span.start);
        at = mContent.normalised(mRemoval.remove(span));
        rememberStyle(at, std::move(style), mTracker.recordCount());
    }
    if (preserves(at)) return lineFeed(at);
    Element *around = mContent.container(at);
    if (isTableStructure(*around) || around->is(names::dl)) return false;
    Element *item = around;
    while (item && !item->is(names::li) && item != &mContent.limit() && !isCell(*item))
        item = item->parentElement();
    if (item && mEdits.leavesList(*item) && isBlankBlock(*item)) {
        const Position start = mEdits.leaveList(*item);
        finish(mContent.normalised(start));
        return true;
    }
    Element *block = blockToSplit(at);
    if (!block) return lineBreakAt(at);
    // In white space that doesn't show, `at` may stand beside what was wrapped.
    if (!block->contains(*at.position().node))
        at = at.position() < Position::startOf(*block) ? Position::startOf(*block) : Position::endOf(*block);
    return split(*block, at);
}

void Operation::closeHalf(Element &half, const Position &line)
{
    if (mContent.isEmpty(half))
        mEdits.holdOpen(half);
    else
        mEdits.showLine(line);
}

bool Operation::split(Element &block, const Position &given)
{
    RangeKeeper &keeper = mSelection.keeper();
    LivePosition p(keeper, given);
    const bool afterBreak = mContent.pastBlanksBefore(p).isBreak();
    const Item next = mContent.pastBlanksAfter(p);
    const bool lineHeld = mContent.isFinalBreak(next);
    if (lineHeld) p = next.far; // the line's own break stays with it
    mBlanks.note(given, p);
    const Item behind = mContent.pastBlanksAfter(p);
    const bool atEnd = behind.kind == Item::Kind::Edge && !behind.start && behind.element() == &block;
    mTracker.setHeldOpen(block, false);

    const bool afterHeading = atEnd && isHeading(block);
    Style style;
    bool comes = false;
    if (!afterHeading) {
        style = comingStyle(given);
        comes = !style.empty();
        if (!comes) style = styleAround(given, block);
        std::erase_if(style, [this](const Ref<Element> &element) { return !carriesOn(*element); });
    }

    Ref<Element> second(&mEdits.splitBlock(block, p, afterHeading ? "p" : nullptr));
    Element *item = block.parentElement();
    if (isItem(*item) && item != &mContent.limit() && item->firstElementChild() == &block) {
        // `<li><p>a|b</p></li>`: a paragraph that is an item's only one stands for the item.
        Node *more = second->nextElementSibling();
        if (!more) mEdits.splitBlock(*item, Position::before(*second));
    }
    if (mContent.isEmpty(block))
        mEdits.holdOpen(block);
    else if (afterBreak && !lineHeld)
        mEdits.showLine(mContent.pastBlanksBefore(Position::endOf(block)).near);
    closeHalf(*second, Position::startOf(*second));
    const bool takesStyle = comes || second->isHeldOpen();
    mBlanks.mend();
    mSelection.setCaret(mContent.normalised(Position::startOf(*second)));
    if (takesStyle) rememberStyle(mSelection.focus(), std::move(style));
    return true;
}

} // namespace editing
