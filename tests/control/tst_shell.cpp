// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"
#include "control/EventProxy.h"
#include "control/SpellImage.h"
#include "control/Vellum5.h"
#include "control/Vellum5Parts.h"
#include "core/modMain.h"
#include "platform/HotKeys.h"
#include "support/Debug.h"
#include "support/FailureReport.h"
#include "support/InstanceCounts.h"
#include "support/SettingsStore.h"
#include "support/WindowPositionStore.h"

#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

/// What only a host written in C++ sees of the control's shell; the rest is said by scripts.
class tst_shell : public QObject
{
    Q_OBJECT

    QTemporaryDir mFolder;

    /// A container that writes down what the control asks and tells.
    struct Form final : HostContainer
    {
        bool userMode = true;
        bool visible = true;
        bool fails = false;
        bool modeFails = false;
        QStringList told;
        bool UserMode() const override
        {
            if (modeFails) throw base::Error(438, QStringLiteral("no such ambient"));
            return userMode;
        }
        bool Visible() const override
        {
            if (fails) throw base::Error(438, QStringLiteral("no such property"));
            return visible;
        }
        void PropertyChanged(const QString &Name) override { told << Name; }
    };
    static void load(Vellum5 &control, const QString &html)
    {
        control.setDocumentHTML(html);
        while (control.VisualEditControl()->isLoading())
            QCoreApplication::processEvents();
    }

private Q_SLOTS:
    void initTestCase()
    {
        support::SettingsStore::instance().setFolder(mFolder.path());
        base::Clock::instance().setManual(QDateTime(QDate(2026, 1, 1), QTime(12, 0)));
    }

    void cleanup()
    {
        support::twdClient::setConnection({});
        support::twdClient::setMemoryFactory({});
    }

    // The widget's own names

    void disablingTheWidgetDisablesTheControl()
    {
        Vellum5 control;
        QWidget *widget = &control;
        widget->setEnabled(false);
        QVERIFY(!control.Enabled());
        QVERIFY(!widget->isEnabled());
        QCOMPARE(control.VisualEditControl()->editMode(), dom::EditMode::Disabled);
        widget->setEnabled(true);
        QVERIFY(control.Enabled());
        QCOMPARE(control.VisualEditControl()->editMode(), dom::EditMode::Edit);
        QVERIFY(control.parts().txtHTMLSource->isEnabled());
        widget->setDisabled(true);
        QVERIFY(!control.Enabled());
        widget->setProperty("enabled", true);
        QVERIFY(control.Enabled());
        control.Terminate();
    }
    void disablingTheControlDisablesTheWidgetButNotItsTabs()
    {
        Vellum5 control;
        const QWidget *widget = &control;
        control.setEnabled(false);
        QVERIFY(!widget->isEnabled());
        QVERIFY(!control.parts().txtHTMLSource->isEnabled());
        QVERIFY(control.parts().strip->isEnabled());
        QVERIFY(control.parts().ed->isEnabled());
        control.setEnabled(true);
        QVERIFY(widget->isEnabled());
        QVERIFY(control.parts().txtHTMLSource->isEnabled());
        control.Terminate();
    }
    void eitherNameUndoesTheOther()
    {
        Vellum5 control;
        QWidget *widget = &control;
        control.setEnabled(false);
        widget->setEnabled(true);
        QVERIFY(control.Enabled());
        QVERIFY(control.parts().txtHTMLSource->isEnabled());
        widget->setEnabled(false);
        QVERIFY(!control.parts().strip->isEnabled());
        control.setEnabled(true);
        QVERIFY(widget->isEnabled());
        QVERIFY(control.parts().strip->isEnabled());
        QVERIFY(control.parts().txtHTMLSource->isEnabled());
        control.setProperty("Enabled", false);
        QVERIFY(!widget->isEnabled());
        control.Terminate();
    }
    void aDisabledParentIsNoWordOfTheControls()
    {
        QWidget form;
        Vellum5 control(&form);
        form.setEnabled(false);
        QVERIFY(!control.isEnabled());
        QVERIFY(control.Enabled());
        form.setEnabled(true);
        QVERIFY(control.isEnabled());
        QVERIFY(control.parts().txtHTMLSource->isEnabled());
        control.Terminate();
    }
    void everyWriteOfEnabledRefreshesTheTools()
    {
        Vellum5 control;
        control.show(); // a hidden control refreshes none
        QSignalSpy refreshed(&control, &Vellum5::ToolsRefreshed);
        control.setEnabled(true);
        QCOMPARE(refreshed.count(), 1);
        control.setEnabled(false);
        QCOMPARE(refreshed.count(), 2);
        static_cast<QWidget &>(control).setEnabled(true);
        QCOMPARE(refreshed.count(), 3);
        control.Terminate();
    }
    void aStyleOfTheWidgetsIsTaken()
    {
        Vellum5 control;
        QStyle *style = control.style();
        control.setStyle(style);
        static_cast<QWidget &>(control).setStyle(style);
        QCOMPARE(control.style(), style);
        control.Terminate();
    }

