// SPDX-License-Identifier: GPL-3.0-or-later
#include "commands/Commands.h"

#include "core/Host.h"
#include "support/FailureTrap.h"

void Commands::InternalRunCommand(const QString &CommandName, IHTMLElement *SpecificElement)
{
    const auto parameters =
        support::given(&mHost, "CommandName", CommandName, "SpecificElement", SpecificElement);
    bool Ignore = false;
    support::trap("Vellum5", "InternalRunCommand", parameters.locals("Ignore", Ignore), [&] {
        // A host's handler may remove the element.
        const base::Ref<IHTMLElement> element(SpecificElement);
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
