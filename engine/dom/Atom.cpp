// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Atom.h"

#include <QHash>
#include <deque>

namespace dom {

namespace {

struct Table {
    QHash<QStringView, const QString *> index;
    std::deque<QString> texts; // never moves its elements
};

Table &table()
{
    static Table *const table = new Table; // outlives every static atom
    return *table;
}

} // namespace

Atom::Atom(QStringView text)
{
    if (text.isEmpty()) return;
    Table &t = table();
    if (const QString *known = t.index.value(text)) {
        mEntry = known;
        return;
    }
    const QString &stored = t.texts.emplace_back(text.toString());
    t.index.insert(QStringView(stored), &stored);
    mEntry = &stored;
}

Atom::Atom(const char *ascii) : Atom(QString::fromLatin1(ascii)) {}

const QString &Atom::text() const
{
    static const QString empty;
    return mEntry ? *mEntry : empty;
}

Atom Atom::lower(QStringView text)
{
    for (const QChar c : text)
        if (c.isUpper()) return Atom(text.toString().toLower());
    return Atom(text);
}

} // namespace dom
