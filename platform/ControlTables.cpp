// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ControlTables.h"

namespace platform::control {

const std::vector<MemberRow> &members()
{
    static const std::vector<MemberRow> rows{
        // Shell
        {1, "AppName", "Shell"},
        {2, "Enabled", "Shell"},
        {3, "BackColor", "Shell"},
        {4, "BorderStyle", "Shell"},
        {5, "ContextToolbarStyle", "Shell"},
        {6, "Terminate", "Shell"},
        {7, "Terminated", "Shell"},
        {8, "Terminating", "Shell"},
        {9, "Loaded", "Shell"},
        {10, "EventProxy", "Shell"},
        {11, "CommandManager", "Shell"},
        {12, "ExternalObject", "Shell"},
        {13, "hWnd", "Shell"},
        {14, "EditorhWnd", "Shell"},
        {15, "PageMaphWnd", "Shell"},
        {16, "PageTagBarhWnd", "Shell"},
        {17, "SourceEditControl", "Shell"},
        {18, "VisualEditControl", "Shell"},
        {19, "DOM", "Shell"},
        // Document text
        {51, "DocumentHTML", "Document text"},
        {52, "BodyText", "Document text"},
        {53, "BodyMode", "Document text"},
        {54, "BaseURL", "Document text"},
        {55, "Dirty", "Document text"},
        {56, "StyleSheets", "Document text"},
        {57, "LoadFile", "Document text"},
        {58, "SaveFile", "Document text"},
        {59, "Navigate", "Document text"},
        {60, "Loading", "Document text"},
        {61, "WaitUntilLoaded", "Document text"},
        {62, "SetDocumentHTMLWithChangeKey", "Document text"},
        {63, "SetChangeKey", "Document text"},
        // Formatting of text
        {101, "AutoFormatHTML", "Formatting of text"},
        {102, "AutoFormatRemoveBlankLines", "Formatting of text"},
        {103, "WrapCharacters", "Formatting of text"},
        {104, "FormatHTMLString", "Formatting of text"},
        // Views and layout
        {151, "EditView", "Views and layout"},
        {152, "DontPostWhenEditViewChanges", "Views and layout"},
        {153, "ShowFlatStrip", "Views and layout"},
        {154, "ShowPreviewButton", "Views and layout"},
        {155, "ShowPageMap", "Views and layout"},
        {156, "ShowTagBar", "Views and layout"},
        {157, "ShowPropertySheet", "Views and layout"},
        {158, "ShowDetails", "Views and layout"},
        // Selection
        {201, "SelectedHTML", "Selection"},
        {202, "SelectedElement", "Selection"},
        {203, "SelectedText", "Selection"},
        {204, "SelectionObject", "Selection"},
        {205, "SetSelectionToPoint", "Selection"},
        {206, "SaveCurrentSelectionPoint", "Selection"},
        {207, "RestoreSavedSelectionPoint", "Selection"},
        // Editable regions
        {251, "EditMode", "Editable regions"},
        {252, "Locked", "Editable regions"},
        {253, "AutoSelectEditableSpans", "Editable regions"},
        {254, "GetCurrentEditWrapperElement", "Editable regions"},
        {255, "IsEditWrapperElement", "Editable regions"},
        {256, "IsWidgetElement", "Editable regions"},
        {257, "IsWidgetPropertyElement", "Editable regions"},
        {258, "ContainsWidgetElement", "Editable regions"},
        {259, "IsInWidget", "Editable regions"},
        // Surface events
        {301, "ChangeDelay", "Surface events"},
        {302, "CommitEdit", "Surface events"},
        {303, "EnableLinkClicks", "Surface events"},
        {304, "HasFocus", "Surface events"},
        {305, "SetFocusEx", "Surface events"},
        {306, "SetFocusQueued", "Surface events"},
        {307, "ForceElementChange", "Surface events"},
        {308, "ParsehRef", "Surface events"},
        // Commands
        {351, "RunCommand", "Commands"},
        {352, "RunCommandEx", "Commands"},
        {353, "DoExecCommand", "Commands"},
        {354, "CommandState", "Commands"},
        {355, "SetCommandState", "Commands"},
        {356, "GetBlockFormatName", "Commands"},
        {357, "BlockFormatNameCount", "Commands"},
        {358, "DoPrint", "Commands"},
        // Insert
        {401, "InsertSymbol", "Insert"},
        {402, "InsertSymbolDialog", "Insert"},
        {403, "InsertTable", "Insert"},
        {404, "SelectedCells", "Insert"},
        // Format
        {451, "FontName", "Format"},
        {452, "FontSize", "Format"},
        {453, "ForeColor", "Format"},
        {454, "FillColor", "Format"},
        {455, "Style", "Format"},
        {456, "SetForeColor", "Format"},
        {457, "SetFillColor", "Format"},
        {458, "GetForeColor", "Format"},
        {459, "GetFillColor", "Format"},
        {460, "GetClassNames", "Format"},
        {461, "IsWholeElementSelected", "Format"},
        {462, "CreateNewStyle", "Format"},
        // Menus
        {501, "GetContextMenu", "Menus"},
        {502, "SetContextMenu", "Menus"},
        {503, "GetElementMenu", "Menus"},
        {504, "ShowContextMenu", "Menus"},
        // Undo
        {551, "StartUndoBlock", "Undo"},
        {552, "EndUndoBlock", "Undo"},
        {553, "FlushChanges", "Undo"},
        {554, "ResetUndo", "Undo"},
        {555, "Undo", "Undo"},
        {556, "Redo", "Undo"},
        {557, "UndoEnabled", "Undo"},
        {558, "RedoEnabled", "Undo"},
        // Spelling
        {601, "DynamicSpellCheck", "Spelling"},
        {602, "SpellCheck", "Spelling"},
        {603, "SetSpellObject", "Spelling"},
        {604, "SpellCheckInProgress", "Spelling"},
        {605, "SpellAddIgnoreAllWord", "Spelling"},
        {606, "DoSpellCheck", "Spelling"},
        {607, "SetSpellOptions", "Spelling"},
        {608, "SpellImagePath", "Spelling"},
        {609, "SelectedWord", "Spelling"},
        {610, "ResetDynamicSpell", "Spelling"},
        {611, "RemoveSpellMarkersFromSelection", "Spelling"},
        {612, "RemoveSpellMarkersFromElement", "Spelling"},
        {613, "RemoveSpan", "Spelling"},
        // Find
        {651, "DoFind", "Find"},
        {652, "FindText", "Find"},
        {653, "DoReplace", "Find"},
        {654, "DoReplaceEx", "Find"},
        {655, "HideChildForms", "Find"},
        // Page map
        {701, "PageMapDragInProgress", "Page map"},
        {702, "LockPageMapAndBarRefresh", "Page map"},
        {703, "GetPageMapDragElement", "Page map"},
    };
    return rows;
}

const std::vector<EventRow> &events()
{
    static const std::vector<EventRow> rows{
        {1, "SpellIgnoreWordAdded", "Word"},
        {2, "SpellCustomWordAdded", "Word"},
        {3, "Change", ""},
        {4, "DocumentComplete", ""},
        {5, "CommandClick", "CommandName, &Ignore"},
        {6, "HyperlinkClick", "href"},
        {7, "InsertHyperLinkRequest", "SelectedText, &Link, &Handled"},
        {35, "InsertHyperLinkRequestEx", "SelectedText, &Link, &Target, &Handled"},
        {8, "GetURL", "&URL, &Caption, &RemoveLink, ShowRemoveLink, ShowCaption, EnabledLXLinks, &Handled"},
        {9, "InsertImageRequest", "SelectedText, &Image, &Handled"},
        {10, "ToolsRefreshed", ""},
        {11, "PasteSpecialRequest", "&Handled"},
        {12, "GetPictureURL", "&URL, &Handled"},
        {13, "OLEDragDrop", "DataObject, KeyState, x, y, &DropEffect"},
        {14, "OLEDragOver", "KeyState, x, y, &DropEffect"},
        {15, "OLEDragEnter", "DataObject, KeyState, x, y, &DropEffect"},
        {16, "OLEDragLeave", ""},
        {17, "ElementEvent", "EventId, EventInfo, &CancelDefault"},
        {18, "BeforeShowContextMenu", "MenuType, x, y, ObjectAtPoint, &CancelDefault"},
        {19, "BeforeShowContextMenuEx", "MenuType, x, y, ObjectAtPoint, &CancelDefault, &ShowDefaultContextMenu"},
        {36, "BeforeShowElementMenu", "Element, &CancelDefault"},
        {20, "SpellCheckComplete", "Cancelled, &CancelDefault"},
        {21, "FindReplaceComplete", "Cancelled, &CancelDefault"},
        {22, "EditableSpanChanged", "SPAN"},
        {23, "CellSelectionChanged", ""},
        {24, "NewStyleCreated", "SelectorText"},
        {25, "CreateNewStyleRequest", "&SelectorText, &CSSText, &StyleSheet, &FullStyleText, &Allow, &UpdateFile"},
        {26, "IsEditableStylesheet", "StyleSheet, &IsEditable, &IsDefault"},
        {27, "WidgetEditRequest", "WidgetElement"},
        {28, "WidgetDeleteRequest", "WidgetElement"},
        {29, "CreateNewStyleSheetRequest", "&StyleSheetFileName"},
        {30, "ShowTipRequest", "TipName, hWnd, hWnd2, TipObject"},
        {31, "HideAllTipsRequest", ""},
        {32, "FakeModalRequest", "frm, &Handled"},
        {33, "WidgetConvertRequest", "WidgetElement"},
        {34, "WidgetMakeStaticRequest", "WidgetElement"},
    };
    return rows;
}

const EventRow *findEvent(const QString &name)
{
    for (const EventRow &row : events()) {
        if (name.compare(QLatin1String(row.name), Qt::CaseInsensitive) == 0) return &row;
    }
    return nullptr;
}

const std::vector<Enumeration> &enumerations()
{
    static const std::vector<Enumeration> all{
        {"EditViewEnum", {{"hvVisualEdit", 0}, {"hvSourceEdit", 1}, {"hvPreview", 2}}},
        {"ContextToolBarStyleEnum",
         {{"ContextToolbarStyleOfficeXP", 0},
          {"ContextToolbarStyleOffice2003", 1},
          {"ContextToolbarStyleOffice2003NoThemes", 2}}},
        {"VellumBorderStyleEnum", {{"vellumBorderStyleNone", 0}, {"vellumBorderStyle3D", 1}}},
    };
    return all;
}

} // namespace platform::control
