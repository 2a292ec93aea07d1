// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Color.h"

#include <QHash>
#include <cmath>

namespace css {

namespace {

struct Named
{
    const char *name;
    QRgb rgb;
};

// What the system paints with: fixed, so that a page looks alike wherever it is edited.
const Named systemColors[] = {
    {"rebeccapurple", 0x663399},
    {"activeborder", 0x000000},
    {"activecaption", 0xffffff},
    {"activetext", 0xff0000},
    {"appworkspace", 0xffffff},
    {"background", 0xffffff},
    {"buttonborder", 0x000000},
    {"buttonface", 0xefefef},
    {"buttonhighlight", 0xefefef},
    {"buttonshadow", 0xefefef},
    {"buttontext", 0x000000},
    {"canvas", 0xffffff},
    {"canvastext", 0x000000},
    {"captiontext", 0x000000},
    {"field", 0xffffff},
    {"fieldtext", 0x000000},
    {"graytext", 0x808080},
    {"highlight", 0x0078d7},
    {"highlighttext", 0xffffff},
    {"inactiveborder", 0x000000},
    {"inactivecaption", 0xffffff},
    {"inactivecaptiontext", 0x808080},
    {"infobackground", 0xffffff},
    {"infotext", 0x000000},
    {"linktext", 0x0000ee},
    {"mark", 0xffff00},
    {"marktext", 0x000000},
    {"menu", 0xffffff},
    {"menutext", 0x000000},
    {"scrollbar", 0xffffff},
    {"threeddarkshadow", 0x000000},
    {"threedface", 0xefefef},
    {"threedhighlight", 0x000000},
    {"threedlightshadow", 0x000000},
    {"threedshadow", 0x000000},
    {"visitedtext", 0x551a8b},
    {"window", 0xffffff},
    {"windowframe", 0x000000},
    {"windowtext", 0x000000},
};

int hexDigit(QChar c)
{
    const ushort u = c.unicode();
    if (u >= '0' && u <= '9') return u - '0';
    if (u >= 'a' && u <= 'f') return u - 'a' + 10;
    if (u >= 'A' && u <= 'F') return u - 'A' + 10;
    return -1;
}

} // namespace

std::optional<QRgb> namedColor(const QString &name)
{
    static const QHash<QString, QRgb> *const system = [] {
        auto *table = new QHash<QString, QRgb>;
        for (const Named &color : systemColors)
            table->insert(QString::fromLatin1(color.name), 0xff000000u | color.rgb);
        table->insert(QStringLiteral("transparent"), 0);
        return table;
    }();
    for (const QChar c : name)
        if (!(c >= u'a' && c <= u'z') && !(c >= u'A' && c <= u'Z')) return {};
    const QString lower = name.toLower();
    if (const auto found = system->constFind(lower); found != system->constEnd()) return *found;
    // Qt knows the names that SVG and CSS share.
    QColor color;
    color.setNamedColor(lower);
    if (lower.isEmpty() || !color.isValid()) return {};
    return color.rgba();
}

std::optional<QRgb> hexColor(const QString &digits)
{
    int values[8];
    const qsizetype size = digits.size();
    if (size != 3 && size != 4 && size != 6 && size != 8) return {};
    for (qsizetype i = 0; i < size; ++i)
        if ((values[i] = hexDigit(digits[i])) < 0) return {};
    if (size <= 4) return qRgba(values[0] * 17, values[1] * 17, values[2] * 17, size == 4 ? values[3] * 17 : 255);
    const auto pair = [&values](int i) { return values[i] * 16 + values[i + 1]; };
    return qRgba(pair(0), pair(2), pair(4), size == 8 ? pair(6) : 255);
}

QRgb hslColor(double hue, double saturation, double lightness, double alpha)
{
    hue = std::fmod(hue, 360.0);
    if (hue < 0) hue += 360;
    const auto channel = [&](double n) {
        const double k = std::fmod(n + hue / 30, 12.0);
        const double a = saturation * std::min(lightness, 1 - lightness);
        const double value = lightness - a * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
        return int(std::lround(std::clamp(value, 0.0, 1.0) * 255));
    };
    return qRgba(channel(0), channel(8), channel(4), int(std::lround(std::clamp(alpha, 0.0, 1.0) * 255)));
}

std::optional<QRgb> legacyColor(const QString &text)
{
    QString value = text.trimmed();
    if (value.isEmpty() || value.compare(QLatin1String("transparent"), Qt::CaseInsensitive) == 0) return {};
    if (const auto named = namedColor(value)) return named;
    if (value.size() == 4 && value[0] == u'#')
        if (const auto color = hexColor(value.mid(1))) return color;
    QString digits;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i].isHighSurrogate()) {
            digits += QLatin1String("00");
            ++i;
        } else {
            digits += value[i];
        }
    }
    digits = digits.left(128);
    if (digits.startsWith(u'#')) digits.remove(0, 1);
    for (QChar &c : digits)
        if (hexDigit(c) < 0) c = u'0';
    while (digits.isEmpty() || digits.size() % 3)
        digits += u'0';
    qsizetype length = digits.size() / 3;
    QString parts[3] = {digits.left(length), digits.mid(length, length), digits.mid(2 * length)};
    if (length > 8) {
        for (QString &part : parts)
            part = part.right(8);
        length = 8;
    }
    while (length > 2 && parts[0][0] == u'0' && parts[1][0] == u'0' && parts[2][0] == u'0') {
        for (QString &part : parts)
            part.remove(0, 1);
        --length;
    }
    return qRgb(parts[0].left(2).toInt(nullptr, 16), parts[1].left(2).toInt(nullptr, 16),
                parts[2].left(2).toInt(nullptr, 16));
}

QString colorText(QRgb color)
{
    if (qAlpha(color) == 255) return QStringLiteral("#%1").arg(color & 0xffffff, 6, 16, QLatin1Char('0'));
    return QStringLiteral("rgba(%1, %2, %3, %4)")
        .arg(qRed(color))
        .arg(qGreen(color))
        .arg(qBlue(color))
        .arg(std::round(qAlpha(color) / 2.55) / 100);
}

} // namespace css
