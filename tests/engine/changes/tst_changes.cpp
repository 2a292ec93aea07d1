// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/changes/ChangeTracker.h"
#include "engine/changes/EditScope.h"
#include "engine/dom/CharacterData.h"
#include "engine/dom/HtmlElements.h"
#include "engine/html/Parser.h"
#include "engine/html/Serializer.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTest>

using namespace dom;
using namespace changes;

namespace {

/// Everything that a tree is: nodes, order, attributes in order, marks and ids.
QString dump(const Document &document)
{
    QString out;
    for (const Node *node = document.next(); node; node = node->next()) {
        out += QString("%1 #%2 %3 %4").arg(node->depth()).arg(node->id()).arg(node->nodeType()).arg(node->nodeValue());
        if (const Element *element = node->asElement()) {
            out += element->name().text() + (element->isHeldOpen() ? "!" : "");
            for (const Attribute &attribute : element->attributeList())
                out += ' ' + attribute.name.text() + '=' + attribute.value;
        }
        out += '\n';
    }
    return out;
}

struct Reader : Sink {
    base::Ref<ChangeLog> log;
    std::vector<QByteArray> records;
    int notices = 0;
    explicit Reader(ChangeTracker &tracker) : log(tracker.createLog(this)) {}
    void notify() override
    {
        ++notices;
        read();
    }
    void read()
    {
        for (; !log->isEmpty(); log->pop()) records.push_back(log->front());
    }
};

struct Attached {
    base::Ref<Document> document;
    ChangeTracker tracker;
    Reader reader;
    explicit Attached(const QString &html) : document(html::parseDocument(html)), tracker(*document), reader(tracker) {}
    Element *byId(const char *id) { return document->getElementById(id); }
    QString body() { return document->body()->innerHTML(); }
    QByteArray kinds()
    {
        reader.read();
        QByteArray kinds;
        for (const QByteArray &record : reader.records) kinds += QByteArray::number(int(record[0])) + ' ';
        return kinds.trimmed();
    }
    size_t records()
    {
        reader.read();
        return reader.records.size();
    }
};

/// One random change through the contract's members.
class Mutator
{
public:
    Mutator(Document &document, quint32 seed) : document(document), random(seed) {}

