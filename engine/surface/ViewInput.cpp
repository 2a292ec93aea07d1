// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/dom/Names.h"
#include "engine/ranges/ControlRange.h"
#include "engine/ranges/Movement.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QScopedValueRollback>
#include <QApplication>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QScrollBar>

// What input does: keys, the mouse, input methods, commands.

namespace surface {

using ranges::Content;
using ranges::Movement;
using ranges::Position;

bool View::isControlSelected() const
{
    return mLoaded && mLoaded->selection().type() == ranges::SelectionObject::Type::Control;
}

editing::Editor *View::editor()
{
    return mLoaded ? &mLoaded->editor() : nullptr;
}

ranges::SelectionObject *View::selection()
{
    return mLoaded ? &mLoaded->selection() : nullptr;
}

// Keys

static bool isText(const QKeyEvent &event)
{
    if (event.text().isEmpty()) return false;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    // AltGr comes as Ctrl+Alt on some systems.
    if (modifiers != Qt::NoModifier && modifiers != (Qt::ControlModifier | Qt::AltModifier) &&
        modifiers != Qt::GroupSwitchModifier)
        return false;
    return event.text().front().isPrint() || event.text().front().isSurrogate();
}

bool View::wantsKey(const QKeyEvent &event) const
{
    if (!mLoaded || mWidget.editMode() != dom::EditMode::Edit) return false;
    return isText(event) || event.matches(QKeySequence::SelectAll) || event.matches(QKeySequence::Undo) ||
           event.matches(QKeySequence::Redo) || event.matches(QKeySequence::Copy) ||
           event.matches(QKeySequence::Cut) || event.matches(QKeySequence::Paste) || event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace;
}

bool View::keyPressed(const QKeyEvent &event)
{
    if (!mLoaded) return false;
    const bool isArrow = event.key() == Qt::Key_Left || event.key() == Qt::Key_Right || event.key() == Qt::Key_Up ||
                         event.key() == Qt::Key_Down;
    const QScopedValueRollback<bool> quiet(mArrowKey, isArrow);
    if (event.key() == Qt::Key_Escape && stopDragging()) return true;
    if (hotSpotKey(event) || clipboardKey(event)) return true;
    if (editByKey(event)) {
        mGoalX = -1;
        if (mLoaded) edited();
        return true;
    }
    if (moveByKey(event)) return true;
    QScrollBar *down = mWidget.verticalScrollBar();
    switch (event.key()) { // without a caret the keys scroll
    case Qt::Key_Down: down->triggerAction(QScrollBar::SliderSingleStepAdd); return true;
    case Qt::Key_Up: down->triggerAction(QScrollBar::SliderSingleStepSub); return true;
    case Qt::Key_PageDown: down->triggerAction(QScrollBar::SliderPageStepAdd); return true;
    case Qt::Key_PageUp: down->triggerAction(QScrollBar::SliderPageStepSub); return true;
    case Qt::Key_Home: down->triggerAction(QScrollBar::SliderToMinimum); return true;
    case Qt::Key_End: down->triggerAction(QScrollBar::SliderToMaximum); return true;
    default: return false;
    }
}

bool View::editByKey(const QKeyEvent &event)
{
    editing::Editor &editor = mLoaded->editor();
    if (mWidget.isReadOnly()) return false;
    if (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete)
        if (runOnCells(CellCommand::Delete)) return true;
    if (isText(event) && typeOverCells(event.text())) return true;
    if (!editor.canEdit()) return false;
    const bool ctrl = event.modifiers() & Qt::ControlModifier;
    const auto unit = ctrl ? editing::Unit::Word : editing::Unit::Character;
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        event.modifiers() & Qt::ShiftModifier ? editor.insertLineBreak() : editor.insertParagraph();
        return true;
    case Qt::Key_Backspace: editor.deleteBackward(unit); return true;
    case Qt::Key_Delete: editor.deleteForward(unit); return true;
    default: break;
    }
    if (!isText(event)) return false;
    editor.insertText(event.text());
    return true;
}

