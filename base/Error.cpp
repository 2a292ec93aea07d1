// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"

#include <unwind.h>

namespace base {

namespace {

constexpr std::size_t maximalPlaces = 64;

_Unwind_Reason_Code notePlace(_Unwind_Context *context, void *data)
{
    auto *places = static_cast<StackPlaces *>(data);
    if (places->size() >= maximalPlaces) return _URC_END_OF_STACK;
    places->push_back({reinterpret_cast<const void *>(_Unwind_GetIP(context)),
                       reinterpret_cast<const void *>(_Unwind_GetCFA(context))});
    return _URC_NO_REASON;
}

std::shared_ptr<const StackPlaces> currentStack()
{
    auto places = std::make_shared<StackPlaces>();
    places->reserve(maximalPlaces);
    _Unwind_Backtrace(&notePlace, places.get());
    return places;
}

} // namespace

Error::Error(long number, QString description, int line, const char *file)
    : mNumber(number), mLine(line), mFile(file), mDescription(std::move(description)), mWhat(mDescription.toUtf8())
{
    if (errorStacksWanted > 0) mStack = currentStack();
}

const StackPlaces &Error::stack() const
{
    static const StackPlaces none;
    return mStack ? *mStack : none;
}

} // namespace base
