// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/editing/EditingFixture.h"

#include <QTest>

using namespace ranges;

namespace {

/// Counts what is asked of it: whatever walks over a page asks about what it passes.
struct CountingRendering final : Rendering {
    mutable int asked = 0;
    bool isBlock(const dom::Element &element) const override
    {
        ++asked;
        return byHtml().isBlock(element);
    }
    bool preservesSpace(const dom::Text &text) const override
    {
        ++asked;
        return byHtml().preservesSpace(text);
    }
    bool isDisplayed(const dom::Node &node) const override
    {
        ++asked;
        return byHtml().isDisplayed(node);
    }
    Role roleOf(const dom::Element &element) const override
    {
        ++asked;
        return byHtml().roleOf(element);
    }
};

/// Counts what the page tells its observers.
struct CountingObserver final : dom::MutationObserver {
    int told = 0;
    void inserted(dom::Node &) override { ++told; }
    void removed(dom::Node &, dom::ParentNode &, dom::Node *) override { ++told; }
    void aboutToMove(dom::Node &) override {}
    void moved(dom::Node &, dom::ParentNode &, dom::Node *) override { ++told; }
    void textReplaced(dom::CharacterData &, uint32_t, uint32_t, uint32_t) override { ++told; }
};

QString pageOf(int spans)
{
    QString body;
    for (int i = 0; i < spans; ++i)
        body += QStringLiteral("<p>a <span id=\"s%1\" contenteditable=\"true\">value</span> b</p>").arg(i);
    return Marks::wrapped(body);
}

struct Work {
    int asked = 0;
    int told = 0;
    int dirty = 0;  ///< elements between the ends of the dirty range
    qsizetype bytes = 0; ///< of the records
    friend bool operator==(const Work &, const Work &) = default;
};

template <class Action> Work workOf(int spans, Action action)
{
    Editing e(pageOf(spans));
    CountingRendering rendering;
    CountingObserver observer;
    e.editor.setRendering(rendering);
    dom::Element *span = e.document->getElementById(QStringLiteral("s%1").arg(spans / 2));
    e.selection.setCaret({span->firstChild(), 2});
    e.tracker.selectionSettled();
    const int cookie = e.tracker.watchDirtyRange();
    e.document->addObserver(&observer);
    rendering.asked = 0;
    action(e);
    Work work{rendering.asked, observer.told, 0, 0};
    const auto dirty = e.tracker.takeDirtyRange(cookie);
    if (dirty.first && dirty.last) {
        const dom::Node *end = dirty.last->nextSkippingChildren();
        for (const dom::Node *node = dirty.first.get(); node && node != end; node = node->next())
            work.dirty += node->isElement();
    }
    e.document->removeObserver(&observer);
    e.read();
    for (const QByteArray &record : e.records) work.bytes += record.size();
    return work;
}

} // namespace

/// What an edit costs is told by what is near it, however much the page holds.
class tst_editing_work : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void isThatOfTheBlock_data();
    void isThatOfTheBlock();
};

using Action = void (*)(Editing &);
Q_DECLARE_METATYPE(Action)

void tst_editing_work::isThatOfTheBlock_data()
{
    QTest::addColumn<Action>("action");
    QTest::newRow("typing") << Action([](Editing &e) { e.editor.insertText("x"); });
    QTest::newRow("Backspace") << Action([](Editing &e) { e.editor.deleteBackward(); });
    QTest::newRow("Delete") << Action([](Editing &e) { e.editor.deleteForward(); });
    QTest::newRow("a line break") << Action([](Editing &e) { e.editor.insertLineBreak(); });
    QTest::newRow("emptying a field") << Action([](Editing &e) {
        for (int i = 0; i < 5; ++i)
            i < 2 ? e.editor.deleteBackward() : e.editor.deleteForward();
    });
    QTest::newRow("plain text") << Action([](Editing &e) { e.editor.paste({{}, "x y"}); });
}

void tst_editing_work::isThatOfTheBlock()
{
    QFETCH(Action, action);
    const Work few = workOf(1000, action), many = workOf(10000, action);
    QVERIFY(few.asked > 0);
    QVERIFY(few.told > 0);
    QCOMPARE(many.asked, few.asked);
    QCOMPARE(many.told, few.told);
    // The paragraph and what it holds.
    QVERIFY(many.dirty >= 1 && many.dirty <= 3);
    QCOMPARE(many.dirty, few.dirty);
    QVERIFY(many.bytes <= few.bytes + 40 * 6); // ids have more digits
    QVERIFY2(few.asked < 400, qPrintable(QString::number(few.asked)));
}

QTEST_GUILESS_MAIN(tst_editing_work)
#include "tst_editing_work.moc"
