// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Script.h"

#include "base/Error.h"
#include "platform/Value.h"

#include <QRegularExpression>

namespace scripting {

std::vector<Command> readScript(const QString &text)
{
    static const QRegularExpression opensBlock(QStringLiteral("(?:^|[ \\t])<<([A-Za-z_][A-Za-z_0-9]*)[ \\t]*$"));
    QStringList lines = text.split(u'\n');
    for (QString &line : lines)
        if (line.endsWith(u'\r')) line.chop(1);
    std::vector<Command> commands;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = lines[i];
        if (line.trimmed().isEmpty() || line.trimmed().startsWith(u'#')) continue;
        Command command{line, {}, int(i) + 1};
        const auto match = opensBlock.match(line);
        const qsizetype end = match.hasMatch() ? lines.indexOf(match.captured(1), i + 1) : -1;
        if (end >= 0) {
            command.line = line.left(match.capturedStart());
            command.block = QStringList(lines.mid(i + 1, end - i - 1)).join(u'\n');
            i = end;
        }
        commands.push_back(command);
    }
    return commands;
}

static bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

void Words::skipBlanks()
{
    while (mPosition < mLine.size() && isBlank(mLine[mPosition])) ++mPosition;
}

bool Words::atEnd() const
{
    qsizetype at = mPosition;
    while (at < mLine.size() && isBlank(mLine[at])) ++at;
    return at == mLine.size();
}

bool Words::nextIs(QChar c) const
{
    qsizetype at = mPosition;
    while (at < mLine.size() && isBlank(mLine[at])) ++at;
    return at < mLine.size() && mLine[at] == c;
}

QString Words::word(const char *what)
{
    skipBlanks();
    if (mPosition >= mLine.size()) throw ScriptError(QStringLiteral("%1 is missing").arg(QLatin1String(what)));
    if (mLine[mPosition] == u'"') {
        try {
            return platform::readJson(mLine, mPosition).toString();
        } catch (const base::Error &error) {
            throw ScriptError(error.description());
        }
    }
    const qsizetype start = mPosition;
    while (mPosition < mLine.size() && !isBlank(mLine[mPosition])) ++mPosition;
    return mLine.mid(start, mPosition - start);
}

QString Words::wordOr(const QString &byDefault)
{
    return atEnd() ? byDefault : word("a word");
}

int Words::number(const char *what)
{
    const QString text = word(what);
    bool fine = false;
    const int value = text.toInt(&fine, 0);
    if (!fine) throw ScriptError(QStringLiteral("%1 isn't a number: %2").arg(QLatin1String(what), text));
    return value;
}

QString Words::text()
{
    if (atEnd() && mBlock) return *mBlock;
    if (mPosition < mLine.size() && isBlank(mLine[mPosition])) ++mPosition;
    const QString rest = mLine.mid(mPosition);
    mPosition = mLine.size();
    return rest;
}

Command Words::command() const
{
    qsizetype at = mPosition;
    while (at < mLine.size() && isBlank(mLine[at])) ++at;
    return {mLine.mid(at), mBlock, mNumber};
}

Command Words::takeCommand()
{
    Command rest = command();
    mPosition = mLine.size();
    return rest;
}

void Words::finish() const
{
    if (!atEnd()) throw ScriptError(QStringLiteral("nothing may follow: %1").arg(mLine.mid(mPosition).trimmed()));
}

} // namespace scripting
