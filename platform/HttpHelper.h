// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace platform {

/// Fetches documents by HTTP.
class HttpHelper
{
public:
    static constexpr int timeoutMs = 30000;

    /// The text behind an "http:" or "https:" URL, redirections followed. Waits at most `timeout` milliseconds, during
    /// which timers and posted events run, but no input of the user. The encoding is the one that the server tells,
    /// else what the document itself does (as in a file). Raises `base::Error` for any failure.
    static QString fetchText(const QString &url, int timeout = timeoutMs);
};

} // namespace platform
