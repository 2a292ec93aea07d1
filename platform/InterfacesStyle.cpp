// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterfacesDetail.h"

/// Style objects, sheets and rules.
namespace platform::interfaces {

namespace {

[[noreturn]] void notYet()
{
    throw base::Error(actionNotSupported, QStringLiteral("not available yet"));
}

const Interface &emptyInterface(const char *name)
{
    return *new Interface(QString::fromLatin1(name));
}

} // namespace

const Interface &style()
{
    static const Interface &made = emptyInterface("IHTMLStyle");
    return made;
}
const Interface &ruleStyle()
{
    static const Interface &made = emptyInterface("IHTMLRuleStyle");
    return made;
}
const Interface &styleSheet()
{
    static const Interface &made = emptyInterface("IHTMLStyleSheet");
    return made;
}
const Interface &styleSheets()
{
    static const Interface &made = emptyInterface("IHTMLStyleSheetsCollection");
    return made;
}
const Interface &styleSheetRule()
{
    static const Interface &made = emptyInterface("IHTMLStyleSheetRule");
    return made;
}
const Interface &styleSheetRules()
{
    static const Interface &made = emptyInterface("IHTMLStyleSheetRulesCollection");
    return made;
}
Value styleValue(css::StyleObject *)
{
    notYet();
}
Value styleSheetsOf(dom::Document &)
{
    notYet();
}
Value createStyleSheet(dom::Document &, const QString &)
{
    notYet();
}

} // namespace platform::interfaces
