// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ToolTip.h"

#include <QTest>
#include <QToolTip>

using support::ToolTip;

class tst_toolTip : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { base::Clock::instance().setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0))); }
    void cleanup() { base::Clock::instance().setSystem(); }

    void theTipComesAndGoesAtItsTimes()
    {
        QWidget widget;
        widget.resize(200, 100);
        widget.show();
        ToolTip tip;
        tip.setParentWidget(&widget);
        tip.setDelayTime(300);
        tip.setVisibleTime(2000);
        tip.Show({10, 10});
        base::Clock::instance().advance(1000);
        QVERIFY2(!tip.isShown(), "without a text there is nothing to show");

        tip.setTipText("a <b>");
        tip.Show({10, 10});
        base::Clock::instance().advance(200);
        tip.Show({20, 10});
        base::Clock::instance().advance(99);
        QVERIFY(!tip.isShown());
        base::Clock::instance().advance(1);
        QVERIFY(tip.isShown());
        QCOMPARE(QToolTip::text(), "a &lt;b&gt;");
        tip.setTipText("other");
        QCOMPARE(QToolTip::text(), "other");
        base::Clock::instance().advance(1999);
        QVERIFY(tip.isShown());
        base::Clock::instance().advance(1);
        QVERIFY(!tip.isShown());

        tip.Show({10, 10});
        tip.Hide();
        base::Clock::instance().advance(1000);
        QVERIFY(!tip.isShown());
    }

    void withoutAVisibleParentNothingIsShown()
    {
        ToolTip tip;
        tip.setTipText("text");
        tip.setDelayTime(0);
        tip.Show({0, 0});
        QVERIFY(!tip.isShown());
        QWidget hidden;
        tip.setParentWidget(&hidden);
        tip.Show({0, 0});
        QVERIFY(!tip.isShown());
    }
};

QTEST_MAIN(tst_toolTip)
#include "tst_toolTip.moc"
