// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "control/FoundJournal.h"
#include "control/RecoveryJournal.h"
#include "control/Vellum5.h"
#include "control/Vellum5Parts.h"
#include "engine/changes/EditScope.h"
#include "engine/changes/Journal.h"
#include "engine/changes/JournalFile.h"
#include "engine/dom/CharacterData.h"
#include "engine/surface/LoadedDocument.h"
#include "support/FailureReport.h"
#include "support/SettingsStore.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <sys/resource.h>

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

    void aSaveRemovesTheFile();
    void savingThroughTheControlRemovesTheFile();
    void closingRemovesTheFile();
    void anotherTextRemovesTheFile();
    void switchingOffRemovesTheFile();
    void twoControlsHaveAJournalEach();

    void aTornTailIsCutAndGoneOnWith();
    void whatCannotBeReadIsKeptAside_data();
    void whatCannotBeReadIsKeptAside();
    void aFullDiskStopsTheJournalOnceAndNeverTheEditing();
    void aFolderThatCannotBeWrittenIsToldAtTheFirstEdit();
    void theDiskHasItAfterASecondOfQuiet();
    void theDiskHasItEveryFiveSecondsOfTyping();

private:
    std::unique_ptr<QTemporaryDir> mFolder;
    QTemporaryDir mSettings;
    int mReports = 0;
};

namespace {

struct Editor {
    Vellum5 control;
    explicit Editor(bool on = true)
    {
        control.resize(800, 600);
        control.show();
        QApplication::setActiveWindow(&control);
        settle();
        control.Recovery().setOn(on);
    }
    void settle()
    {
        for (int i = 0; i < 3 || surface().isLoading(); ++i) QApplication::processEvents();
    }
    surface::HTMLEditor &surface() { return *control.VisualEditControl(); }
    CodeMax &source() { return *control.SourceEditControl(); }
    void load(const QString &text)
    {
        control.setDocumentHTML(text);
        settle();
    }
    /// The caret into the first text that holds this, behind it.
    void caretBehind(const QString &text)
    {
        for (dom::Node *node = control.DOM()->next(); node; node = node->next())
            if (const qsizetype at = node->isText() ? node->nodeValue().indexOf(text) : -1; at >= 0)
                return surface().loaded()->selection().setCaret({node, uint32_t(at + text.size())});
        QFAIL("the text isn't there");
    }
    void type(const QString &text)
    {
        surface().setFocus();
        QTest::keyClicks(&surface(), text);
        settle();
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        surface().setFocus();
        QTest::keyClick(&surface(), key, modifiers);
        settle();
    }
    void typeSource(const QString &text, int at)
    {
        source().setFocus();
        source().setSelStart(at);
        source().setSelEnd(at);
        QTest::keyClicks(&source(), text);
        settle();
    }
    void view(int view)
    {
        control.setEditView(view);
        settle();
    }
    /// Everything that recovery promises: nodes with ids, the store, the view, the modes, which side is ahead.
    QString whole()
    {
        const ControlState &state = control.state();
        QString out = QStringLiteral("view %1 body %2 mode %3 base %4 ahead %5 %6 dirty %7\n")
                          .arg(int(state.mCurrentEditView))
                          .arg(state.mBodyMode)
                          .arg(state.mEditMode)
                          .arg(state.mBaseURL)
                          .arg(state.mHTMLEdIsDirty)
                          .arg(state.mHTMLSourceChanged)
                          .arg(state.mDirty);
        out += source().Text() + u'\n';
        for (const dom::Node *node = surface().document()->next(); node; node = node->next()) {
            out += QStringLiteral("%1 #%2 ").arg(node->depth()).arg(node->id());
            const dom::Element *element = node->asElement();
            out += element ? element->name().text() : node->nodeValue();
            if (element && element->isHeldOpen()) out += u'!';
            if (element)
                for (const dom::Attribute &attribute : element->attributeList())
                    out += u' ' + attribute.name.text() + u'=' + attribute.value;
            out += u'\n';
        }
        return out;
    }
};

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden);
}

QStringList files()
{
    return filesIn(RecoveryJournal::folder());
}