void View::moveTo(const Position &position, Extend extend)
{
    if (!position) return;
    if (extend == Extend::Yes)
        mLoaded->selection().extendTo(position);
    else
        mLoaded->selection().setCaret(position);
    ensureVisible(caretBox());
}

View::CaretStays::CaretStays(View &view) : mView(view)
{
    const Position caret = view.mLoaded ? view.mLoaded->selection().focus() : Position();
    dom::Element *part = caret ? ranges::editingHost(*caret.node) : nullptr;
    if (part && part != view.mLoaded->document().body()) mPart = part;
}

View::CaretStays::~CaretStays()
{
    if (!mPart || !mPart->isConnected() || !mView.mLoaded) return;
    const Position caret = mView.mLoaded->selection().focus();
    if (!caret || mPart->contains(*caret.node)) return;
    const Position start = Position::startOf(*mPart);
    const Content content = Movement::contentFor(start, mView.mLoaded->editor().rendering());
    const Movement movement(content);
    mView.mLoaded->selection().setCaret(caret < start ? movement.startOfDocument() : movement.endOfDocument());
}

Position View::lineMove(const Position &from, int lines)
{
    layout::Queries &queries = mLoaded->queries();
    layout::TextPosition at{from.node.get(), from.offset};
    if (mGoalX < 0) mGoalX = queries.caretRect(at).x();
    for (; lines != 0; lines += lines < 0 ? 1 : -1) {
        const layout::TextPosition next = lines < 0 ? queries.lineAbove(at, mGoalX) : queries.lineBelow(at, mGoalX);
        if (!next.node) break;
        at = next;
    }
    return {at.node, at.offset};
}

/// A key that moves takes the caret from selected objects to the side that it goes to, and goes on from there. With
/// Shift the objects stay selected, as content.
bool View::leaveObjects(const QKeyEvent &event)
{
    ranges::SelectionObject &selection = mLoaded->selection();
    const auto isOneOf = [&event](std::initializer_list<int> keys) {
        return std::find(keys.begin(), keys.end(), event.key()) != keys.end();
    };
    const bool backward = isOneOf({Qt::Key_Left, Qt::Key_Up, Qt::Key_Home, Qt::Key_PageUp});
    const bool forward = isOneOf({Qt::Key_Right, Qt::Key_Down, Qt::Key_End, Qt::Key_PageDown, Qt::Key_Escape});
    if (selection.elements().empty() || !mLoaded->editor().canEdit() || (!backward && !forward)) return false;
    const Position before = Position::before(*selection.elements().front());
    const Position after = Position::after(*selection.elements().back());
    const Content content = Movement::contentFor(before, mLoaded->editor().rendering());
    const Position front = content.normalised(before), behind = content.normalised(after);
    if (event.modifiers() & Qt::ShiftModifier)
        selection.set(backward ? behind : front, backward ? front : behind);
    else
        moveTo(backward ? front : behind, Extend::No);
    return isOneOf({Qt::Key_Left, Qt::Key_Right, Qt::Key_Escape}) || moveByKey(event);
}

