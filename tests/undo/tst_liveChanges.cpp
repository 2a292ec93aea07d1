// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "base/Fault.h"
#include "engine/changes/EditScope.h"
#include "platform/EngineChangeLog.h"
#include "support/FailureReport.h"
#include "undo/ChangeManager.h"
#include "undo/ScriptedChangeLog.h"

#include <QSignalSpy>
#include <QTest>

/// The change manager on the engine's own log: what a person would call undo.
class tst_liveChanges : public QObject
{
    Q_OBJECT
private:
    std::unique_ptr<HTMLEditor> surface;
    std::unique_ptr<ChangeManager> manager;

    QString body() const { return surface->document()->body()->innerHTML(); }
    dom::Element *element(const char *id) const { return surface->document()->getElementById(QLatin1String(id)); }
    void load(const QString &html)
    {
        QSignalSpy complete(surface.get(), &HTMLEditor::documentComplete);
        surface->setDocumentText(html);
        QTRY_COMPARE(complete.count(), 1);
        manager = std::make_unique<ChangeManager>();
        manager->Initialise(platform::changeDocument(*surface));
    }
    template <class F> void edit(F &&change)
    {
        changes::EditScope scope;
        change();
    }
    void undo()
    {
        changes::Waiting::tell();
        manager->Undo();
        manager->Flush();
    }
    void redo()
    {
        changes::Waiting::tell();
        manager->Redo();
        manager->Flush();
    }

private Q_SLOTS:
    void init()
    {
        base::Clock::instance().setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC));
        surface = std::make_unique<HTMLEditor>();
        surface->resize(400, 300);
        surface->setEditMode(dom::EditMode::Edit);
        load(QStringLiteral("<html><body><p id=a>one</p><p id=b>two</p></body></html>"));
    }
    void cleanup()
    {
        manager.reset();
        surface.reset();
        base::Clock::instance().setSystem();
    }
    void aWriteIsAStep()
    {
        const QString before = body();
        edit([&] { element("a")->setInnerHTML(QStringLiteral("<b>new</b>")); });
        const QString after = body();
        QVERIFY(before != after);
        QCOMPARE(manager->UndoCount(), 1);
        for (int round = 0; round < 5; ++round) {
            undo();
            QCOMPARE(body(), before);
            QCOMPARE(manager->UndoCount(), 0);
            QCOMPARE(manager->RedoCount(), 1);
            redo();
            QCOMPARE(body(), after);
            QCOMPARE(manager->UndoCount(), 1);
            QCOMPARE(manager->RedoCount(), 0);
        }
    }
    void stepsAreUndoneInTurnAndAFreshOneEndsTheChain()
    {
        QStringList states{body()};
        for (const char *text : {"1", "2", "3"}) {
            edit([&] { element("a")->setInnerHTML(QLatin1String(text)); });
            states << body();
        }
        for (int i = 2; i >= 0; --i) {
            undo();
            QCOMPARE(body(), states[i]);
        }
        undo(); // there is nothing left
        QCOMPARE(body(), states[0]);
        redo();
        redo();
        QCOMPARE(body(), states[2]);
        edit([&] { element("b")->setAttribute(QStringLiteral("title"), QStringLiteral("x")); });
        QCOMPARE(manager->RedoCount(), 0);
        undo();
        QCOMPARE(body(), states[2]);
    }
    void aBlockIsOneStep()
    {
        const QString before = body();
        manager->StartUndoBlock(false, false);
        for (int i = 0; i < 10; ++i)
            edit([&] { element("a")->setAttribute(QStringLiteral("title"), QString::number(i)); });
        manager->EndUndoBlock(false);
        edit([&] { element("b")->setInnerHTML(QStringLiteral("later")); });
        undo();
        undo();
        QCOMPARE(body(), before);
    }
    void privateChangesGoWithTheStepBelow()
    {
        const QString before = body();
        edit([&] { element("a")->setInnerHTML(QStringLiteral("step")); });
        manager->StartUndoBlock(false, true);
        edit([&] { element("b")->setAttribute(QStringLiteral("class"), QStringLiteral("mark")); });
        manager->EndUndoBlock(false);
        QCOMPARE(manager->UndoCount(), 1);
        undo();
        QCOMPARE(body(), before);
    }
    void theChangedElementIsTold()
    {
        QStringList told;
        connect(manager.get(), &ChangeManager::ElementChanged, this,
                [&](dom::Element *changed) { told << changed->getAttribute(QStringLiteral("id")); });
        edit([&] { element("b")->setInnerHTML(QStringLiteral("x")); });
        QCOMPARE(told, QStringList{QStringLiteral("b")});
    }
    void fedRecordsMixWithLiveOnes()
    {
        auto front = std::make_shared<ScriptedChangeLog>(platform::changeDocument(*surface));
        manager->Initialise(front);
        const QString before = body();
        edit([&] { element("a")->setInnerHTML(QStringLiteral("live")); });
        const QString after = body();
        front->batch({0, 0});
        edit([&] { element("b")->setInnerHTML(QStringLiteral("more")); });
        QCOMPARE(manager->UndoCount(), 4);
        undo();
        QCOMPARE(body(), after);
        undo(); // the fed step changes nothing
        QCOMPARE(body(), after);
        QCOMPARE(manager->UndoCount(), 1);
        undo();
        QCOMPARE(body(), before);
        redo();
        redo();
        redo();
        QVERIFY(body().contains(QLatin1String("more")));
        QCOMPARE(manager->UndoCount(), 4);
        QCOMPARE(manager->RedoCount(), 0);
    }
    void aLoadWhileItTellsDropsTheManager()
    {
        connect(manager.get(), &ChangeManager::Changed, this, [&] {
            manager->Terminate();
            manager.reset();
        });
        edit([&] { element("a")->setInnerHTML(QStringLiteral("x")); });
        QVERIFY(!manager);
        edit([&] { element("a")->setInnerHTML(QStringLiteral("y")); }); // nobody listens
        QVERIFY(body().contains(QLatin1String("y")));
    }
    void theDocumentMayGoWhileItTells_data()
    {
        QTest::addColumn<QString>("what");
        for (const char *what : {"surface", "surface and manager", "another load", "own log", "other's log", "all"})
            QTest::newRow(what) << QString::fromLatin1(what);
    }
    /// Two managers read the same document; the first to be told ends what the row names.
    void theDocumentMayGoWhileItTells()
    {
        QFETCH(QString, what);
        auto second = std::make_unique<ChangeManager>();
        second->Initialise(platform::changeDocument(*surface));
        int told = 0;
        const auto end = [&] {
            if (++told > 1) return;
            if (what == QLatin1String("another load")) surface->setDocumentText(QStringLiteral("<p id=a>new</p>"));
            if (what == QLatin1String("own log") || what.endsWith(QLatin1String("manager"))) manager.reset();
            if (what == QLatin1String("other's log")) second.reset();
            if (what.startsWith(QLatin1String("surface"))) surface.reset();
            if (what == QLatin1String("all")) {
                surface.reset();
                manager.reset();
                second.reset();
            }
        };
        connect(manager.get(), &ChangeManager::Changed, this, end);
        connect(second.get(), &ChangeManager::Changed, this, [&] { ++told; });
        edit([&] { element("a")->setInnerHTML(QStringLiteral("x")); });
        QVERIFY(told >= 1);
        // What is left goes on working.
        for (ChangeManager *left : {manager.get(), second.get()}) {
            if (!left) continue;
            left->Flush();
            left->Undo();
            left->Flush();
        }
        if (!surface) return;
        if (what == QLatin1String("another load")) QTRY_VERIFY(!surface->isLoading());
        edit([&] { element("a")->setInnerHTML(QStringLiteral("y")); });
        QVERIFY(body().contains(QLatin1String("y")));
    }
    void anElementsListenerMayEndTheDocument()
    {
        int told = 0;
        connect(manager.get(), &ChangeManager::ElementChanged, this, [&](dom::Element *) {
            ++told;
            surface.reset();
        });
        edit([&] {
            element("a")->setInnerHTML(QStringLiteral("x"));
            element("b")->setInnerHTML(QStringLiteral("y"));
        });
        QCOMPARE(told, 2); // the second element is kept for who is told of it
        QVERIFY(!surface);
        QCOMPARE(manager->UndoCount(), 2);
    }
    void whoAnswersAReportMayEndTheManager()
    {
        edit([&] { element("a")->setInnerHTML(QStringLiteral("x")); });
        edit([&] { element("b")->setInnerHTML(QStringLiteral("y")); });
        int reports = 0;
        const auto before = support::setFailurePresenter([&](const support::FailureReport &) {
            ++reports;
            manager.reset();
        });
        base::faults::arm(QStringLiteral("ChangeManager"), QStringLiteral("ExecChange"), 5, QStringLiteral("torn"));
        manager->Undo();
        support::setFailurePresenter(before);
        QCOMPARE(reports, 1);
        QVERIFY(!manager);
    }
    void theManagerOutlivesTheDocument()
    {
        edit([&] { element("a")->setInnerHTML(QStringLiteral("x")); });
        surface.reset();
        manager->Flush();
        manager->Undo();
        manager->Flush();
        manager->Terminate();
        QCOMPARE(manager->UndoCount(), 0);
    }
};

QTEST_MAIN(tst_liveChanges)
#include "tst_liveChanges.moc"
