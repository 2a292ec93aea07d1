// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/ArticlePage.h"
#include "engine/editing/RangeEdits.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"

#include <QApplication>
#include <benchmark/benchmark.h>

// What scripts ask of ranges, on pages of four sizes.

namespace {

constexpr int kilobyte = 1024;

struct Loaded {
    surface::HTMLEditor editor;
    explicit Loaded(int kilobytes)
    {
        editor.resize(1000, 800);
        editor.setDocumentText(articlePage(kilobytes * kilobyte));
        while (editor.isLoading()) QApplication::processEvents();
        page().index().total();
    }
    ranges::SelectionObject &page() { return editor.loaded()->selection(); }
    base::Ref<ranges::TextRange> body() { return ranges::TextRange::over(page(), *editor.document()->body()); }
    void caretToMiddle()
    {
        const auto r = body();
        r->collapse();
        r->move("character", int(page().index().total() / 2));
        r->select();
    }
};

void makeIndex(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(ranges::TextIndex(*loaded.editor.document()).total());
}

void moveEnd(benchmark::State &state, int by)
{
    Loaded loaded(int(state.range(0)));
    const auto r = loaded.body();
    r->collapse();
    r->move("character", int(loaded.page().index().total() / 2));
    for (auto _ : state) {
        r->moveEnd("character", by);
        r->moveEnd("character", -by);
    }
}

void moveEndByOne(benchmark::State &state) { moveEnd(state, 1); }
void moveEndByTenThousand(benchmark::State &state) { moveEnd(state, 10000); }

void compareEnds(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    loaded.caretToMiddle();
    const auto r = loaded.body();
    const base::Ref<ranges::TextRange> other(new ranges::TextRange(loaded.page(), loaded.page().span()));
    for (auto _ : state) benchmark::DoNotOptimize(r->compareEndPoints("EndToStart", *other));
}

/// What stands in front of the caret and how long the selection is, and back again.
void savePoint(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    loaded.caretToMiddle();
    for (auto _ : state) {
        const base::Ref<ranges::TextRange> r(new ranges::TextRange(loaded.page(), loaded.page().span()));
        const int length = int(r->text().size());
        const int before = int(r->startCount());
        const auto back = loaded.body();
        back->collapse();
        back->moveEnd("character", before);
        back->collapse(false);
        back->moveEnd("character", length);
        back->select();
    }
}

void countAfterTyping(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    loaded.caretToMiddle();
    for (auto _ : state) {
        loaded.editor.loaded()->editor().insertText("x");
        benchmark::DoNotOptimize(loaded.page().index().total());
    }
}

void findEvery(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    int hits = 0;
    for (auto _ : state) {
        const auto r = loaded.body();
        hits = 0;
        while (r->findText("the")) {
            ++hits;
            r->collapse(false);
        }
    }
    state.counters["hits"] = hits;
}

void htmlOfAll(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    const auto r = loaded.body();
    r->moveStart("character", 1);
    for (auto _ : state) benchmark::DoNotOptimize(r->htmlText());
}

void textOfAll(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(loaded.body()->text());
}

#define SIZES ->Arg(10)->Arg(100)->Arg(1024)->Arg(5120)
BENCHMARK(makeIndex) SIZES->Unit(benchmark::kMillisecond);
BENCHMARK(moveEndByOne) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(moveEndByTenThousand) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(compareEnds) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(savePoint) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(countAfterTyping) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(findEvery) SIZES->Unit(benchmark::kMillisecond);
BENCHMARK(htmlOfAll) SIZES->Unit(benchmark::kMillisecond);
BENCHMARK(textOfAll) SIZES->Unit(benchmark::kMillisecond);

} // namespace

int main(int count, char **arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
