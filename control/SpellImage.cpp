// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/SpellImage.h"

#include <QRegularExpression>

QString spellImagePath(const QString &libraryFile, const QString &applicationFolder)
{
    const QString path = libraryFile + QStringLiteral("/waveyred.gif");
    // File names come with either slash here.
    static const QRegularExpression developmentHost(QStringLiteral("[\\\\/]vb.\\.exe/waveyred\\.gif$"));
    if (!developmentHost.match(path.toLower()).hasMatch()) return path;
    return applicationFolder + QStringLiteral("\\VellumKit5.ocx/waveyred.gif");
}
