// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/Editor.h"

#include "engine/dom/Document.h"
#include "engine/editing/Operation.h"

namespace editing {

using namespace dom;
using namespace ranges;
using changes::ChangeTracker;
using changes::Kind;

Editor::Editor(ChangeTracker &tracker, SelectionObject &selection, const Rendering &rendering)
    : mTracker(tracker), mSelection(selection), mRendering(&rendering)
{
}

namespace {

/// The selected stretch without what only its ends reach over: `^ab</td><td>|` takes in nothing of the next cell.
Span takenIn(const Content &page, const SelectionObject &selection)
{
    const Span span = selection.span();
    return {page.normalised(span.start, Content::Between::RangeStart),
            page.normalised(span.end, Content::Between::RangeEnd)};
}

Element *hostOf(const SelectionObject &selection, const Rendering &rendering)
{
    switch (selection.type()) {
    case SelectionObject::Type::None:
        return nullptr;
    case SelectionObject::Type::Text: {
        Element *host = editingHost(*selection.focus().node), *other = editingHost(*selection.anchor().node);
        if (host == other || selection.isCaret()) return host;
        const Span span = takenIn(Content(rendering, *selection.document().body()), selection);
        host = editingHost(*span.start.node);
        if (!host || editingHost(*span.end.node) != host) return nullptr;
        // An end that stood in a part of it that can't be edited has only been led out of there.
        for (const Position *end : {&selection.anchor(), &selection.focus()})
            if (host->contains(*end->node) && editingHost(*end->node) != host) return nullptr;
        return host;
    }
    case SelectionObject::Type::Control:
        break;
    }
    // An object is edited by what is around it.
    Element *host = nullptr;
    for (const auto &element : selection.elements()) {
        Element *around = element->parentElement() ? editingHost(*element->parentElement()) : nullptr;
        if (!around || (host && around != host)) return nullptr;
        host = around;
    }
    return host;
}

/// `text` without what no text can hold.
QString cleaned(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\r') {
            if (i + 1 >= text.size() || text[i + 1] != u'\n') out.append(u'\n');
        } else if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            out.append(c);
            out.append(text[++i]);
        } else if (c.isSurrogate()) {
            out.append(QChar::ReplacementCharacter);
        } else if (c.unicode() >= 0x20 ? c.unicode() != 0x7F : c == u'\n' || c == u'\t') {
            out.append(c);
        }
    }
    return out;
}

} // namespace

Element *Editor::editingHostOfSelection() const
{
    return hostOf(mSelection, *mRendering);
}

bool Editor::canEdit() const
{
    return editingHostOfSelection() != nullptr;
}

bool Editor::insertText(const QString &given)
{
    Element *host = hostOf(mSelection, *mRendering);
    const QString text = cleaned(given);
    if (!host || text.isEmpty()) return false;
    Operation operation(*this, *host);
    ChangeTracker::Step step(mTracker, Kind::TextIn);
    const Span span = operation.spanToReplace();
    const bool done = operation.type(text, span);
    if (!done) return false; // the step takes back what was done
    step.done();
    settleMemories();
    return true;
}

/// What was remembered in the step that has just been written holds until the next one.
void Editor::settleMemories()
{
    if (mTypedBlank.records == unsettled) mTypedBlank.records = mTracker.recordCount();
    if (mComingStyle.records != unsettled) return;
    mComingStyle.records = mTracker.recordCount();
    mComingStyle.moves = mSelection.moves();
}

/// Enter and Shift+Enter: one step that takes away what is selected and breaks there.
template <class Break> bool Editor::breakAt(Break breakHere)
{
    Element *host = editingHostOfSelection();
    if (!host) return false;
    Operation operation(*this, *host);
    ChangeTracker::Step step(mTracker, Kind::Command);
    const Span span = operation.spanToReplace();
    if (!breakHere(operation, span)) return false;
    step.done();
    settleMemories();
    return true;
}

bool Editor::insertParagraph()
{
    return breakAt([](Operation &operation, const Span &span) { return operation.breakParagraph(span); });
}

bool Editor::insertLineBreak()
{
    return breakAt([](Operation &operation, const Span &span) { return operation.breakLine(span); });
}

