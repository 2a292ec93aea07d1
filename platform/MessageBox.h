// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"

#include <QString>
#include <functional>
#include <vector>

class QWidget;

namespace platform {

/// The one way in which the control shows a message box. A host may use it too: whoever puts a handler in its place then
/// hears of the host's boxes as well.
class VELLUMKIT_EXPORT MessageBox
{
public:
    enum class Icon { Information, Question, Warning, Critical };
    enum class Button { Ok, Cancel, Yes, No, Abort, Retry, Ignore, Save, Discard };

    struct VELLUMKIT_EXPORT Request {
        Icon icon = Icon::Information;
        QString caption;
        QString text;
        std::vector<Button> buttons{Button::Ok};
        QWidget *parent = nullptr;

        /// What Escape and the window's close button answer: Cancel, else No, else the only or the last button.
        Button escapeButton() const;
    };

    /// Shows the box and waits for the answer. Without an application that has windows it answers its escape button.
    static Button show(Icon icon, const QString &caption, const QString &text,
                       const std::vector<Button> &buttons = {Button::Ok}, QWidget *parent = nullptr);

    using Handler = std::function<Button(const Request &)>;
    /// Puts another in place of the real box; an empty one brings it back. Gives the one before.
    static Handler setHandler(Handler handler);

    /// "OK", "Cancel", "Yes" …, and "warning", "question" …
    static QString name(Button button);
    static QString name(Icon icon);
};

} // namespace platform
