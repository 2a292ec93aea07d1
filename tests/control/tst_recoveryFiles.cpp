// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "engine/changes/Journal.h"
#include "engine/changes/JournalFile.h"
#include "support/FailureReport.h"
#include "support/SettingsStore.h"
#include "tests/control/RecoveryEditor.h"

#include <QSignalSpy>
#include <sys/resource.h>

using namespace recovery;

/// When a journal's file is there, and what happens in trouble.
class tst_recoveryFiles : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

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

void tst_recoveryFiles::initTestCase()
{
    support::SettingsStore::instance().setFolder(mSettings.path());
    support::setFailurePresenter([this](const support::FailureReport &report) {
        ++mReports;
        qWarning("%s", qPrintable(report.description));
    });
}

void tst_recoveryFiles::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    RecoveryJournal::setFolder(mFolder->filePath(QStringLiteral("recovery")));
    mReports = 0;
}

void tst_recoveryFiles::cleanup()
{
    QCOMPARE(mReports, 0);
}

// The end of a journal

void tst_recoveryFiles::aSaveRemovesTheFile()
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

void tst_recoveryFiles::savingThroughTheControlRemovesTheFile()
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

void tst_recoveryFiles::closingRemovesTheFile()
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

void tst_recoveryFiles::anotherTextRemovesTheFile()
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

void tst_recoveryFiles::switchingOffRemovesTheFile()
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

void tst_recoveryFiles::twoControlsHaveAJournalEach()
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

void tst_recoveryFiles::aTornTailIsCutAndGoneOnWith()
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

void tst_recoveryFiles::whatCannotBeReadIsKeptAside_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("said");
    QTest::newRow("foreign") << QStringLiteral("foreign") << QStringLiteral("is not a recovery journal");
    QTest::newRow("empty") << QStringLiteral("empty") << QStringLiteral("is not a recovery journal");
    QTest::newRow("newer") << QStringLiteral("newer") << QStringLiteral("newer version");
    QTest::newRow("damaged") << QStringLiteral("damaged") << QStringLiteral("damaged");
}

void tst_recoveryFiles::whatCannotBeReadIsKeptAside()
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
    if (what == QLatin1String("newer")) bytes[8] = char(changes::JournalWriter::version + 1);
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
    QVERIFY(kept.open(QFile::ReadWrite) && kept.seek(8));
    QVERIFY(kept.putChar(char(changes::JournalWriter::version)));
    kept.close();
    QCOMPARE(FoundJournal::find().size(), size_t(1));
}

void tst_recoveryFiles::aFullDiskStopsTheJournalOnceAndNeverTheEditing()
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

void tst_recoveryFiles::aFolderThatCannotBeWrittenIsToldAtTheFirstEdit()
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

void tst_recoveryFiles::theDiskHasItAfterASecondOfQuiet()
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

void tst_recoveryFiles::theDiskHasItEveryFiveSecondsOfTyping()
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

QTEST_MAIN(tst_recoveryFiles)
#include "tst_recoveryFiles.moc"
