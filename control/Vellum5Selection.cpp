// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"

#include "control/Vellum5Parts.h"
#include "core/modMain.h"
#include "engine/changes/EditScope.h"
#include "support/FailureTrap.h"

using changes::EditScope;
using support::trap;

// What is selected, and the regions of the page. Each public member is an edit scope.

// Regions. Elements that are Nothing are in none.

bool Vellum5::IsEditWrapperElement(dom::Element *e)
{
    EditScope scope;
    return modMain::IsEditWrapperElement(e);
}

bool Vellum5::IsWidgetElement(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.IsWidgetElement(e);
}

bool Vellum5::IsWidgetPropertyElement(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.IsWidgetPropertyElement(e);
}

bool Vellum5::ContainsWidgetElement(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.ContainsWidgetElement(e);
}

bool Vellum5::IsInWidget(dom::Element *e)
{
    EditScope scope;
    return mParts->regions.IsInWidget(e);
}
