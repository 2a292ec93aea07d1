// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/dom/Assignment.h"
#include "engine/ranges/Bookmarks.h"
#include "tests/engine/ranges/RandomPages.h"

#include <QTest>

using namespace random_pages;

namespace {

/// Positions of every grip everywhere, ranges and bookmarks: all that edits carry along.
class Crowd
{
public:
    explicit Crowd(Page &page, QRandomGenerator &random) : mPage(page)
    {
        const auto places = placesOf(page);
        for (const Grip grip : {Grip::None, Grip::Following, Grip::Preceding})
            for (const Position &p : places) mLive.emplace_back(page.keeper, p, grip);
        for (int i = 0; i < 20; ++i) {
            Position a = places[random.bounded(int(places.size()))], b = places[random.bounded(int(places.size()))];
            if (Position::compare(a, b) > 0) std::swap(a, b);
            mRanges.emplace_back(new TextRange(page.selection, {a, b}));
            mBookmarks.append(mRanges.back()->bookmark());
        }
    }
    std::vector<LivePosition> &live() { return mLive; }

    /// Each place by the id of its node and the offset; "" where one has left the tree.
    QStringList places() const
    {
        QStringList out;
        const auto add = [&](const char *what, const Position &p) {
            const bool inside = p.node && p.node->isConnected() && p.clipped() == p;
            out.append(inside ? QString("%1 %2 %3").arg(what).arg(p.node->id()).arg(p.offset) : QString());
        };
        for (const LivePosition &p : mLive) add("position", p);
        for (const auto &range : mRanges) {
            add("start", range->span().start);
            add("end", range->span().end);
        }
        for (const QString &name : mBookmarks) {
            const Span span = mPage.selection.bookmarks().find(name);
            add("bookmark's start", span.start);
            add("bookmark's end", span.end);
        }
        if (mPage.selection.type() == SelectionObject::Type::Text) {
            add("anchor", mPage.selection.anchor());
            add("focus", mPage.selection.focus());
        }
        return out;
    }

private:
    Page &mPage;
    std::vector<LivePosition> mLive;
    std::vector<Ref<TextRange>> mRanges;
    QStringList mBookmarks;
};

QString firstDifference(const QStringList &are, const QStringList &should)
{
    if (are.size() != should.size()) return QString("%1 places instead of %2").arg(are.size()).arg(should.size());
    for (qsizetype i = 0; i < are.size(); ++i)
        if (are[i] != should[i]) return QString("\"%1\" instead of \"%2\"").arg(are[i], should[i]);
    return {};
}

Element *anyElement(Page &page, QRandomGenerator &random)
{
    std::vector<Element *> all;
    Element *body = page.document->body();
    for (Node *node = body->firstChild(); node; node = node->next(body))
        if (Element *element = node->asElement()) all.push_back(element);
    return all.empty() ? body : all[random.bounded(int(all.size()))];
}

Position anyPlace(Page &page, QRandomGenerator &random)
{
    const auto places = placesOf(page);
    return places[random.bounded(int(places.size()))];
}

/// What a person, a command or a script does, whatever it is. Refusals are answers too: nothing changes then.
QString anyEdit(Page &page, QRandomGenerator &random)
{
    static const QStringList fragments = {"", "<p>new</p>", "n<b>e</b>w", "<ul><li>n<li>w</ul>", "n e w", "<img src=n>"};
    const QString &html = fragments[random.bounded(int(fragments.size()))];
    const int which = random.bounded(11);
    if (which > 3 && which < 10) {
        Position a = anyPlace(page, random), b = random.bounded(2) ? anyPlace(page, random) : a;
        page.selection.set(a, b);
    }
    try {
        switch (which) {
        case 0: anyElement(page, random)->setInnerHTML(html); return "innerHTML " + html;
        case 1: anyElement(page, random)->setOuterHTML(html); return "outerHTML " + html;
        case 2: anyElement(page, random)->setInnerText("new"); return "innerText";
        case 3: {
            dom::Assignment assignment(*page.document->body());
            for (int i = 0; i < 4; ++i) randomEdit(page, random);
            assignment.done();
            return "assignment";
        }
        case 4: page.paste(html); return "pasteHTML " + html;
        case 5: page.write("n w"); return "text";
        case 6: page.editor.insertText("x"); return "typing";
        case 7: page.editor.insertParagraph(); return "Enter";
        case 8: page.editor.deleteBackward(); return "Backspace";
        case 9: page.editor.deleteForward(editing::Unit::Word); return "Delete";
        default: randomEdit(page, random); return "primitive";
        }
    } catch (const base::Error &) {
        return "refused";
    }
}

} // namespace

class tst_livePositions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aRangeComesBackIntoTextThatComesBack();
    void aRangeComesBackIntoReplacedHtml();
    void whatSomebodySetMeanwhileStays();
    void whatAnEditSetItsUndoSetsBack();
    void aFailedEditLeavesPlacesWhereTheyWere();
    void theSelectionComesBackThroughWrites();
    void everyPlaceComesBackThroughUndoAndRedo();
    void everyPlaceComesBackThroughALongHistory();
    void everyPlaceComesBackThroughEchoes();
    void dirtyRangesStayInTheTree();
};

