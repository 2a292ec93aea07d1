// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"
#include "engine/dom/CharacterData.h"
#include "engine/surface/LoadedDocument.h"
#include "platform/FileHelper.h"
#include "support/SettingsStore.h"
#include "tests/control/ShownControl.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

/// Whatever a host hands in: the control goes on, and no word of it is lost, neither in the store nor in the page, nor
/// in what an edited page is saved as.
class tst_badInput : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();

    void documentsKeepTheirWords_data() { inputs(); }
    void documentsKeepTheirWords();
    void bodiesKeepTheirWords_data() { inputs(); }
    void bodiesKeepTheirWords();
    void bodyModeKeepsTheWords_data() { inputs(); }
    void bodyModeKeepsTheWords();
    void theSourceViewKeepsTheWords_data() { inputs(); }
    void theSourceViewKeepsTheWords();
    void unreadableCharactersAreReplaced();
    void filesOfAnyBytesAreKept_data();
    void filesOfAnyBytesAreKept();
    void emptyTextsAreDocuments();

private:
    static void inputs();
    QTemporaryDir mSettings;
};

namespace {

QString word(int number)
{
    return QStringLiteral("w%1").arg(number, 6, 10, QChar(u'0'));
}

/// `count` times the text, "%1" in it a word of its own.
QString repeated(const QString &text, int count)
{
    QString result;
    for (int i = 0; i < count; ++i)
        result += QString(text).replace(QLatin1String("%1"), word(i));
    return result;
}

/// The words of a text in their order, each once.
QStringList words(const QString &text)
{
    static const QRegularExpression word(QStringLiteral("w\\d{6}"));
    QStringList found;
    QSet<QString> seen;
    for (auto it = word.globalMatch(text); it.hasNext();) {
        const QString next = it.next().captured();
        if (seen.contains(next)) continue;
        seen.insert(next);
        found << next;
    }
    return found;
}

/// Texts, comments and values of the page that is shown.
QString contentOf(const dom::Document &document)
{
    QString content;
    for (const dom::Node *node = document.next(); node; node = node->next()) {
        if (const dom::Element *element = node->asElement()) {
            for (const dom::Attribute &attribute : element->attributeList())
                content += attribute.name.text() + u' ' + attribute.value + u'\n';
        } else {
            content += node->nodeValue() + u'\n';
        }
    }
    return content;
}

struct Shown : ShownControl
{
    /// Types a letter at the start of the page, so that the surface is ahead of the store.
    void type()
    {
        control.VisualEditControl()->takeFocus();
        QTest::keyClick(control.VisualEditControl(), Qt::Key_Home, Qt::ControlModifier);
        QTest::keyClick(control.VisualEditControl(), 'q');
    }
};

} // namespace

void tst_badInput::initTestCase()
{
    support::SettingsStore::instance().setFolder(mSettings.path());
}

void tst_badInput::inputs()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("deep nesting") << repeated("<div>%1", 100000);
    QTest::newRow("deep nesting, closed") << repeated("<div>", 100000) + "w000001" + repeated("</div>", 100000) + "w000002";
    QTest::newRow("deep inline nesting") << repeated("<span>%1", 100000);
    QTest::newRow("deep lists") << repeated("<ul><li>%1", 10000);
    QTest::newRow("deep tables") << repeated("<table><tr><td>%1", 2000);
    QTest::newRow("a long attribute") << "<p title=\"w000001" + QString(10000000, u'x') + "w000002\">w000003</p>";
    QTest::newRow("a long word") << "<p>w000001" + QString(1000000, u'x') + "w000002</p>";
    QTest::newRow("many attributes") << "<p" + repeated(" %1=a", 20000) + ">w900000</p>w900001";
    QTest::newRow("unclosed formatting") << repeated("<p><font size=1>%1", 5000);
    QTest::newRow("unclosed formatting of many kinds") << repeated("<p><b><i><u><a href=#>%1", 4000);
    QTest::newRow("everything unclosed") << "<html><head><title>w000001</title><body><table><tr><td>w000002<ul><li>w000003"
                                            "<select><option>w000004<b title=\"w000005";
    QTest::newRow("an unclosed comment") << "<p>w000001<!-- w000002 <p>w000003";
    QTest::newRow("an unclosed title") << "<title>w000001<p>w000002";
    QTest::newRow("an unclosed script") << "<p>w000001<script>w000002 <p>w000003";
    QTest::newRow("an unclosed style") << "<p>w000001<style>w000002 <p>w000003";
    QTest::newRow("an unclosed text area") << "<p>w000001<textarea>w000002 <p>w000003";
    QTest::newRow("plaintext") << "<p>w000001<plaintext>w000002</plaintext><p>w000003";
    QTest::newRow("nothing but ends") << repeated("</p></div></table></body></html>%1", 2000);
    QTest::newRow("two bodies") << "<body>w000002</body><body>w000004</body>w000005";
    QTest::newRow("text between rows") << "<table>w000001<tr>w000002<td>w000003</td>w000004</tr>w000005</table>w000006";
    QTest::newRow("instructions") << "<?w000001 x?><!w000002><p>w000003<![CDATA[w000004]]></p></b>";
    QTest::newRow("odd names") << "<p <b=w000001 \"w000002 '=w000003 =w000004>w000005</p>";
    QTest::newRow("half a reference in front of a declaration") << repeated("<p>a&<!--%1-->b&#<!DOCTYPE %1>", 50);
    QTest::newRow("many entities") << repeated("&amp;&bogus;&#x110000;&#0;&#xD800;%1", 2000);
}

