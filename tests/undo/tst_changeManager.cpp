// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/undo/ChangeManagerFixture.h"

class tst_changeManager : public QObject, private ChangeManagerFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void undoPlaysTheNewestStepBackwards();
    void theEchoOfAnUndoIsDropped();
    void aRedoneStepComesBackUnderANewNumber();
    void undoThenRedoKeepsTheRestOfTheChain();
    void aFreshEditEndsTheChain();
    void theLastEchoOfARedoKeepsTheChain();
    void undoOnAnEmptyStackChangesNothing();
    void redonePrivateRecordsGoWithTheirStep();
    void aStepUndoneAndRedoneManyTimesStaysOneStep();
    void theStackGivesUpItsOldestGroupAtTheLimit();
    void aBlockIsNeverCutAtTheLimit();
    void aStackOfOneGroupGrowsPastTheLimit();
    void theRedoStackHasNoLimit();
    void elementsAtBothEndsOfTheDirtyRangeAreTold();
    void oneElementIsToldOnce();
    void withoutADirtyRangeOnlyChangedIsRaised();
    void anEmptyNoticeRaisesChanged();
    void forceElementChangeEndsTheBlock();
    void theManagerMayBeDroppedByWhoIsTold_data();
    void theManagerMayBeDroppedByWhoIsTold();
    void resetKeepsTheLatches();
    void resetKeepsWhatIsPending();
    void terminateEndsEverythingOnce();
    void theDestructorTerminates();
    void playbackThatFailsIsReportedAndTheWalkGoesOn();
    void aFailureReportShowsTheFields();
    void fedRecordsAndLiveOnesComeInOrder();
    void fedRecordsDontReachTheLiveDocument();
};

// Undo and redo

void tst_changeManager::undoPlaysTheNewestStepBackwards()
{
    log->batch({other});
    log->batch({selection, typed});
    undo();
    QCOMPARE(undoStack(), QStringLiteral("1:2"));
    QCOMPARE(redoStack(), QStringLiteral("0:3 5:3"));
    QCOMPARE(manager->RedoCount(), 2);
    QCOMPARE(log->played().size(), size_t(2));
    QCOMPARE(log->played()[0].forward, 0);
    QCOMPARE(int(log->played()[0].record[0]), typed);
    QCOMPARE(int(log->played()[1].record[0]), selection);
}

void tst_changeManager::theEchoOfAnUndoIsDropped()
{
    log->batch({other});
    manager->Undo();
    QCOMPARE(log->waiting(), 1);
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    manager->Flush();
    QCOMPARE(log->waiting(), 0);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(undoStack(), QString());
    QCOMPARE(redoStack(), QStringLiteral("1:2"));
}

void tst_changeManager::aRedoneStepComesBackUnderANewNumber()
{
    log->batch({other});
    log->batch({other, other});
    undo();
    const int before = manager->ChangeGroupID();
    redo();
    QCOMPARE(redoStack(), QString());
    QCOMPARE(manager->UndoStack().Count(), 3);
    const int group = manager->UndoStack().Item(3)->ChangeGroupID();
    QVERIFY(group > before);
    QCOMPARE(manager->UndoStack().Item(2)->ChangeGroupID(), group);
    QCOMPARE(manager->UndoStack().Item(2)->Kind(), int(ScriptedChangeLog::redoneKind));
    QCOMPARE(log->played().back().forward, 1);
}

void tst_changeManager::undoThenRedoKeepsTheRestOfTheChain()
{
    for (int i = 0; i < 4; ++i)
        log->batch({other});
    undo();
    undo();
    undo();
    QCOMPARE(manager->RedoCount(), 3);
    redo();
    QCOMPARE(manager->RedoCount(), 2);
    QCOMPARE(manager->UndoCount(), 2);
    redo();
    redo();
    QCOMPARE(manager->RedoCount(), 0);
    QCOMPARE(manager->UndoCount(), 4);
}

