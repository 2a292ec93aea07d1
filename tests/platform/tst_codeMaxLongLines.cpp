// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMax.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

namespace {

constexpr int lettersOfLongLine = 300000;

QString longText()
{
    QString text = "<p>first</p>\r\n<p title=\"";
    text += QString(lettersOfLongLine, u'x');
    return text + "\">end</p>\r\n<p>last</p>";
}

CodeMaxRange caretAt(int line, int column)
{
    return {line, column, line, column};
}

/// Shown in a window and painted once.
struct Shown
{
    CodeMax editor;
    explicit Shown(const QString &text = longText())
    {
        editor.resize(600, 300);
        editor.setText(text);
        editor.ClearUndo();
        editor.show();
        paint();
    }
    void paint()
    {
        QCoreApplication::processEvents();
        editor.grab();
    }
    /// Whether the character takes part in the layout. One that doesn't has no width.
    bool shows(int column, int line = 1) const { return editor.PosToRect(line, column).width() > 1; }
    QString note(int line = 1) const
    {
        QByteArray text(editor.SendScintilla(CodeMax::SCI_ANNOTATIONGETTEXT, static_cast<unsigned long>(line)), '\0');
        if (!text.isEmpty())
            editor.SendScintilla(CodeMax::SCI_ANNOTATIONGETTEXT, static_cast<unsigned long>(line), text.data());
        return QString::fromUtf8(text);
    }
};

} // namespace

