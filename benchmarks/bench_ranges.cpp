// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/ArticlePage.h"
#include "engine/editing/RangeEdits.h"
#include "engine/ranges/RangeActions.h"
#include "engine/ranges/RangeHost.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <benchmark/benchmark.h>

// What scripts ask of ranges, on pages of four sizes.

namespace {

constexpr int kilobyte = 1024;

struct Loaded {
    surface::HTMLEditor editor;
    explicit Loaded(int kilobytes)
    {
        editor.resize(1000, 800);
        editor.setEditMode(dom::EditMode::Edit);
        editor.show();
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

/// Points all over the view, in the middle of the page.
struct Points {
    explicit Points(Loaded &loaded)
    {
        loaded.caretToMiddle();
        loaded.page().host->bringIntoView(loaded.page().host->caretBox(), true);
        for (int i = 0; i < 1000; ++i) all.emplace_back(13 + i * 37 % 950, 11 + i * 53 % 770);
    }
    QPoint next() { return all[size_t(n++ % 1000)]; }
    std::vector<QPoint> all;
    int n = 0;
};

void moveToPoint(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    Points points(loaded);
    const auto r = loaded.body();
    for (auto _ : state) ranges::moveToPoint(*r, points.next());
}

void elementFromPoint(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    Points points(loaded);
    for (auto _ : state) benchmark::DoNotOptimize(loaded.editor.document()->boxes->elementFromPoint(points.next()));
}

/// Of carets all over the view; without the time that it takes to put them there.
void caretRectangle(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    Points points(loaded);
    std::vector<ranges::Position> places;
    for (const QPoint &point : points.all)
        if (const ranges::Position p = loaded.page().host->placeAt(point)) places.push_back(p);
    size_t n = 0;
    for (auto _ : state) {
        const ranges::Position &p = places[n++ % places.size()];
        benchmark::DoNotOptimize(loaded.page().host->rectangles({p, p}));
    }
    state.counters["places"] = double(places.size());
}

void press(surface::HTMLEditor &editor, int key, Qt::KeyboardModifiers modifiers = {})
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(&editor, &event);
}

/// One line down, scrolled and painted.
void caretDown(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    const auto start = loaded.body();
    start->collapse();
    start->select();
    int lines = 0;
    for (auto _ : state) {
        const ranges::Position before = loaded.page().focus();
        press(loaded.editor, Qt::Key_Down);
        QApplication::processEvents();
        if (loaded.page().focus() == before)
            start->select(); // at the end
        else
            ++lines;
    }
    state.counters["lines"] = lines;
}

/// A selection from the first screen to the tenth, in twenty moves of the mouse a screen, scrolled and painted.
void dragOverTenScreens(benchmark::State &state)
{
    Loaded loaded(int(state.range(0)));
    QWidget *const widget = loaded.editor.viewport();
    const auto mouse = [widget](QEvent::Type type, QPoint at) {
        QMouseEvent event(type, at, widget->mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, {});
        QApplication::sendEvent(widget, &event);
    };
    dom::Element &body = *loaded.editor.document()->body();
    dom::BoxServices &boxes = *loaded.editor.document()->boxes;
    int moves = 0;
    for (auto _ : state) {
        boxes.setScrollPosition(body, {0, 0});
        mouse(QEvent::MouseButtonPress, {100, 100});
        for (int screen = 1; screen <= 10; ++screen)
            for (int step = 0; step < 20; ++step, ++moves) {
                boxes.setScrollPosition(body, {0, (screen - 1) * 800 + step * 40});
                mouse(QEvent::MouseMove, {100 + step * 40, 100 + step * 30});
                QApplication::processEvents();
            }
        mouse(QEvent::MouseButtonRelease, {900, 700});
    }
    const base::Ref<ranges::TextRange> selected(new ranges::TextRange(loaded.page(), loaded.page().span()));
    state.counters["characters"] = selected->endCount() - selected->startCount();
    state.counters["per move, us"] =
        benchmark::Counter(moves * 1e-6, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
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
BENCHMARK(moveToPoint) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(elementFromPoint) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(caretRectangle) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(caretDown) SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(dragOverTenScreens) SIZES->Unit(benchmark::kMillisecond);

} // namespace

int main(int count, char **arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
