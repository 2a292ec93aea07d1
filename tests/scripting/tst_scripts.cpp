// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

/// Runs every script of `tests/data/scripts` against VellumPad, each in a process of its own: what a host sees.
class tst_scripts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void script_data();
    void script();
    void aFailedExpectationEndsTheRunWithItsLine();
    void unbuiltVerbsSaySo();
    void aCrashEndsAtOnce();
    void failuresNameTheFileAndTheCommandsFirstLine();
    void foldersThatWereGivenStay();
    void freshFoldersGo();
    void nothingIsSaidBesidesFailures();
    void aWrongCallIsNoFailedCommand();

private:
    struct Result {
        int status;
        QString out;
        QString error;
    };
    Result run(const QString &text, const QStringList &more = {});
};

static const QString program = QStringLiteral(BINARY_DIR "/bin/vellumpad");

tst_scripts::Result tst_scripts::run(const QString &text, const QStringList &more)
{
    QProcess process;
    process.start(program, QStringList{"--script", "-"} + more);
    process.write(text.toUtf8());
    process.closeWriteChannel();
    process.waitForFinished(120000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

void tst_scripts::script_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(QStringLiteral(SOURCE_DIR "/tests/data/scripts"));
    for (const QString &name : folder.entryList({"*.script"}, QDir::Files))
        QTest::newRow(qPrintable(name)) << folder.filePath(name);
}

void tst_scripts::script()
{
    QFETCH(QString, file);
    QProcess process;
    process.start(program, {"--script", file, "--keep-going"});
    QVERIFY(process.waitForFinished(120000));
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0, errors.constData());
}

void tst_scripts::aFailedExpectationEndsTheRunWithItsLine()
{
    const QString text = "echo a\n\nexpect b\necho c\n";
    Result result = run(text);
    QCOMPARE(result.status, 1);
    QCOMPARE(result.out, QString("a\n"));
    QVERIFY(result.error.contains("-:3: "));
    result = run(text, {"--keep-going"});
    QCOMPARE(result.status, 1);
    QCOMPARE(result.out, QString("a\nc\n"));
}

void tst_scripts::unbuiltVerbsSaySo()
{
    const Result result = run("spell on\n");
    QCOMPARE(result.status, 1);
    QVERIFY(result.error.contains("-:1: not available yet"));
}

void tst_scripts::aCrashEndsAtOnce()
{
    const Result result = run("echo a\ncrash\necho b\n");
    QCOMPARE(result.out, QString("a\n"));
    QVERIFY(result.status != 0);
}

void tst_scripts::failuresNameTheFileAndTheCommandsFirstLine()
{
    const Result result = run("# a\n\n  nonsense\necho <<E\na\nb\nE\nget Nothing\n", {"--keep-going"});
    QCOMPARE(result.status, 1);
    QCOMPARE(result.out, QString("a\nb\n"));
    const QStringList lines = result.error.split('\n');
    QCOMPARE(lines.size(), qsizetype(3));
    QVERIFY2(lines[0].startsWith("-:3: ") && lines[0].contains("nonsense"), qPrintable(lines[0]));
    QVERIFY2(lines[1].startsWith("-:8: ") && lines[1].contains("Nothing"), qPrintable(lines[1]));
    QTemporaryDir folder;
    QFile file(folder.filePath("ä b.script"));
    QVERIFY(file.open(QFile::WriteOnly));
    file.write("\xEF\xBB\xBF" "echo ä\r\nexpect ä\r\nnonsense\r\n");
    file.close();
    QProcess process;
    process.start(program, {"--script", file.fileName()});
    QVERIFY(process.waitForFinished(120000));
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8("ä\n"));
    QVERIFY(QString::fromUtf8(process.readAllStandardError()).startsWith(file.fileName() + ":3: "));
}

void tst_scripts::foldersThatWereGivenStay()
{
    QTemporaryDir settings, files;
    const QStringList options{"--settings", settings.path(), "--files", files.path()};
    QCOMPARE(run("setting set HKCU\\Software\\A b c\nwrite x/y.txt z\necho $DIR\nexpect " + files.path(), options).status, 0);
    QCOMPARE(run("setting get HKCU\\Software\\A b\nexpect c\nread x/y.txt\nexpect z\n", options).status, 0);
    // Without them, nothing is there.
    QCOMPARE(run("setting get HKCU\\Software\\A b\nexpect\nfails read x/y.txt\n").status, 0);
}

void tst_scripts::freshFoldersGo()
{
    const Result result = run("write a.txt b\necho $DIR\n");
    QCOMPARE(result.status, 0);
    const QString folder = result.out.trimmed();
    QVERIFY(!folder.isEmpty());
    QVERIFY(!QFileInfo::exists(folder));
}

void tst_scripts::nothingIsSaidBesidesFailures()
{
    QProcess process;
    process.setProcessEnvironment(QProcessEnvironment()); // no session, no language
    process.start(program, {"--script", "-"});
    process.write("hide\nshow\nsize 300 200\nhtml <P>\xC3\xA4</P>\nview source\nnew\nsecond echo \xC3\xA4\n");
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(120000));
    QCOMPARE(QString::fromUtf8(process.readAllStandardError()), QString());
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8("ä\n"));
    QCOMPARE(process.exitCode(), 0);
}

void tst_scripts::aWrongCallIsNoFailedCommand()
{
    QCOMPARE(run("echo a\n", {"--nonsense"}).status, 2);
    QProcess process;
    process.start(program, {"--script", "/no/such/file.script"});
    QVERIFY(process.waitForFinished(120000));
    QCOMPARE(process.exitCode(), 2);
    QVERIFY(QString::fromUtf8(process.readAllStandardError()).contains("/no/such/file.script"));
}

QTEST_GUILESS_MAIN(tst_scripts)
#include "tst_scripts.moc"
