// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>
#include <optional>

namespace css {

/// A named or system colour, any case; nothing for another word. `transparent` is one, `currentcolor` isn't.
std::optional<QRgb> namedColor(const QString &name);
/// The digits of "#rgb", "#rgba", "#rrggbb", "#rrggbbaa", without the mark.
std::optional<QRgb> hexColor(const QString &digits);
QRgb hslColor(double hue, double saturation, double lightness, double alpha); ///< degrees, then 0 .. 1
/// A colour as attributes take it: names, "#" notations, and whatever else pages wrote, digit by digit (HTML standard,
/// "rules for parsing a legacy colour value"). Nothing for "" and "transparent".
std::optional<QRgb> legacyColor(const QString &text);
/// "#rrggbb", or "rgba(...)" where it isn't opaque.
QString colorText(QRgb color);

} // namespace css
