// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FailureReport.h"

#include "support/InstanceCounts.h"

#include <QApplication>
#include <QMessageBox>
#include <cstdio>
#include <deque>

namespace support {

namespace {

struct Global
{
    QString name;
    std::function<DumpValue()> getter;
};

std::vector<Global> &globals()
{
    static std::vector<Global> list = {
        {QStringLiteral("mInstanceCount"), {}},  {QStringLiteral("mAppName"), {}},
        {QStringLiteral("mAutoFormatHTML"), {}}, {QStringLiteral("HTMLClipboardFormat"), {}},
        {QStringLiteral("mHTMLTidy"), {}},       {QStringLiteral("RuleIncrement"), {}}};
    return list;
}

FailurePresenter &currentPresenter()
{
    static FailurePresenter presenter;
    return presenter;
}

ErrorReportFactory &currentFactory()
{
    static ErrorReportFactory factory;
    return factory;
}

void take(ErrorReportAction action)
{
    if (action == ErrorReportAction::QuitApplication && QCoreApplication::instance()) QCoreApplication::quit();
}

/// Did an error-report object exist? One that fails once it is there has been shown as far as it got.
bool showErrorReportObject(const FailureReport &report)
{
    std::unique_ptr<ErrorReportObject> object;
    try {
        if (currentFactory()) object = currentFactory()();
    } catch (...) {
        return false;
    }
    if (!object) return false;
    object->setApplication(QString::fromLatin1(applicationName), QString::fromLatin1(applicationVersion));
    object->setReport(report);
    take(object->show());
    return true;
}

void presentByDefault(const FailureReport &report)
{
    if (!showErrorReportObject(report)) showFailureBox(report);
}

QString section(const QString &variables)
{
    return variables.isEmpty() ? QStringLiteral("{None}\r\n") : variables;
}

QString globalVariables()
{
    VariableDump dump;
    dumpSupportVariables(dump);
    for (const Global &global : globals())
        dump.addGuarded(
            global.name, global.getter ? global.getter : [] { return DumpValue::empty(); });
    return dump.text();
}

} // namespace

FailurePresenter setFailurePresenter(FailurePresenter presenter)
{
    std::swap(currentPresenter(), presenter);
    return presenter;
}

void setErrorReportFactory(ErrorReportFactory factory)
{
    currentFactory() = std::move(factory);
}

QString failureBoxText(const FailureReport &report)
{
    return QStringLiteral("VellumKit5 has encountered a problem. We are sorry for the inconvenience.\r\n\r\nModule: ") +
           report.module + QStringLiteral("\r\nProcedure: ") + report.procedure + QStringLiteral("\r\nLine Number: ") +
           QString::number(report.line) + QStringLiteral("\r\n\r\n") + report.description + QStringLiteral(" (") +
           QString::number(report.number) + QLatin1Char(')');
}

void showFailureBox(const FailureReport &report)
{
    // The box runs an event loop, in which the same procedure may fail again: boxes come one after the other, and a
    // procedure that fails on every event must not bury the screen.
    constexpr std::size_t maximalWaiting = 8;
    static std::deque<QString> waiting;
    static bool showing = false;

    const QString text = failureBoxText(report);
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
        return;
    }
    if (waiting.size() < maximalWaiting) waiting.push_back(text);
    if (showing) return;
    showing = true;
    struct Shown
    {
        ~Shown() { showing = false; }
    } shown;
    while (!waiting.empty()) {
        QMessageBox box(QMessageBox::Critical, QStringLiteral("Application Error"), waiting.front(), QMessageBox::Ok);
        box.setTextFormat(Qt::PlainText);
        waiting.pop_front();
        box.exec();
    }
}

void deliverFailure(const FailureReport &report) noexcept
{
    try {
        const FailurePresenter presenter = currentPresenter();
        if (presenter)
            presenter(report);
        else
            presentByDefault(report);
    } catch (...) {
        // The caller of the failed procedure must go on, whatever became of the report.
    }
}

QString wholeDump(const QString &locals, const QString &moduleVariables, const QString &parameters)
{
    return QStringLiteral("<Variables>\r\n<LocalVariables>\r\n") + section(locals) +
           QStringLiteral("</LocalVariables>\r\n<ModuleVariables>\r\n") + section(moduleVariables) +
           QStringLiteral("</ModuleVariables>\r\n<GlobalVariables>\r\n") + globalVariables() +
           QStringLiteral("</GlobalVariables>\r\n</Variables>\r\n<Parameters>\r\n") + section(parameters) +
           QStringLiteral("</Parameters>");
}

void registerGlobalVariable(const QString &name, std::function<DumpValue()> getter)
{
    for (Global &global : globals()) {
        if (global.name != name) continue;
        global.getter = std::move(getter);
        return;
    }
    globals().push_back({name, std::move(getter)});
}

} // namespace support
