// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Numbers by which the control names the members, commands and events of its outside components. They are part of what
/// hosts know: a command number may come from a host's toolbar.
namespace surfacenumbers {

/// Members of the design surface.
enum Member {
    memberDocument = 1,
    memberBaseURL = 3,
    memberNavigate = 4,
    memberQueryStatus = 5,
    memberUndo = 11,
    memberRedo = 12,
    memberDocumentText = 55,
    memberShowDetails = 100,
    memberShowBorders = 101,
    memberNumberedOption = 116,
    memberSelectedCells = 117,
    memberEditMode = 118,
    memberSelectedArea = 120,
    memberHotSpotTool = 121,
    memberExternalObject = 123,
    memberAutoSelectEditableSpans = 124,
    memberWindowHandle = 126,
    memberFocusAtLoadEnd = 127,
    memberTakeFocus = 300,
    memberHasFocus = 301,
    memberIsCommandEnabled = 1060,
    memberCommandMapping = 1063,
    memberExecCommand = 1065,
};

/// Commands of the engine, by the published numbers, with three of the surface's own.
enum Command {
    commandAny = -1,
    commandCopy = 15,
    commandCut = 16,
    commandDelete = 17,
    commandFontName = 18,
    commandFontSize = 19,
    commandPaste = 26,
    commandPrint = 27,
    commandRedo = 29,
    commandSelectAll = 31,
    commandUndo = 43,
    commandBackColor = 51,
    commandBold = 52,
    commandForeColor = 55,
    commandItalic = 56,
    commandJustifyCenter = 57,
    commandJustifyLeft = 59,
    commandJustifyRight = 60,
    commandUnderline = 63,
    commandPrintPreview = 2003,
    commandNumberedList = 2184,
    commandBulletedList = 2185,
    commandIndent = 2186,
    commandOutdent = 2187,
    commandRemoveFormat = 2230,
    commandFormatBlock = 2234,
    commandPasteRows = 50000,
    commandPasteCells = 50001,
    commandPasteNested = 50002,
};

/// Bits of a command's status.
constexpr int statusEnabled = 2;
constexpr int statusLatched = 4;

} // namespace surfacenumbers
