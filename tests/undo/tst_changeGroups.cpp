// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/undo/ChangeManagerFixture.h"

class tst_changeGroups : public QObject, private ChangeManagerFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void aNewManagerIsEmptyAndSilent();
    void initialiseStartsOneLogAndOneWatch();
    void aMissingDocumentIsReported();
    void typingWithShortPausesIsOneStep();
    void aPauseOfMoreThanThreeSecondsStartsAStep_data();
    void aPauseOfMoreThanThreeSecondsStartsAStep();
    void theTimeIsThatOfTheLastRecordNotOfTheStep();
    void typingAndDeletingShareAStep();
    void kindsDecideWhereAGroupEnds_data();
    void kindsDecideWhereAGroupEnds();
    void selectionsBreakTheGroupEachTime();
    void selectionsOfAControlStayTogether();
    void aBreakSeenAnywhereInABatchCountsForAllOfIt();
    void theFirstRecordBreaks();
    void selectionRecordsAreNeverFiltered();
    void aBlockHoldsTheGroupStill();
    void theEndOfABlockStartsAGroup();
    void blocksDontNest();
    void aMergingBlockJoinsTheGroupUnderWay();
    void aMergingBlockLeavesNoLaterEndToBreak();
    void aDeferredEndWaitsForTheNextNotice();
    void aDeferredEndIsTakenByAnEmptyNoticeToo();
    void anEndWithoutAStartStartsAGroup();
    void aPrivateBlockMakesNoStep();
    void privateRecordsOnTopGoWithTheStep();
    void privateRecordsInsideGoWithTheStep();
    void privateRecordsBeneathStay();
    void privateRecordsAloneAreNotPlayed();
    void privateChangesTellNoElement();
    void aDeferredEndOfAPrivateBlockTellsElements();
};

void tst_changeGroups::aNewManagerIsEmptyAndSilent()
{
    ChangeManager fresh;
    QSignalSpy changed(&fresh, &ChangeManager::Changed);
    QCOMPARE(fresh.UndoCount(), 0);
    QCOMPARE(fresh.RedoCount(), 0);
    QCOMPARE(fresh.ChangeGroupID(), 1);
    fresh.Flush(); // no log
    fresh.Undo();
    fresh.Redo();
    QCOMPARE(changed.count(), 0);
    QVERIFY(reports.empty());
}

void tst_changeGroups::initialiseStartsOneLogAndOneWatch()
{
    QCOMPARE(log->logs(), 1);
    QCOMPARE(log->watches(), 1);
    log->batch({typed});
    auto second = std::make_shared<ScriptedChangeLog>();
    manager->Initialise(second);
    QCOMPARE(log->logs(), 0);
    QCOMPARE(log->watches(), 0);
    QCOMPARE(second->watches(), 1);
    QCOMPARE(undoStack(), QString());
    QCOMPARE(manager->ChangeGroupID(), 1);
}

void tst_changeGroups::aMissingDocumentIsReported()
{
    manager->Initialise(nullptr);
    QCOMPARE(reports.size(), size_t(1));
    QCOMPARE(reports[0].module, QStringLiteral("ChangeManager"));
    QCOMPARE(reports[0].procedure, QStringLiteral("Initialise"));
    QCOMPARE(reports[0].number, base::errors::objectNotSet);
}

// Groups

void tst_changeGroups::typingWithShortPausesIsOneStep()
{
    for (int i = 0; i < 5; ++i) {
        log->batch({typed});
        pause(2999);
    }
    QCOMPARE(undoStack(), QStringLiteral("0:2 0:2 0:2 0:2 0:2"));
    QCOMPARE(manager->UndoCount(), 5);
    undo();
    QCOMPARE(undoStack(), QString());
}

void tst_changeGroups::aPauseOfMoreThanThreeSecondsStartsAStep_data()
{
    QTest::addColumn<int>("ms");
    QTest::addColumn<QString>("stack");
    QTest::newRow("none") << 0 << "0:2 0:2";
    QTest::newRow("three seconds exactly") << 3000 << "0:2 0:2";
    QTest::newRow("a millisecond more") << 3001 << "0:2 0:3";
    QTest::newRow("a day") << 86400000 << "0:2 0:3";
}

void tst_changeGroups::aPauseOfMoreThanThreeSecondsStartsAStep()
{
    QFETCH(int, ms);
    log->batch({typed});
    pause(ms);
    log->batch({typed});
    QTEST(undoStack(), "stack");
}

void tst_changeGroups::theTimeIsThatOfTheLastRecordNotOfTheStep()
{
    log->batch({typed});
    pause(2000);
    log->batch({typed});
    pause(2000); // four after the first, two after the last
    log->batch({typed});
    pause(4000);
    log->batch({typed}); // the first entry after the pause sees the break
    log->batch({typed});
    QCOMPARE(undoStack(), QStringLiteral("0:2 0:2 0:2 0:3 0:3"));
}

void tst_changeGroups::typingAndDeletingShareAStep()
{
    log->batch({typed});
    log->batch({deleted});
    log->batch({typed});
    QCOMPARE(undoStack(), QStringLiteral("0:2 3:2 0:2"));
}

