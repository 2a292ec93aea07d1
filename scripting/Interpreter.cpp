// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Interpreter.h"

#include "base/Clock.h"
#include "base/Fault.h"
#include "control/RecoveryJournal.h"
#include "control/Vellum5.h"
#include "scripting/Objects.h"
#include "support/Debug.h"
#include "support/SettingsStore.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDir>
#include <cstdio>

namespace scripting {

using platform::MessageBox;
using platform::Value;

void notAvailable()
{
    throw ScriptError(QStringLiteral("not available yet"));
}

Interpreter::Interpreter(const Options &options) : mKeepGoing(options.keepGoing), mMakeFile(options.makeFile)
{
    support::SettingsStore::instance().setFolder(options.settingsFolder.isEmpty() ? mFreshSettings.path()
                                                                                  : options.settingsFolder);
    // What a script does in its journals is nobody else's business.
    RecoveryJournal::setFolder(support::SettingsStore::instance().folder() + QStringLiteral("/recovery"));
    mFilesFolder = options.filesFolder.isEmpty() ? mFreshFiles.path() : QDir(options.filesFolder).absolutePath();
    QDir().mkpath(mFilesFolder);
    base::Clock::instance().setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0)));
    MessageBox::setHandler([this](const MessageBox::Request &request) { return answerBox(request); });
    support::setFailurePresenter([this](const support::FailureReport &report) { mReports.push_back(report); });
    support::setDebugSink([this](const QString &line) { mDebug << line; });
    mForms = std::make_unique<Forms>(Forms::Hooks{[this](const QString &text) { printRaw(text); },
                                                  [this](const QString &message) { failLater(message); },
                                                  [this](const QString &name) { return filePath(name); }});
    mMenus = std::make_unique<Menus>(
        Menus::Hooks{[this](const QString &text) { printRaw(text); }, [this](const QString &message) { failLater(message); },
                     [this](const QString &name) { mHost->addEvent(QStringLiteral("ContextMenu"), QStringLiteral("Name"), name); }});
    mHost = std::make_unique<ScriptHost>();
    mHost->runInHandler = [this](const QString &command, const Event &event) { runInHandler(command, event); };
    PropertyBag bag;
    mHost->makeControl(&bag);
    settle();
}

Interpreter::~Interpreter()
{
    mNamed.clear();
    mSecond.reset();
    mHost.reset();
    mForms.reset();
    mMenus.reset();
    base::faults::disarmAll();
    MessageBox::setHandler({});
    support::setFailurePresenter({});
    support::setDebugSink({});
    base::Clock::instance().setSystem();
    RecoveryJournal::setFolder(QString());
}

void Interpreter::settle()
{
    // A load or a call may post further ones; a page that posts for ever is cut off. What was left for later deletion
    // goes too, as it would in a host's own loop.
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    for (int round = 0; round < 10000; ++round) {
        QApplication::sendPostedEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const bool more = dispatcher->processEvents(QEventLoop::AllEvents) && round < 100;
        if (!more && !mHost->isLoading() && !(mSecond && mSecond->isLoading()) && round >= 2) break;
    }
}

void Interpreter::print(const QString &text)
{
    mOutput += text + u'\n';
}

void Interpreter::printRaw(const QString &text)
{
    mOutput += text;
    if (!text.endsWith(u'\n')) mOutput += u'\n';
}

QString Interpreter::withFolder(QString text) const
{
    return text.replace(QStringLiteral("$DIR"), mFilesFolder);
}

QString Interpreter::filePath(const QString &name) const
{
    return QDir(mFilesFolder).absoluteFilePath(name);
}

/// What an expectation is held against is the output of the last command that isn't one.
static bool isExpectation(const QString &line)
{
    return line.startsWith(QLatin1String("expect"));
}

int Interpreter::run(const QString &text, const QString &name)
{
    int status = 0;
    for (Command command : readScript(text)) {
        command.line = withFolder(command.line);
        if (command.block) command.block = withFolder(*command.block);
        mOutput.clear();
        mPendingFailure = QString();
        QString failure;
        try {
            execute(command);
            failure = takePendingFailure();
        } catch (const ScriptError &error) {
            failure = error.text();
        } catch (const base::Error &error) {
            failure = error.description();
        } catch (const std::exception &error) {
            failure = QString::fromUtf8(error.what());
        }
        // What went wrong in a handler or a box came first.
        if (const QString first = takePendingFailure(); !first.isNull()) failure = first + QStringLiteral("; ") + failure;
        const QByteArray bytes = mOutput.toUtf8(); // a NUL doesn't end it
        std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout);
        std::fflush(stdout);
        if (!command.line.trimmed().startsWith(QLatin1String("clipboard"))) clipboardOpen = false;
        if (!isExpectation(command.line.trimmed())) mLastOutput = mOutput;
        if (failure.isNull()) continue;
        const QByteArray told = QStringLiteral("%1:%2: ").arg(name).arg(command.number).toUtf8() + failure.toUtf8() + '\n';
        std::fwrite(told.constData(), 1, std::size_t(told.size()), stderr);
        status = 1;
        if (!mKeepGoing) break;
    }
    return status;
}

