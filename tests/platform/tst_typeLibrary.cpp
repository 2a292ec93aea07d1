// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"
#include "platform/ControlTables.h"
#include "platform/DispatchObject.h"
#include "platform/Interfaces.h"
#include "platform/TypeLibrary.h"

#include <QMetaMethod>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace platform;

class tst_typeLibrary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyInterfaceEventSetAndEnumerationIsListed()
    {
        const QString text = typelibrary::text();
        for (const char *line : {"\ninterface Vellum5\n", "\nevents Vellum5Events\n", "\nenum EditViewEnum\n",
                                 "\ninterface IHTMLElement\n", "\ninterface IHTMLTxtRange\n", "  2 hvPreview\n",
                                 "  5 CommandClick(CommandName, &Ignore) event\n", "  1006 tagName get\n",
                                 "\ninterface CodeMax\n", "\ninterface HTMLEditor\n", "\ninterface Collection\n",
                                 "\ninterface VirtualCommandManager\n", "\ninterface Range\n"})
            QVERIFY2(text.contains(QLatin1String(line)), line);
    }
    void anInterfaceIsAMemberALineWithItsId()
    {
        QCOMPARE(typelibrary::text("ihtmldomattribute"),
                 QString("1601 nodeName get\n1602 nodeValue get set\n1603 specified get\n"));
        QCOMPARE(typelibrary::text("VellumBorderStyleEnum"),
                 QString("0 vellumBorderStyleNone\n1 vellumBorderStyle3D\n"));
        QVERIFY(typelibrary::text("IUnknownThing").isNull());
    }
    void membersOfTheControlHaveTheirKindAndArguments_data()
    {
        QTest::addColumn<QString>("line");
        for (const char *line : {"1 AppName get set", "6 Terminate method", "9 Loaded get", "11 CommandManager get set",
                                 "19 DOM get", "56 StyleSheets get set", "57 LoadFile(Filename) method",
                                 "62 SetDocumentHTMLWithChangeKey(RHS, ChangeKey) method",
                                 "352 RunCommandEx(CommandName, SpecificElement) method",
                                 "551 StartUndoBlock(Merge, PrivateBlock) method", "557 UndoEnabled get"})
            QTest::newRow(line) << line;
    }
    void membersOfTheControlHaveTheirKindAndArguments()
    {
        QFETCH(QString, line);
        QVERIFY(typelibrary::text("Vellum5").split('\n').contains(line));
    }
    void everyRowOfTheControlsTableIsAMemberOfItsInterface()
    {
        const Interface &interface = interfaceOf(Vellum5::staticMetaObject);
        QCOMPARE(interface.members().size(), control::members().size());
        for (const MemberRow &row : control::members()) {
            const Member *member = interface.find(row.id);
            QVERIFY2(member && member->name == QLatin1String(row.name), row.name);
        }
    }
    void everyEventIsASignalWithTheArgumentsThatTheTableTells()
    {
        QHash<QByteArray, QMetaMethod> told;
        const QMetaObject &meta = Vellum5::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            if (meta.method(i).methodType() == QMetaMethod::Signal) told.insert(meta.method(i).name(), meta.method(i));
        QCOMPARE(told.size(), 37); // and `PropertyChanged`, which is for hosts that are no container
        for (const control::EventRow &event : control::events()) {
            QVERIFY2(told.contains(event.name), event.name);
            const QMetaMethod &method = told[event.name];
            QStringList arguments;
            for (int i = 0; i < method.parameterCount(); ++i) {
                QByteArray type = method.parameterTypes()[i];
                arguments += (type.endsWith('&') ? QStringLiteral("&") : QString()) + method.parameterNames()[i];
            }
            QCOMPARE(arguments.join(", "), QString(event.arguments));
        }
    }
    void theEventsHaveTheirNumbers()
    {
        QCOMPARE(control::events().size(), std::size_t(36));
        QSet<int> ids;
        for (const control::EventRow &event : control::events())
            ids.insert(event.id);
        QCOMPARE(ids.size(), 36);
        QCOMPARE(*std::min_element(ids.begin(), ids.end()), 1);
        QCOMPARE(*std::max_element(ids.begin(), ids.end()), 36);
        QCOMPARE(control::findEvent("inserthyperlinkrequestex")->id, 35);
        QCOMPARE(control::findEvent("BeforeShowElementMenu")->id, 36);
        QVERIFY(!control::findEvent("Changed"));
    }
    void noTwoMembersOfTheControlShareAnIdOrAName()
    {
        QSet<int> ids;
        QSet<QString> names;
        for (const MemberRow &row : control::members()) {
            ids.insert(row.id);
            names.insert(QString::fromLatin1(row.name).toLower());
        }
        QCOMPARE(std::size_t(ids.size()), control::members().size());
        QCOMPARE(std::size_t(names.size()), control::members().size());
    }
    void membersOfOneObjectNeverShareAnId()
    {
        // What an element can support at once are the general interfaces and one of its tag.
        QHash<int, QString> ids;
        for (const Interface *interface : documentInterfaces()) {
            const bool ofElements = interface->name().startsWith("IHTMLElement") ||
                                    interface->name() == "IHTMLUniqueName" || interface->name() == "IHTMLDOMNode";
            if (!ofElements || interface->name() == "IHTMLElementCollection") continue;
            for (const Member &member : interface->members()) {
                QVERIFY2(!ids.contains(member.id), qPrintable(member.name));
                ids.insert(member.id, member.name);
            }
        }
        QVERIFY(ids.size() > 50);
    }
};

QTEST_APPLESS_MAIN(tst_typeLibrary)
#include "tst_typeLibrary.moc"
