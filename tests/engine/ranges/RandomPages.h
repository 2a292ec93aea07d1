// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/editing/Editor.h"
#include "engine/editing/RangeEdits.h"
#include "engine/html/Parser.h"
#include "engine/ranges/Marks.h"
#include "engine/ranges/TextRange.h"

#include <QRandomGenerator>
#include <QtDebug>

/// Pages and edits by chance, for the properties that all ranges have.
namespace random_pages {

using namespace ranges;
using base::Ref;
using dom::Element;
using dom::Node;
using dom::Text;

/// A document that can be edited, with its selection and the records of its edits.
struct Page {
    Ref<dom::Document> document;
    changes::ChangeTracker tracker;
    RangeKeeper keeper;
    SelectionObject selection;
    editing::Editor editor;
    QList<QByteArray> records;
    explicit Page(const Marks &marks)
        : document(html::parseDocument(marks.page())), tracker(*document), keeper(*document), selection(keeper),
          editor(tracker, selection)
    {
        tracker.setSelectionKeeper(&selection);
        document->setEditMode(dom::EditMode::Edit);
        marks.apply(selection);
        tracker.selectionSettled();
        tracker.onRecord = [this](const QByteArray &record) { records.append(record); };
    }
    explicit Page(const char *marked) : Page(Marks(QString::fromUtf8(marked))) {}
    Ref<TextRange> range() { return Ref<TextRange>(new TextRange(selection, selection.span())); }
    Ref<TextRange> over(const char *id) { return TextRange::over(selection, *document->getElementById(id)); }
    Ref<TextRange> all() { return TextRange::over(selection, *document->body()); }
    QString body() { return document->body()->innerHTML().remove('\r'); }
    QString marked() { return Marks::print(selection).remove('\r'); }
    void paste(const QString &html) { paste(range(), html); }
    void paste(const Ref<TextRange> &range, const QString &html) { editing::RangeEdits(editor, *range).paste(*range, html); }
    void write(const QString &text) { write(range(), text); }
    void write(const Ref<TextRange> &range, const QString &text) { editing::RangeEdits(editor, *range).write(*range, text); }
};

/// Blocks, lists, tables, inline elements, breaks, images and white space, by chance.
inline QString randomHtml(QRandomGenerator &random, int depth = 0)
{
    QString out;
    const int parts = random.bounded(1, 5);
    for (int i = 0; i < parts; ++i) {
        switch (random.bounded(depth > 3 ? 6 : 13)) {
        case 0: out += QStringLiteral("ab c"); break;
        case 1: out += QStringLiteral(" \n "); break;
        case 2: out += QStringLiteral("d  e "); break;
        case 3: out += QStringLiteral("<br>"); break;
        case 4: out += QStringLiteral("<img src=x>"); break;
        case 5: out += QStringLiteral("x&#128512;y"); break;
        case 6: out += QStringLiteral("<b>f <i>g</i></b> "); break;
        case 7: out += QStringLiteral("<div>") + randomHtml(random, depth + 1) + QStringLiteral("</div>"); break;
        case 8: out += QStringLiteral("<p>h i</p>\n"); break;
        case 9: out += QStringLiteral("<ul><li>") + randomHtml(random, depth + 1) + QStringLiteral("</li><li>j</li></ul>"); break;
        case 10:
            out += QStringLiteral("<table><tr><td>") + randomHtml(random, depth + 1) +
                   QStringLiteral("</td><td></td></tr></table>");
            break;
        case 11: out += QStringLiteral("<pre>k\n  l</pre>"); break;
        case 12: out += QStringLiteral("<p></p><!--m--><hr><p></p>"); break;
        }
    }
    return out;
}

inline std::vector<Position> placesOf(Page &page)
{
    std::vector<Position> all;
    Element *body = page.document->body();
    for (Node *node = body; node; node = node->next(body))
        for (uint32_t i = 0; i <= Position::lengthOf(*node); ++i)
            if (Position(node, i).clipped() == Position(node, i)) all.emplace_back(node, i);
    return all;
}

/// A fresh one, printed, and fixed ones.
inline std::vector<quint32> seeds()
{
    const quint32 fresh = QRandomGenerator::global()->generate();
    qInfo("fresh seed %u", fresh);
    std::vector<quint32> all{fresh};
    for (quint32 i = 1; i <= 30; ++i)
        all.push_back(i);
    return all;
}

/// One primitive.
inline void randomEdit(Page &page, QRandomGenerator &random)
{
    std::vector<Node *> nodes;
    Element *body = page.document->body();
    for (Node *node = body->firstChild(); node; node = node->next(body))
        nodes.push_back(node);
    if (nodes.empty()) {
        body->setInnerHTML(QStringLiteral("<p>again</p>"));
        return;
    }
    Node *node = nodes[random.bounded(int(nodes.size()))];
    switch (random.bounded(5)) {
    case 0:
        if (node->isText()) {
            auto &text = static_cast<Text &>(*node);
            const uint32_t at = random.bounded(text.length() + 1);
            page.tracker.replaceText(text, at, random.bounded(text.length() - at + 1),
                                     random.bounded(2) ? QStringLiteral("n o ") : QString());
        }
        break;
    case 1: page.tracker.remove(*node); break;
    case 2: {
        const Ref<Element> made = page.document->createElement(random.bounded(2) ? QStringLiteral("p") : QStringLiteral("b"));
        made->appendChild(*page.document->createTextNode(QStringLiteral(" q ")));
        page.tracker.insert(*node->parentNode(), *made, node);
        break;
    }
    case 3: {
        Node *target = nodes[random.bounded(int(nodes.size()))];
        if (target->isElement() && !node->contains(*target) && !target->asElement()->isVoid())
            page.tracker.move(*target->asElement(), *node, nullptr);
        break;
    }
    case 4:
        if (Element *element = node->asElement(); element && element->is(dom::Atom("p")))
            page.tracker.setHeldOpen(*element, !element->isHeldOpen());
        break;
    }
}

} // namespace random_pages
