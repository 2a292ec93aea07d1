// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"
#include "engine/ranges/SelectionObject.h"

#include <functional>
#include <vector>

namespace surface {

/// Cells that are selected as such, beside the text selection: by a drag from one into another, with Shift and the
/// arrows, from a table's edges, by program. They show by their runtime style, which is in no text.
///
/// A cell that leaves the document is no longer one of them; when the step that took it is undone, it is again. So are the
/// cells that a step of input let go of, and those that were let go of for another reason within a step.
class CellSelection final : public ranges::StepListener
{
public:
    CellSelection() = default;
    ~CellSelection() override { forget(); }
    CellSelection(const CellSelection &) = delete;
    CellSelection &operator=(const CellSelection &) = delete;

    bool isEmpty() const { return cells().empty(); }
    /// In the order of the document.
    std::vector<base::Ref<dom::Element>> cells() const;

    // Each fails with `base::Error` for what isn't a TD or TH of a table.
    void add(dom::Element &cell);
    void select(dom::Element &cell) { set({base::Ref<dom::Element>(&cell)}); }
    /// All cells of the row, or column, in which the cell stands.
    void selectRow(dom::Element &cell);
    void selectColumn(dom::Element &cell);
    /// From the row, or column, of one to that of the other, of one table.
    void selectRows(dom::Element &from, dom::Element &to);
    void selectColumns(dom::Element &from, dom::Element &to);
    /// The smallest rectangle of the table that holds both, whole spanned cells included. They must be of one table.
    void selectBlock(dom::Element &anchor, dom::Element &focus);
    /// Moves the focus of a block by so many columns and rows; false where there is no cell.
    bool moveFocus(int columns, int rows);
    dom::Element *anchor() const { return mAnchor.get(); }
    void clear();
    /// Where somebody has cleared their runtime style.
    void showAgain();
    /// Forgets them without telling anybody: their document goes.
    void forget();
    /// Whose cells; null for none.
    void setDocument(dom::Document *document) { mDocument = document; }
    /// While it holds, the next step lets go of the cells: its undo selects them again.
    void goWithStep(bool go) { mGoWithStep = go; }

    // ranges::StepListener
    void stepBegins() override;
    void stepEnds(changes::StepName step) override;
    void stepFails() override;
    void stepPlayed(changes::StepName step) override;
    void selectionRestored() override { mRestored = true; }

    /// Told after the set has changed.
    std::function<void()> changed;

    /// The cell around a node, of whatever table; null where there is none. `outermost` null: the innermost.
    static dom::Element *cellAround(dom::Node *node);
    /// The two cells of one table that stand around the nodes; both null where there are none or it is the same one.
    static std::pair<dom::Element *, dom::Element *> cellsOfOneTable(dom::Node *a, dom::Node *b);

private:
    using Choice = ranges::ElementMemory::Choice;
    void set(std::vector<base::Ref<dom::Element>> cells);
    void choose(const Choice &choice);
    const Choice &choice();
    static void show(dom::Element &cell, bool selected);

    std::vector<base::Ref<dom::Element>> mCells;
    base::Ref<dom::Element> mAnchor;
    base::Ref<dom::Element> mFocus;
    dom::Document *mDocument = nullptr;
    // By steps. A choice is empty, or names the anchor, the focus, and all of them.
    ranges::ElementMemory mMemory;
    Choice mChoice;        ///< null once they have changed
    Choice mChoiceBefore;  ///< the open step; null for none
    Choice mPlayedTo;      ///< what the open playback comes to, if nobody chose meanwhile, or always
    Choice mAlwaysPlayedTo;
    bool mRestored = false;
    bool mGoWithStep = false;
};

} // namespace surface
