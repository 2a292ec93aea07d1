// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Interpreter.h"

#include "control/Vellum5Parts.h"
#include "engine/surface/View.h"
#include "scripting/Objects.h"
#include "scripting/Pointer.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

// Input as a person gives it: real events to what has the focus or lies under the pointer.

namespace scripting {

namespace {

/// What has the focus in the control; null for nothing.
QWidget *focused(Interpreter &in)
{
    in.activate();
    QWidget *widget = QApplication::focusWidget();
    return widget && widget->window() == in.control().window() ? widget : nullptr;
}

/// One key, as the window system would send it: the widget may claim it before a shortcut gets it.
void tap(QPointer<QWidget> widget, int key, Qt::KeyboardModifiers modifiers, const QString &text)
{
    QKeyEvent claim(QEvent::ShortcutOverride, key, modifiers, text);
    claim.ignore();
    QApplication::sendEvent(widget, &claim);
    if (!widget) return;
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(widget, &press);
    if (!widget) return;
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QApplication::sendEvent(widget, &release);
}

void pressKey(Interpreter &in, int key, Qt::KeyboardModifiers modifiers, const QString &text)
{
    const QPointer<QWidget> widget = focused(in);
    if (!widget) return;
    tap(widget, key, modifiers, text);
    if (!widget || key != Qt::Key_Menu) return;
    // The window system asks for the menu beside sending the key.
    const QPoint at = widget->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, at, widget->mapToGlobal(at), modifiers);
    QApplication::sendEvent(widget, &event);
}

QKeySequence keysOf(const QString &name)
{
    const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
    if (sequence.isEmpty() || sequence[0].key() == Qt::Key_unknown)
        throw ScriptError(QStringLiteral("unknown key: %1").arg(name));
    return sequence;
}

/// What a key types by itself.
QString textOf(QKeyCombination keys)
{
    const Qt::KeyboardModifiers modifiers = keys.keyboardModifiers();
    if (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return {};
    if (keys.key() == Qt::Key_Return || keys.key() == Qt::Key_Enter) return QStringLiteral("\r");
    if (keys.key() == Qt::Key_Tab) return QStringLiteral("\t");
    if (keys.key() == Qt::Key_Backspace) return QStringLiteral("\b");
    if (keys.key() < Qt::Key_Space || keys.key() >= 0x100) return {};
    const QString text = QChar(char16_t(keys.key()));
    return modifiers & Qt::ShiftModifier ? text : text.toLower();
}

void typeText(Interpreter &in, Words &words)
{
    const QString text = words.text();
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\n') {
            pressKey(in, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
        } else if (c.isHighSurrogate() && i + 1 < text.size()) {
            pressKey(in, 0, Qt::NoModifier, text.mid(i++, 2));
        } else {
            const bool shifted = c.isUpper();
            pressKey(in, c.unicode() < 0x100 ? c.toUpper().unicode() : 0, shifted ? Qt::ShiftModifier : Qt::NoModifier, QString(c));
        }
        if (in.waits) in.settle();
    }
}

void key(Interpreter &in, Words &words)
{
    for (bool first = true; first || !words.atEnd(); first = false) {
        const QKeySequence sequence = keysOf(words.word("a key"));
        for (int i = 0; i < sequence.count(); ++i) {
            pressKey(in, sequence[uint(i)].key(), sequence[uint(i)].keyboardModifiers(), textOf(sequence[uint(i)]));
            if (in.waits) in.settle();
        }
    }
}

void compose(Interpreter &in, Words &words)
{
    if (QWidget *widget = focused(in)) {
        QInputMethodEvent event(words.text(), {});
        QApplication::sendEvent(widget, &event);
    }
}

void commit(Interpreter &in, Words &words)
{
    if (QWidget *widget = focused(in)) {
        QInputMethodEvent event;
        event.setCommitString(words.text());
        QApplication::sendEvent(widget, &event);
    }
}

// The mouse

struct Pointer {
    QPoint at;
    Qt::MouseButton button = Qt::LeftButton;
    Qt::KeyboardModifiers modifiers;
    int clicks = 1;
};

Pointer readPointer(Interpreter &in, Words &words)
{
    Pointer pointer;
    pointer.at = readPoint(in, words);
    while (!words.atEnd()) {
        const QString word = words.word("a word");
        if (word == QLatin1String("left"))
            pointer.button = Qt::LeftButton;
        else if (word == QLatin1String("right"))
            pointer.button = Qt::RightButton;
        else if (word == QLatin1String("middle"))
            pointer.button = Qt::MiddleButton;
        else if (word == QLatin1String("double"))
            pointer.clicks = 2;
        else if (word == QLatin1String("triple"))
            pointer.clicks = 3;
        else if (word == QLatin1String("ctrl"))
            pointer.modifiers |= Qt::ControlModifier;
        else if (word == QLatin1String("shift"))
            pointer.modifiers |= Qt::ShiftModifier;
        else if (word == QLatin1String("alt"))
            pointer.modifiers |= Qt::AltModifier;
        else
            throw ScriptError(QStringLiteral("unknown word: %1").arg(word));
    }
    return pointer;
}

void send(Interpreter &in, QEvent::Type type, const Pointer &pointer, Qt::MouseButtons held)
{
    QWidget &widget = clientWidget(in);
    const QPointF at(pointer.at);
    QMouseEvent event(type, at, widget.mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : pointer.button, held,
                      pointer.modifiers);
    QApplication::sendEvent(&widget, &event);
}

void pressAt(Interpreter &in, const Pointer &pointer, QEvent::Type type = QEvent::MouseButtonPress)
{
    QWidget &widget = clientWidget(in);
    QWidget *target = widget.parentWidget() ? widget.parentWidget() : &widget;
    if (target->focusPolicy() & Qt::ClickFocus) target->setFocus(Qt::MouseFocusReason);
    send(in, type, pointer, pointer.button);
}

/// All of a click but the last release.
void pressClicks(Interpreter &in, const Pointer &pointer)
{
    in.host().surface().view().forgetClicks();
    for (int i = 0; i < pointer.clicks; ++i) {
        if (i > 0) send(in, QEvent::MouseButtonRelease, pointer, Qt::NoButton);
        // The second press of a pair comes as a double click, as the window system sends it.
        pressAt(in, pointer, i == 1 ? QEvent::MouseButtonDblClick : QEvent::MouseButtonPress);
    }
}

void click(Interpreter &in, Words &words)
{
    const Pointer pointer = readPointer(in, words);
    pressClicks(in, pointer);
    send(in, QEvent::MouseButtonRelease, pointer, Qt::NoButton);
    if (pointer.button == Qt::RightButton) {
        QWidget &widget = clientWidget(in);
        QContextMenuEvent event(QContextMenuEvent::Mouse, pointer.at, widget.mapToGlobal(pointer.at), pointer.modifiers);
        QApplication::sendEvent(&widget, &event);
    }
}

void press(Interpreter &in, Words &words)
{
    const Pointer pointer = readPointer(in, words);
    in.heldPointer = pointer.button;
    pressClicks(in, pointer);
}

void move(Interpreter &in, Words &words)
{
    send(in, QEvent::MouseMove, readPointer(in, words), in.heldPointer);
}

void release(Interpreter &in, Words &words)
{
    in.heldPointer = Qt::NoButton;
    send(in, QEvent::MouseButtonRelease, readPointer(in, words), Qt::NoButton);
}

void drag(Interpreter &in, Words &words)
{
    const QPoint from = readPoint(in, words);
    const Pointer to = readPointer(in, words);
    Pointer at = to;
    at.at = from;
    in.host().surface().view().forgetClicks();
    pressAt(in, at);
    constexpr int steps = 8;
    for (int i = 1; i <= steps; ++i) {
        at.at = from + (to.at - from) * i / steps;
        send(in, QEvent::MouseMove, at, at.button);
    }
    send(in, QEvent::MouseButtonRelease, to, Qt::NoButton);
}

void wheel(Interpreter &in, Words &words)
{
    const QPoint at = readPoint(in, words);
    const int delta = words.number("DELTA");
    const QString word = words.wordOr(QString());
    const bool ctrl = word == QLatin1String("ctrl");
    if (!ctrl && !word.isEmpty()) throw ScriptError(QStringLiteral("unknown word: %1").arg(word));
    QWidget &widget = clientWidget(in);
    QWheelEvent event(at, widget.mapToGlobal(at), {}, QPoint(0, delta), Qt::NoButton,
                      ctrl ? Qt::ControlModifier : Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

} // namespace

QWidget &clientWidget(Interpreter &in)
{
    in.activate();
    if (in.state().mCurrentEditView == EditViewEnum::hvSourceEdit)
        return *static_cast<QAbstractScrollArea &>(in.host().source()).viewport();
    return *in.host().surface().viewport();
}

QPoint readPoint(Interpreter &in, Words &words)
{
    words.skipBlanks();
    const QChar first = words.line().size() > words.position() ? words.line()[words.position()] : QChar();
    if (first.isDigit() || first == u'-') {
        const int x = words.number("X");
        return {x, words.number("Y")};
    }
    const platform::Value value = in.readTarget(words);
    dom::Element *element = elementOf(value);
    if (!element) throw ScriptError(QStringLiteral("not an element"));
    return in.host().surface().view().elementRect(*element).center();
}

void sendKeys(QWidget &receiver, const QString &name)
{
    const QPointer<QWidget> widget(&receiver);
    const QKeySequence sequence = keysOf(name);
    for (int i = 0; i < sequence.count() && widget; ++i)
        tap(widget, sequence[uint(i)].key(), sequence[uint(i)].keyboardModifiers(), textOf(sequence[uint(i)]));
}

const std::vector<VerbRow> &inputVerbs()
{
    static const std::vector<VerbRow> rows = {
        {"type", typeText}, {"key", key},         {"compose", compose}, {"commit", commit},       {"click", click},
        {"press", press},   {"move", move},       {"release", release}, {"drag", drag},           {"wheel", wheel},
    };
    return rows;
}

} // namespace scripting
