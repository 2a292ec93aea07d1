// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/TextIndex.h"

#include "engine/dom/Names.h"
#include "engine/ranges/Content.h"
#include "engine/ranges/TextRunWriter.h"

namespace ranges {

using namespace dom;

namespace {
constexpr size_t manyPlaces = 2048; // from there on it is cheaper to begin anew
}

TextIndex::TextIndex(Document &document, const Rendering &rendering) : mDocument(document), mRendering(rendering)
{
    document.addObserver(this);
}

TextIndex::~TextIndex()
{
    mDocument.removeObserver(this);
    for (TextRun *run = mFirst; run;)
        delete std::exchange(run, run->next);
}

bool TextIndex::isSkipped(const Node &node) const
{
    return (node.isText() && static_cast<const Text &>(node).length() == 0) || !mRendering.isDisplayed(node);
}

TextRun *TextIndex::runOf(const Node &leaf) const
{
    return leaf.id() < mByNode.size() ? mByNode[leaf.id()] : nullptr;
}

// Keeping it right

void TextIndex::note(Node &node)
{
    if (!mBuilt) return;
    if (mPending.size() >= manyPlaces) {
        mBuilt = false;
        mPending.clear();
        return;
    }
    if (!mPending.empty() && !mPending.back().parent && mPending.back().node == Ref<Node>(&node)) return;
    mPending.push_back({{}, Ref<Node>(&node)});
}

// What details hold shows or not, by their summary and whether they are open.
void TextIndex::detailsChanged(Node *details)
{
    Element *element = details ? details->asElement() : nullptr;
    if (element && element->is(names::details)) styleChanged(*element, true);
}

static bool isSummary(const Node &node)
{
    const Element *element = node.asElement();
    return element && element->is(names::summary);
}

void TextIndex::inserted(Node &node)
{
    note(node);
    if (isSummary(node)) detailsChanged(node.parentNode());
}

void TextIndex::removed(Node &node, ParentNode &parent, Node *before)
{
    if (!mBuilt) return;
    for (Node *at = &node; at; at = at->next(&node))
        if (TextRun *run = runOf(*at)) drop(run, true);
    if (mPending.size() < manyPlaces)
        mPending.push_back({Ref<Node>(&parent), Ref<Node>(before)});
    else
        mBuilt = false;
    if (isSummary(node)) detailsChanged(&parent);
}

void TextIndex::textReplaced(CharacterData &node, uint32_t, uint32_t, uint32_t)
{
    if (!mBuilt || !node.isText()) return;
    if (TextRun *run = runOf(node)) drop(run, true);
    note(node);
}

void TextIndex::attributeChanged(Element &element, Atom name, const QString *)
{
    if (mBuilt && name == Atom("open")) detailsChanged(&element);
    if (mBuilt && name == Atom("type") && element.is(names::input)) {
        if (TextRun *run = runOf(element)) drop(run, true);
        note(element);
    }
}

void TextIndex::heldOpenChanged(Element &element)
{
    if (!mBuilt) return;
    if (TextRun *run = runOf(element)) drop(run, false);
    note(element);
}

void TextIndex::styleChanged(Element &element, bool reframed)
{
    if (!mBuilt) return;
    if (reframed) {
        for (Node *at = &element; at; at = at->next(&element))
            if (TextRun *run = runOf(*at)) drop(run, true);
        note(element);
        return;
    }
    // Blanks may collapse that didn't, or the other way about.
    bool asked = false, preserved = false;
    for (Node *child = element.firstChild(); child; child = child->nextSibling()) {
        if (!child->isText()) continue;
        if (!std::exchange(asked, true)) preserved = mRendering.preservesSpace(static_cast<const Text &>(*child));
        TextRun *run = runOf(*child);
        if (run ? run->pieces[firstPieceOf(*run, *child)].preserved == preserved : !preserved) continue;
        if (run) drop(run, true);
        note(*child);
    }
}

void TextIndex::drop(TextRun *run, bool tell)
{
    if (mTextRun == run) mTextRun = nullptr;
    for (const TextRun::Piece &piece : run->pieces)
        if (mByNode[piece.node->id()] == run) mByNode[piece.node->id()] = nullptr;
    if (tell) {
        note(*run->pieces.front().node);
        note(*run->pieces.back().node);
    }
    (run->previous ? run->previous->next : mFirst) = run->next;
    (run->next ? run->next->previous : mLast) = run->previous;
    mRuns.remove(*run);
    delete run;
}

void TextIndex::keep(std::unique_ptr<TextRun> made, TextRun *behind)
{
    TextRun *run = made.release();
    run->previous = behind;
    run->next = behind ? behind->next : mFirst;
    (run->previous ? run->previous->next : mFirst) = run;
    (run->next ? run->next->previous : mLast) = run;
    mRuns.insert(*run, run->next);
    if (mByNode.size() <= mDocument.lastId()) mByNode.resize(mDocument.lastId() + 1 + mDocument.lastId() / 8);
    for (const TextRun::Piece &piece : run->pieces)
        mByNode[piece.node->id()] = run;
}

void TextIndex::ensure()
{
    mRendering.refresh(); // tells what has changed
    if (!mBuilt) {
        rebuild();
        return;
    }
    if (mPending.empty()) return;
    // What a rescan notes was asked for by the places that it covers.
    std::vector<Place> pending = std::exchange(mPending, {});
    for (const Place &place : pending)
        rescan(place);
    mPending.clear();
}

void TextIndex::rebuild()
{
    for (TextRun *run = mFirst; run;)
        delete std::exchange(run, run->next);
    mFirst = mLast = nullptr;
    mTextRun = nullptr;
    mRuns.clear();
    mByNode.assign(mDocument.lastId() + 1, nullptr);
    mPending.clear();
    mBuilt = true;
    if (Element *body = limit()) rescan(Position::startOf(*body), Position::endOf(*body));
}

void TextIndex::rescan(const Place &place)
{
    Element *body = limit();
    Node *around = place.parent ? place.parent.get() : place.node.get();
    if (!body || !around->isConnected()) return;
    if (place.node && place.node->contains(*body) && !place.parent) {
        rebuild();
        return;
    }
    if (!body->contains(*around)) return;
    if (place.parent) {
        if (place.node && place.node->parentNode() != place.parent.get()) return; // it left a place of its own
        const Position p = outOfLeaves(place.node ? Position::before(*place.node) : Position::endOf(*place.parent));
        rescan(p, p);
        return;
    }
    if (around == body) {
        rescan(Position::startOf(*body), Position::endOf(*body));
        return;
    }
    if (!around->asElement() && runOf(*around)) return;
    const Position from = outOfLeaves(Position::before(*around)), to = outOfLeaves(Position::after(*around));
    rescan(from, to);
}

Position TextIndex::outOfLeaves(const Position &p) const
{
    Position result = p;
    for (Node *at = p.node.get(); at && at != limit(); at = at->parentNode()) {
        const Element *element = at->asElement();
        if (at->isComment() || (element && (isEmbedded(*element) || isBreak(*element) || !mRendering.isDisplayed(*at))) ||
            (at->isText() && !mRendering.isDisplayed(*at)))
            result = Position::before(*at);
    }
    return result;
}

Position TextIndex::edgeBefore(Position p)
{
    Node *parent = p.inText() ? p.node->parentNode() : p.node.get();
    Node *child = p.inText() ? p.node->previousSibling() : p.childBefore();
    for (;;) {
        ++mWork;
        if (!child) {
            Element *element = parent->asElement();
            if (!element || element == limit() || mRendering.isBlock(*element)) return Position::startOf(*parent);
            child = element->previousSibling();
            parent = element->parentNode();
            continue;
        }
        Element *element = child->asElement();
        if (element && !isSkipped(*child) && !isBreak(*child)) {
            if (mRendering.isBlock(*element)) return Position::after(*child);
            if (!isEmbedded(*element)) {
                parent = element;
                child = element->lastChild();
                continue;
            }
        }
        child = child->previousSibling();
    }
}

TextIndex::Stop TextIndex::scan(Position &p, Position &near, TextRun &run)
{
    TextRunWriter writer(run, mRendering);
    const Position start = p;
    // A block with others in it has no line of its own.
    const auto isHeldLine = [&](Element &block) { return block.isHeldOpen() && start == Position::startOf(block); };
    Node *parent = p.node.get();
    Node *child = p.childAfter();
    for (;;) {
        ++mWork;
        if (!child) {
            Element *left = parent->asElement();
            near = Position::endOf(*parent);
            if (left)
                if (TextRun *old = runOf(*left)) drop(old, false); // the line that was held open
            if (left == limit() || !left) {
                if (left && isHeldLine(*left)) writer.holdOpen(*left);
                writer.finish();
                return Stop::End;
            }
            if (mRendering.isBlock(*left)) {
                if (isHeldLine(*left)) writer.holdOpen(*left);
                writer.finish();
                p = Position::after(*left);
                return Stop::Edge;
            }
            child = left->nextSibling();
            parent = left->parentNode();
            continue;
        }
        Element *element = child->asElement();
        if (isSkipped(*child) || (!element && !child->isText())) {
            child = child->nextSibling();
            continue;
        }
        if (!element) {
            writer.addText(static_cast<Text &>(*child));
        } else if (isBreak(*element)) {
            writer.addBreak(*element);
        } else if (isEmbedded(*element)) {
            const bool block = mRendering.isBlock(*element);
            if (block) {
                near = Position::before(*element);
                if (!writer.isEmpty()) {
                    writer.finish();
                    p = near;
                    return Stop::Edge;
                }
            }
            if (block)
                writer.setRule(*element);
            else
                writer.addObject(*element);
            if (block) {
                p = near = Position::after(*element);
                return Stop::Edge;
            }
        } else {
            if (mRendering.isBlock(*element)) {
                near = Position::before(*element);
                writer.finish();
                p = Position::startOf(*element);
                return Stop::Edge;
            }
            parent = element;
            child = element->firstChild();
            continue;
        }
        child = child->nextSibling();
    }
}

void TextIndex::rescan(const Position &from, const Position &to)
{
    Position p = edgeBefore(from);
    const Position start = p;
    std::vector<std::unique_ptr<TextRun>> fresh;
    for (;;) {
        auto run = std::make_unique<TextRun>();
        Position near;
        const Stop stop = scan(p, near, *run);
        if (!run->pieces.empty()) fresh.push_back(std::move(run));
        // A run in front of a block object ends where the object's own begins.
        if (stop == Stop::End || (Position::compare(near, to) >= 0 && !(near == p && near == to))) break;
    }
    for (const auto &run : fresh)
        for (const TextRun::Piece &piece : run->pieces)
            if (TextRun *old = runOf(*piece.node)) drop(old, true);
    TextRun *behind = nullptr;
    if (mFirst) behind = runBefore(start, nullptr, nullptr);
    for (auto &run : fresh) {
        TextRun *made = run.get();
        keep(std::move(run), behind);
        behind = made;
    }
}

// Answers

uint32_t TextIndex::total()
{
    ensure();
    return mRuns.total();
}

TextRun *TextIndex::runAt(uint32_t count, uint32_t *base)
{
    ensure();
    return mRuns.find([count](uint32_t sum) { return sum > count; }, base);
}

TextRun *TextIndex::runAround(const Position &p, uint32_t *chars)
{
    ensure();
    const Text *text = p.text();
    TextRun *run = text ? runOf(*text) : nullptr;
    if (run) *chars = countIn(*run, *text, p.offset);
    return run;
}

TextRun *TextIndex::firstRun()
{
    ensure();
    return mFirst;
}

TextRun *TextIndex::lastRun()
{
    ensure();
    return mLast;
}

TextRun *TextIndex::runBefore(const Position &p, bool *crossed, const Node **leaf)
{
    if (crossed) *crossed = false;
    Node *parent = p.inText() ? p.node->parentNode() : p.node.get();
    Node *child = p.inText() ? p.node->previousSibling() : p.childBefore();
    if (p.node->isComment()) {
        parent = p.node->parentNode();
        child = p.node->previousSibling();
    }
    for (;;) {
        ++mWork;
        if (!child) {
            Element *left = parent->asElement();
            if (left) {
                if (TextRun *run = runOf(*left)) { // inside the block that is held open
                    if (leaf) *leaf = left;
                    return run;
                }
            }
            if (!left || left == limit()) return nullptr;
            if (crossed && mRendering.isBlock(*left)) *crossed = true;
            child = left->previousSibling();
            parent = left->parentNode();
            continue;
        }
        Element *element = child->asElement();
        if (element && crossed && mRendering.isDisplayed(*element) && mRendering.isBlock(*element)) *crossed = true;
        if (TextRun *run = runOf(*child)) {
            if (leaf) *leaf = child;
            return run;
        }
        if (element && !isEmbedded(*element) && !isBreak(*element) && mRendering.isDisplayed(*element)) {
            parent = element;
            child = element->lastChild();
            continue;
        }
        child = child->previousSibling();
    }
}

size_t TextIndex::firstPieceOf(const TextRun &run, const Node &leaf) const
{
    const auto &pieces = run.pieces;
    if (pieces.size() <= 8) {
        for (size_t i = 0; i < pieces.size(); ++i)
            if (pieces[i].node == &leaf) return i;
        return 0;
    }
    for (size_t i = mLastPiece; i < std::min(mLastPiece + 4, pieces.size()); ++i) {
        if (pieces[i].node != &leaf) continue;
        while (i > 0 && pieces[i - 1].node == &leaf)
            --i;
        return mLastPiece = i;
    }
    const auto found = std::partition_point(pieces.begin(), pieces.end(), [&](const TextRun::Piece &piece) {
        return piece.node != &leaf && piece.node->compareOrder(leaf) < 0;
    });
    return mLastPiece = size_t(found - pieces.begin());
}

uint32_t TextIndex::countIn(const TextRun &run, const Text &text, uint32_t offset) const
{
    size_t i = firstPieceOf(run, text);
    const auto &pieces = run.pieces;
    // Long texts are cut in pieces.
    auto behind = std::partition_point(pieces.begin() + ptrdiff_t(i), pieces.end(), [&](const TextRun::Piece &piece) {
        return piece.node == &text && piece.from <= offset;
    });
    i = size_t(behind - pieces.begin()) - 1;
    if (offset - pieces[i].from <= pieces[i].plain)
        return std::min(pieces[i].chars + offset - pieces[i].from, run.endOf(i));
    return pieces[i].chars +
           std::min(countVisible(pieces[i], text, std::min(offset, text.length())), run.endOf(i) - pieces[i].chars);
}

/// A rule in front of which the place stands: its line is another one than that of a text before.
const TextRun *TextIndex::ruleAfter(const Position &p) const
{
    if (!p.node->isElement()) return nullptr;
    for (const Node *child = p.childAfter(); child; child = child->nextSibling()) {
        if (const TextRun *run = runOf(*child)) return run->rule ? run : nullptr;
        const bool blank = child->isText() || child->isComment() || !mRendering.isDisplayed(*child);
        if (!blank) return nullptr;
    }
    return nullptr;
}

uint32_t TextIndex::countBefore(const Position &given)
{
    ensure();
    Element *body = limit();
    if (!body || !given) return 0;
    if (const Text *text = given.text())
        if (TextRun *run = runOf(*text)) return baseOf(*run) + countIn(*run, *text, given.offset);
    if (!body->contains(*given.node))
        return Position::compare(given, Position::startOf(*body)) < 0 ? 0 : mRuns.total();
    const Position p = outOfLeaves(given);
    if (const TextRun *rule = ruleAfter(p)) return baseOf(*rule);
    bool crossed = false;
    const Node *leaf = nullptr;
    TextRun *run = runBefore(p, &crossed, &leaf);
    if (!run) return 0;
    const uint32_t base = baseOf(*run);
    if (leaf == p.node.get() && run->held) return base;
    if (crossed || run->rule) return base + run->length + 1;
    if (leaf->isText() && p == Position::endOf(*body)) return base + run->length + 1; // the text has an end of its own
    if (run->held) return base;
    size_t last = firstPieceOf(*run, *leaf);
    while (last + 1 < run->pieces.size() && run->pieces[last + 1].node == leaf)
        ++last;
    return base + run->endOf(last);
}

Position TextIndex::placeIn(const TextRun &run, uint32_t chars, Side side)
{
    const auto &pieces = run.pieces;
    if (run.held) return Position::startOf(*pieces.front().node);
    if (run.rule) return chars == 0 ? Position::before(*pieces.front().node) : Position::after(*pieces.front().node);
    if (chars == 0)
        side = Side::Following;
    else if (chars >= run.length)
        side = Side::Preceding;
    const uint32_t wanted = side == Side::Following ? chars : chars - 1; // the character beside which it is
    auto behind = std::partition_point(pieces.begin(), pieces.end(),
                                       [&](const TextRun::Piece &piece) { return piece.chars <= wanted; });
    const size_t i = size_t(behind - pieces.begin()) - 1;
    Node &node = *pieces[i].node;
    if (node.isText() && wanted - pieces[i].chars < pieces[i].plain)
        return {&node, pieces[i].from + wanted - pieces[i].chars + (side == Side::Following ? 0 : 1)};
    if (node.isText()) return placeInText(pieces[i], static_cast<Text &>(node), wanted - pieces[i].chars, side);
    return side == Side::Following ? Position::before(node) : Position::after(node);
}

Position TextIndex::placeAt(uint32_t count, Side side)
{
    uint32_t base = 0;
    if (const TextRun *run = runAt(count, &base)) return placeIn(*run, count - base, side);
    Element *body = limit();
    if (!body) return {};
    // Behind the last boundary; where an object ends BODY there is no such place in it.
    const Position end = Position::endOf(*body);
    return countBefore(end) == mRuns.total() ? end : Position::after(*body);
}

void TextIndex::read(const TextRun &run, uint32_t from, uint32_t to, QString &out, bool objects)
{
    if (run.held || (run.rule && !objects)) return;
    if (run.rule) {
        if (from < to) out.append(QChar::ObjectReplacementCharacter);
        return;
    }
    const auto &pieces = run.pieces;
    auto behind = std::partition_point(pieces.begin(), pieces.end(),
                                       [&](const TextRun::Piece &piece) { return piece.chars <= from; });
    for (size_t i = size_t(behind - pieces.begin()) - 1; i < pieces.size() && pieces[i].chars < to; ++i) {
        const uint32_t end = std::min(run.endOf(i), to);
        const uint32_t begin = std::max(from, pieces[i].chars);
        if (begin >= end) continue;
        if (pieces[i].node->isText() && end - pieces[i].chars <= pieces[i].plain)
            readPlain(pieces[i], static_cast<Text &>(*pieces[i].node), begin - pieces[i].chars, end - begin, out);
        else if (pieces[i].node->isText())
            readText(pieces[i], static_cast<Text &>(*pieces[i].node), begin - pieces[i].chars, end - begin, out);
        else if (isBreak(*pieces[i].node))
            out.append(u'\n');
        else if (objects)
            out.append(QChar::ObjectReplacementCharacter);
    }
}

const QString &TextIndex::textOf(const TextRun &run)
{
    if (mTextRun != &run) {
        mText.resize(0);
        read(run, 0, run.length, mText, true);
        mTextRun = &run;
    }
    return mText;
}

Element *TextIndex::blockOf(const TextRun &run) const
{
    Node *leaf = run.pieces.back().node;
    Element *at = run.held ? leaf->asElement() : leaf->parentElement();
    while (at && at != limit() && !mRendering.isBlock(*at))
        at = at->parentElement();
    return at;
}

QString TextIndex::compareWithFresh()
{
    ensure();
    TextIndex fresh(mDocument, mRendering);
    fresh.ensure();
    TextRun *a = mFirst, *b = fresh.mFirst;
    for (int n = 0; a || b; a = a->next, b = b->next, ++n) {
        QString mine, other;
        if (a) read(*a, 0, a->content(), mine, true);
        if (b) read(*b, 0, b->content(), other, true);
        bool same = a && b && a->length == b->length && a->held == b->held && a->rule == b->rule && a->pieces.size() == b->pieces.size() &&
                    mine == other && baseOf(*a) == fresh.baseOf(*b);
        for (size_t i = 0; same && i < a->pieces.size(); ++i)
            same = a->pieces[i].node == b->pieces[i].node && a->pieces[i].chars == b->pieces[i].chars &&
                   runOf(*a->pieces[i].node) == a;
        if (!same)
            return QStringLiteral("run %1: \"%2\" where a fresh one has \"%3\"")
                .arg(n)
                .arg(a ? mine : QStringLiteral("(none)"), b ? other : QStringLiteral("(none)"));
    }
    return {};
}

bool isEmbedded(const Element &element)
{
    if (!isObject(element)) return false;
    const QString *own = element.attribute(names::contenteditable);
    if (!own) return true;
    return element.isVoid() || element.space() != Namespace::Html || isReplacedName(element);
}

} // namespace ranges
