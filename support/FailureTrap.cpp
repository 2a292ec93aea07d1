// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FailureTrap.h"

#include "support/InstanceCounts.h"
#include "support/LineTable.h"

#include <cxxabi.h>
#include <new>
#include <stdexcept>

namespace support {

namespace {

struct Caught
{
    long number = base::errors::automation;
    QString description;
    int line = 0;
    const char *file = nullptr;
    base::StackPlaces stack = {};
};

QString foreignDescription()
{
    const std::type_info *type = abi::__cxa_current_exception_type();
    return type ? QStringLiteral("Unknown failure of type %1").arg(detail::shortTypeName(*type))
                : QStringLiteral("Unknown failure");
}

Caught currentError()
{
    try {
        throw;
    } catch (const base::Error &error) {
        return {error.number(), error.description(), error.line(), error.file(), error.stack()};
    } catch (const std::bad_alloc &) {
        return {base::errors::outOfMemory, QStringLiteral("Out of memory")};
    } catch (const std::out_of_range &error) {
        return {base::errors::subscriptOutOfRange, QString::fromUtf8(error.what())};
    } catch (const std::exception &error) {
        return {base::errors::automation, QString::fromUtf8(error.what())};
    } catch (...) {
        return {base::errors::automation, foreignDescription()};
    }
}

} // namespace

long currentErrorNumber() noexcept
{
    try {
        throw;
    } catch (const base::Error &error) {
        return error.number() != 0 ? error.number() : base::errors::automation;
    } catch (const std::bad_alloc &) {
        return base::errors::outOfMemory;
    } catch (const std::out_of_range &) {
        return base::errors::subscriptOutOfRange;
    } catch (...) {
        return base::errors::automation;
    }
}

void TrapFrame::addDump(VariableRole role, const QString &text)
{
    if (!mDumps) mDumps = new Dumps;
    (role == VariableRole::Parameter ? mDumps->parameters : mDumps->locals).prepend(text);
}

void TrapFrame::forgetDumps()
{
    delete std::exchange(mDumps, nullptr);
}

QString TrapFrame::makeDump()
{
    VariableDump locals(VariableRole::Local), members(VariableRole::Member), parameters(VariableRole::Parameter);
    const auto addAll = [](VariableDump &dump, const detail::NamedVariable *variables, std::size_t count) {
        for (const detail::NamedVariable *end = variables + count; variables != end; ++variables)
            variables->dump(dump, variables->name, variables->value);
    };
    try {
        if (mVariables.dumpMembers) mVariables.dumpMembers(mVariables.object, members);
    } catch (...) {
        // What was dumped before the failure stands.
    }
    addAll(locals, mVariables.locals, mVariables.localCount);
    addAll(parameters, mVariables.parameters, mVariables.parameterCount);
    return wholeDump(mDumps ? locals.text() + mDumps->locals : locals.text(), members.text(),
                     mDumps ? parameters.text() + mDumps->parameters : parameters.text());
}

std::optional<int> TrapFrame::lineOfCall(const base::StackPlaces &stack) const
{
    for (const base::StackPlace &place : stack) {
        const std::optional<int> line = lineInFile(place.address, mFile);
        if (line && *line >= mLine) return line;
        // This object lies in the procedure's frame; what is further out are its callers.
        if (place.frame > this) break;
    }
    return {};
}

FailureReport TrapFrame::makeReport()
{
    const Caught error = currentError();
    FailureReport report;
    report.module = QString::fromLatin1(mModule);
    report.procedure = QString::fromLatin1(mProcedure);
    report.number = error.number;
    report.description = error.description;
    // An error that was thrown in this file, behind the trap's line, was thrown by the procedure itself or by a helper
    // beside it, whose line says more than the call's.
    const bool thrownHere = error.file && std::strcmp(error.file, mFile) == 0 && error.line >= mLine;
    report.line = thrownHere ? error.line : lineOfCall(error.stack).value_or(mLastLine);

    SupportVariables &variables = supportVariables();
    variables.twdErrorNumber = report.number;
    variables.twdErrorDescription = report.description;
    variables.twdErrorLine = report.line;
    variables.twdErrorSource = report.module + QLatin1Char('.') + report.procedure;
    // The last dump isn't part of the next one: they would grow without end.
    variables.twdVariableDump.clear();
    report.dump = makeDump();
    variables.twdVariableDump = report.dump;
    return report;
}

void TrapFrame::report() noexcept
{
    try {
        deliverFailure(makeReport());
    } catch (...) {
        // A failure inside the report ends here.
    }
    // What fails from here on belongs to the caller.
    forgetDumps();
}

} // namespace support
