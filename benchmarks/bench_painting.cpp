// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/LoadedPage.h"

#include <QImage>
#include <QKeyEvent>
#include <QScrollBar>
#include <benchmark/benchmark.h>

// From an event to the frame that shows what it did.

namespace {

struct PaintedPage : LoadedPage
{
    QImage frame{1000, 800, QImage::Format_RGB32};
    explicit PaintedPage(int64_t kilobytes) : LoadedPage(articlePage(kilobytes * kilobyte))
    {
        editor.setEditMode(dom::EditMode::Edit);
        toMiddle();
        editor.setFocus();
        key(Qt::Key_Right); // the caret comes into view
        paint();
    }
    void paint() { editor.viewport()->render(&frame); }
    void key(int code, const QString &text = {}, Qt::KeyboardModifiers modifiers = {})
    {
        QKeyEvent press(QEvent::KeyPress, code, modifiers, text);
        QApplication::sendEvent(&editor, &press);
    }
};

void keystroke(benchmark::State &state)
{
    PaintedPage page(state.range(0));
    for (auto _ : state) {
        page.key(Qt::Key_X, QStringLiteral("x"));
        page.paint();
    }
}

/// Without the painting: what is asked for is the page's height.
void enter(benchmark::State &state)
{
    PaintedPage page(state.range(0));
    for (auto _ : state) {
        page.key(Qt::Key_Return, QStringLiteral("\r"));
        benchmark::DoNotOptimize(page.editor.loaded()->tree().pageSize());
    }
}

void enterPainted(benchmark::State &state)
{
    PaintedPage page(state.range(0));
    for (auto _ : state) {
        page.key(Qt::Key_Return, QStringLiteral("\r"));
        page.paint();
    }
}

/// A frame at places all over the page, none of them painted before.
void scroll(benchmark::State &state)
{
    PaintedPage page(state.range(0));
    QScrollBar *bar = page.editor.verticalScrollBar();
    int at = 0;
    for (auto _ : state) {
        at = int((qint64(at) + bar->maximum() / 97 + 1201) % (bar->maximum() + 1));
        bar->setValue(at);
        page.paint();
    }
}

/// The window a little narrower or wider, and what is in view painted.
void resize(benchmark::State &state)
{
    PaintedPage page(state.range(0));
    int width = 1000;
    for (auto _ : state) {
        width = width == 1000 ? 940 : 1000;
        page.editor.resize(width, 800);
        QApplication::processEvents();
        page.paint();
    }
}

} // namespace

BENCHMARK(keystroke)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond);
BENCHMARK(enter)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond)->Iterations(200);
BENCHMARK(enterPainted)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond)->Iterations(200);
BENCHMARK(scroll)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond);
BENCHMARK(resize)->Arg(100)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
