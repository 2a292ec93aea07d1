// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/View.h"

#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"

#include <QPainter>

namespace surface {

View::View(HTMLEditor &widget) : mWidget(widget) {}
View::~View() = default;
void View::documentGone() { mLoaded = nullptr; mHovered = nullptr; }
void View::documentLoaded(LoadedDocument &loaded) { mLoaded = &loaded; }
void View::modeChanged() {}
void View::paint(const QPaintEvent &) { QPainter(mWidget.viewport()).fillRect(mWidget.viewport()->rect(), Qt::white); }
void View::resized() {}
void View::scrolled() {}
void View::scrollToAnchor(const QString &) {}
void View::zoomBy(int) {}
void View::focusChanged(bool) {}
dom::Element *View::elementAt(QPoint) { return mLoaded ? mLoaded->document().body() : nullptr; }
dom::Element *View::caretElement() { return mLoaded ? mLoaded->document().body() : nullptr; }
QRect View::caretRect() { return {}; }
bool View::isControlSelected() const { return false; }
editing::Editor *View::editor() { return nullptr; }
bool View::wantsKey(const QKeyEvent &) const { return false; }
bool View::keyPressed(const QKeyEvent &) { return false; }
void View::mousePressed(const QMouseEvent &) {}
void View::mouseReleased(const QMouseEvent &, bool) {}
void View::mouseDoubleClicked(const QMouseEvent &) {}
void View::mouseMoved(const QMouseEvent &) {}
void View::inputMethod(const QInputMethodEvent &) {}
QVariant View::inputMethodQuery(Qt::InputMethodQuery) { return {}; }
int View::commandStatus(int) { return 0; }
bool View::execCommand(int, const QString &) { return false; }

} // namespace surface
