// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

using editing::Snippet;

namespace {

struct Board final : editing::Clipboard {
    Snippet held;
    int puts = 0;
    void put(const Snippet &snippet) override
    {
        held = snippet;
        ++puts;
    }
    Snippet get() const override { return held; }
    bool holdsSnippet() const override { return !held.isEmpty(); }
};

} // namespace

class tst_clipboard : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void bothFormsAreOffered();
    void aDragCopiesToThePrimarySelection();
    void soDoKeysOnceTheyRest();
    void aCaretLeavesThePrimarySelection();
    void theMiddleButtonPastesWhereItIsPressed();
    void itPastesNothingIntoReadOnlyText();
    void withoutAPrimarySelectionItDoesNothing();
    void theOldKeysWorkToo();
    void whileReadOnlyThePageIsCopiedOnly();
    void aDrawnHotSpotIsToldAndSelected();

private:
    QString body() { return editor->document()->body()->innerHTML(); }
    dom::Node *text(const char *id) { return editor->document()->getElementById(QLatin1String(id))->firstChild(); }
    QPoint middle(const char *id)
    {
        return editor->view().elementRect(*editor->document()->getElementById(QLatin1String(id))).center();
    }
    void load(const QString &html)
    {
        editor->setDocumentText(html);
        QTRY_VERIFY(!editor->isLoading());
    }
    void drag(QPoint from, QPoint to)
    {
        QTest::mousePress(editor->viewport(), Qt::LeftButton, {}, from);
        QMouseEvent event(QEvent::MouseMove, to, editor->viewport()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(editor->viewport(), &event);
        QTest::mouseRelease(editor->viewport(), Qt::LeftButton, {}, to);
    }

    Board board, primary;
    std::unique_ptr<surface::HTMLEditor> editor;
};

void tst_clipboard::init()
{
    board = {};
    primary = {};
    editor = std::make_unique<surface::HTMLEditor>();
    editor->resize(600, 400);
    editor->show();
    editor->view().setClipboards(&board, &primary);
    load("<body style='margin:0;font:20px/30px \"Liberation Mono\"'><p id=a style='margin:0'>one two</p>"
         "<p id=b style='margin:0'>three</p><p style='margin:0' contenteditable=false id=c>fixed</p>"
         "<p style='margin:0' id=d>last</p>");
    editor->setFocus();
}

void tst_clipboard::bothFormsAreOffered()
{
    const auto data = surface::DesktopClipboard::mimeOf({"<B>x</B>", "x"});
    QCOMPARE(data->html(), QStringLiteral("<B>x</B>"));
    QCOMPARE(data->text(), QStringLiteral("x"));
    const Snippet back = surface::DesktopClipboard::snippetOf(*data);
    QCOMPARE(back.html, QStringLiteral("<B>x</B>"));
    QCOMPARE(back.text, QStringLiteral("x"));
    QVERIFY(!surface::DesktopClipboard::mimeOf({{}, "x"})->hasHtml());
}

void tst_clipboard::aDragCopiesToThePrimarySelection()
{
    drag({1, 15}, {37, 15}); // characters are 12 pixels wide
    QCOMPARE(primary.held.text, QStringLiteral("one"));
    QCOMPARE(primary.puts, 1);
    QCOMPARE(board.puts, 0);
}

void tst_clipboard::soDoKeysOnceTheyRest()
{
    base::Clock::instance().setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0)));
    editor->loaded()->selection().setCaret({text("a"), 0});
    QTest::keyClick(editor->viewport(), Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(editor->viewport(), Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(primary.puts, 0);
    base::Clock::instance().advance(1000);
    QCOMPARE(primary.held.text, QStringLiteral("on"));
    QCOMPARE(primary.puts, 1);
    base::Clock::instance().setSystem();
}

void tst_clipboard::aCaretLeavesThePrimarySelection()
{
    primary.held.text = "other";
    QTest::mouseClick(editor->viewport(), Qt::LeftButton, {}, {20, 15});
    QCOMPARE(primary.held.text, QStringLiteral("other"));
    QCOMPARE(primary.puts, 0);
}

void tst_clipboard::theMiddleButtonPastesWhereItIsPressed()
{
    primary.held.text = "X";
    editor->loaded()->selection().setCaret({text("a"), 0});
    QTest::mouseClick(editor->viewport(), Qt::MiddleButton, {}, {37, 45});
    QVERIFY2(body().contains(">thrXee<"), qPrintable(body()));
    QVERIFY(editor->loaded()->selection().isCaret());
    QVERIFY(editor->undo());
    QVERIFY(body().contains(">three<"));
}

void tst_clipboard::itPastesNothingIntoReadOnlyText()
{
    primary.held.text = "X";
    const QString before = body();
    QTest::mouseClick(editor->viewport(), Qt::MiddleButton, {}, middle("c"));
    QCOMPARE(body(), before);
    editor->setReadOnly(true);
    QTest::mouseClick(editor->viewport(), Qt::MiddleButton, {}, middle("a"));
    QCOMPARE(body(), before);
}

void tst_clipboard::withoutAPrimarySelectionItDoesNothing()
{
    editor->view().setClipboards(&board, nullptr);
    board.held.text = "X";
    const QString before = body();
    drag({1, 15}, {37, 15});
    QTest::mouseClick(editor->viewport(), Qt::MiddleButton, {}, {37, 45});
    QCOMPARE(body(), before);
}

void tst_clipboard::theOldKeysWorkToo()
{
    editor->loaded()->selection().set({text("a"), 0}, {text("a"), 3});
    QTest::keyClick(editor->viewport(), Qt::Key_Insert, Qt::ControlModifier);
    QCOMPARE(board.held.text, QStringLiteral("one"));
    QTest::keyClick(editor->viewport(), Qt::Key_Delete, Qt::ShiftModifier);
    QVERIFY2(!body().contains("one"), qPrintable(body()));
    QTest::keyClick(editor->viewport(), Qt::Key_Insert, Qt::ShiftModifier);
    QVERIFY2(body().contains("one"), qPrintable(body()));
}

void tst_clipboard::whileReadOnlyThePageIsCopiedOnly()
{
    editor->setReadOnly(true);
    const QString before = body();
    editor->loaded()->selection().set({text("a"), 0}, {text("a"), 3});
    QTest::keyClick(editor->viewport(), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(board.held.text, QStringLiteral("one"));
    QTest::keyClick(editor->viewport(), Qt::Key_X, Qt::ControlModifier);
    QTest::keyClick(editor->viewport(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(body(), before);
}

void tst_clipboard::aDrawnHotSpotIsToldAndSelected()
{
    load("<body style='margin:0'><img src=x width=100 height=80 style='padding:5px;border:2px solid'>");
    QSignalSpy created(editor.get(), &surface::HTMLEditor::areaCreated);
    editor->setHotSpotTool(1);
    drag({17, 27}, {57, 67});
    QCOMPARE(created.count(), 1);
    dom::Element *area = editor->view().selectedArea();
    QVERIFY(area);
    // From the picture's corner, inside of border and padding.
    QCOMPARE(area->attributeValue("coords"), QStringLiteral("10,20,50,60"));
    QCOMPARE(created.first().first().value<dom::Element *>(), area);
    QVERIFY(editor->undo());
    QVERIFY(!editor->view().selectedArea());
    QVERIFY(!body().contains("MAP"));
}

QTEST_MAIN(tst_clipboard)
#include "tst_clipboard.moc"
