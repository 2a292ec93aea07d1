// SPDX-License-Identifier: GPL-3.0-or-later
#include "undo/ChangeManager.h"

#include "base/Clock.h"
#include "support/FailureTrap.h"

using support::Parameters;
using support::trap;

namespace {

constexpr char module[] = "ChangeManager";
constexpr int kindTextIn = 0;
constexpr int kindTextOut = 3;
constexpr int kindSelection = 5;
constexpr qint64 typingPauseMs = 3000;
constexpr int stackLimit = 20000;

bool isTyping(int kind)
{
    return kind == kindTextIn || kind == kindTextOut;
}

} // namespace

ChangeManager::ChangeManager()
{
    Reset();
}

ChangeManager::~ChangeManager()
{
    if (!mTerminated) Terminate();
}

void ChangeManager::dumpModuleVariables(support::VariableDump &dump) const
{
    dump.addExternal("mUndoStack").addExternal("mRedoStack");
    dump.add("mFreezeChangeGroupID", mFreezeChangeGroupID)
        .add("mNoIncrementOnEndBlock", mNoIncrementOnEndBlock)
        .add("mChangeGroupID", mChangeGroupID)
        .add("mChangesArePrivate", mChangesArePrivate);
    dump.addExternal("mChangeLog").addExternal("mChangePlayback");
    dump.add("mPendingUndoCount", mPendingUndoCount)
        .add("mPendingRedoCount", mPendingRedoCount)
        .add("mDeferredEndUndoBlock", mDeferredEndUndoBlock);
    dump.addExternal("mMarkupContainer");
    dump.add("mCookie", mCookie).add("mTerminated", mTerminated);
}

// State

void ChangeManager::Initialise(const std::shared_ptr<ChangeDocument> &Doc)
{
    trap(module, "Initialise", this, [&] {
        Reset();
        mDocument = Doc;
        mMarkupContainer = Doc->MarkupContainer();
        mChangePlayback = Doc->ChangePlayback();
        mChangeLog = mMarkupContainer->CreateChangeLog(this, true, true);
        DOMSupport::RegisterForDirtyRange(*mMarkupContainer, this, mCookie);
    });
}

void ChangeManager::dropContainer()
{
    if (mMarkupContainer && mCookie != 0) DOMSupport::UnRegisterForDirtyRange(*mMarkupContainer, mCookie);
    mCookie = 0;
    mMarkupContainer.reset();
    mChangeLog.reset();
}

void ChangeManager::Reset()
{
    trap(module, "Reset", this, [&] {
        mUndoStack = std::make_unique<ChangeRecords>();
        mRedoStack = std::make_unique<ChangeRecords>();
        mFreezeChangeGroupID = false;
        mChangeGroupID = 1;
        dropContainer();
    });
}

void ChangeManager::Terminate()
{
    trap(module, "Terminate", this, [&] {
        if (mTerminated) return;
        mTerminated = true;
        Flush();
        mUndoStack = std::make_unique<ChangeRecords>();
        mRedoStack = std::make_unique<ChangeRecords>();
        mChangePlayback.reset();
        dropContainer();
    });
}

// Blocks

void ChangeManager::StartUndoBlock(bool Merge, bool PrivateBlock)
{
    trap(module, "StartUndoBlock", this, [&] {
        Parameters parameters("Merge", Merge, "PrivateBlock", PrivateBlock);
        if (Merge)
            mNoIncrementOnEndBlock = true;
        else
            ++mChangeGroupID;
        mFreezeChangeGroupID = true;
        mChangesArePrivate = PrivateBlock;
    });
}

void ChangeManager::EndUndoBlock(bool Deferred)
{
    trap(module, "EndUndoBlock", this, [&] {
        Parameters parameters("Deferred", Deferred);
        if (Deferred)
            mDeferredEndUndoBlock = true;
        else
            EndBlock();
    });
}

void ChangeManager::EndBlock()
{
    if (!mNoIncrementOnEndBlock) ++mChangeGroupID;
    mFreezeChangeGroupID = false;
    mChangesArePrivate = false;
}

void ChangeManager::ForceElementChange(dom::Element *Element)
{
    trap(module, "ForceElementChange", this, [&] {
        EndBlock();
        Q_EMIT ElementChanged(Element);
    });
}

// Notification

void ChangeManager::Flush()
{
    trap(module, "Flush", this, [&] { IHTMLChangeSink_Notify(); });
}

void ChangeManager::IHTMLChangeSink_Notify()
{
    trap(module, "IHTMLChangeSink_Notify", this, [&] {
        if (!mChangeLog || mTerminated) return;
        std::vector<Record> AddedChanges;
        bool IncrementChangeGroup = false; // stays set for the rest of the batch
        for (;;) {
            const auto record = std::make_shared<ChangeRecord>();
            if (!readRecord(*record)) break;
            const bool control = record->Kind() == kindSelection && IsControlRange();
            if (isFiltered(*record, control)) continue;
            const qint64 now = base::Clock::instance().nowMs();
            IncrementChangeGroup = breaksGroup(record->Kind(), control, now) || IncrementChangeGroup;
            mLastKind = record->Kind();
            mLastTime = now;
            placeRecord(record, IncrementChangeGroup);
            AddedChanges.push_back(record);
        }
        if (IncrementChangeGroup && !mFreezeChangeGroupID) ++mChangeGroupID;
        if (!mChangesArePrivate)
            for (const Record &record : AddedChanges) record->setChangeGroupID(mChangeGroupID);
        if (mDeferredEndUndoBlock) {
            EndBlock();
            mDeferredEndUndoBlock = false;
        }
        if (mCookie != 0 && !AddedChanges.empty() && !mChangesArePrivate) raiseElementsChanged();
        Q_EMIT Changed();
    });
}

