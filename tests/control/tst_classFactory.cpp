// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Vellum5.h"
#include "platform/ClassFactory.h"
#include "platform/DispatchObject.h"
#include "platform/DispatchPath.h"
#include "support/SettingsStore.h"

#include <QFile>
#include <QLibrary>
#include <QTemporaryDir>
#include <QTest>

using platform::Value;

/// The control as a host sees it that knows nothing of it but its name: made by a factory, reached late-bound.
class tst_classFactory : public QObject
{
    Q_OBJECT

    QTemporaryDir mFolder;

    static Value get(QObject &object, const QString &path)
    {
        qsizetype at = 0;
        return platform::Path::read(path, at, [](const QString &) { return Value(); }).get(platform::valueOf(&object));
    }
    static void put(QObject &object, const QString &name, const Value &value)
    {
        platform::putMember(platform::reference(&object), name, value);
    }
    static platform::CallResult call(QObject &object, const QString &name, platform::Arguments arguments = {})
    {
        return platform::callMember(platform::reference(&object), name, std::move(arguments));
    }

private Q_SLOTS:
    void initTestCase()
    {
        support::SettingsStore::instance().setFolder(mFolder.path());
        qputenv("XDG_CONFIG_HOME", mFolder.path().toUtf8()); // the loaded library has a store of its own
    }

    void theControlIsMadeByItsNameInAnyCase()
    {
        const void *found = nullptr;
        QCOMPARE(DllGetClassObject("vellumkit5.VELLUM5", &found), vellumOk);
        const auto *factory = static_cast<const platform::ClassFactory *>(found);
        QCOMPARE(factory->programId(), QString("VellumKit5.Vellum5"));
        QCOMPARE(DllCanUnloadNow(), vellumOk);
        std::unique_ptr<QObject> control(factory->createInstance());
        QVERIFY(qobject_cast<Vellum5 *>(control.get()));
        QCOMPARE(DllCanUnloadNow(), vellumFalse);
        call(*control, "Terminate");
        control.reset();
        QCOMPARE(DllCanUnloadNow(), vellumOk);
    }
    void aParentOwnsWhatIsMadeForIt()
    {
        QWidget form;
        QObject *control = platform::ClassFactory::create("VellumKit5.Vellum5", &form);
        QCOMPARE(control->parent(), &form);
        call(*control, "Terminate");
    }
    void aLockKeepsTheLibrary()
    {
        const void *found = nullptr;
        QCOMPARE(DllGetClassObject("VellumKit5.Vellum5", &found), vellumOk);
        const auto *factory = static_cast<const platform::ClassFactory *>(found);
        factory->lockServer(true);
        factory->lockServer(true);
        factory->lockServer(false);
        QCOMPARE(DllCanUnloadNow(), vellumFalse);
        factory->lockServer(false);
        QCOMPARE(DllCanUnloadNow(), vellumOk);
    }
    void whatIsNoClassOrNoQuestionIsRefused()
    {
        const void *found = this;
        QCOMPARE(DllGetClassObject("VellumKit5.Nothing", &found), vellumClassNotAvailable);
        QVERIFY(!found);
        QCOMPARE(DllGetClassObject(nullptr, &found), vellumInvalidArgument);
        QCOMPARE(DllGetClassObject("VellumKit5.Vellum5", nullptr), vellumInvalidArgument);
    }

