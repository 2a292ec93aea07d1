// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/editing/Pasting.h"
#include "engine/editing/Removal.h"
#include "engine/ranges/Movement.h"
#include "engine/ranges/SelectionObject.h"

#include <vector>

namespace editing {

enum class Unit : uint8_t { Character, Word, ToBlockEdge };

/// What typing and the editing keys do to a document.
///
/// Each operation is one step of the tracker: one record of the kind that its cause asks for, with the selection as it
/// stands afterwards. It works at the document's selection, stays within one editing host, and does nothing, without a
/// record, where nothing is possible: it then answers false. Examples in comments draw the caret as `|`, the other end
/// of a selection as `^`.
class Editor
{
public:
    /// None of them is owned.
    Editor(changes::ChangeTracker &tracker, ranges::SelectionObject &selection,
           const ranges::Rendering &rendering = ranges::Rendering::byHtml());
    dom::Document &document() const { return mTracker.document(); }
    changes::ChangeTracker &tracker() const { return mTracker; }
    ranges::SelectionObject &selection() const { return mSelection; }
    void setRendering(const ranges::Rendering &rendering) { mRendering = &rendering; }
    const ranges::Rendering &rendering() const { return *mRendering; }

    /// Whether the selection lies within one editing host.
    bool canEdit() const;

    /// Typed or committed characters, over a selection too. Line feeds and tabs count as blanks but in preformatted
    /// text; other control characters are dropped. The text takes the style of the first character that it replaces,
    /// else of the one in front of it. An empty BODY, and a place between blocks, get a P for it, so that Enter gives
    /// paragraphs.
    bool insertText(const QString &text);
    /// Enter: `<p>a|b</p>` becomes `<p>a</p><p>|b</p>`; the first half stays the element it was.
    bool insertParagraph();
    /// Shift+Enter: a BR; a line feed in preformatted text.
    bool insertLineBreak();
    /// Backspace and Delete; a selection is taken away whatever the unit.
    bool deleteBackward(Unit unit = Unit::Character) { return deleteBy(Direction::Backward, unit); }
    bool deleteForward(Unit unit = Unit::Character) { return deleteBy(Direction::Forward, unit); }
    bool deleteSelection();
    // Copying and pasting. None of them knows of the desktop's clipboard.
    /// Whether something is selected that can be copied.
    bool canCopy() const;
    Snippet copied() const;
    /// One record of its own kind, however little it takes.
    bool cut();
    /// The HTML if there is one, over what is selected: cleaned of what runs, blocks split the block of the caret, and
    /// become lines where none can stand. Plain text: a line end is a break, an empty line parts paragraphs.
    bool paste(const Snippet &snippet);
    /// The cells of a selection of cells lose their content; `text` then comes into the first one. One record. Cells that
    /// can't be edited stay as they are.
    bool emptyCells(const std::vector<base::Ref<dom::Element>> &cells, const QString &text = {});
    /// With the sections and the table that have none left. One record.
    bool removeRows(const std::vector<base::Ref<dom::Element>> &rows);
    /// All that stands in the host of the selection, else in BODY.
    bool selectAll();

private:
    enum class Direction : uint8_t { Backward, Forward };
    friend class Operation;
    bool deleteBy(Direction direction, Unit unit);
    dom::Element *editingHostOfSelection() const;

    changes::ChangeTracker &mTracker;
    ranges::SelectionObject &mSelection;
    const ranges::Rendering *mRendering;

    static constexpr uint64_t unsettled = ~0ull; ///< the number of a record that isn't written yet

    /// The one blank that a person typed into an empty block is no placeholder to be typed over.
    struct TypedBlank
    {
        dom::NodeId node = 0;
        uint64_t records = 0;
    } mTypedBlank;

    /// What is typed next at the place has the style of the line that Enter carried on, or of the first character that
    /// was taken away there: these elements, outermost first, stood around it in its block. They are for as long as
    /// nothing else has happened and, but for an empty line, the caret hasn't been elsewhere.
    struct ComingStyle
    {
        base::Ref<dom::Node> node;
        uint32_t offset = 0;
        uint64_t records = 0;
        uint64_t moves = 0; ///< of the selection
        bool emptyLine = false;
        std::vector<base::Ref<dom::Element>> elements;
    } mComingStyle;
    void settleMemories();
    template <class Break> bool breakAt(Break breakHere);
};

} // namespace editing
