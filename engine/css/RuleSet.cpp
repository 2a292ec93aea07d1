// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/RuleSet.h"

#include "engine/dom/Names.h"

namespace css {

void Features::addSimple(const SimpleSelector &simple, uint8_t reach, bool quirks, int depth)
{
    switch (simple.kind) {
    case SimpleSelector::Kind::Id:
        ids[quirks ? simple.text.toLower() : simple.text] |= reach;
        break;
    case SimpleSelector::Kind::Class:
        classes[quirks ? simple.text.toLower() : simple.text] |= reach;
        break;
    case SimpleSelector::Kind::Attribute:
        attributes[simple.name] |= reach;
        break;
    case SimpleSelector::Kind::PseudoClass:
        structural[size_t(simple.pseudo)] |= reach;
        if (simple.pseudo == PseudoClass::Link || simple.pseudo == PseudoClass::AnyLink)
            attributes[dom::names::href] |= reach;
        if (simple.pseudo == PseudoClass::Lang) attributes[dom::names::lang] |= reach | reach::descendants;
        if (simple.pseudo == PseudoClass::Checked)
            for (const char *name : {"checked", "selected"})
                attributes[dom::Atom(name)] |= reach;
        if (simple.pseudo == PseudoClass::Disabled || simple.pseudo == PseudoClass::Enabled)
            attributes[dom::Atom("disabled")] |= reach;
        break;
    case SimpleSelector::Kind::Is:
    case SimpleSelector::Kind::Not:
        if (depth > 16) break;
        for (const ComplexSelector &selector : simple.list->selectors) {
            // Each compound of the inner selector reaches as far as its own place says, and on from there.
            uint8_t inner = reach;
            for (const CompoundSelector &compound : selector.compounds) {
                addCompound(compound, inner, quirks, depth + 1);
                if (compound.left == Combinator::Adjacent || compound.left == Combinator::Sibling) {
                    anySibling = anySibling || compound.left == Combinator::Sibling;
                    adjacent += 1;
                    inner = reach::siblings | reach::siblingDescendants;
                    besides |= inner;
                } else if (compound.left != Combinator::None) {
                    inner = reach::descendants | (reach & reach::siblings ? reach::siblingDescendants : 0);
                }
            }
        }
        break;
    case SimpleSelector::Kind::Type:
    case SimpleSelector::Kind::Universal:
        break;
    }
}

void Features::addCompound(const CompoundSelector &compound, uint8_t reach, bool quirks, int depth)
{
    for (const SimpleSelector &simple : compound.simples)
        addSimple(simple, reach, quirks, depth);
}

void Features::add(const ComplexSelector &selector, bool quirks)
{
    uint8_t at = reach::self;
    int chain = 0;
    for (const CompoundSelector &compound : selector.compounds) {
        addCompound(compound, at, quirks, 0);
        switch (compound.left) {
        case Combinator::None:
            break;
        case Combinator::Child:
        case Combinator::Descendant:
            at = reach::descendants;
            chain = 0;
            break;
        case Combinator::Adjacent:
        case Combinator::Sibling:
            at = at == reach::self || at == reach::siblings ? reach::siblings : reach::siblingDescendants;
            besides |= at;
            adjacent = std::max(adjacent, ++chain);
            anySibling = anySibling || compound.left == Combinator::Sibling;
            break;
        }
    }
}

uint32_t RuleSet::hashOf(const SimpleSelector &simple, bool quirks)
{
    const auto hash = [](size_t seed, const auto &what) { return uint32_t(qHash(what, seed)) | 1; };
    switch (simple.kind) {
    case SimpleSelector::Kind::Id:
        return hash(1, quirks ? simple.text.toLower() : simple.text);
    case SimpleSelector::Kind::Class:
        return hash(2, quirks ? simple.text.toLower() : simple.text);
    case SimpleSelector::Kind::Type:
        return hash(3, simple.name.text());
    default:
        return 0;
    }
}

RuleSet::Ancestors::Ancestors(const dom::Element &element, bool quirks)
{
    SimpleSelector simple;
    const auto note = [&](SimpleSelector::Kind kind, const QString &text) {
        simple.kind = kind;
        simple.text = text;
        add(hashOf(simple, quirks));
    };
    for (const dom::Element *at = element.parentElement(); at; at = at->parentElement()) {
        simple.kind = SimpleSelector::Kind::Type;
        for (const dom::Atom &name : {at->name(), dom::Atom::lower(at->name().text())}) {
            simple.name = name;
            add(hashOf(simple, quirks));
        }
        if (const QString *id = at->attribute(dom::names::id)) note(SimpleSelector::Kind::Id, *id);
        if (const QString *classes = at->attribute(dom::names::class_))
            for (const QString &name : classes->simplified().split(u' ', Qt::SkipEmptyParts)) note(SimpleSelector::Kind::Class, name);
    }
}

void RuleSet::add(const StyleRule &rule)
{
    // A rule without declarations counts too: it may be given some, and its features are what tells us then.
    mRules.push_back(base::Ref<const StyleRule>(&rule));
    mKept.push_back(rule.block);
    const uint32_t order = mOrder++;
    for (const ComplexSelector &selector : rule.selectors.selectors) {
        mFeatures.add(selector, mQuirks);
        mPseudos |= 1u << unsigned(selector.pseudo);
        Entry entry{&selector, rule.block.get(), order};
        // Ids and classes tell more than names do.
        for (size_t i = 1; i < selector.compounds.size(); ++i) {
            const Combinator before = selector.compounds[i - 1].left;
            if (before != Combinator::Descendant && before != Combinator::Child) continue;
            for (const SimpleSelector &simple : selector.compounds[i].simples) {
                const uint32_t hash = hashOf(simple, mQuirks);
                if (!hash) continue;
                if (simple.kind == SimpleSelector::Kind::Type && entry.above) {
                    if (!entry.alsoAbove) entry.alsoAbove = hash;
                    continue;
                }
                entry.alsoAbove = entry.above;
                entry.above = hash;
            }
        }
        const SimpleSelector *id = nullptr, *cls = nullptr, *type = nullptr;
        for (const SimpleSelector &simple : selector.compounds.front().simples) {
            if (simple.kind == SimpleSelector::Kind::Id) id = &simple;
            if (simple.kind == SimpleSelector::Kind::Class) cls = &simple;
            if (simple.kind == SimpleSelector::Kind::Type) type = &simple;
        }
        if (id)
            mById[key(id->text)].push_back(entry);
        else if (cls)
            mByClass[key(cls->text)].push_back(entry);
        else if (type)
            mByTag[type->name].push_back(entry);
        else
            mOthers.push_back(entry);
    }
}

void RuleSet::forBuckets(const dom::Element &element,
                         const std::function<void(const std::vector<Entry> &)> &visit) const
{
    const auto look = [&visit](const auto &table, const auto &name) {
        const auto found = table.constFind(name);
        if (found != table.constEnd()) visit(*found);
    };
    if (!mById.isEmpty())
        if (const QString *id = element.attribute(dom::names::id)) look(mById, key(*id));
    if (!mByClass.isEmpty())
        if (const QString *classes = element.attribute(dom::names::class_)) {
            QStringList seen;
            for (const QString &name : classes->simplified().split(u' ', Qt::SkipEmptyParts)) {
                const QString word = key(name);
                if (seen.contains(word)) continue;
                seen << word;
                look(mByClass, word);
            }
        }
    const bool plain = element.space() == dom::Namespace::Html && !element.isPrefixed();
    look(mByTag, plain ? element.name() : dom::Atom::lower(element.name().text()));
    visit(mOthers);
}

} // namespace css
