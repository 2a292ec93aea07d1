// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Debug.h"

#include "support/SettingsStore.h"

#include <QDebug>

namespace support {

namespace {

DebugSink &currentSink()
{
    static DebugSink sink;
    return sink;
}

} // namespace

bool debugOutputWanted()
{
    bool isNumber = false;
    const double value =
        SettingsStore::instance()
            .read(SettingsRoot::LocalMachine, QStringLiteral("Software\\Brimfield\\Debug"), QStringLiteral("Vellum5"))
            .trimmed()
            .toDouble(&isNumber);
    return isNumber && value == 1;
}

DebugSink setDebugSink(DebugSink sink)
{
    std::swap(currentSink(), sink);
    return sink;
}

void writeDebugLine(const QString &line) noexcept
{
    try {
        const DebugSink sink = currentSink();
        if (sink)
            sink(line);
        else
            qDebug().noquote() << line;
    } catch (...) {
        // Nobody's work depends on a debug line.
    }
}

void DebugOutput::OutputDebugString(const QString &Text) const
{
    if (mOutputDebugStrings)
        writeDebugLine(QLatin1String("Vellum5.") + QLatin1String(mClassName) + QLatin1String(": ") + Text);
}

} // namespace support
