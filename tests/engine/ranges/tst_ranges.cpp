// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/ChangeTracker.h"
#include "engine/html/Parser.h"
#include "engine/ranges/Marks.h"
#include "engine/ranges/Movement.h"

#include <QRandomGenerator>
#include <QTest>

using namespace ranges;
using dom::Node;
using dom::Text;

namespace {

struct Page {
    base::Ref<dom::Document> document;
    changes::ChangeTracker tracker;
    RangeKeeper keeper;
    SelectionObject selection;
    explicit Page(const Marks &marks)
        : document(html::parseDocument(marks.page())), tracker(*document), keeper(*document), selection(keeper)
    {
        tracker.setSelectionKeeper(&selection);
        marks.apply(selection);
    }
    dom::Element *byId(const char *id) { return document->getElementById(id); }
    std::vector<Position> places()
    {
        std::vector<Position> all;
        for (Node *node = document->body(); node; node = node->next(document->body()))
            for (uint32_t i = 0; i <= Position::lengthOf(*node); ++i) all.emplace_back(node, i);
        return all;
    }
    QString marked() { return Marks::print(selection).remove('\r'); }
};

} // namespace

class tst_ranges : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void positionsAreInDocumentOrder();
    void positionsNeverStandBetweenSurrogates();
    void textAroundAPositionCarriesIt();
    void childrenAroundAPositionCarryIt();
    void positionsInRemovedContentGoToItsPlace();
    void positionsInMovedContentMoveAlong();
    void manyPositionsFollowRandomEdits();
    void theSelectionIsSavedAndRestored();
    void objectsThatComeBackAreSelectedAgain();
    void objectsStayUnselectedWhereSomebodySelectedMeanwhile();
    void emptyingLeavesACaret();
    void restoringWhatIsGoneLeavesTheSelection();
    void changesAreTold();
    void hostsEndWhereEditingMust();
    void marksAreReadAndPrinted_data();
    void marksAreReadAndPrinted();
    void marksOfObjects();
};

void tst_ranges::positionsAreInDocumentOrder()
{
    Page page(Marks("<p>ab<b>c</b></p><p></p>d"));
    // Document order of places is that in which a walk meets them.
    std::vector<Position> order;
    const std::function<void(Node &)> walk = [&](Node &node) {
        if (node.isText()) {
            for (uint32_t i = 0; i <= Position::lengthOf(node); ++i) order.emplace_back(&node, i);
            return;
        }
        for (uint32_t i = 0; i < node.childCount(); ++i) {
            order.emplace_back(&node, i);
            walk(*node.childAt(i));
        }
        order.emplace_back(&node, node.childCount());
    };
    walk(*page.document->body());
    for (size_t i = 0; i < order.size(); ++i)
        for (size_t j = 0; j < order.size(); ++j)
            QCOMPARE(Position::compare(order[i], order[j]), i == j ? 0 : (i < j ? -1 : 1));
}

void tst_ranges::positionsNeverStandBetweenSurrogates()
{
    Page page(Marks(QString("<p id=p>a\U0001F600b</p>")));
    Node *text = page.byId("p")->firstChild();
    QCOMPARE(Position(text, 2).clipped().offset, 1u);
    QCOMPARE(Position(text, 3).clipped().offset, 3u);
    QCOMPARE(Position(text, 9).clipped().offset, 4u);
    page.selection.setCaret({text, 2});
    QCOMPARE(page.selection.focus().offset, 1u);
}

void tst_ranges::textAroundAPositionCarriesIt()
{
    Page page(Marks("<p id=p>abcdef</p>"));
    auto &text = static_cast<Text &>(*page.byId("p")->firstChild());
    LivePosition one(page.keeper, {&text, 1}), three(page.keeper, {&text, 3}), five(page.keeper, {&text, 5});
    page.tracker.replaceText(text, 3, 0, "xx"); // abc|xxdef
    QCOMPARE(one.position().offset, 1u);
    QCOMPARE(three.position().offset, 3u);
    QCOMPARE(five.position().offset, 7u);
    page.tracker.replaceText(text, 0, 5, ""); // all in front of "def"
    QCOMPARE(one.position().offset, 0u);
    QCOMPARE(three.position().offset, 0u);
    QCOMPARE(five.position().offset, 2u);
    page.tracker.replaceText(text, 0, 2, "long"); // what ended there goes behind the new
    QCOMPARE(five.position().offset, 4u);
    QCOMPARE(one.position().offset, 0u);
}

