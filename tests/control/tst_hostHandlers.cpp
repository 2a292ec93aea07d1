// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "control/Vellum5.h"
#include "support/FailureReport.h"
#include "support/SettingsStore.h"

#include <QTemporaryDir>
#include <QTest>

/// A host that edits, undoes and opens blocks while it is being told of a change. What it wrote before counts as before.
class tst_hostHandlers : public QObject
{
    Q_OBJECT

    QTemporaryDir mFolder;
    std::unique_ptr<Vellum5> control;
    QStringList reports;

    QString attribute(const char *name) const
    {
        return control->DOM()->body()->getAttribute(QString::fromLatin1(name));
    }
    void write(const char *name, const char *value)
    {
        control->DOM()->body()->setAttribute(QString::fromLatin1(name), QString::fromLatin1(value));
    }
    /// Runs `handler` in the first `Change` from now on, brought about by a write of `class`.
    void inHandler(const std::function<void()> &handler)
    {
        auto connection = std::make_shared<QMetaObject::Connection>();
        *connection = connect(control.get(), &Vellum5::Change, this, [=] {
            disconnect(*connection);
            handler();
        });
        write("class", "first");
        control->FlushChanges();
        QCoreApplication::processEvents(); // what was written in the handler is told by a posted call
    }
    int undoAll()
    {
        int steps = 0;
        for (; control->UndoEnabled() && steps < 100; ++steps) control->Undo();
        return steps;
    }

private Q_SLOTS:
    void initTestCase()
    {
        support::SettingsStore::instance().setFolder(mFolder.path());
        base::Clock::instance().setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0)));
    }
    void init()
    {
        reports.clear();
        support::setFailurePresenter(
            [this](const support::FailureReport &report) { reports << report.procedure + report.description; });
        control = std::make_unique<Vellum5>();
        control->setDocumentHTML(QStringLiteral("<html><body><p>a</p></body></html>"));
        QTRY_VERIFY(!control->Loading());
    }
    void cleanup()
    {
        QCOMPARE(reports, QStringList());
        support::setFailurePresenter({});
        control->Terminate();
        control.reset();
    }

    void whatAHandlerWroteIsNoEchoOfItsUndo()
    {
        inHandler([&] {
            write("title", "second");
            control->Undo();
        });
        QCOMPARE(attribute("title"), QString());
        QCOMPARE(attribute("class"), QStringLiteral("first"));
        QVERIFY(control->RedoEnabled());
        control->Redo();
        QCOMPARE(attribute("title"), QStringLiteral("second"));
        QCOMPARE(undoAll(), 2);
        QCOMPARE(attribute("title"), QString());
        QCOMPARE(attribute("class"), QString());
    }
    void whatAHandlerWroteEndsTheRedoChain()
    {
        write("title", "undone");
        control->Undo();
        inHandler([&] {
            write("lang", "en");
            control->Redo();
        });
        QCOMPARE(attribute("title"), QString());
        QCOMPARE(attribute("lang"), QStringLiteral("en"));
        QVERIFY(!control->RedoEnabled());
        QCOMPARE(undoAll(), 2);
        QCOMPARE(attribute("lang"), QString());
    }
    void whatAHandlerWroteIsNoPartOfItsBlock()
    {
        inHandler([&] {
            write("title", "before");
            control->StartUndoBlock(false, false);
            write("lang", "en");
            write("dir", "ltr");
            control->EndUndoBlock(false);
        });
        control->Undo();
        QCOMPARE(attribute("dir"), QString());
        QCOMPARE(attribute("lang"), QString());
        QCOMPARE(attribute("title"), QStringLiteral("before"));
        control->Undo();
        QCOMPARE(attribute("title"), QString());
        QCOMPARE(attribute("class"), QStringLiteral("first"));
        QCOMPARE(undoAll(), 1);
    }
    void whatAHandlerWroteIsNotPrivateWithItsBlock()
    {
        inHandler([&] {
            write("title", "before");
            control->StartUndoBlock(false, true);
            write("lang", "en");
            control->EndUndoBlock(false);
        });
        QCOMPARE(undoAll(), 2);
        QCOMPARE(attribute("title"), QString());
        QCOMPARE(attribute("lang"), QString());
    }
    void aHandlerMayUndoWhatItIsToldOf()
    {
        inHandler([&] { control->Undo(); });
        QCOMPARE(attribute("class"), QString());
        QVERIFY(!control->UndoEnabled());
        control->Redo();
        QCOMPARE(attribute("class"), QStringLiteral("first"));
        QCOMPARE(undoAll(), 1);
    }
    void aHandlerMayFlushAndReset()
    {
        inHandler([&] {
            write("title", "second");
            control->FlushChanges();
        });
        QCOMPARE(undoAll(), 2);
        inHandler([&] { control->ResetUndo(); });
        QVERIFY(!control->UndoEnabled());
        write("title", "third");
        QCOMPARE(undoAll(), 1);
        QCOMPARE(attribute("class"), QStringLiteral("first"));
    }
    /// A host without manners: it answers each change by another one, for as long as it is let.
    void anAnswerToEachChangeIsAStepEach()
    {
        int answers = 0;
        const auto connection = connect(control.get(), &Vellum5::Change, this, [&] {
            if (answers < 20) write("title", qPrintable(QString::number(++answers)));
        });
        write("class", "first");
        QTRY_COMPARE(answers, 20);
        QCoreApplication::processEvents();
        disconnect(connection);
        QCOMPARE(undoAll(), 21);
        QCOMPARE(attribute("title"), QString());
        QCOMPARE(attribute("class"), QString());
    }
    /// Nor may one that answers each load by another keep the control waiting for ever.
    void waitingForALoadGivesUp()
    {
        int loads = 0;
        const auto connection = connect(control.get(), &Vellum5::DocumentComplete, this, [&] {
            if (loads < 500) control->setDocumentHTML(QString("<p>%1").arg(++loads));
        });
        control->setDocumentHTML(QStringLiteral("<p>first"));
        control->WaitUntilLoaded();
        QVERIFY(control->Loading());
        QVERIFY2(loads >= 1 && loads <= 21, qPrintable(QString::number(loads)));
        disconnect(connection);
        control->WaitUntilLoaded(); // the last of them ends
        QVERIFY(!control->Loading());
        QCOMPARE(control->DOM()->body()->innerText(), QString::number(loads));
    }
};

QTEST_MAIN(tst_hostHandlers)
#include "tst_hostHandlers.moc"
