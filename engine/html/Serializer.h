// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Node.h"

namespace html {

/// How a text is written. Elements of HTML have their names in capitals, prefixed and foreign ones as written; attributes
/// stand in their order, values in double quotes. A block held open is written with one no-break space, so that every
/// browser shows its line, but for the one that is itself asked for.
class Serializer
{
public:
    /// The node with its content. The document's element brings the doctype and the comments around it.
    static QString outer(const dom::Node &node);
    /// The content alone.
    static QString inner(const dom::Node &node);

    // Pieces, for whoever writes a part of an element (LF as line end).
    static void writeStartTag(const dom::Element &element, QString &out);
    static void writeEndTag(const dom::Element &element, QString &out);
    static void writeText(QStringView text, QString &out);
    /// The node with its content; a held-open block below it shows its line, itself only if told.
    static void write(const dom::Node &node, QString &out, bool showOwnLine = true);
    static QString withCrLf(const QString &text);
    /// Whether the text inside stands raw in the source.
    static bool isRawText(const dom::Element &element);
};

} // namespace html
