// SPDX-License-Identifier: GPL-3.0-or-later
#include "commands/VirtualCommandManager.h"

#include "base/Error.h"
#include "support/InstanceCounts.h"

VirtualCommandManager::VirtualCommandManager()
    : mCounter(std::make_unique<support::InstanceCounter>(support::Component::VirtualCommandManager))
{
}

VirtualCommandManager::~VirtualCommandManager() = default;

VirtualCommandManager::Command &VirtualCommandManager::slot(const QString &Name)
{
    const QString key = Name.toLower();
    const auto found = mCol.constFind(key);
    if (found != mCol.constEnd()) return mCommands[size_t(*found)];
    if (mLastIndex + 1 >= int(mCommands.size()))
        throw base::Error(base::errors::subscriptOutOfRange, QStringLiteral("There is no room for another command."));
    mCol.insert(key, ++mLastIndex);
    return mCommands[size_t(mLastIndex)];
}

void VirtualCommandManager::write(bool &flag, bool value)
{
    if (flag == value) return;
    flag = value;
    mDirty = true;
}

void VirtualCommandManager::setStyle(const QString &Style)
{
    if (mStyle.compare(Style, Qt::CaseInsensitive) == 0) return;
    mStyle = Style;
    mDirty = true;
}

void VirtualCommandManager::setFontSize(int Size)
{
    if (mFontSize == Size) return;
    mFontSize = Size;
    mDirty = true;
}

void VirtualCommandManager::setFontName(const QString &Name)
{
    if (mFontName.compare(Name, Qt::CaseInsensitive) == 0) return;
    mFontName = Name;
    mDirty = true;
}

void VirtualCommandManager::SetAllDisabled()
{
    for (int i = 0; i <= mLastIndex; ++i) mCommands[size_t(i)].enabled = false;
}
