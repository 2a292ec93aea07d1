// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/FlatStripAccessible.h"

bool FlatStripTabAccessible::isValid() const
{
    return mStrip && mIndex < mStrip->tabCount();
}

QAccessibleInterface *FlatStripTabAccessible::parent() const
{
    return mStrip ? QAccessible::queryAccessibleInterface(mStrip) : nullptr;
}

QString FlatStripTabAccessible::text(QAccessible::Text text) const
{
    if (!isValid() || text != QAccessible::Name) return {};
    QString caption = mStrip->mTabs[size_t(mIndex)].caption;
    caption.replace(QLatin1String("&&"), QString(QChar(0)));
    caption.remove(QLatin1Char('&'));
    return caption.replace(QChar(0), QLatin1Char('&'));
}

QRect FlatStripTabAccessible::rect() const
{
    if (!isValid()) return {};
    const QRect place = mStrip->mTabs[size_t(mIndex)].rect;
    return place.isEmpty() ? QRect() : QRect(mStrip->mapToGlobal(place.topLeft()), place.size());
}

QAccessible::State FlatStripTabAccessible::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    const bool selected = mIndex == mStrip->mSelected;
    state.selectable = true;
    state.selected = selected;
    state.focusable = true;
    state.focused = selected && mStrip->hasFocus();
    state.disabled = !mStrip->isEnabled();
    state.invisible = !mStrip->isVisible() || !mStrip->mTabs[size_t(mIndex)].visible;
    return state;
}

void *FlatStripTabAccessible::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
}

QStringList FlatStripTabAccessible::actionNames() const
{
    return {pressAction()};
}

void FlatStripTabAccessible::doAction(const QString &name)
{
    if (isValid() && name == pressAction() && mStrip->isEnabled()) mStrip->pick(mIndex);
}

QStringList FlatStripTabAccessible::keyBindingsForAction(const QString &) const
{
    if (!isValid()) return {};
    const QKeySequence keys = QKeySequence::mnemonic(mStrip->mTabs[size_t(mIndex)].caption);
    return keys.isEmpty() ? QStringList() : QStringList{keys.toString(QKeySequence::NativeText)};
}

FlatStripAccessible::FlatStripAccessible(FlatStrip *strip) : QAccessibleWidget(strip, QAccessible::PageTabList) {}

FlatStripAccessible::~FlatStripAccessible()
{
    for (const auto &[index, id] : mChildren)
        QAccessible::deleteAccessibleInterface(id);
}

void FlatStripAccessible::install()
{
    static const bool installed = [] {
        QAccessible::installFactory([](const QString &, QObject *object) -> QAccessibleInterface * {
            auto *strip = qobject_cast<FlatStrip *>(object);
            return strip ? new FlatStripAccessible(strip) : nullptr;
        });
        return true;
    }();
    Q_UNUSED(installed);
}

QAccessibleInterface *FlatStripAccessible::childAt(int x, int y) const
{
    return child(strip()->tabAt(strip()->mapFromGlobal(QPoint(x, y))));
}

QAccessibleInterface *FlatStripAccessible::child(int index) const
{
    if (index < 0 || index >= childCount()) return nullptr;
    const auto found = mChildren.find(index);
    if (found != mChildren.end()) return QAccessible::accessibleInterface(found->second);
    auto *made = new FlatStripTabAccessible(strip(), index);
    mChildren.emplace(index, QAccessible::registerAccessibleInterface(made));
    return made;
}

int FlatStripAccessible::childCount() const
{
    return strip()->tabCount();
}

int FlatStripAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    for (int i = 0; i < childCount(); ++i) {
        if (this->child(i) == child) return i;
    }
    return -1;
}

QAccessibleInterface *FlatStripAccessible::focusChild() const
{
    return strip()->hasFocus() ? child(strip()->mSelected) : nullptr;
}
