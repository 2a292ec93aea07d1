// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/LoadedDocument.h"

namespace surface {

LoadedDocument::LoadedDocument(base::Ref<dom::Document> document)
    : mDocument(std::move(document)), mStyles(*mDocument), mStyleSource(mStyles.engine()),
      mTree(*mDocument, mStyleSource),
      mQueries(mTree), mRendering(mStyleSource), mKeeper(*mDocument), mSelection(mKeeper, mRendering), mTracker(*mDocument),
      mEditor(mTracker, mSelection, mRendering)
{
    mTree.setImageSource(&mImages);
    mTracker.setSelectionKeeper(&mSelection);
    mRendering.setIndex(&mSelection.index());
}

LoadedDocument::~LoadedDocument()
{
    // Who holds a node of it holds a document without boxes and selection.
    mDocument->boxes = nullptr;
    mDocument->interaction = nullptr;
}

} // namespace surface
