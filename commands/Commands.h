// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Contract.h"

#include <QString>
#include <functional>
#include <vector>

class Host;

/// The command vocabulary as a table, and the frame in which every command runs. The concerns that own a body put it into
/// the table when the control is made.
class Commands
{
public:
    struct Command {
        QString name; ///< the canonical spelling
        std::function<void()> body;
    };
    /// `specific` is the control's forced element: while it is set, it is what counts as selected.
    Commands(Host &host, base::Ref<IHTMLElement> &specific) : mHost(host), mSpecificElement(specific) {}

    void add(const QString &name, std::function<void()> body) { mTable.push_back({name, std::move(body)}); }
    const std::vector<Command> &table() const { return mTable; }

    /// Raises `CommandClick` first, for unknown names too; a host may keep the command from running. Names are matched
    /// whatever their case; one that matches nothing does nothing and reports nothing. Nothing else wraps the bodies.
    void InternalRunCommand(const QString &CommandName, IHTMLElement *SpecificElement);

private:
    Host &mHost;
    base::Ref<IHTMLElement> &mSpecificElement;
    std::vector<Command> mTable;
};
