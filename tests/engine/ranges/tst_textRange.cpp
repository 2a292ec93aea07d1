// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/ranges/ControlRange.h"
#include "tests/engine/ranges/RandomPages.h"

#include <QTest>

using namespace random_pages;

class tst_textRange : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void charactersAreWhatAReaderSees_data();
    void charactersAreWhatAReaderSees();
    void htmlIsTheFragment_data();
    void htmlIsTheFragment();
    void theParentIsTheBlockWhoseEndItTakes();
    void movingThereAndBackIsWhereItWas();
    void textIsAsLongAsWhatWasMovedOver();
    void comparisonsAgreeWithTheTextBefore();
    void bookmarksComeBackToTheSamePlace();
    void countsFollowRandomEdits();
    void positionsStayInTheTree();
    void countingDoesNotWalkTheDocument();
    void pastingPutsHtmlInItsPlace_data();
    void pastingPutsHtmlInItsPlace();
    void writingPutsText_data();
    void writingPutsText();
    void whatARangeHeldHasGone_data();
    void whatARangeHeldHasGone();
    void writingWhatStandsThereWritesNoRecord_data();
    void writingWhatStandsThereWritesNoRecord();
    void writingPartsOfElementsWritesARecord_data();
    void writingPartsOfElementsWritesARecord();
    void pastingOverTwoCellsIsRefused();
    void controlRangesTakeObjectsOnly();
    void aRangeOutlivesItsDocument();
};

void tst_textRange::charactersAreWhatAReaderSees_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<uint>("characters");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *html, uint n, const char *text) {
        QTest::newRow(name) << QString::fromUtf8(html) << n << QString::fromUtf8(text);
    };
    row("a paragraph and its end", "<p>abc</p>", 4, "abc");
    row("collapsed blanks", "<p> a \n b </p>", 4, "a b");
    row("blanks across elements", "<p>a <b> b</b></p>", 4, "a b");
    row("no-break space", "<p>a&nbsp; b</p>", 5, "a\xc2\xa0 b");
    row("one boundary however many tags", "<div><div><p>a</p></div></div><div><p>b</p></div>", 4, "a\nb");
    row("blanks between blocks", "<p>a</p> \n <p>b</p>", 4, "a\nb");
    row("an empty block", "<p>a</p><p></p><p>b</p>", 4, "a\nb");
    row("a break", "<p>a<br>b</p>", 4, "a\nb");
    row("blanks beside a break", "<p>a <br> b</p>", 4, "a\nb");
    row("an image", "<p>a<img>b</p>", 4, "ab");
    row("comments", "<p>a<!--c-->b</p>", 3, "ab");
    row("what isn't displayed", "<p>a<script>x</script><style>y</style>b</p>", 3, "ab");
    row("cells", "<table><tr><td>a</td><td>b</td></tr></table>", 4, "a\nb");
    row("text beside blocks", "a<p>b</p>c", 6, "a\nb\nc");
    row("preformatted", "<pre>a\n  b</pre>", 6, "a\n  b");
    row("surrogates", "<p>\xf0\x9f\x98\x80</p>", 3, "\xf0\x9f\x98\x80");
    row("a rule", "a<hr>b", 5, "a\nb");
    row("rules only", "<hr><hr>", 2, "");
    row("an empty page", "", 0, "");
}

void tst_textRange::charactersAreWhatAReaderSees()
{
    QFETCH(QString, html);
    Page page{Marks(html)};
    const auto all = page.all();
    QTEST(all->index().total(), "characters");
    QTEST(all->text().remove('\r'), "text");
}

