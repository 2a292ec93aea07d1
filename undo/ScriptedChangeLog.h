// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ChangeLog.h"

#include <QString>
#include <deque>
#include <vector>

/// A document whose change log is fed by hand, for tests and for script mode. Playing one of its records changes
/// nothing and echoes once.
///
/// It stands alone, or in front of a live document, whose records then come through it in the order in which they were
/// written: a change manager that is initialised with it sees one log. A fed record carries a mark behind its kind, by
/// which playback knows it and keeps it from the live document; all others are played there.
class ScriptedChangeLog final : public IChangeDocument
{
public:
    explicit ScriptedChangeLog(std::shared_ptr<IChangeDocument> live = nullptr);
    ~ScriptedChangeLog() override;

    /// Puts a record of this kind (0 to 255) into the log, behind all that waits. The sink isn't told yet.
    void feed(int kind);
    /// Tells the sink that records wait.
    void notify();
    /// Feeds a batch and tells of it once.
    void batch(const std::vector<int> &kinds);
    static bool isScripted(const QByteArray &record);

    /// What the standing-alone document answers about its selection.
    void setControlRange(bool control) { mControlRange = control; }
    /// The dirty range that the next question takes away; no pointer is placed where both are absent.
    void setDirtyRange(std::shared_ptr<dom::Element> first, std::shared_ptr<dom::Element> last);

    // What was asked of it.
    struct Played
    {
        QByteArray record;
        int forward;
    };
    const std::vector<Played> &played() const;
    int watches() const; ///< dirty-range watches that are open
    int logs() const;    ///< logs that are open
    int waiting() const; ///< records fed or echoed that nobody has read
    /// What an echo's first byte is: never one of the kinds that input writes.
    static constexpr int redoneKind = 16;
    static constexpr int undoneKind = 17;

    std::shared_ptr<IMarkupContainer2> MarkupContainer() override;
    std::shared_ptr<IHTMLChangePlayback> ChangePlayback() override;
    std::shared_ptr<IMarkupServices> MarkupServices() override;
    bool IsControlRange() override;

private:
    class Container;
    class Log;
    class Playback;
    struct State;

    std::shared_ptr<State> mState;
    std::shared_ptr<Container> mContainer;
    std::shared_ptr<Playback> mPlayback;
    bool mControlRange = false;
};
