// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/BoxBuilder.h"

#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Generated.h"

namespace layout {

namespace {

constexpr int deepest = 1200; // boxes below are left out; the parser keeps trees shallower

bool isTableChild(const Box &box)
{
    return box.kind() == BoxKind::TableSection || box.kind() == BoxKind::TableRow || box.kind() == BoxKind::TableCell ||
           box.kind() == BoxKind::TableColumn || (box.isBlockBox() && isCaption(static_cast<const BlockBox &>(box)));
}

bool reusable(const Box &box, const Box &made)
{
    return box.kind() == made.kind() && box.floating == made.floating && box.positioned == made.positioned &&
           box.inlineLevel == made.inlineLevel && (box.item ? box.styledRoot : box.formattingRoot) == made.formattingRoot;
}

} // namespace

BlockBox *BoxBuilder::anonymous(BoxKind kind, const Box &parent)
{
    BlockBox *box = kind == BoxKind::Table ? new TableBox(nullptr, parent.styleRef()) : new BlockBox(kind, nullptr, parent.styleRef());
    box->anonymous = true;
    box->dependsOnHeight = true; // some inline box in it may
    if (kind == BoxKind::TableCell) box->formattingRoot = true;
    ++mTree.mWork.boxesBuilt;
    return box;
}

void BoxBuilder::append(Box &parent, Box *child, Box *before)
{
    parent.insertChild(child, before);
    BlockBox *block = child->asBlock();
    BlockBox *owner = parent.asBlock();
    if (owner && child->isOutOfFlow()) owner->hasOutOfFlow = true;
    if (block) setItem(*block, owner && owner->hasItems() && !block->isOutOfFlow());
    if (!block || !owner || child->isOutOfFlow() || child->inlineLevel) return;
    if (owner->hasItems() || (owner->kind() != BoxKind::Block && owner->kind() != BoxKind::TableCell)) return;
    BlockBox *next = nullptr;
    for (Box *b = before; b && !next; b = b->next())
        if (b->isBlockBox() && b->asBlock()->inSumTree) next = b->asBlock();
    owner->flow.insert(*block, next);
    block->inSumTree = true;
}

// An item is a formatting context of its own, sized by its container; whatever else a box becomes, that ends.
void BoxBuilder::setItem(BlockBox &box, bool item)
{
    if (box.item == item) return;
    if (item) box.styledRoot = box.formattingRoot;
    box.item = item;
    box.formattingRoot = item || box.styledRoot;
    box.heightForced = false;
    if (box.rare) box.rare->item.reset();
    mTree.markDirty(box);
}

bool BoxBuilder::isBlank(const Box &box) const
{
    if (!box.isText()) return false;
    const auto &text = static_cast<const TextBox &>(box);
    const bool lines = preservesLineBreaks(text.style());
    if (!collapsesBlanks(text.style())) return text.source().isEmpty();
    for (const QChar c : text.source()) {
        if (c == QLatin1Char('\n') && lines) return false;
        if (c != QLatin1Char(' ') && c != QLatin1Char('\n') && c != QLatin1Char('\t') && c != QLatin1Char('\r') && c != QLatin1Char('\f')) return false;
    }
    return true;
}

bool BoxBuilder::isBlockLevel(const Box &box) const
{
    return !box.inlineLevel && !box.isOutOfFlow();
}

std::unique_ptr<BlockBox> BoxBuilder::buildRoot()
{
    dom::Element *element = mTree.document().documentElement();
    if (!element) return nullptr;
    StyleRef style = mTree.styles().styleFor(*element);
    auto root = std::make_unique<BlockBox>(BoxKind::Block, nullptr, style);
    root->anonymous = true;
    root->formattingRoot = true;
    List list;
    addElement(*element, list);
    for (Box *box : list) {
        box->inlineLevel = false;
        append(*root, box);
    }
    sweep();
    return root;
}

// ---- Taking boxes apart ----

// Deletes the box and what is below it, but for boxes of elements, which wait to be taken over.
void BoxBuilder::dissolve(Box &box)
{
    BlockBox *block = box.asBlock();
    Box *parent = box.parent();
    if (parent) {
        if (block && block->inSumTree) {
            parent->asBlock()->flow.remove(*block);
            block->inSumTree = false;
        }
        if (BlockBox *outer = parent->asBlock(); block && outer && outer->rare) std::erase(outer->rare->dirty, block);
        parent->unlinkChild(&box);
    }
    if (block && box.node() && box.pseudo == Pseudo::None && boxOf(*box.node()) == &box) {
        mKept.push_back(block);
        return;
    }
    while (Box *child = box.firstChild()) dissolve(*child);
    mTree.boxGone(box);
    delete &box;
}

void BoxBuilder::sweep()
{
    for (std::size_t i = 0; i < mKept.size(); ++i) {
        BlockBox *box = mKept[i];
        if (box->parent() || box == mTree.mRoot.get()) continue;
        while (Box *child = box->firstChild()) dissolve(*child);
        mTree.boxGone(*box);
        delete box;
    }
    mKept.clear();
}

void BoxBuilder::rebuildChildren(BlockBox &block)
{
    while (Box *child = block.firstChild()) dissolve(*child);
    List list;
    dom::Element *element = block.element();
    if (element) {
        addInsideMarker(block, list);
        addPseudo(*element, Pseudo::Before, list);
        collect(block.styleRef(), element->firstChild(), nullptr, list);
        addPseudo(*element, Pseudo::After, list);
    }
    fill(block, std::move(list));
    setMarker(block);
    mTree.markDirty(block);
    block.needsLayout = true;
    sweep();
}

bool BoxBuilder::rebuildAround(BlockBox &block, dom::ParentNode &parent, dom::Node *at)
{
    if (const dom::Element *details = parent.asElement(); details && closedSummary(*details)) return false;
    if (block.inlineContent || block.flow.empty() || block.kind() == BoxKind::Table || block.isTablePart() == true) {
        if (block.inlineContent || !block.isCell() || block.flow.empty()) return false;
    }
    const auto isBoundary = [&](dom::Node &node) {
        Box *box = boxOf(node);
        return box && box->isBlockBox() && box->parent() == &block && box->asBlock()->inSumTree;
    };
    dom::Node *from = at ? at->previousSibling() : parent.lastChild();
    int steps = 0;
    while (from && !isBoundary(*from) && ++steps < 200) from = from->previousSibling();
    dom::Node *to = at;
    while (to && (to == at || !isBoundary(*to)) && ++steps < 400) {
        if (to == at && isBoundary(*to) && boxOf(*to)) break;
        to = to->nextSibling();
    }
    if (steps >= 200 || (!from && !to)) return false;
    Box *left = from ? boxOf(*from) : nullptr, *right = to ? boxOf(*to) : nullptr;
    for (Box *box = left ? left->next() : block.firstChild(); box != right;) {
        Box *next = box->next();
        if (box->pseudo != Pseudo::None || (box->anonymous && box->firstChild() && box->firstChild()->pseudo != Pseudo::None)) return false;
        box = next;
    }
    while (Box *box = left ? left->next() : block.firstChild()) {
        if (box == right) break;
        dissolve(*box);
    }
    List list;
    collect(block.styleRef(), from ? from->nextSibling() : parent.firstChild(), to, list);
    fillBlock(block, wrapTableParts(list, block), right, true);
    for (Box *box = left ? left->next() : block.firstChild(); box && box != right; box = box->next()) mTree.markDirty(*box);
    // The neighbours' margins meet others now. The block itself isn't marked: it would look at all its children.
    if (left) mTree.markDirty(*left);
    if (right) mTree.markDirty(*right);
    sweep();
    return true;
}

// ---- Making boxes ----

void BoxBuilder::collect(const StyleRef &style, dom::Node *from, dom::Node *to, List &list)
{
    if (mDepth > deepest) return;
    ++mDepth;
    const dom::Element *details = from ? from->parentElement() : nullptr;
    const dom::Element *summary = details ? closedSummary(*details) : nullptr;
    List held;
    for (dom::Node *node = from; node && node != to; node = node->nextSibling()) {
        List &into = summary && node != summary ? held : list;
        if (node->isText())
            addText(*node, style, into);
        else if (node->isElement())
            addElement(static_cast<dom::Element &>(*node), into);
    }
    if (!held.empty()) list.push_back(unseenBlock(style, std::move(held)));
    --mDepth;
}

// What closed details hold stands behind their summary, in a block of its own that is laid out and not shown.
Box *BoxBuilder::unseenBlock(const StyleRef &style, List &&list)
{
    auto *box = new BlockBox(BoxKind::Block, nullptr, style);
    box->anonymous = box->formattingRoot = box->clips = box->unseen = true;
    box->dependsOnHeight = true; // something in it may
    ++mTree.mWork.boxesBuilt;
    fill(*box, std::move(list));
    return box;
}

void BoxBuilder::addText(dom::Node &node, const StyleRef &style, List &list)
{
    auto *box = new TextBox(&node, style);
    box->wasBlank = QStringView(box->source()).trimmed().isEmpty();
    ++mTree.mWork.boxesBuilt;
    node.layoutSlot = box;
    list.push_back(box);
}

void BoxBuilder::addPseudo(dom::Element &element, Pseudo pseudo, List &list)
{
    const StyleRef style = generatedStyle(mTree, element, pseudo);
    if (!style) return;
    Box *box = generatedBox(mTree, element, pseudo, style);
    if (!box) return;
    ++mTree.mWork.boxesBuilt;
    mTree.noteCounters(element, *style);
    box->pseudo = pseudo;
    if (BlockBox *block = box->asBlock(); block && !block->isReplaced()) {
        List children;
        while (Box *child = block->firstChild()) {
            block->unlinkChild(child);
            children.push_back(child);
        }
        fill(*block, std::move(children));
    }
    list.push_back(box);
}

Box *BoxBuilder::boxFor(dom::Element &element, const StyleRef &style)
{
    const BoxDecision decision = decideBox(element, *style);
    Box *made = nullptr;
    if (decision.kind == BoxKind::LineBreak)
        made = new LineBreakBox(&element, style);
    else if (decision.kind == BoxKind::Inline)
        made = new InlineBox(&element, style);
    else if (decision.kind == BoxKind::Table)
        made = new TableBox(&element, style);
    else
        made = new BlockBox(decision.kind, &element, style);
    made->inlineLevel = decision.inlineLevel;
    made->floating = decision.floating;
    made->positioned = decision.positioned;
    if (BlockBox *block = made->asBlock()) {
        block->formattingRoot = block->formattingRoot || decision.formattingRoot;
        block->clips = decision.clips;
        mTree.boxMade(*block);
        block->isListItem = decision.listItem;
        block->dependsOnHeight = dependsOnContainingHeight(*block);
    }
    return made;
}

void BoxBuilder::addElement(dom::Element &element, List &list)
{
    const StyleRef style = mTree.styles().styleFor(element);
    if (!style || isHidden(element, *style)) return;
    if (isContents(*style)) {
        addPseudo(element, Pseudo::Before, list);
        collect(style, element.firstChild(), nullptr, list);
        addPseudo(element, Pseudo::After, list);
        return;
    }
    mTree.noteCounters(element, *style);
    Box *made = boxFor(element, style);
    Box *old = boxOf(element);
    if (old && !old->parent() && old->isBlockBox() && reusable(*old, *made) && !old->doomed) {
        // The old box has its content and its layout still.
        delete made;
        list.push_back(old);
        return;
    }
    if (old) old->doomed = true;
    ++mTree.mWork.boxesBuilt;
    element.layoutSlot = made;
    list.push_back(made);
    if (made->kind() == BoxKind::LineBreak || made->isReplaced() || mDepth > deepest) return;
    List children;
    if (BlockBox *block = made->asBlock()) addInsideMarker(*block, children);
    addPseudo(element, Pseudo::Before, children);
    collect(style, element.firstChild(), nullptr, children);
    addPseudo(element, Pseudo::After, children);
    if (element.is(dom::names::wbr) && element.space() == dom::Namespace::Html && children.empty()) {
        auto *chance = new TextBox(nullptr, style); // nothing but a place where the line may break
        chance->generated = QChar(0x200B);
        children.push_back(chance);
    }
    if (BlockBox *block = made->asBlock()) {
        fill(*block, std::move(children));
        setMarker(*block);
        return;
    }
    for (Box *child : wrapTableParts(children, *made)) append(*made, child);
}

// A marker inside is the first text of the item's first line.
void BoxBuilder::addInsideMarker(BlockBox &box, List &list)
{
    if (!box.isListItem) return;
    makeMarker(mTree, box);
    if (!box.rare || !box.rare->marker || !box.rare->marker->inside) return;
    if (box.rare->marker->image) {
        BlockBox *picture = generatedPicture(mTree, box.style().text().listStyleImage.text, box.styleRef());
        picture->pseudo = Pseudo::Marker;
        list.push_back(picture);
        return;
    }
    const StyleRef &own = box.rare->marker->style;
    auto *text = new TextBox(nullptr, own ? own : box.styleRef());
    text->generated = box.rare->marker->text;
    text->generated.replace(QLatin1Char(' '), QChar(0xA0)); // it neither collapses nor breaks
    text->pseudo = Pseudo::Marker;
    ++mTree.mWork.boxesBuilt;
    list.push_back(text);
}

void BoxBuilder::setMarker(BlockBox &box)
{
    if (box.isListItem) makeMarker(mTree, box);
}

void BoxBuilder::fill(BlockBox &box, List &&list)
{
    switch (box.kind()) {
    case BoxKind::Table:
        fillTable(static_cast<TableBox &>(box), list);
        break;
    case BoxKind::TableSection:
        fillSection(box, list);
        break;
    case BoxKind::TableRow:
        fillRow(box, list);
        break;
    case BoxKind::TableColumn:
        for (Box *child : list) {
            if (child->kind() == BoxKind::TableColumn)
                append(box, child);
            else
                dissolve(*child);
        }
        break;
    default:
        box.mode = layoutOfChildren(box, list);
        if (box.hasItems())
            fillItems(box, list);
        else
            fillBlock(box, wrapTableParts(list, box), nullptr, false);
    }
}

// Puts children into a block: all inline, or blocks with anonymous ones around stretches of inline content.
void BoxBuilder::fillBlock(BlockBox &box, const List &list, Box *before, bool keepsBlocks)
{
    const bool blocks = keepsBlocks || std::any_of(list.begin(), list.end(), [&](Box *b) { return isBlockLevel(*b); });
    if (!blocks) {
        const bool anyInline = std::any_of(list.begin(), list.end(), [&](Box *b) { return b->inlineLevel && !isBlank(*b); });
        box.inlineContent.reset();
        for (Box *child : list) {
            if (!anyInline && isBlank(*child)) {
                dissolve(*child);
                continue;
            }
            append(box, child, before);
        }
        const bool heldOpen = box.element() && box.element()->isHeldOpen() && !anyInline;
        if (anyInline || heldOpen) box.inlineContent = std::make_unique<InlineContent>();
        return;
    }
    box.inlineContent.reset();
    List run;
    const auto flush = [&] {
        const bool real = std::any_of(run.begin(), run.end(), [&](Box *b) { return b->inlineLevel && !isBlank(*b); });
        BlockBox *wrapper = real ? anonymous(BoxKind::Block, box) : nullptr;
        for (Box *child : run) {
            if (!wrapper && isBlank(*child))
                dissolve(*child);
            else
                append(wrapper ? static_cast<Box &>(*wrapper) : box, child, wrapper ? nullptr : before);
        }
        if (wrapper) {
            wrapper->inlineContent = std::make_unique<InlineContent>();
            append(box, wrapper, before);
        }
        run.clear();
    };
    for (Box *child : list) {
        if (isBlockLevel(*child)) {
            flush();
            append(box, child, before);
        } else {
            run.push_back(child);
        }
    }
    flush();
}

ChildLayout BoxBuilder::layoutOfChildren(const BlockBox &box, const List &list) const
{
    if (box.anonymous || box.kind() != BoxKind::Block) return ChildLayout::Flow;
    // One that is held open shows its line as a block does, until something comes into it.
    const bool empty = std::all_of(list.begin(), list.end(), [&](Box *b) { return isBlank(*b) || b->isOutOfFlow(); });
    if (empty && box.element() && box.element()->isHeldOpen()) return ChildLayout::Flow;
    switch (box.style().display()) {
    case css::Display::Flex:
    case css::Display::InlineFlex: return ChildLayout::Flex;
    case css::Display::Grid:
    case css::Display::InlineGrid: return ChildLayout::Grid;
    default: return ChildLayout::Flow;
    }
}

// Each child in flow is an item, each stretch of text one too, blanks alone aren't (CSS Flexible Box Layout 1, 4).
void BoxBuilder::fillItems(BlockBox &box, const List &list)
{
    box.inlineContent.reset();
    List run;
    const auto flush = [&] {
        const bool real = std::any_of(run.begin(), run.end(), [&](Box *b) { return !isBlank(*b); });
        BlockBox *wrapper = real ? anonymous(BoxKind::Block, box) : nullptr;
        for (Box *child : run) {
            if (wrapper)
                append(*wrapper, child);
            else
                dissolve(*child);
        }
        if (wrapper) {
            wrapper->inlineContent = std::make_unique<InlineContent>();
            append(box, wrapper);
        }
        run.clear();
    };
    for (Box *child : wrapTableParts(list, box)) {
        if (child->inlineLevel) {
            run.push_back(child);
            continue;
        }
        flush();
        append(box, child);
    }
    flush();
}

BoxBuilder::List BoxBuilder::wrapTableParts(const List &list, const Box &parent)
{
    if (std::none_of(list.begin(), list.end(), [](Box *b) { return isTableChild(*b); })) return list;
    List result, run;
    const auto flush = [&] {
        if (run.empty()) return;
        auto *table = static_cast<TableBox *>(anonymous(BoxKind::Table, parent));
        table->inlineLevel = parent.isInline();
        fillTable(*table, run);
        result.push_back(table);
        run.clear();
    };
    for (Box *box : list) {
        if (isTableChild(*box)) {
            run.push_back(box);
        } else if (!run.empty() && isBlank(*box)) {
            dissolve(*box);
        } else {
            flush();
            result.push_back(box);
        }
    }
    flush();
    return result;
}

void BoxBuilder::fillTable(TableBox &table, const List &list)
{
    table.gridValid = false;
    BlockBox *section = nullptr;
    List loose;
    const auto flush = [&] {
        const bool real = std::any_of(loose.begin(), loose.end(), [&](Box *b) { return !isBlank(*b); });
        if (real) {
            section = anonymous(BoxKind::TableSection, table);
            fillSection(*section, loose);
            append(table, section);
        } else {
            for (Box *box : loose) dissolve(*box);
        }
        loose.clear();
    };
    for (Box *box : list) {
        const bool proper = box->kind() == BoxKind::TableSection || box->kind() == BoxKind::TableColumn ||
                            (box->isBlockBox() && isCaption(*box->asBlock()));
        if (proper) {
            flush();
            append(table, box);
        } else if (loose.empty() && isBlank(*box)) {
            dissolve(*box);
        } else {
            loose.push_back(box);
        }
    }
    flush();
}

void BoxBuilder::fillSection(BlockBox &section, const List &list)
{
    List loose;
    const auto flush = [&] {
        const bool real = std::any_of(loose.begin(), loose.end(), [&](Box *b) { return !isBlank(*b); });
        if (real) {
            BlockBox *row = anonymous(BoxKind::TableRow, section);
            fillRow(*row, loose);
            append(section, row);
        } else {
            for (Box *box : loose) dissolve(*box);
        }
        loose.clear();
    };
    for (Box *box : list) {
        if (box->kind() == BoxKind::TableRow) {
            flush();
            append(section, box);
        } else if (loose.empty() && isBlank(*box)) {
            dissolve(*box);
        } else {
            loose.push_back(box);
        }
    }
    flush();
}

void BoxBuilder::fillRow(BlockBox &row, const List &list)
{
    List loose;
    const auto flush = [&] {
        const bool real = std::any_of(loose.begin(), loose.end(), [&](Box *b) { return !isBlank(*b); });
        if (real) {
            BlockBox *cell = anonymous(BoxKind::TableCell, row);
            fillBlock(*cell, loose, nullptr, false);
            append(row, cell);
        } else {
            for (Box *box : loose) dissolve(*box);
        }
        loose.clear();
    };
    for (Box *box : list) {
        if (box->isCell()) {
            flush();
            append(row, box);
        } else if (loose.empty() && isBlank(*box)) {
            dissolve(*box);
        } else {
            loose.push_back(box);
        }
    }
    flush();
}

} // namespace layout
