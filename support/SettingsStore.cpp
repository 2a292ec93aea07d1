// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SettingsStore.h"

#include "base/Error.h"
#include "support/SettingsFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>
#include <sys/stat.h>

namespace support {

namespace {

constexpr int lockWaitMs = 10000;
/// A file's time is told in ticks of the system's clock: what changes twice within one looks unchanged. So what was
/// read sooner than this behind the file's time isn't relied upon.
constexpr qint64 timeGrainMs = 100;

struct Stamp
{
    quint64 inode = 0;
    qint64 size = -1, timeNs = 0;
    bool operator==(const Stamp &) const = default;
};

Stamp stampOf(const QString &path)
{
    struct stat status
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) return {};
    return {quint64(status.st_ino), qint64(status.st_size),
            qint64(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec};
}

QString tr(const char *text)
{
    return QCoreApplication::translate("SettingsStore", text);
}

QString topKeyOf(const QString &path)
{
    return path.section(QLatin1Char('\\'), 0, 0);
}

void keepAside(const QString &path)
{
    for (int number = 0; number < 100; ++number) {
        const QString copy = path + QLatin1String(".damaged") + (number ? QString::number(number) : QString());
        if (QFile::exists(copy)) continue;
        QFile::copy(path, copy);
        return;
    }
}

} // namespace

struct SettingsStore::File
{
    QString path;
    SettingsFile content;
    Stamp stamp;
    qint64 readMs = 0;
    bool damaged = false;
    bool unreadable = false;

    void read()
    {
        stamp = stampOf(path);
        readMs = QDateTime::currentMSecsSinceEpoch();
        damaged = unreadable = false;
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            content = SettingsFile();
            unreadable = QFileInfo::exists(path);
            return;
        }
        damaged = !content.fromBytes(file.readAll());
    }
    bool isFresh() const
    {
        const Stamp now = stampOf(path);
        return now == stamp && (now.size < 0 || readMs - now.timeNs / 1000000 > timeGrainMs);
    }
};

SettingsStore &SettingsStore::instance()
{
    static SettingsStore store(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                               QLatin1String("/Brimfield"));
    return store;
}

SettingsStore::SettingsStore(const QString &folder) : mFolder(folder) {}

SettingsStore::~SettingsStore() = default;

void SettingsStore::setFolder(const QString &folder)
{
    mFolder = folder;
    mFiles.clear();
}

QString SettingsStore::filePath(SettingsRoot root, const QString &topKey) const
{
    // Encoded, so that no name of a key leads out of the folder.
    QByteArray name = QUrl::toPercentEncoding(SettingsFile::folded(topKey));
    name.replace('.', "%2E");
    return mFolder +
           (root == SettingsRoot::CurrentUser ? QLatin1String("/CurrentUser/") : QLatin1String("/LocalMachine/")) +
           QString::fromLatin1(name) + QLatin1String(".settings");
}

SettingsStore::File &SettingsStore::fresh(SettingsRoot root, const QString &topKey) const
{
    const QString path = filePath(root, topKey);
    std::shared_ptr<File> &file = mFiles[path];
    if (!file) {
        file = std::make_shared<File>();
        file->path = path;
        file->read();
    } else if (!file->isFresh()) {
        file->read();
    }
    return *file;
}

std::optional<QString> SettingsStore::find(SettingsRoot root, const QString &key, const QString &name) const
{
    const QString path = SettingsFile::cleanPath(key);
    if (path.isEmpty()) return {};
    const SettingsFile::Key *found = fresh(root, topKeyOf(path)).content.findKey(path);
    if (!found) return {};
    const auto value = found->values.constFind(SettingsFile::folded(name));
    if (value == found->values.constEnd()) return {};
    return value->text;
}

QString SettingsStore::read(SettingsRoot root, const QString &key, const QString &name,
                            const QString &defaultValue) const
{
    return find(root, key, name).value_or(defaultValue);
}

bool SettingsStore::keyExists(SettingsRoot root, const QString &key) const
{
    const QString path = SettingsFile::cleanPath(key);
    return !path.isEmpty() && fresh(root, topKeyOf(path)).content.findKey(path);
}

QStringList SettingsStore::valueNames(SettingsRoot root, const QString &key) const
{
    QStringList names;
    const QString path = SettingsFile::cleanPath(key);
    if (path.isEmpty()) return names;
    if (const SettingsFile::Key *found = fresh(root, topKeyOf(path)).content.findKey(path))
        for (const SettingsFile::Value &value : found->values)
            names << value.name;
    return names;
}

