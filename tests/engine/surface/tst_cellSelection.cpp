// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/css/StyleObject.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QSignalSpy>
#include <QTest>

using dom::Element;
using surface::CellSelection;

class tst_cellSelection : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void aDragFromCellToCellSelectsTheRectangle();
    void aDragBackIntoItsCellSelectsText();
    void spansGrowTheRectangle();
    void shiftAndArrowsSelectCells();
    void edgesSelectRowsAndColumns();
    void aDragAlongAnEdgeSelectsMore();
    void theProgramSelects();
    void highlightsAreInNoText();
    void whatElseIsSelectedClearsThem();
    void removedCellsAreNotSelected();
    void loadsForgetThem();

private:
    Element *byId(const char *id) { return editor->document()->getElementById(QString::fromLatin1(id)); }
    CellSelection &cells() { return editor->view().cellSelection(); }
    QString ids()
    {
        QStringList all;
        for (const auto &cell : cells().cells())
            all << cell->idAttribute();
        return all.join(u' ');
    }
    QPoint middle(const char *id) { return editor->view().elementRect(*byId(id)).center(); }
    void press(QPoint at) { QTest::mousePress(editor->viewport(), Qt::LeftButton, {}, at); }
    void move(QPoint at)
    {
        QMouseEvent event(QEvent::MouseMove, at, editor->viewport()->mapToGlobal(at), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(editor->viewport(), &event);
    }
    void release(QPoint at) { QTest::mouseRelease(editor->viewport(), Qt::LeftButton, {}, at); }
    void load(const QString &html)
    {
        editor->setDocumentText(html);
        QTRY_VERIFY(!editor->isLoading());
    }

    std::unique_ptr<surface::HTMLEditor> editor;
};

void tst_cellSelection::init()
{
    editor = std::make_unique<surface::HTMLEditor>();
    editor->resize(600, 400);
    editor->show();
    load("<body><p id=p>above</p><table id=t width=300 cellspacing=0><tr><td id=a>aa<td id=b>bb<td id=c>cc"
         "<tr><td id=d>dd<td id=e>ee<td id=f>ff<tr><td id=g colspan=2>gg<td id=h>hh</table>");
    editor->setFocus();
}

void tst_cellSelection::aDragFromCellToCellSelectsTheRectangle()
{
    QSignalSpy changed(editor.get(), &surface::HTMLEditor::cellSelectionChanged);
    press(middle("a"));
    QVERIFY(cells().isEmpty());
    move(middle("b"));
    QCOMPARE(ids(), QStringLiteral("a b"));
    move(middle("e"));
    QCOMPARE(ids(), QStringLiteral("a b d e"));
    release(middle("e"));
    QCOMPARE(ids(), QStringLiteral("a b d e"));
    QCOMPARE(changed.count(), 2);
    // The text selection is a caret meanwhile.
    QVERIFY(editor->loaded()->selection().isCaret());
}

void tst_cellSelection::aDragBackIntoItsCellSelectsText()
{
    press(middle("a"));
    move(middle("b"));
    move(middle("a") + QPoint(-20, 0));
    QVERIFY(cells().isEmpty());
    release(middle("a"));
}

void tst_cellSelection::spansGrowTheRectangle()
{
    cells().selectBlock(*byId("b"), *byId("g"));
    QCOMPARE(ids(), QStringLiteral("a b d e g"));
    cells().selectBlock(*byId("h"), *byId("f"));
    QCOMPARE(ids(), QStringLiteral("f h"));
}

