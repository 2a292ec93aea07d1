// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/ArticlePage.h"
#include "control/FoundJournal.h"
#include "control/RecoveryJournal.h"
#include "control/Vellum5.h"
#include "engine/changes/ChangeTracker.h"
#include "engine/changes/EditScope.h"
#include "engine/surface/LoadedDocument.h"
#include "platform/CodeMax.h"
#include "support/SettingsStore.h"

#include <QApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <numeric>

// What the recovery journal adds to a keystroke, and what the moments around it cost. The folder is that of TMPDIR.

namespace {

using Time = std::chrono::steady_clock;

struct Editor {
    Vellum5 control;
    explicit Editor(int64_t kilobytes)
    {
        control.resize(1000, 800);
        control.show();
        control.Recovery().setOn(true);
        load(articlePage(int(kilobytes) * 1024));
    }
    surface::HTMLEditor &surface() { return *control.VisualEditControl(); }
    void load(const QString &page)
    {
        control.setDocumentHTML(page);
        while (surface().isLoading()) QApplication::processEvents();
        toMiddle();
    }
    void toMiddle()
    {
        dom::Document &document = *surface().document();
        dom::Element *at = document.elementAt(document.elementCount() / 2);
        while (at && !at->is("p")) at = document.elementAt(uint32_t(at->sourceIndex()) + 1);
        dom::Node *text = at->firstChild();
        while (text && !text->isText()) text = text->next(at);
        surface().loaded()->selection().setCaret({text, 1u});
    }
    void type()
    {
        changes::EditScope scope;
        surface().editor()->insertText(QStringLiteral("x"));
    }
};

double microseconds(Time::time_point from)
{
    return std::chrono::duration<double, std::micro>(Time::now() - from).count();
}

/// The journal's part of each keystroke alone, taken around the call that gives it the record.
void keystroke(benchmark::State &state)
{
    Editor editor(state.range(0));
    editor.type();
    changes::ChangeTracker &tracker = *editor.surface().tracker();
    const auto journal = tracker.journal;
    std::vector<double> parts;
    tracker.journal = [&](const QByteArray &record) {
        const auto from = Time::now();
        journal(record);
        parts.push_back(microseconds(from));
    };
    for (auto _ : state) {
        parts.clear();
        editor.type();
        const double part = std::accumulate(parts.begin(), parts.end(), 0.0);
        state.counters["worst us"] = std::max(double(state.counters["worst us"]), part);
        state.SetIterationTime(part / 1e6);
    }
    tracker.journal = journal;
}

/// The first one of a document, which gives the file its name.
void firstKeystroke(benchmark::State &state)
{
    Editor editor(state.range(0));
    const QString page = articlePage(int(state.range(0)) * 1024);
    for (auto _ : state) {
        editor.load(page);
        changes::ChangeTracker &tracker = *editor.surface().tracker();
        const auto journal = tracker.journal;
        double part = 0;
        tracker.journal = [&](const QByteArray &record) {
            const auto from = Time::now();
            journal(record);
            part += microseconds(from);
        };
        editor.type();
        state.SetIterationTime(part / 1e6);
    }
}

void sourceKeystroke(benchmark::State &state)
{
    Editor editor(state.range(0));
    editor.control.setEditView(1);
    CodeMax &source = *editor.control.SourceEditControl();
    const int at = int(state.range(0)) * 512;
    const bool on = state.range(1);
    if (!on) editor.control.Recovery().setOn(false);
    for (auto _ : state) source.InsertText(QStringLiteral("x"), at);
}

void save(benchmark::State &state)
{
    Editor editor(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        editor.type();
        state.ResumeTiming();
        editor.control.Recovery().documentSaved();
    }
}

/// A found journal with a hundred keystrokes stands in a control again.
void recover(benchmark::State &state)
{
    const QString folder = RecoveryJournal::folder();
    auto editor = std::make_unique<Editor>(state.range(0));
    for (int i = 0; i < 100; ++i) editor->type();
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir killed;
        QFile::copy(editor->control.Recovery().fileName(), killed.filePath(QStringLiteral("x.journal")));
        RecoveryJournal::setFolder(killed.path());
        Vellum5 other;
        state.ResumeTiming();
        std::vector<FoundJournal> found = FoundJournal::find();
        found.at(0).recover(other);
        while (other.VisualEditControl()->isLoading()) QApplication::processEvents();
        state.PauseTiming();
        other.Terminate();
        RecoveryJournal::setFolder(folder);
        state.ResumeTiming();
    }
}

} // namespace

BENCHMARK(keystroke)->Arg(10)->Arg(1024)->Arg(5120)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(firstKeystroke)->Arg(10)->Arg(1024)->Arg(5120)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(5);
BENCHMARK(sourceKeystroke)->Args({1024, 0})->Args({1024, 1})->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(save)->Arg(10)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(recover)->Arg(10)->Arg(1024)->Arg(5120)->Unit(benchmark::kMillisecond)->Iterations(3);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QTemporaryDir folder;
    support::SettingsStore::instance().setFolder(folder.path());
    RecoveryJournal::setFolder(folder.filePath(QStringLiteral("recovery")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
