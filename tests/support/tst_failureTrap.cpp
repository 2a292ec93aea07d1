// SPDX-License-Identifier: GPL-3.0-or-later
#include "commands/VirtualCommandManager.h"
#include "support/Debug.h"
#include "support/FailureTrap.h"
#include "support/InstanceCounts.h"
#include "support/LineTable.h"
#include "support/SettingsStore.h"
#include "support/ToolTip.h"
#include "undo/ChangeManager.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace support;

namespace dom {
class Element;
}
namespace {

int failingLine = 0;
int work = 0;

int mayFail(bool fail, CallSite = {})
{
    if (fail) throw std::runtime_error("call failed");
    return 1;
}

/// Stands for an operation of another folder: its error tells another file.
void __attribute__((noinline)) failElsewhere(int depth)
{
    if (depth > 0)
        failElsewhere(depth - 1);
    else
        throw base::Error(600, QStringLiteral("Not possible"), 1, "Elsewhere.cpp");
    work += 1;
}

/// Is any call that led here known by its line?
bool carriesLineTable()
{
    base::errorStacksWanted += 1;
    const base::Error error(1, QString());
    base::errorStacksWanted -= 1;
    return std::any_of(error.stack().begin(), error.stack().end(),
                       [](const base::StackPlace &place) { return lineInFile(place.address, __FILE__).has_value(); });
}

class Subject
{
public:
    int mCount = 3;
    QString mName = QStringLiteral("body");

    void dumpModuleVariables(VariableDump &dump) const { dump.add("mCount", mCount).add("mName", mName); }

    void Throwing(const QString &Text, dom::Element *Element)
    {
        trap("Subject", "Throwing", this, [&] {
            Parameters parameters("Text", Text, "Element", Element);
            int index = 4;
            Locals locals("index", index);
            index = 5;
            failingLine = __LINE__ + 1;
            throw base::Error(380, QStringLiteral("Invalid property value"));
        });
    }
    void Given(const QString &Text, dom::Element *Element, int &Count)
    {
        trap("Subject", "Given", given(this, "Text", Text, "Element", Element, "Count", Count), [&] {
            Count = 9;
            int further = 1;
            Parameters parameters("further", further);
            throw base::Error(13, QStringLiteral("Type mismatch"));
        });
    }
    void Counting(int &Limit)
    {
        int count = 0;
        dom::Element *at = nullptr;
        trap("Subject", "Counting", given(this, "Limit", Limit).locals("count", count, "at", at), [&] {
            count = 7;
            int further = 1;
            Locals locals("further", further);
            throw base::Error(6, QStringLiteral("Overflow"));
        });
    }
    QString HalfWay()
    {
        return trap<QString>("Subject", "HalfWay", this, [&](QString &Result) {
            Result = QStringLiteral("half");
            throw std::bad_alloc();
        });
    }
    int Returning(bool fail)
    {
        return trap("Subject", "Returning", this, [&]() -> int {
            if (fail) throw 17;
            return 8;
        });
    }
    void Calling()
    {
        trap("Subject", "Calling", this, [&] {
            mayFail(false);
            mCount += 1;
            failingLine = __LINE__ + 1;
            mayFail(true);
            mCount += 1;
        });
    }
    void CallingElsewhere()
    {
        trap("Subject", "CallingElsewhere", this, [&] {
            work += 1;
            failingLine = __LINE__ + 1;
            failElsewhere(3);
            work += 2;
        });
    }
    void CallingAttempt()
    {
        trap("Subject", "CallingAttempt", this, [&] {
            if (attempt([] { failElsewhere(1); }) != 600) work = -1;
            // The trap inside an attempt still knows its lines.
            attempt([&] { CallingElsewhere(); });
        });
    }
    void Outer()
    {
        trap("Subject", "Outer", this, [&] {
            Throwing(QStringLiteral("inner"), nullptr);
            mCount = 100;
        });
    }
    long Tolerant()
    {
        long number = 0;
        trap("Subject", "Tolerant", this, [&] {
            number = attempt([&] {
                int ignored = 1;
                Locals locals("ignored", ignored);
                throw base::Error(91, QStringLiteral("Object variable not set"));
            });
            int kept = 2;
            Locals locals("kept", kept);
            throw base::Error(5, QStringLiteral("later"));
        });
        return number;
    }
};

void dumpModule(VariableDump &dump)
{
    dump.add("ModuleVariable", 11);
}
void moduleProcedure()
{
    trap("modTest", "moduleProcedure", &dumpModule, [] { throw std::out_of_range("no such index"); });
}

/// What a trap costs is measured on a body that the compiler can't look through.
void __attribute__((noinline)) trappedWork()
{
    trap("modTest", "trappedWork", nullptr, [] { work += 1; });
}

class Tool : public TraceConnection
{
public:
    bool listening = true, wanted = true;
    long identifier = 40;
    QStringList sent, skipped;
    QList<int> timeouts;
    bool isListening() override { return listening; }
    bool wantsInstanceCounts() override { return wanted; }
    long send(int code, const QString &text, int timeoutMs) override
    {
        sent << QString::number(code) + ' ' + text;
        timeouts << timeoutMs;
        if (code == traceRegisterClass) return ++identifier;
        return skipped.contains(text) ? 1 : 0;
    }
};

class Memory : public InstanceCountsMemory
{
public:
    explicit Memory(QHash<long, int> &counts) : mCounts(counts) {}
    void add(long componentId) override { ++mCounts[componentId]; }
    void subtract(long componentId) override { --mCounts[componentId]; }

private:
    QHash<long, int> &mCounts;
};

class ReportObject : public ErrorReportObject
{
public:
    explicit ReportObject(QStringList &calls) : mCalls(calls) {}
    void setApplication(const QString &name, const QString &version) override { mCalls << name << version; }
    void setReport(const FailureReport &report) override { mCalls << report.module + "." + report.procedure; }
    ErrorReportAction show() override
    {
        mCalls << "show";
        return action;
    }
    static inline ErrorReportAction action = ErrorReportAction::Continue;

private:
    QStringList &mCalls;
};

} // namespace

