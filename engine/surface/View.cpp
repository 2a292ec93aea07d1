// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/View.h"

#include "base/Error.h"
#include "engine/changes/EditScope.h"
#include "engine/dom/Names.h"
#include "engine/layout/BoxDump.h"
#include "engine/paint/Painter.h"
#include "engine/ranges/Movement.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/RangeView.h"

#include <QApplication>
#include <QJsonDocument>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <cmath>

// What is shown: layout, scrolling, painting, the caret.

namespace surface {

namespace {
constexpr double smallestZoom = 0.25;
constexpr double largestZoom = 5;
// A selection that is drawn with keys is copied to the primary one when it stands.
constexpr int offerAfterMs = 150;
} // namespace

View::View(HTMLEditor &widget) : mWidget(widget), mRangeView(std::make_unique<RangeView>(*this)), mDrag(pageForDrag())
{
    mCells.changed = [this] { cellsChanged(); };
    if (DesktopClipboard::hasPrimarySelection()) mPrimary = &mDesktopSelection;
    mOfferSoon.setInterval(offerAfterMs);
    connect(&mOfferSoon, &base::Timer::timeout, this, &View::offerSelection);
}

View::~View() = default;

void View::documentGone()
{
    mLoaded = nullptr;
    mHovered = nullptr;
    mPressedAnchor = nullptr;
    mSpanToSelect = nullptr;
    mEdge = Edge::None;
    mEdgeCell = nullptr;
    mAtPress = {};
    mOfferSoon.setEnabled(false);
    mComposition.clear();
    mCells.forget();
    mCells.setDocument(nullptr);
    mArea = nullptr;
    mHotSpots.giveUp();
    mPressed = nullptr;
    mMoving = Moving::No;
    mPressPlace = mDropPlace = {};
    mDrag.end();
    mGoalX = -1;
}

void View::documentLoaded(LoadedDocument &loaded)
{
    mLoaded = &loaded;
    loaded.document().boxes = this;
    loaded.document().interaction = this;
    loaded.selection().host = mRangeView.get();
    loaded.selection().beside = &mCells;
    mCells.setDocument(&loaded.document());
    loaded.selection().selectionChanged = [this] { selectionMoved(); };
    mWidget.horizontalScrollBar()->setValue(0);
    mWidget.verticalScrollBar()->setValue(0);
    layoutPage();
    const ranges::Position top = ranges::Position::startOf(*loaded.document().body());
    const ranges::Content content = ranges::Movement::contentFor(top, loaded.editor().rendering());
    loaded.selection().setCaret(ranges::Movement(content).startOfDocument());
    loaded.tracker().selectionSettled();
    mWidget.viewport()->update();
}

void View::modeChanged()
{
    mWidget.viewport()->update();
}

// Coordinates

QPointF View::toDocument(QPointF client) const
{
    return client / mZoom + QPointF(mWidget.horizontalScrollBar()->value(), mWidget.verticalScrollBar()->value());
}

QRectF View::toClient(const QRectF &document) const
{
    const QPointF scroll(mWidget.horizontalScrollBar()->value(), mWidget.verticalScrollBar()->value());
    return QRectF((document.topLeft() - scroll) * mZoom, document.size() * mZoom);
}

// Layout and scrolling

void View::layoutPage()
{
    if (!mLoaded) return;
    const QSizeF size = QSizeF(mWidget.viewport()->size()) / mZoom;
    const QSize viewport(int(std::floor(size.width())), int(std::floor(size.height())));
    if (mLoaded->tree().viewport() != viewport) mLoaded->tree().setViewport(viewport);
    updateScrollBars();
}

void View::updateScrollBars()
{
    if (!mLoaded || mUpdatingBars) return;
    mUpdatingBars = true;
    const QSize page = mLoaded->tree().pageSize();
    const QSize view = mLoaded->tree().viewport();
    QScrollBar *across = mWidget.horizontalScrollBar(), *down = mWidget.verticalScrollBar();
    across->setPageStep(view.width());
    across->setSingleStep(20);
    across->setRange(0, std::max(0, page.width() - view.width()));
    down->setPageStep(view.height());
    down->setSingleStep(40);
    down->setRange(0, std::max(0, page.height() - view.height()));
    mUpdatingBars = false;
    // A bar that came or went has changed the room.
    const QSizeF size = QSizeF(mWidget.viewport()->size()) / mZoom;
    const QSize now(int(std::floor(size.width())), int(std::floor(size.height())));
    if (now != view) {
        mLoaded->tree().setViewport(now);
        const QSize again = mLoaded->tree().pageSize();
        across->setRange(0, std::max(0, again.width() - now.width()));
        down->setRange(0, std::max(0, again.height() - now.height()));
    }
}

void View::resized()
{
    if (!mUpdatingBars) layoutPage();
}

void View::scrolled()
{
    if (mLoaded) mLoaded->tree().setViewScroll(QPointF(mWidget.horizontalScrollBar()->value(), mWidget.verticalScrollBar()->value()));
    mWidget.viewport()->update();
}

void View::scrollToAnchor(const QString &name)
{
    if (!mLoaded) return;
    const QString decoded = QUrl::fromPercentEncoding(name.toUtf8());
    dom::Element *target = mLoaded->document().getElementById(decoded);
    if (!target)
        for (dom::Element *anchor : mLoaded->document().elementsNamed(dom::names::a))
            if (anchor->attributeValue("name") == decoded) target = anchor;
    if (!target && !decoded.isEmpty()) return;
    mWidget.verticalScrollBar()->setValue(target ? int(mLoaded->queries().borderBox(*target).top()) : 0);
}

void View::zoomBy(int delta)
{
    const double wished = std::clamp(mZoom * std::pow(1.1, delta / 120.0), smallestZoom, largestZoom);
    if (wished == mZoom) return;
    mZoom = wished;
    layoutPage();
    mWidget.viewport()->update();
}

void View::ensureVisible(const QRectF &box)
{
    if (box.isEmpty() && box.height() <= 0) return;
    const QSizeF view = QSizeF(mWidget.viewport()->size()) / mZoom;
    const auto bring = [](QScrollBar *bar, double from, double to, double room) {
        if (from < bar->value())
            bar->setValue(int(std::floor(from)));
        else if (to > bar->value() + room)
            bar->setValue(int(std::ceil(to - room)));
    };
    bring(mWidget.verticalScrollBar(), box.top(), box.bottom(), view.height());
    bring(mWidget.horizontalScrollBar(), box.left(), box.right() + 1, view.width());
}

// Painting

static void addHighlights(LoadedDocument &loaded, const QPalette &palette, bool active, paint::Options &options)
{
    const ranges::SelectionObject &selection = loaded.selection();
    const QPalette::ColorGroup group = active ? QPalette::Active : QPalette::Inactive;
    for (const auto &element : selection.elements())
        options.highlightRects.push_back(loaded.queries().borderBox(*element));
    options.highlightColor = palette.color(group, QPalette::Highlight);
    options.highlightColor.setAlpha(110);
    if (!selection.isRange()) return;
    const ranges::Span span = selection.span();
    const QColor back = palette.color(group, QPalette::Highlight);
    const QColor front = palette.color(group, QPalette::HighlightedText);
    dom::Node *node = span.start.node.get();
    if (!node->isText())
        node = span.start.childAfter() ? span.start.childAfter() : node->nextSkippingChildren(nullptr);
    for (; node; node = node->next()) {
        if (ranges::Position::compare(ranges::Position::startOf(*node), span.end) >= 0) break;
        if (!node->isText()) continue;
        paint::Highlight highlight{node, 0, ranges::Position::lengthOf(*node), back, front};
        if (node == span.start.node.get()) highlight.from = span.start.offset;
        if (node == span.end.node.get()) highlight.to = span.end.offset;
        if (highlight.to > highlight.from) options.highlights.push_back(highlight);
    }
}

void View::paint(const QPaintEvent &event)
{
    QPainter painter(mWidget.viewport());
    painter.fillRect(event.rect(), Qt::white);
    if (!mLoaded) return;
    painter.setRenderHint(QPainter::Antialiasing, false);
    paint::Options options;
    options.scroll = QPointF(mWidget.horizontalScrollBar()->value(), mWidget.verticalScrollBar()->value());
    options.clip = QRectF(toDocument(event.rect().topLeft()), QSizeF(event.rect().size()) / mZoom);
    options.showBorders = mWidget.showBorders() && mWidget.editMode() == dom::EditMode::Edit;
    addHighlights(*mLoaded, mWidget.palette(), mWidget.hasFocus(), options);
    const bool composing = !mComposition.isEmpty() && showsCaret();
    if (mCaretOn && showsCaret() && !composing) options.caret = caretBox();
    if (mDropPlace && mDropPlace.node->isConnected())
        options.caret = mLoaded->queries().caretRect({mDropPlace.node.get(), mDropPlace.clipped().offset});
    painter.scale(mZoom, mZoom);
    paint::Painter(mLoaded->tree(), options).paint(painter);
    painter.translate(-options.scroll);
    paintHotSpots(painter);
    if (!composing) return;
    layComposition();
    mComposition.paint(painter);
}

void View::layComposition()
{
    dom::Element *const element = caretElement();
    if (element) mComposition.lay(mLoaded->styles().engine().styleFor(*element), caretBox());
}

// The caret

bool View::showsCaret() const
{
    return mLoaded && mWidget.hasFocus() && mLoaded->selection().isCaret() && mLoaded->editor().canEdit();
}

QRectF View::caretBox()
{
    const ranges::Position &at = mLoaded->selection().focus();
    return mLoaded->queries().caretRect({at.node.get(), at.offset});
}

QRect View::caretRect()
{
    if (!showsCaret()) return {};
    QRectF box = toClient(caretBox());
    if (!mComposition.isEmpty()) {
        layComposition();
        if (const QRectF cursor = mComposition.cursorRect(); !cursor.isNull()) box = toClient(cursor);
    }
    return QRect(int(std::floor(box.x())), int(std::floor(box.y())), std::max(1, int(box.width())),
                 int(std::lround(box.height())));
}

void View::showCaret()
{
    mCaretOn = true;
    const int flash = QApplication::cursorFlashTime();
    if (flash > 1 && mWidget.hasFocus())
        mBlink.start(flash / 2, this);
    else
        mBlink.stop();
    mWidget.viewport()->update();
}

void View::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != mBlink.timerId()) return QObject::timerEvent(event);
    mCaretOn = !mCaretOn;
    if (mLoaded && mLoaded->selection().isCaret())
        mWidget.viewport()->update(toClient(caretBox()).toAlignedRect().adjusted(-2, -2, 2, 2));
}

