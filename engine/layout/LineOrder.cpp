// SPDX-License-Identifier: GPL-3.0-or-later
// Where the pieces of a line stand that holds text of both directions.
#include "engine/layout/BoxStyle.h"
#include "engine/layout/InlineLayout.h"

namespace layout {

namespace {

constexpr std::size_t none = SIZE_MAX;

// An inline element on the line. Its edges stand around all that shows of it, wherever its direction put that.
struct OrderedElement {
    std::size_t parent = none;
    bool turned = false;
    std::size_t open = none, close = none; // pieces: its edges on this line
    std::size_t first = none, last = none; // of its content, from left to right
    bool empty = true;
    std::size_t leftEdge() const { return turned ? close : open; }
    std::size_t rightEdge() const { return turned ? open : close; }
};

// A piece that is moved as one: text, an atomic box, or the place of an element without any.
struct OrderedContent {
    std::size_t piece = 0, element = none;
    bool place = false;
    uint8_t level = 0;
};

// UAX 9, L2: from the highest level down to the lowest odd one, what has at least that level is turned around.
void turnAround(std::vector<OrderedContent> &content)
{
    uint8_t highest = 0;
    for (const OrderedContent &each : content) highest = std::max(highest, each.level);
    for (uint8_t level = highest; level >= 1; --level)
        for (std::size_t i = 0; i < content.size();) {
            if (content[i].level < level) {
                ++i;
                continue;
            }
            std::size_t end = i;
            while (end < content.size() && content[end].level >= level) ++end;
            std::reverse(content.begin() + std::ptrdiff_t(i), content.begin() + std::ptrdiff_t(end));
            i = end;
        }
}

} // namespace

void InlineLayout::orderByDirection()
{
    std::vector<OrderedElement> elements;
    std::vector<OrderedContent> content;
    std::size_t current = none;
    const auto enter = [&](const InlineBox &box, std::size_t open) {
        elements.push_back({current, isRightToLeft(box.style()), open});
        current = elements.size() - 1;
    };
    const auto fillUp = [&](std::size_t element) {
        for (; element != none && elements[element].empty; element = elements[element].parent) elements[element].empty = false;
    };
    const auto leave = [&](std::size_t close) {
        OrderedElement &element = elements[current];
        element.close = close;
        if (element.empty) {
            const std::size_t edge = element.open != none ? element.open : close;
            content.push_back({edge, current, true, edge != none ? mPieces[edge].level : uint8_t(isRightToLeft(mStyle))});
            fillUp(current);
        }
        current = element.parent;
    };
    for (const InlineBox *box : mOpen) enter(*box, none);
    for (std::size_t i = 0; i < mPieces.size(); ++i) {
        const InlineItem &item = mContent.items[mPieces[i].item];
        if (item.type == ItemType::Open) {
            enter(static_cast<const InlineBox &>(*item.box), i);
        } else if (item.type == ItemType::Close) {
            if (current != none) leave(i);
        } else {
            content.push_back({i, current, false, mPieces[i].level});
            fillUp(current);
        }
    }
    while (current != none) leave(none);
    turnAround(content);
    for (std::size_t i = 0; i < content.size(); ++i)
        for (std::size_t e = content[i].element; e != none; e = elements[e].parent) {
            if (elements[e].first == none) elements[e].first = i;
            elements[e].last = i;
        }
    Unit x = mFirstLine && !isRightToLeft(mStyle) ? textIndentOf(mStyle, mInner.width) : Unit();
    const auto place = [&](std::size_t piece) {
        if (piece == none) return;
        mPieces[piece].x = x;
        x += mPieces[piece].width;
    };
    std::vector<std::size_t> around;
    for (std::size_t i = 0; i < content.size(); ++i) {
        around.clear();
        for (std::size_t e = content[i].element; e != none; e = elements[e].parent) around.push_back(e);
        for (auto e = around.rbegin(); e != around.rend(); ++e)
            if (elements[*e].first == i) place(elements[*e].leftEdge());
        if (!content[i].place) place(content[i].piece);
        for (const std::size_t e : around)
            if (elements[e].last == i) place(elements[e].rightEdge());
    }
}

} // namespace layout
