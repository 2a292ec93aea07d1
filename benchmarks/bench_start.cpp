// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/LoadedPage.h"

#include <QProcess>
#include <benchmark/benchmark.h>
#include <cstdio>

// A process of its own with one control's surface: from its start to a page laid out, and the memory that it then has.

namespace {

/// Prints the memory in megabytes once a page of so many kilobytes is laid out; 0 is an empty one.
int runChild(int argc, char **argv)
{
    QApplication application(argc, argv);
    const int kilobytes = atoi(argv[2]);
    const LoadedPage page(kilobytes > 0 ? articlePage(kilobytes * kilobyte) : QStringLiteral("<p></p>"));
    std::printf("%f\n", residentMegabytes());
    std::fflush(stdout);
    _exit(0); // the end is nobody's concern here
}

void start(benchmark::State &state)
{
    double megabytes = 0;
    for (auto _ : state) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--child"), QString::number(state.range(0))});
        if (!child.waitForFinished() || child.exitCode() != 0) state.SkipWithError("the child failed");
        megabytes = child.readAllStandardOutput().toDouble();
    }
    state.counters["MB resident"] = megabytes;
}

} // namespace

BENCHMARK(start)->Arg(0)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (argc == 3 && qstrcmp(argv[1], "--child") == 0) return runChild(argc, argv);
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
