// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Services.h"
#include "engine/html/Parser.h"
#include "platform/ClassFactory.h"
#include "platform/DispatchObject.h"
#include "platform/DispatchPath.h"
#include "platform/Interfaces.h"
#include "support/SettingsStore.h"

#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

using namespace platform;

/// A class as the control is one: properties, methods with defaults and by-reference arguments, indexed members.
class Sample : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString BaseURL READ BaseURL WRITE setBaseURL)
    Q_PROPERTY(int Count READ Count)
public:
    using QObject::QObject;
    QString BaseURL() const { return mBaseURL; }
    void setBaseURL(const QString &url) { mBaseURL = url; }
    int Count() const { return 3; }
    Q_INVOKABLE int Add(int a, int b = 10) { return a + b; }
    Q_INVOKABLE void SaveFile(bool &Cancel, bool Prompt = false)
    {
        mPrompted = Prompt;
        Cancel = !Cancel;
    }
    Q_INVOKABLE bool CommandEnabled(const QString &Name) const { return mEnabled.value(Name); }
    Q_INVOKABLE void setCommandEnabled(const QString &Name, bool Enabled) { mEnabled[Name] = Enabled; }
    Q_INVOKABLE dom::Element *Pick(dom::Element *e) { return e ? e->parentElement() : nullptr; }
    Q_INVOKABLE void Fail() { throw base::Error(57, QStringLiteral("no room")); }
    bool mPrompted = false;

private:
    QString mBaseURL;
    QHash<QString, bool> mEnabled;
};

class tst_dispatch : public QObject
{
    Q_OBJECT

    base::Ref<dom::Document> mDocument;
    Value mRoot;

    Value named(const QString &) { return mRoot; }
    Value get(const QString &path, const Value &start)
    {
        qsizetype at = 0;
        return Path::read(path, at, [this](const QString &name) { return named(name); }).get(start);
    }
    Value get(const QString &path) { return get(path, mRoot); }
    long failure(const std::function<void()> &work)
    {
        try {
            work();
        } catch (const base::Error &error) {
            return error.number();
        }
        return 0;
    }

private Q_SLOTS:
    void initTestCase() { registerDocumentTypes(); }
    void init()
    {
        mDocument = html::parseDocument(QStringLiteral(
            "<html><body><p id=x class=c>a<b>b</b></p><table><tr><td>1<td>2</table><a name=n href='u'>l</a></body></html>"));
        mRoot = valueOf(mDocument.get());
    }

