// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// The text of an HTML file and the bytes that stand for it. What a file has beside its text (encoding, byte order
/// mark, line ends) is kept in a `FileFormat` while the text is edited, and given back on writing.
namespace platform {

enum class LineEnds { Lf, CrLf, Cr };

struct FileFormat
{
    /// Canonical name: "UTF-8", "UTF-16LE", "windows-1252", "Shift_JIS" …; "" for a text that has never been a file's: it
    /// gets the one that it declares, or UTF-8.
    QString encoding;
    bool byteOrderMark = false;
    /// Those of the file; of a file that mixes them, the ones that it has most of.
    LineEnds lineEnds = LineEnds::Lf;
    /// The file mixed its line ends. A text that still does is then written as it stands; one that has been made
    /// uniform meanwhile (the editing surface writes CR LF throughout) gets `lineEnds`.
    bool mixedLineEnds = false;
    bool operator==(const FileFormat &) const = default;
};

struct DecodedText
{
    /// With the line ends that the file has. NUL and lone surrogates are U+FFFD.
    QString text;
    FileFormat format;
    /// Something in the bytes had no meaning in the encoding, and became U+FFFD.
    bool lossy = false;
};
/// The encoding is told by a byte order mark, else by a `meta` within the first 1024 bytes, else it is UTF-8 if the
/// bytes are valid in it, else windows-1252.
DecodedText decodeFileText(const QByteArray &bytes);

struct EncodedText
{
    QByteArray bytes;
    /// As written: differs from the one asked for where that can't hold the text, or where the text declares another.
    FileFormat format;
    /// For the user, "" when there is nothing to say.
    QString message;
    /// How many characters were written as references.
    int references = 0;
};
/// A character that the encoding lacks is written as `&#N;`. Where no reference works (scripts, styles, comments,
/// names) the file becomes UTF-8, and its declaration with it. A text that declares another encoding than the format's
/// is written in the declared one: what is written is read back as it was.
EncodedText encodeFileText(const QString &text, const FileFormat &format);

/// Where a text declares its encoding.
struct CharsetDeclaration
{
    qsizetype position = 0, length = 0; // of the label
    QString label;
};
/// The first declaration by a `meta` that begins before `limit`.
std::optional<CharsetDeclaration> findCharsetDeclaration(const QString &html, qsizetype limit);

} // namespace platform
