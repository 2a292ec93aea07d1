// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/Record.h"
#include "engine/dom/Document.h"

#include <QObject>
#include <deque>
#include <map>

namespace changes {

/// Is told that records wait. Never from within a primitive or a playback.
class Sink
{
public:
    virtual ~Sink() = default;
    virtual void notify() = 0;
};

/// Knows the selection, for the records that keep it, and the other places that edits carry along.
class SelectionKeeper
{
public:
    virtual ~SelectionKeeper() = default;
    virtual SavedSelection savedSelection() const = 0;
    virtual void restoreSelection(const SavedSelection &selection) = 0;
    /// From here on changes belong to one step; a playback is one too.
    virtual void stepBegins() {}
    /// It is written under this name; without a number where it changed nothing and isn't written.
    virtual void stepEnds(StepName) {}
    /// It was taken back, nothing of it is left.
    virtual void stepFails() {}
    /// The open step has played this one: `inverse` tells that it went backward.
    virtual void stepPlayed(StepName) {}
};

/// The records written since a reader asked last, oldest first.
class ChangeLog final : public base::RefCounted
{
public:
    explicit ChangeLog(Sink *sink) : mSink(sink) {}
    bool isEmpty() const { return mRecords.empty(); }
    const QByteArray &front() const { return mRecords.front(); }
    void pop() { mRecords.pop_front(); }
    void append(const QByteArray &record) { mRecords.push_back(record); }
    Sink *sink() const { return mSink; }

private:
    Sink *mSink;
    std::deque<QByteArray> mRecords;
};

/// The one door through which an attached tree is changed. It carries out the primitives, makes records of them, marks
/// the dirty range, and plays records back and forth.
class ChangeTracker final : public QObject, public dom::MutationDoor
{
    Q_OBJECT
public:
    explicit ChangeTracker(dom::Document &document);
    ~ChangeTracker() override;
    dom::Document &document() const { return mDocument; }
    void setSelectionKeeper(SelectionKeeper *keeper) { mKeeper = keeper; }
    /// What a load leaves counts as left by a record.
    void selectionSettled();

    // The primitives. Each is one assignment unless one is open.
    void insert(dom::ParentNode &parent, dom::Node &child, dom::Node *before) override;
    void remove(dom::Node &child) override;
    void move(dom::ParentNode &parent, dom::Node &child, dom::Node *before) override;
    void replaceText(dom::CharacterData &node, uint32_t offset, uint32_t count, const QString &with) override;
    void setAttribute(dom::Element &element, dom::Atom name, const QString *value) override;
    void setHeldOpen(dom::Element &element, bool heldOpen) override;
    void beginAssignment() override { begin(Kind::Write); }
    void endAssignment(bool failed) override { end(failed); }

    /// One step by input or by an engine command: one record of that kind, in front of it one of the selection where that
    /// isn't the one the last record left. Inside another step it belongs to that one.
    class Step
    {
    public:
        Step(ChangeTracker &tracker, Kind kind) : mTracker(&tracker) { tracker.begin(kind); }
        ~Step()
        {
            if (mTracker) mTracker->end(true);
        }
        Step(const Step &) = delete;
        Step &operator=(const Step &) = delete;
        void done() { std::exchange(mTracker, nullptr)->end(false); }

    private:
        ChangeTracker *mTracker;
    };

    /// Changes the kind of the step that is open: a deletion may turn out to join blocks.
    void setKind(Kind kind) { mKind = kind; }
    bool isStepOpen() const { return mDepth > 0; }

    // Logs and playback
    base::Ref<ChangeLog> createLog(Sink *sink);
    void dropLog(ChangeLog &log);
    /// Does anybody read the records? Then undo is his.
    bool isRead() const { return !mLogs.empty(); }
    /// Plays one record and writes exactly one, its echo, even where it changes nothing or the record is damaged.
    void play(const QByteArray &record, bool forward);
    /// Told now, if records wait and no primitive is under way.
    void tellSinks();
    /// Every record written, in order, as soon as it is; the first for a journal, the other for checks.
    std::function<void(const QByteArray &)> journal;
    std::function<void(const QByteArray &)> onRecord;

    // Dirty range: the innermost elements between which all changes since the last question lie.
    int watchDirtyRange();
    void unwatchDirtyRange(int cookie);
    struct DirtyRange {
        base::Ref<dom::Element> first;
        base::Ref<dom::Element> last;
    };
    DirtyRange takeDirtyRange(int cookie);

    /// The surface's own history, for the time while no log is read.
    bool canUndo() const { return mLogs.empty() && !mOwnUndo.empty(); }
    bool canRedo() const { return mLogs.empty() && !mOwnRedo.empty(); }
    void undo();
    void redo();

    uint64_t recordCount() const { return mRecordCount; }

private:
    void begin(Kind kind);
    void end(bool failed);
    void add(const Primitive &primitive);
    void apply(const Primitive &primitive);
    dom::Node *topOf(const QByteArray &subtree) const;
    void writeRecord();
    void store(const QByteArray &record);
    void recordsWait();
    void invertOpenStep();
    void touch(dom::Node *scope);
    void leaving(dom::Node &node);
    void keepOwn(const QByteArray &record);

    dom::Document &mDocument;
    SelectionKeeper *mKeeper = nullptr;
    std::vector<base::Ref<ChangeLog>> mLogs;
    std::map<int, DirtyRange> mDirty;
    int mNextCookie = 1;

    // The open step
    int mDepth = 0;
    bool mFailed = false;
    bool mPlaying = false;
    bool mTelling = false;
    bool mPosted = false;
    Kind mKind = Kind::Write;
    uint64_t mLastStep; ///< differs between runs, so that a record of another run names no step of this
    StepName mPlayed;   ///< by the open playback
    SavedSelection mBefore;
    SavedSelection mLeft;
    std::vector<Primitive> mPrimitives;
    /// What the open step has taken out: who edits may still ask it things.
    std::vector<base::Ref<dom::Node>> mTakenOut;
    uint64_t mRecordCount = 0;

    struct OwnStep {
        std::vector<QByteArray> records;
        Kind kind;
        qint64 time;
    };
    std::deque<OwnStep> mOwnUndo;
    std::vector<OwnStep> mOwnRedo;
};

} // namespace changes
