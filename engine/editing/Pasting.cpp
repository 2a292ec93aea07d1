// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/Pasting.h"

#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"
#include "engine/dom/TableGrid.h"
#include "engine/html/Blocks.h"
#include "engine/ranges/Rendering.h"

#include <QRegularExpression>
#include <QSet>

namespace editing {

using namespace dom;

namespace {

/// Programs mark what was copied inside of a page that gives it its context.
QString fragmentOf(const QString &html)
{
    static const QString start = QStringLiteral("<!--StartFragment-->"), end = QStringLiteral("<!--EndFragment-->");
    const qsizetype from = html.indexOf(start, 0, Qt::CaseInsensitive);
    if (from < 0) return html;
    const qsizetype to = html.indexOf(end, from, Qt::CaseInsensitive);
    return html.mid(from + start.size(), to < 0 ? -1 : to - from - start.size());
}

bool isUnwanted(const Node &node)
{
    if (node.isComment()) return true;
    static const Atom templateName("template");
    static const QSet<Atom> names = {names::script, names::style,    names::link, names::meta, names::title,
                                     names::base,   names::bgsound, names::head, templateName};
    const Element *element = node.asElement();
    if (!element) return !node.isText();
    // Drawings run scripts too, under the same names.
    return names.contains(element->name()) ||
           element->name().text().compare(QLatin1String("script"), Qt::CaseInsensitive) == 0;
}

/// Blanks and control characters in front of and within a scheme don't keep anybody from running it.
bool runs(const QString &address)
{
    QString scheme;
    for (const QChar c : address) {
        if (c.unicode() <= 0x20) continue;
        scheme += c.toLower();
        if (c == u':' || scheme.size() > 16) break;
    }
    return scheme == QLatin1String("javascript:") || scheme == QLatin1String("vbscript:") ||
           scheme == QLatin1String("livescript:");
}

bool isUnwanted(const Attribute &attribute)
{
    const QString name = attribute.name.text().toLower();
    if (name.startsWith(QLatin1String("on")) || name == QLatin1String("srcdoc")) return true;
    if (name == QLatin1String("style")) {
        const QString value = attribute.value.toLower();
        return value.contains(QLatin1String("expression(")) || value.contains(QLatin1String("behavior:")) ||
               value.contains(QLatin1String("javascript:"));
    }
    if (name == QLatin1String("data") || name == QLatin1String("src") || name == QLatin1String("href"))
        if (attribute.value.trimmed().startsWith(QLatin1String("data:text/html"), Qt::CaseInsensitive)) return true;
    return runs(attribute.value);
}

void clean(Element &element, const Document &document)
{
    std::vector<Atom> unwanted;
    for (const Attribute &attribute : element.attributeList())
        if (isUnwanted(attribute)) unwanted.push_back(attribute.name);
    if (const QString id = element.idAttribute(); !id.isEmpty() && document.getElementById(id))
        unwanted.push_back(names::id);
    for (const Atom &name : unwanted)
        RawTree::setAttribute(element, name, nullptr);
}

bool isBlankText(const Node &node)
{
    if (!node.isText()) return false;
    for (const QChar c : static_cast<const Text &>(node).data())
        if (c.unicode() != u' ' && (c.unicode() < u'\t' || c.unicode() > u'\r')) return false;
    return true;
}

void wrapItems(Document &document, DocumentFragment &content)
{
    for (Node *node = content.firstChild(); node;) {
        const Element *item = node->asElement();
        if (!item || !item->is(names::li)) {
            node = node->nextSibling();
            continue;
        }
        const Ref<Element> list = document.createElement(QStringLiteral("ul"));
        RawTree::insert(content, *list, node);
        while (node && (isBlankText(*node) || (node->asElement() && node->asElement()->is(names::li)))) {
            const Ref<Node> moved(node);
            node = node->nextSibling();
            RawTree::remove(*moved);
            RawTree::append(*list, *moved);
        }
    }
}

/// White space around blocks shows nothing and only looks odd in the text.
void dropOuterBlanks(DocumentFragment &content)
{
    bool blocks = false;
    for (const Node *node = content.firstChild(); node && !blocks; node = node->nextSibling())
        blocks = node->asElement() && html::isBlockElement(*node->asElement());
    if (!blocks) return;
    for (Node *node = content.firstChild(); node;) {
        Node *next = node->nextSibling();
        const Element *left = node->previousSibling() ? node->previousSibling()->asElement() : nullptr;
        const Element *right = next ? next->asElement() : nullptr;
        const bool edgeLeft = !node->previousSibling() || (left && html::isBlockElement(*left));
        const bool edgeRight = !next || (right && html::isBlockElement(*right));
        if (isBlankText(*node) && edgeLeft && edgeRight) RawTree::remove(*node);
        node = next;
    }
}

/// Spreadsheets mark the rows without their table, and no parser takes rows by themselves.
QString withTable(const QString &html)
{
    static const QRegularExpression part(QStringLiteral("^\\s*<(tr|td|th|tbody|thead|tfoot|col|colgroup)[\\s>]"),
                                         QRegularExpression::CaseInsensitiveOption);
    return part.match(html).hasMatch() ? QLatin1String("<table>") + html + QLatin1String("</table>") : html;
}

} // namespace

Element *Pasting::onlyTable(const DocumentFragment &content)
{
    Element *table = nullptr;
    for (Node *node = content.firstChild(); node; node = node->nextSibling()) {
        if (isBlankText(*node)) continue;
        if (table || !node->asElement() || !node->asElement()->is(names::table)) return nullptr;
        table = node->asElement();
    }
    return table;
}

int Pasting::columnsOf(Document &document, const QString &html)
{
    static const QRegularExpression part(QStringLiteral("<(table|tr|t[dh])[\\s>]"),
                                         QRegularExpression::CaseInsensitiveOption);
    if (!part.match(html).hasMatch()) return 0; // most of what is copied
    const Ref<DocumentFragment> content = read(document, html);
    const Element *table = onlyTable(*content);
    return table ? TableGrid(*table).columns() : 0;
}

Ref<DocumentFragment> Pasting::read(Document &document, const QString &given)
{
    QString html = withTable(fragmentOf(given));
    html.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    Ref<DocumentFragment> content = document.markup->parseFragment(document, *document.body(), html);
    for (Node *node = content->next(content.get()); node;) {
        if (isUnwanted(*node)) {
            Node *next = node->nextSkippingChildren(content.get());
            RawTree::remove(*node);
            node = next;
            continue;
        }
        if (Element *element = node->asElement()) clean(*element, document);
        node = node->next(content.get());
    }
    wrapItems(document, *content);
    dropOuterBlanks(*content);
    return content;
}

QString Pasting::textOf(const Snippet &snippet)
{
    if (!snippet.html.isEmpty()) return {};
    QString text = snippet.text;
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
}

QString Pasting::htmlOf(const QString &given)
{
    QString text = given;
    while (text.endsWith(u'\n')) text.chop(1);
    QString out;
    const QStringList lines = text.split(u'\n');
    const bool paragraphs = text.contains(QLatin1String("\n\n"));
    bool open = false;
    for (const QString &line : lines) {
        if (paragraphs && line.isEmpty()) {
            if (open) out += QLatin1String("</p>");
            open = false;
            continue;
        }
        if (paragraphs && !open)
            out += QLatin1String("<p>");
        else if (!out.isEmpty())
            out += QLatin1String("<br>");
        open = true;
        QString shown = line.toHtmlEscaped();
        shown.replace(u'\t', QLatin1String("    ")).replace(QLatin1String("  "), QLatin1String("&nbsp; "));
        if (shown.startsWith(u' ')) shown.replace(0, 1, QLatin1String("&nbsp;"));
        if (shown.endsWith(u' ')) shown.replace(shown.size() - 1, 1, QLatin1String("&nbsp;"));
        out += shown;
    }
    if (paragraphs && open) out += QLatin1String("</p>");
    return out;
}

void Pasting::unwrapLists(DocumentFragment &content)
{
    std::vector<Ref<Element>> lists;
    for (Node *node = content.firstChild(); node; node = node->nextSibling()) {
        if (isBlankText(*node)) continue;
        Element *list = node->asElement();
        if (!list || !ranges::isList(*list)) return;
        for (const Node *item = list->firstChild(); item; item = item->nextSibling())
            if (!isBlankText(*item) && !(item->asElement() && item->asElement()->is(names::li))) return;
        lists.emplace_back(list);
    }
    for (const Ref<Element> &list : lists) {
        while (Node *child = list->firstChild()) {
            const Ref<Node> moved(child);
            RawTree::remove(*child);
            if (moved->isElement()) RawTree::insert(content, *moved, list.get());
        }
        RawTree::remove(*list);
    }
}

void Pasting::flatten(DocumentFragment &content)
{
    std::vector<Ref<Element>> blocks;
    for (Node *node = content.next(&content); node; node = node->next(&content)) {
        Element *element = node->asElement();
        if (element && (html::isBlockElement(*element) || ranges::isTableStructure(*element)) &&
            !ranges::isObject(*element))
            blocks.emplace_back(element);
    }
    for (const Ref<Element> &block : blocks)
        for (Node *child = ranges::isTableStructure(*block) ? block->firstChild() : nullptr; child;) {
            Node *next = child->nextSibling();
            if (isBlankText(*child)) RawTree::remove(*child); // between cells
            child = next;
        }
    const auto shows = [](const Node *node) { return node && !isBlankText(*node) && !ranges::isBreak(*node); };
    Document &document = content.document();
    for (auto it = blocks.rbegin(); it != blocks.rend(); ++it) {
        Element &block = **it;
        ParentNode &parent = *block.parentNode();
        const bool isCell = ranges::isCell(block) && !block.is(names::caption);
        const auto part = [&](Node *before) {
            const Ref<Node> made = isCell ? Ref<Node>(document.createTextNode(QStringLiteral(" ")).get())
                                          : Ref<Node>(document.createElement(QStringLiteral("br")).get());
            RawTree::insert(parent, *made, before);
        };
        if (!isCell && block.hasChildNodes() && shows(block.nextSibling())) part(block.nextSibling());
        if (block.hasChildNodes() && shows(block.previousSibling())) part(&block);
        while (Node *child = block.firstChild()) {
            const Ref<Node> moved(child);
            RawTree::remove(*child);
            RawTree::insert(parent, *moved, &block);
        }
        RawTree::remove(block);
    }
}

} // namespace editing
