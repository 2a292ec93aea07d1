// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Enumerations that hosts know.

/// Views of the document.
enum class EditViewEnum : int { hvVisualEdit = 0, hvSourceEdit = 1, hvPreview = 2 };
enum class ContextToolBarStyleEnum : int {
    ContextToolbarStyleOfficeXP = 0,
    ContextToolbarStyleOffice2003 = 1,
    ContextToolbarStyleOffice2003NoThemes = 2
};
enum class VellumBorderStyleEnum : int { vellumBorderStyleNone = 0, vellumBorderStyle3D = 1 };
