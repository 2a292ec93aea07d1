// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/SignalSpy.h"

#include "scripting/Objects.h"
#include "scripting/Script.h"

namespace scripting {

using platform::Value;

Value EventArgument::value() const
{
    QByteArray plain = type;
    if (plain.endsWith('&')) plain.chop(1);
    if (plain == "QString") return Value(*static_cast<QString *>(address));
    if (plain == "bool") return Value(*static_cast<bool *>(address));
    if (plain == "int") return Value(*static_cast<int *>(address));
    if (plain == "uint") return Value(*static_cast<uint *>(address));
    if (plain == "qulonglong") return Value(*static_cast<quint64 *>(address));
    if (plain == "dom::Element*") return elementValue(*static_cast<dom::Element **>(address));
    if (plain == "dom::EventObject*") return eventValue(*static_cast<dom::EventObject **>(address));
    if (plain == "QObject*") return objectValue(*static_cast<QObject **>(address));
    return Value::nothing();
}

void EventArgument::write(const Value &value) const
{
    if (type == "QString&")
        *static_cast<QString *>(address) = value.toString();
    else if (type == "bool&")
        *static_cast<bool *>(address) = value.toBoolean();
    else if (type == "int&")
        *static_cast<int *>(address) = value.toInt();
    else
        throw ScriptError(QStringLiteral("%1 takes no answer").arg(name));
}

QString Event::text() const
{
    QStringList values;
    for (const EventArgument &argument : arguments) values << argument.name + u'=' + argument.value().toJson();
    return name + u'(' + values.join(QStringLiteral(", ")) + u')';
}

SignalSpy::SignalSpy(QObject &sender, std::function<void(const Event &)> handler) : mHandler(std::move(handler))
{
    const QMetaObject &meta = *sender.metaObject();
    const int base = QObject::staticMetaObject.methodCount();
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() != QMetaMethod::Signal) continue;
        QMetaObject::connect(&sender, i, this, base + int(mSignals.size()), Qt::DirectConnection);
        mSignals.push_back(method);
    }
}

int SignalSpy::qt_metacall(QMetaObject::Call call, int id, void **arguments)
{
    id = QObject::qt_metacall(call, id, arguments);
    if (id < 0 || call != QMetaObject::InvokeMetaMethod || id >= int(mSignals.size())) return id;
    const QMetaMethod &method = mSignals[size_t(id)];
    Event event;
    event.name = QString::fromLatin1(method.name());
    const QList<QByteArray> names = method.parameterNames(), types = method.parameterTypes();
    for (int i = 0; i < names.size(); ++i)
        event.arguments.push_back({QString::fromLatin1(names[i]), types[i], arguments[i + 1]});
    mHandler(event);
    return -1;
}

} // namespace scripting
