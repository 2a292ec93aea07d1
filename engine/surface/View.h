// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Document.h"
#include "engine/dom/EventObject.h"
#include "engine/ranges/Position.h"
#include "engine/editing/CommandTable.h"
#include "engine/surface/CellSelection.h"
#include "engine/surface/Composition.h"
#include "engine/surface/DesktopClipboard.h"
#include "engine/surface/DragSelect.h"
#include "engine/surface/HotSpots.h"

#include "base/Clock.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QPoint>
#include <QRect>
#include <QScopedValueRollback>
#include <QVariant>
#include <memory>

class QKeyEvent;
class QMimeData;
class QMouseEvent;
class QPaintEvent;
class QPainter;

namespace editing {
class Editor;
}

namespace surface {

class HTMLEditor;
class LoadedDocument;
class RangeView;

/// What the widget shows and what input does to it: between the widget, which knows Qt, and the document's layout,
/// selection and editor, which don't. Points are client pixels unless told otherwise; a document's coordinates are CSS
/// pixels from its top left corner.
class View final : public QObject, public dom::BoxServices, public dom::InteractionServices
{
public:
    explicit View(HTMLEditor &widget);
    ~View() override;

    HTMLEditor &widget() const { return mWidget; }
    void documentGone();
    void documentLoaded(LoadedDocument &loaded);
    void modeChanged();

    void paint(const QPaintEvent &event);
    void resized();
    void scrolled();
    void scrollToAnchor(const QString &name);
    /// In the wheel's eighths of degrees.
    void zoomBy(int delta);
    double zoom() const { return mZoom; }
    void focusChanged(bool focused);

    dom::Element *elementAt(QPoint client);
    dom::Element *caretElement();
    /// The caret as shown; null where none is.
    QRect caretRect();
    QRect elementRect(const dom::Element &element);
    bool isControlSelected() const;
    editing::Editor *editor();
    CellSelection &cellSelection() { return mCells; }
    /// While it lives, what is selected otherwise leaves the selected cells as they are.
    class CellsStay
    {
    public:
        explicit CellsStay(View &view) : mStay(view.mSelectingCells, true) {}

    private:
        QScopedValueRollback<bool> mStay;
    };
    /// Whoever sets the caret while it lives doesn't get it out of the part of the page that can be edited where it was:
    /// in the end it comes back to the near end of the part.
    class CaretStays
    {
    public:
        explicit CaretStays(View &view);
        ~CaretStays();

    private:
        View &mView;
        base::Ref<dom::Element> mPart; ///< null where all of the page can be edited
    };
    /// Scrolls as far as it must for the moving end of the selection to be seen.
    void showSelection();
    /// The area of an image map that is selected; null for none, and once it has gone.
    dom::Element *selectedArea() const;
    void selectArea(dom::Element *area);
    /// While it isn't None, the mouse draws hot spots on images.
    HotSpotTool::Shape hotSpotShape() const { return mHotSpots.shape(); }
    void setHotSpotShape(HotSpotTool::Shape shape);

    bool wantsKey(const QKeyEvent &event) const;
    bool keyPressed(const QKeyEvent &event);
    void mousePressed(const QMouseEvent &event);
    void mouseReleased(const QMouseEvent &event, bool goesOn);
    void mouseDoubleClicked(const QMouseEvent &event);
    void mouseMoved(const QMouseEvent &event);
    // Drags from elsewhere: text, HTML and files with text, over what can be edited.
    static bool canTake(const QMimeData &data);
    /// Shows where it would come to; false where nothing can be dropped.
    bool dragOver(QPoint client, const QMimeData &data);
    void dragLeaves();
    /// One step; false where nothing was taken.
    bool drop(QPoint client, const QMimeData &data);
    /// The next press starts a new row of clicks.
    void forgetClicks() { mClicks = 0; }
    void inputMethod(const QInputMethodEvent &event);
    QVariant inputMethodQuery(Qt::InputMethodQuery query);

    // Commands, by number and by word
    struct CommandState {
        bool enabled = false;
        QString state = QStringLiteral("off");
        QString value;
    };
    int commandStatus(int command);
    bool execCommand(int command, const QString &value);
    bool execNamed(const QString &name, const QString &value);
    CommandState queryNamed(const QString &name);
    bool hasCommand(const QString &name) const;
    /// What is selected: cells, else objects or text.
    editing::Snippet copied() const;
    /// Others than the desktop's, for checks; `primary` is null where the desktop has none. Not owned.
    void setClipboards(editing::Clipboard *clipboard, editing::Clipboard *primary);

    const base::Ref<dom::Element> &hovered() const { return mHovered; }
    void setHovered(const base::Ref<dom::Element> &element) { mHovered = element; }
    void setCurrentEvent(dom::EventObject *event) { mCurrentEvent = event; }

    // For checks
    /// Boxes of the page as a view of that size would lay it out.
    QByteArray boxesAsJson(QSize size);
    QString checkPositions();
    QString checkLayout();
    LoadedDocument *loaded() const { return mLoaded; }

