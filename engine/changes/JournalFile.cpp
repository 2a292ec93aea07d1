// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/JournalFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThreadPool>
#include <QUuid>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace changes {

namespace {

std::atomic<int> syncs = 0;

/// One thread for all: a disk that is slow at one file is slow at the others.
QThreadPool &worker()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(1);
    return pool;
}

QString reason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// A file that would grow beyond what the process may write would end the process, unless the signal is ignored; then
/// the write fails as on a full disk. Who handles the signal keeps doing so.
void surviveFileLimit()
{
    static const bool done = [] {
        struct sigaction now {};
        if (sigaction(SIGXFSZ, nullptr, &now) == 0 && now.sa_handler == SIG_DFL) std::signal(SIGXFSZ, SIG_IGN);
        return true;
    }();
    Q_UNUSED(done);
}

template <class Call> auto again(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

QString freshName(const QString &folder)
{
    return folder + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + JournalFile::suffix();
}

int openNameless(const QString &folder)
{
    const QByteArray path = QFile::encodeName(folder);
#ifdef O_TMPFILE
    const int descriptor = again([&] { return ::open(path.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); });
    if (descriptor >= 0) return descriptor;
#endif
    // Not every file system knows nameless files; there a name is given and taken away.
    const QByteArray name = QFile::encodeName(freshName(folder) + QStringLiteral(".new"));
    const int named = again([&] { return ::open(name.constData(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600); });
    if (named >= 0) ::unlink(name.constData());
    return named;
}

bool writeAll(int descriptor, const char *bytes, qint64 count, qint64 at)
{
    while (count > 0) {
        const ssize_t written = again([&] { return ::pwrite(descriptor, bytes, size_t(count), off_t(at)); });
        if (written <= 0) {
            if (written == 0) errno = ENOSPC;
            return false;
        }
        bytes += written;
        count -= written;
        at += written;
    }
    return true;
}

} // namespace

JournalFile::JournalFile(int descriptor, const QString &folder) : mDescriptor(descriptor), mFolder(folder)
{
    ::flock(descriptor, LOCK_EX | LOCK_NB);
}

JournalFile::~JournalFile()
{
    ::flock(mDescriptor, LOCK_UN); // the worker may still hold it open
    ::close(mDescriptor);
}

std::unique_ptr<JournalFile> JournalFile::create(const QString &folder, QString &error)
{
    surviveFileLimit();
    if (!QFileInfo(folder).isDir()) {
        QDir().mkpath(QFileInfo(folder).path());
        ::mkdir(QFile::encodeName(folder).constData(), 0700);
    }
    const int descriptor = openNameless(folder);
    if (descriptor >= 0) return std::unique_ptr<JournalFile>(new JournalFile(descriptor, folder));
    error = reason();
    return nullptr;
}

std::unique_ptr<JournalFile> JournalFile::open(const QString &name)
{
    surviveFileLimit();
    const QByteArray path = QFile::encodeName(name);
    // A link or a pipe that somebody put there is no journal, and mustn't hold us up.
    const int descriptor = again([&] { return ::open(path.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK); });
    if (descriptor < 0) return nullptr;
    struct stat info {};
    struct stat there {};
    const bool fine = ::fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode) && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    // Between opening and locking, who held it may have removed it.
    if (!fine || ::stat(path.constData(), &there) != 0 || there.st_ino != info.st_ino || there.st_dev != info.st_dev) {
        ::close(descriptor);
        return nullptr;
    }
    std::unique_ptr<JournalFile> file(new JournalFile(descriptor, QFileInfo(name).absolutePath()));
    file->mName = QFileInfo(name).absoluteFilePath();
    file->mSize = info.st_size;
    return file;
}

bool JournalFile::append(const QByteArray &bytes, QString &error)
{
    if (writeAll(mDescriptor, bytes.constData(), bytes.size(), mSize)) {
        mSize += bytes.size();
        return true;
    }
    error = reason();
    truncate(mSize);
    return false;
}

bool JournalFile::giveName(QString &error)
{
    const QString name = freshName(mFolder);
    const QByteArray from = "/proc/self/fd/" + QByteArray::number(mDescriptor);
    const QByteArray to = QFile::encodeName(name);
    if (::linkat(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), AT_SYMLINK_FOLLOW) == 0) {
        mName = name;
        return true;
    }
    // A file whose name was taken away can't have another one: its content goes to a new file, which gets the journal's
    // name when it is whole and locked.
    const QByteArray passing = to + ".new";
    const int descriptor = again([&] { return ::open(passing.constData(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600); });
    const QByteArray content = readAll();
    if (descriptor < 0 || !writeAll(descriptor, content.constData(), content.size(), 0) ||
        ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 || ::rename(passing.constData(), to.constData()) != 0) {
        error = reason();
        if (descriptor >= 0) ::close(descriptor);
        ::unlink(passing.constData());
        return false;
    }
    ::close(mDescriptor);
    mDescriptor = descriptor;
    mName = name;
    return true;
}

std::unique_ptr<JournalFile> JournalFile::copy(QString &error) const
{
    std::unique_ptr<JournalFile> file = create(mFolder, error);
    if (file && !file->append(readAll(), error)) file.reset();
    return file;
}

void JournalFile::remove()
{
    if (!mName.isEmpty()) ::unlink(QFile::encodeName(mName).constData());
    mName.clear();
}

bool JournalFile::rename(const QString &name)
{
    const QString to = mFolder + u'/' + name;
    if (::rename(QFile::encodeName(mName).constData(), QFile::encodeName(to).constData()) != 0) return false;
    mName = to;
    return true;
}

void JournalFile::truncate(qint64 size)
{
    while (::ftruncate(mDescriptor, off_t(size)) != 0 && errno == EINTR) {
    }
    mSize = size;
}

QByteArray JournalFile::readAll() const
{
    QByteArray bytes(mSize, Qt::Uninitialized);
    qint64 at = 0;
    while (at < mSize) {
        const ssize_t count =
            again([&] { return ::pread(mDescriptor, bytes.data() + at, size_t(mSize - at), off_t(at)); });
        if (count <= 0) break;
        at += count;
    }
    bytes.truncate(at);
    return bytes;
}

qint64 JournalFile::lastWritten() const
{
    struct stat info {};
    if (::fstat(mDescriptor, &info) != 0) return 0;
    return qint64(info.st_mtim.tv_sec) * 1000 + info.st_mtim.tv_nsec / 1000000;
}

void JournalFile::sync()
{
    const int copy = ::fcntl(mDescriptor, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return;
    // The name must last too.
    const QByteArray folder = std::exchange(mNameSynced, true) ? QByteArray() : QFile::encodeName(mFolder);
    worker().start([copy, folder] {
        ::fdatasync(copy);
        ::close(copy);
        const int at = folder.isEmpty() ? -1 : ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (at >= 0) {
            ::fsync(at);
            ::close(at);
        }
        ++syncs;
    });
}

int JournalFile::syncsDone()
{
    return syncs;
}

} // namespace changes
