// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "platform/FileHelper.h"
#include "platform/HttpHelper.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

using namespace platform;

namespace {

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) qFatal("no test file");
}

QByteArray got(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

/// The number of the error that a body raises; 0 for none. The text must name the file.
template <class Body> long errorOf(const QString &path, Body body)
{
    try {
        body();
    } catch (const base::Error &error) {
        return error.description().contains(QFileInfo(path).fileName()) ? error.number() : -1;
    }
    return 0;
}

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace

class tst_fileHelper : public QObject
{
    Q_OBJECT
    QTemporaryDir mFolder;
    QString path(const char *name) const { return mFolder.path() + '/' + name; }

private Q_SLOTS:
    void aFileKeepsItsFormat()
    {
        const QString name = path("a.html");
        put(name, "\xEF\xBB\xBF<p>\xC3\xA9</p>\n");
        const DecodedText read = FileHelper::readText(name);
        FileHelper::writeText(name, "<p>x</p>\r\n", read.format);
        QCOMPARE(got(name), "\xEF\xBB\xBF<p>x</p>\n");
        FileHelper::appendText(name, "<p>y</p>\r\n");
        QCOMPARE(got(name), "\xEF\xBB\xBF<p>x</p>\n<p>y</p>\n");
        FileHelper::appendText(path("new.html"), "z");
        QCOMPARE(got(path("new.html")), "z");
    }

    void aFileKeepsItsPermissions()
    {
        const QString name = path("mode.html");
        put(name, "old");
        const auto mode = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther;
        QVERIFY(QFile::setPermissions(name, mode));
        const auto before = QFileInfo(name).permissions();
        FileHelper::writeText(name, "new");
        QCOMPARE(QFileInfo(name).permissions(), before);
        QCOMPARE(got(name), "new");
    }

    void aLinkStaysAndItsTargetIsReplaced()
    {
        put(path("target.html"), "old");
        QVERIFY(QFile::link("target.html", path("link.html")));
        QVERIFY(QFile::link("link.html", path("link2.html")));
        FileHelper::writeText(path("link2.html"), "new");
        QCOMPARE(got(path("target.html")), "new");
        QVERIFY(QFileInfo(path("link.html")).isSymLink() && QFileInfo(path("link2.html")).isSymLink());
        QVERIFY(!QFileInfo(path("target.html")).isSymLink());
        QVERIFY(QFile::link("later.html", path("dangling.html")));
        FileHelper::writeText(path("dangling.html"), "made");
        QCOMPARE(got(path("later.html")), "made");
        QVERIFY(QFile::link("loop2.html", path("loop1.html")) && QFile::link("loop1.html", path("loop2.html")));
        QVERIFY(errorOf("loop", [&] { FileHelper::writeText(path("loop1.html"), "x"); }) != 0);
    }

    void targetsThatCannotBeAreRefused()
    {
        QDir(mFolder.path()).mkdir("folder");
        put(path("plain"), "old");
        QCOMPARE(errorOf("folder", [&] { FileHelper::writeText(path("folder"), "x"); }), base::errors::pathAccess);
        QCOMPARE(errorOf("x.html", [&] { FileHelper::writeText(path("plain/x.html"), "x"); }),
                 base::errors::pathAccess);
        QCOMPARE(errorOf("x.html", [&] { FileHelper::writeText(path("none/x.html"), "x"); }), base::errors::pathAccess);
        QCOMPARE(errorOf("folder", [&] { FileHelper::readText(path("folder")); }), base::errors::pathAccess);
        QCOMPARE(errorOf("none", [&] { FileHelper::readText(path("none")); }), base::errors::fileNotFound);
        QCOMPARE(got(path("plain")), "old");
        QVERIFY(QFileInfo(path("folder")).isDir());
    }

    void aFullDiskKeepsTheOldFileWhole()
    {
        const QString name = path("full.html");
        put(name, "the old text");
        const QStringList before = entries(mFolder.path());
        // A limit on the size of files stands in for the disk's end.
        rlimit old{};
        QVERIFY(getrlimit(RLIMIT_FSIZE, &old) == 0);
        rlimit small = old;
        small.rlim_cur = 4096;
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        QVERIFY(setrlimit(RLIMIT_FSIZE, &small) == 0);
        const long error = errorOf(name, [&] { FileHelper::writeText(name, QString(1000000, 'x')); });
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, handler);
        QVERIFY(error > 0);
        QCOMPARE(got(name), "the old text");
        QCOMPARE(entries(mFolder.path()), before);
        FileHelper::writeText(name, "new");
        QCOMPARE(got(name), "new");
    }

    void aDeviceIsWrittenInPlace()
    {
        if (!QFileInfo::exists("/dev/full")) QSKIP("no such device here");
        QCOMPARE(errorOf("full", [] { FileHelper::writeText("/dev/full", "x"); }), base::errors::diskFull);
        QVERIFY(!QFileInfo("/dev/full").isFile());
    }

    void aFolderWithoutPermissionIsRefused()
    {
        if (::geteuid() == 0) QSKIP("a superuser may write everywhere");
        QDir(mFolder.path()).mkdir("closed");
        put(path("closed/a.html"), "old");
        QVERIFY(QFile::setPermissions(path("closed"), QFile::ReadOwner | QFile::ExeOwner));
        QCOMPARE(errorOf("a.html", [&] { FileHelper::writeText(path("closed/a.html"), "x"); }),
                 base::errors::permissionDenied);
        QCOMPARE(got(path("closed/a.html")), "old");
        QFile::setPermissions(path("closed"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void filesAreKnown()
    {
        put(path("known.html"), "");
        QVERIFY(FileHelper::exists(path("known.html")));
        QVERIFY(!FileHelper::exists(mFolder.path()));
        QVERIFY(!FileHelper::exists(path("unknown.html")));
        QVERIFY(!FileHelper::isReadOnly(path("known.html")));
        QVERIFY(!FileHelper::isReadOnly(path("unknown.html")));
        QVERIFY(QFile::setPermissions(path("known.html"), QFile::ReadOwner));
        QVERIFY(FileHelper::isReadOnly(path("known.html")));
    }

    void namesMayBeWrittenInManyWays()
    {
        put(path("my page.html"), "text");
        const QString name = path("my page.html");
        QString back = name;
        back.replace('/', '\\');
        QCOMPARE(FileHelper::localName(back), name);
        QCOMPARE(FileHelper::localName("file://" + QString(name).replace(' ', "%20")), name);
        // What cutting "file:///" leaves has no slash at its start.
        QCOMPARE(FileHelper::localName(back.mid(1)), name);
        QCOMPARE(FileHelper::localName(back.mid(1).replace("my page", "new")), path("new.html"));
        QCOMPARE(FileHelper::readText(back.mid(1)).text, "text");
        QCOMPARE(FileHelper::folderPart(back), mFolder.path() + '/');
        QCOMPARE(FileHelper::folderPart(name), mFolder.path() + '/');
        QCOMPARE(FileHelper::folderPart("/a/b/"), "/a/b/");
        QCOMPARE(FileHelper::folderPart("/a"), "/");
        QCOMPARE(FileHelper::folderPart("a.html"), QDir::currentPath() + '/');
        QCOMPARE(FileHelper::filePart(back), "my page.html");
        QCOMPARE(FileHelper::relativeName("/a/b/", "/a/c/d.png"), "../c/d.png");
        QCOMPARE(FileHelper::relativeName("/a/b/", "\\a\\b\\d.png"), "d.png");
        put(path("odd\\name.html"), "odd");
        QCOMPARE(FileHelper::readText(path("odd\\name.html")).text, "odd");
    }

    void documentsAreFetched()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        QByteArray answer;
        connect(&server, &QTcpServer::newConnection, &server, [&] {
            QTcpSocket *socket = server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [socket, &answer] {
                if (answer.isEmpty()) return; // a server that never answers
                socket->write(answer);
                socket->disconnectFromHost();
            });
        });
        const QString url = QString("http://127.0.0.1:%1/page.html").arg(server.serverPort());
        answer = "HTTP/1.0 200 OK\r\nContent-Type: text/html; charset=koi8-r\r\n\r\n<p>\xC1";
        QCOMPARE(HttpHelper::fetchText(url), QString::fromUtf8("<p>а"));
        answer = "HTTP/1.0 200 OK\r\nContent-Type: text/html\r\n\r\n<p>\xE9";
        QCOMPARE(HttpHelper::fetchText(url), QString::fromUtf8("<p>é"));
        answer = "HTTP/1.0 404 Not Found\r\n\r\n";
        QVERIFY(errorOf("page.html", [&] { HttpHelper::fetchText(url); }) > 0);
        answer.clear();
        QVERIFY(errorOf("page.html", [&] { HttpHelper::fetchText(url, 20); }) > 0);
        server.close();
        QVERIFY(errorOf("page.html", [&] { HttpHelper::fetchText(url); }) > 0);
        QVERIFY(errorOf("page.html", [&] { HttpHelper::fetchText("ftp://x/page.html"); }) > 0);
    }
};

QTEST_MAIN(tst_fileHelper)
#include "tst_fileHelper.moc"