void View::focusChanged(bool focused)
{
    if (!focused) mComposition.clear();
    showCaret();
}

dom::Element *View::caretElement()
{
    if (!mLoaded) return nullptr;
    dom::Element *element = mLoaded->selection().focus().element();
    return element ? element : mLoaded->document().body();
}

/// After input or a command: everything that follows from a changed tree.
void View::edited()
{
    if (!mLoaded) return;
    showSelection();
    showCaret();
    commandStatesChanged();
}

void View::showSelection()
{
    if (!mLoaded) return;
    updateScrollBars();
    ensureVisible(caretBox());
}

/// Told behind the records of what is under way: who asks then whether there is something to undo gets the new answer.
/// Not for arrow keys: one that is held down would have all states asked for at each place that the caret passes.
void View::commandStatesChanged()
{
    if (mArrowKey) return;
    changes::EditScope::whenTold(this, [this] { Q_EMIT mWidget.commandStateChange(-1, true); });
}

void View::selectionMoved()
{
    if (!mLoaded) return;
    // What else is selected takes the place of cells and areas.
    if (!mSelectingCells) {
        mCells.clear();
        mArea = nullptr;
    }
    showCaret();
    Q_EMIT mWidget.selectionChanged();
    commandStatesChanged();
}

// Boxes

