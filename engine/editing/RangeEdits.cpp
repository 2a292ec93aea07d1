// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/RangeEdits.h"

#include "base/Error.h"
#include "engine/dom/Assignment.h"
#include "engine/dom/Names.h"
#include "engine/editing/Editor.h"
#include "engine/html/Serializer.h"

namespace editing {

using namespace dom;
using namespace ranges;
using base::Error;

namespace {

const Element *cellOf(const Element *at)
{
    while (at && !isCell(*at))
        at = at->parentElement();
    return at;
}

/// A block stands beside it, never in it, whatever a parser lets pass.
bool isOneParagraph(const Element &e)
{
    return e.is(names::p) || e.is(names::pre) || e.is(names::h1) || e.is(names::h2) || e.is(names::h3) ||
           e.is(names::h4) || e.is(names::h5) || e.is(names::h6);
}

bool isItem(const Node &node)
{
    const Element *e = node.asElement();
    return e && (e->is(names::li) || e->is(names::dt) || e->is(names::dd));
}

/// Only they can take the place of one.
bool bringsItems(const DocumentFragment &content)
{
    for (const Node *child = content.firstChild(); child; child = child->nextSibling())
        if (child->isElement() && !isItem(*child)) return false;
    return true;
}

} // namespace

Element &RangeEdits::hostOf(const TextRange &range)
{
    Span span = contentOf(range);
    if (!span.start) span = range.span();
    Element *host = editingHost(*span.start.node);
    if (!host || editingHost(*span.end.node) != host)
        throw Error(base::errors::notPossible, QStringLiteral("The range doesn't lie in a part that can be edited."));
    return *host;
}

RangeEdits::RangeEdits(Editor &editor, const TextRange &range) : RangeEdits(editor, hostOf(range))
{
}

RangeEdits::RangeEdits(Editor &editor, Element &host)
    : mEditor(editor), mTracker(editor.tracker()), mContent(editor.rendering(), host),
      mEdits(mContent, mTracker, editor.selection().keeper()), mRemoval(mContent, mTracker, editor.selection().keeper())
{
}

bool RangeEdits::holdsTwoCells(TextRange &range) const
{
    const uint32_t end = range.endCount();
    uint32_t base = 0;
    const Element *seen = nullptr;
    uint32_t at = range.startCount();
    for (const TextRun *run = range.index().runAt(at, &base); run && at < end; run = run->next) {
        const bool boundaryOnly = run->length > 0 && at == base + run->length;
        if (!boundaryOnly) {
            if (const Element *cell = cellOf(range.index().blockOf(*run))) {
                if (seen && seen != cell) return true;
                seen = cell;
            }
        }
        base += run->length + 1;
        at = base;
    }
    return false;
}

bool RangeEdits::selectionStandsIn(const TextRange &range) const
{
    SelectionObject &selection = mEditor.selection();
    if (selection.type() != SelectionObject::Type::Text) return false;
    const Span span = selection.span(), mine = range.span();
    TextIndex &index = range.index();
    return index.countBefore(span.start) >= index.countBefore(mine.start) &&
           index.countBefore(span.end) <= index.countBefore(mine.end);
}

Span RangeEdits::contentOf(const TextRange &range)
{
    TextIndex &index = range.index();
    const uint32_t start = range.startCount(), end = range.endCount();
    if (start >= end) return {};
    uint32_t firstBase = 0, lastBase = 0;
    const TextRun *first = index.runAt(start, &firstBase), *last = index.runAt(end - 1, &lastBase);
    return {TextIndex::placeIn(*first, start - firstBase, TextIndex::Side::Following),
            TextIndex::placeIn(*last, std::min(end - lastBase, last->content()), TextIndex::Side::Preceding)};
}

RangeEdits::Taken RangeEdits::takeOut(TextRange &range)
{
    TextIndex &index = range.index();
    const uint32_t start = range.startCount(), end = range.endCount();
    const Position given = range.span().start;
    Taken taken{mContent.normalised(mContent.contains(given) ? given : Position::endOf(const_cast<Element &>(mContent.limit()))), {}};
    if (start >= end) return taken;
    uint32_t lastBase = 0;
    const TextRun *last = index.runAt(end - 1, &lastBase);
    if (last->endsWithBoundary() && end == lastBase + last->length + 1) {
        Element *block = range.parentElement();
        if (block && block != index.limit() && index.countBefore(Position::startOf(*block)) >= start)
            taken.whole = Ref<Element>(block);
    }
    const Span span = contentOf(range);
    if (span.isEmpty()) {
        taken.place = span.start;
        return taken;
    }
    taken.place = mRemoval.remove(span);
    return taken;
}

Position RangeEdits::insertText(const Position &p, const QString &text)
{
    if (Text *node = p.text()) {
        mTracker.replaceText(*node, p.offset, 0, text);
        return {node, p.offset + uint32_t(text.size())};
    }
    if (Node *before = p.childBefore(); before && before->isText()) {
        auto &node = static_cast<Text &>(*before);
        const uint32_t at = node.length();
        mTracker.replaceText(node, at, 0, text);
        return {&node, at + uint32_t(text.size())};
    }
    const Ref<Text> node = mEditor.document().createTextNode(text);
    mEdits.insert(p, *node);
    return Position::endOf(*node);
}

void RangeEdits::settle(TextRange &range, const Position &p, bool withSelection)
{
    range.setSpan({p, p});
    if (withSelection) mEditor.selection().setCaret(p);
}

namespace {

/// Out of what the place stands at the start (or the end) of, below `top`.
Position liftedOut(Position p, const Element &top, bool start)
{
    while (p.node != &top && p.offset == (start ? 0 : Position::lengthOf(*p.node)))
        p = start ? Position::before(*p.node) : Position::after(*p.node);
    return p;
}

} // namespace

bool RangeEdits::isThere(const TextRange &range, const QString &text) const
{
    const Span content = contentOf(range);
    const Text *node = content.start.text();
    return node && content.end.node == content.start.node &&
           QStringView(node->data()).mid(content.start.offset, content.end.offset - content.start.offset) == text;
}

bool RangeEdits::isThere(const TextRange &range, const DocumentFragment &html) const
{
    const Span content = contentOf(range);
    if (!content.start || content.isEmpty()) return false;
    if (html.firstChild() && html.firstChild() == html.lastChild() && html.firstChild()->isText())
        return isThere(range, html.firstChild()->nodeValue());
    Element *top = content.start.element();
    while (!top->contains(*content.end.node))
        top = top->parentElement();
    // Of what it enters or leaves it must hold all: else the rest would be cut off.
    const Position start = liftedOut(content.start, *top, true), end = liftedOut(content.end, *top, false);
    for (const Position &p : {start, end})
        if (p.node != top && p.node->parentNode() != top) return false;
    const QString text = html::Serializer::inner(html);
    const bool all = start == Position::startOf(*top) && end == Position::endOf(*top);
    return text == range.htmlText() || (all && top != range.index().limit() && text == html::Serializer::outer(*top));
}

Position RangeEdits::insertLines(Position p, const QString &text)
{
    Element *container = mContent.container(p);
    if (container && container->isHeldOpen()) mTracker.setHeldOpen(*container, false);
    const bool preserved = p.text() && mContent.rendering().preservesSpace(*p.text());
    const QStringList lines = preserved ? QStringList{text} : text.split(u'\n');
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (i > 0) {
            const Ref<Element> lineBreak = mEditor.document().createElement(QStringLiteral("br"));
            const Position at = mEdits.splitText(p);
            mEdits.insert(at, *lineBreak);
            p = Position::after(*lineBreak);
        }
        if (!lines[i].isEmpty()) p = insertText(p, lines[i]);
    }
    return p;
}

