// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/RecoveryJournal.h"

#include "control/ControlState.h"
#include "core/Host.h"
#include "engine/changes/ChangeTracker.h"
#include "engine/changes/EditScope.h"
#include "engine/changes/Journal.h"
#include "engine/changes/JournalFile.h"
#include "platform/CodeMax.h"
#include "platform/MessageBox.h"
#include "undo/ChangeManager.h"

#include <QMetaMethod>
#include <QStandardPaths>

using changes::JournalFile;
using changes::JournalState;
using changes::JournalWriter;

// What stands here runs inside keystrokes and loads: nothing of it raises, and nothing of it keeps an edit from happening.

namespace {

constexpr int quietMs = 1000;
constexpr int longestMs = 5000;

QString &movedFolder()
{
    static QString folder;
    return folder;
}

} // namespace

/// A document that is being brought back, from the load of its text until it has ended.
struct RecoveryJournal::Recovering {
    changes::Journal journal;
    std::unique_ptr<JournalFile> file;
    bool loaded = false; ///< the surface has the text
};

RecoveryJournal::RecoveryJournal(ControlState &state, Host &host, HTMLEditor &surface, CodeMax &source)
    : mState(state), mHost(host), ed(surface), txtHTMLSource(source), mWriter(std::make_unique<JournalWriter>()),
      mToldState(std::make_unique<JournalState>())
{
    connect(&mTimer, &base::Timer::timeout, this, &RecoveryJournal::tick);
    // The notice in front of each change, whoever makes it: typing, undo, a drop, a call.
    connect(&txtHTMLSource, &QsciScintillaBase::SCN_MODIFIED, this, &RecoveryJournal::sourceEdited);
    connect(&txtHTMLSource, &CodeMax::Change, this, &RecoveryJournal::sourceSettled);
}

RecoveryJournal::~RecoveryJournal()
{
    close();
    if (changes::ChangeTracker *tracker = ed.tracker()) tracker->journal = {};
}

QString RecoveryJournal::folder()
{
    if (!movedFolder().isEmpty()) return movedFolder();
    return QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/recovery");
}

void RecoveryJournal::setFolder(const QString &folder)
{
    movedFolder() = folder;
}

void RecoveryJournal::setOn(bool on)
{
    mOn = on;
    if (!on) drop();
}

QString RecoveryJournal::documentName() const
{
    return mName.isEmpty() ? mState.mFileName : mName;
}

void RecoveryJournal::setDocumentName(const QString &name)
{
    mName = name;
    if (isWriting()) note(false, [] { return QByteArray(); });
}

bool RecoveryJournal::isWriting() const
{
    return !fileName().isEmpty();
}

QString RecoveryJournal::fileName() const
{
    return mFile ? mFile->name() : QString();
}

JournalState RecoveryJournal::now() const
{
    JournalState state;
    state.view = uint8_t(std::clamp(int(mState.mCurrentEditView), 0, 2));
    state.editMode = uint8_t(std::clamp(mState.mEditMode, 0, 2));
    state.bodyMode = mState.mBodyMode;
    // While a load is under way the marks are still those of the surface's last text.
    state.surfaceAhead = mState.mHTMLEdIsDirty && !mState.mLoadingEd;
    state.dirty = mState.mDirty && !mState.mLoadingEd;
    state.sourceAhead = mState.mHTMLSourceChanged;
    state.tracked = mState.mChangeManager != nullptr;
    state.baseUrl = mState.mBaseURL;
    return state;
}

// Writing

/// The texts that everything later is done to. Written before anybody edits, into a file without a name.
void RecoveryJournal::begin()
{
    const QString posted = std::exchange(mPosted, QString());
    if (!mOn || mState.mTerminated || mState.mTerminating) return;
    QString error;
    mStopped = mTold = false;
    mFile = JournalFile::create(folder(), error);
    *mWriter = {};
    mToldName = documentName();
    *mToldState = now();
    const QString storeText = txtHTMLSource.Text();
    QByteArray bytes = JournalWriter::head();
    bytes += mWriter->document(mToldName);
    bytes += mWriter->store(storeText.toUtf8());
    if (mHasPosted) bytes += mWriter->surface(posted == storeText ? nullptr : &posted, ed.baseUrl());
    bytes += mWriter->state(*mToldState);
    if (!mFile || !mFile->append(bytes, error)) stop(error, false);
}

