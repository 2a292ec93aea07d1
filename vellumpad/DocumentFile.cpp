// SPDX-License-Identifier: GPL-3.0-or-later
#include "DocumentFile.h"

#include <VellumKit5/Error>
#include <VellumKit5/MessageBox>
#include <VellumKit5/Recovery>
#include <VellumKit5/Vellum5>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFileInfo>

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

DocumentFile::DocumentFile(Vellum5 &control) : mControl(control)
{
    connect(&control, &Vellum5::Change, this, &DocumentFile::edited);
    // Undoing the last step that the source view knows is no `Change` to the control, but the file then differs.
    connect(control.findChild<QObject *>(QStringLiteral("txtHTMLSource")), SIGNAL(Change()), this, SLOT(edited()));
}

QString DocumentFile::shownName() const
{
    return mName.isEmpty() ? tr("Untitled") : QFileInfo(mName).fileName();
}

void DocumentFile::edited()
{
    mChanged = true;
    Q_EMIT changed();
}

bool DocumentFile::mayLeave(const std::function<bool()> &saveChanges, QWidget *parent)
{
    using Button = MessageBox::Button;
    if (!mChanged) return true;
    const Button answer =
        MessageBox::show(MessageBox::Icon::Question, QCoreApplication::applicationName(),
                         tr("%1 has changes that aren't saved. Do you want to save them?").arg(shownName()),
                         {Button::Save, Button::Discard, Button::Cancel}, parent);
    return answer == Button::Discard || (answer == Button::Save && saveChanges());
}

void DocumentFile::take(const QString &name, bool hasChanges)
{
    mName = name;
    mOnDisk = hashOf(name);
    mTold.clear();
    mChanged = hasChanges;
    mControl.Recovery().setDocumentName(name);
    Q_EMIT changed();
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
    const QString caption = tr("Save");
    const QByteArray onDisk = local == mName && !mOnDisk.isEmpty() ? hashOf(local) : mOnDisk;
    if (!onDisk.isEmpty() && onDisk != mOnDisk) {
        mTold = onDisk; // nobody wants to be asked the next thing about it at once
        const QString question =
            tr("%1 was changed by another program since you opened it. Do you want to save over it?");
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
    take(name, true);
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
