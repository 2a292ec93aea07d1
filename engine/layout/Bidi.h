// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

namespace layout {

/// A formatting character of the bidirectional algorithm that an element's style stands for: in front of the text's unit
/// `at`. The text itself doesn't hold it, so that it counts nowhere else.
struct BidiMark {
    uint32_t at = 0;
    char16_t mark = 0;
};

namespace bidi {
inline constexpr char16_t lre = 0x202A, rle = 0x202B, pdf = 0x202C, lro = 0x202D, rlo = 0x202E;
inline constexpr char16_t lri = 0x2066, rli = 0x2067, fsi = 0x2068, pdi = 0x2069;
} // namespace bidi

/// Levels of the Unicode bidirectional algorithm (UAX 9, P to I), one for each UTF-16 unit; empty where all are 0. Line
/// feeds and paragraph separators end paragraphs. `marks` are in order of `at`.
std::vector<uint8_t> bidiLevels(const QString &text, bool rightToLeft, const std::vector<BidiMark> &marks = {});

} // namespace layout
