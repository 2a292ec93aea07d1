// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// A bare holder of children that tells of its own size, so that its owner can place them.
class Container : public QWidget
{
    Q_OBJECT
public:
    explicit Container(QWidget *parent = nullptr);

Q_SIGNALS:
    /// The size in pixels, after it has changed.
    void Resize(int Width, int Height);

protected:
    void resizeEvent(QResizeEvent *event) override;
};
