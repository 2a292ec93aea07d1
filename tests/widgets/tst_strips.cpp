// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/Container.h"
#include "widgets/FlatStrip.h"
#include "widgets/Splitter.h"

#include <QAccessible>
#include <QDir>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>
#include <QVBoxLayout>

namespace {

void fill(FlatStrip &strip)
{
    strip.addTab("normal", "Normal");
    strip.addTab("htmlsource", "HTML Source");
    strip.addTab("preview", "Preview");
}

void showActive(QWidget &widget)
{
    widget.show();
    widget.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&widget));
}

void keep(QWidget &widget, const QString &name)
{
    QDir().mkpath(BINARY_DIR "/screenshots");
    QImage image(widget.size() * 2, QImage::Format_RGB32);
    image.setDevicePixelRatio(2);
    widget.render(&image);
    QVERIFY(image.save(QStringLiteral(BINARY_DIR "/screenshots/%1.png").arg(name)));
}

} // namespace

class tst_strips : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stripKnowsItsTabsByKey()
    {
        FlatStrip strip;
        QCOMPARE(strip.SelectedTab(), QString());
        fill(strip);
        QCOMPARE(strip.tabKeys(), QStringList({"normal", "htmlsource", "preview"}));
        QCOMPARE(strip.tabIndex("HTMLSource"), 2);
        QCOMPARE(strip.tabIndex("other"), 0);
        QCOMPARE(strip.SelectedTab(), QString("normal"));
        QVERIFY(strip.isTabVisible("preview"));
        strip.setTabVisible("preview", false);
        QVERIFY(!strip.isTabVisible("preview"));
        QVERIFY(strip.tabRect("preview").isEmpty());
        QCOMPARE(strip.tabIndex("preview"), 3);
    }

    void selectingByCodeTellsNothing()
    {
        FlatStrip strip;
        fill(strip);
        QSignalSpy spy(&strip, &FlatStrip::Change);
        strip.setSelectedTab("preview");
        QCOMPARE(strip.SelectedTab(), QString("preview"));
        strip.setSelectedTab("unknown");
        QCOMPARE(strip.SelectedTab(), QString("preview"));
        QCOMPARE(spy.count(), 0);
    }

    void aPressPicksATabOnce()
    {
        FlatStrip strip;
        fill(strip);
        strip.resize(400, strip.height());
        showActive(strip);
        QSignalSpy spy(&strip, &FlatStrip::Change);
        QTest::mousePress(&strip, Qt::LeftButton, {}, strip.tabRect("htmlsource").center());
        QCOMPARE(strip.SelectedTab(), QString("htmlsource"));
        QTest::mouseRelease(&strip, Qt::LeftButton, {}, strip.tabRect("htmlsource").center());
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy[0][0].toInt(), 2);
        QTest::mouseClick(&strip, Qt::LeftButton, {}, strip.tabRect("htmlsource").center());
        QTest::mouseClick(&strip, Qt::RightButton, {}, strip.tabRect("normal").center());
        QTest::mouseClick(&strip, Qt::LeftButton, {}, QPoint(strip.width() - 2, 5));
        QCOMPARE(spy.count(), 1);
    }

    void keysGoPastHiddenTabs()
    {
        FlatStrip strip;
        fill(strip);
        strip.setTabVisible("htmlsource", false);
        showActive(strip);
        strip.setFocus();
        QSignalSpy spy(&strip, &FlatStrip::Change);
        QTest::keyClick(&strip, Qt::Key_Right);
        QCOMPARE(strip.SelectedTab(), QString("preview"));
        QTest::keyClick(&strip, Qt::Key_Right);
        QCOMPARE(spy.count(), 1);
        QTest::keyClick(&strip, Qt::Key_Left);
        QCOMPARE(strip.SelectedTab(), QString("normal"));
        QTest::keyClick(&strip, Qt::Key_End);
        QCOMPARE(strip.SelectedTab(), QString("preview"));
        QTest::keyClick(&strip, Qt::Key_Home);
        QCOMPARE(strip.SelectedTab(), QString("normal"));
        QCOMPARE(spy.count(), 4);
    }

    void rightToLeftTurnsTabsAndArrows()
    {
        FlatStrip strip;
        strip.setLayoutDirection(Qt::RightToLeft);
        fill(strip);
        strip.resize(400, strip.height());
        showActive(strip);
        strip.setFocus();
        QVERIFY(strip.tabRect("normal").left() > strip.tabRect("htmlsource").left());
        QTest::keyClick(&strip, Qt::Key_Left);
        QCOMPARE(strip.SelectedTab(), QString("htmlsource"));
    }

    void aNarrowStripKeepsAllTabsInReach()
    {
        FlatStrip strip;
        fill(strip);
        strip.resize(90, strip.height());
        showActive(strip);
        QVERIFY(!strip.tabRect("preview").isEmpty());
        QVERIFY(strip.tabRect("preview").right() <= 90);
        QVERIFY(!strip.tabRect("preview").intersects(strip.tabRect("htmlsource")));
    }

    void aMnemonicPicksATab()
    {
        FlatStrip strip;
        strip.addTab("normal", "&Normal");
        strip.addTab("preview", "&Preview");
        showActive(strip);
        strip.setFocus();
        QTest::keyClick(&strip, Qt::Key_P, Qt::AltModifier);
        QCOMPARE(strip.SelectedTab(), QString("preview"));
    }

    void heightFollowsTheFont()
    {
        FlatStrip strip;
        fill(strip);
        const int before = strip.height();
        QFont font = strip.font();
        font.setPointSizeF(font.pointSizeF() * 2);
        strip.setFont(font);
        QVERIFY(strip.height() > before);
    }

    void assistiveToolsSeeAndPickTabs()
    {
        FlatStrip strip;
        fill(strip);
        strip.setTabVisible("preview", false);
        showActive(strip);
        QAccessibleInterface *list = QAccessible::queryAccessibleInterface(&strip);
        QCOMPARE(list->role(), QAccessible::PageTabList);
        QCOMPARE(list->childCount(), 3);
        QAccessibleInterface *tab = list->child(1);
        QCOMPARE(tab->text(QAccessible::Name), QString("HTML Source"));
        QVERIFY(list->child(0)->state().selected);
        QVERIFY(!tab->state().selected);
        QVERIFY(list->child(2)->state().invisible);
        const QPoint middle = strip.mapToGlobal(strip.tabRect("htmlsource").center());
        QCOMPARE(list->childAt(middle.x(), middle.y()), tab);
        QCOMPARE(list->indexOfChild(tab), 1);
        QSignalSpy spy(&strip, &FlatStrip::Change);
        tab->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(spy.count(), 1);
        QVERIFY(tab->state().selected);
    }

    void containerTellsItsSize()
    {
        Container container;
        container.resize(10, 10);
        container.show();
        QSignalSpy spy(&container, &Container::Resize);
        container.resize(120, 70);
        QTRY_COMPARE(spy.count(), 1);
        QCOMPARE(spy[0][0].toInt(), 120);
        QCOMPARE(spy[0][1].toInt(), 70);
    }

    void splitterSharesByPercent()
    {
        Splitter splitter(Qt::Vertical);
        QWidget one, two;
        splitter.setPane1(&one);
        splitter.setPane2(&two);
        splitter.resize(100, 204);
        showActive(splitter);
        const int bar = splitter.barRect().height();
        QVERIFY(bar > 0);
        splitter.setPosition(25);
        QCOMPARE(one.height(), qRound((204 - bar) * 0.25));
        QCOMPARE(two.height() + one.height() + bar, 204);
        splitter.resize(100, 404);
        QTRY_COMPARE(one.height(), qRound((404 - bar) * 0.25));
        QCOMPARE(splitter.Position(), 25.0);
        splitter.setPane2(nullptr);
        QCOMPARE(one.geometry(), splitter.rect());
        QVERIFY(splitter.barRect().isEmpty());
        one.setParent(nullptr);
        two.setParent(nullptr);
        QCOMPARE(splitter.pane1(), nullptr);
    }

    void splitterKeepsTheSecondPanesPixels()
    {
        Splitter splitter(Qt::Horizontal);
        splitter.setPane1(new QWidget);
        splitter.setPane2(new QWidget);
        splitter.setPositionMode(Splitter::PositionMode::SecondPanePixels);
        splitter.resize(300, 50);
        showActive(splitter);
        splitter.setPosition(80);
        QCOMPARE(splitter.pane2()->width(), 80);
        splitter.resize(500, 50);
        QTRY_COMPARE(splitter.pane1()->width(), 500 - 80 - splitter.barRect().width());
        splitter.resize(40, 50);
        QTRY_COMPARE(splitter.pane1()->width(), 0);
        QCOMPARE(splitter.Position(), 80.0);
    }

    void hidingAPaneGivesItsPlaceToTheOther()
    {
        Splitter splitter(Qt::Horizontal);
        splitter.setPane1(new QWidget);
        splitter.setPane2(new QWidget);
        splitter.resize(300, 50);
        showActive(splitter);
        splitter.pane2()->hide();
        QCOMPARE(splitter.pane1()->width(), 300);
        splitter.pane2()->show();
        QVERIFY(splitter.pane1()->width() < 300);
        delete splitter.pane1();
        QCOMPARE(splitter.pane2()->width(), 300);
    }

    void aDragMovesTheBarAndTellsOnce()
    {
        Splitter splitter(Qt::Horizontal);
        splitter.setPane1(new QWidget);
        splitter.setPane2(new QWidget);
        splitter.resize(400, 50);
        showActive(splitter);
        QSignalSpy spy(&splitter, &Splitter::AfterDrag);
        const int before = splitter.pane1()->width();
        QWidget *bar = splitter.childAt(splitter.barRect().center());
        const QPoint grip(1, 10);
        QTest::mousePress(bar, Qt::LeftButton, {}, grip);
        QTest::mouseMove(bar, grip + QPoint(30, 0));
        QCOMPARE(splitter.pane1()->width(), before + 30);
        QCOMPARE(spy.count(), 0);
        QTest::mouseRelease(bar, Qt::LeftButton, {}, grip);
        QCOMPARE(spy.count(), 1);
        QTest::mouseClick(bar, Qt::LeftButton, {}, grip);
        QCOMPARE(spy.count(), 1);
        splitter.setPosition(10);
        QCOMPARE(spy.count(), 1);
    }

    void arrowsMoveTheFocusedBar()
    {
        Splitter splitter(Qt::Horizontal);
        splitter.setPane1(new QWidget);
        splitter.setPane2(new QWidget);
        splitter.resize(400, 50);
        showActive(splitter);
        QSignalSpy spy(&splitter, &Splitter::AfterDrag);
        QWidget *bar = splitter.childAt(splitter.barRect().center());
        bar->setFocus();
        const int before = splitter.pane1()->width();
        QTest::keyClick(bar, Qt::Key_Right);
        QVERIFY(splitter.pane1()->width() > before);
        QCOMPARE(spy.count(), 1);
        QTest::keyClick(bar, Qt::Key_Left);
        QCOMPARE(splitter.pane1()->width(), before);
        QTest::keyClick(bar, Qt::Key_Home);
        QCOMPARE(splitter.pane1()->width(), 0);
        QTest::keyClick(bar, Qt::Key_Left);
        QCOMPARE(spy.count(), 3);
    }

    void theBarTakesItsBackColour()
    {
        Splitter splitter(Qt::Horizontal);
        splitter.setPane1(new QWidget);
        splitter.setPane2(new QWidget);
        splitter.resize(400, 50);
        splitter.setBackColor(Qt::red);
        showActive(splitter);
        const QImage image = splitter.grab().toImage();
        QCOMPARE(image.pixelColor(splitter.barRect().topLeft() + QPoint(1, 1)), QColor(Qt::red));
    }

    void screenshots()
    {
        for (const bool dark : {false, true}) {
            QWidget window;
            QPalette palette;
            if (dark) palette = QPalette(QColor(53, 53, 53), QColor(45, 45, 45));
            window.setPalette(palette);
            auto *layout = new QVBoxLayout(&window);
            layout->setContentsMargins({});
            layout->setSpacing(0);
            auto *splitter = new Splitter(Qt::Vertical);
            splitter->setPane1(new QTextEdit("One"));
            splitter->setPane2(new QTextEdit("Two"));
            auto *strip = new FlatStrip;
            auto *turned = new FlatStrip;
            turned->setLayoutDirection(Qt::RightToLeft);
            fill(*strip);
            fill(*turned);
            turned->setBackColor(QColor(60, 90, 140));
            turned->setSelectedTab("preview");
            layout->addWidget(splitter, 1);
            layout->addWidget(strip);
            layout->addWidget(turned);
            window.resize(360, 240);
            showActive(window);
            strip->setFocus();
            QTest::mouseMove(strip, strip->tabRect("htmlsource").center());
            keep(window, dark ? "strips_dark" : "strips_light");
        }
    }
};

QTEST_MAIN(tst_strips)
#include "tst_strips.moc"
