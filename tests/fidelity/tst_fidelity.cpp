// SPDX-License-Identifier: GPL-3.0-or-later
// Compares our boxes with a browser's for recorded pages, element by element, prints the shares, and fails where a page has
// sunk below its floor. Our own pages lie in tests/fidelity/pages; more in the folder that VELLUM_PAGES names, or else in
// shared/pages beside the sources, which a clone need not have. With VELLUM_BOXES our rows are written there as files, with
// VELLUM_PICTURES the first screens. record.mjs records further pages.
#include "engine/layout/BoxDump.h"
#include "tests/fidelity/RecordedPage.h"

#include <QJsonArray>
#include <QProcess>
#include <QtTest>

namespace {

QJsonObject recorded(const QString &path)
{
    QProcess unpack;
    unpack.start(QStringLiteral("gzip"), {QStringLiteral("-dc"), path});
    unpack.waitForFinished();
    return QJsonDocument::fromJson(unpack.readAllStandardOutput()).object();
}

void addPages(const QString &root)
{
    for (const QString &folder : RecordedPage::foldersIn(root)) QTest::newRow(qPrintable(QFileInfo(folder).fileName())) << folder;
}

/// Shares in percent that a page must keep: elements right in both, in size, in place, and texts with as many lines.
struct Floor {
    const char *page;
    double right, size, place, lines;
};

// What was reached, rounded down; to be raised when more is.
constexpr Floor floors[] = {
    {"01-floats", 99.9, 99.9, 99.9, 99.9},
    {"02-positioned", 99.9, 99.9, 99.9, 99.9},
    {"03-tables", 99.9, 99.9, 99.9, 99.9},
    {"04-inline", 99.9, 99.9, 99.9, 99.9},
    {"05-generated", 96.9, 96.9, 99.9, 99.9},
    {"06-flex", 99.9, 99.9, 99.9, 99.9},
    {"07-grid", 99.9, 99.9, 99.9, 99.9},
    {"08-columns", 99.9, 99.9, 99.9, 99.9},
    {"09-forms", 95.8, 95.8, 95.8, 99.9},
    {"10-scripts", 99.9, 99.9, 99.9, 99.9},
    {"11-quirks", 99.9, 99.9, 99.9, 99.9},
    {"12-sizing", 95.6, 95.6, 99.9, 99.9},
    {"13-margins", 95.2, 98.1, 97.1, 99.9},
    {"14-images", 87.2, 89.5, 91.8, 79.9},
    {"15-article", 99.9, 99.9, 99.9, 99.9},
    {"02-analog-quickref", 99.9, 99.9, 99.9, 99.9},
    {"06-apache-index", 99.9, 99.9, 99.9, 99.9},
    {"13-debian-faq", 99.9, 99.9, 99.9, 99.9},
    {"14-fhs-3.0", 99.9, 99.9, 99.9, 99.9},
    {"18-docutils-quickref", 99.9, 99.9, 99.9, 99.9},
    {"21-erlang-ext-dist", 99.9, 99.9, 99.9, 99.9},
    {"26-git-pull", 99.9, 99.9, 99.9, 99.9},
    {"31-gnubg-allabout", 99.9, 99.9, 99.9, 99.9},
    {"36-jqueryui-modal-form", 99.9, 99.9, 99.9, 99.9},
    {"39-theora-color", 99.9, 99.9, 99.9, 99.9},
    {"43-lua-manual", 99.9, 99.9, 99.9, 99.9},
    {"46-nano", 99.9, 99.9, 99.9, 99.9},
    {"50-postfix-rewriting", 99.7, 99.7, 99.7, 99.9},
    {"54-python-string", 99.9, 99.9, 99.9, 99.9},
    {"59-xfig-main-menus", 99.9, 99.9, 99.9, 99.9},
    {"61-zsh-calendar", 99.9, 99.9, 99.9, 99.9},
};

} // namespace

