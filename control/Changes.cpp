// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Changes.h"

#include "control/SurfaceEvents.h"
#include "core/Host.h"
#include "core/SelectionPoint.h"
#include "engine/changes/EditScope.h"
#include "engine/css/StyleObject.h"
#include "engine/surface/View.h"
#include "platform/CodeMax.h"
#include "platform/EngineChangeLog.h"
#include "support/FailureTrap.h"
#include "undo/ChangeManager.h"

#include <QPointer>

using support::given;
using support::trap;

namespace {

constexpr char module[] = "Vellum5";
constexpr int sourceUndo = 129;
constexpr int sourceRedo = 139;

bool isDesign(EditViewEnum view)
{
    return view == EditViewEnum::hvVisualEdit;
}

} // namespace

Changes::Changes(ControlState &state, Host &host, HTMLEditor &surface, CodeMax &source, SurfaceEvents &events)
    : mState(state), mHost(host), ed(surface), txtHTMLSource(source), mEvents(events)
{
}

void Changes::CreateNewChangeManager()
{
    trap(module, "CreateNewChangeManager", &mState, [&] {
        KillChangeManager();
        if (!mState.mLoaded) return;
        mState.mChangeManager = std::make_unique<ChangeManager>();
        ChangeManager &manager = *mState.mChangeManager;
        QObject::connect(&manager, &ChangeManager::Changed, &mEvents, &SurfaceEvents::mChangeManager_Changed);
        QObject::connect(&manager, &ChangeManager::ElementChanged, &mEvents,
                         &SurfaceEvents::mChangeManager_ElementChanged);
        manager.Initialise(platform::changeDocument(ed));
    });
}

void Changes::KillChangeManager()
{
    trap(module, "KillChangeManager", &mState, [&] {
        if (mState.mTerminated || !mState.mChangeManager) return;
        mState.mChangeManager->Terminate();
        mState.mChangeManager.reset();
    });
}

/// The manager, when it has read all that waits: else a record that is older than a playback would be taken for its echo,
/// and one that is older than a block for a part of it.
ChangeManager *Changes::upToDateManager()
{
    changes::Waiting::tell();
    // A handler that is being told of one change and has made another is told of that one later; we can't wait.
    if (mState.mChangeManager && mState.mChangeManager->ChangesWait()) mState.mChangeManager->Flush();
    // Who was told may have loaded another document.
    return mState.mChangeManager.get();
}

void Changes::StartUndoBlock(bool Merge, bool PrivateBlock)
{
    trap(module, "StartUndoBlock", given(&mState, "Merge", Merge, "PrivateBlock", PrivateBlock), [&] {
        // What waits happened before the block and isn't part of it.
        if (ChangeManager *manager = upToDateManager()) manager->StartUndoBlock(Merge, PrivateBlock);
    });
}

void Changes::EndUndoBlock(bool Deferred)
{
    trap(module, "EndUndoBlock", given(&mState, "Deferred", Deferred), [&] {
        // Who is told by the flush may load another document, and the block went with the old one.
        const QPointer<ChangeManager> manager(mState.mChangeManager.get());
        if (manager && !Deferred) manager->Flush();
        if (manager) manager->EndUndoBlock(Deferred);
    });
}

void Changes::FlushChanges()
{
    trap(module, "FlushChanges", &mState, [&] {
        if (mState.mChangeManager) mState.mChangeManager->Flush();
    });
}

void Changes::ResetUndo()
{
    trap(module, "ResetUndo", &mState, [&] {
        if (mHost.mDoc()) CreateNewChangeManager();
    });
}

void Changes::Undo()
{
    trap(module, "Undo", &mState, [&] {
        if (mState.mCurrentEditView == EditViewEnum::hvSourceEdit) {
            txtHTMLSource.ExecuteCmd(sourceUndo);
        } else {
            const QPointer<ChangeManager> manager(upToDateManager());
            modMain::SaveSelectionPoint(mHost.mDoc(), mState.mSelectionLength, mState.mSelectionCharactersFromStart);
            const surface::View::CaretStays inPart(ed.view()); // the count would lead out of a part that got shorter
            if (!manager)
                ed.undo();
            else
                manager->Undo();
            if (manager) manager->Flush();
            const surface::View::CellsStay stay(ed.view()); // those that the undo has selected again
            modMain::RestoreSelectionPoint(mHost.mDoc(), mState.mSelectionLength, mState.mSelectionCharactersFromStart);
            ed.view().showSelection(); // whoever takes something back wants to see it
        }
        clearCellHighlights();
        mEvents.ed_CommandStateChange(-1, -1);
        mEvents.RaiseChangeEvent(true);
    });
}

void Changes::Redo()
{
    trap(module, "Redo", &mState, [&] {
        if (mState.mCurrentEditView == EditViewEnum::hvSourceEdit) {
            txtHTMLSource.ExecuteCmd(sourceRedo);
        } else {
            const QPointer<ChangeManager> manager(upToDateManager());
            if (!manager)
                ed.redo();
            else
                manager->Redo();
            if (manager) manager->Flush();
            ed.view().showSelection();
        }
        mEvents.ed_CommandStateChange(-1, -1);
    });
}

/// The highlight of a cell selection is held in the cells' runtime style, and an undo can bring it back.
void Changes::clearCellHighlights()
{
    IHTMLDocument2 *document = mHost.mDoc();
    if (!document) return;
    for (IHTMLElement *cell : document->elementsNamed("td"))
        if (cell->rareDataIfAny() && cell->rareDataIfAny()->runtimeStyle) cell->runtimeStyle()->setCssText(QString());
    ed.view().cellSelection().showAgain();
}

bool Changes::UndoEnabled() const
{
    return trap<bool>(module, "UndoEnabled", &mState, [&](bool &Result) {
        if (isDesign(mState.mCurrentEditView))
            Result = mState.mChangeManager ? mState.mChangeManager->UndoCount() >= 1 : ed.queryStatus(43) == 2;
        else if (mState.mCurrentEditView == EditViewEnum::hvSourceEdit)
            Result = txtHTMLSource.CanUndo();
    });
}

bool Changes::RedoEnabled() const
{
    return trap<bool>(module, "RedoEnabled", &mState, [&](bool &Result) {
        if (isDesign(mState.mCurrentEditView))
            Result = mState.mChangeManager ? mState.mChangeManager->RedoCount() >= 1 : ed.queryStatus(29) == 2;
        else if (mState.mCurrentEditView == EditViewEnum::hvSourceEdit)
            Result = txtHTMLSource.CanRedo();
    });
}