bool View::moveByKey(const QKeyEvent &event)
{
    ranges::SelectionObject &selection = mLoaded->selection();
    if (event.matches(QKeySequence::SelectAll)) return mLoaded->editor().selectAll();
    if (moveCells(event)) return true;
    if (selection.type() == ranges::SelectionObject::Type::Control) return leaveObjects(event);
    if (selection.type() != ranges::SelectionObject::Type::Text) return false;
    if (!mLoaded->editor().canEdit() && !(event.modifiers() & Qt::ShiftModifier)) return false;
    const Extend extend = event.modifiers() & Qt::ShiftModifier ? Extend::Yes : Extend::No;
    const bool ctrl = event.modifiers() & Qt::ControlModifier;
    const Position from = selection.focus();
    const Content content = Movement::contentFor(from, mLoaded->editor().rendering());
    const Movement movement(content);
    layout::Queries &queries = mLoaded->queries();
    const layout::TextPosition place{from.node.get(), from.offset};
    const auto line = [](const layout::TextPosition &at) { return Position(at.node, at.offset); };
    const int page = std::max(1, mWidget.viewport()->height() / std::max(8, int(queries.caretRect(place).height())) - 1);
    const bool keepsGoal = event.key() == Qt::Key_Up || event.key() == Qt::Key_Down || event.key() == Qt::Key_PageUp ||
                           event.key() == Qt::Key_PageDown;
    if (!keepsGoal) mGoalX = -1;
    Position to;
    switch (event.key()) {
    case Qt::Key_Left:
        if (selection.isRange() && extend == Extend::No)
            to = selection.span().start;
        else
            to = ctrl ? movement.previousWord(from) : movement.previousCharacter(from);
        break;
    case Qt::Key_Right:
        if (selection.isRange() && extend == Extend::No)
            to = selection.span().end;
        else
            to = ctrl ? movement.nextWord(from) : movement.nextCharacter(from);
        break;
    case Qt::Key_Home: to = ctrl ? movement.startOfDocument() : line(queries.lineStart(place)); break;
    case Qt::Key_End: to = ctrl ? movement.endOfDocument() : line(queries.lineEnd(place)); break;
    case Qt::Key_Up: to = lineMove(from, -1); break;
    case Qt::Key_Down: to = lineMove(from, 1); break;
    case Qt::Key_PageUp: to = lineMove(from, -page); break;
    case Qt::Key_PageDown: to = lineMove(from, page); break;
    default: return false;
    }
    if (to && (event.key() == Qt::Key_Left || event.key() == Qt::Key_Right) && !ctrl &&
        (extend == Extend::Yes || !selection.isRange()))
        if (const Position beside = movement.outOfField(from, event.key() == Qt::Key_Right)) to = beside;
    if (to && content.contains(from)) to = movement.pastWidgets(from, to);
    // A part that can be edited in a page that can't keeps its caret.
    if (to && &content.limit() != mLoaded->document().body() && !content.contains(to))
        to = to < from ? movement.startOfDocument() : movement.endOfDocument();
    if (extend == Extend::Yes && extendOverCells(to)) return true;
    moveTo(to, extend);
    if (mPrimary && extend == Extend::Yes) mOfferSoon.restart();
    return true;
}

// The mouse

Position View::positionAt(QPointF document, bool *inside)
{
    const layout::Hit hit = mLoaded->queries().hitTest(document);
    if (inside) *inside = hit.inside;
    return {hit.position.node, hit.position.offset};
}

dom::Element *View::anchorOf(dom::Element *element) const
{
    for (dom::Element *at = element; at; at = at->parentElement())
        if (at->is(dom::names::a) && at->hasAttribute(dom::names::href)) return at;
    return nullptr;
}