void tst_ranges::childrenAroundAPositionCarryIt()
{
    Page page(Marks("<p id=p><i>a</i><b id=b>b</b><u>c</u></p>"));
    dom::Element &p = *page.byId("p");
    LivePosition zero(page.keeper, {&p, 0}), one(page.keeper, {&p, 1}), three(page.keeper, {&p, 3});
    auto fresh = page.document->createElement("s");
    page.tracker.insert(p, *fresh, page.byId("b"));
    QCOMPARE(zero.position().offset, 0u);
    QCOMPARE(one.position().offset, 1u);
    QCOMPARE(three.position().offset, 4u);
    page.tracker.remove(*page.byId("b"));
    QCOMPARE(three.position().offset, 3u);
    page.tracker.move(p, *fresh, nullptr); // i u s
    QCOMPARE(one.position().offset, 1u);
    QCOMPARE(three.position().offset, 2u); // what stood between u and the end still does
}

void tst_ranges::positionsInRemovedContentGoToItsPlace()
{
    Page page(Marks("<p>x</p><div id=d><p id=p>a<b id=b>b</b></p></div><p>y</p>"));
    LivePosition inner(page.keeper, {page.byId("b")->firstChild(), 1}), outer(page.keeper, {page.byId("d"), 1});
    LivePosition other(page.keeper, {page.byId("p"), 0});
    base::Ref<dom::Element> d(page.byId("d"));
    page.tracker.remove(*page.byId("p"));
    QCOMPARE(inner.position(), Position(d.get(), 0));
    QCOMPARE(other.position(), Position(d.get(), 0));
    QCOMPARE(outer.position(), Position(d.get(), 0));
    page.tracker.remove(*d);
    QCOMPARE(inner.position(), Position(page.document->body(), 1));
}

void tst_ranges::positionsInMovedContentMoveAlong()
{
    Page page(Marks("<p id=p>x</p><div id=d><b id=b>b</b></div>"));
    LivePosition inner(page.keeper, {page.byId("b")->firstChild(), 1});
    LivePosition behind(page.keeper, {page.byId("d"), 1});
    page.tracker.move(*page.byId("p"), *page.byId("b"), nullptr);
    QCOMPARE(inner.position(), Position(page.byId("b")->firstChild(), 1));
    QCOMPARE(behind.position(), Position(page.byId("d"), 0));
}

void tst_ranges::manyPositionsFollowRandomEdits()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    Page page(Marks("<p>one <b>two</b></p><ul><li>a</li><li>b<ul><li>c</li></ul></li></ul><p>three</p>"));
    std::vector<LivePosition> live;
    for (const Position &p : page.places()) live.emplace_back(page.keeper, p);
    for (int i = 0; i < 400; ++i) {
        std::vector<Node *> nodes;
        for (Node *node = page.document->body()->firstChild(); node; node = node->next(page.document->body()))
            nodes.push_back(node);
        if (nodes.empty()) break;
        Node &node = *nodes[size_t(random.bounded(int(nodes.size())))];
        Node &other = *nodes[size_t(random.bounded(int(nodes.size())))];
        switch (random.bounded(4)) {
        case 0:
            if (node.isText()) {
                const auto length = int(static_cast<Text &>(node).length());
                page.tracker.replaceText(static_cast<Text &>(node), uint32_t(random.bounded(length + 1)), 0, "xy");
            }
            break;
        case 1:
            if (node.isText()) page.tracker.replaceText(static_cast<Text &>(node), 0, 1, "");
            break;
        case 2:
            if (other.isElement() && !node.contains(other))
                page.tracker.move(*other.asElement(), node, other.firstChild() == &node ? nullptr : other.firstChild());
            break;
        case 3:
            if (random.bounded(8) == 0) page.tracker.remove(node);
            else if (node.isElement())
                page.tracker.insert(*node.asElement(), *page.document->createTextNode("new"), node.firstChild());
            break;
        }
        // Order is kept but for what was moved; places stay in the tree.
        for (const LivePosition &p : live) {
            QVERIFY(p.position().node->isConnected());
            QCOMPARE(p.position().clipped(), p.position());
        }
    }
}

