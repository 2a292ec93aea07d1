// SPDX-License-Identifier: GPL-3.0-or-later
#include "Recover.h"

#include "MainWindow.h"
#include "RecoveryDialog.h"

void offerRecovery(MainWindow &window)
{
    std::vector<FoundJournal> found = FoundJournal::find();
    if (found.empty()) return;
    bool taken = window.isWindowModified();
    const auto recover = [&window, &taken](FoundJournal &journal) {
        if (!std::exchange(taken, true)) return window.recover(journal);
        auto *other = new MainWindow;
        other->setAttribute(Qt::WA_DeleteOnClose);
        if (!other->recover(journal)) {
            delete other;
            return false;
        }
        other->show();
        return true;
    };
    RecoveryDialog(std::move(found), recover, &window).exec();
}
