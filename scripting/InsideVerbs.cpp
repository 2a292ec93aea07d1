// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Inside.h"

#include "base/Fault.h"
#include "control/Vellum5Parts.h"
#include "engine/changes/EditScope.h"
#include "engine/dom/CharacterData.h"
#include "engine/dom/Names.h"
#include "engine/ranges/Marks.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"
#include "scripting/Check.h"
#include "scripting/Helpers.h"
#include "scripting/Interpreter.h"

#include <csignal>
#include <limits>

// What lies behind the public members.

namespace scripting {

namespace {

void printStack(Interpreter &in, const char *name, const ChangeRecords &stack)
{
    QString line = QLatin1String(name);
    for (int i = 1; i <= stack.Count(); ++i)
        line += QStringLiteral(" %1:%2").arg(stack.Item(i)->Kind()).arg(stack.Item(i)->ChangeGroupID());
    in.print(line);
}

void printCount(Interpreter &in, const char *name, const ChangeRecords &stack)
{
    in.print(QStringLiteral("%1 %2 records, %3 public").arg(QLatin1String(name)).arg(stack.Count()).arg(stack.PublicCount()));
}

void batch(Interpreter &in, Words &words)
{
    std::vector<int> kinds;
    while (!words.atEnd()) {
        kinds.push_back(words.number("a kind"));
        if (kinds.back() < 0 || kinds.back() > 255) throw ScriptError(QStringLiteral("a kind is a byte: %1").arg(kinds.back()));
    }
    if (!in.host().changeLog() || !in.state().mChangeManager) throw ScriptError(QStringLiteral("no manager"));
    in.host().changeLog()->batch(kinds);
}

void steps(Interpreter &in, Words &words, bool isUndo)
{
    const QString count = words.wordOr(QStringLiteral("1"));
    words.finish();
    bool fine = true;
    const bool all = count == QLatin1String("all");
    const int limit = all ? std::numeric_limits<int>::max() : count.toInt(&fine);
    if (!fine || limit < 0) throw ScriptError(QStringLiteral("a number or all: %1").arg(count));
    in.control().FlushChanges(); // what waits is a step too
    int done = 0;
    for (; done < limit; ++done) {
        const bool is = isUndo ? in.control().UndoEnabled() : in.control().RedoEnabled();
        if (!is && all) break;
        const std::size_t reports = in.reportCount();
        isUndo ? in.control().Undo() : in.control().Redo();
        if (!is || in.reportCount() != reports) break;
    }
    in.print(QString::number(done));
}

void undo(Interpreter &in, Words &words)
{
    steps(in, words, true);
}

void redo(Interpreter &in, Words &words)
{
    steps(in, words, false);
}

void helper(Interpreter &in, Words &words)
{
    const QString name = words.word("a name");
    const HelperResult result = callHelper(in, name, in.readValues(words));
    if (!result.fillsCollection) in.print(result.value.toJson());
    for (const auto &[key, value] : result.references) in.print(key + u'=' + value.toJson());
}

void fault(Interpreter &, Words &words)
{
    const QString module = words.word("a module");
    const QString procedure = words.word("a procedure");
    const int number = words.atEnd() ? 5 : words.number("a number");
    const QString text = words.atEnd() ? QStringLiteral("A fault that was asked for.") : words.text();
    base::faults::arm(module, procedure, number, text);
}

void scope(Interpreter &in, Words &words)
{
    const bool waited = std::exchange(in.waits, false);
    try {
        changes::EditScope scope;
        for (const Command &command : readScript(words.text())) in.execute(command);
    } catch (...) {
        in.waits = waited;
        throw;
    }
    in.waits = waited;
}

void check(Interpreter &in, Words &)
{
    const QString problem = checkDocument(in);
    if (!problem.isEmpty()) throw ScriptError(problem);
}

void crash(Interpreter &, Words &words)
{
    words.finish();
    std::raise(SIGKILL); // nothing is unwound, written or told
}

void marked(Interpreter &in, Words &words)
{
    const QString text = words.text();
    const ranges::Marks marks(text);
    in.control().setBodyMode(false);
    in.control().setDocumentHTML(marks.page());
    in.settle();
    surface::LoadedDocument *loaded = in.host().surface().loaded();
    if (!loaded) throw ScriptError(QStringLiteral("no document is loaded"));
    // Without a mark the selection is what the load left.
    const bool isMarked = text.contains(u'|') || text.contains(u'^') || text.contains(QLatin1String("data-selected"));
    if (isMarked && !marks.apply(loaded->selection())) throw ScriptError(QStringLiteral("the marks can't stand there"));
    for (const auto &element : marks.selected(loaded->document())) {
        if (element->is(dom::names::area))
            in.host().surface().view().selectArea(element.get());
        else if (ranges::Marks::isSelectedBesideText(*element))
            in.host().surface().view().cellSelection().add(*element);
    }
    loaded->tracker().selectionSettled();
    in.host().forgetHistory();
}

void exec(Interpreter &in, Words &words)
{
    const QString id = words.word("a command");
    const QString value = words.atEnd() ? words.text() : in.readValue(words).toString();
    changes::EditScope scope;
    in.print(in.host().surface().view().execNamed(id, value) ? QStringLiteral("true") : QStringLiteral("false"));
}

void query(Interpreter &in, Words &words)
{
    const auto state = in.host().surface().view().queryNamed(words.word("a command"));
    in.print(QStringLiteral("enabled=%1 state=%2 value=%3")
                 .arg(state.enabled ? QStringLiteral("true") : QStringLiteral("false"), state.state,
                      platform::Value::quoted(state.value)));
}

} // namespace

QString markedBody(Interpreter &in)
{
    surface::LoadedDocument *loaded = in.host().surface().loaded();
    if (!loaded) throw ScriptError(QStringLiteral("no document is loaded"));
    surface::View &view = in.host().surface().view();
    auto selected = view.cellSelection().cells();
    if (dom::Element *area = view.selectedArea()) selected.emplace_back(area);
    return ranges::Marks::print(loaded->selection(), selected);
}

bool printInside(Interpreter &in, const QString &what)
{
    const ChangeManager *manager = in.state().mChangeManager.get();
    if (what == QLatin1String("log")) {
        for (const std::vector<int> &kinds : in.host().takeBatches()) {
            QStringList line;
            for (const int kind : kinds) line << QString::number(kind);
            in.print(line.join(u' '));
        }
        return true;
    }
    if (what == QLatin1String("state")) {
        support::VariableDump dump;
        in.state().dumpModuleVariables(dump);
        in.printRaw(dump.text());
        return true;
    }
    if (what != QLatin1String("undo") && what != QLatin1String("undo-count")) return false;
    if (!manager) {
        in.print(QStringLiteral("no manager"));
    } else if (what == QLatin1String("undo")) {
        printStack(in, "undo:", manager->UndoStack());
        printStack(in, "redo:", manager->RedoStack());
    } else {
        printCount(in, "undo:", manager->UndoStack());
        printCount(in, "redo:", manager->RedoStack());
    }
    return true;
}

const std::vector<VerbRow> &insideVerbs()
{
    static const std::vector<VerbRow> rows = {
        {"batch", batch}, {"undo", undo},   {"redo", redo},   {"helper", helper}, {"fault", fault}, {"scope", scope},
        {"check", check}, {"crash", crash}, {"marked", marked}, {"exec", exec},   {"query", query},
    };
    return rows;
}

} // namespace scripting
