// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMarginsF>
#include <QPageLayout>
#include <functional>
#include <optional>

namespace surface {

/// How a document is put on paper, as a person chose it.
struct PrintSettings {
    /// The paper and how it lies. What the document's `@page` says comes first, unless `followsDocument` is off.
    QPageSize paper{QPageSize::A4};
    QPageLayout::Orientation orientation = QPageLayout::Portrait;
    bool followsDocument = true;
    /// Millimetres. Nothing: what `@page` says, 12.7 (half an inch) where it says nothing.
    std::optional<QMarginsF> margins;
    bool pageNumbers = false; ///< "2 / 5" below the content
    bool title = false;       ///< the document's title above the content
    bool backgrounds = true;  ///< background colours and images
    /// The pages that are wanted, from 1, both included; 0 stands for the first and the last one.
    int fromPage = 0, toPage = 0;
};

/// Told before each page with its number, from 1, and how many there will be. False ends the printing.
using PrintProgress = std::function<bool(int page, int pages)>;

} // namespace surface
