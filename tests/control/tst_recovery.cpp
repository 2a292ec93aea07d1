// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/EditScope.h"
#include "support/FailureReport.h"
#include "support/SettingsStore.h"
#include "tests/control/RecoveryEditor.h"

#include <QSignalSpy>

using namespace recovery;

/// What a control leaves in its journal, and that another one stands there where it stood.
class tst_recovery : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void writesNothingUnlessAsked();
    void aPageThatNobodyEditedLeavesNothing();
    void anEditMakesAFileForItsOwnerOnly();

    void typingComesBack();
    void everyKindOfEditComesBack();
    void undoAndRedoComeBack();
    void sourceTypingComesBack();
    void sourceUndoComesBack();
    void viewSwitchesComeBack();
    void reloadsComeBack();
    void aTextThatWasPostedButNotLoadedComesBack();
    void bodyModeComesBack();
    void editsAfterASaveComeBack();
    void aLongDocumentComesBack();
    void theFoundTextIsWhatTheControlWouldGive();

    void aRecoveredDocumentGoesOnInItsJournal();
    void aRecoveredDocumentIsChanged();
    void aRecoveryThatIsCutOffKeepsTheJournal();
    void whatIsNotDecidedIsFoundAgain();
    void aDiscardedJournalIsGone();
    void aJournalInUseIsNotFound();
    void nameTimeAndPreviewAreTold();

private:
    std::unique_ptr<QTemporaryDir> mFolder;
    QTemporaryDir mSettings;
    int mReports = 0;
};

void tst_recovery::initTestCase()
{
    support::SettingsStore::instance().setFolder(mSettings.path());
    support::setFailurePresenter([this](const support::FailureReport &report) {
        ++mReports;
        qWarning("%s", qPrintable(report.description));
    });
}

void tst_recovery::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    RecoveryJournal::setFolder(mFolder->filePath(QStringLiteral("recovery")));
    mReports = 0;
}

void tst_recovery::cleanup()
{
    QCOMPARE(mReports, 0);
}

void tst_recovery::writesNothingUnlessAsked()
{
    Editor editor(false);
    QVERIFY(!editor.control.Recovery().isOn());
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("x"));
    QVERIFY(!editor.control.Recovery().isWriting());
    QVERIFY(!QFileInfo::exists(RecoveryJournal::folder()));
}

void tst_recovery::aPageThatNobodyEditedLeavesNothing()
{
    Editor editor;
    editor.load(page);
    editor.view(1);
    editor.view(2);
    editor.view(0);
    editor.control.DocumentHTML();
    QCOMPARE(files(), QStringList());
}

void tst_recovery::anEditMakesAFileForItsOwnerOnly()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("x"));
    QCOMPARE(files().size(), 1);
    QVERIFY(editor.control.Recovery().isWriting());
    const auto rights = QFile::permissions(editor.control.Recovery().fileName());
    QCOMPARE(rights, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
}

void tst_recovery::typingComesBack()
{
    Editor editor;
    editor.control.setBaseURL(QStringLiteral("file:///some/where/"));
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    for (const QChar c : QStringLiteral("and more")) {
        editor.type(QString(c));
        compareAfterKill(editor);
        if (QTest::currentTestFailed()) return;
    }
    QVERIFY(editor.control.DocumentHTML().contains(QStringLiteral("One twoand more")));
    compareAfterKill(editor); // the store has followed
}

void tst_recovery::everyKindOfEditComesBack()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("One"));
    editor.key(Qt::Key_Return);
    editor.key(Qt::Key_Return); // leaves a held-open block
    compareAfterKill(editor);
    editor.type(QStringLiteral("middle"));
    editor.key(Qt::Key_Backspace);
    editor.key(Qt::Key_Delete);
    compareAfterKill(editor);
    {
        changes::EditScope scope;
        dom::Element *body = editor.control.DOM()->body();
        body->setAttribute(QStringLiteral("class"), QStringLiteral("c \u4e2d"));
        body->insertAdjacentHTML(QStringLiteral("beforeend"), QStringLiteral("<ul><li>x<li>y</ul><!-- c -->"));
        body->firstChild()->asElement()->setInnerHTML(QStringLiteral("all <i>new</i>"));
        body->firstChild()->nextSibling()->asElement()->setOuterHTML(QString());
    }
    compareAfterKill(editor);
    editor.control.DocumentHTML();
    compareAfterKill(editor);
}

void tst_recovery::undoAndRedoComeBack()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    editor.key(Qt::Key_Return);
    editor.type(QStringLiteral("def"));
    for (int i = 0; i < 3; ++i) {
        editor.control.Undo();
        compareAfterKill(editor);
    }
    editor.control.Redo();
    compareAfterKill(editor);
    editor.type(QStringLiteral("z"));
    compareAfterKill(editor);
}

