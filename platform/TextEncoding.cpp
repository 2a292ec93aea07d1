// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TextEncoding.h"

#include <QHash>
#include <QStringDecoder>
#include <QStringEncoder>
#include <QStringList>

namespace platform::encoding {

namespace {

struct Labels
{
    const char *name;
    const char *labels; // parted by blanks; the name itself counts too
};

constexpr Labels allLabels[] = {
    {"UTF-8", "unicode-1-1-utf-8 unicode11utf8 unicode20utf8 utf8 x-unicode20utf8"},
    {"IBM866", "866 cp866 csibm866"},
    {"ISO-8859-2", "csisolatin2 iso-ir-101 iso8859-2 iso88592 iso_8859-2 iso_8859-2:1987 l2 latin2"},
    {"ISO-8859-3", "csisolatin3 iso-ir-109 iso8859-3 iso88593 iso_8859-3 iso_8859-3:1988 l3 latin3"},
    {"ISO-8859-4", "csisolatin4 iso-ir-110 iso8859-4 iso88594 iso_8859-4 iso_8859-4:1988 l4 latin4"},
    {"ISO-8859-5", "csisolatincyrillic cyrillic iso-ir-144 iso8859-5 iso88595 iso_8859-5 iso_8859-5:1988"},
    {"ISO-8859-6", "arabic asmo-708 csiso88596e csiso88596i csisolatinarabic ecma-114 iso-8859-6-e iso-8859-6-i "
                   "iso-ir-127 iso8859-6 iso88596 iso_8859-6 iso_8859-6:1987"},
    {"ISO-8859-7", "csisolatingreek ecma-118 elot_928 greek greek8 iso-ir-126 iso8859-7 iso88597 iso_8859-7 "
                   "iso_8859-7:1987 sun_eu_greek"},
    {"ISO-8859-8", "csiso88598e csisolatinhebrew hebrew iso-8859-8-e iso-ir-138 iso8859-8 iso88598 iso_8859-8 "
                   "iso_8859-8:1988 visual csiso88598i iso-8859-8-i logical"},
    {"ISO-8859-10", "csisolatin6 iso-ir-157 iso8859-10 iso885910 l6 latin6"},
    {"ISO-8859-13", "iso8859-13 iso885913"},
    {"ISO-8859-14", "iso8859-14 iso885914"},
    {"ISO-8859-15", "csisolatin9 iso8859-15 iso885915 iso_8859-15 l9"},
    {"ISO-8859-16", ""},
    {"KOI8-R", "cskoi8r koi koi8 koi8_r"},
    {"KOI8-U", "koi8-ru"},
    {"macintosh", "csmacintosh mac x-mac-roman"},
    {"windows-874", "dos-874 iso-8859-11 iso8859-11 iso885911 tis-620"},
    {"windows-1250", "cp1250 x-cp1250"},
    {"windows-1251", "cp1251 x-cp1251"},
    {"windows-1252", "ansi_x3.4-1968 ascii cp1252 cp819 csisolatin1 ibm819 iso-8859-1 iso-ir-100 iso8859-1 iso88591 "
                     "iso_8859-1 iso_8859-1:1987 l1 latin1 us-ascii x-cp1252 x-user-defined"},
    {"windows-1253", "cp1253 x-cp1253"},
    {"windows-1254", "cp1254 csisolatin5 iso-8859-9 iso-ir-148 iso8859-9 iso88599 iso_8859-9 iso_8859-9:1989 l5 latin5 "
                     "x-cp1254"},
    {"windows-1255", "cp1255 x-cp1255"},
    {"windows-1256", "cp1256 x-cp1256"},
    {"windows-1257", "cp1257 x-cp1257"},
    {"windows-1258", "cp1258 x-cp1258"},
    {"x-mac-cyrillic", "x-mac-ukrainian"},
    {"GBK", "chinese csgb2312 csiso58gb231280 gb2312 gb_2312 gb_2312-80 iso-ir-58 x-gbk"},
    {"gb18030", ""},
    {"Big5", "big5-hkscs cn-big5 csbig5 x-x-big5"},
    {"EUC-JP", "cseucpkdfmtjapanese x-euc-jp"},
    {"ISO-2022-JP", "csiso2022jp"},
    {"Shift_JIS", "csshiftjis ms932 ms_kanji shift-jis sjis windows-31j x-sjis"},
    {"EUC-KR", "cseuckr csksc56011987 iso-ir-149 korean ks_c_5601-1987 ks_c_5601-1989 ksc5601 ksc_5601 windows-949"},
    {"UTF-16LE", "csunicode iso-10646-ucs-2 ucs-2 unicode unicodefeff utf-16"},
    {"UTF-16BE", "unicodefffe"},
};

/// The upper part of ISO-8859-16, which the converters at hand don't have.
constexpr ushort latin10[] = {
    0x00A0, 0x0104, 0x0105, 0x0141, 0x20AC, 0x201E, 0x0160, 0x00A7, 0x0161, 0x00A9, 0x0218, 0x00AB, 0x0179, 0x00AD,
    0x017A, 0x017B, 0x00B0, 0x00B1, 0x010C, 0x0142, 0x017D, 0x201D, 0x00B6, 0x00B7, 0x017E, 0x010D, 0x0219, 0x00BB,
    0x0152, 0x0153, 0x0178, 0x017C, 0x00C0, 0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0106, 0x00C6, 0x00C7, 0x00C8, 0x00C9,
    0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF, 0x0110, 0x0143, 0x00D2, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x015A,
    0x0170, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x0118, 0x021A, 0x00DF, 0x00E0, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x0107,
    0x00E6, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF, 0x0111, 0x0144, 0x00F2, 0x00F3,
    0x00F4, 0x0151, 0x00F6, 0x015B, 0x0171, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x0119, 0x021B, 0x00FF,
};

const QHash<QString, QString> &labelTable()
{
    static const QHash<QString, QString> table = [] {
        QHash<QString, QString> made;
        for (const Labels &entry : allLabels) {
            const QString name = QString::fromLatin1(entry.name);
            made.insert(name.toLower(), name);
            for (const QString &label : QString::fromLatin1(entry.labels).split(QLatin1Char(' '), Qt::SkipEmptyParts))
                made.insert(label, name);
        }
        return made;
    }();
    return table;
}

/// The converter's name for an encoding: pages in Big5 use its Hong Kong extension, Korean ones that of their system.
QByteArray converterName(const QString &name)
{
    if (name == QLatin1String("Big5")) return "Big5-HKSCS";
    if (name == QLatin1String("EUC-KR")) return "windows-949";
    return name.toLatin1();
}

bool isLatin10(const QString &name)
{
    return name == QLatin1String("ISO-8859-16");
}

QString decodeLatin10(const QByteArray &bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (const char byte : bytes)
        text += QChar(uchar(byte) < 0xA0 ? ushort(uchar(byte)) : latin10[uchar(byte) - 0xA0]);
    return text;
}

std::optional<QByteArray> encodeLatin10(const QString &text)
{
    QByteArray bytes;
    for (const QChar c : text) {
        const auto *const found = std::find(std::begin(latin10), std::end(latin10), c.unicode());
        if (c.unicode() < 0xA0)
            bytes += char(c.unicode());
        else if (found != std::end(latin10))
            bytes += char(0xA0 + (found - std::begin(latin10)));
        else
            return {};
    }
    return bytes;
}

bool isUnicode(const QString &name)
{
    return name.startsWith(QLatin1String("UTF-"));
}

} // namespace

std::optional<QString> byLabel(const QString &label)
{
    const auto it = labelTable().constFind(label.trimmed().toLower());
    if (it == labelTable().constEnd()) return {};
    return *it;
}

Decoded decode(const QByteArray &bytes, const QString &name)
{
    if (isLatin10(name)) return {decodeLatin10(bytes), false};
    QStringDecoder decoder(converterName(name).constData(),
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    if (!decoder.isValid()) return {QString::fromLatin1(bytes), true};
    if (isUnicode(name)) {
        QString text = decoder(bytes);
        // The half unit at the end is replaced, but is no error to the converter.
        const bool cut = name != QLatin1String("UTF-8") && bytes.size() % 2 != 0;
        return {text, decoder.hasError() || cut};
    }
    // A lead byte at the end would be dropped without a word; a line feed behind it brings it out.
    QString text = decoder(bytes + '\n');
    if (text.endsWith(QLatin1Char('\n'))) text.chop(1);
    // For a single byte that means nothing the converter puts in a control character.
    constexpr char substitute = '\x1A';
    if (text.count(QLatin1Char(substitute)) > bytes.count(substitute))
        text.replace(QLatin1Char(substitute), QChar(QChar::ReplacementCharacter));
    return {text, text.contains(QChar(QChar::ReplacementCharacter))};
}

std::optional<QByteArray> encode(const QString &text, const QString &name)
{
    if (isLatin10(name)) return encodeLatin10(text);
    QStringEncoder encoder(converterName(name).constData());
    if (!encoder.isValid()) return {};
    QByteArray bytes = encoder(text);
    if (isUnicode(name)) return bytes;
    // This one has states: a text ends in that of plain letters.
    if (name == QLatin1String("ISO-2022-JP")) {
        const qsizetype escape = bytes.lastIndexOf('\x1b');
        if (escape >= 0 && bytes.mid(escape, 3) != "\x1b(B") bytes += "\x1b(B";
    }
    // Converters put something in place of what they can't hold, and some fold look-alikes; the way back shows it.
    if (decode(bytes, name).text != text) return {};
    return bytes;
}

} // namespace platform::encoding
