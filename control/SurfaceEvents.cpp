// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/SurfaceEvents.h"

#include "core/EditableRegions.h"
#include "core/Host.h"
#include "core/Selection.h"
#include "core/modMain.h"
#include "engine/changes/EditScope.h"
#include "engine/surface/View.h"
#include "platform/CodeMax.h"
#include "platform/MessageBox.h"
#include "support/FailureTrap.h"

using support::given;
using support::trap;

namespace {
constexpr char module[] = "Vellum5";
constexpr int refreshToolsDelay = 500; // milliseconds
constexpr int keyLeft = 37, keyDown = 40; // the codes of the arrow keys lie between
} // namespace

SurfaceEvents::SurfaceEvents(ControlState &state, Host &host, HTMLEditor &surface, CodeMax &source,
                             const EditableRegions &regions, const Selection &selection)
    : mState(state), mHost(host), ed(surface), txtHTMLSource(source), mRegions(regions), mSelection(selection)
{
    connect(&timChange, &base::Timer::timeout, this, [this] {
        changes::EditScope scope;
        timChange_Timer();
    });
}

// Changes

void SurfaceEvents::restartChangeTimer()
{
    timChange.setEnabled(false);
    timChange.setInterval(mState.ChangeDelay);
    timChange.setEnabled(true);
}

void SurfaceEvents::mChangeManager_Changed()
{
    IHTMLElement *Area = nullptr;
    trap(module, "mChangeManager_Changed", given(&mState).locals("Area", Area), [&] {
        if (!mHost.IsUserMode() || mState.Busy || mState.mLoadingEd) return;
        mState.mDirty = true;
        mState.mHTMLEdIsDirty = true;
        if (mState.ChangeDelay < 1)
            DocChanged();
        else
            restartChangeTimer();
        mState.mLastChangeTime = base::Clock::instance().now();
        Area = ed.view().selectedArea();
        if (Area) mChangeManager_ElementChanged(Area);
    });
}

void SurfaceEvents::mChangeManager_ElementChanged(IHTMLElement *Element)
{
    trap(module, "mChangeManager_ElementChanged", given(&mState, "Element", Element), [&] {
        const base::Ref<IHTMLElement> held(Element);
        if (!Element) return;
        if (mRegions.IsElementInEditableSpan(Element))
            mHost.raiseEditableSpanChanged(mRegions.GetEditableSpan(Element));
        else
            raiseSpansWithin(Element);
    });
}

void SurfaceEvents::raiseSpansWithin(IHTMLElement *Element)
{
    platform::Collection Spans;
    const support::Locals locals("Spans", Spans);
    mRegions.GetEditableSpans(Element, Spans);
    for (const QVariant &Span : Spans) {
        // Held here: a host that is told of one span may remove the others.
        const auto span = Span.value<base::Ref<IHTMLElement>>();
        mHost.raiseEditableSpanChanged(mRegions.GetEditableSpan(span.get()));
    }
}

void SurfaceEvents::ForceElementChange(IHTMLElement *Element)
{
    trap(module, "ForceElementChange", given(&mState, "Element", Element), [&] {
        mChangeManager_ElementChanged(Element);
        mChangeManager_Changed();
    });
}

void SurfaceEvents::ForceSelectedElementChanged()
{
    trap(module, "ForceSelectedElementChanged", &mState,
         [&] { ForceElementChange(mSelection.SelectedElement().get()); });
}

void SurfaceEvents::txtHTMLSource_Change()
{
    trap(module, "txtHTMLSource_Change", &mState, [&] {
        mState.mHTMLSourceChanged = true;
        mState.mLastChangeTime = base::Clock::instance().now();
        if (mState.ChangeDelay < 1) {
            if (mState.mCurrentEditView == EditViewEnum::hvSourceEdit) mHost.RefreshTools();
            RaiseChangeEvent(false);
        } else {
            restartChangeTimer();
            timChange.setTag(QStringLiteral("HTML"));
        }
    });
}

void SurfaceEvents::txtHTMLSource_SelChange()
{
    trap(module, "txtHTMLSource_SelChange", &mState, [&] {
        if (!timChange.isEnabled()) mHost.RefreshTools();
    });
}

void SurfaceEvents::txtHTMLSource_ShowProps()
{
    trap(module, "txtHTMLSource_ShowProps", &mState, [&] {
        using platform::MessageBox;
        changes::EditScope::Suspension modal;
        MessageBox::show(MessageBox::Icon::Information, QStringLiteral("Not available"),
                         QStringLiteral("Properties not available for this window."), {MessageBox::Button::Ok},
                         mHost.window());
        txtHTMLSource.ClearErrorState();
    });
}

void SurfaceEvents::timChange_Timer()
{
    trap(module, "timChange_Timer", &mState, [&] {
        if (mState.mCurrentEditView == EditViewEnum::hvSourceEdit) mHost.RefreshTools();
        if (timChange.tag() == QLatin1String("HTML")) {
            RaiseChangeEvent(false);
            mHost.RefreshTools();
        } else {
            DocChanged();
        }
        timChange.setTag(QString());
        timChange.setEnabled(false);
    });
}

void SurfaceEvents::CommitEdit()
{
    trap(module, "CommitEdit", &mState, [&] {
        if (!timChange.isEnabled()) return;
        timChange.setEnabled(false);
        timChange_Timer();
    });
}

