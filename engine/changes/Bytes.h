// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace changes {

/// Writes the pieces of a record: numbers in groups of seven bits, the lowest first; strings with their length, one byte a
/// unit where all units fit one, else two.
class Writer
{
public:
    void byte(uint8_t value) { mBytes.append(char(value)); }
    void number(uint64_t value)
    {
        while (value >= 0x80) {
            byte(uint8_t(value) | 0x80);
            value >>= 7;
        }
        byte(uint8_t(value));
    }
    void string(QStringView text)
    {
        bool narrow = true;
        for (const QChar c : text) narrow = narrow && c.unicode() < 0x100;
        number(uint64_t(text.size()) * 2 + (narrow ? 0 : 1));
        if (narrow)
            for (const QChar c : text) byte(uint8_t(c.unicode()));
        else
            for (const QChar c : text) {
                byte(uint8_t(c.unicode()));
                byte(uint8_t(c.unicode() >> 8));
            }
    }
    void append(const QByteArray &bytes) { mBytes.append(bytes); }
    qsizetype size() const { return mBytes.size(); }
    const QByteArray &bytes() const { return mBytes; }
    QByteArray take() { return std::exchange(mBytes, {}); }

private:
    QByteArray mBytes;
};

/// Reads them back. Past the end, or on what can't be, everything reads as nothing and `failed` holds: a damaged record
/// does no harm.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes, qsizetype at = 0) : mBytes(bytes), mAt(at) {}
    uint8_t byte()
    {
        if (mAt >= mBytes.size()) {
            mFailed = true;
            return 0;
        }
        return uint8_t(mBytes[mAt++]);
    }
    uint64_t number()
    {
        uint64_t value = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            const uint8_t b = byte();
            value |= uint64_t(b & 0x7f) << shift;
            if (!(b & 0x80)) return value;
        }
        mFailed = true;
        return 0;
    }
    uint32_t number32()
    {
        const uint64_t value = number();
        if (value > 0xffffffffu) mFailed = true;
        return mFailed ? 0 : uint32_t(value);
    }
    QString string()
    {
        const uint64_t head = number();
        const bool wide = head & 1;
        const uint64_t length = head >> 1;
        if (mFailed || length * (wide ? 2 : 1) > uint64_t(mBytes.size() - mAt)) {
            mFailed = true;
            return {};
        }
        QString text(qsizetype(length), Qt::Uninitialized);
        for (QChar &c : text) {
            const uint8_t low = uint8_t(mBytes[mAt++]);
            c = QChar(wide ? char16_t(low | (uint8_t(mBytes[mAt++]) << 8)) : char16_t(low));
        }
        return text;
    }
    QByteArray bytes(uint64_t count)
    {
        if (mFailed || count > uint64_t(mBytes.size() - mAt)) {
            mFailed = true;
            return {};
        }
        mAt += qsizetype(count);
        return mBytes.mid(mAt - qsizetype(count), qsizetype(count));
    }
    bool atEnd() const { return mFailed || mAt >= mBytes.size(); }
    bool failed() const { return mFailed; }
    void fail() { mFailed = true; }
    qsizetype position() const { return mAt; }

private:
    const QByteArray &mBytes;
    qsizetype mAt;
    bool mFailed = false;
};

} // namespace changes
