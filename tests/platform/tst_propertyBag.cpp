// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "platform/Collection.h"
#include "platform/PropertyBag.h"

#include <QTest>

using platform::Collection;

namespace {

template <class Call> long errorOf(Call call)
{
    try {
        call();
    } catch (const base::Error &error) {
        return error.number();
    }
    return 0;
}

QStringList textsOf(const Collection &collection)
{
    QStringList result;
    for (const QVariant &item : collection)
        result << item.toString();
    return result;
}

} // namespace

class tst_propertyBag : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsWhatWasWrittenAndElseTheDefault()
    {
        PropertyBag bag;
        QCOMPARE(bag.ReadProperty("Mode", 7), QVariant(7));
        bag.WriteProperty("Mode", 2, 0);
        QCOMPARE(bag.ReadProperty("mode", 7), QVariant(2));
        QVERIFY(bag.contains("MODE"));
        QVERIFY(!bag.contains("Other"));
    }

    void entriesKeepTheirOrderAndTellOfDefaults()
    {
        PropertyBag bag;
        bag.WriteProperty("B", true, true);
        bag.WriteProperty("A", "x", "");
        bag.WriteProperty("C", 0, false);
        bag.WriteProperty("b", false, true);
        QCOMPARE(bag.entries().size(), size_t(3));
        QCOMPARE(bag.entries()[0].name, QString("B"));
        QCOMPARE(bag.entries()[0].isDefault, false);
        QCOMPARE(bag.entries()[1].isDefault, false);
        QCOMPARE(bag.entries()[2].isDefault, true);
        bag.set("C", 0);
        QCOMPARE(bag.entries()[2].isDefault, false);
        QCOMPARE(bag.entries().size(), size_t(3));
    }

    void anEmptyVariantDefaultIsNoDefault()
    {
        PropertyBag bag;
        bag.WriteProperty("A", "");
        QCOMPARE(bag.entries()[0].isDefault, false);
    }

    void conditions_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("expected");
        QTest::newRow("True") << QVariant("True") << true;
        QTest::newRow("false") << QVariant("false") << false;
        QTest::newRow("zero") << QVariant(0) << false;
        QTest::newRow("minus one") << QVariant(-1) << true;
        QTest::newRow("half") << QVariant(0.5) << true;
        QTest::newRow("text zero") << QVariant(" 0 ") << false;
        QTest::newRow("text one") << QVariant("1") << true;
        QTest::newRow("empty variant") << QVariant() << false;
        QTest::newRow("true") << QVariant(true) << true;
    }
    void conditions()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, expected);
        QCOMPARE(PropertyBag::toBoolean(value), expected);
    }

    void conversionsThatCantBeFail()
    {
        QCOMPARE(errorOf([] { PropertyBag::toBoolean("yes"); }), base::errors::typeMismatch);
        QCOMPARE(errorOf([] { PropertyBag::toBoolean(""); }), base::errors::typeMismatch);
        QCOMPARE(errorOf([] { PropertyBag::toLong(3e9); }), base::errors::overflow);
        QCOMPARE(errorOf([] { PropertyBag::toLong("inf"); }), base::errors::overflow);
    }

    void numbersAndTexts()
    {
        QCOMPARE(PropertyBag::toLong(2.5), 2);
        QCOMPARE(PropertyBag::toLong(3.5), 4);
        QCOMPARE(PropertyBag::toLong(true), -1);
        QCOMPARE(PropertyBag::toLong("12"), 12);
        QCOMPARE(PropertyBag::toText(true), QString("True"));
        QCOMPARE(PropertyBag::toText(false), QString("False"));
        QCOMPARE(PropertyBag::toText(QVariant()), QString());
        QVERIFY(PropertyBag::equal("True", true));
        QVERIFY(PropertyBag::equal(-1, true));
        QVERIFY(!PropertyBag::equal(1, 2));
    }

    void collectionCountsFromOneAndFindsKeysInAnyCase()
    {
        Collection c;
        c.Add("one", "First");
        c.Add("two");
        c.Add("three", "Third");
        QCOMPARE(c.Count(), 3);
        QCOMPARE(c.property("Count").toInt(), 3);
        QCOMPARE(c.Item(1).toString(), QString("one"));
        QCOMPARE(c.Item("THIRD").toString(), QString("three"));
        c.Remove("first");
        QCOMPARE(textsOf(c), QStringList({"two", "three"}));
        QCOMPARE(c.Item("third").toString(), QString("three"));
        c.Remove(1);
        QCOMPARE(c.Item("third").toString(), QString("three"));
    }

    void collectionAddsBeforeAndAfter()
    {
        Collection c;
        c.Add("b", "b");
        c.Add("a", {}, 1);
        c.Add("d", {}, {}, "b");
        c.Add("c", "c", "b");
        QCOMPARE(textsOf(c), QStringList({"a", "c", "b", "d"}));
        QCOMPARE(c.Item("c").toString(), QString("c"));
        QCOMPARE(c.Item("b").toString(), QString("b"));
    }

    void collectionFailsByNumber()
    {
        Collection c;
        c.Add(1, "key");
        QCOMPARE(errorOf([&] { c.Add(2, "KEY"); }), base::errors::duplicateKey);
        QCOMPARE(errorOf([&] { c.Item("other"); }), base::errors::invalidCall);
        QCOMPARE(errorOf([&] { c.Item(0); }), base::errors::subscriptOutOfRange);
        QCOMPARE(errorOf([&] { c.Item(2); }), base::errors::subscriptOutOfRange);
        QCOMPARE(errorOf([&] { c.Remove(2); }), base::errors::subscriptOutOfRange);
        QCOMPARE(errorOf([&] { c.Item(QVariant()); }), base::errors::typeMismatch);
        QCOMPARE(errorOf([&] { c.Add(2, {}, 1, 1); }), base::errors::invalidCall);
        QCOMPARE(errorOf([&] { c.Add(2, {}, 5); }), base::errors::subscriptOutOfRange);
        QCOMPARE(c.Count(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_propertyBag)
#include "tst_propertyBag.moc"