void tst_textRange::htmlIsTheFragment_data()
{
    QTest::addColumn<QString>("marked");
    QTest::addColumn<QString>("html");
    const auto row = [](const char *marked, const char *html) {
        QTest::newRow(marked) << QString::fromUtf8(marked) << QString::fromUtf8(html);
    };
    row("<p>a|b</p>", "");
    row("<p>a^bc|d</p>", "bc");
    row("<p>^abcd|</p>", "abcd");
    row("<p>a^b<b>c|d</b></p>", "b<B>c</B>");
    row("<p>a<b>b^c</b>d|</p>", "<B>c</B>d");
    row("<p>a<b>^bc|</b>d</p>", "<B>bc</B>");
    row("<p>a<b>^b|c</b>d</p>", "b");
    row("<p>a^b</p><p>c|d</p>", "<P>b</P><P>c</P>");
    row("<p>a^</p><p>c|d</p>", "c");
    row("<p>a^b</p><p>|cd</p>", "b");
    row("<p>^ab</p><p>|cd</p>", "<P>ab</P>");
    row("<ul><li>^a</li><li>b|c</li></ul>", "<LI>a</LI><LI>b</LI>");
    row("<p>a^b</p><!--x--><p></p><p>c|</p>", "<P>b</P><!--x--><P></P><P>c</P>");
    row("<p>^<img>|</p>", "<IMG>");
    row("<p>a^&amp;|</p>", "&amp;");
    // In front of its tags as behind them: the innermost block whose end is taken in.
    row("<p>x</p>^<div><p>a</p></div>|<p>b</p>", "<P>a</P>");
    row("<p>x</p>^<div><p>a</p></div><p>|b</p>", "<P>a</P>");
    row("<p>x</p><div>^<p>a</p></div><p>|b</p>", "<P>a</P>");
    row("<p>x</p>^<div><p>a</p><p>b</p></div>|<p>c</p>", "<DIV><P>a</P><P>b</P></DIV>");
    row("<ul><!--^--><li>a<ul><li>b</li></ul></li><!--|--><li>c</li></ul>", "<LI>a<UL><LI>b</LI></UL></LI>");
}

void tst_textRange::htmlIsTheFragment()
{
    QFETCH(QString, marked);
    Page page{Marks(marked)};
    QTEST(page.range()->htmlText().remove('\r'), "html");
}

void tst_textRange::theParentIsTheBlockWhoseEndItTakes()
{
    Page page("<div id=d><p id=p>ab<b id=b>c</b></p></div><p id=q>e</p>");
    const auto r = page.over("d");
    QCOMPARE(r->parentElement()->idAttribute(), QStringLiteral("d"));
    const auto p = page.over("p");
    QCOMPARE(p->parentElement()->idAttribute(), QStringLiteral("p"));
    p->moveEnd("character", -1);
    QCOMPARE(p->text(), QStringLiteral("abc"));
    p->moveEnd("character", 1);
    QCOMPARE(p->parentElement()->idAttribute(), QStringLiteral("p"));
    p->moveEnd("character", 1);
    QCOMPARE(p->parentElement(), page.document->body());
    const auto b = page.over("b");
    QCOMPARE(b->parentElement()->idAttribute(), QStringLiteral("b"));
    // Where it starts outside makes no difference: nothing stands between.
    for (const char *marked : {"^<div><p id=p>a</p></div>|<p>b</p>", "^<div><p id=p>a</p></div><p>|b</p>",
                               "<div><p>z</p>^<p id=p>a</p></div><p>|b</p>", "<p>z^</p><div><p id=p>a</p></div><p>|b</p>"}) {
        Page other(marked);
        const bool takesTheEndBefore = QString(marked).contains("z^");
        QCOMPARE(other.range()->parentElement()->idAttribute(), takesTheEndBefore ? QString() : QStringLiteral("p"));
    }
    Page both("^<div id=d><p>a</p><p>b</p></div><p>|c</p>");
    QCOMPARE(both.range()->parentElement()->idAttribute(), QStringLiteral("d"));
}

void tst_textRange::movingThereAndBackIsWhereItWas()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random))};
        const auto places = placesOf(page);
        for (int i = 0; i < 50; ++i) {
            const Position p = places[random.bounded(int(places.size()))];
            Ref<TextRange> r(new TextRange(page.selection, {p, p}));
            const uint32_t start = r->startCount();
            const QByteArray where = QString("seed %1: %2").arg(seed).arg(page.body()).toUtf8();
            const int n = random.bounded(1, 12), there = r->moveEnd("character", n);
            const QByteArray said = where + QString(" from %1 by %2: %3, at %4").arg(start).arg(n).arg(there).arg(r->endCount()).toUtf8();
            QVERIFY2(r->endCount() == start + uint32_t(there), said.constData());
            QVERIFY2(r->moveEnd("character", -there) == -there, qPrintable(QString::number(seed)));
            QVERIFY2(r->endCount() == start && r->startCount() == start, qPrintable(QString::number(seed)));
        }
    }
}

