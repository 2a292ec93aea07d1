// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Counters.h"

#include "engine/dom/Names.h"
#include "engine/layout/Generated.h"
#include "engine/layout/LayoutTree.h"

namespace layout {

bool counts(const css::ComputedStyle &style)
{
    return !style.rare().counterReset.empty() || !style.rare().counterIncrement.empty();
}

void Counters::forget()
{
    mAt = nullptr;
    if (!mScopes.isEmpty()) mScopes.clear();
    mOpened.clear();
    if (!mItems.isEmpty()) mItems.clear();
}

namespace {

int sumOf(int a, int b) // counters wrap nowhere
{
    return int(std::clamp<int64_t>(int64_t(a) + b, INT32_MIN, INT32_MAX));
}

} // namespace

// A reset opens a scope that ends with the parent, or starts the one anew that an element beside it opened. A counter that
// nobody has reset is reset where it is first counted.
void Counters::apply(const css::ComputedStyle &style, const dom::Node *parent)
{
    for (const css::CounterChange &change : style.rare().counterReset) {
        auto &scopes = mScopes[change.name];
        if (!scopes.empty() && scopes.back().parent == parent) {
            scopes.back().value = change.value;
            continue;
        }
        scopes.push_back({parent, change.value});
        mOpened.push_back({change.name, parent});
    }
    for (const css::CounterChange &change : style.rare().counterIncrement) {
        auto &scopes = mScopes[change.name];
        if (scopes.empty()) {
            scopes.push_back({parent, 0});
            mOpened.push_back({change.name, parent});
        }
        scopes.back().value = sumOf(scopes.back().value, change.value);
    }
}

void Counters::applyPseudo(LayoutTree &tree, Pseudo pseudo)
{
    mStage = pseudo == Pseudo::Before ? Stage::Before : Stage::After;
    if (const StyleRef style = generatedStyle(tree, *mAt, pseudo)) apply(*style, mAt);
}

void Counters::leave(const dom::Element &element)
{
    while (!mOpened.empty() && mOpened.back().parent == &element) {
        mScopes[mOpened.back().name].pop_back();
        mOpened.pop_back();
    }
}

bool Counters::enterFirst(LayoutTree &tree, dom::Node *from)
{
    for (dom::Node *node = from; node; node = node->nextSibling()) {
        dom::Element *element = node->asElement();
        if (!element) continue;
        const StyleRef style = tree.styles().styleFor(*element);
        if (!style || isHidden(*element, *style)) continue; // what isn't displayed counts nothing
        mAt = element;
        mStage = Stage::Entered;
        apply(*style, element->parentNode());
        return true;
    }
    return false;
}

bool Counters::advance(LayoutTree &tree)
{
    switch (mStage) {
    case Stage::Entered:
        applyPseudo(tree, Pseudo::Before);
        return true;
    case Stage::Before:
        if (!enterFirst(tree, mAt->firstChild())) applyPseudo(tree, Pseudo::After);
        return true;
    case Stage::After:
        break;
    }
    leave(*mAt);
    if (enterFirst(tree, mAt->nextSibling())) return true;
    mAt = mAt->parentElement();
    if (mAt) applyPseudo(tree, Pseudo::After);
    return mAt;
}

void Counters::begin(LayoutTree &tree)
{
    mAt = nullptr;
    mScopes.clear();
    mOpened.clear();
    enterFirst(tree, tree.document().documentElement());
}

std::vector<int> Counters::valuesAt(LayoutTree &tree, const dom::Element &element, Pseudo pseudo, const QString &name)
{
    const Stage stage = pseudo == Pseudo::Before ? Stage::Before : pseudo == Pseudo::After ? Stage::After : Stage::Entered;
    bool again = mAt; // from the place of the last question, then from the start
    if (!mAt) begin(tree);
    while (mAt != &element || mStage != stage) {
        if (mAt && advance(tree)) continue;
        if (!again) break;
        again = false;
        begin(tree);
    }
    std::vector<int> values;
    for (const Scope &scope : mScopes.value(name)) values.push_back(scope.value);
    if (values.empty()) values.push_back(0);
    return values;
}

int Counters::ordinalOf(const dom::Element &item)
{
    const auto given = [](const dom::Element &element, dom::Atom name, int &value) {
        const QString *text = element.attribute(name);
        bool ok = false;
        const int number = text ? text->trimmed().toInt(&ok) : 0;
        if (ok) value = number;
        return ok;
    };
    int value = 0;
    if (given(item, dom::names::value, value)) return value;
    const dom::Element *list = item.parentElement();
    static const dom::Atom reversedName("reversed");
    const bool ordered = list && list->is(dom::names::ol), reversed = ordered && list->hasAttribute(reversedName);
    const auto known = mItems.constFind(list);
    if (known != mItems.cend() && known->item == &item) return known->ordinal;
    int steps = 0;
    bool found = false;
    // From the last item in front whose number is known, or from the list's start.
    for (const dom::Element *each = item.previousElementSibling(); each && !found; each = each->previousElementSibling()) {
        if (!each->is(dom::names::li)) continue;
        ++steps;
        if (known != mItems.cend() && known->item == each) {
            value = known->ordinal;
            found = true;
        } else {
            found = given(*each, dom::names::value, value);
        }
    }
    if (!found) {
        value = reversed ? 0 : 1;
        for (const dom::Element *each = reversed ? list->firstElementChild() : nullptr; each; each = each->nextElementSibling())
            value += each->is(dom::names::li);
        if (ordered) given(*list, dom::names::start, value);
    }
    const int ordinal = sumOf(value, reversed ? -steps : steps);
    if (list) mItems.insert(list, {&item, ordinal});
    return ordinal;
}

} // namespace layout
