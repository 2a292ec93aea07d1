// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/dom/EventObject.h"
#include "engine/dom/HtmlElements.h"
#include "engine/surface/HTMLEditor.h"

namespace ranges {
class ControlRange;
class SelectionObject;
class TextRange;
} // namespace ranges

/// The engine's classes under the names that the control and its hosts know them by. One concrete class, two names: what
/// the control relies on of each is told in the class's own header.
using IHTMLDocument2 = dom::Document;
using IHTMLDocument3 = dom::Document;
using IHTMLElement = dom::Element;
using IHTMLElement2 = dom::Element;
using IHTMLElement3 = dom::Element;
using IHTMLElement4 = dom::Element;
using IHTMLUniqueName = dom::Element;
using IHTMLDOMNode = dom::Node;
using IHTMLDOMAttribute = dom::AttributeNode;
using IHTMLElementCollection = dom::ElementCollection;
using IHTMLEventObj = dom::EventObject;
using IHTMLTxtRange = ranges::TextRange;
using IHTMLControlRange = ranges::ControlRange;
using HTMLEditor = surface::HTMLEditor;
using ElementRole = ranges::Role;

/// Ids of element events, as the surface raises them and hosts receive them.
namespace elementevents {
inline constexpr int mouseDown = -605;
inline constexpr int mouseUp = -607;
inline constexpr int mouseOver = int(0x80010008u);
inline constexpr int mouseOut = int(0x80010009u);
inline constexpr int keyUp = -604;
inline constexpr int keyDown = -602;
} // namespace elementevents
