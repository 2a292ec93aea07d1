// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/StyleEngine.h"
#include "engine/layout/StyleSource.h"

namespace surface {

/// Gives layout the styles of the document's engine.
class StyleBridge final : public layout::StyleSource
{
public:
    explicit StyleBridge(css::StyleEngine &engine) : mEngine(engine) {}
    layout::StyleRef styleFor(dom::Element &element) override { return layout::StyleRef(&mEngine.styleFor(element)); }
    layout::StyleRef pseudoStyleFor(dom::Element &element, css::Pseudo pseudo) override
    {
        return layout::StyleRef(mEngine.styleFor(element, pseudo));
    }
    void update() override { mEngine.update(); }
    void addListener(css::StyleListener *listener) override { mEngine.addListener(listener); }
    void removeListener(css::StyleListener *listener) override { mEngine.removeListener(listener); }

private:
    css::StyleEngine &mEngine;
};

} // namespace surface