void tst_changeManager::aFreshEditEndsTheChain()
{
    log->batch({other});
    log->batch({other});
    undo();
    QCOMPARE(manager->RedoCount(), 1);
    log->batch({typed});
    QCOMPARE(manager->RedoCount(), 0);
    QCOMPARE(manager->RedoStack().Count(), 0);
    QCOMPARE(manager->UndoCount(), 2);
}

void tst_changeManager::theLastEchoOfARedoKeepsTheChain()
{
    log->batch({other, other});
    log->batch({other});
    undo();
    undo();
    redo(); // two echoes; a third record waits to be redone
    QCOMPARE(manager->RedoCount(), 1);
    QCOMPARE(manager->UndoCount(), 2);
}

void tst_changeManager::undoOnAnEmptyStackChangesNothing()
{
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    manager->Undo();
    manager->Redo();
    QCOMPARE(changed.count(), 0);
    QVERIFY(log->played().empty());
    QCOMPARE(manager->ChangeGroupID(), 1);
    log->batch({typed}); // nothing is pending
    QCOMPARE(manager->UndoCount(), 1);
}

void tst_changeManager::redonePrivateRecordsGoWithTheirStep()
{
    log->batch({typed});
    manager->StartUndoBlock(false, true);
    log->batch({other});
    manager->EndUndoBlock(false);
    undo();
    QCOMPARE(redoStack(), QStringLiteral("1:0 0:2"));
    redo();
    // The step's own record lies on top and is played; the private one beneath it stays.
    QCOMPARE(redoStack(), QStringLiteral("1:0"));
    QCOMPARE(manager->UndoCount(), 1);
    QCOMPARE(manager->RedoCount(), 0);
}

void tst_changeManager::aStepUndoneAndRedoneManyTimesStaysOneStep()
{
    log->batch({typed});
    log->batch({typed});
    log->batch({deleted});
    for (int round = 0; round < 20; ++round) {
        undo();
        QCOMPARE(manager->UndoCount(), 0);
        QCOMPARE(manager->RedoCount(), 3);
        redo();
        QCOMPARE(manager->UndoCount(), 3);
        QCOMPARE(manager->RedoCount(), 0);
    }
    log->batch({typed}); // what is typed after it isn't part of it
    undo();
    QCOMPARE(manager->UndoCount(), 3);
}

// Limit

void tst_changeManager::theStackGivesUpItsOldestGroupAtTheLimit()
{
    log->batch({other, other, other});
    log->batch({other, other});
    for (int i = 5; i < ChangeManager::stackLimit; ++i)
        log->batch({other});
    QCOMPARE(manager->UndoStack().Count(), 20000);
    QCOMPARE(manager->UndoStack().Item(1)->ChangeGroupID(), 2);
    log->batch({other});
    QCOMPARE(manager->UndoStack().Count(), 19998); // the whole oldest group went
    QCOMPARE(manager->UndoStack().Item(1)->ChangeGroupID(), 3);
    log->batch({other});
    log->batch({other});
    log->batch({other});
    QCOMPARE(manager->UndoStack().Count(), 19999);
    QCOMPARE(manager->UndoStack().Item(1)->ChangeGroupID(), 4);
}

void tst_changeManager::aBlockIsNeverCutAtTheLimit()
{
    for (int i = 0; i < ChangeManager::stackLimit; ++i)
        log->batch({typed});
    const int group = manager->ChangeGroupID();
    log->batch({typed}); // no break: nothing goes
    QCOMPARE(manager->UndoStack().Count(), 20001);
    QCOMPARE(manager->UndoStack().Item(1)->ChangeGroupID(), group);
}

void tst_changeManager::aStackOfOneGroupGrowsPastTheLimit()
{
    manager->StartUndoBlock(false, false);
    for (int i = 0; i < 20010; ++i)
        log->batch({other}); // each asks for a break
    QCOMPARE(manager->UndoStack().Count(), 20010);
    manager->EndUndoBlock(false);
    log->batch({other}); // the oldest group is still the newest's
    QCOMPARE(manager->UndoStack().Count(), 20011);
    log->batch({other}); // now it isn't
    QCOMPARE(manager->UndoStack().Count(), 2);
}

