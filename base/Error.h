// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QString>
#include <exception>
#include <memory>
#include <vector>

namespace base {

/// Where a call returns to, and the address of its caller's frame on the stack.
struct StackPlace
{
    const void *address = nullptr;
    const void *frame = nullptr;
};
/// Innermost call first; bounded.
using StackPlaces = std::vector<StackPlace>;

/// While this is above 0 in a thread, errors made there note the calls that led to them, for the trap that will report
/// them. Errors that nobody reports needn't pay for it.
inline thread_local constinit int errorStacksWanted = 0;

/// The one error type of the system: a number that a caller can test and a text for a person. Thrown by operations
/// whose failure the contract requires; caught at the trap of the procedure in which it happened.
class VELLUMKIT_EXPORT Error : public std::exception
{
public:
    /// `line` and `file` are where the failure was raised; left out, they are those of the statement that throws.
    Error(long number, QString description, int line = __builtin_LINE(), const char *file = __builtin_FILE());

    /// The number: one of `errors` below, or one of an outside component's own.
    long number() const { return mNumber; }
    const QString &description() const { return mDescription; }
    int line() const { return mLine; }
    /// The source file's name as the compiler was given it; a literal, so it may be compared and kept as a pointer.
    const char *file() const { return mFile; }
    /// The calls that led here; empty unless they were wanted.
    const StackPlaces &stack() const;
    const char *what() const noexcept override { return mWhat.constData(); }

private:
    long mNumber;
    int mLine;
    const char *mFile;
    std::shared_ptr<const StackPlaces> mStack; // shared, since errors are copied while they fly
    QString mDescription;
    QByteArray mWhat;
};

/// Numbers as the users of late-bound objects know them.
namespace errors {
inline constexpr long invalidCall = 5;
inline constexpr long overflow = 6;
inline constexpr long outOfMemory = 7;
inline constexpr long subscriptOutOfRange = 9;
inline constexpr long typeMismatch = 13;
inline constexpr long fileNotFound = 53;
inline constexpr long fileInputOutput = 57;
inline constexpr long diskFull = 61;
inline constexpr long permissionDenied = 70;
inline constexpr long pathAccess = 75;
inline constexpr long objectNotSet = 91;
inline constexpr long invalidValue = 380;
inline constexpr long noSuchMember = 438;
inline constexpr long automation = 440;
inline constexpr long duplicateKey = 457;
inline constexpr long notPossible = 600;
} // namespace errors

} // namespace base
