// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The part of the control's toolbox that needs no element: texts and URLs. Positions count from 1, and 0 means none,
/// as everywhere in the control's own vocabulary. Nothing here raises.
namespace modMain {

enum class Compare { Binary, Text };

/// The position of `SearchFor` outside double quotes, from `Start` (below 1 counts as 1) on; 0 for none. So a ">" in an
/// attribute's value isn't taken for the tag's end. With `Compare::Text` case is ignored.
qsizetype InStrEx(qsizetype Start, const QString &Text, const QString &SearchFor, Compare Compare = Compare::Binary);

/// Makes a URL relative for comparison: what follows the base in a file URL, else the file's name; any other URL
/// unchanged.
QString ParseURL(const QString &URL, const QString &BaseURL);
/// Does the URL begin with "file://", or hold no ":" at all?
bool IsFileURL(const QString &URL);
/// The file URL without its start, with backslashes and without escapes. It serves to compare; the file helper finds
/// the file of such a name too.
QString FileURLToFileName(const QString &URL);
/// Replaces each "%" and the two hexadecimal digits behind it by the character of that number, until none is left. A
/// "%" without such digits stays: names of files may have one.
QString RemoveEntities(const QString &Text);
/// The address in an anchor's tag text: from six places behind the start of "href=", jumping over its quote, up to the
/// next quote.
QString GetHrefFromOuterHTML(const QString &Text);

/// What lies between the tags of the body, without line ends (CR LF) around it; the whole text if it has no such tags.
QString ReturnBody(const QString &CompleteDocument);
/// The document with another body; unchanged if it has no tags of a body.
QString ReturnNonBody(const QString &CompleteDocument, const QString &NewBody);
/// Removes every CR LF pair at the end, then every one at the start.
QString RemoveLeadingAndTrailingLineFeeds(const QString &Text);

} // namespace modMain
