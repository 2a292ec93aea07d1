// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/TextRange.h"
#include "engine/surface/CellSelection.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"
#include "platform/Contract.h"
#include "platform/DispatchTable.h"
#include "platform/Interfaces.h"
#include "platform/InterfacesDetail.h"
#include "platform/SelectedCells.h"

namespace platform {

using base::Ref;

surface::CellSelection &SelectedCells::selection() const
{
    if (!mEditor) throw base::Error(base::errors::objectNotSet, QStringLiteral("The surface is gone."));
    return mEditor->view().cellSelection();
}

int SelectedCells::Count() const
{
    return int(selection().cells().size());
}

dom::Element *SelectedCells::Item(int index) const
{
    const auto cells = selection().cells();
    if (index < 1 || index > int(cells.size()))
        throw base::Error(base::errors::subscriptOutOfRange, QStringLiteral("There is no such cell."));
    return cells[std::size_t(index) - 1].get();
}

dom::Element &SelectedCells::cell(dom::Element *cell) const
{
    if (!cell) throw base::Error(base::errors::objectNotSet, QStringLiteral("There is no cell."));
    if (!mEditor || &cell->document() != mEditor->document())
        throw base::Error(base::errors::invalidCall, QStringLiteral("The cell isn't in the surface's document."));
    return *cell;
}

void SelectedCells::Add(dom::Element *which)
{
    selection().add(cell(which));
}

void SelectedCells::SelectCell(dom::Element *which)
{
    selection().select(cell(which));
}

void SelectedCells::SelectRow(dom::Element *which)
{
    selection().selectRow(cell(which));
}

void SelectedCells::SelectColumn(dom::Element *which)
{
    selection().selectColumn(cell(which));
}

void SelectedCells::SelectBlock(dom::Element *from, dom::Element *to)
{
    selection().selectBlock(cell(from), cell(to));
}

Ref<ranges::TextRange> SelectedCells::RangeOf(dom::Element *which) const
{
    return ranges::TextRange::over(mEditor->loaded()->selection(), cell(which));
}

void SelectedCells::Clear()
{
    selection().clear();
}

const Interface &interfaces::selectedCells()
{
    static const Interface *interface = [] {
        auto *made = new Interface(QStringLiteral("SelectedCells"));
        using C = SelectedCells;
        const auto doing = [](void (C::*member)(dom::Element *)) {
            return [member](C &c, Arguments &a) {
                (c.*member)(elementOf(a[0]));
                return Value();
            };
        };
        InterfaceTable<C>(*made)
            .method(defaultMemberId, "Item(index)",
                    [](C &c, Arguments &a) { return valueOf(static_cast<dom::Node *>(c.Item(a[0].toInt()))); })
            .read(1, "Count", [](C &c) { return Value(c.Count()); })
            .method(2, "Add(cell)", doing(&C::Add))
            .method(3, "SelectCell(cell)", doing(&C::SelectCell))
            .method(4, "SelectRow(cell)", doing(&C::SelectRow))
            .method(5, "SelectColumn(cell)", doing(&C::SelectColumn))
            .method(6, "SelectBlock(from, to)",
                    [](C &c, Arguments &a) {
                        c.SelectBlock(elementOf(a[0]), elementOf(a[1]));
                        return Value();
                    })
            .method(7, "RangeOf(cell)",
                    [](C &c, Arguments &a) { return valueOf(c.RangeOf(elementOf(a[0]))); })
            .method(8, "Clear()", [](C &c, Arguments &) {
                c.Clear();
                return Value();
            });
        return made;
    }();
    return *interface;
}

Value selectedCellsValue(HTMLEditor &editor)
{
    static const ObjectType type = plainType(QStringLiteral("SelectedCells"), {&interfaces::selectedCells()});
    return countedValue<SelectedCells>(type, Ref<SelectedCells>(new SelectedCells(editor)).get());
}

} // namespace platform
