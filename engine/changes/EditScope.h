// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <functional>

namespace changes {

class ChangeTracker;

/// The time during which records gather before the sinks are told of them: an input event, a timer's handler, a command,
/// a public member of the control. Sinks are told when the outermost scope opens and when it closes, if records wait.
///
/// An event loop that runs inside a scope suspends it: what happens in there is in scopes of its own. A scope finds by
/// itself that it opened in a deeper loop; code that pumps events by hand says so with `Suspension`.
class EditScope
{
public:
    /// Quiet: what waits is told at the end only.
    enum class Opening { Tells, Quiet };
    explicit EditScope(Opening opening = Opening::Tells);
    ~EditScope();
    EditScope(const EditScope &) = delete;
    EditScope &operator=(const EditScope &) = delete;

    /// Told before, and events inside are scopes of their own.
    class Suspension
    {
    public:
        Suspension();
        ~Suspension();
        Suspension(const Suspension &) = delete;
        Suspension &operator=(const Suspension &) = delete;

    private:
        int mDepth;
    };

    static bool isOpen();

    /// Runs the call once the records that wait, or are being written, have been told: what hosts read from then on is
    /// up to date. At once if there are none. Of several calls for one owner the first stands; none is made once the
    /// owner has gone.
    static void whenTold(QObject *owner, std::function<void()> call);

private:
    bool mOutermost;
    int mOldDepth;
    int mOldLoopLevel;
};

/// The trackers that have records nobody was told of.
class Waiting
{
public:
    static void add(ChangeTracker &tracker);
    static void remove(ChangeTracker &tracker);
    /// Tells all, at once.
    static void tell();
};

} // namespace changes
