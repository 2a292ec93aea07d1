// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Interpreter.h"

#include "platform/ControlTables.h"
#include "platform/DispatchPath.h"

#include <QRegularExpression>

// Events, message boxes, reports, and what is expected of outputs.

namespace scripting {

using platform::Value;

namespace {

void events(Interpreter &in, Words &words)
{
    words.finish();
    for (const QString &event : in.host().takeEvents()) in.print(event);
}

/// A misspelt argument would never be answered, and nobody would see why.
void checkArgument(const platform::control::EventRow &event, const QString &argument)
{
    const QStringList arguments = QString::fromLatin1(event.arguments).split(QStringLiteral(", "));
    if (!arguments.contains(u'&' + argument, Qt::CaseInsensitive))
        throw ScriptError(
            QStringLiteral("%1 has no argument by reference %2").arg(QLatin1String(event.name), argument));
}

void on(Interpreter &in, Words &words)
{
    const QString event = words.word("an event");
    const platform::control::EventRow *row = platform::control::findEvent(event);
    if (!row) throw ScriptError(QStringLiteral("unknown event: %1").arg(event));
    const Command rest = words.command();
    if (rest.line.trimmed() == QLatin1String("off")) {
        words.takeCommand();
        return in.host().forgetEvent(event);
    }
    if (rest.line.startsWith(QLatin1String("do "))) {
        words.word("do");
        const Command command = words.takeCommand();
        return in.host().runOnEvent(event, command.block ? command.line + QStringLiteral(" <<END_OF_BLOCK\n") + *command.block +
                                                               QStringLiteral("\nEND_OF_BLOCK")
                                                         : command.line);
    }
    if (words.atEnd()) throw ScriptError(QStringLiteral("ARGUMENT=VALUE, do or off is missing"));
    while (!words.atEnd()) {
        words.skipBlanks();
        const qsizetype equals = words.line().indexOf(u'=', words.position());
        if (equals < 0) throw ScriptError(QStringLiteral("ARGUMENT=VALUE"));
        const QString argument = words.line().mid(words.position(), equals - words.position());
        words.moveTo(equals + 1);
        checkArgument(*row, argument);
        in.host().answerEvent(event, argument, in.readValue(words));
    }
}

void answer(Interpreter &in, Words &words)
{
    in.queueAnswer(words.word("a button"));
    words.finish();
}

void form(Interpreter &in, Words &words)
{
    const QString name = words.word("a form");
    in.forms().expect(name, words.text());
}

void menu(Interpreter &in, Words &words)
{
    const QString name = words.word("a menu");
    in.menus().expect(name, words.text());
}

void boxesShown(Interpreter &in, Words &)
{
    for (const QString &box : in.takeBoxes()) in.print(box);
}

void reports(Interpreter &in, Words &)
{
    bool first = true;
    for (const support::FailureReport &report : in.takeReports()) {
        if (!first) in.print(QString());
        first = false;
        in.print(QStringLiteral("module: ") + report.module);
        in.print(QStringLiteral("procedure: ") + report.procedure);
        in.print(QStringLiteral("line: %1").arg(report.line));
        in.print(QStringLiteral("number: %1").arg(report.number));
        in.print(QStringLiteral("description: ") + report.description);
        in.printRaw(report.dump);
    }
}

void debug(Interpreter &in, Words &)
{
    for (const QString &line : in.takeDebugLines()) in.print(line);
}

// Expectations

QString normal(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    while (text.endsWith(u'\n')) text.chop(1);
    return text;
}

[[noreturn]] void disappoint(const QString &what, const QString &expected, const QString &got)
{
    throw ScriptError(QStringLiteral("%1\n--- expected\n%2\n--- got\n%3\n---").arg(what, expected, got));
}

void expect(Interpreter &in, Words &words)
{
    const QString expected = normal(words.text()), got = normal(in.lastOutput());
    if (expected != got) disappoint(QStringLiteral("not what was expected"), expected, got);
}

void expectHas(Interpreter &in, Words &words)
{
    const QString expected = normal(words.text()), got = normal(in.lastOutput());
    if (!got.contains(expected)) disappoint(QStringLiteral("it isn't in the output"), expected, got);
}

void expectNot(Interpreter &in, Words &words)
{
    const QString unwanted = normal(words.text()), got = normal(in.lastOutput());
    if (got.contains(unwanted)) disappoint(QStringLiteral("it is in the output"), unwanted, got);
}

void expectLike(Interpreter &in, Words &words)
{
    const QString pattern = normal(words.text()), got = normal(in.lastOutput());
    const QRegularExpression expression(QRegularExpression::anchoredPattern(pattern),
                                        QRegularExpression::DotMatchesEverythingOption);
    if (!expression.isValid()) throw ScriptError(expression.errorString());
    if (!expression.match(got).hasMatch()) disappoint(QStringLiteral("it doesn't match"), pattern, got);
}

} // namespace

const std::vector<VerbRow> &eventVerbs()
{
    static const std::vector<VerbRow> rows = {
        {"events", events},   {"on", on},         {"answer", answer},        {"boxes-shown", boxesShown},
        {"form", form}, {"menu", menu}, {"reports", reports},  {"debug", debug},
        {"expect", expect},   {"expect-has", expectHas}, {"expect-not", expectNot}, {"expect-like", expectLike},
    };
    return rows;
}

} // namespace scripting
