// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/ChangeTracker.h"
#include "engine/ranges/RangeKeeper.h"
#include "engine/ranges/Rendering.h"

#include <functional>
#include <memory>
#include <vector>

namespace ranges {

class Bookmarks;
class RangeHost;
class TextIndex;

/// What is selected in a document: nothing, a stretch of text (a caret where it is empty), or objects. It keeps exactly
/// the places that it was given, edits carry them along, and records save them by node and offset.
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
    const Position &anchor() const { return mAnchor.position(); }
    const Position &focus() const { return mFocus.position(); }
    /// Anchor and focus in document order.
    Span span() const;
    /// The selected objects that are still in the tree, in the order given.
    std::vector<Ref<dom::Element>> elements() const;

    /// Positions outside of the document's tree clear the selection; offsets are cut to what is there.
    void setCaret(const Position &p) { set(p, p); }
    void set(const Position &anchor, const Position &focus);
    /// Keeps the anchor.
    void extendTo(const Position &focus) { set(mAnchor.position(), focus); }
    void setControl(std::vector<Ref<dom::Element>> elements);
    void clear();

    /// Called after one of the setters, or a restore, changed something. Edits that carry places along don't call it:
    /// whoever edits knows.
    std::function<void()> selectionChanged;

    // What the document's ranges share.
    /// Made at the first question.
    TextIndex &index();
    Bookmarks &bookmarks();
    /// Points at null once the selection is gone.
    const std::shared_ptr<SelectionObject *> &handle() const { return mHandle; }
    /// What shows and edits the document; null where nobody does. Not owned.
    RangeHost *host = nullptr;

    // changes::SelectionKeeper. Nodes that aren't there any more leave the selection as it is.
    changes::SavedSelection savedSelection() const override;
    void restoreSelection(const changes::SavedSelection &selection) override;
    void stepBegins() override { mKeeper.stepBegins(); }
    void stepEnds(changes::StepName step) override { mKeeper.stepEnds(step); }
    void stepFails() override { mKeeper.stepFails(); }
    void stepPlayed(changes::StepName step) override;

private:
    void tell();
    RangeKeeper &mKeeper;
    LivePosition mAnchor;
    LivePosition mFocus;
    std::vector<Ref<dom::Element>> mElements;
    const Rendering &mRendering;
    std::unique_ptr<TextIndex> mIndex;
    std::unique_ptr<Bookmarks> mBookmarks;
    std::shared_ptr<SelectionObject *> mHandle;
};

} // namespace ranges