    void propertiesAndMethodsAreReachedLateBound()
    {
        const void *found = nullptr;
        QCOMPARE(DllGetClassObject("VellumKit5.Vellum5", &found), vellumOk);
        std::unique_ptr<QObject> made(static_cast<const platform::ClassFactory *>(found)->createInstance());
        QObject &control = *made;
        // What never had a bag starts with the initial values.
        QCOMPARE(get(control, "BackColor").toInt(), 0xFFFFFF);
        QCOMPARE(get(control, "BorderStyle").toInt(), 1);
        QCOMPARE(get(control, "EditMode").toInt(), 1);
        QVERIFY(get(control, "ShowFlatStrip").toBoolean());
        QVERIFY(get(control, "ShowPreviewButton").toBoolean());
        QVERIFY(!get(control, "BodyMode").toBoolean());
        QVERIFY(!get(control, "ShowDetails").toBoolean());
        QVERIFY(!get(control, "ShowPropertySheet").toBoolean());
        QVERIFY(get(control, "DOM").isNothing());

        put(control, "baseurl", "http://example.com/");
        QCOMPARE(get(control, "BaseURL").toString(), QString("http://example.com/"));
        put(control, "ChangeDelay", "250"); // a text that reads as a number
        QCOMPARE(get(control, "ChangeDelay").toInt(), 250);
        put(control, "BorderStyle", Value(false));
        QCOMPARE(get(control, "BorderStyle").toInt(), 0);
        put(control, "DocumentHTML", "<html><head></head><body><p>Hello</p></body></html>");
        QTRY_VERIFY(get(control, "Loaded").toBoolean());
        QCOMPARE(get(control, "DOM.body.children(0).tagName").toString(), QString("P"));
        QCOMPARE(get(control, "VisualEditControl.#1.body.innerText").toString(), QString("Hello"));
        QVERIFY(get(control, "EditorhWnd").toInteger() == get(control, "VisualEditControl.#126").toInteger());
        put(control, "EditView", 1);
        QCOMPARE(get(control, "SourceEditControl.#-517").toString(),
                 QString("<html><head></head><body><p>Hello</p></body></html>"));
        QVERIFY(get(control, "hWnd").toInteger() != 0);
        QVERIFY(get(control, "EditorhWnd").toInteger() == get(control, "SourceEditControl.#-515").toInteger());
        const platform::CallResult saved = call(control, "SaveFile");
        QCOMPARE(saved.references.size(), std::size_t(1));
        QCOMPARE(saved.references[0].first, QString("Cancel"));
        QVERIFY(!saved.references[0].second.toBoolean());
        call(control, "Terminate");
        QVERIFY(get(control, "Terminated").toBoolean());
        QVERIFY(get(control, "CommandManager").isNothing());
    }

    void registrationTellsWhereTheClassesAre()
    {
        support::SettingsStore &store = support::SettingsStore::instance();
        const auto root = support::SettingsRoot::LocalMachine;
        QCOMPARE(DllRegisterServer(), vellumOk);
        const QString key = "Software\\Classes\\VellumKit5.Vellum5";
        QCOMPARE(store.read(root, key, ""), QString("WYSIWYG HTML editing control"));
        QVERIFY(QFile::exists(store.read(root, key, "InprocServer")));
        QCOMPARE(store.read(root, key, "TypeLib"), QString("VellumKit5"));
        QFile library(store.read(root, "Software\\Classes\\TypeLib\\VellumKit5", ""));
        QVERIFY(library.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(library.readAll());
        QVERIFY(text.contains("\ninterface Vellum5\n  1 AppName get set\n"));
        QVERIFY(text.contains("\nevents Vellum5Events\n  1 SpellIgnoreWordAdded(Word) event\n"));
        QVERIFY(text.contains("\nenum EditViewEnum\n  0 hvVisualEdit\n  1 hvSourceEdit\n  2 hvPreview\n"));
        QCOMPARE(DllRegisterServer(), vellumOk); // again, over itself

        QCOMPARE(DllUnregisterServer(), vellumOk);
        QVERIFY(!store.keyExists(root, key));
        QVERIFY(!library.exists());
        QCOMPARE(DllUnregisterServer(), vellumOk);
    }

    /// What a host does that was never linked to the library.
    void theLibraryIsLoadedByItsEntryPoints()
    {
        const QString file = QStringLiteral(BINARY_DIR "/libVellumKit5.so");
        if (!QFile::exists(file)) QSKIP("the library isn't built");
        QLibrary library(file);
        QVERIFY2(library.load(), qPrintable(library.errorString()));
        for (const char *name : {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer", "DllUnregisterServer"})
            QVERIFY2(library.resolve(name), name);
        const auto classObject =
            reinterpret_cast<long (*)(const char *, const void **)>(library.resolve("DllGetClassObject"));
        const auto canUnload = reinterpret_cast<long (*)()>(library.resolve("DllCanUnloadNow"));
        const void *found = nullptr;
        QCOMPARE(classObject("VellumKit5.Vellum5", &found), vellumOk);
        std::unique_ptr<QObject> control(static_cast<const platform::ClassFactory *>(found)->createInstance());
        QVERIFY(control);
        QCOMPARE(canUnload(), vellumFalse);
        QCOMPARE(DllCanUnloadNow(), vellumOk); // ours is another copy
        QVERIFY(control->setProperty("BaseURL", "http://a/"));
        QCOMPARE(control->property("BaseURL").toString(), QString("http://a/"));
        QVERIFY(QMetaObject::invokeMethod(control.get(), "Terminate"));
        QVERIFY(control->property("Terminated").toBool());
        control.reset();
        QCOMPARE(canUnload(), vellumOk);
    }
};

QTEST_MAIN(tst_classFactory)
#include "tst_classFactory.moc"
