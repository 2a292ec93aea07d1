// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Numbers of the source editor's commands and of their failures.
namespace codemax {

inline constexpr int undo = 129;
inline constexpr int selectAll = 137;
inline constexpr int redo = 139;
inline constexpr int paste = 140;
inline constexpr int replaceAll = 171;
inline constexpr int findPrevious = 174;
inline constexpr int findNext = 176;
inline constexpr int deleteSelection = 195;
inline constexpr int cut = 197;
inline constexpr int copy = 198;
inline constexpr int regExpOn = 230;
inline constexpr int regExpOff = 231;
inline constexpr int wholeWordOn = 232;
inline constexpr int wholeWordOff = 233;
inline constexpr int knownState = 235;
inline constexpr int matchCaseOn = 236;
inline constexpr int matchCaseOff = 237;

/// What `ErrorState` tells and `CmdFailure` hands over.
inline constexpr int noError = 0;
inline constexpr int notFound = 1;
inline constexpr int badExpression = 2;
inline constexpr int isReadOnly = 3;

} // namespace codemax