    // dom::BoxServices
    QRect offsetBox(const dom::Element &element) override;
    dom::Element *offsetParent(const dom::Element &element) override;
    QSize clientSize(const dom::Element &element) override;
    QSize scrollSize(const dom::Element &element) override;
    QPoint scrollPosition(const dom::Element &element) override;
    void setScrollPosition(dom::Element &element, QPoint position) override;
    dom::Element *elementFromPoint(QPoint client) override { return elementAt(client); }
    // dom::InteractionServices
    ranges::SelectionObject *selection() override;
    base::Ref<dom::EventObject> currentEvent() override { return mCurrentEvent; }
    void focus(dom::Element &element) override;
    void click(dom::Element &element) override;

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    friend class RangeView;
    enum class Extend { No, Yes };
    QPointF toDocument(QPointF client) const;
    QRectF toClient(const QRectF &document) const;
    void layoutPage();
    void updateScrollBars();
    bool holdsCaret(const dom::Element &element) const;
    void edited();
    void commandStatesChanged();
    bool mArrowKey = false; ///< one is being handled; whoever cares about states waits for its end and a pause
    void selectionMoved();
    void ensureVisible(const QRectF &document);
    void showCaret();
    QRectF caretBox();
    void layComposition();
    bool showsCaret() const;
    ranges::Position positionAt(QPointF document, bool *inside = nullptr);
    void moveTo(const ranges::Position &position, Extend extend);
    bool moveByKey(const QKeyEvent &event);
    bool leaveObjects(const QKeyEvent &event);
    bool editByKey(const QKeyEvent &event);
    ranges::Position lineMove(const ranges::Position &from, int lines);
    DragSelect::Page pageForDrag();
    ranges::Span spanAt(const ranges::Position &at, DragSelect::Unit unit);
    void selectUnit(DragSelect::Unit unit, const ranges::Position &at);
    dom::Element *fixedPart(dom::Node &node) const;
    dom::Element *wholePart(dom::Node &node) const;
    dom::Element *objectPressed(const ranges::Position &at) const;
    ranges::Position besidePart(const ranges::Position &at, QPoint client);
    dom::Element *spanToSelect(dom::Node &node) const;
    ranges::Position withinPart(const ranges::Position &anchor, const ranges::Position &focus) const;
    ranges::Position besideWidget(const ranges::Position &anchor, const ranges::Position &focus) const;
    void updateCursor(QPoint client);
    ranges::Position dropPlaceAt(QPoint client);
    bool isInSelection(const ranges::Position &place) const;
    void showDropPlace(const ranges::Position &place);
    bool pressOnSelection(const QMouseEvent &event, const ranges::Position &at, bool inside);
    void pressObject(dom::Element &object);
    bool dragSelection(const QMouseEvent &event);
    bool releaseSelection(const QMouseEvent &event);
    bool stopDragging();
    void moveSelection(const ranges::Position &to, bool copies);
    QRectF imageBox(const dom::Element &image);
    QPointF toImage(const dom::Element &image, QPointF client);
    void areaDrawn();
    bool pressOnImage(QPoint client);
    bool moveOnImage(QPoint client);
    bool releaseOnImage(QPoint client);
    bool pressOnSummary(QPoint client);
    bool hotSpotKey(const QKeyEvent &event);
    void paintHotSpots(QPainter &painter);
    editing::CommandContext commandContext();
    bool isLockedFor(const QString &name) const;
    bool execOnText(const QString &name, const QString &value);
    CommandState queryOnText(const QString &name);
    bool clipboardKey(const QKeyEvent &event);
    bool pasteAsFits();
    bool pasteAtPoint(QPoint client);
    void offerSelection();
    // With cells selected, these work on the cells.
    enum class CellCommand : uint8_t { None, Delete, Copy, Cut, Paste };
    static CellCommand cellCommand(const QString &name);
    bool runOnCells(CellCommand command);
    bool canRunOnCells(CellCommand command) const;
    bool typeOverCells(const QString &text);
    bool pasteOverCells();
    bool hasEditableCells() const;
    void cellsChanged();
    bool dragCells(QPoint client);
    bool selectFromEdge(QPoint client);
    bool dragAlongEdge(QPoint client);
    bool moveCells(const QKeyEvent &event);
    bool extendOverCells(const ranges::Position &to);
    dom::Element *anchorOf(dom::Element *element) const;

    HTMLEditor &mWidget;
    std::unique_ptr<RangeView> mRangeView;
    LoadedDocument *mLoaded = nullptr;
    base::Ref<dom::Element> mHovered;
    base::Ref<dom::EventObject> mCurrentEvent;
    base::Ref<dom::Element> mPressedAnchor;
    base::Ref<dom::Element> mSpanToSelect;
    ranges::Span mAtPress; ///< the selection that a plain press left
    Composition mComposition;
    double mZoom = 1;
    double mGoalX = -1; ///< where Up and Down aim; negative: at the caret
    DragSelect mDrag;
    CellSelection mCells;
    enum class Edge : uint8_t { None, Left, Top };
    Edge mEdge = Edge::None; ///< of a table, along which rows or columns are drawn
    base::Ref<dom::Element> mEdgeCell;
    enum class Moving : uint8_t { No, Perhaps, Yes };
    Moving mMoving = Moving::No;  ///< what is selected is dragged
    ranges::Position mPressPlace; ///< where the caret comes if it isn't; null for objects
    ranges::Position mDropPlace;  ///< shown while something is dragged over the page
    bool mSelectingCells = false; ///< the text selection moves because of the cells
    base::Ref<dom::Element> mArea;
    HotSpotTool mHotSpots;
    base::Ref<dom::Node> mPressed; ///< where the button went down
    int mClicks = 0;
    QPoint mLastClick;
    QElapsedTimer mClickTimer;
    QBasicTimer mBlink;
    bool mCaretOn = true;
    bool mUpdatingBars = false;
    DesktopClipboard mDesktopClipboard;
    DesktopClipboard mDesktopSelection{QClipboard::Selection};
    editing::Clipboard *mClipboard = &mDesktopClipboard;
    editing::Clipboard *mPrimary = nullptr;
    base::Timer mOfferSoon;
};

} // namespace surface
