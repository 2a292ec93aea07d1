// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/DesktopClipboard.h"

#include <QGuiApplication>
#include <QMimeData>

namespace surface {

using editing::Snippet;

std::unique_ptr<QMimeData> DesktopClipboard::mimeOf(const Snippet &snippet)
{
    auto data = std::make_unique<QMimeData>();
    if (!snippet.html.isEmpty()) data->setHtml(snippet.html);
    data->setText(snippet.text);
    return data;
}

Snippet DesktopClipboard::snippetOf(const QMimeData &data)
{
    Snippet snippet;
    if (data.hasHtml()) snippet.html = data.html();
    if (data.hasText()) snippet.text = data.text();
    return snippet;
}

void DesktopClipboard::put(const Snippet &snippet)
{
    QGuiApplication::clipboard()->setMimeData(mimeOf(snippet).release(), mMode);
}

Snippet DesktopClipboard::get() const
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(mMode);
    return data ? snippetOf(*data) : Snippet();
}

bool DesktopClipboard::holdsSnippet() const
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(mMode);
    return data && (data->hasHtml() || data->hasText());
}

bool DesktopClipboard::hasPrimarySelection()
{
    return QGuiApplication::clipboard()->supportsSelection();
}

} // namespace surface