void tst_changeGroups::kindsDecideWhereAGroupEnds_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::addColumn<bool>("breaks");
    QTest::newRow("typed, typed") << typed << typed << false;
    QTest::newRow("typed, deleted") << typed << deleted << false;
    QTest::newRow("deleted, typed") << deleted << typed << false;
    QTest::newRow("deleted, deleted") << deleted << deleted << false;
    QTest::newRow("typed, selection") << typed << selection << true;
    QTest::newRow("selection, typed") << selection << typed << true;
    QTest::newRow("selection, selection") << selection << selection << true;
    QTest::newRow("typed, other") << typed << other << true;
    QTest::newRow("other, typed") << other << typed << true;
    QTest::newRow("other, other") << other << other << true;
    QTest::newRow("other, selection") << other << selection << true;
    QTest::newRow("selection, other") << selection << other << true;
    QTest::newRow("a high byte, the same") << 250 << 250 << true;
}

void tst_changeGroups::kindsDecideWhereAGroupEnds()
{
    QFETCH(int, first);
    QFETCH(int, second);
    QFETCH(bool, breaks);
    log->batch({first});
    const int before = manager->ChangeGroupID();
    log->batch({second});
    QCOMPARE(manager->ChangeGroupID(), breaks ? before + 1 : before);
    QCOMPARE(manager->UndoStack().Item(2)->ChangeGroupID(), manager->ChangeGroupID());
}

void tst_changeGroups::selectionsBreakTheGroupEachTime()
{
    for (int i = 0; i < 3; ++i)
        log->batch({selection});
    QCOMPARE(undoStack(), QStringLiteral("5:2 5:3 5:4"));
}

void tst_changeGroups::selectionsOfAControlStayTogether()
{
    log->setControlRange(true);
    for (int i = 0; i < 3; ++i)
        log->batch({selection});
    QCOMPARE(undoStack(), QStringLiteral("5:2 5:2 5:2"));
    log->setControlRange(false);
    log->batch({selection});
    QCOMPARE(undoStack(), QStringLiteral("5:2 5:2 5:2 5:3"));
}

void tst_changeGroups::aBreakSeenAnywhereInABatchCountsForAllOfIt()
{
    log->batch({typed});
    log->batch({typed, other, typed, typed});
    QCOMPARE(undoStack(), QStringLiteral("0:2 0:3 1:3 0:3 0:3"));
    log->batch({typed}); // a new batch starts without the break
    QCOMPARE(manager->ChangeGroupID(), 3);
}

void tst_changeGroups::theFirstRecordBreaks()
{
    log->batch({typed}); // the last kind starts as 0, but at date zero
    QCOMPARE(undoStack(), QStringLiteral("0:2"));
}

void tst_changeGroups::selectionRecordsAreNeverFiltered()
{
    log->batch({selection});
    QCOMPARE(undoStack(), QStringLiteral("5:2"));
    QCOMPARE(manager->UndoCount(), 1);
}

// Blocks

void tst_changeGroups::aBlockHoldsTheGroupStill()
{
    log->batch({other});
    manager->StartUndoBlock(false, false);
    log->batch({other});
    log->batch({selection, typed});
    pause(60000);
    log->batch({typed});
    manager->EndUndoBlock(false);
    QCOMPARE(undoStack(), QStringLiteral("1:2 1:3 5:3 0:3 0:3"));
}

void tst_changeGroups::theEndOfABlockStartsAGroup()
{
    manager->StartUndoBlock(false, false);
    log->batch({typed});
    manager->EndUndoBlock(false);
    log->batch({typed}); // would join by its kind and time
    QCOMPARE(undoStack(), QStringLiteral("0:2 0:3"));
    QCOMPARE(manager->ChangeGroupID(), 3);
}

void tst_changeGroups::blocksDontNest()
{
    manager->StartUndoBlock(false, false);
    log->batch({other});
    manager->StartUndoBlock(false, false);
    log->batch({other});
    manager->EndUndoBlock(false);
    log->batch({other}); // the first end ended all
    manager->EndUndoBlock(false);
    log->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:2 1:3 1:5 1:7"));
}

void tst_changeGroups::aMergingBlockJoinsTheGroupUnderWay()
{
    log->batch({typed});
    manager->StartUndoBlock(true, false);
    log->batch({other});
    manager->EndUndoBlock(false);
    QCOMPARE(undoStack(), QStringLiteral("0:2 1:2"));
    log->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("0:2 1:2 1:3"));
}

void tst_changeGroups::aMergingBlockLeavesNoLaterEndToBreak()
{
    manager->StartUndoBlock(true, false);
    manager->EndUndoBlock(false);
    QCOMPARE(manager->ChangeGroupID(), 1);
    manager->StartUndoBlock(false, false);
    log->batch({typed});
    manager->EndUndoBlock(false);
    QCOMPARE(manager->ChangeGroupID(), 2);
    log->batch({typed});
    QCOMPARE(undoStack(), QStringLiteral("0:2 0:2"));
    manager->ForceElementChange(nullptr);
    QCOMPARE(manager->ChangeGroupID(), 2);
}

