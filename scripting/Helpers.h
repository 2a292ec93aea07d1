// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dispatch.h"

namespace scripting {

class Interpreter;

struct HelperResult : platform::CallResult {
    /// The function has no result but a collection: `references` are its entries under their keys.
    bool fillsCollection = false;
};

/// Calls one of the control's internal functions by its name, in any case. Fails for an unknown one.
HelperResult callHelper(Interpreter &in, const QString &name, const platform::Arguments &arguments);

} // namespace scripting