    void step()
    {
        try {
            change();
        } catch (const base::Error &) { // refused: the tree is as it was
        }
        if (held.size() > 20) held.erase(held.begin());
    }

private:
    int bounded(size_t n) { return random.bounded(int(n)); }
    Element &element()
    {
        for (;;) {
            Element *e = document.elementAt(uint32_t(bounded(document.elementCount())));
            if (e->is("html") || e->is("head")) continue;
            return *e;
        }
    }
    /// One whose loss leaves a tree to go on with.
    Element &small()
    {
        for (;;) {
            Element &e = element();
            if (e.elementCount() <= 6 || bounded(400) == 0) return e;
        }
    }
    Text *text()
    {
        for (int tries = 0; tries < 50; ++tries) {
            Element &e = element();
            for (Node *node = e.firstChild(); node; node = node->nextSibling())
                if (node->isText()) return static_cast<Text *>(node);
        }
        return nullptr;
    }
    void change()
    {
        switch (bounded(12)) {
        case 0:
        case 1:
        case 2:
            if (Text *t = text()) {
                const uint32_t at = uint32_t(bounded(t->length() + 1));
                t->replaceData(at, uint32_t(bounded(4)), bounded(3) ? QString("ab\u05d0").left(1 + bounded(3)) : QString());
            }
            break;
        case 3: element().setAttribute(QString("a%1").arg(bounded(5)), QString::number(bounded(9))); break;
        case 4: {
            Element &e = element();
            if (!e.attributeList().empty())
                e.removeAttribute(e.attributeList()[size_t(bounded(e.attributeList().size()))].name.text());
            break;
        }
        case 5: {
            Element &e = small();
            if (e.is("body")) break;
            if (bounded(2)) held.push_back(base::Ref<Node>(&e));
            e.removeNode();
            break;
        }
        case 6: {
            Element &e = element(), &to = element();
            if (e.is("body")) break;
            to.insertBefore(e, to.childCount() ? to.childAt(uint32_t(bounded(to.childCount()))) : nullptr);
            break;
        }
        case 7: element().insertAdjacentHTML("beforeEnd", "<b id=x>new <i>ones</i></b><!--c-->"); break;
        case 8: small().setOuterHTML("<span class=s>in<br>stead</span>"); break;
        case 9: small().setInnerHTML(bounded(4) ? "<u>inner</u>" : ""); break;
        case 10: document.door->setHeldOpen(element(), bounded(2)); break;
        case 11:
            if (!held.empty()) { // something removed comes back, altered
                base::Ref<Node> node = held[size_t(bounded(held.size()))];
                if (node->isConnected()) break;
                if (Element *e = node->asElement()) e->setAttribute("while-away", "1");
                element().appendChild(*node);
            }
            break;
        }
    }
    Document &document;
    QRandomGenerator random;
    std::vector<base::Ref<Node>> held;
};

QStringList pages()
{
    QStringList texts;
    for (const QString &folder : {QString(SOURCE_DIR "/tests/data/pages"), QString(SOURCE_DIR "/../shared/pages")}) {
        for (const QString &name : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const QDir source(folder + '/' + name + "/src");
            for (const QString &file : source.entryList({"*.html"}, QDir::Files)) {
                QFile page(source.filePath(file));
                if (page.size() < 80000 && page.open(QFile::ReadOnly)) texts << QString::fromUtf8(page.readAll());
            }
        }
        for (const QString &file : QDir(folder).entryList({"*.html"}, QDir::Files)) {
            QFile page(folder + '/' + file);
            if (page.open(QFile::ReadOnly)) texts << QString::fromUtf8(page.readAll());
        }
    }
    return texts;
}

} // namespace

class tst_changes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void oneAssignmentIsOneRecord();
    void aWriteThatChangesNothingWritesNothing();
    void aFailedAssignmentLeavesNoTrace();
    void playingEchoesOnceWhateverItDoes();
    void aNodeThatComesBackIsTheSameObject();
    void attributesComeBackInTheirPlace();
    void selectionRecordsStandInFrontOfInputOnly();
    void noticesComeAtScopesEnds();
    void theDirtyRangeIsInnermost();
    void ownHistoryServesWhileNobodyReads();
    void damagedRecordsDoNoHarm();
    void randomEditsPlayBackAndForth_data();
    void randomEditsPlayBackAndForth();
};

void tst_changes::oneAssignmentIsOneRecord()
{
    Attached a("<body><p id=p>one<b>two</b></p><table id=t><tr><td>x</table>");
    a.byId("p")->setInnerHTML("<i>a</i><i>b</i>c");
    QCOMPARE(a.records(), 1u);
    a.byId("p")->setOuterHTML("<p id=p>x</p><p>y</p>");
    QCOMPARE(a.records(), 2u);
    a.byId("p")->setInnerText("literal <b>");
    QCOMPARE(a.records(), 3u);
    table::insertRow(*a.byId("t"));
    QCOMPARE(a.records(), 4u);
    a.byId("p")->insertAdjacentText("afterEnd", "text");
    QCOMPARE(a.records(), 5u);
    QCOMPARE(a.kinds(), QByteArray("1 1 1 1 1"));
    QCOMPARE(a.body(), QString("<P id=\"p\">literal &lt;b&gt;</P>text<P>y</P><TABLE id=\"t\"><TBODY><TR><TD>x</TD></TR>"
                               "<TR></TR></TBODY></TABLE>"));
}

void tst_changes::aWriteThatChangesNothingWritesNothing()
{
    Attached a("<body><p id=p title=x>one</p>");
    a.byId("p")->setAttribute("TITLE", "x");
    a.byId("p")->removeAttribute("class");
    a.byId("p")->firstChild()->setNodeValue("one");
    a.byId("p")->setClassName("");
    QCOMPARE(a.records(), 0u);
}

