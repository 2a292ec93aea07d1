// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/EditScope.h"
#include "engine/ranges/ControlRange.h"
#include "engine/ranges/RangeHost.h"
#include "engine/ranges/TextRange.h"
#include "platform/InterfacesDetail.h"

/// Selection and ranges. The selection object also answers a range's members, for the range that it is at that time.
namespace platform::interfaces {

using base::Ref;
using ranges::ControlRange;
using ranges::RangeHost;
using ranges::SelectionObject;
using ranges::TextRange;

namespace {

/// The selection belongs to the view, which may go before a reference does: it is asked for anew each time.
SelectionObject *liveSelection(dom::Document &document)
{
    return document.interaction ? document.interaction->selection() : nullptr;
}

SelectionObject &selectionFor(dom::Document &document)
{
    if (SelectionObject *selection = liveSelection(document)) return *selection;
    throw base::Error(base::errors::notPossible, QStringLiteral("The document isn't shown."));
}

RangeHost &hostOf(const SelectionObject &page)
{
    if (page.host) return *page.host;
    throw base::Error(base::errors::notPossible, QStringLiteral("The document isn't shown."));
}

QString typeName(const SelectionObject *selection)
{
    if (selection && selection->type() == SelectionObject::Type::Control) return QStringLiteral("Control");
    return selection && selection->isRange() ? QStringLiteral("Text") : QStringLiteral("None");
}

Value rangeValue(const Ref<TextRange> &range)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLTxtRange"), {&textRange()});
    return countedValue<TextRange>(type, range.get());
}

Value rangeValue(const Ref<ControlRange> &range)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLControlRange"), {&controlRange()});
    return countedValue<ControlRange>(type, range.get());
}

Ref<TextRange> textRangeOf(SelectionObject &page)
{
    ranges::Span span = page.span();
    if (!span.start) { // no caret: it would be at the text's start
        const ranges::Position start = page.index().placeAt(0, ranges::TextIndex::Side::Following);
        span = {start, start};
    }
    return Ref<TextRange>(new TextRange(page, span));
}

TextRange &rangeOf(const Value &value)
{
    if (value.isObject() && !value.toObject().isNothing()) {
        const QString &name = value.toObject().type()->name;
        if (name == QLatin1String("IHTMLTxtRange")) return *value.toObject().as<TextRange>();
    }
    throw base::Error(value.isNothing() ? base::errors::objectNotSet : base::errors::typeMismatch,
                      QStringLiteral("A text range is expected."));
}

bool optional(const Value &value, bool otherwise)
{
    return value.isEmpty() ? otherwise : value.toBoolean();
}

int optional(const Value &value, int otherwise)
{
    return value.isEmpty() ? otherwise : value.toInt();
}

QRect bounds(TextRange &r)
{
    QRect all;
    for (const QRect &rect : hostOf(r.page()).rectangles(r.span()))
        all |= rect;
    return all;
}

Value execute(bool could)
{
    if (!could) throw base::Error(base::errors::notPossible, QStringLiteral("The command can't run here."));
    return Value(true);
}

Value queryText(TextRange &, const QString &command)
{
    return Value(command);
}

/// The members of ranges that a script asks of commands; `Query` gives a command's state.
template <class T, class Query> void addCommands(InterfaceTable<T> &table, int from, Query query)
{
    table
        .method(from, "execCommand(command, [showUI], [value])",
                [](T &r, Arguments &a) {
                    changes::EditScope scope;
                    return execute(hostOf(r.page()).run(r, a[0].toString(), a[2].isEmpty() ? QString() : a[2].toString()));
                })
        .method(from + 1, "queryCommandSupported(command)",
                [query](T &r, Arguments &a) { return Value(query(r, a[0].toString()).supported); })
        .method(from + 2, "queryCommandEnabled(command)",
                [query](T &r, Arguments &a) { return Value(query(r, a[0].toString()).enabled); })
        .method(from + 3, "queryCommandState(command)",
                [query](T &r, Arguments &a) { return Value(query(r, a[0].toString()).on); })
        .method(from + 4, "queryCommandIndeterm(command)",
                [query](T &r, Arguments &a) { return Value(query(r, a[0].toString()).mixed); })
        .method(from + 5, "queryCommandValue(command)",
                [query](T &r, Arguments &a) { return Value(query(r, a[0].toString()).value); });
}

