// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/EditableRegions.h"

#include "core/Host.h"
#include "core/modMain.h"
#include "engine/ranges/Rendering.h"
#include "support/FailureTrap.h"

using modMain::GetElementClassName;
using modMain::IsElementEditable;
using support::given;
using support::trap;

namespace {

constexpr char module[] = "Vellum5";
constexpr char contentWidget[] = "BrimContentWidget";
constexpr char widgetProperty[] = "WidgetProperty";
constexpr char misspelled[] = "lxMisspelled";

using Element = base::Ref<IHTMLElement>;

bool hasTag(const IHTMLElement *e, const char *tag)
{
    return e->tagName() == QLatin1String(tag);
}

/// The first of `e` and its ancestors for which `matches` holds; BODY isn't asked, and what stands above it isn't
/// either.
template <class Predicate> IHTMLElement *nearestBelowBody(IHTMLElement *e, Predicate &&matches)
{
    for (IHTMLElement *at = e; at && !hasTag(at, "BODY"); at = at->parentElement())
        if (matches(at)) return at;
    return nullptr;
}

bool isContentWidget(const IHTMLElement *e)
{
    return (hasTag(e, "DIV") || hasTag(e, "SPAN")) && e->className() == QLatin1String(contentWidget);
}

bool isMisspellingMarker(const IHTMLElement *e)
{
    return e->className() == QLatin1String(misspelled);
}

/// A widget's buttons have names too, but are no places for a value: nobody types into their captions.
bool isWidgetButton(const QString &id)
{
    return id == QLatin1String("editwidget") || id == QLatin1String("deletewidget");
}

bool isNamedOrMarked(const IHTMLElement &e)
{
    static const dom::Atom contentEditable("contenteditable");
    if (e.hasAttribute(contentEditable)) return true;
    const QString id = e.idAttribute();
    return !id.isEmpty() && !isWidgetButton(id);
}

} // namespace

IHTMLElement *EditableRegions::GetEditWrapperElement(IHTMLElement *e) const
{
    return trap(module, "GetEditWrapperElement", given(&mHost, "e", e), [&] {
        const Element held(e);
        return nearestBelowBody(e, [](IHTMLElement *at) {
            const QString name = at->className();
            return name.contains(QLatin1String("qsedit"), Qt::CaseInsensitive) ||
                   name.contains(QLatin1String("lxedit"), Qt::CaseInsensitive);
        });
    });
}

ElementRole EditableRegions::RoleOf(const IHTMLElement &e)
{
    const QString name = e.className();
    const auto holds = [&name](const char *mark) { return name.contains(QLatin1String(mark), Qt::CaseInsensitive); };
    const bool isSpan = hasTag(&e, "SPAN");
    if (name.isEmpty()) {
        const bool isNamed = isSpan && isNamedOrMarked(e);
        return isNamed ? ElementRole::Field : ElementRole::None;
    }
    if (isSpan && holds(misspelled)) return ElementRole::Mark;
    const bool isWidget = name == QLatin1String(contentWidget);
    const bool isWrapper = holds("lxedit") || holds("qsedit");
    if (isSpan) {
        if (isWidget) return ElementRole::InlineWidget;
        return isNamedOrMarked(e) || isWrapper || holds("widgetproperty") ? ElementRole::Field : ElementRole::None;
    }
    if (isWidget && hasTag(&e, "DIV")) return ElementRole::Widget;
    return isWrapper ? ElementRole::Frame : ElementRole::None;
}

// Spans

bool EditableRegions::IsEditableSpan(IHTMLElement *e) const
{
    return trap(module, "IsEditableSpan", given(&mHost, "e", e), [&] {
        const Element held(e);
        return e && hasTag(e, "SPAN") && !isMisspellingMarker(e) && IsElementEditable(e);
    });
}

IHTMLElement *EditableRegions::GetEditableSpan(IHTMLElement *e) const
{
    return trap(module, "GetEditableSpan", given(&mHost, "e", e), [&] {
        const Element held(e);
        return nearestBelowBody(e, [](IHTMLElement *at) {
            return hasTag(at, "SPAN") && !at->idAttribute().isEmpty() &&
                   at->className() != QLatin1String(widgetProperty) && !isMisspellingMarker(at) && IsElementEditable(at);
        });
    });
}

bool EditableRegions::IsElementInEditableSpan(IHTMLElement *e) const
{
    return trap(module, "IsElementInEditableSpan", given(&mHost, "e", e), [&] {
        const Element held(e);
        return nearestBelowBody(e, [this](IHTMLElement *at) { return IsEditableSpan(at); }) != nullptr;
    });
}

void EditableRegions::GetEditableSpans(IHTMLElement *e, platform::Collection &Spans) const
{
    base::Ref<IHTMLElementCollection> spans;
    uint32_t i = 0;
    const auto variables = given(&mHost, "e", e, "Spans", Spans).locals("Elements", spans, "i", i);
    trap(module, "GetEditableSpans", variables, [&] {
        const Element held(e);
        if (!e) return;
        const auto add = [&Spans](IHTMLElement *span) {
            if (isMisspellingMarker(span) || !IsElementEditable(span)) return;
            Spans.Add(QVariant::fromValue(Element(span)), span->idAttribute());
        };
        if (hasTag(e, "SPAN")) add(e);
        spans = e->all()->tags(QStringLiteral("span"));
        for (; i < spans->length(); ++i)
            add(spans->item(i));
    });
}

// Widgets

bool EditableRegions::IsWidgetElement(IHTMLElement *e) const
{
    return trap(module, "IsWidgetElement", given(&mHost, "e", e),
                [&] { return GetElementClassName(e) == QLatin1String(contentWidget); });
}

bool EditableRegions::IsWidgetPropertyElement(IHTMLElement *e) const
{
    return trap(module, "IsWidgetPropertyElement", given(&mHost, "e", e),
                [&] { return GetElementClassName(e) == QLatin1String(widgetProperty); });
}

bool EditableRegions::ContainsWidgetElement(IHTMLElement *e) const
{
    base::Ref<IHTMLElementCollection> all;
    uint32_t i = 0;
    return trap(module, "ContainsWidgetElement", given(&mHost, "e", e).locals("Elements", all, "i", i), [&] {
        const Element held(e);
        if (!e) return false;
        all = e->all();
        for (; i < all->length(); ++i) {
            IHTMLElement *at = all->item(i);
            if (IsWidgetPropertyElement(at) || IsWidgetElement(at)) return true;
        }
        return false;
    });
}

bool EditableRegions::IsInWidget(IHTMLElement *e) const
{
    return trap(module, "IsInWidget", given(&mHost, "e", e), [&] { return GetWidgetElement(e) != nullptr; });
}

IHTMLElement *EditableRegions::GetWidgetElement(IHTMLElement *e) const
{
    return trap(module, "GetWidgetElement", given(&mHost, "e", e), [&] {
        const Element held(e);
        return nearestBelowBody(e, [](IHTMLElement *at) { return isContentWidget(at); });
    });
}

IHTMLElement *EditableRegions::GetParentAnchor(IHTMLElement *e) const
{
    return trap(module, "GetParentAnchor", given(&mHost, "e", e), [&] {
        const Element held(e);
        return nearestBelowBody(e, [](IHTMLElement *at) { return hasTag(at, "A"); });
    });
}
