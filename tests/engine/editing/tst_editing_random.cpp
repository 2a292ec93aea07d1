// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/CommandTable.h"
#include "tests/engine/editing/EditingFixture.h"

#include <QRandomGenerator>
#include <QTest>

using namespace ranges;
using editing::Unit;

namespace {

const char *const pages[] = {
    "<p>one two</p>\n<p>three <b>four <i>five</i></b> six<br>seven</p>\n<ul>\n<li>a</li>\n<li>b<ul><li>c</li><li>d</li></ul></li>"
    "</ul><h1>Head</h1><pre>pre\n  text</pre>",
    "<p>x</p><table><tbody><tr><td>a</td><td><p>b</p><p>c</p></td></tr><tr><td></td><td>d<img src=\"i\">e</td></tr></tbody>"
    "</table><hr><blockquote>quote <p>inner</p> tail</blockquote>",
    "text <b>bold</b><div>div<p>para</p>more</div><div contenteditable=\"false\">fixed <span contenteditable=\"true\">free"
    "</span></div><dl><dt>t</dt><dd>d</dd></dl><p></p><p>&nbsp;</p>",
    "<font color=\"red\">f<p>g</p>h</font><ol><li><p>one</p></li><li><p>two</p><p>three</p></li></ol><p><a href=\"u\">link</a>"
    "<!--c--> end &nbsp; x</p>",
    "<p>a <span id=\"f\">field</span> b</p><p><span id=\"g\" contenteditable=\"true\">x</span></p><ul><li><span id=\"h\">"
    "<b>y</b></span></li></ul>c<span contenteditable=\"true\"></span>d",
    "",
};

class Typist
{
public:
    Typist(Editing &e, quint32 seed) : e(e), random(seed) {}
    QString done;

    void step()
    {
        switch (random.bounded(16)) {
        case 0:
        case 1:
        case 2: type(); break;
        case 3: run("space", [this] { e.editor.insertText(" "); }); break;
        case 4: run("enter", [this] { e.editor.insertParagraph(); }); break;
        case 5: run("break", [this] { e.editor.insertLineBreak(); }); break;
        case 6:
        case 7: run("backspace", [this] { e.editor.deleteBackward(random.bounded(5) ? Unit::Character : Unit::Word); }); break;
        case 8: run("delete", [this] { e.editor.deleteForward(random.bounded(5) ? Unit::Character : Unit::Word); }); break;
        case 9:
        case 10: place(); break;
        case 11: select(); break;
        case 12: clip(); break;
        default: move(); break;
        }
    }

private:
    template <class Action> void run(const char *name, Action action)
    {
        done = QString("%1 at %2").arg(name, e.marked());
        action();
    }
    void clip()
    {
        static const QList<editing::Snippet> snippets{{"<b>x</b>y", {}}, {"<p>x</p><p>y</p>", {}}, {"<li>x</li>", {}},
                                                      {"<table><tr><td>x<td>y</table>", {}}, {{}, "x y"},
                                                      {{}, "x\ny\n\n z "}, {"<span id=f>x</span>", {}}, {"<hr>", {}}};
        if (random.bounded(3) == 0) return run("cut", [this] { e.editor.cut(); });
        const editing::Snippet &snippet = snippets[random.bounded(int(snippets.size()))];
        run(qPrintable("paste '" + snippet.html + snippet.text + "'"), [&] { e.editor.paste(snippet); });
    }
    void type()
    {
        static const QStringList texts{"a", "b ", " c", "  ", "\U0001F600", "x\ny", "\u05d0"};
        const QString text = texts[random.bounded(int(texts.size()))];
        run(qPrintable("type '" + text + "'"), [&] { e.editor.insertText(text); });
    }
    Position somewhere()
    {
        // Some node below BODY, some place in it.
        std::vector<dom::Node *> nodes;
        for (dom::Node *node = e.document->body(); node; node = node->next(e.document->body())) nodes.push_back(node);
        dom::Node *node = nodes[size_t(random.bounded(int(nodes.size())))];
        return Position(node, uint32_t(random.bounded(int(Position::lengthOf(*node)) + 1))).clipped();
    }
    void place() { e.selection.setCaret(somewhere()); }
    void select() { e.selection.set(somewhere(), somewhere()); }
    void move()
    {
        const Position p = e.selection.focus();
        if (!p) return place();
        done = "move at " + e.marked();
        const Content content = Movement::contentFor(p);
        const Movement movement(content);
        switch (random.bounded(6)) {
        case 0: e.selection.setCaret(movement.nextCharacter(p)); break;
        case 1: e.selection.setCaret(movement.previousCharacter(p)); break;
        case 2: e.selection.setCaret(movement.nextWord(p)); break;
        case 3: e.selection.setCaret(movement.previousWord(p)); break;
        case 4: e.selection.setCaret(movement.endOfBlock(p)); break;
        case 5: e.selection.extendTo(movement.nextCharacter(p)); break;
        }
    }
    Editing &e;
    QRandomGenerator random;
};

} // namespace

