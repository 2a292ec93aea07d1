// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Character encodings of the web: their labels, and text from bytes and back.
namespace platform::encoding {

/// Canonical name of the encoding that a label in a page means ("latin1" and "iso-8859-1" mean "windows-1252"), or
/// nothing for an unknown label. Blanks around and case don't matter.
std::optional<QString> byLabel(const QString &label);

struct Decoded
{
    QString text;
    bool lossy = false; // bytes that mean nothing became U+FFFD
};
/// `name` is a canonical name. A byte order mark is a character like any other.
Decoded decode(const QByteArray &bytes, const QString &name);

/// The bytes of a text, or nothing if the encoding can't hold all of it: decoding them gives the same text.
std::optional<QByteArray> encode(const QString &text, const QString &name);

} // namespace platform::encoding
