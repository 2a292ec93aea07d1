// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/editing/RangeEdits.h"
#include "tests/engine/editing/EditingFixture.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>

/// Runs the cases of `tests/data/editing/*.txt`:
///
///     == What a person does
///     <p>a|b</p>
///     -- enter; type x
///     <p>a</p><p>x|b</p>
///     kinds 2 0
///
/// Actions: `type TEXT` (`\n`, `\uXXXX`, a trailing `_` for a blank at the end), `enter`, `break`, `backspace`, `delete`,
/// `word-backspace`, `word-delete`, `delete-selection`, `select-all`, `left`, `right`, `word-left`, `word-right`,
/// `cut`, `paste-html HTML`, `paste-text TEXT` (from another program), `copy-paste` (at the page's end),
/// `paste HTML`, `write TEXT` (through a range that stands where the selection does), `block-start`, `block-end`, `start`, `end`, `select-word`, `select-block`, `mode 0|1|2`, `N*ACTION`. `kinds` is the kinds
/// of the records, in order. Names of elements are written in small letters for pleasure. `\` at a line's end joins it
/// with the next.
using namespace ranges;
using editing::Unit;

namespace {

QString unescaped(QString text)
{
    for (auto at = text.indexOf("\\u"); at >= 0; at = text.indexOf("\\u", at + 1))
        text.replace(at, 6, QChar(text.mid(at + 2, 4).toUShort(nullptr, 16)));
    text.replace("\\n", "\n");
    if (text.endsWith('_')) text.chop(1);
    return text;
}

bool moveCaret(Editing &e, const QString &action)
{
    const Position p = e.selection.focus();
    if (!p) return false;
    const Content content = Movement::contentFor(p);
    const Movement movement(content);
    if (action == "left") e.selection.setCaret(movement.previousCharacter(p));
    else if (action == "right") e.selection.setCaret(movement.nextCharacter(p));
    else if (action == "word-left") e.selection.setCaret(movement.previousWord(p));
    else if (action == "word-right") e.selection.setCaret(movement.nextWord(p));
    else if (action == "block-start") e.selection.setCaret(movement.startOfBlock(p));
    else if (action == "block-end") e.selection.setCaret(movement.endOfBlock(p));
    else if (action == "start") e.selection.setCaret(movement.startOfDocument());
    else if (action == "end") e.selection.setCaret(movement.endOfDocument());
    else if (action == "select-word") {
        const Span span = movement.wordAt(p);
        e.selection.set(span.start, span.end);
    } else if (action == "select-block") {
        const Span span = movement.blockAt(p);
        e.selection.set(span.start, span.end);
    } else return false;
    return true;
}

/// What a script writes over a range that stands where the selection does. A refusal changes nothing.
template <class Write> void writeRange(Editing &e, Write write)
{
    TextRange range(e.selection, e.selection.span());
    try {
        write(range);
    } catch (const base::Error &) {
    }
}

bool act(Editing &e, const QString &action)
{
    if (action.startsWith("type ")) {
        const QString text = unescaped(action.mid(5));
        for (int i = 0; i < text.size(); ++i) { // as keys give it
            const bool pair = text[i].isHighSurrogate() && i + 1 < text.size();
            e.editor.insertText(text.mid(i, pair ? 2 : 1));
            if (pair) ++i;
        }
    } else if (action.startsWith("commit ")) e.editor.insertText(unescaped(action.mid(7)));
    else if (action.startsWith("paste ")) writeRange(e, [&](TextRange &range) {
        editing::RangeEdits(e.editor, range).paste(range, unescaped(action.mid(6)));
    });
    else if (action.startsWith("write ")) writeRange(e, [&](TextRange &range) {
        editing::RangeEdits(e.editor, range).write(range, unescaped(action.mid(6)));
    });
    else if (action.startsWith("paste-html ")) e.editor.paste({unescaped(action.mid(11)), {}});
    else if (action.startsWith("paste-text ")) e.editor.paste({{}, unescaped(action.mid(11))});
    else if (action == "cut") e.editor.cut();
    else if (action == "copy-paste") { // to the end of the page
        const editing::Snippet snippet = e.editor.copied();
        moveCaret(e, "end");
        e.editor.paste(snippet);
    } else if (action == "enter") e.editor.insertParagraph();
    else if (action == "break") e.editor.insertLineBreak();
    else if (action == "backspace") e.editor.deleteBackward();
    else if (action == "delete") e.editor.deleteForward();
    else if (action == "word-backspace") e.editor.deleteBackward(Unit::Word);
    else if (action == "word-delete") e.editor.deleteForward(Unit::Word);
    else if (action == "delete-selection") e.editor.deleteSelection();
    else if (action == "select-all") e.editor.selectAll();
    else if (action.startsWith("mode ")) e.document->setEditMode(dom::EditMode(action.mid(5).toInt()));
    else return moveCaret(e, action);
    return true;
}

bool run(Editing &e, const QString &line)
{
    for (QString action : line.split(QRegularExpression(R"(;\s*)"))) {
        int times = 1;
        static const QRegularExpression repeat(R"(^(\d+)\*(.*)$)");
        if (const auto match = repeat.match(action); match.hasMatch()) {
            times = match.captured(1).toInt();
            action = match.captured(2);
        }
        for (int i = 0; i < times; ++i)
            if (!act(e, action)) return false;
    }
    return true;
}

QString capitals(const QString &html)
{
    static const QRegularExpression tag(R"(</?[a-zA-Z][a-zA-Z0-9]*)");
    QString out;
    qsizetype from = 0;
    for (auto all = tag.globalMatch(html); all.hasNext();) {
        const auto match = all.next();
        out += html.mid(from, match.capturedStart() - from) + match.captured().toUpper();
        from = match.capturedEnd();
    }
    return out + html.mid(from);
}

} // namespace

