// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "platform/CodeMax.h"
#include "platform/HotKeys.h"

#include <QAccessible>
#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

namespace {

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

void showActive(QWidget &widget)
{
    widget.resize(600, 300);
    widget.show();
    widget.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&widget));
    widget.setFocus();
}

CodeMaxRange caretAt(int line, int column)
{
    return {line, column, line, column};
}

} // namespace

class tst_codeMax : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { HotKeys::global().reset(); }

    // Text

    void textComesBackAsItWent_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString("");
        QTest::newRow("plain") << QString("abc");
        QTest::newRow("CR LF") << QString("a\r\nb\r\n");
        QTest::newRow("LF") << QString("a\nb");
        QTest::newRow("CR") << QString("a\rb");
        QTest::newRow("mixed") << QString("a\rb\nc\r\nd\n\re");
        QTest::newRow("beyond the first plane") << u("x😀y\n𝒳");
        QTest::newRow("byte order mark") << QString(QChar(0xFEFF)) + "abc";
        QTest::newRow("separators of lines") << u("a\u2028b\u0085c\fd");
        QTest::newRow("not a character") << QString(QChar(0xFFFE)) + QChar(0xFFFF) + "x";
    }
    void textComesBackAsItWent()
    {
        QFETCH(QString, text);
        CodeMax editor;
        editor.setText("before");
        editor.setText(text);
        QCOMPARE(editor.Text(), text);
    }

    void nulsAndLoneSurrogatesAreReplaced()
    {
        CodeMax editor;
        const QChar high(0xD83D), low(0xDE00), bad(0xFFFD);
        editor.setText(QString("a") + QChar(0) + "b" + high + "c" + low + high);
        QCOMPARE(editor.Text(), QString("a") + bad + "b" + bad + "c" + bad + bad);
        editor.setText("");
        editor.ReplaceSel(QString("x") + QChar(0) + "y" + low);
        QCOMPARE(editor.Text(), QString("x") + bad + "y" + bad);
        editor.InsertText(QString(QChar(0)), 0);
        QCOMPARE(editor.Text(), QString(bad) + "x" + bad + "y" + bad);
    }

    void aPastedNulIsReplaced()
    {
        CodeMax editor;
        showActive(editor);
        auto *data = new QMimeData;
        data->setText(QString("a") + QChar(0) + "b");
        QGuiApplication::clipboard()->setMimeData(data);
        QVERIFY(editor.CanPaste());
        QVERIFY(editor.ExecuteCmd(codemax::paste));
        QCOMPARE(editor.Text(), QString("a") + QChar(0xFFFD) + "b");
    }

    void aWriteTellsNothing()
    {
        CodeMax editor;
        QSignalSpy change(&editor, &CodeMax::Change), selection(&editor, &CodeMax::SelChange);
        editor.setText("one");
        editor.setText("two");
        QCoreApplication::processEvents();
        QCOMPARE(change.count(), 0);
        QCOMPARE(selection.count(), 0);
    }

    void aWriteIsOneUndoStepAndKeepsTheHistory()
    {
        CodeMax editor;
        editor.setText("abc def");
        editor.ClearUndo();
        QVERIFY(!editor.CanUndo());
        editor.setText("abX def");
        editor.setText("ab\r\nlong other text def");
        QVERIFY(editor.ExecuteCmd(codemax::undo));
        QCOMPARE(editor.Text(), QString("abX def"));
        QVERIFY(editor.ExecuteCmd(codemax::undo));
        QCOMPARE(editor.Text(), QString("abc def"));
        QVERIFY(!editor.CanUndo());
        QVERIFY(editor.ExecuteCmd(codemax::redo));
        QVERIFY(editor.ExecuteCmd(codemax::redo));
        QCOMPARE(editor.Text(), QString("ab\r\nlong other text def"));
    }

    void writingTheSameTextAddsNoStep()
    {
        CodeMax editor;
        editor.setText("abc");
        editor.ClearUndo();
        editor.SetSel(caretAt(0, 2), false);
        editor.setText("abc");
        QVERIFY(!editor.CanUndo());
        QCOMPARE(editor.SelStart(), 2);
    }

    void charactersThatShareBytesAreReplacedWhole()
    {
        CodeMax editor;
        for (const char *text : {"é", "è", "aéa", "aèa", "😀", "😁", "€", "é€", ""}) {
            editor.setText(u(text));
            QCOMPARE(editor.Text(), u(text));
            editor.ExecuteCmd(codemax::undo);
            editor.ExecuteCmd(codemax::redo);
            QCOMPARE(editor.Text(), u(text));
        }
    }

    void aReadOnlyEditorTakesOnlyWholeTexts()
    {
        CodeMax editor;
        showActive(editor);
        editor.setReadOnly(true);
        editor.setText("abc");
        QCOMPARE(editor.Text(), QString("abc"));
        QVERIFY(editor.ReadOnly());
        editor.ReplaceSel("x");
        editor.InsertText("x", 0);
        QTest::keyClicks(&editor, "x");
        editor.ExecuteCmd(codemax::deleteSelection);
        editor.ExecuteCmd(codemax::selectAll);
        QVERIFY(!editor.CanCut());
        QVERIFY(editor.CanCopy());
        QVERIFY(!editor.CanUndo());
        QCOMPARE(editor.Text(), QString("abc"));
    }

    // Places

    void columnsCountUtf16Units()
    {
        CodeMax editor;
        editor.setText(u("a😀b\r\né€x\r\n"));
        editor.SetSel({0, 3, 1, 2}, false);
        QCOMPARE(editor.SelText(), u("b\r\né€"));
        QCOMPARE(editor.SelStart(), 3);
        QCOMPARE(editor.SelEnd(), 8);
        QCOMPARE(editor.GetSel(true), (CodeMaxRange{0, 3, 1, 2}));
        QCOMPARE(editor.OffsetOf({1, 0}), 6);
        QCOMPARE(editor.PositionOf(7), (CodeMaxPosition{1, 1}));
        QCOMPARE(editor.LineCount(), 3);
        QCOMPARE(editor.LineText(1), u("é€x"));
        // Between the surrogates is before the pair.
        editor.SetSel(caretAt(0, 2), false);
        QCOMPARE(editor.SelStart(), 1);
        editor.setSelStart(2);
        QCOMPARE(editor.SelStart(), 1);
    }

    void everyOffsetGoesThereAndBack()
    {
        CodeMax editor;
        const QString text = u("a😀\r\n\n\ré€\r\n😀😀\rend");
        editor.setText(text);
        for (int offset = 0; offset <= text.size(); ++offset) {
            if (offset < text.size() && text.at(offset).isLowSurrogate()) continue;
            editor.setSelStart(offset);
            editor.setSelEnd(offset);
            QCOMPARE(editor.SelStart(), offset);
            QCOMPARE(editor.SelEnd(), offset);
        }
    }

    void placesOutsideAreTheNearestInside()
    {
        CodeMax editor;
        editor.setText("ab\r\ncd");
        editor.SetSel({-1, 5, 9, 0}, true);
        QCOMPARE(editor.GetSel(true), (CodeMaxRange{0, 0, 1, 2}));
        editor.SetSel(caretAt(0, 99), false);
        QCOMPARE(editor.GetSel(true), caretAt(0, 2));
        editor.setSelStart(99);
        QCOMPARE(editor.SelStart(), 6);
        QVERIFY_EXCEPTION_THROWN(editor.setSelStart(-1), base::Error);
        QVERIFY_EXCEPTION_THROWN(editor.InsertText("x", -1), base::Error);
    }

    void endsOfTheSelectionPushEachOther()
    {
        CodeMax editor;
        editor.setText("0123456789");
        editor.setSelEnd(6);
        editor.setSelStart(3);
        QCOMPARE(editor.SelText(), QString("345"));
        editor.setSelStart(8);
        QCOMPARE(editor.SelEnd(), 8);
        editor.setSelEnd(2);
        QCOMPARE(editor.SelStart(), 2);
    }

    void aSelectionKnowsItsDirection()
    {
        CodeMax editor;
        editor.setText("ab\ncd");
        editor.SetSel({1, 1, 0, 1}, false);
        QCOMPARE(editor.GetSel(false), (CodeMaxRange{1, 1, 0, 1}));
        QCOMPARE(editor.GetSel(true), (CodeMaxRange{0, 1, 1, 1}));
    }

    void aPositionHasARectangle()
    {
        CodeMax editor;
        editor.setText("ab\r\ncd");
        showActive(editor);
        const QRect first = editor.PosToRect(0, 0), second = editor.PosToRect(0, 1), below = editor.PosToRect(1, 0);
        QVERIFY(first.isValid() && editor.rect().contains(first));
        QCOMPARE(second.left(), first.left() + first.width());
        QCOMPARE(below.left(), first.left());
        QCOMPARE(below.top(), first.top() + first.height());
    }

    // Edits

    void typingTellsOncePerKey()
    {
        CodeMax editor;
        showActive(editor);
        QSignalSpy change(&editor, &CodeMax::Change), selection(&editor, &CodeMax::SelChange);
        QTest::keyClicks(&editor, "abc");
        QCOMPARE(editor.Text(), QString("abc"));
        QCOMPARE(change.count(), 3);
        QCOMPARE(selection.count(), 3);
        QTest::keyClick(&editor, Qt::Key_Left, Qt::ShiftModifier);
        QCOMPARE(change.count(), 3);
        QCOMPARE(selection.count(), 4);
        QTest::keyClicks(&editor, "x"); // takes out and puts in
        QCOMPARE(editor.Text(), QString("abx"));
        QCOMPARE(change.count(), 4);
        QTest::keyClick(&editor, Qt::Key_Return);
        QCOMPARE(editor.Text(), QString("abx\r\n"));
        QCOMPARE(change.count(), 5);
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(change.count(), 6);
        QTest::keyClick(&editor, Qt::Key_Y, Qt::ControlModifier);
        QCOMPARE(editor.Text(), QString("abx\r\n"));
        QCOMPARE(change.count(), 7);
        QCoreApplication::processEvents();
        QCOMPARE(change.count(), 7);
    }

    void typingAfterAWriteIsAStepOfItsOwn()
    {
        CodeMax editor;
        showActive(editor);
        QTest::keyClicks(&editor, "ab");
        editor.setText("abc");
        editor.SetSel(caretAt(0, 3), false);
        QTest::keyClicks(&editor, "d");
        editor.ExecuteCmd(codemax::undo);
        QCOMPARE(editor.Text(), QString("abc"));
        editor.ExecuteCmd(codemax::undo);
        QCOMPARE(editor.Text(), QString("ab"));
        editor.ExecuteCmd(codemax::undo);
        QCOMPARE(editor.Text(), QString());
    }

    void thePointerMovesTheCaretAndTells()
    {
        CodeMax editor;
        editor.setText("abc\r\ndef");
        showActive(editor);
        QSignalSpy change(&editor, &CodeMax::Change), selection(&editor, &CodeMax::SelChange);
        const QPoint place = editor.viewport()->mapFrom(&editor, editor.PosToRect(1, 2).center() - QPoint(2, 0));
        QTest::mouseClick(editor.viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(editor.GetSel(true), caretAt(1, 2));
        QCOMPARE(selection.count(), 1);
        QTest::mouseDClick(editor.viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(editor.SelText(), QString("def"));
        QCOMPARE(change.count(), 0);
    }

    void anAnswerToAChangeMayWriteAndDelete()
    {
        auto *editor = new CodeMax;
        connect(editor, &CodeMax::Change, editor, [editor] {
            if (editor->Text() == "x") editor->setText("written");
        });
        editor->ReplaceSel("x");
        QCOMPARE(editor->Text(), QString("written"));
        QPointer<CodeMax> alive(editor);
        connect(editor, &CodeMax::Change, editor, [editor] { delete editor; });
        editor->ReplaceSel("y");
        QVERIFY(!alive);
    }

    void newLinesFollowTheText()
    {
        CodeMax editor;
        showActive(editor);
        editor.setText("a\nb\r\n");
        QTest::keyClick(&editor, Qt::Key_Return);
        QCOMPARE(editor.Text(), QString("\na\nb\r\n"));
    }

    void aComposedTextIsOneEdit()
    {
        CodeMax editor;
        showActive(editor);
        QSignalSpy change(&editor, &CodeMax::Change);
        QInputMethodEvent event;
        event.setCommitString(u("語😀"));
        QCoreApplication::sendEvent(&editor, &event);
        QCOMPARE(editor.Text(), u("語😀"));
        QCOMPARE(change.count(), 1);
    }

    void callsThatEditTellOnce()
    {
        CodeMax editor;
        editor.setText("abc");
        editor.SetSel({0, 0, 0, 2}, false);
        QSignalSpy change(&editor, &CodeMax::Change);
        editor.setSelText("XYZ");
        QCOMPARE(editor.Text(), QString("XYZc"));
        QCOMPARE(editor.SelStart(), 3);
        QCOMPARE(change.count(), 1);
        editor.InsertText("--", 1);
        QCOMPARE(editor.Text(), QString("X--YZc"));
        QCOMPARE(editor.SelStart(), 5);
        QCOMPARE(change.count(), 2);
        editor.ExecuteCmd(codemax::undo);
        QCOMPARE(change.count(), 3);
        editor.ExecuteCmd(codemax::undo);
        QCOMPARE(editor.Text(), QString("abc"));
    }

    void editsThroughTheBaseClassAreToldToo()
    {
        CodeMax editor;
        QSignalSpy change(&editor, &CodeMax::Change);
        editor.insert("abc");
        QTRY_COMPARE(change.count(), 1);
    }

    void theClipboardCommands()
    {
        CodeMax editor;
        editor.setText("abc");
        QVERIFY(!editor.CanCopy());
        QVERIFY(!editor.ExecuteCmd(codemax::cut));
        editor.SetSel({0, 1, 0, 2}, false);
        QVERIFY(editor.ExecuteCmd(codemax::cut));
        QCOMPARE(editor.Text(), QString("ac"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("b"));
        QVERIFY(editor.ExecuteCmd(codemax::deleteSelection));
        QCOMPARE(editor.Text(), QString("a"));
        editor.ExecuteCmd(codemax::selectAll);
        QVERIFY(editor.ExecuteCmd(codemax::copy));
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("a"));
    }

    void unknownCommandsDoNothing()
    {
        CodeMax editor;
        editor.setText("abc");
        QSignalSpy failure(&editor, &CodeMax::CmdFailure), change(&editor, &CodeMax::Change);
        for (const int number : {0, -1, 1, 128, 169, 178, 100000})
            QVERIFY(!editor.ExecuteCmd(number));
        QCOMPARE(editor.Text(), QString("abc"));
        QCOMPARE(failure.count() + change.count(), 0);
        QCOMPARE(editor.ErrorState(), 0);
    }

    // Keys

    void hotKeysRunCommands()
    {
        CodeMax editor;
        showActive(editor);
        editor.setText("abc");
        QTest::keyClick(&editor, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(editor.SelText(), QString());
        HotKeys::global().add(codemax::selectAll, Qt::CTRL | Qt::Key_A);
        QTest::keyClick(&editor, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(editor.SelText(), QString("abc"));
        HotKeys::global().removeAll(codemax::deleteSelection);
        QTest::keyClick(&editor, Qt::Key_Delete);
        QCOMPARE(editor.Text(), QString("abc"));
    }

    void hotKeysAreAListPerCommand()
    {
        HotKeys keys;
        QVERIFY(keys.list(137).isEmpty());
        QVERIFY(keys.add(137, Qt::CTRL | Qt::Key_A));
        QVERIFY(keys.add(137, Qt::Key_F8));
        QVERIFY(keys.add(137, Qt::Key_F8));
        QCOMPARE(keys.list(137).size(), 2);
        QCOMPARE(keys.commandFor(Qt::Key_F8), 137);
        QVERIFY(keys.add(178, Qt::Key_F8));
        QCOMPARE(keys.list(137).size(), 1);
        QVERIFY(!keys.remove(137, Qt::Key_F8));
        keys.removeAll(178);
        keys.removeAll(169);
        QCOMPARE(keys.commandFor(Qt::Key_F8), 0);
        QVERIFY(!keys.add(1, QKeySequence("Ctrl+K, Ctrl+C")));
    }

    void keysAndMenusAreHandedOn()
    {
        CodeMax editor;
        showActive(editor);
        QSignalSpy up(&editor, &CodeMax::KeyUp), props(&editor, &CodeMax::ShowProps),
            menu(&editor, &CodeMax::ContextMenu);
        QTest::keyClick(&editor, Qt::Key_A);
        QCOMPARE(up.count(), 1);
        QCOMPARE(up[0][0].toInt(), int(Qt::Key_A));
        QTest::keyClick(&editor, Qt::Key_Return, Qt::AltModifier);
        QCOMPARE(props.count(), 1);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), QPoint(5, 5));
        QCoreApplication::sendEvent(editor.viewport(), &event);
        QCOMPARE(menu.count(), 1);
        QVERIFY(!QApplication::activePopupWidget());
    }

    void assistiveToolsReadAndEdit()
    {
        CodeMax editor;
        editor.setText(u("a😀b\r\nsecond"));
        showActive(editor);
        QAccessibleInterface *seen = QAccessible::queryAccessibleInterface(&editor);
        QCOMPARE(seen->role(), QAccessible::EditableText);
        QVERIFY(seen->state().multiLine && seen->state().editable);
        QAccessibleTextInterface *text = seen->textInterface();
        QVERIFY(text);
        QCOMPARE(text->characterCount(), 12);
        QCOMPARE(text->text(3, 8), QString("b\r\nse"));
        int start = 0, end = 0;
        QCOMPARE(text->textAtOffset(7, QAccessible::LineBoundary, &start, &end), QString("second"));
        QCOMPARE(start, 6);
        QCOMPARE(end, 12);
        QCOMPARE(text->textBeforeOffset(7, QAccessible::LineBoundary, &start, &end), u("a😀b\r\n"));
        text->setSelection(0, 6, 9);
        QCOMPARE(editor.SelText(), QString("sec"));
        QCOMPARE(text->cursorPosition(), 9);
        const QRect place = text->characterRect(6);
        QCOMPARE(text->offsetAtPoint(place.center() - QPoint(2, 0)), 6);
        seen->editableTextInterface()->replaceText(6, 12, "x");
        QCOMPARE(editor.Text(), u("a😀b\r\nx"));
    }

    void screenshots()
    {
        for (const bool dark : {false, true}) {
            CodeMax editor;
            if (dark) editor.setPalette(QPalette(QColor(53, 53, 53), QColor(40, 40, 40)));
            editor.setText(
                "<!-- a comment -->\r\n<HTML>\r\n<BODY class=\"x\" bgColor=#ffffff>\r\n<P>Text &amp; more</P>\r\n"
                "<SCRIPT>var a = 'b'; // c</SCRIPT>\r\n</BODY>\r\n</HTML>\r\n");
            showActive(editor);
            editor.SetSel({3, 3, 3, 7}, true);
            QDir().mkpath(BINARY_DIR "/screenshots");
            QVERIFY(editor.grab().save(
                QStringLiteral(BINARY_DIR "/screenshots/codeMax_%1.png").arg(dark ? "dark" : "light")));
        }
    }
};

QTEST_MAIN(tst_codeMax)
#include "tst_codeMax.moc"
