// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"

namespace html {

/// Parses a whole document: HTML's own tree construction (by Gumbo), with prefixed elements, declarations and unknown
/// names kept as written. Never fails; any input gives a document with HTML, HEAD and BODY. Ids count from 1 in document
/// order, so that the same text gives the same ids. The document can read and write HTML (`Document::markup` is set) and
/// has no boxes, no styles and no door.
base::Ref<dom::Document> parseDocument(const QString &text);

/// Parses a fragment for the place inside `context`, in the document's mode; the nodes are detached and belong to
/// `document`.
base::Ref<dom::DocumentFragment> parseFragment(dom::Document &document, const dom::Element &context,
                                               const QString &text);

} // namespace html
