// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"

namespace html {

/// Whether HTML shows the element as a block of its own when no style says otherwise; table parts count. (HTML standard,
/// section 15.3 "Non-replaced elements".)
bool isBlockElement(const dom::Element &element);

/// A block whose content is inline by its nature and that keeps its line when emptied: P, headings, LI, cells, DIV ...
bool isTextBlock(const dom::Element &element);

} // namespace html
