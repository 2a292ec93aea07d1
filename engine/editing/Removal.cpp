// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/Removal.h"

#include "engine/dom/Names.h"

namespace editing {

using namespace dom;
using namespace ranges;

namespace {

/// What nothing is joined out of: a cell, the table around a place between cells, a frame.
const Element *cellAround(const Content &content, const Element *element)
{
    while (element && !isCell(*element) && !isTableStructure(*element) && !content.rendering().isFrame(*element))
        element = element->parentElement();
    return element;
}

Node *branch(const Node &top, Node *below)
{
    while (below && below->parentNode() != &top)
        below = below->parentNode();
    return below;
}

} // namespace

Span Removal::fitted(const Span &span) const
{
    Position start = mContent.normalised(span.start, Content::Between::RangeStart);
    const Position end = mContent.normalised(span.end, Content::Between::RangeEnd);
    if (end <= start) return {start, start};
    // `a<br>^</p><p>|b`: the break only ends the line; beside what is joined it would add one.
    if (const Item before = mContent.pastBlanksBefore(start); before.isBreak() && mContent.isFinalBreak(before))
        if (mContent.container(start) != mContent.container(end)) start = before.far;
    return withWholeWidgets({start, end});
}

/// A widget all of which is taken goes with its frame, wherever in it the ends have come to stand.
Span Removal::withWholeWidgets(const Span &span) const
{
    using Between = Content::Between;
    Span whole = span;
    if (Element *widget = mContent.widgetAround(span.start.node.get())) {
        const bool fromBegin = span.start <= mContent.normalised(Position::startOf(*widget), Between::RangeStart);
        const bool toEnd = !widget->contains(*span.end.node) ||
                           mContent.normalised(Position::endOf(*widget), Between::RangeEnd) <= span.end;
        if (fromBegin && toEnd) whole.start = Position::before(*widget);
    }
    if (Element *widget = mContent.widgetAround(span.end.node.get())) {
        const bool toEnd = mContent.normalised(Position::endOf(*widget), Between::RangeEnd) <= span.end;
        const bool fromBegin = !widget->contains(*span.start.node) ||
                               span.start <= mContent.normalised(Position::startOf(*widget), Between::RangeStart);
        if (fromBegin && toEnd) whole.end = Position::after(*widget);
    }
    return whole;
}

bool Removal::isWithinBlock(const Span &span) const
{
    if (mContent.container(span.start) != mContent.container(span.end)) return false;
    if (span.start.node == span.end.node && span.start.inText()) return true;
    // Only the way between the two, which a person has selected, is walked.
    const Element &top = *mContent.container(span.start);
    Node *from = span.start.node == &top ? span.start.childAfter() : branch(top, span.start.node.get());
    const Node *to = span.end.node == &top ? span.end.childAfter() : branch(top, span.end.node.get());
    for (; from && from != to; from = from->nextSibling())
        if (mContent.delimitsLines(*from)) return false;
    return true;
}

bool Removal::rowsAreMeant(const Span &span) const
{
    for (const Position *end : {&span.start, &span.end})
        if (const Element *at = end->element(); end->node->isText() || !at || !isTableStructure(*at)) return false;
    return true;
}

Removal::Victims Removal::collect(const Span &span) const
{
    Victims victims;
    if (span.start.inText() && span.start.node == span.end.node) return victims;
    const bool rows = rowsAreMeant(span);
    Node *node = span.start.inText() ? span.start.node->nextSkippingChildren() : span.start.childAfter();
    if (!node) node = span.start.node->nextSkippingChildren();
    Node *stop = span.end.inText() ? span.end.node.get() : span.end.childAfter();
    if (!stop) stop = span.end.node->nextSkippingChildren();
    const Element *first = mContent.container(span.start), *last = mContent.container(span.end);
    while (node && node != stop) {
        if (node->contains(*span.end.node)) {
            node = node->next();
            continue;
        }
        const Element *element = node->asElement();
        const bool isPart = element && (isCell(*element) || isTableStructure(*element)) && !element->is(names::table);
        if (isPart && !element->isContentEditable()) { // what is taken by parts leaves one that only can be read
            node = node->nextSkippingChildren();
            continue;
        }
        if (element && isCell(*element)) {
            victims.cells.emplace_back(node->asElement());
            node = node->next();
            continue;
        }
        if (element && isTableStructure(*element) && !element->is(names::table) && !(rows && element->is(names::tr))) {
            node = node->next();
            continue;
        }
        // What nobody sees between blocks isn't what was meant.
        const bool unseen = !node->isText() && !mContent.rendering().isDisplayed(*node);
        if (!unseen || node->parentNode() == first || node->parentNode() == last) victims.nodes.emplace_back(node);
        node = node->nextSkippingChildren();
    }
    return victims;
}

/// A place in which no line stood: nothing has to show there.
bool Removal::isBetweenBlocks(const Position &p) const
{
    return mContent.pastBlanksBefore(p).isEdge() && mContent.pastBlanksAfter(p).isEdge() &&
           !mContent.isEmpty(*mContent.container(p));
}

Position Removal::remove(const Span &span)
{
    if (span.isEmpty()) return span.start;
    LivePosition start(mKeeper, span.start), end(mKeeper, span.end);
    Ref<Element> first(mContent.container(span.start)), last(mContent.container(span.end));
    const Element *firstCell = cellAround(mContent, first.get()),
                  *lastCell = cellAround(mContent, last.get());
    Ref<Node> startNode(span.start.node), endNode(span.end.node);
    // In front of an emptied place nothing shows: then the last block is as good as the first.
    // An item is no such shell: its mark shows.
    const bool startsOutside = mContent.pastBlanksBefore(span.start).isEdge() && first->isAncestorOf(*last) &&
                               !first->is(names::li);

    const Victims victims = collect(span);
    Text *startText = span.start.text(), *endText = span.end.text();
    if (startText && startText == endText) {
        mTracker.replaceText(*startText, span.start.offset, span.end.offset - span.start.offset, {});
    } else {
        if (startText) mTracker.replaceText(*startText, span.start.offset, startText->length() - span.start.offset, {});
        if (endText) mTracker.replaceText(*endText, 0, span.end.offset, {});
    }
    std::vector<Ref<Node>> parents;
    for (const Ref<Node> &victim : victims.nodes) {
        if (!victim->isConnected()) continue;
        Ref<Node> parent(victim->parentNode());
        mTracker.remove(*victim);
        if (parents.empty() || !(parents.back() == parent)) parents.push_back(parent);
    }
    for (const Ref<Element> &cell : victims.cells)
        if (cell->isConnected() && mContent.isEmpty(*cell)) mEdits.holdOpen(*cell);

    if (!(first == last) && firstCell == lastCell && !startsOutside && first->isConnected() && last->isConnected())
        join(start, end, *first, *last);
    else if (!(first == last) && lastCell != firstCell && last->isConnected() && !isBetweenBlocks(end))
        mEdits.showLine(end);
    for (const Ref<Node> &parent : parents)
        mEdits.tidyUpwards(parent.get());
    mEdits.tidyUpwards(endNode.get());
    mEdits.tidyUpwards(startNode.get());
    if (startsOutside && last->isConnected() && last->contains(*end.position().node)) return end;
    return start;
}

void Removal::join(const LivePosition &start, const LivePosition &end, Element &first, Element &last)
{
    Ref<Element> keepLast(&last);
    Position from = end.position();
    Node *node = from.node == &last ? from.childAfter() : branch(last, from.node.get());
    if (first.isAncestorOf(last)) {
        // `<div>a|<p>b</p>c</div>`: were b put beside a, c would come to its line.
        Node *outside = branch(first, &last);
        const Item behind = mContent.pastBlanksAfter(Position::after(*outside));
        if (!behind.isEdge()) {
            joinOuterIntoInner(start, first, last);
            return;
        }
    }
    Position to = start.position();
    if (to.node != &first)
        if (Node *inside = branch(first, to.node.get())) to = Position::after(*inside);
    Node *before = to.childAfter();
    Node *stop = node;
    while (stop && !mContent.delimitsLines(*stop))
        stop = stop->nextSibling();
    if (node && before != node) mEdits.moveSiblings(node, stop, first, before);
    if (first.isHeldOpen() && first.hasChildNodes()) mTracker.setHeldOpen(first, false);
    // An item's further blocks come along to the item that it was joined with.
    const Element *list = last.parentElement();
    Element *item = &first;
    while (item && item->parentElement() != list)
        item = item->parentElement();
    if (last.is(names::li) && item && item != &last && item->is(names::li) && last.hasChildNodes()) {
        mTracker.setHeldOpen(*item, false);
        mEdits.moveSiblings(last.firstChild(), nullptr, *item, nullptr);
    }
    mEdits.removeEmptied(&last, first);
}

void Removal::joinOuterIntoInner(const LivePosition &start, Element &first, Element &last)
{
    const Position p = start.position();
    const TreeEdits::Run run = mEdits.runAround(first, p);
    if (!run.first) return;
    const Position cut = mEdits.splitUpTo(p, first);
    mEdits.moveSiblings(run.first, cut.childAfter(), last, last.firstChild());
    mTracker.setHeldOpen(last, false);
}

} // namespace editing