void tst_textRange::textIsAsLongAsWhatWasMovedOver()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        const QString html = randomHtml(random);
        Page page{Marks(html)};
        const uint32_t total = page.all()->index().total();
        for (int i = 0; i < 50 && total > 0; ++i) {
            const auto r = page.all();
            r->collapse();
            const uint32_t from = uint32_t(r->moveStart("character", random.bounded(int(total))));
            const uint32_t n = uint32_t(r->moveEnd("character", random.bounded(20)));
            // Objects, and a boundary at its end, are in it and give no text.
            uint32_t silent = 0;
            for (uint32_t c = from; c < from + n; ++c) {
                uint32_t base = 0;
                const TextRun *run = r->index().runAt(c, &base);
                if (run->rule) {
                    ++silent;
                } else if (c == base + run->length) {
                    if (c + 1 == from + n) ++silent;
                } else {
                    QString one;
                    TextIndex::read(*run, c - base, c - base + 1, one, true);
                    if (one == QChar(QChar::ObjectReplacementCharacter)) ++silent;
                }
            }
            const QString text = r->text().replace("\r\n", "\n");
            QVERIFY2(uint32_t(text.size()) + silent == n,
                     qPrintable(QString("seed %1, from %2 by %3: \"%4\" of %5").arg(seed).arg(from).arg(n).arg(text, html)));
        }
    }
}

void tst_textRange::comparisonsAgreeWithTheTextBefore()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random))};
        const auto places = placesOf(page);
        uint32_t last = 0;
        // In document order counts never fall.
        std::vector<Position> ordered = places;
        std::sort(ordered.begin(), ordered.end());
        for (const Position &p : ordered) {
            const uint32_t count = page.selection.index().countBefore(p);
            QVERIFY2(count >= last, qPrintable(QString::number(seed)));
            last = count;
        }
        for (int i = 0; i < 50; ++i) {
            const Position a = places[random.bounded(int(places.size()))], b = places[random.bounded(int(places.size()))];
            Ref<TextRange> x(new TextRange(page.selection, {a, a})), y(new TextRange(page.selection, {b, b}));
            const int by = x->compareEndPoints("StartToStart", *y);
            if (by != 0) QCOMPARE(by < 0, Position::compare(a, b) < 0);
            // Every count has a place that counts so.
            const uint32_t c = random.bounded(page.selection.index().total() + 1);
            for (const auto side : {TextIndex::Side::Following, TextIndex::Side::Preceding})
                QVERIFY2(page.selection.index().countBefore(page.selection.index().placeAt(c, side)) == c,
                         qPrintable(QString("seed %1, %2 of %3").arg(seed).arg(c).arg(page.body())));
        }
    }
}

void tst_textRange::bookmarksComeBackToTheSamePlace()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random))};
        const auto places = placesOf(page);
        for (int i = 0; i < 20; ++i) {
            Position a = places[random.bounded(int(places.size()))], b = places[random.bounded(int(places.size()))];
            if (Position::compare(a, b) > 0) std::swap(a, b);
            Ref<TextRange> r(new TextRange(page.selection, {a, b}));
            const QString name = r->bookmark();
            const auto other = page.all();
            other->moveToBookmark(name);
            QCOMPARE(other->span().start, a);
            QCOMPARE(other->span().end, b);
        }
    }
}

void tst_textRange::countsFollowRandomEdits()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random) + randomHtml(random))};
        page.selection.index().total();
        for (int i = 0; i < 60; ++i) {
            randomEdit(page, random);
            if (random.bounded(3) == 0) continue; // several before the next question
            const QString difference = page.selection.index().compareWithFresh();
            QVERIFY2(difference.isEmpty(), qPrintable(QString("seed %1, edit %2: %3").arg(seed).arg(i).arg(difference)));
        }
    }
}