    void chainsOfMembersAreFollowedWhateverTheirCase()
    {
        QCOMPARE(get("body.children(0).tagName").toJson(), QString("\"P\""));
        QCOMPARE(get("BODY.Children(0).TAGNAME").toJson(), QString("\"P\""));
        QCOMPARE(get("body.all(\"x\").innerHTML").toString(), QString("a<B>b</B>"));
        QCOMPARE(get("body.children.length").toJson(), QString("3"));
        QCOMPARE(get("getElementById(\"x\").firstChild.nodeValue").toString(), QString("a"));
    }
    void aMemberIsFoundByItsNumber()
    {
        QCOMPARE(get("body.#1006").toString(), QString("BODY"));
        QCOMPARE(failure([&] { get("body.#99999"); }), base::errors::noSuchMember);
    }
    void objectsPrintAsTheirInterface()
    {
        QCOMPARE(get("body.children(0)").toJson(), QString("{\"object\": \"IHTMLElement\", \"tagName\": \"P\", \"id\": \"x\"}"));
        QCOMPARE(mRoot.toJson(), QString("{\"object\": \"IHTMLDocument2\"}"));
        QCOMPARE(get("all").toJson(), QString("{\"object\": \"IHTMLElementCollection\"}"));
        QCOMPARE(get("body.children(7)").toJson(), QString("null"));
    }
    void failuresHaveTheirNumbers()
    {
        QCOMPARE(failure([&] { get("body.nonsense"); }), base::errors::noSuchMember);
        QCOMPARE(failure([&] { get("body.children(9).tagName"); }), base::errors::objectNotSet);
        QCOMPARE(failure([&] { get("body.children(0).href"); }), base::errors::noSuchMember);
        QCOMPARE(failure([&] { get("body.setAttribute(\"a\")"); }), argumentMissing);
        QCOMPARE(failure([&] { get("body.setAttribute(\"a\",\"b\",0,0)"); }), tooManyArguments);
        QCOMPARE(failure([&] { get("body.children(\"\")(1)"); }), base::errors::objectNotSet);
        QCOMPARE(failure([&] { putMember(get("body.children(1).rows(0).cells(0)").toObject(), "colSpan", "wide"); }),
                 base::errors::typeMismatch);
        QCOMPARE(failure([&] { putMember(get("body").toObject(), "tagName", "P"); }), actionNotSupported);
    }
    void tablesHaveRowsAndCells()
    {
        QCOMPARE(get("body.children(1).rows(0).cells.length").toJson(), QString("2"));
        QCOMPARE(get("body.children(1).rows.item(0).cells(1).cellIndex").toJson(), QString("1"));
        QCOMPARE(get("body.children(1).rows(0).cells(0).colSpan").toJson(), QString("1"));
        putMember(get("body.children(1).rows(0).cells(0)").toObject(), "colspan", 2);
        QCOMPARE(get("body.children(1).rows(0).cells(0).getAttribute(\"COLSPAN\")").toString(), QString("2"));
        callMember(get("body.children(1)").toObject(), "deleteRow", {0});
        QCOMPARE(get("body.children(1).rows.length").toJson(), QString("0"));
    }
    void anUnsetAttributeIsNullAndAClassOfItsOwnIsTaken()
    {
        QVERIFY(get("body.getAttribute(\"word\")").isNull());
        const ObjectRef paragraph = get("body.children(0)").toObject();
        putMember(paragraph, "className", "");
        QCOMPARE(get("body.children(0).outerHTML").toString(), QString("<P id=\"x\">a<B>b</B></P>"));
        QCOMPARE(get("body.children(0).attributes(\"ID\").specified").toJson(), QString("true"));
        QCOMPARE(get("body.children(0).attributes(\"align\").specified").toJson(), QString("false"));
    }
    void anchorsAreThoseWithAName()
    {
        QCOMPARE(get("anchors.length").toJson(), QString("1"));
        QCOMPARE(get("anchors(\"n\").name").toString(), QString("n"));
        QVERIFY(get("anchors(\"other\")").isNothing());
    }
    void heldObjectsOutliveTheirRemoval()
    {
        const Value paragraph = get("body.children(0)");
        putMember(paragraph.toObject(), "outerHTML", "");
        QCOMPARE(get("body.children(0).tagName").toString(), QString("TABLE"));
        QCOMPARE(getMember(paragraph.toObject(), "id").toString(), QString("x"));
        QVERIFY(getMember(paragraph.toObject(), "parentElement").isNothing());
    }
    void oneObjectIsTheSameByTwoRoads()
    {
        QVERIFY(get("body.children(0)").toObject().isSame(get("getElementById(\"x\")").toObject()));
        QVERIFY(!get("body.children(0)").toObject().isSame(get("body").toObject()));
    }

