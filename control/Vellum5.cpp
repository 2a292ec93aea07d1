// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"

#include "control/Vellum5Parts.h"
#include "core/modMain.h"
#include "engine/changes/EditScope.h"
#include "platform/SurfaceNumbers.h"
#include "support/FailureTrap.h"

using changes::EditScope;
using support::given;
using support::trap;

// Properties and methods. Each public member is an edit scope: what the host wrote before is told first, and what the
// member writes when it ends.

namespace {
constexpr char module[] = "Vellum5";
}

ControlState &Vellum5::state() const
{
    return mParts->state;
}

RecoveryJournal &Vellum5::Recovery() const
{
    return mParts->journal;
}

// Document text

QString Vellum5::DocumentHTML()
{
    EditScope scope;
    return mParts->text.DocumentHTML();
}

void Vellum5::setDocumentHTML(const QString &Text)
{
    EditScope scope;
    mParts->text.setDocumentHTML(Text);
}

QString Vellum5::BodyText()
{
    EditScope scope;
    return mParts->text.BodyText();
}

void Vellum5::setBodyText(const QString &Text)
{
    EditScope scope;
    mParts->text.setBodyText(Text);
}

bool Vellum5::BodyMode() const
{
    return trap(module, "BodyMode", &mParts->state, [&] { return mParts->state.mBodyMode; });
}

void Vellum5::setBodyMode(bool BodyMode)
{
    EditScope scope;
    trap(module, "BodyMode", given(&mParts->state, "BodyMode", BodyMode), [&] {
        mParts->state.mBodyMode = BodyMode;
        tellHost("BodyMode");
    });
}

QString Vellum5::BaseURL() const
{
    return trap(module, "BaseURL", &mParts->state, [&] { return mParts->state.mBaseURL; });
}

void Vellum5::setBaseURL(const QString &BaseURL)
{
    EditScope scope;
    trap(module, "BaseURL", given(&mParts->state, "BaseURL", BaseURL), [&] {
        mParts->state.mBaseURL = BaseURL;
        tellHost("BaseURL");
    });
}

bool Vellum5::Dirty()
{
    EditScope scope;
    return mParts->text.Dirty();
}

std::shared_ptr<platform::Collection> Vellum5::StyleSheets() const
{
    return trap(module, "StyleSheets", &mParts->state, [&] { return mParts->state.mStylesheets; });
}

void Vellum5::setStyleSheets(std::shared_ptr<platform::Collection> StyleSheets)
{
    trap(module, "StyleSheets", given(&mParts->state, "StyleSheets", StyleSheets), [&] {
        if (StyleSheets) mParts->state.mStylesheets = std::move(StyleSheets);
    });
}

void Vellum5::LoadFile(const QString &Filename)
{
    EditScope scope;
    mParts->text.LoadFile(Filename);
}

void Vellum5::SaveFile(bool &Cancel, bool Prompt)
{
    EditScope scope;
    mParts->text.SaveFile(Cancel, Prompt);
}

void Vellum5::Navigate(const QString &URL, int Flags, const QString &TargetFrameName, const QByteArray &PostData,
                       const QString &Headers)
{
    EditScope scope;
    mParts->text.Navigate({URL, Flags, TargetFrameName, PostData, Headers});
}

bool Vellum5::Loading() const
{
    return trap(module, "Loading", &mParts->state, [&] { return mParts->text.Loading(); });
}

void Vellum5::WaitUntilLoaded()
{
    EditScope scope;
    mParts->text.WaitUntilLoaded();
}

bool Vellum5::SetDocumentHTMLWithChangeKey(const QString &RHS, const QString &ChangeKey)
{
    EditScope scope;
    return mParts->text.SetDocumentHTMLWithChangeKey(RHS, ChangeKey);
}

void Vellum5::SetChangeKey(const QString &ChangeKey)
{
    EditScope scope;
    mParts->text.SetChangeKey(ChangeKey);
}

bool Vellum5::AutoFormatHTML() const
{
    return trap(module, "AutoFormatHTML", &mParts->state, [&] { return modMain::mAutoFormatHTML; });
}

void Vellum5::setAutoFormatHTML(bool AutoFormat)
{
    trap(module, "AutoFormatHTML", given(&mParts->state, "AutoFormat", AutoFormat),
         [&] { modMain::mAutoFormatHTML = AutoFormat; });
}

bool Vellum5::AutoFormatRemoveBlankLines() const
{
    return trap(module, "AutoFormatRemoveBlankLines", &mParts->state,
                [&] { return mParts->state.mAutoFormatRemoveBlankLines; });
}

void Vellum5::setAutoFormatRemoveBlankLines(bool Remove)
{
    trap(module, "AutoFormatRemoveBlankLines", given(&mParts->state, "Remove", Remove),
         [&] { mParts->state.mAutoFormatRemoveBlankLines = Remove; });
}

int Vellum5::WrapCharacters() const
{
    return trap(module, "WrapCharacters", &mParts->state, [&] { return mParts->state.mWrapCharacters; });
}

