// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>

class QObject;
class QWidget;

/// How hosts make the library's classes by name, and how they find the library.
///
/// A class registers its creator under its program id ("VellumKit5.Vellum5"). `DllRegisterServer` writes the ids, with
/// the library's file and its type library, to the machine-wide settings, under "Software\Classes", so that a host that
/// doesn't link the library finds it; `DllGetClassObject` hands out a factory.
namespace platform {

/// Makes objects of one public class. What a host calls is virtual: one that has found the library by its registration
/// and loaded it doesn't link it.
class ClassFactory
{
public:
    using Creator = std::function<QObject *(QWidget *parent)>;

    virtual ~ClassFactory() = default;
    /// "VellumKit5.Vellum5"
    const QString &programId() const { return mProgramId; }
    /// A new object, owned by `parent` if there is one, else by the caller. The library can't be unloaded while it lives.
    virtual QObject *createInstance(QWidget *parent = nullptr) const;
    /// Keeps the library loaded, as often as it is called with True and not yet with False.
    virtual void lockServer(bool lock) const;

    /// `programId` is a literal. A class registered again replaces its creator.
    static void registerClass(const char *programId, const char *description, Creator creator);
    /// In any case; null for an unknown class. Lives as long as the process.
    static const ClassFactory *find(const QString &programId);
    /// In the order of registration.
    static QStringList programIds();
    /// A new object of a class by its name; null for an unknown one.
    static QObject *create(const QString &programId, QWidget *parent = nullptr);

    QString description;

private:
    QString mProgramId;
    Creator mCreator;
};

/// A static of this type registers a class when the library loads.
struct ClassRegistration {
    ClassRegistration(const char *programId, const char *description, ClassFactory::Creator creator)
    {
        ClassFactory::registerClass(programId, description, std::move(creator));
    }
};

} // namespace platform

#if defined(VELLUMKIT_BUILD)
#define VELLUMKIT_ENTRY extern "C" Q_DECL_EXPORT
#else
#define VELLUMKIT_ENTRY extern "C"
#endif

/// Results of the four entry points.
inline constexpr long vellumOk = 0;
inline constexpr long vellumFalse = 1;
inline constexpr long vellumClassNotAvailable = long(int(0x80040111u));
inline constexpr long vellumInvalidArgument = long(int(0x80070057u));
inline constexpr long vellumRegistrationFailed = long(int(0x80040201u));

/// Sets `*factory` to the `platform::ClassFactory` of a class, which is named by its program id, in UTF-8.
VELLUMKIT_ENTRY long DllGetClassObject(const char *programId, const void **factory);
/// `vellumOk` if no object made by a factory lives and nobody holds a lock, else `vellumFalse`.
VELLUMKIT_ENTRY long DllCanUnloadNow();
/// Enters the public classes and the type library into the settings; makes the type library's file beside them.
VELLUMKIT_ENTRY long DllRegisterServer();
/// Takes them out again. Silent for what isn't there.
VELLUMKIT_ENTRY long DllUnregisterServer();
