// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Contract.h"
#include "platform/Value.h"

#include <QPointer>

namespace ranges {
class TextRange;
}
namespace surface {
class CellSelection;
}

namespace platform {

/// The surface's selected cells, live. Items count from 1, in the order of the document. What isn't a cell of the
/// surface's document is refused with `base::Error`.
class SelectedCells final : public base::RefCounted
{
public:
    explicit SelectedCells(HTMLEditor &editor) : mEditor(&editor) {}
    int Count() const;
    /// Fails for an index that isn't there.
    dom::Element *Item(int index) const;
    void Add(dom::Element *cell);
    /// The cell alone; the whole row or column that it stands in; the rectangle between two.
    void SelectCell(dom::Element *cell);
    void SelectRow(dom::Element *cell);
    void SelectColumn(dom::Element *cell);
    void SelectBlock(dom::Element *from, dom::Element *to);
    /// A text range over the cell's content.
    base::Ref<ranges::TextRange> RangeOf(dom::Element *cell) const;
    void Clear();

private:
    surface::CellSelection &selection() const;
    dom::Element &cell(dom::Element *cell) const;
    QPointer<HTMLEditor> mEditor;
};

Value selectedCellsValue(HTMLEditor &editor);

} // namespace platform
