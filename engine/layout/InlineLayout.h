// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/BreakFinder.h"
#include "engine/layout/Engine.h"

namespace layout {

/// Breaks a block's inline content into lines and sets them.
class InlineLayout
{
public:
    InlineLayout(Engine &engine, BlockBox &block, const Constraint &inner, FloatArea area);
    /// Goes on from `state`, leaves it behind the last line.
    void run(FlowState &state);

private:
    struct Piece {
        uint32_t item;
        uint32_t start, end;
        Unit width;       ///< trailing blanks included
        Unit hanging;     ///< of trailing blanks
        Unit x;
        float wordSpacing = 0;
        bool hyphen = false;
        uint8_t level = 0;
    };
    struct Place {
        std::size_t pieces = 0;
        Piece last{};
        uint32_t item = 0, offset = 0;
        Unit used;
        bool hyphen = false;
        bool set = false;
    };
    struct State { // an inline element, open on the line; the first one is the block itself
        InlineBox *box = nullptr;
        const css::ComputedStyle *style = nullptr;
        Unit ascent, descent;         // with leading
        Unit textAscent, textDescent; // of the font
        Unit baseline;                // below its group's
        int group = 0;
        bool counted = false, measured = false;
        bool firstEdge = false, lastEdge = false;
        Unit left = Unit::max(), right = -Unit::max();
        std::size_t fragment = 0;
    };
    struct Group { // what is aligned as one: the line, or a box at the line's top or bottom
        Unit top = Unit::max(), bottom = -Unit::max();
        Unit shift;
        bool atTop = false, atBottom = false;
        void add(Unit from, Unit to)
        {
            top = std::min(top, from);
            bottom = std::max(bottom, to);
        }
        bool empty() const { return top > bottom; }
    };

    // Filling
    void fill();
    bool addText();
    void endElements();
    bool addAtomic();
    void addFloat();
    bool overflows(Unit width) const;
    Unit room() const;
    void rewind();
    void note();
    Unit widthOf(const InlineItem &item, uint32_t start, uint32_t end) const;
    uint32_t tabEnd(const InlineItem &item, uint32_t at) const;
    uint32_t visibleEnd(const InlineItem &item, uint32_t start, uint32_t end) const;
    uint32_t fittingEnd(const InlineItem &item, uint32_t start, uint32_t end, Unit room) const;
    uint32_t wordEnd(const InlineItem &item, uint32_t at, Unit room, BreakFinder::Words words) const;
    bool hasWidth() const;
    Unit openEdge(const InlineBox &box) const;
    Unit closeEdge(const InlineBox &box) const;
    Unit atomicWidth(const BlockBox &box) const;
    // Setting
    void trimEnd();
    void openStates();
    void pushState(InlineBox &box);
    void align(State &state, const State &parent);
    void count(State &state);
    void markMeasured();
    void measure();
    void measureText(const Piece &piece, State &state);
    void measureAtomic(const Piece &piece, const State &state);
    void justify(Unit room);
    void order();
    void orderByDirection();
    void emitLine(Unit top);
    void setAtomic(Fragment &fragment, Unit lineTop);
    void blockLine(FlowState &state);
    bool stretchIsEmpty() const;
    void clearBehindBreak(FlowState &state);
    void textLine(FlowState &state);
    void resolveSpan(Unit y, Unit height);
    bool moveDown(Unit &y);
    Unit lineOffset(Unit room) const;
    bool isLastLine() const;
    std::optional<Unit> ellipsis() const;

    Engine &mEngine;
    BlockBox &mBlock;
    InlineContent &mContent;
    Constraint mInner;
    FloatArea mArea;
    BreakFinder mFinder;
    const css::ComputedStyle &mStyle;
    bool mWrapsAny = true;

    uint32_t mItem = 0, mOffset = 0; // where the next line goes on
    uint32_t mFloatsDone = 0;        // floats of items in front of this one are placed
    std::vector<InlineBox *> mOpen;  // elements open at the line's start
    Unit mLeft, mRight;              // what floats leave, from the block's border box
    bool mNarrowed = false;
    Unit mLineTop;                   // from the content's top
    Unit mUsed;
    std::vector<Piece> mPieces;
    Place mCandidate;
    bool mReal = true; ///< this line has anything in it
    bool mForced = false, mStuck = false, mFirstLine = true, mAtBlock = false;
    std::vector<State> mStates, mClosed;
    std::vector<int> mStack; // indexes of open states
    std::vector<Group> mGroups;
    struct Placed {
        std::size_t piece;
        Unit top, height; // from its group's baseline
        int group;
        int state;
    };
    std::vector<Placed> mPlaced;
    std::vector<std::pair<std::size_t, Unit>> mLateFloats;
};

/// How far a line of nothing but text reaches above its baseline.
Unit lineAscentOf(const css::ComputedStyle &style);

} // namespace layout
