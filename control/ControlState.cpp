// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/ControlState.h"

#include "commands/VirtualCommandManager.h"
#include "control/EventProxy.h"
#include "control/Theme.h"
#include "undo/ChangeManager.h"

ControlState::ControlState() : mStylesheets(std::make_shared<platform::Collection>()) {}

ControlState::~ControlState() = default;

void ControlState::dumpModuleVariables(support::VariableDump &dump) const
{
    // Those that nothing makes yet.
    constexpr auto missing = nullptr;
    dump.add("ChangeDelay", ChangeDelay)
        .add("DontPostWhenEditViewChanges", DontPostWhenEditViewChanges)
        .add("PageMapDragInProgress", PageMapDragInProgress)
        .add("LockPageMapAndBarRefresh", LockPageMapAndBarRefresh)
        .add("mFileName", mFileName)
        .add("mBaseURL", mBaseURL)
        .add("mInitialised", mInitialised)
        .add("MouseIsDown", MouseIsDown)
        .add("mEnabled", mEnabled)
        .add("mShowFlatStrip", mShowFlatStrip)
        .add("mShowPageMap", mShowPageMap)
        .add("mShowTagBar", mShowTagBar)
        .add("mBodyMode", mBodyMode)
        .add("mCurrentEditView", int(mCurrentEditView))
        .add("mStylesheets", mStylesheets)
        .add("mShowDetails", mShowDetails)
        .add("mLoadingEd", mLoadingEd)
        .add("Busy", Busy)
        .add("mDynamicSpellCheck", mDynamicSpellCheck)
        .add("mSpellChoiceElement", mSpellChoiceElement)
        .add("mSpellImagePath", mSpellImagePath)
        .add("mSpellCheckInProgress", mSpellCheckInProgress)
        .add("mShowPropertySheet", mShowPropertySheet)
        .add("mLastChangeTime", mLastChangeTime)
        .add("mVisible", mVisible)
        .add("mHTMLEdIsDirty", mHTMLEdIsDirty)
        .add("mHTMLSourceChanged", mHTMLSourceChanged)
        .add("mDirty", mDirty)
        .add("mDragSelectionBookmark", mDragSelectionBookmark)
        .add("mCommandManager", mCommandManager)
        .add("mKeyContextMenu", mKeyContextMenu)
        .add("mTerminating", mTerminating)
        .add("mTerminated", mTerminated)
        .add("mTooltip", missing)
        .add("mEnableLinkClicks", mEnableLinkClicks)
        .add("mShowPreviewButton", mShowPreviewButton)
        .add("mContextToolbarStyle", mContextToolbarStyle)
        .add("mTheme", mTheme)
        .add("mThemed", mThemed)
        .add("mBorderStyle", mBorderStyle)
        .add("mBackColor", mBackColor)
        .add("mLocked", mLocked)
        .add("mEventProxy", mEventProxy)
        .add("mWrapCharacters", mWrapCharacters)
        .add("mAutoFormatRemoveBlankLines", mAutoFormatRemoveBlankLines)
        .add("mAllowNavigate", mAllowNavigate)
        .add("mNavigateSound", mNavigateSound)
        .add("mSynchingSource", mSynchingSource)
        .add("mRespondToDocumentComplete", mRespondToDocumentComplete)
        .add("mLoaded", mLoaded)
        .add("mEditMode", mEditMode)
        .add("mBOM", mBOM)
        .add("mSelectionX", mSelectionX)
        .add("mSelectionY", mSelectionY)
        .add("mSelectionLength", mSelectionLength)
        .add("mSelectionCharactersFromStart", mSelectionCharactersFromStart)
        .add("mSavedSelectionLength", mSavedSelectionLength)
        .add("mSavedSelectionCharactersFromStart", mSavedSelectionCharactersFromStart)
        .add("mFakeClickElementId", mFakeClickElementId)
        .add("mSpecificElement", mSpecificElement)
        .add("mTagSupport", missing)
        .add("mPageMap", missing)
        .add("mPageTagBar", missing)
        .add("mLastVisualContent", mLastVisualContent)
        .add("mOutputDebugStrings", mOutputDebugStrings)
        .add("mChangeKey", mChangeKey)
        .add("mCmdFail", mCmdFail)
        .add("mMouseIsDown", mMouseIsDown)
        // Those that raise events stand behind the fields.
        .add("mSpell", missing)
        .add("mChangeManager", mChangeManager)
        .add("mSpellChecker", missing)
        .add("mFindReplaceForm", missing)
        .add("TempSpellChecker", missing)
        .add("mDock", missing)
        .add("HTMLAttributes", missing)
        .add("mColorize", missing)
        .add("mMoveCaretTimer", missing)
        .add("mFakeClickTimer", missing)
        .add("mRefreshToolsTimer", mRefreshToolsTimer)
        .add("mShowFindReplaceTimer", missing);
}
