// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"

namespace css {

/// What an element's presentational attributes ask for, as declarations ("width: 50%; text-align: center"), after the
/// HTML standard's rendering section. Empty for most elements. Weaker than any rule of an author.
QString presentationalHints(const dom::Element &element);

/// Whether a change of the attribute may change the hints of the element itself, and whether those of its descendants.
enum class HintReach : uint8_t { None, Self, Subtree };
HintReach hintReach(const dom::Element &element, dom::Atom attribute);

} // namespace css
