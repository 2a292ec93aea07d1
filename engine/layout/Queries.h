// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/LayoutTree.h"

#include <QRectF>
#include <functional>

namespace layout {

/// A place in a document's text or between its nodes.
struct TextPosition {
    dom::Node *node = nullptr; ///< null: no place
    uint32_t offset = 0;       ///< 0-based; UTF-16 units in a text, children in an element
    friend bool operator==(const TextPosition &, const TextPosition &) = default;
};

struct Hit {
    dom::Element *element = nullptr; ///< innermost at the point; null outside of everything
    TextPosition position;           ///< nearest place for a caret
    bool inside = false;             ///< the point is on the text or object itself
};

struct TextFragment {
    uint32_t from = 0, to = 0; ///< UTF-16 units of the node
    QRectF rect;               ///< document coordinates
};

/// Questions about where things are. Document coordinates: CSS pixels from the page's top left corner, not scrolled. Each
/// brings the layout up to date first, so every answer is exact. Places are found by sums and binary search.
class Queries
{
public:
    explicit Queries(LayoutTree &tree) : mTree(tree) {}

    /// The border box; the union of an inline element's fragments; empty without boxes.
    QRectF borderBox(const dom::Element &element);
    std::vector<QRectF> clientRects(const dom::Element &element);
    /// offsetLeft, offsetTop, offsetWidth, offsetHeight by CSSOM View, rounded as browsers do.
    QRect offsetBox(const dom::Element &element);
    dom::Element *offsetParent(const dom::Element &element);
    QSize clientSize(const dom::Element &element);
    QSize scrollSize(const dom::Element &element);

    Hit hitTest(QPointF point);
    /// Whether the point is on the marker of a list item.
    bool isOnMarker(const dom::Element &item, QPointF point);
    /// One pixel wide; empty where there is no place. At a wrapped line's end the caret stands on the next line, but for
    /// `atLineEnd`.
    QRectF caretRect(TextPosition position, bool atLineEnd = false);
    /// The place on the line above or below that is nearest to `x`; no place at the first and last line.
    TextPosition lineAbove(TextPosition position, double x);
    TextPosition lineBelow(TextPosition position, double x);
    TextPosition lineStart(TextPosition position);
    TextPosition lineEnd(TextPosition position);
    std::vector<TextFragment> textFragments(const dom::Node &text);
    /// Rectangles of a stretch of a text node, for a selection's background: whole line heights.
    std::vector<QRectF> textRects(const dom::Node &text, uint32_t from, uint32_t to);

    /// From a box's border box to the document as it was laid out: columns not yet cut, nothing transformed.
    static Point origin(const BlockBox &box);
    /// Where a part of a box shows, document coordinates: a rectangle for each column that it shows in; what is
    /// transformed is bounded.
    std::vector<QRectF> shown(const BlockBox &box, const Rect &part, bool transformed = true) const;
    /// A point of the document in the box's coordinates; the inverse of where it shows.
    Point localPoint(const BlockBox &box, QPointF point) const;
    /// The distance of a collapsed offset from the fragment's left edge.
    static Unit offsetInFragment(const InlineContent &content, const Fragment &fragment, uint32_t offset);
    static uint32_t offsetAt(const InlineContent &content, const Fragment &fragment, Unit x);

private:
    struct Where { // a caret's line
        BlockBox *block = nullptr;
        const Line *line = nullptr;
        uint32_t offset = 0;
    };
    Where locate(TextPosition position, bool atLineEnd = false);
    TextPosition positionOn(BlockBox &block, const Line &line, Unit x, bool *inside = nullptr);
    TextPosition positionOf(BlockBox &block, uint32_t offset);
    BlockBox *hitBlock(BlockBox &box, Point point, Point &local);
    static BlockBox *itemAt(const BlockBox &box, Point point);
    Point intoChild(const BlockBox &child, Point point) const;
    BlockBox *hitMoved(QPointF point, Point &local);
    Box *holderOf(BlockBox &block, QPointF point) const;
    std::vector<QRectF> rectsOf(const dom::Element &element, bool transformed);
    std::function<QRectF(const Rect &)> placing(const BlockBox &block) const;
    BlockBox *hitPositioned(BlockBox &box, Point point, Point &local);
    BlockBox *besideInRow(BlockBox &found, const BlockBox &from, double x, int direction);
    TextPosition nearLine(TextPosition position, double x, int direction);

    LayoutTree &mTree;
};

} // namespace layout
