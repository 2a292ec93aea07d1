// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dispatch.h"

namespace platform {

/// Writes the table of an interface whose objects are of class `T`, a row a call:
///
///     InterfaceTable<dom::Element>(interface)
///         .read(1, "tagName", [](E &e) { return Value(e.tagName()); })
///         .property(2, "id", [](E &e) { … }, [](E &e, const Value &v) { … })
///         .method(3, "insertAdjacentHTML(where, html)", [](E &e, Arguments &a) { …; return Value(); });
///
/// Numbers are for good: a member that goes leaves a gap, a new one takes a number that nobody had.
template <class T> class InterfaceTable
{
public:
    explicit InterfaceTable(Interface &interface) : mInterface(interface) {}

    template <class Get> InterfaceTable &read(int id, const char *name, Get get)
    {
        return add(memberFromSignature(id, QLatin1String(name), MemberKind::ReadOnly), getter(get), {});
    }
    template <class Get, class Put> InterfaceTable &property(int id, const char *name, Get get, Put put)
    {
        return add(memberFromSignature(id, QLatin1String(name), MemberKind::Property), getter(get),
                   [put](const ObjectRef &object, Arguments &, const Value &value) { put(*object.as<T>(), value); });
    }
    /// A property that can't be read.
    template <class Put> InterfaceTable &write(int id, const char *name, Put put)
    {
        return add(memberFromSignature(id, QLatin1String(name), MemberKind::WriteOnly), {},
                   [put](const ObjectRef &object, Arguments &, const Value &value) { put(*object.as<T>(), value); });
    }
    /// A property with arguments, which its signature names: "Option(index)".
    template <class Get, class Put> InterfaceTable &indexed(int id, const char *signature, Get get, Put put)
    {
        return add(memberFromSignature(id, QLatin1String(signature), MemberKind::Property),
                   [get](const ObjectRef &object, Arguments &arguments) { return get(*object.as<T>(), arguments); },
                   [put](const ObjectRef &object, Arguments &arguments, const Value &value) {
                       put(*object.as<T>(), arguments, value);
                   });
    }
    template <class Call> InterfaceTable &method(int id, const char *signature, Call call)
    {
        return add(memberFromSignature(id, QLatin1String(signature), MemberKind::Method),
                   [call](const ObjectRef &object, Arguments &arguments) { return call(*object.as<T>(), arguments); },
                   {});
    }
    /// What has its number and isn't there yet.
    InterfaceTable &missing(int id, const char *name)
    {
        mInterface.add(missingMember(id, name));
        return *this;
    }

private:
    template <class Get> static auto getter(Get get)
    {
        return [get](const ObjectRef &object, Arguments &) { return get(*object.as<T>()); };
    }
    InterfaceTable &add(Member member, std::function<Value(const ObjectRef &, Arguments &)> get,
                        std::function<void(const ObjectRef &, Arguments &, const Value &)> put)
    {
        member.get = std::move(get);
        member.put = std::move(put);
        mInterface.add(std::move(member));
        return *this;
    }

    Interface &mInterface;
};

} // namespace platform