class tst_editing_random : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void editsKeepTheirPromises_data();
    void editsKeepTheirPromises();
    void caretsGoThroughAPageAndBack_data();
    void caretsGoThroughAPageAndBack();
    void commandsAreRows();
};

void tst_editing_random::editsKeepTheirPromises_data()
{
    QTest::addColumn<QString>("html");
    int n = 0;
    for (const char *page : pages) QTest::addRow("page %d", ++n) << QString::fromUtf8(page);
}

void tst_editing_random::editsKeepTheirPromises()
{
    QFETCH(QString, html);
    const bool isLong = qEnvironmentVariableIsSet("VELLUM_LONG");
    const int runs = isLong ? 400 : 12, steps = isLong ? 120 : 40;
    const bool replay = qEnvironmentVariableIsSet("VELLUM_SEED");
    const quint32 base =
        replay ? qEnvironmentVariable("VELLUM_SEED").toUInt() : QRandomGenerator::global()->bounded(0x7fffffff);
    qInfo("seeds from %u", base);
    for (int run = 0; run < runs; ++run) {
        const quint32 seed = run == 0 && !replay ? 20260101u : base + quint32(run);
        const QString page = Marks::wrapped(html);
        Editing e(page);
        e.selection.setCaret(Position::startOf(*e.document->body()));
        e.tracker.selectionSettled();
        const QString first = e.dump();
        Typist typist(e, seed);
        for (int i = 0; i < steps; ++i) {
            typist.step();
            if (i % 8 != 7 && !replay) continue;
            const QString broken = e.broken(page, first);
            if (!broken.isEmpty())
                QFAIL(qPrintable(QString("seed %1 step %2: after %3\n%4\nnow %5").arg(seed).arg(i).arg(typist.done, broken, e.marked())));
        }
    }
}

void tst_editing_random::caretsGoThroughAPageAndBack_data()
{
    editsKeepTheirPromises_data();
}

void tst_editing_random::caretsGoThroughAPageAndBack()
{
    QFETCH(QString, html);
    Editing e(Marks::wrapped(html));
    const Content content(Rendering::byHtml(), *e.document->body());
    const Movement movement(content);
    std::vector<Position> way{movement.startOfDocument()};
    for (;;) {
        const Position next = movement.nextCharacter(way.back());
        if (next == way.back()) break;
        QVERIFY2(way.back() < next, "forward is forward");
        QCOMPARE(content.normalised(next), next);
        way.push_back(next);
        QVERIFY(way.size() < 500);
    }
    QCOMPARE(way.back(), movement.endOfDocument());
    for (size_t i = way.size(); i-- > 1;) {
        e.selection.set(way[i], movement.previousCharacter(way[i]));
        const QString there = e.marked();
        e.selection.set(way[i], way[i - 1]);
        QCOMPARE(there, e.marked());
    }
    QCOMPARE(movement.previousCharacter(way.front()), way.front());
}

void tst_editing_random::commandsAreRows()
{
    Editing e(Marks("<p>a|</p>"));
    const editing::CommandContext context{e.editor, {}, {}, {}, {}};
    const auto run = [&](const char *name, const QString &argument = {}) {
        const editing::Command *row = editing::CommandTable::find(name);
        return row && editing::CommandTable::run(*row, context, argument);
    };
    QVERIFY(run("INSERTTEXT", "b"));
    QVERIFY(run("insertParagraph"));
    QCOMPARE(e.marked(), QString("<P>ab</P><P>|&nbsp;</P>"));
    QVERIFY(run("delete"));
    QVERIFY(!run("forwardDelete"));
    QVERIFY(run("insertLineBreak"));
    QVERIFY(run("selectAll"));
    QCOMPARE(e.marked(), QString("<P>^ab<BR><BR>|</P>"));
    QVERIFY(!editing::CommandTable::find("nothing"));
    QVERIFY(!run("undo")); // somebody reads the log: the history is theirs
    e.document->setEditMode(dom::EditMode::Browse);
    QVERIFY(!run("insertText", "b"));
    QVERIFY(run("selectAll"));
}

QTEST_GUILESS_MAIN(tst_editing_random)
#include "tst_editing_random.moc"
