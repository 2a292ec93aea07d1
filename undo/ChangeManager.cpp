// SPDX-License-Identifier: GPL-3.0-or-later
#include "undo/ChangeManager.h"

#include "base/Clock.h"

#include <QPointer>

using support::given;
using support::trap;

namespace {

constexpr char module[] = "ChangeManager";

// Kinds of records that matter; all others count alike.
constexpr int textIn = 0;
constexpr int textOut = 3;
constexpr int selectionKind = 5;

constexpr qint64 typingPauseMs = 3000;
// Date zero, 1899-12-30: no record has been seen yet.
constexpr qint64 neverMs = -2209161600000;

// Which class stands behind a document is the supplier's affair.
support::DumpValue dumpedDocument(const IChangeDocument *document)
{
    return support::DumpValue::external(QStringLiteral("Document"), document == nullptr);
}

bool isTyping(int kind)
{
    return kind == textIn || kind == textOut;
}

} // namespace

ChangeManager::ChangeManager(QObject *parent)
    : QObject(parent), mUndoStack(std::make_unique<ChangeRecords>()), mRedoStack(std::make_unique<ChangeRecords>()),
      mLastTimeMs(neverMs)
{
    trap(module, "Class_Initialize", this, [&] { Reset(); });
}

ChangeManager::~ChangeManager()
{
    trap(module, "Class_Terminate", this, [&] {
        if (!mTerminated) Terminate();
    });
}

void ChangeManager::Initialise(const std::shared_ptr<IChangeDocument> &Doc)
{
    const support::DumpValue document = dumpedDocument(Doc.get());
    trap(module, "Initialise", given(this, "Doc", document), [&] {
        Reset();
        if (!Doc) throw base::Error(base::errors::objectNotSet, QStringLiteral("There is no document to track."));
        mDoc = Doc;
        mMarkupContainer = Doc->MarkupContainer();
        mChangePlayback = Doc->ChangePlayback();
        mMarkupContainer->CreateChangeLog(this, mChangeLog, true, true);
        DOMSupport().RegisterForDirtyRange(*mMarkupContainer, this, mCookie);
    });
}

// COMPAT: leaves the pending counts, the private flag, both latches of blocks and the playback as they are.
void ChangeManager::Reset()
{
    trap(module, "Reset", this, [&] {
        mUndoStack = std::make_unique<ChangeRecords>();
        mRedoStack = std::make_unique<ChangeRecords>();
        mFreezeChangeGroupID = false;
        mChangeGroupID = 1;
        unregisterDirtyRange();
        mMarkupContainer.reset();
        mChangeLog.reset();
        mDoc.reset();
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
        unregisterDirtyRange();
        mChangeLog.reset();
        mCookie = 0;
        mMarkupContainer.reset();
        mDoc.reset();
    });
}

void ChangeManager::unregisterDirtyRange()
{
    if (!mMarkupContainer || mCookie == 0) return;
    const int cookie = std::exchange(mCookie, 0);
    DOMSupport().UnRegisterForDirtyRange(*mMarkupContainer, cookie);
}

// Blocks

