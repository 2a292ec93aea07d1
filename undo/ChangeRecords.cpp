// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "undo/ChangeRecord.h"

void ChangeRecord::setChangeGroupID(int ID)
{
    if (mList) mList->mPublicCount += (ID != 0) - (mChangeGroupID != 0);
    mChangeGroupID = ID;
}

ChangeRecords::~ChangeRecords()
{
    for (const Entry &entry : mItems) entry->mList = nullptr;
}

void ChangeRecords::check(int Index) const
{
    if (Index < 1 || Index > Count())
        throw base::Error(base::errors::subscriptOutOfRange, QStringLiteral("There is no change record %1.").arg(Index));
}

void ChangeRecords::Add(const Entry &Record, const QString &Key, int Before, int After)
{
    if (!Key.isEmpty() && mKeys.contains(Key))
        throw base::Error(base::errors::duplicateKey, QStringLiteral("There is a change record of that key already."));
    if (Before > 0) {
        check(Before);
        mItems.insert(mItems.begin() + (Before - 1), Record);
    } else if (After > 0) {
        check(After);
        mItems.insert(mItems.begin() + After, Record);
    } else {
        mItems.push_back(Record);
    }
    if (!Key.isEmpty()) mKeys.insert(Key, Record);
    Record->mList = this;
    mPublicCount += Record->mChangeGroupID != 0;
}

const ChangeRecords::Entry &ChangeRecords::Item(int Index) const
{
    check(Index);
    return mItems[size_t(Index - 1)];
}

const ChangeRecords::Entry &ChangeRecords::Item(const QString &Key) const
{
    const auto found = mKeys.constFind(Key);
    if (found == mKeys.constEnd())
        throw base::Error(base::errors::invalidCall, QStringLiteral("There is no change record of that key."));
    return *found;
}

void ChangeRecords::Remove(int Index)
{
    check(Index);
    const Entry gone = mItems[size_t(Index - 1)];
    if (!mKeys.isEmpty()) mKeys.removeIf([&gone](auto it) { return it.value() == gone; });
    mItems.erase(mItems.begin() + (Index - 1));
    gone->mList = nullptr;
    mPublicCount -= gone->mChangeGroupID != 0;
}
