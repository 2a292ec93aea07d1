// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/LayoutTree.h"
#include "engine/layout/PageFlow.h"

namespace layout {

/// Divides a laid-out document into pages. It moves the boxes of the tree down, so that no line, row or image lies on the
/// boundary of two pages and each page of the document is the stretch of the tree's height that `space` tells.
///
/// Breaks stand between lines, rows, and blocks. `page-break-before`, `-after`, `-inside`, `orphans` and `widows` count; a
/// margin vanishes where a page ends by itself, and stays behind a forced break. A table's head gets room on each page
/// that its rows go on to. What is higher than a page is cut: an image anywhere, a row between the lines of each cell.
///
/// The tree is for printing from then on: laying it out again would undo the pages.
class Paginator
{
public:
    /// What is to be painted once more: the part `source` of the tree, at the height `top` of a page.
    struct Head {
        Rect source;
        Unit top; ///< in the tree
    };

    Paginator(LayoutTree &tree, const PageSpace &space);
    /// Lays out what waits, and divides. Once.
    void run();
    /// At least 1.
    int pageCount() const { return mPages; }
    const PageSpace &space() const { return mSpace; }
    /// Of tables that go on from an earlier page; outer ones first.
    const std::vector<Head> &heads(int page) const;
    /// Puts boxes with `position: fixed` where they stand on that page: they are on each.
    void turnTo(int page);

private:
    void moveFlow(PageFlow &flow);
    void moveSides(PageFlow &flow, std::vector<SideBox> &sides);
    void moveParallels(PageFlow &flow);
    void moveSpan(PageFlow &flow, std::size_t index);
    void moveLines(PageFlow &flow, const FlowSpan &span);
    void moveTable(PageFlow &flow, const FlowSpan &span);
    void stretchCells(TableBox &table);
    Unit lastEnd(const PageFlow &flow) const;
    void noteHeads(const PageFlow &flow);
    Unit rowsEnd(const PageFlow &flow, const FlowTable &table) const;
    void noteHead(const FlowTable &table, Unit end);
    void gatherFixed(const PageFlow &flow);

    LayoutTree &mTree;
    PageSpace mSpace;
    Engine mEngine;
    WorkCounters mWork;
    int mPages = 1;
    std::vector<std::vector<Head>> mHeads; // by page
    std::vector<std::pair<BlockBox *, Unit>> mFixed;
};

} // namespace layout