bool ChangeManager::readRecord(ChangeRecord &record)
{
    int Length = 0;
    mChangeLog->GetNextChange(nullptr, 0, Length);
    if (Length == 0) return false;
    record.ChangeData.resize(Length);
    mChangeLog->GetNextChange(record.ChangeData.data(), Length, Length);
    return true;
}

/// COMPAT: the group counter starts at 1, so that this never holds.
bool ChangeManager::isFiltered(const ChangeRecord &record, bool control) const
{
    return !control && mChangeGroupID == 0 && mPendingRedoCount == 0 && record.Kind() == kindSelection &&
           mUndoStack->PublicCount() == 0;
}

bool ChangeManager::breaksGroup(int kind, bool control, qint64 now) const
{
    if (isTyping(kind) && isTyping(mLastKind)) return now - mLastTime > typingPauseMs;
    if (kind == kindSelection && mLastKind == kindSelection) return !control;
    return true;
}

void ChangeManager::placeRecord(const Record &record, bool IncrementChangeGroup)
{
    if (mPendingUndoCount >= 1) {
        --mPendingUndoCount; // an undo's echo
        return;
    }
    AddToStack(*mUndoStack, record, IncrementChangeGroup);
    if (mPendingRedoCount >= 1)
        --mPendingRedoCount; // a redo's echo: the step is back, under a new group
    else if (mRedoStack->Count() > 0)
        mRedoStack = std::make_unique<ChangeRecords>(); // a fresh edit ends the redo chain
}

void ChangeManager::raiseElementsChanged()
{
    IMarkupPointer Start, End;
    DOMSupport::GetAndClearDirtyRange(*mMarkupContainer, mCookie, Start, End);
    if (!Start.CurrentScope()) return;
    Q_EMIT ElementChanged(Start.CurrentScope());
    if (End.CurrentScope() && End.CurrentScope() != Start.CurrentScope()) Q_EMIT ElementChanged(End.CurrentScope());
}

// Stacks

void ChangeManager::AddToStack(ChangeRecords &Stack, const Record &Change, bool ChangeGroupIsIncrementing)
{
    const int count = Stack.Count();
    if (count >= stackLimit && ChangeGroupIsIncrementing) {
        const int oldest = Stack.Item(1)->ChangeGroupID();
        if (Stack.Item(count)->ChangeGroupID() != oldest)
            for (int i = 0; i < count && Stack.Count() > 0 && Stack.Item(1)->ChangeGroupID() == oldest; ++i)
                Stack.Remove(1);
    }
    Stack.Add(Change);
}

int ChangeManager::FirstChangeGroupID(const ChangeRecords &mChangeStack)
{
    for (int i = mChangeStack.Count(); i >= 1; --i)
        if (mChangeStack.Item(i)->ChangeGroupID() != 0) return mChangeStack.Item(i)->ChangeGroupID();
    return 0;
}

bool ChangeManager::CheckForMore(const ChangeRecords &mChangeStack, int StartAt, int ID)
{
    for (int i = StartAt; i >= 1; --i)
        if (mChangeStack.Item(i)->ChangeGroupID() != 0) return mChangeStack.Item(i)->ChangeGroupID() == ID;
    return false;
}

void ChangeManager::Undo()
{
    trap(module, "Undo", this, [&] {
        if (mUndoStack->Count() == 0) return;
        const int GroupID = FirstChangeGroupID(*mUndoStack);
        while (mUndoStack->Count() > 0) {
            const int newest = mUndoStack->Count();
            const Record record = mUndoStack->Item(newest);
            if (record->ChangeGroupID() != 0 && record->ChangeGroupID() != GroupID) break;
            if (record->ChangeGroupID() == 0 && !CheckForMore(*mUndoStack, newest, GroupID)) break;
            ++mPendingUndoCount;
            ExecChange(*record, true);
            mUndoStack->Remove(newest);
            AddToStack(*mRedoStack, record, false);
        }
    });
}

void ChangeManager::Redo()
{
    trap(module, "Redo", this, [&] {
        if (mRedoStack->Count() == 0) return;
        const int GroupID = FirstChangeGroupID(*mRedoStack);
        while (mRedoStack->Count() > 0) {
            const int newest = mRedoStack->Count();
            const Record record = mRedoStack->Item(newest);
            if (record->ChangeGroupID() != 0 && record->ChangeGroupID() != GroupID) break;
            if (record->ChangeGroupID() == 0 && !CheckForMore(*mRedoStack, newest, GroupID)) break;
            ++mPendingRedoCount;
            ExecChange(*record, false);
            mRedoStack->Remove(newest); // it comes back through the log
        }
    });
}

void ChangeManager::ExecChange(const ChangeRecord &Change, bool IsUndo)
{
    if (mChangePlayback) mChangePlayback->ExecChange(Change.ChangeData, IsUndo ? 0 : 1);
}

bool ChangeManager::IsControlRange() const
{
    return mDocument && mDocument->IsControlRange();
}
