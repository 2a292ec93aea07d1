// SPDX-License-Identifier: GPL-3.0-or-later
#include "DocumentFile.h"
#include "MainWindow.h"
#include "Recover.h"
#include "Tour.h"

#ifdef VELLUMPAD_SCRIPTING
#include "scripting/RunScript.h"
#endif

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>

#ifdef VELLUMPAD_SCRIPTING
namespace {

class ScriptedFile : public scripting::HostFile
{
public:
    explicit ScriptedFile(Vellum5 &control) : mFile(control) {}
    bool open(const QString &name) override
    {
        if (!mFile.mayLeave([this] { return mFile.save(mFile.name()); })) return false;
        mFile.open(name);
        return true;
    }
    bool save(const QString &name) override { return mFile.save(name); }

private:
    DocumentFile mFile;
};

} // namespace
#endif

int main(int argc, char **argv)
{
    bool script = false, tour = false;
    for (int i = 1; i < argc; ++i) {
        script = script || qstrcmp(argv[i], "--script") == 0;
        tour = tour || qstrcmp(argv[i], "--tour") == 0;
    }
    if ((script || tour) && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
#ifdef VELLUMPAD_SCRIPTING
    if (script) scripting::beforeApplication();
#endif
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VellumPad"));
    QApplication::setApplicationVersion(QStringLiteral("5.0.0"));
#ifdef VELLUMPAD_SCRIPTING
    if (script) {
        return scripting::runScript(application.arguments(),
                                    [](Vellum5 &control) { return std::make_unique<ScriptedFile>(control); });
    }
#endif
    QCommandLineParser parser;
    parser.setApplicationDescription(QCoreApplication::translate("main", "A small HTML editor."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({QStringLiteral("tour"), QCoreApplication::translate("main", "Save pictures of the three views.")});
    parser.addPositionalArgument(QStringLiteral("file"), QCoreApplication::translate("main", "The page to open."));
    parser.process(application);
    const QStringList files = parser.positionalArguments();
    if (tour && !files.isEmpty() && !QFileInfo(files.front()).isReadable()) {
        // Nobody is there to answer a box.
        qCritical("%s: the file can't be read", qPrintable(files.front()));
        return 1;
    }
    MainWindow window;
    if (files.isEmpty())
        window.openSample();
    else if (!window.openFile(files.front()) && tour)
        return 1;
    if (tour) return runTour(window);
    window.show();
    QMetaObject::invokeMethod(&window, [&window] { offerRecovery(window); }, Qt::QueuedConnection);
    return QApplication::exec();
}
