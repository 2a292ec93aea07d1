// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/EditScope.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QScrollBar>
#include <QWheelEvent>

// Input. Every event is one edit scope. The host hears of it first, and may keep the surface from doing anything of its
// own with it.

namespace surface {

namespace {

constexpr int eventMouseDown = -605;
constexpr int eventMouseUp = -607;
constexpr int eventMouseOver = int(0x80010008u);
constexpr int eventMouseOut = int(0x80010009u);
constexpr int eventKeyDown = -602;
constexpr int eventKeyUp = -604;

/// The numbers of keys as hosts know them: those of the letters and digits are their codes, others have their own.
int keyCodeOf(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Backspace: return 8;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return 9;
    case Qt::Key_Return:
    case Qt::Key_Enter: return 13;
    case Qt::Key_Shift: return 16;
    case Qt::Key_Control: return 17;
    case Qt::Key_Alt: return 18;
    case Qt::Key_Escape: return 27;
    case Qt::Key_Space: return 32;
    case Qt::Key_PageUp: return 33;
    case Qt::Key_PageDown: return 34;
    case Qt::Key_End: return 35;
    case Qt::Key_Home: return 36;
    case Qt::Key_Left: return 37;
    case Qt::Key_Up: return 38;
    case Qt::Key_Right: return 39;
    case Qt::Key_Down: return 40;
    case Qt::Key_Insert: return 45;
    case Qt::Key_Delete: return 46;
    case Qt::Key_Menu: return 93;
    default: break;
    }
    if (event.key() >= Qt::Key_F1 && event.key() <= Qt::Key_F12) return 112 + event.key() - Qt::Key_F1;
    if (event.key() > 0 && event.key() < 0x100) return event.key();
    // A key that has no number: what an input method sends. It mustn't be 0, by which a host swallows the key.
    return 229;
}

int buttonNumber(Qt::MouseButton button)
{
    return button == Qt::LeftButton ? 1 : button == Qt::RightButton ? 2 : button == Qt::MiddleButton ? 4 : 0;
}

} // namespace

bool HTMLEditor::raise(int id, dom::EventObject &event)
{
    bool cancel = false;
    const base::Ref<dom::EventObject> keep(&event);
    mView->setCurrentEvent(&event);
    Q_EMIT elementEvent(id, &event, cancel);
    mView->setCurrentEvent(nullptr);
    return !cancel;
}

static base::Ref<dom::EventObject> makeEvent(Qt::KeyboardModifiers modifiers, dom::Element *source)
{
    auto made = base::make<dom::EventObject>();
    made->srcElement = source;
    made->ctrlKey = modifiers & Qt::ControlModifier;
    made->shiftKey = modifiers & Qt::ShiftModifier;
    made->altKey = modifiers & Qt::AltModifier;
    return made;
}

static base::Ref<dom::EventObject> makeEvent(const QMouseEvent &event, dom::Element *source)
{
    auto made = makeEvent(event.modifiers(), source);
    const QPoint at = event.position().toPoint();
    made->button = buttonNumber(event.button());
    made->x = at.x();
    made->y = at.y();
    return made;
}

void HTMLEditor::keyPressEvent(QKeyEvent *event)
{
    changes::EditScope scope;
    if (!mLoaded) return;
    const auto told = makeEvent(event->modifiers(), mView->caretElement());
    told->keyCode = keyCodeOf(*event);
    const QPoint caret = mView->caretRect().center();
    told->x = caret.x();
    told->y = caret.y();
    if (!raise(eventKeyDown, *told) || told->keyCode == 0 || !told->returnValue || !mLoaded) {
        event->accept();
        return;
    }
    if (event->matches(QKeySequence::Undo) || event->matches(QKeySequence::Redo)) {
        const bool isUndo = event->matches(QKeySequence::Undo);
        event->accept();
        // Who can't type here can't take back either.
        if (mEditMode == dom::EditMode::Disabled) return;
        if (!tracker()->isRead())
            isUndo ? undo() : redo();
        else
            isUndo ? Q_EMIT undoRequested() : Q_EMIT redoRequested();
        return;
    }
    // Tab belongs to the document while it is edited, also where it does nothing: it mustn't walk off with the focus.
    const bool isTab = event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab;
    event->setAccepted(mView->keyPressed(*event) || (isTab && mEditMode == dom::EditMode::Edit));
}