void tst_ranges::theSelectionIsSavedAndRestored()
{
    Page page(Marks("<p>a^b</p><p>c|d</p><img id=i><img id=j>"));
    const auto saved = page.selection.savedSelection();
    page.selection.clear();
    QCOMPARE(page.selection.type(), SelectionObject::Type::None);
    page.selection.restoreSelection(saved);
    QCOMPARE(page.marked(), QString("<P>a^b</P><P>c|d</P><IMG id=\"i\"><IMG id=\"j\">"));
    QVERIFY(page.selection.isRange());
    page.selection.setControl({page.byId("i"), page.byId("j")});
    const auto control = page.selection.savedSelection();
    page.selection.restoreSelection(saved);
    page.selection.restoreSelection(control);
    QCOMPARE(page.selection.type(), SelectionObject::Type::Control);
    QCOMPARE(page.selection.elements().size(), size_t(2));
    page.tracker.remove(*page.byId("i"));
    QCOMPARE(page.selection.elements().size(), size_t(1));
    page.tracker.remove(*page.byId("j"));
    QVERIFY(page.selection.isCaret());
    QCOMPARE(page.marked(), QString("<P>ab</P><P>cd</P>|"));
}

void tst_ranges::objectsThatComeBackAreSelectedAgain()
{
    const QString before("<P>a<IMG id=\"i\" data-selected=\"\">b</P>");
    Page page{Marks(before)};
    page.tracker.remove(*page.byId("i"));
    QVERIFY(page.selection.isCaret());
    {
        changes::ChangeTracker::Step step(page.tracker, changes::Kind::TextIn);
        Text *text = static_cast<Text *>(page.document->body()->firstChild()->firstChild());
        page.tracker.replaceText(*text, 1, 0, "x");
        page.selection.setCaret({text, 2});
        step.done();
    }
    QCOMPARE(page.marked(), QString("<P>ax|b</P>"));
    page.tracker.undo();
    QVERIFY(page.selection.isCaret());
    page.tracker.undo();
    QCOMPARE(page.marked(), before);
    page.tracker.redo();
    QCOMPARE(page.marked(), QString("<P>a|b</P>"));
    page.tracker.redo();
    QCOMPARE(page.marked(), QString("<P>ax|b</P>"));
    page.tracker.undo();
    page.tracker.undo();
    QCOMPARE(page.marked(), before);
}

void tst_ranges::objectsStayUnselectedWhereSomebodySelectedMeanwhile()
{
    Page page(Marks("<p>a<img id=i data-selected>b</p><p id=p>c</p>"));
    page.tracker.remove(*page.byId("i"));
    page.selection.setCaret(Position::endOf(*page.byId("p")->firstChild()));
    page.tracker.undo();
    QCOMPARE(page.marked(), QString("<P>a<IMG id=\"i\">b</P><P id=\"p\">c|</P>"));
}

void tst_ranges::emptyingLeavesACaret()
{
    Page page(Marks("<p>a|b^c</p><p>d<img id=i>e</p>"));
    page.selection.empty();
    QCOMPARE(page.marked(), QString("<P>a|bc</P><P>d<IMG id=\"i\">e</P>"));
    page.selection.setControl({page.byId("i")});
    page.selection.empty();
    QCOMPARE(page.marked(), QString("<P>abc</P><P>d|<IMG id=\"i\">e</P>"));
}

void tst_ranges::restoringWhatIsGoneLeavesTheSelection()
{
    Page page(Marks("<p id=p>a|b</p><p>c</p>"));
    const auto saved = page.selection.savedSelection();
    page.tracker.remove(*page.byId("p"));
    page.selection.restoreSelection(saved);
    QCOMPARE(page.marked(), QString("|<P>c</P>"));
    page.selection.restoreSelection({changes::SavedSelection::Type::Text, 9999, 3, 9999, 3});
    QCOMPARE(page.marked(), QString("|<P>c</P>"));
    const auto id = page.document->body()->firstChild()->firstChild()->id();
    page.selection.restoreSelection({changes::SavedSelection::Type::Text, id, 99, id, 99});
    QCOMPARE(page.marked(), QString("<P>c|</P>"));
}

