// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

/// The debug channel. Classes that have something to tell write lines to it when the machine-wide value "Vellum5" of
/// the key "Software\Brimfield\Debug" is 1; a class asks once, when it is made.
namespace support {

/// Is debug output wanted on this machine, as the settings say now? Raises nothing.
bool debugOutputWanted();

using DebugSink = std::function<void(const QString &line)>;
/// Where lines go; an empty sink brings back the system's channel. Gives the one before.
DebugSink setDebugSink(DebugSink sink);
/// Writes one line (without its line end) to the channel, wanted or not. Raises nothing.
void writeDebugLine(const QString &line) noexcept;

/// A class's own end of the channel: each line starts with the class's name, as in "Vellum5.HTMLTagSupport: ".
class DebugOutput
{
public:
    /// `className` is a literal. Reads the setting.
    explicit DebugOutput(const char *className) : mClassName(className), mOutputDebugStrings(debugOutputWanted()) {}

    bool isOn() const { return mOutputDebugStrings; }
    void OutputDebugString(const QString &Text) const;

private:
    const char *mClassName;
    bool mOutputDebugStrings;
};

} // namespace support
