// SPDX-License-Identifier: GPL-3.0-or-later
#include "../layout/LaidOutPage.h"
#include "engine/paint/Painter.h"
#include "engine/surface/ImageStore.h"

#include <QBuffer>
#include <QtTest>

/// What CSS asks to be painted, looked at in single pixels. `VELLUM_PICTURES` names a folder that takes the pictures.
class FeaturesTest : public QObject
{
    Q_OBJECT

    surface::ImageStore mImages;

    QImage picture(LaidOutPage &page, QSize size = {400, 300}, QPointF scroll = {})
    {
        page.tree.setViewport(size);
        page.tree.setImageSource(&mImages);
        QImage image(size, QImage::Format_RGB32);
        QPainter painter(&image);
        paint::Options options;
        options.scroll = scroll;
        paint::Painter(page.tree, options).paint(painter);
        painter.end();
        const QByteArray folder = qgetenv("VELLUM_PICTURES");
        if (!folder.isEmpty()) {
            QString name = QString::fromLatin1(QTest::currentTestFunction());
            if (const char *tag = QTest::currentDataTag()) name += u'-' + QString::fromLatin1(tag).replace(u' ', u'-').replace(u'/', u'-');
            image.save(QString::fromLocal8Bit(folder) + u'/' + name + ".png");
        }
        return image;
    }
    QImage picture(const QString &body, QSize size = {400, 300})
    {
        LaidOutPage page(LaidOutPage::bare(body));
        return picture(page, size);
    }
    static bool near(const QColor &a, const QColor &b, int by = 6)
    {
        return std::abs(a.red() - b.red()) <= by && std::abs(a.green() - b.green()) <= by && std::abs(a.blue() - b.blue()) <= by;
    }
    static QByteArray told(const QColor &c) { return c.name().toLatin1(); }
    // A picture of two halves: left red, right blue, 20 by 10.
    static QString halves()
    {
        QImage image(20, 10, QImage::Format_RGB32);
        image.fill(Qt::red);
        for (int y = 0; y < 10; ++y)
            for (int x = 10; x < 20; ++x) image.setPixelColor(x, y, Qt::blue);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        image.save(&buffer, "PNG");
        return "data:image/png;base64," + QString::fromLatin1(bytes.toBase64());
    }

private Q_SLOTS:
    void gradients_data()
    {
        QTest::addColumn<QString>("image");
        QTest::addColumn<QPoint>("at"); // in a box of 200 by 100
        QTest::addColumn<QColor>("color");
        const QColor red(255, 0, 0), blue(0, 0, 255), lime(0, 255, 0), mean(128, 0, 128);
        QTest::newRow("down 1") << "linear-gradient(red, blue)" << QPoint(100, 0) << red;
        QTest::newRow("down 2") << "linear-gradient(red, blue)" << QPoint(10, 50) << mean;
        QTest::newRow("down 3") << "linear-gradient(red, blue)" << QPoint(100, 99) << blue;
        QTest::newRow("to the right") << "linear-gradient(to right, red, blue)" << QPoint(100, 5) << mean;
        QTest::newRow("to the right, end") << "linear-gradient(to right, red, blue)" << QPoint(199, 5) << blue;
        QTest::newRow("angle") << "linear-gradient(270deg, red, blue)" << QPoint(0, 50) << blue;
        QTest::newRow("into a corner: the others are the mean") << "linear-gradient(to bottom right, red, blue)" << QPoint(199, 0) << mean;
        QTest::newRow("into a corner") << "linear-gradient(to bottom right, red, blue)" << QPoint(199, 99) << blue;
        QTest::newRow("stops") << "linear-gradient(to right, red 50px, blue 150px)" << QPoint(49, 5) << red;
        QTest::newRow("between stops") << "linear-gradient(to right, red 50px, blue 150px)" << QPoint(100, 5) << mean;
        QTest::newRow("hard edge left") << "linear-gradient(to right, red 50%, blue 50%)" << QPoint(97, 5) << red;
        QTest::newRow("hard edge right") << "linear-gradient(to right, red 50%, blue 50%)" << QPoint(103, 5) << blue;
        QTest::newRow("two places") << "linear-gradient(to right, red 0 30%, lime 30% 60%, blue 60%)" << QPoint(90, 5) << lime;
        QTest::newRow("a place between") << "linear-gradient(to right, red, lime, blue)" << QPoint(100, 5) << lime;
        QTest::newRow("hint") << "linear-gradient(to right, red, 25%, blue)" << QPoint(50, 5) << mean;
        QTest::newRow("current colour") << "linear-gradient(currentcolor, currentcolor)" << QPoint(50, 5) << lime;
        QTest::newRow("repeating") << "repeating-linear-gradient(to right, red 0 10px, blue 10px 20px)" << QPoint(145, 5) << red;
        QTest::newRow("repeating, second") << "repeating-linear-gradient(to right, red 0 10px, blue 10px 20px)" << QPoint(155, 5) << blue;
        QTest::newRow("prefixed") << "-webkit-linear-gradient(left, red, blue)" << QPoint(199, 5) << blue;
        QTest::newRow("circle, middle") << "radial-gradient(circle, red, blue)" << QPoint(100, 50) << red;
        QTest::newRow("circle, farthest corner") << "radial-gradient(circle, red, blue)" << QPoint(199, 99) << blue;
        // Half of the radius to the corner: hypot(100, 50) / 2 is 55.9.
        QTest::newRow("circle, half way") << "radial-gradient(circle, red, blue)" << QPoint(156, 50) << mean;
        QTest::newRow("closest side") << "radial-gradient(circle closest-side, red, blue)" << QPoint(125, 50) << mean;
        QTest::newRow("given radius and place") << "radial-gradient(40px at 50px 50px, red, blue)" << QPoint(70, 50) << mean;
        QTest::newRow("ellipse to the sides") << "radial-gradient(closest-side, red, blue)" << QPoint(150, 50) << mean;
        QTest::newRow("ellipse to the sides, down") << "radial-gradient(closest-side, red, blue)" << QPoint(100, 75) << mean;
        QTest::newRow("repeating rings") << "repeating-radial-gradient(circle at 0 50px, red 0 10px, blue 10px 20px)" << QPoint(45, 50) << red;
        QTest::newRow("cone, at three o'clock") << "conic-gradient(red 0 25%, blue 25% 50%, lime 50%)" << QPoint(150, 60) << blue;
        QTest::newRow("cone, first quarter") << "conic-gradient(red 0 25%, blue 25% 50%, lime 50%)" << QPoint(150, 40) << red;
        QTest::newRow("cone, last half") << "conic-gradient(red 0 25%, blue 25% 50%, lime 50%)" << QPoint(50, 50) << lime;
        QTest::newRow("cone, turned") << "conic-gradient(from 90deg, red 0 25%, blue 25%)" << QPoint(150, 60) << red;
        QTest::newRow("invalid: nothing") << "linear-gradient(red)" << QPoint(50, 50) << QColor(Qt::white);
    }
    void gradients()
    {
        QFETCH(QString, image);
        QFETCH(QPoint, at);
        QFETCH(QColor, color);
        const QImage image_ = picture("<div style='width:200px;height:100px;color:lime;background:" + image + "'></div>", {220, 120});
        QVERIFY2(near(image_.pixelColor(at), color, 10), told(image_.pixelColor(at)));
    }
    void backgroundsStandWhereTheyAreTold_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<QPoint>("red"); // in a box of 100 by 60 with borders and paddings of 10
        QTest::addColumn<QPoint>("other");
        QTest::addColumn<QColor>("color");
        const QString no = ";background-repeat:no-repeat";
        QTest::newRow("padding box") << QString(no) << QPoint(11, 11) << QPoint(9, 9) << QColor(200, 200, 200);
        QTest::newRow("content box") << "background-origin:content-box" + no << QPoint(21, 21) << QPoint(15, 15) << QColor(Qt::white);
        QTest::newRow("border box") << "background-origin:border-box;border-color:transparent" + no << QPoint(1, 1) << QPoint(25, 5) << QColor(Qt::white);
        QTest::newRow("clipped to the content") << "background-clip:content-box" << QPoint(31, 21) << QPoint(15, 15) << QColor(Qt::white);
        // The padding box is 120 by 80: a picture of 20 by 10 stands 5 from its right and 7 from its bottom.
        QTest::newRow("four values") << "background-position:right 5px bottom 7px" + no << QPoint(10 + 96, 10 + 64) << QPoint(10 + 110, 10 + 64) << QColor(Qt::blue);
        QTest::newRow("per cents") << "background-position:100% 100%" + no << QPoint(10 + 101, 10 + 71) << QPoint(10 + 119, 10 + 79) << QColor(Qt::blue);
        QTest::newRow("size") << "background-size:40px 40px" + no << QPoint(10 + 15, 10 + 39) << QPoint(10 + 21, 10 + 39) << QColor(Qt::blue);
        QTest::newRow("size of one axis") << "background-size:80px auto" + no << QPoint(10 + 34, 10 + 38) << QPoint(10 + 42, 10 + 38) << QColor(Qt::blue);
        QTest::newRow("cover") << "background-size:cover" + no << QPoint(10 + 70, 10 + 40) << QPoint(10 + 90, 10 + 40) << QColor(Qt::blue);
        QTest::newRow("contain") << "background-size:contain" + no << QPoint(10 + 57, 10 + 58) << QPoint(10 + 63, 10 + 58) << QColor(Qt::blue);
        QTest::newRow("repeated") << "" << QPoint(10 + 41, 10 + 41) << QPoint(10 + 51, 10 + 41) << QColor(Qt::blue);
        // Space: the box holds 6 of 20 exactly; of 50 it holds two with 20 between.
        QTest::newRow("space") << "background-size:50px 80px;background-repeat:space" << QPoint(10 + 72, 20) << QPoint(10 + 60, 20) << QColor(Qt::white);
        // Round: 2.4 of 50 become two of 60.
        QTest::newRow("round") << "background-size:50px 80px;background-repeat:round" << QPoint(10 + 88, 20) << QPoint(10 + 58, 20) << QColor(Qt::blue);
    }
    void backgroundsStandWhereTheyAreTold()
    {
        QFETCH(QString, style);
        QFETCH(QPoint, red);
        QFETCH(QPoint, other);
        QFETCH(QColor, color);
        const QImage image = picture("<div style=\"width:100px;height:60px;padding:10px;border:10px solid #c8c8c8;background-image:url(" + halves() + ");" + style + "\"></div>", {200, 120});
        QVERIFY2(near(image.pixelColor(red), Qt::red, 30), told(image.pixelColor(red)));
        QVERIFY2(near(image.pixelColor(other), color, 30), told(image.pixelColor(other)));
    }
    void theFirstBackgroundLiesOnTop()
    {
        const QImage image = picture("<div style='width:100px;height:100px;background:linear-gradient(red,red) 0 0/50px 50px no-repeat,linear-gradient(blue,blue) 25px 25px/50px 50px no-repeat,lime'></div>", {120, 120});
        QCOMPARE(image.pixelColor(40, 40), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(60, 60), QColor(0, 0, 255));
        QCOMPARE(image.pixelColor(90, 10), QColor(0, 255, 0));
    }
    void theColourEndsWhereItsBackgroundDoes()
    {
        const QImage image = picture("<div style='width:100px;height:50px;padding:10px;background:red;background-clip:content-box'></div>", {140, 90});
        QCOMPARE(image.pixelColor(5, 5), QColor(Qt::white));
        QCOMPARE(image.pixelColor(15, 15), QColor(255, 0, 0));
    }
    void shadowsFallWhereTheyAreTold()
    {
        const QString box = "<div style='margin:50px;width:100px;height:60px;background:white;box-shadow:%1'></div>";
        QImage image = picture(box.arg("10px 20px 0 5px red"), {220, 180});
        QCOMPARE(image.pixelColor(52, 120), QColor(Qt::white)); // left of it: 50 + 10 - 5 is 55
        QCOMPARE(image.pixelColor(57, 120), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(164, 134), QColor(255, 0, 0)); // 150 + 10 + 5, 110 + 20 + 5
        QCOMPARE(image.pixelColor(166, 134), QColor(Qt::white));
        QCOMPARE(image.pixelColor(100, 80), QColor(Qt::white)); // not under the box
        image = picture(box.arg("0 0 20px black"), {220, 180});
        // A blur of 20 reaches 20 out, and is half as dark at the edge.
        QVERIFY(near(image.pixelColor(48, 80), QColor(140, 140, 140), 14));
        QVERIFY(image.pixelColor(40, 80).red() > 170 && image.pixelColor(40, 80).red() < 240);
        QVERIFY(image.pixelColor(28, 80).red() > 250);
        image = picture(box.arg("inset 0 0 0 10px blue, 0 0 0 3px lime"), {220, 180});
        QCOMPARE(image.pixelColor(55, 80), QColor(0, 0, 255));
        QCOMPARE(image.pixelColor(65, 80), QColor(Qt::white));
        QCOMPARE(image.pixelColor(48, 80), QColor(0, 255, 0));
        image = picture("<div style='width:100px;height:60px;background:transparent;box-shadow:5px 5px red'></div>", {220, 180});
        QCOMPARE(image.pixelColor(50, 30), QColor(Qt::white)); // nor under one that is seen through
    }
    void textCastsShadows()
    {
        const auto count = [](const QImage &image, const QRect &area, auto matches) {
            int sum = 0;
            for (int y = area.top(); y <= area.bottom(); ++y)
                for (int x = area.left(); x <= area.right(); ++x) sum += matches(image.pixelColor(x, y));
            return sum;
        };
        const auto red = [](const QColor &c) { return c.red() > 200 && c.green() < 100; };
        const auto pink = [](const QColor &c) { return c.red() > 200 && c.green() < 245; };
        QImage image = picture("<div style='font:40px/50px Liberation Sans;text-shadow:100px 0 red'>HH</div>", {220, 60});
        QVERIFY(count(image, {100, 0, 80, 50}, red) > 200);
        image = picture("<div style='font:40px/50px Liberation Sans;text-shadow:100px 0 12px red'>HH</div>", {220, 60});
        QCOMPARE(count(image, {100, 0, 80, 50}, red), 0);
        QVERIFY(count(image, {100, 0, 80, 50}, pink) > 600);
    }
    void roundCornersClipWhatIsInside()
    {
        const QImage image = picture("<div style='width:100px;height:100px;border-radius:50%;overflow:hidden;background:blue'><div style='height:100px;background:red'></div></div>"
                                     "<img style='border-radius:20px;width:100px;height:50px;display:block' src='" + halves() + "'>", {120, 200});
        QCOMPARE(image.pixelColor(50, 50), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(5, 5), QColor(Qt::white));
        QCOMPARE(image.pixelColor(95, 95), QColor(Qt::white));
        QCOMPARE(image.pixelColor(1, 101), QColor(Qt::white));
        QVERIFY(near(image.pixelColor(30, 125), Qt::red));
    }
    void radiiThatDoNotFitShrinkTogether()
    {
        // 200 of 100 at each side: halved to 50 and 50; one of 80 with a sharp neighbour stays as it is.
        const QImage image = picture("<div style='width:100px;height:100px;border-radius:200px;background:red'></div><div style='width:100px;height:100px;border-radius:80px 0 0 0;background:red'></div>", {120, 220});
        QCOMPARE(image.pixelColor(50, 2), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(10, 10), QColor(Qt::white));
        QCOMPARE(image.pixelColor(15, 115), QColor(Qt::white)); // 80 - 80 / sqrt(2) is 23
        QCOMPARE(image.pixelColor(98, 102), QColor(255, 0, 0));
    }
    void faintThingsFadeAsOne()
    {
        const QImage image = picture("<div style='opacity:.5;width:100px;height:50px;background:red'><div style='width:50px;height:50px;background:blue'></div></div>", {120, 60});
        QVERIFY(near(image.pixelColor(25, 25), QColor(128, 128, 255)));
        QVERIFY(near(image.pixelColor(75, 25), QColor(255, 128, 128)));
    }
    void transformsArePainted()
    {
        const QImage image = picture("<div style='width:100px;height:40px;background:red;transform:translate(50px,80px) rotate(90deg)'></div>"
                                     "<div style='width:20px;height:20px;background:blue;transform:scale(3);transform-origin:0 0'></div>", {220, 200});
        QCOMPARE(image.pixelColor(100, 60), QColor(255, 0, 0)); // the middle stands at (100, 100)
        QCOMPARE(image.pixelColor(100, 140), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(60, 100), QColor(Qt::white));
        QCOMPARE(image.pixelColor(58, 98), QColor(0, 0, 255));
    }
    void stickyBoxesArePaintedInView()
    {
        LaidOutPage page(LaidOutPage::bare("<div style='height:3000px'><div style='position:sticky;top:10px;height:30px;background:red'></div><p>words</div>"));
        const QImage image = picture(page, {200, 200}, {0, 1500});
        QCOMPARE(image.pixelColor(100, 5), QColor(Qt::white));
        QCOMPARE(image.pixelColor(100, 25), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(100, 45), QColor(Qt::white));
    }
    void columnsArePainted()
    {
        const QImage image = picture("<div style='width:220px;columns:2;column-gap:20px;column-rule:4px solid blue'><div style='height:60px;background:red'></div>"
                                     "<div style='height:40px;background:lime;break-inside:avoid'></div></div>", {240, 120});
        QCOMPARE(image.pixelColor(50, 30), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(170, 30), QColor(0, 255, 0));
        QCOMPARE(image.pixelColor(110, 30), QColor(0, 0, 255)); // in the middle of the gap
        QCOMPARE(image.pixelColor(103, 30), QColor(Qt::white));
        QCOMPARE(image.pixelColor(50, 80), QColor(Qt::white));
    }
    void positionedBoxesLieAboveTheFlow()
    {
        const QString box = "<div style='width:50px;height:50px;background:%1;%2'></div>";
        // The second one begins 25 higher, over the first.
        const auto overlap = [&](const QString &first, const QString &second) {
            return picture(box.arg("red", first) + box.arg("blue", "margin-top:-25px;" + second), {80, 100}).pixelColor(25, 35);
        };
        QCOMPARE(overlap("", ""), QColor(0, 0, 255));
        QCOMPARE(overlap("position:relative", ""), QColor(255, 0, 0));
        QCOMPARE(overlap("position:relative", "position:relative"), QColor(0, 0, 255));
        QCOMPARE(overlap("position:relative;z-index:2", "position:relative;z-index:1"), QColor(255, 0, 0));
        QCOMPARE(overlap("transform:translate(0)", ""), QColor(255, 0, 0)); // moved by nothing, but a context of its own
        QCOMPARE(overlap("opacity:.99", "").red() > 240, true);
    }
    void selectionsFollowTheirText()
    {
        LaidOutPage page(LaidOutPage::bare("<div style='width:300px;columns:2;column-gap:0;font:16px/20px Liberation Sans'><p style='margin:0'>first</p><p id=s style='margin:0'>second</p></div>"
                                           "<div id=t style='width:100px;height:20px;font:16px/20px Liberation Sans;transform:translate(50px,100px) rotate(90deg)'>turned</div>"));
        page.tree.setViewport({320, 260});
        QImage image(320, 260, QImage::Format_RGB32);
        QPainter painter(&image);
        paint::Options options;
        for (const char *id : {"s", "t"}) options.highlights.push_back({page.byId(id).firstChild(), 0, 6, QColor(0, 200, 0), Qt::white});
        paint::Painter(page.tree, options).paint(painter);
        painter.end();
        QCOMPARE(image.pixelColor(151, 1), QColor(0, 200, 0)); // the second column
        QCOMPARE(image.pixelColor(1, 21), QColor(Qt::white));
        // The turned box's middle is at (100, 130): its text begins at the top, and is about 48 long.
        QCOMPARE(image.pixelColor(92, 85), QColor(0, 200, 0));
        QCOMPARE(image.pixelColor(100, 160), QColor(Qt::white));
        QCOMPARE(image.pixelColor(70, 30), QColor(Qt::white));
    }
    void picturesFitTheirBoxes_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<QColor>("corner"); // of a box of 100 by 100 at (8, 2)
        QTest::addColumn<QColor>("left"); // at (8, 50)
        QTest::newRow("fill") << "" << QColor(Qt::red) << QColor(Qt::red);
        QTest::newRow("contain") << "object-fit:contain" << QColor(Qt::white) << QColor(Qt::red);
        QTest::newRow("cover") << "object-fit:cover" << QColor(Qt::red) << QColor(Qt::red);
        QTest::newRow("cover, moved") << "object-fit:cover;object-position:right" << QColor(Qt::blue) << QColor(Qt::blue);
        QTest::newRow("none") << "object-fit:none" << QColor(Qt::white) << QColor(Qt::white);
        QTest::newRow("none, moved") << "object-fit:none;object-position:0 0" << QColor(Qt::red) << QColor(Qt::white);
        QTest::newRow("scale-down") << "object-fit:scale-down;object-position:left" << QColor(Qt::white) << QColor(Qt::red);
    }
    void picturesFitTheirBoxes()
    {
        QFETCH(QString, style);
        QFETCH(QColor, corner);
        QFETCH(QColor, left);
        const QImage image = picture("<img style='display:block;width:100px;height:100px;" + style + "' src='" + halves() + "'>", {120, 120});
        QVERIFY2(near(image.pixelColor(8, 2), corner, 30), told(image.pixelColor(8, 2)));
        QVERIFY2(near(image.pixelColor(8, 50), left, 30), told(image.pixelColor(8, 50)));
    }
    void drawingsInThePageAreDrawn()
    {
        const QImage image = picture("<svg width=100 height=100 viewBox='0 0 10 10' style='display:block;color:#00ff00'><rect width=5 height=10 fill=red /><circle cx=7.5 cy=5 r=2 fill=currentColor /></svg>"
                                     "<svg width=100 height=50 viewBox='0 0 10 10' style='display:block'><rect width=10 height=10 fill=blue /></svg>", {120, 160});
        QCOMPARE(image.pixelColor(25, 50), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(75, 50), QColor(0, 255, 0));
        QCOMPARE(image.pixelColor(55, 5), QColor(Qt::white));
        // In its ratio, in the middle: 50 by 50 at 25.
        QCOMPARE(image.pixelColor(50, 125), QColor(0, 0, 255));
        QCOMPARE(image.pixelColor(10, 125), QColor(Qt::white));
    }
    void drawnPicturesStaySharp()
    {
        const QString svg = "data:image/svg+xml,<svg xmlns='http://www.w3.org/2000/svg' width='4' height='4'><rect width='2' height='4' fill='red'/></svg>";
        const QImage image = picture("<img style='display:block;width:200px;height:100px' src=\"" + svg + "\">", {220, 120});
        QCOMPARE(image.pixelColor(98, 50), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(102, 50), QColor(Qt::white));
    }
    void whatIsNotShownSaysWhatItIs()
    {
        for (const QString element : {"iframe", "video", "canvas", "object"}) {
            const QImage image = picture("<" + element + " title='Some film' style='display:block;width:200px;height:100px;border:0'></" + element + ">", {220, 120});
            QVERIFY2(near(image.pixelColor(10, 10), QColor(0xf4, 0xf4, 0xf4)), qPrintable(element));
            QVERIFY(near(image.pixelColor(0, 50), QColor(0xc0, 0xc0, 0xc0)));
            int dark = 0;
            for (int x = 40; x < 160; ++x)
                for (int y = 35; y < 65; ++y) dark += image.pixelColor(x, y).red() < 140;
            QVERIFY2(dark > 60, qPrintable(element));
        }
    }
    void gaugesShowTheirValue()
    {
        const QImage image = picture("<progress value=0.5 style='display:block;width:100px;height:20px'></progress><meter value=3 max=4 style='display:block;width:100px;height:20px'></meter>", {120, 60});
        QVERIFY(near(image.pixelColor(25, 10), QColor(0, 0x75, 0xff)));
        QVERIFY(near(image.pixelColor(75, 10), QColor(0xef, 0xef, 0xef)));
        QVERIFY(near(image.pixelColor(70, 30), QColor(0x10, 0x7c, 0x10)));
        QVERIFY(near(image.pixelColor(85, 30), QColor(0xef, 0xef, 0xef)));
    }
    void aGalleryForPeople()
    {
        // Nothing is asserted but that something shows; the picture is for comparing by eye.
        QString body = "<style>body{font:14px Liberation Sans;margin:10px}.b{display:inline-block;width:110px;height:70px;margin:8px;vertical-align:top}</style><h3>Gallery</h3>";
        for (const char *style : {"background:linear-gradient(45deg,red,gold)", "background:radial-gradient(circle at 30% 30%,white,navy)", "background:conic-gradient(red,yellow,lime,aqua,blue,magenta,red)",
                                  "background:repeating-linear-gradient(45deg,#eee 0 10px,#ccc 10px 20px)", "box-shadow:4px 4px 12px rgba(0,0,0,.5);background:#fff", "box-shadow:inset 0 0 15px #036;border-radius:12px",
                                  "border:6px solid teal;border-radius:30px 0;background:#eff", "border:4px dashed red;border-radius:20px", "transform:rotate(12deg);background:#fc9", "transform:skewX(-15deg);background:#9cf",
                                  "opacity:.4;background:red", "background:#ffd;border:5px double #963;border-radius:10px"})
            body += QStringLiteral("<div class=b style='%1'>Text</div>").arg(QLatin1String(style));
        body += "<div style='columns:3;column-rule:1px solid gray'><p>" + QString("Columns of words that go on and on, line by line. ").repeated(12) + "<h4 style='column-span:all;background:#def'>All across</h4><p>" +
                QString("More of them below. ").repeated(15) + "</div><p style='text-shadow:2px 2px 4px gray;font-size:30px'>Shadowed text</p>"
                "<form><fieldset><legend>Form</legend><input value=text> <input type=password value=secret> <input type=checkbox checked> <input type=radio checked> <select><option>Choice</select> "
                "<button>Button</button> <input type=submit> <input type=range> <input type=color value=#ff8800> <input type=date> <input type=file> <progress value=.4></progress> <meter value=.7></meter> <textarea>Some\ntext</textarea></fieldset></form>"
                "<iframe title='A page' style='width:150px;height:60px'></iframe> <video style='width:150px;height:60px' title='A film'></video> <svg width=60 height=60 viewBox='0 0 24 24' style='color:purple'><path fill=currentColor d='M12 2L2 22h20z'/></svg>";
        LaidOutPage page("<!DOCTYPE html>" + body);
        const QImage image = picture(page, {900, 900});
        int colored = 0;
        for (int y = 0; y < image.height(); y += 3)
            for (int x = 0; x < image.width(); x += 3) colored += image.pixelColor(x, y).saturation() > 100;
        QVERIFY(colored > 2000);
    }
};

QTEST_MAIN(FeaturesTest)
#include "tst_features.moc"
