// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Check.h"

#include "control/Vellum5Parts.h"
#include "engine/changes/ChangeTracker.h"
#include "engine/dom/CharacterData.h"
#include "engine/html/Parser.h"
#include "engine/html/Serializer.h"
#include "engine/surface/View.h"
#include "scripting/Interpreter.h"
#include "scripting/Objects.h"

namespace scripting {

using namespace dom;

namespace {

/// Ids of a loaded document count in document order, so that a copy made of the loaded text has the same ones.
QString dumpWithIds(const Document &document)
{
    QString out;
    for (const Node *node = document.next(); node; node = node->next()) {
        out += QStringLiteral("%1 #%2 %3 ").arg(node->depth()).arg(node->id()).arg(node->nodeType());
        if (const Element *element = node->asElement()) {
            out += element->name().text() + (element->isHeldOpen() ? QStringLiteral("!") : QString());
            for (const Attribute &attribute : element->attributeList())
                out += u' ' + attribute.name.text() + u'=' + attribute.value;
        } else {
            out += node->nodeValue();
        }
        out += u'\n';
    }
    return out;
}

QString difference(const QString &a, const QString &b)
{
    const QStringList left = a.split(u'\n'), right = b.split(u'\n');
    for (qsizetype i = 0; i < std::max(left.size(), right.size()); ++i)
        if (left.value(i) != right.value(i))
            return QStringLiteral("line %1: \"%2\" against \"%3\"").arg(i + 1).arg(left.value(i), right.value(i));
    return {};
}

QString checkTree(Document &document)
{
    uint32_t elements = 0;
    for (Node *node = document.next(); node; node = node->next()) {
        if (!node->isConnected() || &node->document() != &document) return QStringLiteral("a node isn't connected");
        if (document.nodeById(node->id()) != node) return QStringLiteral("node %1 isn't found by its id").arg(node->id());
        if (node->parentNode() && node->parentNode()->childAt(node->index()) != node)
            return QStringLiteral("node %1 isn't at its index").arg(node->id());
        if (node->nextSibling() && node->nextSibling()->previousSibling() != node)
            return QStringLiteral("node %1 isn't before what follows it").arg(node->id());
        if (Element *element = node->asElement()) {
            if (element->sourceIndex() != int(elements)) return QStringLiteral("the count of elements is wrong");
            const Element *named = element->idAttribute().isEmpty() ? element : document.getElementById(element->idAttribute());
            if (!named || named->idAttribute() != element->idAttribute())
                return QStringLiteral("the element %1 isn't found by its name").arg(element->idAttribute());
            ++elements;
        }
    }
    if (document.elementCount() != elements) return QStringLiteral("the count of all elements is wrong");
    return {};
}

/// The tree with what no text can carry evened out: held-open blocks show their space, adjacent texts are one, empty ones
/// none.
QString shape(const Document &document)
{
    QString out;
    QString text;
    uint32_t textDepth = 0;
    const auto endText = [&] {
        if (!text.isEmpty()) out += QStringLiteral("%1 text %2\n").arg(textDepth).arg(text);
        text.clear();
    };
    const Node *textParent = nullptr;
    for (const Node *node = document.next(); node; node = node->next()) {
        if (node->isText()) {
            if (textParent != node->parentNode() || (node->previousSibling() && !node->previousSibling()->isText())) endText();
            textParent = node->parentNode();
            textDepth = node->depth();
            text += node->nodeValue();
            continue;
        }
        endText();
        textParent = nullptr;
        out += QStringLiteral("%1 %2 ").arg(node->depth()).arg(node->nodeType());
        if (const Element *element = node->asElement()) {
            out += element->name().text();
            for (const Attribute &attribute : element->attributeList())
                out += u' ' + attribute.name.text() + u'=' + attribute.value;
            if (element->isHeldOpen() && !element->hasChildNodes())
                out += QStringLiteral("\n%1 text %2").arg(element->depth() + 1).arg(QChar(0xA0));
        } else {
            out += node->nodeValue();
        }
        out += u'\n';
    }
    endText();
    return out;
}

bool isOneOf(const Element &element, std::initializer_list<const char *> names)
{
    return std::any_of(names.begin(), names.end(), [&](const char *name) { return element.is(name); });
}

bool isBlock(const Element &element)
{
    return isOneOf(element, {"p", "div", "h1", "h2", "h3", "h4", "h5", "h6", "ul", "ol", "dl", "pre", "table", "form",
                             "blockquote", "hr", "center", "address", "fieldset"});
}

/// Whether the tree holds what no HTML text can say: the parser would close the outer one first, or move the content out.
bool holdsWhatHtmlCannotCarry(const Document &document)
{
    for (const Node *node = document.next(&document); node; node = node->next(&document)) {
        if (node->isText()) {
            const Element *parent = node->parentElement();
            const bool inTable = parent && isOneOf(*parent, {"table", "tbody", "thead", "tfoot", "tr"});
            if (inTable && !node->nodeValue().trimmed().isEmpty()) return true;
            continue;
        }
        const Element *element = node->asElement();
        if (!element) continue;
        const bool alone = isOneOf(*element, {"a", "form", "button", "nobr"});
        const bool block = isBlock(*element);
        if (!alone && !block) continue;
        for (const Element *above = element->parentElement(); above; above = above->parentElement()) {
            if (alone && above->name() == element->name()) return true;
            if (block && above->is("p")) return true;
            if (isOneOf(*above, {"td", "th", "button", "object"}) && !element->is("form")) break;
        }
    }
    return false;
}

QString checkReplay(Interpreter &in, Document &document)
{
    const auto copy = html::parseDocument(in.host().loadedText());
    changes::ChangeTracker tracker(*copy);
    for (const QByteArray &record : in.host().records()) tracker.play(record, true);
    const QString wrong = difference(dumpWithIds(*copy), dumpWithIds(document));
    return wrong.isEmpty() ? QString() : QStringLiteral("the log replays to another tree: ") + wrong;
}

} // namespace

QString checkDocument(Interpreter &in)
{
    Document *document = in.control().DOM();
    if (!document) return QStringLiteral("no document is loaded");
    QString wrong = checkTree(*document);
    if (wrong.isEmpty()) wrong = in.host().surface().view().checkPositions();
    if (wrong.isEmpty()) wrong = in.host().surface().view().checkLayout();
    if (wrong.isEmpty()) {
        const auto again = html::parseDocument(document->documentElement()->outerHTML());
        const QString apart = difference(shape(*again), shape(*document));
        if (!apart.isEmpty() && !holdsWhatHtmlCannotCarry(*document)) wrong = QStringLiteral("the text parses back to another tree: ") + apart;
    }
    if (wrong.isEmpty()) wrong = checkReplay(in, *document);
    return wrong;
}

} // namespace scripting
