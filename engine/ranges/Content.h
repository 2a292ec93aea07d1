// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/Position.h"
#include "engine/ranges/Rendering.h"

namespace ranges {

/// What stands on one side of a position, inline tags, comments and undisplayed nodes passed over.
struct Item
{
    enum class Kind : uint8_t {
        Character, ///< one character of a text, hidden by collapsing or not
        Break,     ///< a BR
        Object,    ///< an element that stands as one thing
        Edge,      ///< the start or end of a block
        End,       ///< the end of what is looked at
    };
    Kind kind = Kind::End;
    dom::Node *node = nullptr; ///< the text or the element
    uint32_t from = 0;         ///< Character: its units
    uint32_t to = 0;
    bool start = false; ///< Edge: the block's start tag
    bool block = false; ///< Object: it stands on lines of its own
    Position near;      ///< the place between the item and the position asked about
    Position far;       ///< the place behind the item

    bool isCharacter() const { return kind == Kind::Character; }
    bool isBreak() const { return kind == Kind::Break; }
    bool isObject() const { return kind == Kind::Object; }
    /// Whether a line ends here for certain.
    bool isEdge() const { return kind == Kind::Edge || kind == Kind::End || (kind == Kind::Object && block); }
    bool isLineEdge() const { return isEdge() || isBreak(); }
    dom::Text *text() const { return isCharacter() ? static_cast<dom::Text *>(node) : nullptr; }
    dom::Element *element() const { return isCharacter() || !node ? nullptr : node->asElement(); }
    /// The first unit of a character, 0 else.
    char16_t unit() const { return isCharacter() ? text()->data()[from].unicode() : u'\0'; }
};

inline constexpr char16_t noBreakSpace = 0xA0;
inline constexpr bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
}

/// Answers what a reader sees around positions, within one element.
class Content
{
public:
    /// `limit` isn't looked out of: an editing host, or BODY.
    Content(const Rendering &rendering, const dom::Element &limit) : mRendering(rendering), mLimit(&limit) {}
    const dom::Element &limit() const { return *mLimit; }
    const Rendering &rendering() const { return mRendering; }
    bool contains(const Position &p) const { return p && mLimit->contains(*p.node); }

    Item after(const Position &p) const { return look(p, true); }
    Item before(const Position &p) const { return look(p, false); }

    bool isBlock(const dom::Element &element) const { return mRendering.isBlock(element); }
    /// A block, or an inline element that holds one.
    bool holdsLines(const dom::Element &element) const;
    /// The innermost element around `p` that is a block or holds one.
    dom::Element *container(const Position &p) const;

    /// A character that is white space and may collapse.
    bool isCollapsible(const Item &item) const;
    /// Whether the collapsible character shows nothing: at a line's start or end, or behind another one.
    bool isHidden(const Item &item) const;
    /// The next item on that side that shows.
    Item visibleAfter(const Position &p) const;
    Item visibleBefore(const Position &p) const;
    /// Behind the collapsible characters that follow, however they show; and in front.
    Item pastBlanksAfter(const Position &p) const;
    Item pastBlanksBefore(const Position &p) const;
    /// Whether the BR ends a block's last line and so adds none.
    bool isFinalBreak(const Item &item) const;
    /// Whether nothing shows between two line edges around `p`.
    bool isLineEmpty(const Position &p) const;
    /// Whether `block` shows nothing at all: no text, break, object or cell, no item and
    /// no line held open.
    bool isEmpty(const dom::Element &block) const;
    /// Whether lines end at the node: a block, a rule, an inline element around blocks.
    bool delimitsLines(const dom::Node &node) const;
    /// Whether the caret can stand in it though it is empty: held open, a cell, an item, the limit itself.
    bool takesCaretEmpty(const dom::Element &block) const;

    /// The place at which a caret for `p` stands: out of objects and undisplayed nodes, out of white space that doesn't
    /// show, behind the character in front of it, else in front of the one behind it, else beside the object. Between
    /// blocks it is the start of the one that follows, else the end of the one before; where there is none either, `p`
    /// itself. What was outside of a field stays outside.
    /// A range's start looks forward only, and its end backward only; they stay where no text takes them.
    enum class Between : uint8_t { Caret, RangeStart, RangeEnd };
    Position normalised(const Position &p, Between between = Between::Caret) const;
    /// The innermost field around a node, within its block; null for none.
    dom::Element *fieldAround(dom::Node *node) const;
    /// The outermost widget around a node, if no part of it that is edited by itself (a field, a frame, one that says so)
    /// lies between; null for none.
    dom::Element *widgetAround(const dom::Node *node) const;
    /// Whether it is edited by itself within a widget.
    bool isPart(const dom::Element &element) const;
    /// The place of a character that stands in front of `told` or behind it, or beside the field that has it alone.
    Position besideText(const Item &item, bool inFront, const Position &told) const;
    /// The field around `p` that holds nothing: a caret stays in it.
    dom::Element *emptyField(const Position &p) const;
    /// A table, or a widget that is a block: a place beside it isn't in it, and where no text is beside it either the
    /// caret stands between blocks.
    bool standsAlone(const dom::Element &block) const;
    /// Whether a caret can stand there and be seen.
    bool isCaretPlace(const Position &p) const;

private:
    Item look(const Position &p, bool forward) const;
    bool isSkipped(const dom::Node &node) const;
    Position outOfObjects(const Position &p) const;
    Position settled(const Position &p, Between between) const;
    const Rendering &mRendering;
    Ref<const dom::Element> mLimit;
};

} // namespace ranges
