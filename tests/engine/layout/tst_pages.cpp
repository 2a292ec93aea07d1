// SPDX-License-Identifier: GPL-3.0-or-later
/// Where pages end: by themselves, where they are told to, and where they would rather not. Lines are 20 pixels high and
/// a page has room for ten of them, unless a test says so.
#include "engine/layout/Paginator.h"
#include "tests/engine/layout/LaidOutPage.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace layout;

namespace {

const QString sheet = QStringLiteral("<!DOCTYPE html><style>body,p,div,h2,ul,table,td,th{margin:0;padding:0}body{font:16px/20px 'Liberation Sans'}"
                                     "table{border-spacing:0}p,div{orphans:2;widows:2}</style><body>");

/// A document on pages of 400 by 200.
struct Paged : LaidOutPage {
    std::unique_ptr<Paginator> pages;
    explicit Paged(const QString &body, PageSpace space = {Unit::px(200), Unit::px(200), Unit::px(200)}) : LaidOutPage(sheet + body)
    {
        tree.setViewport({400, 200});
        pages = std::make_unique<Paginator>(tree, space);
        pages->run();
    }
    /// From the start of the element's page.
    double onPage(const QString &id) { return box(id).top() - 200 * page(id); }
    int page(const QString &id) { return int(std::floor(box(id).top() / 200)); }
};

QString lines(int count, const QString &text = QStringLiteral("x"))
{
    return QStringList(QList<QString>(count, text)).join(QStringLiteral("<br>"));
}

Point placeOf(const BlockBox &box)
{
    Point at;
    for (const BlockBox *up = &box; up; up = up->container()) at = at + up->position();
    return at;
}

/// What stands out of its parent, or on what is in front of it.
QString misplaced(const BlockBox &block)
{
    const BlockBox *parent = block.parent() ? block.parent()->asBlock() : nullptr;
    if (!parent || !block.inSumTree) return {};
    const Unit top = block.top();
    if (top < parent->contentTop() || top + block.height > parent->height) return QStringLiteral("a box stands out of its parent");
    const BlockBox *before = block.previousInFlow();
    return before && top < before->top() + before->height ? QStringLiteral("a box stands on the one in front") : QString();
}

/// A line in the room that a table's head takes.
QString underHead(const Line &line, Point at, const Paginator &pages)
{
    const Unit top = at.y + line.top;
    for (const Paginator::Head &head : pages.heads(pages.space().pageAt(top)))
        if (top < head.top + head.source.height && top + line.height > head.top && at.x + line.left < head.source.right() &&
            at.x + line.left + line.width > head.source.x)
            return QStringLiteral("a line lies under a head at %1").arg(top.toDouble());
    return {};
}

/// What lies on the boundary of two pages though a page could hold it, or isn't where it belongs.
QString cut(LayoutTree &tree, const Paginator &pages)
{
    for (const Box *box = &tree.root(); box;) {
        const BlockBox *block = box->asBlock();
        const auto check = [&](Unit top, Unit bottom, const char *what) -> QString {
            const int page = pages.space().pageAt(top);
            const Unit room = pages.space().height(page);
            if (bottom <= pages.space().bottom(page) || bottom - top > room) return {};
            return QStringLiteral("a %1 from %2 to %3").arg(QLatin1String(what)).arg(top.toDouble()).arg(bottom.toDouble());
        };
        if (block && block->inlineContent) {
            const Unit top = placeOf(*block).y;
            for (const Line &line : block->inlineContent->lines) {
                if (line.block) continue;
                QString found = check(top + line.top, top + line.bottom(), "line");
                if (found.isEmpty()) found = underHead(line, placeOf(*block), pages);
                if (!found.isEmpty()) return found;
            }
        }
        if (block && block->isReplaced() && !block->inlineLevel && !block->floating) {
            const QString found = check(placeOf(*block).y, placeOf(*block).y + block->height, "box");
            if (!found.isEmpty()) return found;
        }
        if (const QString found = block ? misplaced(*block) : QString(); !found.isEmpty()) return found;
        const Box *next = box->firstChild();
        while (box && !next) {
            next = box->next();
            box = box->parent();
        }
        box = next;
    }
    return {};
}

} // namespace

class PagesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void anEmptyDocumentHasAPage()
    {
        QCOMPARE(Paged("").pages->pageCount(), 1);
        QCOMPARE(Paged("<p>x</p>").pages->pageCount(), 1);
    }
    void aPageTakesWhatFits()
    {
        QCOMPARE(Paged("<p>" + lines(10)).pages->pageCount(), 1);
        QCOMPARE(Paged("<p>" + lines(12)).pages->pageCount(), 2);
        QCOMPARE(Paged("<p>" + lines(100)).pages->pageCount(), 10);
    }
    void theFirstPageAndLeftOnesHaveTheirOwnHeights()
    {
        // 5 lines, then 10 and 2 by turns.
        Paged page("<p>" + lines(5) + "<p id=a>" + lines(10) + "<p id=b>" + lines(2) + "<p id=c>x", {Unit::px(100), Unit::px(200), Unit::px(40)});
        QCOMPARE(page.box("a").top(), 100.0);
        QCOMPARE(page.box("b").top(), 300.0);
        QCOMPARE(page.box("c").top(), 340.0);
        QCOMPARE(page.pages->pageCount(), 4);
    }
    void noLineIsCut()
    {
        // 200 isn't a multiple of 30.
        Paged page("<p style='line-height:30px'>" + lines(20));
        QCOMPARE(cut(page.tree, *page.pages), QString());
        QCOMPARE(page.pages->pageCount(), 4); // six lines each, the last two
    }
    void aMarginVanishesWhereAPageEnds()
    {
        Paged page("<p>" + lines(9) + "<p id=a style='margin-top:30px'>x");
        QCOMPARE(page.page("a"), 1);
        QCOMPARE(page.onPage("a"), 0.0);
    }
    void aMarginStaysBehindAForcedBreak()
    {
        Paged page("<p>x<p id=a style='margin-top:30px;page-break-before:always'>y");
        QCOMPARE(page.page("a"), 1);
        QCOMPARE(page.onPage("a"), 30.0);
    }
    void forcedBreaksByOldAndNewNames()
    {
        Paged page("<p>x<p id=a style='page-break-before:always'>x<p id=b style='break-before:page'>x<div id=c style='page-break-after:always'>x</div>"
                   "<div id=d>x</div><p style='break-after:page'>x<p id=e>x");
        QCOMPARE(page.page("a"), 1);
        QCOMPARE(page.page("b"), 2);
        QCOMPARE(page.page("c"), 2);
        QCOMPARE(page.page("d"), 3);
        QCOMPARE(page.page("e"), 4);
        QCOMPARE(page.pages->pageCount(), 5);
    }
    void aBreakAtTheStartAndTheEndMakesNoEmptyPage()
    {
        Paged page("<div style='page-break-before:always'>x</div><div style='page-break-after:always'>y</div>");
        QCOMPARE(page.pages->pageCount(), 1);
    }
    void breaksOfFirstAndLastChildrenAreTheParents()
    {
        Paged page("<p>x<div id=outer style='border:1px solid'><p id=a style='page-break-before:always'>x<p style='page-break-after:always'>x</div><p id=b>x");
        QCOMPARE(page.page("outer"), 1);
        QCOMPARE(page.page("a"), 1);
        QCOMPARE(page.page("b"), 2);
    }
    void leftAndRightPagesMayLeaveAnEmptyOne()
    {
        Paged page("<p>x<p id=a style='page-break-before:right'>x<p id=b style='page-break-before:left'>x<p id=c style='break-before:recto'>x");
        QCOMPARE(page.page("a"), 2); // counted from 0, even pages are right ones
        QCOMPARE(page.page("b"), 3);
        QCOMPARE(page.page("c"), 4);
    }
    void headingsStayWithWhatFollows()
    {
        Paged page("<p>" + lines(9) + "<h2 id=h style='font-size:16px;line-height:20px;page-break-after:avoid'>t</h2><p id=p>" + lines(2));
        QCOMPARE(page.page("h"), 1);
        QCOMPARE(page.page("p"), 1);
    }
    void avoidBeforeKeepsTogether()
    {
        Paged page("<p>" + lines(8) + "<p id=a>" + lines(2) + "<p id=b style='break-before:avoid'>x");
        QCOMPARE(page.page("a"), 1);
        QCOMPARE(page.page("b"), 1);
    }
    void avoidInsideKeepsABlockWhole()
    {
        Paged page("<p>" + lines(7) + "<div id=a style='page-break-inside:avoid'><p>" + lines(3) + "<p>" + lines(3) + "</div>");
        QCOMPARE(page.page("a"), 1);
        QCOMPARE(page.pages->pageCount(), 2);
    }
    void avoidInsideGivesWayInABlockHigherThanAPage()
    {
        Paged page("<p>" + lines(5) + "<div id=a style='page-break-inside:avoid'>" + lines(14) + "</div>");
        QCOMPARE(page.page("a"), 0); // moving it would gain nothing
        QCOMPARE(page.pages->pageCount(), 2);
    }
    void avoidEverywhereStillEndsPages()
    {
        Paged page("<div style='page-break-inside:avoid'>" + lines(35) + "</div>");
        QCOMPARE(page.pages->pageCount(), 4);
        QCOMPARE(cut(page.tree, *page.pages), QString());
    }
    void orphansAndWidowsAreTwo()
    {
        // One line would stay alone on the first page.
        Paged orphan("<p>" + lines(9) + "<p id=a>" + lines(4));
        QCOMPARE(orphan.page("a"), 1);
        // One would go alone to the second: two go.
        Paged widow("<p id=a>" + lines(11) + "<p id=b>x");
        const Line &eighth = layout::boxOf(widow.byId("a"))->asBlock()->inlineContent->lines[8];
        const Line &ninth = layout::boxOf(widow.byId("a"))->asBlock()->inlineContent->lines[9];
        QCOMPARE(eighth.top.toDouble(), 160.0);
        QCOMPARE(ninth.top.toDouble(), 200.0);
        QCOMPARE(widow.onPage("b"), 40.0);
        // Three lines can't be divided at all.
        Paged three("<p>" + lines(8) + "<p id=a>" + lines(3));
        QCOMPARE(three.page("a"), 1);
    }
    void orphansAndWidowsByTheStyle()
    {
        Paged page("<p>" + lines(8) + "<p id=a style='orphans:3;widows:1'>" + lines(6));
        QCOMPARE(page.page("a"), 1);
        Paged free("<p>" + lines(9) + "<p id=a style='orphans:1;widows:1'>" + lines(2));
        QCOMPARE(free.page("a"), 0);
    }
    void anImageMovesToTheNextPage()
    {
        Paged page("<p>" + lines(8) + "<img id=i style='display:block' width=100 height=100><p id=a>x");
        QCOMPARE(page.page("i"), 1);
        QCOMPARE(page.onPage("i"), 0.0);
        QCOMPARE(page.onPage("a"), 100.0);
    }
    void anImageInALineMovesWithIt()
    {
        Paged page("<p>" + lines(8) + "<p>a<img id=i width=100 height=100>b");
        QCOMPARE(page.page("i"), 1);
        QCOMPARE(cut(page.tree, *page.pages), QString());
    }
    void whatIsHigherThanAPageIsCut()
    {
        Paged page("<p>x<img id=i style='display:block' width=100 height=500><p id=a>x");
        QCOMPARE(page.box("i").top(), 200.0);
        QCOMPARE(page.box("a").top(), 700.0);
        QCOMPARE(page.pages->pageCount(), 4);
    }
    void borderAndPaddingStayWithTheLinesBesideThem()
    {
        Paged page("<p>" + lines(9) + "<div id=a style='border-top:1px solid;padding-top:5px'>" + lines(3) + "</div>");
        QCOMPARE(page.onPage("a"), 0.0);
        Paged end("<div id=a style='padding-bottom:10px;orphans:1;widows:1'>" + lines(10) + "</div>");
        QCOMPARE(end.pages->pageCount(), 2); // the tenth line goes with the padding
        QCOMPARE(layout::boxOf(end.byId("a"))->asBlock()->inlineContent->lines[9].top.toDouble(), 200.0);
    }
    void whatFollowsADividedBlockFollows()
    {
        Paged page("<div id=outer style='border:2px solid'><p style='line-height:30px'>" + lines(10) + "</p></div><p id=a>x");
        QCOMPARE(page.box("a").top(), page.box("outer").bottom());
        QCOMPARE(cut(page.tree, *page.pages), QString());
    }

    // ---- Tables ----

    void rowsArentCut()
    {
        QString rows;
        for (int i = 0; i < 20; ++i) rows += QStringLiteral("<tr id=r%1><td>%2</td><td>y</td></tr>").arg(i).arg(lines(3));
        Paged page("<table>" + rows + "</table><p id=a>x");
        QCOMPARE(page.page("r2"), 0);
        QCOMPARE(page.page("r3"), 1);
        QCOMPARE(page.onPage("r3"), 0.0);
        QCOMPARE(page.pages->pageCount(), 7); // three rows each
        QCOMPARE(page.box("a").top(), page.box("r19").bottom());
    }
    void aHeadIsRepeatedAndItsRoomKept()
    {
        QString rows;
        for (int i = 0; i < 20; ++i) rows += QStringLiteral("<tr id=r%1><td>x</td></tr>").arg(i);
        Paged page("<p>x<table id=t><thead><tr id=h><th>H</th></tr></thead><tbody>" + rows + "</tbody></table>");
        // 1 + 1 + 8 rows, then a head and 9, then a head and 3.
        QCOMPARE(page.page("r7"), 0);
        QCOMPARE(page.page("r8"), 1);
        QCOMPARE(page.onPage("r8"), 20.0);
        QCOMPARE(page.page("r17"), 2);
        QCOMPARE(page.onPage("r17"), 20.0);
        QCOMPARE(page.pages->pageCount(), 3);
        QVERIFY(page.pages->heads(0).empty());
        for (int i = 1; i <= 2; ++i) {
            QCOMPARE(page.pages->heads(i).size(), std::size_t(1));
            QCOMPARE(page.pages->heads(i)[0].top.toDouble(), 200.0 * i);
            QCOMPARE(page.pages->heads(i)[0].source.toRectF(), QRectF(0, 20, page.box("t").width(), 20));
        }
    }
    void aHeadByItsDisplayIsOneToo()
    {
        Paged page("<div style='display:table'><div style='display:table-header-group'>H</div><div style='display:table-row-group'>"
                   "<div style='display:table-row'>" + lines(9) + "</div><div id=a style='display:table-row'>x</div></div></div>");
        QCOMPARE(page.onPage("a"), 20.0);
        QCOMPARE(page.pages->heads(1).size(), std::size_t(1));
    }
    void aHeadIsntLeftAlone()
    {
        Paged page("<p>" + lines(9) + "<table id=t><thead><tr id=h><th>H</th></tr></thead><tr id=r><td>x</td></tr></table>");
        QCOMPARE(page.page("h"), 1);
        QCOMPARE(page.onPage("r"), 20.0);
        QVERIFY(page.pages->heads(1).empty());
    }
    void aHeadOfMostOfAPageIsntRepeated()
    {
        Paged page("<table><thead><tr><th>" + lines(6) + "</th></tr></thead><tr><td>" + lines(4) + "</td></tr><tr id=r><td>x</td></tr></table>");
        QCOMPARE(page.onPage("r"), 0.0);
        QVERIFY(page.pages->heads(1).empty());
    }
    void headsOfTablesInTablesStandBelowEachOther()
    {
        QString rows;
        for (int i = 0; i < 20; ++i) rows += QStringLiteral("<tr id=r%1><td>x</td></tr>").arg(i);
        Paged page("<table><thead><tr><th>A</th></tr></thead><tr><td><table><thead><tr><th>B</th></tr></thead>" + rows + "</table></td></tr></table>");
        QCOMPARE(page.page("r8"), 1);
        QCOMPARE(page.onPage("r8"), 40.0);
        QCOMPARE(page.pages->heads(1).size(), std::size_t(2));
        QCOMPARE(page.pages->heads(1)[0].top.toDouble(), 200.0);
        QCOMPARE(page.pages->heads(1)[1].top.toDouble(), 220.0);
    }
    void aRowHigherThanAPageIsDividedBetweenTheLinesOfEachCell()
    {
        Paged page("<table id=t><tr id=r><td id=a>" + lines(20) + "</td><td style='line-height:30px' id=b><p>" + lines(20) + "</td></tr><tr id=next><td>x</td></tr></table>");
        QCOMPARE(cut(page.tree, *page.pages), QString());
        QCOMPARE(page.box("r").top(), 0.0);
        QCOMPARE(page.box("next").top(), page.box("r").bottom());
        QCOMPARE(page.box("a").height(), page.box("b").height());
        // 20 lines of 30, six on a page.
        QCOMPARE(page.box("next").top(), 660.0);
    }
    void breaksOfRowsCount()
    {
        Paged page("<table><tr><td>x</td></tr><tr id=a style='page-break-before:always'><td>x</td></tr><tr><td>x</td></tr></table>");
        QCOMPARE(page.page("a"), 1);
    }
    void aCellOverRowsKeepsThemTogether()
    {
        Paged page("<p>" + lines(7) + "<table><tr id=a><td rowspan=2>x</td><td>" + lines(2) + "</td></tr><tr id=b><td>" + lines(2) + "</td></tr></table>");
        QCOMPARE(page.page("a"), 1);
        QCOMPARE(page.page("b"), 1);
    }
    void aCellOverManyRowsIsDivided()
    {
        QString rows;
        for (int i = 0; i < 30; ++i) rows += "<tr><td style='height:25px'>x</td></tr>";
        Paged page("<table><tr><td id=side rowspan=31>" + lines(35) + "</td><td>x</td></tr>" + rows + "</table><p id=a>x");
        QCOMPARE(cut(page.tree, *page.pages), QString());
        QCOMPARE(page.box("side").bottom(), page.box("a").top());
    }

    // ---- Beside each other ----

    void aFloatedImageIsntCut()
    {
        Paged page("<p>" + lines(8) + "<div id=d><img id=i style='float:left' width=50 height=100>" + lines(8) + "</div>");
        QCOMPARE(page.page("i"), 1);
        QCOMPARE(page.page("d"), 1);
    }
    void floatedColumnsAreDividedOnTheirOwn()
    {
        Paged page("<div id=a style='float:left;width:100px'>" + lines(15) + "</div><div id=b style='float:left;width:200px;line-height:30px'>" + lines(15) +
                   "</div><p id=c style='clear:both'>x");
        QCOMPARE(cut(page.tree, *page.pages), QString());
        QCOMPARE(page.box("b").height(), 490.0); // 6, 6 and 3 lines
        QVERIFY(page.box("c").top() >= page.box("b").bottom());
    }
    void whatClearsAFloatStandsBelowTheHead()
    {
        Paged page("<table><thead><tr><th>H</th></tr></thead><tr><td><p>x<div style='float:left'>" + lines(17) + "</div><p id=p style='clear:left'>x</td></tr></table>");
        // The float's last line ends with the second page.
        QCOMPARE(page.page("p"), 2);
        QCOMPARE(page.onPage("p"), 20.0);
        QCOMPARE(page.pages->heads(2).size(), std::size_t(1));
    }
    void aBoxThatHoldsFloatsGrowsWithThem()
    {
        const QString floats = "<div style='float:left;line-height:30px'>" + lines(15) + "</div>";
        Paged page("<div id=a style='overflow:hidden'>" + floats + "</div><p id=b>x<table style='page-break-before:always'><tr><td id=c>" + floats + "</td></tr></table><p id=d>x");
        QCOMPARE(cut(page.tree, *page.pages), QString());
        QCOMPARE(page.box("a").height(), 490.0);
        QCOMPARE(page.box("b").top(), 490.0);
        QCOMPARE(page.box("c").height(), 490.0);
        QCOMPARE(page.box("d").top(), 600.0 + 490.0);
    }
    void flexibleItemsBesideEachOther()
    {
        Paged page("<div id=f style='display:flex'><div id=a>" + lines(15) + "</div><div id=b style='line-height:30px'>" + lines(15) + "</div></div><p id=c>x");
        QCOMPARE(cut(page.tree, *page.pages), QString());
        QCOMPARE(page.box("b").height(), 490.0);
        QCOMPARE(page.box("c").top(), 490.0);
    }
    void aColumnOfItemsIsAFlow()
    {
        Paged page("<div style='display:flex;flex-direction:column'><div id=a>" + lines(8) + "</div><div id=b style='break-before:page'>x</div></div>");
        QCOMPARE(page.page("b"), 1);
    }
    void columnsAreFilledPageByPage()
    {
        // 50 lines in two columns: 20 on each page, the rest side by side.
        Paged page("<div id=c style='columns:2;column-gap:0'>" + lines(50) + "</div><p id=a>x");
        QCOMPARE(page.pages->pageCount(), 3);
        QCOMPARE(page.box("c").height(), 500.0);
        QCOMPARE(page.box("a").top(), 500.0);
        const ColumnSet &set = *layout::boxOf(page.byId("c"))->asBlock()->columns();
        QCOMPARE(set.pieces.size(), std::size_t(6));
        QCOMPARE((set.pieces[2].from + set.pieces[2].shift.y).toDouble(), 200.0);
        QCOMPARE(set.pieces[3].from.toDouble(), 600.0);
    }
    void columnsBegunOnAPageGoOnOnTheNext()
    {
        Paged page("<p>" + lines(5) + "<div id=c style='columns:2;column-gap:0;line-height:30px;orphans:1;widows:1'>" + lines(20) + "</div>");
        // Columns of three lines of 30 on the first page, of six on the next, of one on the third.
        const ColumnSet &set = *layout::boxOf(page.byId("c"))->asBlock()->columns();
        QCOMPARE(page.box("c").top(), 100.0);
        QCOMPARE(set.pieces[1].from.toDouble(), 90.0);
        QCOMPARE((set.pieces[2].from + set.pieces[2].shift.y).toDouble(), 100.0); // the next page, from the box's top
        QCOMPARE(page.pages->pageCount(), 3);
    }
    void positionedBoxesMoveWithWhatIsAroundThem()
    {
        Paged page("<p>" + lines(9) + "<div id=d style='position:relative;page-break-inside:avoid'>" + lines(3) + "<span id=s style='position:absolute;top:5px'>s</span></div>");
        QCOMPARE(page.page("d"), 1);
        QCOMPARE(page.box("s").top() - page.box("d").top(), 5.0);
    }
    void fixedBoxesAreOnEachPage()
    {
        Paged page("<div id=f style='position:fixed;top:10px'>f</div><p>" + lines(30));
        for (int i = 0; i < 3; ++i) {
            page.pages->turnTo(i);
            QCOMPARE(page.box("f").top(), 200.0 * i + 10);
        }
    }
    void whatHangsOutOfTheLeftEdgeMakesNoPages()
    {
        QCOMPARE(Paged("<p>x<div style='position:absolute;left:-9999px;top:5000px;width:100px'>x</div>").pages->pageCount(), 1);
    }

    // ---- Everything ----

    void randomDocumentsAreNeverCut()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        const int rounds = 200;
        // The shortest of those that fail tells most.
        QString worst, where;
        for (int round = 0; round < rounds; ++round) {
            const QString body = randomBlocks(random, 1 + round % 2);
            Paged page(body);
            const QString found = cut(page.tree, *page.pages);
            if (found.isEmpty() || (!worst.isEmpty() && body.size() >= worst.size())) continue;
            worst = body;
            where = found;
        }
        QVERIFY2(worst.isEmpty(), qPrintable(where + " in " + worst));
    }

