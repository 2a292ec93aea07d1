// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/editing/CommandTable.h"

#include <QClipboard>
#include <memory>
#include <optional>

class QMimeData;

namespace surface {

/// The desktop's clipboard, and its primary selection where it has one, in which what is selected last can be had by the
/// middle button.
class DesktopClipboard final : public editing::Clipboard
{
public:
    explicit DesktopClipboard(QClipboard::Mode mode = QClipboard::Clipboard) : mMode(mode) {}
    ~DesktopClipboard() override;
    DesktopClipboard(const DesktopClipboard &) = delete;
    DesktopClipboard &operator=(const DesktopClipboard &) = delete;
    void put(const editing::Snippet &snippet) override;
    editing::Snippet get() const override;
    bool holdsSnippet() const override;
    int columns(dom::Document &document) const override;
    bool holdsWholeRows() const override;

    static bool hasPrimarySelection();
    static std::unique_ptr<QMimeData> mimeOf(const editing::Snippet &snippet);
    static editing::Snippet snippetOf(const QMimeData &data);

private:
    QClipboard::Mode mMode;
    mutable QMetaObject::Connection mWatch; ///< made at the first question
    mutable std::optional<int> mColumns;    ///< of what it holds now
};

} // namespace surface