void View::mousePressed(const QMouseEvent &event)
{
    mGoalX = -1;
    stopDragging();
    mPressedAnchor = anchorOf(elementAt(event.position().toPoint()));
    const QPoint at = event.position().toPoint();
    if (event.button() == Qt::MiddleButton) pasteAtPoint(at);
    if (event.button() != Qt::LeftButton) return;
    const bool again = mClicks > 0 && mClickTimer.isValid() && mClickTimer.elapsed() < QApplication::doubleClickInterval() &&
                       (at - mLastClick).manhattanLength() < QApplication::startDragDistance();
    mClicks = again ? mClicks % 3 + 1 : 1;
    mClickTimer.start();
    mLastClick = at;
    if (pressOnImage(at) || pressOnSummary(at) || selectFromEdge(at)) return;
    mPressed = elementAt(at);
    bool inside = false;
    Position position = positionAt(toDocument(event.position()), &inside);
    if (!position) return;
    mCells.clear();
    if (pressOnSelection(event, position, inside)) return;
    ranges::SelectionObject &selection = mLoaded->selection();
    const bool extends = event.modifiers() & Qt::ShiftModifier;
    dom::Element *const whole = wholePart(*position.node);
    dom::Element *const object = objectPressed(position);
    if (object && (object == whole || !extends)) return pressObject(*object);
    position = besidePart(position, at);
    if (mClicks == 3) return selectUnit(DragSelect::Unit::Block, position);
    // Text that is only read leaves the caret where something can be written. A drag selects it.
    if (!extends && !ranges::editingHost(*position.node) && mLoaded->editor().canEdit()) {
        mAtPress = selection.span();
        return mDrag.begin(position);
    }
    mSpanToSelect = extends ? nullptr : spanToSelect(*position.node);
    if (extends && selection.type() == ranges::SelectionObject::Type::Text)
        moveTo(besideWidget(selection.anchor(), withinPart(selection.anchor(), position)), Extend::Yes);
    else
        moveTo(position, Extend::No);
    mAtPress = selection.span();
    mDrag.begin(selection.anchor());
}

/// The outermost part around a node that stands as one thing in what can be edited; null for none.
dom::Element *View::fixedPart(dom::Node &node) const
{
    dom::Element *fixed = nullptr;
    for (dom::Element *at = node.isElement() ? node.asElement() : node.parentElement(); at; at = at->parentElement())
        if (at->parentElement() && at->parentElement()->isContentEditable() && !at->isContentEditable()) fixed = at;
    return fixed;
}

/// The outermost part around a node that is selected as one thing: a widget too.
dom::Element *View::wholePart(dom::Node &node) const
{
    if (dom::Element *fixed = fixedPart(node)) return fixed;
    const Position at = Position::startOf(node);
    if (!ranges::editingHost(node)) return nullptr;
    return Movement::contentFor(at, mLoaded->editor().rendering()).widgetAround(&node);
}

/// What was pressed and is meant as one thing: a widget or a part that is only read; a picture, a rule, a control. Null
/// for text, and beside such a thing. Tables are selected from within or along their edges, and what is only sized takes
/// the caret.
dom::Element *View::objectPressed(const Position &at) const
{
    if (!mPressed || !mPressed->isConnected()) return nullptr;
    dom::Element *const whole = wholePart(*at.node);
    if (whole && whole->contains(*mPressed)) return whole;
    dom::Element *const object = mPressed->asElement();
    const bool isMeant = object && ranges::isObject(*object) && !object->is(dom::names::table) && object->parentElement() &&
                         object->parentElement()->isContentEditable();
    return isMeant ? object : nullptr;
}

/// Where the caret comes that a point beside a widget or a part that is only read would lead into it: to that side.
Position View::besidePart(const Position &at, QPoint client)
{
    dom::Element *const whole = wholePart(*at.node);
    if (!whole) return at;
    const QRect box = elementRect(*whole);
    const bool behind = client.y() > box.bottom() || (client.y() >= box.top() && client.x() > box.center().x());
    const Content content = Movement::contentFor(Position::before(*whole), mLoaded->editor().rendering());
    return content.normalised(behind ? Position::after(*whole) : Position::before(*whole));
}

/// The editable span that a click at the node selects: of a page that is read, if the caret isn't in it already.
dom::Element *View::spanToSelect(dom::Node &node) const
{
    if (mWidget.editMode() != dom::EditMode::Browse || !mWidget.autoSelectEditableSpans()) return nullptr;
    for (dom::Element *at = node.isElement() ? node.asElement() : node.parentElement(); at; at = at->parentElement()) {
        if (!at->is(dom::names::span) || !at->isContentEditable()) continue;
        const Position &focus = mLoaded->selection().focus();
        return focus && at->contains(*focus.node) ? nullptr : at;
    }
    return nullptr;
}

