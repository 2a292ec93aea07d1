// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/BreakFinder.h"

#include <QtTest>

/// Where lines of Latin text may end. The tables hold what Chromium does with every pair of printable characters.
class Breaks : public QObject
{
    Q_OBJECT

    // What a break may stand in front of, behind `last`.
    static QString behind(char last, bool letterBefore)
    {
        const QString letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", digits = "0123456789";
        if (last == '-') return letters + (letterBefore ? digits : QString()) + "\"#%&'(*+-<=>@[\\^_`{|~";
        if (last == '?') return letters + digits + "#$%&(*+-<=>@[\\^_`{|~";
        return QString("!\"#%&)*+,.:;=>\\]|}~").contains(last) ? QString("(<[{") : QString();
    }

private Q_SLOTS:
    void everyPairOfPrintableCharacters()
    {
        for (const char before : {'w', '1', ' ', '.'})
            for (char last = '!'; last <= '~'; ++last)
                for (char next = '!'; next <= '~'; ++next) {
                    const QString text = QString("%1%2%3w").arg(QChar(before), QChar(last), QChar(next));
                    const bool expected = behind(last, before == 'w' || before == '1').contains(QChar(next));
                    QVERIFY2(layout::BreakFinder(text).allowed(2) == expected, qPrintable(text));
                }
    }
};

QTEST_APPLESS_MAIN(Breaks)
#include "tst_breaks.moc"
