// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "support/InstanceCounts.h"

#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWidget>

namespace support {

/// A tool tip of its own text and times, for surfaces that show hints about what lies under the pointer rather than
/// about the whole widget.
class ToolTip : public QObject
{
    Q_OBJECT
public:
    explicit ToolTip(QObject *parent = nullptr);
    ~ToolTip() override;

    /// The text; "" hides the tip. A shown tip changes at once.
    QString TipText() const { return mText; }
    void setTipText(const QString &text);
    /// The widget that the tip belongs to; without one nothing is shown.
    QWidget *Parent() const { return mWidget; }
    void setParentWidget(QWidget *widget);
    /// Milliseconds before the tip appears, and those for which it then stays (0: until hidden).
    int DelayTime() const { return mDelay.interval(); }
    void setDelayTime(int ms) { mDelay.setInterval(ms); }
    int VisibleTime() const { return mVisible.interval(); }
    void setVisibleTime(int ms) { mVisible.setInterval(ms); }

    /// Shows the tip at a point of the parent widget (pixels) after its delay. Asked again while one is on its way, the
    /// new point counts and the delay goes on.
    void Show(const QPoint &position);
    void Hide();
    bool isShown() const { return mShown; }

private:
    void appear();

    QString mText;
    QPointer<QWidget> mWidget;
    QPoint mPosition;
    base::Timer mDelay, mVisible;
    bool mShown = false;
    InstanceCounter mCounter{Component::ToolTip};
};

} // namespace support
