// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/InlineLayout.h"

#include "engine/layout/BoxStyle.h"

namespace layout {

namespace {

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

} // namespace

InlineLayout::InlineLayout(Engine &engine, BlockBox &block, const Constraint &inner, FloatArea area)
    : mEngine(engine), mBlock(block), mContent(*block.inlineContent), mInner(inner), mArea(area), mFinder(mContent.text),
      mStyle(block.style())
{
}

void InlineLayout::run(FlowState &state)
{
    mContent.lines.clear();
    mContent.fragments.clear();
    mBlock.linesShift = mBlock.shift;
    mFirstLine = true;
    while (mItem < mContent.items.size()) {
        // Between blocks there may be nothing but elements that open and close: they get no line of their own.
        if (mContent.items[mItem].type == ItemType::Block)
            blockLine(state);
        else
            textLine(state);
    }
    if (mContent.lines.empty() && mContent.hasContent) textLine(state);
    const bool real = mContent.hasContent;
    mBlock.hasLines = real;
    if (!mContent.lines.empty()) {
        const auto isText = [](const Line &line) { return !line.block; };
        const auto first = std::find_if(mContent.lines.begin(), mContent.lines.end(), isText);
        const auto last = std::find_if(mContent.lines.rbegin(), mContent.lines.rend(), isText);
        if (first != mContent.lines.end()) mContent.firstBaseline = first->top + first->baseline;
        if (last != mContent.lines.rend()) mContent.lastBaseline = last->top + last->baseline;
    }
    mContent.lines.shrink_to_fit();
    mContent.fragments.shrink_to_fit();
}

void InlineLayout::resolveSpan(Unit y, Unit height)
{
    const Unit left = mBlock.contentLeft(), right = left + mInner.width;
    mLeft = left;
    mRight = right;
    mNarrowed = false;
    if (!mArea.context || mArea.context->empty()) return;
    const Unit originX = mArea.origin.x, originY = mArea.origin.y + mBlock.contentTop();
    const auto span = mArea.context->spanAt(originY + y, height, originX + left, originX + right);
    mLeft = span.left - originX;
    mRight = span.right - originX;
    mNarrowed = mLeft > left || mRight < right;
}

bool InlineLayout::moveDown(Unit &y)
{
    if (!mArea.context) return false;
    const Unit origin = mArea.origin.y + mBlock.contentTop();
    const Unit next = mArea.context->nextEdge(origin + y) - origin;
    if (next <= y) return false;
    y = next;
    return true;
}

void InlineLayout::textLine(FlowState &state)
{
    const bool real = mReal = mContent.hasContent && !(mContent.hasBlocks && stretchIsEmpty());
    if (real && state.strut != MarginStrut{}) {
        state.y += state.strut.sum();
        state.strut = {};
    }
    Unit y = state.y + (real ? Unit() : state.strut.sum());
    const uint32_t item = mItem, offset = mOffset;
    Unit height = lineHeightOf(mStyle);
    ++mEngine.work().linesBroken;
    for (int attempt = 0; attempt < 200; ++attempt) {
        mItem = item;
        mOffset = offset;
        mLineTop = y;
        resolveSpan(y, height);
        if (attempt > 190) { // floats without end: the line overlaps them
            mNarrowed = false;
            mLeft = mBlock.contentLeft();
            mRight = mLeft + mInner.width;
        }
        fill();
        if (mStuck && moveDown(y)) continue;
        measure();
        const Group &line = mGroups[0];
        const Unit got = line.empty() ? Unit() : line.bottom - line.top;
        if (mNarrowed || !mArea.context || !mArea.context->activeBelow(mArea.origin.y + mBlock.contentTop() + y)) break;
        if (got <= height) break;
        // A tall line may meet a float that its first guess missed.
        const Unit left = mLeft, right = mRight;
        resolveSpan(y, got);
        if (mLeft == left && mRight == right) break;
        height = got;
    }
    emitLine(y);
    const Line &line = mContent.lines.back();
    if (real && line.height.raw) {
        state.y = y + line.height;
        state.atTop = false;
    }
    // Floats that found no room beside the line stand below it.
    for (const auto &[index, unused] : mLateFloats)
        mEngine.placeFloat(mBlock, *mContent.items[index].box->asBlock(), state.y, mInner, mArea);
    mLateFloats.clear();
    clearBehindBreak(state);
    mFirstLine = false;
}

// A line break may ask for what follows to stand below the floats.
void InlineLayout::clearBehindBreak(FlowState &state)
{
    if (!mForced || mPieces.empty() || !mArea.context) return;
    const auto isBreak = [this](const Piece &piece) { return mContent.items[piece.item].type == ItemType::Break; };
    const auto last = std::find_if(mPieces.rbegin(), mPieces.rend(), isBreak);
    if (last == mPieces.rend()) return;
    const Box &lineBreak = *mContent.items[last->item].box;
    if (lineBreak.kind() != BoxKind::LineBreak) return;
    const auto side = clearOf(lineBreak);
    if (!side) return;
    state.y = std::max(state.y, mArea.context->clearance(*side) - mArea.origin.y - mBlock.contentTop());
}

// Beside a block there may be nothing but ends and beginnings of elements: that makes no line.
bool InlineLayout::stretchIsEmpty() const
{
    for (uint32_t i = mItem; i < mContent.items.size(); ++i) {
        const InlineItem &item = mContent.items[i];
        if (item.type == ItemType::Block) break;
        if (item.type == ItemType::Text || item.type == ItemType::Break || item.type == ItemType::Atomic) return false;
        const bool tag = item.type == ItemType::Open || item.type == ItemType::Close;
        if (tag && hasInlineEdges(static_cast<const InlineBox &>(*item.box))) return false;
    }
    return true;
}

void InlineLayout::blockLine(FlowState &state)
{
    BlockBox &child = *mContent.items[mItem].box->asBlock();
    mEngine.placeChild(mBlock, child, state, mInner, mArea, -mBlock.contentTop());
    Line line;
    line.top = child.gap;
    line.height = child.height;
    line.block = &child;
    line.start = mContent.items[mItem].start;
    line.end = mContent.items[mItem].end;
    line.left = child.x;
    line.width = child.width;
    line.fragment = uint32_t(mContent.fragments.size());
    // The elements around it are as high as the block, and as wide as there is room.
    for (InlineBox *box : mOpen) {
        Fragment fragment;
        fragment.type = FragmentType::Box;
        fragment.box = box;
        fragment.start = line.start;
        fragment.end = line.end;
        fragment.x = mBlock.contentLeft();
        fragment.width = mInner.width;
        fragment.height = line.height;
        mContent.fragments.push_back(fragment);
    }
    line.fragmentCount = uint32_t(mContent.fragments.size()) - line.fragment;
    mContent.lines.push_back(line);
    ++mItem;
    mFirstLine = false;
}

// ---- Filling ----

Unit InlineLayout::openEdge(const InlineBox &box) const
{
    const Edges margin = inlineMargins(box, mInner.width), frame = inlineFrame(box, mInner.width);
    return isRightToLeft(box.style()) ? margin.right + frame.right : margin.left + frame.left;
}

Unit InlineLayout::closeEdge(const InlineBox &box) const
{
    const Edges margin = inlineMargins(box, mInner.width), frame = inlineFrame(box, mInner.width);
    return isRightToLeft(box.style()) ? margin.left + frame.left : margin.right + frame.right;
}

Unit InlineLayout::atomicWidth(const BlockBox &box) const
{
    return box.marginLeft + box.width + box.marginRight;
}

Unit InlineLayout::widthOf(const InlineItem &item, uint32_t start, uint32_t end) const
{
    if (end <= start) return {};
    if (!item.simple) {
        const ShapedText &shaped = mContent.shapes[std::size_t(item.shaped)];
        return Unit::ceil(std::abs(double(shaped.edges[end - item.start]) - shaped.edges[start - item.start]));
    }
    const css::ComputedStyle &style = item.box->style();
    const double tail = end == item.end ? double(item.tail) : 0;
    return Unit::ceil(std::max(0.0, tail + TextShaper::simpleWidth(QStringView(mContent.text).mid(start, end - start), fontOf(style), spacingOf(style))));
}

uint32_t InlineLayout::visibleEnd(const InlineItem &item, uint32_t start, uint32_t end) const
{
    if (!hangsBlanks(item.box->style())) return end;
    while (end > start && isBlank(mContent.text[end - 1])) --end;
    return end;
}

// As many characters as fit, one at least.
uint32_t InlineLayout::fittingEnd(const InlineItem &item, uint32_t start, uint32_t end, Unit room) const
{
    uint32_t low = start, high = end;
    while (low + 1 < high) {
        const uint32_t middle = (low + high) / 2;
        (widthOf(item, start, middle) <= room ? low : high) = middle;
    }
    while (low > start && !mFinder.isCharacterStart(low)) --low;
    if (low > start) return low;
    uint32_t next = start + 1;
    while (next < end && !mFinder.isCharacterStart(next)) ++next;
    return next;
}

// Where the unit that stands or falls together ends. A word that may be cut anywhere isn't read far beyond what fits into
// `room`: a megabyte of it would be read again for each of its lines.
uint32_t InlineLayout::wordEnd(const InlineItem &item, uint32_t at, Unit room, BreakFinder::Words words) const
{
    const css::ComputedStyle &style = item.box->style();
    const bool wraps = wrapsLines(style), tabs = !collapsesBlanks(style), cuts = wraps && breaksWords(style);
    uint32_t end = at + 1, glance = at + 512;
    while (end < item.end && !(wraps && mFinder.allowed(end, words)) && !(tabs && mContent.text[end] == QLatin1Char('\t'))) {
        ++end;
        if (!cuts || end < glance || !mFinder.isCharacterStart(end)) continue;
        if (widthOf(item, at, end) > room) break;
        glance = at + 2 * (end - at);
    }
    return end;
}

// What fits is asked with the smallest unit to spare: widths were rounded up to it.
Unit InlineLayout::room() const
{
    return mRight - mLeft + Unit::fromRaw(1);
}

bool InlineLayout::overflows(Unit width) const
{
    return mUsed + width > room();
}

bool InlineLayout::hasWidth() const
{
    for (const Piece &piece : mPieces)
        if (mContent.items[piece.item].type == ItemType::Atomic || piece.end > piece.start) return true;
    return false;
}

void InlineLayout::note()
{
    mCandidate.pieces = mPieces.size();
    if (!mPieces.empty()) mCandidate.last = mPieces.back();
    mCandidate.item = mItem;
    mCandidate.offset = mOffset;
    mCandidate.used = mUsed;
    mCandidate.hyphen = mOffset > 0 && mOffset <= uint32_t(mContent.text.size()) && mContent.text[mOffset - 1] == QChar(0xAD);
    mCandidate.set = true;
}

void InlineLayout::rewind()
{
    mPieces.resize(mCandidate.pieces);
    if (!mPieces.empty()) {
        mPieces.back() = mCandidate.last;
        if (mCandidate.hyphen) mPieces.back().hyphen = true;
    }
    mItem = mCandidate.item;
    mOffset = mCandidate.offset;
    mUsed = mCandidate.used;
}

void InlineLayout::fill()
{
    mPieces.clear();
    mCandidate = {};
    mForced = mStuck = mAtBlock = false;
    mUsed = mFirstLine ? textIndentOf(mStyle, mInner.width) : Unit();
    while (mItem < mContent.items.size()) {
        const InlineItem &item = mContent.items[mItem];
        if (mOffset < item.start) mOffset = item.start;
        switch (item.type) {
        case ItemType::Text:
            if (!addText()) return;
            break;
        case ItemType::Open:
        case ItemType::Close: {
            const auto &box = static_cast<const InlineBox &>(*item.box);
            const Unit edge = item.type == ItemType::Open ? openEdge(box) : closeEdge(box);
            const bool sticks = item.type == ItemType::Close && mCandidate.set && mCandidate.item == mItem;
            mPieces.push_back({mItem, item.start, item.start, edge, {}, {}, 0, false, item.level});
            mUsed += edge;
            ++mItem;
            if (sticks) note(); // an end tag stays with what it ends
            break;
        }
        case ItemType::Atomic:
            if (!addAtomic()) return;
            break;
        case ItemType::Float:
            addFloat();
            ++mItem;
            break;
        case ItemType::Positioned: {
            const Unit before = item.box->style().box().originalInline ? mUsed : Unit();
            const Unit x = isRightToLeft(mStyle) ? mRight - before : mLeft + before;
            mEngine.noteStaticPosition(mBlock, *item.box->asBlock(), {x, mBlock.contentTop() + mLineTop});
            ++mItem;
            break;
        }
        case ItemType::Break:
            mPieces.push_back({mItem, item.start, item.end, {}, {}, {}, 0, false, item.level});
            mForced = true;
            mOffset = item.end;
            ++mItem;
            endElements();
            return;
        case ItemType::Block:
            mAtBlock = true;
            return;
        }
    }
}

// Elements that end right behind a break end on its line, and open none of their own.
void InlineLayout::endElements()
{
    for (; mItem < mContent.items.size() && mContent.items[mItem].type == ItemType::Close; ++mItem) {
        const InlineItem &item = mContent.items[mItem];
        const Unit edge = closeEdge(static_cast<const InlineBox &>(*item.box));
        mPieces.push_back({mItem, item.start, item.start, edge, {}, {}, 0, false, item.level});
        mUsed += edge;
    }
}

bool InlineLayout::addAtomic()
{
    const InlineItem &item = mContent.items[mItem];
    BlockBox &box = *item.box->asBlock();
    const Unit available = mInner.width;
    if (box.needsLayout || box.childNeedsLayout || box.layoutWidth != mInner.width || box.layoutHeight != mInner.height)
        mEngine.layoutIndependent(box, mInner, available);
    const bool wraps = wrapsLines(item.box->parent()->style());
    const Unit width = atomicWidth(box);
    if (wraps && !mCandidate.set && hasWidth() && mFinder.allowed(item.start)) note();
    if (wraps && mCandidate.offset != item.start && hasWidth() && mFinder.allowed(item.start)) note();
    if (overflows(width)) {
        if (mCandidate.set) {
            rewind();
            return false;
        }
        if (mNarrowed && !hasWidth()) {
            mStuck = true;
            return false;
        }
    }
    mPieces.push_back({mItem, item.start, item.end, width, {}, {}, 0, false, item.level});
    mUsed += width;
    mOffset = item.end;
    ++mItem;
    if (wraps && mFinder.allowed(item.end)) note();
    return true;
}

void InlineLayout::addFloat()
{
    if (mItem < mFloatsDone) return;
    mFloatsDone = mItem + 1;
    BlockBox &box = *mContent.items[mItem].box->asBlock();
    const bool empty = !hasWidth();
    mEngine.layoutIndependent(box, mInner, mInner.width);
    const Unit width = atomicWidth(box);
    Unit blanks;
    if (!mPieces.empty()) blanks = mPieces.back().hanging;
    if (!empty && mUsed - blanks + width > mRight - mLeft) {
        mLateFloats.emplace_back(mItem, Unit());
        return;
    }
    mEngine.placeFloat(mBlock, box, mLineTop, mInner, mArea);
    resolveSpan(mLineTop, Unit::fromRaw(1));
}

// Adds words as long as they fit. False: the line is full, and the next one's start is set.
bool InlineLayout::addText()
{
    const InlineItem &item = mContent.items[mItem];
    const css::ComputedStyle &style = item.box->style();
    const bool wraps = wrapsLines(style);
    const BreakFinder::Words words = wordBreakOf(style);
    const bool tabs = !collapsesBlanks(style);
    if (wraps && mOffset > 0 && hasWidth() && mFinder.allowed(mOffset, words) && !(mCandidate.set && mCandidate.offset == mOffset)) note();
    mPieces.push_back({mItem, mOffset, mOffset, {}, {}, {}, 0, false, item.level});
    const Unit before = mUsed;
    const auto extend = [&](uint32_t end) {
        Piece &piece = mPieces.back();
        piece.end = end;
        piece.width = widthOf(item, piece.start, end);
        piece.hanging = piece.width - widthOf(item, piece.start, visibleEnd(item, piece.start, end));
        mUsed = before + piece.width;
    };
    // Long stretches of simple text are measured word by word; the piece as a whole once, at its end.
    Unit running;
    uint32_t at = mOffset;
    while (at < item.end) {
        if (tabs && mContent.text[at] == QLatin1Char('\t')) {
            if (at > mPieces.back().start) extend(at);
            const Unit stop = Unit::from(tabWidthOf(style));
            Unit tab = stop.raw > 0 ? stop - Unit::fromRaw(mUsed.raw % stop.raw) : Unit();
            if (tab.toDouble() < fontOf(style).zeroWidth() / 2) tab += stop; // CSS Text 3, 4.2
            if (mPieces.back().end == mPieces.back().start) mPieces.pop_back();
            mPieces.push_back({mItem, at, at + 1, tab, tab, {}, 0, false, item.level});
            mUsed += tab;
            mOffset = at + 1;
            if (mOffset == item.end) {
                ++mItem;
                return true;
            }
            return addText();
        }
        const uint32_t end = wordEnd(item, at, mRight - mLeft - before, words);
        const uint32_t start = mPieces.back().start;
        const uint32_t visible = visibleEnd(item, at, end);
        const Unit word = item.simple ? running + widthOf(item, at, visible) : widthOf(item, start, visible);
        Unit hyphen;
        if (wraps && visible > at && mContent.text[visible - 1] == QChar(0xAD)) hyphen = Unit::ceil(fontOf(style).face().advance(fontOf(style).face().glyph('-')) * fontOf(style).scale());
        // A word that a rounded sum says is too long is measured with all in front of it.
        // Text that doesn't wrap goes to the next line as a whole, if there was a place to break in front of it.
        const bool tooLong = (wraps || mCandidate.set || mNarrowed) && before + word + hyphen > room() && visible > at &&
                             before + widthOf(item, start, visible) + hyphen > room();
        if (tooLong) {
            if (mCandidate.set) {
                if (mPieces.back().end > mPieces.back().start || mCandidate.pieces < mPieces.size()) {
                    rewind();
                    return false;
                }
            }
            if (mNarrowed && !hasWidth()) {
                mStuck = true;
                return false;
            }
            if (wraps && breaksWords(style)) {
                const uint32_t cut = fittingEnd(item, at, end, mRight - mLeft - before);
                extend(cut);
                mOffset = cut;
                if (cut == item.end) ++mItem;
                if (cut < end || mItem < mContent.items.size()) return cut == item.end;
            }
        }
        running += widthOf(item, at, end);
        at = end;
        mOffset = at;
        if (at < item.end && wraps) {
            mPieces.back().end = at;
            mUsed = before + running;
            mPieces.back().width = running;
            mCandidate = {mPieces.size(), mPieces.back(), mItem, at, mUsed, mContent.text[at - 1] == QChar(0xAD), true};
        } else {
            mPieces.back().end = at;
            mPieces.back().width = running;
        }
    }
    extend(item.end);
    mOffset = item.end;
    ++mItem;
    const bool blankNext = mOffset < uint32_t(mContent.text.size()) && isBlank(mContent.text[mOffset]);
    if (wraps && !blankNext && mOffset < uint32_t(mContent.text.size()) && mFinder.allowed(mOffset, words)) note();
    return true;
}

} // namespace layout