template <class Encode> void RecoveryJournal::note(bool edit, Encode encode)
{
    if (mStopped) {
        if (edit) tellStopped();
        return;
    }
    if (!mFile) return;
    QByteArray bytes;
    if (const QString name = documentName(); name != mToldName) {
        bytes += mWriter->document(name);
        mToldName = name;
    }
    // Until its load has ended, a document that is brought back has other marks than it will have.
    if (const JournalState state = now(); !mRecovering && state != *mToldState) {
        bytes += mWriter->state(state);
        *mToldState = state;
    }
    bytes += encode();
    if (bytes.isEmpty()) return;
    QString error;
    const bool written = mFile->append(bytes, error);
    // Named when it holds an edit, so that each journal that is found has one.
    if (!written || (edit && !isWriting() && !mFile->giveName(error)))
        stop(error, edit);
    else if (isWriting())
        arm();
}

void RecoveryJournal::stop(const QString &reason, bool edit)
{
    mStopped = true;
    mReason = reason;
    mTimer.setEnabled(false);
    // What a journal with a name holds is better than nothing, and goes with a save as any other.
    if (!isWriting()) mFile.reset();
    if (edit) tellStopped();
}

void RecoveryJournal::tellStopped()
{
    if (std::exchange(mTold, true)) return;
    const QString message =
        tr("The recovery journal could not be written: %1. You can go on editing, but what you change from now on could "
           "not be recovered after a crash.")
            .arg(mReason);
    // Not in the middle of a keystroke.
    QMetaObject::invokeMethod(
        this,
        [this, message] {
            if (isSignalConnected(QMetaMethod::fromSignal(&RecoveryJournal::Stopped))) {
                Q_EMIT Stopped(message);
                return;
            }
            using platform::MessageBox;
            changes::EditScope::Suspension modal;
            MessageBox::show(MessageBox::Icon::Warning, tr("Recovery journal"), message, {MessageBox::Button::Ok},
                             mHost.window());
        },
        Qt::QueuedConnection);
}

void RecoveryJournal::drop()
{
    mTimer.setEnabled(false);
    if (mFile) mFile->remove();
    mFile.reset();
    mInserted = 0;
    mStopped = mTold = false;
}

void RecoveryJournal::documentSaved()
{
    sourceSettled();
    if (!isWriting()) return;
    mTimer.setEnabled(false);
    // The texts stay at hand: the next edit is again one of the tree that they, with all that was done since, make.
    QString error;
    std::unique_ptr<JournalFile> next;
    if (!mStopped) next = mFile->copy(error);
    mFile->remove();
    mFile = std::move(next);
    if (!mFile && !mStopped) stop(error, false);
}

void RecoveryJournal::close()
{
    mRecovering.reset();
    drop();
    mOn = false;
}

// What is done to the document

void RecoveryJournal::startsReplacing()
{
    if (mReplacing++ > 0) return;
    // The journal holds what the control holds, and that is being given up. What couldn't be brought back yet stays.
    mRecovering.reset();
    drop();
    mHasPosted = mLive = false;
    mPosted.clear();
    mAwaited.clear();
}

void RecoveryJournal::endsReplacing()
{
    if (--mReplacing == 0) begin();
}

void RecoveryJournal::posts(const QString &text)
{
    sourceSettled();
    mLive = false;
    mHasPosted = true;
    mAwaited = text;
    if (mReplacing > 0) {
        mPosted = text;
    } else if (mFile) {
        const bool own = text != txtHTMLSource.Text();
        note(false, [&] { return mWriter->surface(own ? &text : nullptr, ed.baseUrl()); });
    }
}

void RecoveryJournal::surfaceLoaded(const QString &text)
{
    changes::ChangeTracker &tracker = *ed.tracker();
    tracker.journal = [this](const QByteArray &record) {
        sourceSettled();
        if (mLive) note(true, [&] { return mWriter->record(record); });
    };
    const QString awaited = std::exchange(mAwaited, QString());
    if (mRecovering) {
        mRecovering->loaded = true;
    } else if (awaited.isNull() || awaited != text) {
        // The surface went to another page by itself.
        drop();
        mHasPosted = true;
        mPosted = text;
        begin();
    }
    mLive = !mRecovering;
}