void tst_textRange::positionsStayInTheTree()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random) + randomHtml(random))};
        for (int i = 0; i < 20; ++i) {
            const auto places = placesOf(page);
            const Position p = places[random.bounded(int(places.size()))];
            LivePosition live(page.keeper, p);
            randomEdit(page, random);
            const Position now = live;
            QVERIFY2(page.document->body()->contains(*now.node) && now.offset <= Position::lengthOf(*now.node),
                     qPrintable(QString::number(seed)));
        }
    }
}

void tst_textRange::countingDoesNotWalkTheDocument()
{
    QString html;
    for (int i = 0; i < 5000; ++i)
        html += QStringLiteral("<p>paragraph <b>number</b> %1</p>\n").arg(i);
    Page page{Marks(html)};
    TextIndex &index = page.selection.index();
    const auto r = page.all();
    const uint32_t total = index.total();
    const uint64_t before = index.work();
    r->collapse();
    r->moveEnd("character", int(total / 2));
    r->compareEndPoints("EndToEnd", *page.all());
    QVERIFY(index.work() - before < 200);
    // Nor after an edit.
    Node *text = page.document->body()->childAt(5000)->firstChild();
    page.tracker.replaceText(static_cast<Text &>(*text), 0, 0, QStringLiteral("more "));
    QCOMPARE(index.total(), total + 5);
    QVERIFY(index.work() - before < 300);
}

void tst_textRange::pastingPutsHtmlInItsPlace_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("after");
    const auto row = [](const char *before, const char *html, const char *after) {
        QTest::newRow(qPrintable(QString("%1 + %2").arg(before, html)))
            << QString::fromUtf8(before) << QString::fromUtf8(html) << QString::fromUtf8(after);
    };
    row("<p>a|b</p>", "x", "<P>ax|b</P>");
    row("<p>a^b|c</p>", "<b>x</b>", "<P>a<B>x|</B>c</P>");
    row("<p>a^b|c</p>", "", "<P>a|c</P>");
    row("<p>a^b</p><p>c|d</p>", "", "<P>a|d</P>");
    row("<p>^ab|</p>", "", "<P>|&nbsp;</P>");
    row("<p>a|b</p>", "<h1>x</h1>", "<P>a</P><H1>x|</H1><P>b</P>");
    row("<p>ab|</p>", "<h1>x</h1>", "<P>ab</P><H1>x|</H1>");
    row("<p>|ab</p>", "<h1>x</h1>", "<H1>x|</H1><P>ab</P>");
    row("<p>^ab</p><p>|cd</p>", "x", "<P>x|</P><P>cd</P>");
    row("<p>^ab</p><p>|cd</p>", "<h1>x</h1>", "<H1>x|</H1><P>cd</P>");
    row("<table><tr><td>^ab</td><td>|c</td></tr></table>", "x",
        "<TABLE><TBODY><TR><TD>x|</TD><TD>c</TD></TR></TBODY></TABLE>");
    row("<table><tr><td>^ab</td><td>|c</td></tr></table>", "<p>x</p>",
        "<TABLE><TBODY><TR><TD><P>x|</P></TD><TD>c</TD></TR></TBODY></TABLE>");
    row("<ul><li>a|b</li></ul>", "<li>x</li>", "<UL><LI>a</LI><LI>x|</LI><LI>b</LI></UL>");
    // A whole item, with the list in it.
    const char *nested = "<ul><!--^--><li>a<ul><li>b</li><li>c</li></ul></li><!--|--><li>d</li></ul>";
    row(nested, "<li>x</li>", "<UL><LI>x|</LI><LI>d</LI></UL>");
    row(nested, "x", "<UL><LI>x|</LI><LI>d</LI></UL>");
    row(nested, "", "<UL><LI>|&nbsp;</LI><LI>d</LI></UL>");
    row("<ul><li>^a<ul><li>b</li><li>c|d</li><li>e</li></ul></li></ul>", "x",
        "<UL><LI>x|d<UL><LI>e</LI></UL></LI></UL>");
}

void tst_textRange::pastingPutsHtmlInItsPlace()
{
    QFETCH(QString, before);
    QFETCH(QString, html);
    Page page{Marks(before)};
    const QString old = page.body();
    page.paste(html);
    QTEST(page.marked(), "after");
    QCOMPARE(page.records.size(), 1);
    const QString now = page.body();
    page.tracker.play(page.records.first(), false);
    QCOMPARE(page.body(), old);
    page.tracker.play(page.records.first(), true);
    QCOMPARE(page.body(), now);
}

