// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/FoundJournal.h"
#include "control/RecoveryJournal.h"
#include "control/Vellum5.h"
#include "engine/dom/Document.h"
#include "platform/CodeMax.h"
#include "support/SettingsStore.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

/// A process types and tells after each word what its document holds; it is killed at a random moment. What it has told
/// must come back, and nothing but what it typed.
class tst_recoveryKill : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void nothingThatWasToldIsLost_data();
    void nothingThatWasToldIsLost();
    void aCrashByScriptIsFoundByTheNextOne();

private:
    QTemporaryDir mSettings;
    QRandomGenerator mRandom;
};

namespace {

const QString program = QStringLiteral(BINARY_DIR "/bin/vellumpad");

/// Words of letters that stand nowhere else in the page, so that what came back can be told by them alone.
QStringList words(int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i) list << QStringLiteral("w%1.").arg(i, 4, 10, QLatin1Char('0'));
    return list;
}

QString startOf(const QString &view)
{
    QString script = QStringLiteral("journal on\n"
                                    "html <html><head></head><body><p>Beginning</p><p>Second</p></body></html>\n"
                                    "journal name /pages/killed.html\n");
    script += QStringLiteral("view ") + view + u'\n';
    script += view == QLatin1String("visual") ? QStringLiteral("focus visual\nkey Ctrl+Home\n")
                                              : QStringLiteral("focus source\nkey Ctrl+Home\n");
    return script;
}

/// What was typed, as far as it stands without a gap.
QString typedIn(const QString &text)
{
    const qsizetype from = text.indexOf(QStringLiteral("w0000"));
    if (from < 0) return {};
    qsizetype to = from;
    while (to < text.size() && (text[to].isDigit() || text[to] == u'w' || text[to] == u'.')) ++to;
    return text.mid(from, to - from);
}

} // namespace

void tst_recoveryKill::initTestCase()
{
    support::SettingsStore::instance().setFolder(mSettings.path());
    const quint32 seed =
        qEnvironmentVariableIsSet("VELLUM_SEED") ? qEnvironmentVariable("VELLUM_SEED").toUInt() : QRandomGenerator::global()->generate();
    qInfo("seed %u (VELLUM_SEED=%u runs it again)", seed, seed);
    mRandom.seed(seed);
}

void tst_recoveryKill::nothingThatWasToldIsLost_data()
{
    QTest::addColumn<QString>("view");
    const int rounds = qEnvironmentVariableIsSet("VELLUM_LONG") ? 20 : 3;
    for (int i = 0; i < rounds; ++i)
        for (const char *view : {"visual", "source"}) QTest::addRow("%s %d", view, i + 1) << QString::fromLatin1(view);
}

void tst_recoveryKill::nothingThatWasToldIsLost()
{
    QFETCH(QString, view);
    QTemporaryDir settings;
    const QStringList list = words(400);
    QString script = startOf(view);
    for (const QString &word : list) script += QStringLiteral("type %1\necho told %1\n").arg(word);
    script += QStringLiteral("wait 1\n");

    QProcess child;
    child.start(program, {"--script", "-", "--settings", settings.path()});
    QVERIFY(child.waitForStarted());
    child.write(script.toUtf8());
    child.closeWriteChannel();
    const int killAfter = mRandom.bounded(1, 300); // told words
    QElapsedTimer clock;
    auto count = [&child, out = QByteArray()]() mutable {
        out += child.readAllStandardOutput();
        return int(out.count(".\n")); // whole lines
    };
    while (count() < killAfter && child.state() != QProcess::NotRunning) child.waitForReadyRead(1000);
    // And a little later, in the middle of whatever it does.
    clock.start();
    for (const qint64 microseconds = mRandom.bounded(3000); clock.nsecsElapsed() / 1000 < microseconds;) {
    }
    QCOMPARE(::kill(pid_t(child.processId()), SIGKILL), 0);
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);
    const int words = count();
    QVERIFY(words >= killAfter);
    QVERIFY2(words < list.size(), "the child had ended before it was killed");

    RecoveryJournal::setFolder(settings.filePath(QStringLiteral("recovery")));
    std::vector<FoundJournal> found = FoundJournal::find();
    QCOMPARE(found.size(), size_t(1));
    QVERIFY2(found[0].isReadable(), qPrintable(found[0].problem()));
    QCOMPARE(found[0].documentName(), QStringLiteral("/pages/killed.html"));
    const QString foundText = found[0].text();
    Vellum5 control;
    control.show();
    QVERIFY(found[0].recover(control));
    QTRY_VERIFY(!control.Loading() && !control.VisualEditControl()->isLoading());
    QCOMPARE(control.EditView(), view == QLatin1String("visual") ? 0 : 1);
    const QString text = control.DocumentHTML();
    QCOMPARE(text, foundText);
    const QString typed = typedIn(text);
    const QString all = list.join(QString());
    QVERIFY2(all.startsWith(typed), qPrintable(typed.right(40)));
    QVERIFY2(typed.size() >= words * list[0].size(),
             qPrintable(QStringLiteral("%1 words were told, %2 characters came back").arg(words).arg(typed.size())));
    // The rest is what it was.
    QString rest = text;
    rest.remove(typed);
    QCOMPARE(rest.count(QStringLiteral("Beginning")), 1);
    QCOMPARE(rest.count(QStringLiteral("Second")), 1);
    QVERIFY(!rest.contains(QStringLiteral("w0")));
    control.Recovery().documentSaved();
    QCOMPARE(QDir(RecoveryJournal::folder()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void tst_recoveryKill::aCrashByScriptIsFoundByTheNextOne()
{
    QTemporaryDir settings;
    const auto run = [&settings](const QString &script) {
        QProcess child;
        child.start(program, {"--script", "-", "--settings", settings.path()});
        child.write(script.toUtf8());
        child.closeWriteChannel();
        child.waitForFinished();
        return QString::fromUtf8(child.readAllStandardOutput() + child.readAllStandardError());
    };
    run(startOf(QStringLiteral("visual")) + QStringLiteral("type abc\nkey Return\nundo\ncrash\n"));
    QCOMPARE(run(QStringLiteral("journal files\njournal find\njournal recover 1\nprint body\njournal files\ncheck\n"
                                "journal saved\njournal files\n")),
             QStringLiteral("1\n/pages/killed.html | abcBeginning Second\n<P>abcBeginning</P><P>Second</P>\n1\n0\n"));
    // Without having been asked, a crash leaves nothing.
    run(QStringLiteral("html <p>x\ntype abc\ncrash\n"));
    QCOMPARE(run(QStringLiteral("journal files\n")), QStringLiteral("0\n"));
}

QTEST_MAIN(tst_recoveryKill)
#include "tst_recoveryKill.moc"