void tst_changeManager::theRedoStackHasNoLimit()
{
    manager->StartUndoBlock(false, false);
    for (int i = 0; i < 20005; ++i)
        log->feed(other);
    log->notify();
    manager->EndUndoBlock(false);
    log->batch({other});
    undo();
    undo();
    QCOMPARE(manager->RedoStack().Count(), 20006);
    QCOMPARE(manager->RedoCount(), 20006);
}

// Events

void tst_changeManager::elementsAtBothEndsOfTheDirtyRangeAreTold()
{
    const auto document = dom::Document::create();
    const auto p = document->createElement(QStringLiteral("P"));
    const auto div = document->createElement(QStringLiteral("DIV"));
    QStringList told;
    connect(manager.get(), &ChangeManager::ElementChanged, this,
            [&](dom::Element *element) { told << element->tagName(); });
    connect(manager.get(), &ChangeManager::Changed, this, [&] { told << QStringLiteral("Changed"); });
    log->setDirtyRange(held(p), held(div));
    log->batch({typed, typed});
    QCOMPARE(told, (QStringList{"P", "DIV", "Changed"}));
    // An echo counts as well.
    told.clear();
    manager->Undo();
    log->setDirtyRange(held(div), nullptr);
    manager->Flush();
    QCOMPARE(told, (QStringList{"DIV", "Changed"}));
}

void tst_changeManager::oneElementIsToldOnce()
{
    const auto document = dom::Document::create();
    const auto p = document->createElement(QStringLiteral("P"));
    int told = 0;
    connect(manager.get(), &ChangeManager::ElementChanged, this, [&](dom::Element *element) {
        QVERIFY(element == p.get());
        ++told;
    });
    log->setDirtyRange(held(p), held(p));
    log->batch({typed});
    QCOMPARE(told, 1);
}

void tst_changeManager::withoutADirtyRangeOnlyChangedIsRaised()
{
    int told = 0;
    connect(manager.get(), &ChangeManager::ElementChanged, this, [&] { ++told; });
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    log->batch({typed});
    QCOMPARE(told, 0);
    QCOMPARE(changed.count(), 1);
}

void tst_changeManager::anEmptyNoticeRaisesChanged()
{
    const auto document = dom::Document::create();
    const auto p = document->createElement(QStringLiteral("P"));
    int told = 0;
    connect(manager.get(), &ChangeManager::ElementChanged, this, [&] { ++told; });
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    log->setDirtyRange(held(p), held(p));
    manager->Flush();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(told, 0);
    QCOMPARE(manager->ChangeGroupID(), 1);
}

void tst_changeManager::forceElementChangeEndsTheBlock()
{
    const auto document = dom::Document::create();
    const auto p = document->createElement(QStringLiteral("P"));
    QList<dom::Element *> told;
    connect(manager.get(), &ChangeManager::ElementChanged, this, [&](dom::Element *element) { told << element; });
    manager->StartUndoBlock(false, true);
    manager->ForceElementChange(p.get());
    QCOMPARE(told, QList<dom::Element *>{p.get()});
    QCOMPARE(manager->ChangeGroupID(), 3);
    log->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:4")); // public again, and no longer frozen
}

void tst_changeManager::theManagerMayBeDroppedByWhoIsTold_data()
{
    QTest::addColumn<bool>("byElement");
    QTest::newRow("of an element") << true;
    QTest::newRow("of the change") << false;
}

void tst_changeManager::theManagerMayBeDroppedByWhoIsTold()
{
    QFETCH(bool, byElement);
    const auto document = dom::Document::create();
    const auto p = document->createElement(QStringLiteral("P"));
    const auto div = document->createElement(QStringLiteral("DIV"));
    int elements = 0, changes = 0;
    connect(manager.get(), &ChangeManager::ElementChanged, this, [&] {
        ++elements;
        if (byElement) manager.reset();
    });
    connect(manager.get(), &ChangeManager::Changed, this, [&] {
        ++changes;
        manager.reset();
    });
    log->setDirtyRange(held(p), held(div));
    log->batch({typed});
    QVERIFY(!manager);
    QCOMPARE(elements, byElement ? 1 : 2);
    QCOMPARE(changes, byElement ? 0 : 1);
    QCOMPARE(log->logs(), 0);
    QCOMPARE(log->watches(), 0);
    QVERIFY(reports.empty());
}

