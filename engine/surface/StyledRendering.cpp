// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/StyledRendering.h"

#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"

namespace surface {

using namespace dom;

StyledRendering::StyledRendering(layout::StyleSource &styles) : mStyles(styles)
{
    mStyles.addListener(this);
}

StyledRendering::~StyledRendering()
{
    mStyles.removeListener(this);
}

bool StyledRendering::isBlock(const Element &element) const
{
    if (!element.isConnected()) return byHtml().isBlock(element);
    if (element.is(names::body)) return true;
    const layout::StyleRef style = mStyles.styleFor(const_cast<Element &>(element));
    return !style->isInlineLevel() && style->display() != css::Display::None;
}

bool StyledRendering::preservesSpace(const Text &text) const
{
    const Element *parent = text.parentElement();
    if (!parent || !text.isConnected()) return byHtml().preservesSpace(text);
    return !mStyles.styleFor(const_cast<Element &>(*parent))->collapsesSpaces();
}

// Each child of details asks for their summary, which may stand far behind it or not at all.
const Element *StyledRendering::closedSummaryOf(const Element &details) const
{
    static const Atom open("open");
    if (details.attribute(open)) return nullptr;
    const uint64_t version = details.document().structureVersion();
    if (!details.isConnected() || mDetails != &details || mDetailsVersion != version) {
        mDetails = &details;
        mDetailsVersion = version;
        mSummary = layout::closedSummary(details);
    }
    return mSummary;
}

bool StyledRendering::isDisplayed(const Node &node) const
{
    const Element *parent = node.parentElement();
    if (parent && parent->is(names::details)) {
        const Element *summary = closedSummaryOf(*parent);
        if (summary && summary != &node) return false;
    }
    if (node.isText()) return true;
    const Element *element = node.asElement();
    if (!element) return false;
    if (element->is(names::br)) return true;
    if (!byHtml().isDisplayed(node)) return false;
    return !node.isConnected() || mStyles.styleFor(const_cast<Element &>(*element))->display() != css::Display::None;
}

ranges::Role StyledRendering::roleOf(const Element &element) const
{
    return mRoleOf ? mRoleOf(element) : Rendering::roleOf(element);
}

void StyledRendering::refresh() const
{
    mStyles.update();
}

void StyledRendering::styleChanged(Element &element, css::Difference difference)
{
    if (mIndex && difference >= css::Difference::Layout) mIndex->styleChanged(element, difference == css::Difference::Reframe);
}

} // namespace surface
