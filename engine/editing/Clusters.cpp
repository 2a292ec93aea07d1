// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/editing/Clusters.h"

#include <QChar>

namespace editing {

namespace {

constexpr char32_t joiner = 0x200D, keyCap = 0x20E3;

/// The code point that ends in front of `end`, which is moved to its start.
char32_t previousCodePoint(QStringView text, qsizetype &end)
{
    const QChar last = text[--end];
    if (!last.isLowSurrogate() || end == 0 || !text[end - 1].isHighSurrogate()) return last.unicode();
    --end;
    return QChar::surrogateToUcs4(text[end], last);
}

bool isVariationSelector(char32_t c)
{
    return (c >= 0xFE00 && c <= 0xFE0F) || (c >= 0xE0100 && c <= 0xE01EF) || (c >= 0x180B && c <= 0x180D);
}

/// Symbols of which pictures are made: some few are no symbols by their category.
bool isPicture(char32_t c)
{
    switch (c) {
    case 0x203C:
    case 0x2049:
    case 0x3030:
    case 0x303D:
        return true;
    default:
        break;
    }
    const bool skin = c >= 0x1F3FB && c <= 0x1F3FF, tag = c >= 0xE0020 && c <= 0xE007F;
    const bool mathematical =
        (c >= 0x2190 && c <= 0x21FF) || (c >= 0x25A0 && c <= 0x25FF) || c == 0x2640 || c == 0x2642;
    return skin || tag || mathematical || QChar::category(c) == QChar::Symbol_Other;
}

bool isPictureAsAWhole(QStringView cluster)
{
    for (qsizetype end = cluster.size(); end > 0;) {
        const char32_t c = previousCodePoint(cluster, end);
        if (!isPicture(c) && c != joiner && !isVariationSelector(c)) return false;
    }
    return true;
}

} // namespace

qsizetype unitsForBackspace(QStringView cluster)
{
    if (cluster.isEmpty() || isPictureAsAWhole(cluster)) return cluster.size();
    qsizetype end = cluster.size();
    const char32_t last = previousCodePoint(cluster, end);
    if (last == keyCap) return cluster.size();
    if (isVariationSelector(last) && end > 0) previousCodePoint(cluster, end);
    return cluster.size() - end;
}

} // namespace editing
