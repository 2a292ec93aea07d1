// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/ControlState.h"

class CodeMax;
class Host;
class SurfaceEvents;

/// The control's end of change tracking: a manager for each loaded document, undo and redo in every view.
class Changes
{
public:
    Changes(ControlState &state, Host &host, HTMLEditor &ed, CodeMax &txtHTMLSource, SurfaceEvents &events);

    void CreateNewChangeManager();
    void KillChangeManager();
    void StartUndoBlock(bool Merge, bool PrivateBlock);
    void EndUndoBlock(bool Deferred);
    void FlushChanges();
    void ResetUndo();
    void Undo();
    void Redo();
    bool UndoEnabled() const;
    bool RedoEnabled() const;

private:
    ChangeManager *upToDateManager();
    void clearCellHighlights();

    ControlState &mState;
    Host &mHost;
    HTMLEditor &ed;
    CodeMax &txtHTMLSource;
    SurfaceEvents &mEvents;
};
