// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"

namespace base {

Error::Error(long number, QString description)
    : mNumber(number), mDescription(std::move(description)), mWhat(mDescription.toUtf8())
{
}

} // namespace base