void tst_changes::aFailedAssignmentLeavesNoTrace()
{
    Attached a("<body><p id=p>one<b id=b>two</b></p>");
    const QString before = dump(*a.document);
    QVERIFY_EXCEPTION_THROWN(a.byId("b")->setOuterHTML("<div>x</div>"), base::Error);
    QVERIFY_EXCEPTION_THROWN(a.document->body()->setOuterHTML(""), base::Error);
    QVERIFY_EXCEPTION_THROWN(a.byId("b")->appendChild(*a.byId("p")), base::Error);
    QCOMPARE(dump(*a.document), before);
    QCOMPARE(a.records(), 0u);
    {
        // A composite that fails midway: what was done is taken back.
        ChangeTracker::Step step(a.tracker, Kind::Command);
        a.byId("b")->removeNode();
        a.byId("p")->setAttribute("x", "1");
    }
    QCOMPARE(dump(*a.document), before);
    QCOMPARE(a.records(), 0u);
}

void tst_changes::playingEchoesOnceWhateverItDoes()
{
    Attached a("<body><p id=p>one</p>");
    const QString first = dump(*a.document);
    a.byId("p")->setOuterHTML("<h1 id=p>x</h1>");
    const QString second = dump(*a.document);
    const size_t n = a.records();
    a.tracker.play(a.reader.records[0], false);
    QCOMPARE(dump(*a.document), first);
    QCOMPARE(a.records(), n + 1);
    a.tracker.play(a.reader.records[0], true);
    QCOMPARE(dump(*a.document), second);
    QCOMPARE(a.records(), n + 2);
    a.tracker.play(a.reader.records[0], true); // doesn't fit any more
    QCOMPARE(a.records(), n + 3);
    a.tracker.play(Record::selectionRecord({}), false);
    QCOMPARE(a.records(), n + 4);
    a.tracker.play("\x07junk", true);
    QCOMPARE(a.records(), n + 5);
    QCOMPARE(a.kinds(), QByteArray("1 17 16 16 17 16"));
    QCOMPARE(dump(*a.document), second);
}

void tst_changes::aNodeThatComesBackIsTheSameObject()
{
    Attached a("<body><p id=p>one<b id=b>two</b></p>");
    base::Ref<Element> p(a.byId("p"));
    const NodeId id = p->id();
    p->removeNode();
    QVERIFY(!a.byId("p"));
    QVERIFY(!p->parentElement());
    p->setAttribute("altered", "1");
    p->firstChild()->setNodeValue("other");
    a.records();
    a.tracker.play(a.reader.records[0], false);
    QCOMPARE(a.byId("p"), p.get());
    QCOMPARE(p->outerHTML(), QString("<P id=\"p\">one<B id=\"b\">two</B></P>"));
    p = nullptr;
    a.tracker.play(a.reader.records[0], true);
    a.tracker.play(a.reader.records[0], false);
    QCOMPARE(a.byId("p")->id(), id);
}

void tst_changes::attributesComeBackInTheirPlace()
{
    Attached a("<body><p id=p a=1 b=2 c=3>x</p>");
    a.byId("p")->removeAttribute("b");
    a.records();
    a.tracker.play(a.reader.records[0], false);
    QCOMPARE(a.byId("p")->outerHTML(), QString("<P id=\"p\" a=\"1\" b=\"2\" c=\"3\">x</P>"));
}

namespace {
struct Keeper : SelectionKeeper {
    SavedSelection now;
    SavedSelection savedSelection() const override { return now; }
    void restoreSelection(const SavedSelection &selection) override { now = selection; }
    void moveTo(NodeId node, uint32_t offset)
    {
        now = {SavedSelection::Type::Text, node, offset, node, offset};
    }
};
} // namespace