void tst_livePositions::aRangeComesBackIntoTextThatComesBack()
{
    Page page("<p id=p>one two three</p>");
    auto &text = static_cast<Text &>(*page.document->getElementById("p")->firstChild());
    const Ref<TextRange> two(new TextRange(page.selection, {{&text, 4}, {&text, 7}}));
    const QString name = two->bookmark();
    page.tracker.replaceText(text, 2, 8, ""); // on|ree
    QCOMPARE(two->text(), QString());
    page.tracker.play(page.records[0], false);
    QCOMPARE(two->text(), QString("two"));
    page.tracker.play(page.records[0], true);
    QCOMPARE(two->text(), QString());
    page.tracker.play(page.records[2], false); // the echo of the redo
    QCOMPARE(two->text(), QString("two"));
    const auto other = page.all();
    other->moveToBookmark(name);
    QCOMPARE(other->text(), QString("two"));
}

void tst_livePositions::aRangeComesBackIntoReplacedHtml()
{
    for (const int how : {0, 1, 2}) {
        Page page("<div id=d><p id=p>one <b id=b>two</b> three</p></div>");
        const auto two = page.over("b");
        const Ref<TextRange> wo(new TextRange(page.selection, {{page.document->getElementById("b")->firstChild(), 1},
                                                               {page.document->getElementById("b")->firstChild(), 3}}));
        const auto paragraph = page.over("p");
        Element *p = page.document->getElementById("p");
        if (how == 0) p->setInnerHTML("new");
        if (how == 1) p->setOuterHTML("<h1>new</h1>");
        if (how == 2) page.paste(page.over("p"), "<h1>new</h1><p>er</p>");
        QCOMPARE(page.records.size(), 1);
        QCOMPARE(wo->text(), QString());
        page.tracker.play(page.records[0], false);
        QCOMPARE(two->text(), QString("two"));
        QCOMPARE(wo->text(), QString("wo"));
        QCOMPARE(paragraph->htmlText(), QString("<P id=\"p\">one <B id=\"b\">two</B> three</P>"));
    }
}

void tst_livePositions::whatSomebodySetMeanwhileStays()
{
    Page page("<p id=p>one two three</p>");
    auto &text = static_cast<Text &>(*page.document->getElementById("p")->firstChild());
    LivePosition moved(page.keeper, {&text, 6}), left(page.keeper, {&text, 6});
    page.tracker.replaceText(text, 4, 4, "");
    moved = Position(&text, 1);
    page.tracker.play(page.records[0], false);
    QCOMPARE(moved.position().offset, 1u);
    QCOMPARE(left.position().offset, 6u);
    // Also where it was set to the place to which the edit had brought it.
    page.tracker.replaceText(text, 4, 4, "");
    left = Position(&text, 4);
    page.tracker.play(page.records[2], false);
    QCOMPARE(left.position().offset, 4u);
}

void tst_livePositions::whatAnEditSetItsUndoSetsBack()
{
    Page page("<p id=p>one two three</p>");
    auto &text = static_cast<Text &>(*page.document->getElementById("p")->firstChild());
    const Ref<TextRange> two(new TextRange(page.selection, {{&text, 4}, {&text, 7}}));
    page.paste(two, "<i>2</i>");
    QCOMPARE(page.body(), QString("<P id=\"p\">one <I>2</I> three</P>"));
    QVERIFY(two->isEmpty());
    page.tracker.play(page.records[0], false);
    QCOMPARE(two->text(), QString("two"));
    page.tracker.play(page.records[0], true);
    QVERIFY(two->isEmpty());
    QCOMPARE(two->startCount(), 5u); // behind what was pasted
}

void tst_livePositions::aFailedEditLeavesPlacesWhereTheyWere()
{
    Page page("<p id=p>one two three</p>");
    auto &text = static_cast<Text &>(*page.document->getElementById("p")->firstChild());
    LivePosition at(page.keeper, {&text, 6});
    {
        dom::Assignment assignment(text);
        page.tracker.replaceText(text, 4, 4, "");
        page.tracker.remove(text);
    }
    QCOMPARE(page.records.size(), 0);
    QCOMPARE(at.position(), Position(page.document->getElementById("p")->firstChild(), 6));
}

void tst_livePositions::theSelectionComesBackThroughWrites()
{
    Page page("<p>zero</p><p id=p>o^ne two| three</p>");
    page.document->getElementById("p")->setOuterHTML("<p>new</p>");
    page.tracker.play(page.records[0], false);
    QCOMPARE(page.marked(), QString("<P>zero</P><P id=\"p\">o^ne two| three</P>"));
}

