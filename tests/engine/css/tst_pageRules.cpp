// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/PageRules.h"

#include <QtTest>

using namespace css;

namespace {

PageRules rulesOf(const QString &text)
{
    PageRules rules;
    rules.add(StyleSheet::parse(text, ValueMode::Strict)->rules, {QStringLiteral("print"), {700, 1000}});
    return rules;
}

constexpr double centimetre = 96 / 2.54;

} // namespace

class PageRulesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aSheetWithoutRulesSaysNothing()
    {
        const PageRules rules = rulesOf("p { margin: 1cm } @media print { p { color: red } }");
        QVERIFY(rules.isEmpty());
        QVERIFY(rules.styleFor(0) == PageStyle());
    }
    void marginsByOneToFourValues()
    {
        const PageStyle one = rulesOf("@page { margin: 2cm }").styleFor(5);
        for (const auto &side : {one.top, one.right, one.bottom, one.left}) QCOMPARE(side->pixels, 2 * centimetre);
        const PageStyle four = rulesOf("@page { margin: 1in 2in 3in 4in }").styleFor(0);
        QCOMPARE(four.top->pixels, 96.0);
        QCOMPARE(four.right->pixels, 192.0);
        QCOMPARE(four.bottom->pixels, 288.0);
        QCOMPARE(four.left->pixels, 384.0);
        const PageStyle two = rulesOf("@page { margin: 10px 20px }").styleFor(0);
        QCOMPARE(two.bottom->pixels, 10.0);
        QCOMPARE(two.left->pixels, 20.0);
    }
    void perCentsAreOfThePaper()
    {
        const PageStyle style = rulesOf("@page { margin-left: 10% }").styleFor(0);
        QCOMPARE(style.left->resolve(800), 80.0);
        QVERIFY(!style.right);
    }
    void firstBeatsSidesAndSidesBeatAll()
    {
        const PageRules rules = rulesOf("@page :first { margin-top: 1px } @page :left { margin-top: 2px } @page:right{margin-top:3px} @page { margin-top: 4px; margin-bottom: 5px }");
        QCOMPARE(rules.styleFor(0).top->pixels, 1.0); // the first page is a right one
        QCOMPARE(rules.styleFor(1).top->pixels, 2.0);
        QCOMPARE(rules.styleFor(2).top->pixels, 3.0);
        QCOMPARE(rules.styleFor(1).bottom->pixels, 5.0);
    }
    void laterRulesAndImportantOnesWin()
    {
        QCOMPARE(rulesOf("@page { margin-top: 1px } @page { margin-top: 2px }").styleFor(0).top->pixels, 2.0);
        QCOMPARE(rulesOf("@page { margin-top: 1px !important } @page :first { margin-top: 2px }").styleFor(0).top->pixels, 1.0);
    }
    void sizes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QSizeF>("millimetres");
        QTest::newRow("a4") << "A4" << QSizeF(210, 297);
        QTest::newRow("landscape") << "A5 landscape" << QSizeF(210, 148);
        QTest::newRow("landscape first") << "landscape A5" << QSizeF(210, 148);
        QTest::newRow("letter") << "letter portrait" << QSizeF(215.9, 279.4);
        QTest::newRow("lengths") << "10cm 20cm" << QSizeF(100, 200);
        QTest::newRow("square") << "80mm" << QSizeF(80, 80);
    }
    void sizes()
    {
        QFETCH(QString, text);
        QFETCH(QSizeF, millimetres);
        const PageStyle style = rulesOf("@page { size: " + text + " }").styleFor(0);
        QVERIFY(style.size.has_value());
        QVERIFY(qAbs(style.size->width() - millimetres.width() * 96 / 25.4) < 0.01);
        QVERIFY(qAbs(style.size->height() - millimetres.height() * 96 / 25.4) < 0.01);
    }
    void aDirectionAloneTurnsThePaper()
    {
        const PageStyle style = rulesOf("@page { size: landscape }").styleFor(0);
        QVERIFY(!style.size);
        QVERIFY(style.direction == PageStyle::Direction::Landscape);
    }
    void whatCantBeReadIsPassedOver()
    {
        for (const char *text : {"@page { size: 10cm A4 }", "@page { size: -5cm }", "@page { size: 10cm landscape }", "@page { margin: 1cm 2cm 3cm 4cm 5cm }",
                                 "@page { margin-top }", "@page { : 1cm }", "@page {", "@page", "@page name { margin: 1cm }", "@pages { margin: 1cm }"})
            QVERIFY2(rulesOf(text).styleFor(0) == PageStyle(), text);
        // The rest of a rule counts.
        QCOMPARE(rulesOf("@page { size: nonsense; @top-left { content: 'x' } margin: 3px; }").styleFor(0).size, std::nullopt);
    }
    void rulesWithinMediaCountForPaperOnly()
    {
        QVERIFY(rulesOf("@media screen { @page { margin: 1cm } }").isEmpty());
        QCOMPARE(rulesOf("@media print { @page { margin: 3px } }").styleFor(0).top->pixels, 3.0);
    }
};

QTEST_APPLESS_MAIN(PageRulesTest)
#include "tst_pageRules.moc"
