// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/PageRules.h"
#include "engine/layout/Paginator.h"
#include "engine/surface/PrintCopy.h"
#include "engine/surface/PrintSettings.h"

class QPagedPaintDevice;

namespace surface {

/// Puts a document on pages: copies it, lays the copy out for the paper, and paints page by page. The editor's own things
/// (selection, caret, outlines) aren't part of it.
class PagePrinter
{
public:
    /// `images` may be null; both need only live as long as this. `prepare` may change the copy before it is laid out.
    PagePrinter(dom::Document &document, layout::ImageSource *images, const PrintSettings &settings,
                const std::function<void(dom::Document &copy)> &prepare = {});
    ~PagePrinter();

    int pageCount() const { return mPaginator->pageCount(); }
    /// CSS pixels, 96 to the inch.
    QSizeF paperSize() const { return mPaper; }
    /// What is printed of that page, from 0, without its margins; in pixels of the paper.
    QRectF contentRect(int page) const;
    /// The paper without margins, as a device wants it.
    QPageLayout pageLayout() const;
    /// The paper's top left corner is the painter's origin, a unit is a CSS pixel.
    void paintPage(QPainter &painter, int page);
    /// The wanted pages on a device that is set to `pageLayout`. False where `progress` ended it or the device failed.
    bool print(QPagedPaintDevice &device, const PrintProgress &progress = {});
    static QString titleOf(const dom::Document &document);

    layout::LayoutTree &tree() { return mCopy.tree(); }

private:
    struct Link {
        QUrl target;
        QRectF rect; ///< in the tree
    };
    void readPageRules();
    void layOut();
    void gatherLinks();
    QMarginsF marginsOf(int page) const;
    void paintPart(QPainter &painter, const QRectF &part, QPointF at, const QColor &background);
    void paintLinks(QPainter &painter, int page);
    void paintSurroundings(QPainter &painter, int page);

    PrintSettings mSettings;
    PrintCopy mCopy;
    css::PageRules mRules;
    QSizeF mPaper;
    double mScale = 1; ///< the tree is that much larger than the page
    std::unique_ptr<layout::Paginator> mPaginator;
    std::vector<std::vector<Link>> mLinks; // by page
    QString mTitle;
};

} // namespace surface
