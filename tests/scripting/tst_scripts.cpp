// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDir>
#include <QProcess>
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
    const Result result = run("pdf x.pdf\n");
    QCOMPARE(result.status, 1);
    QVERIFY(result.error.contains("-:1: not available yet"));
}

void tst_scripts::aCrashEndsAtOnce()
{
    const Result result = run("echo a\ncrash\necho b\n");
    QCOMPARE(result.out, QString("a\n"));
    QVERIFY(result.status != 0);
}

QTEST_GUILESS_MAIN(tst_scripts)
#include "tst_scripts.moc"
