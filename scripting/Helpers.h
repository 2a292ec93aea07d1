// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dispatch.h"

namespace scripting {

class Interpreter;

/// Calls one of the control's internal functions by its name, in any case. Fails for an unknown one.
platform::CallResult callHelper(Interpreter &in, const QString &name, const platform::Arguments &arguments);

} // namespace scripting
