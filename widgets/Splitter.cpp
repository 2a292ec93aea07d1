// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/Splitter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <cmath>

namespace {

constexpr int keyStep = 10; // pixels; one with Ctrl held

} // namespace

/// The bar: takes the pointer and the focus, and hands each wish to the splitter.
class Splitter::Bar : public QWidget
{
public:
    explicit Bar(Splitter *splitter) : QWidget(splitter), mSplitter(splitter)
    {
        setFocusPolicy(Qt::StrongFocus);
        setAccessibleName(Splitter::tr("Splitter"));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), mSplitter->BackColor());
        QStyleOption option;
        option.initFrom(this);
        option.palette.setColor(QPalette::Window, mSplitter->BackColor());
        // The style names the split line's direction, we that of the panes.
        option.state.setFlag(QStyle::State_Horizontal, mSplitter->mOrientation == Qt::Horizontal);
        style()->drawControl(QStyle::CE_Splitter, &option, &painter, this);
        if (hasFocus()) {
            QStyleOptionFocusRect focus;
            focus.initFrom(this);
            focus.backgroundColor = mSplitter->BackColor();
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
        }
    }
    void mousePressEvent(QMouseEvent *event) override
    {
        if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
        mDragging = true;
        mMoved = false;
        mFirstAtPress = mSplitter->firstExtent();
        mPress = event->globalPosition().toPoint();
    }
    void mouseMoveEvent(QMouseEvent *event) override
    {
        if (!mDragging) return;
        const QPoint delta = event->globalPosition().toPoint() - mPress;
        int along = mSplitter->mOrientation == Qt::Horizontal ? delta.x() : delta.y();
        if (mSplitter->mirrored()) along = -along;
        mMoved = mSplitter->moveByHand(mFirstAtPress + along) || mMoved;
    }
    void mouseReleaseEvent(QMouseEvent *event) override
    {
        if (!mDragging || event->button() != Qt::LeftButton) return;
        mDragging = false;
        if (mMoved) Q_EMIT mSplitter->AfterDrag();
    }
    void keyPressEvent(QKeyEvent *event) override
    {
        if (mDragging && event->key() == Qt::Key_Escape) {
            mDragging = false;
            mSplitter->moveByHand(mFirstAtPress);
            return;
        }
        const bool horizontal = mSplitter->mOrientation == Qt::Horizontal;
        int direction = 0;
        if (event->key() == (horizontal ? Qt::Key_Left : Qt::Key_Up)) direction = -1;
        if (event->key() == (horizontal ? Qt::Key_Right : Qt::Key_Down)) direction = 1;
        int target = 0;
        if (event->key() == Qt::Key_End)
            target = mSplitter->length();
        else if (direction != 0) {
            if (mSplitter->mirrored()) direction = -direction;
            const int step = event->modifiers() & Qt::ControlModifier ? 1 : keyStep;
            target = mSplitter->firstExtent() + direction * step;
        } else if (event->key() != Qt::Key_Home)
            return QWidget::keyPressEvent(event);
        if (mSplitter->moveByHand(target)) Q_EMIT mSplitter->AfterDrag();
    }
    void focusInEvent(QFocusEvent *) override { update(); }
    void focusOutEvent(QFocusEvent *) override { update(); }

private:
    Splitter *mSplitter;
    QPoint mPress;
    int mFirstAtPress = 0;
    bool mDragging = false;
    bool mMoved = false;
};

Splitter::Splitter(Qt::Orientation orientation, QWidget *parent)
    : QWidget(parent), mOrientation(orientation), mBar(new Bar(this))
{
    place();
}

Splitter::~Splitter()
{
    for (QWidget *pane : mPanes) {
        if (pane) pane->removeEventFilter(this);
    }
}

void Splitter::setOrientation(Qt::Orientation orientation)
{
    if (mOrientation == orientation) return;
    mOrientation = orientation;
    updateGeometry();
    place();
}

void Splitter::setPane(int index, QWidget *pane)
{
    QWidget *old = mPanes[index];
    if (old == pane) return;
    if (old) {
        old->removeEventFilter(this);
        mPanes[index] = nullptr;
        if (old->parentWidget() == this) old->hide();
    }
    if (pane) {
        if (mPanes[1 - index] == pane) mPanes[1 - index] = nullptr; // it changes places
        const bool shown = !pane->isHidden() || !pane->testAttribute(Qt::WA_WState_ExplicitShowHide);
        mPanes[index] = pane;
        if (pane->parentWidget() != this) pane->setParent(this);
        pane->setVisible(shown);
        pane->removeEventFilter(this);
        pane->installEventFilter(this);
    }
    updateGeometry();
    place();
}

bool Splitter::isShown(int index) const
{
    return mPanes[index] && mPanes[index]->parentWidget() == this && !mPanes[index]->isHidden();
}

bool Splitter::mirrored() const
{
    return mOrientation == Qt::Horizontal && isRightToLeft();
}

int Splitter::length() const
{
    const int whole = mOrientation == Qt::Horizontal ? width() : height();
    return std::max(0, whole - style()->pixelMetric(QStyle::PM_SplitterWidth, nullptr, this));
}