void HTMLEditor::keyReleaseEvent(QKeyEvent *event)
{
    changes::EditScope scope;
    if (!mLoaded) return;
    const auto told = makeEvent(event->modifiers(), mView->caretElement());
    told->keyCode = keyCodeOf(*event);
    raise(eventKeyUp, *told);
    event->accept();
}

void HTMLEditor::mousePressEvent(QMouseEvent *event)
{
    changes::EditScope scope;
    if (!mLoaded) return;
    const auto told = makeEvent(*event, mView->elementAt(event->position().toPoint()));
    if (!raise(eventMouseDown, *told) || !told->returnValue || !mLoaded) return;
    mView->mousePressed(*event);
}

void HTMLEditor::mouseReleaseEvent(QMouseEvent *event)
{
    changes::EditScope scope;
    if (!mLoaded) return;
    const auto told = makeEvent(*event, mView->elementAt(event->position().toPoint()));
    const bool goesOn = raise(eventMouseUp, *told) && told->returnValue;
    if (mLoaded) mView->mouseReleased(*event, goesOn);
}

void HTMLEditor::mouseDoubleClickEvent(QMouseEvent *event)
{
    changes::EditScope scope;
    if (!mLoaded) return;
    // The second press is a press as well; its release is told too.
    const auto told = makeEvent(*event, mView->elementAt(event->position().toPoint()));
    if (!raise(eventMouseDown, *told) || !told->returnValue || !mLoaded) return;
    mView->mouseDoubleClicked(*event);
}

void HTMLEditor::mouseMoveEvent(QMouseEvent *event)
{
    changes::EditScope scope;
    if (!mLoaded) return;
    const QPoint at = event->position().toPoint();
    base::Ref<dom::Element> now(mView->elementAt(at));
    const base::Ref<dom::Element> before = mView->hovered();
    if (now != before) {
        mView->setHovered(now);
        const auto tell = [&](int id, dom::Element *element) {
            if (!element) return;
            const auto told = makeEvent(event->modifiers(), element);
            told->x = at.x();
            told->y = at.y();
            raise(id, *told);
        };
        tell(eventMouseOut, before.get());
        tell(eventMouseOver, now.get());
    }
    if (mLoaded) mView->mouseMoved(*event);
}

void HTMLEditor::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        mView->zoomBy(event->angleDelta().y());
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void HTMLEditor::contextMenuEvent(QContextMenuEvent *event)
{
    changes::EditScope scope;
    if (!mLoaded) return;
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const QPoint at = byKey ? mView->caretRect().bottomLeft() : event->pos();
    bool handled = false;
    Q_EMIT showContextMenu(0, at.x(), at.y(), mView->elementAt(at), handled);
    event->accept();
}

// What comes from elsewhere is copied: this program can't know what the other would lose.

void HTMLEditor::dragEnterEvent(QDragEnterEvent *event)
{
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(mLoaded && View::canTake(*event->mimeData()));
}

void HTMLEditor::dragMoveEvent(QDragMoveEvent *event)
{
    changes::EditScope scope;
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(mLoaded && mView->dragOver(event->position().toPoint(), *event->mimeData()));
}

void HTMLEditor::dragLeaveEvent(QDragLeaveEvent *event)
{
    mView->dragLeaves();
    event->accept();
}

void HTMLEditor::dropEvent(QDropEvent *event)
{
    changes::EditScope scope;
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(mLoaded && mView->drop(event->position().toPoint(), *event->mimeData()));
}

void HTMLEditor::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    mView->focusChanged(true);
}

void HTMLEditor::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    mView->focusChanged(false);
}

void HTMLEditor::inputMethodEvent(QInputMethodEvent *event)
{
    changes::EditScope scope;
    if (mLoaded) mView->inputMethod(*event);
}

QVariant HTMLEditor::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (!mLoaded) return QAbstractScrollArea::inputMethodQuery(query);
    return mView->inputMethodQuery(query);
}

bool HTMLEditor::focusNextPrevChild(bool next)
{
    // Tab belongs to the document while it can be edited.
    if (mLoaded && mEditMode == dom::EditMode::Edit) return false;
    return QAbstractScrollArea::focusNextPrevChild(next);
}

bool HTMLEditor::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && mLoaded) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (mView->wantsKey(*key)) {
            event->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

void HTMLEditor::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) viewport()->update();
}

void HTMLEditor::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    mView->resized();
}

void HTMLEditor::scrollContentsBy(int, int)
{
    mView->scrolled();
}

void HTMLEditor::paintEvent(QPaintEvent *event)
{
    mView->paint(*event);
}

} // namespace surface