class tst_failureTrap : public QObject
{
    Q_OBJECT
    std::vector<FailureReport> mReports;

private Q_SLOTS:
    void init()
    {
        mReports.clear();
        setFailurePresenter([this](const FailureReport &report) { mReports.push_back(report); });
    }
    void cleanup()
    {
        base::faults::disarmAll();
        setErrorReportFactory({});
        twdClient::setConnection({});
        twdClient::setMemoryFactory({});
    }

    void aFailureGivesOneWholeReport()
    {
        Subject subject;
        subject.Throwing(QString::fromLatin1("a\0b", 3), nullptr);
        QCOMPARE(mReports.size(), 1u);
        const FailureReport &report = mReports[0];
        QCOMPARE(report.module, "Subject");
        QCOMPARE(report.procedure, "Throwing");
        QCOMPARE(report.line, failingLine);
        QCOMPARE(report.number, 380);
        QCOMPARE(report.description, "Invalid property value");
        QVERIFY2(report.dump.startsWith("<Variables>\r\n<LocalVariables>\r\n<index>5</index>\r\n</LocalVariables>\r\n"
                                        "<ModuleVariables>\r\n<mCount>3</mCount>\r\n<mName>body</mName>\r\n"
                                        "</ModuleVariables>\r\n<GlobalVariables>\r\n<twdProjectId>"),
                 qPrintable(report.dump));
        QVERIFY2(report.dump.endsWith("</GlobalVariables>\r\n</Variables>\r\n<Parameters>\r\n<Text>a{Null}b</Text>\r\n"
                                      "<Element>{Can't dump UDT parameters}</Element>\r\n</Parameters>"),
                 qPrintable(report.dump));
    }

