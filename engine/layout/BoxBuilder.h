// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/LayoutTree.h"

namespace layout {

/// Makes boxes of nodes, with the anonymous boxes that CSS asks for. Boxes of elements that have one already, and still
/// need the same, are taken over with their layout.
class BoxBuilder
{
public:
    explicit BoxBuilder(LayoutTree &tree) : mTree(tree) {}

    std::unique_ptr<BlockBox> buildRoot();
    /// Makes all children of a block anew.
    void rebuildChildren(BlockBox &block);
    /// Makes anew only what stands around a child node; false where the whole block must be.
    bool rebuildAround(BlockBox &block, dom::ParentNode &parent, dom::Node *at);

private:
    using List = std::vector<Box *>;
    /// Boxes of `from` and its siblings up to `to`.
    void collect(const StyleRef &style, dom::Node *from, dom::Node *to, List &list);
    Box *unseenBlock(const StyleRef &style, List &&list);
    void addElement(dom::Element &element, List &list);
    void addPseudo(dom::Element &element, Pseudo pseudo, List &list);
    void addText(dom::Node &node, const StyleRef &style, List &list);
    Box *boxFor(dom::Element &element, const StyleRef &style);
    void fill(BlockBox &box, List &&list);
    void fillBlock(BlockBox &box, const List &list, Box *before, bool keepsBlocks);
    void fillItems(BlockBox &box, const List &list);
    ChildLayout layoutOfChildren(const BlockBox &box, const List &list) const;
    void setItem(BlockBox &box, bool item);
    void fillTable(TableBox &table, const List &list);
    void fillSection(BlockBox &section, const List &list);
    void fillRow(BlockBox &row, const List &list);
    void append(Box &parent, Box *child, Box *before = nullptr);
    BlockBox *anonymous(BoxKind kind, const Box &parent);
    /// Wraps table parts that stand outside of a table.
    List wrapTableParts(const List &list, const Box &parent);
    bool isBlank(const Box &box) const;
    bool isBlockLevel(const Box &box) const;
    void dissolve(Box &box);
    void sweep();
    void addInsideMarker(BlockBox &box, List &list);
    void setMarker(BlockBox &box);

    LayoutTree &mTree;
    std::vector<BlockBox *> mKept; // boxes of elements that wait to be taken over
    int mDepth = 0;
};

} // namespace layout
