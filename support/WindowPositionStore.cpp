// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/WindowPositionStore.h"

#include "support/SettingsStore.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace support {

namespace {

constexpr const char *placeNames[] = {"Left", "Top", "Width", "Height"};

/// The rectangle moved and cut so that it lies on a screen.
QRect ontoScreen(QRect place)
{
    const QScreen *screen = QGuiApplication::screenAt(place.center());
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (!screen) return place;
    const QRect available = screen->availableGeometry();
    place.setSize(place.size().boundedTo(available.size()));
    place.moveRight(std::min(place.right(), available.right()));
    place.moveBottom(std::min(place.bottom(), available.bottom()));
    place.moveLeft(std::max(place.left(), available.left()));
    place.moveTop(std::max(place.top(), available.top()));
    return place;
}

} // namespace

WindowPositionStore &WindowPositionStore::instance()
{
    static WindowPositionStore store;
    return store;
}

void WindowPositionStore::save(const QString &name, const QWidget &window) const
{
    if (mRootKey.isEmpty()) return;
    const QString key = mRootKey + QLatin1Char('\\') + name;
    SettingsStore &settings = SettingsStore::instance();
    // The frame is the window system's; what is kept and restored is the place of what is inside.
    const QRect place = window.isMaximized() ? window.normalGeometry() : window.geometry();
    const int values[] = {place.left(), place.top(), place.width(), place.height()};
    for (int i = 0; i < 4; ++i)
        settings.write(SettingsRoot::CurrentUser, key, QLatin1String(placeNames[i]), QString::number(values[i]));
    settings.write(SettingsRoot::CurrentUser, key, QStringLiteral("Maximised"),
                   window.isMaximized() ? QStringLiteral("True") : QStringLiteral("False"));
}

bool WindowPositionStore::restore(const QString &name, QWidget &window) const
{
    if (mRootKey.isEmpty()) return false;
    const QString key = mRootKey + QLatin1Char('\\') + name;
    const SettingsStore &settings = SettingsStore::instance();
    int values[4];
    for (int i = 0; i < 4; ++i) {
        bool isNumber = false;
        values[i] = settings.read(SettingsRoot::CurrentUser, key, QLatin1String(placeNames[i])).toInt(&isNumber);
        if (!isNumber) return false;
    }
    if (values[2] < 1 || values[3] < 1) return false;
    window.setGeometry(ontoScreen(QRect(values[0], values[1], values[2], values[3])));
    if (settings.read(SettingsRoot::CurrentUser, key, QStringLiteral("Maximised")) == QLatin1String("True"))
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
    return true;
}

} // namespace support
