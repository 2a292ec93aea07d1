// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/MessageBox.h"

#include <QMessageBox>

namespace platform {

namespace {

MessageBox::Handler &handler()
{
    static MessageBox::Handler handler;
    return handler;
}

QMessageBox::StandardButton standard(MessageBox::Button button)
{
    switch (button) {
    case MessageBox::Button::Ok: return QMessageBox::Ok;
    case MessageBox::Button::Cancel: return QMessageBox::Cancel;
    case MessageBox::Button::Yes: return QMessageBox::Yes;
    case MessageBox::Button::No: return QMessageBox::No;
    case MessageBox::Button::Retry: return QMessageBox::Retry;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon picture(MessageBox::Icon icon)
{
    switch (icon) {
    case MessageBox::Icon::Information: return QMessageBox::Information;
    case MessageBox::Icon::Warning: return QMessageBox::Warning;
    case MessageBox::Icon::Question: return QMessageBox::Question;
    case MessageBox::Icon::Error: return QMessageBox::Critical;
    case MessageBox::Icon::None: break;
    }
    return QMessageBox::NoIcon;
}

MessageBox::Button ask(QWidget *parent, const MessageBox::Request &request)
{
    QMessageBox box(picture(request.icon), request.caption, request.text, QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    for (const MessageBox::Button button : request.buttons) box.addButton(standard(button));
    box.setEscapeButton(standard(MessageBox::escapeButton(request.buttons)));
    const int answer = box.exec();
    for (const MessageBox::Button button : request.buttons)
        if (standard(button) == answer) return button;
    return MessageBox::escapeButton(request.buttons);
}

} // namespace

MessageBox::Button MessageBox::show(QWidget *parent, Icon icon, const QString &caption, const QString &text,
                                    const std::vector<Button> &buttons)
{
    const Request request{icon, caption, text, buttons};
    return handler() ? handler()(parent, request) : ask(parent, request);
}

MessageBox::Handler MessageBox::setHandler(Handler newHandler)
{
    return std::exchange(handler(), std::move(newHandler));
}

MessageBox::Button MessageBox::escapeButton(const std::vector<Button> &buttons)
{
    for (const Button wanted : {Button::Cancel, Button::No})
        for (const Button button : buttons)
            if (button == wanted) return button;
    return buttons.empty() ? Button::Ok : buttons.front();
}

QString MessageBox::buttonText(Button button)
{
    switch (button) {
    case Button::Ok: return QStringLiteral("OK");
    case Button::Cancel: return QStringLiteral("Cancel");
    case Button::Yes: return QStringLiteral("Yes");
    case Button::No: return QStringLiteral("No");
    case Button::Retry: return QStringLiteral("Retry");
    }
    return {};
}

QString MessageBox::iconText(Icon icon)
{
    switch (icon) {
    case Icon::Information: return QStringLiteral("information");
    case Icon::Warning: return QStringLiteral("warning");
    case Icon::Question: return QStringLiteral("question");
    case Icon::Error: return QStringLiteral("error");
    case Icon::None: break;
    }
    return QStringLiteral("none");
}

} // namespace platform
