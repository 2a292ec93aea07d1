// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>
#include <memory>

namespace platform {

/// An ordered list of values, each with an optional key: what late-bound callers hand lists over in. Positions count
/// from 1. Keys are found whatever their case.
class VELLUMKIT_EXPORT Collection : public QObject, public std::enable_shared_from_this<Collection>
{
    Q_OBJECT
    Q_PROPERTY(int Count READ Count)
public:
    explicit Collection(QObject *parent = nullptr);

    /// Adds a value at the end, or before or after another one, which is named by its position or its key. Raises
    /// `duplicateKey` for a key that is there already, `invalidCall` if both places are named or a key is unknown,
    /// `subscriptOutOfRange` for a position that isn't there.
    Q_INVOKABLE void Add(const QVariant &Item, const QString &Key = {}, const QVariant &Before = {},
                         const QVariant &After = {});
    /// The value at a position (a number) or of a key (a text). Raises `subscriptOutOfRange` for a position that isn't
    /// there, `invalidCall` for an unknown key, `typeMismatch` for anything that is neither.
    Q_INVOKABLE QVariant Item(const QVariant &IndexOrKey) const;
    /// Removes the value that `Item` would give; what follows moves up. Raises the same errors.
    Q_INVOKABLE void Remove(const QVariant &IndexOrKey);
    Q_INVOKABLE int Count() const { return int(mItems.size()); }

    /// Whether a key is there; raises nothing.
    bool contains(const QString &key) const { return mKeys.contains(key.toCaseFolded()); }
    void clear();

    QVariantList::const_iterator begin() const { return mItems.cbegin(); }
    QVariantList::const_iterator end() const { return mItems.cend(); }

private:
    qsizetype place(const QVariant &indexOrKey) const;
    void renumber(qsizetype from);

    QVariantList mItems;
    QStringList mFoldedKeys;         // one per item, empty without a key
    QHash<QString, qsizetype> mKeys; // folded keys and the offsets of their items
};

} // namespace platform
