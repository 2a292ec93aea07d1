// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/VariableDump.h"

#include <QLabel>
#include <QTest>
#include <stdexcept>

using namespace support;

namespace dom {
class Thing;
}
namespace {

struct Point
{
    int x = 0;
};
struct Own
{
    int value = 7;
};
DumpValue toDumpValue(const Own &own)
{
    return DumpValue::text(QString::number(own.value));
}
struct Unreadable
{
};
DumpValue toDumpValue(const Unreadable &)
{
    throw std::runtime_error("gone");
}
class Names
{
public:
    int Count() const { return 2; }
    QString Item(int index) const { return index == 1 ? "first" : "second"; }
};
class Counted : public base::RefCounted
{
};
enum Colour { Red = 3 };

DumpValue numbers(int dimensions, const std::vector<DumpValue::Bounds> &bounds, int count)
{
    std::vector<DumpValue> elements;
    for (int i = 0; i < count; ++i)
        elements.push_back(dumpValue(i));
    return DumpValue::array(dimensions, bounds, elements);
}

} // namespace

class tst_variableDump : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void simpleValues_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const DumpValue &value, const QString &expected) {
            QTest::newRow(name) << FormatVariable("v", value) << QString("<v>" + expected + "</v>\r\n");
        };
        row("empty", DumpValue::empty(), "{Empty}");
        row("null", DumpValue::null(), "{Null}");
        row("nothing", DumpValue::nothing(), "{Nothing}");
        row("data object", DumpValue::dataObject(), "{DataObject}");
        row("record", dumpValue(Point()), "{UDT - Point}");
        row("string", dumpValue(QString("a <b> & \"c\"\r\n")), "a <b> & \"c\"\r\n");
        row("string with zero characters", dumpValue(QString::fromLatin1("a\0b\0", 4)), "a{Null}b{Null}");
        row("empty string", dumpValue(QString()), "");
        row("literal", dumpValue("text"), "text");
        row("number", dumpValue(-42), "-42");
        row("big number", dumpValue(quint64(18446744073709551615ull)), "18446744073709551615");
        row("fraction", dumpValue(0.1), "0.1");
        row("enumeration", dumpValue(Red), "3");
        row("flag", dumpValue(true), "True");
        row("cleared flag", dumpValue(false), "False");
        row("date", dumpValue(QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5))), "2026-01-02 03:04:05");
        row("no date", dumpValue(QDateTime()), "{Empty}");
        row("unset optional", dumpValue(std::optional<int>()), "{Empty}");
        row("set optional", dumpValue(std::optional<int>(5)), "5");
        row("unset variant", dumpValue(QVariant()), "{Empty}");
        row("variant null", dumpValue(QVariant::fromValue(nullptr)), "{Null}");
        row("variant string", dumpValue(QVariant("x")), "x");
        row("variant flag", dumpValue(QVariant(true)), "True");
        row("null pointer", dumpValue(static_cast<Point *>(nullptr)), "{Nothing}");
        Point point;
        row("pointer", dumpValue(&point), "{Point}");
        row("empty reference", dumpValue(base::Ref<base::RefCounted>()), "{Nothing}");
        QObject object;
        row("object", dumpValue(&object), "{QObject}");
        row("object by reference", dumpValue(object), "{QObject}");
        row("counted object by reference", dumpValue(Counted()), "{Counted}");
        const QMimeData data;
        row("mime data", dumpValue(&data), "{DataObject}");
        row("type with a dump of its own", dumpValue(Own()), "7");
        row("unset element", dumpValue(static_cast<dom::Thing *>(nullptr)), "{Nothing}");
        row("element", dumpValue(reinterpret_cast<dom::Thing *>(&point)), "{Thing}");
        row("failure", DumpValue::failure("Type mismatch"), "{Error Type mismatch formatting for output}");
    }
    void simpleValues()
    {
        QFETCH(QString, text);
        QTEST(text, "expected");
    }

    void arraysOfUpToThreeDimensionsShowTheirElements()
    {
        QCOMPARE(FormatVariable("a", numbers(1, {{1, 2}}, 2)),
                 "<a><a Index=\"1\">0</a>\r\n<a Index=\"2\">1</a>\r\n</a>\r\n");
        QCOMPARE(FormatVariable("a", numbers(2, {{0, 1}, {5, 6}}, 4)),
                 "<a><a Index=\"0,5\">0</a>\r\n<a Index=\"0,6\">1</a>\r\n<a Index=\"1,5\">2</a>\r\n"
                 "<a Index=\"1,6\">3</a>\r\n</a>\r\n");
        const QString cube = FormatVariable("a", numbers(3, {{0, 1}, {0, 1}, {0, 1}}, 8));
        QCOMPARE(cube.count("Index="), 8);
        QVERIFY(cube.startsWith("<a><a Index=\"0,0,0\">0</a>\r\n<a Index=\"0,0,1\">1</a>\r\n<a Index=\"0,1,0\">2</a>"));
        QVERIFY(cube.endsWith("<a Index=\"1,1,1\">7</a>\r\n</a>\r\n"));
        QCOMPARE(FormatVariable("a", numbers(4, {{0, 0}, {0, 0}, {0, 0}, {0, 0}}, 1)),
                 "<a>{Dump truncated at 3 dimensions}</a>\r\n");
    }

    void arraysWithoutBoundsSaySo()
    {
        QCOMPARE(FormatVariable("a", numbers(1, {}, 0)), "<a>{UnInitialised Array}</a>\r\n");
        QCOMPARE(FormatVariable("a", numbers(2, {{0, 1}}, 0)), "<a>{UnInitialised Array Dimension 2}</a>\r\n");
        QCOMPARE(FormatVariable("a", numbers(3, {{0, 1}, {0, 1}}, 0)), "<a>{UnInitialised Array Dimension 3}</a>\r\n");
        QCOMPARE(FormatVariable("a", dumpValue(std::vector<int>())), "<a>{UnInitialised Array}</a>\r\n");
        QCOMPARE(FormatVariable("a", dumpValue(QStringList{"x"})), "<a><a Index=\"0\">x</a>\r\n</a>\r\n");
        QCOMPARE(FormatVariable("a", dumpValue(std::vector<bool>{true})), "<a><a Index=\"0\">True</a>\r\n</a>\r\n");
        const int plain[] = {4, 5};
        QCOMPARE(FormatVariable("a", dumpValue(plain)), "<a><a Index=\"0\">4</a>\r\n<a Index=\"1\">5</a>\r\n</a>\r\n");
    }

    void collectionsNumberTheirItemsFromOne()
    {
        QCOMPARE(FormatVariable("c", dumpValue(Names())), "<c><[1]>first</[1]>\r\n<[2]>second</[2]>\r\n</c>\r\n");
        QCOMPARE(FormatVariable("c", dumpCollection(QStringList())), "<c></c>\r\n");
    }

    void collectionsOpenThreeLevelsOfCollections()
    {
        DumpValue nested = DumpValue::collection("Inner", {});
        for (int i = 0; i < 6; ++i)
            nested = DumpValue::collection("Level", {nested});
        QCOMPARE(FormatVariable("c", nested),
                 "<c><[1]><[1]><[1]><[1]>{Level}</[1]>\r\n</[1]>\r\n</[1]>\r\n</[1]>\r\n</c>\r\n");
    }

    void nestingEndsAtTheLastLevel()
    {
        DumpValue nested = dumpValue(1);
        for (int i = 0; i < 150; ++i)
            nested = DumpValue::array(1, {{0, 0}}, {nested});
        const QString text = FormatVariable("a", nested);
        QCOMPARE(text.count("Index="), 99);
        QVERIFY(text.contains("{Array}"));
    }

    void aVariableThatCannotBeReadDoesNotStopTheRest()
    {
        VariableDump dump;
        dump.add("a", 1).add("b", Unreadable()).add("c", 2).addExternal("d");
        QCOMPARE(dump.text(), "<a>1</a>\r\n<b>{Error gone formatting for output}</b>\r\n<c>2</c>\r\n"
                              "<d>{Cannot dump external UDTs}</d>\r\n");
    }

    void documentObjectsDumpByTheirRole()
    {
        dom::Thing *const element = nullptr;
        QCOMPARE(VariableDump(VariableRole::Member).add("e", element).text(), "<e>{Cannot dump external UDTs}</e>\r\n");
        QCOMPARE(VariableDump(VariableRole::Parameter).add("e", element).text(),
                 "<e>{Can't dump UDT parameters}</e>\r\n");
        QCOMPARE(VariableDump(VariableRole::Local).add("e", element).text(), "<e>{Nothing}</e>\r\n");
    }
};

QTEST_MAIN(tst_variableDump)
#include "tst_variableDump.moc"