void tst_livePositions::everyPlaceComesBackThroughUndoAndRedo()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random) + randomHtml(random))};
        for (int i = 0; i < 12; ++i) {
            page.selection.setCaret(anyPlace(page, random));
            Crowd crowd(page, random);
            // The edit may have set the selection first, as a person does.
            page.records.clear();
            const QString html = page.body();
            QStringList before = crowd.places();
            const QString edit = anyEdit(page, random);
            const QByteArray where = QString("seed %1, edit %2, %3 in %4").arg(seed).arg(i).arg(edit, html).toUtf8();
            const QStringList after = crowd.places();
            QVERIFY2(!after.contains(QString()), where);
            const QList<QByteArray> records = page.records;
            for (qsizetype r = records.size(); r-- > 0;) page.tracker.play(records[r], false);
            QCOMPARE(page.body(), html);
            const qsizetype crowded = before.size() - 2; // without the selection: `anyEdit` has set it in front
            const QStringList back = crowd.places();
            QString wrong = firstDifference(back.first(crowded), before.first(crowded));
            QVERIFY2(wrong.isEmpty(), where + ": undone " + wrong.toUtf8());
            for (const QByteArray &record : records) page.tracker.play(record, true);
            wrong = firstDifference(crowd.places(), after);
            QVERIFY2(wrong.isEmpty(), where + ": redone " + wrong.toUtf8());
        }
    }
}

void tst_livePositions::everyPlaceComesBackThroughALongHistory()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random) + randomHtml(random))};
        Crowd crowd(page, random);
        page.selection.clear();
        std::vector<std::pair<QList<QByteArray>, QStringList>> history;
        for (int i = 0; i < 20; ++i) {
            page.records.clear();
            const QStringList before = crowd.places();
            QString edit;
            if (random.bounded(2)) {
                page.selection.clear();
                randomEdit(page, random);
            } else {
                edit = anyEdit(page, random);
            }
            page.selection.clear();
            history.emplace_back(page.records, before);
        }
        for (int round = 0; round < 2; ++round) {
            std::vector<QStringList> after;
            for (size_t i = history.size(); i-- > 0;) {
                page.selection.clear();
                after.push_back(crowd.places());
                for (qsizetype r = history[i].first.size(); r-- > 0;) page.tracker.play(history[i].first[r], false);
                page.selection.clear();
                const QString wrong = firstDifference(crowd.places(), history[i].second);
                QVERIFY2(wrong.isEmpty(), qPrintable(QString("seed %1, edit %2: undone %3").arg(seed).arg(i).arg(wrong)));
            }
            for (size_t i = 0; i < history.size(); ++i) {
                for (const QByteArray &record : history[i].first) page.tracker.play(record, true);
                page.selection.clear();
                const QString wrong = firstDifference(crowd.places(), after[history.size() - 1 - i]);
                QVERIFY2(wrong.isEmpty(), qPrintable(QString("seed %1, edit %2: redone %3").arg(seed).arg(i).arg(wrong)));
            }
        }
    }
}

void tst_livePositions::everyPlaceComesBackThroughEchoes()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random) + randomHtml(random))};
        Crowd crowd(page, random);
        page.selection.clear();
        page.records.clear();
        const QStringList before = crowd.places();
        randomEdit(page, random);
        if (page.records.isEmpty()) continue;
        const QStringList after = crowd.places();
        // Whoever undoes by playing what he read last, finds the other state each time.
        for (int i = 0; i < 5; ++i) {
            page.tracker.play(QByteArray(page.records.last()), false);
            const QString wrong = firstDifference(crowd.places(), i % 2 ? after : before);
            QVERIFY2(wrong.isEmpty(), qPrintable(QString("seed %1, echo %2: %3").arg(seed).arg(i).arg(wrong)));
        }
    }
}

void tst_livePositions::dirtyRangesStayInTheTree()
{
    for (const quint32 seed : seeds()) {
        QRandomGenerator random(seed);
        Page page{Marks(randomHtml(random) + randomHtml(random))};
        const int cookie = page.tracker.watchDirtyRange();
        for (int i = 0; i < 20; ++i) {
            // Several edits, some of them undone, before somebody asks.
            page.records.clear();
            for (int edits = random.bounded(1, 4); edits > 0; --edits)
                anyEdit(page, random);
            const QList<QByteArray> records = page.records;
            if (random.bounded(2))
                for (qsizetype r = records.size(); r-- > 0;) page.tracker.play(records[r], false);
            const auto dirty = page.tracker.takeDirtyRange(cookie);
            const QByteArray where = QString("seed %1, edits %2").arg(seed).arg(i).toUtf8();
            QVERIFY2(bool(dirty.first) == bool(dirty.last), where);
            QVERIFY2(records.isEmpty() || dirty.first, where);
            if (!dirty.first) continue;
            QVERIFY2(dirty.first->isConnected() && dirty.last->isConnected(), where);
            QVERIFY2(dirty.first->compareOrder(*dirty.last) <= 0, where);
        }
        page.tracker.unwatchDirtyRange(cookie);
    }
}

QTEST_GUILESS_MAIN(tst_livePositions)
#include "tst_livePositions.moc"
