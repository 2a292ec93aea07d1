// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/Blanks.h"

namespace editing {

using namespace ranges;

namespace {
bool isNoBreak(const Item &item)
{
    return item.isCharacter() && item.unit() == noBreakSpace;
}
} // namespace

bool Blanks::wouldCollapse(const Item &c) const
{
    const Item previous = mContent.before({c.node, c.from});
    if (previous.isLineEdge() || mContent.isCollapsible(previous)) return true;
    const Item next = mContent.after({c.node, c.to});
    return next.isLineEdge() || mContent.isCollapsible(next);
}

bool Blanks::noteOne(const Item &item)
{
    if (!item.isCharacter() || mContent.rendering().preservesSpace(*item.text())) return false;
    const bool plain = mContent.isCollapsible(item);
    if (!plain && !isNoBreak(item)) return false;
    const bool matters = plain ? !mContent.isHidden(item) : wouldCollapse(item);
    if (matters) mNoted.emplace_back(mKeeper, Position(item.node, item.to));
    return true;
}

void Blanks::noteBefore(const Position &p)
{
    const size_t first = mNoted.size();
    Item item = mContent.visibleBefore(p);
    for (int i = 0; i < reach && noteOne(item); ++i)
        item = mContent.visibleBefore({item.node, item.from});
    std::reverse(mNoted.begin() + std::ptrdiff_t(first), mNoted.end());
}

void Blanks::noteAfter(const Position &p)
{
    Item item = mContent.visibleAfter(p);
    for (int i = 0; i < reach && noteOne(item); ++i)
        item = mContent.visibleAfter({item.node, item.to});
}

void Blanks::note(const Position &left, const Position &right)
{
    noteBefore(left);
    noteAfter(right);
}

void Blanks::dropHidden(const Position &from)
{
    // What hid behind or in front of a plain blank would show beside a no-break one.
    for (Item next = mContent.after(from); mContent.isCollapsible(next); next = mContent.after(from)) {
        bool noted = false;
        for (const LivePosition &end : mNoted)
            noted = noted || end.position() == Position(next.node, next.to);
        if (noted) return;
        mTracker.replaceText(*next.text(), next.from, next.to - next.from, {});
    }
}

void Blanks::mend()
{
    for (const LivePosition &noted : mNoted) {
        const Position end = noted;
        dom::Text *text = end.text();
        if (!text || !text->isConnected() || end.offset == 0) continue;
        const Position start(text, end.offset - 1);
        Item item;
        item.kind = Item::Kind::Character;
        item.node = text;
        item.from = start.offset;
        item.to = end.offset;
        if (mContent.rendering().preservesSpace(*text)) continue;
        if (isBlank(item.unit())) {
            const Item previous = mContent.before(start);
            const Item next = mContent.pastBlanksAfter(end);
            const bool collapses = previous.isLineEdge() || mContent.isCollapsible(previous) || next.isLineEdge();
            if (!collapses) continue;
            // A plain blank in front that was hidden itself would show now as well.
            mTracker.replaceText(*text, item.from, 1, QString(QChar(noBreakSpace)));
            dropHidden(Position(text, item.to));
        } else if (isNoBreak(item) && !wouldCollapse(item)) {
            mTracker.replaceText(*text, item.from, 1, QStringLiteral(" "));
        }
    }
}

QString Blanks::fitted(const QString &text, const Position &left, const Position &right) const
{
    const Item previous = mContent.visibleBefore(left), next = mContent.visibleAfter(right);
    bool collapsesBehind = previous.isLineEdge() || mContent.isCollapsible(previous);
    const bool endsBefore = next.isLineEdge() || mContent.isCollapsible(next);
    QString out = text;
    for (qsizetype i = 0; i < out.size(); ++i) {
        if (out[i] != u' ') {
            collapsesBehind = false;
            continue;
        }
        const bool last = i + 1 == out.size();
        if (collapsesBehind || (last && endsBefore)) {
            out[i] = QChar(noBreakSpace);
            collapsesBehind = false;
        } else {
            collapsesBehind = true;
        }
    }
    return out;
}

} // namespace editing
