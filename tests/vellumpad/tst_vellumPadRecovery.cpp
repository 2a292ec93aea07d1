// SPDX-License-Identifier: GPL-3.0-or-later
#include "vellumpad/MainWindow.h"
#include "vellumpad/Recover.h"
#include "vellumpad/RecoveryDialog.h"

#include <VellumKit5/Settings>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

/// VellumPad gives back at its start what it hadn't saved.
class tst_vellumPadRecovery : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();

    void everyWindowKeepsAJournalUntilItIsSaved();
    void nothingLeftAsksNothing();
    void aDocumentIsOfferedAndRecovered();
    void eachDocumentGetsItsWindow();
    void discardingRemovesOne();
    void decidingLaterKeepsAll();
    void theKeyboardIsEnough();
    void whatCannotBeReadIsShownWithItsReason();
    void aRecoveredFileKeepsItsEncoding();
    void aStoppedJournalIsSaidInTheStatusBar();

private:
    /// A window types into a page and is killed: its journal is there and nobody holds it.
    void leave(const QString &file, const QByteArray &content, const QString &typed);
    void drive(const std::function<void(RecoveryDialog &)> &run);

    std::unique_ptr<QTemporaryDir> mFolder;
    QString mRecovery;
    int mLeft = 0;
};

namespace {

void settle(MainWindow &window)
{
    for (int i = 0; i < 5 || (i < 1000 && window.control().Loading()); ++i) QApplication::processEvents();
}

void typeInto(MainWindow &window, const QString &text)
{
    window.show();
    QApplication::setActiveWindow(&window);
    settle(window);
    window.control().SetFocusEx();
    QVERIFY(QApplication::focusWidget());
    QTest::keyClicks(QApplication::focusWidget(), text);
    settle(window);
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden);
}

QList<MainWindow *> otherWindows(MainWindow &window)
{
    QList<MainWindow *> others;
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (auto *other = qobject_cast<MainWindow *>(widget); other && other != &window) others << other;
    return others;
}

} // namespace

void tst_vellumPadRecovery::initTestCase()
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void tst_vellumPadRecovery::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    support::SettingsStore::instance().setFolder(mFolder->filePath(QStringLiteral("settings")));
    mRecovery = mFolder->filePath(QStringLiteral("recovery"));
    RecoveryJournal::setFolder(mRecovery);
}

void tst_vellumPadRecovery::leave(const QString &file, const QByteArray &content, const QString &typed)
{
    const QString name = mFolder->filePath(file);
    QFile page(name);
    QVERIFY(page.open(QFile::WriteOnly) && page.write(content) == content.size());
    page.close();
    const QString passing = mFolder->filePath(QStringLiteral("passing"));
    RecoveryJournal::setFolder(passing);
    {
        MainWindow window;
        QVERIFY(window.openFile(name));
        settle(window);
        typeInto(window, typed);
        QCOMPARE(filesIn(passing).size(), 1);
        QDir().mkpath(mRecovery);
        const QString left = QStringLiteral("%1/%2.journal").arg(mRecovery).arg(++mLeft);
        QVERIFY(QFile::copy(passing + u'/' + filesIn(passing)[0], left));
        QFile times(left); // the order in which they are shown
        QVERIFY(times.open(QFile::ReadWrite));
        QVERIFY(times.setFileTime(QDateTime::currentDateTime().addSecs(-1000 + mLeft), QFile::FileModificationTime));
    }
    QCOMPARE(filesIn(passing), QStringList());
    RecoveryJournal::setFolder(mRecovery);
}

/// What somebody does in the dialog that comes.
void tst_vellumPadRecovery::drive(const std::function<void(RecoveryDialog &)> &run)
{
    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [timer, run] {
        auto *dialog = qobject_cast<RecoveryDialog *>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible()) return;
        timer->deleteLater();
        timer->stop();
        QApplication::setActiveWindow(dialog); // there is no window system to do it
        run(*dialog);
        if (dialog->isVisible()) dialog->reject();
    });
    timer->start(0);
}

