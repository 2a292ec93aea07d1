// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"
#include "engine/dom/EventObject.h"

#include <QPoint>
#include <QRect>
#include <QVariant>

class QInputMethodEvent;
class QKeyEvent;
class QMouseEvent;
class QPaintEvent;

namespace editing {
class Editor;
}

namespace surface {

class HTMLEditor;
class LoadedDocument;

/// What the widget shows and what input does to it: between the widget, which knows Qt, and the document's layout,
/// selection and editor, which don't. Points are client pixels.
class View
{
public:
    explicit View(HTMLEditor &widget);
    ~View();

    void documentGone();
    void documentLoaded(LoadedDocument &loaded);
    void modeChanged();

    void paint(const QPaintEvent &event);
    void resized();
    void scrolled();
    void scrollToAnchor(const QString &name);
    void zoomBy(int delta);
    void focusChanged(bool focused);

    dom::Element *elementAt(QPoint client);
    dom::Element *caretElement();
    QRect caretRect();
    bool isControlSelected() const;
    editing::Editor *editor();

    bool wantsKey(const QKeyEvent &event) const;
    bool keyPressed(const QKeyEvent &event);
    void mousePressed(const QMouseEvent &event);
    void mouseReleased(const QMouseEvent &event, bool goesOn);
    void mouseDoubleClicked(const QMouseEvent &event);
    void mouseMoved(const QMouseEvent &event);
    void inputMethod(const QInputMethodEvent &event);
    QVariant inputMethodQuery(Qt::InputMethodQuery query);

    int commandStatus(int command);
    bool execCommand(int command, const QString &value);

    const base::Ref<dom::Element> &hovered() const { return mHovered; }
    void setHovered(const base::Ref<dom::Element> &element) { mHovered = element; }
    void setCurrentEvent(dom::EventObject *event) { mCurrentEvent = event; }

private:
    HTMLEditor &mWidget;
    LoadedDocument *mLoaded = nullptr;
    base::Ref<dom::Element> mHovered;
    base::Ref<dom::EventObject> mCurrentEvent;
};

} // namespace surface
