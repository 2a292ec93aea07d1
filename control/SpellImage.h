// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Where the picture of the wavy underline lies, as what follows "res://": a resource of the library's own file. In a
/// development host's process, whose file the library's code seems to come from, it is that of the library beside the
/// application.
QString spellImagePath(const QString &libraryFile, const QString &applicationFolder);
