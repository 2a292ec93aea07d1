// SPDX-License-Identifier: GPL-3.0-or-later
// Pages that mean harm, or are merely absurd: each is laid out with work in proportion to its size, and incremental
// layout still equals a fresh one. Work is counted; that a page takes seconds rather than hours shows in the time limit
// of the test alone.
#include "tests/engine/layout/LaidOutPage.h"

#include <QtTest>

using namespace layout;

namespace {

struct Page : LaidOutPage {
    explicit Page(const QString &html, const QString &base = {}) : LaidOutPage(html, base) { tree.update(); }
};

QString repeated(const char *text, int times) { return QString::fromLatin1(text).repeated(times); }

QString numbered(int times, const std::function<QString(int)> &make)
{
    QString text;
    for (int i = 0; i < times; ++i) text += make(i);
    return text;
}

QString table(int rows, int columns, const char *style)
{
    const QString row = "<tr>" + numbered(columns, [](int i) { return QString("<td>%1").arg(i); });
    return QString("<table style='%1'>").arg(style) + row.repeated(rows) + "</table>";
}

// Every property that takes a length or a number, with every number that arithmetic breaks on.
QString absurdSizes()
{
    const QStringList properties = QString("width height min-width max-width min-height max-height margin padding border-width left top "
                                           "font-size line-height letter-spacing word-spacing text-indent vertical-align border-spacing "
                                           "border-radius tab-size flex columns column-width column-count grid-template-columns order "
                                           "opacity z-index background-size transform-origin outline-width").split(' ');
    const QStringList values = QString("0|0px|1e30px|-1e30px|1e308px|1e999px|99999999999999999999px|NaN|nan|NaNpx|infinity|calc(1px/0)|"
                                       "calc(0px/0)|calc(1e308px*1e308)|calc(infinity*1px)|calc(NaN*1px)|1e-320px|1e-9999px|"
                                       "99999999999999%|-99999999999%|1e30em|1e30vw|2147483647px|2147483648px|-2147483648px|33554431px|"
                                       "33554432px|33554433px|0.00001px|1e9").split('|');
    QString text;
    for (const QString &property : properties)
        for (const QString &value : values)
            text += QString("<div style='%1:%2'>text here <span style='display:inline-block;%1:%2'>x</span><table style='%1:%2'><td style='%1:%2'>y</table></div>")
                        .arg(property, value);
    return text;
}

} // namespace

