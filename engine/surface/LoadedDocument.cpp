// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/LoadedDocument.h"

namespace surface {

LoadedDocument::LoadedDocument(base::Ref<dom::Document> document)
    : mDocument(std::move(document)), mStyles(*mDocument), mStyleServices(mStyles), mBridge(mStyles), mTree(*mDocument, mBridge),
      mQueries(mTree), mKeeper(*mDocument), mSelection(mKeeper), mTracker(*mDocument), mEditor(mTracker, mSelection)
{
    mDocument->styles = &mStyleServices;
    mTree.setImageSource(&mImages);
    mTracker.setSelectionKeeper(&mSelection);
}

LoadedDocument::~LoadedDocument()
{
    // Who holds a node of it holds a document without boxes, styles and selection.
    mDocument->styles = nullptr;
    mDocument->boxes = nullptr;
    mDocument->interaction = nullptr;
}

} // namespace surface
