// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Bookmarks.h"

#include <QRandomGenerator>
#include <QStringList>

namespace ranges {

using namespace dom;

namespace {
constexpr size_t mostEntries = 4096;
}

Bookmarks::Bookmarks(RangeKeeper &keeper)
    : mKeeper(keeper), mPrefix(QString::number(QRandomGenerator::global()->generate64(), 36))
{
}

QString Bookmarks::nameOf(const Span &span)
{
    if (!mEntries.empty()) {
        const Entry &last = mEntries.back();
        const Span there = last.range.span();
        if (there.start == span.start && there.end == span.end) return last.name;
    }
    const QString name = QStringLiteral("%1.%2.%3.%4.%5.%6")
                             .arg(mPrefix)
                             .arg(mForgotten + mEntries.size())
                             .arg(span.start.node->id())
                             .arg(span.start.offset)
                             .arg(span.end.node->id())
                             .arg(span.end.offset);
    mEntries.push_back({name, LiveRange(mKeeper, span)});
    if (mEntries.size() > mostEntries) {
        mEntries.pop_front();
        ++mForgotten;
    }
    return name;
}

Span Bookmarks::find(const QString &name) const
{
    const QStringList parts = name.split(u'.');
    if (parts.size() != 6 || parts[0] != mPrefix) return {};
    const quint64 number = parts[1].toULongLong();
    if (number >= mForgotten && number - mForgotten < mEntries.size()) {
        const Entry &entry = mEntries[size_t(number - mForgotten)];
        return entry.name == name ? entry.range.span() : Span();
    }
    if (number >= mForgotten) return {};
    Node *start = mKeeper.document().nodeById(parts[2].toUInt());
    Node *end = mKeeper.document().nodeById(parts[4].toUInt());
    if (!start || !end || !start->isConnected() || !end->isConnected()) return {};
    const Span span{Position(start, parts[3].toUInt()).clipped(), Position(end, parts[5].toUInt()).clipped()};
    return Position::compare(span.start, span.end) <= 0 ? span : Span{span.end, span.start};
}

} // namespace ranges
