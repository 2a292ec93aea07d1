// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/OleColor.h"

#include <iterator>

namespace platform {

QColor oleColor(uint color, const QPalette &palette)
{
    if (!(color & 0x80000000u)) return QColor(int(color & 0xff), int((color >> 8) & 0xff), int((color >> 16) & 0xff));
    // By the system's numbers from 0: scroll bar, desktop, captions, menu, window, frame, texts, borders, work space,
    // highlight, then the parts of a button and of a tip.
    static constexpr QPalette::ColorRole roles[] = {
        QPalette::Midlight,
        QPalette::Mid,
        QPalette::Highlight,
        QPalette::Button,
        QPalette::Window,
        QPalette::Base,
        QPalette::Dark,
        QPalette::WindowText,
        QPalette::Text,
        QPalette::HighlightedText,
        QPalette::Button,
        QPalette::Button,
        QPalette::Mid,
        QPalette::Highlight,
        QPalette::HighlightedText,
        QPalette::Button,
        QPalette::Dark,
        QPalette::PlaceholderText,
        QPalette::ButtonText,
        QPalette::ButtonText,
        QPalette::Light,
        QPalette::Shadow,
        QPalette::Midlight,
        QPalette::ToolTipText,
        QPalette::ToolTipBase,
    };
    const uint index = color & 0xff;
    return palette.color(index < std::size(roles) ? roles[index] : QPalette::Button);
}

} // namespace platform
