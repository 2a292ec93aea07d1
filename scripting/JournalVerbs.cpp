// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/FoundJournal.h"
#include "control/RecoveryJournal.h"
#include "control/Vellum5.h"
#include "scripting/Interpreter.h"

#include <QDir>

// The recovery journal, as a host uses it.

namespace scripting {

namespace {

/// `journal on|off|saved`, `journal name TEXT`, `journal files`, `journal find`, `journal recover N`, `journal discard N`.
void journal(Interpreter &in, Words &words)
{
    RecoveryJournal &mine = in.control().Recovery();
    const QString what = words.word("what to do with the journal");
    if (what == QLatin1String("on") || what == QLatin1String("off")) {
        mine.setOn(what == QLatin1String("on"));
    } else if (what == QLatin1String("saved")) {
        mine.documentSaved();
    } else if (what == QLatin1String("name")) {
        mine.setDocumentName(words.text());
    } else if (what == QLatin1String("files")) {
        in.print(QString::number(QDir(RecoveryJournal::folder()).entryList(QDir::Files | QDir::Hidden).size()));
    } else if (what == QLatin1String("find")) {
        for (const FoundJournal &found : FoundJournal::find())
            in.print(found.isReadable() ? found.documentName() + QStringLiteral(" | ") + found.preview() : found.problem());
    } else if (what == QLatin1String("recover") || what == QLatin1String("discard")) {
        const int number = words.number("which journal, from 1");
        std::vector<FoundJournal> all = FoundJournal::find();
        if (number < 1 || number > int(all.size())) throw ScriptError(QStringLiteral("there is no journal %1").arg(number));
        FoundJournal &found = all[size_t(number - 1)];
        if (what == QLatin1String("discard"))
            found.discard();
        else if (!found.recover(in.control()))
            throw ScriptError(QStringLiteral("the journal can't be recovered: %1").arg(found.problem()));
    } else {
        throw ScriptError(QStringLiteral("unknown: journal %1").arg(what));
    }
}

} // namespace

const std::vector<VerbRow> &journalVerbs()
{
    static const std::vector<VerbRow> rows = {{"journal", journal}};
    return rows;
}

} // namespace scripting
