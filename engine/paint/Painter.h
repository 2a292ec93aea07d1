// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/Queries.h"

#include <QPainter>

namespace paint {

/// What lies over the text: a stretch of a text node with colours of its own.
struct Highlight {
    const dom::Node *text = nullptr;
    uint32_t from = 0, to = 0; ///< UTF-16 units
    QColor background, foreground; ///< an invalid foreground leaves the text's colour
};

struct Options {
    QPointF scroll;              ///< document coordinates of the picture's top left corner, CSS pixels
    QRectF clip;                 ///< document coordinates; what doesn't meet it isn't visited. Empty: the viewport
    QColor background = Qt::white; ///< below a page without one
    bool backgrounds = true;     ///< of boxes and of the page
    bool showBorders = false;    ///< dashed outlines around tables and cells without borders
    std::vector<Highlight> highlights;
    std::vector<QRectF> highlightRects; ///< document coordinates: selected objects and cells
    QColor highlightColor{0x33, 0x99, 0xff, 90};
    QRectF caret;                ///< document coordinates; empty: none
    QColor caretColor = Qt::black;
};

/// Paints a laid-out document. Only boxes that meet the clip are visited: children are found by their sums. Order as CSS
/// tells: backgrounds and borders of blocks, floats, lines, positioned boxes by `z-index`.
class Painter
{
public:
    Painter(layout::LayoutTree &tree, Options options) : mTree(tree), mOptions(std::move(options)) {}

    /// Device pixels are the painter's own affair: its transformation stays, one unit is one CSS pixel.
    void paint(QPainter &painter);
    /// Boxes visited by the last `paint`, for tests.
    uint64_t visited() const { return mVisited; }

private:
    enum class Phase : uint8_t { Backgrounds, Floats, Lines };
    struct Layer { // a positioned box on its way into the order
        layout::BlockBox *box;
        layout::Point origin;
        int z;
    };
    void paintCanvas();
    void paintContext(layout::BlockBox &box, layout::Point origin);
    void paintUntransformed(layout::BlockBox &box, layout::Point origin);
    void paintContextContent(layout::BlockBox &box, layout::Point origin);
    void raise(layout::BlockBox &box, layout::Point origin);
    void paintPhase(layout::BlockBox &box, layout::Point origin, Phase phase, bool isRoot);
    void paintInside(layout::BlockBox &box, layout::Point origin, Phase phase);
    void paintColumnRules(const layout::BlockBox &box, layout::Point origin);
    template <class Draw> void eachColumn(const layout::BlockBox &box, layout::Point origin, Draw draw);
    void paintChildren(layout::BlockBox &box, layout::Point origin, Phase phase);
    void paintTableParts(layout::BlockBox &table, layout::Point origin);
    void paintLines(layout::BlockBox &box, layout::Point origin);
    void paintFragment(const layout::BlockBox &box, const layout::Line &line, const layout::Fragment &fragment, layout::Point origin);
    void paintText(const layout::BlockBox &box, const layout::Line &line, const layout::Fragment &fragment, layout::Point origin);
    void paintGlyphs(const layout::InlineContent &content, const layout::Fragment &fragment, QPointF baseline, const QColor &color);
    void paintDecorations(const layout::Fragment &fragment, QPointF baseline);
    void paintMarker(layout::BlockBox &box, layout::Point origin);
    void paintDecoration(const layout::BlockBox &box, layout::Point origin);
    void paintBackground(const css::ComputedStyle &style, const QRectF &border, const layout::Edges &borders, const layout::Edges &padding);
    void paintImageLayer(const css::ComputedStyle &style, const css::BackgroundLayer &layer, const QRectF &area, const QRectF &clip);
    void paintOuterShadows(const css::ComputedStyle &style, const QRectF &rect);
    void paintInnerShadows(const css::ComputedStyle &style, const QRectF &rect, const layout::Edges &borders);
    void paintTextShadows(const layout::InlineContent &content, const layout::Fragment &fragment, QPointF baseline);
    void paintBorders(const css::ComputedStyle &style, const QRectF &rect, const layout::Edges &widths, bool left = true, bool right = true);
    void paintEdge(css::Side side, const QRectF &rect, const layout::Edges &widths, css::BorderStyle kind, QColor color);
    void paintCollapsed(const layout::BlockBox &table, layout::Point origin);
    void paintOutline(const css::ComputedStyle &style, const QRectF &rect);
    void paintReplaced(const layout::BlockBox &box, layout::Point origin);
    bool paintPicture(const QString &url, const css::RareGroup &rare, const QRectF &content);
    bool paintImage(const dom::Element &element, const css::ComputedStyle &style, const QRectF &content);
    void paintInlineSvg(const dom::Element &element, const css::ComputedStyle &style, const QRectF &content);
    void paintPlaceholder(const dom::Element &element, const css::ComputedStyle &style, const QRectF &content);
    void paintGauge(const dom::Element &element, const QString &kind, const QRectF &frame);
    static bool hasNativeFrame(const layout::BlockBox &box);
    void paintNativeFrame(const layout::BlockBox &box, const QRectF &rect);
    void paintControl(const layout::BlockBox &box, const QRectF &content);
    void paintListBox(const layout::BlockBox &box, const QRectF &content);
    void clipToPadding(const layout::BlockBox &box, layout::Point origin);
    template <class Draw> void paintGroup(double opacity, const QRectF &extent, Draw draw);
    bool meetsClip(const layout::BlockBox &box, layout::Point origin) const;
    static QRectF snapped(const QRectF &rect);

    layout::LayoutTree &mTree;
    Options mOptions;
    QPainter *mPainter = nullptr;
    QRectF mClip;
    uint64_t mVisited = 0;
    int mInColumns = 0;
    std::vector<Layer> *mRaised = nullptr; // boxes in flow that are painted above it, met on the way
    const dom::Element *mCanvasElement = nullptr; // its background is the canvas's
};

} // namespace paint