void tst_changes::selectionRecordsStandInFrontOfInputOnly()
{
    Attached a("<body><p id=p>one</p>");
    Keeper keeper;
    auto &text = static_cast<Text &>(*a.byId("p")->firstChild());
    keeper.moveTo(text.id(), 0);
    a.tracker.setSelectionKeeper(&keeper);
    a.tracker.selectionSettled();
    const auto type = [&](uint32_t at) {
        ChangeTracker::Step step(a.tracker, Kind::TextIn);
        a.tracker.replaceText(text, at, 0, "x");
        keeper.moveTo(text.id(), at + 1);
        step.done();
    };
    type(0);
    type(1);
    QCOMPARE(a.kinds(), QByteArray("0 0"));
    keeper.moveTo(text.id(), 5);
    QCOMPARE(a.kinds(), QByteArray("0 0")); // the caret alone writes nothing
    type(5);
    QCOMPARE(a.kinds(), QByteArray("0 0 5 0"));
    keeper.moveTo(text.id(), 1);
    a.byId("p")->setAttribute("a", "b");
    QCOMPARE(a.kinds(), QByteArray("0 0 5 0 1"));
    type(1);
    QCOMPARE(a.kinds(), QByteArray("0 0 5 0 1 0"));
    {
        keeper.moveTo(text.id(), 2);
        ChangeTracker::Step step(a.tracker, Kind::TextOut);
        step.done(); // an input that does nothing
    }
    QCOMPARE(a.kinds(), QByteArray("0 0 5 0 1 0"));
    a.tracker.play(a.reader.records[3], false);
    QCOMPARE(keeper.now.anchorOffset, 5u);
    a.tracker.play(a.reader.records[2], false);
    QCOMPARE(keeper.now.anchorOffset, 5u);
}

void tst_changes::noticesComeAtScopesEnds()
{
    Attached a("<body><p id=p>one</p>");
    {
        EditScope scope;
        a.byId("p")->setAttribute("a", "1");
        {
            EditScope inner;
            a.byId("p")->setAttribute("a", "2");
        }
        QCOMPARE(a.reader.notices, 0);
        {
            EditScope::Suspension pump;
            QCOMPARE(a.reader.notices, 1);
            EditScope inside;
            a.byId("p")->setAttribute("a", "3");
        }
        QCOMPARE(a.reader.notices, 2);
        a.byId("p")->setAttribute("a", "4");
    }
    QCOMPARE(a.reader.notices, 3);
    QCOMPARE(a.reader.records.size(), 4u);
    a.byId("p")->setAttribute("a", "5"); // outside of any scope: by a posted call
    a.byId("p")->setAttribute("a", "6");
    QCOMPARE(a.reader.notices, 3);
    QCoreApplication::processEvents();
    QCOMPARE(a.reader.notices, 4);
    QCOMPARE(a.reader.records.size(), 6u);
    a.byId("p")->setAttribute("a", "7");
    {
        EditScope scope; // what waits is told when one opens
        QCOMPARE(a.reader.notices, 5);
    }
    QCoreApplication::processEvents();
    QCOMPARE(a.reader.notices, 5);
}

void tst_changes::theDirtyRangeIsInnermost()
{
    Attached a("<body><p id=a>one</p><div id=d><p id=b>two</p><p id=c>three</p></div>");
    const int cookie = a.tracker.watchDirtyRange();
    a.byId("c")->firstChild()->setNodeValue("x");
    ChangeTracker::DirtyRange range = a.tracker.takeDirtyRange(cookie);
    QCOMPARE(range.first.get(), a.byId("c"));
    QCOMPARE(range.last.get(), a.byId("c"));
    a.byId("c")->setAttribute("x", "1");
    a.byId("a")->setInnerHTML("y");
    range = a.tracker.takeDirtyRange(cookie);
    QCOMPARE(range.first.get(), a.byId("a"));
    QCOMPARE(range.last.get(), a.byId("c"));
    QVERIFY(!a.tracker.takeDirtyRange(cookie).first);
    a.byId("b")->setAttribute("x", "1");
    a.byId("b")->removeNode();
    range = a.tracker.takeDirtyRange(cookie);
    QCOMPARE(range.first.get(), a.byId("d"));
    QCOMPARE(range.last.get(), a.byId("d"));
}

