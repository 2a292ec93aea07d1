// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/InstanceCounts.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSharedMemory>
#include <dlfcn.h>

namespace support {

namespace {

constexpr const char *componentNames[] = {"Vellum5",
                                          "VirtualCommandManager",
                                          "ContextMenus",
                                          "EventProxy",
                                          "ChangeManager",
                                          "ChangeRecord",
                                          "ChangeRecords",
                                          "LinkInfo",
                                          "frmPasteSpecial",
                                          "frmHyperlinkBuilder",
                                          "SpellChecker",
                                          "DOMFindReplace",
                                          "CodeMaxFindReplace",
                                          "frmFindReplace",
                                          "History",
                                          "HTMLTagSupport",
                                          "PageMap",
                                          "PageElement",
                                          "PageElements",
                                          "ImageDrag",
                                          "PageTagBar",
                                          "Canvas",
                                          "HTMLAttributes",
                                          "frmTableProperties",
                                          "frmCellProperties",
                                          "frmLineProperties",
                                          "frmBookmark",
                                          "frmColour",
                                          "StyleEditor",
                                          "StyleRule",
                                          "StyleRules",
                                          "Metric",
                                          "ToolTip"};
static_assert(std::size(componentNames) == std::size_t(Component::Count));

class NoTool : public TraceConnection
{
public:
    bool isListening() override { return false; }
    bool wantsInstanceCounts() override { return false; }
    long send(int, const QString &, int) override { return 0; }
};

/// The counters are 32-bit numbers, one after the other, found by the identifier.
class SystemInstanceCountsMemory : public InstanceCountsMemory
{
public:
    SystemInstanceCountsMemory(const QString &name, int size) : mMemory(name)
    {
        if (!mMemory.create(size)) mMemory.attach();
    }
    void add(long componentId) override { change(componentId, 1); }
    void subtract(long componentId) override { change(componentId, -1); }

private:
    void change(long componentId, int difference)
    {
        if (!mMemory.isAttached() || componentId < 0 || componentId >= mMemory.size() / long(sizeof(qint32))) return;
        mMemory.lock();
        static_cast<qint32 *>(mMemory.data())[componentId] += difference;
        mMemory.unlock();
    }
    QSharedMemory mMemory;
};

std::shared_ptr<TraceConnection> &givenConnection()
{
    static std::shared_ptr<TraceConnection> connection;
    return connection;
}

InstanceCountsMemoryFactory &memoryFactory()
{
    static InstanceCountsMemoryFactory factory;
    return factory;
}

void startCounting(SupportVariables &variables)
{
    const std::size_t count = std::size_t(Component::Count);
    variables.twdInstanceCountComponentNames.assign(std::begin(componentNames), std::end(componentNames));
    variables.twdSkipInstanceCount.assign(count, false);
    variables.twdComponentID.assign(count, 0);
    const QString name = QString::fromLatin1(instanceCountsMemoryName);
    if (memoryFactory())
        variables.twdInstanceCountsMemory = memoryFactory()(name, instanceCountsMemorySize);
    else
        variables.twdInstanceCountsMemory =
            std::make_unique<SystemInstanceCountsMemory>(name, instanceCountsMemorySize);
}

bool isCounting(const SupportVariables &variables)
{
    return variables.twdDebuggerListening && variables.twdEnableInstanceCounts && variables.twdInstanceCountsMemory;
}

} // namespace

QString componentName(Component component)
{
    return QString::fromLatin1(componentNames[std::size_t(component)]);
}

std::shared_ptr<TraceConnection> twdClient::connection()
{
    static const std::shared_ptr<TraceConnection> none = std::make_shared<NoTool>();
    return givenConnection() ? givenConnection() : none;
}

twdClient::CommandLine twdClient::takeApart(const QString &commandLine)
{
    CommandLine parts;
    const QString text = commandLine.trimmed();
    if (text.startsWith(QLatin1Char('"'))) {
        const qsizetype end = text.indexOf(QLatin1Char('"'), 1);
        parts.programName = text.mid(1, end < 0 ? -1 : end - 1);
        if (end >= 0) parts.arguments = text.mid(end + 1).trimmed();
    } else {
        const qsizetype end = text.indexOf(QLatin1Char(' '));
        parts.programName = text.left(end);
        if (end >= 0) parts.arguments = text.mid(end + 1).trimmed();
    }
    return parts;
}

twdClient::CommandLine twdClient::processCommandLine()
{
    QStringList words = QCoreApplication::arguments();
    for (QString &word : words)
        if (word.isEmpty() || word.contains(QLatin1Char(' '))) word = QLatin1Char('"') + word + QLatin1Char('"');
    return takeApart(words.join(QLatin1Char(' ')));
}

void twdClient::setConnection(std::shared_ptr<TraceConnection> connection)
{
    givenConnection() = std::move(connection);
    supportVariables() = SupportVariables();
}

void twdClient::setMemoryFactory(InstanceCountsMemoryFactory factory)
{
    memoryFactory() = std::move(factory);
}

long sendTrace(int code, const QString &text)
{
    const SupportVariables &variables = supportVariables();
    if (!variables.twdDebuggerListening || !variables.twdDebugClient) return 0;
    return variables.twdDebugClient->send(code, text, traceTimeoutMs);
}

SupportVariables &supportVariables()
{
    // Never destroyed: counters of static objects may outlive every other static.
    static SupportVariables *variables = new SupportVariables;
    return *variables;
}

QString moduleFileName()
{
    static const char here = 0;
    Dl_info info;
    if (dladdr(&here, &info) && info.dli_fname) {
        const QString path = QFileInfo(QString::fromLocal8Bit(info.dli_fname)).canonicalFilePath();
        if (!path.isEmpty()) return path;
    }
    return QCoreApplication::applicationFilePath();
}

void initialiseSupport()
{
    SupportVariables &variables = supportVariables();
    if (variables.twdHasInitialised) return;
    variables.twdHasInitialised = true;
    variables.twdModuleFilename = moduleFileName();
    variables.twdProcessId = QCoreApplication::applicationPid();
    variables.twdDebugClient = twdClient::connection();
    variables.twdDebuggerListening = variables.twdDebugClient->isListening();
    if (!variables.twdDebuggerListening) return;
    variables.twdEnableInstanceCounts = variables.twdDebugClient->wantsInstanceCounts();
    variables.twdInstanceCountsServerHandle = variables.twdDebugClient->instanceCountsServerHandle();
    if (variables.twdEnableInstanceCounts) startCounting(variables);
}

InstanceCounter::InstanceCounter(Component component) : mComponent(component)
{
    try {
        initialiseSupport();
        SupportVariables &variables = supportVariables();
        const std::size_t number = std::size_t(component);
        if (!isCounting(variables) || variables.twdSkipInstanceCount[number]) return;
        if (variables.twdComponentID[number] == 0) {
            const QString name = componentName(component);
            variables.twdComponentID[number] =
                sendTrace(traceRegisterClass, name + QLatin1String(",1,") + QString::number(variables.twdProjectId));
            if (sendTrace(traceReportState, name) != 0) variables.twdSkipInstanceCount[number] = true;
        }
        // Without an identifier, because no answer came in time, there is no counter of its own; the next instance asks.
        if (!variables.twdSkipInstanceCount[number] && variables.twdComponentID[number] != 0)
            variables.twdInstanceCountsMemory->add(variables.twdComponentID[number]);
    } catch (...) {
        // Counting is a service to a tool; the class that is being made must not suffer from it.
    }
}

InstanceCounter::~InstanceCounter()
{
    try {
        SupportVariables &variables = supportVariables();
        const std::size_t number = std::size_t(mComponent);
        if (!isCounting(variables) || variables.twdSkipInstanceCount[number]) return;
        if (variables.twdComponentID[number] != 0)
            variables.twdInstanceCountsMemory->subtract(variables.twdComponentID[number]);
    } catch (...) {
    }
}

void dumpSupportVariables(VariableDump &dump)
{
    const SupportVariables &variables = supportVariables();
    dump.add("twdProjectId", variables.twdProjectId)
        .add("twdProcessId", variables.twdProcessId)
        .add("twdModuleFilename", variables.twdModuleFilename)
        .add("twdDebuggerListening", variables.twdDebuggerListening)
        .add("twdEnableInstanceCounts", variables.twdEnableInstanceCounts)
        .add("twdInstanceCountsServerHandle", variables.twdInstanceCountsServerHandle)
        .add("twdInstanceCountComponentNames", variables.twdInstanceCountComponentNames)
        .add("twdSkipInstanceCount", variables.twdSkipInstanceCount)
        .add("twdComponentID", variables.twdComponentID)
        .add("twdHasInitialised", variables.twdHasInitialised)
        .add("twdVariableDump", variables.twdVariableDump)
        .add("twdErrorNumber", variables.twdErrorNumber)
        .add("twdErrorDescription", variables.twdErrorDescription)
        .add("twdErrorLine", variables.twdErrorLine)
        .add("twdErrorSource", variables.twdErrorSource)
        .add("twdDebugClient",
             variables.twdDebugClient ? DumpValue::object(QStringLiteral("twdClient")) : DumpValue::nothing())
        .add("twdInstanceCountsMemory", variables.twdInstanceCountsMemory
                                            ? DumpValue::object(QStringLiteral("InstanceCountsMemory"))
                                            : DumpValue::nothing());
}

} // namespace support