void Vellum5::setWrapCharacters(int Characters)
{
    trap(module, "WrapCharacters", given(&mParts->state, "Characters", Characters),
         [&] { mParts->state.mWrapCharacters = Characters; });
}

QString Vellum5::FormatHTMLString(const QString &Text, bool IsBody)
{
    return trap(module, "FormatHTMLString", given(&mParts->state, "Text", Text, "IsBody", IsBody),
                [&] { return mParts->text.FormatHTML(Text, IsBody); });
}

// Views

int Vellum5::EditView() const
{
    return trap(module, "EditView", &mParts->state, [&] { return int(mParts->views.EditView()); });
}

void Vellum5::setEditView(int View)
{
    EditScope scope;
    mParts->views.setEditView(EditViewEnum(View));
}

bool Vellum5::DontPostWhenEditViewChanges() const
{
    return trap(module, "DontPostWhenEditViewChanges", &mParts->state,
                [&] { return mParts->state.DontPostWhenEditViewChanges; });
}

void Vellum5::setDontPostWhenEditViewChanges(bool DontPost)
{
    trap(module, "DontPostWhenEditViewChanges", given(&mParts->state, "DontPost", DontPost),
         [&] { mParts->state.DontPostWhenEditViewChanges = DontPost; });
}

bool Vellum5::ShowFlatStrip() const
{
    return trap(module, "ShowFlatStrip", &mParts->state, [&] { return mParts->state.mShowFlatStrip; });
}

void Vellum5::setShowFlatStrip(bool Show)
{
    EditScope scope;
    mParts->views.setShowFlatStrip(Show);
}

bool Vellum5::ShowPreviewButton() const
{
    return trap(module, "ShowPreviewButton", &mParts->state, [&] { return mParts->state.mShowPreviewButton; });
}

void Vellum5::setShowPreviewButton(bool Show)
{
    EditScope scope;
    mParts->views.setShowPreviewButton(Show);
}

bool Vellum5::ShowPageMap() const
{
    return trap(module, "ShowPageMap", &mParts->state, [&] { return mParts->state.mShowPageMap; });
}

void Vellum5::setShowPageMap(bool Show)
{
    EditScope scope;
    mParts->views.setShowPageMap(Show);
}

bool Vellum5::ShowTagBar() const
{
    return trap(module, "ShowTagBar", &mParts->state, [&] { return mParts->state.mShowTagBar; });
}

void Vellum5::setShowTagBar(bool Show)
{
    EditScope scope;
    mParts->views.setShowTagBar(Show);
}

bool Vellum5::ShowPropertySheet() const
{
    return trap(module, "ShowPropertySheet", &mParts->state, [&] { return mParts->state.mShowPropertySheet; });
}

void Vellum5::setShowPropertySheet(bool Show)
{
    EditScope scope;
    mParts->views.setShowPropertySheet(Show);
}

bool Vellum5::ShowDetails() const
{
    return trap(module, "ShowDetails", &mParts->state, [&] { return mParts->state.mShowDetails; });
}

void Vellum5::setShowDetails(bool Show)
{
    EditScope scope;
    mParts->views.setShowDetails(Show);
}

// Editing

int Vellum5::EditMode() const
{
    return trap(module, "EditMode", &mParts->state, [&] { return mParts->state.mEditMode; });
}

void Vellum5::setEditMode(int Mode)
{
    EditScope scope;
    trap(module, "EditMode", given(&mParts->state, "Mode", Mode), [&] {
        if (Mode < 0 || Mode > 2)
            throw base::Error(base::errors::invalidValue, QStringLiteral("There is no edit mode %1.").arg(Mode));
        mParts->state.mEditMode = Mode; // reaches the surface at the next update of the view
        tellHost("EditMode");
    });
}

bool Vellum5::Locked() const
{
    return trap(module, "Locked", &mParts->state, [&] { return mParts->state.mLocked; });
}

void Vellum5::setLocked(bool Locked)
{
    EditScope scope;
    trap(module, "Locked", support::given(&mParts->state, "Locked", Locked), [&] {
        mParts->state.mLocked = Locked;
        mParts->ed->setReadOnly(Locked);
        mParts->txtHTMLSource->setReadOnly(Locked);
    });
}

bool Vellum5::AutoSelectEditableSpans() const
{
    return trap(module, "AutoSelectEditableSpans", &mParts->state,
                [&] { return mParts->ed->autoSelectEditableSpans(); });
}

void Vellum5::setAutoSelectEditableSpans(bool AutoSelect)
{
    EditScope scope;
    trap(module, "AutoSelectEditableSpans", given(&mParts->state, "AutoSelect", AutoSelect), [&] {
        mParts->ed->setAutoSelectEditableSpans(AutoSelect);
        tellHost("AutoSelectEditableSpans");
    });
}

bool Vellum5::EnableLinkClicks() const
{
    return trap(module, "EnableLinkClicks", &mParts->state, [&] { return mParts->state.mEnableLinkClicks; });
}

