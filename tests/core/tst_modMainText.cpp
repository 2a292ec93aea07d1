// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/modMainText.h"

#include <QTest>

using namespace modMain;

class tst_modMainText : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void searchRespectsQuotes_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("search");
        QTest::addColumn<int>("position");
        QTest::newRow("plain") << 1 << "abc"
                               << "b" << 2;
        QTest::newRow("from the hit on") << 2 << "abc"
                                         << "b" << 2;
        QTest::newRow("behind the hit") << 3 << "abc"
                                        << "b" << 0;
        QTest::newRow("start beyond the text") << 9 << "abc"
                                               << "b" << 0;
        QTest::newRow("start below one") << 0 << "abc"
                                         << "a" << 1;
        QTest::newRow("none") << 1 << "abc"
                              << "x" << 0;
        QTest::newRow("empty text") << 1 << ""
                                    << "x" << 0;
        QTest::newRow("in a value") << 1 << "<a b=\"x>y\">"
                                    << ">" << 11;
        QTest::newRow("in two values") << 1 << "<a b=\">\" c=\">\">z"
                                       << ">" << 15;
        QTest::newRow("quotes count from the beginning") << 8 << "<a b=\"x>y\">"
                                                         << ">" << 11;
        QTest::newRow("no closing quote") << 1 << "<a b=\"x>y>"
                                          << ">" << 0;
        QTest::newRow("only in quotes") << 1 << "\"x\" y"
                                        << "x" << 0;
        QTest::newRow("single quotes don't count") << 1 << "<a b='x>y'>"
                                                   << ">" << 8;
        QTest::newRow("a word") << 1 << "\"end\" end"
                                << "end" << 7;
    }
    void searchRespectsQuotes()
    {
        QFETCH(int, start);
        QFETCH(QString, text);
        QFETCH(QString, search);
        QFETCH(int, position);
        QCOMPARE(int(InStrEx(start, text, search)), position);
    }
    void searchIgnoresCaseOnlyIfAsked()
    {
        QCOMPARE(InStrEx(1, "aBc", "b"), 0);
        QCOMPARE(InStrEx(1, "aBc", "b", Compare::Text), 2);
        QCOMPARE(InStrEx(1, "\"B\"xB", "b", Compare::Text), 5);
    }
    void searchTakesTimeInProportion()
    {
        const QString text = QString("<a b=\">\">").repeated(100000);
        QCOMPARE(InStrEx(1, text, "?"), 0);
        QCOMPARE(InStrEx(1, QString("\">\"").repeated(200000) + ">", ">"), 600001);
    }

    void fileUrlsAreTold_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("expected");
        QTest::newRow("file") << "file:///a" << true;
        QTest::newRow("case") << "FILE://server/a" << true;
        QTest::newRow("one slash") << "file:/a" << false;
        QTest::newRow("http") << "http://a" << false;
        QTest::newRow("mail") << "mailto:a" << false;
        QTest::newRow("relative") << "a/b.htm" << true;
        QTest::newRow("relative with colon") << "a:b" << false;
        QTest::newRow("bookmark") << "#a" << true;
        QTest::newRow("empty") << "" << true;
    }
    void fileUrlsAreTold()
    {
        QFETCH(QString, url);
        QTEST(IsFileURL(url), "expected");
    }

    void fileUrlsBecomeNames()
    {
        QCOMPARE(FileURLToFileName("file:///C:/My%20Files/a.htm"), "C:\\My Files\\a.htm");
        QCOMPARE(FileURLToFileName("FILE://server/a.htm"), "server\\a.htm");
        QCOMPARE(FileURLToFileName("file:////x"), "\\x");
        QCOMPARE(FileURLToFileName("a/b\\c"), "a\\b\\c");
        QCOMPARE(FileURLToFileName("x/file:///y"), "x\\file:\\\\\\y");
    }

    void entitiesBecomeCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("blank") << "a%20b"
                               << "a b";
        QTest::newRow("several") << "%41%62%7a%7A"
                                 << "Abzz";
        QTest::newRow("above 127") << "%E9" << QString(QChar(0xE9));
        QTest::newRow("per cent") << "%25"
                                  << "%";
        QTest::newRow("until none is left") << "%2541"
                                            << "A";
        QTest::newRow("no digits") << "100% of"
                                   << "100% of";
        QTest::newRow("at the end") << "a%4"
                                    << "a%4";
        QTest::newRow("only a sign") << "%"
                                     << "%";
        QTest::newRow("sign before an escape") << "%%41"
                                               << "%A";
        QTest::newRow("none") << "abc"
                              << "abc";
    }
    void entitiesBecomeCharacters()
    {
        QFETCH(QString, text);
        QTEST(RemoveEntities(text), "expected");
    }

    void urlsBecomeRelative_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("expected");
        QTest::newRow("bookmark of the document") << "file:///c:/d/a.htm#x"
                                                  << "file:///c:/d/a.htm"
                                                  << "#x";
        QTest::newRow("below the base") << "file:///c:/d/e/a.htm"
                                        << "file:///c:/d/"
                                        << "e\\a.htm";
        QTest::newRow("case") << "file:///C:/D/a.htm"
                              << "FILE:///c:/d/"
                              << "a.htm";
        QTest::newRow("escapes") << "file:///c:/my%20d/a.htm"
                                 << "file:///c:/my d/"
                                 << "a.htm";
        QTest::newRow("elsewhere") << "file:///c:/e/a.htm"
                                   << "file:///c:/d/"
                                   << "c:\\e\\a.htm";
        QTest::newRow("base is no file") << "file:///c:/d/a.htm"
                                         << "http://x/"
                                         << "c:\\d\\a.htm";
        QTest::newRow("base is a name") << "c\\d\\a.htm"
                                        << "c/d/"
                                        << "a.htm";
        QTest::newRow("no base") << "file:///c:/a.htm"
                                 << ""
                                 << "c:\\a.htm";
        QTest::newRow("no file") << "http://x/a#b"
                                 << "http://x/a"
                                 << "http://x/a#b";
        QTest::newRow("bookmark alone") << "#b"
                                        << "file:///c:/d/"
                                        << "#b";
    }
    void urlsBecomeRelative()
    {
        QFETCH(QString, url);
        QFETCH(QString, base);
        QTEST(ParseURL(url, base), "expected");
    }

    void hrefIsCutFromTheTag()
    {
        QCOMPARE(GetHrefFromOuterHTML("<A href=\"a.htm\">x</A>"), "a.htm");
        QCOMPARE(GetHrefFromOuterHTML("<a target=\"t\" HREF=\"http://x/\" id=\"y\">"), "http://x/");
        QCOMPARE(GetHrefFromOuterHTML("<A name=\"x\">"), "");
        QCOMPARE(GetHrefFromOuterHTML(""), "");
        QCOMPARE(GetHrefFromOuterHTML("<A href='a"), "a");
    }

    void bodyIsCutOut_data()
    {
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("body");
        QTest::newRow("plain") << "<HTML><BODY>x</BODY></HTML>"
                               << "x";
        QTest::newRow("case") << "<html><body>x</Body></html>"
                              << "x";
        QTest::newRow("attributes") << "<BODY id=\"b\" class=c>x</BODY>"
                                    << "x";
        QTest::newRow("plain tag goes first") << "<BODY a>1<BODY>2</BODY>"
                                              << "2";
        QTest::newRow("last end tag") << "<BODY>x</BODY>y</BODY>"
                                      << "x</BODY>y";
        QTest::newRow("no end tag") << "<BODY>x"
                                    << "<BODY>x";
        QTest::newRow("no start tag") << "x</BODY>"
                                      << "x</BODY>";
        QTest::newRow("start tag that isn't closed") << "<BODY x</BODY"
                                                     << "<BODY x</BODY";
        QTest::newRow("end before start") << "</BODY><BODY>x"
                                          << "</BODY><BODY>x";
        QTest::newRow("line ends around") << "<BODY>\r\n\r\nx\r\ny\r\n</BODY>"
                                          << "x\r\ny";
        QTest::newRow("line ends around a text without tags") << "\r\nx\r\n"
                                                              << "x";
        QTest::newRow("empty") << "<BODY></BODY>"
                               << "";
        QTest::newRow("nothing") << ""
                                 << "";
        QTest::newRow("another name") << "<BODYX>x</BODY>"
                                      << "<BODYX>x</BODY>";
    }
    void bodyIsCutOut()
    {
        QFETCH(QString, document);
        QTEST(ReturnBody(document), "body");
    }

    void bodyIsReplaced()
    {
        QCOMPARE(ReturnNonBody("<HTML><body a=1>x</body></HTML>", "new"), "<HTML><body a=1>new</body></HTML>");
        QCOMPARE(ReturnNonBody("\r\n<BODY>x</BODY>\r\n", "\r\ny"), "<BODY>\r\ny</BODY>");
        QCOMPARE(ReturnNonBody("<P>x</P>", "new"), "<P>x</P>");
    }

    void lineFeedsGoInPairs()
    {
        QCOMPARE(RemoveLeadingAndTrailingLineFeeds("\r\n\r\na\r\nb\r\n\r\n"), "a\r\nb");
        QCOMPARE(RemoveLeadingAndTrailingLineFeeds("\na\n"), "\na\n");
        QCOMPARE(RemoveLeadingAndTrailingLineFeeds("\r\n \r\n"), " ");
        QCOMPARE(RemoveLeadingAndTrailingLineFeeds("\r\n\r\n"), "");
        QCOMPARE(RemoveLeadingAndTrailingLineFeeds("\r\n\n"), "\n");
        QCOMPARE(RemoveLeadingAndTrailingLineFeeds("\n"), "\n");
        QCOMPARE(RemoveLeadingAndTrailingLineFeeds(""), "");
    }
};

QTEST_MAIN(tst_modMainText)
#include "tst_modMainText.moc"
