// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

/// The visual style's part in the control: whether it draws frames, and the frame of an edit field.
class Theme
{
public:
    /// `widget` (not owned) is what is drawn on; it must live longer.
    explicit Theme(QWidget &widget) : mWidget(widget) {}

    /// Whether the style draws frames at all; where it draws none there is nothing to be themed.
    bool isActive() const;
    /// The themed border of an edit field, over the whole of the widget. To be called while it is painted.
    void paintEditBorder() const;

private:
    QWidget &mWidget;
};
