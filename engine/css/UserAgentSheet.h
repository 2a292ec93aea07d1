// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace css {

/// How HTML looks where nobody says otherwise (CSS 2.1, appendix D; HTML standard, "Rendering", with the figures that
/// browsers agree on). No selector in it depends on siblings, so that an insertion restyles no neighbour.
QString userAgentSheetText();
/// What is laid over it for pages in quirks mode.
QString quirksSheetText();

} // namespace css
