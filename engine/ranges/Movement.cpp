// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Movement.h"

#include "engine/dom/Document.h"
#include "engine/dom/Names.h"

#include <QTextBoundaryFinder>
#include <algorithm>

namespace ranges {

using namespace dom;

namespace {

constexpr int clusterReach = 64; // no cluster that a person writes is longer

uint32_t clusterEnd(const Text &text, uint32_t from)
{
    const QString piece = text.data().mid(from, clusterReach);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, piece);
    const auto next = finder.toNextBoundary();
    return from + uint32_t(next > 0 ? next : 1);
}

uint32_t clusterStart(const Text &text, uint32_t to)
{
    const uint32_t begin = to > uint32_t(clusterReach) ? to - clusterReach : 0;
    const QString piece = text.data().mid(begin, to - begin);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, piece);
    finder.toEnd();
    const auto previous = finder.toPreviousBoundary();
    return begin + uint32_t(previous >= 0 ? previous : 0);
}

} // namespace

Content Movement::contentFor(const Position &p, const Rendering &rendering)
{
    if (const Element *host = editingHost(*p.node)) return Content(rendering, *host);
    Document &document = p.node->document();
    return Content(rendering, document.body() ? *document.body() : *document.documentElement());
}

Position Movement::pastCharacter(const Item &item, bool forward) const
{
    if (mContent.isCollapsible(item)) {
        const Item past = forward ? mContent.pastBlanksAfter(item.near) : mContent.pastBlanksBefore(item.near);
        return past.near;
    }
    Text &text = *item.text();
    return {&text, forward ? clusterEnd(text, item.from) : clusterStart(text, item.to)};
}

Position Movement::nextCharacter(const Position &p) const
{
    return step(p, true);
}

Position Movement::previousCharacter(const Position &p) const
{
    return step(p, false);
}

Position Movement::step(const Position &given, bool forward) const
{
    const Position p = mContent.normalised(given);
    Item item = forward ? mContent.visibleAfter(p) : mContent.visibleBefore(p);
    if (item.isCharacter()) {
        // Hidden blanks beside a visible one belong to its run; those at a line's edge lie between.
        return mContent.normalised(pastCharacter(item, forward));
    }
    if (item.isBreak() && forward && mContent.isFinalBreak(item)) {
        item = mContent.pastBlanksAfter(item.far);
    } else if (item.isBreak() || (item.isObject() && !item.block)) {
        return mContent.normalised(item.far);
    }
    const Position place = crossEdges(item, p, forward);
    return place ? place : p;
}

Position Movement::beforeFinalBreak(const Item &item) const
{
    const Position front = Position::before(*item.node);
    const Item inner = mContent.visibleBefore(front);
    return mContent.normalised(inner.isLineEdge() ? front : inner.near);
}

Position Movement::crossEdges(Item item, const Position &from, bool forward) const
{
    const auto pastBlanks = [&](const Position &p) {
        return forward ? mContent.pastBlanksAfter(p) : mContent.pastBlanksBefore(p);
    };
    // A table, widget or rule that comes next to another, or to the end, leaves a place of its own between.
    const auto besideBlock = [&](const Item &at) {
        return (at.isObject() && at.block) || (at.kind == Item::Kind::Edge && mContent.standsAlone(*at.element())) ||
               at.kind == Item::Kind::End;
    };
    for (bool first = true;; first = false) {
        if (!item.isEdge()) {
            // The end of a block's last line is in front of the BR that ends it.
            if (!forward && mContent.isFinalBreak(item)) return beforeFinalBreak(item);
            return mContent.normalised(item.near);
        }
        if (item.kind == Item::Kind::End) return {};
        Element &element = *item.element();
        const bool leaving = item.kind == Item::Kind::Edge && item.start != forward;
        if (item.kind == Item::Kind::Edge && !leaving && mContent.isEmpty(element)) {
            if (mContent.takesCaretEmpty(element)) return Position::startOf(element);
            item = pastBlanks(forward ? Position::after(element) : Position::before(element));
            continue;
        }
        const bool left = leaving ? mContent.standsAlone(element) : item.isObject();
        const bool enters = item.kind == Item::Kind::Edge && !leaving && mContent.standsAlone(element);
        if (enters && !first && mContent.isCaretPlace(item.near) && !(item.near == from)) return item.near;
        const Position far = item.far;
        item = pastBlanks(far);
        if (left && besideBlock(item) && !isTableStructure(*far.element())) {
            const Position place = mContent.normalised(far);
            if (!(place == from)) return place;
        }
    }
}

