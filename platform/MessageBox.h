// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>
#include <vector>

class QWidget;

namespace platform {

/// The one door for message boxes: a box is shown by a handler that tests and the script mode replace.
class MessageBox
{
public:
    enum class Icon { None, Information, Warning, Question, Error };
    enum class Button { Ok, Cancel, Yes, No, Retry };
    struct Request {
        Icon icon;
        QString caption;
        QString text;
        std::vector<Button> buttons;
    };
    using Handler = std::function<Button(QWidget *, const Request &)>;

    /// Shows the box modally and gives the button pressed. Closing it is its escape button: Cancel, else No, else the
    /// only one.
    static Button show(QWidget *parent, Icon icon, const QString &caption, const QString &text,
                       const std::vector<Button> &buttons);
    /// Gives the handler before; an empty one brings the real box back.
    static Handler setHandler(Handler handler);
    static Button escapeButton(const std::vector<Button> &buttons);
    static QString buttonText(Button button);
    static QString iconText(Icon icon);
};

} // namespace platform
