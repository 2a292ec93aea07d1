// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Interpreter.h"
#include "scripting/Pointer.h"

#include "scripting/Forms.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QImage>
#include <QMimeData>
#include <QUrl>

// A drag from another program: it enters, moves, and is dropped or leaves.

namespace scripting {

namespace {

constexpr Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

QWidget &target(Interpreter &in)
{
    QWidget &widget = clientWidget(in);
    for (QWidget *at = &widget; at; at = at->isWindow() ? nullptr : at->parentWidget())
        if (at->acceptDrops()) return widget;
    notAvailable();
}

void setForm(Interpreter &in, QMimeData &data, const QString &form, const QString &text)
{
    if (form == QLatin1String("IMAGE"))
        return data.setImageData(readPicture(in.filePath(text)));
    if (form == QLatin1String("FILE"))
        return data.setUrls({QUrl::fromLocalFile(in.filePath(text))});
    data.setData(mimeOfForm(form), text.toUtf8());
}

/// One form with its text as it stands; or several, each with a text in quotes.
void readForms(Interpreter &in, Words &words, QMimeData &data)
{
    const QString form = words.word("a form");
    const qsizetype start = words.position();
    if (words.nextIs(u'"')) {
        std::vector<std::pair<QString, QString>> forms;
        try {
            for (QString name = form;; name = words.word("a form")) {
                if (!words.nextIs(u'"')) throw ScriptError(QStringLiteral("a text in quotes is missing"));
                forms.emplace_back(name, words.word("a text"));
                if (words.atEnd()) break;
            }
            for (const auto &[name, text] : forms) setForm(in, data, name, text);
            return;
        } catch (const ScriptError &) {
            if (forms.size() > 1) throw;
            words.moveTo(start); // a text that begins with a quote
        }
    }
    setForm(in, data, form, words.text());
}

Qt::DropAction proposed(Qt::KeyboardModifiers modifiers)
{
    return modifiers & Qt::ControlModifier ? Qt::CopyAction : Qt::MoveAction;
}

struct Drag {
    QPoint at;
    Qt::KeyboardModifiers modifiers;
    QMimeData *data;
};

/// Enters, unless a drag is on its way, and moves to the point; whether it could be dropped there.
bool dragTo(Interpreter &in, QWidget &widget, const Drag &drag)
{
    bool entered = true;
    if (!in.dragging) {
        QDragEnterEvent enter(drag.at, offered, drag.data, Qt::LeftButton, drag.modifiers);
        enter.setDropAction(proposed(drag.modifiers));
        entered = QApplication::sendEvent(&widget, &enter) && enter.isAccepted();
        in.dragging = true;
    }
    QDragMoveEvent move(drag.at, offered, drag.data, Qt::LeftButton, drag.modifiers);
    move.setDropAction(proposed(drag.modifiers));
    if (entered) move.accept(); // as the window system sends it: what was accepted stays so
    QApplication::sendEvent(&widget, &move);
    return move.isAccepted();
}

Drag readDrag(Interpreter &in, Words &words)
{
    Drag drag{readPoint(in, words), {}, nullptr};
    const qsizetype start = words.position();
    if (words.wordOr(QString()) == QLatin1String("ctrl"))
        drag.modifiers = Qt::ControlModifier;
    else
        words.moveTo(start);
    auto data = std::make_unique<QMimeData>();
    readForms(in, words, *data);
    // One drag carries one thing: a further move doesn't change it under the target's hands.
    if (!in.dragging || !in.dragged) in.dragged = std::move(data);
    drag.data = in.dragged.get();
    return drag;
}

void dragOver(Interpreter &in, Words &words)
{
    QWidget &widget = target(in);
    dragTo(in, widget, readDrag(in, words));
}

void leave(Interpreter &in, QWidget &widget)
{
    QDragLeaveEvent event;
    QApplication::sendEvent(&widget, &event);
    in.dragging = false;
    in.dragged.reset();
}

void dragLeave(Interpreter &in, Words &words)
{
    words.finish();
    QWidget &widget = target(in);
    if (in.dragging) leave(in, widget);
}

void drop(Interpreter &in, Words &words)
{
    QWidget &widget = target(in);
    const Drag drag = readDrag(in, words);
    if (!dragTo(in, widget, drag)) return leave(in, widget); // let go where nothing takes it
    QDropEvent event(drag.at, offered, drag.data, Qt::LeftButton, drag.modifiers);
    event.setDropAction(proposed(drag.modifiers));
    QApplication::sendEvent(&widget, &event);
    in.dragging = false;
    in.dragged.reset();
}

} // namespace

const std::vector<VerbRow> &dragVerbs()
{
    static const std::vector<VerbRow> rows = {{"drop", drop}, {"drag-over", dragOver}, {"drag-leave", dragLeave}};
    return rows;
}

} // namespace scripting
