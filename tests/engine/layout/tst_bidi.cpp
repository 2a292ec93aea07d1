// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Bidi.h"

#include <QtTest>

/// Levels of the Unicode bidirectional algorithm. Capitals stand for Hebrew letters, as in its own examples; expected is
/// one figure a character.
class Bidi : public QObject
{
    Q_OBJECT

    static QString readable(const std::vector<uint8_t> &levels)
    {
        QString text;
        for (const uint8_t level : levels) text += QString::number(level);
        return text;
    }
    static QString turned(QString text)
    {
        for (QChar &c : text)
            if (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) c = QChar(char16_t(0x5D0 + c.unicode() - 'A'));
        return text;
    }

private Q_SLOTS:
    void levels_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("rightToLeft");
        QTest::addColumn<QString>("expected");
        QTest::newRow("nothing turns") << "plain (text) 12" << false << "";
        QTest::newRow("letters") << "ab CD ef" << false << "00011000";
        QTest::newRow("letters, from right") << "ab CD ef" << true << "22111122";
        QTest::newRow("numbers behind letters from right: W7, I1") << "AB 12 c" << false << "1112200";
        QTest::newRow("numbers behind letters from left: W7") << "ab 12 CD" << false << "00000011";
        QTest::newRow("separators in numbers: W4, W5") << "A 1.2+3$ B" << false << "1122222211";
        QTest::newRow("pairs: N0, embedding direction wins") << "AB(CD[&ef]!)gh" << true << "11111112211122";
        QTest::newRow("pairs: N0, as the text inside") << "sm (fa AR) HE" << false << "0000000110011";
        QTest::newRow("pairs: N0, as the text in front") << "AR bo(s)" << true << "11122222";
        QTest::newRow("one that isn't closed is no pair") << "AR bo(S" << true << "1112211";
        QTest::newRow("paragraphs: P1") << "A .\na ." << false << "1000000";
    }
    void levels()
    {
        QFETCH(QString, text);
        QFETCH(bool, rightToLeft);
        QFETCH(QString, expected);
        QCOMPARE(readable(layout::bidiLevels(turned(text), rightToLeft)), expected);
    }
    void marksEmbedIsolateAndOverride()
    {
        using namespace layout;
        // In front of "b" something begins, behind it it ends.
        const auto between = [](const QString &text, char16_t from, char16_t to) { return readable(bidiLevels(turned(text), false, {{1, from}, {2, to}})); };
        QCOMPARE(between("abc", bidi::rle, bidi::pdf), "020");
        QCOMPARE(between("abc", bidi::rlo, bidi::pdf), "010");
        QCOMPARE(between("aBc", bidi::lro, bidi::pdf), "020");
        QCOMPARE(between("a.c", bidi::rli, bidi::pdi), "010");
        QCOMPARE(between("aBc", bidi::fsi, bidi::pdi), "010");
        QCOMPARE(between("AbC", bidi::lri, bidi::pdi), "121");
        // What is isolated is nothing to what stands around.
        QCOMPARE(readable(bidiLevels(turned("A1"), false)), "12");
        QCOMPARE(readable(bidiLevels(turned("A1"), false, {{0, bidi::rli}, {1, bidi::pdi}})), "10");
        // The same characters in the text do the same.
        QCOMPARE(readable(bidiLevels(QStringLiteral("a\u202Eb\u202Cc"), false)), "00110");
    }
    void depthIsBounded()
    {
        std::vector<layout::BidiMark> marks;
        for (int i = 0; i < 200000; ++i) marks.push_back({0, i & 1 ? layout::bidi::rli : layout::bidi::lre});
        const auto levels = layout::bidiLevels("ab", false, marks);
        QCOMPARE(levels.size(), std::size_t(2));
        QVERIFY(levels[0] <= 126); // max_depth, and one for what turns in it
    }
};

QTEST_APPLESS_MAIN(Bidi)
#include "tst_bidi.moc"
