// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Menus.h"

#include "base/Error.h"
#include "platform/Value.h"
#include "scripting/Forms.h"

#include <QApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>

namespace scripting {

using base::Error;
using platform::Value;

namespace {

QString captionOf(const QAction &action)
{
    QString caption = action.text().section(u'\t', 0, 0); // the shortcut stands behind a tabulator
    caption.replace(QStringLiteral("&&"), QStringLiteral("\1")).remove(u'&').replace(u'\1', u'&');
    return caption;
}

QString nameOf(const QAction &action)
{
    return action.objectName().isEmpty() ? captionOf(action) : action.objectName();
}

QString nameOf(const QMenu &menu)
{
    return menu.objectName().isEmpty() ? QString::fromLatin1(menu.metaObject()->className()) : menu.objectName();
}

QAction *findTool(const QMenu &menu, const QString &name)
{
    for (QAction *action : menu.actions()) {
        if (!action->isVisible() || action->isSeparator()) continue;
        if (nameOf(*action).compare(name, Qt::CaseInsensitive) == 0) return action;
        if (action->menu())
            if (QAction *inside = findTool(*action->menu(), name)) return inside;
    }
    return nullptr;
}

/// The menu that shows the action.
QMenu *menuOf(QMenu &menu, const QAction &action)
{
    if (menu.actions().contains(&action)) return &menu;
    for (QAction *entry : menu.actions())
        if (entry->menu())
            if (QMenu *found = menuOf(*entry->menu(), action)) return found;
    return nullptr;
}

} // namespace

Menus::Menus(Hooks hooks) : mHooks(std::move(hooks))
{
    qApp->installEventFilter(this);
}

Menus::~Menus()
{
    if (qApp) qApp->removeEventFilter(this);
}

void Menus::expect(const QString &name, const QString &lines)
{
    mExpected.push_back({name, lines});
}

bool Menus::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show && !mPicking) {
        QMenu *menu = qobject_cast<QMenu *>(watched);
        // A menu may run a loop of its own, in which it is worked.
        if (menu && menu->isWindow()) QTimer::singleShot(0, menu, [this, menu] { work(*menu); });
    }
    return QObject::eventFilter(watched, event);
}

void Menus::work(QMenu &menu)
{
    if (!menu.isVisible()) return;
    const auto expected =
        std::find_if(mExpected.begin(), mExpected.end(), [&](const Expected &e) { return isNamed(menu, e.name); });
    if (expected == mExpected.end()) {
        mHooks.unexpected(nameOf(menu));
        menu.close();
        return;
    }
    const QString lines = expected->lines;
    mExpected.erase(expected);
    const QPointer<QMenu> alive(&menu);
    mPicking = true;
    try {
        for (const QString &line : lines.split(u'\n', Qt::SkipEmptyParts))
            if (alive) perform(*alive, line.trimmed());
    } catch (const Error &error) {
        mHooks.fail(error.description());
    }
    mPicking = false;
    if (alive && alive->isVisible()) alive->close();
}

void Menus::list(const QMenu &menu, int depth)
{
    for (const QAction *action : menu.actions()) {
        if (!action->isVisible()) continue;
        const QString indent(depth * 2, u' ');
        if (action->isSeparator()) {
            mHooks.print(indent + u'-');
            continue;
        }
        mHooks.print(indent + nameOf(*action) + u' ' + Value::quoted(captionOf(*action)) +
                     (action->isEnabled() ? QStringLiteral(" enabled") : QStringLiteral(" disabled")) +
                     (action->isChecked() ? QStringLiteral(" checked") : QString()));
        if (action->menu()) list(*action->menu(), depth + 1);
    }
}

void Menus::perform(QMenu &menu, const QString &line)
{
    if (line == QLatin1String("list")) return list(menu, 0);
    if (line.section(u' ', 0, 0) != QLatin1String("pick"))
        throw Error(base::errors::invalidCall, QStringLiteral("unknown line of a menu: %1").arg(line));
    const QString name = line.section(u' ', 1).trimmed();
    QAction *action = findTool(menu, name);
    if (!action) throw Error(base::errors::invalidCall, QStringLiteral("the menu has no tool %1").arg(name));
    if (!action->isEnabled()) throw Error(base::errors::invalidCall, QStringLiteral("the tool is disabled: %1").arg(name));
    if (!menu.isVisible()) throw Error(base::errors::invalidCall, QStringLiteral("the menu is closed already"));
    const QPointer<QMenu> shows = menuOf(menu, *action);
    if (shows != &menu) {
        shows->popup(menu.mapToGlobal(menu.actionGeometry(shows->menuAction()).topRight()));
        QApplication::processEvents();
    }
    const QPointF at = shows->actionGeometry(action).center();
    for (const QEvent::Type type : {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        if (!shows) break;
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, at, shows->mapToGlobal(at), button,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(shows, &event);
    }
}

} // namespace scripting
