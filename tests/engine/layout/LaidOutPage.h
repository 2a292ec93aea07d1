// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Services.h"
#include "engine/dom/RawTree.h"
#include "engine/html/Parser.h"
#include "engine/layout/EngineStyles.h"
#include "engine/layout/Queries.h"

/// A page with styles and boxes, in a view of 1000 by 800: what tests of layout look at.
struct LaidOutPage {
    base::Ref<dom::Document> document;
    css::Services services;
    layout::EngineStyles styles;
    layout::LayoutTree tree;
    layout::Queries queries;

    explicit LaidOutPage(const QString &html, const QString &base = {})
        : document(html::parseDocument(html)), services((document->setBaseURL(base), *document)),
          styles(services.engine()), tree(*document, styles), queries(tree)
    {
        tree.setViewport({1000, 800});
    }
    /// In standards mode, the body without margins.
    static QString bare(const QString &body) { return "<!DOCTYPE html><body style='margin:0'>" + body; }

    dom::Element &byId(const QString &id) { return *document->getElementById(id); }
    QRectF box(const QString &id) { return queries.borderBox(byId(id)); }
};

inline void setStyle(dom::Element &element, const QString &style)
{
    dom::RawTree::setAttribute(element, "style", &style);
}
