// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Hints.h"
#include "engine/css/StyleEngine.h"
#include "engine/dom/Names.h"

#include <algorithm>
#include <climits>

/// What a change of the tree may have touched, and how it is brought up to date.
namespace css {

using dom::Element;
namespace names = dom::names;

void StyleEngine::announce()
{
    if (std::exchange(mAnnounced, true)) return;
    for (StyleListener *listener : std::vector<StyleListener *>(mListeners))
        listener->stylesInvalidated();
}

void StyleEngine::mark(Element &element, uint8_t dirty)
{
    // Who was never asked for has nothing that could be stale, and neither has anything below.
    Slot *slot = slotOf(element);
    if (!slot || !dirty || mAllDirty) return;
    if (!slot->dirty) mDirty.push_back(element.id());
    slot->dirty |= dirty;
    announce();
}

void StyleEngine::markRun(Element *first, uint8_t dirty, bool behind, int atMost)
{
    if (!dirty) return;
    for (Element *at = first; at && atMost-- > 0; at = behind ? at->nextElementSibling() : at->previousElementSibling())
        mark(*at, dirty);
}

namespace {

uint8_t dirtyOf(uint8_t reach)
{
    return uint8_t((reach & reach::self ? 1 : 0) | (reach & reach::descendants ? 2 : 0));
}

uint8_t siblingDirtyOf(uint8_t reach)
{
    return uint8_t((reach & reach::siblings ? 1 : 0) | (reach & reach::siblingDescendants ? 2 : 0));
}

} // namespace

void StyleEngine::markReach(Element &element, uint8_t reach)
{
    if (!reach) return;
    mark(element, dirtyOf(reach));
    const Features &features = mAuthor->features();
    if (const uint8_t dirty = siblingDirtyOf(reach))
        markRun(element.nextElementSibling(), dirty, true, features.anySibling ? INT_MAX : features.adjacent);
}

void StyleEngine::neighboursChanged(dom::ParentNode &parent, Element *previous, Element *next, dom::Atom name)
{
    const Features &f = mAuthor->features();
    const auto structural = [&f](PseudoClass pseudo) { return f.structural[size_t(pseudo)]; };
    const auto all = [&](uint8_t reach, Element *first, bool behind) {
        for (Element *at = reach ? first : nullptr; at;
             at = behind ? at->nextElementSibling() : at->previousElementSibling())
            markReach(*at, reach);
    };
    if (f.besides) markRun(next, siblingDirtyOf(f.besides), true, f.anySibling ? INT_MAX : f.adjacent);
    const uint8_t first = structural(PseudoClass::FirstChild) | structural(PseudoClass::OnlyChild);
    if (next && first && !next->previousElementSibling()) markReach(*next, first);
    const uint8_t last = structural(PseudoClass::LastChild) | structural(PseudoClass::OnlyChild);
    if (previous && last && !previous->nextElementSibling()) markReach(*previous, last);
    // One that comes makes its neighbour first or last no more.
    if (next && first && !previous) markReach(*next, first);
    if (previous && last && !next) markReach(*previous, last);
    all(uint8_t(structural(PseudoClass::FirstOfType) | structural(PseudoClass::NthChild) |
                structural(PseudoClass::NthOfType) | structural(PseudoClass::OnlyOfType)),
        next, true);
    all(uint8_t(structural(PseudoClass::LastOfType) | structural(PseudoClass::NthLastChild) |
                structural(PseudoClass::NthLastOfType) | structural(PseudoClass::OnlyOfType)),
        previous, false);
    if (Element *element = parent.asElement()) markReach(*element, structural(PseudoClass::Empty));
}

namespace {

bool isSheetElement(const dom::Node *node)
{
    const Element *element = node ? node->asElement() : nullptr;
    return element && (element->is(names::style) || element->is(names::link) || element->is(names::base));
}

bool asksForNeighbours(const Features &features)
{
    if (features.besides) return true;
    return std::any_of(features.structural.begin(), features.structural.begin() + int(PseudoClass::Root),
                       [](uint8_t reach) { return reach != 0; });
}

Element *elementFrom(dom::Node *node, bool behind)
{
    while (node && !node->isElement())
        node = behind ? node->nextSibling() : node->previousSibling();
    return node ? node->asElement() : nullptr;
}

} // namespace

void StyleEngine::concernsSheets(const dom::Node &node)
{
    if (mSheetsChanged) return;
    for (const dom::Node *at = &node; at; at = at->next(&node))
        if (isSheetElement(at)) return sheetsChanged();
}

void StyleEngine::inserted(dom::Node &node)
{
    mPlaces.forget();
    if (!mAuthor) return;
    if (isSheetElement(node.parentNode())) sheetsChanged();
    if (node.elementCount() > 0) concernsSheets(node);
    if (!asksForNeighbours(mAuthor->features())) return;
    if (Element *element = node.asElement())
        neighboursChanged(*node.parentNode(), element->previousElementSibling(), element->nextElementSibling(),
                          element->name());
    else if (Element *parent = node.parentElement())
        markReach(*parent, mAuthor->features().structural[size_t(PseudoClass::Empty)]);
}

void StyleEngine::aboutToRemove(dom::Node &node)
{
    mPlaces.forget();
    if (node.elementCount() > 0) concernsSheets(node);
    if (isSheetElement(node.parentNode())) sheetsChanged();
    dropSlots(node);
}

void StyleEngine::removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before)
{
    mPlaces.forget();
    if (!mAuthor || !asksForNeighbours(mAuthor->features())) return;
    if (node.isElement())
        neighboursChanged(parent, elementFrom(before ? before->previousSibling() : parent.lastChild(), false),
                          elementFrom(before, true), node.asElement()->name());
    else if (Element *element = parent.asElement())
        markReach(*element, mAuthor->features().structural[size_t(PseudoClass::Empty)]);
}

