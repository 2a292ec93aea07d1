// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

namespace paint {

/// Blurs a picture of 8 bits of alpha in place, near enough a Gaussian of that standard deviation, in its pixels.
void blurAlpha(QImage &mask, double deviation);
/// The mask in a colour, premultiplied.
QImage colored(const QImage &mask, QRgb color);

} // namespace paint
