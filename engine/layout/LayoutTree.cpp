// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/LayoutTree.h"

#include "engine/dom/CharacterData.h"
#include "engine/dom/Names.h"
#include "engine/layout/BoxBuilder.h"
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Generated.h"

namespace layout {

LayoutTree::LayoutTree(dom::Document &document, StyleSource &styles) : mDocument(document), mStyles(styles)
{
    mDocument.addObserver(this);
    mStyles.addListener(this);
}

LayoutTree::~LayoutTree()
{
    dropAll();
    mStyles.removeListener(this);
    mDocument.removeObserver(this);
}

void LayoutTree::dropAll()
{
    mPending.clear();
    mRoot.reset();
    mRebuildAll = true;
}

void LayoutTree::setViewport(QSize size)
{
    if (size == mViewport) return;
    mViewport = size;
    if (mRoot) mRoot->needsLayout = true;
    ++mVersion;
}

void LayoutTree::setViewScroll(QPointF scroll)
{
    mViewScroll = scroll;
    if (mRoot) mRoot->rareData().viewScroll = scroll;
}

void LayoutTree::boxMade(BlockBox &box)
{
    if (box.anonymous || !box.element()) return;
    box.moved = movesWhenShown(box.style());
    if (!box.moved || box.pseudo != Pseudo::None) return;
    const dom::NodeId id = box.element()->id();
    const auto at = std::lower_bound(mMoved.begin(), mMoved.end(), id);
    if (at == mMoved.end() || *at != id) mMoved.insert(at, id);
}

std::vector<BlockBox *> LayoutTree::movedBoxes()
{
    std::vector<BlockBox *> boxes;
    std::erase_if(mMoved, [&](dom::NodeId id) {
        dom::Node *node = mDocument.nodeById(id);
        Box *box = node ? boxOf(*node) : nullptr;
        if (!box || !box->moved) return true;
        boxes.push_back(box->asBlock());
        return false;
    });
    return boxes;
}

void LayoutTree::setImageSource(ImageSource *images)
{
    mImages = images;
    dropAll();
}

void LayoutTree::imageChanged(const QString &url)
{
    if (!mRoot) return;
    if (mPictures.contains(url)) { // markers and generated content that show it: they may be anywhere
        dropAll();
        return;
    }
    for (dom::Element *element : mDocument.elementsNamed(dom::names::object))
        if (Box *box = boxOf(*element); box && mDocument.resolve(element->attributeValue("data")) == url) markDirty(*box);
    for (dom::Element *element : mDocument.elementsNamed(dom::names::img)) {
        Box *box = boxOf(*element);
        if (!box || mDocument.resolve(element->attributeValue("src")) != url) continue;
        markDirty(*box);
    }
}

// ---- What changes ----

void LayoutTree::note(dom::ParentNode &parent, dom::Node *at)
{
    if (mRebuildAll) return;
    for (const Pending &pending : mPending)
        if (pending.parent == &parent && (pending.at == at || pending.at == &parent)) return;
    if (mPending.size() >= 24) {
        // Too many places to keep apart: each parent is made anew as a whole. `at` is then the parent itself.
        for (Pending &pending : mPending) pending.at = pending.parent;
        at = &parent;
        std::sort(mPending.begin(), mPending.end(), [](const Pending &a, const Pending &b) { return a.parent < b.parent; });
        mPending.erase(std::unique(mPending.begin(), mPending.end(), [](const Pending &a, const Pending &b) { return a.parent == b.parent; }), mPending.end());
        for (const Pending &pending : mPending)
            if (pending.parent == &parent) return;
        if (mPending.size() >= 4000) {
            dropAll();
            return;
        }
    }
    mPending.push_back({&parent, at});
}

void LayoutTree::forget(dom::Node &node)
{
    for (std::size_t i = 0; i < mPending.size();) {
        Pending &pending = mPending[i];
        if (node.contains(*pending.parent)) {
            pending = mPending.back();
            mPending.pop_back();
            continue;
        }
        if (pending.at == &node) pending.at = node.nextSibling();
        ++i;
    }
}

void LayoutTree::boxGone(Box &box)
{
    if (box.node() && box.node()->layoutSlot == &box) box.node()->layoutSlot = nullptr;
}

namespace {

// A part of a table is another, from `part` outwards. What stands in a cell is none of the grid's business.
void gridChanged(Box *part)
{
    for (; part && (part->isTablePart() || part->isTable()); part = part->parent()) {
        if (part->isCell() && !part->isAnonymous()) return;
        if (part->isTable()) {
            static_cast<TableBox *>(part)->gridValid = false;
            return;
        }
    }
}

// Every list that may name a box forgets it before it goes.
void unhook(Box &box)
{
    BlockBox *block = box.asBlock();
    BlockBox *parent = box.blockParent();
    if (parent && block && parent->rare) std::erase(parent->rare->dirty, block);
    if (block && block->positioned) {
        for (BlockBox *up = parent; up; up = up->blockParent())
            if (up->rare) std::erase(up->rare->positioned, block);
    }
    if (parent && parent->inlineContent) {
        parent->inlineContent->itemsValid = false;
        parent->inlineContent->lines.clear();
        parent->inlineContent->fragments.clear();
        parent->inlineContent->items.clear();
    }
    gridChanged(box.parent());
    if (parent && block && block->inSumTree) {
        parent->flow.remove(*block);
        block->inSumTree = false;
    }
}

void unhookTree(Box &box)
{
    for (Box *child = box.firstChild(); child; child = child->next()) unhookTree(*child);
    BlockBox *block = box.asBlock();
    if (block && block->positioned)
        for (BlockBox *up = box.blockParent(); up; up = up->blockParent())
            if (up->rare) std::erase(up->rare->positioned, block);
}

} // namespace

void LayoutTree::aboutToRemove(dom::Node &node)
{
    mCounters.forget();
    if (mRebuildAll) return;
    forget(node);
    for (dom::Node *each = &node; each; each = each->next(&node)) {
        Box *box = boxOf(*each);
        if (!box) continue;
        if (!box->parent() || box->parent() == mRoot.get()) {
            dropAll();
            return;
        }
        mRecount = mRecount || counts(box->style());
        // What a block leaves behind concerns its neighbours, which are marked when the place is made anew.
        const bool inFlow = box->isBlockBox() && box->asBlock()->inSumTree;
        markDirty(inFlow ? *box : *box->parent());
        if (BlockBox *block = box->blockParent()) block->needsLayout = block->needsLayout || !box->isBlockBox();
        unhookTree(*box);
        unhook(*box);
        Box *parent = box->parent();
        parent->unlinkChild(box);
        delete box;
    }
}

/// The list box whose width and line what stands below `parent` makes, without boxes of its own; null for none.
static dom::Element *selectAround(dom::Node *parent)
{
    while (parent && parent->isElement()) {
        dom::Element *element = parent->asElement();
        if (element->is(dom::names::select)) return element;
        if (!element->is(dom::names::option) && !element->is(dom::names::optgroup)) return nullptr;
        parent = element->parentNode();
    }
    return nullptr;
}

void LayoutTree::removed(dom::Node &node, dom::ParentNode &parent, dom::Node *before)
{
    if (dom::Element *select = selectAround(&parent)) return reattachElement(*select);
    if (node.isText() || node.isElement()) note(parent, before);
}

void LayoutTree::inserted(dom::Node &node)
{
    mCounters.forget();
    if (dom::Element *select = selectAround(node.parentNode())) return reattachElement(*select);
    if ((node.isText() || node.isElement()) && node.parentNode()) note(*node.parentNode(), &node);
}

void LayoutTree::textReplaced(dom::CharacterData &node, uint32_t, uint32_t, uint32_t)
{
    if (mRebuildAll || !node.isText() || !node.parentNode()) return;
    if (dom::Element *select = selectAround(node.parentNode())) return reattachElement(*select);
    auto *box = static_cast<TextBox *>(boxOf(node));
    BlockBox *block = box ? box->blockParent() : nullptr;
    const bool blank = QStringView(node.data()).trimmed().isEmpty();
    if (!block || blank || box->wasBlank != blank) {
        note(*node.parentNode(), &node);
        if (!block) return;
    }
    if (block->inlineContent) block->inlineContent->itemsValid = false;
    markDirty(*block);
    block->needsLayout = true;
}

void LayoutTree::attributeChanged(dom::Element &element, dom::Atom name, const QString *)
{
    mCounters.forget();
    if (dom::Element *select = selectAround(&element); select && select != &element) return reattachElement(*select);
    // What style doesn't tell of: content and sizes that stand in attributes.
    using namespace dom::names;
    if (name == src || name == alt || name == dom::names::type || name == value || name == colspan || name == rowspan || name == dom::names::span ||
        name == start || name == dom::names::size || name == rows || name == cols || name == "selected" || name == "data" || name == "open")
        reattachElement(element);
}

void LayoutTree::heldOpenChanged(dom::Element &element)
{
    Box *box = boxOf(element);
    if (box && box->isBlockBox() && !element.isHeldOpen() && box->asBlock()->inlineContent) {
        markDirty(*box);
        box->asBlock()->inlineContent->itemsValid = false;
        box->needsLayout = true;
    }
    note(element, nullptr);
}

void LayoutTree::reattachElement(dom::Element &element)
{
    if (mRebuildAll || !element.parentNode()) return;
    dom::ParentNode &parent = *element.parentNode();
    aboutToRemove(element);
    note(parent, &element);
}

void LayoutTree::styleChanged(dom::Element &element, css::Difference difference)
{
    if (mRebuildAll || difference == css::Difference::None) return;
    Box *box = boxOf(element);
    if (difference == css::Difference::Reframe || !box) {
        reattachElement(element);
        return;
    }
    restyle(element);
}

void LayoutTree::stylesInvalidated()
{
    mStylesWait = true;
}

namespace {

// Text and anonymous boxes stand with their parent's style.
void shareStyle(Box &box, const StyleRef &style)
{
    box.setStyle(style);
    box.flowValid = box.widthsValid = false;
    if (box.isTable()) gridChanged(&box);
    if (BlockBox *block = box.asBlock(); block && block->anonymous) {
        block->needsLayout = true;
        if (block->inlineContent) block->inlineContent->itemsValid = false;
    }
    for (Box *child = box.firstChild(); child; child = child->next())
        if (child->pseudo == Pseudo::None && (child->isText() || child->isAnonymous())) shareStyle(*child, style);
}

} // namespace

void LayoutTree::restyle(dom::Element &element)
{
    Box *box = boxOf(element);
    const StyleRef style = mStyles.styleFor(element);
    const bool shows = style && !isHidden(element, *style) && !isContents(*style);
    const bool hadGenerated = box && ((box->firstChild() && box->firstChild()->pseudo != Pseudo::None) ||
                                      (box->lastChild() && box->lastChild()->pseudo != Pseudo::None));
    bool same = box && shows && !hadGenerated && !hasGeneratedContent(*this, element);
    if (same) {
        const BoxDecision decision = decideBox(element, *style);
        const BlockBox *block = box->asBlock();
        same = decision.kind == box->kind() && decision.floating == box->floating && decision.positioned == box->positioned &&
               decision.inlineLevel == box->inlineLevel && !decision.listItem && !(block && block->isListItem) &&
               (!block || block->isTable() || decision.formattingRoot == (block->item ? block->styledRoot : block->formattingRoot)) &&
               isPositionedStyle(*box) == isPositioned(*style) && (!block || movesWhenShown(*style) == movesWhenShown(box->style())) &&
               style->rare().columnSpanAll == box->style().rare().columnSpanAll &&
               collapsesBlanks(*style) == collapsesBlanks(box->style()) && preservesLineBreaks(*style) == preservesLineBreaks(box->style());
        if (same && block) const_cast<BlockBox *>(block)->clips = decision.clips;
    }
    if (!same) {
        reattachElement(element);
        return;
    }
    shareStyle(*box, style);
    BlockBox *block = box->asBlock();
    if (block) {
        block->dependsOnHeight = dependsOnContainingHeight(*block);
        if (block->inlineContent) block->inlineContent->itemsValid = false;
    }
    for (Box *child = box->firstChild(); child; child = child->next())
        if (BlockBox *inner = child->asBlock(); inner && inner->anonymous && inner->inlineContent) inner->inlineContent->itemsValid = false;
    if (!block && box->blockParent() && box->blockParent()->inlineContent) box->blockParent()->inlineContent->itemsValid = false;
    gridChanged(box->isTablePart() ? box->parent() : box);
    for (Box *child = box->firstChild(); child; child = child->next())
        if (child->isAnonymous()) markDirty(*child);
    markDirty(*box);
}

void LayoutTree::markDirty(Box &box)
{
    ++mVersion;
    BlockBox *block = box.isBlockBox() ? box.asBlock() : box.blockParent();
    if (!block) return;
    const bool knew = block->needsLayout || block->childNeedsLayout;
    block->needsLayout = true;
    block->flowValid = block->widthsValid = false;
    if (block->isTable()) static_cast<TableBox *>(block)->columnsValid = false;
    // Its parents may know; a memo may have been filled since by a question about widths only within an update. A box that
    // has just been made is dirty without its parent's knowing which one it is.
    if (BlockBox *parent = block->blockParent(); knew && parent) {
        if (parent->needsLayout) return;
        const auto *rare = parent->rare.get();
        const bool listed = rare && (rare->allDirty || std::find(rare->dirty.begin(), rare->dirty.end(), block) != rare->dirty.end());
        if (parent->childNeedsLayout && listed) return;
    }
    for (BlockBox *child = block, *parent = block->blockParent(); parent; child = parent, parent = parent->blockParent()) {
        auto &rare = parent->rareData();
        if (!rare.allDirty && std::find(rare.dirty.begin(), rare.dirty.end(), child) == rare.dirty.end()) rare.dirty.push_back(child);
        if (rare.dirty.size() > 64) {
            rare.allDirty = true;
            rare.dirty.clear();
        }
        const bool parentKnew = parent->childNeedsLayout || parent->needsLayout;
        parent->childNeedsLayout = true;
        parent->flowValid = parent->widthsValid = false;
        if (parent->isTable()) static_cast<TableBox *>(parent)->columnsValid = false;
        if (parentKnew && parent->blockParent() && parent->blockParent()->childNeedsLayout) break;
    }
}

// ---- Doing it ----

bool LayoutTree::needsUpdate() const
{
    return mRebuildAll || mStylesWait || !mPending.empty() || !mRoot || mRoot->needsLayout || mRoot->childNeedsLayout;
}

void LayoutTree::buildAll()
{
    mPending.clear();
    mRoot.reset();
    mRebuildAll = false;
    mShowCounters.clear();
    mRoot = BoxBuilder(*this).buildRoot();
    if (mRoot) mRoot->rareData().viewScroll = mViewScroll;
    mRecount = false; // boxes were made in document order
    ++mVersion;
}

void LayoutTree::buildPending()
{
    while (!mPending.empty() && !mRebuildAll) {
        const Pending pending = mPending.back();
        mPending.pop_back();
        dom::Node *at = pending.at;
        bool whole = at == pending.parent;
        if (whole) at = nullptr;
        dom::ParentNode *parent = pending.parent;
        Box *box = nullptr;
        while (parent->isElement()) {
            box = boxOf(*parent);
            if (box && box->isBlockBox()) break;
            auto &element = static_cast<dom::Element &>(*parent);
            if (!box) {
                const StyleRef style = mStyles.styleFor(element);
                if (!style || !isContents(*style)) {
                    box = nullptr;
                    parent = nullptr;
                    break;
                }
            }
            at = parent;
            whole = false;
            parent = element.parentNode();
            box = nullptr;
            if (!parent) break;
        }
        if (!parent) continue;
        if (!box) { // the root element itself
            dropAll();
            continue;
        }
        BlockBox &block = *box->asBlock();
        if (block.isReplaced()) continue;
        gridChanged(&block);
        BoxBuilder builder(*this);
        if (whole || !builder.rebuildAround(block, *parent, at)) builder.rebuildChildren(block);
    }
    if (mRebuildAll) buildAll();
}

void LayoutTree::noteCounters(const dom::Element &element, const css::ComputedStyle &style)
{
    mRecount = mRecount || counts(style);
    if (showsCounters(style) && (mShowCounters.empty() || mShowCounters.back() != element.id())) mShowCounters.push_back(element.id());
}

// Something that counts came or went: what is shown behind it may be another number now.
void LayoutTree::recount()
{
    mRecount = false;
    mCounters.forget();
    std::sort(mShowCounters.begin(), mShowCounters.end());
    mShowCounters.erase(std::unique(mShowCounters.begin(), mShowCounters.end()), mShowCounters.end());
    std::erase_if(mShowCounters, [this](dom::NodeId id) {
        const dom::Node *node = mDocument.nodeById(id);
        return !node || !node->isConnected() || !node->layoutSlot;
    });
    if (mShowCounters.empty()) return;
    for (dom::Node *node = mDocument.documentElement(); node; node = node->next()) {
        Box *box = node->isElement() ? boxOf(*node) : nullptr;
        if (!box || !std::binary_search(mShowCounters.begin(), mShowCounters.end(), node->id())) continue;
        for (Box *child = box->firstChild(); child; child = child->next())
            if (child->anonymous || child->pseudo != Pseudo::None) recount(*child, *box->element());
    }
}

// Generated boxes stand among the element's own, or in anonymous ones around them.
void LayoutTree::recount(Box &box, dom::Element &element)
{
    for (Box *child = box.firstChild(); child; child = child->next()) {
        if (!child->isText()) {
            if (child->anonymous || child->pseudo != Pseudo::None) recount(*child, element);
            continue;
        }
        if (child->node() || box.node() != &element || box.pseudo == Pseudo::None) continue;
        auto &text = static_cast<TextBox &>(*child);
        const QString now = generatedText(*this, element, box.pseudo, box.style());
        if (now == text.generated) continue;
        text.generated = now;
        BlockBox &block = *text.blockParent();
        if (block.inlineContent) block.inlineContent->itemsValid = false;
        markDirty(block);
        block.needsLayout = true;
    }
}

void LayoutTree::update()
{
    if (mUpdating) return;
    mUpdating = true;
    mStyles.update();
    mStylesWait = false;
    mCounters.forget();
    if (mRebuildAll || !mRoot) buildAll();
    if (!mPending.empty()) buildPending();
    if (mRecount) recount();
    mCounters.forget();
    if (mRoot && (mRoot->needsLayout || mRoot->childNeedsLayout)) {
        const auto mode = mDocument.mode();
        Engine engine(mode == dom::DocumentMode::Quirks, mode != dom::DocumentMode::Standards,
                      {Unit::px(mViewport.width()), Unit::px(mViewport.height())}, mImages, mWork);
        engine.layoutRoot(*mRoot);
        ++mVersion;
    }
    mUpdating = false;
}

BlockBox &LayoutTree::root()
{
    update();
    if (!mRoot) { // a document without a root element
        mRoot = std::make_unique<BlockBox>(BoxKind::Block, nullptr, StyleRef(&css::ComputedStyle::initial()));
        mRoot->anonymous = true;
        mRoot->width = Unit::px(mViewport.width());
    }
    return *mRoot;
}

QSize LayoutTree::pageSize()
{
    const BlockBox &box = root();
    return {std::max(mViewport.width(), box.overflowRight.rounded()), std::max(mViewport.height(), box.overflowBottom.rounded())};
}

QString LayoutTree::markerText(BlockBox &item)
{
    refreshMarker(*this, item);
    return item.rare && item.rare->marker ? item.rare->marker->text : QString();
}

} // namespace layout
