// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChangeLog.h"
#include "platform/Contract.h"

namespace platform {

/// The surface's present document, with the engine's log behind it. It may outlive the document: the log is then empty
/// and playback does nothing.
std::shared_ptr<ChangeDocument> changeDocument(HTMLEditor &surface);

} // namespace platform