/// A selection that begins in a part that can be edited doesn't leave it.
Position View::withinPart(const Position &anchor, const Position &focus) const
{
    dom::Element *part = anchor ? ranges::editingHost(*anchor.node) : nullptr;
    if (!part || !focus || part->contains(*focus.node)) return focus;
    const Content content(mLoaded->editor().rendering(), *part);
    return focus < anchor ? content.normalised(Position::startOf(*part), Content::Between::RangeStart)
                          : content.normalised(Position::endOf(*part), Content::Between::RangeEnd);
}

/// A selection takes in a widget as a whole, or not at all.
Position View::besideWidget(const Position &anchor, const Position &focus) const
{
    if (!anchor || !focus) return focus;
    const Content content = Movement::contentFor(focus, mLoaded->editor().rendering());
    dom::Element *widget = content.widgetAround(focus.node.get());
    if (!widget || widget == content.widgetAround(anchor.node.get())) return focus;
    return focus < anchor ? Position::before(*widget) : Position::after(*widget);
}

void View::mouseDoubleClicked(const QMouseEvent &event)
{
    if (event.button() != Qt::LeftButton) return;
    if (mHotSpots.close()) return areaDrawn();
    if (pressOnSummary(event.position().toPoint())) return;
    mClicks = 2;
    mClickTimer.start();
    mLastClick = event.position().toPoint();
    const Position position = positionAt(toDocument(event.position()));
    if (position && !wholePart(*position.node)) selectUnit(DragSelect::Unit::Word, position);
}

ranges::Span View::spanAt(const Position &at, DragSelect::Unit unit)
{
    if (!at || unit == DragSelect::Unit::Character) return {at, at};
    const Content content = Movement::contentFor(at, mLoaded->editor().rendering());
    return unit == DragSelect::Unit::Word ? Movement(content).wordAt(at) : Movement(content).blockAt(at);
}

void View::selectUnit(DragSelect::Unit unit, const Position &at)
{
    const ranges::Span span = spanAt(at, unit);
    if (!span.start) return;
    mLoaded->selection().set(span.start, span.end);
    mAtPress = {}; // it isn't a plain click
    mDrag.begin(unit, span);
}

DragSelect::Page View::pageForDrag()
{
    return {[this](QPointF client, DragSelect::Unit unit) { return spanAt(positionAt(toDocument(client)), unit); },
            [this](const Position &anchor, const Position &wished) {
                ranges::SelectionObject &selection = mLoaded->selection();
                const Position focus = besideWidget(anchor, withinPart(anchor, wished));
                if (!(selection.anchor() == anchor) || !(selection.focus() == focus)) selection.set(anchor, focus);
            },
            [this] { return mWidget.viewport()->rect(); },
            [this](int dx, int dy) {
                QScrollBar &across = *mWidget.horizontalScrollBar(), &down = *mWidget.verticalScrollBar();
                const QPoint before(across.value(), down.value());
                across.setValue(before.x() + dx);
                down.setValue(before.y() + dy);
                return QPoint(across.value(), down.value()) != before;
            }};
}

void View::mouseMoved(const QMouseEvent &event)
{
    if (moveOnImage(event.position().toPoint())) return;
    if (dragSelection(event)) return;
    if (event.buttons() & Qt::LeftButton && dragAlongEdge(event.position().toPoint())) return;
    if (mDrag.isActive() && event.buttons() & Qt::LeftButton) {
        if (!dragCells(event.position().toPoint())) mDrag.moveTo(event.position());
        return;
    }
    updateCursor(event.position().toPoint());
}

