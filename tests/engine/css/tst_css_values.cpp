// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/css/Color.h"
#include "engine/css/Declarations.h"
#include "engine/css/Selector.h"
#include "engine/css/StyleSheet.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace css;

class TestCssValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsColours_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<uint>("rgb");
        QTest::newRow("name") << "red" << 0xffff0000u;
        QTest::newRow("any case") << "ReBeccaPurple" << 0xff663399u;
        QTest::newRow("three digits") << "#1aF" << 0xff11aaffu;
        QTest::newRow("four digits") << "#0008" << 0x88000000u;
        QTest::newRow("six digits") << "#C0C0c0" << 0xffc0c0c0u;
        QTest::newRow("eight digits") << "#11223344" << 0x44112233u;
        QTest::newRow("rgb") << "rgb(255, 0, 128)" << 0xffff0080u;
        QTest::newRow("rgb per cents") << "rgb(100%, 0%, 50%)" << 0xffff0080u;
        QTest::newRow("rgb out of range") << "rgb(300, -5, 0)" << 0xffff0000u;
        QTest::newRow("rgba") << "rgba(0, 0, 0, 0.5)" << 0x80000000u;
        QTest::newRow("new syntax") << "rgb(1 2 3 / 100%)" << 0xff010203u;
        QTest::newRow("hsl") << "hsl(120, 100%, 25%)" << 0xff008000u;
        QTest::newRow("transparent") << "transparent" << 0u;
        QTest::newRow("system") << "WindowText" << 0xff000000u;
    }
    void readsColours()
    {
        QFETCH(QString, text);
        QFETCH(uint, rgb);
        const auto values = parseDeclaration(QStringLiteral("color"), text, ValueMode::Strict);
        QVERIFY(values);
        QCOMPARE(values->size(), size_t(1));
        QCOMPARE(values->front().value.rgb, rgb);
    }

    void readsOldColours_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<uint>("rgb");
        QTest::newRow("hash") << "#ff0000" << 0xffff0000u;
        QTest::newRow("no hash") << "ff0000" << 0xffff0000u;
        QTest::newRow("short") << "#f00" << 0xffff0000u;
        QTest::newRow("name") << " Navy " << 0xff000080u;
        QTest::newRow("nonsense") << "chucknorris" << 0xffc00000u;
        QTest::newRow("odd digits") << "#1234" << 0xff123400u;
    }
    void readsOldColours()
    {
        QFETCH(QString, text);
        QFETCH(uint, rgb);
        QCOMPARE(legacyColor(text).value_or(1), rgb);
    }

    void refusesInvalidValues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::newRow("colour") << "color"
                                << "notacolour";
        QTest::newRow("bare length") << "width"
                                     << "12";
        QTest::newRow("negative width") << "width"
                                        << "-1px";
        QTest::newRow("negative padding") << "padding"
                                          << "1px -1px";
        QTest::newRow("unknown unit") << "width"
                                      << "1zz";
        QTest::newRow("word") << "display"
                              << "sideways";
        QTest::newRow("two words") << "float"
                                   << "left right";
        QTest::newRow("five sides") << "margin"
                                    << "1px 2px 3px 4px 5px";
        QTest::newRow("weight") << "font-weight"
                                << "1001";
        QTest::newRow("font without family") << "font"
                                             << "12px";
        QTest::newRow("empty") << "color"
                               << "";
        QTest::newRow("hashless") << "color"
                                  << "ff0000";
        QTest::newRow("calc of colours") << "width"
                                         << "calc(1px * 1px)";
        QTest::newRow("a comparison of a number and a length") << "width" << "min(1, 2px)";
        QTest::newRow("clamp of two") << "width" << "clamp(1px, 2px)";
        QTest::newRow("an empty comparison") << "width" << "max()";
        QTest::newRow("calc by zero") << "width"
                                      << "calc(1px / 0)";
        QTest::newRow("clip") << "clip"
                              << "rect(1px 2px 3px)";
        QTest::newRow("broken string") << "content"
                                       << "\"a\nb\"";
    }
    void refusesInvalidValues()
    {
        QFETCH(QString, name);
        QFETCH(QString, value);
        QVERIFY(!parseDeclaration(name, value, ValueMode::Strict));
    }

    void quirksTakeLengthsAndColoursAsOldPagesWroteThem()
    {
        const auto width = parseDeclaration(QStringLiteral("width"), QStringLiteral("12"), ValueMode::Quirks);
        QVERIFY(width);
        QCOMPARE(width->front().value.number, 12.0);
        const auto color = parseDeclaration(QStringLiteral("color"), QStringLiteral("ff0000"), ValueMode::Quirks);
        QVERIFY(color);
        QCOMPARE(color->front().value.rgb, 0xffff0000u);
        const auto number = parseDeclaration(QStringLiteral("color"), QStringLiteral("000080"), ValueMode::Quirks);
        QVERIFY(number);
        QCOMPARE(number->front().value.rgb, 0xff000080u);
    }

    void declarationsReadBackAsWritten_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << "color: red"
                               << "color: red";
        QTest::newRow("capitals") << "COLOR: Red; FONT-SIZE:12px;"
                                  << "color: Red; font-size: 12px";
        QTest::newRow("important") << "color: red ! important"
                                   << "color: red !important";
        QTest::newRow("unknown") << "isStyleInternal: True; auto-update-caption:true"
                                 << "isStyleInternal: True; auto-update-caption: true";
        QTest::newRow("shorthand stays") << "border: 1px solid red"
                                         << "border: 1px solid red";
        QTest::newRow("comments go") << "color: /* a */ red; /* b */ width: 1px"
                                     << "color: red; width: 1px";
        QTest::newRow("broken one is passed over") << "color red; width: 1px; : x; 7: y"
                                                   << "width: 1px";
        QTest::newRow("semicolon in a string") << "content: \"a;b\"; color: red"
                                               << "content: \"a;b\"; color: red";
        QTest::newRow("url") << "background-image: url(data:image/png;base64,xx)"
                             << "background-image: url(data:image/png;base64,xx)";
        QTest::newRow("white space") << "font-family:  a ,\n  b"
                                     << "font-family: a , b";
        QTest::newRow("old filter") << "filter: progid:DXImageTransform.Microsoft.Alpha(opacity=50)"
                                    << "filter: progid:DXImageTransform.Microsoft.Alpha(opacity=50)";
        QTest::newRow("empty") << " ; ;"
                               << "";
    }
    void declarationsReadBackAsWritten()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const auto block = DeclarationBlock::parse(text, ValueMode::Strict);
        QCOMPARE(block->text(), expected);
        QCOMPARE(DeclarationBlock::parse(block->text(), ValueMode::Strict)->text(), expected);
    }

    void readsPropertiesOutOfShorthands_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        QTest::newRow("margin") << "margin: 1px 2px"
                                << "marginLeft"
                                << "2px";
        QTest::newRow("margin back") << "margin-top: 1px; margin-right: 2px; margin-bottom: 1px; margin-left: 2px"
                                     << "margin"
                                     << "1px 2px";
        QTest::newRow("border edge") << "border: 2pt dashed red"
                                     << "borderTopWidth"
                                     << "2pt";
        QTest::newRow("border style") << "border: 2pt dashed red"
                                      << "border-left-style"
                                      << "dashed";
        QTest::newRow("border colour") << "border: 2pt dashed red"
                                       << "borderColor"
                                       << "red";
        QTest::newRow("border width together") << "border: 2pt dashed red"
                                               << "borderWidth"
                                               << "2pt";
        QTest::newRow("later wins") << "border: 1px solid; border-top-width: 5px"
                                    << "borderWidth"
                                    << "5px 1px 1px";
        QTest::newRow("important wins") << "color: red !important; color: blue"
                                        << "color"
                                        << "red";
        QTest::newRow("border of alike edges") << "border-width: 1px; border-style: solid; border-color: rgb(1, 2, 3)"
                                               << "border" << "1px solid rgb(1, 2, 3)";
        QTest::newRow("border of unlike edges") << "border: 1px solid red; border-top-color: blue" << "border" << "";
        QTest::newRow("background") << "background: url(a.gif) no-repeat fixed 10px 20px #123456"
                                    << "backgroundColor"
                                    << "#123456";
        QTest::newRow("background image") << "background: url(a.gif) no-repeat"
                                          << "backgroundImage"
                                          << "url(\"a.gif\")";
        QTest::newRow("background repeat") << "background: url(a.gif) no-repeat"
                                           << "backgroundRepeat"
                                           << "no-repeat";
        QTest::newRow("background position") << "background: url(a.gif) 10px 20px"
                                             << "backgroundPositionY"
                                             << "20px";
        QTest::newRow("background words") << "background: top right"
                                          << "backgroundPositionX"
                                          << "100%";
        QTest::newRow("background from the edge") << "background: url(a.gif) right 10px bottom 5px"
                                                  << "backgroundPositionX" << "right 10px";
        QTest::newRow("unclosed rule's last") << "isStyleInternal: True -->" << "isStyleInternal" << "True";
        QTest::newRow("font") << "font: italic bold 12px/1.5 Arial, 'Times New Roman'"
                              << "fontSize"
                              << "12px";
        QTest::newRow("font weight") << "font: italic bold 12px/1.5 Arial"
                                     << "fontWeight"
                                     << "700";
        QTest::newRow("font line") << "font: italic bold 12px/1.5 Arial"
                                   << "lineHeight"
                                   << "1.5";
        QTest::newRow("font style") << "font: italic bold 12px/1.5 Arial"
                                    << "fontStyle"
                                    << "italic";
        QTest::newRow("list") << "list-style: square inside"
                              << "listStyleType"
                              << "square";
        QTest::newRow("list none") << "list-style: none"
                                   << "listStyleType"
                                   << "none";
        QTest::newRow("float") << "float: left"
                               << "styleFloat"
                               << "left";
        QTest::newRow("decoration") << "text-decoration: underline overline"
                                    << "textDecorationUnderline"
                                    << "true";
        QTest::newRow("decoration not") << "text-decoration: underline"
                                        << "textDecorationLineThrough"
                                        << "false";
        QTest::newRow("decoration none") << "text-decoration: none"
                                         << "textDecorationNone"
                                         << "true";
        QTest::newRow("unknown any case") << "isStyleInternal: True"
                                          << "ISSTYLEINTERNAL"
                                          << "True";
        QTest::newRow("hyphens or not") << "white-space: pre"
                                        << "whitespace"
                                        << "pre";
        QTest::newRow("overflow") << "overflow: auto"
                                  << "overflow"
                                  << "auto";
        QTest::newRow("overflow x") << "overflow: hidden auto"
                                    << "overflowX"
                                    << "hidden";
        QTest::newRow("radius") << "border-radius: 1px 2px / 3px"
                                << "borderTopLeftRadius"
                                << "1px 3px";
        QTest::newRow("flex") << "flex: 1"
                              << "flex-grow"
                              << "1";
        QTest::newRow("columns") << "columns: 2 10em"
                                 << "column-count"
                                 << "2";
        QTest::newRow("outline") << "outline: 1px solid red"
                                 << "outlineStyle"
                                 << "solid";
        QTest::newRow("prefixed") << "-webkit-box-sizing: border-box"
                                  << "boxSizing"
                                  << "border-box";
    }
    void readsPropertiesOutOfShorthands()
    {
        QFETCH(QString, text);
        QFETCH(QString, name);
        QFETCH(QString, expected);
        QCOMPARE(DeclarationBlock::parse(text, ValueMode::Strict)->value(name), expected);
    }

    void unsetPropertiesAreNull()
    {
        const auto block = DeclarationBlock::parse(QStringLiteral("color: red; width: nonsense"), ValueMode::Strict);
        QVERIFY(block->value(QStringLiteral("height")).isNull());
        QVERIFY(block->value(QStringLiteral("width")).isNull());
        QVERIFY(block->value(QStringLiteral("border")).isNull());
        QVERIFY(block->value(QStringLiteral("something")).isNull());
        QCOMPARE(block->value(QStringLiteral("textDecorationNone")), QStringLiteral("false"));
    }

    void writesProperties_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("new") << ""
                             << "backgroundColor"
                             << "red"
                             << "background-color: red";
        QTest::newRow("in place") << "color: red; width: 1px"
                                  << "COLOR"
                                  << "blue"
                                  << "color: blue; width: 1px";
        QTest::newRow("bare number") << ""
                                     << "width"
                                     << "12"
                                     << "width: 12px";
        QTest::newRow("bare numbers") << ""
                                      << "margin"
                                      << "1 2"
                                      << "margin: 1px 2px";
        QTest::newRow("border with number") << ""
                                            << "borderTop"
                                            << "2 solid red"
                                            << "border-top: 2px solid red";
        QTest::newRow("unitless stays") << ""
                                        << "line-height"
                                        << "1.5"
                                        << "line-height: 1.5";
        QTest::newRow("z-index stays") << ""
                                       << "zIndex"
                                       << "3"
                                       << "z-index: 3";
        QTest::newRow("number as colour") << ""
                                          << "color"
                                          << "16711680"
                                          << "color: #ff0000";
        QTest::newRow("colour zero") << ""
                                     << "backgroundColor"
                                     << "0"
                                     << "background-color: #000000";
        QTest::newRow("removes") << "color: red; width: 1px"
                                 << "color"
                                 << ""
                                 << "width: 1px";
        QTest::newRow("edge gives way") << "border-width: 2px; border-top-width: 5px"
                                        << "borderTopWidth"
                                        << ""
                                        << "border-width: 2px";
        QTest::newRow("edge shows the shorthand") << "border-width: 2px"
                                                  << "borderTopWidth"
                                                  << ""
                                                  << "border-width: 2px";
        QTest::newRow("takes apart") << "margin: 1px 2px"
                                     << "marginTop"
                                     << ""
                                     << "margin-right: 2px; margin-bottom: 1px; margin-left: 2px";
        QTest::newRow("behind a shorthand") << "background-color: red; background: blue"
                                            << "backgroundColor"
                                            << "green"
                                            << "background: blue; background-color: green";
        QTest::newRow("shorthand takes over") << "border-top-width: 5px; border-left-width: 1px"
                                              << "borderWidth"
                                              << "2"
                                              << "border-width: 2px";
        QTest::newRow("underline") << ""
                                   << "textDecorationUnderline"
                                   << "true"
                                   << "text-decoration: underline";
        QTest::newRow("more lines") << "text-decoration: underline"
                                    << "textDecorationLineThrough"
                                    << "true"
                                    << "text-decoration: underline line-through";
        QTest::newRow("fewer lines") << "text-decoration: underline line-through"
                                     << "textDecorationUnderline"
                                     << "false"
                                     << "text-decoration: line-through";
        QTest::newRow("last line") << "text-decoration: underline"
                                   << "textDecorationUnderline"
                                   << "false"
                                   << "";
        QTest::newRow("no lines") << "text-decoration: underline"
                                  << "textDecorationNone"
                                  << "true"
                                  << "text-decoration: none";
        QTest::newRow("unknown") << ""
                                 << "auto-update-caption"
                                 << "true"
                                 << "auto-update-caption: true";
        QTest::newRow("unknown again") << "isStyleInternal: True"
                                       << "isstyleinternal"
                                       << "False"
                                       << "isStyleInternal: False";
        QTest::newRow("url") << ""
                             << "backgroundimage"
                             << "url('a b.gif')"
                             << "background-image: url('a b.gif')";
        QTest::newRow("clip") << ""
                              << "clip"
                              << "rect(1px 2px 3px 4px)"
                              << "clip: rect(1px 2px 3px 4px)";
        QTest::newRow("clip numbers") << ""
                                      << "clip"
                                      << "rect(1 2 3 4)"
                                      << "clip: rect(1px 2px 3px 4px)";
        QTest::newRow("cursor") << ""
                                << "cursor"
                                << "hand"
                                << "cursor: hand";
        QTest::newRow("float") << ""
                               << "styleFloat"
                               << "left"
                               << "float: left";
    }
    void writesProperties()
    {
        QFETCH(QString, text);
        QFETCH(QString, name);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        const auto block = DeclarationBlock::parse(text, ValueMode::Strict);
        block->setValue(name, value);
        QCOMPARE(block->text(), expected);
    }

    void refusedWritesKeepTheOld_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::newRow("colour") << "color"
                                << "zzz";
        QTest::newRow("width") << "width"
                               << "wide";
        QTest::newRow("negative") << "width"
                                  << "-4";
        QTest::newRow("decoration") << "textDecorationUnderline"
                                    << "perhaps";
        QTest::newRow("breaking out") << "color"
                                      << "red; width: 1px";
        QTest::newRow("breaking out of unknown") << "unknown-one"
                                                 << "a; color: blue";
        QTest::newRow("important") << "color"
                                   << "red !important";
    }
    void refusedWritesKeepTheOld()
    {
        QFETCH(QString, name);
        QFETCH(QString, value);
        const auto block = DeclarationBlock::parse(QStringLiteral("color: green; width: 3px"), ValueMode::Strict);
        long number = 0;
        try {
            block->setValue(name, value);
        } catch (const base::Error &error) {
            number = error.number();
        }
        QCOMPARE(number, base::errors::invalidValue);
        QCOMPARE(block->text(), QStringLiteral("color: green; width: 3px"));
    }

    void sheetsReadBackToTheLetter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("styleRules");
        QTest::newRow("empty") << "" << 0;
        QTest::newRow("rules") << "p { color: red }\n\n  .a, .b{width:1px}\n" << 2;
        QTest::newRow("comments") << "/* one */ p { /* two */ } /* three */" << 1;
        QTest::newRow("markup comment") << "<!-- SPAN.x { isStyleInternal: True --> " << 1;
        QTest::newRow("at-rules") << "@charset \"utf-8\"; @import url(a.css) print; @font-face { src: url(x) } p{}"
                                  << 1;
        QTest::newRow("media") << "@media print { p { color: red } } q { color: blue }" << 1;
        QTest::newRow("broken") << "p { color: red } } q [ { x: y } r { }" << 1;
        QTest::newRow("unclosed") << "p { color: red" << 1;
        QTest::newRow("unknown at-rule") << "@something weird { a { b: c } } p { }" << 1;
    }
    void sheetsReadBackToTheLetter()
    {
        QFETCH(QString, text);
        QFETCH(int, styleRules);
        const auto sheet = StyleSheet::parse(text, ValueMode::Strict);
        QCOMPARE(sheet->text(), text);
        const auto count =
            std::count_if(sheet->rules.begin(), sheet->rules.end(), [](const Rule &rule) { return bool(rule.style); });
        QCOMPARE(int(count), styleRules);
    }

    void selectorTextsHaveElementNamesInCapitals_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("id") << "div#styledummy"
                            << "DIV#styledummy";
        QTest::newRow("class") << "span.lxMisspelled"
                               << "SPAN.lxMisspelled";
        QTest::newRow("list") << "p,  li > a:hover"
                              << "P, LI > A:hover";
        QTest::newRow("attribute") << "a[href=foo]"
                                   << "A[href=foo]";
        QTest::newRow("not") << "p:not(b.x)"
                             << "P:not(B.x)";
        QTest::newRow("nth") << "tr:nth-child(odd) td"
                             << "TR:nth-child(odd) TD";
        QTest::newRow("prefixed") << "o\\:p"
                                  << "O\\:P";
        QTest::newRow("bare class") << ".Foo .bar"
                                    << ".Foo .bar";
    }
    void selectorTextsHaveElementNamesInCapitals()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(selectorTextInCapitals(text), expected);
    }

    void aStringThatALineEndCutsOffStaysCutOff()
    {
        const QString text = QStringLiteral("background: calc('a\n\"b/*c");
        const QString once = DeclarationBlock::parse(text, ValueMode::Quirks)->text();
        QCOMPARE(once, QStringLiteral("background: calc('a\n\"b/*c"));
        QCOMPARE(DeclarationBlock::parse(once, ValueMode::Quirks)->text(), once);
    }
    void anyInputIsReadWithoutHarm()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        static const char *const pieces[] = {"{",
                                             "}",
                                             "(",
                                             ")",
                                             "[",
                                             "]",
                                             ";",
                                             ":",
                                             "\"",
                                             "'",
                                             "\\",
                                             "/*",
                                             "*/",
                                             "@media ",
                                             "@import ",
                                             "url(",
                                             "calc(",
                                             "var(--a",
                                             "color",
                                             "margin",
                                             "1px",
                                             "#",
                                             "<!--",
                                             "-->",
                                             "!important",
                                             ",",
                                             " ",
                                             "\n",
                                             ".a",
                                             "::before",
                                             ":not(",
                                             "+",
                                             "-",
                                             "%",
                                             "font:",
                                             "background:",
                                             "\xef\xbf\xbf",
                                             "99999999999999999999",
                                             "border"};
        for (int round = 0; round < 3000; ++round) {
            QString text;
            const int length = random.bounded(40);
            for (int i = 0; i < length; ++i) {
                if (random.bounded(8) == 0)
                    text += QChar(ushort(random.bounded(0x10000)));
                else
                    text += QString::fromUtf8(pieces[random.bounded(int(std::size(pieces)))]);
            }
            const auto sheet = StyleSheet::parse(text, ValueMode::Quirks);
            QCOMPARE(sheet->text(), text);
            for (const Rule &rule : sheet->rules)
                if (rule.style) {
                    const QString once = rule.style->block->text();
                    QCOMPARE(DeclarationBlock::parse(once, ValueMode::Quirks)->text(), once);
                }
            const auto block = DeclarationBlock::parse(text, ValueMode::Strict);
            for (const QString &name : propertyNames())
                block->value(name);
        }
    }

    void deepNestingIsBounded()
    {
        const QString opening = QStringLiteral("(").repeated(100000);
        StyleSheet::parse(opening, ValueMode::Strict);
        StyleSheet::parse(QStringLiteral("@media screen {").repeated(20000), ValueMode::Strict);
        parseSelectors(QStringLiteral(":not(").repeated(50000));
        parseSelectors(QStringLiteral("a ").repeated(50000));
        QVERIFY(!parseDeclaration(QStringLiteral("width"), QStringLiteral("calc(").repeated(50000), ValueMode::Strict));
    }
};

QTEST_APPLESS_MAIN(TestCssValues)
#include "tst_css_values.moc"
