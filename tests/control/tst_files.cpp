// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"
#include "platform/FileHelper.h"
#include "support/FailureReport.h"
#include "support/SettingsStore.h"
#include "tests/control/ShownControl.h"

#include <QDir>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

/// Pages come from files and the network, and go back to files as they came.
class tst_files : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { mReports.clear(); }
    void cleanupTestCase() { support::setFailurePresenter({}); }
    void aFileKeepsWhatItHasBesideItsText_data();
    void aFileKeepsWhatItHasBesideItsText();
    void aPageThatCannotBeReadLeavesTheOldOne();
    void namesAreWrittenInManyWays();
    void pagesComeFromTheNetwork();
    void aPageOfTheNetworkIsNoFileToSave();

private:
    QString path(const char *name) const { return mFolder.filePath(QString::fromLatin1(name)); }
    QTemporaryDir mFolder, mSettings;
    QStringList mReports; ///< the procedures that failed
};

namespace {

struct Shown : ShownControl
{
    void load(const QString &name)
    {
        control.LoadFile(name);
        settle();
    }
    void typeAndSave()
    {
        control.VisualEditControl()->takeFocus();
        QTest::keyClick(control.VisualEditControl(), Qt::Key_Home, Qt::ControlModifier);
        QTest::keyClick(control.VisualEditControl(), 'Q');
        bool Cancel = false;
        control.SaveFile(Cancel, false);
    }
};

/// A page, the same in any encoding that has Latin letters with accents.
QString page(const QString &declaration, const QString &lineEnd)
{
    return QStringList{"<HTML><HEAD>" + declaration + "</HEAD>", QString::fromUtf8("<BODY><P>é</P>"), "<P>two</P>",
                       "</BODY></HTML>"}
        .join(lineEnd);
}

QByteArray utf16(const QString &text)
{
    QByteArray bytes("\xFF\xFE");
    for (const QChar c : text)
        bytes.append(char(c.unicode() & 0xFF)).append(char(c.unicode() >> 8));
    return bytes;
}

/// Answers each connection with the same bytes.
struct Server
{
    QTcpServer server;
    QByteArray answer;

    Server()
    {
        server.listen(QHostAddress::LocalHost);
        QObject::connect(&server, &QTcpServer::newConnection, &server, [this] {
            QTcpSocket *socket = server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                socket->write(answer);
                socket->disconnectFromHost();
            });
        });
    }
    QString url(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1").arg(server.serverPort()) + path;
    }
};

} // namespace

void tst_files::initTestCase()
{
    support::SettingsStore::instance().setFolder(mSettings.path());
    support::setFailurePresenter([this](const support::FailureReport &report) { mReports << report.procedure; });
}

void tst_files::aFileKeepsWhatItHasBesideItsText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("edited");
    const auto row = [](const char *name, const QByteArray &bytes, const QByteArray &before, const QByteArray &after) {
        QByteArray edited = bytes;
        edited.replace(before, after);
        QTest::newRow(name) << bytes << edited;
    };
    const QString utf8 = "<META charset=\"utf-8\">", latin = "<META charset=\"iso-8859-1\">";
    row("LF", page(utf8, "\n").toUtf8(), "<P>\xC3", "<P>Q\xC3");
    row("CR LF", page(utf8, "\r\n").toUtf8(), "<P>\xC3", "<P>Q\xC3");
    row("CR", page(utf8, "\r").toUtf8(), "<P>\xC3", "<P>Q\xC3");
    row("nothing declared", page("", "\n").toUtf8(), "<P>\xC3", "<P>Q\xC3");
    row("a mark", "\xEF\xBB\xBF" + page("", "\r\n").toUtf8(), "<P>\xC3", "<P>Q\xC3");
    row("a declared legacy encoding", page(latin, "\n").toLatin1(), "<P>\xE9", "<P>Q\xE9");
    row("a legacy encoding that nothing tells", page("", "\r\n").toLatin1(), "<P>\xE9", "<P>Q\xE9");
    QTest::newRow("two bytes") << utf16(page("", "\r\n"))
                               << utf16(page("", "\r\n").replace(QString::fromUtf8("<P>é"), QString::fromUtf8("<P>Qé")));
}

