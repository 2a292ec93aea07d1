// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "control/ControlState.h"

#include <memory>

class CodeMax;
class EditableRegions;
class Host;
class Selection;

/// What the control does with the surface's and the source editor's events, and when it tells the host of a change.
class SurfaceEvents : public QObject
{
    Q_OBJECT
public:
    SurfaceEvents(ControlState &state, Host &host, HTMLEditor &ed, CodeMax &txtHTMLSource,
                  const EditableRegions &regions, const Selection &selection);

    std::function<void()> ShutDownBeforeReload;

    void mChangeManager_Changed();
    void mChangeManager_ElementChanged(IHTMLElement *Element);
    void txtHTMLSource_Change();
    void txtHTMLSource_SelChange();
    void txtHTMLSource_ShowProps();
    void timChange_Timer();
    void CommitEdit();
    void DocChanged();
    /// An edit that leaves nothing to undo is no change, unless forced.
    void RaiseChangeEvent(bool Force);
    bool IsIdle() const;
    /// Refreshes the command states half a second after the last of a row of calls.
    void SetRefreshToolsTimer();
    void mRefreshToolsTimer_Timer();
    /// No timer is left that would fire.
    void dropTimers();
    void ForceElementChange(IHTMLElement *Element);
    /// As if the manager had seen a change in the element that is selected.
    void ForceSelectedElementChanged();

    void ed_ElementEvent(int EventId, dom::EventObject *EventInfo, bool &CancelDefault);
    void ed_BeforeNavigate(const surface::Navigation &navigation, bool &Cancel);
    void ed_NavigateComplete();
    void ed_CellSelectionChanged();
    void ed_AreaCreated(IHTMLElement *Area);
    /// `Enable` is -1 for yes, 0 for no.
    void ed_CommandStateChange(int Command, int Enable);

    base::Timer timChange;

private:
    void restartChangeTimer();
    void askForLink(IHTMLElement &Area);
    void raiseSpansWithin(IHTMLElement *Element);

    ControlState &mState;
    Host &mHost;
    HTMLEditor &ed;
    CodeMax &txtHTMLSource;
    const EditableRegions &mRegions;
    const Selection &mSelection;
};
