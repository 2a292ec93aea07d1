// SPDX-License-Identifier: GPL-3.0-or-later
#include "LaidOutPage.h"

#include <QRandomGenerator>
#include <QtTest>

/// Boxes that are shown elsewhere than where they are laid out: transforms and sticky positions.
class MovedTest : public QObject
{
    Q_OBJECT

    static bool near(const QRectF &a, const QRectF &b)
    {
        return std::abs(a.left() - b.left()) < 0.05 && std::abs(a.top() - b.top()) < 0.05 && std::abs(a.right() - b.right()) < 0.05 && std::abs(a.bottom() - b.bottom()) < 0.05;
    }
    static QByteArray told(const QRectF &r) { return QStringLiteral("%1 %2 %3 %4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height()).toLatin1(); }

private Q_SLOTS:
    void transformsMoveWhatShows_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<QRectF>("box");
        // A box of 100 by 40 at (50, 60); its middle is (100, 80).
        QTest::newRow("translate") << "transform:translate(10px,20px)" << QRectF(60, 80, 100, 40);
        QTest::newRow("translate in per cents of the box") << "transform:translate(-50%,50%)" << QRectF(0, 80, 100, 40);
        QTest::newRow("translateX") << "transform:translateX(1em)" << QRectF(66, 60, 100, 40);
        QTest::newRow("scale about the middle") << "transform:scale(2)" << QRectF(0, 40, 200, 80);
        QTest::newRow("scale in one direction") << "transform:scaleX(0.5)" << QRectF(75, 60, 50, 40);
        QTest::newRow("a quarter turn") << "transform:rotate(90deg)" << QRectF(80, 30, 40, 100);
        QTest::newRow("about a corner") << "transform:rotate(90deg);transform-origin:0 0" << QRectF(10, 60, 40, 100);
        QTest::newRow("about an edge") << "transform:scale(2);transform-origin:left bottom" << QRectF(50, 20, 200, 80);
        QTest::newRow("vertical word first") << "transform:scale(2);transform-origin:top left" << QRectF(50, 60, 200, 80);
        QTest::newRow("the last function comes first") << "transform:translate(100px) scale(2)" << QRectF(100, 40, 200, 80);
        QTest::newRow("and the other way round") << "transform:scale(2) translate(100px)" << QRectF(200, 40, 200, 80);
        QTest::newRow("matrix") << "transform:matrix(1,0,0,1,5,6)" << QRectF(55, 66, 100, 40);
        QTest::newRow("skew") << "transform:skewX(45deg)" << QRectF(30, 60, 140, 40);
        QTest::newRow("single properties") << "translate:10px 20px;scale:2" << QRectF(10, 60, 200, 80);
        QTest::newRow("rotate property") << "rotate:.25turn" << QRectF(80, 30, 40, 100);
        QTest::newRow("an invalid function is none") << "transform:translate(10px) wobble(3)" << QRectF(50, 60, 100, 40);
        QTest::newRow("none") << "transform:none" << QRectF(50, 60, 100, 40);
    }
    void transformsMoveWhatShows()
    {
        QFETCH(QString, style);
        QFETCH(QRectF, box);
        LaidOutPage page(LaidOutPage::bare("<div style='height:60px'></div><div id=t style='margin-left:50px;width:100px;height:40px;" + style +
                                           "'>text</div><p id=after style='margin:0'>after"));
        QVERIFY2(near(page.box("t"), box), told(page.box("t")));
        // Layout knows nothing of it.
        QCOMPARE(page.queries.offsetBox(page.byId("t")), QRect(50, 60, 100, 40));
        QCOMPARE(page.box("after").top(), 100.0);
    }
    void aPointIsFoundThroughTheInverse()
    {
        LaidOutPage page(LaidOutPage::bare("<div id=t style='width:200px;height:40px;line-height:40px;transform:translate(300px,200px) rotate(90deg)'>turned text</div><p id=p>other"));
        const auto position = layout::TextPosition{page.byId("t").firstChild(), 6};
        const QRectF caret = page.queries.caretRect(position);
        // The box's middle is at (400, 220); its text runs downwards.
        QVERIFY(caret.left() > 370 && caret.right() < 430);
        QVERIFY(caret.top() > 120 && caret.bottom() < 320);
        const layout::Hit hit = page.queries.hitTest(caret.center());
        QCOMPARE(hit.element, &page.byId("t"));
        QCOMPARE(hit.position, position);
        QVERIFY(page.queries.hitTest({330, 220}).element != &page.byId("t")); // beside the turned box
        const auto rects = page.queries.textRects(*page.byId("t").firstChild(), 0, 6);
        QCOMPARE(int(rects.size()), 1);
        QVERIFY(rects[0].height() > rects[0].width());
    }
    void transformedBoxesHoldPositionedOnes()
    {
        LaidOutPage page(LaidOutPage::bare("<div style='height:100px'></div><div id=t style='width:100px;height:50px;transform:translate(10px,0)'>"
                                           "<div id=a style='position:absolute;left:5px;top:5px;width:10px;height:10px'></div>"
                                           "<div id=f style='position:fixed;left:20px;top:0;width:10px;height:10px'></div></div>"));
        QCOMPARE(page.box("a"), QRectF(15, 105, 10, 10));
        QCOMPARE(page.box("f"), QRectF(30, 100, 10, 10));
        setStyle(page.byId("t"), "width:100px;height:50px");
        QCOMPARE(page.box("a"), QRectF(5, 5, 10, 10));
        QCOMPARE(page.box("f"), QRectF(20, 0, 10, 10));
    }
    void aCentredDialogIsHit()
    {
        LaidOutPage page(LaidOutPage::bare("<p>below</p><div id=d style='position:fixed;left:50%;top:50%;width:200px;height:100px;transform:translate(-50%,-50%)'>dialog</div>"));
        QCOMPARE(page.box("d"), QRectF(400, 350, 200, 100));
        QCOMPARE(page.queries.hitTest({410, 360}).element, &page.byId("d"));
        QVERIFY(page.queries.hitTest({610, 460}).element != &page.byId("d"));
    }
    void stickyStaysInView()
    {
        // The header stands at 100 in a section that ends at 1100; it sticks 10 below the view's top.
        LaidOutPage page(LaidOutPage::bare("<div style='height:100px'></div><div style='height:1000px'>"
                                           "<div id=h style='position:sticky;top:10px;height:50px'>head</div></div><div style='height:2000px'></div>"));
        const auto at = [&](double scroll) {
            page.tree.setViewScroll({0, scroll});
            return page.box("h").top();
        };
        QCOMPARE(at(0), 100.0);
        QCOMPARE(at(90), 100.0);
        QCOMPARE(at(200), 210.0);
        QCOMPARE(at(1000), 1010.0);
        QCOMPARE(at(1040), 1050.0); // its bottom reaches the section's
        QCOMPARE(at(1500), 1050.0);
        QCOMPARE(page.queries.hitTest({10, 1060}).element, &page.byId("h"));
        page.tree.setViewScroll({0, 500});
        QCOMPARE(page.queries.hitTest({10, 530}).element, &page.byId("h"));
        const QRectF caret = page.queries.caretRect({page.byId("h").firstChild(), 2});
        QVERIFY(caret.top() >= 510 && caret.bottom() <= 560);
    }
    void stickyToTheBottomAndTheSide()
    {
        // The view is 800 high: a footer at 1000 sticks to its bottom edge until the view reaches it.
        LaidOutPage page(LaidOutPage::bare("<div style='height:1000px'></div><div id=f style='position:sticky;bottom:0;height:40px'></div><div style='height:1000px'></div>"));
        QCOMPARE(page.box("f").top(), 760.0);
        page.tree.setViewScroll({0, 300});
        QCOMPARE(page.box("f").top(), 1000.0);
        LaidOutPage wide(LaidOutPage::bare("<div style='width:3000px'><div id=s style='position:sticky;left:5px;width:50px;height:20px'></div></div>"));
        wide.tree.setViewScroll({400, 0});
        QCOMPARE(wide.box("s").left(), 405.0);
    }
    void stickyInABoxThatScrolls()
    {
        LaidOutPage page(LaidOutPage::bare("<div id=o style='height:200px;overflow:auto'><div style='height:100px'></div>"
                                           "<div id=h style='position:sticky;top:0;height:20px'>x</div><div style='height:1000px'></div></div>"));
        QCOMPARE(page.box("h").top(), 100.0);
        layout::boxOf(page.byId("o"))->asBlock()->rareData().scroll = {0, 400};
        QCOMPARE(page.box("h").top(), 0.0);
    }
    void stickyTableHeads()
    {
        LaidOutPage page(LaidOutPage::bare("<table style='border-spacing:0'><tr><th id=h style='position:sticky;top:0;height:20px;padding:0'>head<tr><td style='height:2000px'>x</table><div style='height:2000px'></div>"));
        page.tree.setViewScroll({0, 300});
        QCOMPARE(page.box("h").top(), 300.0);
    }
    void changesLayOutLikeAFreshPage()
    {
        const uint seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        QString html;
        for (int i = 0; i < 12; ++i)
            html += QStringLiteral("<div id=d%1><p>Words in a box</p><span id=s%1>more</span><div style='position:absolute;left:3px'>held</div></div>").arg(i);
        LaidOutPage page(LaidOutPage::bare(html));
        static const char *const styles[] = {"transform:rotate(10deg)", "position:sticky;top:0", "transform:none", "", "position:relative;transform:scale(2)", "translate:5px", "float:left;transform:translate(3px)",
                                             "display:inline-block;transform:scale(.5)", "overflow:hidden;transform:translateY(9px)"};
        for (int step = 0; step < 80; ++step) {
            const QString id = (random.bounded(4) ? "d" : "s") + QString::number(random.bounded(12));
            setStyle(page.byId(id), styles[random.bounded(int(std::size(styles)))]);
            page.tree.setViewScroll({0, double(random.bounded(500))});
            page.tree.update();
            page.queries.hitTest({double(random.bounded(400)), double(random.bounded(800))});
            const QString difference = page.tree.compareWithFresh();
            QVERIFY2(difference.isEmpty(), qPrintable(QStringLiteral("seed %1 step %2: ").arg(seed).arg(step) + difference));
        }
    }
};

QTEST_MAIN(MovedTest)
#include "tst_moved.moc"
