// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/FailureTrap.h"

/// What a report of a failure in the toolbox shows of its variables; the third argument of its traps.
namespace modMain {

void dumpModuleVariables(support::VariableDump &dump);
inline constexpr support::ModuleDump module = &dumpModuleVariables;

} // namespace modMain
