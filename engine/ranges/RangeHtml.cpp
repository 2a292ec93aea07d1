// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/RangeHtml.h"

#include "engine/html/Serializer.h"

namespace ranges {

using namespace dom;
using html::Serializer;
using Side = TextIndex::Side;

namespace {

/// Writes the content between two places, each element that is entered or left with its tags, as soon as something of it
/// is covered.
class FragmentWriter
{
public:
    FragmentWriter(Element &top, QString &out) : mTop(&top), mOut(out) {}

    void write(const Position &start, const Position &end)
    {
        Node *node = start.inText() ? start.node.get() : start.childAfter();
        if (!node) node = start.node->nextSkippingChildren(mTop);
        while (node) {
            if (Position::compare(Position::before(*node), end) >= 0) break;
            if (auto *text = node->isText() ? static_cast<Text *>(node) : nullptr) {
                const uint32_t from = node == start.node.get() ? start.offset : 0;
                const uint32_t to = node == end.node.get() ? end.offset : text->length();
                if (from == 0 && to == text->length())
                    emit(*node);
                else if (to > from)
                    emitPart(*text, from, to);
                if (node == end.node.get()) break;
            } else if (!node->contains(*end.node)) {
                emit(*node);
            } else {
                node = node->next(mTop);
                continue;
            }
            node = node->nextSkippingChildren(mTop);
        }
        closeTo(0);
    }

private:
    void openFor(const Node &node)
    {
        std::vector<Element *> chain;
        for (Element *at = node.parentElement(); at && at != mTop; at = at->parentElement())
            chain.push_back(at);
        std::reverse(chain.begin(), chain.end());
        size_t same = 0;
        while (same < chain.size() && same < mOpen.size() && chain[same] == mOpen[same])
            ++same;
        closeTo(same);
        for (size_t i = same; i < chain.size(); ++i) {
            Serializer::writeStartTag(*chain[i], mOut);
            mOpen.push_back(chain[i]);
        }
    }
    void closeTo(size_t depth)
    {
        while (mOpen.size() > depth) {
            Serializer::writeEndTag(*mOpen.back(), mOut);
            mOpen.pop_back();
        }
    }
    void emit(const Node &node)
    {
        openFor(node);
        Serializer::write(node, mOut);
    }
    void emitPart(const Text &text, uint32_t from, uint32_t to)
    {
        openFor(text);
        const QStringView part = QStringView(text.data()).mid(from, to - from);
        if (const Element *parent = text.parentElement(); parent && Serializer::isRawText(*parent))
            mOut.append(part);
        else
            Serializer::writeText(part, mOut);
    }

    Element *mTop;
    QString &mOut;
    std::vector<Element *> mOpen;
};

QString caretHtml(TextIndex &index, const Position &p, uint32_t count)
{
    uint32_t base = 0;
    const TextRun *run = index.runAt(count, &base);
    if (!run || !run->held || base != count) return {};
    const Element *block = run->pieces.front().node->asElement();
    if (block == index.limit() || !block->contains(*p.node)) return {};
    QString out;
    Serializer::write(*block, out);
    return Serializer::withCrLf(out);
}

/// Whether all of the element's content lies between the counts.
bool coversContent(TextIndex &index, Element &element, uint32_t start, uint32_t end)
{
    return index.countBefore(Position::startOf(element)) >= start && index.countBefore(Position::endOf(element)) <= end;
}

QString wholeHtml(const Element &element)
{
    QString out;
    Serializer::write(element, out);
    return Serializer::withCrLf(out);
}

} // namespace

QString htmlOf(const TextRange &range)
{
    return htmlWithin(range, nullptr);
}

QString htmlWithin(const TextRange &range, const Element *around)
{
    TextIndex &index = range.index();
    uint32_t start = range.startCount();
    const uint32_t end = range.endCount();
    const Span span = range.span();
    if (start >= end) return caretHtml(index, span.start, start);
    Element *body = index.limit();
    if (Element *closed = closedElement(index, span); closed && coversContent(index, *closed, start, end))
        return closed == body ? Serializer::inner(*body) : wholeHtml(*closed);

    uint32_t firstBase = 0, lastBase = 0;
    TextRun *first = index.runAt(start, &firstBase);
    TextRun *last = index.runAt(end - 1, &lastBase);
    if (first->length > 0 && start == firstBase + first->length) { // of the first block only its end is covered
        if (first == last) return {};
        firstBase = start = firstBase + first->length + 1;
        first = first->next;
        if (start >= end) return {};
    }
    const bool endTaken = last->endsWithBoundary() && end == lastBase + last->length + 1;
    Position from = TextIndex::placeIn(*first, start - firstBase, Side::Following);
    Position to = TextIndex::placeIn(*last, std::min(end - lastBase, last->content()), Side::Preceding);
    Element *top = from.element();
    while (top && !top->contains(*to.node))
        top = top->parentElement();
    if (endTaken) {
        while (top && top != body && !index.rendering().isBlock(*top))
            top = top->parentElement();
        if (top != body && index.countBefore(Position::startOf(*top)) >= start) return wholeHtml(*top);
    } else if (!index.rendering().isBlock(*top)) {
        Element *covered = nullptr;
        for (Element *at = top; at && at != body && at != around && !index.rendering().isBlock(*at); at = at->parentElement()) {
            if (!coversContent(index, *at, start, end)) break;
            covered = at;
        }
        if (covered) return wholeHtml(*covered);
    }
    if (first->held) from = Position::before(*first->pieces.front().node);
    if (last->held) to = Position::after(*last->pieces.front().node);
    while (top != body && !(top->contains(*from.node) && top->contains(*to.node)))
        top = top->parentElement();
    if (from.inText() && to.node == from.node && top == from.node.get()) top = from.element();
    QString out;
    FragmentWriter(*top, out).write(from, to);
    return Serializer::withCrLf(out);
}

} // namespace ranges
