// SPDX-License-Identifier: GPL-3.0-or-later
// How narrow and how wide content would like to be: for floats, inline blocks, cells, positioned boxes.
#include "engine/layout/BoxStyle.h"
#include "engine/layout/BreakFinder.h"
#include "engine/layout/Engine.h"
#include "engine/layout/FlexLayout.h"
#include "engine/layout/GridLayout.h"
#include "engine/layout/TableLayout.h"

namespace layout {

PreferredWidths Engine::preferredWidths(BlockBox &box)
{
    if (box.widthsValid) return box.preferred;
    resolveEdges(box, Unit());
    PreferredWidths widths;
    if (box.unseen) {
        // It asks for no room.
    } else if (box.isReplaced()) {
        const bool forced = box.heightForced;
        box.heightForced = false; // what layout made of it says nothing about what it would like
        // Per cents of a width that isn't known: as a limit they are none, but let it become as narrow as can be.
        const auto &style = box.style().box();
        const bool limited = style.maxWidth.hasPercent() && !widthIsPercent(box) && !style.minWidth.hasPercent();
        const bool open = limited || (widthIsPercent(box) && !style.minWidth.hasPercent());
        const Size size = replacedSize(box, {open ? unknownWidth : Unit(), Unit::fromRaw(-1)});
        box.heightForced = forced;
        widths = {size.width, size.width};
        if (limited || widthIsPercent(box)) widths.min = Unit();
    } else if (box.isTable()) {
        widths = TableLayout::preferred(*this, box);
    } else {
        widths = box.mode == ChildLayout::Flex   ? FlexLayout::preferred(*this, box)
                 : box.mode == ChildLayout::Grid ? GridLayout::preferred(*this, box)
                 : box.inlineContent ? inlinePreferredWidths(box) : blockPreferredWidths(box);
        const Unit frame = box.frame().horizontal();
        widths.min += frame;
        widths.max += frame;
    }
    widths.max = std::max(widths.max, widths.min);
    box.preferred = widths;
    box.widthsValid = true;
    return widths;
}

// As wide as its style says by its content, or else as wide as it likes and there is room.
Unit Engine::contentWidthOf(BlockBox &box, Unit available)
{
    const PreferredWidths widths = preferredWidths(box);
    const auto kind = box.anonymous ? css::Length::Kind::Auto : box.style().box().width.kind;
    if (kind == css::Length::Kind::MinContent) return widths.min;
    if (kind == css::Length::Kind::MaxContent) return widths.max;
    return std::min(std::max(widths.min, available), widths.max);
}

// With margins, and with what the child's own style says.
PreferredWidths Engine::outerPreferredWidths(BlockBox &child)
{
    PreferredWidths widths = preferredWidths(child);
    if (!child.isTable()) {
        if (const auto given = fixedWidth(child); given && !child.isReplaced()) widths = {*given, *given};
        const auto [low, high] = fixedWidthLimits(child);
        widths.min = std::max(std::min(widths.min, high), low);
        widths.max = std::max(std::min(widths.max, high), low);
    }
    const Edges margin = marginsOf(child.style(), Unit());
    if (!child.anonymous) {
        widths.min += margin.horizontal();
        widths.max += margin.horizontal();
    }
    return widths;
}

PreferredWidths Engine::blockPreferredWidths(BlockBox &box)
{
    PreferredWidths widths;
    Unit leftFloats, rightFloats;
    for (Box *each = box.firstChild(); each; each = each->next()) {
        BlockBox *child = each->asBlock();
        if (!child || child->positioned) continue;
        const PreferredWidths outer = outerPreferredWidths(*child);
        widths.min = std::max(widths.min, outer.min);
        if (clearOf(*child)) {
            widths.max = std::max(widths.max, leftFloats + rightFloats);
            leftFloats = rightFloats = Unit();
        }
        if (child->floating) {
            (floatsLeft(*child) ? leftFloats : rightFloats) += outer.max;
        } else if (avoidsFloats(*child)) {
            widths.max = std::max(widths.max, leftFloats + rightFloats + outer.max);
            leftFloats = rightFloats = Unit();
        } else {
            widths.max = std::max({widths.max, outer.max, leftFloats + rightFloats});
            leftFloats = rightFloats = Unit();
        }
    }
    widths.max = std::max(widths.max, leftFloats + rightFloats);
    return widths;
}

namespace {

struct LineSums {
    PreferredWidths widths;
    Unit line, word, blanks, wordBlanks, floats; // blanks: those at the end, which would hang
    void breakHere()
    {
        widths.min = std::max(widths.min, word - wordBlanks);
        word = wordBlanks = Unit();
    }
    void endLine()
    {
        breakHere();
        widths.max = std::max(widths.max, line - blanks);
        line = blanks = Unit();
    }
    void add(Unit width)
    {
        line += width;
        word += width;
        if (width.raw) blanks = wordBlanks = Unit();
    }
};

void addText(LineSums &sums, const InlineContent &content, const InlineItem &item, const BreakFinder &finder)
{
    const css::ComputedStyle &style = item.box->style();
    const Font &font = fontOf(style);
    const Spacing spacing = spacingOf(style);
    const bool wraps = wrapsLines(style), hangs = hangsBlanks(style);
    const BreakFinder::Words words = wordBreakOf(style);
    const auto width = [&](uint32_t from, uint32_t to) {
        if (to <= from) return Unit();
        if (item.simple) return Unit::ceil((to == item.end ? double(item.tail) : 0) + TextShaper::simpleWidth(QStringView(content.text).mid(from, to - from), font, spacing));
        const ShapedText &shaped = content.shapes[std::size_t(item.shaped)];
        return Unit::ceil(std::abs(double(shaped.edges[to - item.start]) - shaped.edges[from - item.start]));
    };
    const Unit tab = Unit::from(tabWidthOf(style));
    Unit before = sums.line; // the whole stretch is measured at once, as on a line
    uint32_t lineStart = item.start;
    for (uint32_t at = item.start; at < item.end;) {
        if (!hangs && content.text[at] == QLatin1Char('\t') && tab.raw > 0) {
            Unit step = tab - Unit::fromRaw(sums.line.raw % tab.raw);
            sums.add(step);
            before = sums.line;
            lineStart = ++at;
            continue;
        }
        if (wraps && finder.allowed(at, words)) sums.breakHere();
        uint32_t end = at + 1;
        while (end < item.end && !(wraps && finder.allowed(end, words)) && (hangs || content.text[end] != QLatin1Char('\t'))) ++end;
        uint32_t visible = end;
        if (hangs)
            while (visible > at && (content.text[visible - 1] == QLatin1Char(' ') || content.text[visible - 1] == QLatin1Char('\t'))) --visible;
        const Unit shown = width(at, visible);
        const Unit all = visible == end ? shown : width(at, end);
        sums.add(shown);
        if (visible < end) {
            sums.line += all - shown;
            sums.blanks = visible > at ? all - shown : sums.blanks + all;
            if (!wraps) {
                sums.word += all - shown;
                sums.wordBlanks = visible > at ? all - shown : sums.wordBlanks + all;
            }
        }
        if (breaksAnywhere(style)) sums.word = std::min(sums.word, Unit::ceil(font.size()));
        at = end;
    }
    if (item.simple && item.end > lineStart) {
        // The stretch as a whole, measured and rounded as a line measures it.
        uint32_t visible = item.end;
        if (hangs)
            while (visible > lineStart && content.text[visible - 1] == QLatin1Char(' ')) --visible;
        const Unit shown = width(lineStart, visible), all = width(lineStart, item.end);
        sums.line = before + all;
        if (visible > lineStart) sums.blanks = all - shown;
    }
    if (wraps && finder.allowed(item.end, words) && item.end < uint32_t(content.text.size())) sums.breakHere();
}

} // namespace

PreferredWidths Engine::inlinePreferredWidths(BlockBox &box)
{
    prepareInline(box);
    const InlineContent &content = *box.inlineContent;
    const BreakFinder finder(content.text);
    LineSums sums;
    const Unit indent = textIndentOf(box.style(), Unit());
    sums.add(indent);
    const bool stickyImages = quirks() && box.isCell();
    for (const InlineItem &item : content.items) {
        switch (item.type) {
        case ItemType::Text:
            addText(sums, content, item, finder);
            break;
        case ItemType::Open:
        case ItemType::Close: {
            const auto &inlineBox = static_cast<const InlineBox &>(*item.box);
            const Edges edges = inlineMargins(inlineBox, Unit()) + inlineFrame(inlineBox, Unit());
            const Unit blanks = sums.blanks;
            sums.add((item.type == ItemType::Open) != isRightToLeft(inlineBox.style()) ? edges.left : edges.right);
            if (!edges.horizontal()) sums.blanks = blanks;
            break;
        }
        case ItemType::Atomic: {
            const PreferredWidths outer = outerPreferredWidths(*item.box->asBlock());
            const bool wraps = wrapsLines(item.box->parent()->style()) && !(stickyImages && item.box->isReplaced());
            if (wraps && finder.allowed(item.start)) sums.breakHere();
            sums.line += outer.max;
            sums.word += outer.min;
            sums.blanks = sums.wordBlanks = Unit();
            if (wraps && finder.allowed(item.end)) sums.breakHere();
            break;
        }
        case ItemType::Float: {
            const PreferredWidths outer = outerPreferredWidths(*item.box->asBlock());
            sums.widths.min = std::max(sums.widths.min, outer.min);
            sums.floats += outer.max;
            break;
        }
        case ItemType::Break:
            sums.widths.max = std::max(sums.widths.max, sums.floats + sums.line - sums.blanks);
            sums.endLine();
            break;
        case ItemType::Block: {
            sums.endLine();
            const PreferredWidths outer = outerPreferredWidths(*item.box->asBlock());
            sums.widths.min = std::max(sums.widths.min, outer.min);
            sums.widths.max = std::max(sums.widths.max, outer.max);
            break;
        }
        default:
            break;
        }
    }
    const Unit last = sums.line - sums.blanks;
    sums.endLine();
    sums.widths.max = std::max(sums.widths.max, sums.floats + last);
    return sums.widths;
}

} // namespace layout