void SurfaceEvents::DocChanged()
{
    trap(module, "DocChanged", &mState, [&] { RaiseChangeEvent(false); });
}

void SurfaceEvents::RaiseChangeEvent(bool Force)
{
    trap(module, "RaiseChangeEvent", given(&mState, "Force", Force), [&] {
        if (mHost.UndoEnabled() || Force) mHost.raiseChange();
    });
}

bool SurfaceEvents::IsIdle() const
{
    if (!mState.mLastChangeTime.isValid()) return true;
    // By the clock's seconds, whatever part of each has passed.
    return base::Clock::instance().now().toSecsSinceEpoch() - mState.mLastChangeTime.toSecsSinceEpoch() > 2;
}

void SurfaceEvents::SetRefreshToolsTimer()
{
    trap(module, "SetRefreshToolsTimer", &mState, [&] {
        if (mState.mRefreshToolsTimer) {
            mState.mRefreshToolsTimer->setEnabled(false);
        } else {
            mState.mRefreshToolsTimer = std::make_unique<base::Timer>();
            mState.mRefreshToolsTimer->setInterval(refreshToolsDelay);
            connect(mState.mRefreshToolsTimer.get(), &base::Timer::timeout, this, [this] {
                changes::EditScope scope;
                mRefreshToolsTimer_Timer();
            });
        }
        mState.mRefreshToolsTimer->setEnabled(true);
    });
}

void SurfaceEvents::mRefreshToolsTimer_Timer()
{
    trap(module, "mRefreshToolsTimer_Timer", &mState, [&] {
        // It may be what calls.
        mState.mRefreshToolsTimer->setEnabled(false);
        mState.mRefreshToolsTimer.release()->deleteLater();
        mHost.RefreshTools();
    });
}

void SurfaceEvents::dropTimers()
{
    timChange.setEnabled(false);
    mState.mRefreshToolsTimer.reset();
}

// The surface

void SurfaceEvents::ed_ElementEvent(int EventId, dom::EventObject *EventInfo, bool &CancelDefault)
{
    const auto parameters =
        given(&mState, "EventId", EventId, "EventInfo", EventInfo, "CancelDefault", CancelDefault);
    bool isArrow = false;
    trap(module, "ed_ElementEvent", parameters.locals("IsArrow", isArrow), [&] {
        if (!EventInfo->srcElement || !mState.mVisible || mState.mCurrentEditView == EditViewEnum::hvPreview) return;
        if (EventId == elementevents::mouseDown) mState.mMouseIsDown = true;
        if (EventId == elementevents::mouseUp) mState.mMouseIsDown = false;
        // Moving the caret refreshes once it rests, not at each key.
        isArrow = EventInfo->keyCode >= keyLeft && EventInfo->keyCode <= keyDown;
        if (EventId == elementevents::keyUp && isArrow && modMain::IsElementEditable(EventInfo->srcElement.get()))
            SetRefreshToolsTimer();
        mHost.raiseElementEvent(EventId, EventInfo, CancelDefault);
    });
}

void SurfaceEvents::ed_BeforeNavigate(const surface::Navigation &navigation, bool &Cancel)
{
    const QString &URL = navigation.url;
    const HTMLEditor *const Object = &ed;
    const auto parameters = given(&mState, "Object", Object, "URL", URL, "Flags", navigation.flags, "TargetFrameName",
                                  navigation.targetFrameName, "PostData", navigation.postData, "Headers",
                                  navigation.headers, "Cancel", Cancel);
    const bool browsesScript =
        URL.startsWith(QLatin1String("javascript:"), Qt::CaseInsensitive) && mState.mEditMode == 0;
    trap(module, "ed_BeforeNavigate", parameters.locals("BrowsesScript", browsesScript), [&] {
        if (navigation.targetFrameName == QLatin1String("ic_modal_Frame")) {
            mState.mRespondToDocumentComplete = false;
        } else if (mState.mAllowNavigate) {
            // A page's own script replaces nothing while the page is read: what it stands in stays.
            if (!browsesScript) ShutDownBeforeReload();
        } else if (browsesScript) {
            return;
        } else if (URL.startsWith(QLatin1String("designcommand:"))) {
            Cancel = true;
            mHost.raiseHyperlinkClick(URL);
        } else if (!modMain::ParseURL(URL, mState.mBaseURL).startsWith(u'#')) {
            Cancel = true;
        }
    });
}

void SurfaceEvents::ed_NavigateComplete()
{
    trap(module, "ed_NavigateComplete", &mState, [&] { mState.mAllowNavigate = false; });
}

void SurfaceEvents::ed_CellSelectionChanged()
{
    trap(module, "ed_CellSelectionChanged", &mState, [&] { mHost.raiseCellSelectionChanged(); });
}

void SurfaceEvents::ed_CommandStateChange(int Command, int Enable)
{
    trap(module, "ed_CommandStateChange", given(&mState, "Command", Command, "Enable", Enable), [&] {
        if (Command != -1 || mState.MouseIsDown || mState.Busy) return;
        mState.Busy = true;
        if (mHost.IsUserMode() && !mState.mLoadingEd) mHost.RefreshTools();
        mState.Busy = false;
    });
}
