// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/layout/LayoutTree.h"

namespace layout {

/// What kind of box an element's style asks for.
struct BoxDecision {
    BoxKind kind = BoxKind::Inline;
    bool inlineLevel = true, floating = false, positioned = false, formattingRoot = false, clips = false, listItem = false;
};
BoxDecision decideBox(const dom::Element &element, const css::ComputedStyle &style);
bool isHidden(const dom::Element &element, const css::ComputedStyle &style);
bool isContents(const css::ComputedStyle &style);

/// Null where the element generates nothing there.
StyleRef generatedStyle(LayoutTree &tree, dom::Element &element, Pseudo pseudo);
/// What it shows there. `showsCounters`: it may change when something in front does.
QString generatedText(LayoutTree &tree, dom::Element &element, Pseudo pseudo, const css::ComputedStyle &style);
bool showsCounters(const css::ComputedStyle &style);
/// The box with its text and images as children.
Box *generatedBox(LayoutTree &tree, dom::Element &element, Pseudo pseudo, const StyleRef &style);

/// An inline box that shows an image.
BlockBox *generatedPicture(LayoutTree &tree, const QString &url, const StyleRef &style);

/// Gives a list item its marker, outside as data, inside as a first inline child.
void makeMarker(LayoutTree &tree, BlockBox &item);
/// Items that come or go in front of this one change its number: it is counted when it is shown. Outside markers only.
void refreshMarker(LayoutTree &tree, BlockBox &item);
/// The style of the item's marker: its own, or the item's.
const css::ComputedStyle &markerStyle(const BlockBox &item, const MarkerData &marker);
/// Whether the marker is a disc, a circle or a square, which is drawn and not written.
bool showsBullet(const BlockBox &item, const MarkerData &marker);
/// A counter's value in a list style: "iv", "c", "12".
QString counterText(int value, css::ListStyleType type);
bool isBulletType(css::ListStyleType type);
bool hasGeneratedContent(LayoutTree &tree, dom::Element &element);

/// Content of replaced elements: which element shows what, and how big it is by itself.
bool isReplacedElement(const dom::Element &element);

} // namespace layout
