// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "platform/Collection.h"
#include "platform/Contract.h"
#include "platform/Enumerations.h"
#include "support/VariableDump.h"

#include <QDateTime>
#include <memory>

class ChangeManager;
class EventProxy;
class Theme;
class VirtualCommandManager;

/// Before the first view is shown.
inline constexpr EditViewEnum noView = EditViewEnum(-1);

/// The fields of one control, in their declared order, which is that of a failure's dump. They are shared by the concerns
/// of `control/`: most say which side is ahead or what is under way, and more than one concern must know.
struct ControlState {
    int ChangeDelay = 0; ///< milliseconds of quiet before `Change`; below 1 at once
    bool DontPostWhenEditViewChanges = false;
    bool PageMapDragInProgress = false;
    bool LockPageMapAndBarRefresh = false;
    QString mFileName;
    QString mBaseURL;
    bool mInitialised = false;
    bool MouseIsDown = false;
    bool mEnabled = true;
    bool mShowFlatStrip = false;
    bool mShowPageMap = false;
    bool mShowTagBar = false;
    bool mBodyMode = false;
    EditViewEnum mCurrentEditView = noView;
    std::shared_ptr<platform::Collection> mStylesheets; ///< always an object
    bool mShowDetails = false;
    bool mLoadingEd = false;
    bool Busy = false;
    bool mDynamicSpellCheck = false;
    base::Ref<IHTMLElement> mSpellChoiceElement;
    QString mSpellImagePath;
    bool mSpellCheckInProgress = false;
    bool mShowPropertySheet = false;
    QDateTime mLastChangeTime;
    bool mVisible = false;
    bool mHTMLEdIsDirty = false;     ///< the surface is ahead
    bool mHTMLSourceChanged = false; ///< the source editor is ahead
    bool mDirty = false;
    QString mDragSelectionBookmark;
    std::shared_ptr<VirtualCommandManager> mCommandManager;
    bool mKeyContextMenu = false;
    bool mTerminating = false;
    bool mTerminated = false;
    bool mEnableLinkClicks = false;
    bool mShowPreviewButton = true;
    int mContextToolbarStyle = 0;
    std::unique_ptr<Theme> mTheme; ///< Nothing after the end
    bool mThemed = false;
    int mBorderStyle = 1;
    uint mBackColor = 0xFFFFFF; ///< red in the low byte
    bool mLocked = false;
    std::unique_ptr<EventProxy> mEventProxy; ///< made for the first who asks
    int mWrapCharacters = 0;
    bool mAutoFormatRemoveBlankLines = false;
    bool mAllowNavigate = false;
    QString mNavigateSound;
    bool mSynchingSource = false;
    bool mRespondToDocumentComplete = false;
    bool mLoaded = false;
    int mEditMode = 1;
    QString mBOM;
    int mSelectionX = 0;
    int mSelectionY = 0;
    int mSelectionLength = 0;
    QString mSelectionCharactersFromStart;
    int mSavedSelectionLength = 0;
    QString mSavedSelectionCharactersFromStart;
    QString mFakeClickElementId;
    base::Ref<IHTMLElement> mSpecificElement;
    QString mLastVisualContent;
    bool mOutputDebugStrings = false;
    QString mChangeKey;
    bool mCmdFail = false;
    bool mMouseIsDown = false;
    std::unique_ptr<ChangeManager> mChangeManager;
    std::unique_ptr<base::Timer> mRefreshToolsTimer; ///< there from its start until it has fired

    ControlState();
    ~ControlState();
    void dumpModuleVariables(support::VariableDump &dump) const;
};
