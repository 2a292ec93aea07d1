// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChangeLog.h"
#include "platform/Contract.h"

#include <functional>
#include <vector>

namespace platform {

/// The surface's present document, with the engine's log behind it. It may outlive the document: the log is then empty
/// and playback does nothing.
std::shared_ptr<IChangeDocument> changeDocument(HTMLEditor &surface);

/// Puts something in front of every document that a manager is bound to from now on (a log that can be fed by hand); an
/// empty function takes it away. It is told of whose surface the document is.
using ChangeDocumentWrapper =
    std::function<std::shared_ptr<IChangeDocument>(std::shared_ptr<IChangeDocument>, HTMLEditor &surface)>;
void setChangeDocumentWrapper(ChangeDocumentWrapper wrapper);
/// Is told of each batch of records that was read from a log: whose document it is of (null once that has gone), and
/// their kinds, in order.
using BatchObserver = std::function<void(const HTMLEditor *surface, const std::vector<int> &kinds)>;
void setBatchObserver(BatchObserver observer);

} // namespace platform
