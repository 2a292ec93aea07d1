// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scripting/HostFile.h"

#include <QStringList>

namespace scripting {

/// To be called before there is an application: what it has to say as it starts is kept from standard error.
void beforeApplication();

/// `--script FILE [--keep-going] [--settings FOLDER] [--files FOLDER]`; "-" is the standard input. Gives the exit status:
/// 0, 1 when a command failed, 2 for a call that can't be understood. `makeFile` gives the host's way with the files of a
/// control.
int runScript(const QStringList &arguments, MakeHostFile makeFile);

} // namespace scripting
