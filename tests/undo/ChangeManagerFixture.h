// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "engine/dom/Document.h"
#include "engine/dom/Element.h"
#include "support/FailureReport.h"
#include "undo/ChangeManager.h"
#include "undo/ScriptedChangeLog.h"

#include <QSignalSpy>
#include <QTest>

inline constexpr int typed = 0, other = 1, deleted = 3, selection = 5;

/// KIND:GROUP of each record, oldest first.
inline QString shown(const ChangeRecords &records)
{
    QStringList parts;
    for (const auto &record : records.NewEnum())
        parts << QStringLiteral("%1:%2").arg(record->Kind()).arg(record->ChangeGroupID());
    return parts.join(QLatin1Char(' '));
}

inline std::shared_ptr<dom::Element> held(const base::Ref<dom::Element> &element)
{
    element->ref();
    return {element.get(), [](dom::Element *e) { e->deref(); }};
}

/// A change manager on a log fed by hand, a clock moved by hand, and the failures that were reported.
struct ChangeManagerFixture
{
    std::shared_ptr<ScriptedChangeLog> log;
    std::unique_ptr<ChangeManager> manager;
    std::vector<support::FailureReport> reports;

    void setUp()
    {
        base::Clock::instance().setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC));
        reports.clear();
        support::setFailurePresenter([this](const support::FailureReport &report) { reports.push_back(report); });
        log = std::make_shared<ScriptedChangeLog>();
        manager = std::make_unique<ChangeManager>();
        manager->Initialise(log);
    }
    void tearDown()
    {
        manager.reset();
        log.reset();
        support::setFailurePresenter({});
        base::Clock::instance().setSystem();
    }
    void pause(qint64 ms) { base::Clock::instance().advance(ms); }
    QString undoStack() const { return shown(manager->UndoStack()); }
    QString redoStack() const { return shown(manager->RedoStack()); }
    void undo()
    {
        manager->Undo();
        manager->Flush();
    }
    void redo()
    {
        manager->Redo();
        manager->Flush();
    }
};
