// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"

#include <QString>

namespace editing {

/// What is copied out of a page, or comes from elsewhere to be pasted: one thing in two forms, either may be empty. Line
/// ends of the text are LF.
struct Snippet
{
    QString html;
    QString text;
    bool wholeRows = false; ///< the HTML is a table of rows that were taken from end to end
    bool isEmpty() const { return html.isEmpty() && text.isEmpty(); }
};

/// HTML that comes from somebody else, made fit for a page.
class Pasting
{
public:
    /// The content between the marks that programs put around a fragment, else all of it, without what runs, belongs
    /// to a page's head or is a comment; items without their list get one. An id that the document has already goes:
    /// what is cut and pasted keeps its own.
    static dom::Ref<dom::DocumentFragment> read(dom::Document &document, const QString &html);
    /// Nothing but a table, blanks around it aside; null for other content.
    static dom::Element *onlyTable(const dom::DocumentFragment &content);
    /// How many columns the table has that is all of the HTML; 0 where that is something else.
    static int columnsOf(dom::Document &document, const QString &html);
    /// The plain text to paste; null where there is HTML.
    static QString textOf(const Snippet &snippet);
    /// Lines of plain text, parted by LF, as HTML: a line end is a break, an empty line parts paragraphs. Blanks stay as they are.
    static QString htmlOf(const QString &text);
    /// Lists, where there is nothing else, give way to their items, which come into the list of the page.
    static void unwrapLists(dom::DocumentFragment &content);
    /// Blocks become lines, for a place where none can stand.
    static void flatten(dom::DocumentFragment &content);
};

} // namespace editing