dom::Element *View::elementAt(QPoint client)
{
    if (!mLoaded || !mWidget.viewport()->rect().contains(client)) return nullptr;
    dom::Element *element = mLoaded->queries().hitTest(toDocument(client)).element;
    return element ? element : mLoaded->document().body();
}

QRect View::elementRect(const dom::Element &element)
{
    return mLoaded ? toClient(mLoaded->queries().borderBox(element)).toRect() : QRect();
}

QRect View::offsetBox(const dom::Element &element)
{
    return mLoaded->queries().offsetBox(element);
}

dom::Element *View::offsetParent(const dom::Element &element)
{
    return mLoaded->queries().offsetParent(element);
}

static bool isView(const dom::Element &element)
{
    return &element == element.document().body();
}

QSize View::clientSize(const dom::Element &element)
{
    return isView(element) ? mLoaded->tree().viewport() : mLoaded->queries().clientSize(element);
}

QSize View::scrollSize(const dom::Element &element)
{
    return isView(element) ? mLoaded->tree().pageSize() : mLoaded->queries().scrollSize(element);
}

QPoint View::scrollPosition(const dom::Element &element)
{
    if (isView(element)) return {mWidget.horizontalScrollBar()->value(), mWidget.verticalScrollBar()->value()};
    return element.rareDataIfAny() ? element.rareDataIfAny()->scroll : QPoint();
}

void View::setScrollPosition(dom::Element &element, QPoint position)
{
    if (isView(element)) {
        updateScrollBars();
        mWidget.horizontalScrollBar()->setValue(position.x());
        mWidget.verticalScrollBar()->setValue(position.y());
        return;
    }
    const QSize room = scrollSize(element) - clientSize(element);
    element.rareData().scroll = {std::clamp(position.x(), 0, std::max(0, room.width())),
                                 std::clamp(position.y(), 0, std::max(0, room.height()))};
    mWidget.viewport()->update();
}

QByteArray View::boxesAsJson(QSize size)
{
    if (!mLoaded) return {};
    const QSize before = mLoaded->tree().viewport();
    mLoaded->tree().setViewport(size);
    const QByteArray json = QJsonDocument(layout::boxDump(mLoaded->tree())).toJson(QJsonDocument::Compact);
    mLoaded->tree().setViewport(before);
    return json;
}

QString View::checkPositions()
{
    if (!mLoaded) return {};
    for (const ranges::Position &at : {mLoaded->selection().anchor(), mLoaded->selection().focus()})
        if (at && (!at.node->isConnected() || at.offset > ranges::Position::lengthOf(*at.node)))
            return QStringLiteral("the selection isn't in the tree");
    return {};
}

QString View::checkLayout()
{
    return mLoaded ? mLoaded->tree().compareWithFresh() : QString();
}

} // namespace surface
