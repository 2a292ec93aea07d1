// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

namespace support {

/// Remembers where dialogs stood, per user, below a root key: one key a dialog, with the values "Left", "Top", "Width",
/// "Height" (pixels of the desktop) and "Maximised" ("True" or "False").
class WindowPositionStore
{
public:
    static WindowPositionStore &instance();

    /// Such as "Software\Brimfield\Vellum". Empty (the start): nothing is kept.
    void setRootKey(const QString &key) { mRootKey = key; }
    const QString &rootKey() const { return mRootKey; }

    /// Keeps the place of a window under a name. Raises `base::Error` if the settings can't be written.
    void save(const QString &name, const QWidget &window) const;
    /// Puts a window where it stood. False, and the window stays as it is, if nothing (or nonsense) is kept. A window
    /// is always put onto a screen that is there now.
    bool restore(const QString &name, QWidget &window) const;

private:
    QString mRootKey;
};

} // namespace support
