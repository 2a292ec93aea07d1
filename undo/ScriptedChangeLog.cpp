// SPDX-License-Identifier: GPL-3.0-or-later
#include "undo/ScriptedChangeLog.h"

#include <cstring>
#include <optional>

namespace {

// Behind the first byte of a fed record. The engine's records have other bytes there and another length.
constexpr char mark[] = "\xF5scripted\xF5";
constexpr int markLength = int(sizeof mark) - 1;
constexpr int serialLength = 4;

} // namespace

// Shared by the parts, which may outlive the document.
struct ScriptedChangeLog::State
{
    std::shared_ptr<IChangeDocument> live;
    std::shared_ptr<IMarkupContainer2> liveContainer;
    std::shared_ptr<IHTMLChangePlayback> livePlayback;
    IHTMLChangeSink *sink = nullptr;
    IHTMLChangeLog *liveLog = nullptr; // owned by the log that wraps it
    std::deque<QByteArray> queue;      // older than all that waits in the live log
    quint32 serial = 0;
    std::vector<Played> played;
    int watches = 0;
    int logs = 0;
    int nextCookie = 1;
    std::shared_ptr<dom::Element> dirtyFirst, dirtyLast;

    void append(int kind)
    {
        drainLive();
        QByteArray record(1, char(kind));
        record.append(mark, markLength);
        const quint32 number = serial++;
        record.append(reinterpret_cast<const char *>(&number), serialLength);
        queue.push_back(record);
    }
    static std::optional<QByteArray> next(IHTMLChangeLog &log)
    {
        int needed = 0;
        log.GetNextChange(nullptr, 0, needed);
        if (needed == 0) return std::nullopt;
        QByteArray record(needed, Qt::Uninitialized);
        log.GetNextChange(reinterpret_cast<uint8_t *>(record.data()), needed, needed);
        return record;
    }
    void drainLive()
    {
        if (!liveLog) return;
        while (const auto record = next(*liveLog))
            queue.push_back(*record);
    }
};

class ScriptedChangeLog::Log final : public IHTMLChangeLog
{
public:
    explicit Log(std::shared_ptr<State> state) : mState(std::move(state)) { ++mState->logs; }
    ~Log() override
    {
        --mState->logs;
        mState->sink = nullptr;
        mState->liveLog = nullptr;
    }
    void GetNextChange(uint8_t *buffer, int size, int &needed) override
    {
        auto &queue = mState->queue;
        if (queue.empty()) {
            if (live)
                live->GetNextChange(buffer, size, needed);
            else
                needed = 0;
            return;
        }
        needed = int(queue.front().size());
        if (size == 0 || size < needed) return;
        std::memcpy(buffer, queue.front().constData(), size_t(needed));
        queue.pop_front();
    }
    std::unique_ptr<IHTMLChangeLog> live;

private:
    std::shared_ptr<State> mState;
};

class ScriptedChangeLog::Container final : public IMarkupContainer2
{
public:
    explicit Container(std::shared_ptr<State> state) : mState(std::move(state)) {}
    void CreateChangeLog(IHTMLChangeSink *sink, std::unique_ptr<IHTMLChangeLog> &log, bool forward,
                         bool backward) override
    {
        auto made = std::make_unique<Log>(mState);
        if (mState->liveContainer) mState->liveContainer->CreateChangeLog(sink, made->live, forward, backward);
        mState->queue.clear();
        mState->sink = sink;
        mState->liveLog = made->live.get();
        log = std::move(made);
    }
    void RegisterForDirtyRange(IHTMLChangeSink *sink, int &cookie) override
    {
        ++mState->watches;
        if (mState->liveContainer)
            mState->liveContainer->RegisterForDirtyRange(sink, cookie);
        else
            cookie = mState->nextCookie++;
    }
    void UnRegisterForDirtyRange(int cookie) override
    {
        --mState->watches;
        if (mState->liveContainer) mState->liveContainer->UnRegisterForDirtyRange(cookie);
    }
    void GetAndClearDirtyRange(int cookie, std::unique_ptr<IMarkupPointer> &start,
                               std::unique_ptr<IMarkupPointer> &end) override
    {
        if (mState->liveContainer) return mState->liveContainer->GetAndClearDirtyRange(cookie, start, end);
        place(start, std::exchange(mState->dirtyFirst, nullptr));
        place(end, std::exchange(mState->dirtyLast, nullptr));
    }

private:
    static void place(std::unique_ptr<IMarkupPointer> &pointer, std::shared_ptr<dom::Element> scope)
    {
        if (!scope)
            pointer.reset();
        else if (pointer)
            pointer->MoveToScope(std::move(scope));
    }
    std::shared_ptr<State> mState;
};

class ScriptedChangeLog::Playback final : public IHTMLChangePlayback
{
public:
    explicit Playback(std::shared_ptr<State> state) : mState(std::move(state)) {}
    void ExecChange(const QByteArray &record, int forward) override
    {
        mState->played.push_back({record, forward});
        if (isScripted(record) || !mState->livePlayback)
            mState->append(forward ? redoneKind : undoneKind);
        else
            mState->livePlayback->ExecChange(record, forward);
    }

private:
    std::shared_ptr<State> mState;
};

ScriptedChangeLog::ScriptedChangeLog(std::shared_ptr<IChangeDocument> live) : mState(std::make_shared<State>())
{
    mContainer = std::make_shared<Container>(mState);
    mPlayback = std::make_shared<Playback>(mState);
    if (!live) return;
    mState->liveContainer = live->MarkupContainer();
    mState->livePlayback = live->ChangePlayback();
    mState->live = std::move(live);
}

ScriptedChangeLog::~ScriptedChangeLog() = default;

void ScriptedChangeLog::feed(int kind)
{
    mState->append(kind);
}

void ScriptedChangeLog::notify()
{
    if (mState->sink) mState->sink->Notify();
}

void ScriptedChangeLog::batch(const std::vector<int> &kinds)
{
    for (const int kind : kinds)
        feed(kind);
    notify();
}

bool ScriptedChangeLog::isScripted(const QByteArray &record)
{
    return record.size() == 1 + markLength + serialLength && std::memcmp(record.constData() + 1, mark, markLength) == 0;
}

void ScriptedChangeLog::setDirtyRange(std::shared_ptr<dom::Element> first, std::shared_ptr<dom::Element> last)
{
    mState->dirtyFirst = std::move(first);
    mState->dirtyLast = std::move(last);
}

const std::vector<ScriptedChangeLog::Played> &ScriptedChangeLog::played() const
{
    return mState->played;
}

int ScriptedChangeLog::watches() const
{
    return mState->watches;
}

int ScriptedChangeLog::logs() const
{
    return mState->logs;
}

int ScriptedChangeLog::waiting() const
{
    return int(mState->queue.size());
}

std::shared_ptr<IMarkupContainer2> ScriptedChangeLog::MarkupContainer()
{
    return mContainer;
}

std::shared_ptr<IHTMLChangePlayback> ScriptedChangeLog::ChangePlayback()
{
    return mPlayback;
}

std::shared_ptr<IMarkupServices> ScriptedChangeLog::MarkupServices()
{
    return mState->live ? mState->live->MarkupServices() : std::make_shared<IMarkupServices>();
}

bool ScriptedChangeLog::IsControlRange()
{
    return mState->live ? mState->live->IsControlRange() : mControlRange;
}
