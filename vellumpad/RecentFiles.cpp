// SPDX-License-Identifier: GPL-3.0-or-later
#include "RecentFiles.h"

#include <VellumKit5/Error>
#include <VellumKit5/Settings>

namespace {

const QString key = QStringLiteral("Software\\Brimfield\\VellumPad\\RecentFiles");
constexpr auto root = support::SettingsRoot::CurrentUser;

} // namespace

QStringList RecentFiles::names() const
{
    QStringList names;
    for (int i = 1; i <= limit; ++i) {
        const QString name = support::SettingsStore::instance().read(root, key, QString::number(i));
        if (!name.isEmpty()) names << name;
    }
    return names;
}

void RecentFiles::write(const QStringList &names)
{
    try {
        support::SettingsStore::instance().deleteKey(root, key);
        for (int i = 0; i < names.size() && i < limit; ++i)
            support::SettingsStore::instance().write(root, key, QString::number(i + 1), names[i]);
    } catch (const base::Error &) {
        // A list that can't be kept is no reason to bother anybody.
    }
}

void RecentFiles::add(const QString &name)
{
    QStringList list = names();
    list.removeAll(name);
    list.prepend(name);
    write(list);
}

void RecentFiles::remove(const QString &name)
{
    QStringList list = names();
    list.removeAll(name);
    write(list);
}

void RecentFiles::clear()
{
    write({});
}