void tst_textRange::writingPutsText_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("after");
    QTest::newRow("caret") << "<p>a|b</p>" << "<x>" << "<P>a&lt;x&gt;|b</P>";
    QTest::newRow("over text") << "<p>a^b|c</p>" << "xyz" << "<P>axyz|c</P>";
    QTest::newRow("a block's end stays") << "<p>^ab</p><p>|c</p>" << "x" << "<P>x|</P><P>c</P>";
    QTest::newRow("nothing") << "<p>^ab|</p>" << "" << "<P>|&nbsp;</P>";
    QTest::newRow("lines") << "<p>a|b</p>" << "x\r\ny" << "<P>ax<BR>y|b</P>";
}

void tst_textRange::writingPutsText()
{
    QFETCH(QString, before);
    QFETCH(QString, text);
    Page page{Marks(before)};
    page.write(text);
    QTEST(page.marked(), "after");
    QCOMPARE(page.records.size(), 1);
}

void tst_textRange::whatARangeHeldHasGone_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<bool>("gone");
    QTest::newRow("nothing") << "nothing" << false;
    QTest::newRow("removed") << "removed" << true;
    QTest::newRow("text replaced") << "text" << true;
    QTest::newRow("replaced in two steps") << "halves" << true;
    QTest::newRow("half of it replaced") << "half" << false;
    QTest::newRow("something in it replaced") << "middle" << false;
    QTest::newRow("text came to its ends") << "around" << false;
    QTest::newRow("moved elsewhere") << "moved" << false;
    QTest::newRow("element replaced") << "outer" << true;
    QTest::newRow("element's content replaced") << "inner" << true;
    QTest::newRow("replaced and undone") << "undone" << false;
}

void tst_textRange::whatARangeHeldHasGone()
{
    QFETCH(QString, change);
    Page page("<p id=p>one <b id=b>wxyz</b> three</p><p id=q></p>");
    Element *b = page.document->getElementById("b");
    const Ref<Element> keep(b);
    auto &text = static_cast<Text &>(*b->firstChild());
    // However its ends are written.
    const auto parent = Ref<Element>(b->parentElement());
    const std::vector<Ref<TextRange>> ranges = {
        Ref<TextRange>(new TextRange(page.selection, {{&text, 0}, {&text, 4}})),
        Ref<TextRange>(new TextRange(page.selection, {Position::before(*b), Position::after(*b)})),
        Ref<TextRange>(new TextRange(page.selection, {{b, 0}, Position::after(*b)}))};
    if (change == "removed") page.tracker.remove(*b);
    if (change == "text" || change == "undone") page.tracker.replaceText(text, 0, 4, "new");
    if (change == "halves") {
        page.tracker.replaceText(text, 0, 2, "ne");
        page.tracker.replaceText(text, 2, 2, "w");
    }
    if (change == "half") page.tracker.replaceText(text, 2, 2, "new");
    if (change == "middle") page.tracker.replaceText(text, 1, 2, "new");
    if (change == "around") {
        page.tracker.replaceText(text, 0, 0, "new");
        page.tracker.replaceText(text, text.length(), 0, "new");
    }
    if (change == "moved") page.tracker.move(*page.document->getElementById("q"), text, nullptr);
    if (change == "outer") b->setOuterHTML("<i>new</i>");
    if (change == "inner") b->setInnerHTML("new");
    if (change == "undone") page.tracker.play(page.records.first(), false);
    QFETCH(bool, gone);
    for (const auto &range : ranges) {
        if (gone)
            QVERIFY_EXCEPTION_THROWN(range->bookmark(), base::Error);
        else
            range->moveToBookmark(range->bookmark());
    }
    // A range that is set anew holds what is there now.
    ranges.front()->setSpan({Position::startOf(*parent), Position::endOf(*parent)});
    ranges.front()->bookmark();
}

