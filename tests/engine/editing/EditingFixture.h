// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/EditScope.h"
#include "engine/editing/Editor.h"
#include "engine/html/Parser.h"
#include "engine/ranges/Marks.h"

#include <memory>

/// A document with a selection that can be edited, and its log.
struct Editing : changes::Sink {
    base::Ref<dom::Document> document;
    changes::ChangeTracker tracker;
    ranges::RangeKeeper keeper;
    ranges::SelectionObject selection;
    editing::Editor editor;
    base::Ref<changes::ChangeLog> log;
    std::vector<QByteArray> records;

    explicit Editing(const QString &page)
        : document(html::parseDocument(page)), tracker(*document), keeper(*document), selection(keeper),
          editor(tracker, selection), log(tracker.createLog(this))
    {
        document->setEditMode(dom::EditMode::Edit);
        tracker.setSelectionKeeper(&selection);
        tracker.selectionSettled();
    }
    explicit Editing(const ranges::Marks &marks) : Editing(marks.page())
    {
        placed = marks.apply(selection);
        tracker.selectionSettled();
    }
    ~Editing() override { tracker.dropLog(*log); }
    void notify() override { read(); }
    void read()
    {
        for (; !log->isEmpty(); log->pop()) records.push_back(log->front());
    }
    QByteArray kinds()
    {
        read();
        QByteArray kinds;
        for (const QByteArray &record : records) kinds += QByteArray::number(int(record[0])) + ' ';
        return kinds.trimmed();
    }
    QString marked() const { return ranges::Marks::print(selection); }

    /// Everything that the tree is: nodes, order, attributes in order, marks and ids.
    QString dump() const
    {
        QString out;
        for (const dom::Node *node = document->next(); node; node = node->next()) {
            out += QString("%1 #%2 %3 %4").arg(node->depth()).arg(node->id()).arg(node->nodeType()).arg(node->nodeValue());
            if (const dom::Element *element = node->asElement()) {
                out += element->name().text() + (element->isHeldOpen() ? "!" : "");
                for (const dom::Attribute &attribute : element->attributeList())
                    out += ' ' + attribute.name.text() + '=' + attribute.value;
            }
            out += '\n';
        }
        return out;
    }

    /// The tree's shape and text, texts that meet as one, a held-open block with its no-break space.
    static QString shape(const dom::Document &document)
    {
        QString out;
        bool inText = false;
        const dom::Node *body = document.body();
        for (const dom::Node *node = body; node; node = node->next(body)) {
            if (node->isText()) {
                if (node->nodeValue().isEmpty()) continue;
                if (!inText) out += QString("\n%1 ").arg(node->depth());
                out += node->nodeValue();
                inText = true;
                continue;
            }
            inText = false;
            out += QString("\n%1 %2").arg(node->depth()).arg(node->nodeName());
            if (const dom::Element *element = node->asElement()) {
                for (const dom::Attribute &attribute : element->attributeList())
                    out += ' ' + attribute.name.text() + '=' + attribute.value;
                if (element->isHeldOpen() && !element->hasChildNodes()) {
                    out += QString("\n%1 ").arg(node->depth() + 1) + QChar(0xA0);
                    inText = true;
                }
            } else {
                out += node->nodeValue();
            }
        }
        return out;
    }

    /// "" if all that always holds does; else what doesn't. `page` is what was loaded.
    QString broken(const QString &page, const QString &first)
    {
        read();
        for (const ranges::Position &p : {selection.anchor(), selection.focus()}) {
            if (!p) continue;
            if (!p.node->isConnected()) return "a position has left the tree";
            if (!(p.clipped() == p)) return "a position is beyond its node";
        }
        const auto again = html::parseDocument(document->documentElement()->outerHTML().remove('\r'));
        if (shape(*again) != shape(*document)) return "reads back as " + shape(*again) + "\nis " + shape(*document);
        for (const dom::Node *node = document->body(); node; node = node->next(document->body()))
            if (const dom::Element *e = node->asElement(); e && e->isHeldOpen() && e->hasChildNodes())
                return "held open with content: " + e->outerHTML();

        const QString last = dump();
        const std::vector<QByteArray> all = records;
        for (size_t i = all.size(); i-- > 0;) tracker.play(all[i], false);
        if (dump() != first) return "undo gives\n" + dump() + "instead of\n" + first;
        for (const QByteArray &record : all) tracker.play(record, true);
        if (dump() != last) return "redo gives\n" + dump() + "instead of\n" + last;
        changes::Record record;
        if (!all.empty() && changes::Record::read(all.back(), record) && record.hasSelection &&
            !(selection.savedSelection() == record.after))
            return "redo selects " + marked();
        Editing fresh(page);
        for (const QByteArray &record : all) fresh.tracker.play(record, true);
        if (fresh.dump() != last) return "replay gives\n" + fresh.dump() + "instead of\n" + last;
        read();
        records = all;
        return {};
    }
    bool placed = true;
};
