// SPDX-License-Identifier: GPL-3.0-or-later
/// Items of flex and grid containers while the page changes, and the questions that are asked of them: points, carets,
/// offsets. Where they stand is checked by the cases of tests/data/boxes.
#include "tests/engine/layout/LaidOutPage.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace layout;

namespace {

struct Page : LaidOutPage {
    explicit Page(const QString &body) : LaidOutPage(bare(body)) {}
};

} // namespace

class ItemsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void pointsFindTheirItem()
    {
        Page page("<div id=c style='display:flex;width:300px;height:100px;align-items:flex-start'><p id=a style='margin:0;width:50px'>one</p>"
                  "<p id=b style='margin:0 0 0 50px;width:50px'>two</p></div>");
        QCOMPARE(page.queries.hitTest({5, 5}).element, &page.byId("a"));
        QCOMPARE(page.queries.hitTest({105, 5}).element, &page.byId("b"));
        QVERIFY(page.queries.hitTest({105, 5}).inside);
        // Beside the items the container is hit, and the caret goes to the nearest text.
        const Hit beside = page.queries.hitTest({290, 5});
        QCOMPARE(beside.element, &page.byId("c"));
        QCOMPARE(beside.position.node, page.byId("b").firstChild());
        QCOMPARE(beside.position.offset, 3u);
        QCOMPARE(page.queries.hitTest({60, 90}).element, &page.byId("c"));
    }
    void pointsFindTheItemOfAGrid()
    {
        Page page("<div style='display:grid;grid-template:30px 30px/100px 100px'><p id=a>a</p><p id=b>b</p><p id=c>c</p><p id=d>d</p></div>");
        const char *ids[] = {"a", "b", "c", "d"};
        for (const char *id : ids) setStyle(page.byId(id), "margin:0");
        for (int i = 0; i < 4; ++i) QCOMPARE(page.queries.hitTest(QPointF(3 + 100 * (i % 2), 5 + 30 * (i / 2))).element, &page.byId(ids[i]));
    }
    void theLaterOfTwoThatOverlapIsHit()
    {
        Page page("<div style='display:grid;grid-template:30px/100px'><p id=a style='grid-area:1/1;margin:0'>a</p><p id=b style='grid-area:1/1;margin:0'>b</p></div>");
        QCOMPARE(page.queries.hitTest({3, 5}).element, &page.byId("b"));
    }
    void caretsStandInItems()
    {
        Page page("<div style='display:flex;flex-direction:row-reverse;width:300px'><p id=a style='margin:0;width:50px'>one</p><p id=b style='margin:0;width:50px'>two</p></div>");
        const QRectF caret = page.queries.caretRect({page.byId("a").firstChild(), 0});
        QCOMPARE(caret.x(), 250.0);
        QCOMPARE(page.queries.caretRect({page.byId("b").firstChild(), 0}).x(), 200.0);
        QVERIFY(!page.queries.textRects(*page.byId("b").firstChild(), 0, 3).empty());
        QCOMPARE(page.queries.textRects(*page.byId("b").firstChild(), 0, 3).front().x(), 200.0);
    }
    void offsetsCountFromThePositionedContainer()
    {
        Page page("<div style='height:20px'></div><div id=c style='display:grid;position:relative;border:2px solid;padding:3px;grid-template:30px/100px 50px'><p id=a>a</p><p id=b style='margin:0'>b</p></div>");
        QCOMPARE(page.queries.offsetBox(page.byId("b")), QRect(103, 3, 50, 30));
        QCOMPARE(page.queries.offsetParent(page.byId("b")), &page.byId("c"));
        QCOMPARE(page.queries.clientSize(page.byId("c")), QSize(996, 36));
    }
    void whatSticksOutCanBeScrolledTo()
    {
        Page page("<div id=c style='display:flex;width:100px;height:20px;overflow:auto'><div style='flex:none;width:250px;height:40px'></div></div>");
        QCOMPARE(page.queries.scrollSize(page.byId("c")), QSize(250, 40));
    }
    void aHeldOpenContainerShowsALineUntilSomethingComes()
    {
        Page page("<div id=c style='display:flex'></div><div id=b>b</div>");
        QCOMPARE(page.box("c").height(), 0.0);
        dom::RawTree::setHeldOpen(page.byId("c"), true);
        QCOMPARE(page.box("c").height(), 18.0);
        QVERIFY(!page.queries.caretRect({&page.byId("c"), 0}).isEmpty());
        dom::RawTree::setHeldOpen(page.byId("c"), false);
        dom::RawTree::insert(page.byId("c"), *page.document->createTextNode("text"), nullptr);
        QCOMPARE(page.box("c").height(), 18.0);
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void typingInAnItemLaysOutNoOther()
    {
        QString body = "<div style='display:grid;grid-template-columns:200px 1fr'>";
        for (int i = 0; i < 200; ++i) body += QString("<p id=p%1>words in an item</p>").arg(i);
        Page page(body + "</div>");
        page.tree.update();
        const uint64_t before = page.tree.work().linesBroken;
        dom::RawTree::replaceText(static_cast<dom::CharacterData &>(*page.byId("p100").firstChild()), 0, 0, u"x");
        page.tree.update();
        const uint64_t broken = page.tree.work().linesBroken - before;
        QVERIFY2(broken > 0 && broken <= 3, qPrintable(QString::number(broken)));
    }
    void nestingCostsNoMoreThanItsDepthSquared()
    {
        QString body;
        for (int i = 0; i < 60; ++i) body += i % 2 ? "<div style='display:flex'>" : "<div style='display:flex;flex-direction:column'>";
        Page page(body + "<p id=p>deep</p>");
        page.tree.update();
        QCOMPARE(page.box("p").height(), 18.0);
        QVERIFY2(page.tree.work().boxesLaidOut < 60 * 60 * 6, qPrintable(QString::number(page.tree.work().boxesLaidOut)));
    }
    void manyItemsAndWildLinesAreBounded()
    {
        QString body = "<div style='display:grid;grid-template-columns:repeat(100000,1px)'>";
        for (int i = 0; i < 500; ++i) body += "<i></i>";
        Page page(body + "<i style='grid-area:1000000/1000000/span 1000000/span 1000000'></i><i style='grid-area:-1000000/-1000000'></i></div><p id=p>x</p>");
        QVERIFY(page.box("p").y() >= 0);
    }
    void randomEditsEqualAFreshLayout_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 40; ++seed) QTest::addRow("%u", seed) << seed;
        const quint32 fresh = QRandomGenerator::global()->generate();
        QTest::addRow("%u", fresh) << fresh;
    }
    void randomEditsEqualAFreshLayout()
    {
        QFETCH(quint32, seed);
        QRandomGenerator random(seed);
        Page page("<div style='display:flex'><p>One <b>two</b></p>text<div style='flex:1'><div style='height:50%'>half</div></div></div>"
                  "<div style='display:grid;grid-template-columns:1fr auto 50px;gap:3px'><p>a</p><p>b b</p><div style='display:flex;flex-direction:column'><p>c</p><img width=20 height=10></div><p>d</p></div>"
                  "<div style='float:left;display:flex'><span>x</span><span>y</span></div><p>last <span style='display:inline-flex'><i>in</i><i>line</i></span></p>");
        page.tree.update();
        const char *tags[] = {"p", "div", "b", "span", "li", "table", "td", "br", "ul", "img"};
        const char *styles[] = {"",
                                "display:none",
                                "display:flex",
                                "display:inline-flex;flex-direction:column",
                                "display:grid;grid-template-columns:1fr 2fr;grid-auto-rows:minmax(10px,auto)",
                                "display:flex;flex-wrap:wrap;align-content:space-around;height:120px",
                                "display:contents",
                                "flex:1 1 0",
                                "flex:0 2 200px;min-width:0",
                                "order:-1;align-self:center",
                                "grid-column:span 2;justify-self:end",
                                "position:absolute;top:3px;bottom:4px",
                                "position:absolute",
                                "position:relative;left:4px",
                                "width:40%",
                                "height:60%",
                                "padding:3px;border:1px solid",
                                "margin:auto",
                                "float:right",
                                "overflow:hidden;max-width:60px",
                                "align-self:baseline;padding-top:7px",
                                "height:80px;display:flex;align-items:flex-end",
                                "min-height:90px;display:grid;align-content:end"};
        constexpr quint32 styleCount = sizeof styles / sizeof *styles;
        for (int step = 0; step < 60; ++step) {
            std::vector<dom::Node *> nodes;
            for (dom::Node *n = page.document->body(); n; n = n->next(page.document->body())) nodes.push_back(n);
            dom::Node *node = nodes[random.bounded(quint32(nodes.size()))];
            const int action = random.bounded(7);
            if (qEnvironmentVariableIsSet("DUMP")) qInfo() << step << action << node->id() << node->nodeName() << (node->parentNode() ? node->parentNode()->nodeName() : "") << (node->isElement() ? static_cast<dom::Element *>(node)->attributeValue("style") : node->nodeValue());
            switch (action) {
            case 0:
                if (node->isText()) dom::RawTree::replaceText(static_cast<dom::CharacterData &>(*node), 0, random.bounded(4u), random.bounded(2) ? u"new words " : u" ");
                break;
            case 1:
                if (node->isElement()) {
                    auto child = page.document->createElement(tags[random.bounded(10)]);
                    if (random.bounded(2)) dom::RawTree::insert(*child, *page.document->createTextNode("content " + QString::number(step)), nullptr);
                    dom::RawTree::insert(static_cast<dom::ParentNode &>(*node), *child, node->childAt(random.bounded(node->childCount() + 1)));
                }
                break;
            case 2:
                if (node != page.document->body() && nodes.size() > 12) dom::RawTree::remove(*node);
                break;
            case 3:
            case 4:
            case 5:
                if (node->isElement() && node != page.document->body()) setStyle(static_cast<dom::Element &>(*node), styles[random.bounded(styleCount)]);
                break;
            default:
                if (node->isElement()) dom::RawTree::insert(static_cast<dom::ParentNode &>(*node), *page.document->createTextNode(random.bounded(3) ? "text " : " "), node->childAt(random.bounded(node->childCount() + 1)));
            }
            if (random.bounded(3) == 0) continue; // several at once
            const QString mine = page.tree.dump();
            const QString difference = page.tree.compareWithFresh();
            if (!difference.isEmpty() && qEnvironmentVariableIsSet("DUMP")) qInfo().noquote() << mine;
            QVERIFY2(difference.isEmpty(), qPrintable(QString("step %1: %2").arg(step).arg(difference)));
        }
    }
};

QTEST_MAIN(ItemsTest)
#include "tst_items.moc"