/// What a kill at this moment would leave: the journals' bytes as they are, in files that nobody holds.
class AfterKill
{
public:
    AfterKill() : mOld(RecoveryJournal::folder())
    {
        for (const QString &name : files()) QFile::copy(mOld + u'/' + name, mFolder.filePath(name));
        RecoveryJournal::setFolder(mFolder.path());
    }
    ~AfterKill() { RecoveryJournal::setFolder(mOld); }
    QString folder() const { return mFolder.path(); }

private:
    QString mOld;
    QTemporaryDir mFolder;
};

/// Another control stands where this one stands, after what this one has left.
void compareAfterKill(Editor &editor)
{
    const QString text = editor.source().Text();
    Editor other(false);
    {
        AfterKill kill;
        std::vector<FoundJournal> found = FoundJournal::find();
        QCOMPARE(found.size(), size_t(1));
        QVERIFY2(found[0].isReadable(), qPrintable(found[0].problem()));
        QVERIFY(found[0].recover(other.control));
        other.settle();
        QCOMPARE(other.whole(), editor.whole());
        QCOMPARE(filesIn(kill.folder()).size(), 1);
        // Its own undo begins here.
        QCOMPARE(other.control.EditView() == 0 && other.control.UndoEnabled(), false);
        other.control.Terminate();
        QCOMPARE(filesIn(kill.folder()), QStringList());
    }
    QCOMPARE(other.control.state().mTerminated, true);
    Q_UNUSED(text);
}

const QString page = QStringLiteral("<!doctype html>\r\n<html><head><title>T</title></head>\r\n<body><p id=\"a\">One two"
                                    "</p><p id=\"b\">Three <b>bold</b> four</p></body></html>\r\n");

} // namespace

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

// The end of a journal

void tst_recovery::aSaveRemovesTheFile()
{
    Editor editor;
    editor.load(page);
    editor.view(1);
    editor.typeSource(QStringLiteral("abc"), 20);
    QCOMPARE(files().size(), 1);
    editor.control.Recovery().documentSaved();
    QCOMPARE(files(), QStringList());
    QVERIFY(!editor.control.Recovery().isWriting());
}

void tst_recovery::savingThroughTheControlRemovesTheFile()
{
    const QString name = mFolder->filePath(QStringLiteral("page.html"));
    QFile file(name);
    QVERIFY(file.open(QFile::WriteOnly) && file.write(page.toUtf8()) > 0);
    file.close();
    Editor editor;
    editor.control.LoadFile(name);
    editor.settle();
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    QCOMPARE(files().size(), 1);
    {
        const AfterKill kill;
        QCOMPARE(FoundJournal::find().at(0).documentName(), name);
    }
    bool cancel = false;
    editor.control.SaveFile(cancel);
    QCOMPARE(files(), QStringList());
    QVERIFY(file.open(QFile::ReadOnly));
    QVERIFY(file.readAll().contains("One twoabc"));
}

void tst_recovery::closingRemovesTheFile()
{
    {
        Editor editor;
        editor.load(page);
        editor.caretBehind(QStringLiteral("two"));
        editor.type(QStringLiteral("abc"));
        QCOMPARE(files().size(), 1);
        editor.control.Terminate();
        QCOMPARE(files(), QStringList());
    }
    {
        Editor editor;
        editor.load(page);
        editor.caretBehind(QStringLiteral("two"));
        editor.type(QStringLiteral("abc"));
        QCOMPARE(files().size(), 1);
    }
    QCOMPARE(files(), QStringList());
}

void tst_recovery::anotherTextRemovesTheFile()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    QCOMPARE(files().size(), 1);
    editor.load(QStringLiteral("<p>Another one</p>"));
    QCOMPARE(files(), QStringList());
    editor.caretBehind(QStringLiteral("Another"));
    editor.type(QStringLiteral("x"));
    QCOMPARE(files().size(), 1);
    compareAfterKill(editor);
    editor.view(1);
    editor.control.setDocumentHTML(QStringLiteral("<p>In the source</p>")); // posted to nobody yet
    QCOMPARE(files(), QStringList());
    editor.typeSource(QStringLiteral("x"), 3);
    QCOMPARE(files().size(), 1);
    const AfterKill kill;
    Editor other(false);
    QVERIFY(FoundJournal::find().at(0).recover(other.control));
    QCOMPARE(other.control.DocumentHTML(), QStringLiteral("<p>xIn the source</p>"));
    other.view(0);
    QCOMPARE(other.control.DOM()->body()->innerText().trimmed(), QStringLiteral("xIn the source"));
}