    // The proxy

    void theProxyTellsOfRefreshedToolsBehindTheControl()
    {
        Vellum5 control;
        auto *proxy = qobject_cast<EventProxy *>(control.EventProxy());
        QVERIFY(proxy);
        control.show();
        QCOMPARE(control.EventProxy(), proxy);
        QStringList order;
        connect(&control, &Vellum5::ToolsRefreshed, this, [&] { order << "control"; });
        connect(proxy, &EventProxy::ToolsRefreshed, this, [&] { order << "proxy"; });
        control.setEnabled(true);
        QCOMPARE(order, QStringList({"control", "proxy"}));
        const QPointer<QObject> watched(proxy);
        control.Terminate();
        QVERIFY(!watched);
    }

    // The container

    void aLoadedFormHearsNothingButWhatSettersTell()
    {
        Form form;
        PropertyBag bag;
        bag.set("BaseURL", "http://a/");
        bag.set("ShowDetails", true);
        Vellum5 control(bag, nullptr, &form);
        // By the setter of each, in the order in which they are read.
        QCOMPARE(form.told,
                 QStringList({"ShowPropertySheet", "ShowDetails", "ShowPropertySheet", "BackColor", "BorderStyle"}));
        control.Terminate();
    }
    void aFormThatGetsANewControlHearsItsInitialValues()
    {
        Form form;
        Vellum5 control(nullptr, &form);
        QCOMPARE(form.told, QStringList({"ShowPropertySheet", "BackColor", "BorderStyle"}));
        QVERIFY(control.state().mInitialised);
        control.Terminate();
        Form designer;
        designer.userMode = false;
        Vellum5 designed(nullptr, &designer);
        QCOMPARE(designer.told, QStringList({"BackColor", "BorderStyle"}));
        QVERIFY(!designed.state().mInitialised);
        QVERIFY(designed.ShowFlatStrip());
        QCOMPARE(designed.BackColor(), 0xFFFFFFu);
        designed.Terminate();
    }
    void theContainerIsAskedWhetherTheControlShows()
    {
        Form form;
        PropertyBag bag;
        Vellum5 control(bag, nullptr, &form);
        QSignalSpy refreshed(&control, &Vellum5::ToolsRefreshed);
        QVERIFY(control.parts().host.ExtenderVisible(false));
        form.visible = false;
        QVERIFY(!control.parts().host.ExtenderVisible(true));
        control.setEnabled(true);
        QCOMPARE(refreshed.count(), 0);
        form.fails = true;
        QVERIFY(!control.parts().host.ExtenderVisible(false));
        control.setEnabled(true); // for the tools, not to know counts as shown
        QCOMPARE(refreshed.count(), 1);
        control.Terminate();
    }
    void withoutAContainerAControlShowsUntilItIsHidden()
    {
        Vellum5 control;
        QVERIFY(control.parts().host.ExtenderVisible(false));
        control.show();
        QVERIFY(control.parts().host.ExtenderVisible(false));
        control.hide();
        QVERIFY(!control.parts().host.ExtenderVisible(true));
        control.Terminate();
    }
    void aDesignedControlStaysEmptyAndKeepsItsProperties()
    {
        Form form;
        form.userMode = false;
        PropertyBag bag;
        bag.set("BaseURL", "http://a/");
        bag.set("ShowTagBar", true);
        Vellum5 control(bag, nullptr, &form);
        control.show();
        control.setBodyMode(true);
        load(control, "<p>x");
        QVERIFY(!control.Loaded());
        QVERIFY(!control.DOM());
        QVERIFY(!control.VisualEditControl()->document());
        QVERIFY(!control.state().mInitialised);
        QVERIFY(!control.state().mVisible);
        QVERIFY(form.told.contains("BodyMode"));
        PropertyBag saved;
        control.WriteProperties(saved);
        QCOMPARE(saved.ReadProperty("BaseURL").toString(), QString("http://a/"));
        QCOMPARE(saved.ReadProperty("BodyMode").toString(), QString("True"));
        QVERIFY(saved.ReadProperty("ShowTagBar").toBool());
        control.Terminate();
    }
    void aContainerThatCannotTellTheModeCountsAsDesigning()
    {
        Form form;
        QStringList reports;
        support::setFailurePresenter([&](const support::FailureReport &report) {
            reports << report.module + u'.' + report.procedure + u' ' + QString::number(report.number);
        });
        PropertyBag bag;
        Vellum5 control(bag, nullptr, &form);
        control.resize(300, 200);
        control.show();
        const QRect before = control.parts().conEditors->geometry();
        form.modeFails = true;
        control.resize(400, 300); // reaches the control by an event, behind which nobody could catch
        QCOMPARE(control.parts().conEditors->geometry(), before);
        QVERIFY(!reports.isEmpty());
        for (const QString &report : std::as_const(reports)) QCOMPARE(report, QString("Vellum5.IsUserMode 438"));
        Vellum5 other(bag, nullptr, &form);
        QVERIFY(!other.state().mInitialised);
        form.modeFails = false;
        reports.clear();
        control.resize(500, 300);
        QVERIFY(control.parts().conEditors->geometry() != before);
        QCOMPARE(reports, QStringList());
        other.Terminate();
        control.Terminate();
        support::setFailurePresenter({});
    }
    void aBagThatIsWrittenAndReadGivesTheSameBag()
    {
        PropertyBag empty;
        Vellum5 control(empty);
        control.setBaseURL("http://a/");
        control.setShowFlatStrip(false);
        control.setBodyMode(true);
        control.setShowDetails(true);
        control.setEditMode(0);
        control.setEnableLinkClicks(true);
        control.setShowPreviewButton(false);
        control.setBorderStyle(0);
        control.setAutoSelectEditableSpans(true);
        PropertyBag first, second;
        control.WriteProperties(first);
        Vellum5 other(first);
        other.WriteProperties(second);
        QCOMPARE(first.entries().size(), std::size_t(13));
        QCOMPARE(second.entries().size(), std::size_t(13));
        for (std::size_t i = 0; i < 13; ++i) {
            QCOMPARE(second.entries()[i].name, first.entries()[i].name);
            QVERIFY2(PropertyBag::equal(second.entries()[i].value, first.entries()[i].value),
                     qPrintable(first.entries()[i].name));
        }
        control.Terminate();
        other.Terminate();
    }

