// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/RunScript.h"

#include "scripting/Interpreter.h"

#include <QFile>
#include <cstdio>

namespace scripting {

/// Standard error belongs to the script's failures. What the offscreen platform says about windows that it can't raise or
/// size, and Qt about the session that isn't there, says nothing about the control.
static void showMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    for (const char *noise : {"This plugin does not support", "QStandardPaths: ", "Detected locale "})
        if (message.startsWith(QLatin1String(noise))) return;
    std::fprintf(stderr, "%s\n", message.toUtf8().constData());
}

void beforeApplication()
{
    qInstallMessageHandler(showMessage);
}

static int usage()
{
    std::fputs("usage: vellumpad --script FILE [--keep-going] [--settings FOLDER] [--files FOLDER]\n", stderr);
    return 2;
}

int runScript(const QStringList &arguments, MakeHostFile makeFile)
{
    Interpreter::Options options;
    options.makeFile = std::move(makeFile);
    QString name;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (argument == QLatin1String("--keep-going"))
            options.keepGoing = true;
        else if (argument == QLatin1String("--script") && hasValue)
            name = arguments[++i];
        else if (argument == QLatin1String("--settings") && hasValue)
            options.settingsFolder = arguments[++i];
        else if (argument == QLatin1String("--files") && hasValue)
            options.filesFolder = arguments[++i];
        else
            return usage();
    }
    if (name.isEmpty()) return usage();
    QFile file(name);
    const bool open = name == QLatin1String("-") ? file.open(stdin, QFile::ReadOnly) : file.open(QFile::ReadOnly);
    if (!open) {
        std::fprintf(stderr, "%s: %s\n", name.toUtf8().constData(), file.errorString().toUtf8().constData());
        return 2;
    }
    const QString text = QString::fromUtf8(file.readAll());
    return Interpreter(options).run(text, name);
}

} // namespace scripting