void tst_recovery::switchingOffRemovesTheFile()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    editor.control.Recovery().setOn(false);
    QCOMPARE(files(), QStringList());
    editor.type(QStringLiteral("abc"));
    QCOMPARE(files(), QStringList());
}

void tst_recovery::twoControlsHaveAJournalEach()
{
    Editor one, two;
    one.load(page);
    two.load(QStringLiteral("<p>Second</p>"));
    for (int i = 0; i < 3; ++i) {
        one.caretBehind(QStringLiteral("One"));
        one.type(QStringLiteral("a"));
        two.caretBehind(QStringLiteral("Second"));
        two.type(QStringLiteral("b"));
    }
    QCOMPARE(files().size(), 2);
    QStringList previews;
    {
        const AfterKill kill;
        for (const FoundJournal &found : FoundJournal::find()) previews << found.preview();
    }
    previews.sort();
    QCOMPARE(previews, (QStringList{QStringLiteral("Oneaaa two Three bold four"), QStringLiteral("Secondbbb")}));
    one.control.Terminate();
    QCOMPARE(files().size(), 1);
    compareAfterKill(two);
}

// Trouble

void tst_recovery::aTornTailIsCutAndGoneOnWith()
{
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    const AfterKill kill;
    const QString name = kill.folder() + u'/' + filesIn(kill.folder()).at(0);
    QVERIFY(QFile::resize(name, QFileInfo(name).size() - 1));
    Editor other(false);
    QVERIFY(FoundJournal::find().at(0).recover(other.control));
    other.settle();
    QVERIFY(other.control.DOM()->body()->innerText().startsWith(QStringLiteral("One twoab")));
    QVERIFY(!other.control.DOM()->body()->innerText().contains(QStringLiteral("abc")));
    other.type(QStringLiteral("d"));
    compareAfterKill(other);
}

void tst_recovery::whatCannotBeReadIsKeptAside_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("said");
    QTest::newRow("foreign") << QStringLiteral("foreign") << QStringLiteral("is not a recovery journal");
    QTest::newRow("empty") << QStringLiteral("empty") << QStringLiteral("is not a recovery journal");
    QTest::newRow("newer") << QStringLiteral("newer") << QStringLiteral("newer version");
    QTest::newRow("damaged") << QStringLiteral("damaged") << QStringLiteral("damaged");
}

void tst_recovery::whatCannotBeReadIsKeptAside()
{
    QFETCH(QString, what);
    QFETCH(QString, said);
    Editor editor;
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    const AfterKill kill;
    QFile file(kill.folder() + u'/' + filesIn(kill.folder()).at(0));
    QVERIFY(file.open(QFile::ReadWrite));
    QByteArray bytes = file.readAll();
    if (what == QLatin1String("foreign")) bytes = "a letter to somebody";
    if (what == QLatin1String("empty")) bytes.clear();
    if (what == QLatin1String("newer")) bytes[8] = 2;
    if (what == QLatin1String("damaged")) bytes[bytes.size() / 2] = char(bytes[bytes.size() / 2] + 1);
    QVERIFY(file.resize(0) && file.seek(0) && file.write(bytes) == bytes.size());
    file.close();
    QString keptAs;
    {
        std::vector<FoundJournal> found = FoundJournal::find();
        QCOMPARE(found.size(), size_t(1));
        QVERIFY(!found[0].isReadable());
        QVERIFY2(found[0].problem().contains(said), qPrintable(found[0].problem()));
        keptAs = found[0].fileName();
        QVERIFY(found[0].problem().contains(keptAs));
        QCOMPARE(found[0].preview(), QString());
        Editor other(false);
        QVERIFY(!found[0].recover(other.control));
    }
    // Told once, and its bytes are there for who can read them.
    QVERIFY(FoundJournal::find().empty());
    QFile kept(keptAs);
    QVERIFY(kept.open(QFile::ReadOnly));
    QCOMPARE(kept.readAll(), bytes);
    if (what != QLatin1String("newer")) return;
    // The version that wrote it finds it again.
    QVERIFY(kept.setPermissions(kept.permissions()));
    kept.close();
    QVERIFY(kept.open(QFile::ReadWrite) && kept.seek(8) && kept.write("\x01", 1) == 1);
    kept.close();
    QCOMPARE(FoundJournal::find().size(), size_t(1));
}

