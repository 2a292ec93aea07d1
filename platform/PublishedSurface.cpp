// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/View.h"
#include "platform/Contract.h"
#include "platform/DispatchObject.h"
#include "platform/DispatchTable.h"
#include "platform/Interfaces.h"
#include "platform/Published.h"
#include "platform/SelectedCells.h"
#include "platform/SurfaceNumbers.h"

#include <algorithm>

namespace platform {

using namespace surfacenumbers;

namespace {

QString textOr(const Value &value)
{
    return value.isNothing() || value.isEmpty() ? QString() : value.toString();
}

bool isTrue(const Value &value)
{
    return !value.isNothing() && !value.isEmpty() && value.toBoolean();
}

surface::Navigation navigationOf(const Arguments &a)
{
    return {a[0].toString(), a[1].toInt(), textOr(a[2]), textOr(a[3]).toUtf8(), textOr(a[4])};
}

/// Its loads, options and focus.
void addState(InterfaceTable<HTMLEditor> &table)
{
    using S = HTMLEditor;
    table.read(memberDocument, "document", [](S &s) { return valueOf(static_cast<dom::Node *>(s.document())); })
        .property(
            memberBaseURL, "BaseURL", [](S &s) { return Value(s.baseUrl()); },
            [](S &s, const Value &v) { s.setBaseUrl(v.toString()); })
        .method(memberNavigate, "Navigate(URL, [Flags], [TargetFrameName], [PostData], [Headers])",
                [](S &s, Arguments &a) {
                    s.navigate(navigationOf(a));
                    return Value();
                })
        .write(memberDocumentText, "DocumentText", [](S &s, const Value &v) { s.setDocumentText(v.toString()); })
        .property(
            memberShowDetails, "ShowDetails", [](S &s) { return Value(s.showDetails()); },
            [](S &s, const Value &v) { s.setShowDetails(v.toBoolean()); })
        .property(
            memberShowBorders, "ShowBorders", [](S &s) { return Value(s.showBorders()); },
            [](S &s, const Value &v) { s.setShowBorders(v.toBoolean()); })
        .indexed(
            memberNumberedOption, "NumberedOption(Index)",
            [](S &s, Arguments &a) { return Value(s.numberedOption(a[0].toInt())); },
            [](S &s, Arguments &a, const Value &v) { s.setNumberedOption(a[0].toInt(), v.toBoolean()); })
        .property(
            memberEditMode, "EditMode", [](S &s) { return Value(int(s.editMode())); },
            [](S &s, const Value &v) { s.setEditMode(dom::EditMode(std::clamp(v.toInt(), 0, 2))); })
        .property(
            memberExternalObject, "ExternalObject", [](S &s) { return valueOf(s.externalObject()); },
            [](S &s, const Value &v) {
                const ObjectRef object = v.toObject();
                s.setExternalObject(object.isNothing() ? nullptr : object.qobject());
            })
        .property(
            memberAutoSelectEditableSpans, "AutoSelectEditableSpans",
            [](S &s) { return Value(s.autoSelectEditableSpans()); },
            [](S &s, const Value &v) { s.setAutoSelectEditableSpans(v.toBoolean()); })
        .read(memberWindowHandle, "hWnd", [](S &s) { return Value(quint64(s.winId())); })
        .method(memberFocusAtLoadEnd, "FocusAtLoadEnd()",
                [](S &s, Arguments &) {
                    s.takeFocusAtLoadEnd();
                    return Value();
                })
        .method(memberTakeFocus, "TakeFocus()",
                [](S &s, Arguments &) {
                    s.takeFocus();
                    return Value();
                })
        .read(memberHasFocus, "HasFocus", [](S &s) { return Value(s.hasFocus()); });
}

/// Its commands.
void addCommands(InterfaceTable<HTMLEditor> &table)
{
    using S = HTMLEditor;
    table
        .method(memberQueryStatus, "QueryStatus(Command)",
                [](S &s, Arguments &a) { return Value(s.queryStatus(a[0].toInt())); })
        .method(memberUndo, "Undo()", [](S &s, Arguments &) { return Value(s.undo()); })
        .method(memberRedo, "Redo()", [](S &s, Arguments &) { return Value(s.redo()); })
        .method(memberIsCommandEnabled, "IsCommandEnabled(Command)",
                [](S &s, Arguments &a) { return Value((s.queryStatus(a[0].toInt()) & statusEnabled) != 0); })
        .method(memberExecCommand, "ExecCommand(Command, [ShowUI], [Value])",
                [](S &s, Arguments &a) { return Value(s.execCommand(a[0].toInt(), isTrue(a[1]), textOr(a[2]))); });
    table.read(memberSelectedCells, "SelectedCells", [](S &s) { return selectedCellsValue(s); })
        .property(
            memberSelectedArea, "SelectedArea",
            [](S &s) { return valueOf(static_cast<dom::Node *>(s.view().selectedArea())); },
            [](S &s, const Value &v) { s.view().selectArea(elementOf(v)); })
        .property(
            memberHotSpotTool, "HotSpotTool", [](S &s) { return Value(s.hotSpotTool()); },
            [](S &s, const Value &v) { s.setHotSpotTool(std::abs(v.toInt())); }); // True is -1
    for (const auto &[id, name, command] : std::initializer_list<std::tuple<int, const char *, int>>{
             {6, "Cut()", commandCut},
             {7, "Copy()", commandCopy},
             {8, "Paste()", commandPaste},
             {9, "Delete()", commandDelete},
             {128, "PasteRows()", commandPasteRows},
             {129, "PasteCells()", commandPasteCells},
             {130, "PasteNested()", commandPasteNested}})
        table.method(id, name, [command = command](S &s, Arguments &) { return Value(s.execCommand(command)); });
    // What formats joins the surface with the engine's commands.
    for (const auto &[id, name] :
         std::initializer_list<std::pair<int, const char *>>{{13, "FillColor"},
                                                             {14, "ForeColor"},
                                                             {15, "Bold"},
                                                             {16, "Italic"},
                                                             {17, "Underline"},
                                                             {18, "Strikethrough"},
                                                             {19, "Superscript"},
                                                             {20, "Subscript"},
                                                             {21, "FontName"},
                                                             {22, "FontSize"},
                                                             {24, "BlockFormatName"},
                                                             {25, "BlockFormatNames"},
                                                             {26, "JustifyLeft"},
                                                             {27, "JustifyCenter"},
                                                             {28, "JustifyRight"},
                                                             {30, "Indent"},
                                                             {31, "Outdent"},
                                                             {32, "BulletedList"},
                                                             {33, "NumberedList"},
                                                             {memberCommandMapping, "CommandMapping"}})
        table.missing(id, name);
}

} // namespace

void publishSurface()
{
    auto interface = std::make_unique<Interface>(QStringLiteral("HTMLEditor"));
    InterfaceTable<HTMLEditor> table(*interface);
    addState(table);
    addCommands(table);
    publish(HTMLEditor::staticMetaObject, std::move(interface));
}

} // namespace platform
