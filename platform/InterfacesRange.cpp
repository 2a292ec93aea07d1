// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/SelectionObject.h"
#include "platform/InterfacesDetail.h"

/// Selection and ranges. Members join these tables as the engine's ranges grow; until then they say so.
namespace platform::interfaces {

using ranges::SelectionObject;

namespace {

[[noreturn]] void notYet()
{
    throw base::Error(actionNotSupported, QStringLiteral("not available yet"));
}

/// The selection belongs to the view, which may go before a reference does: it is asked for anew each time.
SelectionObject *liveSelection(dom::Document &document)
{
    return document.interaction ? document.interaction->selection() : nullptr;
}

QString typeName(const SelectionObject *selection)
{
    if (selection && selection->type() == SelectionObject::Type::Control) return QStringLiteral("Control");
    return selection && selection->isRange() ? QStringLiteral("Text") : QStringLiteral("None");
}

void emptySelection(SelectionObject *selection)
{
    if (!selection) return;
    if (selection->isRange())
        selection->setCaret(selection->span().start);
    else if (selection->type() == SelectionObject::Type::Control)
        selection->clear();
}

} // namespace

const Interface &selection()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLSelectionObject"));
        using D = dom::Document;
        InterfaceTable<D>(*interface)
            .read(5001, "type", [](D &d) { return Value(typeName(liveSelection(d))); })
            .method(5002, "createRange()", [](D &, Arguments &) -> Value { notYet(); })
            .method(5003, "empty()", [](D &d, Arguments &) {
                emptySelection(liveSelection(d));
                return Value();
            });
        return interface;
    }();
    return *made;
}

const Interface &textRange()
{
    static const Interface &made = *new Interface(QStringLiteral("IHTMLTxtRange"));
    return made;
}

const Interface &controlRange()
{
    static const Interface &made = *new Interface(QStringLiteral("IHTMLControlRange"));
    return made;
}

Value selectionOf(dom::Document &document)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLSelectionObject"), {&selection()});
    return liveSelection(document) ? countedValue<dom::Document>(type, &document) : Value::nothing();
}

Value createTextRange(dom::Element &)
{
    notYet();
}

Value createControlRange(dom::Element &)
{
    notYet();
}

} // namespace platform::interfaces