void tst_vellumPadRecovery::everyWindowKeepsAJournalUntilItIsSaved()
{
    MainWindow window;
    QFile page(mFolder->filePath(QStringLiteral("a.html")));
    QVERIFY(page.open(QFile::WriteOnly) && page.write("<p>Page</p>") > 0);
    page.close();
    QVERIFY(window.openFile(page.fileName()));
    settle(window);
    QCOMPARE(filesIn(mRecovery), QStringList());
    typeInto(window, QStringLiteral("abc"));
    QCOMPARE(filesIn(mRecovery).size(), 1);
    QVERIFY(window.saveFile(page.fileName()));
    QCOMPARE(filesIn(mRecovery), QStringList());
    typeInto(window, QStringLiteral("d"));
    QCOMPARE(filesIn(mRecovery).size(), 1);
}

void tst_vellumPadRecovery::nothingLeftAsksNothing()
{
    MainWindow window;
    bool came = false;
    drive([&came](RecoveryDialog &) { came = true; });
    offerRecovery(window);
    QApplication::processEvents();
    QVERIFY(!came);
    qDeleteAll(findChildren<QTimer *>());
}

void tst_vellumPadRecovery::aDocumentIsOfferedAndRecovered()
{
    leave(QStringLiteral("a.html"), "<p>Page</p>", QStringLiteral("abc"));
    MainWindow window;
    settle(window);
    drive([this](RecoveryDialog &dialog) {
        auto *list = dialog.findChild<QListWidget *>(QStringLiteral("Documents"));
        QCOMPARE(list->count(), 1);
        QVERIFY(list->item(0)->text().startsWith(QStringLiteral("a.html")));
        QVERIFY(list->item(0)->text().contains(
            QLocale().toString(QDateTime::currentDateTime().addSecs(-1000 + mLeft).date(), QLocale::ShortFormat)));
        QCOMPARE(dialog.findChild<QPlainTextEdit *>(QStringLiteral("Preview"))->toPlainText(), QStringLiteral("abcPage"));
        QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("Place"))->text(), mFolder->filePath(QStringLiteral("a.html")));
        dialog.findChild<QPushButton *>(QStringLiteral("Recover"))->click();
        QVERIFY(!dialog.isVisible()); // nothing is left to decide
    });
    offerRecovery(window);
    settle(window);
    QVERIFY(window.control().DocumentHTML().contains(QStringLiteral("abcPage")));
    QCOMPARE(window.fileName(), mFolder->filePath(QStringLiteral("a.html")));
    QVERIFY(window.isWindowModified());
    QCOMPARE(filesIn(mRecovery).size(), 1); // until it is saved
    QVERIFY(window.saveFile(window.fileName()));
    QCOMPARE(filesIn(mRecovery), QStringList());
}

void tst_vellumPadRecovery::eachDocumentGetsItsWindow()
{
    leave(QStringLiteral("a.html"), "<p>Page</p>", QStringLiteral("abc"));
    leave(QStringLiteral("b.html"), "<p>Other</p>", QStringLiteral("def"));
    MainWindow window;
    settle(window);
    drive([](RecoveryDialog &dialog) {
        auto *list = dialog.findChild<QListWidget *>(QStringLiteral("Documents"));
        QCOMPARE(list->count(), 2);
        QVERIFY(list->item(0)->text().startsWith(QStringLiteral("b.html"))); // the younger first
        dialog.findChild<QPushButton *>(QStringLiteral("Recover"))->click();
        QCOMPARE(list->count(), 1);
        QVERIFY(dialog.isVisible());
        dialog.findChild<QPushButton *>(QStringLiteral("Recover"))->click();
        QVERIFY(!dialog.isVisible());
    });
    offerRecovery(window);
    settle(window);
    QVERIFY(window.control().DocumentHTML().contains(QStringLiteral("defOther")));
    const QList<MainWindow *> others = otherWindows(window);
    QCOMPARE(others.size(), 1);
    settle(*others[0]);
    QVERIFY(others[0]->isVisible());
    QVERIFY(others[0]->control().DocumentHTML().contains(QStringLiteral("abcPage")));
    delete others[0];
}

void tst_vellumPadRecovery::discardingRemovesOne()
{
    leave(QStringLiteral("a.html"), "<p>Page</p>", QStringLiteral("abc"));
    leave(QStringLiteral("b.html"), "<p>Other</p>", QStringLiteral("def"));
    MainWindow window;
    drive([](RecoveryDialog &dialog) { dialog.findChild<QPushButton *>(QStringLiteral("Discard"))->click(); });
    offerRecovery(window);
    QCOMPARE(filesIn(mRecovery).size(), 1);
    QVERIFY(FoundJournal::find().at(0).documentName().endsWith(QStringLiteral("a.html")));
    QVERIFY(!window.isWindowModified());
}

