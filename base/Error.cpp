// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"

namespace base {

Error::Error(long number, QString description, int line, const char *file)
    : mNumber(number), mLine(line), mFile(file), mDescription(std::move(description)), mWhat(mDescription.toUtf8())
{
}

} // namespace base
