// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/SelectionObject.h"

#include "engine/ranges/Bookmarks.h"
#include "engine/ranges/TextIndex.h"

namespace ranges {

using namespace dom;
using changes::SavedSelection;

SelectionObject::SelectionObject(RangeKeeper &keeper, const Rendering &rendering)
    : mKeeper(keeper), mAnchor(keeper, {}), mFocus(keeper, {}), mRendering(rendering),
      mHandle(std::make_shared<SelectionObject *>(this))
{
}

SelectionObject::~SelectionObject()
{
    *mHandle = nullptr;
}

TextIndex &SelectionObject::index()
{
    if (!mIndex) mIndex = std::make_unique<TextIndex>(document(), mRendering);
    return *mIndex;
}

Bookmarks &SelectionObject::bookmarks()
{
    if (!mBookmarks) mBookmarks = std::make_unique<Bookmarks>(mKeeper);
    return *mBookmarks;
}

SelectionObject::Type SelectionObject::type() const
{
    if (mAnchor.position()) return Type::Text;
    return elements().empty() ? Type::None : Type::Control;
}

Span SelectionObject::span() const
{
    if (type() != Type::Text) return {};
    return Position::compare(anchor(), focus()) <= 0 ? Span{anchor(), focus()} : Span{focus(), anchor()};
}

std::vector<Ref<Element>> SelectionObject::elements() const
{
    std::vector<Ref<Element>> there;
    for (const Ref<Element> &element : mElements)
        if (element->isConnected()) there.push_back(element);
    return there;
}

void SelectionObject::set(const Position &anchor, const Position &focus)
{
    if (!anchor || !focus || !anchor.node->isConnected() || !focus.node->isConnected()) {
        clear();
        return;
    }
    const Position a = anchor.clipped(), f = focus.clipped();
    if (mElements.empty() && mAnchor.position() == a && mFocus.position() == f) return;
    mElements.clear();
    mAnchor = a;
    mFocus = f;
    tell();
}

void SelectionObject::setControl(std::vector<Ref<Element>> elements)
{
    std::erase_if(elements, [](const Ref<Element> &e) { return !e || !e->isConnected(); });
    if (elements == mElements && !mAnchor.position()) return;
    mAnchor = Position();
    mFocus = Position();
    mElements = std::move(elements);
    tell();
}

void SelectionObject::clear()
{
    setControl({});
}

void SelectionObject::tell()
{
    if (selectionChanged) selectionChanged();
}

SavedSelection SelectionObject::savedSelection() const
{
    SavedSelection saved;
    if (mAnchor.position()) {
        saved = {SavedSelection::Type::Text, anchor().node->id(), anchor().offset, focus().node->id(),
                 focus().offset, {}};
    } else if (const auto there = elements(); !there.empty()) {
        saved.type = SavedSelection::Type::Control;
        saved.anchor = there.front()->id();
        saved.focus = there.back()->id();
        for (size_t i = 1; i + 1 < there.size(); ++i)
            saved.between.push_back(there[i]->id());
    }
    return saved;
}

void SelectionObject::restoreSelection(const SavedSelection &saved)
{
    if (saved.type == SavedSelection::Type::None) {
        clear();
        return;
    }
    Node *first = document().nodeById(saved.anchor), *last = document().nodeById(saved.focus);
    if (!first || !last || !first->isConnected() || !last->isConnected()) return;
    if (saved.type == SavedSelection::Type::Text) {
        set({first, saved.anchorOffset}, {last, saved.focusOffset});
        return;
    }
    if (!first->isElement() || !last->isElement()) return;
    std::vector<Ref<Element>> all{first->asElement()};
    for (const NodeId id : saved.between)
        if (Node *node = document().nodeById(id); node && node->isElement()) all.emplace_back(node->asElement());
    if (last != first) all.emplace_back(last->asElement());
    setControl(std::move(all)); // which drops those that aren't in the tree any more
}

void SelectionObject::stepPlayed(changes::StepName step)
{
    mKeeper.stepPlayed(step);
    if (mAnchor.position()) mElements.clear(); // the text that was selected in front of them is again
}

} // namespace ranges
