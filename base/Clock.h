// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <functional>
#include <vector>

class QTimer;

namespace base {

class Timer;

/// The present time and the mover of all timers of the system. Normally both are the system's. A test or the script mode
/// takes the clock by hand: time then stands still but for `advance`, which fires what falls due, in order.
class Clock
{
public:
    static Clock &instance();

    QDateTime now() const;
    /// Milliseconds since the epoch, by the same clock.
    qint64 nowMs() const;

    bool isManual() const { return mManual; }
    void setManual(const QDateTime &start);
    void setSystem();
    /// Moves a manual clock by `ms` milliseconds (0 or more). Timers that fall due fire at their own time, earliest first,
    /// in order of their start where the times are equal; a timer started meanwhile fires too if it falls due. `afterEach`
    /// runs after each firing (a host delivers posted events there).
    void advance(qint64 ms, const std::function<void()> &afterEach = {});

private:
    friend class Timer;
    void add(Timer *timer);
    void remove(Timer *timer);

    bool mManual = false;
    qint64 mNowMs = 0;
    quint64 mSequence = 0;
    std::vector<Timer *> mTimers; // every timer alive; few dozens a control
};

/// A timer object with interval, enabled flag and a text tag, moved by the clock. Repeats until disabled.
class Timer : public QObject
{
    Q_OBJECT
public:
    explicit Timer(QObject *parent = nullptr);
    ~Timer() override;

    /// Milliseconds. A change while running starts the wait anew.
    int interval() const { return mInterval; }
    void setInterval(int ms);
    bool isEnabled() const { return mEnabled; }
    /// Enabling a running timer changes nothing; to restart it, disable it first or call `restart`.
    void setEnabled(bool enabled);
    void restart();
    const QString &tag() const { return mTag; }
    void setTag(const QString &tag) { mTag = tag; }

Q_SIGNALS:
    void timeout();

private:
    friend class Clock;
    void arm();

    int mInterval = 0;
    bool mEnabled = false;
    QString mTag;
    qint64 mDueMs = 0;
    quint64 mSequence = 0;
    QTimer *mSystemTimer = nullptr;
};

} // namespace base
