// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"

#include <QByteArray>
#include <memory>

/// What the change manager relies on, under the contract's names. There are two suppliers: the engine's change log
/// (`EngineChangeLog`) and a scripted one that feeds a manager with records of chosen kinds in tests.

class IHTMLChangeSink
{
public:
    virtual ~IHTMLChangeSink() = default;
    /// Entries are waiting in the log. Comes later than the edit.
    virtual void Notify() = 0;
};

class IHTMLChangeLog
{
public:
    virtual ~IHTMLChangeLog() = default;
    /// With `Size` 0 tells the next entry's length in `Needed`, 0 for none. With its length, copies it to `Buffer` and takes
    /// it off.
    virtual void GetNextChange(char *Buffer, int Size, int &Needed) = 0;
};

class IHTMLChangePlayback
{
public:
    virtual ~IHTMLChangePlayback() = default;
    /// `Forward` 1 redoes, 0 undoes. Writes exactly one entry to the log, its echo.
    virtual void ExecChange(const QByteArray &Record, int Forward) = 0;
};

class IMarkupPointer
{
public:
    /// The element that the pointer stands in; Nothing for a pointer that stands nowhere.
    dom::Element *CurrentScope() const { return scope.get(); }
    base::Ref<dom::Element> scope;
};

class IMarkupContainer2
{
public:
    virtual ~IMarkupContainer2() = default;
    virtual std::unique_ptr<IHTMLChangeLog> CreateChangeLog(IHTMLChangeSink *Sink, bool Forward, bool Backward) = 0;
    virtual int RegisterForDirtyRange(IHTMLChangeSink *Sink) = 0;
    virtual void UnRegisterForDirtyRange(int Cookie) = 0;
    virtual void GetAndClearDirtyRange(int Cookie, IMarkupPointer &Start, IMarkupPointer &End) = 0;
};

/// The dirty-range operations of a container, the container first.
class DOMSupport
{
public:
    static void RegisterForDirtyRange(IMarkupContainer2 &Container, IHTMLChangeSink *Sink, int &Cookie)
    {
        Cookie = Container.RegisterForDirtyRange(Sink);
    }
    static void UnRegisterForDirtyRange(IMarkupContainer2 &Container, int Cookie)
    {
        Container.UnRegisterForDirtyRange(Cookie);
    }
    static void GetAndClearDirtyRange(IMarkupContainer2 &Container, int Cookie, IMarkupPointer &Start, IMarkupPointer &End)
    {
        Container.GetAndClearDirtyRange(Cookie, Start, End);
    }
};

/// A document as the change manager is bound to it.
class ChangeDocument
{
public:
    virtual ~ChangeDocument() = default;
    virtual std::shared_ptr<IMarkupContainer2> MarkupContainer() = 0;
    virtual std::shared_ptr<IHTMLChangePlayback> ChangePlayback() = 0;
    /// Whether the document's selection is a control range.
    virtual bool IsControlRange() const = 0;
};
