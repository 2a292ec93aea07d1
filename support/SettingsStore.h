// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QDateTime>
#include <QHash>
#include <QMap>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace support {

enum class SettingsRoot { CurrentUser, LocalMachine };

/// The store of settings: two roots, below each a tree of keys, in each key values by name and a default value (name
/// ""). A key is named by its path with backslashes ("Software\Brimfield\VellumPad"); paths and names are found
/// whatever their case and keep the case in which they were first written. A value is any string.
///
/// Each top key of a root is a small text file below the store's folder. A write locks that file, reads it anew,
/// changes the one thing and replaces it atomically, so that processes which write at once lose nothing; a read takes
/// what is there. A file that can't be understood is copied aside (".damaged") before the next write, what could be
/// read of it stays.
class VELLUMKIT_EXPORT SettingsStore
{
public:
    /// The store of this user, in the configuration folder, unless `setFolder` moved it.
    static SettingsStore &instance();
    /// A store in a folder of its own; the folder is made at the first write.
    explicit SettingsStore(const QString &folder);
    ~SettingsStore();

    QString folder() const { return mFolder; }
    /// For tests and script mode: from now on everything is read and written there.
    void setFolder(const QString &folder);

    /// The value, or nothing if the key or the value isn't there. Reads raise nothing.
    std::optional<QString> find(SettingsRoot root, const QString &key, const QString &name) const;
    /// The value, or `defaultValue`.
    QString read(SettingsRoot root, const QString &key, const QString &name, const QString &defaultValue = {}) const;
    bool keyExists(SettingsRoot root, const QString &key) const;
    /// Names of the values in a key, in their order of names; "" is the default value.
    QStringList valueNames(SettingsRoot root, const QString &key) const;
    /// Names (not paths) of the keys right below a key; of the root for "".
    QStringList subKeys(SettingsRoot root, const QString &key) const;

    /// Writes raise `base::Error` if the store can't be written. A key that isn't there is made, with those above it.
    void write(SettingsRoot root, const QString &key, const QString &name, const QString &value);
    void createKey(SettingsRoot root, const QString &key);
    /// Deletes a key and all below it; silent if it isn't there.
    void deleteKey(SettingsRoot root, const QString &key);
    void deleteValue(SettingsRoot root, const QString &key, const QString &name);

    /// "HKEY_CURRENT_USER", "HKCU", "HKEY_LOCAL_MACHINE" and "HKLM", in any case.
    static std::optional<SettingsRoot> rootByName(const QString &name);

    struct File;

private:
    QString filePath(SettingsRoot root, const QString &topKey) const;
    File &fresh(SettingsRoot root, const QString &topKey) const;
    template <class Change> void change(SettingsRoot root, const QString &key, Change change);

    QString mFolder;
    mutable QHash<QString, std::shared_ptr<File>> mFiles; // by path
};

} // namespace support
