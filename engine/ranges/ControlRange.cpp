// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/ControlRange.h"

#include "base/Error.h"
#include "engine/dom/Names.h"
#include "engine/ranges/Rendering.h"
#include "engine/ranges/TextIndex.h"

namespace ranges {

using namespace dom;
using base::Error;

bool isSelectableObject(const Element &element)
{
    if (element.is(names::table)) return true;
    if (element.is(names::body) || element.is(names::html)) return false;
    if (isObject(element)) return true;
    // A block of a size or place of its own has handles.
    if (!element.is(names::div) && !element.is(names::span)) return false;
    if (const QString *own = element.attribute(names::contenteditable);
        own && own->compare(u"false", Qt::CaseInsensitive) == 0)
        return true;
    const QString style = element.attributeValue("style").toLower();
    for (const QString &declaration : style.split(u';')) {
        const qsizetype colon = declaration.indexOf(u':');
        if (colon < 0) continue;
        const QString name = declaration.left(colon).trimmed(), value = declaration.mid(colon + 1).trimmed();
        if ((name == u"width" || name == u"height") && value != u"auto") return true;
        if (name == u"position" && (value == u"absolute" || value == u"relative" || value == u"fixed")) return true;
    }
    return false;
}

SelectionObject &ControlRange::page() const
{
    if (!*mPage) throw Error(base::errors::notPossible, QStringLiteral("The range's document is gone."));
    return **mPage;
}

std::vector<Ref<Element>> ControlRange::elements() const
{
    std::vector<Ref<Element>> there;
    for (const Ref<Element> &element : mElements)
        if (element->isConnected()) there.push_back(element);
    return there;
}

Element *ControlRange::item(int64_t index) const
{
    const auto there = elements();
    return index >= 0 && index < int64_t(there.size()) ? there[size_t(index)].get() : nullptr;
}

void ControlRange::add(Element *element)
{
    if (!element) throw Error(base::errors::objectNotSet, QStringLiteral("There is no element to add."));
    const Element *body = page().document().body();
    if (&element->document() != &page().document() || !body || !body->contains(*element))
        throw Error(base::errors::invalidCall, QStringLiteral("The element isn't in the range's document."));
    if (!isSelectableObject(*element) && !page().index().rendering().isWidget(*element))
        throw Error(base::errors::invalidCall, QStringLiteral("The element can't be selected as an object."));
    for (const Ref<Element> &there : mElements)
        if (there.get() == element) return;
    mElements.emplace_back(element);
}

void ControlRange::remove(int64_t index)
{
    mElements = elements();
    if (index < 0 || index >= int64_t(mElements.size()))
        throw Error(base::errors::subscriptOutOfRange, QStringLiteral("There is no such item."));
    mElements.erase(mElements.begin() + index);
}

void ControlRange::select() const
{
    const auto there = elements();
    if (there.empty()) throw Error(base::errors::invalidCall, QStringLiteral("There is nothing to select."));
    page().setControl(there);
}

Element *ControlRange::commonParent() const
{
    const auto there = elements();
    if (there.empty()) return nullptr;
    Element *common = there.front().get();
    for (const Ref<Element> &element : there)
        while (common && !common->contains(*element))
            common = common->parentElement();
    return common;
}

} // namespace ranges
