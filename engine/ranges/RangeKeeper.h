// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/Record.h"
#include "engine/dom/Document.h"
#include "engine/dom/Observer.h"
#include "engine/ranges/Position.h"

#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

namespace ranges {

class RangeKeeper;

/// What a live position holds on to when something is put in at its place. `None` stays in front of it, but goes behind
/// what takes the place of text that ended there. `Following` and `Preceding` stay beside the old content behind,
/// respectively in front of them: between two such ends lies nothing that came in at an end.
enum class Grip : uint8_t { None, Following, Preceding };

/// A position that edits carry along: with content around it that is put in, taken out or moved; in removed content it
/// goes to where that was. When the edit is undone it comes back into what comes back, unless somebody has set it
/// meanwhile.
class LivePosition
{
public:
    LivePosition() = default;
    LivePosition(RangeKeeper &keeper, const Position &position, Grip grip = Grip::None);
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
    uint64_t mTicket = 0; // names it in what the keeper remembers; 0 while it remembers nothing
    uint32_t mNote = 0;   // the number, from 1, of what is noted of it in the open step
    Grip mGrip = Grip::None;
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
///
/// Most of what an edit does to a place its inverse takes back: what was shifted is shifted back. Where it doesn't (the
/// content around a place goes, and all places in it fall on one), the place is remembered with the step, and put back
/// when the step is played the other way.
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

    // Steps, as `changes::SelectionKeeper` tells of them.
    void stepBegins();
    void stepEnds(changes::StepName step);
    void stepFails();
    void stepPlayed(changes::StepName step);

    void inserted(dom::Node &node) override;
    void removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before) override;
    void aboutToMove(dom::Node &) override {}
    void moved(dom::Node &node, dom::ParentNode &oldParent, dom::Node *oldBefore) override;
    void textReplaced(dom::CharacterData &node, uint32_t offset, uint32_t removed, uint32_t added) override;

private:
    friend class LivePosition;
    /// Where a position of the open step stood before it.
    struct Note
    {
        LivePosition *who; ///< null once it has gone
        dom::NodeId node;  ///< 0 for no place
        uint32_t offset;
        bool lost; ///< the inverse wouldn't bring it back
    };
    struct Place
    {
        uint64_t ticket;
        dom::NodeId node;
        uint32_t offset;
    };
    struct Memory
    {
        std::vector<Place> before, after;
    };

    void link(LivePosition &position);
    void unlink(LivePosition &position);
    void relink(LivePosition &position, const Position &to);
    void note(LivePosition &position, bool lost);
    void forget(LivePosition &position);
    /// Nothing where that node isn't there any more.
    std::optional<Position> noted(dom::NodeId id, uint32_t offset) const;
    void takeOver(LivePosition &from, LivePosition &to);
    void childPutIn(dom::Node &parent, uint32_t index);
    void childTakenOut(dom::Node &parent, uint32_t index);
    void moveAll(dom::Node *from, const Position &to);
    void remember(std::vector<Place> &places);

    dom::Document &mDocument;
    std::unordered_map<const dom::Node *, LivePosition *> mByNode;
    const dom::Node *mLastNode = nullptr; ///< the ends of a range are mostly set in the same node
    LivePosition **mLastFirst = nullptr;
    bool mInStep = false;
    std::vector<Note> mNotes;
    std::unordered_map<uint64_t, LivePosition *> mByTicket;
    uint64_t mLastTicket = 0;
    std::map<uint64_t, Memory> mMemories; // by the steps' numbers, which grow
    size_t mRemembered = 0;
};

} // namespace ranges
