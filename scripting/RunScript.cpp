// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/RunScript.h"

#include "scripting/Interpreter.h"

#include <QFile>
#include <cstdio>

namespace scripting {

/// Standard error belongs to the script's failures. What the offscreen platform says about windows that it can't raise or
/// size says nothing about the control.
static void showMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (!message.startsWith(QLatin1String("This plugin does not support")))
        std::fprintf(stderr, "%s\n", message.toUtf8().constData());
}

static int usage()
{
    std::fputs("usage: vellumpad --script FILE [--keep-going] [--settings FOLDER] [--files FOLDER]\n", stderr);
    return 2;
}

int runScript(const QStringList &arguments)
{
    Interpreter::Options options;
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
        std::fprintf(stderr, "%s: %s\n", qPrintable(name), qPrintable(file.errorString()));
        return 2;
    }
    const QString text = QString::fromUtf8(file.readAll());
    qInstallMessageHandler(showMessage);
    return Interpreter(options).run(text, name);
}

} // namespace scripting
