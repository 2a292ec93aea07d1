// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

/// The files opened last, newest first, kept in the user's settings.
class RecentFiles
{
public:
    static constexpr int limit = 10;
    QStringList names() const;
    void add(const QString &name);
    void remove(const QString &name);
    void clear();

private:
    void write(const QStringList &names);
};
