// SPDX-License-Identifier: GPL-3.0-or-later
#include "DocumentFile.h"

#include <VellumKit5/Error>
#include <VellumKit5/MessageBox>
#include <VellumKit5/Recovery>
#include <VellumKit5/Vellum5>

#include <QCoreApplication>
#include <QCryptographicHash>

using platform::FileHelper;
using platform::MessageBox;

/// Empty where there is no file that can be read. The time of the file wouldn't do: it may be the same for changes that
/// come at once, and another for the same content.
static QByteArray hashOf(const QString &name)
{
    if (!FileHelper::exists(name)) return {};
    try {
        return QCryptographicHash::hash(FileHelper::readBytes(name), QCryptographicHash::Sha1);
    } catch (const base::Error &) {
        return {};
    }
}

void DocumentFile::take(const QString &name)
{
    mName = name;
    mOnDisk = hashOf(name);
    mTold.clear();
    mControl.Recovery().setDocumentName(name);
}

void DocumentFile::open(const QString &name)
{
    const QString local = FileHelper::localName(name);
    const platform::DecodedText file = FileHelper::readText(local);
    mFormat = file.format;
    mLossy = file.lossy;
    mControl.setBaseURL(QStringLiteral("file://") + FileHelper::folderPart(local));
    mControl.setDocumentHTML(file.text);
    take(local);
}

bool DocumentFile::save(const QString &name, QWidget *parent)
{
    const QString local = FileHelper::localName(name);
    const QString caption = QCoreApplication::translate("DocumentFile", "Save");
    const QByteArray onDisk = local == mName && !mOnDisk.isEmpty() ? hashOf(local) : mOnDisk;
    if (!onDisk.isEmpty() && onDisk != mOnDisk) {
        mTold = onDisk; // nobody wants to be asked the next thing about it at once
        const QString question = QCoreApplication::translate(
            "DocumentFile", "%1 was changed by another program since you opened it. Do you want to save over it?");
        const auto answer =
            MessageBox::show(MessageBox::Icon::Warning, caption, question.arg(FileHelper::filePart(local)),
                             {MessageBox::Button::Save, MessageBox::Button::Cancel}, parent);
        if (answer != MessageBox::Button::Save) return false;
    }
    const platform::EncodedText written = FileHelper::writeText(local, mControl.DocumentHTML(), mFormat);
    mFormat = written.format;
    mControl.Recovery().documentSaved();
    take(local);
    mControl.setBaseURL(QStringLiteral("file://") + FileHelper::folderPart(local));
    if (!written.message.isEmpty())
        MessageBox::show(MessageBox::Icon::Information, caption, written.message, {MessageBox::Button::Ok}, parent);
    return true;
}

void DocumentFile::release()
{
    mFormat = {};
    mLossy = false;
    take(QString());
}

void DocumentFile::adopt(const QString &name)
{
    mFormat = {};
    mLossy = false;
    try {
        if (!name.isEmpty()) mFormat = FileHelper::readText(name).format;
    } catch (const base::Error &) {
        // It is gone; saving makes it anew.
    }
    take(name);
}

bool DocumentFile::hasNewsOnDisk() const
{
    if (mName.isEmpty() || mOnDisk.isEmpty()) return false;
    const QByteArray now = hashOf(mName);
    return !now.isEmpty() && now != mOnDisk && now != mTold;
}

void DocumentFile::acceptDisk()
{
    mOnDisk = hashOf(mName);
}
