// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "engine/changes/EditScope.h"
#include "platform/EngineChangeLog.h"
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
