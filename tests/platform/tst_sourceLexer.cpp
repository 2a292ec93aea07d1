// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMax.h"
#include "platform/SourceLexer.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

/// A letter for each style: text, comment, delimiter, string, element, attribute, entity, text of a tag.
QByteArray map(const QByteArray &styles)
{
    QByteArray letters;
    for (const char style : styles)
        letters += ".cdseanv"[int(style)];
    return letters;
}

QByteArray coloured(const QByteArray &text)
{
    int state = 0;
    std::vector<int> lines;
    return map(SourceLexer::colour(text, state, lines));
}

/// What the editor shows after it has been painted.
QByteArray shown(CodeMax &editor)
{
    editor.SendScintilla(CodeMax::SCI_COLOURISE, 0UL, -1L);
    QByteArray styles;
    const long length = editor.SendScintilla(CodeMax::SCI_GETLENGTH);
    for (long i = 0; i < length; ++i)
        styles += char(editor.SendScintilla(CodeMax::SCI_GETSTYLEAT, static_cast<unsigned long>(i)));
    return styles;
}

/// Pieces that meet in odd ways.
QString piece(QRandomGenerator &random)
{
    static const char *const pieces[] = {
        "&",     "<",  "!",        "?",       "%",    ">",    "/",       "-",     "=",      "\"",        "'",   ";",
        "#",     "x",  " ",        "\r\n",    "\n",   "\r",   "[",       "]",     "{",      "}",         "\\",  "*",
        "<!--",  "-->", "<script>", "</script>", "<style>", "</style>", "<?php",   "<%",    "%>",     "&amp;",     "<p ", "a=b",
        "<!DOC", "//", "/*",       "*/",      "é",    "😀",   "<![CDATA[", "]]>", "<%@",    "language=", "vbscript", "rem",
        "<script language=python>", "<script language=vbscript>", "{{", "{%", "#}", "<xml>", "$", "`"};
    return QString::fromUtf8(pieces[random.bounded(int(std::size(pieces)))]);
}

} // namespace

class tst_sourceLexer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void classesOfText_data();
    void classesOfText();
    void anyTextMayBeTyped_data();
    void anyTextMayBeTyped();
    void colouringBeginsAnewAtAnyLine();
    void editingColoursAsWritingAnewDoes();
};

void tst_sourceLexer::classesOfText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *text, const char *expected) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(expected);
    };
    row("tag", "a<p>b</p>", ".ded.dded");
    row("attributes", "<a href=\"x>\" b='\"' c>", "devaaaadssssvadsssvad");
    row("bare value", "<a b=c/d e>", "devadvvvvad");
    row("an end in itself", "<br/>a", "deedd.");
    row("quotes only behind an equals sign", "<a b\"c>\"", "devaaad.");
    row("value in the next line", "<a b=\n\"c\">", "devadvsssd");
    row("value over lines", "<a b=\"\nc\">", "devadssssd");
    row("comment", "<!--a-->b", "cccccccc.");
    row("comment over lines", "<!--\n<p>\n-->b", "cccccccccccc.");
    row("comment closed at once", "<!-->a<!--->b", "ccccc.cccccc.");
    row("document type", "<!DOCTYPE a \"b\">c", "deeeeeeeevavsssd.");
    row("instruction", "<?xml a?>b", "deeeevaad.");
    row("reference", "&amp;&#1;&#xA;", "nnnnnnnnnnnnnn");
    row("no reference", "a&b &; &#; &&lt;", "............nnnn");
    row("reference in a bare value", "<a b=&lt;c>", "devadnnnnvd");
    row("no tag", "a< b<3", "......");
    row("unfinished", "1 < 2 <> < p", "............");
    row("one tag in front of another", "<a <b>c", "devded.");
    row("script", "<script>a<b</script>c", "deeeeeed...ddeeeeeed.");
    row("script's texts", "<script>'<p>'/*\n*/\"\\\"\"//c\n</script>", "deeeeeedssssscccccssssccc.ddeeeeeed");
    row("script's end in a text", "<script>'</script>c", "deeeeeedsddeeeeeed.");
    row("style", "<STYLE>a//b/*c*/</Style>", "deeeeed....ccccc" "ddeeeeed");
    row("entity with a declaration behind it", "&<!", ".de");
    row("reference with a comment behind it", "a&b<!--c-->d", "...cccccccc.");
}

void tst_sourceLexer::classesOfText()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QCOMPARE(coloured(text), expected);
}

void tst_sourceLexer::anyTextMayBeTyped_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"&<!", "a&b<!--c-->", "AT&<!--x-->", "&#<!DOCTYPE", "&x<![CDATA[", "&<?x", "&<%", "<!&<!", "'&<!"})
        QTest::newRow(text) << QString::fromUtf8(text);
}

/// Letter by letter, painted after each.
void tst_sourceLexer::anyTextMayBeTyped()
{
    QFETCH(QString, text);
    CodeMax editor;
    editor.show();
    for (const QChar c : text) {
        QTest::keyClicks(&editor, QString(c));
        editor.grab();
    }
    QCOMPARE(editor.Text(), text);
    QCOMPARE(map(shown(editor)), coloured(text.toUtf8()));
}

void tst_sourceLexer::colouringBeginsAnewAtAnyLine()
{
    QRandomGenerator random(5);
    for (int round = 0; round < 300; ++round) {
        QByteArray text;
        for (int i = 0; i < 40; ++i)
            text += piece(random).toUtf8();
        int state = 0;
        std::vector<int> lines;
        const QByteArray whole = SourceLexer::colour(text, state, lines);
        // Line by line, each from the state that the one above has left.
        QByteArray parts;
        qsizetype from = 0, line = 0;
        int before = 0;
        for (qsizetype i = 0; i < text.size(); ++i) {
            const bool ends = text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'));
            if (!ends) continue;
            std::vector<int> ignored;
            parts += SourceLexer::colour(text.mid(from, i + 1 - from), before, ignored);
            QCOMPARE(before, lines[size_t(line++)]);
            from = i + 1;
        }
        std::vector<int> ignored;
        parts += SourceLexer::colour(text.mid(from), before, ignored);
        QVERIFY2(parts == whole, text.constData());
        QCOMPARE(before, state);
        QCOMPARE(size_t(line), lines.size());
    }
}

void tst_sourceLexer::editingColoursAsWritingAnewDoes()
{
    const auto seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    CodeMax editor;
    editor.show();
    for (int edit = 0; edit < 400; ++edit) {
        const long length = editor.SendScintilla(CodeMax::SCI_GETLENGTH);
        const long from = random.bounded(int(length) + 1);
        editor.SendScintilla(CodeMax::SCI_SETSEL, static_cast<unsigned long>(from), from);
        if (length > 400 || (length > 0 && random.bounded(4) == 0))
            for (int i = random.bounded(20); i > 0; --i)
                editor.SendScintilla(CodeMax::SCI_CLEAR);
        else
            editor.SendScintilla(CodeMax::SCI_REPLACESEL, piece(random).toUtf8().constData());
        if (edit % 3 == 0) editor.grab();
        if (edit % 5) continue;
        QByteArray text(editor.SendScintilla(CodeMax::SCI_GETLENGTH) + 1, '\0');
        editor.SendScintilla(CodeMax::SCI_GETTEXT, static_cast<unsigned long>(text.size()), text.data());
        text.chop(1); // its end mark; bytes, since an edit may have halved a character
        QVERIFY2(map(shown(editor)) == coloured(text), text.constData());
    }
}

QTEST_MAIN(tst_sourceLexer)
#include "tst_sourceLexer.moc"
