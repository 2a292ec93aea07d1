// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace dom {

/// Line ends are LF in a tree, however they came in: as CR LF, as a lone CR, as a character reference.
inline QString withLf(QString text)
{
    if (!text.contains(u'\r')) return text;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(u'\r', u'\n');
    return text;
}

} // namespace dom
