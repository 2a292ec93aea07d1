// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Contract.h"
#include "platform/Enumerations.h"

#include <QString>

class ChangeManager;
class QWidget;
namespace support {
class VariableDump;
}

namespace support {
class VariableDump;
}

/// What a concern asks of the control, and nothing more: no concern includes the control. `Vellum5` implements it.
class Host
{
public:
    virtual ~Host() = default;

    virtual bool IsUserMode() const = 0;
    /// The extender's `Visible`; `ifUnknown` where reading it fails.
    virtual bool ExtenderVisible(bool ifUnknown) const = 0;
    /// A persistent property has a new value; told to the host under its bag name.
    virtual void tellPropertyChanged(const char *Name) = 0;
    virtual void OutputDebugString(const QString &Text) const = 0;

    /// The surface's document, or Nothing while none is loaded or the control ends. Every piece of code that reaches for
    /// the document goes through it.
    virtual IHTMLDocument2 *mDoc() const = 0;
    virtual void RefreshTools() = 0;
    virtual void setCommandChecked(const QString &Name, bool Checked) = 0;
    virtual void setCommandVisible(const QString &Name, bool Visible) = 0;

    virtual bool mInitialised() const = 0;
    virtual EditViewEnum EditView() const = 0;
    /// The element that a command forces while it runs; Nothing else.
    virtual IHTMLElement *mSpecificElement() const = 0;
    virtual void ForceSelectedElementChanged() = 0;
    virtual void RemoveSpellMarkersFromSelection() = 0;

    virtual bool UndoEnabled() const = 0;
    virtual bool RedoEnabled() const = 0;

    // The host's events that more than one concern raises.
    virtual void raiseChange() = 0;
    virtual void raiseDocumentComplete() = 0;
    virtual void raiseCommandClick(const QString &CommandName, bool &Ignore) = 0;
    virtual void raiseHyperlinkClick(const QString &href) = 0;
    virtual void raiseEditableSpanChanged(IHTMLElement *Span) = 0;
    virtual void raiseCellSelectionChanged() = 0;
    /// Both ask for a link, as the HTML of an anchor; the second for its target too.
    virtual void raiseInsertHyperLinkRequest(const QString &SelectedText, QString &Link, bool &Handled) = 0;
    virtual void raiseInsertHyperLinkRequestEx(const QString &SelectedText, QString &Link, QString &Target,
                                               bool &Handled) = 0;
    virtual void raiseElementEvent(int EventId, dom::EventObject *EventInfo, bool &CancelDefault) = 0;

    /// The control's fields, for the report of a concern that fails on the control's behalf.
    virtual void dumpModuleVariables(support::VariableDump &dump) const = 0;
    /// Parent of message boxes and dialogs.
    virtual QWidget *window() const = 0;
};
