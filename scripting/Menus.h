// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

class QAction;
class QMenu;

namespace scripting {

/// Watches for menus that pop up and works them as the script told. One that nobody expected is told of and closed.
///
/// A menu's name is its object name, or that of its class; a tool's is its action's object name, or its caption.
class Menus : public QObject
{
public:
    struct Hooks {
        std::function<void(const QString &)> print;
        std::function<void(const QString &)> fail;
        std::function<void(const QString &name)> unexpected;
    };
    explicit Menus(Hooks hooks);
    ~Menus() override;

    /// What to do in the next menu, which must have that name.
    void expect(const QString &name, const QString &lines);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void work(QMenu &menu);
    void perform(QMenu &menu, const QString &line);
    void list(const QMenu &menu, int depth);

    struct Expected {
        QString name;
        QString lines;
    };
    Hooks mHooks;
    std::vector<Expected> mExpected;
    bool mPicking = false;
};

} // namespace scripting
