// SPDX-License-Identifier: GPL-3.0-or-later
// Lines of text: where they break and where things stand on them. Widths are those of Liberation Mono at 10 pixels, whose
// characters are all 1229/2048 of that wide: n of them are as wide as `mono(n)` says.
#include "tests/engine/layout/LaidOutPage.h"

#include <QtTest>

using namespace layout;

namespace {

double mono(int characters) { return characters * 10 * 1229 / 2048.0; }

struct Page : LaidOutPage {
    explicit Page(const QString &body)
        : LaidOutPage("<!DOCTYPE html><style>body{margin:0;font:10px/20px 'Liberation Mono'}</style><body>" + body)
    {
    }
    /// What stands on each line of the block, hanging blanks left out.
    QStringList lines(const QString &id)
    {
        tree.update();
        QStringList result;
        const InlineContent &content = *boxOf(byId(id))->asBlock()->inlineContent;
        for (const Line &line : content.lines) {
            QString text = content.text.mid(line.start, line.end - line.start);
            while (text.endsWith(' ') || text.endsWith('\n')) text.chop(1);
            for (const Fragment *f = content.begin(line); f != content.end(line); ++f)
                if (f->hyphen) text += "|-";
            result << text;
        }
        return result;
    }
};

// A block so wide that `characters` fit, with one pixel to spare.
QString narrow(int characters, const QString &style, const QString &text)
{
    return QString("<div id=a style='width:%1px;%2'>%3</div>").arg(int(mono(characters)) + 1).arg(style, text);
}

} // namespace

class LinesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aQuirkyLineIsAsHighAsWhatStandsOnIt()
    {
        // As Chromium 156 has it. In an item of a list a line on which an element begins is as high as the item's text.
        LaidOutPage page("<html><head><style>div,li{width:150px;line-height:1.5;font-size:16px} code{font-size:10px}</style></head><body>"
                         "<div id=a><code>longlonglonglonglong longlonglonglonglong longlonglonglong</code></div>"
                         "<ul><li id=b><code>longlonglonglonglong longlonglonglonglong longlonglonglong</code></ul>"
                         "<ul style='list-style:none'><li id=c><code>longlonglonglonglong</code> <code>longlonglonglonglong longlonglonglong</code></ul>"
                         "<ul><li id=d><b>b</b><br><code>longlonglonglonglong</code><br><code>longlonglonglonglong</code></ul>");
        QCOMPARE(page.box("a").height(), 45.0);
        QCOMPARE(page.box("b").height(), 54.0);
        QCOMPARE(page.box("c").height(), 63.0);
        QCOMPARE(page.box("d").height(), 72.0);
    }
    void lettersKernAcrossTheEndsOfElements()
    {
        Page page("<style>div{font:32px 'Liberation Serif';width:max-content}</style><div id=whole>AVAV</div>"
                  "<div id=parts>A<i style='font-style:normal'>V</i><u>AV</u></div>"
                  "<div id=apart>A<i style='font-style:normal;padding:0 1px'>V</i>AV</div>"
                  "<div id=unkerned>A<i style='font-style:normal'>\u200B</i>V</div><div id=kerned>AV</div>");
        const auto width = [&](const char *id) { return page.queries.borderBox(page.byId(id)).width(); };
        QVERIFY2(width("kerned") < width("unkerned") - 1, "These letters don't kern: nothing is tested");
        QVERIFY(std::abs(width("parts") - width("whole")) < 0.1);
        QVERIFY(width("apart") > width("whole") + 2); // an edge keeps letters apart
    }
    void glyphsAreScaledToWhole64thsOfAPixel()
    {
        Page page("<span id=a style='font-size:14.4px'>" + QString(100, 'x') + "</span>");
        QVERIFY(std::abs(page.queries.borderBox(page.byId("a")).width() - 100 * 14.390625 * 1229 / 2048) < 0.03);
    }
    void aLineHeightIsTakenOfARoundedFontSize()
    {
        Page page("<div id=a style='font-size:13.28px;line-height:1.3'>x</div>");
        QCOMPARE(page.queries.borderBox(page.byId("a")).height(), 17.265625); // 13.28125 times 1.3, cut off to 64ths
    }
    void blanksThatAreKeptTakeRoomAtAForcedEnd()
    {
        Page page("<div style='white-space:pre-wrap'><span id=a>ab  <br></span><span id=b>ab  </span></div>");
        QVERIFY(std::abs(page.queries.borderBox(page.byId("a")).width() - mono(4)) < 0.03);
        QVERIFY(std::abs(page.queries.borderBox(page.byId("b")).width() - mono(4)) < 0.03);
    }
    void aTabIsAtLeastHalfACharacterWide()
    {
        Page page("<pre style='margin:0;font:inherit'>abcdefg\t<b id=a>x</b></pre>"); // one character short of the first stop
        QVERIFY(std::abs(page.queries.borderBox(page.byId("a")).x() - mono(8)) < 0.05);
    }
    void linesBreak_data()
    {
        QTest::addColumn<int>("room");
        QTest::addColumn<QString>("style");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("lines");
        const auto row = [](const char *name, int room, const char *style, const char *text, const QStringList &lines) {
            QTest::newRow(name) << room << style << QString::fromUtf8(text) << lines;
        };
        row("normal", 5, "", "aa  bb\ncc", {"aa bb", "cc"});
        row("nowrap", 5, "white-space:nowrap", "aa  bb\ncc", {"aa bb cc"});
        row("pre", 5, "white-space:pre", "aa  bb cc\ndd", {"aa  bb cc", "dd"});
        row("pre-wrap", 6, "white-space:pre-wrap", "aa  bb cc\ndd", {"aa  bb", "cc", "dd"});
        row("pre-line", 5, "white-space:pre-line", "aa  bb cc\ndd", {"aa bb", "cc", "dd"});
        row("a word that doesn't fit sticks out", 4, "", "aa bbbbbb cc", {"aa", "bbbbbb", "cc"});
        row("overflow-wrap: break-word", 4, "overflow-wrap:break-word", "aa bbbbbb cc", {"aa", "bbbb", "bb", "cc"});
        row("word-wrap, its old name", 4, "word-wrap:break-word", "aa bbbbbb cc", {"aa", "bbbb", "bb", "cc"});
        row("overflow-wrap: anywhere", 4, "overflow-wrap:anywhere", "aa bbbbbb cc", {"aa", "bbbb", "bb", "cc"});
        row("word-break: break-all", 4, "word-break:break-all", "aa bbbbbb cc", {"aa b", "bbbb", "b cc"});
        row("word-break: break-word", 4, "word-break:break-word", "aa bbbbbb cc", {"aa", "bbbb", "bb", "cc"});
        row("word-break: keep-all", 4, "word-break:keep-all", "漢字 漢字漢字", {"漢字", "漢字漢字"});
        row("soft hyphens", 5, "", "aaa\u00ADbbb\u00ADccc", {"aaa\u00AD|-", "bbb\u00AD|-", "ccc"});
        row("soft hyphens that aren't needed", 9, "", "aaa\u00ADbbb\u00ADccc", {"aaa\u00ADbbb\u00ADccc"});
        row("behind a hyphen", 5, "", "aaa-bbb-ccc", {"aaa-", "bbb-", "ccc"});
        row("not in front of a blank that can't break", 5, "", "aa bb\u00A0cc", {"aa", "bb\u00A0cc"});
        row("zero width space", 5, "", "aaaa\u200Bbbbb", {"aaaa\u200B", "bbbb"});
        row("word joiner", 5, "word-break:break-word", "aa bb-\u2060cc", {"aa", "bb-\u2060cc"});
        row("a line break element", 5, "", "aa<br>bb", {"aa", "bb"});
        row("WBR", 5, "", "aaaa<wbr>bbbb", {"aaaa\u200B", "bbbb"});
        row("between ideographs", -2, "", "漢字漢字", {"漢字", "漢字"});
        row("no line begins with a closing mark", -2, "", "漢字。漢", {"漢", "字。", "漢"});
        row("no line ends with an opening bracket", -2, "", "漢「字漢", {"漢", "「字", "漢"});
        row("capitals", 99, "text-transform:uppercase", "one éa", {"ONE ÉA"});
        row("capitalize", 99, "text-transform:capitalize", "one two-three don't", {"One Two-Three Don't"});
        row("letters beyond the basic plane stay whole", 1, "word-break:break-all", "😀😀", {"😀", "😀"});
        row("combining marks stay with their letter", 1, "word-break:break-all", "e\u0301e\u0301", {"e\u0301", "e\u0301"});
    }
    void linesBreak()
    {
        QFETCH(int, room);
        QFETCH(QString, style);
        QFETCH(QString, text);
        QFETCH(QStringList, lines);
        if (room < 0) { // in ideographs, which are as wide as the machine's fonts make them
            Page ruler(QString::fromUtf8("<span id=a>漢</span>"));
            text = QString("<div id=a style='width:%1px'>%2</div>").arg(int(-room * ruler.box("a").width()) + 1).arg(text);
        } else {
            text = narrow(room, style, text);
        }
        Page page(text);
        QCOMPARE(page.lines("a"), lines);
        QCOMPARE(page.tree.compareWithFresh(), QString());
    }
    void spacingsAddToWidths()
    {
        Page page("<span id=a style='letter-spacing:2px'>abc</span><br><span id=b style='word-spacing:5px'>a b c</span><br>"
                  "<span id=c style='letter-spacing:-1px;word-spacing:3px'>a b</span>");
        const auto near = [](double a, double b) { return std::abs(a - b) < 0.04; };
        QVERIFY(near(page.box("a").width(), mono(3) + 6));
        QVERIFY(near(page.box("b").width(), mono(5) + 10));
        QVERIFY(near(page.box("c").width(), mono(3) - 3 + 3));
    }
    void theFirstLineIsIndented()
    {
        Page page(narrow(8, "text-indent:12px", "<b id=x>aaaa</b> bbb <i id=y>cccc</i>") +
                  "<div style='text-indent:-10px;padding-left:30px'><i id=z>a</i></div><div style='width:200px;text-indent:25%'><i id=p>a</i></div>");
        QVERIFY2(page.box("x").x() == 12, qPrintable(QString::number(page.box("x").x())));
        QCOMPARE(page.lines("a"), (QStringList{"aaaa", "bbb cccc"}));
        QCOMPARE(page.box("z").x(), 20.0);
        QCOMPARE(page.box("p").x(), 50.0);
    }
    void boxesStandOnTheLineAsAligned()
    {
        // The line is 40 high because of the tall box: its bottom on the baseline.
        const auto line = [](const char *align) {
            return QString("<div style='font-size:10px;line-height:20px'><span style='display:inline-block;height:40px;width:5px'></span>"
                           "<span id=x style='display:inline-block;height:10px;width:5px;vertical-align:%1'></span></div>").arg(align);
        };
        const auto offset = [&](const char *align) {
            Page page(line(align));
            return page.box("x").bottom();
        };
        QCOMPARE(offset("baseline"), 40.0);
        QCOMPARE(offset("5px"), 35.0);
        QCOMPARE(offset("-5px"), 45.0);
        QCOMPARE(offset("50%"), 30.0); // of the line height
        QCOMPARE(offset("top"), 10.0);
        Page bottom(line("bottom"));
        QCOMPARE(bottom.box("x").bottom(), bottom.queries.borderBox(*bottom.byId("x").parentElement()).bottom());
    }
    void anInlineBlockStandsOnItsLastLine()
    {
        Page page("<div><span id=x style='display:inline-block'>a<br><i id=z>b</i></span><b id=y>c</b></div>"
                  "<div><span id=u style='display:inline-block;overflow:hidden'>a<br>b</span><b id=v>c</b></div>"
                  "<div><span id=s style='display:inline-block;width:5px;height:30px'></span><b id=t>c</b></div>");
        QCOMPARE(page.box("x").height(), 40.0);
        QCOMPARE(page.box("y").y(), page.box("z").y());
        // One that clips, or has no line, stands on its lower edge: the letter's baseline is there.
        QVERIFY(page.box("v").bottom() > page.box("u").bottom());
        QVERIFY(page.box("t").bottom() > page.box("s").bottom());
        QVERIFY(page.box("t").y() < page.box("s").bottom());
    }
    void directionsAreTurned()
    {
        Page page(QString::fromUtf8("<div><i id=a>abc</i> <b id=b>אבג</b> <u id=c>דהו</u> <s id=d>xyz</s></div>"
                                    "<div dir=rtl style='width:400px'><b id=e>אבג</b> <i id=f>abc</i></div>"));
        QVERIFY(page.box("a").right() < page.box("c").left());
        QVERIFY(page.box("c").right() < page.box("b").left()); // the second Hebrew word stands left of the first
        QVERIFY(page.box("b").right() < page.box("d").left());
        QVERIFY(std::abs(page.box("e").right() - 400) < 0.1);
        QVERIFY(page.box("f").right() < page.box("e").left());
    }
    void joinedLettersShareShapes()
    {
        // Arabic letters in a word are narrower joined than the same letters apart.
        Page page(QString::fromUtf8("<span id=a>سلام</span> <span id=b>س&zwnj;ل&zwnj;ا&zwnj;م</span>"));
        QVERIFY(page.box("a").width() > 0);
        QVERIFY(page.box("b").width() != page.box("a").width());
    }
    void sharesOfJustifiedLinesEndAtTheEdge()
    {
        Page page(narrow(12, "text-align:justify", "aaa bbb <b id=x>ccc</b> ddd eee <i id=y>fff</i>"));
        QCOMPARE(page.lines("a"), (QStringList{"aaa bbb ccc", "ddd eee fff"}));
        QVERIFY(std::abs(page.box("x").right() - page.box("a").right()) < 0.04);
        QVERIFY(page.box("y").right() < page.box("a").right() - 4); // the last line isn't justified
    }
};

QTEST_MAIN(LinesTest)
#include "tst_lines.moc"
