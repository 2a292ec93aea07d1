// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/surface/PrintSettings.h"

#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QPrinter;

namespace surface {

class HTMLEditor;

/// The page's margins, numbers and backgrounds, for a person to choose: a tab of the print dialog, and the head of the
/// preview.
class PrintOptionsPanel : public QWidget
{
    Q_OBJECT
public:
    explicit PrintOptionsPanel(const PrintSettings &settings, QWidget *parent = nullptr);
    /// Writes what was chosen.
    void apply(PrintSettings &settings) const;

Q_SIGNALS:
    void changed();

private:
    void updateMargins();
    QCheckBox *mPageNumbers, *mTitle, *mBackgrounds, *mOwnMargins;
    QDoubleSpinBox *mMargins[4]; ///< left, top, right, bottom; millimetres
};

/// Asks for printer and options, and prints. False where the person would rather not, or it failed. Remembers what was
/// chosen in `settings`.
bool printWithDialog(HTMLEditor &surface, PrintSettings &settings);
/// Shows the pages, and prints from there.
void showPrintPreview(HTMLEditor &surface, PrintSettings &settings);
/// Prints with a progress box, from which it can be cancelled. False where it was, or failed.
bool printWithProgress(HTMLEditor &surface, QPrinter &printer, const PrintSettings &settings);

} // namespace surface
