// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

namespace html {

/// What no page needs and what keeps a hostile one from exhausting time or memory.
struct InputLimits {
    int depth = 600;       ///< elements open at a time, the reopened formatting ones among them
    int formatting = 24;   ///< formatting elements open at a time; each is made anew in every paragraph that follows
    int attributes = 1000; ///< attributes of one tag that the tree builder sees
};

struct GuardedInput {
    QByteArray text;         ///< UTF-8, ready for the tree builder
    QByteArray doctype;      ///< what stands between "<!" and ">" of the first document type, as written; empty for none
    QByteArray doctypeSpace; ///< white space behind it
    /// The attributes beyond the limit, a tag an entry, as written and parted so that each part keeps within the limit.
    /// The tag has an attribute `surplusMark` in their place, whose value is the entry's index.
    QList<QList<QByteArray>> surplus;
};

inline constexpr char surplusMark[] = "\xEF\xB7\x91";

/// Stands in the guarded text in front of each end tag of a form: the tree builder closes the form before it places the
/// text that it has gathered, which would then stand behind the form; a comment makes it place the text. Its content is
/// a noncharacter (Unicode 23.7: for use inside a program), so that no comment of a page is taken for it.
inline constexpr char textBoundary[] = "<!--\xEF\xB7\x90-->";

/// Stands behind the name in tags of elements that the tree builder would treat as no browser does any more (ISINDEX, whose
/// prompt it puts into the text) or so that the page couldn't be saved (PLAINTEXT).
inline constexpr char nameMark[] = "\xEF\xB7\x90";

/// A pass in front of the tree builder, whose time grows with the square of the depth and of a
/// tag's attributes. It leaves out start tags (and their
/// end tags) that go beyond the limits and keeps every character of text. It also does what HTML doesn't know: a tag of a
/// prefixed element that ends in "/>" is closed (`<o:p/>`), and a tag that the input's end cuts off is kept as text.
GuardedInput guardInput(const QByteArray &utf8, const InputLimits &limits = {});

} // namespace html
