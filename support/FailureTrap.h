// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Error.h"
#include "base/Fault.h"
#include "support/FailureReport.h"

#include <array>
#include <cstring>
#include <exception>
#include <type_traits>

/// The trap that each procedure of the control carries. Whatever is thrown in a procedure ends at its trap in one
/// report, and the caller goes on with the result as far as it came:
///
///     void Vellum5::SetChangeKey(const QString &ChangeKey)
///     {
///         trap("Vellum5", "SetChangeKey", given(this, "ChangeKey", ChangeKey), [&] {
///             mChangeKey = ChangeKey;
///         });
///     }
///     QString Vellum5::GetVisualHTML()
///     {
///         int Count = 0;
///         return trap<QString>("Vellum5", "GetVisualHTML", given(this).locals("Count", Count), [&](QString &Result) {
///             Count = ...
///         });
///     }
///
/// The third argument tells where the module's variables are: an object with `void dumpModuleVariables(VariableDump &)
/// const`, a function `void (VariableDump &)` for a module of functions, or nullptr; `given` adds the procedure's
/// parameters to it, and `locals` the local variables that stand in front of the trap, so that a report shows them also
/// where the procedure failed before its first statement. Variables that can only live inside of the body have a
/// `Locals` declared behind them (and `Parameters`, for a parameter that the body has to prepare first): while the
/// stack unwinds it still sees them, and writes their dump then. On the way where nothing fails a trap is a handful of
/// stores, a guard one store a variable.
///
/// The line reported is that of the statement in the procedure that failed. Where a function that it called threw, the
/// calls that led to the error tell it, as long as the program carries its line table; without one, the last line that
/// the procedure is known to have reached does (`CallSite`), and after that the trap's own line.
namespace support {

using ModuleDump = void (*)(VariableDump &);

namespace detail {

/// A variable that a dump names, by its address: reading it costs only when something fails.
struct NamedVariable
{
    const char *name;
    const void *value;
    void (*dump)(VariableDump &, const char *, const void *);
};

template <class T> NamedVariable namedVariable(const char *name, T &value)
{
    return {name, static_cast<const void *>(&value), [](VariableDump &dump, const char *variable, const void *address) {
                dump.add(variable, *static_cast<const T *>(address));
            }};
}

inline void nameVariables(NamedVariable *) {}
template <class T, class... Rest> void nameVariables(NamedVariable *to, const char *name, T &value, Rest &&...rest)
{
    *to = namedVariable(name, value);
    nameVariables(to + 1, std::forward<Rest>(rest)...);
}

template <class T> void dumpMembersOf(const void *object, VariableDump &dump)
{
    static_cast<const T *>(object)->dumpModuleVariables(dump);
}
inline void dumpModule(const void *module, VariableDump &dump)
{
    reinterpret_cast<ModuleDump>(reinterpret_cast<quintptr>(module))(dump);
}

/// What a report can know of a procedure before it runs.
struct ModuleVariables
{
    using DumpMembers = void (*)(const void *, VariableDump &);

    const void *object = nullptr;
    DumpMembers dumpMembers = nullptr;
    const NamedVariable *parameters = nullptr;
    std::size_t parameterCount = 0;
    const NamedVariable *locals = nullptr;
    std::size_t localCount = 0;

    ModuleVariables(std::nullptr_t) {}
    ModuleVariables(ModuleDump function)
        : object(reinterpret_cast<const void *>(reinterpret_cast<quintptr>(function))), dumpMembers(&dumpModule)
    {
    }
    template <class T>
    requires requires(const T &t, VariableDump &dump) { t.dumpModuleVariables(dump); }
    ModuleVariables(const T *module) : object(module), dumpMembers(&dumpMembersOf<T>) {}
};

/// A procedure's parameters and local variables beside its module's variables.
template <std::size_t parameterCount, std::size_t localCount = 0> struct Given
{
    ModuleVariables variables;
    std::array<NamedVariable, parameterCount> parameters;
    std::array<NamedVariable, localCount> localVariables = {};

    operator ModuleVariables() const
    {
        ModuleVariables all = variables;
        all.parameters = parameters.data();
        all.parameterCount = parameterCount;
        all.locals = localVariables.data();
        all.localCount = localCount;
        return all;
    }

    /// Adds the procedure's local variables, by name and variable in turn. They stand in front of the trap, so that a
    /// report shows them from the procedure's first moment on, and as they were when it failed.
    template <class... Arguments> Given<parameterCount, sizeof...(Arguments) / 2> locals(Arguments &&...arguments) const
    {
        Given<parameterCount, sizeof...(Arguments) / 2> all{variables, parameters};
        nameVariables(all.localVariables.data(), std::forward<Arguments>(arguments)...);
        return all;
    }
};

} // namespace detail

/// A trap's third argument where the procedure has parameters: the module's variables, then each parameter by name and
/// variable in turn. Only variables that outlive the trap, no temporaries.
template <class... Arguments>
detail::Given<sizeof...(Arguments) / 2> given(detail::ModuleVariables variables, Arguments &&...parameters)
{
    detail::Given<sizeof...(Arguments) / 2> all{variables, {}};
    detail::nameVariables(all.parameters.data(), std::forward<Arguments>(parameters)...);
    return all;
}

class TrapFrame
{
public:
    TrapFrame(const char *module, const char *procedure, const detail::ModuleVariables &variables, int line,
              const char *file)
        : mModule(module), mProcedure(procedure), mVariables(variables), mFile(file), mLine(line), mLastLine(line),
          mPrevious(sCurrent)
    {
        sCurrent = this;
        ++base::errorStacksWanted;
    }
    ~TrapFrame()
    {
        sCurrent = mPrevious;
        --base::errorStacksWanted;
        delete mDumps;
    }
    TrapFrame(const TrapFrame &) = delete;
    TrapFrame &operator=(const TrapFrame &) = delete;

