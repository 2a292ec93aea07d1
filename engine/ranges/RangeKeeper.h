// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"
#include "engine/dom/Observer.h"
#include "engine/ranges/Position.h"

#include <unordered_map>

namespace ranges {

class RangeKeeper;

/// A position that edits carry along. In replaced text it stays in front of what is put in at its place, and goes
/// behind what takes the place of text that ended there; in removed content it goes to where that was; in moved content
/// it moves along.
class LivePosition
{
public:
    LivePosition() = default;
    LivePosition(RangeKeeper &keeper, const Position &position);
    LivePosition(const LivePosition &other);
    LivePosition(LivePosition &&other) noexcept;
    ~LivePosition();
    LivePosition &operator=(const LivePosition &other);
    LivePosition &operator=(const Position &position);

    const Position &position() const { return mPosition; }
    operator const Position &() const { return mPosition; }

private:
    friend class RangeKeeper;
    RangeKeeper *mKeeper = nullptr;
    Position mPosition;
    LivePosition *mNext = nullptr; // among those in the same node
    LivePosition *mPrevious = nullptr;
};

/// Two of them. The ends may pass each other only if whoever sets them lets them.
struct LiveRange
{
    LivePosition start;
    LivePosition end;
    LiveRange() = default;
    LiveRange(RangeKeeper &keeper, const Span &span) : start(keeper, span.start), end(keeper, span.end) {}
    Span span() const { return {start.position(), end.position()}; }
};

/// Keeps the live positions of one document in its tree. They are found by the node in which they stand, so that an
/// edit costs what the positions near it cost, however many there are elsewhere.
class RangeKeeper final : public dom::MutationObserver
{
public:
    explicit RangeKeeper(dom::Document &document);
    ~RangeKeeper() override;
    RangeKeeper(const RangeKeeper &) = delete;
    RangeKeeper &operator=(const RangeKeeper &) = delete;
    dom::Document &document() const { return mDocument; }

    /// A text is about to be cut at `offset`, and `rest` has what stood behind: positions there go along.
    void carryOver(dom::Text &text, uint32_t offset, dom::Text &rest);

    void inserted(dom::Node &node) override;
    void removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before) override;
    void aboutToMove(dom::Node &) override {}
    void moved(dom::Node &node, dom::ParentNode &oldParent, dom::Node *oldBefore) override;
    void textReplaced(dom::CharacterData &node, uint32_t offset, uint32_t removed, uint32_t added) override;

private:
    friend class LivePosition;
    void link(LivePosition &position);
    void unlink(LivePosition &position);
    void shift(dom::Node &parent, uint32_t behind, int32_t by);
    void moveAll(dom::Node *from, const Position &to);

    dom::Document &mDocument;
    std::unordered_map<const dom::Node *, LivePosition *> mByNode;
};

} // namespace ranges
