// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/EngineChangeLog.h"

#include "engine/changes/ChangeTracker.h"

#include <QPointer>

namespace platform {

namespace {

using changes::ChangeTracker;

class Log final : public IHTMLChangeLog, private changes::Sink
{
public:
    Log(ChangeTracker &tracker, IHTMLChangeSink *sink) : mTracker(&tracker), mSink(sink), mLog(tracker.createLog(this)) {}
    ~Log() override
    {
        if (mTracker) mTracker->dropLog(*mLog);
    }
    void GetNextChange(char *Buffer, int Size, int &Needed) override
    {
        Needed = mLog->isEmpty() ? 0 : int(mLog->front().size());
        if (Size < Needed || Size == 0 || Needed == 0) return;
        std::copy_n(mLog->front().constData(), Needed, Buffer);
        mLog->pop();
    }

private:
    void notify() override { mSink->Notify(); }

    QPointer<ChangeTracker> mTracker;
    IHTMLChangeSink *mSink;
    base::Ref<changes::ChangeLog> mLog;
};

class Container final : public IMarkupContainer2
{
public:
    explicit Container(ChangeTracker *tracker) : mTracker(tracker) {}
    std::unique_ptr<IHTMLChangeLog> CreateChangeLog(IHTMLChangeSink *Sink, bool, bool) override
    {
        return mTracker ? std::make_unique<Log>(*mTracker, Sink) : nullptr;
    }
    int RegisterForDirtyRange(IHTMLChangeSink *) override { return mTracker ? mTracker->watchDirtyRange() : 0; }
    void UnRegisterForDirtyRange(int Cookie) override
    {
        if (mTracker) mTracker->unwatchDirtyRange(Cookie);
    }
    void GetAndClearDirtyRange(int Cookie, IMarkupPointer &Start, IMarkupPointer &End) override
    {
        if (!mTracker) return;
        const ChangeTracker::DirtyRange range = mTracker->takeDirtyRange(Cookie);
        Start.scope = range.first;
        End.scope = range.last;
    }

private:
    QPointer<ChangeTracker> mTracker;
};

class Playback final : public IHTMLChangePlayback
{
public:
    explicit Playback(ChangeTracker *tracker) : mTracker(tracker) {}
    void ExecChange(const QByteArray &Record, int Forward) override
    {
        if (mTracker) mTracker->play(Record, Forward != 0);
    }

private:
    QPointer<ChangeTracker> mTracker;
};

class SurfaceDocument final : public ChangeDocument
{
public:
    explicit SurfaceDocument(HTMLEditor &surface)
        : mSurface(&surface), mContainer(std::make_shared<Container>(surface.tracker())),
          mPlayback(std::make_shared<Playback>(surface.tracker()))
    {
    }
    std::shared_ptr<IMarkupContainer2> MarkupContainer() override { return mContainer; }
    std::shared_ptr<IHTMLChangePlayback> ChangePlayback() override { return mPlayback; }
    bool IsControlRange() const override { return mSurface && mSurface->isControlSelected(); }

private:
    QPointer<HTMLEditor> mSurface;
    std::shared_ptr<Container> mContainer;
    std::shared_ptr<Playback> mPlayback;
};

} // namespace

std::shared_ptr<ChangeDocument> changeDocument(HTMLEditor &surface)
{
    return std::make_shared<SurfaceDocument>(surface);
}

} // namespace platform