    /// The innermost procedure that runs in this thread, null outside of any.
    static TrapFrame *current() { return sCurrent; }

    void noteLine(int line, const char *file)
    {
        // One unit's name of a file is one literal.
        if (file == mFile) mLastLine = line;
    }
    /// Takes the dump of a guard's variables. A later guard's come before those already there, since guards end in the
    /// reverse order of their declaration.
    void addDump(VariableRole role, const QString &text);
    /// Forgets the dumps that guards wrote for an error that was caught inside the procedure.
    void forgetDumps();

    /// To be called in the handler: reports the error being handled.
    void report() noexcept;

private:
    struct Dumps
    {
        QString locals, parameters;
    };

    FailureReport makeReport();
    std::optional<int> lineOfCall(const base::StackPlaces &stack) const;
    QString makeDump();

    const char *mModule, *mProcedure;
    detail::ModuleVariables mVariables;
    const char *mFile;
    int mLine;
    int mLastLine;
    TrapFrame *mPrevious;
    Dumps *mDumps = nullptr; // made only when something fails

    static inline thread_local constinit TrapFrame *sCurrent = nullptr;
};

/// A default argument of functions that procedures call and that may fail (`CallSite = {}`, the last one): tells the
/// caller's trap which line is being run.
struct CallSite
{
    CallSite(int line = __builtin_LINE(), const char *file = __builtin_FILE())
    {
        if (TrapFrame *frame = TrapFrame::current()) frame->noteLine(line, file);
    }
};

/// Runs a body that has no result, or that returns one: the type's default value when it fails.
template <class Body>
requires std::is_invocable_v<Body>
auto trap(const char *module, const char *procedure, detail::ModuleVariables variables, Body &&body,
          int line = __builtin_LINE(), const char *file = __builtin_FILE()) -> std::invoke_result_t<Body>
{
    TrapFrame frame(module, procedure, variables, line, file);
    try {
        base::faults::check(module, procedure, line, file);
        return body();
    } catch (...) {
        frame.report();
    }
    if constexpr (!std::is_void_v<std::invoke_result_t<Body>>) return {};
}

/// Runs a body that fills in a result, which starts as the type's default value. What it holds when the body fails is
/// what the caller gets.
template <class Result, class Body>
requires std::is_invocable_v<Body, Result &> Result trap(const char *module, const char *procedure,
                                                         detail::ModuleVariables variables, Body &&body,
                                                         int line = __builtin_LINE(),
                                                         const char *file = __builtin_FILE())
{
    Result result{};
    TrapFrame frame(module, procedure, variables, line, file);
    try {
        base::faults::check(module, procedure, line, file);
        body(result);
    } catch (...) {
        frame.report();
    }
    return result;
}

/// The number of the error being handled, as a report would give it.
long currentErrorNumber() noexcept;

/// Runs a body with errors ignored. The error's number is the test: 0 when all went well.
template <class Body> long attempt(Body &&body) noexcept
{
    // Nobody will ask where an error came from; a trap inside counts anew.
    struct Untraced
    {
        const int wanted = std::exchange(base::errorStacksWanted, 0);
        ~Untraced() { base::errorStacksWanted = wanted; }
    } untraced;
    try {
        body();
        return 0;
    } catch (...) {
        if (TrapFrame *frame = TrapFrame::current()) frame->forgetDumps();
        return currentErrorNumber();
    }
}

// --- variables ---

template <VariableRole role, std::size_t count> class VariableGuard
{
public:
    VariableGuard(const VariableGuard &) = delete;
    VariableGuard &operator=(const VariableGuard &) = delete;

protected:
    VariableGuard() : mFrame(TrapFrame::current()), mExceptions(std::uncaught_exceptions()) {}
    ~VariableGuard()
    {
        if (std::uncaught_exceptions() > mExceptions && mFrame) [[unlikely]]
            write();
    }

    detail::NamedVariable *variables() { return mVariables.data(); }

private:
    void write() noexcept
    {
        try {
            VariableDump dump(role);
            for (const detail::NamedVariable &variable : mVariables)
                variable.dump(dump, variable.name, variable.value);
            mFrame->addDump(role, dump.text());
        } catch (...) {
            // The report goes without these variables.
        }
    }

    TrapFrame *mFrame;
    int mExceptions;
    std::array<detail::NamedVariable, count> mVariables;
};

/// Names the local variables that a failure's dump shows, by name and variable in turn. Only variables, no temporaries.
template <std::size_t count> class Locals : public VariableGuard<VariableRole::Local, count>
{
public:
    template <class... Arguments> explicit Locals(Arguments &&...arguments)
    {
        detail::nameVariables(this->variables(), std::forward<Arguments>(arguments)...);
    }
};
template <class... Arguments> Locals(Arguments &&...) -> Locals<sizeof...(Arguments) / 2>;

/// The same for the procedure's parameters.
template <std::size_t count> class Parameters : public VariableGuard<VariableRole::Parameter, count>
{
public:
    template <class... Arguments> explicit Parameters(Arguments &&...arguments)
    {
        detail::nameVariables(this->variables(), std::forward<Arguments>(arguments)...);
    }
};
template <class... Arguments> Parameters(Arguments &&...) -> Parameters<sizeof...(Arguments) / 2>;

} // namespace support
