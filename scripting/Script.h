// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <stdexcept>
#include <vector>

namespace scripting {

/// What a command says when it can't be done; ends the run unless told to go on.
class ScriptError : public std::exception
{
public:
    explicit ScriptError(QString text) : mText(std::move(text)), mBytes(mText.toUtf8()) {}
    const QString &text() const { return mText; }
    const char *what() const noexcept override { return mBytes.constData(); }

private:
    QString mText;
    QByteArray mBytes;
};

/// One command: its line, and the lines of a `<<WORD` behind it.
struct Command {
    QString line;
    std::optional<QString> block;
    int number = 0; ///< of the line in the file, counted from 1
};

/// Takes a script apart into its commands. Blank lines and comments are gone.
std::vector<Command> readScript(const QString &text);

/// Reads the words of a command one by one. A word in double quotes is a JSON string.
class Words
{
public:
    explicit Words(const Command &command) : mLine(command.line), mBlock(command.block), mNumber(command.number) {}

    bool atEnd() const;
    /// The next word; fails at the end with what is missing.
    QString word(const char *what);
    QString wordOr(const QString &byDefault);
    bool nextIs(QChar c) const;
    int number(const char *what);
    /// The rest as it stands, or the block in its place.
    QString text();
    bool hasText() const { return !atEnd() || mBlock; }
    /// The rest as a command of its own, which isn't read by this.
    Command command() const;
    /// The same, for who runs it: nothing is left behind it.
    Command takeCommand();
    /// What is left of the line, to be read by somebody else from `position` on.
    const QString &line() const { return mLine; }
    qsizetype position() const { return mPosition; }
    void moveTo(qsizetype position) { mPosition = position; }
    void skipBlanks();
    void finish() const; ///< fails if something is left

private:
    QString mLine;
    std::optional<QString> mBlock;
    int mNumber;
    qsizetype mPosition = 0;
};

} // namespace scripting
