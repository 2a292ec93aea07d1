// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/TableGrid.h"
#include "engine/editing/Editor.h"

namespace editing {

/// Pastes what is a table and nothing else into a table of the page: the one around the caret, or that of the cells
/// which are selected. Each is one record.
class CellPasting
{
public:
    enum class Way : uint8_t {
        Rows,   ///< as rows behind the row of the caret, or behind the last that is selected
        Cells,  ///< what the cells hold, into the selected ones
        Nested, ///< the table, into the cell of the caret
    };
    using Cells = std::vector<base::Ref<dom::Element>>;
    /// `selected` are the cells that are selected as such, of one table, in the order of the document.
    CellPasting(Editor &editor, Cells selected);

    /// Whether something can be pasted so where the caret or the selected cells are, whatever it is.
    bool isPlaceFor(Way way) const;
    /// Whether a table of so many columns can be. Rows come into a table as wide as theirs; those that were taken from
    /// end to end into any, short ones filled up. Where only some cells of rows are selected, nothing comes as rows.
    bool isPossible(Way way, int columns, bool wholeRows) const;
    /// Does nothing, and answers false, where it isn't possible. A single selected cell stands for as many to its right
    /// and below as are pasted; more cells than are pasted get them again and again.
    bool paste(Way way, const Snippet &snippet);

private:
    bool pasteRows(dom::Element &from);
    bool pasteCells(const dom::Element &from);
    dom::Element *lastRow(const dom::TableGrid &grid) const;
    bool selectsWholeRows() const;
    std::vector<dom::TableGrid::Place> targets(const dom::TableGrid &source) const;
    void write(dom::Element &cell, const dom::Element *source);

    Editor &mEditor;
    Cells mSelected;
    base::Ref<dom::Element> mCell;  ///< of the caret, else the first that is selected
    base::Ref<dom::Element> mTable; ///< null: there is none
};

} // namespace editing
