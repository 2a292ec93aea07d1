// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Error.h"
#include "platform/Value.h"

#include <QHash>
#include <functional>
#include <vector>

/// Late binding. Each published interface is one table of its members, each with its id, its parameters and what it does;
/// the type library, access by name or number and the script mode all read the same table. An object supports several
/// interfaces at once (an element those of all elements and those of its tag); a member is sought in them in order.
///
/// Names are found whatever their case. A member of Nothing raises `objectNotSet`, an unknown one `noSuchMember`, a
/// missing argument `argumentMissing`, one too many `tooManyArguments`; whatever a member itself raises passes through.
namespace platform {

inline constexpr long argumentMissing = 449;
inline constexpr long tooManyArguments = 450;
inline constexpr long actionNotSupported = 445;
inline constexpr long objectRequired = 424;

/// The id of an object's default member, the one meant by `children(0)`.
inline constexpr int defaultMemberId = 0;

using Arguments = std::vector<Value>;

enum class MemberKind { ReadOnly, WriteOnly, Property, Method };

struct Parameter {
    QString name;
    bool byReference = false;
    bool optional = false;
};

/// One member. Arguments that are taken by reference are written back into `Arguments`.
struct Member {
    int id = -1;
    QString name;
    MemberKind kind = MemberKind::Method;
    std::vector<Parameter> parameters;
    QString family;
    /// Has its place and its id, and raises "not available yet" whatever is done with it; nobody knows its parameters.
    bool isMissing = false;
    /// Reads the property, or calls the method.
    std::function<Value(const ObjectRef &, Arguments &)> get;
    std::function<void(const ObjectRef &, Arguments &, const Value &)> put;

    bool isMethod() const { return kind == MemberKind::Method; }
    /// Arguments without which it can't be called.
    std::size_t requiredCount() const;
    /// "setAttribute(name, value, [flags])"; by-reference ones have a "&" before their names.
    QString signature() const;
};

/// A published interface: its name and its members in the order of the table.
class Interface
{
public:
    enum class Kind { Dispatch, Events };
    Interface(QString name, Kind kind = Kind::Dispatch) : mName(std::move(name)), mKind(kind) {}

    const QString &name() const { return mName; }
    Kind kind() const { return mKind; }
    const std::vector<Member> &members() const { return mMembers; }
    const Member *find(const QString &name) const;
    const Member *find(int id) const;
    void add(Member member);

private:
    QString mName;
    Kind mKind;
    std::vector<Member> mMembers;
    QHash<QString, int> mByName; // lower case, index
    QHash<int, int> mById;
};

/// What a reference refers to: the name under which it prints, and where its members are sought.
struct ObjectType {
    QString name;
    std::function<std::vector<const Interface *>(const ObjectRef &)> interfaces;
    /// Pairs that follow the name when it prints; may be empty.
    std::function<std::vector<std::pair<QString, Value>>(const ObjectRef &)> details;
};

/// The object as JSON: `{"object": "IHTMLStyle"}`.
QString describe(const ObjectRef &object);

/// The member by its name, or by its number after a "#".
const Member &findMember(const ObjectRef &object, const QString &nameOrNumber);
/// Whether there is one; raises nothing.
bool hasMember(const ObjectRef &object, const QString &name);

/// The property's value, or what the method gives. Arguments that the property doesn't take go to the default member of
/// its value.
Value getMember(const ObjectRef &object, const QString &name, Arguments arguments = {});
void putMember(const ObjectRef &object, const QString &name, const Value &value, Arguments arguments = {});

struct CallResult {
    Value value;
    /// The arguments that the member takes by reference, as it left them.
    std::vector<std::pair<QString, Value>> references;
};
CallResult callMember(const ObjectRef &object, const QString &name, Arguments arguments = {});

/// A row of a table that is kept apart from the class that has the members: a control's, whose class stands above this
/// folder. `family` is the group that a reader finds it under.
struct MemberRow {
    int id;
    const char *name;
    const char *family;
};

/// "setAttribute(name, value, [flags], &result)" taken apart.
Member memberFromSignature(int id, const QString &signature, MemberKind kind);
/// A member that has its id and isn't there yet.
Member missingMember(int id, const char *name);

} // namespace platform
