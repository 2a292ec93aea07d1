// SPDX-License-Identifier: GPL-3.0-or-later
#include "LaidOutPage.h"

#include <QtTest>

/// What style says of text, seen in boxes.
class TextPropertiesTest : public QObject
{
    Q_OBJECT

    static int linesOf(LaidOutPage &page, const QString &id)
    {
        page.tree.update();
        const layout::BlockBox *block = layout::boxOf(page.byId(id))->asBlock();
        return int(block->inlineContent->lines.size());
    }
    static QString shownText(LaidOutPage &page, const QString &id)
    {
        page.tree.update();
        return layout::boxOf(page.byId(id))->asBlock()->inlineContent->text;
    }

private Q_SLOTS:
    void aChIsTheWidthOfAZero()
    {
        // Liberation Mono: every letter is 1229 of 2048 wide. Liberation Sans: a zero is 1139.
        LaidOutPage page(LaidOutPage::bare("<div id=m style='font:20px Liberation Mono;width:10ch'></div><div id=s style='font:20px Liberation Sans;width:10ch'></div>"
                                           "<div style='font:20px Liberation Mono'><span id=t>0123456789</span></div>"));
        QVERIFY(std::abs(page.box("m").width() - 200 * 1229 / 2048.0) < 0.05);
        QVERIFY(std::abs(page.box("s").width() - 200 * 1139 / 2048.0) < 0.05);
        QVERIFY(std::abs(page.box("t").width() - page.box("m").width()) < 0.1);
    }
    void aSharpSHasTwoCapitals()
    {
        LaidOutPage page(LaidOutPage::bare(QString("<p id=p style='margin:0;text-transform:uppercase'>Stra%1e ab</p>").arg(QChar(0xDF))));
        QCOMPARE(shownText(page, "p"), QString("STRASSE AB"));
        // Places count in the page's own text: the letter behind it is the sixth there.
        dom::Node *text = page.byId("p").firstChild();
        for (uint32_t offset = 0; offset <= 9; ++offset) {
            const QRectF caret = page.queries.caretRect({text, offset});
            const layout::Hit hit = page.queries.hitTest({caret.left(), caret.center().y()});
            QCOMPARE(hit.position.offset, offset);
        }
        const auto rects = page.queries.textRects(*text, 4, 5); // the letter itself: two wide ones
        QCOMPARE(int(rects.size()), 1);
        QVERIFY(rects[0].width() > 15);
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void softHyphensCanBeTurnedOff()
    {
        const QString word = QString("hyphen%1ation").arg(QChar(0xAD));
        LaidOutPage page(LaidOutPage::bare("<p id=a style='margin:0;width:60px'>" + word + "</p><p id=b style='margin:0;width:60px;hyphens:none'>" + word +
                                           "</p><span id=c style='hyphens:none'>" + word + "</span><br><span id=d>hyphenation</span>"));
        QCOMPARE(linesOf(page, "a"), 2);
        QCOMPARE(linesOf(page, "b"), 1);
        QVERIFY(std::abs(page.box("c").width() - page.box("d").width()) < 0.2);
    }
    void whatShowsNothingMakesNoLineHigher()
    {
        // Liberation Serif of 18 pixels: 16 + 4 + 1. A font that stood in for the characters would be higher.
        for (const char16_t c : {0xAD, 0x200B, 0x200D, 0x200E, 0x2060, 0x2068}) {
            LaidOutPage page(LaidOutPage::bare(QString("<p id=p style='margin:0;font:18px Liberation Serif;hyphens:none'>a%1b</p>").arg(QChar(c))));
            QVERIFY2(page.box("p").height() == 21, qPrintable(QString::number(c, 16)));
        }
    }
    void preservedBlanksCanWrap()
    {
        // A blank of 20 pixels monospace is 12 wide: eight blanks behind two letters are 120, in lines of 60.
        const QString style = "margin:0;font:20px/20px Liberation Mono;width:61px;white-space:";
        LaidOutPage page(LaidOutPage::bare("<p id=a style='" + style + "pre-wrap'>ab        c</p><p id=b style='" + style + "break-spaces'>ab        c</p>"));
        QCOMPARE(linesOf(page, "a"), 2); // they hang, and the letter is next
        QCOMPARE(linesOf(page, "b"), 3); // ab and 3, 5, c
        QCOMPARE(page.box("b").height(), 60.0);
        dom::Node *text = page.byId("b").firstChild();
        QVERIFY(std::abs(page.queries.caretRect({text, 10}).top() - page.queries.caretRect({text, 0}).top() - 40) < 1);
    }
    void thaiBreaksBetweenWords()
    {
        // "hello" and "world": five and two words that a reader knows; nothing may part a consonant from its vowel marks.
        const QString text = QString::fromUtf8("\xE0\xB8\xAA\xE0\xB8\xA7\xE0\xB8\xB1\xE0\xB8\xAA\xE0\xB8\x94\xE0\xB8\xB5\xE0\xB8\x8A\xE0\xB8\xB2\xE0\xB8\xA7\xE0\xB9\x82\xE0\xB8\xA5\xE0\xB8\x81");
        LaidOutPage page(LaidOutPage::bare("<p id=p style='margin:0;width:10px'>" + text + "</p>"));
        page.tree.update();
        const layout::BlockBox *block = layout::boxOf(page.byId("p"))->asBlock();
        for (const layout::Line &line : block->inlineContent->lines) {
            if (!line.start) continue;
            QVERIFY2(QChar(text[qsizetype(line.start)]).category() != QChar::Mark_NonSpacing, qPrintable(QString::number(line.start)));
        }
        if (block->inlineContent->lines.size() == 1) QSKIP("this Qt knows no Thai words");
        QVERIFY(block->inlineContent->lines.size() >= 2);
    }
    void devanagariStaysInClusters()
    {
        // "kshatriya": a caret stands in front of a cluster, never within a conjunct or before a vowel sign.
        const QString text = QString::fromUtf8("\xE0\xA4\x95\xE0\xA5\x8D\xE0\xA4\xB7\xE0\xA4\xA4\xE0\xA5\x8D\xE0\xA4\xB0\xE0\xA4\xBF\xE0\xA4\xAF");
        LaidOutPage page(LaidOutPage::bare("<p id=p style='margin:0'>" + text + "</p>"));
        const QRectF whole = page.box("p");
        dom::Node *node = page.byId("p").firstChild();
        for (double x = 0; x < 80; x += 1) {
            const layout::Hit hit = page.queries.hitTest({x, whole.center().y()});
            QCOMPARE(hit.position.node, node);
            const uint32_t at = hit.position.offset;
            if (at < uint32_t(text.size())) QVERIFY2(text[at].category() != QChar::Mark_NonSpacing && text[at].category() != QChar::Mark_SpacingCombining, qPrintable(QString::number(at)));
        }
    }
    void aLegendStandsInTheFrame()
    {
        // The legend is 30 high, the frame 2 wide, its upper padding 10: what follows begins at 40.
        LaidOutPage page(LaidOutPage::bare("<fieldset id=f style='margin:0;border:2px solid;padding:10px;width:300px'><legend id=l style='height:30px;width:50px;padding:0'>x</legend>"
                                           "<div id=d style='height:20px'></div></fieldset>"));
        QCOMPARE(page.box("l"), QRectF(12, 0, 50, 30));
        QCOMPARE(page.box("d"), QRectF(12, 40, 300, 20));
        QCOMPARE(page.box("f").height(), 72.0);
        setStyle(page.byId("d"), "height:50px");
        QCOMPARE(page.box("f").height(), 102.0);
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
};

QTEST_MAIN(TextPropertiesTest)
#include "tst_textProperties.moc"