static const QHash<QString, Verb> &verbs()
{
    static const auto table = [] {
        QHash<QString, Verb> table;
        for (const auto *group :
             {&hostVerbs(), &lateVerbs(), &eventVerbs(), &inputVerbs(), &dragVerbs(), &lookVerbs(), &insideVerbs(),
              &journalVerbs()})
            for (const VerbRow &row : *group) table.insert(QLatin1String(row.name), row.run);
        return table;
    }();
    return table;
}

void Interpreter::execute(const Command &command)
{
    Words words(command);
    const QString name = words.word("a command");
    const auto verb = verbs().constFind(name);
    if (verb == verbs().constEnd()) throw ScriptError(QStringLiteral("unknown command: %1").arg(name));
    const qsizetype before = mOutput.size();
    ++mDepth;
    try {
        (*verb)(*this, words);
        words.finish(); // a word that nobody read was meant for something
    } catch (...) {
        if (--mDepth == 0 && waits) settle();
        if (mDepth == 0) skipSettle = false;
        throw;
    }
    --mDepth;
    if (waits && !skipSettle) settle();
    if (mDepth == 0)
        skipSettle = false;
    else if (!isExpectation(name))
        mLastOutput = mOutput.mid(before); // a command of a scope, which an expectation there may ask for
}

void Interpreter::runInHandler(const QString &command, const Event &event)
{
    // What raises its own event would never end.
    constexpr int mostHandlers = 20;
    if (mHandlers >= mostHandlers)
        return failLater(QStringLiteral("handlers of events raise each other without end: %1").arg(event.name));
    ++mHandlers;
    const Event *outer = std::exchange(mEvent, &event);
    const bool waited = std::exchange(waits, false); // what is posted waits until the handler has ended
    QString failure;
    try {
        execute(readScript(command).front());
    } catch (const ScriptError &error) {
        failure = error.text();
    } catch (const base::Error &error) {
        failure = error.description();
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    waits = waited;
    mEvent = outer;
    --mHandlers;
    if (!failure.isNull()) failLater(failure);
}

void Interpreter::failLater(const QString &message)
{
    if (mPendingFailure.isNull()) mPendingFailure = message;
}

void Interpreter::activate()
{
    QWidget *window = control().window();
    if (QApplication::activeWindow() == window || !window->isVisible()) return;
    window->activateWindow();
    QApplication::processEvents();
}

Value Interpreter::named(const QString &name) const
{
    if (mEvent)
        for (const EventArgument &argument : mEvent->arguments)
            if (argument.name.compare(name, Qt::CaseInsensitive) == 0) return argument.value();
    const auto found = mNamed.constFind(name.toLower());
    if (found == mNamed.constEnd()) throw ScriptError(QStringLiteral("nothing is named @%1").arg(name));
    return *found;
}

Value Interpreter::readValue(Words &words)
{
    words.skipBlanks();
    if (words.nextIs(u'@')) {
        const Target target = readPath(words);
        return target.path.steps.empty() ? target.start : target.path.get(target.start);
    }
    qsizetype position = words.position();
    const Value value = platform::readJson(words.line(), position);
    words.moveTo(position);
    return value;
}

platform::Arguments Interpreter::readValues(Words &words)
{
    platform::Arguments values;
    while (!words.atEnd()) values.push_back(readValue(words));
    return values;
}

Interpreter::Target Interpreter::readPath(Words &words)
{
    words.skipBlanks();
    qsizetype position = words.position();
    platform::Path path =
        platform::Path::read(words.line(), position, [this](const QString &name) { return named(name); });
    words.moveTo(position);
    return {path.root.isEmpty() ? objectValue(&control()) : named(path.root), path};
}

Value Interpreter::readTarget(Words &words)
{
    const Target target = readPath(words);
    return target.path.steps.empty() ? target.start : target.path.get(target.start);
}

HostFile &Interpreter::file()
{
    if (!mMakeFile) notAvailable();
    if (!mHost->file) mHost->file = mMakeFile(mHost->control());
    return *mHost->file;
}

MessageBox::Button Interpreter::answerBox(const MessageBox::Request &request)
{
    QStringList names;
    for (const MessageBox::Button button : request.buttons) names << MessageBox::name(button);
    MessageBox::Button answer = request.escapeButton();
    if (!mAnswers.isEmpty()) {
        const QString wanted = mAnswers.takeFirst();
        bool found = false;
        for (const MessageBox::Button button : request.buttons) {
            if (MessageBox::name(button).compare(wanted, Qt::CaseInsensitive) != 0) continue;
            answer = button;
            found = true;
        }
        if (!found) failLater(QStringLiteral("the message box has no button %1").arg(wanted));
    }
    const auto oneLine = [](QString text) {
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
        return text.replace(u'\n', QStringLiteral("\\n"));
    };
    mBoxes << QStringList{MessageBox::name(request.icon), oneLine(request.caption), oneLine(request.text),
                          names.join(u'/'), MessageBox::name(answer)}
                  .join(QStringLiteral(" | "));
    return answer;
}

} // namespace scripting
