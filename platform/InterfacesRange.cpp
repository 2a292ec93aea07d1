// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterfacesDetail.h"

/// Selection and ranges. Members join these tables as the engine's ranges grow.
namespace platform::interfaces {

namespace {

[[noreturn]] void notYet()
{
    throw base::Error(actionNotSupported, QStringLiteral("not available yet"));
}

} // namespace

const Interface &selection()
{
    static const Interface &made = *new Interface(QStringLiteral("IHTMLSelectionObject"));
    return made;
}
const Interface &textRange()
{
    static const Interface &made = *new Interface(QStringLiteral("IHTMLTxtRange"));
    return made;
}
const Interface &controlRange()
{
    static const Interface &made = *new Interface(QStringLiteral("IHTMLControlRange"));
    return made;
}
Value selectionOf(dom::Document &)
{
    notYet();
}
Value createTextRange(dom::Element &)
{
    notYet();
}
Value createControlRange(dom::Element &)
{
    notYet();
}

} // namespace platform::interfaces