void tst_ranges::changesAreTold()
{
    Page page(Marks("<p>a|b</p>"));
    int told = 0;
    page.selection.selectionChanged = [&told] { ++told; };
    page.selection.setCaret(page.selection.focus());
    QCOMPARE(told, 0);
    page.selection.setCaret({page.selection.focus().node.get(), 0});
    page.selection.extendTo({page.selection.focus().node.get(), 2});
    QCOMPARE(told, 2);
    QCOMPARE(page.marked(), QString("<P>^ab|</P>"));
    page.selection.clear();
    page.selection.clear();
    QCOMPARE(told, 3);
}

void tst_ranges::hostsEndWhereEditingMust()
{
    Page page(Marks("<p id=a>x</p><div id=b contenteditable=false><span id=c contenteditable=true><b id=d>y</b></span></div>"
                    "<p id=e contenteditable=true>z</p>"));
    using dom::EditMode;
    const auto host = [&](const char *id) { return editingHost(*page.byId(id)); };
    page.document->setEditMode(EditMode::Edit);
    QCOMPARE(host("a"), page.document->body());
    QCOMPARE(host("b"), nullptr);
    QCOMPARE(host("d"), page.byId("c"));
    QCOMPARE(host("e"), page.document->body());
    page.document->setEditMode(EditMode::Browse);
    QCOMPARE(host("a"), nullptr);
    QCOMPARE(host("d"), page.byId("c"));
    QCOMPARE(host("e"), page.byId("e"));
    page.document->setEditMode(EditMode::Disabled);
    QCOMPARE(host("e"), nullptr);
}

void tst_ranges::marksAreReadAndPrinted_data()
{
    QTest::addColumn<QString>("marked");
    QTest::addColumn<QString>("plain");
    const auto row = [](const char *name, const char *marked, const char *plain) {
        QTest::newRow(name) << QString(marked) << QString(plain);
    };
    row("caret", "<P>a|b</P>", "<P>ab</P>");
    row("range", "<P>a^b</P><P>|c</P>", "<P>ab</P><P>c</P>");
    row("backwards", "<P>|a</P><P>b^</P>", "<P>a</P><P>b</P>");
    row("empty block", "<P>|</P>", "<P></P>");
    row("behind a block", "<P>^a</P>|<P>b</P>", "<P>a</P><P>b</P>");
    row("beside an image", "<P><IMG src=\"x\">|</P>", "<P><IMG src=\"x\"></P>");
    row("between rows", "<TABLE><TBODY><!--^--><TR><TD>a</TD></TR><!--|--></TBODY></TABLE>",
        "<TABLE><TBODY><TR><TD>a</TD></TR></TBODY></TABLE>");
    row("between items", "<UL><LI>a</LI><!--|--><LI>b</LI></UL>", "<UL><LI>a</LI><LI>b</LI></UL>");
    row("characters", "<P>&#94;|&#124;</P>", "<P>&#94;&#124;</P>");
    row("not in tags", "<P title=\"^|\">a|</P>", "<P title=\"^|\">a</P>");
    row("not in raw text", "<P>|a</P><SCRIPT>x = a ^ b | c</SCRIPT>", "<P>a</P><SCRIPT>x = a ^ b | c</SCRIPT>");
    row("comments", "<P>a<!-- ^ | -->|b</P>", "<P>a<!-- ^ | -->b</P>");
    row("preformatted", "<PRE>a\n|b</PRE>", "<PRE>a\nb</PRE>");
    row("none", "<P>a</P>", "<P>a</P>");
}

void tst_ranges::marksAreReadAndPrinted()
{
    QFETCH(QString, marked);
    QFETCH(QString, plain);
    const Marks marks(marked);
    QCOMPARE(marks.html(), plain);
    Page page(marks);
    QCOMPARE(page.marked(), marked);
    QCOMPARE(page.selection.type() == SelectionObject::Type::None, marked == plain);
}

void tst_ranges::marksOfObjects()
{
    const Marks marks("<P>a<IMG data-selected src=\"x\">b<IMG src=\"y\" data-selected=\"1\"></P>");
    QCOMPARE(marks.html(), QString("<P>a<IMG src=\"x\">b<IMG src=\"y\"></P>"));
    Page page(marks);
    QCOMPARE(page.selection.type(), SelectionObject::Type::Control);
    QCOMPARE(page.selection.elements().size(), size_t(2));
    QCOMPARE(page.marked(), QString("<P>a<IMG src=\"x\" data-selected=\"\">b<IMG src=\"y\" data-selected=\"\"></P>"));
}

QTEST_GUILESS_MAIN(tst_ranges)
#include "tst_ranges.moc"
