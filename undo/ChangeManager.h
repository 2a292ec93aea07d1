// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChangeLog.h"
#include "support/VariableDump.h"
#include "undo/ChangeRecord.h"

#include <QObject>

/// Undo and redo on the engine's change log: two stacks of records, grouped into the steps that a user undoes.
///
/// The engine tells that entries wait (`Notify`); each becomes a record of the group that is current when its batch ends.
/// A step is undone by playing its records backward; each playback comes back as one entry, its echo: an undo's echo is
/// swallowed, a redo's becomes the record under which the step returns to the undo stack. Private blocks keep their records
/// out of the steps: they have group 0 and are undone along with the step that they stand on or in.
class ChangeManager : public QObject, public IHTMLChangeSink
{
    Q_OBJECT
public:
    ChangeManager();
    ~ChangeManager() override;

    /// Binds the manager to a document; both stacks are emptied.
    void Initialise(const std::shared_ptr<ChangeDocument> &Doc);
    void Reset();
    /// Opens a step of its own; merging, it joins the step before. Blocks don't nest. COMPAT: after a merging block no
    /// block's end opens a new step any more, as long as this manager lives.
    void StartUndoBlock(bool Merge, bool PrivateBlock);
    /// Deferred, the block ends after the next batch.
    void EndUndoBlock(bool Deferred);
    int UndoCount() const { return mUndoStack->PublicCount(); }
    int RedoCount() const { return mRedoStack->PublicCount(); }
    void Undo();
    void Redo();
    /// Reads what waits in the log, now.
    void Flush();
    /// Once; entries still in the log are lost.
    void Terminate();
    void ForceElementChange(dom::Element *Element);
    void Notify() override { IHTMLChangeSink_Notify(); }
    void IHTMLChangeSink_Notify();

    // For checks.
    const ChangeRecords &undoStack() const { return *mUndoStack; }
    const ChangeRecords &redoStack() const { return *mRedoStack; }
    void dumpModuleVariables(support::VariableDump &dump) const;

Q_SIGNALS:
    void Changed();
    void ElementChanged(dom::Element *Element);

private:
    using Record = ChangeRecords::Entry;

    bool readRecord(ChangeRecord &record);
    bool isFiltered(const ChangeRecord &record, bool control) const;
    bool breaksGroup(int kind, bool control, qint64 now) const;
    void placeRecord(const Record &record, bool IncrementChangeGroup);
    void raiseElementsChanged();
    void EndBlock();
    static void AddToStack(ChangeRecords &Stack, const Record &Change, bool ChangeGroupIsIncrementing);
    static int FirstChangeGroupID(const ChangeRecords &mChangeStack);
    static bool CheckForMore(const ChangeRecords &mChangeStack, int StartAt, int ID);
    void ExecChange(const ChangeRecord &Change, bool IsUndo);
    bool IsControlRange() const;
    void dropContainer();

    std::unique_ptr<ChangeRecords> mUndoStack;
    std::unique_ptr<ChangeRecords> mRedoStack;
    bool mFreezeChangeGroupID = false;
    bool mNoIncrementOnEndBlock = false;
    int mChangeGroupID = 1;
    bool mChangesArePrivate = false;
    std::unique_ptr<IHTMLChangeLog> mChangeLog;
    std::shared_ptr<IHTMLChangePlayback> mChangePlayback;
    int mPendingUndoCount = 0;
    int mPendingRedoCount = 0;
    bool mDeferredEndUndoBlock = false;
    std::shared_ptr<IMarkupContainer2> mMarkupContainer;
    int mCookie = 0;
    bool mTerminated = false;

    std::shared_ptr<ChangeDocument> mDocument;
    int mLastKind = 0;    ///< of the last entry seen
    qint64 mLastTime = 0; ///< when it was seen, in milliseconds
};
