// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "benchmarks/ArticlePage.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"

#include <QApplication>
#include <QFile>

constexpr int kilobyte = 1024;

/// Of this process, with all its libraries.
inline double residentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QFile::ReadOnly)) return 0;
    return file.readAll().split(' ').value(1).toDouble() * 4096 / 1048576;
}

/// A page in a surface of 1000 by 800, laid out.
struct LoadedPage
{
    surface::HTMLEditor editor;
    explicit LoadedPage(const QString &page)
    {
        editor.resize(1000, 800);
        editor.show();
        load(page);
    }
    void load(const QString &page)
    {
        editor.setDocumentText(page);
        while (editor.isLoading()) QApplication::processEvents();
        editor.loaded()->tree().pageSize();
    }
    /// The caret into the middle of the page.
    void toMiddle()
    {
        dom::Document &document = *editor.document();
        dom::Element *at = document.elementAt(document.elementCount() / 2);
        while (at && !at->is("p")) at = document.elementAt(uint32_t(at->sourceIndex()) + 1);
        dom::Node *text = at->firstChild();
        while (text && !text->isText()) text = text->next(at);
        editor.loaded()->selection().setCaret({text, text->nodeValue().size() > 20 ? 20u : 1u});
    }
};
