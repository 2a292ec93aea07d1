// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "base/Export.h"
#include "platform/Contract.h"

#include <QObject>
#include <functional>
#include <memory>

class CodeMax;
class Host;
struct ControlState;
namespace changes {
class JournalFile;
class JournalWriter;
struct Journal;
struct JournalState;
} // namespace changes

/// The recovery journal of one control: what is done to its document is written to a file in the user's cache folder as it
/// happens, so that a host that starts again after a crash can give the document back (`FoundJournal`).
///
/// Off until the host asks. The file appears with the first edit and goes when the document was saved, when another text
/// takes its place and when the control ends. One that can't be written stops with one message; editing goes on.
class VELLUMKIT_EXPORT RecoveryJournal : public QObject
{
    Q_OBJECT
public:
    RecoveryJournal(ControlState &state, Host &host, HTMLEditor &ed, CodeMax &txtHTMLSource);
    ~RecoveryJournal() override;

    bool isOn() const { return mOn; }
    /// Switched on, it begins with the next text that the control gets; switched off, it ends at once.
    void setOn(bool on);
    /// What the document is called when it is offered: the host's file. The control's own file unless the host says.
    QString documentName() const;
    void setDocumentName(const QString &name);
    /// Told by a host that has saved what `DocumentHTML` gave: nothing is left to recover until the next edit.
    /// `SaveFile` does so by itself.
    void documentSaved();
    /// Whether a journal lies in the folder, and its name ("" if none does).
    bool isWriting() const;
    QString fileName() const;

    /// Where the journals of this process and those that `FoundJournal` looks for lie: a folder of the program's in the
    /// user's cache, unless moved.
    static QString folder();
    static void setFolder(const QString &folder);

    // From here on for the control.
    /// While it lives, the control gets another text, which no edit is.
    class Replacement
    {
    public:
        explicit Replacement(RecoveryJournal &journal) : mJournal(journal) { mJournal.startsReplacing(); }
        ~Replacement() { mJournal.endsReplacing(); }
        Replacement(const Replacement &) = delete;
        Replacement &operator=(const Replacement &) = delete;

    private:
        RecoveryJournal &mJournal;
    };
    /// An edit of the store is over.
    void sourceSettled();
    /// The surface is about to load a text of the store.
    void posts(const QString &text);
    void surfaceLoaded(const QString &text);
    /// Around what the control does at the end of a load.
    void loadCompletes();
    void loadCompleted();
    /// The store follows the surface, or another view is shown.
    void stateChanged();
    /// The control ends.
    void close();
    /// Brings a document back, takes its journal over and goes on with it. False, with nothing taken, if the control
    /// can't.
    bool recover(changes::Journal &journal, std::unique_ptr<changes::JournalFile> &file);
    /// Set by the control: shows a view without posting anything; loads the surface with a text as it stands.
    std::function<void(int view)> showView;
    std::function<void(const QString &text)> loadSurface;

Q_SIGNALS:
    /// The journal can't be written any more; once a document. Without a listener a message box shows it.
    void Stopped(const QString &Message);

private:
    struct Recovering;
    void startsReplacing();
    void endsReplacing();
    void begin();
    void adopt();
    void drop();
    void stop(const QString &reason, bool edit);
    void tellStopped();
    void sourceEdited(int position, int type, const char *, int length);
    bool isSourceEdit() const;
    changes::JournalState now() const;
    template <class Encode> void note(bool edit, Encode encode);
    void arm();
    void tick();

    ControlState &mState;
    Host &mHost;
    HTMLEditor &ed;
    CodeMax &txtHTMLSource;
    bool mOn = false;
    bool mLive = false; ///< the surface holds the text that the journal has for it
    int mReplacing = 0;
    QString mName;
    bool mHasPosted = false;
    QString mPosted;  ///< until the journal has it
    QString mAwaited; ///< on its way to the surface

    std::unique_ptr<changes::JournalFile> mFile;
    std::unique_ptr<changes::JournalWriter> mWriter;
    std::unique_ptr<changes::JournalState> mToldState;
    QString mToldName;
    std::unique_ptr<Recovering> mRecovering;
    int mInsertedAt = 0; ///< what came into the store and isn't written yet, in bytes of UTF-8
    int mInserted = 0;
    bool mStopped = false;
    bool mTold = false;
    QString mReason;

    base::Timer mTimer;
    qint64 mFirst = 0; // the oldest and the youngest writing that isn't synced, in milliseconds
    qint64 mLast = 0;
};
