// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <deque>
#include <memory>

class ChangeRecords;

/// One entry of the engine's log. Only the first byte, its kind, is ever looked at.
class ChangeRecord
{
public:
    QByteArray ChangeData;
    int Kind() const { return ChangeData.isEmpty() ? -1 : int(uchar(ChangeData[0])); }
    /// The undo step that it belongs to; 0 is private.
    int ChangeGroupID() const { return mChangeGroupID; }
    void setChangeGroupID(int ID);

private:
    friend class ChangeRecords;
    int mChangeGroupID = 0;
    ChangeRecords *mList = nullptr; ///< the list it is in, which counts the public ones
};

/// An ordered list of records, indexed from 1, oldest first. Both ends are cheap. A record is in
/// one list at a time: who moves it takes it out first.
class ChangeRecords
{
public:
    using Entry = std::shared_ptr<ChangeRecord>;

    ChangeRecords() = default;
    ~ChangeRecords();
    ChangeRecords(const ChangeRecords &) = delete;
    ChangeRecords &operator=(const ChangeRecords &) = delete;

    /// Appends, or puts the record before or after a 1-based place (0 is none). An empty key isn't kept as one.
    void Add(const Entry &Record, const QString &Key = {}, int Before = 0, int After = 0);
    /// Fails with error 9 (subscript out of range) for a place that isn't there.
    const Entry &Item(int Index) const;
    const Entry &Item(const QString &Key) const;
    void Remove(int Index);
    int Count() const { return int(mItems.size()); }
    /// Records whose group isn't 0; kept, since it is asked at every keystroke.
    int PublicCount() const { return mPublicCount; }

    // NewEnum
    auto begin() const { return mItems.begin(); }
    auto end() const { return mItems.end(); }

private:
    friend class ChangeRecord;
    void check(int Index) const;

    int mPublicCount = 0;
    std::deque<Entry> mItems;
    QHash<QString, Entry> mKeys;
};
