// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/StyleListener.h"

namespace layout {

using StyleRef = base::Ref<const css::ComputedStyle>;

/// Where layout gets styles from. The style engine supplies them; tests may do so by hand.
class StyleSource
{
public:
    virtual ~StyleSource() = default;
    /// The style of an element of the tree, computed when it isn't known.
    virtual StyleRef styleFor(dom::Element &element) = 0;
    /// The style of a generated box; null where no rule speaks of one.
    virtual StyleRef pseudoStyleFor(dom::Element &element, css::Pseudo pseudo) = 0;
    /// Computes what waits and tells the listeners.
    virtual void update() = 0;
    virtual void addListener(css::StyleListener *listener) = 0;
    virtual void removeListener(css::StyleListener *listener) = 0;
};

} // namespace layout