void Vellum5::setEnableLinkClicks(bool Enable)
{
    trap(module, "EnableLinkClicks", given(&mParts->state, "Enable", Enable), [&] {
        mParts->state.mEnableLinkClicks = Enable;
        tellHost("EnableLinkClicks");
    });
}

int Vellum5::ChangeDelay() const
{
    return trap(module, "ChangeDelay", &mParts->state, [&] { return mParts->state.ChangeDelay; });
}

void Vellum5::setChangeDelay(int Milliseconds)
{
    trap(module, "ChangeDelay", given(&mParts->state, "Milliseconds", Milliseconds),
         [&] { mParts->state.ChangeDelay = Milliseconds; });
}

void Vellum5::CommitEdit()
{
    EditScope scope;
    mParts->events.CommitEdit();
}

bool Vellum5::HasFocus() const
{
    return trap(module, "HasFocus", &mParts->state, [&] { return mParts->ed->hasFocus(); });
}

void Vellum5::SetFocusEx()
{
    EditScope scope;
    trap(module, "SetFocusEx", &mParts->state, [&] {
        if (!isVisible()) return;
        if (mParts->state.mCurrentEditView == EditViewEnum::hvVisualEdit) {
            WaitUntilLoaded();
            if (mParts->state.mLoaded) mParts->ed->takeFocus();
        } else if (mParts->state.mCurrentEditView == EditViewEnum::hvSourceEdit) {
            mParts->txtHTMLSource->setFocus();
        }
    });
}

void Vellum5::SetFocusQueued()
{
    EditScope scope;
    trap(module, "SetFocusQueued", &mParts->state, [&] {
        if (mParts->state.mCurrentEditView == EditViewEnum::hvVisualEdit)
            mParts->ed->takeFocusAtLoadEnd();
        else if (mParts->state.mCurrentEditView == EditViewEnum::hvSourceEdit)
            mParts->txtHTMLSource->setFocus();
    });
}

void Vellum5::RunCommand(const QString &CommandName)
{
    EditScope scope;
    mParts->commands.InternalRunCommand(CommandName, nullptr);
}

void Vellum5::RunCommand(QString &CommandName)
{
    RunCommand(std::as_const(CommandName));
}

void Vellum5::RunCommandEx(const QString &CommandName, IHTMLElement *SpecificElement)
{
    EditScope scope;
    mParts->commands.InternalRunCommand(CommandName, SpecificElement);
}

void Vellum5::DoPrint(bool Preview)
{
    trap(module, "DoPrint", given(&mParts->state, "Preview", Preview), [&] {
        mParts->ed->execCommand(Preview ? surfacenumbers::commandPrintPreview : surfacenumbers::commandPrint, true);
    });
}

void Vellum5::ForceElementChange(IHTMLElement *Element)
{
    EditScope scope;
    mParts->events.ForceElementChange(Element);
}

// Undo

void Vellum5::StartUndoBlock(bool Merge, bool PrivateBlock)
{
    EditScope scope;
    mParts->changes.StartUndoBlock(Merge, PrivateBlock);
}

void Vellum5::EndUndoBlock(bool Deferred)
{
    // What waits at a deferred end belongs to the block, so it is told when the call has ended and not before.
    EditScope scope(EditScope::Opening::Quiet);
    mParts->changes.EndUndoBlock(Deferred);
}

void Vellum5::FlushChanges()
{
    EditScope scope;
    mParts->changes.FlushChanges();
}

void Vellum5::ResetUndo()
{
    EditScope scope;
    mParts->changes.ResetUndo();
}

void Vellum5::Undo()
{
    EditScope scope;
    mParts->changes.Undo();
}

void Vellum5::Redo()
{
    EditScope scope;
    mParts->changes.Redo();
}

bool Vellum5::UndoEnabled() const
{
    EditScope scope;
    return mParts->changes.UndoEnabled();
}

bool Vellum5::RedoEnabled() const
{
    EditScope scope;
    return mParts->changes.RedoEnabled();
}

// Spelling

QString Vellum5::SpellImagePath() const
{
    return trap(module, "SpellImagePath", &mParts->state, [&] { return mParts->state.mSpellImagePath; });
}

// Page map

bool Vellum5::PageMapDragInProgress() const
{
    return trap(module, "PageMapDragInProgress", &mParts->state, [&] { return mParts->state.PageMapDragInProgress; });
}

void Vellum5::setPageMapDragInProgress(bool InProgress)
{
    trap(module, "PageMapDragInProgress", given(&mParts->state, "InProgress", InProgress),
         [&] { mParts->state.PageMapDragInProgress = InProgress; });
}

bool Vellum5::LockPageMapAndBarRefresh() const
{
    return trap(module, "LockPageMapAndBarRefresh", &mParts->state,
                [&] { return mParts->state.LockPageMapAndBarRefresh; });
}

void Vellum5::setLockPageMapAndBarRefresh(bool Lock)
{
    trap(module, "LockPageMapAndBarRefresh", given(&mParts->state, "Lock", Lock),
         [&] { mParts->state.LockPageMapAndBarRefresh = Lock; });
}
