// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QKeySequence>
#include <QList>

/// The keys of the source editors: per command number (see CodeMax::ExecuteCmd) the key combinations that run it. All
/// editors of the process share one registry and look keys up as they are pressed, so a change counts at once.
class HotKeys
{
public:
    static HotKeys &global();
    /// A registry with the keys that editors have from the start.
    HotKeys();

    /// In the order in which they were added; empty for a command without keys.
    QList<QKeySequence> list(int command) const { return mKeys.value(command); }
    /// Binds one key combination; it leaves the command that had it. Sequences of several combinations are refused.
    bool add(int command, const QKeySequence &keys);
    /// False if the command hasn't that combination.
    bool remove(int command, const QKeySequence &keys);
    /// Takes all combinations off a command.
    void removeAll(int command) { mKeys.remove(command); }
    /// Back to the keys from the start.
    void reset();

    /// 0 for a combination that is bound to nothing.
    int commandFor(const QKeySequence &keys) const;

private:
    QHash<int, QList<QKeySequence>> mKeys;
};
