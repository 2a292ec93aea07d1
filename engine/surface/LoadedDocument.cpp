// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/LoadedDocument.h"

namespace surface {

LoadedDocument::LoadedDocument(base::Ref<dom::Document> document)
    : mDocument(std::move(document)), mTracker(*mDocument)
{
}

LoadedDocument::~LoadedDocument() = default;

} // namespace surface