void tst_recovery::aFullDiskStopsTheJournalOnceAndNeverTheEditing()
{
    Editor editor;
    QSignalSpy stopped(&editor.control.Recovery(), &RecoveryJournal::Stopped);
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    const qint64 size = QFileInfo(editor.control.Recovery().fileName()).size();
    rlimit old{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit narrow = old;
    narrow.rlim_cur = rlim_t(size + 150);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &narrow), 0);
    editor.type(QStringLiteral("defghijklmnopqrstuvwxyz"));
    editor.view(1);
    editor.typeSource(QStringLiteral("source"), 3);
    editor.view(0);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &old), 0);
    QCOMPARE(stopped.size(), 1);
    QVERIFY(stopped[0][0].toString().contains(QStringLiteral("recovery journal")));
    QVERIFY(editor.control.DocumentHTML().contains(QStringLiteral("One twoabcdefghijklmnopqrstuvwxyz")));
    QVERIFY(editor.control.DocumentHTML().contains(QStringLiteral("source")));
    // What was written until then is whole.
    {
        const AfterKill kill;
        const std::vector<FoundJournal> found = FoundJournal::find();
        QCOMPARE(found.size(), size_t(1));
        QVERIFY2(found[0].isReadable(), qPrintable(found[0].problem()));
        QVERIFY(found[0].preview().startsWith(QStringLiteral("One twoabcd")));
    }
    editor.control.Recovery().documentSaved();
    QCOMPARE(files(), QStringList());
    // The next document has a journal again.
    editor.load(page);
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("x"));
    compareAfterKill(editor);
    QCOMPARE(stopped.size(), 1);
}

void tst_recovery::aFolderThatCannotBeWrittenIsToldAtTheFirstEdit()
{
    RecoveryJournal::setFolder(QStringLiteral("/dev/null/recovery"));
    Editor editor;
    QSignalSpy stopped(&editor.control.Recovery(), &RecoveryJournal::Stopped);
    editor.load(page);
    QCOMPARE(stopped.size(), 0); // who only reads needs no journal
    editor.caretBehind(QStringLiteral("two"));
    editor.type(QStringLiteral("abc"));
    QCOMPARE(stopped.size(), 1);
    editor.view(1);
    editor.typeSource(QStringLiteral("x"), 3);
    QCOMPARE(stopped.size(), 1);
    QVERIFY(editor.control.DocumentHTML().contains(QStringLiteral("One twoabc")));
}

void tst_recovery::theDiskHasItAfterASecondOfQuiet()
{
    base::Clock &clock = base::Clock::instance();
    clock.setManual(QDateTime::currentDateTime());
    {
        Editor editor;
        editor.load(page);
        editor.caretBehind(QStringLiteral("two"));
        const int before = changes::JournalFile::syncsDone();
        editor.type(QStringLiteral("a"));
        clock.advance(600);
        editor.type(QStringLiteral("b"));
        clock.advance(999);
        QTest::qWait(0);
        QCOMPARE(changes::JournalFile::syncsDone(), before);
        clock.advance(1);
        QTRY_COMPARE(changes::JournalFile::syncsDone(), before + 1);
        clock.advance(60000);
        QTest::qWait(0);
        QCOMPARE(changes::JournalFile::syncsDone(), before + 1); // nothing new
    }
    clock.setSystem();
}

void tst_recovery::theDiskHasItEveryFiveSecondsOfTyping()
{
    base::Clock &clock = base::Clock::instance();
    clock.setManual(QDateTime::currentDateTime());
    {
        Editor editor;
        editor.load(page);
        editor.caretBehind(QStringLiteral("two"));
        const int before = changes::JournalFile::syncsDone();
        for (int i = 0; i < 50; ++i) { // twenty seconds
            editor.type(QStringLiteral("x"));
            clock.advance(400);
        }
        QTRY_VERIFY(changes::JournalFile::syncsDone() >= before + 3);
        QVERIFY(changes::JournalFile::syncsDone() <= before + 4);
    }
    clock.setSystem();
}

QTEST_MAIN(tst_recovery)
#include "tst_recovery.moc"
