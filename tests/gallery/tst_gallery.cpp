// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the first screen of each of our recorded pages beside the browser's into the build folder, as gallery/NAME.png and
// an index.html, for people to compare. What can be checked without them is: how much of the screen has another colour,
// looked at in squares of eight pixels, where the edges of letters don't count.
#include "tests/fidelity/RecordedPage.h"

#include <QtTest>

namespace {

constexpr int side = 8;

/// Mean red, green and blue of a square.
std::array<int, 3> meanColor(const QImage &image, int left, int top)
{
    std::array<int, 3> sum{};
    for (int y = top; y < top + side; ++y)
        for (int x = left; x < left + side; ++x) {
            const QRgb at = image.pixel(x, y);
            sum[0] += qRed(at);
            sum[1] += qGreen(at);
            sum[2] += qBlue(at);
        }
    for (int &each : sum) each /= side * side;
    return sum;
}

/// The share of squares, in percent, whose colours are further apart than what smoothing of letters makes.
double difference(const QImage &a, const QImage &b)
{
    int different = 0, count = 0;
    for (int y = 0; y + side <= a.height(); y += side)
        for (int x = 0; x + side <= a.width(); x += side, ++count) {
            const auto one = meanColor(a, x, y), other = meanColor(b, x, y);
            for (int i = 0; i < 3; ++i)
                if (std::abs(one[std::size_t(i)] - other[std::size_t(i)]) > 32) {
                    ++different;
                    break;
                }
        }
    return 100.0 * different / count;
}

QImage sideBySide(const QImage &ours, const QImage &theirs)
{
    QImage both(ours.width() * 2 + 4, ours.height(), QImage::Format_RGB32);
    both.fill(Qt::red);
    QPainter painter(&both);
    painter.drawImage(0, 0, ours);
    painter.drawImage(ours.width() + 4, 0, theirs);
    return both;
}

/// What may differ, in percent: what was reached, rounded up; to be lowered when less does.
const QHash<QString, double> limits{
    {"01-floats", 0.1},
    {"02-positioned", 0.6},
    {"03-tables", 0.2},
    {"04-inline", 0.2},
    {"05-generated", 0.5},
    {"06-flex", 0.1},
    {"07-grid", 0.1},
    {"08-columns", 0.2},
    {"09-forms", 0.6},
    {"10-scripts", 0.3},
    {"11-quirks", 0.3},
    {"12-sizing", 0.1},
    {"13-margins", 0.1},
    {"14-images", 0.4},
    {"15-article", 0.1},
};

} // namespace

class Gallery : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir().mkpath(mOut));
        mIndex = "<!DOCTYPE html><meta charset=utf-8><title>Gallery</title><p>Ours at the left, the browser's at the right.</p>\n";
    }
    void screens_data()
    {
        QTest::addColumn<QString>("folder");
        for (const QString &folder : RecordedPage::foldersIn(QStringLiteral(SOURCE_DIR "/tests/fidelity/pages")))
            QTest::newRow(qPrintable(QFileInfo(folder).fileName())) << folder;
    }
    void screens()
    {
        QFETCH(QString, folder);
        const QString name = QFileInfo(folder).fileName();
        const QImage theirs(folder + "/shot.png");
        QVERIFY(!theirs.isNull());
        const QImage ours = RecordedPage(folder).picture();
        QCOMPARE(ours.size(), theirs.size());
        const double share = difference(ours, theirs);
        qInfo("differs in %.2f %%", share);
        QVERIFY(sideBySide(ours, theirs).save(mOut + "/" + name + ".png"));
        mIndex += QStringLiteral("<h2>%1: differs in %2 %</h2><img src=\"%1.png\" style=\"max-width: 100%\">\n").arg(name).arg(share, 0, 'f', 2).toUtf8();
        QVERIFY2(limits.contains(name), "This page has no limit: what differs now is its first one");
        QVERIFY2(share <= limits[name], qPrintable(QStringLiteral("%1 %, but at most %2 % may").arg(share).arg(limits[name])));
    }
    void cleanupTestCase()
    {
        QFile index(mOut + "/index.html");
        QVERIFY(index.open(QFile::WriteOnly));
        index.write(mIndex);
    }

private:
    const QString mOut = QStringLiteral(BINARY_DIR "/gallery");
    QByteArray mIndex;
};

QTEST_MAIN(Gallery)
#include "tst_gallery.moc"
