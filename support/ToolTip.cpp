// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ToolTip.h"

#include <QToolTip>
#include <limits>

namespace support {

namespace {
constexpr int usualDelayMs = 500;
constexpr int usualVisibleMs = 5000;
} // namespace

ToolTip::ToolTip(QObject *parent) : QObject(parent)
{
    mDelay.setInterval(usualDelayMs);
    mVisible.setInterval(usualVisibleMs);
    connect(&mDelay, &base::Timer::timeout, this, &ToolTip::appear);
    connect(&mVisible, &base::Timer::timeout, this, &ToolTip::Hide);
}

ToolTip::~ToolTip()
{
    Hide();
}

void ToolTip::setTipText(const QString &text)
{
    if (text == mText) return;
    mText = text;
    if (mText.isEmpty())
        Hide();
    else if (mShown)
        appear();
}

void ToolTip::setParentWidget(QWidget *widget)
{
    if (widget == mWidget) return;
    Hide();
    mWidget = widget;
}

void ToolTip::Show(const QPoint &position)
{
    if (mText.isEmpty() || !mWidget) return;
    mPosition = position;
    if (mShown || mDelay.interval() <= 0)
        appear();
    else
        mDelay.setEnabled(true);
}

void ToolTip::Hide()
{
    mDelay.setEnabled(false);
    mVisible.setEnabled(false);
    if (!mShown) return;
    mShown = false;
    QToolTip::hideText();
}

void ToolTip::appear()
{
    mDelay.setEnabled(false);
    if (!mWidget || !mWidget->isVisible()) return;
    mShown = true;
    // The end of the tip is ours to time, so the toolkit's own must lie beyond it. Its hints are rich text if they look
    // like it; ours never are.
    QToolTip::showText(mWidget->mapToGlobal(mPosition), mText.toHtmlEscaped(), mWidget, {},
                       std::numeric_limits<int>::max());
    if (mVisible.interval() > 0) mVisible.restart();
}

} // namespace support