class Fidelity : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void pages_data()
    {
        QTest::addColumn<QString>("folder");
        addPages(QStringLiteral(SOURCE_DIR "/tests/fidelity/pages"));
        const QString more = qEnvironmentVariable("VELLUM_PAGES", QStringLiteral(SOURCE_DIR "/../shared/pages"));
        if (QDir(more).exists()) addPages(more);
        else qInfo().noquote() << "There is no folder" << more << "of further pages: only our own are checked";
    }
    void pages()
    {
        QFETCH(QString, folder);
        RecordedPage page(folder);
        const QJsonObject ours = layout::boxDump(*page.tree), theirs = recorded(folder + "/expected.json.gz");
        const QString out = qEnvironmentVariable("VELLUM_BOXES");
        if (!out.isEmpty()) {
            QFile file(out + "/" + QFileInfo(folder).fileName() + ".json");
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QJsonDocument(ours).toJson(QJsonDocument::Compact));
        }
        if (const QString pictures = qEnvironmentVariable("VELLUM_PICTURES"); !pictures.isEmpty())
            page.picture().save(pictures + "/" + QFileInfo(folder).fileName() + ".png");
        QHash<QString, QJsonArray> rows;
        for (const QJsonValue &row : ours["rows"].toArray()) rows.insert(row[0].toString(), row.toArray());
        int count = 0, sizes = 0, places = 0, all = 0;
        QString first;
        for (const QJsonValue &row : theirs["rows"].toArray()) {
            if (row[10].toString() == "none" || row[13].toInt() == 0) continue;
            ++count;
            const QJsonArray own = rows.value(row[0].toString());
            const auto near = [&](int i) { return std::abs(own.at(i).toDouble() - row[i].toDouble()) <= 1; };
            const bool same = own.size() > 13 && own.at(1) == row[1] && near(8) && near(9);
            sizes += same;
            places += own.size() > 13 && own.at(1) == row[1] && near(6) && near(7);
            const bool place = same && near(6) && near(7);
            all += place;
            if (!place && first.isEmpty())
                first = QStringLiteral("%1 %2: browser %3,%4 %5x%6, here %7,%8 %9x%10").arg(row[0].toString(), row[1].toString()).arg(row[6].toDouble()).arg(row[7].toDouble()).arg(row[8].toDouble()).arg(row[9].toDouble())
                            .arg(own.at(6).toDouble()).arg(own.at(7).toDouble()).arg(own.at(8).toDouble()).arg(own.at(9).toDouble());
        }
        QVERIFY(count > 0);
        const auto key = [](const QJsonValue &row) { return row[0].toString() + ':' + QString::number(row[1].toInt()); };
        QHash<QString, int> ownLines;
        for (const QJsonValue &row : ours["text"].toArray()) ownLines.insert(key(row), row[3].toInt());
        const QJsonArray texts = theirs["text"].toArray();
        QVERIFY(!texts.isEmpty());
        const auto sameLines = std::count_if(texts.begin(), texts.end(), [&](const QJsonValue &row) { return ownLines.value(key(row), -1) == row[3].toInt(); });
        const double right = 100.0 * all / count, size = 100.0 * sizes / count, place = 100.0 * places / count, lines = 100.0 * double(sameLines) / double(texts.size());
        qInfo().noquote() << QStringLiteral("right %1 %, size %2 %, place %3 %, lines %4 %; first wrong: %5").arg(right, 0, 'f', 2).arg(size, 0, 'f', 2).arg(place, 0, 'f', 2).arg(lines, 0, 'f', 2).arg(first);
        const auto keeps = [](const char *what, double share, double floor) {
            if (share < floor) qWarning("%s: %.2f %%, the floor is %.2f %%", what, share, floor);
            return share >= floor;
        };
        mCount += count;
        mRight += all;
        mSizes += sizes;
        const auto floor = std::find_if(std::begin(floors), std::end(floors), [&](const Floor &each) { return QFileInfo(folder).fileName() == QLatin1String(each.page); });
        QVERIFY2(floor != std::end(floors), "This page has no floor: what it reaches now is its first one");
        QVERIFY(keeps("right", right, floor->right));
        QVERIFY(keeps("size", size, floor->size));
        QVERIFY(keeps("place", place, floor->place));
        QVERIFY(keeps("lines", lines, floor->lines));
    }
    void cleanupTestCase()
    {
        if (mCount) qInfo().noquote() << QStringLiteral("all pages: %1 elements, right %2 %, size %3 %").arg(mCount).arg(100.0 * mRight / mCount, 0, 'f', 2).arg(100.0 * mSizes / mCount, 0, 'f', 2);
    }

private:
    int mCount = 0, mRight = 0, mSizes = 0;
};

QTEST_MAIN(Fidelity)
#include "tst_fidelity.moc"
