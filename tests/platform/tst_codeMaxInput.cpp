// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMax.h"

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

namespace {

const QString smile = QString::fromUcs4(U"\U0001F600", 1); // two units
const QChar replacement(QChar::ReplacementCharacter);

void sendKeyText(CodeMax &editor, const QString &text)
{
    QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, text);
    QApplication::sendEvent(&editor, &press);
}

} // namespace

class tst_codeMaxInput : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void charactersBeyondTheFirstPlaneCanBeTyped()
    {
        CodeMax editor;
        editor.setText(QStringLiteral("ab"));
        editor.SetSel({0, 0, 0, 1}, false);
        QSignalSpy changes(&editor, &CodeMax::Change);
        sendKeyText(editor, smile);
        QCOMPARE(editor.Text(), smile + QStringLiteral("b"));
        QCOMPARE(editor.SelStart(), 2);
        QCOMPARE(changes.count(), 1);
        QTest::keyClick(&editor, Qt::Key_Backspace);
        QCOMPARE(editor.Text(), QStringLiteral("b"));
        editor.setReadOnly(true);
        sendKeyText(editor, smile);
        QCOMPARE(editor.Text(), QStringLiteral("b"));
    }
    void aLoneSurrogateFromTheKeyboardIsReplaced()
    {
        CodeMax editor;
        sendKeyText(editor, QString(QChar(0xD83D)));
        QCOMPARE(editor.Text(), QString(replacement));
    }
    void whatAnInputMethodCommitsIsCleaned()
    {
        CodeMax editor;
        QSignalSpy changes(&editor, &CodeMax::Change);
        QInputMethodEvent commit;
        commit.setCommitString(QStringLiteral("\u6f22") + smile + QChar(0) + QChar(0xDE00));
        QApplication::sendEvent(&editor, &commit);
        QCOMPARE(editor.Text(), QStringLiteral("\u6f22") + smile + replacement + replacement);
        QCOMPARE(changes.count(), 1);
    }
    void anEmptyClipboardCantBePasted()
    {
        CodeMax editor;
        QApplication::clipboard()->setText(QStringLiteral("x"));
        QVERIFY(editor.CanPaste());
        editor.setReadOnly(true);
        QVERIFY(!editor.CanPaste());
        editor.setReadOnly(false);
        QApplication::clipboard()->clear();
        QVERIFY(!editor.CanPaste());
    }
    void randomWritesKeepTextAndHistory()
    {
        // Neighbouring texts share starts and ends that fall into characters and line ends.
        const QStringList pieces{QStringLiteral("\r\n"),
                                 QStringLiteral("\n"),
                                 QStringLiteral("\r"),
                                 QStringLiteral("\u00e9"),
                                 QStringLiteral("\u00e8"),
                                 smile,
                                 QString::fromUcs4(U"\U0001F601", 1),
                                 QStringLiteral("a"),
                                 QStringLiteral("\u6f22")};
        quint32 state = 4711;
        const auto random = [&state](int bound) {
            state = state * 1664525u + 1013904223u;
            return int((state >> 8) % quint32(bound));
        };
        CodeMax editor;
        QStringList texts{QString()};
        for (int step = 0; step < 300; ++step) {
            QString text;
            for (int i = random(7); i >= 0; --i)
                text += pieces[random(int(pieces.size()))];
            editor.setText(text);
            QCOMPARE(editor.Text(), text);
            if (text != texts.last()) texts << text;
        }
        for (int i = int(texts.size()) - 2; i >= 0; --i) {
            editor.ExecuteCmd(codemax::undo);
            QCOMPARE(editor.Text(), texts[i]);
        }
        QVERIFY(!editor.CanUndo());
        for (int i = 1; i < texts.size(); ++i) {
            editor.ExecuteCmd(codemax::redo);
            QCOMPARE(editor.Text(), texts[i]);
        }
    }
    void everyOffsetIsFoundAgain()
    {
        const QString text =
            QStringLiteral("a\u00e9\r\n") + smile + QStringLiteral("\n\r\u6f22") + smile + QStringLiteral("z\r\n");
        CodeMax editor;
        editor.setText(text);
        for (int i = 0; i <= text.size(); ++i) {
            const bool inside = i > 0 && i < text.size() && text[i].isLowSurrogate();
            editor.setSelStart(0);
            editor.setSelEnd(i);
            QCOMPARE(editor.SelEnd(), inside ? i - 1 : i);
            QCOMPARE(editor.SelText(), text.left(inside ? i - 1 : i));
        }
    }
};

QTEST_MAIN(tst_codeMaxInput)
#include "tst_codeMaxInput.moc"
