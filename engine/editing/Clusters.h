// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

namespace editing {

/// How many units Backspace takes behind a character as a reader sees it: the last code point, so that an accent or a
/// vowel sign that was mistyped can be typed again; but all of a picture, a flag or a key cap, of which no part means
/// anything by itself, and a variation selector with what it varies.
qsizetype unitsForBackspace(QStringView cluster);

} // namespace editing
