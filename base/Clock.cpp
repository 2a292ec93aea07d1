// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Clock.h"

#include <QPointer>
#include <QTimer>
#include <algorithm>

namespace base {

Clock &Clock::instance()
{
    static Clock clock;
    return clock;
}

QDateTime Clock::now() const
{
    return QDateTime::fromMSecsSinceEpoch(nowMs());
}

qint64 Clock::nowMs() const
{
    return mManual ? mNowMs : QDateTime::currentMSecsSinceEpoch();
}

void Clock::setManual(const QDateTime &start)
{
    mManual = true;
    mNowMs = start.toMSecsSinceEpoch();
    for (Timer *timer : mTimers) timer->arm();
}

void Clock::setSystem()
{
    mManual = false;
    for (Timer *timer : mTimers) timer->arm();
}

void Clock::advance(qint64 ms, const std::function<void()> &afterEach)
{
    if (!mManual || ms < 0) return;
    const qint64 end = mNowMs + ms;
    for (;;) {
        Timer *due = nullptr;
        for (Timer *timer : mTimers) {
            if (!timer->mEnabled || timer->mDueMs > end) continue;
            if (!due || timer->mDueMs < due->mDueMs ||
                (timer->mDueMs == due->mDueMs && timer->mSequence < due->mSequence))
                due = timer;
        }
        if (!due) break;
        mNowMs = std::max(mNowMs, due->mDueMs);
        // A repeating timer of no interval would never let the time move on.
        due->mDueMs += std::max(1, due->mInterval);
        due->mSequence = ++mSequence;
        Q_EMIT due->timeout();
        if (afterEach) afterEach();
    }
    mNowMs = end;
}

void Clock::add(Timer *timer)
{
    mTimers.push_back(timer);
}

void Clock::remove(Timer *timer)
{
    std::erase(mTimers, timer);
}

Timer::Timer(QObject *parent) : QObject(parent)
{
    Clock::instance().add(this);
}

Timer::~Timer()
{
    Clock::instance().remove(this);
}

void Timer::setInterval(int ms)
{
    mInterval = ms;
    if (mEnabled) arm();
}

void Timer::setEnabled(bool enabled)
{
    if (mEnabled == enabled) return;
    mEnabled = enabled;
    arm();
}

void Timer::restart()
{
    mEnabled = true;
    arm();
}

void Timer::arm()
{
    Clock &clock = Clock::instance();
    if (mEnabled && clock.isManual()) {
        mDueMs = clock.nowMs() + mInterval;
        mSequence = ++clock.mSequence;
    }
    if (mEnabled && !clock.isManual()) {
        if (!mSystemTimer) {
            mSystemTimer = new QTimer(this);
            connect(mSystemTimer, &QTimer::timeout, this, &Timer::timeout);
        }
        mSystemTimer->start(mInterval);
    } else if (mSystemTimer) {
        mSystemTimer->stop();
    }
}

} // namespace base
