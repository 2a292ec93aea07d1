// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMax.h"

#include <QSignalSpy>
#include <QTest>

namespace {

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class tst_codeMaxFind : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aRepeatedFindGoesOnAndRound()
    {
        CodeMax editor;
        editor.setText("ab xx AB xx ab");
        editor.setFindText("ab");
        QList<int> starts;
        for (int i = 0; i < 4; ++i) {
            QVERIFY(editor.ExecuteCmd(codemax::findNext));
            starts << editor.SelStart();
        }
        QCOMPARE(starts, QList<int>({0, 6, 12, 0}));
        starts.clear();
        for (int i = 0; i < 3; ++i) {
            QVERIFY(editor.ExecuteCmd(codemax::findPrevious));
            starts << editor.SelStart();
        }
        QCOMPARE(starts, QList<int>({12, 6, 0}));
        QCOMPARE(editor.SelText(), QString("ab"));
    }

    void aMatchInTheSelectionIsFound()
    {
        CodeMax editor;
        editor.setText("one two three two");
        editor.SetSel({0, 2, 0, 10}, false);
        editor.setFindText("two");
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelStart(), 4);
    }

    void optionsAreKeptUntilTheKnownState()
    {
        CodeMax editor;
        editor.setText("abc ABC ab");
        editor.setFindText("AB");
        QVERIFY(editor.ExecuteCmd(codemax::matchCaseOn));
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelStart(), 4);
        QVERIFY(editor.ExecuteCmd(codemax::wholeWordOn));
        QVERIFY(!editor.ExecuteCmd(codemax::findNext));
        QVERIFY(editor.ExecuteCmd(codemax::matchCaseOff));
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelStart(), 8);
        QVERIFY(editor.ExecuteCmd(codemax::knownState));
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelStart(), 0);
    }

    void lettersBeyondAsciiFoldTheirCase()
    {
        CodeMax editor;
        editor.setText(u("😀 ÉTÉ"));
        editor.setFindText(u("été"));
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelStart(), 3);
        QCOMPARE(editor.SelText(), u("ÉTÉ"));
    }

    void wholeWordsEndAtAnythingButLetters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("find");
        QTest::addColumn<bool>("found");
        QTest::newRow("alone") << "a"
                               << "a" << true;
        QTest::newRow("in a tag") << "<a>"
                                  << "a" << true;
        QTest::newRow("in a word") << "bab"
                                   << "a" << false;
        QTest::newRow("beside a letter") << u("éa") << "a" << false;
        QTest::newRow("beside a digit") << "a1"
                                        << "a" << false;
        QTest::newRow("beside an underscore") << "_a"
                                              << "a" << false;
        QTest::newRow("beside a far letter") << u("𝒳a") << "a" << false;
        QTest::newRow("signs in a word") << "a<b"
                                         << "<" << true;
    }
    void wholeWordsEndAtAnythingButLetters()
    {
        QFETCH(QString, text);
        QFETCH(QString, find);
        QFETCH(bool, found);
        CodeMax editor;
        editor.setText(text);
        editor.setFindText(find);
        editor.ExecuteCmd(codemax::wholeWordOn);
        QCOMPARE(editor.ExecuteCmd(codemax::findNext), found);
        QCOMPARE(editor.ExecuteCmd(codemax::findPrevious), found);
    }

    void severalLinesAreFoundWhateverTheirEnds_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("CR LF") << "<P>\r\nab</P>\r\n";
        QTest::newRow("LF") << "<P>\nab</P>\n";
        QTest::newRow("CR") << "<P>\rab</P>\r";
        QTest::newRow("mixed") << "x\n<P>\r\nab</P>\r";
    }
    void severalLinesAreFoundWhateverTheirEnds()
    {
        QFETCH(QString, text);
        CodeMax editor;
        editor.setText(text);
        editor.setFindText("<P>\r\nab</P>");
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QVERIFY(editor.SelText().startsWith("<P>"));
        QVERIFY(editor.SelText().endsWith("ab</P>"));
        QVERIFY(editor.ExecuteCmd(codemax::findPrevious));
    }

    void aFindThatFailsTellsAndLeavesTheSelection()
    {
        CodeMax editor;
        editor.setText("abc");
        editor.SetSel({0, 1, 0, 2}, false);
        editor.setFindText("zz");
        QSignalSpy failure(&editor, &CodeMax::CmdFailure), selection(&editor, &CodeMax::SelChange);
        QVERIFY(!editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(failure.count(), 1);
        QCOMPARE(failure[0][0].toInt(), 176);
        QCOMPARE(failure[0][1].toInt(), codemax::notFound);
        QCOMPARE(editor.ErrorState(), codemax::notFound);
        QCOMPARE(editor.GetSel(true), (CodeMaxRange{0, 1, 0, 2}));
        QCOMPARE(selection.count(), 0);
        editor.ClearErrorState();
        QCOMPARE(editor.ErrorState(), 0);
        QVERIFY(!editor.ExecuteCmd(codemax::findPrevious));
        QCOMPARE(failure[1][0].toInt(), 174);
        editor.setFindText("");
        QVERIFY(!editor.ExecuteCmd(codemax::findNext));
        editor.setText("");
        QVERIFY(!editor.ExecuteCmd(codemax::findPrevious));
    }

    void regularExpressions()
    {
        CodeMax editor;
        editor.setText("<b>one</b>\r\n<i>two</i>\r\n");
        editor.ExecuteCmd(codemax::regExpOn);
        editor.setFindText("<([BI])>[a-z]+</\\1>$");
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelText(), QString("<b>one</b>"));
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelText(), QString("<i>two</i>"));
        QVERIFY(editor.ExecuteCmd(codemax::findPrevious));
        QCOMPARE(editor.SelText(), QString("<b>one</b>"));
        editor.setFindText("x*"); // matches nothing everywhere, and that can't be selected
        QVERIFY(!editor.ExecuteCmd(codemax::findNext));
        QSignalSpy failure(&editor, &CodeMax::CmdFailure);
        editor.setFindText("(");
        QVERIFY(!editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(failure[0][1].toInt(), codemax::badExpression);
        editor.ExecuteCmd(codemax::regExpOff);
        editor.setText("a(b");
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
    }

    void replaceAllIsOneEdit()
    {
        CodeMax editor;
        editor.setText(u("aa😀a\r\nAa"));
        editor.ClearUndo();
        editor.setFindText("a");
        editor.setReplText("aa");
        QSignalSpy change(&editor, &CodeMax::Change);
        QVERIFY(editor.ExecuteCmd(codemax::replaceAll));
        QCOMPARE(editor.Text(), u("aaaa😀aa\r\naaaa"));
        QCOMPARE(editor.ReplaceCount(), 5);
        QCOMPARE(change.count(), 1);
        QVERIFY(editor.ExecuteCmd(codemax::undo));
        QCOMPARE(editor.Text(), u("aa😀a\r\nAa"));
        QVERIFY(!editor.CanUndo());
    }

    void replaceAllTakesLinesOut()
    {
        CodeMax editor;
        editor.setText("a\r\n\r\nb\r\n\r\nc");
        editor.setFindText("\r\n\r\n");
        editor.setReplText("\r\n");
        QVERIFY(editor.ExecuteCmd(codemax::replaceAll));
        QCOMPARE(editor.Text(), QString("a\r\nb\r\nc"));
    }

    void replaceAllFillsInGroups()
    {
        CodeMax editor;
        editor.setText("key=value\r\nx=y");
        editor.ExecuteCmd(codemax::regExpOn);
        editor.setFindText("^(\\w+)=(\\w+)$");
        editor.setReplText("\\2\\t\\1\\\\\\0");
        QVERIFY(editor.ExecuteCmd(codemax::replaceAll));
        QCOMPARE(editor.Text(), QString("value\tkey\\key=value\r\ny\tx\\x=y"));
    }

    void replaceAllThatCantTellsWhy()
    {
        CodeMax editor;
        editor.setText("abc");
        editor.setFindText("z");
        QSignalSpy failure(&editor, &CodeMax::CmdFailure), change(&editor, &CodeMax::Change);
        QVERIFY(!editor.ExecuteCmd(codemax::replaceAll));
        QCOMPARE(failure[0][0].toInt(), 171);
        QCOMPARE(failure[0][1].toInt(), codemax::notFound);
        editor.setReadOnly(true);
        editor.setFindText("a");
        QVERIFY(!editor.ExecuteCmd(codemax::replaceAll));
        QCOMPARE(failure[1][1].toInt(), codemax::isReadOnly);
        QCOMPARE(editor.Text(), QString("abc"));
        QCOMPARE(change.count(), 0);
    }

    void aLongFindTextIsFound()
    {
        CodeMax editor;
        QString element = "<TABLE>";
        for (int i = 0; i < 20000; ++i)
            element += QStringLiteral("<TD>%1</TD>\r\n").arg(i);
        editor.setText("<P>before</P>\r\n" + element + "<P>after</P>");
        editor.setFindText(element);
        QVERIFY(editor.ExecuteCmd(codemax::findNext));
        QCOMPARE(editor.SelText(), element);
    }
};

QTEST_MAIN(tst_codeMaxFind)
#include "tst_codeMaxFind.moc"