void tst_changeGroups::aDeferredEndWaitsForTheNextNotice()
{
    manager->StartUndoBlock(false, false);
    log->batch({other});
    manager->EndUndoBlock(true);
    QCOMPARE(manager->ChangeGroupID(), 2); // still open
    log->batch({other, other});
    QCOMPARE(undoStack(), QStringLiteral("1:2 1:2 1:2"));
    QCOMPARE(manager->ChangeGroupID(), 3);
    log->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:2 1:2 1:2 1:4"));
}

void tst_changeGroups::aDeferredEndIsTakenByAnEmptyNoticeToo()
{
    manager->StartUndoBlock(false, true);
    manager->EndUndoBlock(true);
    manager->Flush();
    log->batch({other});
    QCOMPARE(manager->UndoCount(), 1);
    manager->Flush(); // taken once
    QCOMPARE(manager->ChangeGroupID(), 4);
}

void tst_changeGroups::anEndWithoutAStartStartsAGroup()
{
    log->batch({typed});
    manager->EndUndoBlock(false);
    log->batch({typed});
    QCOMPARE(undoStack(), QStringLiteral("0:2 0:3"));
}

// Private blocks

void tst_changeGroups::aPrivateBlockMakesNoStep()
{
    log->batch({typed});
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    manager->StartUndoBlock(false, true);
    log->batch({other, other});
    manager->EndUndoBlock(false);
    QCOMPARE(manager->UndoCount(), 1);
    QCOMPARE(manager->UndoStack().Count(), 3);
    QCOMPARE(undoStack(), QStringLiteral("0:2 1:0 1:0"));
    QCOMPARE(changed.count(), 1);
}

void tst_changeGroups::privateRecordsOnTopGoWithTheStep()
{
    log->batch({typed});
    manager->StartUndoBlock(false, true);
    log->batch({other, other});
    manager->EndUndoBlock(false);
    undo();
    QCOMPARE(undoStack(), QString());
    QCOMPARE(redoStack(), QStringLiteral("1:0 1:0 0:2"));
    QCOMPARE(log->played().size(), size_t(3));
    QCOMPARE(int(log->played()[0].record[0]), other); // newest first
    QCOMPARE(int(log->played()[2].record[0]), typed);
}

void tst_changeGroups::privateRecordsInsideGoWithTheStep()
{
    log->batch({typed});
    manager->StartUndoBlock(true, true);
    log->batch({other});
    manager->EndUndoBlock(false);
    manager->StartUndoBlock(true, false);
    log->batch({other});
    manager->EndUndoBlock(false);
    QCOMPARE(undoStack(), QStringLiteral("0:2 1:0 1:2"));
    undo();
    QCOMPARE(undoStack(), QString());
}

void tst_changeGroups::privateRecordsBeneathStay()
{
    manager->StartUndoBlock(false, true);
    log->batch({other});
    manager->EndUndoBlock(false);
    log->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:0 1:4"));
    undo();
    QCOMPARE(undoStack(), QStringLiteral("1:0"));
    QCOMPARE(manager->UndoCount(), 0);

    // Between two steps they belong to the lower one.
    init();
    log->batch({other});
    manager->StartUndoBlock(false, true);
    log->batch({other});
    manager->EndUndoBlock(false);
    log->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:2 1:0 1:5"));
    undo();
    QCOMPARE(undoStack(), QStringLiteral("1:2 1:0"));
    undo();
    QCOMPARE(undoStack(), QString());
}

void tst_changeGroups::privateRecordsAloneAreNotPlayed()
{
    manager->StartUndoBlock(false, true);
    log->batch({other, other});
    manager->EndUndoBlock(false);
    undo();
    QVERIFY(log->played().empty());
    QCOMPARE(manager->UndoStack().Count(), 2);
}

void tst_changeGroups::privateChangesTellNoElement()
{
    const auto document = dom::Document::create();
    const auto p = document->createElement(QStringLiteral("P"));
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    int told = 0;
    connect(manager.get(), &ChangeManager::ElementChanged, this, [&] { ++told; });
    manager->StartUndoBlock(false, true);
    log->setDirtyRange(held(p), held(p));
    log->batch({other});
    manager->EndUndoBlock(false);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(told, 0);
    log->batch({other}); // the range wasn't asked for and is still there
    QCOMPARE(told, 1);
}

void tst_changeGroups::aDeferredEndOfAPrivateBlockTellsElements()
{
    const auto document = dom::Document::create();
    const auto p = document->createElement(QStringLiteral("P"));
    int told = 0;
    connect(manager.get(), &ChangeManager::ElementChanged, this, [&] { ++told; });
    manager->StartUndoBlock(false, true);
    manager->EndUndoBlock(true);
    log->setDirtyRange(held(p), held(p));
    log->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:0")); // numbered before the block ended
    QCOMPARE(told, 1);                            // told after it
}

QTEST_GUILESS_MAIN(tst_changeGroups)
#include "tst_changeGroups.moc"
