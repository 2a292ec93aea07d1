// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/CommandTable.h"

#include "engine/dom/Document.h"
#include "engine/editing/CellPasting.h"

namespace editing {

namespace {

using Context = CommandContext;

bool hasBody(const Context &c)
{
    return c.editor.document().body() != nullptr;
}

bool canUndo(const Context &c)
{
    return c.canUndo ? c.canUndo() : c.editor.tracker().canUndo();
}

bool canRedo(const Context &c)
{
    return c.canRedo ? c.canRedo() : c.editor.tracker().canRedo();
}

bool undo(const Context &c, const QString &)
{
    c.undo ? c.undo() : c.editor.tracker().undo();
    return true;
}

bool redo(const Context &c, const QString &)
{
    c.redo ? c.redo() : c.editor.tracker().redo();
    return true;
}

bool canCopy(const Context &c)
{
    return c.clipboard && c.editor.canCopy();
}

bool copy(const Context &c, const QString &)
{
    c.clipboard->put(c.editor.copied());
    return true;
}

bool canCut(const Context &c)
{
    return canCopy(c) && c.editor.canEdit();
}

bool cut(const Context &c, const QString &)
{
    c.clipboard->put(c.editor.copied());
    return c.editor.cut();
}

bool canPaste(const Context &c)
{
    return c.clipboard && c.editor.canEdit() && c.clipboard->holdsSnippet();
}

bool paste(const Context &c, const QString &)
{
    return c.editor.paste(c.clipboard->get());
}

bool canPasteTable(const Context &c, CellPasting::Way way)
{
    if (!c.clipboard || !c.clipboard->holdsSnippet()) return false;
    const CellPasting pasting(c.editor, c.cells);
    if (!pasting.isPlaceFor(way)) return false; // without a look at the clipboard
    const int columns = c.clipboard->columns(c.editor.document());
    return pasting.isPossible(way, columns, columns > 0 && c.clipboard->holdsWholeRows());
}

template <CellPasting::Way way> Command tablePaste(const char *name)
{
    return {name, [](const Context &c) { return canPasteTable(c, way); }, nullptr, nullptr,
            [](const Context &c, const QString &) { return CellPasting(c.editor, c.cells).paste(way, c.clipboard->get()); }};
}

const Command table[] = {
    {"insertText", nullptr, nullptr, nullptr,
     [](const Context &c, const QString &text) { return c.editor.insertText(text); }},
    {"insertParagraph", nullptr, nullptr, nullptr,
     [](const Context &c, const QString &) { return c.editor.insertParagraph(); }},
    {"insertLineBreak", nullptr, nullptr, nullptr,
     [](const Context &c, const QString &) { return c.editor.insertLineBreak(); }},
    {"delete", nullptr, nullptr, nullptr, [](const Context &c, const QString &) { return c.editor.deleteBackward(); }},
    {"forwardDelete", nullptr, nullptr, nullptr,
     [](const Context &c, const QString &) { return c.editor.deleteForward(); }},
    {"selectAll", hasBody, nullptr, nullptr, [](const Context &c, const QString &) { return c.editor.selectAll(); }},
    {"copy", canCopy, nullptr, nullptr, copy},
    {"cut", canCut, nullptr, nullptr, cut},
    {"paste", canPaste, nullptr, nullptr, paste},
    tablePaste<CellPasting::Way::Rows>("pasteRows"),
    tablePaste<CellPasting::Way::Cells>("pasteCells"),
    tablePaste<CellPasting::Way::Nested>("pasteNested"),
    {"undo", canUndo, nullptr, nullptr, undo},
    {"redo", canRedo, nullptr, nullptr, redo},
};

} // namespace

std::span<const Command> CommandTable::rows()
{
    return table;
}

const Command *CommandTable::find(const QString &name)
{
    for (const Command &row : table)
        if (name.compare(QLatin1String(row.name), Qt::CaseInsensitive) == 0) return &row;
    return nullptr;
}

bool CommandTable::isPossible(const Command &command, const CommandContext &context)
{
    return command.possible ? command.possible(context) : context.editor.canEdit();
}

State CommandTable::state(const Command &command, const CommandContext &context)
{
    return command.state ? command.state(context) : State::Off;
}

QString CommandTable::value(const Command &command, const CommandContext &context)
{
    return command.value ? command.value(context) : QString();
}

bool CommandTable::run(const Command &command, const CommandContext &context, const QString &argument)
{
    return isPossible(command, context) && command.run(context, argument);
}

} // namespace editing