int Splitter::leastExtent(int index) const
{
    if (!isShown(index)) return 0;
    const QWidget *pane = mPanes[index];
    const QSize size = pane->minimumSize().expandedTo(pane->minimumSizeHint());
    return std::max(0, mOrientation == Qt::Horizontal ? size.width() : size.height());
}

int Splitter::firstExtent() const
{
    const int all = length();
    const double wish = mMode == PositionMode::FirstPanePercent ? all * mPosition / 100 : all - mPosition;
    // The second pane's least size gives way first: what is edited stands in the first.
    const int most = std::max(all - leastExtent(1), 0);
    return std::min(std::max(std::min(int(std::lround(wish)), most), leastExtent(0)), all);
}

double Splitter::positionOf(int firstExtent) const
{
    const int all = length();
    if (mMode == PositionMode::SecondPanePixels) return all - firstExtent;
    return all > 0 ? 100.0 * firstExtent / all : mPosition;
}

void Splitter::setPositionMode(PositionMode mode)
{
    if (mMode == mode) return;
    const int first = firstExtent();
    mMode = mode;
    mPosition = positionOf(first);
    place();
}

void Splitter::setPosition(double position)
{
    if (!std::isfinite(position)) return;
    position = std::max(position, 0.0);
    if (mMode == PositionMode::FirstPanePercent) position = std::min(position, 100.0);
    mPosition = position;
    place();
}

bool Splitter::moveByHand(int wish)
{
    const int before = firstExtent();
    const int most = std::max(length() - leastExtent(1), leastExtent(0));
    const int first = std::clamp(wish, std::min(leastExtent(0), most), most);
    if (first == before) return false;
    mPosition = positionOf(first);
    place();
    return firstExtent() != before;
}

QColor Splitter::BackColor() const
{
    return mBackColor.isValid() ? mBackColor : palette().color(QPalette::Window);
}

void Splitter::setBackColor(const QColor &color)
{
    mBackColor = color;
    mBar->update();
}

QRect Splitter::barRect() const
{
    return isShown(0) && isShown(1) ? mBar->geometry() : QRect();
}

void Splitter::place()
{
    const bool both = isShown(0) && isShown(1);
    mBar->setVisible(both);
    mBar->setCursor(mOrientation == Qt::Horizontal ? Qt::SplitHCursor : Qt::SplitVCursor);
    if (!both) {
        for (int i = 0; i < 2; ++i) {
            if (isShown(i)) mPanes[i]->setGeometry(rect());
        }
        return;
    }
    const int first = firstExtent();
    const int bar = style()->pixelMetric(QStyle::PM_SplitterWidth, nullptr, this);
    QRect one, line, two;
    if (mOrientation == Qt::Horizontal) {
        one = QRect(0, 0, first, height());
        line = QRect(first, 0, bar, height());
        two = QRect(first + bar, 0, length() - first, height());
    } else {
        one = QRect(0, 0, width(), first);
        line = QRect(0, first, width(), bar);
        two = QRect(0, first + bar, width(), length() - first);
    }
    const Qt::LayoutDirection direction = mOrientation == Qt::Horizontal ? layoutDirection() : Qt::LeftToRight;
    mPanes[0]->setGeometry(QStyle::visualRect(direction, rect(), one));
    mBar->setGeometry(QStyle::visualRect(direction, rect(), line));
    mPanes[1]->setGeometry(QStyle::visualRect(direction, rect(), two));
}

QSize Splitter::sizeHint() const
{
    return minimumSizeHint().expandedTo(QSize(200, 200));
}

QSize Splitter::minimumSizeHint() const
{
    QSize result;
    const bool horizontal = mOrientation == Qt::Horizontal;
    for (int i = 0; i < 2; ++i) {
        if (!isShown(i)) continue;
        const QSize size = mPanes[i]->minimumSize().expandedTo(mPanes[i]->minimumSizeHint());
        if (horizontal)
            result = QSize(result.width() + size.width(), std::max(result.height(), size.height()));
        else
            result = QSize(std::max(result.width(), size.width()), result.height() + size.height());
    }
    const int bar = isShown(0) && isShown(1) ? style()->pixelMetric(QStyle::PM_SplitterWidth, nullptr, this) : 0;
    return horizontal ? QSize(result.width() + bar, result.height()) : QSize(result.width(), result.height() + bar);
}

bool Splitter::event(QEvent *event)
{
    if (event->type() == QEvent::ChildRemoved || event->type() == QEvent::LayoutRequest) place();
    return QWidget::event(event);
}

bool Splitter::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShowToParent:
    case QEvent::HideToParent:
        updateGeometry();
        place();
        break;
    case QEvent::ParentChange:
        for (QPointer<QWidget> &pane : mPanes) {
            if (pane == watched && pane->parentWidget() != this) {
                pane->removeEventFilter(this);
                pane = nullptr;
            }
        }
        place();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void Splitter::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    place();
}

void Splitter::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange || event->type() == QEvent::StyleChange) place();
}
