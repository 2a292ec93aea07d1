// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/ComputedStyle.h"
#include "engine/dom/Element.h"

namespace css {

/// Generated boxes that have a style of their own.
enum class Pseudo : uint8_t { None, Before, After, Marker, FirstLine, FirstLetter, Selection };

/// Is told what changed of the styles, so that boxes can follow. Layout implements it. Told from `StyleEngine::update`,
/// never from within a primitive of the tree.
class StyleListener
{
public:
    virtual ~StyleListener() = default;
    /// `element` stands in the tree and has a new style, or one of its pseudo-elements has. Ancestors are told of
    /// before their descendants. With Reframe, descendants are not told of one by one: all of their boxes are to be
    /// made anew.
    virtual void styleChanged(dom::Element &element, Difference difference) = 0;
    /// Something waits for `StyleEngine::update`; told once until it was run, maybe from within a primitive of the
    /// tree: note it and ask nothing.
    virtual void stylesInvalidated() {}
};

} // namespace css
