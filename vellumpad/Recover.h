// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class MainWindow;

/// Offers what an earlier run left, if it left something. The first document that somebody takes comes into `window` if
/// nothing was changed there, each other one into a window of its own.
void offerRecovery(MainWindow &window);
