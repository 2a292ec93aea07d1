// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Rendering.h"

#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/html/Blocks.h"

#include <QSet>

namespace ranges {

using namespace dom;

namespace {

class HtmlRendering final : public Rendering
{
public:
    bool isBlock(const Element &element) const override { return html::isBlockElement(element); }

    bool preservesSpace(const Text &text) const override
    {
        for (const Element *at = text.parentElement(); at; at = at->parentElement()) {
            if (at->is(names::pre) || at->is(names::textarea) || at->is(names::listing) || at->is(names::xmp) ||
                at->is(names::plaintext))
                return true;
            if (isCell(*at) || at->is(names::body)) return false;
        }
        return false;
    }

    bool isDisplayed(const Node &node) const override
    {
        if (node.isText()) return true;
        const Element *element = node.asElement();
        if (!element) return false;
        static const Atom templateName("template"), hidden("hidden");
        static const QSet<Atom> unseen = {names::head,    names::script,   names::style,   names::title,
                                          names::meta,    names::link,     names::base,    names::param,
                                          names::source,  names::track,    names::area,    names::col,
                                          names::wbr,     names::colgroup, names::frame,   names::noframes,
                                          names::bgsound, names::basefont, names::noembed, templateName};
        if (element->space() != Namespace::Html) return true;
        if (unseen.contains(element->name())) return false;
        if (element->is(names::input) && element->attributeValue("type").compare(u"hidden", Qt::CaseInsensitive) == 0)
            return false;
        return true;
    }
};

bool isIsland(const Element &element)
{
    const QString *own = element.attribute(names::contenteditable);
    return own && own->compare(u"false", Qt::CaseInsensitive) == 0 && element.parentElement() &&
           element.parentElement()->isContentEditable();
}

} // namespace

Role Rendering::roleOf(const Element &element) const
{
    if (!element.is(names::span)) return Role::None;
    const bool named = !element.idAttribute().isEmpty();
    return named || element.hasAttribute(names::contenteditable) ? Role::Field : Role::None;
}

const Rendering &Rendering::byHtml()
{
    static const HtmlRendering rendering;
    return rendering;
}

bool isBreak(const Node &node)
{
    const Element *element = node.asElement();
    return element && element->is(names::br);
}

bool isObject(const Element &element)
{
    static const QSet<Atom> objects = {names::img,      names::hr,     names::input,  names::select,
                                       names::textarea, names::button, names::iframe, names::object,
                                       names::applet,   names::embed,  names::video,  names::audio,
                                       names::canvas,   names::meta,   names::keygen, names::progress};
    if (element.space() != Namespace::Html) return true;
    if (objects.contains(element.name())) return true;
    if (element.isVoid()) return !element.is(names::br);
    return isIsland(element);
}

bool isCell(const Element &element)
{
    return element.is(names::td) || element.is(names::th) || element.is(names::caption);
}

bool isTableStructure(const Element &element)
{
    return element.is(names::table) || element.is(names::tbody) || element.is(names::thead) ||
           element.is(names::tfoot) || element.is(names::tr) || element.is(names::colgroup);
}

bool isList(const Element &element)
{
    return element.is(names::ul) || element.is(names::ol) || element.is(names::dir) || element.is(names::menu);
}

Element *editingHost(const Node &node)
{
    const Element *at = node.isElement() ? node.asElement() : node.parentElement();
    if (!at || !at->isContentEditable()) return nullptr;
    const Element *host = nullptr;
    for (; at; at = at->parentElement()) {
        if (at->is(names::html) || at->is(names::head)) break;
        host = at;
        if (at->is(names::body)) break;
        if (at->hasAttribute(names::contenteditable)) {
            const Element *outside = at->parentElement();
            if (!outside || !outside->isContentEditable()) break;
        }
    }
    return const_cast<Element *>(host);
}

} // namespace ranges