    // What the shell hands on

    void theEditorsWindowIsThatOfTheView()
    {
        Vellum5 control;
        load(control, "<p>x");
        QCOMPARE(control.hWnd(), qulonglong(control.winId()));
        QCOMPARE(control.EditorhWnd(), qulonglong(control.VisualEditControl()->winId()));
        control.setEditView(int(EditViewEnum::hvSourceEdit));
        QCOMPARE(control.EditorhWnd(), qulonglong(control.SourceEditControl()->winId()));
        control.setEditView(int(EditViewEnum::hvPreview));
        QCOMPARE(control.EditorhWnd(), qulonglong(control.VisualEditControl()->winId()));
        QVERIFY(control.VisualEditControl()->winId() != control.SourceEditControl()->winId());
        control.Terminate();
    }
    void theStripTakesTheBackColour()
    {
        Vellum5 control;
        QCOMPARE(control.parts().strip->BackColor(), QColor(255, 255, 255));
        control.setBackColor(0x0000FF); // red stands in the low byte
        QCOMPARE(control.parts().strip->BackColor(), QColor(255, 0, 0));
        control.setBackColor(0x8000000F); // the system's colour of a button's face
        QCOMPARE(control.parts().strip->BackColor(), control.palette().color(QPalette::Button));
        control.Terminate();
    }
    void aControlSetsTheSourceEditorsKeys()
    {
        HotKeys &keys = HotKeys::global();
        keys.removeAll(137);
        keys.add(178, QKeySequence(Qt::CTRL | Qt::Key_F7));
        keys.add(178, QKeySequence(Qt::Key_F7));
        keys.add(169, QKeySequence(Qt::Key_F8));
        Vellum5 control;
        QVERIFY(keys.list(137).contains(QKeySequence(Qt::CTRL | Qt::Key_A)));
        QVERIFY(keys.list(178).isEmpty());
        QVERIFY(keys.list(169).isEmpty());
        control.Terminate();
    }
    void dialogsKeepTheirPlacesBelowOneKey()
    {
        support::WindowPositionStore::instance().setRootKey(QString());
        Vellum5 control;
        QCOMPARE(support::WindowPositionStore::instance().rootKey(), QString("Software\\Brimfield\\Vellum"));
        control.Terminate();
    }

