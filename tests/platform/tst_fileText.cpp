// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileText.h"
#include "platform/HtmlScan.h"
#include "platform/TextEncoding.h"

#include <QTest>

using namespace platform;

namespace {

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

FileFormat formatOf(const QString &encoding, bool mark = false)
{
    FileFormat format;
    format.encoding = encoding;
    format.byteOrderMark = mark;
    return format;
}

} // namespace

class tst_fileText : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void encodingIsFound_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &bytes, const char *encoding, const QString &text) {
            QTest::newRow(name) << bytes << QString(encoding) << text;
        };
        row("empty", "", "UTF-8", "");
        row("plain", "abc", "UTF-8", "abc");
        row("valid UTF-8", "\xC3\xA9", "UTF-8", u("é"));
        row("no UTF-8", "caf\xE9 \x80", "windows-1252", u("café €"));
        row("mark of UTF-8", "\xEF\xBB\xBF\xC3\xA9", "UTF-8", u("é"));
        row("mark outweighs meta", "\xEF\xBB\xBF<meta charset=windows-1251>\xC3\xA9", "UTF-8",
            u("<meta charset=windows-1251>é"));
        row("UTF-16 little", QByteArray("\xFF\xFE\xE9\0A\0", 6), "UTF-16LE", u("éA"));
        row("UTF-16 big", QByteArray("\xFE\xFF\0\xE9\0A", 6), "UTF-16BE", u("éA"));
        row("UTF-16 without a mark", QByteArray("<\0p\0>\0", 6), "UTF-16LE", "<p>");
        row("UTF-16 cut off", QByteArray("\xFF\xFE\x41\0\x42", 5), "UTF-16LE", u("A\uFFFD"));
        row("meta", "<meta charset=\"windows-1251\">\xE9", "windows-1251", u("<meta charset=\"windows-1251\">й"));
        row("meta without quotes", "<META CHARSET=koi8-r/>\xC1", "windows-1252", u("<META CHARSET=koi8-r/>Á"));
        row("http-equiv", "<meta http-equiv='Content-Type' content='text/html; charset=iso-8859-2'>\xB1", "ISO-8859-2",
            u("<meta http-equiv='Content-Type' content='text/html; charset=iso-8859-2'>ą"));
        row("http-equiv behind", "<meta content=\"text/html;charset=utf-8\" http-equiv=content-type>\xE9", "UTF-8",
            u("<meta content=\"text/html;charset=utf-8\" http-equiv=content-type>\uFFFD"));
        row("content of another meta", "<meta name=x content='charset=koi8-r'>\xE9", "windows-1252",
            u("<meta name=x content='charset=koi8-r'>é"));
        row("meta in a comment", "<!-- <meta charset=koi8-r> -->\xE9", "windows-1252",
            u("<!-- <meta charset=koi8-r> -->é"));
        row("latin1 means windows", "<meta charset=ISO-8859-1>\x93", "windows-1252", u("<meta charset=ISO-8859-1>“"));
        row("a lie about UTF-16", "<meta charset=utf-16>\xC3\xA9", "UTF-8", u("<meta charset=utf-16>é"));
        row("unknown label", "<meta charset=none><meta charset=koi8-r>\xC1", "KOI8-R",
            u("<meta charset=none><meta charset=koi8-r>а"));
        row("too far down", QByteArray(1024, ' ') + "<meta charset=koi8-r>\xE9", "windows-1252",
            QString(1024, ' ') + u("<meta charset=koi8-r>é"));
        row("just in reach", QByteArray(1000, ' ') + "<meta charset=koi8-r>\xC1", "KOI8-R",
            QString(1000, ' ') + u("<meta charset=koi8-r>а"));
        row("zero character", QByteArray("a\0b", 3), "UTF-8",
            u("a\uFFFD"
              "b"));
    }
    void encodingIsFound()
    {
        QFETCH(QByteArray, bytes);
        const DecodedText decoded = decodeFileText(bytes);
        QTEST(decoded.format.encoding, "encoding");
        QTEST(decoded.text, "text");
    }

    void legacyEncodingsGoBothWays_data()
    {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *label, const QByteArray &bytes, const char *text) {
            QTest::newRow(label) << QString(label) << bytes << u(text);
        };
        row("windows-1250", "\x8A\xF8", "Šř");
        row("windows-1251", "\xCF\xF0", "Пр");
        row("windows-1252", "\x80\x93\xE9", "€“é");
        row("windows-1253", "\xE1\xE2", "αβ");
        row("windows-1254", "\xFD\xFE", "ış");
        row("windows-1255", "\xE0\xE1", "אב");
        row("windows-1256", "\xC7\xC8", "اب");
        row("windows-1257", "\xE0\xE8", "ąč");
        row("windows-1258", "\xFE\xD0", "₫Đ");
        row("iso-8859-2", "\xB1\xE6", "ąć");
        row("iso-8859-3", "\xA1\xFD", "Ħŭ");
        row("iso-8859-4", "\xA2\xBF", "ĸŋ");
        row("iso-8859-5", "\xBF\xE0", "Пр");
        row("iso-8859-6", "\xC7\xC8", "اب");
        row("iso-8859-7", "\xE1\xE2", "αβ");
        row("iso-8859-8", "\xE0\xE1", "אב");
        row("iso-8859-9", "\xFD\xFE", "ış");
        row("iso-8859-10", "\xA1\xBD", "Ą―");
        row("iso-8859-13", "\xE0\xE8", "ąč");
        row("iso-8859-14", "\xD0\xF0", "Ŵŵ");
        row("iso-8859-15", "\xA4\xBD", "€œ");
        row("iso-8859-16", "\xAA\xFE", "Șț");
        row("koi8-r", "\xF0\xD2", "Пр");
        row("koi8-u", "\xA4\xA7", "єї");
        row("ibm866", "\x8F\xE0", "Пр");
        row("macintosh", "\x8E\xD2", "é“");
        row("shift_jis", "\x93\xFA\x96\x7B\x5C", "日本\\");
        row("euc-jp", "\xC6\xFC\xCB\xDC", "日本");
        row("iso-2022-jp", "\x1B$BF|K\\\x1B(B", "日本");
        row("gb2312", "\xD6\xD0\xCE\xC4", "中文");
        row("gb18030", "\xD6\xD0\x81\x30\x81\x34", "中\xC2\x84");
        row("big5", "\xA4\xA4\xA4\xE5", "中文");
        row("euc-kr", "\xC7\xD1\xB1\xDB", "한글");
    }
    void legacyEncodingsGoBothWays()
    {
        QFETCH(QString, label);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        const auto name = encoding::byLabel(' ' + label.toUpper() + ' ');
        QVERIFY(name);
        const encoding::Decoded decoded = encoding::decode(bytes, *name);
        QCOMPARE(decoded.text, text);
        QVERIFY(!decoded.lossy);
        QCOMPARE(encoding::encode(text, *name), std::optional<QByteArray>(bytes));
    }
    void bytesCutOffAreNotDropped()
    {
        const encoding::Decoded decoded = encoding::decode("A\x93", "Shift_JIS");
        QVERIFY(decoded.lossy);
        QCOMPARE(decoded.text, u("A\uFFFD"));
        QVERIFY(encoding::decode("A\xC3", "UTF-8").lossy);
    }
    void everyByteOfWindows1252Survives()
    {
        QByteArray all;
        for (int i = 1; i < 256; ++i)
            all += char(i);
        const encoding::Decoded decoded = encoding::decode(all, "windows-1252");
        QCOMPARE(encoding::encode(decoded.text, "windows-1252"), std::optional<QByteArray>(all));
    }

    void untouchedFilesComeBackByteByByte_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("UTF-8") << QByteArray("<p>\xC3\xA9</p>\n");
        QTest::newRow("mark") << QByteArray("\xEF\xBB\xBF<p>\xC3\xA9</p>\r\n");
        QTest::newRow("windows") << QByteArray("<p>\xE9</p>\r<p>\r");
        QTest::newRow("meta") << QByteArray("<meta charset=shift_jis>\r\n\x93\xFA\r\n");
        QTest::newRow("UTF-16") << QByteArray("\xFE\xFF\0<\0p\0>\0\n", 10);
        QTest::newRow("UTF-16 without a mark") << QByteArray("<\0p\0>\0\n\0", 8);
        QTest::newRow("mixed") << QByteArray("a\nb\r\nc\rd\n");
        QTest::newRow("no line end") << QByteArray("a");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("only a mark") << QByteArray("\xEF\xBB\xBF");
    }
    void untouchedFilesComeBackByteByByte()
    {
        QFETCH(QByteArray, bytes);
        const DecodedText decoded = decodeFileText(bytes);
        const EncodedText encoded = encodeFileText(decoded.text, decoded.format);
        QCOMPARE(encoded.bytes, bytes);
        QCOMPARE(encoded.format, decoded.format);
        QCOMPARE(encoded.message, "");
    }

    void lineEndsAreThoseOfTheFile()
    {
        const auto rewritten = [](const QByteArray &file, const QString &text) {
            return encodeFileText(text, decodeFileText(file).format).bytes;
        };
        QCOMPARE(rewritten("a\nb\n", "x\r\ny\r\n"), "x\ny\n");
        QCOMPARE(rewritten("a\r\nb\r\n", "x\ny\r\n"), "x\r\ny\r\n");
        QCOMPARE(rewritten("a\rb\r", "x\r\ny\n"), "x\ry\r");
        QCOMPARE(rewritten("a\nb\nc\r\n", "x\r\ny\r\n"), "x\ny\n");
        QCOMPARE(rewritten("a\r\nb\r\nc\n", "x\r\ny\r\n"), "x\r\ny\r\n");
        QCOMPARE(rewritten("a\r\nb\r\nc\n", "a\r\nb\r\nc\nd\n"), "a\r\nb\r\nc\nd\n");
    }

    void lackingCharactersBecomeReferences()
    {
        const EncodedText encoded = encodeFileText(u("<p title=\"中\">é→\U0001F642é</p>"), formatOf("windows-1252"));
        QCOMPARE(encoded.bytes, "<p title=\"&#20013;\">\xE9&#8594;&#128578;\xE9</p>");
        QCOMPARE(encoded.references, 3);
        QCOMPARE(encoded.message, "");
        QCOMPARE(encoded.format.encoding, "windows-1252");
    }

    void whereNoReferenceWorksTheFileBecomesUtf8_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("script") << u("<script>s='→'</script>é");
        QTest::newRow("style") << u("<STYLE>a:after{content:'→'}</STYLE>");
        QTest::newRow("comment") << u("<p><!-- → -->");
        QTest::newRow("unclosed script") << u("<script>→");
        QTest::newRow("name of an attribute") << u("<p →=1>");
        QTest::newRow("name of an element") << u("<x→>");
        QTest::newRow("declaration") << u("<!x →>");
        QTest::newRow("control character") << QString("a") + QChar(0x80);
    }
    void whereNoReferenceWorksTheFileBecomesUtf8()
    {
        QFETCH(QString, text);
        EncodedText encoded = encodeFileText(text, formatOf("windows-1252"));
        QCOMPARE(encoded.bytes, "\xEF\xBB\xBF" + text.toUtf8());
        QCOMPARE(encoded.format, formatOf("UTF-8", true));
        QVERIFY(encoded.message.contains("UTF-8") && encoded.message.contains("windows-1252"));

        encoded = encodeFileText("<meta charset='latin1'>" + text, formatOf("windows-1252"));
        QCOMPARE(encoded.bytes, "<meta charset='utf-8'>" + text.toUtf8());
        QCOMPARE(encoded.format, formatOf("UTF-8"));
        QVERIFY(encoded.message.contains("UTF-8"));
    }
    void theDeclarationGoesWithTheEncoding()
    {
        const EncodedText equivalent =
            encodeFileText(u("<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><meta http-equiv=Content-Type "
                             "content=\"text/html; charset=iso-8859-1\"><!--→-->"),
                           formatOf("windows-1252"));
        QCOMPARE(equivalent.bytes, u("<?xml version=\"1.0\" encoding=\"utf-8\"?><meta http-equiv=Content-Type "
                                     "content=\"text/html; charset=utf-8\"><!--→-->")
                                       .toUtf8());
        const QString padding(2000, ' ');
        const EncodedText far = encodeFileText(padding + u("<meta charset=latin1><!--→é-->"), formatOf("windows-1252"));
        QCOMPARE(far.bytes, ("\uFEFF" + padding + u("<meta charset=utf-8><!--→é-->")).toUtf8());
    }

    void referencesAreKnownByTheirPlace()
    {
        const QString text = "a<b c=\"d\" e='>' f=g>h<!-- i -->j<title>k</title><script x>l</scripty></script >m<n";
        QString open;
        qsizetype at = 0;
        for (const TextRange &range : rangesWithoutReferences(text)) {
            open += text.mid(at, range.begin - at);
            at = range.end;
        }
        QCOMPARE(open + text.mid(at), "ad>ghjkm");
    }

    void whatIsWrittenIsReadBack()
    {
        // Written in windows-1252 these bytes would be read as UTF-8.
        const EncodedText misleading = encodeFileText(u("Ã©"), formatOf("windows-1252"));
        QCOMPARE(decodeFileText(misleading.bytes).text, u("Ã©"));
        // A text that declares another encoding would be read in that.
        const EncodedText declared = encodeFileText(u("<meta charset=utf-8>é"), formatOf("windows-1252"));
        QCOMPARE(declared.bytes, u("<meta charset=utf-8>é").toUtf8());
        QVERIFY(!declared.message.isEmpty());
        const EncodedText cyrillic = encodeFileText(u("<meta charset=koi8-r>аé"), formatOf("UTF-8"));
        QCOMPARE(cyrillic.bytes, "<meta charset=koi8-r>\xC1&#233;");
        // Two-byte files without a mark are known by their first character only.
        const EncodedText wide = encodeFileText("x", formatOf("UTF-16LE"));
        QCOMPARE(wide.bytes, QByteArray("\xFF\xFEx\0", 4));
    }

    void whatNoFileCanHoldIsReplaced()
    {
        const QString text = QString("a") + QChar(0) + QChar(0xD800) + "b" + QChar(0xDC00) + u("\U0001F642");
        QCOMPARE(encodeFileText(text, {}).bytes, u("a\uFFFD\uFFFD"
                                                   "b\uFFFD\U0001F642")
                                                     .toUtf8());
    }

    void oddMarkupTakesTimeInProportion()
    {
        for (const char *piece : {"<", "<!", "<!--", "<a b=\"", "<script>", "</script", "<a =", "<meta charset="}) {
            const QString text = QString(piece).repeated(100000) + u("→");
            const EncodedText encoded = encodeFileText(text, formatOf("windows-1252"));
            QVERIFY(!encoded.bytes.isEmpty());
        }
    }
};

QTEST_MAIN(tst_fileText)
#include "tst_fileText.moc"
