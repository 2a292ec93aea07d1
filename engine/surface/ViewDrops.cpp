// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Error.h"
#include "engine/ranges/Movement.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

// What is dropped from elsewhere, and the selection that is dragged to another place.

namespace surface {

namespace {
constexpr int edgeWidth = 2; // client pixels
}

using ranges::Position;

/// Where something let go at the point would come to: a place that can be edited, beside what stands as one thing. Null
/// for none.
Position View::dropPlaceAt(QPoint client)
{
    if (!mLoaded || mWidget.isReadOnly() || !mWidget.viewport()->rect().contains(client)) return {};
    Position place = positionAt(toDocument(client));
    if (!place) return {};
    if (dom::Element *whole = wholePart(*place.node)) {
        const auto content = ranges::Movement::contentFor(Position::before(*whole), mLoaded->editor().rendering());
        const bool behind = client.x() > elementRect(*whole).center().x();
        place = content.normalised(behind ? Position::after(*whole) : Position::before(*whole));
    }
    return ranges::editingHost(*place.node) ? place : Position();
}

/// Whether the place lies in what is selected: dropped there it is where it was.
bool View::isInSelection(const Position &place) const
{
    const ranges::SelectionObject &selection = mLoaded->selection();
    for (const auto &element : selection.elements())
        if (element->contains(*place.node)) return true;
    const ranges::Span span = selection.span();
    return selection.isRange() && span.start <= place && place <= span.end;
}

void View::showDropPlace(const Position &place)
{
    if (mDropPlace == place) return;
    mDropPlace = place;
    mWidget.viewport()->update();
}

// From elsewhere

bool View::canTake(const QMimeData &data)
{
    return data.hasHtml() || data.hasText() || data.hasUrls();
}

bool View::dragOver(QPoint client, const QMimeData &data)
{
    showDropPlace(canTake(data) ? dropPlaceAt(client) : Position());
    return bool(mDropPlace);
}

void View::dragLeaves()
{
    showDropPlace({});
}

/// The text of files that are dropped, HTML where one of them is a page. Fails with `base::Error`.
static editing::Snippet contentOf(const QList<QUrl> &files, const std::function<QString(const QString &)> &readText)
{
    editing::Snippet all;
    for (const QUrl &file : files) {
        const QString name = file.toLocalFile();
        QString text = readText ? readText(name) : QString();
        if (text.contains(QChar(0)))
            throw base::Error(base::errors::invalidCall, QStringLiteral("\"%1\" is no text.").arg(name));
        const bool isPage = name.endsWith(QLatin1String(".htm"), Qt::CaseInsensitive) ||
                            name.endsWith(QLatin1String(".html"), Qt::CaseInsensitive);
        (isPage ? all.html : all.text) += text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    }
    return all;
}

bool View::drop(QPoint client, const QMimeData &data)
{
    const Position place = canTake(data) ? dropPlaceAt(client) : Position();
    showDropPlace({});
    if (!place) return false;
    const QList<QUrl> urls = data.urls();
    const bool isFiles = !data.hasHtml() && !urls.isEmpty() &&
                         std::all_of(urls.begin(), urls.end(), [](const QUrl &url) { return url.isLocalFile(); });
    editing::Snippet snippet;
    try {
        snippet = isFiles ? contentOf(urls, mWidget.readText) : DesktopClipboard::snippetOf(data);
    } catch (const base::Error &) {
        return false; // what can't be read isn't taken
    }
    if (snippet.isEmpty()) return false;
    mLoaded->selection().setCaret(place);
    const bool done = mLoaded->editor().paste(snippet);
    edited();
    mWidget.takeFocus();
    return done;
}

// Within the page

/// A press on what is selected may begin to drag it. Whether it does nothing else for now.
bool View::pressOnSelection(const QMouseEvent &event, const Position &at, bool inside)
{
    if (mClicks != 1 || event.modifiers() & Qt::ShiftModifier || mWidget.isReadOnly()) return false;
    if (!mLoaded->editor().canEdit() || !inside || !mLoaded->selection().isRange() || !isInSelection(at)) return false;
    // At its very edges another selection begins.
    const ranges::Span span = mLoaded->selection().span();
    for (const Position &edge : {span.start, span.end}) {
        const QRectF box = toClient(mLoaded->queries().caretRect({edge.node.get(), edge.offset}));
        if (box.adjusted(-edgeWidth, 0, edgeWidth, 0).contains(event.position())) return false;
    }
    mMoving = Moving::Perhaps;
    mPressPlace = at;
    return true;
}

/// An object that is pressed is selected, and dragged if the mouse moves.
void View::pressObject(dom::Element &object)
{
    mLoaded->selection().setControl({base::Ref(&object)});
    if (!mWidget.isReadOnly() && mLoaded->editor().canEdit()) mMoving = Moving::Perhaps;
    mPressPlace = {};
}

bool View::dragSelection(const QMouseEvent &event)
{
    if (mMoving == Moving::No || !(event.buttons() & Qt::LeftButton)) return false;
    const QPoint at = event.position().toPoint();
    if (mMoving == Moving::Perhaps && (at - mLastClick).manhattanLength() < QApplication::startDragDistance())
        return true;
    mMoving = Moving::Yes;
    const Position place = dropPlaceAt(at);
    showDropPlace(place && !isInSelection(place) ? place : Position());
    mWidget.viewport()->setCursor(mDropPlace ? Qt::DragMoveCursor : Qt::ForbiddenCursor);
    return true;
}

bool View::stopDragging()
{
    const bool was = mMoving == Moving::Yes;
    mMoving = Moving::No;
    mPressPlace = {};
    showDropPlace({});
    if (was) updateCursor(mWidget.viewport()->mapFromGlobal(QCursor::pos()));
    return was;
}

bool View::releaseSelection(const QMouseEvent &event)
{
    if (event.button() != Qt::LeftButton || mMoving == Moving::No) return false;
    const Position pressed = mPressPlace, place = mDropPlace;
    const bool moved = stopDragging();
    mPressedAnchor = nullptr;
    if (!moved && pressed && pressed.node->isConnected()) { // it was a click
        if (dom::Element *const object = objectPressed(pressed.clipped()))
            mLoaded->selection().setControl({base::Ref(object)});
        else
            moveTo(besidePart(pressed.clipped(), mLastClick), Extend::No);
    }
    if (moved && place && place.node->isConnected())
        moveSelection(place.clipped(), event.modifiers() & Qt::ControlModifier);
    return true;
}

/// One step. What can't be edited where it is stays there.
void View::moveSelection(const Position &to, bool copies)
{
    editing::Editor &editor = mLoaded->editor();
    const editing::Snippet snippet = editor.copied();
    if (snippet.isEmpty()) return;
    {
        changes::ChangeTracker::Step step(mLoaded->tracker(), changes::Kind::Command);
        const ranges::LivePosition at(mLoaded->selection().keeper(), to);
        if (!copies && editor.canEdit()) editor.deleteSelection();
        mLoaded->selection().setCaret(at);
        if (editor.paste(snippet)) step.done();
    }
    edited();
}

} // namespace surface
