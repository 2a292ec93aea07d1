// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/RuleSet.h"
#include "engine/css/StyleBuilder.h"
#include "engine/css/StyleListener.h"
#include "engine/dom/Document.h"
#include "engine/dom/Observer.h"

#include <deque>
#include <functional>
#include <map>
#include <unordered_map>

namespace css {

/// A sheet as the cascade takes it, in its order.
struct ActiveSheet
{
    base::Ref<StyleSheet> sheet;
    QString baseURL; ///< against which imports were resolved; blocks hold their own
    MediaList media;
};

/// Supplies the author's sheets, in cascade order, when they are asked for.
using SheetSource = std::function<std::vector<ActiveSheet>()>;

/// The styles of one document. It observes the tree, notes what a change may have touched, and computes lazily: a style
/// is made when it is asked for, or when `update` finds that one already made may be another now.
///
/// Typing costs nothing here: text outside of STYLE elements concerns nobody, unless a rule asks for `:empty`.
/// Styles are shared: elements for which the same declarations apply under the same parent's style have one object.
/// An element outside of the document's tree gets a style as if it stood at the top of one.
class StyleEngine final : public dom::MutationObserver
{
public:
    explicit StyleEngine(dom::Document &document);
    ~StyleEngine() override;
    StyleEngine(const StyleEngine &) = delete;
    StyleEngine &operator=(const StyleEngine &) = delete;

    /// Exact at the time of the call: what waits is done first (`update`), unless it is asked from within a notice.
    /// The reference holds until the element's style changes or the element leaves the tree; keep a `Ref` for longer.
    const ComputedStyle &styleFor(dom::Element &element);
    /// The style of a generated box. Null where no rule speaks of it, or its `content` is none (normal, for ::before
    /// and
    /// ::after), or its display is; ::marker, ::first-line and ::first-letter then look like the element.
    const ComputedStyle *styleFor(dom::Element &element, Pseudo pseudo);
    /// What an anonymous box has under `parent`: inherited values, initial ones, and that display.
    base::Ref<const ComputedStyle> anonymousStyle(const ComputedStyle &parent, Display display);

    /// Does what waits: tells the listeners of every style that has become another. Cheap where nothing waits.
    void update();
    bool needsUpdate() const { return mSheetsChanged || mAllDirty || !mDirty.empty(); }

    void addListener(StyleListener *listener) { mListeners.push_back(listener); }
    void removeListener(StyleListener *listener) { std::erase(mListeners, listener); }

    const Medium &medium() const { return mMedium; }
    void setMedium(const Medium &medium);

    void setSheetSource(SheetSource source);
    /// Sheets came, went or were written to.
    void sheetsChanged();
    /// The element's style over its rules: a runtime style came, went or changed.
    void styleOfElementChanged(dom::Element &element) { mark(element, selfDirty); }
    /// The block that lies over the inline style; null for none. Asked for every element that is computed.
    std::function<base::Ref<DeclarationBlock>(const dom::Element &)> runtimeBlock;

    /// How many styles of elements were computed or found shared since the start: a measure of work, for tests.
    uint64_t computations() const { return mComputations; }
    /// The block that the text of a `style` attribute makes; the same for the same text.
    base::Ref<DeclarationBlock> inlineBlock(const QString &text);
    ValueMode valueMode() const { return mDocument->isQuirks() ? ValueMode::Quirks : ValueMode::Strict; }
    dom::Document &document() const { return *mDocument; }

    // dom::MutationObserver
    void inserted(dom::Node &node) override;
    void aboutToRemove(dom::Node &node) override;
    void removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before) override;
    void textReplaced(dom::CharacterData &node, uint32_t offset, uint32_t removed, uint32_t added) override;
    void attributeChanged(dom::Element &element, dom::Atom name, const QString *old) override;

private:
    static constexpr uint8_t selfDirty = 1;
    static constexpr uint8_t subtreeDirty = 2;

    struct PseudoStyle
    {
        Pseudo pseudo;
        base::Ref<const ComputedStyle> style; ///< null: none
    };
    /// What a `styleSlot` points to; lives in `mSlots`.
    struct Slot
    {
        base::Ref<const ComputedStyle> style;
        std::vector<PseudoStyle> pseudos; ///< those that were asked for
        uint8_t dirty = 0;
        bool childrenInheritMore = false; ///< a child has `inherit` for something that isn't inherited by itself
    };
    using Blocks = std::vector<base::Ref<DeclarationBlock>>;
    using Key = std::vector<const void *>;
    struct Shared
    {
        base::Ref<const ComputedStyle> style;
        base::Ref<const ComputedStyle> parent; ///< keeps the pointers of the key from being given to others
        Blocks blocks;
        bool inheritedExplicitly = false;
    };

    static Slot *slotOf(const dom::Node &node) { return static_cast<Slot *>(node.styleSlot); }
    Slot &newSlot(dom::Element &element);
    void dropSlot(dom::Node &node);
    void dropSlots(dom::Node &top);

    void mark(dom::Element &element, uint8_t dirty);
    void markReach(dom::Element &element, uint8_t reach);
    void markRun(dom::Element *first, uint8_t dirty, bool behind, int atMost);
    void neighboursChanged(dom::ParentNode &parent, dom::Element *previous, dom::Element *next, dom::Atom name);
    void wordsChanged(dom::Element &element, const QHash<QString, uint8_t> &table, const QString *old,
                      const QString *now);
    void concernsSheets(const dom::Node &node);
    void announce();

    void rebuildRules();
    void addRules(const std::vector<Rule> &rules, RuleSet &set);
    struct Visit
    {
        dom::Element *element;
        bool force; ///< its parent changed
        bool all;   ///< and so do all below
        bool quiet; ///< a reframed ancestor was told of
    };
    void updateTree(dom::Element &top, bool all);
    void visit(const Visit &at, std::vector<Visit> &pending);
    Difference updatePseudos(dom::Element &element, Slot &slot);
    const RuleSet &userAgentRules() const;

    const ComputedStyle &computed(dom::Element &element);
    /// Null where no rule speaks of the pseudo-element.
    base::Ref<const ComputedStyle> compute(const dom::Element &element, Pseudo pseudo, const ComputedStyle &parent,
                                           bool *inheritedExplicitly);
    base::Ref<const ComputedStyle> build(const dom::Element &element, Pseudo pseudo, const ComputedStyle &parent,
                                         const Blocks &blocks, bool *shareable, bool *inheritedExplicitly);
    /// What applies, from the weakest to the strongest. `found`: whether a rule spoke of the pseudo-element.
    Blocks matchedBlocks(const dom::Element &element, Pseudo pseudo);

    base::Ref<dom::Document> mDocument;
    Medium mMedium;
    SheetSource mSource;
    std::unique_ptr<RuleSet> mAuthor;
    SiblingPlaces mPlaces;
    std::deque<Slot> mSlots;
    std::vector<Slot *> mFreeSlots;
    std::vector<dom::NodeId> mDirty;
    std::map<Key, Shared> mShared;
    QHash<QString, base::Ref<DeclarationBlock>> mBlocks; ///< of attributes, by text
    std::vector<StyleListener *> mListeners;
    uint64_t mComputations = 0;
    bool mSheetsChanged = true;
    bool mAllDirty = false;
    bool mUpdating = false;
    bool mAnnounced = false;
    bool mUsedViewport = false;
    bool mUsedAttribute = false;
};

} // namespace css
