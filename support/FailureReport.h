// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/VariableDump.h"

#include <QString>
#include <functional>
#include <memory>

/// What becomes of a failure that a trap caught: one report, made and shown. The report goes to the presenter; the
/// default one asks the external error-report object if there is one, and shows a message box otherwise. Script mode
/// and tests put a presenter of their own in its place and collect the reports.
namespace support {

struct FailureReport
{
    QString module;
    QString procedure;
    int line = 0;
    long number = 0;
    QString description;
    QString dump;
};

inline constexpr char applicationName[] = "VellumKit5";
/// Major, minor and revision number, joined by dots.
inline constexpr char applicationVersion[] = "5.0.0";

using FailurePresenter = std::function<void(const FailureReport &)>;
/// Sets who shows the reports; an empty one brings back the default. Gives the one before (empty: the default).
FailurePresenter setFailurePresenter(FailurePresenter presenter);

/// What the external error-report object wants done when it was shown. In either case the failed procedure ends as
/// handled.
enum class ErrorReportAction { Continue, QuitApplication };

/// The external error-report object, as far as a report needs one.
class ErrorReportObject
{
public:
    virtual ~ErrorReportObject() = default;
    virtual void setApplication(const QString &name, const QString &version) = 0;
    virtual void setReport(const FailureReport &report) = 0;
    virtual ErrorReportAction show() = 0;
};
using ErrorReportFactory = std::function<std::unique_ptr<ErrorReportObject>()>;
/// None by default. A factory that fails or gives nothing means that the object doesn't exist.
void setErrorReportFactory(ErrorReportFactory factory);

/// The text of the box that stands in for the error-report object.
QString failureBoxText(const FailureReport &report);
/// Shows the box, or, where there is no application with windows, writes its text to standard error. A report that
/// comes while a box is open is shown after it.
void showFailureBox(const FailureReport &report);

/// Hands a finished report to the presenter and keeps it as the last failure. What the presenter raises is swallowed.
void deliverFailure(const FailureReport &report) noexcept;

/// The two halves of the dump: the sections given, each the text of its variables ("{None}" stands for an empty one),
/// and the global variables as they are now.
QString wholeDump(const QString &locals, const QString &moduleVariables, const QString &parameters);

/// Lets a global program variable join every dump. The ones that a reader looks for first (`mInstanceCount`,
/// `mAppName`, `mAutoFormatHTML`, `HTMLClipboardFormat`, `mHTMLTidy`, `RuleIncrement`) stand in this order, "{Empty}"
/// until they are registered; others follow in the order of registration. Registering a name again replaces its getter.
void registerGlobalVariable(const QString &name, std::function<DumpValue()> getter);

} // namespace support
