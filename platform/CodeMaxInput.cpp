// SPDX-License-Identifier: GPL-3.0-or-later
// The source editor's events: keys, input methods, mouse and drops.
#include "base/Clock.h"
#include "platform/CodeMax.h"
#include "platform/HotKeys.h"

#include <QContextMenuEvent>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>

QByteArray CodeMax::fromMimeData(const QMimeData *source, bool &rectangular) const
{
    rectangular = false;
    return source->hasText() ? cleaned(source->text()).toUtf8() : QByteArray();
}

bool CodeMax::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (HotKeys::global().commandFor(QKeySequence(key->keyCombination())) != 0) {
            event->accept();
            return true;
        }
    }
    return QsciScintilla::event(event);
}

void CodeMax::paintEvent(QPaintEvent *event)
{
    const long last = send(SCI_DOCLINEFROMVISIBLE,
                           static_cast<unsigned long>(send(SCI_GETFIRSTVISIBLELINE) + send(SCI_LINESONSCREEN) + 1));
    const long end =
        last + 1 < LineCount() ? send(SCI_POSITIONFROMLINE, static_cast<unsigned long>(last + 1)) : send(SCI_GETLENGTH);
    mLongLines.colour(end);
    QsciScintilla::paintEvent(event);
}

void CodeMax::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);
    if (const int command =
            HotKeys::global().commandFor(QKeySequence(QKeyCombination(modifiers, Qt::Key(event->key()))))) {
        ExecuteCmd(command);
        return;
    }
    if (modifiers == Qt::AltModifier && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        Q_EMIT ShowProps();
        return;
    }
    if (const QString text = event->text();
        !text.isEmpty() && text[0].isSurrogate() && !(modifiers & ~Qt::ShiftModifier)) {
        // Scintilla takes no key whose text begins with a surrogate: an emoji would be lost.
        event->accept();
        noteTyping(false);
        ReplaceSel(text);
        return;
    }
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool deletes = event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete;
    const bool types = isEnter || (!event->text().isEmpty() && event->text()[0].isPrint());
    if (types || deletes) noteTyping(isEnter);
    edit([&] {
        if (!(types || deletes) || !isSelectionLong()) return QsciScintilla::keyPressEvent(event);
        send(SCI_BEGINUNDOACTION);
        deleteSelection();
        if (deletes)
            event->accept();
        else
            QsciScintilla::keyPressEvent(event);
        send(SCI_ENDUNDOACTION);
    });
}

/// Scintilla keeps what doesn't show from being deleted; in a long line that is most of it.
bool CodeMax::isSelectionLong() const
{
    const long start = send(SCI_GETSELECTIONSTART), end = send(SCI_GETSELECTIONEND);
    return !isReadOnly() && start < end && mLongLines.isIn(start, end);
}

void CodeMax::deleteSelection()
{
    const long start = send(SCI_GETSELECTIONSTART);
    replaceBytes(start, send(SCI_GETSELECTIONEND), {});
    send(SCI_GOTOPOS, static_cast<unsigned long>(start));
}

/// Scintilla takes all that is typed without moving the caret for one undo step, be it an afternoon's work. A pause
/// ends a step, and a line break is one by itself, as in the visual view.
void CodeMax::noteTyping(bool isEnter)
{
    constexpr qint64 pauseMs = 3000;
    const qint64 now = base::Clock::instance().nowMs();
    if (isEnter || mTypedEnter || now - mTypedMs > pauseMs) {
        send(SCI_BEGINUNDOACTION);
        send(SCI_ENDUNDOACTION);
    }
    mTypedEnter = isEnter;
    mTypedMs = now;
}

void CodeMax::keyReleaseEvent(QKeyEvent *event)
{
    const QPointer<CodeMax> self(this);
    QsciScintilla::keyReleaseEvent(event);
    if (self && !event->isAutoRepeat()) Q_EMIT KeyUp(event->key());
}

void CodeMax::contextMenuEvent(QContextMenuEvent *event)
{
    event->accept();
    Q_EMIT ContextMenu();
}

void CodeMax::inputMethodEvent(QInputMethodEvent *event)
{
    QInputMethodEvent clean(cleaned(event->preeditString()), event->attributes());
    clean.setCommitString(cleaned(event->commitString()), event->replacementStart(), event->replacementLength());
    clean.setAccepted(event->isAccepted());
    const bool types = !clean.commitString().isEmpty();
    if (types) noteTyping(false);
    edit([&] {
        if ((types || !clean.preeditString().isEmpty()) && isSelectionLong()) deleteSelection();
        QsciScintilla::inputMethodEvent(&clean);
    });
    event->setAccepted(clean.isAccepted());
}

void CodeMax::mousePressEvent(QMouseEvent *event)
{
    mPressed = true;
    edit([&] { QsciScintilla::mousePressEvent(event); });
}

void CodeMax::mouseMoveEvent(QMouseEvent *event)
{
    edit([&] { QsciScintilla::mouseMoveEvent(event); });
}

void CodeMax::mouseReleaseEvent(QMouseEvent *event)
{
    mPressed = false;
    edit([&] { QsciScintilla::mouseReleaseEvent(event); });
}

void CodeMax::mouseDoubleClickEvent(QMouseEvent *event)
{
    edit([&] { QsciScintilla::mouseDoubleClickEvent(event); });
}

void CodeMax::dropEvent(QDropEvent *event)
{
    edit([&] {
        const bool moves = event->source() == this && event->dropAction() == Qt::MoveAction;
        if (!moves || !isSelectionLong()) return QsciScintilla::dropEvent(event);
        const QPoint point = event->position().toPoint();
        moveSelection(send(SCI_POSITIONFROMPOINT, static_cast<unsigned long>(point.x()), point.y()));
        event->setDropAction(Qt::CopyAction); // so that who began the drag takes nothing away
        event->accept();
    });
}

void CodeMax::moveSelection(long to)
{
    const long start = send(SCI_GETSELECTIONSTART), end = send(SCI_GETSELECTIONEND);
    if (to >= start && to <= end) return;
    const QByteArray text = SelText().toUtf8();
    send(SCI_BEGINUNDOACTION);
    deleteSelection();
    const long at = to > end ? to - (end - start) : to;
    replaceBytes(at, at, text);
    send(SCI_ENDUNDOACTION);
    send(SCI_SETSELECTION, static_cast<unsigned long>(at + text.size()), at);
}
