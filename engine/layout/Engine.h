// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/FloatContext.h"
#include "engine/layout/InlineContent.h"

#include <functional>
#include <optional>

class QPainter;

namespace layout {

class TableLayout;

/// Where images come from: the surface supplies it. Sizes in CSS pixels; an empty size is a missing image.
class ImageSource
{
public:
    virtual ~ImageSource() = default;
    /// `url` is resolved. An image that is still loading is missing; the source tells the tree when it comes.
    virtual QSize imageSize(const QString &url) = 0;
    virtual QPixmap imagePixmap(const QString &url) = 0;
    /// Whether it is drawn of lines, at any size, by `paintVector`.
    virtual bool isVector(const QString &) { return false; }
    virtual void paintVector(QPainter &, const QString &, const QRectF &) {}
    /// Whether it has a ratio and no size: `imageSize` has that ratio then, and the picture is as wide as there is room.
    virtual bool hasOnlyRatio(const QString &) { return false; }
};

/// The containing block of a box: its content width, and its height where that is definite.
struct Constraint {
    Unit width;
    Unit height = Unit::fromRaw(-1);
    bool hasHeight() const { return height.raw >= 0; }
};

/// How much was done, for tests that count work rather than time.
struct WorkCounters {
    uint64_t boxesLaidOut = 0;
    uint64_t childrenPlaced = 0; ///< of flows, clean ones too
    uint64_t linesBroken = 0;
    uint64_t boxesBuilt = 0;
};

/// Where a block's flow stands while its children are placed. `y` counts from the content's top.
struct FlowState {
    Unit y;
    MarginStrut strut;
    bool atTop = true;
};

/// Lays boxes out. One object serves a whole pass; each function leaves its result in the boxes.
class Engine
{
public:
    Engine(bool quirks, bool lineHeightQuirk, Size viewport, ImageSource *images, WorkCounters &work)
        : mQuirks(quirks), mLineHeightQuirk(lineHeightQuirk), mViewport(viewport), mImages(images), mWork(work)
    {
    }

    bool quirks() const { return mQuirks; }
    bool lineHeightQuirk() const { return mLineHeightQuirk; }
    Size viewport() const { return mViewport; }
    ImageSource *images() const { return mImages; }
    WorkCounters &work() { return mWork; }

    /// The root box: its own formatting context, against the viewport.
    void layoutRoot(BlockBox &root);
    /// A block in flow whose border box starts at `area.origin`; its width and margins are found here.
    void layoutInFlow(BlockBox &box, const Constraint &constraint, FloatArea area);
    /// A float, an inline block, a cell, a positioned box: a formatting context of its own. With `width`, that is its
    /// border-box width, else it shrinks to fit `available`.
    void layoutIndependent(BlockBox &box, const Constraint &constraint, Unit available, std::optional<Unit> width = {});
    /// Places and lays out the next block child at the flow's state.
    void placeChild(BlockBox &parent, BlockBox &child, FlowState &state, const Constraint &constraint, FloatArea area,
                    Unit runningSum);
    /// Lays out a float and finds its place; `y` is from the parent's content top.
    void placeFloat(BlockBox &parent, BlockBox &child, Unit y, const Constraint &constraint, FloatArea area);
    /// Gives a positioned box the place that it would have had in flow, for `auto` offsets.
    void noteStaticPosition(BlockBox &parent, BlockBox &child, Point at);
    struct PositionedArea {
        Point origin;
        Size size;
        Point shift; ///< of the inline elements around it that are positioned themselves
    };
    PositionedArea positionedArea(const BlockBox &box, const BlockBox &block) const;
    void layoutPositioned(BlockBox &containingBlock);

    /// Preferred widths of the border box.
    PreferredWidths preferredWidths(BlockBox &box);
    /// The width that content asks for, where a style leaves it to it.
    Unit contentWidthOf(BlockBox &box, Unit available);
    /// Fills the memo of margins that collapse at the box's top, and whether it collapses through.
    void updateFlowMemo(BlockBox &box, Unit containingWidth);
    /// With `width`, that is its border-box width, whatever its style says.
    Size replacedSize(BlockBox &box, const Constraint &constraint, std::optional<Unit> width = {});
    /// Whether its height follows its width.
    bool hasRatio(const BlockBox &box) const;
    void prepareInline(BlockBox &box);
    /// Sets margins, borders and paddings of a box from its style.
    void resolveEdges(BlockBox &box, Unit containingWidth);
    /// The distance of the baseline from the border box's top; nothing where the box has none.
    std::optional<Unit> firstBaseline(const BlockBox &box) const;
    std::optional<Unit> lastBaseline(const BlockBox &box) const;
    Unit minimumWidth(BlockBox &box, Unit containingWidth) const;

private:
    friend class TableLayout;
    friend class InlineLayout;
    friend class FlexLayout;
    friend class GridLayout;
    friend class Paginator;
    void resolveInFlowWidth(BlockBox &box, const Constraint &constraint, FloatArea area);
    void keepPlace(BlockBox &box);
    void layoutContents(BlockBox &box, const Constraint &constraint, FloatArea area);
    void layoutFlowChildren(BlockBox &box, const Constraint &inner, FloatArea area, FlowState &state);
    bool relayoutDirtyChildren(BlockBox &box, const Constraint &inner, FloatArea area, FlowState &state);
    void finishHeight(BlockBox &box, const Constraint &constraint, const FlowState &state);
    void finishOverflow(BlockBox &box);
    /// Moves the lines of a box whose `shift` has changed.
    static void shiftLines(BlockBox &box);
    static void finishMoved(BlockBox &box);
    static std::optional<Unit> columnRoom(const BlockBox &box, const Constraint &constraint);
    bool canReuse(const BlockBox &box, const Constraint &constraint, FloatArea area) const;
    void replayFloats(BlockBox &box, FloatArea area);
    bool avoidsFloats(const BlockBox &box) const;
    void layoutReplaced(BlockBox &box, const Constraint &constraint);
    PreferredWidths blockPreferredWidths(BlockBox &box);
    PreferredWidths inlinePreferredWidths(BlockBox &box);
    PreferredWidths outerPreferredWidths(BlockBox &child);
    void placeMarker(BlockBox &item);
    Unit roomForMarker(const BlockBox &item) const;
    Unit definiteHeight(const BlockBox &box, const Constraint &constraint) const;

    bool mQuirks, mLineHeightQuirk;
    Size mViewport;
    ImageSource *mImages;
    WorkCounters &mWork;
};

} // namespace layout
