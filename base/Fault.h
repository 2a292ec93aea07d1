// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Faults on demand: a test or the script mode arms one for a named operation, whose next call then fails on entry.
/// That is how it is proved that the callers of an operation survive its failure. With nothing armed, a check is one
/// load and one branch.
namespace base::faults {

namespace detail {
inline int armedCount = 0;
void raiseIfArmed(const char *module, const char *procedure, int line, const char *file);
} // namespace detail

/// Makes the next call of `procedure` in `module` fail with `number` and `description`. Names are matched whatever
/// their case. Armed twice, it fails twice.
void arm(const QString &module, const QString &procedure, long number, const QString &description);
/// Takes away what is armed and hasn't struck.
void disarmAll();
int armedCount();

/// To be called on entry by an operation that can be made to fail. Raises the armed error, once, as of the given line.
inline void check(const char *module, const char *procedure, int line = __builtin_LINE(),
                  const char *file = __builtin_FILE())
{
    if (detail::armedCount != 0) [[unlikely]]
        detail::raiseIfArmed(module, procedure, line, file);
}

} // namespace base::faults
