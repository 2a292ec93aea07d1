// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/ControlState.h"

class CodeMax;
class Container;
class DocumentText;
class FlatStrip;
class Host;
class Selection;
class Splitter;

/// The three views of the document, how the text moves when they change, and where the children lie.
class Views
{
public:
    struct Children {
        QWidget &control;
        HTMLEditor &ed;
        CodeMax &txtHTMLSource;
        FlatStrip &strip;
        Splitter &splitMain;
        Splitter &splitPageMap;
        Container &conEditors;
    };
    Views(ControlState &state, Host &host, DocumentText &text, const Selection &selection, const Children &children);

    /// Set by the control.
    std::function<void()> ViewChanged;

    /// The view whose tab is selected.
    EditViewEnum EditView() const;
    void setEditView(EditViewEnum View);
    void UpdateCurrentView(bool PostContent);
    void UpdateView(EditViewEnum View, bool PostContent);
    void FlatStrip_Change(int NewTab);
    void UserControl_Resize();
    void conEditors_Resize(int Width, int Height);
    void txtHTMLSource_CmdFailure(int Command, int Code);

    void setShowFlatStrip(bool Show);
    void setShowPreviewButton(bool Show);
    void setShowPageMap(bool Show);
    void setShowTagBar(bool Show);
    void setShowPropertySheet(bool Show);
    void setShowDetails(bool Show);
    bool IsPropertySheetVisible() const;

private:
    void showSurface(EditViewEnum View, bool PostContent);
    void showSource();
    void carrySelectionOver();
    bool findInSource(const QString &text);
    void collapseInSource();

    ControlState &mState;
    Host &mHost;
    DocumentText &mText;
    const Selection &mSelection;
    Children c;
    bool mSelectingTab = false;
};
