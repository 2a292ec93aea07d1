// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/html/Blocks.h"

#include "engine/dom/Names.h"

#include <QSet>

namespace html {

using namespace dom;

bool isBlockElement(const Element &element)
{
    static const QSet<Atom> blocks = {
        names::address, names::article, names::aside,    names::blockquote, names::body,   names::caption,
        names::center,  names::dd,      names::details,  names::dialog,     names::dir,    names::div,
        names::dl,      names::dt,      names::fieldset, names::figcaption, names::figure, names::footer,
        names::form,    names::h1,      names::h2,       names::h3,         names::h4,     names::h5,
        names::h6,      names::header,  names::hgroup,   names::hr,         names::html,   names::legend,
        names::li,      names::listing, names::main,     names::menu,       names::nav,    names::ol,
        names::optgroup, names::option, names::p,        names::plaintext,  names::pre,    names::section,
        names::summary, names::table,   names::tbody,    names::td,         names::tfoot,  names::th,
        names::thead,   names::tr,      names::ul,       names::xmp,        names::col,    names::colgroup};
    return element.space() == Namespace::Html && blocks.contains(element.name());
}

bool isTextBlock(const Element &element)
{
    static const QSet<Atom> blocks = {names::address, names::blockquote, names::body, names::caption, names::center,
                                      names::dd,      names::div,        names::dt,   names::h1,      names::h2,
                                      names::h3,      names::h4,         names::h5,   names::h6,      names::li,
                                      names::p,       names::pre,        names::td,   names::th,      names::figcaption,
                                      names::legend,  names::section,    names::article, names::aside, names::main,
                                      names::header,  names::footer,     names::nav};
    return element.space() == Namespace::Html && blocks.contains(element.name());
}

} // namespace html
