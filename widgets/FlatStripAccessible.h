// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widgets/FlatStrip.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>
#include <map>

/// One tab as assistive technology sees it.
class FlatStripTabAccessible : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    FlatStripTabAccessible(FlatStrip *strip, int index) : mStrip(strip), mIndex(index) {}

    bool isValid() const override;
    QObject *object() const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QString text(QAccessible::Text text) const override;
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::PageTab; }
    QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString &name) override;
    QStringList keyBindingsForAction(const QString &) const override;

private:
    QPointer<FlatStrip> mStrip;
    int mIndex;
};

/// The strip: a list of page tabs, hidden ones among them as invisible.
class FlatStripAccessible : public QAccessibleWidget
{
public:
    explicit FlatStripAccessible(FlatStrip *strip);
    ~FlatStripAccessible() override;
    static void install();

    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *child(int index) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *focusChild() const override;

private:
    FlatStrip *strip() const { return static_cast<FlatStrip *>(object()); }
    mutable std::map<int, QAccessible::Id> mChildren;
};