Position Movement::outOfField(const Position &from, bool forward) const
{
    Element *field = mContent.fieldAround(from.node.get());
    if (!field || !(forward ? mContent.visibleAfter(from) : mContent.visibleBefore(from)).isLineEdge()) return {};
    while (Element *outer = mContent.fieldAround(field->parentNode()))
        field = outer;
    const Position place = forward ? Position::after(*field) : Position::before(*field);
    return mContent.isCaretPlace(place) ? place : Position();
}

/// From outside of the widget, or from a part of it, to its next part, else out of it.
Position Movement::pastWidget(Element &widget, const Position &from, bool forward) const
{
    Node *part = nullptr;
    for (Node *node = widget.firstChild(); node;) {
        const bool isPart = node->isElement() && mContent.isPart(*node->asElement());
        if (isPart && (forward ? from < Position::startOf(*node) : Position::endOf(*node) < from)) {
            part = node;
            if (forward) break; // else the last one in front of it
        }
        node = isPart ? node->nextSkippingChildren(&widget) : node->next(&widget);
    }
    if (part) return mContent.normalised(forward ? Position::startOf(*part) : Position::endOf(*part));
    const Position beyond = forward ? Position::after(widget) : Position::before(widget);
    const bool isBlock = mContent.isBlock(widget);
    return mContent.normalised(beyond, !isBlock  ? Content::Between::Caret
                                       : forward ? Content::Between::RangeStart
                                                 : Content::Between::RangeEnd);
}

/// Where a move that came to the near edge of the widget stops outside of it; null where it began there.
Position Movement::inFrontOf(Element &widget, const Position &from, const Position &at, bool forward) const
{
    if (mContent.isBlock(widget)) return {};
    const auto isInside = [&widget](const Item &item) { return item.node && widget.contains(*item.node); };
    const Item passed = forward ? mContent.visibleBefore(at) : mContent.visibleAfter(at);
    const Item next = forward ? mContent.visibleAfter(from) : mContent.visibleBefore(from);
    if (isInside(passed) || isInside(next)) return {};
    return mContent.normalised(forward ? Position::before(widget) : Position::after(widget));
}

Position Movement::pastWidgets(const Position &from, const Position &to) const
{
    if (!to || to == from) return to;
    const bool forward = from < to;
    const Element *start = mContent.widgetAround(from.node.get());
    Position at = to;
    for (Element *widget = mContent.widgetAround(at.node.get()); widget && widget != start;
         widget = mContent.widgetAround(at.node.get())) {
        if (const Position front = inFrontOf(*widget, from, at, forward)) return front;
        const Position next = pastWidget(*widget, from, forward);
        if (!mContent.isCaretPlace(next) || (forward ? !(at < next) : !(next < at))) return from;
        at = next;
    }
    return at;
}

Movement::Stretch Movement::stretch(const Position &from, bool forward, int units) const
{
    Stretch result;
    std::vector<std::pair<QChar, Position>> found; // each with its far side
    Position p = from;
    Position near = from;
    while (int(found.size()) < units) {
        const Item item = forward ? mContent.visibleAfter(p) : mContent.visibleBefore(p);
        if (item.isObject() && !item.block) {
            found.emplace_back(QChar::ObjectReplacementCharacter, item.far);
            p = item.far;
            continue;
        }
        if (!item.isCharacter()) break;
        const QString &data = item.text()->data();
        if (mContent.isCollapsible(item)) {
            p = pastCharacter(item, forward);
            found.emplace_back(u' ', p);
            continue;
        }
        p = item.far;
        for (uint32_t i = item.from; i < item.to; ++i) {
            const uint32_t unit = forward ? i : item.to - 1 - (i - item.from);
            found.emplace_back(data[unit], p);
        }
    }
    if (!forward) std::reverse(found.begin(), found.end());
    for (const auto &[c, place] : found)
        result.text.append(c);
    if (forward) result.places.push_back(near);
    for (const auto &[c, place] : found)
        result.places.push_back(place);
    if (!forward) result.places.push_back(near);
    return result;
}

namespace {
constexpr int wordReach = 128; // doubled until the word ends inside
constexpr int longestWord = 1 << 16;
bool isSpace(QChar c)
{
    return c.isSpace() || c == QChar(noBreakSpace);
}
} // namespace

