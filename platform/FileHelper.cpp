// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileHelper.h"

#include "base/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUrl>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("FileHelper", text);
}

[[noreturn]] void refuse(long number, const QString &text, const QString &path)
{
    throw base::Error(number, text.arg(QDir::toNativeSeparators(path)));
}

[[noreturn]] void refuseRead(const QFileDevice &file, const QString &path)
{
    const long number =
        file.error() == QFileDevice::PermissionsError ? base::errors::permissionDenied : base::errors::fileInputOutput;
    refuse(number, tr("The file \"%1\" cannot be read: ") + file.errorString(), path);
}

[[noreturn]] void refuseWrite(const QFileDevice &file, const QString &path, int systemError)
{
    long number = base::errors::fileInputOutput;
    if (file.error() == QFileDevice::ResourceError || systemError == ENOSPC || systemError == EFBIG ||
        systemError == EDQUOT)
        number = base::errors::diskFull;
    else if (file.error() == QFileDevice::PermissionsError || systemError == EACCES || systemError == EROFS ||
             systemError == EPERM)
        number = base::errors::permissionDenied;
    refuse(number, tr("The file \"%1\" cannot be written: ") + file.errorString(), path);
}

/// Is the name, made absolute from the root, more likely meant than from the current folder?
bool isMeantFromRoot(const QString &name)
{
    const QString rooted = QLatin1Char('/') + name;
    if (QFileInfo::exists(name) || name.isEmpty()) return false;
    if (QFileInfo::exists(rooted)) return true;
    // A file that is yet to be made: its folder decides.
    const QString folder = QFileInfo(rooted).path();
    return folder != QLatin1String("/") && QFileInfo(folder).isDir() && !QFileInfo(QFileInfo(name).path()).isDir();
}

/// What a name finally points to: links are followed, also when nothing stands at their end yet.
QString linkTarget(const QString &path)
{
    constexpr int maximalLinks = 40;
    QString target = path;
    for (int i = 0; i < maximalLinks; ++i) {
        const QFileInfo info(target);
        if (!info.isSymLink()) return target;
        target = info.symLinkTarget();
    }
    refuse(base::errors::pathAccess, tr("The file \"%1\" cannot be written: its links lead nowhere."), path);
}

/// Devices and pipes have no old content to keep, and must not be replaced by a file.
void writeInPlace(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    errno = 0;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size())
        refuseWrite(file, path, errno);
}

void checkFolder(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir()) refuse(base::errors::pathAccess, tr("The file \"%1\" cannot be written: it is a folder."), path);
    if (!QFileInfo(info.path()).isDir())
        refuse(base::errors::pathAccess, tr("The file \"%1\" cannot be written: its folder does not exist."), path);
}

} // namespace

DecodedText FileHelper::readText(const QString &name)
{
    return decodeFileText(readBytes(name));
}

EncodedText FileHelper::writeText(const QString &name, const QString &text, const FileFormat &format)
{
    EncodedText encoded = encodeFileText(text, format);
    writeBytes(name, encoded.bytes);
    return encoded;
}

EncodedText FileHelper::appendText(const QString &name, const QString &text)
{
    if (!exists(name)) return writeText(name, text);
    // The whole is encoded anew, since what is added may be beyond the file's encoding.
    const DecodedText old = readText(name);
    return writeText(name, old.text + text, old.format);
}

QByteArray FileHelper::readBytes(const QString &name)
{
    const QString path = localName(name);
    const QFileInfo info(path);
    if (!info.exists()) refuse(base::errors::fileNotFound, tr("The file \"%1\" does not exist."), path);
    if (info.isDir()) refuse(base::errors::pathAccess, tr("The file \"%1\" cannot be read: it is a folder."), path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) refuseRead(file, path);
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) refuseRead(file, path);
    return bytes;
}

void FileHelper::writeBytes(const QString &name, const QByteArray &bytes)
{
    const QString path = linkTarget(localName(name));
    checkFolder(path);
    const QFileInfo old(path);
    if (old.exists() && !old.isFile()) {
        writeInPlace(path, bytes);
        return;
    }
    if (old.exists() && !old.isWritable())
        refuse(base::errors::permissionDenied, tr("The file \"%1\" cannot be written: it is read-only."), path);
    struct stat oldStatus
    {
    };
    const bool hadFile = ::stat(QFile::encodeName(path).constData(), &oldStatus) == 0;

    QSaveFile file(path);
    file.setDirectWriteFallback(false);
    errno = 0;
    if (!file.open(QIODevice::WriteOnly)) refuseWrite(file, path, errno);
    if (hadFile) {
        // Owner first, since a change of owner may take permissions away; only a superuser may give a file to another.
        if (::fchown(file.handle(), oldStatus.st_uid, oldStatus.st_gid) != 0) errno = 0;
        if (::fchmod(file.handle(), oldStatus.st_mode & 07777) != 0) errno = 0;
    }
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        const int systemError = errno;
        file.cancelWriting();
        refuseWrite(file, path, systemError);
    }
    if (!file.commit()) refuseWrite(file, path, errno);
}

bool FileHelper::exists(const QString &name)
{
    const QFileInfo info(localName(name));
    return info.exists() && !info.isDir();
}

bool FileHelper::isFolder(const QString &name)
{
    return !name.isEmpty() && QFileInfo(localName(name)).isDir();
}

bool FileHelper::isReadOnly(const QString &name)
{
    const QFileInfo info(localName(name));
    if (!info.exists() || info.isDir()) return false;
    // To a superuser everything is writable; the file's own word counts for everybody.
    constexpr auto anyWrite = QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    return !info.isWritable() || !(info.permissions() & anyWrite);
}

QString FileHelper::localName(const QString &name)
{
    QString path = name;
    if (path.startsWith(QLatin1String("file:"), Qt::CaseInsensitive)) {
        const QUrl url(path);
        if (url.isValid() && url.isLocalFile())
            path = url.toLocalFile();
        else
            path = path.mid(path.startsWith(QLatin1String("file://"), Qt::CaseInsensitive) ? 7 : 5);
    }
    // A backslash is a letter to this system: a file that really has one in its name goes first.
    if (path.contains(QLatin1Char('\\')) && !QFileInfo::exists(path)) {
        path.replace(QLatin1Char('\\'), QLatin1Char('/'));
        if (!path.startsWith(QLatin1Char('/')) && isMeantFromRoot(path)) path.prepend(QLatin1Char('/'));
    }
    const bool isFolder = path.endsWith(QLatin1Char('/'));
    path = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    return isFolder && !path.endsWith(QLatin1Char('/')) ? path + QLatin1Char('/') : path;
}

QString FileHelper::folderPart(const QString &name)
{
    const QString path = localName(name);
    return path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString FileHelper::filePart(const QString &name)
{
    const QString path = localName(name);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString FileHelper::relativeName(const QString &folder, const QString &name)
{
    return QDir(localName(folder)).relativeFilePath(localName(name));
}

} // namespace platform