    void localsInFrontOfATrapAreToldFromItsFirstMomentOn()
    {
        Subject subject;
        int limit = 2;
        base::faults::arm("Subject", "Counting", 5, "early");
        subject.Counting(limit);
        subject.Counting(limit);
        QCOMPARE(mReports.size(), 2u);
        const QString parameters = "<Parameters>\r\n<Limit>2</Limit>\r\n</Parameters>";
        QVERIFY2(mReports[0].dump.startsWith("<Variables>\r\n<LocalVariables>\r\n<count>0</count>\r\n"
                                             "<at>{Nothing}</at>\r\n</LocalVariables>\r\n"),
                 qPrintable(mReports[0].dump));
        QVERIFY(mReports[0].dump.endsWith(parameters));
        QVERIFY2(mReports[1].dump.startsWith("<Variables>\r\n<LocalVariables>\r\n<count>7</count>\r\n"
                                             "<at>{Nothing}</at>\r\n<further>1</further>\r\n</LocalVariables>\r\n"),
                 qPrintable(mReports[1].dump));
        QVERIFY(mReports[1].dump.endsWith(parameters));
    }

    void globalsComeInTheirOrder()
    {
        registerGlobalVariable("RuleIncrement", [] { return dumpValue(9); });
        registerGlobalVariable("mInstanceCount", [] { return dumpValue(2); });
        registerGlobalVariable("mHTMLTidy", []() -> DumpValue { throw std::runtime_error("locked"); });
        Subject().Calling();
        const QString dump = mReports.at(0).dump;
        const QStringList names = {"twdProjectId",
                                   "twdProcessId",
                                   "twdModuleFilename",
                                   "twdDebuggerListening",
                                   "twdEnableInstanceCounts",
                                   "twdInstanceCountsServerHandle",
                                   "twdInstanceCountComponentNames",
                                   "twdSkipInstanceCount",
                                   "twdComponentID",
                                   "twdHasInitialised",
                                   "twdVariableDump",
                                   "twdErrorNumber",
                                   "twdErrorDescription",
                                   "twdErrorLine",
                                   "twdErrorSource",
                                   "twdDebugClient",
                                   "twdInstanceCountsMemory",
                                   "mInstanceCount",
                                   "mAppName",
                                   "mAutoFormatHTML",
                                   "HTMLClipboardFormat",
                                   "mHTMLTidy",
                                   "RuleIncrement"};
        qsizetype last = dump.indexOf("<GlobalVariables>");
        for (const QString &name : names) {
            const qsizetype position = dump.indexOf('<' + name + '>', last);
            QVERIFY2(position > last, qPrintable(name));
            last = position;
        }
        QVERIFY(dump.contains("<mInstanceCount>2</mInstanceCount>\r\n<mAppName>{Empty}</mAppName>\r\n"));
        QVERIFY(dump.contains("<mHTMLTidy>{Error locked formatting for output}</mHTMLTidy>\r\n<RuleIncrement>9<"));
        QVERIFY(dump.contains("<twdComponentID>{UnInitialised Array}</twdComponentID>"));
        QVERIFY(dump.contains("<twdErrorDescription>call failed</twdErrorDescription>"));
        QVERIFY(dump.contains("<twdErrorSource>Subject.Calling</twdErrorSource>"));
        QVERIFY(dump.contains("<twdDebugClient>{Nothing}</twdDebugClient>"));
        QCOMPARE(supportVariables().twdVariableDump, dump);
        Subject().Calling();
        QVERIFY(mReports.at(1).dump.size() < dump.size() + 100);
    }

    void theCallerGetsTheResultSoFar()
    {
        Subject subject;
        QCOMPARE(subject.HalfWay(), "half");
        QCOMPARE(mReports.at(0).number, base::errors::outOfMemory);
        QCOMPARE(subject.Returning(false), 8);
        QCOMPARE(subject.Returning(true), 0);
        QCOMPARE(mReports.at(1).number, base::errors::automation);
        QVERIFY(mReports.at(1).description.contains("int"));
        QVERIFY(mReports.at(1).dump.contains("<LocalVariables>\r\n{None}\r\n</LocalVariables>"));
        QVERIFY(mReports.at(1).dump.contains("<Parameters>\r\n{None}\r\n</Parameters>"));
    }

    void theLineIsThatOfTheFailingCall()
    {
        Subject subject;
        subject.Calling();
        QCOMPARE(mReports.at(0).line, failingLine);
        QCOMPARE(mReports.at(0).description, "call failed");
        QCOMPARE(subject.mCount, 4);
    }