void tst_cellSelection::shiftAndArrowsSelectCells()
{
    auto &selection = editor->loaded()->selection();
    selection.setCaret({byId("a")->firstChild(), 2});
    QTest::keyClick(editor->viewport(), Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(ids(), QStringLiteral("a b"));
    QTest::keyClick(editor->viewport(), Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(ids(), QStringLiteral("a b d e"));
    QTest::keyClick(editor->viewport(), Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(ids(), QStringLiteral("a d"));
    // At the table's edge it stays.
    QTest::keyClick(editor->viewport(), Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(ids(), QStringLiteral("a d"));
    QTest::keyClick(editor->viewport(), Qt::Key_Right);
    QVERIFY(cells().isEmpty());
}

void tst_cellSelection::edgesSelectRowsAndColumns()
{
    const QRect table = editor->view().elementRect(*byId("t"));
    const QPoint left(table.left() - 3, middle("d").y());
    press(left);
    release(left);
    QCOMPARE(ids(), QStringLiteral("d e f"));
    const QPoint top(middle("c").x(), table.top() - 3);
    press(top);
    release(top);
    QCOMPARE(ids(), QStringLiteral("c f h"));
}

void tst_cellSelection::aDragAlongAnEdgeSelectsMore()
{
    const QRect table = editor->view().elementRect(*byId("t"));
    press({table.left() - 3, middle("d").y()});
    move({table.left() - 3, middle("g").y()});
    QCOMPARE(ids(), QStringLiteral("d e f g h"));
    // Back over where it began, and out of the table.
    move({table.left() - 30, table.top() - 30});
    QCOMPARE(ids(), QStringLiteral("a b c d e f"));
    move({table.left() - 3, middle("d").y()});
    QCOMPARE(ids(), QStringLiteral("d e f"));
    release({table.left() - 3, middle("d").y()});
    move(middle("p"));
    QCOMPARE(ids(), QStringLiteral("d e f"));
    press({middle("c").x(), table.top() - 3});
    move({middle("b").x(), table.top() - 3});
    // The cell that reaches over a column comes whole.
    QCOMPARE(ids(), QStringLiteral("a b c d e f g h"));
    release({middle("b").x(), table.top() - 3});
}

void tst_cellSelection::theProgramSelects()
{
    cells().add(*byId("e"));
    cells().add(*byId("a"));
    cells().add(*byId("e"));
    QCOMPARE(ids(), QStringLiteral("a e"));
    cells().select(*byId("h"));
    QCOMPARE(ids(), QStringLiteral("h"));
    cells().selectRow(*byId("h"));
    QCOMPARE(ids(), QStringLiteral("g h"));
    QVERIFY_EXCEPTION_THROWN(cells().add(*byId("p")), base::Error);
    QVERIFY_EXCEPTION_THROWN(cells().selectRow(*byId("t")), base::Error);
    QCOMPARE(ids(), QStringLiteral("g h"));
}

void tst_cellSelection::highlightsAreInNoText()
{
    const QString before = editor->document()->documentElement()->outerHTML();
    cells().selectRow(*byId("a"));
    QVERIFY(!byId("a")->runtimeStyle()->property("backgroundColor").isEmpty());
    QVERIFY(byId("d")->runtimeStyle()->property("backgroundColor").isEmpty());
    QCOMPARE(editor->document()->documentElement()->outerHTML(), before);
    cells().clear();
    QVERIFY(byId("a")->runtimeStyle()->property("backgroundColor").isEmpty());
}

void tst_cellSelection::whatElseIsSelectedClearsThem()
{
    cells().selectRow(*byId("a"));
    editor->loaded()->selection().setCaret({byId("p")->firstChild(), 1});
    QVERIFY(cells().isEmpty());
    cells().selectRow(*byId("a"));
    press(middle("p"));
    release(middle("p"));
    QVERIFY(cells().isEmpty());
}

void tst_cellSelection::removedCellsAreNotSelected()
{
    cells().selectRow(*byId("a"));
    byId("b")->setOuterHTML(QString());
    QCOMPARE(ids(), QStringLiteral("a c"));
}

void tst_cellSelection::loadsForgetThem()
{
    cells().selectRow(*byId("a"));
    load("<body><p>other</p>");
    QVERIFY(cells().isEmpty());
}

QTEST_MAIN(tst_cellSelection)
#include "tst_cellSelection.moc"