private:
    static QString randomBlocks(QRandomGenerator &random, int depth)
    {
        static const char *const styles[] = {"", "page-break-inside:avoid", "margin:15px 0", "border:3px solid;padding:4px", "page-break-before:always",
                                             "page-break-after:avoid", "line-height:23px", "position:relative", "overflow:hidden", "orphans:4"};
        QString out;
        for (int i = random.bounded(1, 7); i > 0; --i) {
            const QString style = QLatin1String(styles[random.bounded(10)]);
            switch (depth > 0 ? random.bounded(8) : random.bounded(2)) {
            case 0: out += "<p style='" + style + "'>" + lines(random.bounded(1, 15)) + "</p>"; break;
            case 1: out += QStringLiteral("<img style='display:block;%1' width=20 height=%2>").arg(style).arg(random.bounded(1, 90)); break;
            case 2:
            case 3: out += "<div style='" + style + "'>" + randomBlocks(random, depth - 1) + "</div>"; break;
            case 4: {
                out += "<table style='" + style + "'>" + (random.bounded(2) ? "<thead><tr><th>h</th></tr></thead>" : "");
                for (int r = random.bounded(1, 5); r > 0; --r) out += "<tr><td>" + randomBlocks(random, depth - 1) + "</td><td>" + lines(random.bounded(1, 4)) + "</td></tr>";
                out += "</table>";
                break;
            }
            case 5: out += "<ul style='" + style + "'><li>" + lines(random.bounded(1, 9)) + "</li><li>x</li></ul>"; break;
            case 6: out += "<div style='display:flex;" + style + "'><div>" + randomBlocks(random, depth - 1) + "</div><div>" + lines(4) + "</div></div>"; break;
            case 7: out += "<div style='float:left;width:100px'>" + lines(random.bounded(1, 15)) + "</div><p style='clear:left'>" + lines(3) + "</p>"; break;
            }
        }
        return out;
    }
};

QTEST_MAIN(PagesTest)
#include "tst_pages.moc"
