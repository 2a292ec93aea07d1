// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/editing/Editor.h"

#include <QString>
#include <functional>
#include <span>

namespace editing {

enum class State : uint8_t { Off, On, Mixed };

/// The desktop's clipboard, as whoever has a desktop offers it.
class Clipboard
{
public:
    virtual ~Clipboard() = default;
    virtual void put(const Snippet &snippet) = 0;
    virtual Snippet get() const = 0;
    /// Whether `get` gives something.
    virtual bool holdsSnippet() const = 0;
    /// How many columns the table has that is all it holds, else 0. Asked often.
    virtual int columns(dom::Document &document) const { return Pasting::columnsOf(document, get().html); }
    /// Whether that is of rows from end to end.
    virtual bool holdsWholeRows() const { return get().wholeRows; }
};

/// What a command works with: the editor, and undo and redo as whoever keeps the history offers them (null: the
/// tracker's own).
struct CommandContext
{
    Editor &editor;
    std::function<void()> undo;
    std::function<void()> redo;
    std::function<bool()> canUndo;
    std::function<bool()> canRedo;
    Clipboard *clipboard = nullptr; ///< null: nothing can be copied or pasted
    std::vector<base::Ref<dom::Element>> cells{}; ///< those that are selected as such, in document order
};

/// An engine command. Each row can be asked and run by itself; a null function means the plain answer.
struct Command
{
    const char *name;                                             ///< found whatever its case
    bool (*possible)(const CommandContext &);                     ///< null: wherever can be edited
    State (*state)(const CommandContext &);                       ///< null: off
    QString (*value)(const CommandContext &);                     ///< null: ""
    bool (*run)(const CommandContext &, const QString &argument); ///< whether it did something
};

/// All commands of the engine, as rows.
class CommandTable
{
public:
    static std::span<const Command> rows();
    /// Null for an unknown name.
    static const Command *find(const QString &name);

    static bool isPossible(const Command &command, const CommandContext &context);
    static State state(const Command &command, const CommandContext &context);
    static QString value(const Command &command, const CommandContext &context);
    /// Does nothing and answers false where the command isn't possible.
    static bool run(const Command &command, const CommandContext &context, const QString &argument = {});
};

} // namespace editing
