// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

namespace platform {

struct HtmlAttribute
{
    QString name;                       // lower case
    qsizetype position = 0, length = 0; // of the value, without its quotes
};
struct HtmlTag
{
    QString name; // lower case, of an end tag with its slash
    std::vector<HtmlAttribute> attributes;
    qsizetype end = 0; // behind the tag
};

/// Does a tag begin with the "<" at `position`?
bool isTagStart(const QString &html, qsizetype position);
/// The tag whose "<" stands at `position`; one that isn't closed goes to the end of the text.
HtmlTag scanTag(const QString &html, qsizetype position);

/// A stretch of the text, from `begin` up to `end`.
struct TextRange
{
    qsizetype begin = 0, end = 0;
};
/// Stretches in which a character reference is no reference: comments, declarations, scripts, styles, tags but for
/// their attributes' values. In order.
std::vector<TextRange> rangesWithoutReferences(const QString &html);

} // namespace platform