void StyleEngine::textReplaced(dom::CharacterData &node, uint32_t, uint32_t removed, uint32_t added)
{
    Element *parent = node.parentElement();
    if (!parent || !mAuthor) return;
    if (parent->is(names::style)) sheetsChanged();
    // Only a text that becomes empty, or no longer is, matters to anyone.
    if (node.length() == added || (node.length() == 0 && removed))
        if (const uint8_t reach = mAuthor->features().structural[size_t(PseudoClass::Empty)]) markReach(*parent, reach);
}

void StyleEngine::wordsChanged(Element &element, const QHash<QString, uint8_t> &table, const QString *old,
                               const QString *now)
{
    if (table.isEmpty()) return;
    const auto words = [this](const QString *text) {
        QStringList list = (text ? *text : QString()).simplified().split(u' ', Qt::SkipEmptyParts);
        if (mDocument->isQuirks())
            for (QString &word : list)
                word = word.toLower();
        return list;
    };
    const QStringList before = words(old), after = words(now);
    uint8_t reach = 0;
    for (const QString &word : before)
        if (!after.contains(word)) reach |= table.value(word);
    for (const QString &word : after)
        if (!before.contains(word)) reach |= table.value(word);
    markReach(element, reach);
}

void StyleEngine::attributeChanged(Element &element, dom::Atom name, const QString *old)
{
    if (!mAuthor) return;
    if (isSheetElement(&element)) sheetsChanged();
    static const dom::Atom style("style");
    const Features &features = mAuthor->features();
    const QString *now = element.attribute(name);
    if (name == names::class_) wordsChanged(element, features.classes, old, now);
    if (name == names::id) {
        const auto fold = [this](const QString *id) { return mDocument->isQuirks() ? id->toLower() : *id; };
        if (old) markReach(element, features.ids.value(fold(old)));
        if (now) markReach(element, features.ids.value(fold(now)));
    }
    const dom::Atom lower = dom::Atom::lower(name.text());
    markReach(element, uint8_t(features.attributes.value(lower) | userAgentRules().features().attributes.value(lower)));
    if (name == style || mUsedAttribute) mark(element, selfDirty);
    switch (hintReach(element, name)) {
    case HintReach::None:
        break;
    case HintReach::Self:
        mark(element, selfDirty);
        break;
    case HintReach::Subtree:
        mark(element, selfDirty | subtreeDirty);
        break;
    }
}

void StyleEngine::sheetsChanged()
{
    mSheetsChanged = true;
    announce();
}

void StyleEngine::setSheetSource(SheetSource source)
{
    mSource = std::move(source);
    sheetsChanged();
}

