// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ClassFactory.h"

#include "base/Error.h"
#include "platform/TypeLibrary.h"
#include "support/InstanceCounts.h"
#include "support/SettingsStore.h"

#include <QDir>
#include <QWidget>
#include <memory>
#include <vector>

namespace platform {

namespace {

std::vector<std::unique_ptr<ClassFactory>> &factories()
{
    static std::vector<std::unique_ptr<ClassFactory>> all;
    return all;
}

std::atomic<long> liveObjects{0};
std::atomic<long> locks{0};

const support::SettingsRoot registrationRoot = support::SettingsRoot::LocalMachine;

QString classKey(const QString &programId)
{
    return QStringLiteral("Software\\Classes\\") + programId;
}

QString libraryKey()
{
    return QStringLiteral("Software\\Classes\\TypeLib\\VellumKit5");
}

QString typeLibraryFile(const support::SettingsStore &store)
{
    return QDir(store.folder()).filePath(QStringLiteral("VellumKit5.typelib"));
}

void registerAll()
{
    support::SettingsStore &store = support::SettingsStore::instance();
    QDir().mkpath(store.folder());
    typelibrary::write(typeLibraryFile(store));
    store.write(registrationRoot, libraryKey(), QString(), typeLibraryFile(store));
    for (const std::unique_ptr<ClassFactory> &factory : factories()) {
        const QString key = classKey(factory->programId());
        store.write(registrationRoot, key, QString(), factory->description);
        store.write(registrationRoot, key, QStringLiteral("InprocServer"), support::moduleFileName());
        store.write(registrationRoot, key, QStringLiteral("TypeLib"), QStringLiteral("VellumKit5"));
    }
}

void unregisterAll()
{
    support::SettingsStore &store = support::SettingsStore::instance();
    for (const std::unique_ptr<ClassFactory> &factory : factories())
        store.deleteKey(registrationRoot, classKey(factory->programId()));
    store.deleteKey(registrationRoot, libraryKey());
    QFile::remove(typeLibraryFile(store));
}

long guarded(void (*work)())
{
    try {
        work();
        return vellumOk;
    } catch (const std::exception &) {
        return vellumRegistrationFailed; // no exception may leave a C function
    }
}

} // namespace

QObject *ClassFactory::createInstance(QWidget *parent) const
{
    QObject *object = mCreator(parent);
    if (!object) return nullptr;
    ++liveObjects;
    QObject::connect(object, &QObject::destroyed, [] { --liveObjects; });
    return object;
}

void ClassFactory::lockServer(bool lock) const
{
    locks += lock ? 1 : -1;
}

void ClassFactory::registerClass(const char *programId, const char *description, Creator creator)
{
    const QString id = QString::fromLatin1(programId);
    auto *factory = const_cast<ClassFactory *>(find(id));
    if (!factory) {
        factories().push_back(std::make_unique<ClassFactory>());
        factory = factories().back().get();
    }
    factory->mProgramId = id;
    factory->description = QString::fromLatin1(description);
    factory->mCreator = std::move(creator);
}

const ClassFactory *ClassFactory::find(const QString &programId)
{
    for (const std::unique_ptr<ClassFactory> &factory : factories()) {
        if (factory->programId().compare(programId, Qt::CaseInsensitive) == 0) return factory.get();
    }
    return nullptr;
}

QStringList ClassFactory::programIds()
{
    QStringList list;
    for (const std::unique_ptr<ClassFactory> &factory : factories()) list += factory->programId();
    return list;
}

QObject *ClassFactory::create(const QString &programId, QWidget *parent)
{
    const ClassFactory *factory = find(programId);
    return factory ? factory->createInstance(parent) : nullptr;
}

} // namespace platform

long DllGetClassObject(const char *programId, const void **factory)
{
    if (!programId || !factory) return vellumInvalidArgument;
    *factory = platform::ClassFactory::find(QString::fromUtf8(programId));
    return *factory ? vellumOk : vellumClassNotAvailable;
}

long DllCanUnloadNow()
{
    return platform::liveObjects == 0 && platform::locks == 0 ? vellumOk : vellumFalse;
}

long DllRegisterServer()
{
    return platform::guarded(platform::registerAll);
}

long DllUnregisterServer()
{
    return platform::guarded(platform::unregisterAll);
}
