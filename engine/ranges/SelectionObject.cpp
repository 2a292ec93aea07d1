// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/SelectionObject.h"

#include "engine/ranges/Bookmarks.h"
#include "engine/ranges/Content.h"
#include "engine/ranges/TextIndex.h"

namespace ranges {

using namespace dom;
using changes::SavedSelection;

SelectionObject::SelectionObject(RangeKeeper &keeper, const Rendering &rendering)
    : mKeeper(keeper), mAnchor(keeper, {}), mFocus(keeper, {}), mChosen(std::make_shared<ElementMemory::Ids>()),
      mChosenBefore(mChosen), mPlace(keeper, {}, Grip::Following), mRendering(rendering),
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
    if (anchor()) return Type::Text;
    return isThere() ? Type::Control : Type::None;
}

Element *SelectionObject::elementOf(NodeId id) const
{
    Node *node = document().nodeById(id);
    return node && node->isConnected() ? node->asElement() : nullptr;
}

bool SelectionObject::isThere() const
{
    return std::any_of(mChosen->begin(), mChosen->end(), [this](NodeId id) { return elementOf(id); });
}

Span SelectionObject::span() const
{
    if (type() != Type::Text) return {};
    return Position::compare(anchor(), focus()) <= 0 ? Span{anchor(), focus()} : Span{focus(), anchor()};
}

std::vector<Ref<Element>> SelectionObject::elements() const
{
    std::vector<Ref<Element>> there;
    for (const NodeId id : *mChosen)
        if (Element *element = elementOf(id)) there.emplace_back(element);
    return there;
}

void SelectionObject::set(const Position &anchor, const Position &focus)
{
    if (!anchor || !focus || !anchor.node->isConnected() || !focus.node->isConnected()) {
        clear();
        return;
    }
    const Position a = anchor.clipped(), f = focus.clipped();
    if (this->anchor() == a && this->focus() == f) return;
    choose(std::make_shared<ElementMemory::Ids>());
    mAnchor = a;
    mFocus = f;
    tell();
}

void SelectionObject::setControl(std::vector<Ref<Element>> elements)
{
    auto ids = std::make_shared<ElementMemory::Ids>();
    for (const Ref<Element> &element : elements)
        if (element && element->isConnected()) ids->push_back(element->id());
    if (*ids == *mChosen && !mAnchor.position()) return;
    mAnchor = Position();
    mFocus = Position();
    choose(std::move(ids));
    tell();
}

void SelectionObject::choose(ElementMemory::Choice choice)
{
    if (!mInStep) mMemory.chosen();
    if (choice->empty() && mChosen->empty()) return;
    mChosen = std::move(choice);
    const auto there = elements();
    if (mChosen->empty())
        mPlace = Position();
    else if (!there.empty())
        mPlace = Position::after(*there.front());
}

void SelectionObject::empty()
{
    if (isRange())
        setCaret(span().start);
    else if (type() == Type::Control)
        setCaret(Content(mRendering, *document().body()).normalised(Position::before(*elements().front())));
}

void SelectionObject::clear()
{
    setControl({});
}

void SelectionObject::tell()
{
    ++mMoves;
    if (selectionChanged) selectionChanged();
}

SavedSelection SelectionObject::savedSelection() const
{
    SavedSelection saved;
    if (anchor()) {
        saved = {SavedSelection::Type::Text, anchor().node->id(), anchor().offset,
                 focus().node->id(),         focus().offset,      {}};
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
    restore(saved);
    if (beside) beside->selectionRestored();
}

void SelectionObject::restore(const SavedSelection &saved)
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

void SelectionObject::stepBegins()
{
    mInStep = true;
    mChosenBefore = mChosen;
    mKeeper.stepBegins();
    if (beside) beside->stepBegins();
}

void SelectionObject::stepEnds(changes::StepName step)
{
    if (mChosen != mChosenBefore) mMemory.keep(step, mChosenBefore, mChosen);
    if (beside) beside->stepEnds(step);
    mKeeper.stepEnds(step);
    mInStep = false;
}

void SelectionObject::stepFails()
{
    mKeeper.stepFails();
    if (mChosen != mChosenBefore) choose(mChosenBefore);
    if (beside) beside->stepFails();
    mInStep = false;
}

void SelectionObject::stepPlayed(changes::StepName step)
{
    mKeeper.stepPlayed(step);
    if (mAnchor.position())
        choose(std::make_shared<ElementMemory::Ids>()); // the text that was selected in front of them is again
    else if (const auto choice = mMemory.untouchedSince(step))
        choose(choice);
    if (beside) beside->stepPlayed(step);
}

} // namespace ranges
