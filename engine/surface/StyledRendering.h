// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/StyleSource.h"
#include "engine/ranges/TextIndex.h"

#include <functional>

namespace surface {

/// How content is shown by its computed styles: what stands on lines of its own, keeps its blanks, or isn't there. Tells
/// an index of what changes.
class StyledRendering final : public ranges::Rendering, public css::StyleListener
{
public:
    explicit StyledRendering(layout::StyleSource &styles);
    ~StyledRendering() override;
    /// Who is told; null for nobody. Not owned.
    void setIndex(ranges::TextIndex *index) { mIndex = index; }

    bool isBlock(const dom::Element &element) const override;
    bool preservesSpace(const dom::Text &text) const override;
    bool isDisplayed(const dom::Node &node) const override;
    void refresh() const override;
    ranges::Role roleOf(const dom::Element &element) const override;
    /// Who knows what the host's pages mean; empty: as HTML has it.
    void setRoles(std::function<ranges::Role(const dom::Element &)> roleOf) { mRoleOf = std::move(roleOf); }

    void styleChanged(dom::Element &element, css::Difference difference) override;

private:
    const dom::Element *closedSummaryOf(const dom::Element &details) const;

    layout::StyleSource &mStyles;
    // The details last asked about; never followed, only compared.
    mutable const dom::Element *mDetails = nullptr;
    mutable const dom::Element *mSummary = nullptr;
    mutable uint64_t mDetailsVersion = 0;
    ranges::TextIndex *mIndex = nullptr;
    std::function<ranges::Role(const dom::Element &)> mRoleOf;
};

} // namespace surface