// Lifecycle

void tst_changeManager::resetKeepsTheLatches()
{
    manager->StartUndoBlock(true, true);
    manager->EndUndoBlock(true);
    log->batch({other}); // takes the deferred end; the merging latch stays
    manager->StartUndoBlock(false, true);
    manager->EndUndoBlock(true);
    manager->Reset();
    QCOMPARE(manager->ChangeGroupID(), 1);
    QCOMPARE(manager->UndoStack().Count(), 0);
    QCOMPARE(log->logs(), 0);
    QCOMPARE(log->watches(), 0);
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    manager->Flush();
    QCOMPARE(changed.count(), 0); // no log: not even this

    auto second = std::make_shared<ScriptedChangeLog>();
    manager->Initialise(second);
    second->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:0")); // still private; the freeze was lifted
    QCOMPARE(manager->ChangeGroupID(), 2);        // by the break, not by the deferred end, which has just run
    second->batch({other});
    QCOMPARE(undoStack(), QStringLiteral("1:0 1:3"));
}

void tst_changeManager::resetKeepsWhatIsPending()
{
    log->batch({other});
    manager->Undo(); // its echo waits, and goes with the log
    auto second = std::make_shared<ScriptedChangeLog>();
    manager->Initialise(second);
    second->batch({other});
    QCOMPARE(undoStack(), QString()); // taken for the echo
    second->batch({other});
    QCOMPARE(manager->UndoCount(), 1);
    manager->Undo();
    manager->Flush();
    manager->Redo(); // likewise
    auto third = std::make_shared<ScriptedChangeLog>();
    manager->Initialise(third);
    third->batch({other, other});
    manager->Undo();
    manager->Flush();
    QCOMPARE(manager->RedoCount(), 2);
    third->batch({typed}); // a fresh edit: the echo of the redo was counted off before
    QCOMPARE(manager->RedoCount(), 0);
}

void tst_changeManager::terminateEndsEverythingOnce()
{
    log->batch({other});
    QSignalSpy changed(manager.get(), &ChangeManager::Changed);
    log->feed(other); // waits, and is lost
    manager->Terminate();
    QVERIFY(manager->Terminated());
    QCOMPARE(manager->UndoCount(), 0);
    QCOMPARE(manager->UndoStack().Count(), 0);
    QCOMPARE(log->logs(), 0);
    QCOMPARE(log->watches(), 0);
    manager->Terminate();
    manager->Flush();
    manager->Notify();
    manager->Undo();
    manager->StartUndoBlock(false, false);
    manager->EndUndoBlock(false);
    QCOMPARE(log->watches(), 0);
    QCOMPARE(changed.count(), 0);
    QVERIFY(reports.empty());
}

void tst_changeManager::theDestructorTerminates()
{
    manager.reset();
    QCOMPARE(log->logs(), 0);
    QCOMPARE(log->watches(), 0);
    log->batch({other}); // nobody listens
    QVERIFY(reports.empty());
}

