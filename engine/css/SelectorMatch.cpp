// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Selector.h"
#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"

namespace css {

using dom::Element;
namespace names = dom::names;

bool hasWord(const QString &list, QStringView word, Qt::CaseSensitivity sensitivity)
{
    const auto isSpace = [](QChar c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f'; };
    if (word.isEmpty()) return false;
    for (qsizetype at = 0; at < list.size();) {
        while (at < list.size() && isSpace(list[at]))
            ++at;
        const qsizetype start = at;
        while (at < list.size() && !isSpace(list[at]))
            ++at;
        if (at - start == word.size() && QStringView(list).mid(start, at - start).compare(word, sensitivity) == 0)
            return true;
    }
    return false;
}

namespace {

bool isNamed(const Element &element, dom::Atom lower)
{
    if (element.name() == lower) return true;
    if (element.space() == dom::Namespace::Html && !element.isPrefixed()) return false;
    return dom::Atom::lower(element.name().text()) == lower;
}

bool matchesAttribute(const SimpleSelector &simple, const Element &element)
{
    const QString *value = element.attribute(simple.name);
    if (!value && element.space() != dom::Namespace::Html)
        for (const dom::Attribute &attribute : element.attributeList())
            if (dom::Atom::lower(attribute.name.text()) == simple.name) value = &attribute.value;
    if (!value) return false;
    const QString &text = simple.text;
    const Qt::CaseSensitivity sensitivity = simple.ignoreCase ? Qt::CaseInsensitive : Qt::CaseSensitive;
    switch (simple.match) {
    case AttributeMatch::Set:
        return true;
    case AttributeMatch::Equals:
        return value->compare(text, sensitivity) == 0;
    case AttributeMatch::Includes:
        return hasWord(*value, text, sensitivity);
    case AttributeMatch::Dash:
        return value->startsWith(text, sensitivity) && (value->size() == text.size() || value->at(text.size()) == u'-');
    case AttributeMatch::Prefix:
        return !text.isEmpty() && value->startsWith(text, sensitivity);
    case AttributeMatch::Suffix:
        return !text.isEmpty() && value->endsWith(text, sensitivity);
    case AttributeMatch::Substring:
        return !text.isEmpty() && value->contains(text, sensitivity);
    }
    return false;
}

/// The next element before (or behind) this one; of its own name only with `sameType`.
const Element *beside(const Element &element, bool behind, bool sameType)
{
    const Element *at = &element;
    do {
        at = behind ? at->nextElementSibling() : at->previousElementSibling();
    } while (at && sameType && at->name() != element.name());
    return at;
}

thread_local SiblingPlaces *inUse = nullptr;

qint64 countedPlace(const Element &element, bool behind, bool sameType)
{
    qint64 place = 1;
    for (const Element *at = beside(element, behind, sameType); at; at = beside(*at, behind, sameType))
        ++place;
    return place;
}

bool matchesNth(const SimpleSelector &simple, const Element &element)
{
    const bool behind = simple.pseudo == PseudoClass::NthLastChild || simple.pseudo == PseudoClass::NthLastOfType;
    const bool sameType = simple.pseudo == PseudoClass::NthOfType || simple.pseudo == PseudoClass::NthLastOfType;
    const qint64 place = inUse ? inUse->placeOf(element, behind, sameType) : countedPlace(element, behind, sameType);
    const qint64 distance = place - simple.offset;
    if (simple.step == 0) return distance == 0;
    return distance % simple.step == 0 && distance / simple.step >= 0;
}

bool isEmptyElement(const Element &element)
{
    for (const dom::Node *child = element.firstChild(); child; child = child->nextSibling()) {
        if (child->isElement()) return false;
        if (child->isText() && static_cast<const dom::Text *>(child)->length() > 0) return false;
    }
    return true;
}

bool isLink(const Element &element)
{
    return (element.is(names::a) || element.is(names::area)) && element.hasAttribute(names::href);
}

bool isControl(const Element &element)
{
    return element.is(names::input) || element.is(names::button) || element.is(names::select) ||
           element.is(names::textarea) || element.is(names::option) || element.is(names::optgroup) ||
           element.is(names::fieldset);
}

bool matchesLanguage(const SimpleSelector &simple, const Element &element)
{
    for (const Element *at = &element; at; at = at->parentElement()) {
        const QString *language = at->attribute(names::lang);
        if (!language) continue;
        return language->startsWith(simple.text, Qt::CaseInsensitive) &&
               (language->size() == simple.text.size() || language->at(simple.text.size()) == u'-');
    }
    return false;
}

bool matchesPseudo(const SimpleSelector &simple, const Element &element)
{
    static const dom::Atom checked("checked"), selected("selected"), disabled("disabled");
    switch (simple.pseudo) {
    case PseudoClass::FirstChild:
        return element.parentNode() && !beside(element, false, false);
    case PseudoClass::LastChild:
        return element.parentNode() && !beside(element, true, false);
    case PseudoClass::OnlyChild:
        return element.parentNode() && !beside(element, false, false) && !beside(element, true, false);
    case PseudoClass::FirstOfType:
        return element.parentNode() && !beside(element, false, true);
    case PseudoClass::LastOfType:
        return element.parentNode() && !beside(element, true, true);
    case PseudoClass::OnlyOfType:
        return element.parentNode() && !beside(element, false, true) && !beside(element, true, true);
    case PseudoClass::NthChild:
    case PseudoClass::NthLastChild:
    case PseudoClass::NthOfType:
    case PseudoClass::NthLastOfType:
        return element.parentNode() && matchesNth(simple, element);
    case PseudoClass::Empty:
        return isEmptyElement(element);
    case PseudoClass::Root:
        return element.parentNode() && element.parentNode()->type() == dom::NodeType::Document;
    case PseudoClass::Link:
    case PseudoClass::AnyLink:
        return isLink(element); // nobody has been anywhere
    case PseudoClass::Checked:
        return (element.is(names::input) && element.hasAttribute(checked)) ||
               (element.is(names::option) && element.hasAttribute(selected));
    case PseudoClass::Disabled:
        return isControl(element) && element.hasAttribute(disabled);
    case PseudoClass::Enabled:
        return isControl(element) && !element.hasAttribute(disabled);
    case PseudoClass::Lang:
        return matchesLanguage(simple, element);
    case PseudoClass::Visited:
    case PseudoClass::Never:
        return false;
    }
    return false;
}

bool matchesSimple(const SimpleSelector &simple, const Element &element, bool quirks)
{
    const Qt::CaseSensitivity sensitivity = quirks ? Qt::CaseInsensitive : Qt::CaseSensitive;
    static const dom::Atom classAttribute = names::class_;
    switch (simple.kind) {
    case SimpleSelector::Kind::Universal:
        return true;
    case SimpleSelector::Kind::Type:
        return isNamed(element, simple.name);
    case SimpleSelector::Kind::Id: {
        const QString *id = element.attribute(names::id);
        return id && id->compare(simple.text, sensitivity) == 0;
    }
    case SimpleSelector::Kind::Class: {
        const QString *classes = element.attribute(classAttribute);
        return classes && hasWord(*classes, simple.text, sensitivity);
    }
    case SimpleSelector::Kind::Attribute:
        return matchesAttribute(simple, element);
    case SimpleSelector::Kind::PseudoClass:
        return matchesPseudo(simple, element);
    case SimpleSelector::Kind::Is:
        return matches(*simple.list, element, quirks);
    case SimpleSelector::Kind::Not:
        return !matches(*simple.list, element, quirks);
    }
    return false;
}

bool matchesCompound(const CompoundSelector &compound, const Element &element, bool quirks)
{
    for (const SimpleSelector &simple : compound.simples)
        if (!matchesSimple(simple, element, quirks)) return false;
    return true;
}

/// How far up a failure reaches, so that no ancestor or sibling is tried in vain a second time.
enum class Outcome : uint8_t { Match, Fails, FailsAllSiblings, FailsAltogether };

/// Recurses over the compounds of a selector, whose number is bounded.
Outcome matchFrom(const ComplexSelector &selector, size_t index, const Element &element, bool quirks)
{
    if (!matchesCompound(selector.compounds[index], element, quirks)) return Outcome::Fails;
    if (index + 1 == selector.compounds.size()) return Outcome::Match;
    switch (selector.compounds[index].left) {
    case Combinator::Descendant:
        for (const Element *at = element.parentElement(); at; at = at->parentElement()) {
            const Outcome outcome = matchFrom(selector, index + 1, *at, quirks);
            if (outcome == Outcome::Match || outcome == Outcome::FailsAltogether) return outcome;
        }
        return Outcome::FailsAltogether;
    case Combinator::Child: {
        const Element *parent = element.parentElement();
        if (!parent) return Outcome::FailsAltogether;
        const Outcome outcome = matchFrom(selector, index + 1, *parent, quirks);
        return outcome == Outcome::Match || outcome == Outcome::FailsAltogether ? outcome : Outcome::FailsAllSiblings;
    }
    case Combinator::Adjacent: {
        const Element *before = element.previousElementSibling();
        return before ? matchFrom(selector, index + 1, *before, quirks) : Outcome::FailsAllSiblings;
    }
    case Combinator::Sibling:
        for (const Element *at = element.previousElementSibling(); at; at = at->previousElementSibling()) {
            const Outcome outcome = matchFrom(selector, index + 1, *at, quirks);
            if (outcome != Outcome::Fails) return outcome;
        }
        return Outcome::FailsAllSiblings;
    case Combinator::None:
        break;
    }
    return Outcome::Fails;
}

} // namespace

SiblingPlaces::Use::Use(SiblingPlaces *places) : mBefore(inUse)
{
    inUse = places;
}

SiblingPlaces::Use::~Use()
{
    inUse = mBefore;
}

qint64 SiblingPlaces::placeOf(const Element &element, bool behind, bool sameType)
{
    const std::pair<const dom::Node *, std::pair<dom::Atom, bool>> key{element.parentNode(), {sameType ? element.name() : dom::Atom(), behind}};
    const auto found = mKnown.find(key);
    if (found == mKnown.end()) {
        if (mKnown.size() > 4096) mKnown.clear();
        return mKnown.insert(key, Known{&element, countedPlace(element, behind, sameType)})->place;
    }
    Known &known = *found;
    if (known.element == &element) return known.place;
    // Elements are asked one after the other, mostly.
    const Element *before = beside(element, false, sameType);
    const qint64 place = before == known.element ? known.place + (behind ? -1 : 1) : countedPlace(element, behind, sameType);
    known = {&element, place};
    return place;
}

bool matches(const ComplexSelector &selector, const Element &element, bool quirks)
{
    return !selector.compounds.empty() && matchFrom(selector, 0, element, quirks) == Outcome::Match;
}

bool matches(const SelectorList &list, const Element &element, bool quirks)
{
    for (const ComplexSelector &selector : list.selectors)
        if (matches(selector, element, quirks)) return true;
    return false;
}

} // namespace css