void RangeEdits::write(TextRange &range, const QString &given)
{
    QString text = given;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    if (range.isEmpty() && text.isEmpty()) return;
    const bool withSelection = selectionStandsIn(range);
    if (isThere(range, text)) return settle(range, contentOf(range).end, withSelection);
    RangeKeeper &keeper = mEditor.selection().keeper();
    Assignment assignment(mEditor.document());
    Position p;
    const Span content = contentOf(range);
    if (text.isEmpty()) {
        p = takeOut(range).place;
        LivePosition live(keeper, p);
        mEdits.showLine(p);
        p = live;
    } else if (content.start.inText() && !content.isEmpty()) {
        // In front of what goes, so that it has the style of what it replaces.
        const LivePosition end(keeper, content.end);
        p = insertLines(content.start, text);
        const LivePosition behind(keeper, p);
        if (!(p == end.position())) mRemoval.remove({p, end});
        p = behind;
    } else {
        p = insertLines(takeOut(range).place, text);
    }
    settle(range, p, withSelection);
    assignment.done();
}

Position RangeEdits::insertInline(const Position &p, DocumentFragment &content)
{
    Element *container = mContent.container(p);
    if (container && container->isHeldOpen()) mTracker.setHeldOpen(*container, false);
    if (container && isTableStructure(*container))
        throw Error(base::errors::notPossible, QStringLiteral("Text can't stand between cells."));
    Position at = mEdits.splitText(p);
    Node *last = nullptr;
    while (Ref<Node> child = Ref<Node>(content.firstChild())) {
        content.removeChild(*child);
        mEdits.insert(at, *child);
        at = Position::after(*child);
        last = child.get();
    }
    if (!last) return at;
    if (last->isText()) return Position::endOf(*last);
    // Behind the last thing that was written, inside the elements that it brought.
    Position inside = Position::after(*last);
    const auto takesCaret = [this](const Element &element) {
        return !isObject(element) && !isBreak(element) && !mContent.rendering().isWidget(element);
    };
    for (Element *element = last->asElement(); element && takesCaret(*element);) {
        inside = Position::endOf(*element);
        Node *child = element->lastChild();
        if (!child) break;
        if (child->isText()) return Position::endOf(*child);
        element = child->asElement();
    }
    return inside;
}

