// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QString>

/// The library's description of itself: every published interface, member, event and enumeration with its id, as a text
/// that is made of the tables that late binding reads.
namespace platform::typelibrary {

/// All of it.
VELLUMKIT_EXPORT QString text();
/// One interface, event set or enumeration, in any case: a member a line: its id, its name with its arguments, what it is. A null string for an unknown name.
VELLUMKIT_EXPORT QString text(const QString &name);
/// Names of what there is, in order.
VELLUMKIT_EXPORT QStringList names();

/// Writes the whole text to a file. Raises `base::Error` if it can't be written.
VELLUMKIT_EXPORT void write(const QString &fileName);

} // namespace platform::typelibrary