class tst_editing_cases : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void holds_data();
    void holds();
};

void tst_editing_cases::holds_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("kinds");
    const QDir folder(SOURCE_DIR "/tests/data/editing");
    int count = 0;
    for (const QString &name : folder.entryList({"*.txt"}, QDir::Files)) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QFile::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll()).replace("\\\n", "");
        for (const QString &part : text.split(QRegularExpression("^== ", QRegularExpression::MultilineOption)).mid(1)) {
            QStringList lines = part.trimmed().split('\n');
            const QString title = lines.takeFirst();
            QString before, action, after, kinds;
            for (const QString &line : lines) {
                if (line.startsWith("-- ")) action = line.mid(3);
                else if (line.startsWith("kinds ")) kinds = line.mid(6);
                else if (action.isEmpty()) before += (before.isEmpty() ? "" : "\n") + line;
                else after += (after.isEmpty() ? "" : "\n") + line;
            }
            QVERIFY2(!before.isNull() && !action.isEmpty() && !after.isNull(), qPrintable(title));
            QTest::newRow(qPrintable(name + ": " + title)) << before << action << after << kinds;
            ++count;
        }
    }
    QVERIFY(count >= 120);
}

void tst_editing_cases::holds()
{
    QFETCH(QString, before);
    QFETCH(QString, action);
    QFETCH(QString, after);
    QFETCH(QString, kinds);
    const Marks marks(before == "empty|" ? "|" : before);
    Editing e(marks);
    QVERIFY(e.placed);
    const QString first = e.dump();
    QVERIFY2(run(e, action), qPrintable("unknown action in " + action));
    QCOMPARE(e.marked().remove('\r'), capitals(after));
    if (!kinds.isEmpty()) QCOMPARE(QString::fromLatin1(e.kinds()), kinds == "none" ? QString() : kinds);
    const QString broken = e.broken(marks.page(), first);
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

QTEST_GUILESS_MAIN(tst_editing_cases)
#include "tst_editing_cases.moc"
