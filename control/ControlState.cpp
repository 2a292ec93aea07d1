// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/ControlState.h"

#include "commands/VirtualCommandManager.h"
#include "control/Theme.h"
#include "undo/ChangeManager.h"

ControlState::ControlState() : mStylesheets(std::make_shared<platform::Collection>()) {}

ControlState::~ControlState() = default;

void ControlState::dumpModuleVariables(support::VariableDump &dump) const
{
    const auto external = [&dump](const char *name) { dump.addExternal(name); };
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
        .add("mCurrentEditView", int(mCurrentEditView));
    external("mStylesheets");
    dump.add("mShowDetails", mShowDetails)
        .add("mLoadingEd", mLoadingEd)
        .add("Busy", Busy)
        .add("mDynamicSpellCheck", mDynamicSpellCheck);
    external("mSpellChoiceElement");
    dump.add("mSpellImagePath", mSpellImagePath)
        .add("mSpellCheckInProgress", mSpellCheckInProgress)
        .add("mShowPropertySheet", mShowPropertySheet)
        .add("mLastChangeTime", mLastChangeTime)
        .add("mVisible", mVisible)
        .add("mHTMLEdIsDirty", mHTMLEdIsDirty)
        .add("mHTMLSourceChanged", mHTMLSourceChanged)
        .add("mDirty", mDirty)
        .add("mDragSelectionBookmark", mDragSelectionBookmark);
    external("mCommandManager");
    dump.add("mKeyContextMenu", mKeyContextMenu)
        .add("mTerminating", mTerminating)
        .add("mTerminated", mTerminated);
    external("mTooltip");
    dump.add("mEnableLinkClicks", mEnableLinkClicks)
        .add("mShowPreviewButton", mShowPreviewButton)
        .add("mContextToolbarStyle", mContextToolbarStyle);
    external("mTheme");
    dump.add("mThemed", mThemed)
        .add("mBorderStyle", mBorderStyle)
        .add("mBackColor", mBackColor)
        .add("mLocked", mLocked);
    external("mEventProxy");
    dump.add("mWrapCharacters", mWrapCharacters)
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
        .add("mFakeClickElementId", mFakeClickElementId);
    external("mSpecificElement");
    external("mTagSupport");
    external("mPageMap");
    external("mPageTagBar");
    dump.add("mLastVisualContent", mLastVisualContent)
        .add("mOutputDebugStrings", mOutputDebugStrings)
        .add("mChangeKey", mChangeKey)
        .add("mCmdFail", mCmdFail)
        .add("mMouseIsDown", mMouseIsDown);
    // Those that raise events stand behind the fields.
    for (const char *name : {"mSpell", "mChangeManager", "mSpellChecker", "mFindReplaceForm", "TempSpellChecker", "mDock",
                             "HTMLAttributes", "mColorize", "mMoveCaretTimer", "mFakeClickTimer", "mRefreshToolsTimer",
                             "mShowFindReplaceTimer"})
        external(name);
}
