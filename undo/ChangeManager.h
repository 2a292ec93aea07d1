// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChangeLog.h"
#include "support/FailureTrap.h"
#include "support/InstanceCounts.h"
#include "undo/ChangeRecords.h"

#include <QObject>

/// Undo and redo of one loaded document.
///
/// The manager reads the document's change log, keeps two stacks of records that it never looks into, and gives each
/// record the number of its group: the undo step that the user sees. Steps are undone and redone by playing their
/// records. A playback writes records itself, its echoes, and the manager has to know them when they arrive: for each
/// record that it plays it counts one as pending. The echo of an undo is dropped, that of a redo is how the redone
/// change comes back to the undo stack, under a new number.
///
/// Typing stays in one group until a pause of more than three seconds; everything else starts a new one. A block
/// (`StartUndoBlock` to `EndUndoBlock`) holds the group still; a private block gives its records group 0, so that they
/// make no step of their own and go with the step below them.
///
/// No member raises; failures are reported.
class ChangeManager : public QObject, public IHTMLChangeSink
{
    Q_OBJECT
public:
    explicit ChangeManager(QObject *parent = nullptr);
    ~ChangeManager() override;

    /// Binds the manager to a document and starts its log. The stacks are emptied.
    void Initialise(const std::shared_ptr<IChangeDocument> &Doc);
    /// Empties both stacks and drops the log.
    void Reset();
    /// Blocks don't nest: a second start repeats the first one's steps. `Merge` joins what follows to the group under
    /// way, and no later end of a block starts a new group as long as this manager lives.
    void StartUndoBlock(bool Merge, bool PrivateBlock);
    /// `Deferred`: the block ends after the next notification, for a caller whose changes haven't reached the log yet.
    void EndUndoBlock(bool Deferred);
    /// How many records the stacks hold that aren't private.
    int UndoCount() const;
    int RedoCount() const;
    /// Play the newest step back, the last undone one again. The caller calls `Flush` before anything else can edit.
    void Undo();
    void Redo();
    /// Reads what waits in the log now.
    void Flush();
    /// Is there anything that a `Flush` would read?
    bool ChangesWait() const;
    /// Ends all work, once; what waits in the log is lost.
    void Terminate();
    bool Terminated() const { return mTerminated; }
    /// Ends a block and tells that `Element` has changed.
    void ForceElementChange(dom::Element *Element);

    void Notify() override { IHTMLChangeSink_Notify(); }
    void IHTMLChangeSink_Notify();

    // For those who look inside: script mode and failure reports.
    const ChangeRecords &UndoStack() const { return *mUndoStack; }
    const ChangeRecords &RedoStack() const { return *mRedoStack; }
    int ChangeGroupID() const { return mChangeGroupID; }
    void dumpModuleVariables(support::VariableDump &dump) const;

    /// From this many records on, a stack gives up its oldest group at each break between groups.
    static constexpr int stackLimit = 20000;

Q_SIGNALS:
    /// Records were read, or none waited; the document may have changed.
    void Changed();
    /// Something in this element has changed.
    void ElementChanged(dom::Element *Element);

private:
    using Stack = std::unique_ptr<ChangeRecords>;
    /// What one notification has read so far; a report of its failure shows it.
    struct Batch
    {
        struct Records : std::vector<base::Ref<ChangeRecord>>
        {
            friend support::DumpValue toDumpValue(const Records &records) { return support::dumpCollection(records); }
        };
        Records AddedChanges;
        int Counter = 0;
        bool IncrementChangeGroup = false;
        int Length = 0; ///< bytes of the record that is being read
    };
    /// How far an undo or redo has come.
    struct Step
    {
        int GroupID = 0;
        base::Ref<ChangeRecord> record;
    };
    enum class Direction { Undo, Redo };

    bool readChange(ChangeRecord &record, int &Length);
    bool isFiltered(const ChangeRecord &record);
    bool breaksGroup(int kind);
    void placeChange(const base::Ref<ChangeRecord> &record, Batch &batch);
    void tellElements();
    void EndBlock();
    void AddToStack(ChangeRecords &Stack, const base::Ref<ChangeRecord> &Record, bool ChangeGroupIsIncrementing);
    int FirstChangeGroupID(const ChangeRecords &mChangeStack) const;
    bool CheckForMore(const ChangeRecords &mChangeStack, int StartAt, int ID) const;
    void play(Direction direction, Step &step);
    void ExecChange(const ChangeRecord &ChangeRecord, bool IsUndo);
    bool IsControlRange();
    void unregisterDirtyRange();

    Stack mUndoStack;
    Stack mRedoStack;
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

    std::shared_ptr<IChangeDocument> mDoc;
    int mLastKind = 0;
    qint64 mLastTimeMs; // of the last record seen, by the system's clock
    support::InstanceCounter mCounter{support::Component::ChangeManager};
};
