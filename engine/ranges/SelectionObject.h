// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/ranges/ElementMemory.h"
#include "engine/ranges/RangeKeeper.h"
#include "engine/ranges/Rendering.h"

#include <functional>
#include <memory>
#include <vector>

namespace ranges {

class Bookmarks;
class RangeHost;
class TextIndex;

/// Keeps a choice of its own beside the selection, and hears of the steps as the selection does.
class StepListener
{
public:
    virtual ~StepListener() = default;
    virtual void stepBegins() = 0;
    virtual void stepEnds(changes::StepName step) = 0;
    virtual void stepFails() = 0;
    virtual void stepPlayed(changes::StepName step) = 0;
    /// The open playback has put the selection where its record says: the step was one of input.
    virtual void selectionRestored() = 0;
};

/// What is selected in a document: nothing, a stretch of text (a caret where it is empty), or objects. It keeps exactly
/// the places that it was given, edits carry them along, and records save them by node and offset. Where all selected
/// objects have left the document a caret is, until they are back.
class SelectionObject final : public changes::SelectionKeeper
{
public:
    enum class Type : uint8_t { None, Text, Control };

    explicit SelectionObject(RangeKeeper &keeper, const Rendering &rendering = Rendering::byHtml());
    ~SelectionObject() override;
    SelectionObject(const SelectionObject &) = delete;
    SelectionObject &operator=(const SelectionObject &) = delete;
    dom::Document &document() const { return mKeeper.document(); }
    RangeKeeper &keeper() const { return mKeeper; }

    Type type() const;
    bool isCaret() const { return type() == Type::Text && anchor() == focus(); }
    bool isRange() const { return type() == Type::Text && !(anchor() == focus()); }
    /// Null places for None and Control.
    const Position &anchor() const { return mChosen->empty() || isThere() ? mAnchor.position() : mPlace.position(); }
    const Position &focus() const { return mChosen->empty() || isThere() ? mFocus.position() : mPlace.position(); }
    /// Anchor and focus in document order.
    Span span() const;
    /// The selected objects that are still in the tree, in the order given.
    std::vector<Ref<dom::Element>> elements() const;

    /// Positions outside of the document's tree clear the selection; offsets are cut to what is there.
    void setCaret(const Position &p) { set(p, p); }
    void set(const Position &anchor, const Position &focus);
    /// Keeps the anchor.
    void extendTo(const Position &focus) { set(anchor(), focus); }
    void setControl(std::vector<Ref<dom::Element>> elements);
    /// Lets go of text and objects: a caret stays where they begin.
    void empty();
    void clear();

    /// Called after one of the setters, or a restore, changed something. Edits that carry places along don't call it:
    /// whoever edits knows.
    std::function<void()> selectionChanged;

    /// How often a setter or a restore changed something: whether it is where an edit left it.
    uint64_t moves() const { return mMoves; }

    // What the document's ranges share.
    /// Made at the first question.
    TextIndex &index();
    Bookmarks &bookmarks();
    /// Points at null once the selection is gone.
    const std::shared_ptr<SelectionObject *> &handle() const { return mHandle; }
    /// What shows and edits the document; null where nobody does. Not owned.
    RangeHost *host = nullptr;
    /// What else is chosen in the document; null for nothing. Not owned.
    StepListener *beside = nullptr;

    // changes::SelectionKeeper. Nodes that aren't there any more leave the selection as it is.
    changes::SavedSelection savedSelection() const override;
    void restoreSelection(const changes::SavedSelection &selection) override;
    void stepBegins() override;
    void stepEnds(changes::StepName step) override;
    void stepFails() override;
    void stepPlayed(changes::StepName step) override;

private:
    void tell();
    void restore(const changes::SavedSelection &saved);
    void choose(ElementMemory::Choice choice);
    dom::Element *elementOf(dom::NodeId id) const;
    /// Whether one of the selected objects is in the tree.
    bool isThere() const;
    RangeKeeper &mKeeper;
    LivePosition mAnchor;
    LivePosition mFocus;
    ElementMemory::Choice mChosen;       ///< the selected objects, also those that have gone and may come back
    ElementMemory::Choice mChosenBefore; ///< the open step
    LivePosition mPlace;                 ///< behind the first of them
    ElementMemory mMemory;
    bool mInStep = false;
    uint64_t mMoves = 0;
    const Rendering &mRendering;
    std::unique_ptr<TextIndex> mIndex;
    std::unique_ptr<Bookmarks> mBookmarks;
    std::shared_ptr<SelectionObject *> mHandle;
};

} // namespace ranges