QStringList SettingsStore::subKeys(SettingsRoot root, const QString &key) const
{
    QStringList names;
    const QString path = SettingsFile::cleanPath(key);
    if (path.isEmpty()) {
        const QFileInfo sample(filePath(root, QStringLiteral("x")));
        const auto files = QDir(sample.path()).entryList({QStringLiteral("*.settings")}, QDir::Files, QDir::Name);
        for (const QString &file : files) {
            const QString topKey = QUrl::fromPercentEncoding(file.chopped(9).toLatin1());
            if (const SettingsFile::Key *found = fresh(root, topKey).content.findKey(topKey)) names << found->path;
        }
        return names;
    }
    const QString prefix = SettingsFile::folded(path) + QLatin1Char('\\');
    const auto &keys = fresh(root, topKeyOf(path)).content.keys();
    for (auto it = keys.lowerBound(prefix); it != keys.end() && it.key().startsWith(prefix); ++it)
        if (it.key().indexOf(QLatin1Char('\\'), prefix.size()) < 0) names << it->path.mid(prefix.size());
    return names;
}

template <class Change> void SettingsStore::change(SettingsRoot root, const QString &key, Change change)
{
    const QString path = SettingsFile::cleanPath(key);
    if (path.isEmpty()) throw base::Error(base::errors::invalidCall, tr("A setting needs a key."));
    const QString filePath = this->filePath(root, topKeyOf(path));
    const auto refuse = [&filePath](const QString &reason) {
        throw base::Error(base::errors::pathAccess,
                          tr("The settings file \"%1\" cannot be written: %2").arg(filePath, reason));
    };
    if (!QDir().mkpath(QFileInfo(filePath).path())) refuse(tr("its folder cannot be made."));
    QLockFile lock(filePath + QLatin1String(".lock"));
    if (!lock.tryLock(lockWaitMs)) refuse(tr("another program keeps it locked."));

    // What stands in the file now counts, not what was read before.
    std::shared_ptr<File> &file = mFiles[filePath];
    if (!file) file = std::make_shared<File>();
    file->path = filePath;
    file->read();
    // A file that is there and can't be read must not be replaced by the little that is known.
    if (file->unreadable) refuse(tr("it cannot be read."));
    if (file->damaged) keepAside(filePath);
    if (!change(file->content, path) && !file->damaged) return;

    QSaveFile target(filePath);
    const QByteArray bytes = file->content.toBytes();
    const bool written = target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size() && target.commit();
    if (!written) {
        mFiles.remove(filePath);
        refuse(target.errorString());
    }
    file->stamp = stampOf(filePath);
    file->readMs = QDateTime::currentMSecsSinceEpoch();
    file->damaged = false;
}

void SettingsStore::write(SettingsRoot root, const QString &key, const QString &name, const QString &value)
{
    change(root, key, [&](SettingsFile &file, const QString &path) {
        SettingsFile::Value &entry = file.makeKey(path).values[SettingsFile::folded(name)];
        if (entry.name.isEmpty()) entry.name = name;
        entry.text = value;
        return true;
    });
}

void SettingsStore::createKey(SettingsRoot root, const QString &key)
{
    change(root, key, [](SettingsFile &file, const QString &path) {
        if (file.findKey(path)) return false;
        file.makeKey(path);
        return true;
    });
}

void SettingsStore::deleteKey(SettingsRoot root, const QString &key)
{
    if (!keyExists(root, key)) return;
    change(root, key, [](SettingsFile &file, const QString &path) {
        file.removeKey(path);
        return true;
    });
}

void SettingsStore::deleteValue(SettingsRoot root, const QString &key, const QString &name)
{
    if (!find(root, key, name)) return;
    change(root, key, [&name](SettingsFile &file, const QString &path) {
        SettingsFile::Key *found = file.findKey(path);
        return found && found->values.remove(SettingsFile::folded(name)) > 0;
    });
}

std::optional<SettingsRoot> SettingsStore::rootByName(const QString &name)
{
    const QString upper = name.toUpper();
    if (upper == QLatin1String("HKEY_CURRENT_USER") || upper == QLatin1String("HKCU")) return SettingsRoot::CurrentUser;
    if (upper == QLatin1String("HKEY_LOCAL_MACHINE") || upper == QLatin1String("HKLM"))
        return SettingsRoot::LocalMachine;
    return {};
}

} // namespace support