    void theLineIsThatOfTheCallThatLedToTheError()
    {
        if (!carriesLineTable()) QSKIP("this build has no line table");
        Subject subject;
        subject.CallingElsewhere();
        QCOMPARE(mReports.at(0).line, failingLine);
        QCOMPARE(mReports.at(0).number, 600);
        subject.CallingAttempt();
        QCOMPARE(mReports.size(), 2u);
        QCOMPARE(mReports.at(1).procedure, "CallingElsewhere");
        QCOMPARE(mReports.at(1).line, failingLine);
        QVERIFY(work > 0);
        work = 0;
    }

    void theFailureDoesNotSpreadToTheCaller()
    {
        Subject subject;
        subject.Outer();
        QCOMPARE(subject.mCount, 100);
        QCOMPARE(mReports.size(), 1u);
        QCOMPARE(mReports[0].procedure, "Throwing");
        QCOMPARE(TrapFrame::current(), nullptr);
    }

    void ignoredErrorsGiveTheirNumberAndNoReport()
    {
        Subject subject;
        QCOMPARE(subject.Tolerant(), 91);
        QCOMPARE(mReports.size(), 1u);
        QVERIFY(mReports[0].dump.contains("<LocalVariables>\r\n<kept>2</kept>\r\n</LocalVariables>"));
        QCOMPARE(attempt([] {}), 0);
        QCOMPARE(attempt([] { throw std::bad_alloc(); }), base::errors::outOfMemory);
        QCOMPARE(attempt([] { throw "text"; }), base::errors::automation);
    }

    void modulesOfFunctionsDumpTheirVariables()
    {
        moduleProcedure();
        QCOMPARE(mReports.at(0).number, base::errors::subscriptOutOfRange);
        QVERIFY(mReports[0].dump.contains("<ModuleVariables>\r\n<ModuleVariable>11</ModuleVariable>\r\n</ModuleV"));
    }

    void anArmedFaultStrikesTheNextCallOnly()
    {
        Subject subject;
        base::faults::arm("subject", "returning", 600, "Not possible");
        QCOMPARE(subject.HalfWay(), "half");
        QCOMPARE(subject.Returning(false), 0);
        QCOMPARE(subject.Returning(false), 8);
        QCOMPARE(mReports.size(), 2u);
        QCOMPARE(mReports[1].procedure, "Returning");
        QCOMPARE(mReports[1].number, 600);
        QCOMPARE(mReports[1].description, "Not possible");
        QVERIFY(mReports[1].line > 0);
        QCOMPARE(base::faults::armedCount(), 0);
    }

    void givenParametersAreShownFromTheEntryOn()
    {
        Subject subject;
        int count = 2;
        base::faults::arm("Subject", "Given", 600, "Not possible");
        subject.Given("t", nullptr, count);
        QVERIFY(mReports.at(0).dump.contains("<ModuleVariables>\r\n<mCount>3</mCount>\r\n"));
        QVERIFY(mReports[0].dump.endsWith("<Parameters>\r\n<Text>t</Text>\r\n"
                                          "<Element>{Can't dump UDT parameters}</Element>\r\n"
                                          "<Count>2</Count>\r\n</Parameters>"));
        // As they stood at the moment of failure, with those that the body names behind them.
        subject.Given("t", nullptr, count);
        QVERIFY(mReports.at(1).dump.endsWith("<Count>9</Count>\r\n<further>1</further>\r\n</Parameters>"));
        QCOMPARE(mReports[1].number, 13);
    }

    void aFailureInsideTheReportIsSwallowed()
    {
        setFailurePresenter([](const FailureReport &) { throw std::runtime_error("presenter"); });
        QCOMPARE(Subject().HalfWay(), "half");
    }

    void theErrorReportObjectIsShownWhereThereIsOne()
    {
        QStringList calls;
        setFailurePresenter({});
        setErrorReportFactory([&calls] { return std::make_unique<ReportObject>(calls); });
        Subject().HalfWay();
        QCOMPARE(calls, QStringList({"VellumKit5", "5.0.0", "Subject.HalfWay", "show"}));
    }

