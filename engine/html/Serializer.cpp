// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/Serializer.h"

#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"

#include <QSet>

namespace html {

using namespace dom;

namespace {

void escapeInto(QStringView text, QString &out, bool inValue)
{
    qsizetype from = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        const char *escape = nullptr;
        if (c == u'&')
            escape = "&amp;";
        else if (c == 0xA0)
            escape = "&nbsp;";
        else if (inValue ? c == u'"' : false)
            escape = "&quot;";
        else if (!inValue && c == u'<')
            escape = "&lt;";
        else if (!inValue && c == u'>')
            escape = "&gt;";
        if (!escape) continue;
        out.append(text.mid(from, i - from));
        out.append(QLatin1String(escape));
        from = i + 1;
    }
    out.append(text.mid(from));
}

const QString &upperName(const Element &element)
{
    static QHash<Atom, QString> capitals;
    const Atom name = element.name();
    if (element.space() != Namespace::Html || element.isPrefixed()) return name.text();
    QString &capital = capitals[name];
    if (capital.isEmpty()) capital = name.text().toUpper();
    return capital;
}

bool dropsFirstLineFeed(const Element &element)
{
    return element.is(names::pre) || element.is(names::textarea) || element.is(names::listing);
}

void writeLeaf(const Node &node, QString &out)
{
    switch (node.type()) {
    case NodeType::Text: {
        const auto &text = static_cast<const Text &>(node);
        const Element *parent = node.parentElement();
        if (parent && Serializer::isRawText(*parent))
            out.append(text.data());
        else
            escapeInto(text.data(), out, false);
        break;
    }
    case NodeType::Comment: {
        const auto &comment = static_cast<const Comment &>(node);
        if (comment.form() == Comment::Form::Declaration)
            out.append(u'<').append(comment.data()).append(u'>');
        else
            out.append(QLatin1String("<!--")).append(comment.data()).append(QLatin1String("-->"));
        break;
    }
    case NodeType::DocumentType: {
        const auto &doctype = static_cast<const DocumentType &>(node);
        out.append(QLatin1String("<!")).append(doctype.source()).append(u'>').append(doctype.spaceBehind());
        break;
    }
    default: break;
    }
}

void openElement(const Element &element, QString &out, bool showLine)
{
    Serializer::writeStartTag(element, out);
    if (element.isHeldOpen() && showLine && !element.hasChildNodes()) out.append(QLatin1String("&nbsp;"));
    const Node *first = element.firstChild();
    if (first && first->isText() && dropsFirstLineFeed(element) &&
        static_cast<const Text *>(first)->data().startsWith(u'\n'))
        out.append(u'\n'); // the parser takes one away
}

} // namespace

bool Serializer::isRawText(const Element &element)
{
    static const QSet<Atom> raw = {names::script,  names::style,    names::xmp,      names::iframe,
                                   names::noembed, names::noframes, names::plaintext};
    return element.space() == Namespace::Html && raw.contains(element.name());
}

void Serializer::writeStartTag(const Element &element, QString &out)
{
    out.append(u'<').append(upperName(element));
    for (const Attribute &attribute : element.attributeList()) {
        out.append(u' ').append(attribute.name.text()).append(QLatin1String("=\""));
        escapeInto(attribute.value, out, true);
        out.append(u'"');
    }
    out.append(u'>');
}

void Serializer::writeEndTag(const Element &element, QString &out)
{
    if (element.isVoid()) return;
    out.append(QLatin1String("</")).append(upperName(element)).append(u'>');
}

void Serializer::writeText(QStringView text, QString &out)
{
    escapeInto(text, out, false);
}

void Serializer::write(const Node &top, QString &out, bool showOwnLine)
{
    const Node *node = &top;
    for (;;) {
        const Element *element = node->asElement();
        if (element)
            openElement(*element, out, node != &top || showOwnLine);
        else
            writeLeaf(*node, out);
        if (node->firstChild()) {
            node = node->firstChild();
            continue;
        }
        if (element) writeEndTag(*element, out);
        while (node != &top && !node->nextSibling()) {
            node = node->parentNode();
            if (const Element *parent = node->asElement()) writeEndTag(*parent, out);
        }
        if (node == &top) return;
        node = node->nextSibling();
    }
}

QString Serializer::withCrLf(const QString &text)
{
    const qsizetype lines = text.count(u'\n');
    if (lines == 0) return text;
    QString out;
    out.reserve(text.size() + lines);
    for (const QChar c : text) {
        if (c == u'\n') out.append(u'\r');
        out.append(c);
    }
    return out;
}

QString Serializer::outer(const Node &node)
{
    QString out;
    const Node *parent = node.parentNode();
    if (node.isElement() && parent && parent->type() == NodeType::Document)
        for (const Node *child = parent->firstChild(); child; child = child->nextSibling()) write(*child, out, false);
    else
        write(node, out, false);
    return withCrLf(out);
}

QString Serializer::inner(const Node &node)
{
    QString out;
    const Element *element = node.asElement();
    const Node *first = node.firstChild();
    if (element && first && first->isText() && dropsFirstLineFeed(*element) &&
        static_cast<const Text *>(first)->data().startsWith(u'\n'))
        out.append(u'\n');
    for (const Node *child = first; child; child = child->nextSibling()) write(*child, out);
    return withCrLf(out);
}

} // namespace html
