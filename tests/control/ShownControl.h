// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/Vellum5.h"

#include <QCoreApplication>

/// A control on the screen whose text comes back as it was given.
struct ShownControl {
    Vellum5 control;

    ShownControl()
    {
        control.resize(600, 400);
        control.setAutoFormatHTML(false);
        control.show();
    }
    ~ShownControl() { control.Terminate(); }

    /// Until what was posted to the surface is there.
    void settle()
    {
        while (control.VisualEditControl()->isLoading())
            QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
};
