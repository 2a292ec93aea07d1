// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/EngineChangeLog.h"

#include "engine/changes/ChangeTracker.h"

#include <QPointer>

namespace platform {

namespace {

using changes::ChangeTracker;

ChangeDocumentWrapper &wrapper()
{
    static ChangeDocumentWrapper wrapper;
    return wrapper;
}

BatchObserver &batchObserver()
{
    static BatchObserver observer;
    return observer;
}

class Log final : public IHTMLChangeLog, private changes::Sink
{
public:
    Log(HTMLEditor *surface, ChangeTracker &tracker, IHTMLChangeSink *sink)
        : mSurface(surface), mTracker(&tracker), mSink(sink), mLog(tracker.createLog(this))
    {
    }
    ~Log() override
    {
        if (mTracker) mTracker->dropLog(*mLog);
    }
    void GetNextChange(uint8_t *buffer, int size, int &needed) override
    {
        needed = mLog->isEmpty() ? 0 : int(mLog->front().size());
        if (needed == 0 && !mBatch.empty() && batchObserver()) batchObserver()(mSurface, std::exchange(mBatch, {}));
        if (needed == 0 || size < needed) return;
        if (batchObserver()) mBatch.push_back(uchar(mLog->front()[0]));
        std::copy_n(mLog->front().constData(), needed, buffer);
        mLog->pop();
    }

private:
    void notify() override { mSink->Notify(); }

    QPointer<HTMLEditor> mSurface;
    QPointer<ChangeTracker> mTracker;
    IHTMLChangeSink *mSink;
    base::Ref<changes::ChangeLog> mLog;
    std::vector<int> mBatch; // kinds read since the log was last empty
};

/// An element as a markup pointer keeps it.
std::shared_ptr<dom::Element> shared(const base::Ref<dom::Element> &element)
{
    return std::shared_ptr<dom::Element>(element.get(), [element](dom::Element *) {});
}

class Container final : public IMarkupContainer2
{
public:
    explicit Container(HTMLEditor &surface) : mSurface(&surface), mTracker(surface.tracker()) {}
    void CreateChangeLog(IHTMLChangeSink *sink, std::unique_ptr<IHTMLChangeLog> &log, bool, bool) override
    {
        // The engine's records always play both ways.
        log = mTracker ? std::make_unique<Log>(mSurface.data(), *mTracker, sink) : nullptr;
    }
    void RegisterForDirtyRange(IHTMLChangeSink *, int &cookie) override
    {
        cookie = mTracker ? mTracker->watchDirtyRange() : 0;
    }
    void UnRegisterForDirtyRange(int cookie) override
    {
        if (mTracker) mTracker->unwatchDirtyRange(cookie);
    }
    void GetAndClearDirtyRange(int cookie, std::unique_ptr<IMarkupPointer> &start,
                               std::unique_ptr<IMarkupPointer> &end) override
    {
        const ChangeTracker::DirtyRange range = mTracker ? mTracker->takeDirtyRange(cookie) : ChangeTracker::DirtyRange{};
        place(start, range.first);
        place(end, range.last);
    }

private:
    static void place(std::unique_ptr<IMarkupPointer> &pointer, const base::Ref<dom::Element> &element)
    {
        if (element && pointer)
            pointer->MoveToScope(shared(element));
        else
            pointer.reset();
    }
    QPointer<HTMLEditor> mSurface;
    QPointer<ChangeTracker> mTracker;
};

class Playback final : public IHTMLChangePlayback
{
public:
    explicit Playback(ChangeTracker *tracker) : mTracker(tracker) {}
    void ExecChange(const QByteArray &record, int forward) override
    {
        if (mTracker) mTracker->play(record, forward != 0);
    }

private:
    QPointer<ChangeTracker> mTracker;
};

class SurfaceDocument final : public IChangeDocument
{
public:
    explicit SurfaceDocument(HTMLEditor &surface)
        : mSurface(&surface), mContainer(std::make_shared<Container>(surface)),
          mPlayback(std::make_shared<Playback>(surface.tracker()))
    {
    }
    std::shared_ptr<IMarkupContainer2> MarkupContainer() override { return mContainer; }
    std::shared_ptr<IHTMLChangePlayback> ChangePlayback() override { return mPlayback; }
    std::shared_ptr<IMarkupServices> MarkupServices() override { return mServices; }
    bool IsControlRange() override { return mSurface && mSurface->isControlSelected(); }

private:
    QPointer<HTMLEditor> mSurface;
    std::shared_ptr<Container> mContainer;
    std::shared_ptr<Playback> mPlayback;
    std::shared_ptr<IMarkupServices> mServices = std::make_shared<IMarkupServices>();
};

} // namespace

std::shared_ptr<IChangeDocument> changeDocument(HTMLEditor &surface)
{
    auto document = std::make_shared<SurfaceDocument>(surface);
    if (wrapper()) return wrapper()(document, surface);
    return document;
}

void setChangeDocumentWrapper(ChangeDocumentWrapper newWrapper)
{
    wrapper() = std::move(newWrapper);
}

void setBatchObserver(BatchObserver observer)
{
    batchObserver() = std::move(observer);
}

} // namespace platform
