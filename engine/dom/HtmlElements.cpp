// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/HtmlElements.h"

#include "base/Error.h"
#include "engine/dom/Assignment.h"
#include "engine/dom/Names.h"
#include "engine/dom/RawTree.h"

namespace dom::table {

namespace {

bool isSection(const Element &e)
{
    return e.is(names::thead) || e.is(names::tbody) || e.is(names::tfoot);
}

void append(std::vector<Element *> &to, const std::vector<Element *> &more)
{
    to.insert(to.end(), more.begin(), more.end());
}

[[noreturn]] void outOfRange()
{
    throw base::Error(base::errors::invalidValue, QStringLiteral("There is no such row or cell."));
}

} // namespace

std::vector<Element *> sectionRows(const Element &section)
{
    std::vector<Element *> rows;
    for (Element *child = section.firstElementChild(); child; child = child->nextElementSibling())
        if (child->is(names::tr)) rows.push_back(child);
    return rows;
}

std::vector<Element *> rows(const Element &table)
{
    std::vector<Element *> head, body, foot;
    for (Element *child = table.firstElementChild(); child; child = child->nextElementSibling()) {
        if (child->is(names::tr)) body.push_back(child);
        if (child->is(names::thead)) append(head, sectionRows(*child));
        if (child->is(names::tbody)) append(body, sectionRows(*child));
        if (child->is(names::tfoot)) append(foot, sectionRows(*child));
    }
    append(head, body);
    append(head, foot);
    return head;
}

std::vector<Element *> cells(const Element &row)
{
    std::vector<Element *> cells;
    for (Element *child = row.firstElementChild(); child; child = child->nextElementSibling())
        if (child->is(names::td) || child->is(names::th)) cells.push_back(child);
    return cells;
}

Element *tHead(const Element &table)
{
    for (Element *child = table.firstElementChild(); child; child = child->nextElementSibling())
        if (child->is(names::thead)) return child;
    return nullptr;
}

Ref<Element> createTHead(Element &table)
{
    if (Element *head = tHead(table)) return head;
    Ref<Element> head = table.document().createElement(QStringLiteral("thead"));
    Node *before = nullptr;
    for (Element *child = table.firstElementChild(); child && !before; child = child->nextElementSibling())
        if (isSection(*child) || child->is(names::tr)) before = child;
    table.insertBefore(*head, before);
    return head;
}

Ref<Element> insertRow(Element &owner, int index)
{
    Document &document = owner.document();
    const std::vector<Element *> all = isSection(owner) ? sectionRows(owner) : rows(owner);
    if (index < -1 || index > int(all.size())) outOfRange();
    Assignment assignment(owner);
    Ref<Element> row = document.createElement(QStringLiteral("tr"));
    if (index >= 0 && index < int(all.size())) {
        all[size_t(index)]->parentNode()->insertBefore(*row, all[size_t(index)]);
    } else if (!all.empty()) {
        all.back()->parentNode()->insertBefore(*row, all.back()->nextSibling());
    } else if (isSection(owner)) {
        owner.appendChild(*row);
    } else {
        Element *body = nullptr;
        for (Element *child = owner.firstElementChild(); child; child = child->nextElementSibling())
            if (child->is(names::tbody)) body = child;
        Ref<Element> section(body);
        if (!section) {
            section = document.createElement(QStringLiteral("tbody"));
            owner.appendChild(*section);
        }
        section->appendChild(*row);
    }
    assignment.done();
    return row;
}

void deleteRow(Element &owner, int index)
{
    const std::vector<Element *> all = isSection(owner) ? sectionRows(owner) : rows(owner);
    if (index == -1) index = int(all.size()) - 1;
    if (index < 0 || index >= int(all.size())) outOfRange();
    all[size_t(index)]->removeNode();
}

Ref<Element> insertCell(Element &row, int index)
{
    const std::vector<Element *> all = cells(row);
    if (index < -1 || index > int(all.size())) outOfRange();
    Ref<Element> cell = row.document().createElement(QStringLiteral("td"));
    RawTree::setHeldOpen(*cell, true);
    row.insertBefore(*cell, index >= 0 && index < int(all.size()) ? all[size_t(index)] : nullptr);
    return cell;
}

void deleteCell(Element &row, int index)
{
    const std::vector<Element *> all = cells(row);
    if (index == -1) index = int(all.size()) - 1;
    if (index < 0 || index >= int(all.size())) outOfRange();
    all[size_t(index)]->removeNode();
}

Element *tableOf(const Element &part)
{
    Element *at = part.parentElement();
    while (at && !at->is(names::table)) at = at->parentElement();
    return at;
}

static int placeOf(const std::vector<Element *> &list, const Element &element)
{
    const auto found = std::find(list.begin(), list.end(), &element);
    return found == list.end() ? -1 : int(found - list.begin());
}

int rowIndex(const Element &row)
{
    const Element *table = tableOf(row);
    return table ? placeOf(rows(*table), row) : -1;
}

int cellIndex(const Element &cell)
{
    const Element *row = cell.parentElement();
    return row ? placeOf(cells(*row), cell) : -1;
}

int span(const Element &cell, Atom name)
{
    const QString *value = cell.attribute(name);
    const int number = value ? value->trimmed().toInt() : 1;
    return number < 1 ? 1 : number;
}

} // namespace dom::table
