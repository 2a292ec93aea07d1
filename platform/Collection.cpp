// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Collection.h"

#include "base/Error.h"

#include <cmath>

namespace platform {

using base::Error;
namespace errors = base::errors;

namespace {

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

bool isLeftOut(const QVariant &value)
{
    return !value.isValid();
}

} // namespace

Collection::Collection(QObject *parent) : QObject(parent) {}

qsizetype Collection::place(const QVariant &indexOrKey) const
{
    if (indexOrKey.typeId() == QMetaType::QString) {
        const auto found = mKeys.constFind(indexOrKey.toString().toCaseFolded());
        if (found == mKeys.constEnd()) throw Error(errors::invalidCall, tr("Invalid procedure call or argument"));
        return found.value();
    }
    if (!isNumber(indexOrKey)) throw Error(errors::typeMismatch, tr("Type mismatch"));
    const double index = std::nearbyint(indexOrKey.toDouble());
    if (!(index >= 1 && index <= double(mItems.size())))
        throw Error(errors::subscriptOutOfRange, tr("Subscript out of range"));
    return qsizetype(index) - 1;
}

void Collection::renumber(qsizetype from)
{
    for (qsizetype i = from; i < mFoldedKeys.size(); ++i) {
        if (!mFoldedKeys.at(i).isEmpty()) mKeys.insert(mFoldedKeys.at(i), i);
    }
}

void Collection::Add(const QVariant &Item, const QString &Key, const QVariant &Before, const QVariant &After)
{
    if (!isLeftOut(Before) && !isLeftOut(After))
        throw Error(errors::invalidCall, tr("Invalid procedure call or argument"));
    const QString key = Key.toCaseFolded();
    if (!key.isEmpty() && mKeys.contains(key))
        throw Error(errors::duplicateKey, tr("This key is already associated with an element of this collection"));
    qsizetype at = mItems.size();
    if (!isLeftOut(Before))
        at = place(Before);
    else if (!isLeftOut(After))
        at = place(After) + 1;
    mItems.insert(at, Item);
    mFoldedKeys.insert(at, key);
    renumber(at);
}

QVariant Collection::Item(const QVariant &IndexOrKey) const
{
    return mItems.at(place(IndexOrKey));
}

void Collection::Remove(const QVariant &IndexOrKey)
{
    const qsizetype at = place(IndexOrKey);
    mItems.removeAt(at);
    const QString key = mFoldedKeys.takeAt(at);
    if (!key.isEmpty()) mKeys.remove(key);
    renumber(at);
}

void Collection::clear()
{
    mItems.clear();
    mFoldedKeys.clear();
    mKeys.clear();
}

} // namespace platform
