// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/CodeMax.h"
#include "platform/Collection.h"
#include "platform/DispatchObject.h"
#include "platform/DispatchTable.h"
#include "platform/Interfaces.h"
#include "platform/Published.h"

namespace platform {

namespace {

/// A place or a range as a late-bound object: a value that a host may change and hand back.
template <class T> struct Held final : base::RefCounted
{
    explicit Held(T value) : value(std::move(value)) {}
    T value;
};
using HeldPosition = Held<CodeMaxPosition>;
using HeldRange = Held<CodeMaxRange>;

/// Properties that are whole numbers of the held value.
template <class T> void number(Interface &interface, int id, const char *name, int T::*field)
{
    InterfaceTable<Held<T>>(interface).property(
        id, name, [field](Held<T> &held) { return Value(held.value.*field); },
        [field](Held<T> &held, const Value &v) { held.value.*field = v.toInt(); });
}

const Interface &positionInterface()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("Position"));
        number(*interface, 1, "LineNo", &CodeMaxPosition::LineNo);
        number(*interface, 2, "ColNo", &CodeMaxPosition::ColNo);
        return interface;
    }();
    return *made;
}

const Interface &rangeInterface()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("Range"));
        number(*interface, 1, "StartLineNo", &CodeMaxRange::StartLineNo);
        number(*interface, 2, "StartColNo", &CodeMaxRange::StartColNo);
        number(*interface, 3, "EndLineNo", &CodeMaxRange::EndLineNo);
        number(*interface, 4, "EndColNo", &CodeMaxRange::EndColNo);
        InterfaceTable<HeldRange>(*interface).read(5, "IsEmpty", [](HeldRange &r) { return Value(r.value.IsEmpty()); });
        return interface;
    }();
    return *made;
}

const ObjectType &positionType()
{
    static const ObjectType type = plainType(QStringLiteral("Position"), {&positionInterface()});
    return type;
}

const ObjectType &rangeType()
{
    static const ObjectType type = plainType(QStringLiteral("Range"), {&rangeInterface()});
    return type;
}

template <class T> const T &heldIn(const Value &value, const ObjectType &type)
{
    const ObjectRef &object = value.toObject();
    if (object.isNothing()) throw base::Error(base::errors::objectNotSet, QStringLiteral("Object variable not set"));
    if (object.type() != &type) throw base::Error(base::errors::typeMismatch, QStringLiteral("Type mismatch"));
    return object.as<Held<T>>()->value;
}

/// An offset, or a `Position`.
int offsetOf(CodeMax &editor, const Value &value)
{
    return value.isObject() ? editor.OffsetOf(heldIn<CodeMaxPosition>(value, positionType())) : value.toInt();
}

template <class Work> auto silent(Work work)
{
    return [work](CodeMax &c, Arguments &a) {
        work(c, a);
        return Value();
    };
}

