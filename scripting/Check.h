// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace scripting {

class Interpreter;

/// What is wrong with the document, its positions, its layout, its text or its log; empty for nothing.
QString checkDocument(Interpreter &in);

} // namespace scripting
