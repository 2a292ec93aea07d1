// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

namespace support {

/// The source line of a call, by its return address, if that line lies in the source file `file` (compared without its
/// folders). Read from the line table that the program or library carries as debug information (ELF, DWARF 5, not
/// compressed); nothing where there is none. Takes milliseconds, so it is for failures only. Raises nothing but for
/// want of memory.
std::optional<int> lineInFile(const void *returnAddress, const char *file);

} // namespace support