    void stylesAreReadAndWrittenByProperty()
    {
        const css::Services services(*mDocument);
        const ObjectRef style = get("body.children(0).style").toObject();
        QCOMPARE(Value(style).toJson(), QString("{\"object\": \"IHTMLStyle\"}"));
        putMember(style, "BackgroundColor", "red");
        QCOMPARE(getMember(style, "backgroundcolor").toString(), QString("red"));
        putMember(style, "width", 12);
        QCOMPARE(getMember(style, "getAttribute", {"width", 0}).toString(), QString("12px"));
        QVERIFY(getMember(style, "getAttribute", {"height", 0}).toString().isEmpty());
        QCOMPARE(failure([&] { putMember(style, "width", "wide"); }), base::errors::invalidValue);
        QCOMPARE(getMember(style, "width").toString(), QString("12px"));
        putMember(style, "cssText", "");
        QCOMPARE(get("body.children(0).outerHTML").toString(), QString("<P id=\"x\" class=\"c\">a<B>b</B></P>"));
    }
    void sheetsAndRulesAreReached()
    {
        const css::Services services(*mDocument);
        const Value sheet = callMember(mRoot.toObject(), "createStyleSheet").value;
        QCOMPARE(get("styleSheets.length").toJson(), QString("1"));
        QVERIFY(sheet.toObject().isSame(get("styleSheets(0)").toObject()));
        callMember(sheet.toObject(), "addRule", {"div#styledummy", " ", -1});
        callMember(sheet.toObject(), "addRule", {".a", "color: red"});
        QCOMPARE(get("styleSheets(0).rules.length").toJson(), QString("2"));
        QCOMPARE(get("styleSheets(0).rules(0).selectorText").toString(), QString("DIV#styledummy"));
        QCOMPARE(get("styleSheets(0).rules(1).style").toJson(), QString("{\"object\": \"IHTMLRuleStyle\"}"));
        QCOMPARE(get("styleSheets(0).rules(1).style.color").toString(), QString("red"));
        callMember(sheet.toObject(), "removeRule", {0});
        QCOMPARE(get("styleSheets(0).rules.length").toJson(), QString("1"));
        QCOMPARE(get("styleSheets(0).href").toString(), QString());
        QVERIFY(get("styleSheets(5)").isNothing());
    }
    void everyNamedStyleMemberIsOneTheEngineKnows()
    {
        const css::Services services(*mDocument);
        const ObjectRef style = get("body.children(0).style").toObject();
        int properties = 0;
        for (const Member &member : style.type()->interfaces(style).front()->members()) {
            if (member.isMethod() || member.name == "cssText") continue;
            ++properties;
            QVERIFY2(css::StyleObject::isProperty(member.name), qPrintable(member.name));
        }
        QVERIFY(properties > 60);
    }
    void aDetachedDocumentHasNoSelection()
    {
        QVERIFY(get("selection").isNothing());
        QVERIFY(get("parentWindow.event").isNothing());
    }

    void qobjectsBindByTheirMetaObject()
    {
        Sample sample;
        const Value root = valueOf(&sample);
        QCOMPARE(root.toJson(), QString("{\"object\": \"Sample\"}"));
        putMember(root.toObject(), "baseurl", "http://a/");
        QCOMPARE(get("BaseURL", root).toString(), QString("http://a/"));
        QCOMPARE(get("Add(1)", root).toJson(), QString("11"));
        QCOMPARE(get("add(1, 2)", root).toJson(), QString("3"));
        QCOMPARE(failure([&] { get("objectName", root); }), base::errors::noSuchMember);
        QCOMPARE(failure([&] { get("deleteLater", root); }), base::errors::noSuchMember);
        QCOMPARE(failure([&] { get("Fail", root); }), 57L);
    }
    void argumentsByReferenceComeBack()
    {
        Sample sample;
        CallResult result = callMember(reference(&sample), "SaveFile", {true, true});
        QVERIFY(result.value.isEmpty());
        QCOMPARE(result.references.size(), std::size_t(1));
        QCOMPARE(result.references[0].first, QString("Cancel"));
        QCOMPARE(result.references[0].second.toJson(), QString("false"));
        QVERIFY(sample.mPrompted);
        result = callMember(reference(&sample), "SaveFile");
        QCOMPARE(result.references[0].second.toJson(), QString("true"));
        QVERIFY(!sample.mPrompted);
    }
    void aPropertyWithAnArgumentIsWrittenByItsSetter()
    {
        Sample sample;
        const Value root = valueOf(&sample);
        QCOMPARE(get("CommandEnabled(\"Bold\")", root).toJson(), QString("false"));
        putMember(root.toObject(), "CommandEnabled", true, {"Bold"});
        QCOMPARE(get("commandenabled(\"Bold\")", root).toJson(), QString("true"));
    }
    void documentObjectsTravelThroughMethods()
    {
        Sample sample;
        const CallResult result = callMember(reference(&sample), "Pick", {get("body.children(0)")});
        QVERIFY(result.value.toObject().isSame(get("body").toObject()));
        QVERIFY(callMember(reference(&sample), "Pick", {Value::nothing()}).value.isNothing());
        QCOMPARE(failure([&] { callMember(reference(&sample), "Pick", {5}); }), base::errors::typeMismatch);
    }
    void aReferenceToADeadObjectIsNothing()
    {
        auto sample = std::make_unique<Sample>();
        const Value value = valueOf(sample.get());
        sample.reset();
        QVERIFY(value.isNothing());
        QCOMPARE(value.toJson(), QString("null"));
        QCOMPARE(failure([&] { get("Count", value); }), base::errors::objectNotSet);
    }

