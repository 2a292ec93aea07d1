// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/MessageBox.h"

#include <QApplication>
#include <QMessageBox>

namespace platform {

namespace {

struct ButtonRow {
    MessageBox::Button button;
    const char *name;
    QMessageBox::StandardButton standard;
};

constexpr ButtonRow buttonRows[] = {
    {MessageBox::Button::Ok, "OK", QMessageBox::Ok},          {MessageBox::Button::Cancel, "Cancel", QMessageBox::Cancel},
    {MessageBox::Button::Yes, "Yes", QMessageBox::Yes},       {MessageBox::Button::No, "No", QMessageBox::No},
    {MessageBox::Button::Abort, "Abort", QMessageBox::Abort}, {MessageBox::Button::Retry, "Retry", QMessageBox::Retry},
    {MessageBox::Button::Ignore, "Ignore", QMessageBox::Ignore}, {MessageBox::Button::Save, "Save", QMessageBox::Save},
    {MessageBox::Button::Discard, "Discard", QMessageBox::Discard},
};

const ButtonRow &rowOf(MessageBox::Button button)
{
    return buttonRows[int(button)];
}

QMessageBox::Icon standardIcon(MessageBox::Icon icon)
{
    switch (icon) {
    case MessageBox::Icon::Information:
        return QMessageBox::Information;
    case MessageBox::Icon::Question:
        return QMessageBox::Question;
    case MessageBox::Icon::Warning:
        return QMessageBox::Warning;
    case MessageBox::Icon::Critical:
        break;
    }
    return QMessageBox::Critical;
}

MessageBox::Button showRealBox(const MessageBox::Request &request)
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) return request.escapeButton();
    QMessageBox::StandardButtons buttons;
    for (MessageBox::Button button : request.buttons) buttons |= rowOf(button).standard;
    QMessageBox box(standardIcon(request.icon), request.caption, request.text, buttons, request.parent);
    box.setTextFormat(Qt::PlainText);
    box.setEscapeButton(rowOf(request.escapeButton()).standard);
    const int answer = box.exec();
    for (MessageBox::Button button : request.buttons) {
        if (rowOf(button).standard == answer) return button;
    }
    return request.escapeButton();
}

MessageBox::Handler &handler()
{
    static MessageBox::Handler current;
    return current;
}

} // namespace

MessageBox::Button MessageBox::Request::escapeButton() const
{
    for (Button wanted : {Button::Cancel, Button::No}) {
        if (std::find(buttons.begin(), buttons.end(), wanted) != buttons.end()) return wanted;
    }
    return buttons.empty() ? Button::Ok : buttons.back();
}

MessageBox::Button MessageBox::show(Icon icon, const QString &caption, const QString &text,
                                    const std::vector<Button> &buttons, QWidget *parent)
{
    const Request request{icon, caption, text, buttons, parent};
    const Handler current = handler(); // the handler may put another in its place
    return current ? current(request) : showRealBox(request);
}

MessageBox::Handler MessageBox::setHandler(Handler newHandler)
{
    return std::exchange(handler(), std::move(newHandler));
}

QString MessageBox::name(Button button)
{
    return QLatin1String(rowOf(button).name);
}

QString MessageBox::name(Icon icon)
{
    switch (icon) {
    case Icon::Information:
        return QStringLiteral("information");
    case Icon::Question:
        return QStringLiteral("question");
    case Icon::Warning:
        return QStringLiteral("warning");
    case Icon::Critical:
        break;
    }
    return QStringLiteral("critical");
}

} // namespace platform
