// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/VariableDump.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

/// Counts of live instances of every class, for a trace tool that listens. The tool is a program of its own; without
/// one, which is the normal case, nothing is sent and no counter exists. The shared memory belongs to the tool, and the
/// counters in it are changed only by adding and subtracting one.
namespace support {

/// The project's classes in their fixed order; the number of a class is its place here.
enum class Component {
    Vellum5,
    VirtualCommandManager,
    ContextMenus,
    EventProxy,
    ChangeManager,
    ChangeRecord,
    ChangeRecords,
    LinkInfo,
    frmPasteSpecial,
    frmHyperlinkBuilder,
    SpellChecker,
    DOMFindReplace,
    CodeMaxFindReplace,
    frmFindReplace,
    History,
    HTMLTagSupport,
    PageMap,
    PageElement,
    PageElements,
    ImageDrag,
    PageTagBar,
    Canvas,
    HTMLAttributes,
    frmTableProperties,
    frmCellProperties,
    frmLineProperties,
    frmBookmark,
    frmColour,
    StyleEditor,
    StyleRule,
    StyleRules,
    Metric,
    ToolTip,
    Count
};
QString componentName(Component component);

/// The connection to the trace tool.
class TraceConnection
{
public:
    virtual ~TraceConnection() = default;
    virtual bool isListening() = 0;
    virtual bool wantsInstanceCounts() = 0;
    /// Handle of the counter's server, 0 without one.
    virtual long instanceCountsServerHandle() { return 0; }
    /// Sends a message and gives the tool's answer: to `traceRegisterClass` the identifier of the class, to
    /// `traceReportState` a number that is not 0 if the class is to be left out. 0 when no answer came in time.
    virtual long send(int code, const QString &text, int timeoutMs) = 0;
};
inline constexpr int traceRegisterClass = 502;
inline constexpr int traceReportState = 10;
inline constexpr int traceTimeoutMs = 2000;
inline constexpr char instanceCountsMemoryName[] = "#TraceWardInstanceCounting#";
inline constexpr int instanceCountsMemorySize = 10000;

/// The block of counters that is shared with the tool.
class InstanceCountsMemory
{
public:
    virtual ~InstanceCountsMemory() = default;
    /// `componentId` is the identifier that the tool gave; one that lies outside the block is passed over.
    virtual void add(long componentId) = 0;
    virtual void subtract(long componentId) = 0;
};
using InstanceCountsMemoryFactory = std::function<std::unique_ptr<InstanceCountsMemory>(const QString &name, int size)>;

/// Where the connection comes from, and the process's command line taken apart.
class twdClient
{
public:
    struct CommandLine
    {
        QString programName;
        QString arguments;
    };
    /// The connection to the trace tool; the default one has no tool that listens. Never empty.
    static std::shared_ptr<TraceConnection> connection();
    /// A leading double quote is honoured: the program's name then ends at the next one. Blanks between the name and
    /// the arguments belong to neither.
    static CommandLine takeApart(const QString &commandLine);
    /// The same for this process.
    static CommandLine processCommandLine();

    /// Puts another connection in place of the default one (empty brings that back) and starts anew.
    static void setConnection(std::shared_ptr<TraceConnection> connection);
    /// How the shared block is opened; empty brings back the system's shared memory.
    static void setMemoryFactory(InstanceCountsMemoryFactory factory);
};

/// Sends a message to the trace tool with the fixed time-out; does nothing and gives 0 when none listens.
long sendTrace(int code, const QString &text);

/// A member of each class that is counted: counts its owner while it lives.
class InstanceCounter
{
public:
    explicit InstanceCounter(Component component);
    ~InstanceCounter();
    InstanceCounter(const InstanceCounter &other) : InstanceCounter(other.mComponent) {}
    InstanceCounter &operator=(const InstanceCounter &) { return *this; }

private:
    Component mComponent;
};

/// The support's own variables, in the order of their dump.
struct SupportVariables
{
    long twdProjectId = 5;
    qint64 twdProcessId = 0;
    QString twdModuleFilename;
    bool twdDebuggerListening = false;
    bool twdEnableInstanceCounts = false;
    long twdInstanceCountsServerHandle = 0;
    std::vector<QString> twdInstanceCountComponentNames;
    std::vector<bool> twdSkipInstanceCount;
    std::vector<long> twdComponentID;
    bool twdHasInitialised = false;
    QString twdVariableDump;
    long twdErrorNumber = 0;
    QString twdErrorDescription;
    int twdErrorLine = 0;
    QString twdErrorSource;
    std::shared_ptr<TraceConnection> twdDebugClient;
    std::unique_ptr<InstanceCountsMemory> twdInstanceCountsMemory;
};
SupportVariables &supportVariables();
/// Sets the support up, once a process: who we are, and whether a tool listens.
void initialiseSupport();
void dumpSupportVariables(VariableDump &dump);
/// Full name of the file that this code was loaded from: the library's, or the program's that it is linked into.
QString moduleFileName();

} // namespace support
