// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/RangeActions.h"
#include "platform/Contract.h"

#include <QString>

/// The selection's range, of whichever kind it is. Both empty: there is none.
struct SelectionRange {
    base::Ref<IHTMLTxtRange> text;
    base::Ref<IHTMLControlRange> control;
    explicit operator bool() const { return text || control; }
};

namespace modMain {

/// The range of the document's selection.
SelectionRange CreateRange(IHTMLDocument2 *DOM);
/// The range that spans `e`: a control range for a table, else a text range. Empty for Nothing.
SelectionRange RangeForElement(IHTMLElement *e);
/// Selects what the range holds; may raise, as the range's own `select`.
void Select(const SelectionRange &Range);

/// Where the selection stands, in a form that outlives a rebuild of the document: `SelectionLength` is the length of its
/// text, with two for each end of a line or block, `CharactersFromStart` the number of characters in front of it, as a
/// decimal text. A place that isn't found leaves `CharactersFromStart` as it was, and where objects are selected
/// nothing is saved.
void SaveSelectionPoint(IHTMLDocument2 *DOM, int &SelectionLength, QString &CharactersFromStart);
/// Selects what was saved, and clears the pair: to restore once more puts the caret to the document's start.
void RestoreSelectionPoint(IHTMLDocument2 *DOM, int &SelectionLength, QString &CharactersFromStart);

} // namespace modMain
