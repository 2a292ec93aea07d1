// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

/// The direction in which folders may include each other. A folder may always include itself.
class tst_includes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void foldersIncludeOnlyWhatStandsBelowThem();
    void includesBetweenFilesMakeNoCircle();
    void everySourceNamesItsLicence();
    void headersAreIncludedOnce();

private:
    struct File {
        QString path; // from the root
        QStringList includes;
    };
    std::vector<File> files() const;
};

namespace {

const QStringList engineUpTo(const QString &folder)
{
    const QMap<QString, QStringList> below = {
        {"engine/dom", {}},
        {"engine/html", {"engine/dom"}},
        {"engine/css", {"engine/dom"}},
        {"engine/changes", {"engine/dom", "engine/html"}},
        {"engine/layout", {"engine/dom", "engine/css"}},
        {"engine/ranges", {"engine/dom", "engine/html", "engine/changes", "engine/layout"}},
        {"engine/paint", {"engine/dom", "engine/html", "engine/css", "engine/changes", "engine/layout", "engine/ranges"}},
        {"engine/editing", {"engine/dom", "engine/html", "engine/css", "engine/changes", "engine/layout", "engine/ranges"}},
        {"engine/surface",
         {"engine/dom", "engine/html", "engine/css", "engine/changes", "engine/layout", "engine/ranges", "engine/paint",
          "engine/editing"}},
    };
    return QStringList{"base"} + below.value(folder);
}

/// Null: anything goes.
QStringList allowed(const QString &folder)
{
    const QStringList platform = {"engine", "support", "base"};
    const QStringList concern = platform + QStringList{"platform", "core", "undo"};
    const QMap<QString, QStringList> table = {
        {"base", {}},
        {"support", {"base"}},
        {"widgets", {"base"}},
        {"platform", platform},
        {"core", platform + QStringList{"platform"}},
        {"undo", platform + QStringList{"platform"}},
        {"text", concern + QStringList{"widgets"}},
        {"source", concern + QStringList{"widgets"}},
        {"find", concern + QStringList{"widgets"}},
        {"spell", concern + QStringList{"widgets"}},
        {"commands", concern},
        {"properties", concern + QStringList{"commands", "text", "widgets"}},
        {"styles", concern + QStringList{"commands", "text", "widgets"}},
        {"strips", concern + QStringList{"commands", "text", "widgets"}},
        {"control", concern + QStringList{"commands", "text", "source", "find", "spell", "properties", "styles", "strips",
                                          "widgets"}},
    };
    return folder.startsWith("engine/") ? engineUpTo(folder) : table.value(folder);
}

QString folderOf(const QString &path)
{
    const QStringList parts = path.split('/');
    return parts[0] == "engine" && parts.size() > 2 ? parts[0] + '/' + parts[1] : parts[0];
}

const QStringList folders = {"base",     "engine", "support", "widgets", "platform",   "core",   "undo",   "text",     "source",
                             "find",     "spell",  "commands", "properties", "styles", "strips", "control", "scripting"};

} // namespace

std::vector<tst_includes::File> tst_includes::files() const
{
    static const QRegularExpression include("^\\s*#\\s*include\\s+\"([^\"]+)\"", QRegularExpression::MultilineOption);
    std::vector<File> all;
    const QDir root(SOURCE_DIR);
    for (const QString &folder : folders) {
        QDirIterator it(root.filePath(folder), {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            if (!file.open(QFile::ReadOnly)) continue;
            File entry{root.relativeFilePath(file.fileName()), {}};
            auto matches = include.globalMatch(QString::fromUtf8(file.readAll()));
            while (matches.hasNext()) entry.includes << matches.next().captured(1);
            all.push_back(entry);
        }
    }
    return all;
}

void tst_includes::foldersIncludeOnlyWhatStandsBelowThem()
{
    QStringList wrong;
    const std::vector<File> all = files();
    QVERIFY(all.size() > 50);
    for (const File &file : all) {
        const QString folder = folderOf(file.path);
        if (folder == "scripting") continue; // looks into everything
        for (const QString &include : file.includes) {
            if (!include.contains('/')) continue; // made by the build: a moc file
            const QString target = folderOf(include);
            bool fine = target == folder;
            for (const QString &below : allowed(folder))
                fine = fine || target == below || (below == "engine" && target.startsWith("engine/"));
            if (!fine) wrong << file.path + " includes " + include;
        }
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
}

void tst_includes::includesBetweenFilesMakeNoCircle()
{
    QMap<QString, QStringList> headers;
    for (const File &file : files())
        if (file.path.endsWith(".h")) headers[file.path] = file.includes;
    // A header whose includes are all settled is settled; what is never settled lies on a circle.
    bool progress = true;
    while (progress) {
        progress = false;
        for (const QString &path : headers.keys()) {
            bool settled = true;
            for (const QString &include : headers[path]) settled = settled && !headers.contains(include);
            if (settled) progress = headers.remove(path) > 0;
        }
    }
    QVERIFY2(headers.isEmpty(), qPrintable(headers.keys().join('\n')));
}

void tst_includes::everySourceNamesItsLicence()
{
    for (const File &entry : files()) {
        QFile file(QDir(SOURCE_DIR).filePath(entry.path));
        QVERIFY(file.open(QFile::ReadOnly));
        QVERIFY2(file.readLine().startsWith("// SPDX-License-Identifier: GPL-3.0-or-later"), qPrintable(entry.path));
    }
}

void tst_includes::headersAreIncludedOnce()
{
    for (const File &entry : files()) {
        if (!entry.path.endsWith(".h")) continue;
        QFile file(QDir(SOURCE_DIR).filePath(entry.path));
        QVERIFY(file.open(QFile::ReadOnly));
        QVERIFY2(file.readAll().contains("#pragma once"), qPrintable(entry.path));
    }
}

QTEST_GUILESS_MAIN(tst_includes)
#include "tst_includes.moc"
