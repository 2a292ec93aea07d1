// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DispatchPath.h"

namespace platform {

using base::Error;

namespace {

bool isNameCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

QString readName(const QString &text, qsizetype &at)
{
    const qsizetype start = at;
    while (at < text.size() && isNameCharacter(text[at])) ++at;
    return text.mid(start, at - start);
}

[[noreturn]] void fail(const QString &text, qsizetype at)
{
    throw Error(base::errors::invalidCall, QStringLiteral("not a path: %1").arg(text.mid(at, 40)));
}

void skipBlanks(const QString &text, qsizetype &at)
{
    while (at < text.size() && text[at].isSpace()) ++at;
}

/// At the opening parenthesis.
Arguments readArguments(const QString &text, qsizetype &at, const std::function<Value(const QString &)> &named)
{
    Arguments arguments;
    skipBlanks(text, ++at);
    if (at < text.size() && text[at] == u')') {
        ++at;
        return arguments;
    }
    for (;;) {
        skipBlanks(text, at);
        if (at < text.size() && text[at] == u'@') {
            const QString name = readName(text, ++at);
            arguments.push_back(named(name));
        } else {
            arguments.push_back(readJson(text, at));
        }
        skipBlanks(text, at);
        const QChar c = at < text.size() ? text[at] : QChar();
        if (c != u',' && c != u')') fail(text, at);
        ++at;
        if (c == u')') return arguments;
    }
}

/// The object that a step leads to. What late binding calls a default property isn't followed: a text has no members.
ObjectRef objectOf(const Value &value, const QString &next)
{
    if (value.isObject() || value.isEmpty() || value.isNull()) {
        const ObjectRef object = value.toObject();
        if (object.isNothing())
            throw Error(base::errors::objectNotSet, QStringLiteral("Object variable not set: %1").arg(next));
        return object;
    }
    throw Error(objectRequired, QStringLiteral("Object required: %1").arg(next));
}

} // namespace

Path Path::read(const QString &text, qsizetype &position, const std::function<Value(const QString &)> &named)
{
    Path path;
    const qsizetype start = position;
    if (position < text.size() && text[position] == u'@') {
        path.root = readName(text, ++position);
        if (path.root.isEmpty()) fail(text, start);
        if (position < text.size() && text[position] == u'(') {
            // The object's default member.
            Step step{QStringLiteral("#%1").arg(defaultMemberId), true, readArguments(text, position, named)};
            path.steps.push_back(std::move(step));
        }
        if (position >= text.size() || text[position].isSpace()) return path;
        if (text[position] != u'.') fail(text, start);
        ++position;
    }
    for (;;) {
        Step step;
        const qsizetype from = position;
        if (position < text.size() && text[position] == u'#') {
            ++position;
            if (position < text.size() && text[position] == u'-') ++position;
        }
        readName(text, position);
        step.name = text.mid(from, position - from);
        if (step.name.isEmpty() || step.name == u'#') fail(text, start);
        while (position < text.size() && text[position] == u'(') {
            Arguments arguments = readArguments(text, position, named);
            if (step.hasArguments) { // `rows(0)(1)`: the default member of what the first gave
                path.steps.push_back(std::move(step));
                step = {QStringLiteral("#%1").arg(defaultMemberId), true, {}};
            }
            step.hasArguments = true;
            step.arguments = std::move(arguments);
        }
        path.steps.push_back(std::move(step));
        if (position >= text.size() || text[position].isSpace()) return path;
        if (text[position] != u'.') fail(text, start);
        ++position;
    }
}

ObjectRef Path::owner(const Value &start) const
{
    Value at = start;
    for (std::size_t i = 0; i + 1 < steps.size(); ++i)
        at = getMember(objectOf(at, steps[i].name), steps[i].name, steps[i].arguments);
    return objectOf(at, steps.back().name);
}

Value Path::get(const Value &start) const
{
    if (steps.empty()) return start;
    return getMember(owner(start), steps.back().name, steps.back().arguments);
}

void Path::put(const Value &start, const Value &value) const
{
    if (steps.empty()) throw Error(base::errors::invalidCall, QStringLiteral("A name can't be assigned to"));
    putMember(owner(start), steps.back().name, value, steps.back().arguments);
}

CallResult Path::call(const Value &start, const Arguments &more) const
{
    if (steps.empty()) return {start, {}};
    Arguments arguments = steps.back().arguments;
    arguments.insert(arguments.end(), more.begin(), more.end());
    return callMember(owner(start), steps.back().name, std::move(arguments));
}

} // namespace platform
