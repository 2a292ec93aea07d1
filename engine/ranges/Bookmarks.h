// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/RangeKeeper.h"

#include <QString>
#include <deque>

namespace ranges {

/// The places of one loaded document that somebody has a name for. Edits carry them along. Old ones are forgotten when
/// there are many; they are then found by what their name says, as long as their nodes are there.
class Bookmarks
{
public:
    explicit Bookmarks(RangeKeeper &keeper);
    /// The same places have the same name while they are remembered as the last.
    QString nameOf(const Span &span);
    /// An empty span for a name that isn't one of this document's.
    Span find(const QString &name) const;

private:
    struct Entry
    {
        QString name;
        LiveRange range;
    };
    RangeKeeper &mKeeper;
    QString mPrefix; ///< tells loads apart, of other runs too
    std::deque<Entry> mEntries;
    quint64 mForgotten = 0;
};

} // namespace ranges
