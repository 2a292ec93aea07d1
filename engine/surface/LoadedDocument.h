// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/css/Services.h"
#include "engine/dom/Document.h"
#include "engine/editing/Editor.h"
#include "engine/layout/EngineStyles.h"
#include "engine/layout/LayoutTree.h"
#include "engine/layout/Queries.h"
#include "engine/ranges/RangeKeeper.h"
#include "engine/ranges/SelectionObject.h"
#include "engine/surface/ImageStore.h"
#include "engine/surface/StyledRendering.h"

namespace surface {

/// Everything that belongs to one loaded document and goes with it, in the order of dependence.
class LoadedDocument
{
public:
    explicit LoadedDocument(base::Ref<dom::Document> document);
    ~LoadedDocument();

    dom::Document &document() const { return *mDocument; }
    changes::ChangeTracker &tracker() { return mTracker; }
    layout::LayoutTree &tree() { return mTree; }
    layout::Queries &queries() { return mQueries; }
    ranges::SelectionObject &selection() { return mSelection; }
    editing::Editor &editor() { return mEditor; }
    css::Services &styles() { return mStyles; }
    StyledRendering &rendering() { return mRendering; }

private:
    base::Ref<dom::Document> mDocument;
    css::Services mStyles;
    layout::EngineStyles mStyleSource;
    ImageStore mImages;
    layout::LayoutTree mTree;
    layout::Queries mQueries;
    StyledRendering mRendering;
    ranges::RangeKeeper mKeeper;
    ranges::SelectionObject mSelection;
    changes::ChangeTracker mTracker;
    editing::Editor mEditor;
};

} // namespace surface