void View::updateCursor(QPoint client)
{
    dom::Element *element = elementAt(client);
    const bool reads = mWidget.editMode() == dom::EditMode::Browse;
    Qt::CursorShape shape = Qt::ArrowCursor;
    if (reads && anchorOf(element))
        shape = Qt::PointingHandCursor;
    else if (element && (element->isContentEditable() || reads))
        shape = element->is(dom::names::img) ? Qt::ArrowCursor : Qt::IBeamCursor;
    mWidget.viewport()->setCursor(shape);
}

void View::mouseReleased(const QMouseEvent &event, bool goesOn)
{
    mEdge = Edge::None;
    if (event.button() == Qt::LeftButton && releaseOnImage(event.position().toPoint())) return;
    if (releaseSelection(event)) return;
    const ranges::Span now = mLoaded->selection().span(), pressed = std::exchange(mAtPress, {});
    const bool clicked = mDrag.isActive() && pressed.start && now.start == pressed.start && now.end == pressed.end;
    if (mDrag.isActive() && !clicked) offerSelection();
    mDrag.end();
    const base::Ref<dom::Element> span = std::exchange(mSpanToSelect, nullptr);
    if (clicked && span && span->isConnected()) {
        const Content content(mLoaded->editor().rendering(), *span);
        mLoaded->selection().set(content.normalised(Position::startOf(*span), Content::Between::RangeStart),
                                 content.normalised(Position::endOf(*span), Content::Between::RangeEnd));
    }
    const base::Ref<dom::Element> anchor = std::exchange(mPressedAnchor, nullptr);
    if (!goesOn || event.button() != Qt::LeftButton || !clicked || !anchor) return;
    if (mWidget.editMode() == dom::EditMode::Browse && anchorOf(elementAt(event.position().toPoint())) == anchor.get())
        click(*anchor);
}

void View::click(dom::Element &element)
{
    if (dom::Element *anchor = anchorOf(&element)) mWidget.navigate({anchor->href(), 0, anchor->attributeValue("target"), {}, {}},
                                                            HTMLEditor::Asker::Link);
}

bool View::holdsCaret(const dom::Element &element) const
{
    if (!element.isContentEditable() || element.isVoid()) return false;
    const StyledRendering &rendering = mLoaded->rendering();
    rendering.refresh();
    for (const dom::Element *at = &element; at; at = at->parentElement())
        if (!rendering.isDisplayed(*at)) return false;
    return true;
}

void View::focus(dom::Element &element)
{
    // Callers try one candidate after the other, so a caret beside the element would be the wrong answer.
    if (!holdsCaret(element))
        throw base::Error(base::errors::notPossible, QStringLiteral("The element can't take the focus."));
    const Content content = Movement::contentFor(Position::startOf(element), mLoaded->editor().rendering());
    mLoaded->selection().setCaret(Movement(content).startOfBlock(Position::startOf(element)));
    mWidget.takeFocus();
}

// Input methods

void View::inputMethod(const QInputMethodEvent &event)
{
    if ((!mLoaded->editor().canEdit() && !hasEditableCells()) || mWidget.isReadOnly()) return;
    mComposition.take(event);
    if (!event.commitString().isEmpty()) {
        if (!typeOverCells(event.commitString())) mLoaded->editor().insertText(event.commitString());
        edited();
    }
    showCaret();
    QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle);
}

QVariant View::inputMethodQuery(Qt::InputMethodQuery query)
{
    const Position &at = mLoaded->selection().focus();
    switch (query) {
    case Qt::ImEnabled: return mLoaded->editor().canEdit();
    case Qt::ImCursorRectangle: return caretRect();
    case Qt::ImSurroundingText: return at.text() ? at.text()->data() : QString();
    case Qt::ImCursorPosition: return at.text() ? int(at.offset) : 0;
    case Qt::ImAnchorPosition: {
        const Position &anchor = mLoaded->selection().anchor();
        return anchor.node == at.node ? int(anchor.offset) : int(at.offset);
    }
    case Qt::ImHints: return int(Qt::ImhMultiLine);
    default: return {};
    }
}

} // namespace surface
