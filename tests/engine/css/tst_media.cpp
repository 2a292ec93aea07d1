// SPDX-License-Identifier: GPL-3.0-or-later
/// Media queries: which suit a screen of 1000 by 800 pixels, as Media Queries 4 and 5 say and Chromium 156 without scripts
/// answers.
#include "engine/css/Media.h"

#include <QtTest>

using css::MediaList;

class MediaTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void suits_data()
    {
        QTest::addColumn<bool>("suits");
        const auto row = [](const char *query, bool suits) { QTest::newRow(*query ? query : "nothing") << suits; };
        for (const char *yes : {"screen", "only screen", "all", "not print", "screen, print", "print, screen", "SCREEN AND (MIN-WIDTH:1px)",
                                "(prefers-color-scheme: light)", "(prefers-color-scheme)", "(prefers-color-scheme: light) and (min-width: 1px)",
                                "not (prefers-color-scheme: dark)", "(prefers-reduced-motion: no-preference)", "(hover: hover)", "(hover)",
                                "(pointer: fine)", "(forced-colors: none)", "(scripting: none)", "(display-mode: browser)", "(update: fast)",
                                "(overflow-block: scroll)", "(grid: 0)", "(resolution: 1dppx)", "(min-resolution: 96dpi)", "(max-resolution: 1.5dppx)",
                                "(-webkit-min-device-pixel-ratio: 1)", "(color)", "(min-color: 8)", "(monochrome: 0)", "(color-index: 0)",
                                "(width: 1000px)", "(min-width: 0)", "(min-width: 62.5em)", "(width >= 600px)", "(600px <= width)",
                                "(600px <= width <= 1200px)", "(width = 1000px)", "(height >= 800px)", "(aspect-ratio: 5/4)", "(min-aspect-ratio: 1/1)",
                                "(aspect-ratio > 1)", "(orientation: landscape)", "(orientation)", "(min-device-width: 1000px)", "(min-width: -1px)",
                                "screen and (min-width: calc(10px * 5))", "(not (monochrome))", "((width) and (color))", "(width) or (monochrome)",
                                "(monochrome) or (width)", "(width) and (not (monochrome))", "(bogus) or (width)", "(min-width:600px)and (color)"})
            row(yes, true);
        for (const char *no : {"print", "not screen", "not all", "tty", "handheld", "(prefers-color-scheme: dark)", "(prefers-color-scheme: no-preference)",
                               "(prefers-reduced-motion)", "(prefers-reduced-motion: reduce)", "(prefers-contrast)", "(hover: none)", "(pointer: coarse)",
                               "(forced-colors)", "(scripting)", "(scripting: enabled)", "(grid)", "(min-resolution: 2dppx)", "(min-resolution: 120dpi)",
                               "(-webkit-min-device-pixel-ratio: 1.5)", "(monochrome)", "(color-index)", "(min-width: 1001px)", "(width > 1000px)",
                               "(width < 1000px)", "(400px < width < 900px)", "(max-width: -1px)", "(min-width: 10)", "(width: auto)",
                               "(min-aspect-ratio: 2/1)", "(orientation: portrait)", "(max-device-width: 480px)", "(bogus)", "not (bogus)", "(not (bogus))",
                               "bogus(1)", "print, (bogus)", "screen and (bogus)", "not screen and (bogus)", "screen and bogus", "screen and(width)",
                               "(width) and (color) or (monochrome)", "screen and (width) or (color)", "not (width)"})
            row(no, false);
        QTest::newRow("") << true; // no condition at all
    }
    void suits()
    {
        QFETCH(bool, suits);
        QCOMPARE(MediaList::parse(QString::fromLatin1(QTest::currentDataTag())).suits({}), suits);
    }
    void paperIsNoScreen()
    {
        const css::Medium paper{QStringLiteral("print"), {600, 800}};
        QVERIFY(MediaList::parse("print").suits(paper));
        QVERIFY(!MediaList::parse("screen").suits(paper));
        QVERIFY(MediaList::parse("screen, print and (max-width: 700px)").suits(paper));
        QVERIFY(MediaList::parse("(orientation: portrait)").suits(paper));
    }
    void whatAsksForTheSizeSaysSo()
    {
        for (const char *query : {"(min-width: 1px)", "not (height > 3px)", "(color) or (aspect-ratio: 1)", "(orientation: portrait)", "print, (width < 9px)"})
            QVERIFY2(MediaList::parse(query).asksForSize(), query);
        for (const char *query : {"", "screen", "(color)", "(prefers-color-scheme: dark)", "(resolution: 1dppx)", "(bogus)"})
            QVERIFY2(!MediaList::parse(query).asksForSize(), query);
    }
    void nestingIsBounded()
    {
        QVERIFY(!MediaList::parse(QString("(").repeated(5000) + "width" + QString(")").repeated(5000)).suits({}));
        QVERIFY(!MediaList::parse(QString("(not ").repeated(5000)).suits({}));
    }
};

QTEST_APPLESS_MAIN(MediaTest)
#include "tst_media.moc"
