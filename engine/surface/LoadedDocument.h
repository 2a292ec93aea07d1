// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/dom/Document.h"

namespace surface {

/// Everything that belongs to one loaded document and goes with it, in the order of dependence.
class LoadedDocument
{
public:
    explicit LoadedDocument(base::Ref<dom::Document> document);
    ~LoadedDocument();

    dom::Document &document() const { return *mDocument; }
    changes::ChangeTracker &tracker() { return mTracker; }

private:
    base::Ref<dom::Document> mDocument;
    changes::ChangeTracker mTracker;
};

} // namespace surface