void tst_recovery::sourceTypingComesBack()
{
    Editor editor;
    editor.load(page);
    editor.view(1);
    const int at = int(editor.source().Text().indexOf(QStringLiteral("One")));
    for (const QString &text : {QStringLiteral("S"), QStringLiteral("ource"), QStringLiteral(" <i>x</i>")}) {
        editor.typeSource(text, at);
        compareAfterKill(editor);
        if (QTest::currentTestFailed()) return;
    }
    // Beyond what one byte a character holds.
    editor.source().InsertText(QStringLiteral("\u00e4\u4e2d\U0001F600"), at);
    editor.source().setSelStart(at + 1);
    editor.source().setSelEnd(at + 2);
    editor.source().ReplaceSel(QStringLiteral("\u20ac"));
    editor.settle();
    QVERIFY(editor.control.DocumentHTML().contains(QStringLiteral("\u00e4\u20ac\U0001F600")));
    compareAfterKill(editor);
}

void tst_recovery::sourceUndoComesBack()
{
    Editor editor;
    editor.load(page);
    editor.view(1);
    editor.typeSource(QStringLiteral("abc"), 20);
    editor.source().setSelStart(0);
    editor.source().setSelEnd(40);
    editor.source().ReplaceSel(QString());
    editor.control.Undo();
    compareAfterKill(editor);
    editor.control.Undo();
    compareAfterKill(editor);
    editor.control.Redo();
    compareAfterKill(editor);
}

void tst_recovery::viewSwitchesComeBack()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    for (const int view : {1, 0, 2, 0, 1, 2, 1}) {
        editor.view(view);
        compareAfterKill(editor);
        if (QTest::currentTestFailed()) return;
    }
}

void tst_recovery::reloadsComeBack()
{
    Editor editor;
    editor.load(page);
    for (int round = 0; round < 3; ++round) {
        editor.caretBehind(QStringLiteral("two"));
        editor.type(QStringLiteral("v%1").arg(round));
        compareAfterKill(editor);
        editor.view(1);
        editor.typeSource(QStringLiteral("s%1").arg(round), int(editor.source().Text().indexOf(QStringLiteral("Three"))));
        compareAfterKill(editor);
        editor.view(0); // posts the store anew
        compareAfterKill(editor);
        if (QTest::currentTestFailed()) return;
    }
    const QString text = editor.control.DocumentHTML();
    QVERIFY(text.contains(QStringLiteral("v2v1v0")) || text.contains(QStringLiteral("twov2v1v0")));
    QVERIFY(text.contains(QStringLiteral("s0s1s2Three")));
}

void tst_recovery::aTextThatWasPostedButNotLoadedComesBack()
{
    Editor editor;
    editor.load(page);
    editor.view(1);
    editor.typeSource(QStringLiteral("new"), int(editor.source().Text().indexOf(QStringLiteral("Three"))));
    editor.control.setEditView(0);
    QVERIFY(editor.surface().isLoading());
    Editor other(false);
    {
        AfterKill kill;
        std::vector<FoundJournal> found = FoundJournal::find();
        QCOMPARE(found.size(), size_t(1));
        QVERIFY(found[0].text().contains(QStringLiteral("newThree")));
        QVERIFY(found[0].recover(other.control));
        other.settle();
        QVERIFY(other.control.DocumentHTML().contains(QStringLiteral("newThree")));
        other.control.Terminate();
    }
}

void tst_recovery::bodyModeComesBack()
{
    Editor editor;
    editor.control.setBodyMode(true);
    editor.control.setBaseURL(QStringLiteral("file:///b/"));
    editor.load(QStringLiteral("<p>One two</p><p>Three</p>"));
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    compareAfterKill(editor);
    editor.control.DocumentHTML();
    compareAfterKill(editor);
    editor.view(1);
    editor.typeSource(QStringLiteral("x"), 3);
    compareAfterKill(editor);
    editor.view(0);
    compareAfterKill(editor);
}

void tst_recovery::editsAfterASaveComeBack()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    for (int round = 0; round < 3; ++round) {
        editor.control.DocumentHTML();
        editor.control.Recovery().documentSaved();
        QCOMPARE(files(), QStringList());
        editor.type(QStringLiteral("d"));
        QCOMPARE(files().size(), 1);
        compareAfterKill(editor);
    }
}

void tst_recovery::aLongDocumentComesBack()
{
    QString text = QStringLiteral("<html><body>");
    for (int i = 0; i < 3000; ++i) text += QStringLiteral("<p>Paragraph %1 with <b>some</b> text \u4e2d</p>\r\n").arg(i);
    Editor editor;
    editor.load(text);
    editor.caretBehind(QStringLiteral("Paragraph 1500"));
    editor.type(QStringLiteral("abc"));
    compareAfterKill(editor);
    editor.control.DocumentHTML();
    compareAfterKill(editor);
}

void tst_recovery::theFoundTextIsWhatTheControlWouldGive()
{
    for (const bool bodyMode : {false, true}) {
        Editor editor;
        editor.control.setBodyMode(bodyMode);
        editor.load(bodyMode ? QStringLiteral("<p>One two</p>") : page);
        editor.caretBehind(QStringLiteral("two"));
        editor.type(QStringLiteral("abc"));
        QString text;
        {
            AfterKill kill;
            text = FoundJournal::find().at(0).text();
        }
        QCOMPARE(text, editor.control.DocumentHTML());
        editor.view(1);
        editor.typeSource(QStringLiteral("x"), 2);
        {
            AfterKill kill;
            text = FoundJournal::find().at(0).text();
        }
        QCOMPARE(text, editor.control.DocumentHTML());
    }
}

