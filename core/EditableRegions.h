// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Collection.h"
#include "platform/Contract.h"

class Host;

/// The questions about regions that a host marks in its page by class names and ids: wrappers around an editable part,
/// widgets and their properties, named editable spans. All are answered from the live document; nothing is kept.
///
/// Elements may be Nothing (null) everywhere: the answer is then False or Nothing. Nothing here raises; a failure is
/// reported.
class EditableRegions
{
public:
    explicit EditableRegions(const Host &host) : mHost(host) {}

    /// The nearest of `e` and its ancestors below BODY that is a wrapper by its own class; a widget property is none.
    IHTMLElement *GetEditWrapperElement(IHTMLElement *e) const;

    /// What the surface does with an element when what it holds, or what stands beside it, is deleted: wrappers and
    /// widgets keep their frames, named spans and properties stay when they are emptied.
    static ElementRole RoleOf(const IHTMLElement &e);

    /// An editable SPAN that is no misspelling marker: those are never regions.
    bool IsEditableSpan(IHTMLElement *e) const;
    /// The nearest named span: an editable SPAN with an id that is neither widget property nor misspelling marker.
    IHTMLElement *GetEditableSpan(IHTMLElement *e) const;
    bool IsElementInEditableSpan(IHTMLElement *e) const;
    /// Adds `e` and its descendants that are editable spans, in document order, under their ids; one without an id is
    /// added without a key. Misspelling markers are none. A second span of an id ends it with a report: what was added
    /// stays.
    void GetEditableSpans(IHTMLElement *e, platform::Collection &Spans) const;

    bool IsWidgetElement(IHTMLElement *e) const;
    bool IsWidgetPropertyElement(IHTMLElement *e) const;
    bool ContainsWidgetElement(IHTMLElement *e) const;
    bool IsInWidget(IHTMLElement *e) const;
    IHTMLElement *GetWidgetElement(IHTMLElement *e) const;

    IHTMLElement *GetParentAnchor(IHTMLElement *e) const;

private:
    const Host &mHost;
};
