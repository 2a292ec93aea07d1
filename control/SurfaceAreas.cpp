// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/SurfaceEvents.h"

#include "core/Host.h"
#include "core/Selection.h"
#include "core/modMain.h"
#include "engine/dom/Names.h"
#include "engine/html/Parser.h"
#include "support/FailureTrap.h"

using support::given;
using support::trap;

// Hot spots that the user draws.

namespace {

constexpr char module[] = "Vellum5";

/// A detached document has no address of its own, and some links come with the one that it would have.
QString withoutBlankAddress(QString href)
{
    for (const QLatin1String blank : {QLatin1String("about:blank"), QLatin1String("about:")})
        if (href.startsWith(blank)) return href.mid(blank.size());
    return href;
}

} // namespace

/// The host says where the new area leads; one that leads nowhere goes again.
void SurfaceEvents::ed_AreaCreated(IHTMLElement *Area)
{
    base::Ref<IHTMLElement> selected;
    trap(module, "ed_AreaCreated", given(&mState, "Area", Area).locals("SelectedElement", selected), [&] {
        const base::Ref<IHTMLElement> held(Area);
        selected = mSelection.SelectedElement();
        if (selected && selected->tagName() == QLatin1String("AREA")) askForLink(*selected);
        ForceElementChange(Area);
        ed.setHotSpotTool(0);
    });
}

void SurfaceEvents::askForLink(IHTMLElement &Area)
{
    const base::Ref<IHTMLElement> held(&Area);
    QString Link, Target = Area.attributeValue("target");
    bool Handled = false;
    const support::Locals locals("Link", Link, "Target", Target, "Handled", Handled);
    mHost.raiseInsertHyperLinkRequestEx(QString(), Link, Target, Handled);
    if (!Handled) mHost.raiseInsertHyperLinkRequest(QString(), Link, Handled);
    if (!Area.isConnected()) return; // the host has taken it away itself
    if (!Handled || Link.isEmpty()) return Area.setOuterHTML(QString());
    const auto parsed = html::parseDocument(QLatin1String("<html><body>") + Link + QLatin1String("</body></html>"));
    const std::vector<IHTMLElement *> &anchors = parsed->elementsNamed(dom::names::a);
    if (anchors.empty()) throw base::Error(base::errors::objectNotSet, QStringLiteral("The link holds no anchor."));
    IHTMLElement &anchor = *anchors.front();
    Area.setAttribute(QStringLiteral("href"), withoutBlankAddress(modMain::GetHrefFromElement(&anchor)));
    Area.setAttribute(QStringLiteral("alt"), anchor.innerText());
    if (Target != Area.attributeValue("target")) Area.setAttribute(QStringLiteral("target"), Target);
}
