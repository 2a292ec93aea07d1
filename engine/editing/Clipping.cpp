// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/dom/Document.h"
#include "engine/dom/DocumentServices.h"
#include "engine/dom/Names.h"
#include "engine/editing/Operation.h"
#include "engine/editing/Pasting.h"
#include "engine/editing/RangeEdits.h"
#include "engine/ranges/RangeHtml.h"

// Copying, cutting and pasting, but for the desktop's clipboard.

namespace editing {

using namespace dom;
using namespace ranges;
using changes::ChangeTracker;
using changes::Kind;

bool Editor::canCopy() const
{
    if (mSelection.type() == SelectionObject::Type::Control) return true;
    if (!mSelection.isRange()) return false;
    TextIndex &index = mSelection.index();
    const Span span = mSelection.span();
    return index.countBefore(span.start) < index.countBefore(span.end);
}

/// The field, or the part that is edited by itself, that both ends stand in: what is copied is its content. With its tags
/// the value of a field would come back as a field within the field.
static const Element *placeOfContent(const Span &span, const Rendering &rendering)
{
    const Element *host = editingHost(*span.start.node);
    for (const Element *at = span.start.element(); at && !rendering.isBlock(*at); at = at->parentElement())
        if ((at == host || rendering.roleOf(*at) == Role::Field) && at->contains(*span.end.node)) return at;
    return nullptr;
}

Snippet Editor::copied() const
{
    Snippet snippet;
    if (mSelection.type() == SelectionObject::Type::Control) {
        for (const auto &element : mSelection.elements()) {
            snippet.html += element->outerHTML();
            snippet.text += element->innerText();
        }
    } else if (canCopy()) {
        const Ref<TextRange> range(new TextRange(mSelection, mSelection.span()));
        snippet.html = htmlWithin(*range, placeOfContent(mSelection.span(), *mRendering));
        snippet.text = range->text();
    }
    snippet.text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return snippet;
}

bool Editor::cut()
{
    if (!canCopy()) return false;
    ChangeTracker::Step step(mTracker, Kind::Command);
    const bool done = deleteSelection();
    mTracker.setKind(Kind::Command); // whatever it reached
    mComingStyle.records = unsettled; // the record is this step's
    step.done();
    settleMemories();
    return done;
}

bool Editor::paste(const Snippet &snippet)
{
    Element *host = editingHostOfSelection();
    if (!host || snippet.isEmpty()) return false;
    Operation operation(*this, *host);
    ChangeTracker::Step step(mTracker, Kind::Command);
    const Span span = operation.spanToReplace();
    const QString text = Pasting::textOf(snippet);
    if (!text.isNull() && (operation.preserves(span.start) || !text.contains(u'\n'))) {
        if (!operation.type(text, span)) return false;
    } else {
        const QString html = text.isNull() ? snippet.html : Pasting::htmlOf(text);
        const Ref<DocumentFragment> content = Pasting::read(document(), html);
        if (!content->hasChildNodes() || !operation.paste(*content, span)) return false;
    }
    step.done();
    settleMemories();
    return true;
}

/// Whether it stands in a list's item, in no other block.
bool Operation::isInItem(const Position &p) const
{
    const Element *item = mContent.container(p);
    return mEdits.leavesList(*item);
}

bool Operation::paste(DocumentFragment &content, Span span)
{
    RangeKeeper &keeper = mSelection.keeper();
    if (span.isEmpty()) span = placeholder(span.start);
    LivePosition at(keeper, span.start);
    mBlanks.note(span.start, span.end);
    if (!span.isEmpty()) at = mContent.normalised(mRemoval.remove(span));
    if (isTableStructure(*mContent.container(at))) return false;
    RangeEdits edits(mEditor, const_cast<Element &>(mContent.limit()));
    if (isInItem(at)) Pasting::unwrapLists(content);
    if (edits.bringsBlocks(content)) {
        if (mContent.isLineEmpty(at)) dropPlaceholderBreak(at);
        if (edits.takesBlocks(at, content)) {
            mSelection.setCaret(edits.insertBlocks(at, content));
            finish(mSelection.focus(), Line::Goes);
            return true;
        }
        Pasting::flatten(content);
        if (!content.hasChildNodes()) return false;
    }
    const bool heldByBreak = mContent.isLineEmpty(at);
    at = roomForText(at);
    if (!at.position()) return false;
    LivePosition caret(keeper, edits.insertInline(at, content));
    if (heldByBreak) dropPlaceholderBreak(caret);
    finish(caret);
    return true;
}

void Operation::empty(const std::vector<Ref<Element>> &cells, bool typesNow)
{
    const Position first = Position::startOf(*cells.front());
    Style style = comingStyle(first);
    if (style.empty()) style = styleBehind(first);
    for (const auto &cell : cells)
        mEdits.holdOpen(*cell);
    mSelection.setCaret(first);
    rememberStyle(first, std::move(style), typesNow ? mTracker.recordCount() : Editor::unsettled);
}

bool Editor::emptyCells(const std::vector<Ref<Element>> &cells, const QString &text)
{
    std::vector<Ref<Element>> mine;
    for (const auto &cell : cells)
        if (cell->isConnected() && isCell(*cell) && editingHost(*cell)) mine.push_back(cell);
    if (mine.empty()) return false;
    const Position first = Position::startOf(*mine.front());
    Operation operation(*this, *editingHost(*mine.front()));
    ChangeTracker::Step step(mTracker, text.isEmpty() ? Kind::Command : Kind::TextIn);
    operation.empty(mine, !text.isEmpty());
    if (!text.isEmpty() && !operation.type(text, {first, first})) return false;
    step.done();
    settleMemories();
    return true;
}

bool Editor::removeRows(const std::vector<Ref<Element>> &rows)
{
    if (rows.empty()) return false;
    ChangeTracker::Step step(mTracker, Kind::Command);
    LivePosition place(mSelection.keeper(), Position::before(*rows.front()));
    for (const auto &row : rows) {
        if (!row->isConnected() || !row->parentElement() || !editingHost(*row->parentElement())) return false;
        Ref<Element> around(row->parentElement());
        mTracker.remove(*row);
        // A section, and a table, without rows shows nothing and takes no caret.
        while (around && isTableStructure(*around) && !around->firstElementChild()) {
            Ref<Element> outer(around->parentElement());
            mTracker.remove(*around);
            around = outer;
        }
    }
    Element *host = editingHost(*place.position().node);
    if (!host) host = document().body();
    mSelection.setCaret(Content(*mRendering, *host).normalised(place));
    step.done();
    return true;
}

} // namespace editing