void StyleEngine::setMedium(const Medium &medium)
{
    if (mMedium == medium) return;
    const bool rules = medium.type != mMedium.type || (mAuthor && mAuthor->features().asksForSize);
    mMedium = medium;
    if (rules || mUsedViewport) sheetsChanged();
}

Difference StyleEngine::updatePseudos(Element &element, Slot &slot)
{
    Difference result = Difference::None;
    const std::vector<PseudoStyle> before = std::exchange(slot.pseudos, {});
    for (const PseudoStyle &old : before) {
        const ComputedStyle *now = styleFor(element, old.pseudo);
        if (!now && !old.style) continue;
        const bool generated = old.pseudo == Pseudo::Before || old.pseudo == Pseudo::After;
        if (!now || !old.style)
            result = std::max(result, generated                         ? Difference::Reframe
                                      : old.pseudo == Pseudo::Selection ? Difference::Paint
                                                                        : Difference::Reframe);
        else
            result = std::max(result, difference(*old.style, *now));
    }
    return result;
}

void StyleEngine::visit(const Visit &at, std::vector<Visit> &pending)
{
    Element &element = *at.element;
    Slot *slot = slotOf(element);
    if (!slot || !slot->style || !(at.force || at.all || slot->dirty)) return;
    const bool all = at.all || (slot->dirty & subtreeDirty);
    slot->dirty = 0;
    Element *parent = element.parentElement();
    const Slot *above = parent ? slotOf(*parent) : nullptr;
    const base::Ref<const ComputedStyle> old = slot->style;
    bool inheritedExplicitly = false;
    slot->style = compute(element, Pseudo::None, above && above->style ? *above->style : ComputedStyle::initial(),
                          &inheritedExplicitly);
    if (inheritedExplicitly && parent) slotOf(*parent)->childrenInheritMore = true;
    const ComputedStyle &now = *slot->style;
    Difference change = difference(*old, now);
    change = std::max(change, updatePseudos(element, *slot));
    bool quiet = at.quiet;
    if (change != Difference::None && !quiet) {
        for (StyleListener *listener : std::vector<StyleListener *>(mListeners))
            listener->styleChanged(element, change);
        quiet = change == Difference::Reframe;
    }
    const bool inherits = !now.sharesInheritedWith(*old) &&
                          !(now.font() == old->font() && now.text() == old->text() && now.custom() == old->custom());
    const bool more = slot->childrenInheritMore && change != Difference::None;
    // Sizes in rem and a quirk's colour are taken from far above.
    const bool root = !parent && now.font().size != old->font().size;
    const bool body = mDocument->isQuirks() && now.color() != old->color() && mDocument->body() == &element;
    if (root) mShared.clear();
    const bool below = all || root || body;
    if (!below && !inherits && !more && now.box().blockifiesChildren == old->box().blockifiesChildren) return;
    for (dom::Node *child = element.lastChild(); child; child = child->previousSibling())
        if (Element *next = child->asElement(); next && next->styleSlot) pending.push_back({next, true, below, quiet});
}

void StyleEngine::updateTree(Element &top, bool all)
{
    std::vector<Visit> pending{{&top, all, all, false}};
    while (!pending.empty()) {
        const Visit at = pending.back();
        pending.pop_back();
        visit(at, pending);
    }
}

void StyleEngine::update()
{
    if (mUpdating || !needsUpdate()) return;
    mUpdating = true;
    mAnnounced = false;
    if (mSheetsChanged) rebuildRules();
    if (std::exchange(mAllDirty, false)) {
        mDirty.clear();
        if (Element *root = mDocument->documentElement()) updateTree(*root, true);
    } else {
        std::vector<Element *> dirty;
        for (const dom::NodeId id : std::exchange(mDirty, {})) {
            dom::Node *node = mDocument->nodeById(id);
            if (node && node->isConnected() && slotOf(*node) && slotOf(*node)->dirty)
                dirty.push_back(node->asElement());
        }
        std::sort(dirty.begin(), dirty.end(), [](Element *a, Element *b) { return a->compareOrder(*b) < 0; });
        dirty.erase(std::unique(dirty.begin(), dirty.end()), dirty.end());
        for (Element *element : dirty)
            updateTree(*element, false);
    }
    mUpdating = false;
}

} // namespace css
