// SPDX-License-Identifier: GPL-3.0-or-later
#include "LaidOutPage.h"

#include <QRandomGenerator>
#include <QtTest>

/// Columns: where things stand in them, and that every question finds them there.
class ColumnsTest : public QObject
{
    Q_OBJECT

    // Blocks of given heights, 20 pixels each unless said otherwise.
    static QString blocks(int count, const QString &style = QStringLiteral("height:20px"))
    {
        QString html;
        for (int i = 0; i < count; ++i) html += QStringLiteral("<div id=b%1 style='break-inside:avoid;%2'></div>").arg(i).arg(style);
        return html;
    }
    static QRectF rect(double x, double y, double w, double h) { return {x, y, w, h}; }

private Q_SLOTS:
    void widthAndCountGiveTheColumns_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<double>("width"); // of a column
        QTest::addColumn<double>("second"); // where the second one begins
        // 3.4 of the standard: in 600 pixels, a gap of 1em (16) where nothing is said.
        QTest::newRow("count") << "column-count:3;column-gap:30px" << 180.0 << 210.0;
        QTest::newRow("width") << "column-width:150px;column-gap:0" << 150.0 << 150.0;
        QTest::newRow("width with room left") << "column-width:180px;column-gap:20px" << (600 - 40) / 3.0 << (600 - 40) / 3.0 + 20;
        QTest::newRow("both, count is the limit") << "columns:100px 2;column-gap:20px" << 290.0 << 310.0;
        QTest::newRow("normal gap") << "columns:2" << 292.0 << 308.0;
        QTest::newRow("gap in per cents") << "columns:2;column-gap:10%" << 270.0 << 330.0;
    }
    void widthAndCountGiveTheColumns()
    {
        QFETCH(QString, style);
        QFETCH(double, width);
        QFETCH(double, second);
        LaidOutPage page(LaidOutPage::bare("<div style='width:600px;" + style + "'>" + blocks(12) + "</div>"));
        const QRectF first = page.box("b0");
        QVERIFY(std::abs(first.width() - width) < 0.02);
        QCOMPARE(first.left(), 0.0);
        for (int i = 1; i < 12; ++i) {
            const QRectF box = page.box("b" + QString::number(i));
            if (box.top() > 0) continue; // in the same column
            QVERIFY2(std::abs(box.left() - second) < 0.02, qPrintable(QString::number(box.left())));
            return;
        }
        QFAIL("nothing stands in a second column");
    }
    void columnsAreBalanced()
    {
        // Seven of 20 in three columns: no less than three in the first.
        LaidOutPage page(LaidOutPage::bare("<div id=c style='width:600px;columns:3;column-gap:0'>" + blocks(7) + "</div><p id=after style='margin:0'>x"));
        QCOMPARE(page.box("c"), rect(0, 0, 600, 60));
        QCOMPARE(page.box("b2"), rect(0, 40, 200, 20));
        QCOMPARE(page.box("b3"), rect(200, 0, 200, 20));
        QCOMPARE(page.box("b6"), rect(400, 0, 200, 20));
        QCOMPARE(page.box("after").top(), 60.0);
    }
    void aHeightFillsColumnsInTurn()
    {
        LaidOutPage page(LaidOutPage::bare("<div id=c style='width:600px;height:90px;columns:2;column-gap:0;column-fill:auto'>" + blocks(10) + "</div>"));
        QCOMPARE(page.box("c").height(), 90.0);
        QCOMPARE(page.box("b3"), rect(0, 60, 300, 20));
        QCOMPARE(page.box("b4"), rect(300, 0, 300, 20));
        // What doesn't fit goes on to the right.
        QCOMPARE(page.box("b8"), rect(600, 0, 300, 20));
        QCOMPARE(page.queries.scrollSize(page.byId("c")).width() >= 600, true);
    }
    void aMarginEndsWithItsColumn()
    {
        // Five of 20 with 10 between: 20 30 30 | 20 30; the margin at the cut is gone.
        LaidOutPage page(LaidOutPage::bare("<div id=c style='width:600px;columns:2;column-gap:0'>" + blocks(5, "height:20px;margin:0 0 10px") + "</div>"));
        QCOMPARE(page.box("b2"), rect(0, 60, 300, 20));
        QCOMPARE(page.box("b3"), rect(300, 0, 300, 20));
        QCOMPARE(page.box("b4"), rect(300, 30, 300, 20));
    }
    void linesBreakAcrossColumns()
    {
        // Ten lines of 20 pixels in two columns: five and five; one block shows as two boxes.
        QString text;
        for (int i = 0; i < 10; ++i) text += QStringLiteral("line %1<br>").arg(i);
        LaidOutPage page(LaidOutPage::bare("<div style='width:600px;columns:2;column-gap:0;line-height:20px'><p id=p style='margin:0'>" + text + "</p></div>"));
        const auto rects = page.queries.clientRects(page.byId("p"));
        QCOMPARE(int(rects.size()), 2);
        QCOMPARE(rects[0], rect(0, 0, 300, 100));
        QCOMPARE(rects[1], rect(300, 0, 300, 100));
        QCOMPARE(page.queries.offsetBox(page.byId("p")), QRect(0, 0, 300, 200));
        QCOMPARE(page.box("p"), rect(0, 0, 600, 100));
    }
    void linesAreNotLeftAlone()
    {
        // Three lines don't fit two and one: `orphans` and `widows` are 2, so they stay together.
        LaidOutPage page(LaidOutPage::bare("<div id=c style='width:600px;height:50px;columns:2;column-gap:0;column-fill:auto;line-height:20px'>"
                                           "<div style='height:10px'></div><p id=p style='margin:0'>a<br>b<br>c</p></div>"));
        QCOMPARE(page.box("p"), rect(300, 0, 300, 60));
        setStyle(page.byId("p"), "margin:0;orphans:1;widows:1");
        const auto rects = page.queries.clientRects(page.byId("p"));
        QCOMPARE(int(rects.size()), 2);
        QCOMPARE(rects[0], rect(0, 10, 300, 40));
        QCOMPARE(rects[1], rect(300, 0, 300, 20));
    }
    void breaksCanBeForcedAndAvoided()
    {
        LaidOutPage page(LaidOutPage::bare("<div id=c style='width:600px;columns:3;column-gap:0'><div id=a style='height:20px'></div>"
                                           "<div id=b style='height:20px;break-before:column'></div><div id=d style='height:40px'></div></div>"));
        QCOMPARE(page.box("a"), rect(0, 0, 200, 20));
        QCOMPARE(page.box("b"), rect(200, 0, 200, 20));
        QVERIFY(page.box("c").height() <= 40);
        setStyle(page.byId("b"), "height:20px;break-after:column");
        QCOMPARE(page.box("d").left(), page.box("b").left() + 200);
        LaidOutPage kept(LaidOutPage::bare("<div style='width:600px;height:50px;columns:2;column-gap:0;column-fill:auto'><div style='height:20px'></div>"
                                           "<div id=h style='height:20px;break-after:avoid'></div><div id=n style='height:20px;break-inside:avoid'></div></div>"));
        QCOMPARE(kept.box("h"), rect(300, 0, 300, 20));
        QCOMPARE(kept.box("n"), rect(300, 20, 300, 20));
    }
    void whatSpansParts()
    {
        LaidOutPage page(LaidOutPage::bare("<div id=c style='width:600px;columns:2;column-gap:0'>" + blocks(4) +
                                           "<h2 id=s style='column-span:all;height:30px;margin:0;font-size:10px'>x</h2>"
                                           "<div id=e style='height:20px;break-inside:avoid'></div><div id=f style='height:20px;break-inside:avoid'></div></div>"));
        QCOMPARE(page.box("b1"), rect(0, 20, 300, 20));
        QCOMPARE(page.box("b2"), rect(300, 0, 300, 20));
        QCOMPARE(page.box("s"), rect(0, 40, 600, 30));
        QCOMPARE(page.box("e"), rect(0, 70, 300, 20));
        QCOMPARE(page.box("f"), rect(300, 70, 300, 20));
        QCOMPARE(page.box("c").height(), 90.0);
    }
    void placesAreFoundWhereTheyShow()
    {
        QString text;
        for (int i = 0; i < 10; ++i) text += QStringLiteral("<p style='margin:0' id=p%1>word%1</p>").arg(i);
        LaidOutPage page(LaidOutPage::bare("<div style='width:600px;columns:2;column-gap:20px;line-height:20px'>" + text + "</div>"));
        for (int i = 0; i < 10; ++i) {
            dom::Element &p = page.byId("p" + QString::number(i));
            dom::Node *node = p.firstChild();
            const QRectF caret = page.queries.caretRect({node, 2});
            const double column = i < 5 ? 0 : 310, top = (i % 5) * 20;
            QVERIFY2(caret.left() > column && caret.left() < column + 40, qPrintable(QString::number(i)));
            QVERIFY(caret.top() >= top && caret.bottom() <= top + 20);
            const layout::Hit hit = page.queries.hitTest(caret.center());
            QCOMPARE(hit.element, &p);
            QCOMPARE(hit.position.node, node);
            QCOMPARE(hit.position.offset, 2u);
            const auto rects = page.queries.textRects(*node, 0, 4);
            QCOMPARE(int(rects.size()), 1);
            QCOMPARE(rects[0].left(), column);
            QCOMPARE(rects[0].top(), top);
        }
        // Down from the last line of a column is the first one of the next.
        dom::Node *last = page.byId("p4").firstChild();
        const layout::TextPosition below = page.queries.lineBelow({last, 2}, page.queries.caretRect({last, 2}).left());
        QCOMPARE(below.node, page.byId("p5").firstChild());
        // Beside a short column the nearest line is meant, though the point lies in what is around it.
        const layout::Hit beside = page.queries.hitTest({500, 300});
        QCOMPARE(beside.position.node, page.byId("p9").firstChild());
        QCOMPARE(beside.element, page.byId("p9").document().body());
    }
    void rightToLeftBeginsAtTheRight()
    {
        LaidOutPage page(LaidOutPage::bare("<div dir=rtl style='width:600px;columns:3;column-gap:0'>" + blocks(3) + "</div>"));
        QCOMPARE(page.box("b0").left(), 400.0);
        QCOMPARE(page.box("b2").left(), 0.0);
    }
    void changesLayOutLikeAFreshPage_data()
    {
        QTest::addColumn<uint>("seed");
        for (uint seed : {1u, 2u, 3u, 4u}) QTest::newRow(qPrintable(QString::number(seed))) << seed;
        const uint fresh = QRandomGenerator::global()->generate();
        QTest::newRow(qPrintable("fresh " + QString::number(fresh))) << fresh;
    }
    void changesLayOutLikeAFreshPage()
    {
        QFETCH(uint, seed);
        QRandomGenerator random(seed);
        QString html = "<div id=c style='columns:3'>";
        for (int i = 0; i < 30; ++i) html += QStringLiteral("<p id=p%1>Some words that make a line or two of text, number %1.</p>").arg(i);
        LaidOutPage page(LaidOutPage::bare(html + "</div>"));
        static const char *const styles[] = {"break-before:column", "break-inside:avoid", "column-span:all", "float:left;width:30%", "height:200px",
                                             "columns:2", "margin:40px", "position:relative;top:5px", "break-after:avoid", "display:flex", "", "columns:3"};
        static const char *const outer[] = {"columns:3", "columns:200px", "columns:2;height:150px", "columns:4;column-fill:auto;height:300px", "", "columns:2;width:400px"};
        for (int step = 0; step < 60; ++step) {
            const QString id = "p" + QString::number(random.bounded(30));
            if (random.bounded(6) == 0)
                setStyle(page.byId("c"), outer[random.bounded(int(std::size(outer)))]);
            else
                setStyle(page.byId(id), styles[random.bounded(int(std::size(styles)))]);
            page.tree.update();
            const QString difference = page.tree.compareWithFresh();
            QVERIFY2(difference.isEmpty(), qPrintable(QStringLiteral("seed %1 step %2: ").arg(seed).arg(step) + difference));
        }
    }
};

QTEST_MAIN(ColumnsTest)
#include "tst_columns.moc"
