// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/TextRange.h"

#include "base/Error.h"
#include "engine/html/Serializer.h"
#include "engine/ranges/Bookmarks.h"
#include "engine/ranges/Content.h"

#include <QTextBoundaryFinder>

namespace ranges {

using namespace dom;
using base::Error;
using Side = TextIndex::Side;

namespace {

[[noreturn]] void refuse(const char *text)
{
    throw Error(base::errors::invalidCall, QString::fromLatin1(text));
}

Element *commonElement(const Position &a, const Position &b)
{
    Element *at = a.element();
    while (at && !at->contains(*b.node))
        at = at->parentElement();
    return at;
}

/// At the text or object that follows, so that what happens within elements is felt too.
Position innermostStart(Position p)
{
    for (Node *child = p.childAfter(); child && (child->isText() || child->hasChildNodes()); child = p.childAfter())
        p = Position::startOf(*child);
    return p;
}

Position innermostEnd(Position p)
{
    for (Node *child = p.childBefore(); child && (child->isText() || child->hasChildNodes()); child = p.childBefore())
        p = Position::endOf(*child);
    return p;
}

} // namespace

TextRange::TextRange(SelectionObject &page, const Span &span)
    : mPage(page.handle()), mRange(page.keeper(), {}), mHeldStart(page.keeper(), {}, Grip::Following),
      mHeldEnd(page.keeper(), {}, Grip::Preceding)
{
    setSpan(span);
}

Ref<TextRange> TextRange::over(SelectionObject &page, Element &element)
{
    Ref<TextRange> range(new TextRange(page, {}));
    range->moveToElementText(&element);
    return range;
}

Ref<TextRange> TextRange::duplicate() const
{
    Ref<TextRange> copy(new TextRange(page(), span()));
    copy->mHeld = mHeld;
    copy->mHeldStart = mHeldStart;
    copy->mHeldEnd = mHeldEnd;
    return copy;
}

SelectionObject &TextRange::page() const
{
    if (!*mPage) throw Error(base::errors::notPossible, QStringLiteral("The range's document is gone."));
    return **mPage;
}

void TextRange::setSpan(const Span &span)
{
    page(); // fails where the document is gone
    mRange.start = span.start;
    mRange.end = span.end;
    mHeld = span.start && !span.isEmpty();
    Span held = span;
    if (mHeld) {
        held = {innermostStart(span.start), innermostEnd(span.end)};
        if (Position::compare(held.start, held.end) >= 0) held = span; // nothing but the edges of elements
    }
    mHeldStart = held.start;
    mHeldEnd = held.end;
    mBehindLine = false;
}

QString TextRange::text() const
{
    const uint32_t end = endCount();
    uint32_t base = 0, at = startCount();
    QString out;
    for (const TextRun *run = index().runAt(at, &base); run && at < end; run = run->next) {
        TextIndex::read(*run, at - base, std::min(end - base, run->length), out);
        base += run->length + 1;
        at = base;
        if (base < end && run->endsWithBoundary()) out.append(u'\n');
    }
    return html::Serializer::withCrLf(out);
}

QString TextRange::htmlText() const
{
    return htmlOf(*this);
}

Element *closedElement(const TextIndex &index, const Span &span)
{
    const Element *limit = index.limit();
    if (limit && span.start.node == limit && span.start.offset == 0 &&
        (span.end == Position::endOf(const_cast<Element &>(*limit)) || !limit->contains(*span.end.node)))
        return const_cast<Element *>(limit);
    Node *last = span.end.inText() ? nullptr : span.end.childBefore();
    Element *element = last ? last->asElement() : nullptr;
    if (!element) return nullptr;
    if (element->contains(*span.start.node)) return element;
    return nullptr;
}

Element *TextRange::parentElement() const
{
    const Span s = span();
    if (Element *closed = closedElement(index(), s)) return closed;
    const uint32_t start = startCount(), end = endCount();
    uint32_t base = 0;
    if (start < end) {
        // Does it end with a boundary?
        const TextRun *last = index().runAt(end - 1, &base);
        if (last && last->endsWithBoundary() && base + last->length + 1 == end) {
            const Position inside = TextIndex::placeIn(*last, last->length, Side::Preceding);
            // From the first thing that it holds: blocks that merely open in front of that don't count.
            uint32_t firstBase = 0;
            const TextRun *first = index().runAt(start, &firstBase);
            const bool endFirst = first->length > 0 && start == firstBase + first->length;
            const Position from = endFirst ? s.start : TextIndex::placeIn(*first, start - firstBase, Side::Following);
            Element *common = commonElement(from, inside);
            while (common && common != index().limit() && !index().rendering().isBlock(*common))
                common = common->parentElement();
            return common;
        }
    }
    Element *common = commonElement(s.start, s.end);
    return common && index().limit() && common->isAncestorOf(*index().limit()) ? index().limit() : common;
}

Position TextRange::caretAt(uint32_t count) const
{
    // Nobody stands behind the last boundary.
    const uint32_t total = index().total();
    if (count >= total && total > 0) count = total - 1;
    return index().placeAt(count, Side::Preceding);
}

void TextRange::setCounts(uint32_t start, uint32_t end)
{
    if (start == end) {
        const Position p = caretAt(start);
        setSpan({p, p});
        return;
    }
    setSpan({index().placeAt(start, Side::Following), index().placeAt(end, Side::Preceding)});
}

void TextRange::collapse(bool toStart)
{
    const Span s = span();
    if (toStart) {
        setSpan({s.start, s.start});
        return;
    }
    Position p = s.end;
    if (p.inText()) return setSpan({p, p}); // no end of an element, nor BODY's
    if (Element *closed = closedElement(index(), s)) {
        // The last thing in it, or its own end where it has nothing to see.
        const uint32_t end = endCount();
        p = Position::endOf(*closed);
        uint32_t base = 0;
        if (const TextRun *last = end > 0 ? index().runAt(end - 1, &base) : nullptr) {
            const Position inside = TextIndex::placeIn(*last, std::min(last->content(), end - base), Side::Preceding);
            if (closed->contains(*inside.node) && closed != inside.node.get()) p = inside;
        }
    } else if (index().total() > 0 && endCount() == index().total()) {
        p = caretAt(index().total());
    }
    setSpan({p, p});
}

TextRange::Unit TextRange::unitOf(const QString &name)
{
    const QString unit = name.trimmed().toLower();
    if (unit == u"character") return Unit::Character;
    if (unit == u"word") return Unit::Word;
    if (unit == u"sentence") return Unit::Sentence;
    if (unit == u"textedit") return Unit::TextEdit;
    refuse("Unknown unit.");
}

namespace {

/// Where units of a run start, 0 among them; in order.
std::vector<uint32_t> startsIn(const TextRun &run, QTextBoundaryFinder::BoundaryType type)
{
    QString text;
    TextIndex::read(run, 0, run.length, text, true);
    std::vector<uint32_t> starts{0};
    QTextBoundaryFinder finder(type, text);
    for (auto at = finder.toNextBoundary(); at >= 0 && at < text.size(); at = finder.toNextBoundary()) {
        const QChar c = text[at];
        if (type == QTextBoundaryFinder::Word && (c.isSpace() || c == QChar(0xA0))) continue;
        starts.push_back(uint32_t(at));
    }
    return starts;
}

/// The next start of a unit, forward or backward; the end of the text and its start are the last ones.
uint32_t nextStart(TextIndex &index, uint32_t at, QTextBoundaryFinder::BoundaryType type, bool forward)
{
    uint32_t base = 0;
    const TextRun *run = index.runAt(at, &base);
    if (forward) {
        if (!run) return at;
        for (const uint32_t start : startsIn(*run, type))
            if (base + start > at) return base + start;
        return base + run->length + 1;
    }
    if (at == 0) return 0;
    if (!run || at == base) {
        run = run ? run->previous : index.lastRun();
        if (!run) return 0;
        base = index.baseOf(*run);
    }
    const std::vector<uint32_t> starts = startsIn(*run, type);
    for (size_t i = starts.size(); i-- > 0;)
        if (base + starts[i] < at) return base + starts[i];
    return base;
}

} // namespace

int TextRange::travel(uint32_t &at, Unit unit, int count) const
{
    TextIndex &text = index();
    const uint32_t total = text.total(), from = at;
    if (count == 0) return 0;
    if (unit == Unit::TextEdit) {
        at = count > 0 ? total : 0;
        return at == from ? 0 : (count > 0 ? 1 : -1);
    }
    if (unit == Unit::Character) {
        const int64_t to = std::clamp<int64_t>(int64_t(at) + count, 0, total);
        at = uint32_t(to);
        const Position p = text.placeAt(at, Side::Following);
        if (const Text *node = p.text(); node && p.offset > 0 && p.offset < node->length() &&
                                         node->data()[p.offset].isLowSurrogate() &&
                                         node->data()[p.offset - 1].isHighSurrogate())
            at = count > 0 ? at + 1 : at - 1;
        return int(int64_t(at) - from);
    }
    const auto type = unit == Unit::Word ? QTextBoundaryFinder::Word : QTextBoundaryFinder::Sentence;
    int done = 0;
    while (done != count) {
        const uint32_t next = nextStart(text, at, type, count > 0);
        if (next == at) break;
        at = next;
        done += count > 0 ? 1 : -1;
    }
    return done;
}

int TextRange::move(const QString &unit, int count)
{
    const Unit by = unitOf(unit);
    const uint32_t from = startCount() + (mBehindLine ? 1 : 0), total = index().total();
    uint32_t at = from;
    int done = 0;
    if (count != 0) done = travel(at, by, count);
    if (at >= total && total > 0 && by == Unit::Character && done > 0) {
        at = total - 1;
        done = int(int64_t(at) - from);
    }
    const Position p = done == 0 ? span().start : caretAt(at);
    setSpan({p, p});
    return done;
}

int TextRange::moveStart(const QString &unit, int count)
{
    const Unit by = unitOf(unit);
    uint32_t at = startCount();
    const int done = travel(at, by, count);
    if (done == 0) return 0;
    const Position start = index().placeAt(at, Side::Following);
    if (at >= endCount())
        setSpan({start, start});
    else
        setSpan({start, span().end});
    return done;
}

int TextRange::moveEnd(const QString &unit, int count)
{
    const Unit by = unitOf(unit);
    uint32_t at = endCount();
    const int done = travel(at, by, count);
    if (done == 0) return 0;
    const Position end = index().placeAt(at, Side::Preceding);
    if (at <= startCount())
        setSpan({end, end});
    else
        setSpan({span().start, end});
    return done;
}

bool TextRange::expand(const QString &unit)
{
    const Unit by = unitOf(unit);
    const uint32_t start = startCount(), end = endCount(), total = index().total();
    if (by == Unit::TextEdit) {
        if (start == 0 && end == total) return false;
        moveToElementText(index().limit());
        return true;
    }
    if (by == Unit::Character) {
        if (start < end || start >= total) return false;
        setCounts(start, start + 1);
        return true;
    }
    const auto type = by == Unit::Word ? QTextBoundaryFinder::Word : QTextBoundaryFinder::Sentence;
    const auto cover = [&](uint32_t at, bool behind) -> std::pair<uint32_t, uint32_t> {
        uint32_t base = 0;
        const TextRun *run = index().runAt(at, &base);
        if (!run) return {at, at};
        QString text;
        TextIndex::read(*run, 0, run->length, text, true);
        const auto starts = startsIn(*run, type);
        const auto isSpace = [&](uint32_t i) { return text[i].isSpace() || text[i] == QChar(0xA0); };
        uint32_t i = at - base;
        // An end, and a place behind a word, belong to what is in front.
        if (i > 0 && (behind || i >= run->length || (isSpace(i) && !isSpace(i - 1)))) --i;
        auto next = std::upper_bound(starts.begin(), starts.end(), i);
        const uint32_t from = *std::prev(next);
        uint32_t to = next == starts.end() ? run->length : *next;
        if (by == Unit::Word) {
            uint32_t word = to;
            while (word > from && isSpace(word - 1))
                --word;
            if (word > from && i < word) to = word;
        }
        return {base + from, base + to};
    };
    const uint32_t from = cover(start, false).first;
    const uint32_t to = std::max(end, start == end ? cover(end, false).second : cover(end, true).second);
    if (from == start && to == end) return false;
    setCounts(std::min(from, start), to);
    return true;
}

void TextRange::moveToElementText(Element *element)
{
    if (!element) throw Error(base::errors::objectNotSet, QStringLiteral("There is no element to move to."));
    Element *body = index().limit();
    if (&element->document() != &page().document() || !element->isConnected() || !body)
        refuse("The element isn't in the range's document.");
    if (element == body || element->isAncestorOf(*body)) {
        setSpan({Position::startOf(*body), index().placeAt(index().total(), Side::Following)});
        return;
    }
    if (!body->contains(*element)) refuse("The element has no text.");
    if (isEmbedded(*element) || element->isVoid())
        setSpan({Position::before(*element), Position::after(*element)});
    else
        setSpan({Position::startOf(*element), Position::after(*element)});
}

void TextRange::moveToPlace(const Position &place)
{
    Position p = place;
    uint32_t base = 0;
    const TextRun *run = index().runAt(index().countBefore(p), &base);
    if (run && run->length == 1) { // a no-break space alone is a line without text
        QString text;
        TextIndex::read(*run, 0, 1, text);
        if (text == QChar(0xA0)) p = TextIndex::placeIn(*run, 1, Side::Preceding);
    }
    setSpan({p, p});
    mBehindLine = run && run->held;
}

TextRange::Ends TextRange::endsOf(const QString &how)
{
    const QString name = how.trimmed().toLower();
    if (name == u"starttostart") return {End::Start, End::Start};
    if (name == u"starttoend") return {End::Start, End::End};
    if (name == u"endtostart") return {End::End, End::Start};
    if (name == u"endtoend") return {End::End, End::End};
    refuse("Unknown ends to compare.");
}

void TextRange::sameDocument(const TextRange &other) const
{
    if (&page() != &other.page()) refuse("The ranges belong to different documents.");
}

int TextRange::compareEndPoints(const QString &how, const TextRange &other) const
{
    const Ends ends = endsOf(how);
    sameDocument(other);
    const uint32_t a = countOf(ends.mine), b = other.countOf(ends.theirs);
    return a < b ? -1 : a > b;
}

void TextRange::setEndPoint(const QString &how, const TextRange &other)
{
    const Ends ends = endsOf(how);
    sameDocument(other);
    const Position to = ends.theirs == End::Start ? other.span().start : other.span().end;
    Span s = span();
    (ends.mine == End::Start ? s.start : s.end) = to;
    if (Position::compare(s.start, s.end) > 0) s = {to, to};
    setSpan(s);
}

bool TextRange::inRange(const TextRange &other) const
{
    sameDocument(other);
    return startCount() <= other.startCount() && other.endCount() <= endCount();
}

bool TextRange::isEqual(const TextRange &other) const
{
    return &page() == &other.page() && startCount() == other.startCount() && endCount() == other.endCount();
}

void TextRange::select() const
{
    const Span s = span();
    if (!s.start || !s.start.node->isConnected() || !s.end.node->isConnected()) refuse("There is nothing to select.");
    Element *body = index().limit();
    const auto inBody = [&](const Position &p) {
        return body && !body->contains(*p.node) ? Position::endOf(*body) : p;
    };
    if (body && s.isEmpty()) {
        // Between blocks nobody can type: the caret goes to the place that a reader takes it for.
        const Position at = inBody(s.start);
        const Content content(index().rendering(), *body);
        // But beside a rule or another object there it is a place of its own.
        const bool isBeside = content.contains(at) && (content.before(at).isObject() || content.after(at).isObject());
        return page().setCaret(isBeside || content.isCaretPlace(at) ? at : content.normalised(at));
    }
    page().set(inBody(s.start), inBody(s.end));
}

bool TextRange::hasLost() const
{
    const Position &start = mHeldStart.position(), &end = mHeldEnd.position();
    return mHeld && (span().isEmpty() || Position::compare(start, end) >= 0);
}

QString TextRange::bookmark() const
{
    const Span s = span();
    if (!s.start || !s.start.node->isConnected() || !s.end.node->isConnected() || hasLost())
        throw Error(base::errors::notPossible, QStringLiteral("What the range held has gone."));
    return page().bookmarks().nameOf(s);
}

void TextRange::moveToBookmark(const QString &bookmark)
{
    const Span s = page().bookmarks().find(bookmark);
    if (!s.start) refuse("This is no bookmark of the document.");
    setSpan(s);
}

} // namespace ranges
