// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/Container.h"

#include <QResizeEvent>

Container::Container(QWidget *parent) : QWidget(parent) {}

void Container::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    Q_EMIT Resize(event->size().width(), event->size().height());
}
