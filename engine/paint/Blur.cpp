// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/paint/Blur.h"

#include <cmath>
#include <vector>

namespace paint {

namespace {

// The mean over `size` pixels, of which `before` lie in front.
void boxPass(uchar *first, qsizetype stride, int count, int size, int before, std::vector<uchar> &line)
{
    for (int i = 0; i < count; ++i) line[std::size_t(i)] = first[i * stride];
    const int after = size - 1 - before;
    int sum = 0;
    for (int i = 0; i <= std::min(after, count - 1); ++i) sum += line[std::size_t(i)];
    for (int i = 0; i < count; ++i) {
        first[i * stride] = uchar((sum + size / 2) / size);
        if (i + after + 1 < count) sum += line[std::size_t(i + after + 1)];
        if (i - before >= 0) sum -= line[std::size_t(i - before)];
    }
}

} // namespace

// Three means in a row come within some per cent of a Gaussian; the width is the one that filter effects name.
void blurAlpha(QImage &mask, double deviation)
{
    const int size = int(std::floor(deviation * 3 * std::sqrt(2 * M_PI) / 4 + 0.5));
    if (size < 2 || mask.isNull()) return;
    std::vector<uchar> line(std::size_t(std::max(mask.width(), mask.height())));
    const int last = size % 2 ? size : size + 1;
    const struct { int size, before; } passes[] = {{size, size / 2}, {size, size % 2 ? size / 2 : size / 2 - 1}, {last, last / 2}};
    for (const auto &pass : passes) {
        for (int y = 0; y < mask.height(); ++y) boxPass(mask.scanLine(y), 1, mask.width(), pass.size, pass.before, line);
        for (int x = 0; x < mask.width(); ++x) boxPass(mask.bits() + x, mask.bytesPerLine(), mask.height(), pass.size, pass.before, line);
    }
}

QImage colored(const QImage &mask, QRgb color)
{
    QImage image(mask.size(), QImage::Format_ARGB32_Premultiplied);
    QRgb table[256];
    for (int i = 0; i < 256; ++i) table[i] = qPremultiply(qRgba(qRed(color), qGreen(color), qBlue(color), qAlpha(color) * i / 255));
    for (int y = 0; y < mask.height(); ++y) {
        const uchar *from = mask.constScanLine(y);
        auto *to = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < mask.width(); ++x) to[x] = table[from[x]];
    }
    return image;
}

} // namespace paint
