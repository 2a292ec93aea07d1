// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <cstdint>
#include <memory>

namespace dom {
class Element;
}

/// What change tracking asks of a document: an ordered log of records of bytes, their playback in both directions, and
/// a dirty range. There are two suppliers: the engine, by an adapter, and a scripted log that feeds `ChangeManager` in
/// tests and in script mode. Therefore these are interfaces, and therefore elements appear here as pointers to a type
/// that needn't be complete.

/// Is told that records wait: later than the edit, never from within one or from within a playback.
class IHTMLChangeSink
{
public:
    virtual ~IHTMLChangeSink() = default;
    virtual void Notify() = 0;
};

/// The reader of one log. Dropping it ends the log; its sink isn't told any more.
class IHTMLChangeLog
{
public:
    virtual ~IHTMLChangeLog() = default;
    /// With `size` 0: `needed` becomes the size in bytes of the next record, 0 if none waits. With `size` at least as
    /// large as the record: copies it to `buffer`, sets `needed` to its size and takes it off the log.
    virtual void GetNextChange(uint8_t *buffer, int size, int &needed) = 0;
};

class IHTMLChangePlayback
{
public:
    virtual ~IHTMLChangePlayback() = default;
    /// Plays a record: forward 1 does again what it tells, forward 0 undoes it. Each call writes exactly one record to
    /// the log, its echo, even where nothing changes.
    virtual void ExecChange(const QByteArray &record, int forward) = 0;
};

/// A place in the document, as far as change tracking needs one.
class IMarkupPointer
{
public:
    /// The innermost element that holds the place; Nothing for a pointer that was never placed. Valid as long as the
    /// pointer is.
    dom::Element *CurrentScope() const { return mScope.get(); }
    /// For the supplier, which knows how to keep an element alive.
    void MoveToScope(std::shared_ptr<dom::Element> scope) { mScope = std::move(scope); }

private:
    std::shared_ptr<dom::Element> mScope;
};

class IMarkupServices
{
public:
    virtual ~IMarkupServices() = default;
    /// A new pointer that stands nowhere. May stay absent.
    virtual void CreateMarkupPointer(std::unique_ptr<IMarkupPointer> &pointer)
    {
        pointer = std::make_unique<IMarkupPointer>();
    }
};

class IMarkupContainer2
{
public:
    virtual ~IMarkupContainer2() = default;
    /// Starts a log whose records can be played forward, backward, or (normally) both ways. `sink` isn't owned.
    virtual void CreateChangeLog(IHTMLChangeSink *sink, std::unique_ptr<IHTMLChangeLog> &log, bool forward,
                                 bool backward) = 0;
    /// Starts to watch which part of the document changes. `cookie` isn't 0 when that worked.
    virtual void RegisterForDirtyRange(IHTMLChangeSink *sink, int &cookie) = 0;
    virtual void UnRegisterForDirtyRange(int cookie) = 0;
    /// Places the pointers around all that has changed since the last call. A pointer is dropped where there is nothing
    /// to place it at.
    virtual void GetAndClearDirtyRange(int cookie, std::unique_ptr<IMarkupPointer> &start,
                                       std::unique_ptr<IMarkupPointer> &end) = 0;
};

/// The dirty-range operations as the change manager calls them: the container comes first.
class DOMSupport
{
public:
    void RegisterForDirtyRange(IMarkupContainer2 &container, IHTMLChangeSink *sink, int &cookie) const
    {
        container.RegisterForDirtyRange(sink, cookie);
    }
    void UnRegisterForDirtyRange(IMarkupContainer2 &container, int cookie) const
    {
        container.UnRegisterForDirtyRange(cookie);
    }
    void GetAndClearDirtyRange(IMarkupContainer2 &container, int cookie, std::unique_ptr<IMarkupPointer> &start,
                               std::unique_ptr<IMarkupPointer> &end) const
    {
        container.GetAndClearDirtyRange(cookie, start, end);
    }
};

/// A document, as change tracking sees one. The parts live as long as somebody holds them, also without the document.
class IChangeDocument
{
public:
    virtual ~IChangeDocument() = default;
    virtual std::shared_ptr<IMarkupContainer2> MarkupContainer() = 0;
    virtual std::shared_ptr<IHTMLChangePlayback> ChangePlayback() = 0;
    virtual std::shared_ptr<IMarkupServices> MarkupServices() = 0;
    /// Does the document's selection make a control range?
    virtual bool IsControlRange() = 0;
};
