// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/SumTree.h"
#include "engine/dom/Document.h"
#include "engine/dom/Observer.h"
#include "engine/ranges/Position.h"
#include "engine/ranges/Rendering.h"

#include <memory>

namespace ranges {

/// A stretch of inline content between two edges of blocks, in which a reader sees something: characters, breaks,
/// objects, or the empty line of a block that is held open.
struct TextRun
{
    /// A piece of it: (a part of) a text, a break, an object, or the block that is held open.
    struct Piece
    {
        dom::Node *node = nullptr;
        uint32_t from = 0;       ///< units of the text
        uint32_t chars = 0;      ///< what counts in front of it, in this run
        bool afterBlank = false; ///< a blank here would collapse
        bool preserved = false;
        bool hasControls = false; ///< line ends or tabs, which read as blanks
        uint32_t plain = 0;       ///< so many units from its start all show
    };
    std::vector<Piece> pieces;
    uint32_t length = 0; ///< without the boundary behind it
    bool held = false;   ///< the empty line of a block that is held open
    bool rule = false;   ///< an object on a line of its own: it counts itself, with no boundary behind it
    /// What can be passed over before the boundary.
    uint32_t content() const { return rule ? 1 : length; }
    bool endsWithBoundary() const { return !rule; }
    TextRun *previous = nullptr;
    TextRun *next = nullptr;

    uint32_t endOf(size_t piece) const { return piece + 1 < pieces.size() ? pieces[piece + 1].chars : length; }

    struct Traits
    {
        using Item = TextRun;
        using Sum = uint32_t;
        static base::SumTreeHook<TextRun, uint32_t> &hook(TextRun &run) { return run.mHook; }
        static uint32_t value(const TextRun &run) { return run.length + 1; }
    };

private:
    base::SumTreeHook<TextRun, uint32_t> mHook;
};

/// Counts what a reader sees of a document's BODY, in UTF-16 units: collapsed white space is one, a break and an object
/// are one each, and so is the boundary behind each run of text, the last one's too. What isn't displayed, and a block that is
/// empty without being held open, is none.
///
/// The runs stand in one flat sequence with sums, however deep their blocks are nested, so that a count for a place and
/// the place of a count take logarithmic time, and a piece of one run. An edit marks its place; the runs around it are
/// made anew when somebody asks. It doesn't go by boxes: a run changes with the text, and needs neither fonts nor a width.
class TextIndex final : public dom::MutationObserver
{
public:
    explicit TextIndex(dom::Document &document, const Rendering &rendering = Rendering::byHtml());
    ~TextIndex() override;
    TextIndex(const TextIndex &) = delete;
    TextIndex &operator=(const TextIndex &) = delete;
    dom::Document &document() const { return mDocument; }
    const Rendering &rendering() const { return mRendering; }
    dom::Element *limit() const { return mDocument.body(); }

    /// The end of the last run included.
    uint32_t total();
    /// What stands in front of the place. Places outside of BODY count as its ends.
    uint32_t countBefore(const Position &p);
    /// On which side of tags the place of a count is sought: in front of what follows or behind what precedes.
    enum class Side : uint8_t { Following, Preceding };
    /// Beyond the end it is BODY's end.
    Position placeAt(uint32_t count, Side side);

    /// The run that holds the count or whose boundary follows it; `base` is what stands in front of the run. Null from
    /// the end on.
    TextRun *runAt(uint32_t count, uint32_t *base = nullptr);
    TextRun *firstRun();
    TextRun *lastRun();
    uint32_t baseOf(const TextRun &run) const { return mRuns.sumBefore(run); }
    /// The run in which a place in a text stands, and what counts in front of it there; null for other places.
    TextRun *runAround(const Position &p, uint32_t *chars);
    /// The run that the leaf belongs to.
    TextRun *runOf(const dom::Node &leaf) const;
    static Position placeIn(const TextRun &run, uint32_t chars, Side side);
    /// The text of a part of a run, without what it has for objects (where wanted, one U+FFFC each); breaks are LF.
    static void read(const TextRun &run, uint32_t from, uint32_t to, QString &out, bool objects = false);
    /// The run's whole text with U+FFFC for objects, until something changes: searches ask for the same one many times.
    const QString &textOf(const TextRun &run);
    /// The element whose edge ends the run: the innermost block around it.
    dom::Element *blockOf(const TextRun &run) const;

    /// Nodes that were looked at so far; for checks of cost.
    uint64_t work() const { return mWork; }
    /// "" if a fresh index says the same, else the first difference.
    QString compareWithFresh();

    /// The element is shown in another way: `reframed` if it, or what is in it, stands in other lines or not at all.
    void styleChanged(dom::Element &element, bool reframed);

    // dom::MutationObserver
    void inserted(dom::Node &node) override;
    void removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before) override;
    void aboutToMove(dom::Node &) override {}
    void textReplaced(dom::CharacterData &node, uint32_t offset, uint32_t removed, uint32_t added) override;
    void attributeChanged(dom::Element &element, dom::Atom name, const QString *old) override;
    void heldOpenChanged(dom::Element &element) override;

private:
    struct Place
    {
        base::Ref<dom::Node> parent; ///< null: `node` itself changed
        base::Ref<dom::Node> node;   ///< or what stands behind the place
    };
    enum class Stop : uint8_t { Edge, End };
    bool isSkipped(const dom::Node &node) const;
    void ensure();
    void rebuild();
    void detailsChanged(dom::Node *details);
    void note(dom::Node &node);
    void rescan(const Place &place);
    void rescan(const Position &from, const Position &to);
    Position edgeBefore(Position p);
    Stop scan(Position &p, Position &near, TextRun &run);
    void finish(TextRun &run);
    void keep(std::unique_ptr<TextRun> run, TextRun *behind);
    void drop(TextRun *run, bool note);
    const TextRun *ruleAfter(const Position &p) const;
    TextRun *runBefore(const Position &p, bool *crossed, const dom::Node **leaf);
    uint32_t countIn(const TextRun &run, const dom::Text &text, uint32_t offset) const;
    size_t firstPieceOf(const TextRun &run, const dom::Node &leaf) const;
    Position outOfLeaves(const Position &p) const;

    dom::Document &mDocument;
    const Rendering &mRendering;
    base::SumTree<TextRun::Traits> mRuns;
    TextRun *mFirst = nullptr;
    TextRun *mLast = nullptr;
    std::vector<TextRun *> mByNode; // by id
    std::vector<Place> mPending;
    const TextRun *mTextRun = nullptr; ///< whose text is kept
    QString mText;
    mutable size_t mLastPiece = 0; ///< where the last one was found: the next is mostly near
    bool mBuilt = false;
    uint64_t mWork = 0;
};

/// An element that counts as one thing in a text: an object, but not a part that merely can't be edited.
bool isEmbedded(const dom::Element &element);

} // namespace ranges
