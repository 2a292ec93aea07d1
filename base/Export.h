// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#ifdef VELLUMKIT_BUILD
#define VELLUMKIT_EXPORT Q_DECL_EXPORT
#else
#define VELLUMKIT_EXPORT Q_DECL_IMPORT
#endif
