// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

class QWidget;

namespace scripting {

class Interpreter;
class Words;

/// What the pointer meets in the view that is shown; its pixels are the client ones.
QWidget &clientWidget(Interpreter &in);
/// `X Y`, or a path to an element: its middle. In client pixels.
QPoint readPoint(Interpreter &in, Words &words);

} // namespace scripting