void ChangeManager::StartUndoBlock(bool Merge, bool PrivateBlock)
{
    trap(module, "StartUndoBlock", given(this, "Merge", Merge, "PrivateBlock", PrivateBlock), [&] {
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
    trap(module, "EndUndoBlock", given(this, "Deferred", Deferred), [&] {
        if (Deferred)
            mDeferredEndUndoBlock = true;
        else
            EndBlock();
    });
}

void ChangeManager::EndBlock()
{
    trap(module, "EndBlock", this, [&] {
        // COMPAT: nothing ever clears the flag, so that one merging block is enough for the manager's whole life.
        if (!mNoIncrementOnEndBlock) ++mChangeGroupID;
        mFreezeChangeGroupID = false;
        mChangesArePrivate = false;
    });
}

int ChangeManager::UndoCount() const
{
    return trap(module, "UndoCount", this, [&] { return mUndoStack->PublicCount(); });
}

int ChangeManager::RedoCount() const
{
    return trap(module, "RedoCount", this, [&] { return mRedoStack->PublicCount(); });
}

// Notification

void ChangeManager::Flush()
{
    trap(module, "Flush", this, [&] { IHTMLChangeSink_Notify(); });
}

bool ChangeManager::ChangesWait() const
{
    if (!mChangeLog) return false;
    int Length = 0;
    mChangeLog->GetNextChange(nullptr, 0, Length);
    return Length != 0;
}

void ChangeManager::IHTMLChangeSink_Notify()
{
    Batch batch;
    base::Ref<ChangeRecord> record;
    const auto variables =
        given(this).locals("AddedChanges", batch.AddedChanges, "Counter", batch.Counter, "IncrementChangeGroup",
                           batch.IncrementChangeGroup, "ChangeRecord", record, "Length", batch.Length);
    trap(module, "IHTMLChangeSink_Notify", variables, [&] {
        if (!mChangeLog || mTerminated) return;
        // Who is told of a change may drop the manager: it loads another document.
        const QPointer<ChangeManager> alive(this);
        for (;;) {
            record = base::make<ChangeRecord>();
            if (!readChange(*record, batch.Length)) break;
            if (isFiltered(*record)) continue;
            if (breaksGroup(record->Kind())) batch.IncrementChangeGroup = true;
            mLastKind = record->Kind();
            mLastTimeMs = base::Clock::instance().nowMs();
            placeChange(record, batch);
        }
        // After the records were stacked and before they are numbered: the whole batch gets the new number.
        if (batch.IncrementChangeGroup && !mFreezeChangeGroupID) ++mChangeGroupID;
        if (!mChangesArePrivate)
            for (const auto &added : batch.AddedChanges)
                added->setChangeGroupID(mChangeGroupID);
        if (mDeferredEndUndoBlock) {
            EndBlock();
            mDeferredEndUndoBlock = false;
        }
        if (mCookie != 0 && batch.Counter >= 1 && !mChangesArePrivate) tellElements();
        if (alive) Q_EMIT Changed();
    });
}

/// False when nothing waits.
bool ChangeManager::readChange(ChangeRecord &record, int &Length)
{
    mChangeLog->GetNextChange(nullptr, 0, Length);
    if (Length == 0) return false;
    QByteArray ChangeData(Length, Qt::Uninitialized);
    mChangeLog->GetNextChange(reinterpret_cast<uint8_t *>(ChangeData.data()), Length, Length);
    record.setChangeData(ChangeData);
    return true;
}

// COMPAT: groups are counted from 1, so this never holds; it stands for managers whose count would start at 0.
bool ChangeManager::isFiltered(const ChangeRecord &record)
{
    return mChangeGroupID == 0 && mPendingRedoCount == 0 && record.Kind() == selectionKind &&
           mUndoStack->PublicCount() == 0 && !IsControlRange();
}

bool ChangeManager::breaksGroup(int kind)
{
    if (isTyping(kind) && isTyping(mLastKind)) return base::Clock::instance().nowMs() - mLastTimeMs > typingPauseMs;
    if (kind == selectionKind && mLastKind == selectionKind) return !IsControlRange();
    return true;
}

void ChangeManager::placeChange(const base::Ref<ChangeRecord> &record, Batch &batch)
{
    if (mPendingUndoCount >= 1) {
        --mPendingUndoCount;
    } else {
        AddToStack(*mUndoStack, record, batch.IncrementChangeGroup);
        if (mPendingRedoCount >= 1)
            --mPendingRedoCount;
        else if (mRedoStack->Count() > 0)
            mRedoStack = std::make_unique<ChangeRecords>(); // a fresh edit: there is nothing left to redo
    }
    batch.AddedChanges.push_back(record);
    ++batch.Counter;
}

void ChangeManager::tellElements()
{
    const QPointer<ChangeManager> alive(this);
    const auto services = mDoc->MarkupServices();
    std::unique_ptr<IMarkupPointer> start, end;
    services->CreateMarkupPointer(start);
    services->CreateMarkupPointer(end);
    DOMSupport().GetAndClearDirtyRange(*mMarkupContainer, mCookie, start, end);
    if (!start) return;
    // The pointers keep both elements alive while those who are told of one may remove the other.
    dom::Element *const first = start->CurrentScope();
    dom::Element *const second = end ? end->CurrentScope() : first;
    Q_EMIT ElementChanged(first);
    if (alive && second && second != first) Q_EMIT ElementChanged(second);
}

void ChangeManager::ForceElementChange(dom::Element *Element)
{
    trap(module, "ForceElementChange", given(this, "Element", Element), [&] {
        EndBlock();
        Q_EMIT ElementChanged(Element);
    });
}

// Stacks

void ChangeManager::AddToStack(ChangeRecords &Stack, const base::Ref<ChangeRecord> &Record,
                               bool ChangeGroupIsIncrementing)
{
    const auto parameters = given(this, "Stack", Stack, "ChangeRecord", Record, "ChangeGroupIsIncrementing",
                                  ChangeGroupIsIncrementing);
    int Count = 0, OldestGroupID = 0;
    trap(module, "AddToStack", parameters.locals("Count", Count, "OldestGroupID", OldestGroupID), [&] {
        Count = Stack.Count();
        if (Count >= stackLimit && ChangeGroupIsIncrementing) {
            OldestGroupID = Stack.Item(1)->ChangeGroupID();
            // A stack that is one single group isn't cut: the step would lose its beginning.
            if (Stack.Item(Count)->ChangeGroupID() != OldestGroupID)
                for (int removed = 0; removed < Count && Stack.Item(1)->ChangeGroupID() == OldestGroupID; ++removed)
                    Stack.Remove(1);
        }
        Stack.Add(Record);
    });
}

int ChangeManager::FirstChangeGroupID(const ChangeRecords &mChangeStack) const
{
    int i = 0;
    const auto variables = given(this, "mChangeStack", mChangeStack).locals("i", i);
    return trap(module, "FirstChangeGroupID", variables, [&] {
        if (mChangeStack.PublicCount() == 0) return 0;
        for (i = mChangeStack.Count(); i >= 1; --i)
            if (const int group = mChangeStack.Item(i)->ChangeGroupID()) return group;
        return 0;
    });
}

/// Is the next record that isn't private, from `StartAt` down, one of the group `ID`?
bool ChangeManager::CheckForMore(const ChangeRecords &mChangeStack, int StartAt, int ID) const
{
    const auto parameters = given(this, "mChangeStack", mChangeStack, "StartAt", StartAt, "ID", ID);
    int i = 0;
    return trap(module, "CheckForMore", parameters.locals("i", i), [&] {
        if (mChangeStack.PublicCount() == 0) return false;
        for (i = StartAt; i >= 1; --i)
            if (const int group = mChangeStack.Item(i)->ChangeGroupID()) return group == ID;
        return false;
    });
}

void ChangeManager::Undo()
{
    Step step;
    trap(module, "Undo", given(this).locals("GroupID", step.GroupID, "ChangeRecord", step.record),
         [&] { play(Direction::Undo, step); });
}

void ChangeManager::Redo()
{
    Step step;
    trap(module, "Redo", given(this).locals("GroupID", step.GroupID, "ChangeRecord", step.record),
         [&] { play(Direction::Redo, step); });
}

/// Private records above or inside the step go with it, those beneath it stay.
void ChangeManager::play(Direction direction, Step &step)
{
    const bool undo = direction == Direction::Undo;
    ChangeRecords &stack = undo ? *mUndoStack : *mRedoStack;
    if (stack.Count() == 0) return;
    // A record that can't be played is reported, and whoever answers the report may load another document.
    const QPointer<ChangeManager> alive(this);
    step.GroupID = FirstChangeGroupID(stack);
    bool privateBelongs = false; // holds for a whole run of private records: the same one lies below all of them
    while (stack.Count() > 0) {
        const base::Ref<ChangeRecord> record = step.record = stack.Item(stack.Count());
        const int group = record->ChangeGroupID();
        if (group != 0 && group != step.GroupID) break;
        if (group == 0) {
            if (!privateBelongs && !CheckForMore(stack, stack.Count(), step.GroupID)) break;
            privateBelongs = true;
        } else {
            privateBelongs = false;
        }
        ++(undo ? mPendingUndoCount : mPendingRedoCount);
        ExecChange(*record, undo);
        if (!alive || mTerminated) return;
        if (undo) AddToStack(*mRedoStack, record, false);
        stack.Remove(stack.Count());
    }
}

void ChangeManager::ExecChange(const ChangeRecord &ChangeRecord, bool IsUndo)
{
    trap(module, "ExecChange", given(this, "ChangeRecord", ChangeRecord, "IsUndo", IsUndo), [&] {
        if (!mChangePlayback)
            throw base::Error(base::errors::objectNotSet, QStringLiteral("There is no playback of changes."));
        mChangePlayback->ExecChange(ChangeRecord.ChangeData(), IsUndo ? 0 : 1);
    });
}

bool ChangeManager::IsControlRange()
{
    return trap(module, "IsControlRange", this, [&] { return mDoc && mDoc->IsControlRange(); });
}

void ChangeManager::dumpModuleVariables(support::VariableDump &dump) const
{
    dump.add("mUndoStack", *mUndoStack)
        .add("mRedoStack", *mRedoStack)
        .add("mFreezeChangeGroupID", mFreezeChangeGroupID)
        .add("mNoIncrementOnEndBlock", mNoIncrementOnEndBlock)
        .add("mChangeGroupID", mChangeGroupID)
        .add("mChangesArePrivate", mChangesArePrivate)
        .addExternal("mChangeLog")
        .addExternal("mChangePlayback")
        .add("mPendingUndoCount", mPendingUndoCount)
        .add("mPendingRedoCount", mPendingRedoCount)
        .add("mDeferredEndUndoBlock", mDeferredEndUndoBlock)
        .addExternal("mMarkupContainer")
        .add("mCookie", mCookie)
        .add("mTerminated", mTerminated);
}
