// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/DocumentServices.h"
#include "engine/layout/Queries.h"

namespace layout {

/// The scrolled view that shows the document; the surface implements it. CSS pixels.
class View
{
public:
    virtual ~View() = default;
    virtual QPoint scrollPosition() const = 0;
    virtual void setScrollPosition(QPoint position) = 0;
    virtual QSize viewSize() const = 0; ///< without scroll bars
};

/// What elements answer about their boxes: the document's `boxes`. BODY and HTML speak for the view, in both modes.
class Boxes final : public dom::BoxServices
{
public:
    /// Sets the document's `boxes`, and takes it back at the end. Both must outlive this.
    Boxes(LayoutTree &tree, View &view);
    ~Boxes() override;

    QRect offsetBox(const dom::Element &element) override;
    dom::Element *offsetParent(const dom::Element &element) override;
    QSize clientSize(const dom::Element &element) override;
    QSize scrollSize(const dom::Element &element) override;
    QPoint scrollPosition(const dom::Element &element) override;
    void setScrollPosition(dom::Element &element, QPoint position) override;
    dom::Element *elementFromPoint(QPoint client) override;

private:
    LayoutTree &mTree;
    View &mView;
    Queries mQueries;
};

} // namespace layout