    void theActionThatTheObjectGivesIsTaken()
    {
        QStringList calls;
        setFailurePresenter({});
        setErrorReportFactory([&calls] { return std::make_unique<ReportObject>(calls); });
        const auto run = [] {
            constexpr int wentOn = 7;
            QTimer::singleShot(0, [] { Subject().HalfWay(); });
            QTimer::singleShot(1, [] { QCoreApplication::exit(wentOn); });
            return QCoreApplication::exec();
        };
        QCOMPARE(run(), 7);
        ReportObject::action = ErrorReportAction::QuitApplication;
        const int result = run();
        ReportObject::action = ErrorReportAction::Continue;
        QCOMPARE(result, 0);
        QCOMPARE(calls.count("show"), 2);
    }

    void withoutTheObjectTheBoxIsShownAndWorkGoesOn()
    {
        setFailurePresenter({});
        setErrorReportFactory([]() -> std::unique_ptr<ErrorReportObject> { throw std::runtime_error("no class"); });
        QString caption, text;
        QTimer::singleShot(0, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box) return;
            caption = box->windowTitle();
            text = box->text();
            box->accept();
        });
        Subject subject;
        subject.Calling();
        QCOMPARE(subject.mCount, 4);
        QCOMPARE(caption, "Application Error");
        QCOMPARE(text, QString("VellumKit5 has encountered a problem. We are sorry for the inconvenience.\r\n\r\n"
                               "Module: Subject\r\nProcedure: Calling\r\nLine Number: %1\r\n\r\ncall failed (440)")
                           .arg(failingLine));
    }

    void aTrapCostsNextToNothing()
    {
        constexpr int calls = 1000000;
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < calls; ++i)
            trappedWork();
        // The figure is for a reader; a loaded machine must not fail the test.
        qInfo("a trap costs %.1f ns", double(timer.nsecsElapsed()) / calls);
        QCOMPARE(work, calls);
    }

    void debugOutputNeedsTheMachineWideValue()
    {
        QTemporaryDir folder;
        const QString before = SettingsStore::instance().folder();
        SettingsStore::instance().setFolder(folder.path());
        QStringList lines;
        setDebugSink([&lines](const QString &line) { lines << line; });
        const auto tell = [](const char *text) { DebugOutput("HTMLTagSupport").OutputDebugString(text); };
        tell("unset");
        SettingsStore::instance().write(SettingsRoot::CurrentUser, "Software\\Brimfield\\Debug", "Vellum5", "1");
        tell("wrong root");
        SettingsStore::instance().write(SettingsRoot::LocalMachine, "Software\\Brimfield\\Debug", "Vellum5", "True");
        tell("no number");
        SettingsStore::instance().write(SettingsRoot::LocalMachine, "Software\\Brimfield\\Debug", "Vellum5", "2");
        tell("another number");
        SettingsStore::instance().write(SettingsRoot::LocalMachine, "Software\\Brimfield\\Debug", "Vellum5", "1");
        const DebugOutput output("HTMLTagSupport");
        SettingsStore::instance().deleteKey(SettingsRoot::LocalMachine, "Software\\Brimfield\\Debug");
        output.OutputDebugString("on");
        setDebugSink({});
        SettingsStore::instance().setFolder(before);
        QCOMPARE(lines, QStringList("Vellum5.HTMLTagSupport: on"));
    }

    void withNoToolNothingIsSentAndNoCounterExists()
    {
        auto tool = std::make_shared<Tool>();
        tool->listening = false;
        twdClient::setConnection(tool);
        QHash<long, int> counts;
        bool opened = false;
        twdClient::setMemoryFactory([&](const QString &, int) {
            opened = true;
            return std::make_unique<Memory>(counts);
        });
        {
            InstanceCounter counter(Component::ChangeManager);
        }
        QVERIFY(tool->sent.isEmpty() && counts.isEmpty() && !opened);
        QVERIFY(supportVariables().twdHasInitialised && !supportVariables().twdModuleFilename.isEmpty());
        QVERIFY(supportVariables().twdComponentID.empty());
        QCOMPARE(sendTrace(1, "x"), 0);
    }

    void aListeningToolThatWantsNoCountsGetsNone()
    {
        auto tool = std::make_shared<Tool>();
        tool->wanted = false;
        twdClient::setConnection(tool);
        InstanceCounter counter(Component::ChangeManager);
        QVERIFY(tool->sent.isEmpty());
        QVERIFY(!supportVariables().twdInstanceCountsMemory);
    }

    void aListeningToolSeesEveryInstance()
    {
        auto tool = std::make_shared<Tool>();
        tool->skipped << "PageMap";
        twdClient::setConnection(tool);
        QHash<long, int> counts;
        QString memoryName;
        int memorySize = 0;
        twdClient::setMemoryFactory([&](const QString &name, int size) {
            memoryName = name;
            memorySize = size;
            return std::make_unique<Memory>(counts);
        });
        {
            InstanceCounter first(Component::ChangeManager);
            InstanceCounter second(Component::ChangeManager);
            InstanceCounter left(Component::PageMap);
            QCOMPARE(counts.value(41), 2);
            QVERIFY(!counts.contains(42));
        }
        QCOMPARE(counts.value(41), 0);
        QVERIFY(!counts.contains(42));
        QCOMPARE(tool->sent,
                 QStringList({"502 ChangeManager,1,5", "10 ChangeManager", "502 PageMap,1,5", "10 PageMap"}));
        QCOMPARE(tool->timeouts, QList<int>({2000, 2000, 2000, 2000}));
        QCOMPARE(memoryName, "#TraceWardInstanceCounting#");
        QCOMPARE(memorySize, 10000);
        QVERIFY(supportVariables().twdSkipInstanceCount[std::size_t(Component::PageMap)]);
    }

    void aToolThatDoesNotAnswerGetsNoCountsAndIsAskedAgain()
    {
        auto tool = std::make_shared<Tool>();
        tool->identifier = -1; // the first answer is then 0: none
        twdClient::setConnection(tool);
        QHash<long, int> counts;
        twdClient::setMemoryFactory([&](const QString &, int) { return std::make_unique<Memory>(counts); });
        {
            InstanceCounter unanswered(Component::ChangeManager);
            QVERIFY(counts.isEmpty());
            InstanceCounter answered(Component::ChangeManager);
            QCOMPARE(counts.value(1), 1);
        }
        QVERIFY(!counts.contains(0));
        QCOMPARE(tool->sent.count("502 ChangeManager,1,5"), 2);
    }

    void classesCountThemselves()
    {
        auto tool = std::make_shared<Tool>();
        twdClient::setConnection(tool);
        QHash<long, int> counts;
        twdClient::setMemoryFactory([&](const QString &, int) { return std::make_unique<Memory>(counts); });
        const auto live = [&](Component component) {
            return counts.value(supportVariables().twdComponentID[std::size_t(component)]);
        };
        {
            const ToolTip tip;
            const VirtualCommandManager states, others;
            const ChangeManager manager; // with a list for each of its two stacks
            const auto record = base::make<ChangeRecord>();
            QCOMPARE(live(Component::ToolTip), 1);
            QCOMPARE(live(Component::VirtualCommandManager), 2);
            QCOMPARE(live(Component::ChangeManager), 1);
            QCOMPARE(live(Component::ChangeRecords), 2);
            QCOMPARE(live(Component::ChangeRecord), 1);
        }
        for (const int count : std::as_const(counts)) QCOMPARE(count, 0);
        QVERIFY(tool->sent.contains("502 VirtualCommandManager,1,5"));
    }

    void aCommandLineIsTakenApart()
    {
        const auto parts = [](const QString &line) {
            const auto taken = twdClient::takeApart(line);
            return QStringList{taken.programName, taken.arguments};
        };
        QCOMPARE(parts("prog -a \"b c\""), QStringList({"prog", "-a \"b c\""}));
        QCOMPARE(parts("\"my prog\" -a  b"), QStringList({"my prog", "-a  b"}));
        QCOMPARE(parts("\"my prog\""), QStringList({"my prog", ""}));
        QCOMPARE(parts("\"open end"), QStringList({"open end", ""}));
        QCOMPARE(parts(""), QStringList({"", ""}));
        QCOMPARE(twdClient::processCommandLine().programName, QCoreApplication::arguments().value(0));
    }
};

QTEST_MAIN(tst_failureTrap)
#include "tst_failureTrap.moc"
