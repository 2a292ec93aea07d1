// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace support {

/// The content of one file of the settings store. The grammar of the text, in UTF-8 and line by line:
///
///     file  = "# VellumKit settings 1", { key, { value } }
///     key   = "[" string "]"                the path of the key
///     value = ( "@" | string ) "=" string   "@" is the default value
///     string in double quotes, with \\ \" \n \r \t and \uXXXX for what a line can't hold
///
/// Blank lines and lines that begin with "#" are passed over.
class SettingsFile
{
public:
    struct Value
    {
        QString name, text;
    };
    struct Key
    {
        QString path;
        QMap<QString, Value> values; // by folded name
    };

    static QString folded(const QString &name) { return name.toCaseFolded(); }
    /// A path without empty parts.
    static QString cleanPath(const QString &path);

    Key *findKey(const QString &path);
    const Key *findKey(const QString &path) const;
    /// The key, made with those above it if it isn't there.
    Key &makeKey(const QString &path);
    void removeKey(const QString &path);
    const QMap<QString, Key> &keys() const { return mKeys; }

    QByteArray toBytes() const;
    /// Reads what can be read; false if something couldn't.
    bool fromBytes(const QByteArray &bytes);

private:
    QMap<QString, Key> mKeys; // by folded path
};

} // namespace support
