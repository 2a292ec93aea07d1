// SPDX-License-Identifier: GPL-3.0-or-later
#include "undo/ChangeRecords.h"

#include "base/Error.h"

using base::Error;
namespace errors = base::errors;

void ChangeRecord::setChangeGroupID(int ChangeGroupID)
{
    for (ChangeRecords *list : mLists)
        list->groupChanged(mChangeGroupID, ChangeGroupID);
    mChangeGroupID = ChangeGroupID;
}

void ChangeRecords::Add(const base::Ref<ChangeRecord> &Record, const QString &Key, int Before, int After)
{
    if (!Record) throw Error(errors::objectNotSet, QStringLiteral("There is no record to add."));
    if (Before && After) throw Error(errors::invalidCall, QStringLiteral("A record goes before or after another."));
    const int position = Before ? Before : After;
    if (position < 0 || position > Count())
        throw Error(errors::subscriptOutOfRange, QStringLiteral("There is no record %1.").arg(position));
    if (!Key.isEmpty()) {
        const QString folded = Key.toCaseFolded();
        if (mKeys.contains(folded))
            throw Error(errors::duplicateKey, QStringLiteral("The key \"%1\" is taken.").arg(Key));
        mKeys.insert(folded);
    }
    const auto at = !position ? mEntries.end() : mEntries.begin() + (Before ? Before - 1 : After);
    mEntries.insert(at, {Record, Key});
    Record->mLists.append(this);
    groupChanged(0, Record->ChangeGroupID());
}

base::Ref<ChangeRecord> ChangeRecords::Item(int Index) const
{
    if (Index < 1 || Index > Count())
        throw Error(errors::subscriptOutOfRange, QStringLiteral("There is no record %1.").arg(Index));
    return mEntries[size_t(Index) - 1].record;
}

base::Ref<ChangeRecord> ChangeRecords::Item(const QString &Key) const
{
    return Item(indexOf(Key));
}

void ChangeRecords::Remove(int Index)
{
    const base::Ref<ChangeRecord> record = Item(Index);
    const auto at = mEntries.begin() + (Index - 1);
    if (!at->key.isEmpty()) mKeys.remove(at->key.toCaseFolded());
    mEntries.erase(at);
    record->mLists.removeOne(this);
    groupChanged(record->ChangeGroupID(), 0);
}

void ChangeRecords::Remove(const QString &Key)
{
    Remove(indexOf(Key));
}

void ChangeRecords::Clear()
{
    for (const Entry &entry : mEntries)
        entry.record->mLists.removeOne(this);
    mEntries.clear();
    mKeys.clear();
    mPublicCount = 0;
}

std::vector<base::Ref<ChangeRecord>> ChangeRecords::NewEnum() const
{
    std::vector<base::Ref<ChangeRecord>> records;
    records.reserve(mEntries.size());
    for (const Entry &entry : mEntries)
        records.push_back(entry.record);
    return records;
}

int ChangeRecords::indexOf(const QString &key) const
{
    if (!key.isEmpty() && mKeys.contains(key.toCaseFolded()))
        for (size_t i = 0; i < mEntries.size(); ++i)
            if (mEntries[i].key.compare(key, Qt::CaseInsensitive) == 0) return int(i) + 1;
    throw Error(errors::invalidCall, QStringLiteral("There is no record with the key \"%1\".").arg(key));
}
