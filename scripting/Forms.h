// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <vector>

class QDialog;
class QWidget;

namespace scripting {

/// Watches for modal forms and works them as the script told: by the names of their controls, with real key events. A
/// form that nobody expected is cancelled.
///
/// A form's name is its object name, or that of its class; so is a control's.
class Forms : public QObject
{
public:
    struct Hooks {
        std::function<void(const QString &)> print;
        std::function<void(const QString &)> fail;
        std::function<QString(const QString &)> filePath;
    };
    explicit Forms(Hooks hooks);
    ~Forms() override;

    /// What to do in the next form of that name.
    void expect(const QString &name, const QString &lines);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void work(QDialog &form);
    void perform(QDialog &form, const QString &line);

    struct Expected {
        QString name;
        QString lines;
    };
    Hooks mHooks;
    std::vector<Expected> mExpected;
};

/// A form's or a widget's name as a script spells it.
bool isNamed(const QObject &object, const QString &name);
/// The keys of a sequence as Qt spells it, pressed and released in a widget. Raises for an unknown key.
void sendKeys(QWidget &receiver, const QString &sequence);

} // namespace scripting
