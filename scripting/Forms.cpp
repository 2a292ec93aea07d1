// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripting/Forms.h"

#include "base/Error.h"
#include "platform/DispatchObject.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMetaProperty>
#include <QPixmap>
#include <QTimer>

namespace scripting {

using base::Error;
using platform::Value;

namespace {

QWidget *findControl(QDialog &form, const QString &name)
{
    for (QWidget *widget : form.findChildren<QWidget *>()) {
        if (isNamed(*widget, name)) return widget;
    }
    throw Error(base::errors::invalidCall, QStringLiteral("the form has no control %1").arg(name));
}

/// The property by which a person knows the control's content.
QMetaProperty contentOf(const QWidget &widget)
{
    for (const char *name : {"Value", "Text", "text", "currentText", "plainText", "value"}) {
        const int index = widget.metaObject()->indexOfProperty(name);
        const QMetaProperty user = widget.metaObject()->userProperty();
        const bool isButton = qobject_cast<const QAbstractButton *>(&widget);
        if (isButton && user.isValid()) return user; // its text is a caption
        if (index >= 0) return widget.metaObject()->property(index);
    }
    return widget.metaObject()->userProperty();
}

} // namespace

bool isNamed(const QObject &object, const QString &name)
{
    if (object.objectName().compare(name, Qt::CaseInsensitive) == 0) return true;
    const QString className = QString::fromLatin1(object.metaObject()->className());
    return className.mid(className.lastIndexOf(u':') + 1).compare(name, Qt::CaseInsensitive) == 0;
}

Forms::Forms(Hooks hooks) : mHooks(std::move(hooks))
{
    qApp->installEventFilter(this);
}

Forms::~Forms()
{
    if (qApp) qApp->removeEventFilter(this);
}

void Forms::expect(const QString &name, const QString &lines)
{
    mExpected.push_back({name, lines});
}

bool Forms::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        QDialog *form = qobject_cast<QDialog *>(watched);
        // The form's own loop must run before anything is done in it.
        if (form && form->isModal()) QTimer::singleShot(0, form, [this, form] { work(*form); });
    }
    return QObject::eventFilter(watched, event);
}

void Forms::work(QDialog &form)
{
    const auto expected = std::find_if(mExpected.begin(), mExpected.end(),
                                       [&](const Expected &e) { return isNamed(form, e.name); });
    if (expected == mExpected.end()) {
        mHooks.fail(QStringLiteral("an unexpected form: %1").arg(form.objectName().isEmpty()
                                                                     ? QString::fromLatin1(form.metaObject()->className())
                                                                     : form.objectName()));
        form.reject();
        return;
    }
    const QString lines = expected->lines;
    mExpected.erase(expected);
    const QPointer<QDialog> alive(&form);
    try {
        for (const QString &line : lines.split(u'\n', Qt::SkipEmptyParts)) {
            if (!alive || !alive->isVisible()) break;
            perform(*alive, line.trimmed());
        }
    } catch (const Error &error) {
        mHooks.fail(error.description());
    } catch (const std::exception &error) {
        mHooks.fail(QString::fromUtf8(error.what()));
    }
    if (!alive || !alive->isVisible()) return;
    // A form that the lines leave open would hold the script up for ever.
    mHooks.fail(QStringLiteral("the form stays open: %1").arg(form.objectName()));
    alive->reject();
}

void Forms::perform(QDialog &form, const QString &line)
{
    const QString verb = line.section(u' ', 0, 0);
    const QString name = line.section(u' ', 1, 1);
    const QString rest = line.section(u' ', 2);
    if (verb == QLatin1String("get")) {
        const QWidget *control = findControl(form, name);
        mHooks.print(platform::variantToValue(contentOf(*control).read(control)).toJson());
    } else if (verb == QLatin1String("set")) {
        QWidget *control = findControl(form, name);
        QVariant value = platform::valueToVariant(platform::parseJson(rest));
        const QMetaProperty property = contentOf(*control);
        if (!property.isWritable() || !property.write(control, value))
            throw Error(base::errors::invalidCall, QStringLiteral("the control can't be set: %1").arg(name));
    } else if (verb == QLatin1String("press")) {
        auto *button = qobject_cast<QAbstractButton *>(findControl(form, name));
        if (!button) throw Error(base::errors::invalidCall, QStringLiteral("not a button: %1").arg(name));
        button->click();
    } else if (verb == QLatin1String("key")) {
        QWidget *focus = form.focusWidget();
        sendKeys(focus ? *focus : form, line.section(u' ', 1));
    } else if (verb == QLatin1String("screenshot")) {
        const QString file = mHooks.filePath(line.section(u' ', 1));
        if (!form.grab().save(file)) throw Error(base::errors::pathAccess, QStringLiteral("can't write %1").arg(file));
    } else {
        throw Error(base::errors::invalidCall, QStringLiteral("unknown line of a form: %1").arg(line));
    }
}

} // namespace scripting
