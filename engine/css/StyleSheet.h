// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Declarations.h"
#include "engine/css/Media.h"
#include "engine/css/Selector.h"

namespace css {

/// A rule with selectors. Its block is replaced, never written to, so that who holds the old one isn't surprised.
class StyleRule final : public base::RefCounted
{
public:
    QString selectorText;   ///< as written, comments dropped
    SelectorList selectors; ///< empty where they can't be read: the rule matches nothing
    base::Ref<DeclarationBlock> block;
};

/// A rule of any kind, with the text it stands in. The texts of a sheet's rules and what stands between them are the
/// sheet's text, to the letter; a rule that is written to has its own part of it made anew and no other.
struct Rule
{
    enum class Kind : uint8_t { Style, Media, Import, Other };
    Kind kind = Kind::Other;
    QString before; ///< what stands between the previous rule and this one: white space, comments, `<!--`
    QString source;
    base::Ref<StyleRule> style; ///< Style
    MediaList media;            ///< Media, Import
    std::vector<Rule> rules;    ///< Media
    QString url;                ///< Import, as written
};

class StyleSheet final : public base::RefCounted
{
public:
    static base::Ref<StyleSheet> parse(const QString &text, ValueMode mode);

    std::vector<Rule> rules;
    QString tail; ///< what stands behind the last rule

    /// The whole text.
    QString text() const;
    /// Makes a rule's text anew after its selectors or block were replaced.
    static void rewrite(Rule &rule);
    static Rule makeRule(const QString &selector, const QString &css, ValueMode mode);
};

} // namespace css