void tst_textRange::writingWhatStandsThereWritesNoRecord_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("html"); // or text
    QTest::addColumn<QString>("after");
    const auto row = [](const char *before, const char *html, const char *after) {
        QTest::newRow(before) << QString(before) << QString(html) << QString(after);
    };
    row("<p>a^bc|d</p>", "bc", "<P>abc|d</P>");
    row("<p>a^<b>b</b>c|d</p>", "<B>b</B>c", "<P>a<B>b</B>c|d</P>");
    row("<p>a<b>^bc|</b>d</p>", "<B>bc</B>", "<P>a<B>bc|</B>d</P>");
    row("<p>^ab|</p>", "<P>ab</P>", "<P>ab|</P>");
    row("<p>^ab</p><p>|cd</p>", "<P>ab</P>", "<P>ab|</P><P>cd</P>");
    row("<p>^ab</p><p>cd</p><p>|ef</p>", "<P>ab</P><P>cd</P>", "<P>ab</P><P>cd|</P><P>ef</P>");
}

void tst_textRange::writingWhatStandsThereWritesNoRecord()
{
    QFETCH(QString, before);
    QFETCH(QString, html);
    Page page{Marks(before)};
    const bool isText = !html.contains('<');
    page.paste(html);
    QCOMPARE(page.records.size(), 0);
    QTEST(page.marked(), "after");
    if (!isText) return;
    Page other{Marks(before)};
    other.write(html);
    QCOMPARE(other.records.size(), 0);
    QTEST(other.marked(), "after");
}

void tst_textRange::writingPartsOfElementsWritesARecord_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("html");
    QTest::newRow("of a bold word") << "<p>a^b<b>c|d</b></p>" << "b<B>c</B>";
    QTest::newRow("of two blocks") << "<p>a^b</p><p>c|d</p>" << "<P>b</P><P>c</P>";
    QTest::newRow("in other letters") << "<p>a^bc|d</p>" << "bC";
}

void tst_textRange::writingPartsOfElementsWritesARecord()
{
    QFETCH(QString, before);
    QFETCH(QString, html);
    Page page{Marks(before)};
    const QString old = page.body();
    page.paste(html);
    QCOMPARE(page.records.size(), 1);
    QVERIFY(page.body() != old);
}

void tst_textRange::pastingOverTwoCellsIsRefused()
{
    Page page("<table><tr><td>a^b</td><td>c|d</td></tr></table>");
    const QString old = page.body();
    QVERIFY_EXCEPTION_THROWN(page.paste("x"), base::Error);
    QCOMPARE(page.body(), old);
    QVERIFY(page.records.isEmpty());
    page.paste("");
    QCOMPARE(page.body(), QStringLiteral("<TABLE><TBODY><TR><TD>a</TD><TD>d</TD></TR></TBODY></TABLE>"));
}

void tst_textRange::controlRangesTakeObjectsOnly()
{
    Page page("<p id=p>a<img id=i></p><table id=t><tr><td>b</td></tr></table>");
    Ref<ControlRange> r(new ControlRange(page.selection));
    QVERIFY_EXCEPTION_THROWN(r->select(), base::Error);
    QVERIFY_EXCEPTION_THROWN(r->add(page.document->getElementById("p")), base::Error);
    QVERIFY_EXCEPTION_THROWN(r->add(nullptr), base::Error);
    r->add(page.document->getElementById("i"));
    r->add(page.document->getElementById("t"));
    r->add(page.document->getElementById("i"));
    QCOMPARE(r->length(), 2u);
    QCOMPARE(r->item(2), nullptr);
    r->select();
    QCOMPARE(page.selection.type(), SelectionObject::Type::Control);
    r->remove(0);
    QCOMPARE(r->item(0)->idAttribute(), QStringLiteral("t"));
    QVERIFY_EXCEPTION_THROWN(r->remove(1), base::Error);
}

void tst_textRange::aRangeOutlivesItsDocument()
{
    Ref<TextRange> r;
    {
        Page page("<p>a^b|</p>");
        r = page.range();
    }
    QVERIFY_EXCEPTION_THROWN(r->text(), base::Error);
    QVERIFY_EXCEPTION_THROWN(r->bookmark(), base::Error);
}

QTEST_GUILESS_MAIN(tst_textRange)
#include "tst_textRange.moc"
