// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SettingsFile.h"

#include <QStringDecoder>
#include <QStringList>
#include <optional>

namespace support {

namespace {

constexpr char header[] = "# VellumKit settings 1";

QString quoted(const QString &text)
{
    QString result = QStringLiteral("\"");
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const bool pair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (c == u'\\' || c == u'"')
            result += QLatin1Char('\\') + QString(c);
        else if (c == u'\n')
            result += QLatin1String("\\n");
        else if (c == u'\r')
            result += QLatin1String("\\r");
        else if (c == u'\t')
            result += QLatin1String("\\t");
        else if (pair)
            result += text.mid(i++, 2);
        else if (c.unicode() < 0x20 || c.isSurrogate() || c.unicode() == 0xFEFF || c.unicode() == 0x85 ||
                 c.unicode() == 0x2028 || c.unicode() == 0x2029)
            result += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            result += c;
    }
    return result + QLatin1Char('"');
}

/// Reads a quoted string that begins at `position`, which then stands behind it.
std::optional<QString> readQuoted(const QString &line, qsizetype &position)
{
    if (position >= line.size() || line[position] != u'"') return {};
    QString result;
    for (qsizetype i = position + 1; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == u'"') {
            position = i + 1;
            return result;
        }
        if (c != u'\\') {
            result += c;
            continue;
        }
        if (++i >= line.size()) return {};
        switch (line[i].unicode()) {
        case 'n':
            result += u'\n';
            break;
        case 'r':
            result += u'\r';
            break;
        case 't':
            result += u'\t';
            break;
        case 'u': {
            bool valid = false;
            const uint code = line.mid(i + 1, 4).toUInt(&valid, 16);
            if (!valid || i + 4 >= line.size()) return {};
            result += QChar(ushort(code));
            i += 4;
            break;
        }
        default:
            result += line[i];
        }
    }
    return {};
}

} // namespace

QString SettingsFile::cleanPath(const QString &path)
{
    return path.split(QLatin1Char('\\'), Qt::SkipEmptyParts).join(QLatin1Char('\\'));
}

SettingsFile::Key *SettingsFile::findKey(const QString &path)
{
    const auto it = mKeys.find(folded(path));
    return it == mKeys.end() ? nullptr : &*it;
}

const SettingsFile::Key *SettingsFile::findKey(const QString &path) const
{
    return const_cast<SettingsFile *>(this)->findKey(path);
}

SettingsFile::Key &SettingsFile::makeKey(const QString &path)
{
    if (Key *key = findKey(path)) return *key;
    QString made;
    for (const QString &part : path.split(QLatin1Char('\\'))) {
        made = made.isEmpty() ? part : made + QLatin1Char('\\') + part;
        if (const Key *above = findKey(made))
            made = above->path;
        else
            mKeys.insert(folded(made), Key{made, {}});
    }
    return *findKey(path);
}

void SettingsFile::removeKey(const QString &path)
{
    const QString name = folded(path);
    mKeys.removeIf(
        [&name](const auto &entry) { return entry.key() == name || entry.key().startsWith(name + QLatin1Char('\\')); });
}

QByteArray SettingsFile::toBytes() const
{
    QString text = QLatin1String(header) + QLatin1Char('\n');
    for (const Key &key : mKeys) {
        text += QLatin1String("\n[") + quoted(key.path) + QLatin1String("]\n");
        for (const Value &value : key.values)
            text += (value.name.isEmpty() ? QStringLiteral("@") : quoted(value.name)) + QLatin1Char('=') +
                    quoted(value.text) + QLatin1Char('\n');
    }
    return text.toUtf8();
}

bool SettingsFile::fromBytes(const QByteArray &bytes)
{
    mKeys.clear();
    bool whole = bytes.isEmpty() || bytes.startsWith(header);
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    whole = whole && !decoder.hasError();
    QString path; // of the key whose values follow; empty before the first and behind a damaged one
    for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (line.startsWith(QLatin1Char('#'))) continue;
        qsizetype position = 0;
        if (line.startsWith(QLatin1Char('['))) {
            const auto read = readQuoted(line, ++position);
            path = read && line.mid(position) == QLatin1String("]") ? cleanPath(*read) : QString();
            if (path.isEmpty())
                whole = false;
            else
                makeKey(path);
            continue;
        }
        std::optional<QString> name;
        if (line.startsWith(QLatin1Char('@'))) {
            name = QString();
            position = 1;
        } else {
            name = readQuoted(line, position);
        }
        std::optional<QString> value;
        if (name && line.mid(position, 1) == QLatin1String("=")) value = readQuoted(line, ++position);
        if (value && position == line.size() && !path.isEmpty())
            makeKey(path).values.insert(folded(*name), Value{*name, *value});
        else
            whole = false;
    }
    return whole;
}

} // namespace support
