// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Ref.h"
#include "support/InstanceCounts.h"

#include <QByteArray>
#include <QVarLengthArray>

class ChangeRecords;

/// One entry of the change log. Its bytes are the engine's; only the first one is ever looked at.
class ChangeRecord final : public base::RefCounted
{
public:
    /// The undo step that the record belongs to; 0 is private: it has no step of its own.
    int ChangeGroupID() const { return mChangeGroupID; }
    void setChangeGroupID(int ChangeGroupID);
    const QByteArray &ChangeData() const { return mChangeData; }
    void setChangeData(const QByteArray &ChangeData) { mChangeData = ChangeData; }
    /// The first byte: 0 and 3 are typing, 5 is a selection, all others count alike. 0 for a record without bytes.
    int Kind() const { return mChangeData.isEmpty() ? 0 : uchar(mChangeData[0]); }

private:
    friend class ChangeRecords;

    int mChangeGroupID = 0;
    QByteArray mChangeData;
    // A record is on one list, for the moment of a move on two. They count their public records by what it tells them.
    QVarLengthArray<ChangeRecords *, 2> mLists;
    support::InstanceCounter mCounter{support::Component::ChangeRecord};
};
