// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DispatchPath.h"
#include "platform/MessageBox.h"
#include "scripting/Forms.h"
#include "scripting/HostFile.h"
#include "scripting/Menus.h"
#include "scripting/Script.h"
#include "scripting/ScriptHost.h"
#include "support/FailureReport.h"

#include <QHash>
#include <QImage>
#include <QMimeData>
#include <QTemporaryDir>
#include <memory>

namespace scripting {

class Interpreter;

/// A verb of the language: its name, and what it does with the words behind it.
using Verb = void (*)(Interpreter &, Words &);
struct VerbRow {
    const char *name;
    Verb run;
};

/// Runs scripts against a host. Each command's output is kept, so that the next `expect` can be held against it.
class Interpreter
{
public:
    struct Options {
        QString settingsFolder; ///< empty: a fresh one
        QString filesFolder;    ///< empty: a fresh one
        bool keepGoing = false;
        MakeHostFile makeFile; ///< without it there is no opening and saving
    };
    explicit Interpreter(const Options &options);
    ~Interpreter();

    /// Gives the exit status. `name` is what errors are told of.
    int run(const QString &text, const QString &name);

    // For the verbs
    ScriptHost &host() { return *mHost; }
    Vellum5 &control() { return mHost->control(); }
    /// The file of the control's document.
    HostFile &file();
    /// Adds a line to the command's output.
    void print(const QString &text);
    void printRaw(const QString &text);
    void execute(const Command &command);
    /// Lets everything happen that was posted.
    void settle();
    QString filesFolder() const { return mFilesFolder; }
    QString filePath(const QString &name) const;

    platform::Value named(const QString &name) const;
    void setNamed(const QString &name, const platform::Value &value) { mNamed[name.toLower()] = value; }
    /// A value as a script writes it: JSON, `nothing`, `null`, `empty` or `@NAME`.
    platform::Value readValue(Words &words);
    platform::Arguments readValues(Words &words);
    struct Target {
        platform::Value start;
        platform::Path path;
    };
    Target readPath(Words &words);
    /// The value that a path names.
    platform::Value readTarget(Words &words);
    ControlState &state() { return mHost->state(); }
    Qt::MouseButtons heldPointer; ///< buttons that `press` holds down
    /// Makes the command under way fail once it is over: for what goes wrong in a handler, through which nothing can be
    /// raised. The first one counts.
    void failLater(const QString &message);
    bool isInHandler() const { return mHandlers > 0; }
    /// Null if nothing failed so.
    QString takePendingFailure() { return std::exchange(mPendingFailure, QString()); }
    Forms &forms() { return *mForms; }
    Menus &menus() { return *mMenus; }
    bool dragging = false;              ///< something from another program is being dragged over the control
    std::unique_ptr<QMimeData> dragged; ///< what it is
    /// Brings the control's window to the front, so that it has the focus: a second control may have taken it.
    void activate();

    // Message boxes and reports
    QStringList takeBoxes() { return std::exchange(mBoxes, {}); }
    void queueAnswer(const QString &button) { mAnswers << button; }
    std::vector<support::FailureReport> takeReports() { return std::exchange(mReports, {}); }
    std::size_t reportCount() const { return mReports.size(); }
    QStringList takeDebugLines() { return std::exchange(mDebug, {}); }

    bool clipboardOpen = false; ///< the command before set a form of the clipboard, to which another one is added
    bool waits = true;       ///< whether commands let happen what was posted
    bool skipSettle = false; ///< the command that is ending was told not to wait
    QString lastOutput() const { return mLastOutput; }
    QString &output() { return mOutput; }
    QString withFolder(QString text) const;

private:
    platform::MessageBox::Button answerBox(const platform::MessageBox::Request &request);
    void runInHandler(const QString &command, const Event &event);

    QTemporaryDir mFreshSettings;
    QTemporaryDir mFreshFiles;
    QString mFilesFolder;
    bool mKeepGoing;
    MakeHostFile mMakeFile;
    std::unique_ptr<ScriptHost> mHost;
    std::unique_ptr<ScriptHost> mSecond;
    std::unique_ptr<Forms> mForms;
    std::unique_ptr<Menus> mMenus;
    QString mPendingFailure;
    QString mOutput;
    QString mLastOutput;
    QHash<QString, platform::Value> mNamed;
    const Event *mEvent = nullptr;
    QStringList mAnswers;
    QStringList mBoxes;
    std::vector<support::FailureReport> mReports;
    QStringList mDebug;
    int mDepth = 0;
    int mHandlers = 0; ///< handlers of events within each other

    friend void runInSecond(Interpreter &, Words &);
};

/// The verbs by group.
const std::vector<VerbRow> &hostVerbs();
const std::vector<VerbRow> &lateVerbs();
const std::vector<VerbRow> &eventVerbs();
const std::vector<VerbRow> &inputVerbs();
const std::vector<VerbRow> &dragVerbs();
const std::vector<VerbRow> &lookVerbs();
const std::vector<VerbRow> &insideVerbs();
const std::vector<VerbRow> &journalVerbs();

[[noreturn]] void notAvailable();

/// The MIME type of a form of the clipboard or of a drag: TEXT, HTML, HTMLFORMAT.
QString mimeOfForm(const QString &form);
/// A picture of a file; fails for what is none.
QImage readPicture(const QString &file);

} // namespace scripting