Position Movement::nextWord(const Position &given) const
{
    const Position p = mContent.normalised(given);
    for (int reach = wordReach;; reach *= 2) {
        const Stretch ahead = stretch(p, true, reach);
        if (ahead.text.isEmpty()) return step(p, true);
        QTextBoundaryFinder finder(QTextBoundaryFinder::Word, ahead.text);
        auto at = finder.toNextBoundary();
        while (at > 0 && at < ahead.text.size() && isSpace(ahead.text[at]))
            at = finder.toNextBoundary();
        if (at < 0) at = ahead.text.size();
        if (at >= ahead.text.size() && ahead.text.size() >= reach && reach < longestWord) continue;
        return mContent.normalised(ahead.places[size_t(at)]);
    }
}

Position Movement::previousWord(const Position &given) const
{
    const Position p = mContent.normalised(given);
    for (int reach = wordReach;; reach *= 2) {
        const Stretch behind = stretch(p, false, reach);
        if (behind.text.isEmpty()) return step(p, false);
        QTextBoundaryFinder finder(QTextBoundaryFinder::Word, behind.text);
        finder.toEnd();
        auto at = finder.toPreviousBoundary();
        while (at > 0 && isSpace(behind.text[at]))
            at = finder.toPreviousBoundary();
        if (at < 0) at = 0;
        if (at == 0 && behind.text.size() >= reach && reach < longestWord) continue;
        return mContent.normalised(behind.places[size_t(at)]);
    }
}

Span Movement::wordAt(const Position &given) const
{
    const Position p = mContent.normalised(given);
    for (int reach = wordReach;; reach *= 2) {
        const Stretch behind = stretch(p, false, reach), ahead = stretch(p, true, reach);
        const QString text = behind.text + ahead.text;
        if (text.isEmpty()) return {p, p};
        const auto here = behind.text.size();
        QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
        finder.setPosition(here);
        const bool blankAhead = ahead.text.isEmpty() || isSpace(ahead.text[0]);
        const bool wordBehind = here > 0 && !isSpace(text[here - 1]);
        auto start = here, end = here;
        if (blankAhead && wordBehind) { // the caret stands at a word's end: that word
            start = std::max<qsizetype>(finder.toPreviousBoundary(), 0);
        } else {
            if (!finder.isAtBoundary()) start = std::max<qsizetype>(finder.toPreviousBoundary(), 0);
            finder.setPosition(here);
            end = finder.toNextBoundary();
            if (end < 0) end = text.size();
        }
        const bool cut =
            (start == 0 && behind.text.size() >= reach) || (end == text.size() && ahead.text.size() >= reach);
        if (cut && reach < longestWord) continue;
        const auto place = [&](qsizetype at) {
            return at <= here ? behind.places[size_t(at)] : ahead.places[size_t(at - here)];
        };
        return {mContent.normalised(place(start)), mContent.normalised(place(end))};
    }
}

Position Movement::startOfBlock(const Position &given) const
{
    Position p = mContent.normalised(given);
    for (;;) {
        const Item item = mContent.before(p);
        if (item.isEdge()) return mContent.normalised(item.near);
        p = item.isCharacter() ? Position::startOf(*item.node) : item.far;
    }
}

Position Movement::endOfBlock(const Position &given) const
{
    Position p = mContent.normalised(given);
    for (;;) {
        const Item item = mContent.after(p);
        if (item.isEdge()) break;
        if (mContent.isFinalBreak(item)) break;
        p = item.isCharacter() ? Position::endOf(*item.node) : item.far;
    }
    return mContent.normalised(p);
}

Position Movement::startOfDocument() const
{
    auto &limit = const_cast<Element &>(mContent.limit());
    const Position p = mContent.normalised(Position::startOf(limit));
    const Item next = mContent.pastBlanksAfter(p);
    // In front of a table no text takes the caret; its first cell does.
    if (next.kind == Item::Kind::Edge && next.start) {
        const Position inside = crossEdges(next, p, true);
        if (inside) return inside;
    }
    return p;
}

Position Movement::endOfDocument() const
{
    const Position p = mContent.normalised(Position::endOf(const_cast<Element &>(mContent.limit())));
    const Item item = mContent.before(p);
    return mContent.isFinalBreak(item) ? beforeFinalBreak(item) : p;
}

Span Movement::blockAt(const Position &given) const
{
    const Position p = mContent.normalised(given);
    const Position start = startOfBlock(p);
    Position end = p;
    for (;;) {
        const Item item = mContent.after(end);
        if (item.kind == Item::Kind::Edge && !item.start && item.element() != &mContent.limit() &&
            !isCell(*item.element()))
            return {start, item.far};
        if (item.isEdge()) return {start, mContent.normalised(item.near)};
        end = item.isCharacter() ? Position::endOf(*item.node) : item.far;
    }
}

} // namespace ranges
