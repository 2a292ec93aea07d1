// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/FontUnits.h"
#include "engine/css/StyleEngine.h"
#include "engine/layout/FontCache.h"
#include "engine/layout/StyleSource.h"

namespace layout {

/// The style engine as layout's source of styles. The engine must outlive it.
class EngineStyles final : public StyleSource
{
public:
    explicit EngineStyles(css::StyleEngine &engine) : mEngine(engine) { css::setFontMeasure(&measureFont); }
    StyleRef styleFor(dom::Element &element) override { return StyleRef(&mEngine.styleFor(element)); }
    StyleRef pseudoStyleFor(dom::Element &element, css::Pseudo pseudo) override
    {
        return StyleRef(mEngine.styleFor(element, pseudo));
    }
    void update() override { mEngine.update(); }
    void addListener(css::StyleListener *listener) override { mEngine.addListener(listener); }
    void removeListener(css::StyleListener *listener) override { mEngine.removeListener(listener); }

private:
    css::StyleEngine &mEngine;
};

} // namespace layout
