// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace scripting {

class Interpreter;

/// The live body's text with marks where the selection stands.
QString markedBody(Interpreter &in);
/// `print log|undo|undo-count|state`; false for anything else.
bool printInside(Interpreter &in, const QString &what);

} // namespace scripting
