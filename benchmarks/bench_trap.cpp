// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FailureTrap.h"

#include <benchmark/benchmark.h>

// What the trap of a procedure costs while nothing fails. Every procedure of the control carries one, many of them on
// the road of a keystroke: it must stay below 100 ns.

namespace {

struct Module
{
    int mValue = 0;
    void dumpModuleVariables(support::VariableDump &dump) const { dump.add("mValue", mValue); }

    __attribute__((noinline)) void plain() { benchmark::DoNotOptimize(++mValue); }
    __attribute__((noinline)) void trapped()
    {
        support::trap("Module", "trapped", this, [&] { benchmark::DoNotOptimize(++mValue); });
    }
    __attribute__((noinline)) int withResult()
    {
        return support::trap<int>("Module", "withResult", this, [&](int &Result) { Result = ++mValue; });
    }
    __attribute__((noinline)) void withParameters(const QString &Text, int Number, bool Flag)
    {
        const auto parameters = support::given(this, "Text", Text, "Number", Number, "Flag", Flag);
        support::trap("Module", "withParameters", parameters, [&] { benchmark::DoNotOptimize(mValue += Number); });
    }
    __attribute__((noinline)) void withLocals()
    {
        support::trap("Module", "withLocals", this, [&] {
            int first = ++mValue, second = 2;
            support::Locals locals("first", first, "second", second);
            benchmark::DoNotOptimize(first += second);
        });
    }
    __attribute__((noinline)) void withLocalsInFront(int Number)
    {
        int first = 0, second = 2;
        const auto variables = support::given(this, "Number", Number).locals("first", first, "second", second);
        support::trap("Module", "withLocalsInFront", variables, [&] {
            first = ++mValue;
            benchmark::DoNotOptimize(first += second);
        });
    }
    __attribute__((noinline)) void nested()
    {
        support::trap("Module", "nested", this, [&] { trapped(); });
    }
};

template <auto procedure> void call(benchmark::State &state)
{
    Module module;
    for (auto _ : state) (module.*procedure)();
}

void callWithParameters(benchmark::State &state)
{
    Module module;
    const QString text = QStringLiteral("text");
    for (auto _ : state) module.withParameters(text, 3, true);
}

void callWithLocalsInFront(benchmark::State &state)
{
    Module module;
    for (auto _ : state)
        module.withLocalsInFront(3);
}

/// For comparison: what one failure costs, with its report and no one who shows it.
void failing(benchmark::State &state)
{
    const auto before = support::setFailurePresenter([](const support::FailureReport &) {});
    Module module;
    for (auto _ : state)
        support::trap("Module", "failing", &module, [] { throw base::Error(5, QStringLiteral("failed")); });
    support::setFailurePresenter(before);
}

} // namespace

BENCHMARK(call<&Module::plain>)->Name("no trap");
BENCHMARK(call<&Module::trapped>)->Name("trap");
BENCHMARK(call<&Module::withResult>)->Name("trap with a result");
BENCHMARK(callWithParameters)->Name("trap with three parameters");
BENCHMARK(call<&Module::withLocals>)->Name("trap with two locals");
BENCHMARK(callWithLocalsInFront)->Name("trap with a parameter and two locals in front of it");
BENCHMARK(call<&Module::nested>)->Name("trap within a trap");
BENCHMARK(failing)->Name("a failure, reported")->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
