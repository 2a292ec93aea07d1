// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <array>
#include <memory>

namespace support {
class InstanceCounter;
}

/// Per command name the flags enabled, checked and visible, plus font name, size and style: what a host's toolbar binds
/// to. A name gets its slot at its first use, with all flags False; there is room for 101 names.
class VELLUMKIT_EXPORT VirtualCommandManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString Style READ Style WRITE setStyle)
    Q_PROPERTY(QString FontName READ FontName WRITE setFontName)
    Q_PROPERTY(int FontSize READ FontSize WRITE setFontSize)
    Q_PROPERTY(bool Dirty READ Dirty WRITE setDirty)
public:
    VirtualCommandManager();
    ~VirtualCommandManager() override;

    QString Style() const { return mStyle; }
    void setStyle(const QString &Style);
    int FontSize() const { return mFontSize; }
    void setFontSize(int Size);
    QString FontName() const { return mFontName; }
    void setFontName(const QString &Name);
    Q_INVOKABLE bool CommandEnabled(const QString &Name) { return slot(Name).enabled; }
    void setCommandEnabled(const QString &Name, bool Enabled) { write(slot(Name).enabled, Enabled); }
    Q_INVOKABLE bool CommandChecked(const QString &Name) { return slot(Name).checked; }
    void setCommandChecked(const QString &Name, bool Checked) { write(slot(Name).checked, Checked); }
    Q_INVOKABLE bool CommandVisible(const QString &Name) { return slot(Name).visible; }
    void setCommandVisible(const QString &Name, bool Visible) { write(slot(Name).visible, Visible); }
    /// Clears the enabled flags; neither the others nor `Dirty` are touched.
    Q_INVOKABLE void SetAllDisabled();
    /// A stored value really changed since this was last cleared.
    bool Dirty() const { return mDirty; }
    void setDirty(bool Dirty) { mDirty = Dirty; }

private:
    struct Command {
        bool checked = false;
        bool visible = false;
        bool enabled = false;
    };
    /// Fails with error 9 (subscript out of range) for the 102nd name.
    Command &slot(const QString &Name);
    void write(bool &flag, bool value);

    QHash<QString, int> mCol; // by name in lower case
    int mLastIndex = -1;
    std::array<Command, 101> mCommands;
    QString mFontName;
    int mFontSize = 0;
    QString mStyle;
    bool mDirty = false;
    std::unique_ptr<support::InstanceCounter> mCounter;
};
