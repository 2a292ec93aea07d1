// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Dispatch.h"

#include "base/Fault.h"

namespace platform {

using base::Error;

std::size_t Member::requiredCount() const
{
    std::size_t count = 0;
    for (const Parameter &parameter : parameters) {
        if (parameter.optional) break;
        ++count;
    }
    return count;
}

QString Member::signature() const
{
    if (parameters.empty()) return name;
    QStringList texts;
    for (const Parameter &parameter : parameters) {
        const QString text = (parameter.byReference ? QStringLiteral("&") : QString()) + parameter.name;
        texts += parameter.optional ? u'[' + text + u']' : text;
    }
    return name + u'(' + texts.join(QLatin1String(", ")) + u')';
}

const Member *Interface::find(const QString &name) const
{
    const auto it = mByName.constFind(name.toLower());
    return it == mByName.constEnd() ? nullptr : &mMembers[std::size_t(*it)];
}

const Member *Interface::find(int id) const
{
    const auto it = mById.constFind(id);
    return it == mById.constEnd() ? nullptr : &mMembers[std::size_t(*it)];
}

void Interface::add(Member member)
{
    Q_ASSERT_X(!find(member.name), "Interface::add", qPrintable(member.name));
    Q_ASSERT_X(!find(member.id), "Interface::add", qPrintable(member.name));
    mByName.insert(member.name.toLower(), int(mMembers.size()));
    mById.insert(member.id, int(mMembers.size()));
    mMembers.push_back(std::move(member));
}

QString describe(const ObjectRef &object)
{
    QString out = QStringLiteral("{\"object\": ") + Value::quoted(object.type()->name);
    if (object.type()->details) {
        for (const auto &[name, value] : object.type()->details(object))
            out += QLatin1String(", ") + Value::quoted(name) + QLatin1String(": ") + value.toJson();
    }
    return out + u'}';
}

namespace {

/// An operation of the document model that was told to fail does so whichever way it is called. The control's own
/// procedures have traps, which see to it themselves.
void failIfTold(const ObjectRef &object, const Member &member)
{
    if (base::faults::armedCount() == 0) return;
    const auto check = [&](const QString &interface) {
        if (!interface.startsWith(QLatin1String("IHTML"))) return;
        base::faults::check(interface.toLatin1().constData(), member.name.toLatin1().constData());
    };
    check(object.type()->name);
    for (const Interface *interface : object.type()->interfaces(object)) check(interface->name());
}

const Member *seek(const ObjectRef &object, const QString &nameOrNumber)
{
    const bool byNumber = nameOrNumber.startsWith(u'#');
    bool ok = false;
    const int id = byNumber ? nameOrNumber.mid(1).toInt(&ok) : 0;
    if (byNumber && !ok) return nullptr;
    for (const Interface *interface : object.type()->interfaces(object)) {
        const Member *member = byNumber ? interface->find(id) : interface->find(nameOrNumber);
        if (member) return member;
    }
    return nullptr;
}

void checkCount(const Member &member, const Arguments &arguments)
{
    if (arguments.size() < member.requiredCount())
        throw Error(argumentMissing, QStringLiteral("Argument not optional: %1").arg(member.signature()));
    if (arguments.size() > member.parameters.size())
        throw Error(tooManyArguments, QStringLiteral("Wrong number of arguments: %1").arg(member.signature()));
}

Value defaultOf(const Value &value, Arguments arguments)
{
    return getMember(value.toObject(), QStringLiteral("#%1").arg(defaultMemberId), std::move(arguments));
}

} // namespace

const Member &findMember(const ObjectRef &object, const QString &nameOrNumber)
{
    if (object.isNothing())
        throw Error(base::errors::objectNotSet, QStringLiteral("Object variable not set: %1").arg(nameOrNumber));
    const Member *member = seek(object, nameOrNumber);
    if (!member)
        throw Error(base::errors::noSuchMember,
                    QStringLiteral("Object doesn't support this property or method: %1").arg(nameOrNumber));
    return *member;
}

bool hasMember(const ObjectRef &object, const QString &name)
{
    return !object.isNothing() && seek(object, name);
}

Value getMember(const ObjectRef &object, const QString &name, Arguments arguments)
{
    const Member &member = findMember(object, name);
    failIfTold(object, member);
    if (!member.get)
        throw Error(actionNotSupported, QStringLiteral("The property can't be read: %1").arg(member.name));
    if (!member.isMethod() && member.parameters.empty() && !arguments.empty()) {
        Arguments none;
        return defaultOf(member.get(object, none), std::move(arguments));
    }
    checkCount(member, arguments);
    arguments.resize(member.parameters.size());
    return member.get(object, arguments);
}

void putMember(const ObjectRef &object, const QString &name, const Value &value, Arguments arguments)
{
    const Member &member = findMember(object, name);
    failIfTold(object, member);
    if (!member.put)
        throw Error(actionNotSupported, QStringLiteral("The property can't be written: %1").arg(member.name));
    checkCount(member, arguments);
    arguments.resize(member.parameters.size());
    member.put(object, arguments, value);
}

CallResult callMember(const ObjectRef &object, const QString &name, Arguments arguments)
{
    const Member &member = findMember(object, name);
    if (!member.isMethod()) return {getMember(object, name, std::move(arguments)), {}};
    CallResult result;
    failIfTold(object, member);
    checkCount(member, arguments);
    arguments.resize(member.parameters.size());
    result.value = member.get(object, arguments);
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
        const Parameter &parameter = member.parameters[i];
        if (parameter.byReference) result.references.emplace_back(parameter.name, arguments[i]);
    }
    return result;
}

Member memberFromSignature(int id, const QString &signature, MemberKind kind)
{
    Member member;
    member.id = id;
    member.kind = kind;
    const qsizetype open = signature.indexOf(u'(');
    member.name = signature.left(open).trimmed();
    if (open < 0) return member;
    const QString list = signature.mid(open + 1, signature.lastIndexOf(u')') - open - 1);
    for (const QString &part : list.split(u',', Qt::SkipEmptyParts)) {
        Parameter parameter;
        QString text = part.trimmed();
        parameter.optional = text.startsWith(u'[');
        text.remove(u'[').remove(u']');
        parameter.byReference = text.startsWith(u'&');
        parameter.name = text.remove(u'&');
        member.parameters.push_back(std::move(parameter));
    }
    return member;
}

Member missingMember(int id, const char *name)
{
    Member member;
    member.id = id;
    member.name = QString::fromLatin1(name);
    member.isMissing = true;
    const auto fail = [] { throw Error(actionNotSupported, QStringLiteral("not available yet")); };
    // Whatever it takes: nobody knows yet.
    for (int i = 0; i < 9; ++i) member.parameters.push_back({QStringLiteral("Argument%1").arg(i + 1), false, true});
    member.get = [fail](const ObjectRef &, Arguments &) -> Value {
        fail();
        return {};
    };
    member.put = [fail](const ObjectRef &, Arguments &, const Value &) { fail(); };
    return member;
}

} // namespace platform
