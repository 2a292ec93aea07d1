// SPDX-License-Identifier: GPL-3.0-or-later
#include "../layout/TestStyles.h"
#include "engine/css/Services.h"
#include "engine/html/Parser.h"
#include "engine/layout/EngineStyles.h"
#include "engine/paint/Painter.h"

#include <QtTest>

class PaintTest : public QObject
{
    Q_OBJECT
    QImage picture(layout::LayoutTree &tree, paint::Options options = {}, uint64_t *visited = nullptr)
    {
        QImage image(tree.viewport(), QImage::Format_RGB32);
        QPainter painter(&image);
        paint::Painter paint(tree, std::move(options));
        paint.paint(painter);
        if (visited) *visited = paint.visited();
        return image;
    }
    static QByteArray folder() { return qEnvironmentVariableIsSet("VELLUM_PICTURES") ? qgetenv("VELLUM_PICTURES") : QByteArray(); }

private Q_SLOTS:
    void backgroundsBordersAndTextShow()
    {
        const auto document = html::parseDocument("<!DOCTYPE html><body><h1>Heading</h1><div id=d style='background:#ff0000;border:3px;padding:10px;width:200px'>AV Text in a <b>red</b> box</div>"
            "<ul><li>one<li>two<ul><li>nested</ul></ul><ol><li>first<li>second</ol><table style='border:1px;width:300px'><tr><td style='border:1px'>a<td style='border:1px'>b</table>"
            "<div style='float:right;width:100px;height:50px;background:#00ff00'></div><p>Some text beside a float, that goes on. <input type=checkbox checked> <input value=field> <select><option>Choice</select></p>"
            "<div style='position:absolute;left:400px;top:40px;width:50px;height:50px;background:#0000ff'></div>");
        TestStyles styles(*document);
        layout::LayoutTree tree(*document, styles);
        tree.setViewport({600, 600});
        const QRectF box = layout::Queries(tree).borderBox(*document->getElementById("d"));
        const QImage image = picture(tree);
        if (!folder().isEmpty()) image.save(QString::fromLocal8Bit(folder()) + "/boxes.png");
        QCOMPARE(image.pixelColor(int(box.right()) - 6, int(box.top()) + 6), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(int(box.left()) + 1, int(box.top()) + 20), QColor(0, 0, 0));
        QCOMPARE(image.pixelColor(420, 60), QColor(0, 0, 255));
        int dark = 0; // there are letters
        for (int x = int(box.left()) + 13; x < int(box.left()) + 120; ++x)
            for (int y = int(box.top()) + 13; y < int(box.bottom()) - 13; ++y) dark += image.pixelColor(x, y).red() < 100;
        QVERIFY(dark > 50);
    }
    void collapsedBordersShowOnAllSides()
    {
        for (const QString width : {"auto", "299px", "300px", "300.6px"}) {
            const auto document = html::parseDocument("<!DOCTYPE html><style>table{border-collapse:collapse;width:" + width +
                "}td{border:1px solid #000000;padding:4px 10px}</style><body><table id=t><tr><td>View<td>What it shows<td>Keys<tr><td>Visual<td>the page, to be edited<td>Ctrl+1</table>");
            css::Services services(*document);
            layout::EngineStyles styles(services.engine());
            layout::LayoutTree tree(*document, styles);
            tree.setViewport({600, 200});
            const QRectF box = layout::Queries(tree).borderBox(*document->getElementById("t"));
            const QImage image = picture(tree);
            if (!folder().isEmpty()) image.save(QString::fromLocal8Bit(folder()) + "/collapsed-" + width + ".png");
            const auto dark = [&](int x, int y) { return image.pixelColor(x, y).red() < 50; };
            const auto ends = [&](int y) { // where what is painted in a row begins and ends
                int first = 0, last = image.width() - 1;
                while (first < last && !dark(first, y)) ++first;
                while (last > first && !dark(last, y)) --last;
                return std::pair(first, last);
            };
            int top = 0, bottom = image.height() - 1;
            while (top < bottom && !dark(int(box.center().x()), top)) ++top;
            while (bottom > top && !dark(int(box.center().x()), bottom)) --bottom;
            QVERIFY(std::abs(top - box.top()) <= 1 && std::abs(bottom + 1 - box.bottom()) <= 1);
            const auto sides = ends(top);
            QVERIFY(std::abs(sides.first - box.left()) <= 1 && std::abs(sides.second + 1 - box.right()) <= 1);
            for (int y = top; y <= bottom; ++y) QCOMPARE(ends(y), sides);
        }
    }
    void onlyWhatMeetsTheClipIsVisited()
    {
        QString body;
        for (int i = 0; i < 5000; ++i) body += QString("<p>Paragraph %1</p>").arg(i);
        const auto document = html::parseDocument("<!DOCTYPE html><body>" + body);
        TestStyles styles(*document);
        layout::LayoutTree tree(*document, styles);
        paint::Options options;
        options.scroll = {0, 80000};
        uint64_t visited = 0;
        picture(tree, options, &visited);
        QVERIFY2(visited < 400, qPrintable(QString::number(visited)));
    }
    void aSelectionIsPaintedBehindItsText()
    {
        const auto document = html::parseDocument("<!DOCTYPE html><body><p id=p>Selected words</p>");
        TestStyles styles(*document);
        layout::LayoutTree tree(*document, styles);
        tree.setViewport({300, 100});
        paint::Options options;
        options.highlights.push_back({document->getElementById("p")->firstChild(), 0, 8, QColor(0, 0, 200), Qt::white});
        const QImage image = picture(tree, options);
        QCOMPARE(image.pixelColor(9, 17), QColor(0, 0, 200));
        QCOMPARE(image.pixelColor(200, 17), QColor(255, 255, 255));
    }
};

QTEST_MAIN(PaintTest)
#include "tst_paint.moc"
