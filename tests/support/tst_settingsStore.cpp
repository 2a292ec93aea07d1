// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "support/SettingsStore.h"
#include "support/WindowPositionStore.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>
#include <thread>

using namespace support;

namespace {

constexpr auto user = SettingsRoot::CurrentUser;
constexpr auto machine = SettingsRoot::LocalMachine;
const QString pad = QStringLiteral("Software\\Brimfield\\VellumPad");

/// What the writing processes and threads do.
void writeMany(const QString &folder, const QString &prefix, int count)
{
    SettingsStore store(folder);
    for (int i = 0; i < count; ++i)
        store.write(user, pad, prefix + QString::number(i), QString::number(i));
}

QString filesOf(const QString &folder, const QString &pattern)
{
    return QDir(folder + "/CurrentUser").entryList({pattern}, QDir::Files).join(' ');
}

} // namespace

class tst_settingsStore : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void valuesAreFoundWhateverTheirCase()
    {
        QTemporaryDir folder;
        SettingsStore store(folder.path());
        QVERIFY(!store.find(user, pad, "Name"));
        store.write(user, pad, "Name", "one");
        QCOMPARE(store.read(user, "SOFTWARE\\brimfield\\vellumpad", "NAME"), "one");
        store.write(user, "software\\BRIMFIELD\\Vellumpad", "nAME", "two");
        QCOMPARE(SettingsStore(folder.path()).read(user, pad, "Name"), "two");
        QCOMPARE(store.valueNames(user, pad), QStringList("Name"));
        QCOMPARE(store.subKeys(user, "Software\\brimfield"), QStringList("VellumPad"));
        QCOMPARE(store.subKeys(user, ""), QStringList("Software"));
    }

    void theRootsAreApart()
    {
        QTemporaryDir folder;
        SettingsStore store(folder.path());
        store.write(user, "Software\\Brimfield", "X", "user");
        QCOMPARE(store.read(machine, "Software\\Brimfield", "X", "none"), "none");
        store.write(machine, "Software\\Brimfield", "X", "machine");
        QCOMPARE(store.read(user, "Software\\Brimfield", "X"), "user");
        QCOMPARE(store.read(machine, "Software\\Brimfield", "X"), "machine");
        QCOMPARE(SettingsStore::rootByName("hkcu"), user);
        QCOMPARE(SettingsStore::rootByName("HKEY_LOCAL_MACHINE"), machine);
        QVERIFY(!SettingsStore::rootByName("HKCR"));
    }

    void anyTextSurvives_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString("");
        QTest::newRow("lines") << QString("a\r\nb\n[c]\r# d\n");
        QTest::newRow("signs") << QString("=\"'\\ \\u0041 @;");
        QTest::newRow("zero") << QString::fromLatin1("a\0b", 3);
        QTest::newRow("unicode") << QString::fromUtf8("\xc3\xa9 \xf0\x9f\x99\x82 \xe2\x80\xa8 \xef\xbb\xbf");
        QTest::newRow("lone surrogates") << QString(QChar(0xD800)) + "x" + QChar(0xDC00);
        QTest::newRow("long") << QString(300000, 'x');
    }
    void anyTextSurvives()
    {
        QFETCH(QString, text);
        QTemporaryDir folder;
        SettingsStore store(folder.path());
        store.write(user, pad, text, text);
        store.write(user, pad + "\\" + QString(text).remove('\\') + "k", "", text);
        SettingsStore again(folder.path());
        QCOMPARE(again.find(user, pad, text), std::optional<QString>(text));
        QCOMPARE(again.find(user, pad + "\\" + QString(text).remove('\\') + "k", ""), std::optional<QString>(text));
    }

    void keysAreMadeAndDeletedWithAllBelow()
    {
        QTemporaryDir folder;
        SettingsStore store(folder.path());
        store.createKey(user, "AppEvents\\Schemes\\.current");
        QVERIFY(store.keyExists(user, "appevents\\schemes"));
        QVERIFY(!store.find(user, "AppEvents\\Schemes\\.current", ""));
        store.write(user, "AppEvents\\Schemes\\.current", "", "sound");
        store.write(user, "AppEvents\\SchemesToo", "", "kept");
        QCOMPARE(store.read(user, "AppEvents\\Schemes\\.current", ""), "sound");
        store.deleteValue(user, "AppEvents\\Schemes\\.current", "");
        QVERIFY(!store.find(user, "AppEvents\\Schemes\\.current", ""));
        store.deleteKey(user, "AppEvents\\SCHEMES");
        QVERIFY(!store.keyExists(user, "AppEvents\\Schemes\\.current"));
        QCOMPARE(store.subKeys(user, "AppEvents"), QStringList("SchemesToo"));
        store.deleteKey(user, "Nothing\\There");
    }

    void namesOfKeysDoNotLeadOutOfTheFolder()
    {
        QTemporaryDir folder;
        SettingsStore store(folder.path() + "/store");
        store.write(user, "../../..\\x", "n", "v");
        store.write(user, "a/b", "n", "w");
        QCOMPARE(SettingsStore(folder.path() + "/store").read(user, "../../..\\x", "n"), "v");
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("store"));
        QCOMPARE(store.subKeys(user, "").size(), 2);
    }

    void oneStoreSeesWhatAnotherWrites()
    {
        QTemporaryDir folder;
        SettingsStore one(folder.path()), other(folder.path());
        for (int i = 0; i < 50; ++i) {
            one.write(user, pad, "n", QString::number(i % 10));
            QCOMPARE(other.read(user, pad, "n"), QString::number(i % 10));
        }
    }

    void threadsThatWriteAtOnceLoseNothing()
    {
        QTemporaryDir folder;
        std::thread a([&] { writeMany(folder.path(), "a", 40); });
        std::thread b([&] { writeMany(folder.path(), "b", 40); });
        a.join();
        b.join();
        QCOMPARE(SettingsStore(folder.path()).valueNames(user, pad).size(), 80);
    }

    void processesThatWriteAtOnceLoseNothing()
    {
        QTemporaryDir folder;
        QProcess a, b;
        a.start(QCoreApplication::applicationFilePath(), {"--write", folder.path(), "a"});
        b.start(QCoreApplication::applicationFilePath(), {"--write", folder.path(), "b"});
        QVERIFY(a.waitForFinished() && b.waitForFinished());
        QCOMPARE(a.exitCode(), 0);
        QCOMPARE(b.exitCode(), 0);
        SettingsStore store(folder.path());
        for (int i = 0; i < 60; ++i) {
            QCOMPARE(store.read(user, pad, "a" + QString::number(i)), QString::number(i));
            QCOMPARE(store.read(user, pad, "b" + QString::number(i)), QString::number(i));
        }
        QVERIFY(filesOf(folder.path(), "*.damaged*").isEmpty());
    }

    void aDamagedFileIsKeptAsideAndItsReadablePartStays()
    {
        QTemporaryDir folder;
        {
            SettingsStore store(folder.path());
            store.write(user, pad, "a", "1");
            store.write(user, pad, "b", "2");
        }
        const QString path = folder.path() + "/CurrentUser/software.settings";
        QFile file(path);
        QVERIFY(file.open(QIODevice::Append));
        file.write("\"c\"=\"cut off\n\xff\xfe\n[\"\n\"d\"=\"4\"\n");
        file.close();
        SettingsStore store(folder.path());
        QCOMPARE(store.read(user, pad, "b"), "2");
        QVERIFY(!store.find(user, pad, "d"));
        store.write(user, pad, "e", "5");
        QCOMPARE(filesOf(folder.path(), "*.damaged*"), "software.settings.damaged");
        SettingsStore again(folder.path());
        QCOMPARE(again.valueNames(user, pad), QStringList({"a", "b", "e"}));
    }

    void aStoreThatCannotBeWrittenSaysSo()
    {
        QTemporaryDir folder;
        QFile file(folder.path() + "/file");
        QVERIFY(file.open(QIODevice::WriteOnly));
        SettingsStore store(file.fileName() + "/store");
        QVERIFY_EXCEPTION_THROWN(store.write(user, pad, "a", "1"), base::Error);
        QVERIFY_EXCEPTION_THROWN(store.write(user, "", "a", "1"), base::Error);
        QCOMPARE(store.read(user, pad, "a", "none"), "none");
    }

    void windowsComeBackWhereTheyStood()
    {
        QTemporaryDir folder;
        const QString before = SettingsStore::instance().folder();
        SettingsStore::instance().setFolder(folder.path());
        WindowPositionStore positions;
        QWidget window;
        window.setGeometry(30, 40, 320, 210);
        positions.save("frmOne", window);
        QVERIFY(!positions.restore("frmOne", window));
        positions.setRootKey("Software\\Brimfield\\Vellum");
        QVERIFY(!positions.restore("frmOne", window));
        positions.save("frmOne", window);
        QCOMPARE(SettingsStore::instance().read(user, "Software\\Brimfield\\Vellum\\frmOne", "Width"), "320");
        QWidget other;
        QVERIFY(positions.restore("frmOne", other));
        QCOMPARE(other.geometry(), QRect(30, 40, 320, 210));
        SettingsStore::instance().write(user, "Software\\Brimfield\\Vellum\\frmOne", "Left", "99999");
        QVERIFY(positions.restore("frmOne", other));
        QVERIFY(other.screen()->geometry().contains(other.geometry()));
        SettingsStore::instance().setFolder(before);
    }
};

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == "--write") {
        writeMany(arguments.value(2), arguments.value(3), 60);
        return 0;
    }
    tst_settingsStore test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_settingsStore.moc"
