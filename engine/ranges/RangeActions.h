// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/ControlRange.h"
#include "engine/ranges/TextRange.h"

/// What ranges do through the surface that shows their document, and how they are got. Each raises `base::Error` where
/// that can't be, also where no surface shows the document.
namespace ranges {

/// The document's selection; null where nothing shows it.
SelectionObject *selectionOf(dom::Document &document);

/// The selection as a range; where there is no caret, one at the start of the text.
Ref<TextRange> textRangeOf(SelectionObject &page);
/// Over the whole body.
Ref<TextRange> createTextRange(dom::Document &document);
/// Empty.
Ref<ControlRange> createControlRange(dom::Document &document);

/// The range stands behind what was written.
void pasteHTML(TextRange &range, const QString &html);
void setText(TextRange &range, const QString &text);
/// To the caret's place nearest to a client point.
void moveToPoint(TextRange &range, QPoint client);

} // namespace ranges
