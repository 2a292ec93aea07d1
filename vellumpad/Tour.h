// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class MainWindow;

/// Shows the three views of the open document to nobody: saves a picture of each and prints where it lies. For machines
/// without a display.
int runTour(MainWindow &window);
