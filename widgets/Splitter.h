// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPointer>
#include <QWidget>

/// Two panes with a bar between them that a person drags or moves by the arrow keys. A pane that is empty or hidden
/// leaves the whole place to the other one, without a bar.
class Splitter : public QWidget
{
    Q_OBJECT
public:
    enum class PositionMode {
        FirstPanePercent, ///< `Position` is the first pane's share, 0 to 100; a resize keeps the share
        SecondPanePixels, ///< `Position` is the second pane's extent; a resize leaves it as it is
    };

    /// `Qt::Horizontal`: the panes stand side by side. `Qt::Vertical`: one above the other.
    explicit Splitter(Qt::Orientation orientation, QWidget *parent = nullptr);
    ~Splitter() override;

    Qt::Orientation orientation() const { return mOrientation; }
    void setOrientation(Qt::Orientation orientation);

    /// The pane becomes a child of the splitter. Null empties the place; the pane that stood there is hidden, and stays
    /// a child until its owner moves it elsewhere or deletes it.
    void setPane1(QWidget *pane) { setPane(0, pane); }
    void setPane2(QWidget *pane) { setPane(1, pane); }
    QWidget *pane1() const { return mPanes[0]; }
    QWidget *pane2() const { return mPanes[1]; }

    PositionMode positionMode() const { return mMode; }
    /// The bar stays where it is; `Position` tells it in the new unit.
    void setPositionMode(PositionMode mode);
    /// In the unit of the mode, as it was set or dragged. A place too small for it shows less, and doesn't change it.
    double Position() const { return mPosition; }
    /// Raises no `AfterDrag`.
    void setPosition(double position);

    /// Of the bar; an invalid colour gives back the palette's.
    QColor BackColor() const;
    void setBackColor(const QColor &color);
    /// The bar's rectangle in pixels; empty while one pane has all of the place.
    QRect barRect() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// A person has moved the bar: at the end of a drag that moved it, or after a key.
    void AfterDrag();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    class Bar;
    friend class Bar;

    void setPane(int index, QWidget *pane);
    bool isShown(int index) const;
    bool mirrored() const;
    int length() const;      // of both panes together, along the splitter
    int firstExtent() const; // of the first pane, in pixels
    int leastExtent(int index) const;
    double positionOf(int firstExtent) const;
    bool moveByHand(int firstExtent);
    void place();

    Qt::Orientation mOrientation;
    PositionMode mMode = PositionMode::FirstPanePercent;
    double mPosition = 50;
    QPointer<QWidget> mPanes[2];
    QColor mBackColor;
    Bar *mBar;
};