void tst_badInput::documentsKeepTheirWords()
{
    QFETCH(QString, text);
    const QStringList expected = words(text);
    Shown shown;
    shown.control.setDocumentHTML(text);
    shown.settle();
    QVERIFY(shown.control.DocumentHTML() == text);
    QCOMPARE(words(contentOf(*shown.control.DOM())).size(), expected.size());
    shown.type();
    const QString saved = shown.control.DocumentHTML();
    QVERIFY(shown.control.Dirty());
    QVERIFY(saved != text);
    QStringList kept = words(saved), all = expected;
    kept.sort();
    all.sort();
    QVERIFY(kept == all);
    // And again, from what was saved.
    shown.control.setDocumentHTML(saved);
    shown.settle();
    QVERIFY(shown.control.DocumentHTML() == saved);
    QCOMPARE(words(contentOf(*shown.control.DOM())).size(), expected.size());
}

void tst_badInput::bodiesKeepTheirWords()
{
    QFETCH(QString, text);
    QStringList expected = words(text);
    Shown shown;
    shown.control.setBodyText(text);
    shown.settle();
    QStringList kept = words(shown.control.DocumentHTML());
    QVERIFY(kept == expected);
    kept = words(contentOf(*shown.control.DOM()));
    kept.sort();
    expected.sort();
    QVERIFY(kept == expected);
}

void tst_badInput::bodyModeKeepsTheWords()
{
    QFETCH(QString, text);
    Shown shown;
    shown.control.setBodyMode(true);
    shown.control.setDocumentHTML(text);
    shown.settle();
    // A text with tags of a body is cut down to the body, as a person expects who hands in a page.
    const QString stored = shown.control.DocumentHTML();
    QStringList expected = words(stored);
    if (!text.contains(QLatin1String("</body>"))) QVERIFY(expected == words(text));
    shown.type();
    QStringList kept = words(shown.control.BodyText());
    expected.sort();
    kept.sort();
    QVERIFY(kept == expected);
}

void tst_badInput::theSourceViewKeepsTheWords()
{
    QFETCH(QString, text);
    QStringList expected = words(text);
    Shown shown;
    shown.control.setEditView(int(EditViewEnum::hvSourceEdit));
    shown.control.setDocumentHTML(text);
    shown.settle();
    QVERIFY(shown.control.DocumentHTML() == text);
    shown.control.setEditView(int(EditViewEnum::hvVisualEdit));
    shown.settle();
    QVERIFY(shown.control.DocumentHTML() == text);
    shown.type();
    shown.control.setEditView(int(EditViewEnum::hvSourceEdit));
    shown.settle();
    QStringList kept = words(shown.control.DocumentHTML());
    kept.sort();
    expected.sort();
    QVERIFY(kept == expected);
    shown.control.setEditView(int(EditViewEnum::hvPreview));
    shown.settle();
    QCOMPARE(words(contentOf(*shown.control.DOM())).size(), expected.size());
}

