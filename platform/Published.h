// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What hosts reach late-bound beside the control itself: its children, by the numbers that their users know, and the
/// objects that they hand out.
namespace platform {

/// `HTMLEditor`, the design surface.
void publishSurface();
/// `CodeMax`, the source editor, with its `Range` and `Position`.
void publishSourceEditor();
/// `Collection`.
void publishCollection();

} // namespace platform