    // Life

    void aToolSeesEachControlAndItsProxy()
    {
        struct Tool final : support::TraceConnection {
            QHash<QString, long> identifiers;
            bool isListening() override { return true; }
            bool wantsInstanceCounts() override { return true; }
            long send(int code, const QString &text, int) override
            {
                if (code != support::traceRegisterClass) return 0;
                const QString name = text.section(u',', 0, 0);
                identifiers.insert(name, identifiers.size() + 1);
                return identifiers.value(name);
            }
        };
        struct Memory final : support::InstanceCountsMemory {
            QHash<long, int> &counts;
            explicit Memory(QHash<long, int> &counts) : counts(counts) {}
            void add(long id) override { ++counts[id]; }
            void subtract(long id) override { --counts[id]; }
        };
        QHash<long, int> counts;
        const auto tool = std::make_shared<Tool>();
        support::twdClient::setConnection(tool);
        support::twdClient::setMemoryFactory(
            [&counts](const QString &, int) { return std::make_unique<Memory>(counts); });
        const auto live = [&](const char *name) { return counts.value(tool->identifiers.value(QLatin1String(name))); };
        {
            Vellum5 first, second;
            QCOMPARE(live("Vellum5"), 2);
            QCOMPARE(live("VirtualCommandManager"), 2);
            QVERIFY(!tool->identifiers.contains("EventProxy"));
            first.EventProxy();
            QCOMPARE(live("EventProxy"), 1);
            load(first, "<p>x");
            QCOMPARE(live("ChangeManager"), 1);
            first.Terminate();
            QCOMPARE(live("EventProxy"), 0);
            QCOMPARE(live("VirtualCommandManager"), 1);
            QCOMPARE(live("Vellum5"), 2); // the end of the object lowers it, not its `Terminate`
            second.Terminate();
        }
        for (const char *name : {"Vellum5", "EventProxy", "VirtualCommandManager", "ChangeManager"})
            QCOMPARE(live(name), 0);
    }
    void controlsAreCountedWhileTheyAreInitialised()
    {
        const long before = modMain::mInstanceCount;
        auto first = std::make_unique<Vellum5>();
        Vellum5 second;
        QCOMPARE(modMain::mInstanceCount, before + 2);
        first->Terminate();
        QCOMPARE(modMain::mInstanceCount, before + 2); // the end of the object lowers it, not its `Terminate`
        first.reset();
        QCOMPARE(modMain::mInstanceCount, before + 1);
        Form form;
        form.userMode = false;
        PropertyBag bag;
        {
            Vellum5 designed(bag, nullptr, &form);
            QCOMPARE(modMain::mInstanceCount, before + 1);
        }
        QCOMPARE(modMain::mInstanceCount, before + 1);
        second.Terminate();
    }
    void theEndGoesInItsOrder()
    {
        Vellum5 control;
        load(control, "<p>x");
        control.StyleSheets()->Add("a.css");
        int asked = 0;
        connect(control.EventProxy(), &QObject::destroyed, this, [&] {
            ++asked;
            QVERIFY(control.Terminating());
            QVERIFY(!control.Terminated());
            QVERIFY(!control.DOM());
            QCOMPARE(control.StyleSheets()->Count(), 0);
            QVERIFY(!control.state().mTheme);
            QVERIFY(control.CommandManager()); // goes behind the proxy
            control.Terminate(); // within the end: nothing more
            QVERIFY(control.Terminating());
        });
        control.Terminate();
        QCOMPARE(asked, 1);
        QVERIFY(control.Terminated());
        QVERIFY(!control.CommandManager());
    }
    void theEndMayComeInAnyEvent()
    {
        auto *control = new Vellum5;
        connect(control, &Vellum5::DocumentComplete, control, &Vellum5::Terminate);
        load(*control, "<p>x");
        QVERIFY(control->Terminated());
        QVERIFY(!control->Terminating());
        QVERIFY(!control->DOM());
        delete control;
    }
    void noTimerOutlivesTheEnd()
    {
        Vellum5 control;
        control.setChangeDelay(100);
        load(control, "<p>x");
        QSignalSpy changed(&control, &Vellum5::Change);
        control.DOM()->body()->setInnerHTML("<p>y");
        control.FlushChanges();
        QVERIFY(control.parts().events.timChange.isEnabled());
        control.Terminate();
        QVERIFY(!control.parts().events.timChange.isEnabled());
        QVERIFY(!control.parts().timSpellCheck.isEnabled());
        base::Clock::instance().advance(1000);
        QCOMPARE(changed.count(), 0);
    }
    void theStyleSheetsAreAlwaysAnObject()
    {
        Vellum5 control;
        const auto first = control.StyleSheets();
        QCOMPARE(first->Count(), 0);
        first->Add("a.css");
        control.setStyleSheets(nullptr);
        QCOMPARE(control.StyleSheets(), first);
        const auto other = std::make_shared<platform::Collection>();
        control.setStyleSheets(other);
        QCOMPARE(control.StyleSheets(), other);
        control.Terminate();
        QVERIFY(control.StyleSheets());
        QVERIFY(control.StyleSheets() != other);
        QCOMPARE(control.StyleSheets()->Count(), 0);
    }
    void theSpellTimerHasItsDesign()
    {
        Vellum5 control;
        QCOMPARE(control.parts().timSpellCheck.interval(), 750);
        QVERIFY(!control.parts().timSpellCheck.isEnabled());
        control.Terminate();
    }
    void theThemesFrameGoesWithTheEnd()
    {
        Vellum5 control;
        if (!control.state().mThemed) QSKIP("a style without frames");
        control.resize(60, 60);
        control.show();
        const auto frame = [&] {
            QImage image(60, 60, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            control.render(&painter, QPoint(), QRegion(), QWidget::RenderFlags());
            return image;
        };
        const QImage themed = frame();
        control.setBorderStyle(0);
        QVERIFY(frame() != themed);
        control.setBorderStyle(1);
        QCOMPARE(frame(), themed);
        control.Terminate();
        QVERIFY(!control.state().mTheme);
        QVERIFY(frame() != themed);
    }
    void aMisspeltWordIsUnderlinedByThePicture()
    {
        Vellum5 control;
        control.resize(300, 200);
        control.show();
        const auto redPixels = [&] {
            const QImage image = control.VisualEditControl()->viewport()->grab().toImage();
            int count = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    count += image.pixelColor(x, y) == QColor(255, 0, 0);
            return count;
        };
        control.setBaseURL("http://example.com/"); // a page of no address has no such style
        load(control, "<html><body><p>a <span>misspeltt</span></p></body></html>");
        QCOMPARE(redPixels(), 0);
        load(control, "<html><body><p>a <span class=lxMisspelled>misspeltt</span></p></body></html>");
        QVERIFY(redPixels() > 10);
        control.Terminate();
    }
    void thePictureLiesInTheLibraryItself()
    {
        QCOMPARE(spellImagePath("/usr/lib/libVellumKit5.so", "/usr/bin"),
                 QString("/usr/lib/libVellumKit5.so/waveyred.gif"));
        QCOMPARE(spellImagePath("C:\\Dev\\VB6.EXE", "C:\\App"), QString("C:\\App\\VellumKit5.ocx/waveyred.gif"));
        QCOMPARE(spellImagePath("C:\\Dev\\vb.exe", "C:\\App"), QString("C:\\Dev\\vb.exe/waveyred.gif"));
        QCOMPARE(spellImagePath("C:\\Dev\\myvb6.exe", "C:\\App"), QString("C:\\Dev\\myvb6.exe/waveyred.gif"));
        Vellum5 control;
        QCOMPARE(control.state().mSpellImagePath, support::moduleFileName() + "/waveyred.gif");
        control.Terminate();
    }
};

QTEST_MAIN(tst_shell)
#include "tst_shell.moc"