void tst_changes::ownHistoryServesWhileNobodyReads()
{
    auto document = html::parseDocument("<body><p id=p>one</p>");
    ChangeTracker tracker(*document);
    QVERIFY(!tracker.canUndo());
    document->getElementById("p")->setInnerText("two");
    document->getElementById("p")->setInnerText("three");
    tracker.undo();
    QCOMPARE(document->body()->innerHTML(), QString("<P id=\"p\">two</P>"));
    QVERIFY(tracker.canRedo());
    tracker.undo();
    QCOMPARE(document->body()->innerHTML(), QString("<P id=\"p\">one</P>"));
    QVERIFY(!tracker.canUndo());
    tracker.redo();
    tracker.redo();
    QCOMPARE(document->body()->innerHTML(), QString("<P id=\"p\">three</P>"));
}

void tst_changes::damagedRecordsDoNoHarm()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    Attached a("<body><p id=p>one<b>two</b></p><ul><li>x<li>y</ul>");
    Mutator mutator(*a.document, seed);
    for (int i = 0; i < 60; ++i) mutator.step();
    a.records();
    const std::vector<QByteArray> good = a.reader.records;
    for (int i = 0; i < 3000; ++i) {
        QByteArray bad = good[size_t(random.bounded(int(good.size())))];
        for (int n = random.bounded(4); n >= 0; --n) bad[random.bounded(int(bad.size()))] = char(random.bounded(256));
        if (random.bounded(3) == 0) bad.truncate(random.bounded(int(bad.size()) + 1));
        a.reader.records.clear();
        a.tracker.play(bad, random.bounded(2));
        QCOMPARE(a.records(), 1u);
        QVERIFY(a.document->body());
    }
}

void tst_changes::randomEditsPlayBackAndForth_data()
{
    QTest::addColumn<QString>("html");
    QTest::newRow("small") << "<!doctype html><body><p id=a>one<b>two</b></p><ul><li>x<li>y</ul><table><tr><td>c</table>";
    int n = 0;
    for (const QString &page : pages()) QTest::addRow("page %d", ++n) << page;
}

void tst_changes::randomEditsPlayBackAndForth()
{
    QFETCH(QString, html);
    const bool isLong = qEnvironmentVariableIsSet("VELLUM_LONG");
    const int operations = isLong ? 200000 : 20000;
    for (const quint32 seed : {20260101u, QRandomGenerator::global()->generate()}) {
        qInfo("seed %u", seed);
        Attached a(html);
        const QString first = dump(*a.document);
        Mutator mutator(*a.document, seed);
        for (int i = 0; i < operations; ++i) mutator.step();
        QVERIFY(a.document->elementCount() > 20);
        const size_t count = a.records();
        const std::vector<QByteArray> records = a.reader.records;
        const QString last = dump(*a.document);
        for (size_t i = count; i-- > 0;) a.tracker.play(records[i], false);
        QCOMPARE(dump(*a.document), first);
        QCOMPARE(a.records(), 2 * count);
        for (size_t i = 0; i < count; ++i) a.tracker.play(records[i], true);
        QCOMPARE(dump(*a.document), last);
        QCOMPARE(a.records(), 3 * count);

        Attached fresh(html);
        for (const QByteArray &record : records) fresh.tracker.play(record, true);
        QCOMPARE(dump(*fresh.document), last);
        // The whole log, echoes included, tells the same story.
        Attached story(html);
        for (const QByteArray &record : a.reader.records) story.tracker.play(record, true);
        QCOMPARE(dump(*story.document), last);

        // Counts and indexes are what a walk would give.
        uint32_t elements = 0;
        for (Node *node = a.document->next(); node; node = node->next())
            if (Element *element = node->asElement()) {
                QCOMPARE(element->sourceIndex(), int(elements));
                QCOMPARE(a.document->elementAt(elements), element);
                ++elements;
            }
        QCOMPARE(a.document->elementCount(), elements);
    }
}

QTEST_GUILESS_MAIN(tst_changes)
#include "tst_changes.moc"