/// Comes in front of each change. It names the text that goes, but of the one that comes only the length: that is read
/// where it stands as soon as it does, at the next change or when the edit is over.
void RecoveryJournal::sourceEdited(int position, int type, const char *, int length)
{
    const bool comes = type & QsciScintillaBase::SC_MOD_BEFOREINSERT;
    const bool goes = type & QsciScintillaBase::SC_MOD_BEFOREDELETE;
    if ((!comes && !goes) || mReplacing > 0 || mRecovering || (!mFile && !mStopped)) return;
    sourceSettled();
    if (comes) {
        mInsertedAt = position;
        mInserted = length;
    } else {
        note(isSourceEdit(), [&] { return mWriter->storeEdit(uint64_t(position), uint64_t(length), {}); });
    }
}

void RecoveryJournal::sourceSettled()
{
    if (mInserted == 0) return;
    const int length = std::exchange(mInserted, 0);
    const auto *bytes = reinterpret_cast<const char *>(static_cast<intptr_t>(
        txtHTMLSource.SendScintilla(QsciScintillaBase::SCI_GETRANGEPOINTER, static_cast<unsigned long>(mInsertedAt), length)));
    note(isSourceEdit(), [&] { return mWriter->storeEdit(uint64_t(mInsertedAt), 0, QByteArray(bytes, length)); });
}

/// In the other views the store only follows the surface, whose records are the edits.
bool RecoveryJournal::isSourceEdit() const
{
    return mState.mCurrentEditView == EditViewEnum::hvSourceEdit;
}

void RecoveryJournal::stateChanged()
{
    sourceSettled();
    if (!mRecovering) note(false, [] { return QByteArray(); });
}

// The loss of power

void RecoveryJournal::arm()
{
    mLast = base::Clock::instance().nowMs();
    if (mTimer.isEnabled()) return;
    mFirst = mLast;
    mTimer.setInterval(quietMs);
    mTimer.setEnabled(true);
}

void RecoveryJournal::tick()
{
    const qint64 now = base::Clock::instance().nowMs();
    const qint64 left = std::min(mLast + quietMs, mFirst + longestMs) - now;
    if (left > 0 && left <= quietMs) {
        mTimer.setInterval(int(left));
        return;
    }
    mTimer.setEnabled(false);
    if (mFile) mFile->sync();
}

// Back

bool RecoveryJournal::recover(changes::Journal &journal, std::unique_ptr<JournalFile> &file)
{
    if (!mState.mInitialised || mState.mTerminated || mState.mTerminating || !journal.isReadable()) return false;
    startsReplacing();
    --mReplacing;
    mRecovering = std::make_unique<Recovering>(Recovering{std::exchange(journal, {}), std::move(file), false});
    const changes::Journal &from = mRecovering->journal;
    mName = from.documentName;
    mState.mBodyMode = from.state.bodyMode;
    mState.mEditMode = from.state.editMode;
    mState.mBaseURL = from.state.baseUrl;
    for (const char *name : {"BodyMode", "EditMode", "BaseURL"}) mHost.tellPropertyChanged(name);
    showView(from.state.view);
    txtHTMLSource.setText(QString::fromUtf8(from.store));
    txtHTMLSource.ClearUndo();
    mState.mHTMLSourceChanged = from.state.sourceAhead || !from.hasSurface;
    if (from.hasSurface) {
        ed.setBaseUrl(from.surfaceBaseUrl);
        loadSurface(from.surface);
    } else {
        adopt();
        loadCompleted();
    }
    return true;
}

void RecoveryJournal::loadCompletes()
{
    if (!mRecovering || !mRecovering->loaded) return;
    for (const QByteArray &record : mRecovering->journal.records) ed.tracker()->play(record, true);
    adopt();
    mLive = true;
}

/// The journal that was found is gone on with: at no moment does the document stand in none.
void RecoveryJournal::adopt()
{
    const changes::Journal &from = mRecovering->journal;
    mStopped = mTold = false;
    mFile = std::move(mRecovering->file);
    mFile->truncate(from.length);
    mWriter->setSequence(from.nextSequence);
    *mToldState = from.state;
    mToldName = from.documentName;
    mHasPosted = from.hasSurface;
}

void RecoveryJournal::loadCompleted()
{
    if (!mRecovering || mRecovering->file) return; // the load of something else has ended
    const std::unique_ptr<Recovering> done = std::move(mRecovering);
    mState.mHTMLEdIsDirty = mState.mHTMLEdIsDirty || done->journal.state.surfaceAhead;
    mState.mDirty = mState.mDirty || done->journal.state.dirty;
    mHost.raiseChange();
}
