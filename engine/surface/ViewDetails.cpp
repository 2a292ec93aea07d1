// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"
#include "engine/ranges/Movement.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

// Details and their summaries: opening and closing them.

namespace surface {

namespace {

/// The summary around a node that shows whether details are open; null for none.
dom::Element *summaryAround(dom::Node *node)
{
    for (dom::Node *at = node; at; at = at->parentNode()) {
        dom::Element *element = at->asElement();
        dom::Element *details = element ? element->parentElement() : nullptr;
        if (!element || !element->is(dom::names::summary) || !details || !details->is(dom::names::details)) continue;
        for (dom::Node *before = element->previousSibling(); before; before = before->previousSibling())
            if (const dom::Element *other = before->asElement(); other && other->is(dom::names::summary)) return nullptr;
        return element;
    }
    return nullptr;
}

} // namespace

/// A press on the sign in front of a summary opens the details or closes them, one step: an author can't reach what
/// closed ones hold otherwise. On the summary's text it puts the caret there. Whether nothing else is meant.
bool View::pressOnSummary(QPoint client)
{
    if (mWidget.editMode() == dom::EditMode::Browse || mWidget.isReadOnly()) return false;
    const base::Ref<dom::Element> summary(summaryAround(elementAt(client)));
    if (!summary || !mLoaded->queries().isOnMarker(*summary, toDocument(client))) return false;
    dom::Element &details = *summary->parentElement();
    if (!details.isContentEditable()) return false;
    static const dom::Atom open("open");
    ranges::SelectionObject &selection = mLoaded->selection();
    changes::ChangeTracker::Step step(mLoaded->tracker(), changes::Kind::Command);
    const QString set;
    mLoaded->tracker().setAttribute(details, open, details.hasAttribute(open) ? nullptr : &set);
    step.done();
    // A caret in what has closed would write where nobody sees it.
    const auto isLost = [&](const ranges::Position &at) {
        return at && details.contains(*at.node) && at.node != base::Ref<dom::Node>(&details) && !summary->contains(*at.node);
    };
    if (layout::closedSummary(details) && (isLost(selection.anchor()) || isLost(selection.focus()))) {
        const ranges::Content content = ranges::Movement::contentFor(ranges::Position::startOf(*summary), mLoaded->editor().rendering());
        selection.setCaret(content.normalised(ranges::Position::endOf(*summary)));
    }
    edited();
    return true;
}

} // namespace surface
