// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/StyleListener.h"
#include "engine/css/Tokenizer.h"
#include "engine/dom/Element.h"

#include <QHash>
#include <memory>
#include <optional>

namespace css {

enum class PseudoClass : uint8_t {
    FirstChild,
    LastChild,
    OnlyChild,
    FirstOfType,
    LastOfType,
    OnlyOfType,
    NthChild,
    NthLastChild,
    NthOfType,
    NthLastOfType,
    Empty,
    Root,
    Link,
    AnyLink,
    Visited,
    Checked,
    Disabled,
    Enabled,
    Lang,
    Never ///< hover, active, focus and whatever else depends on what nobody does to a page being edited
};

enum class AttributeMatch : uint8_t { Set, Equals, Includes, Dash, Prefix, Suffix, Substring };

struct SelectorList;

struct SimpleSelector
{
    enum class Kind : uint8_t { Universal, Type, Id, Class, Attribute, PseudoClass, Is, Not };
    Kind kind = Kind::Universal;
    PseudoClass pseudo = PseudoClass::Never;
    AttributeMatch match = AttributeMatch::Set;
    bool ignoreCase = false;
    int step = 0, offset = 0;                 ///< an+b
    dom::Atom name;                           ///< of a type (lower case), an attribute (lower case)
    QString text;                             ///< id, class, the attribute's value, a language
    std::shared_ptr<const SelectorList> list; ///< of Is and Not
};

enum class Combinator : uint8_t { None, Descendant, Child, Adjacent, Sibling };

struct CompoundSelector
{
    std::vector<SimpleSelector> simples;
    Combinator left = Combinator::None; ///< what ties it to the compound on its left
};

struct ComplexSelector
{
    std::vector<CompoundSelector> compounds; ///< from the subject leftwards
    uint32_t specificity = 0;                ///< ids, classes, types: a byte each
    Pseudo pseudo = Pseudo::None;
};

struct SelectorList
{
    std::vector<ComplexSelector> selectors;
};

/// Nothing where one of the list is invalid: the rule then matches nothing.
std::optional<SelectorList> parseSelectors(const Tokens &tokens, size_t from, size_t to, const QString &text);
std::optional<SelectorList> parseSelectors(const QString &text);

/// Whether the element is matched; a pseudo-element of the selector isn't looked at. `quirks`: ids and classes of any
/// case.
/// Remembers places among siblings (`:nth-child` and its like) between matches of one tree that doesn't change, so that
/// asking it of every child isn't a walk for each. `forget` when the tree changes; used while a `Use` of it lives.
class SiblingPlaces
{
public:
    void forget() { mKnown.clear(); }
    /// From 1, counted from the end with `behind`, among those of its own name only with `sameType`.
    qint64 placeOf(const dom::Element &element, bool behind, bool sameType);
    class Use
    {
    public:
        explicit Use(SiblingPlaces *places);
        ~Use();
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;

    private:
        SiblingPlaces *mBefore;
    };

private:
    struct Known
    {
        const dom::Element *element;
        qint64 place;
    };
    QHash<std::pair<const dom::Node *, std::pair<dom::Atom, bool>>, Known> mKnown; ///< by parent, name and direction
};

bool matches(const ComplexSelector &selector, const dom::Element &element, bool quirks);
bool matches(const SelectorList &list, const dom::Element &element, bool quirks);

/// Whether a list of words between white space has this one.
bool hasWord(const QString &list, QStringView word, Qt::CaseSensitivity sensitivity);

/// The text with its element names in capitals and single blanks for white space.
QString selectorTextInCapitals(const QString &text);

} // namespace css
