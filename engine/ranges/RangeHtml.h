// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/TextRange.h"

namespace ranges {

/// The HTML that the range holds, as `htmlOf` gives it, but without the tags of `around` and of what stands around that,
/// also where all of their content is covered. `around` holds the range; null for no such element. Line ends are CR LF.
QString htmlWithin(const TextRange &range, const dom::Element *around);

} // namespace ranges