/// A member of a range, of the range itself or of the one that a selection is.
template <class Table, class Get> void addPlaces(Table &table, int from, Get range)
{
    using S = typename Get::Subject;
    table.property(
        from, "text", [range](S &s) { return Value(range(s)->text()); },
        [range](S &s, const Value &v) {
            const auto r = range(s);
            hostOf(r->page()).write(*r, v.toString());
        });
    table.read(from + 1, "htmlText", [range](S &s) { return Value(range(s)->htmlText()); });
    table.method(from + 2, "parentElement()", [range](S &s, Arguments &) { return valueOf(range(s)->parentElement()); });
    table.method(from + 3, "duplicate()", [range](S &s, Arguments &) { return rangeValue(range(s)->duplicate()); });
    table.method(from + 4, "inRange(range)",
                 [range](S &s, Arguments &a) { return Value(range(s)->inRange(rangeOf(a[0]))); });
    table.method(from + 5, "isEqual(range)",
                 [range](S &s, Arguments &a) { return Value(range(s)->isEqual(rangeOf(a[0]))); });
    table.method(from + 6, "compareEndPoints(how, range)", [range](S &s, Arguments &a) {
        return Value(range(s)->compareEndPoints(a[0].toString(), rangeOf(a[1])));
    });
    table.method(from + 7, "getBookmark()", [range](S &s, Arguments &) { return Value(range(s)->bookmark()); });
    table.method(from + 8, "pasteHTML(html)", [range](S &s, Arguments &a) {
        const auto r = range(s);
        hostOf(r->page()).paste(*r, a[0].toString());
        return Value();
    });
}

struct ItselfAsRange
{
    using Subject = TextRange;
    TextRange *operator()(TextRange &r) const { return &r; }
    static void moved(TextRange &) {}
};

struct SelectionAsRange
{
    using Subject = dom::Document;
    Ref<TextRange> operator()(dom::Document &d) const
    {
        SelectionObject &page = selectionFor(d);
        if (page.type() == SelectionObject::Type::Control)
            throw base::Error(base::errors::noSuchMember, QStringLiteral("Objects are selected, not text."));
        return textRangeOf(page);
    }
    static void moved(TextRange &r) { r.select(); }
};

/// What moves a range's ends. The selection's range is selected anew behind each.
template <class Table, class Get> void addMoves(Table &table, int from, Get range)
{
    using S = typename Get::Subject;
    const auto moving = [range](auto move) {
        return [range, move](S &s, Arguments &a) {
            const auto r = range(s);
            const Value result = move(*r, a);
            Get::moved(*r);
            return result;
        };
    };
    using R = TextRange;
    table.method(from, "expand(unit)", moving([](R &r, Arguments &a) { return Value(r.expand(a[0].toString())); }));
    table.method(from + 1, "move(unit, [count])",
                 moving([](R &r, Arguments &a) { return Value(r.move(a[0].toString(), optional(a[1], 1))); }));
    table.method(from + 2, "moveStart(unit, [count])",
                 moving([](R &r, Arguments &a) { return Value(r.moveStart(a[0].toString(), optional(a[1], 1))); }));
    table.method(from + 3, "moveEnd(unit, [count])",
                 moving([](R &r, Arguments &a) { return Value(r.moveEnd(a[0].toString(), optional(a[1], 1))); }));
    table.method(from + 4, "moveToElementText(element)", moving([](R &r, Arguments &a) {
                     r.moveToElementText(elementOf(a[0]));
                     return Value();
                 }));
    table.method(from + 5, "moveToPoint(x, y)", moving([](R &r, Arguments &a) {
                     const ranges::Position p = hostOf(r.page()).placeAt({a[0].toInt(), a[1].toInt()});
                     if (!p) throw base::Error(base::errors::invalidCall, QStringLiteral("No text is at that point."));
                     r.moveToPlace(p);
                     return Value();
                 }));
    table.method(from + 6, "setEndPoint(how, range)", moving([](R &r, Arguments &a) {
                     r.setEndPoint(a[0].toString(), rangeOf(a[1]));
                     return Value();
                 }));
    table.method(from + 7, "findText(text, [count], [flags])", moving([](R &r, Arguments &a) {
                     return Value(r.findText(a[0].toString(), optional(a[1], TextRange::noLimit), optional(a[2], 0)));
                 }));
    table.method(from + 8, "moveToBookmark(bookmark)", moving([](R &r, Arguments &a) {
                     r.moveToBookmark(a[0].toString());
                     return Value(true);
                 }));
}

/// Where a range shows.
template <class Table, class Get> void addBounds(Table &table, int from, Get range)
{
    using S = typename Get::Subject;
    table.method(from, "scrollIntoView([start])", [range](S &s, Arguments &a) {
        const auto r = range(s);
        hostOf(r->page()).bringIntoView(bounds(*r), optional(a[0], true));
        return Value();
    });
    table.read(from + 1, "boundingLeft", [range](S &s) { return Value(bounds(*range(s)).left()); });
    table.read(from + 2, "boundingTop", [range](S &s) { return Value(bounds(*range(s)).top()); });
    table.read(from + 3, "boundingWidth", [range](S &s) { return Value(bounds(*range(s)).width()); });
    table.read(from + 4, "boundingHeight", [range](S &s) { return Value(bounds(*range(s)).height()); });
    table.read(from + 5, "offsetLeft", [range](S &s) { return Value(bounds(*range(s)).left()); });
    table.read(from + 6, "offsetTop", [range](S &s) { return Value(bounds(*range(s)).top()); });
}

} // namespace

