// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Value.h"

#include <QMetaMethod>
#include <QObject>
#include <functional>

namespace scripting {

/// One argument of an event while its handler runs: its name, its value, and where to write an answer.
struct EventArgument {
    QString name;
    QByteArray type; ///< as the signal declares it, "bool&" where the host answers
    void *address = nullptr;

    bool isReference() const { return type.endsWith('&'); }
    platform::Value value() const;
    /// Writes an answer; fails where the argument isn't taken by reference.
    void write(const platform::Value &value) const;
};

struct Event {
    QString name;
    std::vector<EventArgument> arguments;
    /// `Name(Argument=VALUE, …)`.
    QString text() const;
};

/// Hears every signal of an object's own class and can write to arguments by reference, whatever the signal's signature.
class SignalSpy : public QObject
{
public:
    explicit SignalSpy(QObject &sender, std::function<void(const Event &)> handler);
    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override;

private:
    std::vector<QMetaMethod> mSignals;
    std::function<void(const Event &)> mHandler;
};

} // namespace scripting
