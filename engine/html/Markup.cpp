// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/Markup.h"

#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/html/Blocks.h"
#include "engine/html/Parser.h"
#include "engine/html/Serializer.h"

#include <QSet>

namespace html {

using namespace dom;

Markup &Markup::instance()
{
    static Markup markup;
    return markup;
}

Ref<DocumentFragment> Markup::parseFragment(Document &document, const Element &context, const QString &html)
{
    return html::parseFragment(document, context, html);
}

QString Markup::outerHTML(const Node &node) const
{
    return Serializer::outer(node);
}

QString Markup::innerHTML(const Node &node) const
{
    return Serializer::inner(node);
}

namespace {

/// Elements inside which the parser reads some tags otherwise than elsewhere.
bool constrains(const Element &element)
{
    static const QSet<Atom> special = {
        names::p,  names::a,  names::h1,     names::h2,   names::h3,     names::h4,    names::h5,    names::h6,
        names::li, names::dt, names::dd,     names::form, names::button, names::nobr,  names::option, names::select,
        names::table, names::tbody, names::thead, names::tfoot, names::tr, names::colgroup, names::head};
    return element.space() != Namespace::Html || special.contains(element.name());
}

bool isBoundary(const Element &element)
{
    return element.is(names::body) || element.is(names::td) || element.is(names::th) || element.is(names::caption) ||
           element.is(names::html);
}

/// Whether the two trees have the same elements in the same places. (Their texts come from one source.)
bool sameShape(const Node &a, const Node &b)
{
    const Node *left = a.firstChild(), *right = b.firstChild();
    const auto skipLeaves = [](const Node *node, const Node &top) {
        while (node && !node->isElement() && !(node->isText() && !QStringView(node->nodeValue()).trimmed().isEmpty()))
            node = node->next(&top);
        return node;
    };
    left = skipLeaves(left, a);
    right = skipLeaves(right, b);
    while (left && right) {
        if (left->type() != right->type() || left->depth() - a.depth() != right->depth() - b.depth()) return false;
        if (left->isElement() && left->asElement()->name() != right->asElement()->name()) return false;
        left = skipLeaves(left->next(&a), a);
        right = skipLeaves(right->next(&b), b);
    }
    return !left && !right;
}

} // namespace

bool Markup::canStandIn(const ParentNode &parent, const Node &content) const
{
    const Element *element = parent.asElement();
    if (!element || !content.firstChild()) return true;
    std::vector<const Element *> chain; // from the innermost
    bool constrained = false;
    for (const Element *at = element; at && chain.size() < 64; at = at->parentElement()) {
        chain.push_back(at);
        constrained = constrained || constrains(*at);
        if (isBoundary(*at)) break;
    }
    if (!constrained) return true;
    if (element->space() != Namespace::Html) return true;
    // Read the content where it would stand, and see whether it stays there.
    QString text, open;
    Serializer::write(content, text);
    const Element *outermost = chain.back();
    if (outermost->is(names::td) || outermost->is(names::th))
        open = QStringLiteral("<table><tbody><tr>");
    else if (outermost->is(names::caption))
        open = QStringLiteral("<table>");
    else if (outermost->is(names::html) || outermost->is(names::body))
        chain.pop_back();
    for (size_t i = chain.size(); i-- > 0;) open += u'<' + chain[i]->name().text() + u'>';
    const QString doctype = element->document().isQuirks() ? QString() : QStringLiteral("<!DOCTYPE html>");
    const bool inHead = !chain.empty() && chain.back()->is(names::head);
    Ref<Document> trial = parseDocument(doctype + (inHead ? QString() : QStringLiteral("<body>")) + open + text);
    const Node *place = inHead ? static_cast<Node *>(trial->documentElement()) : trial->body();
    if (outermost->is(names::td) || outermost->is(names::th))
        for (int i = 0; i < 3 && place; ++i) place = place->firstChild();
    if (outermost->is(names::caption) && place) place = place->firstChild();
    for (size_t i = chain.size(); i-- > 0;) {
        // The first child, alone: content that got out would stand before or behind it.
        const Node *child = place ? place->firstChild() : nullptr;
        if (!child || !child->asElement() || child->asElement()->name() != chain[i]->name()) return false;
        if (child->nextSibling() && !inHead) return false;
        place = child;
    }
    return place && sameShape(*place, content);
}

QString Markup::innerText(const Node &top) const
{
    QString out;
    bool boundary = false;
    const auto breakLine = [&] {
        if (boundary && !out.isEmpty() && !out.endsWith(u'\n')) out.append(u'\n');
        boundary = false;
    };
    const Node *node = top.firstChild();
    if (!node) return {};
    while (node) {
        const Element *element = node->asElement();
        if (element && (element->is(names::script) || element->is(names::style))) {
            node = node->nextSkippingChildren(&top);
            continue;
        }
        if (node->isText() && !node->nodeValue().isEmpty()) {
            const QString data = node->nodeValue();
            if (!(boundary && QStringView(data).trimmed().isEmpty())) {
                breakLine();
                out.append(data);
            }
        } else if (element && element->is(names::br)) {
            breakLine();
            out.append(u'\n');
        } else if (element && isBlockElement(*element)) {
            boundary = true;
        }
        // Leaving a block is a boundary too.
        const Node *following = node->next(&top);
        for (const Node *up = node; up && up != &top && !(following && up->isAncestorOf(*following)) && up != following;
             up = up->parentNode())
            if (const Element *left = up->asElement(); left && isBlockElement(*left)) boundary = true;
        node = following;
    }
    return Serializer::withCrLf(out);
}

} // namespace html