namespace {

class FailingDocument final : public IChangeDocument, public IHTMLChangePlayback, public IMarkupContainer2
{
public:
    struct Log final : IHTMLChangeLog
    {
        std::vector<QByteArray> records;
        void GetNextChange(uint8_t *buffer, int size, int &needed) override
        {
            needed = records.empty() ? 0 : int(records.front().size());
            if (size == 0 || records.empty()) return;
            memcpy(buffer, records.front().constData(), size_t(needed));
            records.erase(records.begin());
        }
    };
    Log *log = nullptr;
    std::shared_ptr<IMarkupContainer2> MarkupContainer() override { return {std::shared_ptr<void>(), this}; }
    std::shared_ptr<IHTMLChangePlayback> ChangePlayback() override { return {std::shared_ptr<void>(), this}; }
    std::shared_ptr<IMarkupServices> MarkupServices() override { return std::make_shared<IMarkupServices>(); }
    bool IsControlRange() override { return false; }
    void ExecChange(const QByteArray &, int) override
    {
        throw base::Error(base::errors::notPossible, QStringLiteral("can't be played"));
    }
    void CreateChangeLog(IHTMLChangeSink *, std::unique_ptr<IHTMLChangeLog> &made, bool forward, bool backward) override
    {
        QVERIFY(forward && backward);
        auto fresh = std::make_unique<Log>();
        log = fresh.get();
        made = std::move(fresh);
    }
    void RegisterForDirtyRange(IHTMLChangeSink *, int &cookie) override { cookie = 0; }
    void UnRegisterForDirtyRange(int) override { QFAIL("there is no watch"); }
    void GetAndClearDirtyRange(int, std::unique_ptr<IMarkupPointer> &, std::unique_ptr<IMarkupPointer> &) override
    {
        QFAIL("there is no watch");
    }
};

} // namespace

void tst_changeManager::playbackThatFailsIsReportedAndTheWalkGoesOn()
{
    const auto failing = std::make_shared<FailingDocument>();
    manager->Initialise(failing);
    failing->log->records = {QByteArray("\1a"), QByteArray("\1b")};
    manager->Notify();
    QCOMPARE(undoStack(), QStringLiteral("1:2 1:2"));
    QCOMPARE(manager->UndoStack().Item(2)->ChangeData(), QByteArray("\1b"));
    manager->Undo();
    QCOMPARE(reports.size(), size_t(2));
    QCOMPARE(reports[0].procedure, QStringLiteral("ExecChange"));
    QCOMPARE(reports[0].description, QStringLiteral("can't be played"));
    QCOMPARE(undoStack(), QString());
    // No echo came: the two that are pending swallow the next edits. Nothing corrects that.
    failing->log->records = {QByteArray("\1c"), QByteArray("\1d"), QByteArray("\1e")};
    manager->Notify();
    QCOMPARE(manager->UndoStack().Count(), 1);
    QCOMPARE(manager->UndoStack().Item(1)->ChangeData(), QByteArray("\1e"));
}

void tst_changeManager::aFailureReportShowsTheFields()
{
    manager->Initialise(nullptr);
    QCOMPARE(reports.size(), size_t(1));
    const QString dump = reports[0].dump;
    int at = -1;
    for (const char *field :
         {"mUndoStack", "mRedoStack", "mFreezeChangeGroupID", "mNoIncrementOnEndBlock", "mChangeGroupID",
          "mChangesArePrivate", "mChangeLog", "mChangePlayback", "mPendingUndoCount", "mPendingRedoCount",
          "mDeferredEndUndoBlock", "mMarkupContainer", "mCookie", "mTerminated"}) {
        const int found = int(dump.indexOf(QLatin1Char('<') + QLatin1String(field)));
        QVERIFY2(found > at, qPrintable(field + dump));
        at = found;
    }
    // What a manager starts with.
    for (const char *field :
         {"<mFreezeChangeGroupID>False<", "<mNoIncrementOnEndBlock>False<", "<mChangeGroupID>1<",
          "<mChangesArePrivate>False<", "<mPendingUndoCount>0<", "<mPendingRedoCount>0<",
          "<mDeferredEndUndoBlock>False<", "<mCookie>0<", "<mTerminated>False<"})
        QVERIFY2(dump.contains(QLatin1String(field)), qPrintable(field + dump));
}

// Scripted log before a live document

