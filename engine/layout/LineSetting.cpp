// SPDX-License-Identifier: GPL-3.0-or-later
// The half of line layout that sets a filled line: heights, alignment, order, fragments.
#include "engine/layout/BoxStyle.h"
#include "engine/layout/InlineLayout.h"

namespace layout {

void InlineLayout::trimEnd()
{
    for (Piece &piece : mPieces) {
        const InlineItem &item = mContent.items[piece.item];
        if (item.type != ItemType::Text || mContent.text[piece.start] == QLatin1Char('\t')) continue;
        piece.width = widthOf(item, piece.start, piece.end);
        if (piece.hyphen) {
            const Font &font = fontOf(item.box->style());
            piece.width += Unit::ceil(font.face().advance(font.face().glyph('-')) * font.scale());
        }
    }
    // Blanks at the end hang: they take no room, whatever tags stand among them.
    for (auto it = mPieces.rbegin(); it != mPieces.rend(); ++it) {
        const InlineItem &item = mContent.items[it->item];
        if (item.type == ItemType::Break || item.type == ItemType::Open || item.type == ItemType::Close) continue;
        if (item.type != ItemType::Text) break;
        const css::ComputedStyle &style = item.box->style();
        const uint32_t visible = visibleEnd(item, it->start, it->end);
        if (visible == it->end) break;
        Unit width = widthOf(item, it->start, visible);
        if (!collapsesBlanks(style) && (mForced || isLastLine())) { // at such an end they hang only where there is no room
            Unit others;
            for (const Piece &piece : mPieces)
                if (&piece != &*it) others += piece.width;
            width = std::max(width, std::min(it->width, mRight - mLeft - others));
        }
        it->hanging = it->width - width;
        if (collapsesBlanks(style)) it->end = visible;
        it->width = width;
        if (visible > it->start) break;
    }
    mUsed = mFirstLine ? textIndentOf(mStyle, mInner.width) : Unit();
    for (const Piece &piece : mPieces) mUsed += piece.width;
}

void InlineLayout::align(State &state, const State &parent)
{
    const css::ComputedStyle &style = *state.style;
    const Font &parentFont = fontOf(*parent.style);
    const Unit parentSize = Unit::from(parentFont.size());
    state.group = parent.group;
    state.baseline = parent.baseline;
    const VerticalAlign align = verticalAlignOf(style);
    switch (align.kind) {
    case VerticalAlignKind::Baseline:
        break;
    case VerticalAlignKind::Sub:
        state.baseline += parentSize / 5 + Unit::px(1);
        break;
    case VerticalAlignKind::Super:
        state.baseline -= parentSize / 3 + Unit::px(1);
        break;
    case VerticalAlignKind::Middle:
        state.baseline += (state.ascent - state.descent) / 2 - Unit::round(parentFont.xHeight() / 2);
        break;
    case VerticalAlignKind::BaselineMiddle:
        state.baseline += (state.ascent - state.descent) / 2;
        break;
    case VerticalAlignKind::TextTop:
        state.baseline += state.ascent - parent.textAscent;
        break;
    case VerticalAlignKind::TextBottom:
        state.baseline += parent.textDescent - state.descent;
        break;
    case VerticalAlignKind::Length:
        state.baseline -= align.percent != 0 ? Unit::from(lineHeightOf(style).toDouble() * align.percent / 100) : align.length;
        break;
    case VerticalAlignKind::Top:
    case VerticalAlignKind::Bottom:
        state.group = int(mGroups.size());
        state.baseline = {};
        mGroups.emplace_back();
        mGroups.back().atTop = align.kind == VerticalAlignKind::Top;
        mGroups.back().atBottom = !mGroups.back().atTop;
        break;
    }
}

namespace {

void setMetrics(const css::ComputedStyle &style, Unit &ascent, Unit &descent, Unit &textAscent, Unit &textDescent)
{
    const Font &font = fontOf(style);
    textAscent = font.ascent();
    textDescent = font.descent();
    const Unit height = lineHeightOf(style);
    const Unit half = Unit::fromRaw((int64_t(height.raw) - textAscent.raw - textDescent.raw) >> 1);
    ascent = textAscent + Unit::px(half.floored());
    descent = height - ascent;
}

} // namespace

Unit lineAscentOf(const css::ComputedStyle &style)
{
    Unit ascent, descent, textAscent, textDescent;
    setMetrics(style, ascent, descent, textAscent, textDescent);
    return ascent;
}

void InlineLayout::count(State &state)
{
    if (state.counted) return;
    state.counted = true;
    markMeasured();
    mGroups[std::size_t(state.group)].add(state.baseline - state.ascent, state.baseline + state.descent);
}

// An element has a height as soon as anything in it has one.
void InlineLayout::markMeasured()
{
    for (const int open : mStack) mStates[std::size_t(open)].measured = true;
}

void InlineLayout::pushState(InlineBox &box)
{
    State state;
    state.box = &box;
    state.style = &box.style();
    setMetrics(*state.style, state.ascent, state.descent, state.textAscent, state.textDescent);
    align(state, mStates[std::size_t(mStack.back())]);
    mStack.push_back(int(mStates.size()));
    mStates.push_back(state);
    if (!mEngine.lineHeightQuirk()) count(mStates.back());
}

void InlineLayout::openStates()
{
    mStates.clear();
    mStack.clear();
    mGroups.assign(1, {});
    mPlaced.clear();
    State root;
    root.style = &mStyle;
    setMetrics(mStyle, root.ascent, root.descent, root.textAscent, root.textDescent);
    mStates.push_back(root);
    mStack.push_back(0);
    const bool heldOpen = mContent.items.empty();
    if (mReal && (!mEngine.lineHeightQuirk() || heldOpen)) count(mStates[0]);
    for (InlineBox *box : mOpen) pushState(*box);
}

void InlineLayout::measureText(const Piece &piece, State &state)
{
    const InlineItem &item = mContent.items[piece.item];
    // COMPAT: where empty elements give a line no height, neither do blanks that collapsed, nor a line break behind content.
    if (item.type == ItemType::Text ? piece.start == piece.end : state.measured) return;
    count(state);
    if (item.type != ItemType::Text || item.simple || !lineHeightIsNormal(*state.style)) return;
    // Fonts that stand in for missing characters make the line as high as they need.
    const Font &font = fontOf(*state.style);
    for (const GlyphSpan &span : mContent.shapes[std::size_t(item.shaped)].spans) {
        if (span.face == &font.face()) continue;
        const Font other(*span.face, font.size(), {});
        const Unit half = Unit::fromRaw((int64_t(other.lineSpacing().raw) - other.height().raw) >> 1);
        const Unit ascent = other.ascent() + Unit::px(half.floored());
        mGroups[std::size_t(state.group)].add(state.baseline - ascent, state.baseline + other.lineSpacing() - ascent);
    }
}

void InlineLayout::measureAtomic(const Piece &piece, const State &parent)
{
    const BlockBox &box = *mContent.items[piece.item].box->asBlock();
    const Unit height = box.marginTop + box.height + box.marginBottom;
    State state;
    state.style = &box.style();
    const std::optional<Unit> baseline = atomicBaseline(mEngine, box);
    state.ascent = baseline ? box.marginTop + *baseline : height;
    state.descent = height - state.ascent;
    state.textAscent = state.ascent;
    state.textDescent = state.descent;
    if (box.anonymous) { // a picture in generated text: its element is aligned already
        state.group = parent.group;
        state.baseline = parent.baseline;
    } else {
        align(state, parent);
    }
    markMeasured();
    mGroups[std::size_t(state.group)].add(state.baseline - state.ascent, state.baseline + state.descent);
    mPlaced.push_back({std::size_t(&piece - mPieces.data()), state.baseline - state.ascent, height, state.group, 0});
}

void InlineLayout::measure()
{
    trimEnd();
    openStates();
    if (!mReal) mGroups[0] = {};
    // A picture in front of an item stands on its first line, and so does any other marker, which is as high as the item's text.
    const MarkerData *marker = mFirstLine && mBlock.rare ? mBlock.rare->marker.get() : nullptr;
    if (marker && !marker->inside && mReal) {
        count(mStates[0]);
        if (marker->style) {
            State own;
            setMetrics(*marker->style, own.ascent, own.descent, own.textAscent, own.textDescent);
            mGroups[0].add(-own.ascent, own.descent);
        }
    }
    if (marker && marker->image && !marker->inside && mReal) mGroups[0].add(-marker->imageSize.height, Unit());
    for (const Piece &piece : mPieces) {
        const InlineItem &item = mContent.items[piece.item];
        switch (item.type) {
        case ItemType::Open:
            // COMPAT: a line of a list's item on which an element begins is as high as the item's text, in every mode.
            if (mReal && mBlock.isListItem) count(mStates[0]);
            pushState(static_cast<InlineBox &>(*item.box));
            if (hasInlineEdges(static_cast<InlineBox &>(*item.box))) count(mStates.back());
            break;
        case ItemType::Close:
            if (mStack.size() > 1) mStack.pop_back();
            break;
        case ItemType::Text:
        case ItemType::Break:
            measureText(piece, mStates[std::size_t(mStack.back())]);
            break;
        case ItemType::Atomic:
            measureAtomic(piece, mStates[std::size_t(mStack.back())]);
            break;
        default:
            break;
        }
    }
    Group &line = mGroups[0];
    if (line.empty()) line.top = line.bottom = Unit();
    if (!mReal) line = {Unit(), Unit(), Unit(), false, false};
    for (std::size_t i = 1; i < mGroups.size(); ++i) {
        const Group &group = mGroups[i];
        if (group.empty() || !mReal) continue;
        const Unit height = group.bottom - group.top;
        if (group.atTop)
            line.bottom = std::max(line.bottom, line.top + height);
        else
            line.top = std::min(line.top, line.bottom - height);
    }
    for (std::size_t i = 1; i < mGroups.size(); ++i) {
        Group &group = mGroups[i];
        if (!group.empty()) group.shift = group.atTop ? line.top - group.top : line.bottom - group.bottom;
    }
}

bool InlineLayout::isLastLine() const
{
    return mForced || mItem >= mContent.items.size() || mAtBlock;
}

void InlineLayout::justify(Unit room)
{
    if (room.raw <= 0) return;
    std::vector<int> blanks(mPieces.size());
    int gaps = 0;
    bool atEnd = true; // only there blanks hang; those in front of an element's tag take their share
    for (std::size_t i = mPieces.size(); i-- > 0;) {
        const Piece &piece = mPieces[i];
        const InlineItem &item = mContent.items[piece.item];
        if (item.type == ItemType::Open || item.type == ItemType::Close || item.type == ItemType::Break) continue;
        const bool isText = item.type == ItemType::Text;
        const uint32_t end = isText && atEnd ? visibleEnd(item, piece.start, piece.end) : piece.end;
        atEnd = atEnd && isText && end == piece.start;
        for (uint32_t at = piece.start; isText && at < end; ++at) blanks[i] += isJustified(mContent.text[at]);
        gaps += blanks[i];
    }
    if (!gaps) return;
    const double each = room.toDouble() / gaps;
    for (std::size_t i = 0; i < mPieces.size(); ++i) {
        if (!blanks[i]) continue;
        mPieces[i].wordSpacing = float(each);
        mPieces[i].width += Unit::from(each * blanks[i]);
    }
}

Unit InlineLayout::lineOffset(Unit room) const
{
    if (room.raw <= 0) return isRightToLeft(mStyle) ? room : Unit();
    switch (textAlignOf(mStyle, isLastLine())) {
    case LineAlign::Center:
        return room / 2;
    case LineAlign::Right:
        return room;
    default:
        return {};
    }
}

// Gives each piece its place from left to right: as it stands, or turned around by direction.
void InlineLayout::order()
{
    Unit x;
    const bool rightToLeft = isRightToLeft(mStyle);
    if (!mContent.bidi && !rightToLeft) {
        x = mFirstLine ? textIndentOf(mStyle, mInner.width) : Unit();
        for (Piece &piece : mPieces) {
            piece.x = x;
            x += piece.width;
        }
        return;
    }
    orderByDirection();
}

void InlineLayout::setAtomic(Fragment &fragment, Unit lineTop)
{
    BlockBox &box = *fragment.box->asBlock();
    box.x = fragment.x + box.marginLeft;
    box.gap = lineTop + fragment.y + box.marginTop;
    fragment.x = box.x;
    fragment.y += box.marginTop;
    fragment.width = box.width;
    fragment.height = box.height;
}

void InlineLayout::emitLine(Unit top)
{
    Unit room = mRight - mLeft - mUsed;
    if (textAlignOf(mStyle, isLastLine()) == LineAlign::Justify) {
        justify(room);
        room = {};
    }
    order();
    const Group &group = mGroups[0];
    Line line;
    line.top = mBlock.contentTop() + top;
    line.height = group.bottom - group.top;
    line.baseline = -group.top;
    line.forced = mForced;
    line.left = mLeft + lineOffset(room);
    line.width = mUsed;
    line.fragment = uint32_t(mContent.fragments.size());
    line.start = mContent.lines.empty() ? 0 : mContent.lines.back().end;
    line.end = mItem >= mContent.items.size() ? uint32_t(mContent.text.size()) : std::max(line.start, std::min(mOffset, uint32_t(mContent.text.size())));
    if (!mPieces.empty()) line.end = std::max(line.end, mPieces.back().end);

    mStack.assign(1, 0);
    std::size_t nextState = 1, nextPlaced = 0;
    const auto beginBox = [&](bool first, Unit x) {
        State &state = mStates[nextState];
        state.firstEdge = first;
        state.fragment = mContent.fragments.size();
        Fragment fragment;
        fragment.type = FragmentType::Box;
        fragment.box = state.box;
        fragment.x = x;
        const Edges frame = inlineFrame(*state.box, mInner.width);
        fragment.y = line.baseline + state.baseline + mGroups[std::size_t(state.group)].shift - state.textAscent - frame.top;
        fragment.height = state.textAscent + state.textDescent + frame.vertical();
        if (!mReal) fragment.y = fragment.height = {}; // a line without content has no height at all
        fragment.first = first;
        mContent.fragments.push_back(fragment);
        mStack.push_back(int(nextState++));
    };
    const auto cover = [&](Unit from, Unit to) {
        for (std::size_t i = 1; i < mStack.size(); ++i) {
            State &state = mStates[std::size_t(mStack[i])];
            state.left = std::min(state.left, from);
            state.right = std::max(state.right, to);
        }
    };
    const auto endBox = [&](State &state, uint32_t end) {
        Fragment &fragment = mContent.fragments[state.fragment];
        if (state.left <= state.right) {
            fragment.x = state.left;
            fragment.width = state.right - state.left;
        }
        fragment.last = state.lastEdge;
        fragment.end = end;
    };
    const uint32_t startOffset = line.start;
    for (std::size_t i = 0; i < mOpen.size(); ++i) {
        beginBox(false, line.left);
        mContent.fragments.back().start = startOffset;
    }
    for (std::size_t i = 0; i < mPieces.size(); ++i) {
        const Piece &piece = mPieces[i];
        const InlineItem &item = mContent.items[piece.item];
        const Unit x = line.left + piece.x;
        if (item.type == ItemType::Open) {
            auto &box = static_cast<InlineBox &>(*item.box);
            const Edges margin = inlineMargins(box, mInner.width);
            beginBox(true, x + margin.left);
            mContent.fragments.back().start = item.start;
            mOpen.push_back(&box);
            const Unit from = x + (isRightToLeft(box.style()) ? Unit() : margin.left);
            const Unit to = x + piece.width - (isRightToLeft(box.style()) ? margin.right : Unit());
            cover(std::min(from, to), std::max(from, to));
            if (mStack.size() > 2) { // margins belong to what stands around
                for (std::size_t k = 1; k + 1 < mStack.size(); ++k) {
                    State &outer = mStates[std::size_t(mStack[k])];
                    outer.left = std::min(outer.left, x);
                    outer.right = std::max(outer.right, x + piece.width);
                }
            }
        } else if (item.type == ItemType::Close) {
            auto &box = static_cast<InlineBox &>(*item.box);
            const Edges margin = inlineMargins(box, mInner.width);
            State &state = mStates[std::size_t(mStack.back())];
            const bool turned = isRightToLeft(box.style());
            const Unit from = x + (turned ? margin.left : Unit()), to = x + piece.width - (turned ? Unit() : margin.right);
            state.left = std::min(state.left, std::min(from, to));
            state.right = std::max(state.right, to);
            state.lastEdge = true;
            endBox(state, item.end);
            mStack.pop_back();
            cover(x, x + piece.width);
            if (!mOpen.empty()) mOpen.pop_back();
        } else {
            Fragment fragment;
            fragment.box = item.box;
            fragment.item = piece.item;
            fragment.start = piece.start;
            fragment.end = piece.end;
            fragment.x = x;
            fragment.width = piece.width;
            fragment.level = piece.level;
            fragment.hyphen = piece.hyphen;
            fragment.wordSpacing = piece.wordSpacing;
            const State &state = mStates[std::size_t(mStack.back())];
            cover(x, x + piece.width);
            if (item.type == ItemType::Atomic) {
                fragment.type = FragmentType::Atomic;
                const Placed &placed = mPlaced[nextPlaced++];
                fragment.y = line.baseline + placed.top + mGroups[std::size_t(placed.group)].shift;
                setAtomic(fragment, line.top);
            } else {
                fragment.y = line.baseline + state.baseline + mGroups[std::size_t(state.group)].shift - state.textAscent;
                fragment.height = state.textAscent + state.textDescent;
                // COMPAT: where empty elements give a line no height, a line break that found one, but no text of its own
                // element, is an empty rectangle on the baseline.
                if (item.type == ItemType::Break && !state.counted) {
                    fragment.y += state.textAscent;
                    fragment.height = {};
                }
            }
            mContent.fragments.push_back(fragment);
        }
    }
    while (mStack.size() > 1) {
        endBox(mStates[std::size_t(mStack.back())], line.end);
        mStack.pop_back();
    }
    line.fragmentCount = uint32_t(mContent.fragments.size()) - line.fragment;
    mContent.lines.push_back(line);
}

} // namespace layout
