// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/PropertyBag.h"

#include "base/Error.h"

#include <QCoreApplication>
#include <cmath>
#include <limits>

namespace {

[[noreturn]] void failTypeMismatch()
{
    throw base::Error(base::errors::typeMismatch, QCoreApplication::translate("PropertyBag", "Type mismatch"));
}

bool isText(const QVariant &value)
{
    return value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QByteArray;
}

/// The number that a value is or reads as.
double number(const QVariant &value)
{
    if (!value.isValid()) return 0;
    if (value.typeId() == QMetaType::Bool) return value.toBool() ? -1 : 0;
    bool ok = false;
    double result = 0;
    if (isText(value)) {
        const QString text = value.toString().trimmed();
        if (text.compare(u"True", Qt::CaseInsensitive) == 0) return -1;
        if (text.compare(u"False", Qt::CaseInsensitive) == 0) return 0;
        result = text.toDouble(&ok);
    } else {
        result = value.toDouble(&ok);
    }
    if (!ok || std::isnan(result)) failTypeMismatch();
    return result;
}

} // namespace

const PropertyBag::Entry *PropertyBag::find(const QString &name) const
{
    for (const Entry &entry : mEntries) {
        if (entry.name.compare(name, Qt::CaseInsensitive) == 0) return &entry;
    }
    return nullptr;
}

void PropertyBag::put(const QString &name, const QVariant &value, bool isDefault)
{
    for (Entry &entry : mEntries) {
        if (entry.name.compare(name, Qt::CaseInsensitive) == 0) {
            entry.value = value;
            entry.isDefault = isDefault;
            return;
        }
    }
    mEntries.push_back({name, value, isDefault});
}

QVariant PropertyBag::ReadProperty(const QString &Name, const QVariant &Default) const
{
    const Entry *entry = find(Name);
    return entry ? entry->value : Default;
}

void PropertyBag::WriteProperty(const QString &Name, const QVariant &Value, const QVariant &Default)
{
    put(Name, Value, Default.isValid() && equal(Value, Default));
}

void PropertyBag::set(const QString &name, const QVariant &value)
{
    put(name, value, false);
}

bool PropertyBag::contains(const QString &name) const
{
    return find(name) != nullptr;
}

bool PropertyBag::toBoolean(const QVariant &value)
{
    return number(value) != 0;
}

int PropertyBag::toLong(const QVariant &value)
{
    const double rounded = std::nearbyint(number(value)); // to even, as the default rounding mode is
    if (rounded < std::numeric_limits<int>::min() || rounded > std::numeric_limits<int>::max())
        throw base::Error(base::errors::overflow, QCoreApplication::translate("PropertyBag", "Overflow"));
    return int(rounded);
}

QString PropertyBag::toText(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool) return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    return value.toString();
}

bool PropertyBag::equal(const QVariant &one, const QVariant &other)
{
    if (isText(one) || isText(other) || !one.isValid() || !other.isValid()) return toText(one) == toText(other);
    if (one.canConvert<double>() && other.canConvert<double>()) return number(one) == number(other);
    return one == other;
}