void tst_badInput::unreadableCharactersAreReplaced()
{
    const QChar bad(QChar::ReplacementCharacter), high(0xD83D), low(0xDE00);
    const QString text = QString("<p>a") + QChar(0) + "b" + high + "c" + low + "d" + high + low + "</p>";
    const QString clean = QString("<p>a") + bad + "b" + bad + "c" + bad + "d" + high + low + "</p>";
    for (const auto view : {EditViewEnum::hvVisualEdit, EditViewEnum::hvSourceEdit, EditViewEnum::hvPreview}) {
        Shown shown;
        shown.control.setEditView(int(view));
        shown.control.setDocumentHTML(text);
        shown.settle();
        QCOMPARE(shown.control.DocumentHTML(), clean);
        shown.control.setEditView(int(EditViewEnum::hvVisualEdit));
        shown.settle();
        shown.type();
        QVERIFY(shown.control.DocumentHTML().contains(clean.mid(3, clean.size() - 7)));
        shown.control.setBodyText(text);
        shown.settle();
        QCOMPARE(shown.control.BodyText(), clean);
    }
}

void tst_badInput::filesOfAnyBytesAreKept_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("invalid UTF-8") << QByteArray("<p>w000001\xFF\xC3(\xE2\x82w000002</p>");
    QTest::newRow("cut off UTF-8") << QByteArray("<p>w000001\xC3\xA9\xE2\x82");
    QTest::newRow("UTF-8 with a mark, invalid") << QByteArray("\xEF\xBB\xBF<p>w000001\xFFw000002\r\n</p>");
    QTest::newRow("UTF-8 with a mark, CR LF") << QByteArray("\xEF\xBB\xBF<p>w000001\xC3\xA9\r\nw000002\r\n</p>");
    QTest::newRow("half a unit") << QByteArray("\xFF\xFE<\0p\0>\0w\0", 10) + QByteArray("x");
    QTest::newRow("NULs") << QByteArray("<p>w000001\0\0w000002</p>", 24);
    QByteArray all;
    for (int i = 0; i < 256; ++i)
        all += char(i);
    QTest::newRow("every byte") << all + "w000001" + all;
    QTest::newRow("carriage returns") << QByteArray("<p>w000001\r<p>w000002\r");
    QTest::newRow("mixed line ends") << QByteArray("<p>w000001\r\n<p>w000002\n\n<p>w000003\r");
    QTest::newRow("a legacy encoding") << QByteArray("<meta charset=koi8-r><p>w000001\xC1\xC2</p>");
}

void tst_badInput::filesOfAnyBytesAreKept()
{
    QFETCH(QByteArray, bytes);
    QTemporaryDir folder;
    const QString name = folder.filePath("page.html");
    platform::FileHelper::writeBytes(name, bytes);
    Shown shown;
    shown.control.LoadFile(name);
    shown.settle();
    const QString text = shown.control.DocumentHTML();
    QCOMPARE(words(text), words(platform::FileHelper::readText(name).text));
    bool Cancel = false;
    shown.control.SaveFile(Cancel, false); // nobody has edited it
    QCOMPARE(platform::FileHelper::readBytes(name), bytes);
    shown.type();
    const QString edited = shown.control.DocumentHTML();
    shown.control.SaveFile(Cancel, false);
    const platform::DecodedText saved = platform::FileHelper::readText(name);
    QCOMPARE(words(saved.text), words(edited));
    QCOMPARE(words(edited), words(text));
    const platform::FileFormat before = platform::decodeFileText(bytes).format;
    QCOMPARE(saved.format.byteOrderMark, before.byteOrderMark);
    QCOMPARE(saved.format.encoding, before.encoding);
}

void tst_badInput::emptyTextsAreDocuments()
{
    for (const auto view : {EditViewEnum::hvVisualEdit, EditViewEnum::hvSourceEdit, EditViewEnum::hvPreview}) {
        Shown shown;
        shown.control.setEditView(int(view));
        for (const bool bodyMode : {false, true}) {
            shown.control.setBodyMode(bodyMode);
            shown.control.setDocumentHTML("<p>x");
            shown.settle();
            shown.control.setDocumentHTML(QString());
            shown.settle();
            QCOMPARE(shown.control.DocumentHTML(), QString());
            QCOMPARE(shown.control.BodyText(), QString());
        }
        shown.control.setEditView(int(EditViewEnum::hvVisualEdit));
        shown.settle();
        QVERIFY(shown.control.DOM()->body());
        QCOMPARE(shown.control.DOM()->body()->innerText().trimmed(), QString());
        shown.type();
        QVERIFY(shown.control.BodyText().contains(u'q'));
    }
}

QTEST_MAIN(tst_badInput)
#include "tst_badInput.moc"
