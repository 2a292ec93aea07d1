// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/TextShaper.h"

#include <QtTest>

using namespace layout;

class FontTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void widthsAreTheBrowsers_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<int>("size");
        QTest::addColumn<double>("width");
        QTest::addColumn<int>("height");
        const QString serif = "serif", sans = "sans-serif", mono = "monospace", courier = "Courier New";
        QTest::newRow("serif 10") << serif << 10 << 235.234 << 11;
        QTest::newRow("serif 13") << serif << 13 << 305.813 << 15;
        QTest::newRow("serif 16") << serif << 16 << 376.375 << 17;
        QTest::newRow("serif 24") << serif << 24 << 564.563 << 26;
        QTest::newRow("sans 10") << sans << 10 << 256.281 << 11;
        QTest::newRow("sans 13") << sans << 13 << 333.156 << 15;
        QTest::newRow("sans 16") << sans << 16 << 410.031 << 17;
        QTest::newRow("sans 24") << sans << 24 << 615.047 << 27;
        QTest::newRow("mono 10") << mono << 10 << 325.109 << 11;
        QTest::newRow("mono 13") << mono << 13 << 422.641 << 15;
        QTest::newRow("mono 16") << mono << 16 << 520.172 << 19;
        QTest::newRow("mono 24") << mono << 24 << 780.266 << 28;
        QTest::newRow("courier 13") << courier << 13 << 421.281 << 15;
        QTest::newRow("courier 24") << courier << 24 << 777.734 << 27;
        QTest::newRow("dejavu 16") << QString("DejaVu Sans") << 16 << 466.75 << 19;
        QTest::newRow("dejavu 13") << QString("DejaVu Sans") << 13 << 379.234 << 15;
        QTest::newRow("unknown") << QString("no-such-font") << 13 << 305.813 << 15;
        QTest::newRow("Verdana") << QString("Verdana") << 13 << 305.813 << 15;
        QTest::newRow("Sans") << QString("Sans") << 13 << 379.234 << 15;
        QTest::newRow("no cursive") << QString("cursive") << 13 << 305.813 << 15;
        QTest::newRow("Helvetica") << QString("Helvetica") << 13 << 333.156 << 15;
    }
    void widthsAreTheBrowsers()
    {
        QFETCH(QString, family);
        QFETCH(int, size);
        QFETCH(double, width);
        QFETCH(int, height);
        const Font &font = FontCache::instance().font({family}, size, 400, false);
        const QString text = "The quick brown fox jumps over the lazy dog 0123456789";
        const double got = Unit::ceil(TextShaper::width(text, font, {})).toDouble();
        QVERIFY2(std::abs(got - width) < 0.001, qPrintable(QString("%1 for %2").arg(got, 0, 'f', 4).arg(width)));
        QCOMPARE(font.height().rounded(), height);
        const ShapedText shaped = TextShaper::shape(text, font, {});
        QVERIFY(std::abs(shaped.width - TextShaper::width(text, font, {})) < 0.001);
    }
    void aGenericNameInQuotesIsAFamily()
    {
        const FontCache &fonts = FontCache::instance();
        QCOMPARE(fonts.resolveFamily("serif"), QString("Liberation Serif"));
        QCOMPARE(fonts.resolveFamily("Serif"), QString("DejaVu Serif")); // as fontconfig has it
        QCOMPARE(fonts.resolveFamily("Sans-serif"), QString());
    }
    void theHeightOfXIsFittedWhereTheFontDoesNotSayIt()
    {
        // As Chromium 156 has `1ex`.
        const auto ex = [](const char *family, double size) { return FontCache::instance().font({family}, size, 400, false).xHeight(); };
        QCOMPARE(ex("DejaVu Sans", 13), 7.0);
        QCOMPARE(ex("DejaVu Sans", 15), 9.0);
        QCOMPARE(ex("DejaVu Sans", 18.4), 10.0);
        QCOMPARE(ex("DejaVu Serif", 10), 5.0);
        QCOMPARE(ex("DejaVu Serif", 12), 7.0);
        QVERIFY(std::abs(ex("Liberation Serif", 20) - 9.18) < 0.01);
    }
    void complexTextEqualsSimpleText()
    {
        const Font &font = FontCache::instance().font({"serif"}, 16, 400, false);
        const QString text = "AVAST, To Wave: Typical";
        const double simple = TextShaper::width(text, font, {});
        const double complex = TextShaper::width(text + QChar(0x3b1), font, {}) - TextShaper::width(QString(QChar(0x3b1)), font, {});
        QVERIFY2(std::abs(simple - complex) < 0.05, qPrintable(QString("%1 %2").arg(simple).arg(complex)));
    }
    void rightToLeftEdgesFall()
    {
        const Font &font = FontCache::instance().font({"serif"}, 16, 400, false);
        const ShapedText shaped = TextShaper::shape(QString::fromUtf8("שלום"), font, {}, true);
        QCOMPARE(shaped.edges.size(), std::size_t(5));
        for (std::size_t i = 1; i < shaped.edges.size(); ++i) QVERIFY(shaped.edges[i] < shaped.edges[i - 1]);
        QVERIFY(std::abs(shaped.edges[0] - shaped.width) < 0.1);
    }
    void missingCharactersFallBack()
    {
        const Font &font = FontCache::instance().font({"Liberation Serif"}, 16, 400, false);
        QVERIFY(font.face().glyph(0x2713) == 0);
        QCOMPARE(font.faceFor(0x2713).family(), QString("DejaVu Sans"));
    }
};

QTEST_MAIN(FontTest)
#include "tst_fonts.moc"
