// SPDX-License-Identifier: GPL-3.0-or-later
// QScintilla's headers are written with Qt's keywords, which this project leaves undefined.
#pragma once

#include <QObject>

#define signals Q_SIGNALS
#define slots Q_SLOTS
#include <Qsci/qscicommandset.h>
#include <Qsci/qscilexercustom.h>
#include <Qsci/qsciscintilla.h>
#undef signals
#undef slots
