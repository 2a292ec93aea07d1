// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"

/// Members that only tables have, as functions over elements: rows and cells of a table's own, not of one inside it.
/// Indexes are 0-based. Each write is one assignment.
namespace dom::table {

/// All rows, head first, then bodies, then foot.
std::vector<Element *> rows(const Element &table);
std::vector<Element *> sectionRows(const Element &section);
std::vector<Element *> cells(const Element &row);
Element *tHead(const Element &table);
Ref<Element> createTHead(Element &table);
/// -1 or the count appends. Fails beyond.
Ref<Element> insertRow(Element &tableOrSection, int index = -1);
void deleteRow(Element &tableOrSection, int index);
/// The new cell is held open.
Ref<Element> insertCell(Element &row, int index = -1);
void deleteCell(Element &row, int index);
int rowIndex(const Element &row);
int cellIndex(const Element &cell);
int span(const Element &cell, Atom name); ///< colspan or rowspan, 1 when unset
Element *tableOf(const Element &part);

} // namespace dom::table
