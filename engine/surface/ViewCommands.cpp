// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/HtmlElements.h"
#include "engine/html/Serializer.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QKeyEvent>
#include <QScopedValueRollback>

// Commands, by number and by word, with the clipboard, on text, objects and cells.

namespace surface {

namespace {

struct Number {
    int number;
    const char *name;
};
/// Commands that hosts know by a number.
const Number numbers[] = {{15, "copy"}, {16, "cut"},        {17, "delete"}, {26, "paste"},
                          {29, "redo"}, {31, "selectAll"}, {43, "undo"},   {50000, "pasteRows"},
                          {50001, "pasteCells"}, {50002, "pasteNested"}};

const editing::Command *findCommand(const QString &name)
{
    for (const Number &row : numbers)
        if (name == QString::number(row.number)) return editing::CommandTable::find(QLatin1String(row.name));
    return editing::CommandTable::find(name);
}

} // namespace

bool View::hasCommand(const QString &name) const
{
    return findCommand(name) != nullptr;
}

editing::CommandContext View::commandContext()
{
    return {mLoaded->editor(), {}, {}, {}, {}, mClipboard, mCells.cells()};
}

bool View::execOnText(const QString &name, const QString &value)
{
    const editing::Command *command = findCommand(name);
    if (!command || !mLoaded) return false;
    // Cells that are written over stay selected.
    const bool overCells = QLatin1String(command->name) == QLatin1String("pasteCells");
    const QScopedValueRollback<bool> selecting(mSelectingCells, mSelectingCells || overCells);
    const bool done = editing::CommandTable::run(*command, commandContext(), value);
    if (mLoaded) edited();
    return done;
}

View::CommandState View::queryOnText(const QString &name)
{
    CommandState result;
    const editing::Command *command = findCommand(name);
    if (!command || !mLoaded) return result;
    const editing::CommandContext context = commandContext();
    result.enabled = editing::CommandTable::isPossible(*command, context);
    const editing::State state = editing::CommandTable::state(*command, context);
    result.state = state == editing::State::On      ? QStringLiteral("on")
                   : state == editing::State::Mixed ? QStringLiteral("mixed")
                                                    : QStringLiteral("off");
    result.value = editing::CommandTable::value(*command, context);
    return result;
}

/// Whether a locked surface refuses the command: all but those that only look.
bool View::isLockedFor(const QString &name) const
{
    if (!mWidget.isReadOnly()) return false;
    const editing::Command *command = findCommand(name);
    const QLatin1String known(command ? command->name : "");
    return known != QLatin1String("copy") && known != QLatin1String("selectAll") && known != QLatin1String("unselect");
}

bool View::execNamed(const QString &name, const QString &value)
{
    if (isLockedFor(name)) return false;
    if (const CellCommand command = cellCommand(name); command != CellCommand::None && !mCells.isEmpty())
        return runOnCells(command);
    return execOnText(name, value);
}

View::CommandState View::queryNamed(const QString &name)
{
    CommandState result = queryOnText(name);
    if (const CellCommand command = cellCommand(name); command != CellCommand::None && !mCells.isEmpty())
        result.enabled = canRunOnCells(command);
    result.enabled = result.enabled && !isLockedFor(name);
    return result;
}

int View::commandStatus(int command)
{
    return queryNamed(QString::number(command)).enabled ? 2 : 0;
}

bool View::execCommand(int command, const QString &value)
{
    return execNamed(QString::number(command), value);
}

// The clipboard

void View::setClipboards(editing::Clipboard *clipboard, editing::Clipboard *primary)
{
    mClipboard = clipboard;
    mPrimary = primary;
}

bool View::clipboardKey(const QKeyEvent &event)
{
    if (event.matches(QKeySequence::Copy)) return execNamed(QStringLiteral("copy"), {});
    const bool cuts = event.matches(QKeySequence::Cut);
    if (!cuts && !event.matches(QKeySequence::Paste)) return false;
    if (mWidget.isReadOnly()) return true;
    if (cuts)
        execNamed(QStringLiteral("cut"), {});
    else
        pasteAsFits();
    return true;
}

/// A table goes into the table of the caret the way in which it can.
bool View::pasteAsFits()
{
    for (const char *way : {"pasteRows", "pasteCells", "pasteNested"})
        if (queryNamed(QLatin1String(way)).enabled) return execNamed(QLatin1String(way), {});
    return execNamed(QStringLiteral("paste"), {});
}

void View::offerSelection()
{
    mOfferSoon.setEnabled(false);
    if (!mLoaded || !mPrimary) return;
    if (const editing::Snippet snippet = copied(); !snippet.isEmpty()) mPrimary->put(snippet);
}

/// The middle button: what was selected last, anywhere on the desktop, comes to where it is pressed.
bool View::pasteAtPoint(QPoint client)
{
    if (!mPrimary || mWidget.isReadOnly()) return false;
    offerSelection(); // before the caret goes there
    const ranges::Position at = positionAt(toDocument(client));
    if (!at || !ranges::editingHost(*at.node)) return false;
    mLoaded->selection().setCaret(at);
    mLoaded->editor().paste(mPrimary->get());
    if (mLoaded) edited();
    return true;
}

// Cells

View::CellCommand View::cellCommand(const QString &name)
{
    const editing::Command *command = findCommand(name);
    const QLatin1String known(command ? command->name : "");
    if (known == QLatin1String("delete") || known == QLatin1String("forwardDelete")) return CellCommand::Delete;
    if (known == QLatin1String("copy")) return CellCommand::Copy;
    if (known == QLatin1String("paste")) return CellCommand::Paste;
    return known == QLatin1String("cut") ? CellCommand::Cut : CellCommand::None;
}

bool View::hasEditableCells() const
{
    for (const auto &cell : mCells.cells())
        if (ranges::editingHost(*cell)) return true;
    return false;
}

bool View::canRunOnCells(CellCommand command) const
{
    if (command == CellCommand::Copy) return !mCells.isEmpty();
    return hasEditableCells() && (command != CellCommand::Paste || (mClipboard && mClipboard->holdsSnippet()));
}

static dom::Element *rowOf(const dom::Element &cell)
{
    return cell.parentElement();
}

/// The rows that are selected from end to end; none if another cell is selected too.
static std::vector<base::Ref<dom::Element>> wholeRows(const std::vector<base::Ref<dom::Element>> &cells)
{
    std::vector<base::Ref<dom::Element>> rows;
    for (const auto &cell : cells) {
        dom::Element *row = rowOf(*cell);
        if (!rows.empty() && rows.back() == row) continue;
        for (dom::Element *other : dom::table::cells(*row))
            if (std::find(cells.begin(), cells.end(), other) == cells.end()) return {};
        rows.emplace_back(row);
    }
    return rows;
}

editing::Snippet View::copied() const
{
    if (mCells.isEmpty()) return mLoaded->editor().copied();
    const auto cells = mCells.cells();
    editing::Snippet snippet;
    const dom::Element *table = dom::table::tableOf(*cells.front()), *row = nullptr;
    html::Serializer::writeStartTag(*table, snippet.html);
    snippet.html += QLatin1String("<TBODY>");
    for (const auto &cell : cells) {
        if (rowOf(*cell) != row) {
            if (row) html::Serializer::writeEndTag(*row, snippet.html);
            if (row) snippet.text += u'\n';
            row = rowOf(*cell);
            html::Serializer::writeStartTag(*row, snippet.html);
        } else {
            snippet.text += u'\t';
        }
        html::Serializer::write(*cell, snippet.html);
        snippet.text += cell->innerText();
    }
    html::Serializer::writeEndTag(*row, snippet.html);
    snippet.html += QLatin1String("</TBODY>");
    html::Serializer::writeEndTag(*table, snippet.html);
    snippet.text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    snippet.wholeRows = !wholeRows(cells).empty();
    return snippet;
}

bool View::runOnCells(CellCommand command)
{
    if (mCells.isEmpty() || !canRunOnCells(command)) return false;
    if (command == CellCommand::Paste) return pasteOverCells();
    if (command != CellCommand::Delete && mClipboard) mClipboard->put(copied());
    if (command == CellCommand::Copy) return true;
    const auto cells = mCells.cells();
    const auto rows = command == CellCommand::Cut ? wholeRows(cells) : std::vector<base::Ref<dom::Element>>();
    // They stay selected while they are there.
    const QScopedValueRollback<bool> selecting(mSelectingCells, true);
    mCells.goWithStep(!rows.empty());
    const bool done = rows.empty() ? mLoaded->editor().emptyCells(cells) : mLoaded->editor().removeRows(rows);
    mCells.goWithStep(false);
    edited();
    return done;
}

bool View::typeOverCells(const QString &text)
{
    if (mCells.isEmpty() || !hasEditableCells()) return false;
    const QScopedValueRollback<bool> selecting(mSelectingCells, true);
    mCells.goWithStep(true);
    const bool done = mLoaded->editor().emptyCells(mCells.cells(), text);
    mCells.goWithStep(false);
    return done;
}

/// What is pasted takes the place of all that the cells hold, as what is typed does.
bool View::pasteOverCells()
{
    const editing::Snippet snippet = mClipboard->get();
    const QScopedValueRollback<bool> selecting(mSelectingCells, true);
    mCells.goWithStep(true);
    bool done = false;
    {
        changes::ChangeTracker::Step step(mLoaded->tracker(), changes::Kind::Command);
        done = mLoaded->editor().emptyCells(mCells.cells()) && mLoaded->editor().paste(snippet);
        if (done) step.done();
    }
    mCells.goWithStep(false);
    edited();
    return done;
}

} // namespace surface