void tst_vellumPadRecovery::decidingLaterKeepsAll()
{
    leave(QStringLiteral("a.html"), "<p>Page</p>", QStringLiteral("abc"));
    MainWindow window;
    drive([](RecoveryDialog &dialog) { dialog.findChild<QPushButton *>(QStringLiteral("Later"))->click(); });
    offerRecovery(window);
    QCOMPARE(FoundJournal::find().size(), size_t(1));
    QVERIFY(!window.isWindowModified());
}

void tst_vellumPadRecovery::theKeyboardIsEnough()
{
    leave(QStringLiteral("a.html"), "<p>Page</p>", QStringLiteral("abc"));
    leave(QStringLiteral("b.html"), "<p>Other</p>", QStringLiteral("def"));
    MainWindow window;
    settle(window);
    drive([](RecoveryDialog &dialog) {
        auto *list = dialog.findChild<QListWidget *>(QStringLiteral("Documents"));
        QVERIFY(list->hasFocus());
        // Tab goes round through everything, also out of the preview.
        QSet<QString> seen;
        for (int i = 0; i < 8; ++i) {
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
            seen << dialog.focusWidget()->objectName();
        }
        for (const char *name : {"Documents", "Preview", "Recover", "Discard", "Later"})
            QVERIFY2(seen.contains(QLatin1String(name)), name);
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Down);
        QCOMPARE(dialog.findChild<QPlainTextEdit *>(QStringLiteral("Preview"))->toPlainText(), QStringLiteral("abcPage"));
        QTest::keyClick(list, Qt::Key_Return); // the safe one of the two
        QCOMPARE(list->count(), 1);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
    });
    offerRecovery(window);
    settle(window);
    QVERIFY(window.control().DocumentHTML().contains(QStringLiteral("abcPage")));
    QCOMPARE(FoundJournal::find().size(), size_t(1));
}

void tst_vellumPadRecovery::whatCannotBeReadIsShownWithItsReason()
{
    QVERIFY(QDir().mkpath(mRecovery));
    QFile file(mRecovery + QStringLiteral("/x.journal"));
    QVERIFY(file.open(QFile::WriteOnly) && file.write("a letter to somebody") > 0);
    file.close();
    MainWindow window;
    drive([](RecoveryDialog &dialog) {
        QVERIFY(dialog.findChild<QPlainTextEdit *>(QStringLiteral("Preview"))
                    ->toPlainText()
                    .contains(QStringLiteral("is not a recovery journal")));
        QVERIFY(!dialog.findChild<QPushButton *>(QStringLiteral("Recover"))->isEnabled());
    });
    offerRecovery(window);
    QCOMPARE(filesIn(mRecovery), QStringList{QStringLiteral("x.journal.aside")});
}

void tst_vellumPadRecovery::aRecoveredFileKeepsItsEncoding()
{
    leave(QStringLiteral("a.html"), "<meta charset=windows-1252><p>P\xe4ge</p>\n", QStringLiteral("abc"));
    MainWindow window;
    settle(window);
    drive([](RecoveryDialog &dialog) { dialog.findChild<QPushButton *>(QStringLiteral("Recover"))->click(); });
    offerRecovery(window);
    settle(window);
    QVERIFY(window.saveFile(window.fileName()));
    QFile file(window.fileName());
    QVERIFY(file.open(QFile::ReadOnly));
    QVERIFY(file.readAll().contains("abcP\xe4ge"));
}

void tst_vellumPadRecovery::aStoppedJournalIsSaidInTheStatusBar()
{
    RecoveryJournal::setFolder(QStringLiteral("/dev/null/recovery"));
    MainWindow window;
    settle(window);
    QCOMPARE(window.statusBar()->currentMessage(), QString());
    typeInto(window, QStringLiteral("abc"));
    QVERIFY(window.statusBar()->currentMessage().contains(QStringLiteral("recovery journal")));
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(window.control().DocumentHTML().contains(QStringLiteral("abc")));
}

QTEST_MAIN(tst_vellumPadRecovery)
#include "tst_vellumPadRecovery.moc"
