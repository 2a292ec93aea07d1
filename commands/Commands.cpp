// SPDX-License-Identifier: GPL-3.0-or-later
#include "commands/Commands.h"

#include "core/Host.h"
#include "support/FailureTrap.h"

void Commands::InternalRunCommand(const QString &CommandName, IHTMLElement *SpecificElement)
{
    support::trap("Vellum5", "InternalRunCommand", nullptr, [&] {
        base::Ref<IHTMLElement> element(SpecificElement);
        support::Parameters parameters("CommandName", CommandName, "SpecificElement", element);
        bool Ignore = false;
        mHost.raiseCommandClick(CommandName, Ignore);
        if (Ignore) return;
        if (SpecificElement) mSpecificElement = element;
        for (const Command &command : mTable)
            if (command.name.compare(CommandName, Qt::CaseInsensitive) == 0) {
                command.body();
                break;
            }
        mSpecificElement = nullptr;
    });
}
