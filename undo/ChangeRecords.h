// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "undo/ChangeRecord.h"

#include <QSet>
#include <QString>
#include <deque>
#include <vector>

/// An ordered list of change records, oldest first, counted from 1. Appending, removing at either end, `Item`, `Count`
/// and `PublicCount` take constant time however many records there are.
class ChangeRecords
{
public:
    ChangeRecords() = default;
    ~ChangeRecords() { Clear(); }
    ChangeRecords(const ChangeRecords &) = delete;
    ChangeRecords &operator=(const ChangeRecords &) = delete;

    /// Appends, or inserts before or after the item at a position (0: not given; not both). A key must be new to the
    /// list, whatever its case, else error 457; an empty one isn't stored. A position that isn't there raises error 9.
    void Add(const base::Ref<ChangeRecord> &Record, const QString &Key = {}, int Before = 0, int After = 0);
    /// Raises error 9 for an index that isn't there, error 5 for a key that isn't.
    base::Ref<ChangeRecord> Item(int Index) const;
    base::Ref<ChangeRecord> Item(const QString &Key) const;
    void Remove(int Index);
    void Remove(const QString &Key);
    void Clear();
    int Count() const { return int(mEntries.size()); }
    /// The number of records that aren't private.
    int PublicCount() const { return mPublicCount; }
    /// The records as they are now; the list may change while they are walked.
    std::vector<base::Ref<ChangeRecord>> NewEnum() const;

private:
    friend class ChangeRecord;
    struct Entry
    {
        base::Ref<ChangeRecord> record;
        QString key;
    };
    int indexOf(const QString &key) const;
    void groupChanged(int from, int to) { mPublicCount += int(to != 0) - int(from != 0); }

    std::deque<Entry> mEntries;
    QSet<QString> mKeys; // folded; most lists have none
    int mPublicCount = 0;
    support::InstanceCounter mCounter{support::Component::ChangeRecords};
};
