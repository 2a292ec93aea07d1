// SPDX-License-Identifier: GPL-3.0-or-later
// Measures one editor on the article pages and prints a figure a line: row, page in KB, value. `peers.mjs` runs it for ours
// and for QTextEdit, measures Chromium itself, and prints them side by side.
//
//     bench_peers ours|qtextedit ROW...     rows: load keystroke enter undo serialise find memory
//     bench_peers ours|qtextedit open FILE  shows the page, prints "ready" and goes: for the time from start
//     bench_peers page KB                   prints the page
#include "benchmarks/ArticlePage.h"
#include "engine/changes/EditScope.h"
#include "engine/ranges/TextRange.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTextBlock>
#include <QTextEdit>

#include <cstdio>
#include <functional>

namespace {

/// An editor as far as it is measured. Each member leaves the page laid out.
class Subject
{
public:
    virtual ~Subject() = default;
    virtual void load(const QString &page) = 0;
    /// The caret into the middle of the page.
    virtual void toMiddle() = 0;
    virtual void keystroke() = 0;
    virtual void enter() = 0;
    /// Takes back the last keystroke.
    virtual void undo() = 0;
    virtual qsizetype serialise() = 0;
    /// How often the text is found, one after the other.
    virtual int find(const QString &text) = 0;
};

class Ours final : public Subject
{
public:
    Ours()
    {
        mEditor.resize(1000, 800);
        mEditor.setEditMode(dom::EditMode::Edit);
        mEditor.show();
    }
    void load(const QString &page) override
    {
        mEditor.setDocumentText(page);
        while (mEditor.isLoading()) QApplication::processEvents();
        layOut();
        mEditor.tracker()->onRecord = [this](const QByteArray &record) { mLast = record; };
    }
    void toMiddle() override
    {
        dom::Document &document = *mEditor.document();
        const auto textIn = [](dom::Element &paragraph) {
            dom::Node *text = paragraph.firstChild();
            while (text && !text->isText()) text = text->next(&paragraph);
            return text;
        };
        dom::Element *at = document.elementAt(document.elementCount() / 2);
        while (!at->is("p") || !textIn(*at)) at = document.elementAt(uint32_t(at->sourceIndex()) + 1);
        dom::Node *text = textIn(*at);
        mEditor.loaded()->selection().setCaret({text, text->nodeValue().size() > 20 ? 20u : 1u});
    }
    void keystroke() override
    {
        mEditor.editor()->insertText(QStringLiteral("x"));
        layOut();
    }
    void enter() override
    {
        mEditor.editor()->insertParagraph();
        layOut();
    }
    void undo() override
    {
        mEditor.tracker()->play(mLast, false);
        layOut();
    }
    qsizetype serialise() override { return mEditor.document()->documentElement()->outerHTML().size(); }
    int find(const QString &text) override
    {
        const auto range = ranges::TextRange::over(mEditor.loaded()->selection(), *mEditor.document()->body());
        int count = 0;
        while (range->findText(text)) {
            ++count;
            range->collapse(false);
        }
        return count;
    }

private:
    void layOut() { mEditor.loaded()->tree().pageSize(); }
    surface::HTMLEditor mEditor;
    QByteArray mLast;
};

class TextEdit final : public Subject
{
public:
    TextEdit()
    {
        mEdit.resize(1000, 800);
        mEdit.show();
    }
    void load(const QString &page) override
    {
        mEdit.setHtml(page);
        layOut();
    }
    void toMiddle() override
    {
        const QTextBlock block = mEdit.document()->findBlockByNumber(mEdit.document()->blockCount() / 2);
        mCursor = QTextCursor(block);
        mCursor.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, std::min(20, block.length() - 1));
    }
    void keystroke() override
    {
        mCursor.insertText(QStringLiteral("x"));
        layOut();
    }
    void enter() override
    {
        mCursor.insertBlock();
        layOut();
    }
    void undo() override
    {
        mEdit.document()->undo();
        layOut();
    }
    qsizetype serialise() override { return mEdit.toHtml().size(); }
    int find(const QString &text) override
    {
        int count = 0;
        for (QTextCursor at = mEdit.document()->find(text, 0); !at.isNull(); at = mEdit.document()->find(text, at)) ++count;
        return count;
    }

private:
    // It lays long documents out bit by bit: the place of the last block asks for all of it.
    void layOut() { mEdit.document()->documentLayout()->blockBoundingRect(mEdit.document()->lastBlock()); }
    QTextEdit mEdit;
    QTextCursor mCursor;
};

std::unique_ptr<Subject> subject(const QString &name)
{
    if (name == QLatin1String("ours")) return std::make_unique<Ours>();
    return std::make_unique<TextEdit>();
}

void print(const char *row, int kilobytes, double value)
{
    std::printf("%s %d %.4f\n", row, kilobytes, value);
    std::fflush(stdout);
}

/// Milliseconds, the median of as many runs. `before` isn't measured.
double median(int runs, const std::function<void()> &work, const std::function<void()> &before = {})
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        if (before) before();
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::nth_element(times.begin(), times.begin() + runs / 2, times.end());
    return times[std::size_t(runs / 2)];
}

/// What the process has for itself, and its share of what it shares, in MiB.
double memory()
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QFile::ReadOnly)) return 0;
    for (const QByteArray &line : file.readAll().split('\n'))
        if (line.startsWith("Pss:")) return line.mid(4).simplified().split(' ').value(0).toDouble() / 1024;
    return 0;
}

void measure(const QString &name, const QString &row)
{
    const bool twice = row == QLatin1String("serialise") || row == QLatin1String("find");
    for (const int kilobytes : {0, 100, 1024, 5120}) {
        const bool isMemory = row == QLatin1String("memory");
        if (isMemory ? kilobytes != 0 && kilobytes != 1024 : kilobytes == 0 || (twice && kilobytes == 100)) continue;
        const QString page = kilobytes ? articlePage(kilobytes * 1024) : QStringLiteral("<p>&nbsp;</p>");
        const auto s = subject(name);
        s->load(page);
        if (isMemory) {
            print("memory", kilobytes, memory());
            continue;
        }
        s->toMiddle();
        const QByteArray label = row.toLatin1();
        const int loads = kilobytes > 1024 ? 5 : 15;
        if (row == QLatin1String("load")) print(label, kilobytes, median(loads, [&] { s->load(page); }));
        if (row == QLatin1String("keystroke")) print(label, kilobytes, median(101, [&] { s->keystroke(); }));
        if (row == QLatin1String("enter")) print(label, kilobytes, median(31, [&] { s->enter(); }, [&] { s->toMiddle(); }));
        if (row == QLatin1String("undo")) print(label, kilobytes, median(51, [&] { s->undo(); }, [&] { s->keystroke(); }));
        if (row == QLatin1String("serialise")) print(label, kilobytes, median(11, [&] { s->serialise(); }));
        if (row == QLatin1String("find")) print(label, kilobytes, median(5, [&] { s->find(QStringLiteral("the")); }));
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QStringList words = application.arguments().mid(1);
    if (words.value(0) == QLatin1String("page")) {
        std::fputs(articlePage(words.value(1).toInt() * 1024).toUtf8().constData(), stdout);
        return 0;
    }
    if (words.size() < 2) return 2;
    if (words[1] == QLatin1String("open")) {
        QFile file(words.value(2));
        if (!file.open(QFile::ReadOnly)) return 1;
        const auto s = subject(words[0]);
        s->load(QString::fromUtf8(file.readAll()));
        std::puts("ready");
        return 0;
    }
    for (const QString &row : words.mid(1)) measure(words[0], row);
    return 0;
}
