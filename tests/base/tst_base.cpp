// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "base/SumTree.h"

#include <QRandomGenerator>
#include <QTest>
#include <deque>

namespace {

struct Entry {
    int value = 0;
    base::SumTreeHook<Entry, long> hook;
};
struct EntryTraits {
    using Item = Entry;
    using Sum = long;
    static base::SumTreeHook<Entry, long> &hook(Entry &entry) { return entry.hook; }
    static long value(const Entry &entry) { return entry.value; }
};

} // namespace

class tst_base : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sumTreeAgreesWithAPlainList();
    void manualClockFiresTimersInOrder();
    void aTimerMayDeleteItselfWhileFiring();
};

void tst_base::sumTreeAgreesWithAPlainList()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    base::SumTree<EntryTraits> tree;
    std::deque<Entry> store;
    std::vector<Entry *> list;
    for (int step = 0; step < 4000; ++step) {
        const int what = random.bounded(10);
        if (what < 6 || list.empty()) {
            Entry *entry = &store.emplace_back();
            entry->value = random.bounded(100);
            const size_t at = random.bounded(int(list.size()) + 1);
            tree.insert(*entry, at < list.size() ? list[at] : nullptr);
            list.insert(list.begin() + long(at), entry);
        } else if (what < 8) {
            const size_t at = random.bounded(int(list.size()));
            tree.remove(*list[at]);
            list.erase(list.begin() + long(at));
        } else {
            Entry *entry = list[random.bounded(int(list.size()))];
            entry->value = random.bounded(100);
            tree.changed(*entry);
        }
        if (step % 50) continue;
        long sum = 0;
        for (size_t i = 0; i < list.size(); ++i) {
            QCOMPARE(tree.indexOf(*list[i]), i);
            QCOMPARE(tree.at(i), list[i]);
            QCOMPARE(tree.sumBefore(*list[i]), sum);
            long before = -1;
            if (list[i]->value > 0) {
                QCOMPARE(tree.find([&](long s) { return s > sum; }, &before), list[i]);
                QCOMPARE(before, sum);
            }
            sum += list[i]->value;
        }
        QCOMPARE(tree.total(), sum);
        QCOMPARE(tree.size(), list.size());
    }
}

void tst_base::manualClockFiresTimersInOrder()
{
    base::Clock &clock = base::Clock::instance();
    clock.setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0)));
    QStringList fired;
    base::Timer slow, fast, once;
    slow.setInterval(30);
    fast.setInterval(20);
    once.setInterval(20);
    const auto log = [&](const char *name) {
        fired << QStringLiteral("%1@%2").arg(QLatin1String(name)).arg(clock.now().time().msecsSinceStartOfDay() - 43200000);
    };
    connect(&slow, &base::Timer::timeout, this, [&] { log("slow"); });
    connect(&fast, &base::Timer::timeout, this, [&] { log("fast"); });
    connect(&once, &base::Timer::timeout, this, [&] { once.setEnabled(false), log("once"); });
    slow.setEnabled(true);
    fast.setEnabled(true);
    once.setEnabled(true);
    clock.advance(19);
    QCOMPARE(fired, QStringList());
    clock.advance(41);
    QCOMPARE(fired, QStringList({"fast@20", "once@20", "slow@30", "fast@40", "slow@60", "fast@60"}));
    clock.setSystem();
}

void tst_base::aTimerMayDeleteItselfWhileFiring()
{
    base::Clock &clock = base::Clock::instance();
    clock.setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0)));
    auto *timer = new base::Timer;
    int count = 0;
    connect(timer, &base::Timer::timeout, this, [&] { ++count, delete timer; });
    timer->setInterval(1);
    timer->setEnabled(true);
    clock.advance(10);
    QCOMPARE(count, 1);
    clock.setSystem();
}

QTEST_GUILESS_MAIN(tst_base)
#include "tst_base.moc"
