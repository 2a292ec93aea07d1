// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/CharacterData.h"
#include "engine/dom/Element.h"

namespace ranges {

/// What a page means with an element beyond what HTML says of it.
enum class Role : uint8_t {
    None,
    Mark,         ///< it tells something of the text in it: no style that other text takes on
    Field,        ///< an inline place for a value: it stays when it is emptied, and takes text again
    InlineWidget, ///< a field that is selected, passed and taken away as one thing
    Frame,        ///< it stands around a part of the page: nothing is joined over its edge, nothing beside it takes it away
    Widget,       ///< a frame that is selected, passed and taken away as one thing
};

/// What positions need to know of how content is shown. The one of this folder goes by HTML alone; whoever computes
/// styles answers better.
class Rendering
{
public:
    virtual ~Rendering() = default;
    /// Whether lines end before and behind it.
    virtual bool isBlock(const dom::Element &element) const = 0;
    /// Whether blanks and line feeds of the text show one by one.
    virtual bool preservesSpace(const dom::Text &text) const = 0;
    /// Whether the node by itself takes part; asked from the outside inwards.
    virtual bool isDisplayed(const dom::Node &node) const = 0;
    /// Asked before a row of questions: brings what they go by up to date.
    virtual void refresh() const {}
    /// By HTML alone: a SPAN with a name, or one that says whether it can be edited, is a field.
    virtual Role roleOf(const dom::Element &element) const;
    bool isField(const dom::Element &element) const
    {
        const Role role = roleOf(element);
        return role == Role::Field || role == Role::InlineWidget;
    }
    bool isFrame(const dom::Element &element) const { return roleOf(element) >= Role::Frame; }
    bool isWidget(const dom::Element &element) const
    {
        const Role role = roleOf(element);
        return role == Role::InlineWidget || role == Role::Widget;
    }

    static const Rendering &byHtml();
};

/// An element that stands in the text as one thing and whose inside no caret enters: an image, a form control, a rule,
/// a part that must not be edited inside of one that may. Breaks are none.
bool isObject(const dom::Element &element);
bool isBreak(const dom::Node &node);
bool isCell(const dom::Element &element);
/// TABLE, its sections, rows and columns: no text can stand directly in them.
bool isTableStructure(const dom::Element &element);
/// UL, OL, DIR, MENU.
bool isList(const dom::Element &element);

/// The outermost element around `node` up to which everything may be edited, at most BODY; null where nothing may be.
/// Editing never reaches beyond it.
dom::Element *editingHost(const dom::Node &node);

} // namespace ranges
