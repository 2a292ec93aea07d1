// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/DesktopClipboard.h"

#include <QGuiApplication>
#include <QMimeData>

namespace surface {

using editing::Snippet;

namespace {
/// Says, from one page to another, what the HTML can't.
const QString wholeRowsType = QStringLiteral("application/x-vellumkit-rows");
} // namespace

DesktopClipboard::~DesktopClipboard()
{
    QObject::disconnect(mWatch);
}

std::unique_ptr<QMimeData> DesktopClipboard::mimeOf(const Snippet &snippet)
{
    auto data = std::make_unique<QMimeData>();
    if (!snippet.html.isEmpty()) data->setHtml(snippet.html);
    data->setText(snippet.text);
    if (snippet.wholeRows) data->setData(wholeRowsType, "1");
    return data;
}

Snippet DesktopClipboard::snippetOf(const QMimeData &data)
{
    Snippet snippet;
    if (data.hasHtml()) snippet.html = data.html();
    if (data.hasText()) snippet.text = data.text();
    snippet.wholeRows = data.hasFormat(wholeRowsType);
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

/// The commands' states ask after every key, what is held can be long, and it changes seldom.
int DesktopClipboard::columns(dom::Document &document) const
{
    if (!mWatch)
        mWatch = QObject::connect(QGuiApplication::clipboard(), &QClipboard::changed, [this](QClipboard::Mode mode) {
            if (mode == mMode) mColumns.reset();
        });
    if (!mColumns) mColumns = editing::Pasting::columnsOf(document, get().html);
    return *mColumns;
}

bool DesktopClipboard::holdsWholeRows() const
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(mMode);
    return data && data->hasFormat(wholeRowsType);
}

bool DesktopClipboard::hasPrimarySelection()
{
    return QGuiApplication::clipboard()->supportsSelection();
}

} // namespace surface