void tst_files::aFileKeepsWhatItHasBesideItsText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, edited);
    const QString name = path("kept.html");
    platform::FileHelper::writeBytes(name, bytes);
    Shown shown;
    shown.load(name);
    QCOMPARE(shown.control.DOM()->body()->innerText().left(1), QString(QChar(0xE9)));
    shown.typeAndSave();
    QCOMPARE(platform::FileHelper::readBytes(name), edited);
    // Going through the other views changes nothing more.
    shown.control.setEditView(int(EditViewEnum::hvSourceEdit));
    shown.settle();
    shown.control.setEditView(int(EditViewEnum::hvVisualEdit));
    shown.settle();
    shown.typeAndSave();
    const bool twoBytes = bytes.startsWith("\xFF\xFE");
    edited.replace(twoBytes ? QByteArray("Q\0", 2) : QByteArray("Q"), twoBytes ? QByteArray("Q\0Q\0", 4) : QByteArray("QQ"));
    QCOMPARE(platform::FileHelper::readBytes(name), edited);
}

void tst_files::aPageThatCannotBeReadLeavesTheOldOne()
{
    const QByteArray old = "\xEF\xBB\xBF<HTML><HEAD></HEAD><BODY><P>\xC3\xA9</P>\r\n</BODY></HTML>";
    platform::FileHelper::writeBytes(path("old.html"), old);
    Shown shown;
    shown.load(path("old.html"));
    const QString text = shown.control.DocumentHTML();
    shown.load("/proc/self/mem"); // there, and never readable from its start
    QCOMPARE(mReports, QStringList("LoadFile"));
    QCOMPARE(shown.control.DocumentHTML(), text);
    QCOMPARE(shown.control.BaseURL(), QString("file:///proc/self/"));
    shown.typeAndSave();
    QByteArray edited = old;
    edited.replace("<P>", "<P>Q");
    QCOMPARE(platform::FileHelper::readBytes(path("old.html")), edited);
}

void tst_files::namesAreWrittenInManyWays()
{
    QVERIFY(QDir(mFolder.path()).mkpath("sub folder"));
    const QString name = mFolder.filePath("sub folder/a.html"), folder = mFolder.filePath("sub folder/");
    platform::FileHelper::writeBytes(name, "<p>here");
    QString backslashed = name;
    backslashed.replace('/', '\\');
    for (const QString &written : {name, backslashed, backslashed.mid(1), "file://" + QString(name).replace(" ", "%20"),
                                   mFolder.filePath("sub folder/../sub folder/a.html")}) {
        Shown shown;
        shown.load(written);
        QCOMPARE(shown.control.DocumentHTML(), QString("<p>here"));
        QCOMPARE(shown.control.BaseURL(), "file://" + folder);
    }
}

void tst_files::pagesComeFromTheNetwork()
{
    Server server;
    server.answer = "HTTP/1.0 200 OK\r\nContent-Type: text/html; charset=koi8-r\r\n\r\n<p>\xC1";
    Shown shown;
    shown.load(server.url("/d/page.html?x"));
    QCOMPARE(shown.control.DocumentHTML(), QString::fromUtf8("<p>а"));
    QCOMPARE(shown.control.BaseURL(), server.url("/d/"));
    QCOMPARE(mReports, QStringList());
    // One that isn't there: the base has changed, the text hasn't.
    server.answer = "HTTP/1.0 404 Not Found\r\n\r\nsorry";
    shown.load(server.url("/e/page.html"));
    QCOMPARE(mReports, QStringList("LoadFile"));
    QCOMPARE(shown.control.DocumentHTML(), QString::fromUtf8("<p>а"));
    QCOMPARE(shown.control.BaseURL(), server.url("/e/"));
}

void tst_files::aPageOfTheNetworkIsNoFileToSave()
{
    Server server;
    server.answer = "HTTP/1.0 200 OK\r\nContent-Type: text/html\r\n\r\n<p>x";
    platform::FileHelper::writeBytes(path("file.html"), "<p>file");
    Shown shown;
    shown.load(path("file.html"));
    shown.load(server.url("/page.html"));
    shown.typeAndSave();
    QCOMPARE(mReports, QStringList("SaveFile"));
    QCOMPARE(platform::FileHelper::readBytes(path("file.html")), QByteArray("<p>file"));
    QVERIFY(shown.control.DocumentHTML().contains("<P>Qx</P>"));
}

QTEST_MAIN(tst_files)
#include "tst_files.moc"
