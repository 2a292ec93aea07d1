// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

class QString;
class Vellum5;

namespace scripting {

/// How the host opens and saves the document of a control, so that a script goes the way that a user goes. Failures are
/// raised as `base::Error`.
class HostFile
{
public:
    virtual ~HostFile() = default;
    /// False if a question of the host was answered so that the document stays.
    virtual bool open(const QString &name) = 0;
    /// False if a question of the host was answered so that nothing was saved.
    virtual bool save(const QString &name) = 0;
};

using MakeHostFile = std::function<std::unique_ptr<HostFile>(Vellum5 &)>;

} // namespace scripting
