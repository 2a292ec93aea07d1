// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/Theme.h"

#include <QStyleOption>
#include <QStylePainter>

bool Theme::isActive() const
{
    return mWidget.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, &mWidget) > 0;
}

void Theme::paintEditBorder() const
{
    QStylePainter painter(&mWidget);
    QStyleOptionFrame option;
    option.initFrom(&mWidget);
    option.rect = mWidget.rect();
    option.frameShape = QFrame::StyledPanel;
    option.lineWidth = 1;
    option.state |= QStyle::State_Sunken;
    painter.drawPrimitive(QStyle::PE_Frame, option);
}
