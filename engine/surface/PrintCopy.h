// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Services.h"
#include "engine/layout/EngineStyles.h"
#include "engine/layout/LayoutTree.h"

namespace surface {

/// A copy of a document, with the sheets and runtime styles that aren't in its text, styled for paper. The document itself
/// isn't touched, and not observed: what is printed is what it was when the copy was made.
class PrintCopy
{
public:
    /// `images` may be null and must outlive the copy.
    PrintCopy(dom::Document &document, layout::ImageSource *images);
    ~PrintCopy();

    dom::Document &document() { return *mDocument; }
    css::Services &styles() { return mServices; }
    /// Laid out for a page area of that size, CSS pixels.
    layout::LayoutTree &layOut(QSizeF area);
    layout::LayoutTree &tree() { return *mTree; }

private:
    void copyTree(dom::Document &from);
    void copySheets(dom::Document &from);

    base::Ref<dom::Document> mDocument;
    css::Services mServices;
    layout::EngineStyles mStyles;
    layout::ImageSource *mImages;
    std::unique_ptr<layout::LayoutTree> mTree;
};

} // namespace surface
