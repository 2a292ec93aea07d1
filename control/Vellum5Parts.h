// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "commands/Commands.h"
#include "commands/VirtualCommandManager.h"
#include "control/Changes.h"
#include "control/DocumentText.h"
#include "control/EventProxy.h"
#include "control/RecoveryJournal.h"
#include "control/SurfaceEvents.h"
#include "control/Vellum5.h"
#include "control/Views.h"
#include "core/EditableRegions.h"
#include "core/Host.h"
#include "core/Selection.h"
#include "platform/CodeMax.h"
#include "support/Debug.h"
#include "support/InstanceCounts.h"
#include "undo/ChangeManager.h"
#include "widgets/Container.h"
#include "widgets/FlatStrip.h"
#include "widgets/Splitter.h"

/// The host's window to the control, as the concerns see it.
class ControlHost final : public Host
{
public:
    explicit ControlHost(Vellum5 &control) : mControl(control) {}
    bool IsUserMode() const override;
    bool ExtenderVisible(bool ifUnknown) const override;
    void tellPropertyChanged(const char *Name) override { mControl.tellHost(Name); }
    void OutputDebugString(const QString &Text) const override { mControl.OutputDebugString(Text); }
    IHTMLDocument2 *mDoc() const override;
    void RefreshTools() override;
    void setCommandChecked(const QString &Name, bool Checked) override;
    void setCommandVisible(const QString &Name, bool Visible) override;
    bool mInitialised() const override { return mControl.state().mInitialised; }
    EditViewEnum EditView() const override { return mControl.state().mCurrentEditView; }
    IHTMLElement *mSpecificElement() const override { return mControl.state().mSpecificElement.get(); }
    void ForceSelectedElementChanged() override;
    void RemoveSpellMarkersFromSelection() override {} // there is no speller yet that makes some
    bool UndoEnabled() const override;
    bool RedoEnabled() const override;
    void raiseChange() override { Q_EMIT mControl.Change(); }
    void raiseDocumentComplete() override { Q_EMIT mControl.DocumentComplete(); }
    void raiseCommandClick(const QString &CommandName, bool &Ignore) override
    {
        Q_EMIT mControl.CommandClick(CommandName, Ignore);
    }
    void raiseHyperlinkClick(const QString &href) override { Q_EMIT mControl.HyperlinkClick(href); }
    void raiseEditableSpanChanged(IHTMLElement *Span) override { Q_EMIT mControl.EditableSpanChanged(Span); }
    void raiseCellSelectionChanged() override { Q_EMIT mControl.CellSelectionChanged(); }
    void raiseInsertHyperLinkRequest(const QString &SelectedText, QString &Link, bool &Handled) override
    {
        Q_EMIT mControl.InsertHyperLinkRequest(SelectedText, Link, Handled);
    }
    void raiseInsertHyperLinkRequestEx(const QString &SelectedText, QString &Link, QString &Target,
                                       bool &Handled) override
    {
        Q_EMIT mControl.InsertHyperLinkRequestEx(SelectedText, Link, Target, Handled);
    }
    void raiseElementEvent(int EventId, dom::EventObject *EventInfo, bool &CancelDefault) override
    {
        Q_EMIT mControl.ElementEvent(EventId, EventInfo, CancelDefault);
    }
    QWidget *window() const override { return &mControl; }
    void dumpModuleVariables(support::VariableDump &dump) const override { mControl.state().dumpModuleVariables(dump); }

    HostContainer *container = nullptr;

private:
    Vellum5 &mControl;
};

/// What a control is made of: its state, the children it owns and the concerns that work on them.
struct Vellum5::Parts {
    explicit Parts(Vellum5 &control);

    support::InstanceCounter counter{support::Component::Vellum5}; // the trace tool's, for as long as the control lives
    ControlState state;
    ControlHost host;
    support::DebugOutput debug{"Vellum5"};
    // Children, by their told names
    Splitter *splitMain;
    Container *conEditors;
    Splitter *splitPageMap;
    HTMLEditor *ed;
    CodeMax *txtHTMLSource;
    FlatStrip *strip;
    base::Timer timSpellCheck;
    bool isCounted = false; ///< in `modMain::mInstanceCount`
    // Concerns
    EditableRegions regions;
    Selection selection;
    DocumentText text;
    Views views;
    SurfaceEvents events;
    Changes changes;
    Commands commands;
    RecoveryJournal journal;
};
