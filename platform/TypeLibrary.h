// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The library's description of itself: every published interface, member, event and enumeration with its id, as a text
/// that is made of the tables that late binding reads.
namespace platform::typelibrary {

/// All of it.
QString text();
/// One interface, event set or enumeration, in any case: a member a line with its id. A null string for an unknown name.
QString text(const QString &name);
/// Names of what there is, in order.
QStringList names();

/// Writes the whole text to a file. Raises `base::Error` if it can't be written.
void write(const QString &fileName);

} // namespace platform::typelibrary