class tst_codeMaxLongLines : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aLineOfOrdinaryLengthShowsWhole()
    {
        Shown shown(QString(LongLines::longLine - 1, u'x'));
        QVERIFY(shown.shows(0, 0));
        QVERIFY(shown.shows(LongLines::longLine - 2, 0));
        QCOMPARE(shown.note(0), QString());
    }

    void aVeryLongLineShowsItsHead()
    {
        Shown shown;
        QVERIFY(shown.shows(0));
        QVERIFY(shown.shows(5000));
        QVERIFY(!shown.shows(100000));
        QVERIFY(!shown.shows(lettersOfLongLine));
        QVERIFY(shown.shows(2, 0));
        QVERIFY(shown.shows(2, 2));
        QVERIFY(shown.note().startsWith("Shown: characters 1 to "));
        QCOMPARE(shown.note(2), QString());
        QCOMPARE(shown.editor.Text(), longText());
    }

    void itShowsWhatIsAroundTheCaret()
    {
        Shown shown;
        for (const int column : {150000, 3, lettersOfLongLine, 80000}) {
            shown.editor.SetSel(caretAt(1, column), true);
            QVERIFY(shown.shows(column));
            shown.paint();
            QVERIFY(shown.shows(column));
            QVERIFY(shown.shows(std::max(0, column - 1000)));
            QVERIFY(!shown.shows(230000));
            const int x = shown.editor.PosToRect(1, column).left();
            QVERIFY(x >= 0 && x < shown.editor.viewport()->width());
        }
    }

    void itStandsStillWhileTheCaretMovesALittle()
    {
        Shown shown;
        shown.editor.setFocus();
        shown.editor.SetSel(caretAt(1, 150000), true);
        shown.paint();
        const QString note = shown.note();
        const auto moveABit = [&] {
            for (int i = 0; i < 40; ++i)
                QTest::keyClick(&shown.editor, i < 20 ? Qt::Key_Left : Qt::Key_Right);
        };
        moveABit(); // the view scrolls for it
        const QRect place = shown.editor.PosToRect(1, 150000);
        moveABit();
        shown.paint();
        QCOMPARE(shown.editor.PosToRect(1, 150000), place);
        QCOMPARE(shown.note(), note);
    }

    void keysReachEveryPlaceOfIt()
    {
        Shown shown;
        shown.editor.setFocus();
        shown.editor.SetSel(caretAt(1, 10), true);
        QTest::keyClick(&shown.editor, Qt::Key_End);
        const int end = int(shown.editor.LineText(1).size());
        QCOMPARE(shown.editor.GetSel(true), caretAt(1, end));
        QVERIFY(shown.shows(end - 1));
        // Across the end of what shows, one character a key.
        shown.editor.SetSel(caretAt(1, 0), true);
        shown.paint();
        int column = 0;
        for (; shown.shows(column); column += 500)
            QVERIFY(column < end);
        shown.editor.SetSel(caretAt(1, column - 3000), true);
        for (int i = 1; i <= 3200; ++i) {
            QTest::keyClick(&shown.editor, Qt::Key_Right);
            QCOMPARE(shown.editor.GetSel(true).StartColNo, column - 3000 + i);
        }
        QVERIFY(shown.shows(column + 200));
        QTest::keyClick(&shown.editor, Qt::Key_Home);
        QCOMPARE(shown.editor.GetSel(true), caretAt(1, 0));
        QVERIFY(shown.shows(0));
    }

    void whatIsTypedInItShowsAndComesBackByUndo()
    {
        Shown shown;
        shown.editor.setFocus();
        shown.editor.SetSel(caretAt(1, 150000), true);
        QTest::keyClicks(&shown.editor, "abc");
        shown.paint();
        QCOMPARE(shown.editor.LineText(1).mid(149999, 5), QString("xabcx"));
        QVERIFY(shown.shows(150001));
        QVERIFY(!shown.shows(230000));
        QVERIFY(shown.editor.ExecuteCmd(codemax::undo));
        QCOMPARE(shown.editor.Text(), longText());
    }

    void whatIsFoundInItShows()
    {
        QString text = longText();
        text.replace(200000, 6, "needle");
        Shown shown(text);
        shown.editor.setFindText("needle");
        QVERIFY(shown.editor.ExecuteCmd(codemax::findNext));
        shown.paint();
        QCOMPARE(shown.editor.SelText(), QString("needle"));
        QVERIFY(shown.shows(shown.editor.GetSel(true).StartColNo));
    }

    void hiddenTextIsSelectedAndCopiedAndDeleted()
    {
        Shown shown;
        shown.editor.SetSel({1, 20, 1, 250000}, false);
        QCOMPARE(shown.editor.SelText(), longText().mid(longText().indexOf("\r\n") + 22, 249980));
        QVERIFY(shown.editor.ExecuteCmd(codemax::deleteSelection));
        QCOMPARE(shown.editor.LineText(1).size(), lettersOfLongLine + 19 - 249980);
        QVERIFY(shown.editor.ExecuteCmd(codemax::undo));
        QCOMPARE(shown.editor.Text(), longText());
        shown.paint();
        QVERIFY(!shown.shows(lettersOfLongLine - 1) || !shown.shows(20));
    }

    void aTextThatIsPastedIsHiddenBeforeItIsLaidOut()
    {
        Shown shown("<p></p>");
        shown.editor.SetSel(caretAt(0, 3), false);
        QGuiApplication::clipboard()->setText(QString(lettersOfLongLine, u'y'));
        QVERIFY(shown.editor.ExecuteCmd(codemax::paste));
        QVERIFY(!shown.shows(100000, 0));
        shown.paint();
        QVERIFY(shown.shows(lettersOfLongLine + 4, 0)); // the caret stands behind it
        QVERIFY(!shown.note(0).isEmpty());
        QVERIFY(shown.editor.ExecuteCmd(codemax::undo));
        shown.paint();
        QCOMPARE(shown.editor.Text(), QString("<p></p>"));
        QCOMPARE(shown.note(0), QString());
        QVERIFY(shown.editor.ExecuteCmd(codemax::redo));
        QVERIFY(!shown.shows(100000, 0));
    }

    void aLineThatIsParted_isShownWhole()
    {
        Shown shown;
        shown.editor.setFocus();
        const QString parted = longText().replace(QString(1000, u'x'), QString(999, u'x') + "\n");
        shown.editor.setText(parted);
        shown.paint();
        QCOMPARE(shown.editor.Text(), parted);
        for (const int line : {1, 2, 100, 200}) {
            QVERIFY(shown.editor.LineText(line).size() < 1100);
            QCOMPARE(shown.note(line), QString());
        }
        shown.editor.SetSel(caretAt(150, 0), true);
        shown.paint();
        QVERIFY(shown.shows(500, 150));
    }

    void charactersOfSeveralBytesAreNotCutApart()
    {
        // Steps are in bytes; the end of a window would fall into a character.
        Shown shown("x" + QString(60000, QChar(0x20AC)));
        for (const int column : {0, 20000, 41111, 60000}) {
            shown.editor.SetSel(caretAt(0, column), true);
            shown.paint();
            QCOMPARE(shown.editor.GetSel(true), caretAt(0, column));
            QVERIFY(column == 60000 || shown.shows(column, 0));
        }
    }

    void aPressSelectsWithoutTheTextSlippingAway()
    {
        Shown shown;
        shown.editor.SetSel(caretAt(1, 150000), true);
        shown.paint();
        const QPoint from = shown.editor.PosToRect(1, 150000).center();
        const QPoint inside = shown.editor.viewport()->mapFrom(&shown.editor, from);
        QTest::mousePress(shown.editor.viewport(), Qt::LeftButton, {}, inside);
        QTest::mouseMove(shown.editor.viewport(), inside - QPoint(60, 0));
        QTest::mouseRelease(shown.editor.viewport(), Qt::LeftButton, {}, inside - QPoint(60, 0));
        const CodeMaxRange range = shown.editor.GetSel(true);
        QVERIFY(range.StartColNo < range.EndColNo);
        QVERIFY(std::abs(range.EndColNo - 150000) <= 1);
        QVERIFY(range.StartColNo > 150000 - 30);
    }
};

QTEST_MAIN(tst_codeMaxLongLines)
#include "tst_codeMaxLongLines.moc"