    void valuesReadAndWriteJson_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("json");
        QTest::newRow("escapes") << "\"a\\\"\\\\\\n\\u00e4\\/\"" << QStringLiteral("\"a\\\"\\\\\\nä/\"");
        QTest::newRow("control") << "\"\\u0001\"" << "\"\\u0001\"";
        QTest::newRow("whole") << "2.0" << "2";
        QTest::newRow("fraction") << "-1.5" << "-1.5";
        QTest::newRow("list") << "[1,\"a\",[true],null]" << "[1, \"a\", [true], null]";
        QTest::newRow("nothing") << "nothing" << "null";
        QTest::newRow("empty") << "empty" << "null";
        QTest::newRow("surrogates") << "\"\\ud83d\\ude00\"" << QStringLiteral("\"\U0001F600\"");
    }
    void valuesReadAndWriteJson()
    {
        QFETCH(QString, text);
        QFETCH(QString, json);
        QCOMPARE(parseJson(text).toJson(), json);
    }
    void whatIsNoJsonIsRefused()
    {
        for (const char *text : {"", "\"a", "[1", "5a", "\"\\q\"", "foo", "1 2", "{\"a\": 1}"})
            QCOMPARE(failure([&] { parseJson(QLatin1String(text)); }), base::errors::invalidCall);
    }

    void aClassIsMadeByItsNameAndRegistered()
    {
        QTemporaryDir folder;
        support::SettingsStore &store = support::SettingsStore::instance();
        store.setFolder(folder.path());
        ClassFactory::registerClass("Test.Sample", "A sample", [](QWidget *parent) { return new Sample(parent); });
        QCOMPARE(DllRegisterServer(), vellumOk);
        const auto root = support::SettingsRoot::LocalMachine;
        QCOMPARE(store.read(root, "Software\\Classes\\Test.Sample", ""), QString("A sample"));
        QVERIFY(QFile::exists(store.read(root, "Software\\Classes\\TypeLib\\VellumKit5", "")));

        const void *found = nullptr;
        QCOMPARE(DllGetClassObject("test.sample", &found), vellumOk);
        QCOMPARE(DllCanUnloadNow(), vellumOk);
        std::unique_ptr<QObject> object(static_cast<const ClassFactory *>(found)->createInstance());
        QVERIFY(qobject_cast<Sample *>(object.get()));
        QCOMPARE(DllCanUnloadNow(), vellumFalse);
        object.reset();
        QCOMPARE(DllCanUnloadNow(), vellumOk);
        QCOMPARE(DllGetClassObject("Test.Other", &found), vellumClassNotAvailable);
        QVERIFY(!found);

        QCOMPARE(DllUnregisterServer(), vellumOk);
        QVERIFY(!store.keyExists(root, "Software\\Classes\\Test.Sample"));
        QCOMPARE(DllUnregisterServer(), vellumOk);
    }
};

QTEST_MAIN(tst_dispatch)
#include "tst_dispatch.moc"