void addText(InterfaceTable<CodeMax> &table)
{
    using C = CodeMax;
    table
        .property(
            -517, "Text", [](C &c) { return Value(c.Text()); }, [](C &c, const Value &v) { c.setText(v.toString()); })
        .property(
            -546, "SelText", [](C &c) { return Value(c.SelText()); },
            [](C &c, const Value &v) { c.setSelText(v.toString()); })
        .read(-515, "hWnd", [](C &c) { return Value(quint64(c.hWnd())); })
        .property(
            4, "ReadOnly", [](C &c) { return Value(c.ReadOnly()); },
            [](C &c, const Value &v) { c.setReadOnly(v.toBoolean()); })
        .read(25, "LineCount", [](C &c) { return Value(c.LineCount()); })
        .property(
            33, "FindText", [](C &c) { return Value(c.FindText()); },
            [](C &c, const Value &v) { c.setFindText(v.toString()); })
        .method(39, "GetSel([Normalised])",
                [](C &c, Arguments &a) {
                    return countedValue(rangeType(), new HeldRange(c.GetSel(a[0].isEmpty() || a[0].toBoolean())));
                })
        .method(40, "SetSel(Range, [MakeVisible])",
                silent([](C &c, Arguments &a) { c.SetSel(heldIn<CodeMaxRange>(a[0], rangeType()), a[1].toBoolean()); }))
        .method(58, "ReplaceSel(Text)", silent([](C &c, Arguments &a) { c.ReplaceSel(a[0].toString()); }))
        .read(60, "CanUndo", [](C &c) { return Value(c.CanUndo()); })
        .read(61, "CanRedo", [](C &c) { return Value(c.CanRedo()); })
        .read(62, "CanCut", [](C &c) { return Value(c.CanCut()); })
        .read(63, "CanCopy", [](C &c) { return Value(c.CanCopy()); })
        .read(64, "CanPaste", [](C &c) { return Value(c.CanPaste()); })
        .method(70, "ClearUndo()", silent([](C &c, Arguments &) { c.ClearUndo(); }))
        .method(87, "PosToRect(LineNo, ColNo)", [](C &c, Arguments &a) {
            // The edges in client pixels; an empty rectangle where the line isn't in view.
            const QRect rect = c.PosToRect(a[0].toInt(), a[1].toInt());
            return Value(ValueList{rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()});
        });
}

/// Members that users know by name only have numbers of ours, from 1001.
void addMore(InterfaceTable<CodeMax> &table)
{
    using C = CodeMax;
    table.method(59, "ExecuteCmd(Command)", [](C &c, Arguments &a) { return Value(c.ExecuteCmd(a[0].toInt())); })
        .method(102, "ClearErrorState()", silent([](C &c, Arguments &) { c.ClearErrorState(); }))
        .read(1001, "ErrorState", [](C &c) { return Value(c.ErrorState()); })
        .property(
            1002, "ReplText", [](C &c) { return Value(c.ReplText()); },
            [](C &c, const Value &v) { c.setReplText(v.toString()); })
        .property(
            1003, "SelStart", [](C &c) { return Value(c.SelStart()); },
            [](C &c, const Value &v) { c.setSelStart(v.toInt()); })
        .property(
            1004, "SelEnd", [](C &c) { return Value(c.SelEnd()); },
            [](C &c, const Value &v) { c.setSelEnd(v.toInt()); })
        .method(1005, "InsertText(Text, Position)",
                silent([](C &c, Arguments &a) { c.InsertText(a[0].toString(), offsetOf(c, a[1])); }))
        .read(1006, "ReplaceCount", [](C &c) { return Value(c.ReplaceCount()); })
        .property(
            1007, "Enabled", [](C &c) { return Value(c.isEnabled()); },
            [](C &c, const Value &v) { c.setEnabled(v.toBoolean()); })
        .method(1008, "LineText(LineNo)", [](C &c, Arguments &a) { return Value(c.LineText(a[0].toInt())); })
        .method(1009, "PositionOf(Offset)",
                [](C &c, Arguments &a) {
                    return countedValue(positionType(), new HeldPosition(c.PositionOf(a[0].toInt())));
                })
        .method(1010, "OffsetOf(Position)", [](C &c, Arguments &a) { return Value(offsetOf(c, a[0])); });
}

} // namespace

void publishSourceEditor()
{
    auto interface = std::make_unique<Interface>(QStringLiteral("CodeMax"));
    InterfaceTable<CodeMax> table(*interface);
    addText(table);
    addMore(table);
    publish(CodeMax::staticMetaObject, std::move(interface));
    publish(rangeInterface());
    publish(positionInterface());
}

void publishCollection()
{
    static const std::vector<MemberRow> rows = {
        {defaultMemberId, "Item", ""}, {1, "Add", ""}, {2, "Count", ""}, {3, "Remove", ""}};
    publish(Collection::staticMetaObject, "Collection", rows);
}

} // namespace platform
