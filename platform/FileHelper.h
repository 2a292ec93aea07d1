// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "platform/FileText.h"

#include <QString>

namespace platform {

/// Files as the control and its hosts read and write them. Names may have slashes of both kinds, may be "file:" URLs,
/// and may be what cutting "file:///" from such a URL left ("home\me\page.html" is then "/home/me/page.html").
///
/// A file is replaced as a whole or not at all: the new text is written beside it and takes its place when it is
/// complete, with the old one's permissions. A symbolic link stays, what it points to is replaced. Whatever goes wrong
/// raises `base::Error` with a text for the user, and leaves the old file as it was.
class VELLUMKIT_EXPORT FileHelper
{
public:
    /// The file's text and what to give back when writing it. Raises for a file that isn't there or can't be read.
    static DecodedText readText(const QString &name);
    /// Creates or replaces the file. See `encodeFileText` for the format in which it really was written, and for the
    /// message that the user should see.
    static EncodedText writeText(const QString &name, const QString &text, const FileFormat &format = {});
    /// Adds a text to a file's end, in the file's own format; creates it if need be.
    static EncodedText appendText(const QString &name, const QString &text);

    static QByteArray readBytes(const QString &name);
    static void writeBytes(const QString &name, const QByteArray &bytes);

    /// Is there a file (no folder) of that name?
    static bool exists(const QString &name);
    /// Is there a folder of that name? "" is none.
    static bool isFolder(const QString &name);
    /// Is there a file that can't be written?
    static bool isReadOnly(const QString &name);

    /// The name as this system has it: absolute, with slashes.
    static QString localName(const QString &name);
    /// The folder part, absolute, with its slash at the end: "/home/me/" of "/home/me/page.html" and of "/home/me/".
    static QString folderPart(const QString &name);
    /// The name without its folder.
    static QString filePart(const QString &name);
    /// The name seen from a folder, with slashes: "../pictures/a.png".
    static QString relativeName(const QString &folder, const QString &name);
};

} // namespace platform
