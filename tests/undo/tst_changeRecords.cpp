// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "undo/ChangeRecords.h"

#include <QTest>

namespace {

base::Ref<ChangeRecord> record(int group, char kind = 1)
{
    auto made = base::make<ChangeRecord>();
    made->setChangeGroupID(group);
    made->setChangeData(QByteArray(1, kind));
    return made;
}

template <class F> long errorOf(F &&f)
{
    try {
        f();
    } catch (const base::Error &error) {
        return error.number();
    }
    return 0;
}

QList<int> groups(const ChangeRecords &records)
{
    QList<int> result;
    for (const auto &entry : records.NewEnum())
        result << entry->ChangeGroupID();
    return result;
}

} // namespace

class tst_changeRecords : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aNewRecordIsPrivateAndWithoutBytes()
    {
        const auto made = base::make<ChangeRecord>();
        QCOMPARE(made->ChangeGroupID(), 0);
        QVERIFY(made->ChangeData().isEmpty());
        QCOMPARE(made->Kind(), 0);
    }
    void theKindIsTheFirstByteUnsigned()
    {
        QCOMPARE(record(1, 5)->Kind(), 5);
        QCOMPARE(record(1, char(250))->Kind(), 250);
    }
    void itemsAreCountedFromOneOldestFirst()
    {
        ChangeRecords records;
        QCOMPARE(records.Count(), 0);
        records.Add(record(7));
        records.Add(record(8));
        QCOMPARE(records.Item(1)->ChangeGroupID(), 7);
        QCOMPARE(records.Item(2)->ChangeGroupID(), 8);
        QCOMPARE(errorOf([&] { records.Item(0); }), base::errors::subscriptOutOfRange);
        QCOMPARE(errorOf([&] { records.Item(3); }), base::errors::subscriptOutOfRange);
        QCOMPARE(errorOf([&] { records.Remove(3); }), base::errors::subscriptOutOfRange);
    }
    void beforeAndAfterPlaceARecord()
    {
        ChangeRecords records;
        records.Add(record(1));
        records.Add(record(2));
        records.Add(record(3), {}, 1);
        records.Add(record(4), {}, 0, 3);
        records.Add(record(5), {}, 0, 1);
        QCOMPARE(groups(records), (QList<int>{3, 5, 1, 2, 4}));
        QCOMPARE(errorOf([&] { records.Add(record(6), {}, 6); }), base::errors::subscriptOutOfRange);
        QCOMPARE(errorOf([&] { records.Add(record(6), {}, 1, 1); }), base::errors::invalidCall);
        QCOMPARE(errorOf([&] { records.Add(nullptr); }), base::errors::objectNotSet);
        QCOMPARE(records.Count(), 5);
    }
    void keysFindRecordsWhateverTheirCase()
    {
        ChangeRecords records;
        records.Add(record(1), QStringLiteral("One"));
        records.Add(record(2), QString());
        records.Add(record(3), QString()); // an empty key is no key: no clash
        QCOMPARE(records.Item(QStringLiteral("ONE"))->ChangeGroupID(), 1);
        QCOMPARE(errorOf([&] { records.Add(record(4), QStringLiteral("one")); }), base::errors::duplicateKey);
        QCOMPARE(errorOf([&] { records.Item(QString()); }), base::errors::invalidCall);
        records.Remove(QStringLiteral("one"));
        QCOMPARE(groups(records), (QList<int>{2, 3}));
        QCOMPARE(errorOf([&] { records.Item(QStringLiteral("One")); }), base::errors::invalidCall);
        records.Add(record(4), QStringLiteral("one"));
        QCOMPARE(records.Count(), 3);
    }
    void thePublicCountFollowsTheRecords()
    {
        ChangeRecords records, other;
        const auto a = record(0);
        const auto b = record(2);
        records.Add(a);
        records.Add(b);
        QCOMPARE(records.PublicCount(), 1);
        a->setChangeGroupID(9);
        QCOMPARE(records.PublicCount(), 2);
        other.Add(a);
        a->setChangeGroupID(0);
        QCOMPARE(records.PublicCount(), 1);
        QCOMPARE(other.PublicCount(), 0);
        records.Remove(1);
        a->setChangeGroupID(4);
        QCOMPARE(records.PublicCount(), 1);
        QCOMPARE(other.PublicCount(), 1);
        records.Clear();
        QCOMPARE(records.PublicCount(), 0);
        QCOMPARE(records.Count(), 0);
    }
    void recordsOutliveTheirLists()
    {
        const auto a = record(3);
        {
            ChangeRecords records;
            records.Add(a);
        }
        a->setChangeGroupID(5);
        QCOMPARE(a->ChangeGroupID(), 5);
    }
    void theListMayChangeWhileItIsWalked()
    {
        ChangeRecords records;
        for (int i = 1; i <= 5; ++i)
            records.Add(record(i));
        int walked = 0;
        for (const auto &entry : records.NewEnum()) {
            QCOMPARE(entry->ChangeGroupID(), ++walked);
            records.Remove(1);
        }
        QCOMPARE(walked, 5);
        QCOMPARE(records.Count(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_changeRecords)
#include "tst_changeRecords.moc"