const Interface &selection()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLSelectionObject"));
        using D = dom::Document;
        InterfaceTable<D> table(*interface);
        table.read(5001, "type", [](D &d) { return Value(typeName(liveSelection(d))); })
            .method(5002, "createRange()",
                    [](D &d, Arguments &) {
                        SelectionObject &page = selectionFor(d);
                        if (page.type() == SelectionObject::Type::Control)
                            return rangeValue(Ref<ControlRange>(new ControlRange(page, page.elements())));
                        return rangeValue(textRangeOf(page));
                    })
            .method(5003, "empty()",
                    [](D &d, Arguments &) {
                        if (SelectionObject *selection = liveSelection(d)) selection->empty();
                        return Value();
                    })
            .method(5004, "clear()",
                    [](D &d, Arguments &) {
                        changes::EditScope scope;
                        const auto r = SelectionAsRange()(d);
                        hostOf(r->page()).paste(*r, {});
                        return Value();
                    })
            .method(5005, "collapse([start])",
                    [](D &d, Arguments &a) {
                        const auto r = SelectionAsRange()(d);
                        r->collapse(optional(a[0], true));
                        r->select();
                        return Value();
                    })
            .method(5006, "select()", [](D &, Arguments &) { return Value(); });
        addPlaces(table, 5010, SelectionAsRange());
        addMoves(table, 5020, SelectionAsRange());
        addBounds(table, 5030, SelectionAsRange());
        return interface;
    }();
    return *made;
}

const Interface &textRange()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLTxtRange"));
        InterfaceTable<TextRange> table(*interface);
        addPlaces(table, 5101, ItselfAsRange());
        table.method(5120, "collapse([start])", [](TextRange &r, Arguments &a) {
            r.collapse(optional(a[0], true));
            return Value();
        });
        addMoves(table, 5121, ItselfAsRange());
        table.method(5130, "select()", [](TextRange &r, Arguments &) {
            r.select();
            return Value();
        });
        addBounds(table, 5131, ItselfAsRange());
        table.method(5138, "queryCommandText(command)",
                     [](TextRange &r, Arguments &a) { return queryText(r, a[0].toString()); });
        addCommands(table, 5140, [](TextRange &r, const QString &command) {
            return hostOf(r.page()).query(r.span(), command);
        });
        return interface;
    }();
    return *made;
}

const Interface &controlRange()
{
    static const Interface *made = [] {
        auto *interface = new Interface(QStringLiteral("IHTMLControlRange"));
        using C = ControlRange;
        InterfaceTable<C> table(*interface);
        table
            .method(defaultMemberId, "item(index)",
                    [](C &c, Arguments &a) {
                        dom::Element *item = c.item(a[0].toInteger());
                        if (item) return valueOf(item);
                        throw base::Error(base::errors::subscriptOutOfRange, QStringLiteral("There is no such item."));
                    })
            .read(5201, "length", [](C &c) { return Value(c.length()); })
            .method(5202, "add(element)",
                    [](C &c, Arguments &a) {
                        c.add(elementOf(a[0]));
                        return Value();
                    })
            .method(5203, "remove(index)",
                    [](C &c, Arguments &a) {
                        c.remove(a[0].toInteger());
                        return Value();
                    })
            .method(5204, "select()",
                    [](C &c, Arguments &) {
                        c.select();
                        return Value();
                    })
            .method(5205, "scrollIntoView([start])",
                    [](C &c, Arguments &a) {
                        if (dom::Element *first = c.item(0)) {
                            RangeHost &host = hostOf(c.page());
                            host.bringIntoView(host.rectangleOf(*first), optional(a[0], true));
                        }
                        return Value();
                    })
            .method(5206, "commonParentElement()", [](C &c, Arguments &) { return valueOf(c.commonParent()); });
        addCommands(table, 5210, [](C &c, const QString &command) {
            return hostOf(c.page()).query(c.elements(), command);
        });
        return interface;
    }();
    return *made;
}

Value selectionOf(dom::Document &document)
{
    static const ObjectType type = plainType(QStringLiteral("IHTMLSelectionObject"), {&selection()});
    return liveSelection(document) ? countedValue<dom::Document>(type, &document) : Value::nothing();
}

Value createTextRange(dom::Element &element)
{
    return rangeValue(TextRange::over(selectionFor(element.document()), element));
}

Value createControlRange(dom::Element &element)
{
    return rangeValue(Ref<ControlRange>(new ControlRange(selectionFor(element.document()))));
}

} // namespace platform::interfaces

namespace platform {

Value valueOf(const base::Ref<ranges::TextRange> &range)
{
    return interfaces::rangeValue(range);
}

Value valueOf(const base::Ref<ranges::ControlRange> &range)
{
    return interfaces::rangeValue(range);
}

} // namespace platform
