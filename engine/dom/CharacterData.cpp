// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/CharacterData.h"

#include "engine/dom/Assignment.h"
#include "engine/dom/LineEnds.h"
#include "engine/dom/RawTree.h"

namespace dom {

void CharacterData::replaceData(uint32_t offset, uint32_t count, const QString &given)
{
    const QString with = withLf(given);
    offset = std::min(offset, length());
    count = std::min(count, length() - offset);
    if (QStringView(mData).mid(offset, count) == with) return;
    if (isConnected() && document().door) {
        Assignment assignment(*this);
        document().door->replaceText(*this, offset, count, with);
        assignment.done();
    } else {
        RawTree::replaceText(*this, offset, count, with);
    }
}

} // namespace dom
