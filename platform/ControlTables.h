// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "platform/Dispatch.h"

/// What the control publishes: its members by family, its events, its enumerations. The ids of members are ours and, like
/// those of events, for good: a new member takes a number that nobody had.
namespace platform::control {

/// Interface `Vellum5`.
VELLUMKIT_EXPORT const std::vector<MemberRow> &members();

struct EventRow {
    int id;
    const char *name;
    /// Arguments in order, parted by ", "; those that a host may write have a "&" before their names.
    const char *arguments;
};
/// The event set `Vellum5Events`, in the order of the control's declaration.
VELLUMKIT_EXPORT const std::vector<EventRow> &events();
/// In any case; null for none.
VELLUMKIT_EXPORT const EventRow *findEvent(const QString &name);

struct EnumerationValue {
    const char *name;
    int value;
};
struct Enumeration {
    const char *name;
    std::vector<EnumerationValue> values;
};
VELLUMKIT_EXPORT const std::vector<Enumeration> &enumerations();

inline constexpr char interfaceName[] = "Vellum5";
inline constexpr char eventSetName[] = "Vellum5Events";

} // namespace platform::control
