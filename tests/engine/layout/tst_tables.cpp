// SPDX-License-Identifier: GPL-3.0-or-later
/// Tables while their cells change: how much is done, and that it comes to what a fresh layout gives. Where things stand in
/// a table is checked by the cases of tests/data/boxes.
#include "tests/engine/layout/LaidOutPage.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace layout;

namespace {

dom::CharacterData &textOf(dom::Element &element)
{
    for (dom::Node *node = element.firstChild(); node; node = node->next(&element))
        if (node->isText()) return static_cast<dom::CharacterData &>(*node);
    qFatal("no text");
}

/// Rows of three cells: r0c0 and so on, of which the first row's are the widest.
QString rows(int count)
{
    QString html = "<tr><td id=r0c0>extraordinarily wide words<td id=r0c1>extraordinarily wide words<td id=r0c2>extraordinarily wide words";
    for (int r = 1; r < count; ++r)
        html += QString("<tr><td id=r%1c0>a word<td id=r%1c1><p id=p%1>another <b>word</b></p><td id=r%1c2>more").arg(r);
    return html;
}

struct Page : LaidOutPage {
    explicit Page(const QString &body) : LaidOutPage(bare(body)) { tree.update(); }
    /// How many cells and blocks the change looks at.
    uint64_t workOf(const std::function<void()> &change)
    {
        const uint64_t before = tree.work().childrenPlaced;
        change();
        tree.update();
        return tree.work().childrenPlaced - before;
    }
    uint64_t typing(const char *id, const QString &text)
    {
        return workOf([&] { dom::RawTree::replaceText(textOf(byId(id)), 1, 0, text); });
    }
};

constexpr uint64_t aRow = 3 + 4; // its cells, and what leads to the table and into the cell
constexpr uint64_t anotherTable = 3;

} // namespace

class TablesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // COMPAT: in quirks mode the margins above go, and of those below a paragraph's and preformatted text's, however deep.
    void aQuirkyCellLosesSomeMargins_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<double>("height");
        QTest::newRow("paragraph") << "<p>x</p>" << 10.0;
        QTest::newRow("paragraph in a block") << "<div><p>x</p></div>" << 10.0;
        QTest::newRow("paragraph behind text") << "x<p>x</p>" << 36.0;
        QTest::newRow("preformatted") << "<pre style='font-size:16px'>x</pre>" << 10.0;
        QTest::newRow("list") << "<ul><li>x</ul>" << 26.0;
        QTest::newRow("paragraph in a list") << "<ul><li><p>x</p></ul>" << 26.0;
        QTest::newRow("descriptions") << "<dl><dd>x</dl>" << 26.0;
        QTest::newRow("quotation") << "<blockquote>x</blockquote>" << 26.0;
        QTest::newRow("heading") << "<h1 style='font-size:100px'>x</h1>" << 77.0;
    }
    void aQuirkyCellLosesSomeMargins()
    {
        QFETCH(QString, content);
        QFETCH(double, height);
        LaidOutPage page("<table cellpadding=0 style='line-height:10px'><tr><td id=a>" + content + "</table>");
        QCOMPARE(page.box("a").height(), height);
    }
    void typingLooksAtOneRow_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("end");
        QTest::newRow("automatic") << "<table>" << "</table>";
        QTest::newRow("full width") << "<table style='width:100%'>" << "</table>";
        QTest::newRow("fixed") << "<table style='table-layout:fixed;width:300px'>" << "</table>";
        QTest::newRow("collapsed") << "<table style='border-collapse:collapse' border=1>" << "</table>";
        QTest::newRow("parts") << "<table><caption>Of words</caption><col><colgroup><col><col></colgroup><thead><tr><th>a<th>b<th>c</thead><tbody>"
                               << "</tbody><tfoot><tr><td>f<td colspan=2>g</tfoot></table>";
        QTest::newRow("joined elsewhere") << "<table><tr><td rowspan=2>a<td>b<td>c<tr><td>d<td>e" << "</table>";
        QTest::newRow("in another") << "<table><tr><td><table>" << "</table></table>";
        QTest::newRow("right to left") << "<table dir=rtl>" << "</table>";
    }
    void typingLooksAtOneRow()
    {
        QFETCH(QString, start);
        QFETCH(QString, end);
        Page page(start + rows(400) + end);
        for (const char *id : {"r200c0", "p200", "r399c2", "r1c0"}) {
            const uint64_t work = page.typing(id, "x");
            QVERIFY2(work <= aRow + anotherTable, qPrintable(QString("%1 at %2").arg(work).arg(id)));
            QCOMPARE(page.tree.compareWithFresh(), QString());
        }
    }
    void aStyleWithinACellLooksAtItsRow()
    {
        Page page("<table>" + rows(400) + "</table>");
        const uint64_t work = page.workOf([&] { setStyle(*page.byId("p200").firstChild()->nextSibling()->asElement(), "color:red;font-size:17px"); });
        QVERIFY2(work <= aRow, qPrintable(QString::number(work)));
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void aBlockThatComesToACellLooksAtItsRow()
    {
        Page page("<table>" + rows(400) + "</table>");
        const double below = page.box("r201c0").y();
        const auto block = page.document->createElement("p");
        dom::RawTree::append(*block, *page.document->createTextNode("new"));
        dom::Element &cell = page.byId("r200c1");
        uint64_t work = page.workOf([&] { dom::RawTree::insert(cell, *block, nullptr); });
        QVERIFY2(work <= aRow + 4, qPrintable(QString::number(work)));
        QVERIFY(page.box("r201c0").y() > below);
        QCOMPARE(page.tree.compareWithFresh(), QString());
        work = page.workOf([&] { dom::RawTree::remove(*block); });
        QVERIFY2(work <= aRow + 4, qPrintable(QString::number(work)));
        QCOMPARE(page.box("r201c0").y(), below);
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void aWiderColumnMovesTheOthers()
    {
        Page page("<table>" + rows(40) + "</table>");
        const double was = page.box("r7c1").x();
        page.typing("r20c0", "nothing here was ever as wide as this");
        const double wide = page.box("r7c1").x();
        QVERIFY(wide > was);
        page.workOf([&] { dom::RawTree::replaceText(textOf(page.byId("r20c0")), 1, 37, u""); });
        QCOMPARE(page.box("r7c1").x(), was);
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void randomChangesGiveTheSameAsAFreshLayout()
    {
        const bool isLong = qEnvironmentVariableIsSet("VELLUM_LONG");
        const quint32 base = QRandomGenerator::global()->generate();
        qInfo("seeds from %u", base);
        for (quint32 run = 0; run < (isLong ? 400u : 25u); ++run) {
            const quint32 seed = run ? base + run : 20261121u;
            QRandomGenerator random(seed);
            Page page(randomTable(random));
            std::vector<base::Ref<dom::CharacterData>> texts; // some leave with what is removed
            for (dom::Node *node = page.document->body(); node; node = node->next())
                if (node->isText()) texts.emplace_back(static_cast<dom::CharacterData *>(node));
            for (int step = 0; step < 40 && !texts.empty(); ++step) {
                dom::CharacterData &text = *texts[random.bounded(quint32(texts.size()))];
                if (text.isConnected()) change(page, text, random);
                if (random.bounded(3) == 0) continue; // two changes in one update
                page.tree.update();
                const QString difference = page.tree.compareWithFresh();
                QVERIFY2(difference.isEmpty(), qPrintable(QString("seed %1 step %2: %3").arg(seed).arg(step).arg(difference)));
            }
        }
    }

private:
    static QString pick(QRandomGenerator &random, const QStringList &of) { return of[random.bounded(int(of.size()))]; }
    static QString randomTable(QRandomGenerator &random)
    {
        QString html = "<div style='" + pick(random, {"", "width:300px", "float:left", "direction:rtl"}) + "'><table" +
                       pick(random, {"", " border=1", " width=100%", " width=50", " height=700", " cellspacing=0"}) + " style='" +
                       pick(random, {"", "border-collapse:collapse", "table-layout:fixed;width:250px", "max-width:200px", "min-height:900px"}) + "'>";
        html += pick(random, {"", "<caption>caption</caption>", "<caption align=bottom>below</caption>", "<col width=30><col>"});
        const int count = 2 + random.bounded(6);
        for (int r = 0; r < count; ++r) {
            html += pick(random, {"", "", "", "<tbody>", "<thead>", "<tfoot>"}) + "<tr" + pick(random, {"", "", " height=60", " valign=top"}) + ">";
            for (int c = 1 + random.bounded(4); c > 0; --c) {
                html += pick(random, {"<td", "<td", "<th"}) + pick(random, {"", "", "", " colspan=2", " rowspan=2", " rowspan=3", " width=80", " width=30%", " nowrap", " valign=bottom"}) + ">";
                html += pick(random, {"word", "two words", "some <b>more</b> words", "<p>one</p><p>two</p>", "<div style='float:left'>f</div>x", "<table><tr><td>inner<td>x</table>", "a<br>b"});
            }
        }
        return html + "</table>after</div>";
    }
    static void change(Page &page, dom::CharacterData &text, QRandomGenerator &random)
    {
        const auto length = uint32_t(text.data().size());
        switch (random.bounded(6)) {
        case 0: dom::RawTree::replaceText(text, random.bounded(length + 1), 0, pick(random, {"x", " ", "wide words of some length ", "\n"})); break;
        case 1: dom::RawTree::replaceText(text, 0, random.bounded(length + 1), u""); break;
        case 2: dom::RawTree::replaceText(text, length, 0, u"y"); break;
        case 3:
            if (text.parentElement()) setStyle(*text.parentElement(), pick(random, {"font-size:30px", "color:red", "padding:9px", "width:90px", ""}));
            break;
        case 4: {
            const auto element = page.document->createElement(pick(random, {"p", "b", "br", "td", "tr"}));
            if (element->tagName() != "BR") dom::RawTree::append(*element, *page.document->createTextNode("new"));
            dom::RawTree::insert(*text.parentNode(), *element, text.nextSibling());
            break;
        }
        default:
            if (dom::Node *next = text.nextSibling(); next && next->isElement() && random.bounded(2)) dom::RawTree::remove(*next);
        }
    }
};

QTEST_MAIN(TablesTest)
#include "tst_tables.moc"