bool RangeEdits::bringsBlocks(const DocumentFragment &content) const
{
    for (const Node *child = content.firstChild(); child; child = child->nextSibling())
        if (mContent.delimitsLines(*child)) return true;
    return false;
}

bool RangeEdits::takesBlocks(const Position &p, const DocumentFragment &content) const
{
    return parentFor(p, content) != nullptr;
}

Element *RangeEdits::parentFor(const Position &p, const DocumentFragment &content) const
{
    const MarkupServices *markup = mEditor.document().markup;
    for (Element *at = mContent.container(p); at; at = at->parentElement()) {
        if (!isTableStructure(*at) && !isOneParagraph(*at) && markup->canStandIn(*at, content)) return at;
        if (isCell(*at) || at == &mContent.limit() || isTableStructure(*at)) break;
    }
    return nullptr;
}

Position RangeEdits::insertBlocks(const Taken &taken, DocumentFragment &content)
{
    RangeKeeper &keeper = mEditor.selection().keeper();
    LivePosition place(keeper, taken.place);
    Ref<Element> emptied;
    Element *whole = taken.whole.get();
    if (whole && whole->isConnected() && !isCell(*whole) && !mEdits.isFixed(*whole) && mContent.isEmpty(*whole) &&
        (!isItem(*whole) || bringsItems(content)))
        emptied = Ref<Element>(whole);
    if (emptied) place = Position::before(*emptied);
    Element *parent = nullptr;
    if (emptied) {
        Element *around = emptied->parentElement();
        const MarkupServices *markup = mEditor.document().markup;
        if (!markup->canStandIn(*around, content))
            throw Error(base::errors::notPossible, QStringLiteral("The HTML can't stand here."));
        parent = around;
    } else {
        parent = parentFor(place, content);
        if (!parent) throw Error(base::errors::notPossible, QStringLiteral("The HTML can't stand here."));
    }
    // An emptied or empty block that can't hold the new ones gives way to them.
    Element *container = emptied ? nullptr : mContent.container(place);
    if (container && container != parent && (container->isHeldOpen() || !container->hasChildNodes()) &&
        !mEdits.isFixed(*container) && mContent.isEmpty(*container)) {
        emptied = Ref<Element>(container);
        place = Position::before(*container);
    }
    if (parent->isHeldOpen()) mTracker.setHeldOpen(*parent, false);
    Position at = place;
    if (at.node != parent) {
        // At its ends a block isn't split, so that no empty half is left.
        const bool atStart = mContent.pastBlanksBefore(at).isEdge();
        if (atStart) {
            Node *branch = at.node.get();
            while (branch->parentNode() != parent)
                branch = branch->parentNode();
            at = Position::before(*branch);
        } else {
            at = mEdits.splitUpTo(at, *parent);
        }
    }
    Node *last = nullptr;
    while (Ref<Node> child = Ref<Node>(content.firstChild())) {
        content.removeChild(*child);
        mEdits.insert(at, *child);
        at = Position::after(*child);
        last = child.get();
    }
    if (emptied && emptied->isConnected()) {
        LivePosition live(keeper, at);
        mTracker.remove(*emptied);
        at = live;
    }
    if (!last) return at;
    if (Element *element = last->asElement(); element && !isObject(*element) && !element->is(names::table))
        return mContent.normalised(Position::endOf(*element));
    return last->isText() ? Position::endOf(*last) : at;
}

void RangeEdits::paste(TextRange &range, const QString &html)
{
    if (html.isEmpty() && range.isEmpty()) return;
    if (!html.isEmpty() && holdsTwoCells(range))
        throw Error(base::errors::notPossible, QStringLiteral("The range holds something of two cells."));
    const bool withSelection = selectionStandsIn(range);
    Document &document = mEditor.document();
    Ref<DocumentFragment> content;
    if (!html.isEmpty()) content = document.markup->parseFragment(document, *document.body(), html);
    if (content && isThere(range, *content)) return settle(range, contentOf(range).end, withSelection);
    const bool blocks = content && bringsBlocks(*content);
    Assignment assignment(mEditor.document());
    Taken taken = takeOut(range);
    Position p = taken.place;
    if (!content || !content->hasChildNodes()) {
        LivePosition live(mEditor.selection().keeper(), p);
        mEdits.showLine(p);
        p = live;
    } else if (blocks) {
        p = insertBlocks(taken, *content);
    } else {
        p = insertInline(p, *content);
    }
    settle(range, p, withSelection);
    assignment.done();
}

} // namespace editing
