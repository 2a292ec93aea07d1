// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/LoadedPage.h"
#include "engine/changes/EditScope.h"

#include <benchmark/benchmark.h>

// What a user waits for, on pages of four sizes. Each figure includes the layout that a question about a box would force.

namespace {

void load(benchmark::State &state)
{
    const QString page = articlePage(state.range(0) * kilobyte);
    LoadedPage loaded(QStringLiteral(" "));
    for (auto _ : state) loaded.load(page);
    state.counters["MB resident"] = residentMegabytes();
}

void keystroke(benchmark::State &state)
{
    LoadedPage loaded(articlePage(state.range(0) * kilobyte));
    loaded.toMiddle();
    for (auto _ : state) {
        {
            changes::EditScope scope;
            loaded.editor.editor()->insertText(QStringLiteral("x"));
        }
        benchmark::DoNotOptimize(loaded.editor.loaded()->tree().pageSize());
    }
}

void undoKeystroke(benchmark::State &state)
{
    LoadedPage loaded(articlePage(state.range(0) * kilobyte));
    loaded.toMiddle();
    QByteArray last;
    loaded.editor.tracker()->onRecord = [&last](const QByteArray &record) { last = record; };
    for (auto _ : state) {
        state.PauseTiming();
        loaded.editor.editor()->insertText(QStringLiteral("x"));
        loaded.editor.loaded()->tree().pageSize();
        const QByteArray record = last;
        state.ResumeTiming();
        loaded.editor.tracker()->play(record, false);
        benchmark::DoNotOptimize(loaded.editor.loaded()->tree().pageSize());
    }
}

void serialise(benchmark::State &state)
{
    LoadedPage loaded(articlePage(state.range(0) * kilobyte));
    for (auto _ : state) benchmark::DoNotOptimize(loaded.editor.document()->documentElement()->outerHTML());
}

void setAttribute(benchmark::State &state)
{
    LoadedPage loaded(articlePage(state.range(0) * kilobyte));
    dom::Element *element = loaded.editor.document()->elementAt(loaded.editor.document()->elementCount() / 2);
    int n = 0;
    for (auto _ : state) element->setAttribute(QStringLiteral("title"), QString::number(++n));
}

} // namespace

BENCHMARK(load)->Arg(10)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond);
BENCHMARK(keystroke)->Arg(10)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMicrosecond);
BENCHMARK(undoKeystroke)->Arg(10)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMicrosecond)->Iterations(500);
BENCHMARK(serialise)->Arg(10)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond);
BENCHMARK(setAttribute)->Arg(1024)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
