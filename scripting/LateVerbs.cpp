// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Interpreter.h"

#include "engine/html/Parser.h"
#include "scripting/Helpers.h"
#include "scripting/Objects.h"

// The late-bound interface: what a script host or a macro would do.

namespace scripting {

using platform::Value;

namespace {

void get(Interpreter &in, Words &words)
{
    const Interpreter::Target target = in.readPath(words);
    words.finish();
    in.print((target.path.steps.empty() ? target.start : target.path.get(target.start)).toJson());
}

void set(Interpreter &in, Words &words)
{
    const Interpreter::Target target = in.readPath(words);
    const Value value = in.readValue(words);
    words.finish();
    target.path.put(target.start, value);
}

void call(Interpreter &in, Words &words)
{
    const Interpreter::Target target = in.readPath(words);
    const platform::CallResult result = target.path.call(target.start, in.readValues(words));
    in.print(result.value.toJson());
    for (const auto &[name, value] : result.references) in.print(name + u'=' + value.toJson());
}

void let(Interpreter &in, Words &words)
{
    const QString name = words.word("a name");
    if (words.word("=") != QLatin1String("=")) throw ScriptError(QStringLiteral("let NAME = …"));
    if (words.command().line.startsWith(QLatin1String("helper "))) {
        words.word("helper");
        const QString helper = words.word("a helper");
        in.setNamed(name, callHelper(in, helper, in.readValues(words)).value);
        return;
    }
    words.skipBlanks();
    const QChar first = words.line().mid(words.position()).isEmpty() ? QChar() : words.line()[words.position()];
    if (first == u'"' || first == u'[' || first.isDigit() || first == u'-') {
        in.setNamed(name, in.readValue(words));
        return;
    }
    const Interpreter::Target target = in.readPath(words);
    const platform::Arguments more = in.readValues(words);
    if (target.path.steps.empty())
        in.setNamed(name, target.start);
    else if (more.empty())
        in.setNamed(name, target.path.get(target.start));
    else
        in.setNamed(name, target.path.call(target.start, more).value);
}

void parse(Interpreter &in, Words &words)
{
    const QString name = words.word("a name");
    const base::Ref<dom::Document> document = html::parseDocument(words.text());
    in.setNamed(name, documentValue(document.get()));
}

void same(Interpreter &in, Words &words)
{
    const Value a = in.readValue(words), b = in.readValue(words);
    if (!a.isObject() || !b.isObject() || !a.toObject().isSame(b.toObject()))
        throw ScriptError(QStringLiteral("they aren't the same object: %1 and %2").arg(a.toJson(), b.toJson()));
}

void fails(Interpreter &in, Words &words)
{
    if (words.atEnd()) throw ScriptError(QStringLiteral("a command is missing"));
    QString text;
    bool failed = true;
    const QString before = in.output();
    try {
        in.execute(words.takeCommand());
        text = in.takePendingFailure();
        failed = !text.isNull();
    } catch (const ScriptError &error) {
        text = error.text();
    } catch (const base::Error &error) {
        text = error.description();
    } catch (const std::exception &error) {
        text = QString::fromUtf8(error.what());
    }
    if (const QString first = in.takePendingFailure(); !first.isNull()) text = first + QStringLiteral("; ") + text;
    if (!failed) throw ScriptError(QStringLiteral("it didn't fail"));
    in.output() = before;
    in.print(text);
}

} // namespace

const std::vector<VerbRow> &lateVerbs()
{
    static const std::vector<VerbRow> rows = {{"get", get},     {"set", set},   {"call", call},  {"let", let},
                                              {"parse", parse}, {"same", same}, {"fails", fails}};
    return rows;
}

} // namespace scripting