// Back

void tst_recovery::aRecoveredDocumentGoesOnInItsJournal()
{
    auto first = std::make_unique<Editor>();
    first->load(page);
    first->caretBehind(QStringLiteral("two"));
    first->type(QStringLiteral("abc"));
    Editor second(false);
    const AfterKill kill;
    std::vector<FoundJournal> found = FoundJournal::find();
    QVERIFY(found.at(0).recover(second.control));
    QCOMPARE(filesIn(kill.folder()).size(), 1); // at no moment does it stand nowhere
    second.settle();
    found.clear();
    QVERIFY(FoundJournal::find().empty()); // it is in use again
    second.type(QStringLiteral("def"));    // the caret is where it was
    QVERIFY(second.control.DOM()->body()->innerText().contains(QStringLiteral("twoabcdef")));
    compareAfterKill(second);
    second.view(1);
    second.typeSource(QStringLiteral("x"), 3);
    compareAfterKill(second);
    second.view(0);
    second.caretBehind(QStringLiteral("Three"));
    second.type(QStringLiteral("y"));
    compareAfterKill(second);
    second.control.Recovery().documentSaved();
    QCOMPARE(filesIn(kill.folder()), QStringList());
}

void tst_recovery::aRecoveredDocumentIsChanged()
{
    Editor first;
    first.load(page);
    first.caretBehind(QStringLiteral("two"));
    first.type(QStringLiteral("abc"));
    Editor second(false);
    second.load(QStringLiteral("<p>other"));
    QVERIFY(!second.control.Dirty());
    const AfterKill kill;
    QSignalSpy changed(&second.control, &Vellum5::Change);
    QSignalSpy complete(&second.control, &Vellum5::DocumentComplete);
    QVERIFY(FoundJournal::find().at(0).recover(second.control));
    second.settle();
    QCOMPARE(complete.size(), 1);
    QCOMPARE(changed.size(), 1);
    QVERIFY(second.control.Dirty());
    QVERIFY(second.control.DocumentHTML().contains(QStringLiteral("One twoabc")));
}

void tst_recovery::aRecoveryThatIsCutOffKeepsTheJournal()
{
    Editor first;
    first.load(page);
    first.caretBehind(QStringLiteral("two"));
    first.type(QStringLiteral("abc"));
    Editor second(false);
    const AfterKill kill;
    QVERIFY(FoundJournal::find().at(0).recover(second.control));
    second.load(QStringLiteral("<p>other")); // before the document stood there
    QCOMPARE(second.control.DOM()->body()->innerText().trimmed(), QStringLiteral("other"));
    QCOMPARE(FoundJournal::find().size(), size_t(1));
    second.control.Terminate();
    QVERIFY(!FoundJournal::find().at(0).recover(second.control));
    QCOMPARE(FoundJournal::find().size(), size_t(1));
}

void tst_recovery::whatIsNotDecidedIsFoundAgain()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    const AfterKill kill;
    {
        const std::vector<FoundJournal> found = FoundJournal::find();
        QCOMPARE(found.size(), size_t(1));
        QVERIFY(FoundJournal::find().empty()); // somebody is looking at it
    }
    QCOMPARE(FoundJournal::find().size(), size_t(1));
}

void tst_recovery::aDiscardedJournalIsGone()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    const AfterKill kill;
    FoundJournal::find().at(0).discard();
    QCOMPARE(filesIn(kill.folder()), QStringList());
    QVERIFY(FoundJournal::find().empty());
}

void tst_recovery::aJournalInUseIsNotFound()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    QCOMPARE(files().size(), 1);
    QVERIFY(FoundJournal::find().empty());
    QCOMPARE(files().size(), 1);
}

void tst_recovery::nameTimeAndPreviewAreTold()
{
    Editor editor;
    editor.load(page);
    editor.control.Recovery().setDocumentName(QStringLiteral("/home/\u4e2d/page.html"));
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    {
        const AfterKill kill;
        const FoundJournal found = std::move(FoundJournal::find().at(0));
        QCOMPARE(found.documentName(), QStringLiteral("/home/\u4e2d/page.html"));
        QVERIFY(qAbs(found.time().secsTo(QDateTime::currentDateTime())) < 600);
        QCOMPARE(found.preview(), QStringLiteral("One twoabc Three bold four"));
        QCOMPARE(found.preview(7), QStringLiteral("One two\u2026"));
    }
    editor.control.Recovery().setDocumentName(QStringLiteral("/other.html"));
    const AfterKill kill;
    QCOMPARE(FoundJournal::find().at(0).documentName(), QStringLiteral("/other.html"));
}

QTEST_MAIN(tst_recovery)
#include "tst_recovery.moc"
