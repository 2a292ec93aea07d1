// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/RangeHost.h"
#include "engine/ranges/TextRange.h"
#include "platform/DisplayServices.h"
#include "platform/InterfacesDetail.h"

/// Display and markup services: the caret's place on the screen, and places in the document.
namespace platform {

using base::Ref;

namespace {

ranges::RangeHost *hostOf(const dom::Document &document)
{
    ranges::SelectionObject *selection = document.interaction ? document.interaction->selection() : nullptr;
    return selection ? selection->host : nullptr;
}

} // namespace

void IHTMLCaret::GetLocation(QPoint &point, bool global) const
{
    ranges::RangeHost *host = hostOf(*mDocument);
    const QRect box = host ? host->caretBox() : QRect();
    if (!host || box.height() <= 0) throw base::Error(base::errors::notPossible, QStringLiteral("There is no caret."));
    const dom::Element *const body = mDocument->body();
    const QPoint scrolled = body ? body->scrollPosition() : QPoint();
    point = global ? host->toGlobal(box.topLeft()) : box.topLeft() + scrolled;
}

Ref<IHTMLCaret> IDisplayServices::GetCaret() const
{
    return Ref<IHTMLCaret>(new IHTMLCaret(*mDocument));
}

namespace interfaces {

namespace {

/// A markup pointer for scripts: it goes with edits.
class ScriptPointer final : public base::RefCounted
{
public:
    explicit ScriptPointer(dom::Document &document) : mDocument(&document) {}
    ranges::LivePosition place;
    dom::Document &document() const { return *mDocument; }

private:
    Ref<dom::Document> mDocument;
};

class ScriptMarkup final : public base::RefCounted
{
public:
    explicit ScriptMarkup(dom::Document &document) : mDocument(&document) {}
    dom::Document &document() const { return *mDocument; }

private:
    Ref<dom::Document> mDocument;
};

ranges::SelectionObject &selectionFor(dom::Document &document)
{
    if (document.interaction)
        if (ranges::SelectionObject *selection = document.interaction->selection()) return *selection;
    throw base::Error(base::errors::notPossible, QStringLiteral("The document isn't shown."));
}

} // namespace

const Interface &markupPointer()
{
    static const Interface *interface = [] {
        auto *made = new Interface(QStringLiteral("IMarkupPointer"));
        using P = ScriptPointer;
        InterfaceTable<P>(*made)
            .read(5401, "CurrentScope",
                  [](P &p) {
                      const ranges::Position &at = p.place.position();
                      return at ? valueOf(at.element()) : Value::nothing();
                  })
            .method(5402, "MoveToElement(element, [atEnd])", [](P &p, Arguments &a) {
                dom::Element *element = elementOf(a[0]);
                if (!element)
                    throw base::Error(base::errors::objectNotSet, QStringLiteral("There is no element to move to."));
                if (&element->document() != &p.document() || !element->isConnected())
                    throw base::Error(base::errors::invalidCall, QStringLiteral("The element isn't in the document."));
                const bool atEnd = !a[1].isEmpty() && a[1].toBoolean();
                p.place = ranges::LivePosition(selectionFor(p.document()).keeper(),
                                               atEnd ? ranges::Position::endOf(*element)
                                                     : ranges::Position::startOf(*element));
                return Value();
            });
        return made;
    }();
    return *interface;
}

const Interface &caret()
{
    static const Interface *interface = [] {
        auto *made = new Interface(QStringLiteral("IHTMLCaret"));
        using C = IHTMLCaret;
        InterfaceTable<C>(*made).method(5301, "GetLocation(&x, &y, [global])", [](C &c, Arguments &a) {
            QPoint point;
            c.GetLocation(point, a[2].isEmpty() || a[2].toBoolean());
            a[0] = Value(point.x());
            a[1] = Value(point.y());
            return Value();
        });
        return made;
    }();
    return *interface;
}

const Interface &displayServices()
{
    static const Interface *interface = [] {
        auto *made = new Interface(QStringLiteral("IDisplayServices"));
        using S = IDisplayServices;
        InterfaceTable<S>(*made).method(5311, "GetCaret()", [](S &s, Arguments &) {
            static const ObjectType caretType = plainType(QStringLiteral("IHTMLCaret"), {&caret()});
            return countedValue<IHTMLCaret>(caretType, s.GetCaret().get());
        });
        return made;
    }();
    return *interface;
}

Value displayServicesOf(dom::Document &document)
{
    static const ObjectType type = plainType(QStringLiteral("IDisplayServices"), {&displayServices()});
    return countedValue<IDisplayServices>(type, Ref<IDisplayServices>(new IDisplayServices(document)).get());
}

const Interface &markupServices()
{
    static const Interface *interface = [] {
        auto *made = new Interface(QStringLiteral("IMarkupServices"));
        using S = ScriptMarkup;
        InterfaceTable<S>(*made).method(5321, "CreateMarkupPointer()", [](S &s, Arguments &) {
            static const ObjectType pointerType = plainType(QStringLiteral("IMarkupPointer"), {&markupPointer()});
            return countedValue<ScriptPointer>(pointerType, Ref<ScriptPointer>(new ScriptPointer(s.document())).get());
        });
        return made;
    }();
    return *interface;
}

Value markupServicesOf(dom::Document &document)
{
    static const ObjectType type = plainType(QStringLiteral("IMarkupServices"), {&markupServices()});
    return countedValue<ScriptMarkup>(type, Ref<ScriptMarkup>(new ScriptMarkup(document)).get());
}

} // namespace interfaces
} // namespace platform
