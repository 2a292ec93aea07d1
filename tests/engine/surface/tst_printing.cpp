// SPDX-License-Identifier: GPL-3.0-or-later
/// What comes out on paper, and that nothing of it is seen in the document.
#include "engine/css/StyleObject.h"
#include "engine/html/Parser.h"
#include "engine/html/Serializer.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/PagePrinter.h"
#include "engine/surface/View.h"

#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

using namespace surface;

namespace {

constexpr double perMillimetre = 96 / 25.4;

/// A shown document; the surface needn't be.
struct Shown {
    HTMLEditor editor;
    explicit Shown(const QString &text)
    {
        editor.resize(600, 400);
        editor.setDocumentText(text);
        while (editor.isLoading()) QCoreApplication::processEvents();
    }
    dom::Document &document() { return *editor.document(); }
    PagePrinter pages(const PrintSettings &settings = {}) { return PagePrinter(document(), editor.loaded()->tree().images(), settings); }
};

QImage picture(PagePrinter &pages, int page)
{
    QImage image(pages.paperSize().toSize(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    pages.paintPage(painter, page);
    return image;
}

/// The smallest rectangle around everything that isn't white.
QRect inked(const QImage &image)
{
    QRect rect;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0xffffff) != 0xffffff) rect = rect.united(QRect(x, y, 1, 1));
    return rect;
}

QString paragraphs(int count)
{
    QString text;
    for (int i = 0; i < count; ++i) text += QStringLiteral("<p>Paragraph %1").arg(i);
    return text;
}

} // namespace

class PrintingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rulesForPrintApply()
    {
        Shown shown("<!DOCTYPE html><style>@media print{#a{display:none}}@media screen{#b{display:none}}</style>"
                    "<link rel=stylesheet media=print href='data:text/css,'><p id=a>a<p id=b>b");
        PagePrinter pages = shown.pages();
        dom::Document &copy = pages.tree().document();
        QVERIFY(!layout::boxOf(*copy.getElementById("a")));
        QVERIFY(layout::boxOf(*copy.getElementById("b")));
        // On the screen it is the other way round.
        shown.editor.loaded()->tree().update();
        QVERIFY(layout::boxOf(*shown.document().getElementById("a")));
        QVERIFY(!layout::boxOf(*shown.document().getElementById("b")));
    }
    void printingTouchesNeitherDocumentNorLogNorLayout()
    {
        Shown shown("<!DOCTYPE html><title>T</title><p id=a>text<p></p>" + paragraphs(100));
        LoadedDocument &loaded = *shown.editor.loaded();
        loaded.tree().update();
        const QString html = html::Serializer::inner(shown.document()), boxes = loaded.tree().dump();
        const auto lastId = shown.document().lastId();
        const auto version = loaded.tree().version();
        QTemporaryDir folder;
        QVERIFY(shown.editor.printToPdf(folder.filePath("a.pdf")));
        QCOMPARE(html::Serializer::inner(shown.document()), html);
        QCOMPARE(shown.document().lastId(), lastId);
        QCOMPARE(loaded.tree().version(), version);
        QCOMPARE(loaded.tree().dump(), boxes);
        QCOMPARE(loaded.tree().compareWithFresh(), QString());
        QVERIFY(!loaded.tracker().canUndo());
    }
    void stylesThatAreInNoTextAreInThePrint()
    {
        Shown shown("<!DOCTYPE html><p id=a>a<p id=b>b");
        auto &services = shown.editor.loaded()->styles();
        services.createStyleSheet(shown.document(), QString())->setCssText("#a { width: 50px }");
        services.runtimeStyle(*shown.document().getElementById("b"))->setCssText("width: 60px");
        PagePrinter pages = shown.pages();
        layout::Queries queries(pages.tree());
        QCOMPARE(queries.borderBox(*pages.tree().document().getElementById("a")).width(), 50.0);
        QCOMPARE(queries.borderBox(*pages.tree().document().getElementById("b")).width(), 60.0);
    }
    void theMarginsArePaper()
    {
        Shown shown("<!DOCTYPE html><body style='margin:0'><div style='background:#000;height:100px'></div>");
        PrintSettings settings;
        settings.margins = QMarginsF(10, 20, 30, 40);
        PagePrinter pages = shown.pages(settings);
        QCOMPARE(pages.paperSize().toSize(), QSize(793, 1123)); // A4
        const QRect ink = inked(picture(pages, 0));
        QVERIFY(qAbs(ink.left() - 10 * perMillimetre) <= 1);
        QVERIFY(qAbs(ink.top() - 20 * perMillimetre) <= 1);
        QVERIFY(qAbs(pages.paperSize().width() - 30 * perMillimetre - ink.right()) <= 2);
        QCOMPARE(ink.height(), 100);
    }
    void theDocumentsOwnPaperAndMarginsCount()
    {
        Shown shown("<!DOCTYPE html><style>@page{size:100mm 80mm;margin:5mm}@page :first{margin-top:20mm}</style><p>a<p style='page-break-before:always'>b");
        PagePrinter pages = shown.pages();
        QCOMPARE(pages.pageCount(), 2);
        QVERIFY(qAbs(pages.paperSize().width() - 100 * perMillimetre) < 0.01);
        QVERIFY(qAbs(pages.contentRect(0).top() - 20 * perMillimetre) < 0.01);
        QVERIFY(qAbs(pages.contentRect(1).top() - 5 * perMillimetre) < 0.01);
        QVERIFY(qAbs(pages.contentRect(1).height() - 70 * perMillimetre) < 0.01);
        PrintSettings settings;
        settings.followsDocument = false;
        QCOMPARE(shown.pages(settings).paperSize().toSize(), QSize(793, 1123));
        settings.orientation = QPageLayout::Landscape;
        QCOMPARE(shown.pages(settings).paperSize().toSize(), QSize(1123, 793));
    }
    void theDialogsMarginsBeatTheDocuments()
    {
        Shown shown("<!DOCTYPE html><style>@page{margin:5mm}</style><p>a");
        PrintSettings settings;
        settings.margins = QMarginsF(30, 30, 30, 30);
        QVERIFY(qAbs(shown.pages(settings).contentRect(0).left() - 30 * perMillimetre) < 0.01);
    }
    void pageNumbersStandInTheMargin()
    {
        Shown shown("<!DOCTYPE html><title>The title</title><body>" + paragraphs(80));
        PrintSettings settings;
        PagePrinter plain = shown.pages(settings);
        QVERIFY(inked(picture(plain, 0)).bottom() <= plain.contentRect(0).bottom());
        settings.pageNumbers = true;
        PagePrinter numbered = shown.pages(settings);
        QCOMPARE(numbered.pageCount(), plain.pageCount());
        QVERIFY(inked(picture(numbered, 0)).bottom() > numbered.contentRect(0).bottom());
        QVERIFY(inked(picture(numbered, 0)).top() >= numbered.contentRect(0).top());
        settings.title = true;
        PagePrinter titled = shown.pages(settings);
        QVERIFY(inked(picture(titled, 0)).top() < titled.contentRect(0).top());
        // Without margins they make room for themselves.
        settings.margins = QMarginsF();
        QVERIFY(shown.pages(settings).contentRect(0).top() > 20);
    }
    void backgroundsCanBeLeftOut()
    {
        Shown shown("<!DOCTYPE html><body style='margin:0;background:#ff0'><div style='background:#000;height:100px'></div>");
        PrintSettings settings;
        settings.backgrounds = false;
        PagePrinter pages = shown.pages(settings);
        QVERIFY(inked(picture(pages, 0)).isEmpty());
    }
    void theEditorsThingsArentPrinted()
    {
        // The selection is painted in colours; on paper everything is black and white.
        Shown shown("<!DOCTYPE html><body style='color:#000'><p id=a>text text<table><tr><td>cell</td></tr></table>");
        shown.editor.setEditMode(dom::EditMode::Edit);
        shown.editor.show();
        for (const bool cells : {false, true}) {
            if (cells) {
                dom::Document &document = *shown.editor.document();
                shown.editor.view().cellSelection().select(*document.elementsNamed("td").front());
                QVERIFY(!shown.editor.view().cellSelection().isEmpty());
            } else {
                QTest::keyClick(&shown.editor, Qt::Key_A, Qt::ControlModifier);
            }
            PagePrinter pages = shown.pages();
            const QImage image = picture(pages, 0);
            for (int y = 0; y < 300; ++y)
                for (int x = 0; x < image.width(); ++x) QCOMPARE(QColor(image.pixel(x, y)).saturation(), 0);
        }
    }
    void aWidePageIsMadeSmaller()
    {
        Shown shown("<!DOCTYPE html><body style='margin:0'><div style='background:#000;width:1000px;height:100px'></div>");
        PagePrinter pages = shown.pages();
        const QRect ink = inked(picture(pages, 0));
        QVERIFY(qAbs(ink.width() - pages.contentRect(0).width()) <= 2);
        QVERIFY(qAbs(ink.height() - 100 * pages.contentRect(0).width() / 1000) <= 2);
    }
    void aHeadIsPaintedOnEachPage()
    {
        QString rows;
        for (int i = 0; i < 100; ++i) rows += "<tr><td style='height:30px'></td></tr>";
        Shown shown("<!DOCTYPE html><body style='margin:0'><table cellspacing=0 cellpadding=0 style='width:100px'><thead><tr><th style='height:20px;background:#f00'></th></tr></thead>" + rows + "</table>");
        PagePrinter pages = shown.pages();
        QVERIFY(pages.pageCount() > 2);
        for (int i = 0; i < pages.pageCount(); ++i) {
            const QRect ink = inked(picture(pages, i));
            QCOMPARE(ink.topLeft(), pages.contentRect(i).topLeft().toPoint());
            QCOMPARE(ink.size(), QSize(100, 20));
        }
    }
    void aPdfHasPagesFontsAndLinks()
    {
        Shown shown("<!DOCTYPE html><title>The title</title><p><a href='http://example.com/there?a=1'>link</a>" + paragraphs(100));
        QTemporaryDir folder;
        int told = 0, of = 0;
        QVERIFY(shown.editor.printToPdf(folder.filePath("a.pdf"), {}, [&](int page, int pages) {
            told = page;
            of = pages;
            return true;
        }));
        QFile file(folder.filePath("a.pdf"));
        QVERIFY(file.open(QFile::ReadOnly));
        const QByteArray pdf = file.readAll();
        QVERIFY(pdf.startsWith("%PDF-"));
        QVERIFY(of > 1);
        QCOMPARE(told, of);
        QCOMPARE(pdf.count("/Type /Page\n"), of);
        QVERIFY(pdf.contains("/FontFile2"));
        QVERIFY(pdf.contains("/ToUnicode"));
        QVERIFY(pdf.contains("/URI (http://example.com/there?a=1)"));
    }
    void aRangeOfPages()
    {
        Shown shown("<!DOCTYPE html>" + paragraphs(200));
        PrintSettings settings;
        settings.fromPage = 2;
        settings.toPage = 3;
        int pages = 0;
        QTemporaryDir folder;
        QVERIFY(shown.editor.printToPdf(folder.filePath("a.pdf"), settings, [&](int, int of) { return pages = of; }));
        QCOMPARE(pages, 2);
    }
    void aCancelledPrintLeavesWhatWasThere()
    {
        Shown shown("<!DOCTYPE html>" + paragraphs(200));
        QTemporaryDir folder;
        QFile before(folder.filePath("a.pdf"));
        QVERIFY(before.open(QFile::WriteOnly));
        before.write("before");
        before.close();
        QVERIFY(!shown.editor.printToPdf(folder.filePath("a.pdf"), {}, [](int page, int) { return page < 2; }));
        QVERIFY(before.open(QFile::ReadOnly));
        QCOMPARE(before.readAll(), QByteArray("before"));
    }
    void whatCantBeWrittenAnswersNo()
    {
        Shown shown("<p>x");
        QVERIFY(!shown.editor.printToPdf("/nowhere/at/all.pdf"));
        HTMLEditor empty;
        QTemporaryDir folder;
        QVERIFY(!empty.printToPdf(folder.filePath("a.pdf")));
        QVERIFY(!QFile::exists(folder.filePath("a.pdf")));
        QCOMPARE(empty.queryStatus(27), 0);
        QVERIFY(!empty.execCommand(2003, true));
    }
    void absurdMarginsLeaveRoom()
    {
        Shown shown("<!DOCTYPE html><style>@page{margin:500mm;size:20px 20px}</style>" + paragraphs(50));
        PagePrinter pages = shown.pages();
        QVERIFY(pages.pageCount() >= 1);
        QVERIFY(pages.pageCount() < 5000);
        PrintSettings settings;
        settings.followsDocument = false;
        settings.margins = QMarginsF(900, 900, 900, 900);
        QVERIFY(shown.pages(settings).contentRect(0).width() > 40);
    }
};

QTEST_MAIN(PrintingTest)
#include "tst_printing.moc"
