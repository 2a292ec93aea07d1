// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QString>
#include <QVariant>
#include <vector>

/// What a control writes its persistent properties to and reads them from. Entries keep the order of their first write
/// and are found whatever their name's case. No call fails but a conversion that is told to.
class VELLUMKIT_EXPORT PropertyBag
{
public:
    struct Entry
    {
        QString name;
        QVariant value;
        /// The value equalled the default when it was written; a saved form needn't hold it.
        bool isDefault = false;
    };

    /// The value of the entry, or `Default` if there is none.
    QVariant ReadProperty(const QString &Name, const QVariant &Default = {}) const;
    /// Adds or replaces an entry. One that equals its default is kept too, marked as such.
    void WriteProperty(const QString &Name, const QVariant &Value, const QVariant &Default = {});

    /// Adds or replaces an entry as a loaded form does: never marked as equal to its default.
    void set(const QString &name, const QVariant &value);
    bool contains(const QString &name) const;
    const std::vector<Entry> &entries() const { return mEntries; }
    void clear() { mEntries.clear(); }

    /// A value as a condition: booleans, numbers other than 0, the texts "True" and "False" in any case and texts that
    /// read as a number; an empty variant is False. Raises a type mismatch for any other.
    static bool toBoolean(const QVariant &value);
    /// A value as an integer, halves rounded to the even neighbour; True is -1. An empty variant is 0. Raises a type
    /// mismatch, or an overflow beyond 32 bits.
    static int toLong(const QVariant &value);
    /// A value as a person and a saved form read it: booleans are "True" and "False", an empty variant is "".
    static QString toText(const QVariant &value);
    /// Whether two values are the same as values, so that 0 equals False and "True" equals True.
    static bool equal(const QVariant &one, const QVariant &other);

private:
    const Entry *find(const QString &name) const;
    void put(const QString &name, const QVariant &value, bool isDefault);

    std::vector<Entry> mEntries; // a control has a few dozens
};