void tst_changeManager::fedRecordsAndLiveOnesComeInOrder()
{
    auto live = std::make_shared<ScriptedChangeLog>();
    auto front = std::make_shared<ScriptedChangeLog>(live);
    manager->Initialise(front);
    QCOMPARE(live->logs(), 1);
    QCOMPARE(live->watches(), 1);
    live->feed(7);
    front->feed(8);
    live->feed(9);
    front->notify();
    live->batch({10}); // the live document's own notice
    QCOMPARE(undoStack(), QStringLiteral("7:2 8:2 9:2 10:3"));
    manager->Terminate();
    QCOMPARE(live->logs(), 0);
    QCOMPARE(live->watches(), 0);
}

namespace {

/// A live document whose records aren't marked.
class PlainDocument final : public IChangeDocument, public IHTMLChangePlayback, public IMarkupContainer2
{
public:
    struct Queue
    {
        std::vector<QByteArray> records;
    };
    struct Log final : IHTMLChangeLog
    {
        std::shared_ptr<Queue> queue;
        void GetNextChange(uint8_t *buffer, int size, int &needed) override
        {
            needed = queue->records.empty() ? 0 : int(queue->records.front().size());
            if (size == 0 || needed == 0) return;
            memcpy(buffer, queue->records.front().constData(), size_t(needed));
            queue->records.erase(queue->records.begin());
        }
    };
    std::shared_ptr<Queue> queue = std::make_shared<Queue>();
    std::vector<QByteArray> played;
    std::shared_ptr<IMarkupContainer2> MarkupContainer() override { return {std::shared_ptr<void>(), this}; }
    std::shared_ptr<IHTMLChangePlayback> ChangePlayback() override { return {std::shared_ptr<void>(), this}; }
    std::shared_ptr<IMarkupServices> MarkupServices() override { return std::make_shared<IMarkupServices>(); }
    bool IsControlRange() override { return true; }
    void ExecChange(const QByteArray &record, int forward) override
    {
        played.push_back(record);
        queue->records.push_back(QByteArray(1, char(forward ? 16 : 17)));
    }
    void CreateChangeLog(IHTMLChangeSink *, std::unique_ptr<IHTMLChangeLog> &made, bool, bool) override
    {
        auto fresh = std::make_unique<Log>();
        fresh->queue = queue;
        made = std::move(fresh);
    }
    void RegisterForDirtyRange(IHTMLChangeSink *, int &cookie) override { cookie = 4; }
    void UnRegisterForDirtyRange(int cookie) override { QCOMPARE(cookie, 4); }
    void GetAndClearDirtyRange(int cookie, std::unique_ptr<IMarkupPointer> &start,
                               std::unique_ptr<IMarkupPointer> &) override
    {
        QCOMPARE(cookie, 4);
        start.reset();
    }
};

} // namespace

void tst_changeManager::fedRecordsDontReachTheLiveDocument()
{
    const auto live = std::make_shared<PlainDocument>();
    auto front = std::make_shared<ScriptedChangeLog>(live);
    QVERIFY(front->IsControlRange());
    manager->Initialise(front);
    live->queue->records = {QByteArray("\1live")};
    manager->Notify();
    front->batch({typed, typed});
    QVERIFY(ScriptedChangeLog::isScripted(manager->UndoStack().Item(2)->ChangeData()));
    QVERIFY(!ScriptedChangeLog::isScripted(manager->UndoStack().Item(1)->ChangeData()));
    undo();
    QVERIFY(live->played.empty());
    QCOMPARE(manager->UndoCount(), 1);
    QCOMPARE(manager->RedoCount(), 2);
    undo();
    QCOMPARE(live->played, std::vector<QByteArray>{QByteArray("\1live")});
    QCOMPARE(manager->RedoCount(), 3);
    redo();
    redo();
    QCOMPARE(manager->RedoCount(), 0);
    // 2 and 3 were the batches, 4 and 5 the echoes of the undos.
    QCOMPARE(undoStack(), QStringLiteral("16:6 16:7 16:7"));
    QCOMPARE(live->played.size(), size_t(2));
    undo(); // an echo of a fed record is one itself
    QCOMPARE(live->played.size(), size_t(2));
}

QTEST_GUILESS_MAIN(tst_changeManager)
#include "tst_changeManager.moc"