bool Editor::deleteSelection()
{
    Element *host = hostOf(mSelection, *mRendering);
    if (!host || mSelection.isCaret()) return false;
    Operation operation(*this, *host);
    if (mSelection.type() == SelectionObject::Type::Control) {
        ChangeTracker::Step step(mTracker, operation.objectsAreWithinBlock() ? Kind::TextOut : Kind::Command);
        const Position p = operation.removeObjects();
        operation.settle(p);
        step.done();
        return true;
    }
    const Span span = operation.span();
    if (span.isEmpty()) return false;
    ChangeTracker::Step step(mTracker, operation.isWithinBlock(span) ? Kind::TextOut : Kind::Command);
    if (!operation.removeSpan(span)) return false;
    step.done();
    settleMemories();
    return true;
}

bool Editor::deleteBy(Direction direction, Unit unit)
{
    if (mSelection.isRange() || mSelection.type() == SelectionObject::Type::Control) return deleteSelection();
    Element *host = hostOf(mSelection, *mRendering);
    if (!host) return false;
    Operation operation(*this, *host);
    ChangeTracker::Step step(mTracker, Kind::TextOut);
    if (!operation.removeFrom(operation.span().start, direction == Direction::Forward, unit)) return false;
    step.done();
    settleMemories();
    return true;
}

bool Editor::selectAll()
{
    Element *host = mSelection.type() == SelectionObject::Type::None ? nullptr : hostOf(mSelection, *mRendering);
    if (!host) host = document().body();
    if (!host) return false;
    const Content content(*mRendering, *host);
    mSelection.set(content.normalised(Position::startOf(*host), Content::Between::RangeStart),
                   content.normalised(Position::endOf(*host), Content::Between::RangeEnd));
    return true;
}

// What all operations share

Operation::Operation(Editor &editor, Element &host)
    : mEditor(editor), mTracker(editor.tracker()), mSelection(editor.selection()), mContent(editor.rendering(), host),
      mMovement(mContent), mEdits(mContent, mTracker, mSelection.keeper()),
      mRemoval(mContent, mTracker, mSelection.keeper()), mBlanks(mContent, mTracker, mSelection.keeper())
{
}

Span Operation::span() const
{
    if (mSelection.type() != SelectionObject::Type::Text) return {};
    if (mSelection.isRange()) {
        Span selected = mSelection.span();
        if (!mContent.contains(selected.start) || !mContent.contains(selected.end))
            selected = takenIn(Content(mContent.rendering(), *mEditor.document().body()), mSelection);
        const Span fitted = mRemoval.fitted(selected);
        if (!fitted.isEmpty()) return fitted;
    }
    const Position p = mContent.normalised(mSelection.focus());
    return {p, p};
}

Span Operation::spanToReplace()
{
    if (mSelection.type() != SelectionObject::Type::Control) return span();
    const Position place = removeObjects();
    return {place, place};
}

bool Operation::objectsAreWithinBlock() const
{
    const auto elements = mSelection.elements();
    const Element *const block = mContent.container(Position::before(*elements.front()));
    return std::all_of(elements.begin(), elements.end(), [&](const auto &element) {
        return !mContent.delimitsLines(*element) && mContent.container(Position::before(*element)) == block;
    });
}

Position Operation::removeObjects()
{
    const auto elements = mSelection.elements();
    LivePosition place(mSelection.keeper(), Position::before(*elements.front()));
    for (const auto &element : elements) {
        if (!element->isConnected() || mEdits.isFixed(*element)) {
            if (!element->is("table") || !element->isConnected()) continue;
        }
        Ref<Node> parent(element->parentNode());
        mTracker.remove(*element);
        mEdits.tidyUpwards(parent.get());
    }
    return place;
}

bool Operation::preserves(const Position &p) const
{
    if (const Text *text = p.text()) return mContent.rendering().preservesSpace(*text);
    for (const Item &item : {mContent.before(p), mContent.after(p)})
        if (item.isCharacter()) return mContent.rendering().preservesSpace(*item.text());
    for (const Element *at = p.element(); at; at = at->parentElement()) {
        if (at->is("pre") || at->is("listing") || at->is("xmp")) return true;
        if (at == &mContent.limit()) break;
    }
    return false;
}

void Operation::finish(const Position &caret, Line line)
{
    LivePosition p(mSelection.keeper(), caret);
    if (line == Line::Stays) mEdits.showLine(p);
    mBlanks.mend();
    mSelection.setCaret(mContent.normalised(p));
}

} // namespace editing
