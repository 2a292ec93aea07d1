// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
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
    if (list || ((around->is(names::body) || !empty) && TreeEdits::canHoldParagraph(*around))) {
        const bool inField = mContent.emptyField(p) != nullptr;
        Element &made = mEdits.wrapRun(*around, p, list ? "li" : "p");
        return inField ? p : Position::startOf(made);
    }
    mTracker.setHeldOpen(*around, false);
    return p;
}

Position Operation::placeForText(const Span &span) const
{
    // Text never comes into a widget from beside it.
    const Element *const own = mContent.widgetAround(span.start.node.get());
    const auto stands = [&](const Item &item) { return item.isCharacter() && mContent.widgetAround(item.node) == own; };
    if (!span.isEmpty()) {
        const Item replaced = mContent.after(span.start);
        if (stands(replaced) && !mContent.isHidden(replaced)) return replaced.near;
    }
    if (mContent.emptyField(span.start)) return span.start;
    Item previous = mContent.before(span.start), next = mContent.after(span.start);
    if (!stands(previous)) previous = {};
    if (!stands(next)) next = {};
    // The caret of a field's first letter stands in front of that one, and text comes there too.
    if (next.isCharacter() && next.near == span.start) return next.near;
    if (previous.isCharacter()) return mContent.besideText(previous, true, span.start);
    if (next.isCharacter()) return mContent.besideText(next, false, span.start);
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
    if (typed.isCharacter() && typed.unit() == noBreakSpace)
        mEditor.mTypedBlank = {typed.node->id(), Editor::unsettled};
}

/// Whether the element is a style that further text takes on. A link ends with its line and with its text; what a host
/// marked stays one.
bool Operation::carriesOn(const Element &element) const
{
    return !element.is(names::a) && mContent.rendering().roleOf(element) == Role::None;
}

/// The inline elements around `p` within the block; none where something else is between them.
Operation::Style Operation::styleAround(const Position &p, const Element &block) const
{
    Style style;
    for (Element *at = p.element(); at && at != &block; at = at->parentElement()) {
        if (mContent.isBlock(*at)) return {};
        style.insert(style.begin(), Ref<Element>(at));
    }
    return style;
}

/// What stands around the character behind `p`, which is about to go.
Operation::Style Operation::styleBehind(const Position &p) const
{
    Node *text = p.inText() && p.offset < Position::lengthOf(*p.node) ? p.node.get() : nullptr;
    if (!text) text = mContent.visibleAfter(p).text();
    return text ? styleAround({text, 0}, *mContent.container(p)) : Style();
}

Operation::Style Operation::comingStyle(const Position &p) const
{
    const auto &coming = mEditor.mComingStyle;
    const bool comes = coming.node == p.node && coming.offset == p.offset && coming.records == mTracker.recordCount() &&
                       (coming.emptyLine || coming.moves == mSelection.moves());
    return comes ? coming.elements : Style();
}

/// For what is typed at the caret, until there are other records than so many; else than the one that is under way.
void Operation::rememberStyle(const Position &caret, Style style, uint64_t records)
{
    mEditor.mComingStyle = {};
    if (style.empty()) return;
    mEditor.mComingStyle = {Ref<Node>(caret.node),       caret.offset,    records, mSelection.moves(),
                            mContent.isLineEmpty(caret), std::move(style)};
}

/// A place beside `p` that has the style: in those of its elements that are still there, in copies of the others.
Position Operation::placeInStyle(const Position &p, const Style &style)
{
    const Element &block = *mContent.container(p);
    Position place = p;
    Element *top = nullptr;
    size_t shared = 0;
    const Item left = mContent.before(p), right = mContent.after(p);
    for (const Position &beside : {p, left.isCharacter() ? left.near : p, right.isCharacter() ? right.near : p}) {
        Style around = styleAround(beside, block);
        while (around.size() > style.size() || !std::equal(around.begin(), around.end(), style.begin()))
            around.pop_back();
        if (top && around.size() <= shared) continue;
        place = beside;
        shared = around.size();
        top = around.empty() ? const_cast<Element *>(&block) : around.back().get();
    }
    Style missing;
    std::copy_if(style.begin() + std::ptrdiff_t(shared), style.end(), std::back_inserter(missing),
                 [this](const Ref<Element> &element) { return carriesOn(*element); });
    if (missing.empty() && place.element() == top) return place;
    place = mEdits.splitUpTo(place, *top);
    // Copies: undo may bring this place back while the elements themselves are in use.
    for (const Ref<Element> &element : missing) {
        const Ref<Element> shell = mEdits.cloneShell(*element);
        mEdits.insert(place, *shell);
        place = Position::startOf(*shell);
    }
    return place;
}

bool Operation::type(const QString &given, Span span)
{
    RangeKeeper &keeper = mSelection.keeper();
    const Style style = span.isEmpty() ? comingStyle(span.start) : Style();
    if (span.isEmpty()) span = placeholder(span.start);
    const bool heldByBreak = mContent.isLineEmpty(span.start);
    mBlanks.note(span.start, span.end);
    if (!span.isEmpty() && isBetweenBlocks(span.start)) {
        // What is replaced begins with a block that goes as a whole: its text is no place for the new one.
        const LivePosition left(keeper, mRemoval.remove(span));
        mEdits.showLine(left);
        const Position place = mContent.normalised(left);
        span = {place, place};
    }
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
    const Position place = style.empty() || overSelection ? placeForText(span) : placeInStyle(span.start, style);
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
        mEdits.insert(place, *fresh);
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
