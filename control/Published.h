// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Publishes the control's classes for late binding and registers them with the class factory. Runs once a process.
void publishControl();