class Hostile : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void workGrowsWithThePage_data()
    {
        QTest::addColumn<QString>("html");
        const auto row = [](const char *name, const QString &html) { QTest::newRow(name) << html; };
        const bool isLong = qEnvironmentVariableIsSet("VELLUM_LONG");
        const int cells = isLong ? 1000 : 300;
        row("a table of many cells", table(cells, cells, ""));
        row("and with collapsing borders", table(cells, cells, "border-collapse:collapse"));
        row("colspan=10000", "<table border=1>" + repeated("<tr><td colspan=10000>x<td>y", 1000));
        row("rowspan=65534", "<table border=1>" + repeated("<tr><td rowspan=65534>x<td colspan=3 rowspan=500>y", 2000));
        row("spans without end", "<table border=1 style='border-collapse:collapse'>" +
                                     numbered(500, [](int i) { return QString("<tr><td colspan=%1>x<td rowspan=60000>y").arg(10000 - i); }));
        row("nested tables", repeated("<table><tr><td>x", 20000));
        row("nested tables as wide as can be", repeated("<table width='100%'><tr><td>x", 5000));
        row("nested tables as high as can be", repeated("<table height='100%'><tr height='50%'><td height='100%'>x", 5000));
        row("nested fixed tables", repeated("<table style='table-layout:fixed;width:90%'><tr><td>x<td style='vertical-align:middle'>", 5000));
        row("nested everything", repeated("<table><tr><td><div style='float:left'><span style='display:inline-block'>x", 5000));
        row("50,000 floats", numbered(50000, [](int i) { return QString("<div style='float:left;width:%1px;height:%2px'>x</div>").arg(i % 97 + 3).arg(i % 31 + 1); }));
        row("50,000 floats at both sides", numbered(50000, [](int i) { return QString("<span style='float:%1'>x</span> text ").arg(i & 1 ? "right" : "left"); }));
        row("50,000 nested blocks", repeated("<div>", 50000) + "x");
        row("nested floats", repeated("<div style='float:left'>x", 10000));
        row("nested inline blocks", repeated("<div style='display:inline-block'>x", 10000));
        row("nested positioned blocks", repeated("<div style='position:absolute'>x", 10000));
        row("50,000 positioned blocks", "<div style='position:relative'>" + repeated("<div style='position:absolute;left:1px'>x</div>", 50000));
        row("nested margins", repeated("<div style='margin:1px 0'>", 590) + "x" + repeated("</div>", 590) + repeated("<p></p>", 20000));
        row("nested lists", repeated("<ol><li>x", 290) + "<ol>" + repeated("<li>x", 50000));
        row("a word of a megabyte", "<p>" + repeated("a", 1000000));
        row("a word of a megabyte that may be cut", "<p style='overflow-wrap:anywhere'>" + repeated("b", 1000000));
        row("100,000 ideographs", "<p>" + QString::fromUtf8("漢").repeated(100000));
        row("100,000 lines", "<pre>" + repeated("x\n", 100000));
        row("100,000 line breaks", "<p>" + repeated("<br>", 100000));
        row("nested spans", "<p>" + repeated("<span>", 500) + repeated("x ", 5000));
    }
    void workGrowsWithThePage()
    {
        QFETCH(QString, html);
        Page page("<!DOCTYPE html><body>" + html + "<p id=end>end");
        const WorkCounters &work = page.tree.work();
        QVERIFY2(work.boxesLaidOut <= 4 * work.boxesBuilt + 10, qPrintable(QString("%1 of %2").arg(work.boxesLaidOut).arg(work.boxesBuilt)));
        QVERIFY(page.tree.pageSize().height() >= 800);
    }
    void incrementalLayoutHolds_data()
    {
        QTest::addColumn<QString>("html");
        QTest::newRow("nested tables") << repeated("<table><tr><td>x", 100);
        QTest::newRow("floats") << repeated("<div style='float:left;width:30px'>x</div>text ", 300);
        QTest::newRow("spanning cells") << "<table border=1>" + repeated("<tr><td rowspan=65534>x<td colspan=3 rowspan=50>y", 60);
        QTest::newRow("absurd sizes") << absurdSizes();
    }
    void incrementalLayoutHolds()
    {
        QFETCH(QString, html);
        Page page("<!DOCTYPE html><body><p id=start>start</p>" + html + "<p id=end>end");
        QCOMPARE(page.tree.compareWithFresh(), QString());
        page.byId("start").setInnerHTML("another <b>start</b>");
        page.byId("end").setInnerHTML("another end");
        page.tree.update();
        QCOMPARE(page.tree.compareWithFresh(), QString());
        page.tree.setViewport({400, 300});
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void absurdAttributesAreBounded()
    {
        Page page("<table border=99999999999 cellpadding=99999999999 cellspacing=9999999999 width=99999999999999 height=999999999999999999>"
                  "<tr><td colspan=-1 rowspan=-1 width=-5>x<td colspan=99999999999999 rowspan=999999999999999>y<tr><td colspan=NaN "
                  "width='1e99%'>z</table><img width=99999999999999 height=99999999999><hr size=9999999999 width=-1><font size=99999999999>x"
                  "</font><font size=-99999999999>y</font><ol start=99999999999999999999><li>x<li value=2147483647>y<li>z<li "
                  "value=-2147483648>q</ol><textarea rows=999999999 cols=999999999>x</textarea><input size=999999999999><select "
                  "size=9999999><option>x</select><table><colgroup span=99999999><col span=9999999><tr><td>x</table>"
                  "<pre style='tab-size:1e9'>\tx\ty</pre><p id=end>end");
        QCOMPARE(page.tree.compareWithFresh(), QString());
        QVERIFY(page.queries.borderBox(page.byId("end")).height() > 0);
    }
    void bigSheetsAreSearchedByWhatStandsAbove()
    {
        QString sheet = numbered(100000, [](int i) {
            return QString(".c%1 div > p:nth-child(%2), #i%1{color:red;margin:%3px}\n").arg(i).arg(i % 7 + 1).arg(i % 5);
        });
        sheet += ".c7 p:nth-last-child(1){color:#010203}";
        Page page("<!DOCTYPE html><style>" + sheet + "</style>" + numbered(2000, [](int i) { return QString("<div class=c%1><p id=i%1>x</p></div>").arg(i); }) +
                  "<div class=c7><p>x</p><p id=last>x</p></div>");
        QCOMPARE(page.services.engine().styleFor(page.byId("i8")).color(), QRgb(0xFFFF0000));
        QCOMPARE(page.services.engine().styleFor(page.byId("i7")).color(), QRgb(0xFFFF0000)); // an id weighs more than the last rule
        QCOMPARE(page.services.engine().styleFor(page.byId("last")).color(), QRgb(0xFF010203));
    }
    void placesAmongSiblingsFollowChanges()
    {
        Page page("<!DOCTYPE html><style>p:nth-child(2){color:#000001}p:nth-last-child(2){color:#000002}p:nth-of-type(4){color:#000003}</style>"
                  "<body><p id=a>x<p id=b>x<p id=c>x<p id=d>x");
        const auto color = [&](const char *id) { return int(page.services.engine().styleFor(page.byId(id)).color() & 0xFFFFFF); };
        QCOMPARE(color("a"), 0);
        QCOMPARE(color("b"), 1);
        QCOMPARE(color("c"), 2);
        QCOMPARE(color("d"), 3);
        page.byId("a").insertAdjacentHTML("beforebegin", "<div></div>");
        QCOMPARE(color("a"), 1);
        QCOMPARE(color("b"), 0);
        QCOMPARE(color("c"), 2);
        QCOMPARE(color("d"), 3);
    }
    void selectorsWithoutEndMatchNothingAndHarmNothing()
    {
        const auto chain = [](const QString &by) { return QStringList(QList<QString>(5000, "div")).join(by); };
        const QString rules = chain(" ") + " p{color:red} " + chain(" > ") + " p{color:red} " + chain(" ~ ") + "{color:red} div" + repeated(".a", 5000) +
                              "{color:red} " + repeated(":not(", 5000) + "div" + repeated(")", 5000) + "{color:red} " + repeated(":is(", 5000) + "div" +
                              repeated(")", 5000) + "{color:red} " + chain(",") + "{margin-left:1px} p{color:#000001}";
        Page page("<!DOCTYPE html><style>" + rules + "</style>" + repeated("<div>", 590) + "<p id=p>x</p>" + repeated("<p>x</p>", 500));
        QCOMPARE(int(page.services.engine().styleFor(page.byId("p")).color() & 0xFFFFFF), 1);
    }
    void importsMayNameEachOther()
    {
        QTemporaryDir folder;
        const auto write = [&](const char *name, const QByteArray &text) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text);
        };
        write("a.css", "@import 'b.css'; @import 'a.css'; p{color:#000001}");
        write("b.css", "@import url(a.css); @import 'b.css'; p{margin-left:7px}");
        Page page("<!DOCTYPE html><link rel=stylesheet href=a.css><style>@import 'b.css';</style><p id=p>x",
                  QUrl::fromLocalFile(folder.filePath("page.html")).toString());
        QCOMPARE(int(page.services.engine().styleFor(page.byId("p")).color() & 0xFFFFFF), 1);
        QCOMPARE(page.queries.borderBox(page.byId("p")).x(), 15.0);
    }
    void propertiesMayNameThemselves()
    {
        const QString doubling = numbered(64, [](int i) { return QString("--x%1:var(--x%2) var(--x%2);").arg(i).arg(i + 1); });
        Page page("<!DOCTYPE html><style>:root{--a:var(--b);--b:var(--a);--c:var(--c);--d:var(--d,red);--e:calc(var(--e) + 1px)}"
                  "p{color:#000001;width:var(--e);margin:var(--d)}p.a{color:var(--a)}div{" + doubling + "--x64:lol;background:var(--x0)}</style>"
                  "<div>boom</div><p id=p>x<p class=a id=q>x");
        QCOMPARE(int(page.services.engine().styleFor(page.byId("p")).color() & 0xFFFFFF), 1);
        QCOMPARE(int(page.services.engine().styleFor(page.byId("q")).color() & 0xFFFFFF), 0); // invalid when computed: inherited
    }
    void countersReachAsFarAsTheyMay()
    {
        Page page("<!DOCTYPE html><style>p::before{content:counter(a) counters(a,'.') attr(x);counter-increment:a 2147483647 a 2147483647;"
                  "counter-reset:a 2147483647}ol{counter-reset:li 2147483647;counter-increment:li 2147483647}"
                  "li::before{content:counters(li,'.')}</style>" + repeated("<p>x</p>", 100) + repeated("<ol><li>x", 290));
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
};

QTEST_MAIN(Hostile)
#include "tst_hostile.moc"
