// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"
#include "support/SettingsStore.h"

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// What happens once, when the library starts in a process. So each case is a process of its own: this program again,
// with the settings' folder in its environment.

static constexpr char folderVariable[] = "VELLUM_TEST_SETTINGS";

/// Whether formatting is on: as the start left it, and behind a control that runs.
static QByteArray stateOfFormatting()
{
    struct Designer final : HostContainer {
        bool UserMode() const override { return false; }
        bool Visible() const override { return true; }
        void PropertyChanged(const QString &) override {}
    } designer;
    PropertyBag bag;
    Vellum5 designed(bag, nullptr, &designer); // starts the library, and nothing else
    QByteArray state = designed.AutoFormatHTML() ? "on" : "off";
    Vellum5 running;
    state += designed.AutoFormatHTML() ? " on" : " off";
    running.Terminate();
    designed.Terminate();
    return state;
}

class tst_start : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void formattingStartsAsTheApplicationLeftIt_data()
    {
        QTest::addColumn<QString>("application");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QByteArray>("state");
        // A control that runs switches it on, whatever was stored.
        QTest::newRow("switched off") << "VellumPad" << "False" << QByteArray("off on");
        QTest::newRow("switched on") << "VellumPad" << "True" << QByteArray("on on");
        QTest::newRow("another spelling") << "VellumPad" << "false" << QByteArray("on on");
        QTest::newRow("a number") << "VellumPad" << "0" << QByteArray("on on");
        QTest::newRow("never stored") << "VellumPad" << QString() << QByteArray("on on");
        QTest::newRow("another application") << "BrimVellumPad" << "False" << QByteArray("on on");
    }
    void formattingStartsAsTheApplicationLeftIt()
    {
        QFETCH(QString, application);
        QFETCH(QString, stored);
        QTemporaryDir folder;
        support::SettingsStore &store = support::SettingsStore::instance();
        store.setFolder(folder.path());
        const QString key = "Software\\Brimfield\\" + application;
        if (!stored.isNull()) store.write(support::SettingsRoot::CurrentUser, key, "AutoFormatHTML", stored);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(folderVariable, folder.path());
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), QStringList());
        QVERIFY(process.waitForFinished(120000));
        QCOMPARE(process.exitCode(), 0);
        QTEST(process.readAllStandardOutput().trimmed(), "state");
    }
};

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QString folder = qEnvironmentVariable(folderVariable);
    if (!folder.isEmpty()) {
        support::SettingsStore::instance().setFolder(folder);
        std::printf("%s\n", stateOfFormatting().constData());
        return 0;
    }
    tst_start test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_start.moc"
