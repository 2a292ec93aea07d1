// SPDX-License-Identifier: GPL-3.0-or-later
#include "LaidOutPage.h"
#include "engine/layout/Drawing.h"

#include <QPixmap>
#include <QtTest>

namespace {

// "ratio.svg" is a drawing of 40 to 20, "box.png" a picture of 64 by 48, all else is missing.
class Pictures final : public layout::ImageSource
{
public:
    QSize imageSize(const QString &url) override { return url.endsWith("ratio.svg") ? QSize(40, 20) : url.endsWith("box.png") ? QSize(64, 48) : QSize(); }
    QPixmap imagePixmap(const QString &) override { return {}; }
    bool hasOnlyRatio(const QString &url) override { return url.endsWith("ratio.svg"); }
};

struct Page : LaidOutPage {
    explicit Page(const QString &body) : LaidOutPage(LaidOutPage::bare(body), "file:///p/") { tree.setImageSource(&pictures); }
    Pictures pictures;
};

} // namespace

/// Sizes of pictures (CSS 2.1, 10.3.2 and 10.6.2).
class PicturesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aDrawingWithAViewBoxAloneHasOnlyARatio()
    {
        QVERIFY(layout::drawingHasOnlyRatio("<?xml version='1.0'?><!-- x --><svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 40 20'><g/></svg>"));
        QVERIFY(layout::drawingHasOnlyRatio("<svg viewBox='0 0 40 20' width='100%' height='100%'>"));
        QVERIFY(!layout::drawingHasOnlyRatio("<svg viewBox='0 0 40 20' width='10'/>"));
        QVERIFY(!layout::drawingHasOnlyRatio("<svg width='10' height='20'/>"));
        QVERIFY(!layout::drawingHasOnlyRatio("<svg/>"));
        QVERIFY(!layout::drawingHasOnlyRatio("<html><svg viewBox='0 0 1 1'/></html>"));
        QVERIFY(!layout::drawingHasOnlyRatio(QByteArray("\x89PNG\r\n\0", 7)));
    }
    void itIsAsWideAsThereIsRoom()
    {
        Page page("<div style='width:300px'><img id=a src=ratio.svg><img id=b src=ratio.svg style='padding:0 10px'></div><img id=c src=ratio.svg width=80><img id=d src=ratio.svg height=80>"
                  "<img id=e src=ratio.svg style='max-width:100px'>");
        QCOMPARE(page.box("a").size(), QSizeF(300, 150));
        QCOMPARE(page.box("b").size(), QSizeF(300, 140));
        QCOMPARE(page.box("c").size(), QSizeF(80, 40));
        QCOMPARE(page.box("d").size(), QSizeF(160, 80));
        QCOMPARE(page.box("e").size(), QSizeF(100, 50));
    }
    void oneThatIsMissingStandsAsItsText()
    {
        // Four letters of 12 pixels, and the sign in front of them.
        const QString style = "<style>img { font: 20px/20px Liberation Mono }</style>";
        Page page(style + "<div><img id=a src=none.png alt=abcd width=90 height=40></div><div><img id=b src=none.png alt='' width=90 height=40></div>"
                          "<div><img id=c src=none.png alt=abcd width=90 height=40 style='display:block'></div><div><img id=d src=box.png alt=abcd width=90 height=40></div>");
        const QSizeF text = page.box("a").size();
        QVERIFY2(std::abs(text.width() - 64) < 0.1 && text.height() == 20, qPrintable(QString::number(text.width())));
        for (const char *id : {"b", "c", "d"}) QCOMPARE(page.box(id).size(), QSizeF(90, 40));
    }
    void inQuirksModeItKeepsItsSize()
    {
        LaidOutPage page("<body style='margin:0'><img id=a src=none.png alt=abcd width=90 height=40>");
        QCOMPARE(page.box("a").size(), QSizeF(90, 40));
    }
};

QTEST_MAIN(PicturesTest)
#include "tst_pictures.moc"
