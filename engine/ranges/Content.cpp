// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/ranges/Content.h"

#include "engine/dom/Names.h"

namespace ranges {

using namespace dom;

/// Texts have no style that could hide them: only what details hold may not show.
static bool isHiddenText(const Node &node, const Rendering &rendering)
{
    const Element *parent = node.isText() ? node.parentElement() : nullptr;
    return parent && parent->is(names::details) && !rendering.isDisplayed(node);
}

bool Content::isSkipped(const Node &node) const
{
    if (node.isText()) return static_cast<const Text &>(node).length() == 0 || isHiddenText(node, mRendering);
    return !mRendering.isDisplayed(node);
}

namespace {

Item characterIn(Text &text, uint32_t at, bool forward)
{
    const QString &data = text.data();
    Item item;
    item.kind = Item::Kind::Character;
    item.node = &text;
    item.from = item.to = at;
    if (forward) {
        ++item.to;
        if (data[at].isHighSurrogate() && item.to < text.length() && data[item.to].isLowSurrogate()) ++item.to;
    } else {
        --item.from;
        if (data[item.from].isLowSurrogate() && item.from > 0 && data[item.from - 1].isHighSurrogate()) --item.from;
    }
    item.near = {&text, forward ? item.from : item.to};
    item.far = {&text, forward ? item.to : item.from};
    return item;
}

} // namespace

Item Content::look(const Position &p, bool forward) const
{
    Node *parent, *child;
    const auto step = [forward](Node *node) { return forward ? node->nextSibling() : node->previousSibling(); };
    if (Text *text = p.text()) {
        if (forward ? p.offset < text->length() : p.offset > 0) return characterIn(*text, p.offset, forward);
        parent = text->parentNode();
        child = step(text);
    } else if (p.node->isElement()) {
        parent = p.node.get();
        child = forward ? p.childAfter() : p.childBefore();
    } else {
        parent = p.node->parentNode();
        child = step(p.node.get());
    }
    Item item;
    for (;;) {
        if (!child) { // out of the parent
            Element *left = parent ? parent->asElement() : nullptr;
            item.near = parent ? (forward ? Position::endOf(*parent) : Position::startOf(*parent)) : p;
            if (!left || left == mLimit.get() || !left->parentNode()) {
                item.far = item.near;
                return item;
            }
            if (isBlock(*left)) {
                item.kind = Item::Kind::Edge;
                item.node = left;
                item.start = !forward;
                item.far = forward ? Position::after(*left) : Position::before(*left);
                return item;
            }
            child = step(left);
            parent = left->parentNode();
            continue;
        }
        if (isSkipped(*child)) {
            child = step(child);
            continue;
        }
        if (child->isText()) {
            auto &text = static_cast<Text &>(*child);
            return characterIn(text, forward ? 0 : text.length(), forward);
        }
        Element &element = *child->asElement();
        const bool object = isObject(element);
        const bool block = isBlock(element);
        if (isBreak(element) || object || block) {
            item.kind = object ? Item::Kind::Object : block ? Item::Kind::Edge : Item::Kind::Break;
            item.node = &element;
            item.block = object && block;
            item.start = forward;
            item.near = forward ? Position::before(element) : Position::after(element);
            if (item.kind == Item::Kind::Edge)
                item.far = forward ? Position::startOf(element) : Position::endOf(element);
            else
                item.far = forward ? Position::after(element) : Position::before(element);
            return item;
        }
        parent = &element;
        child = forward ? element.firstChild() : element.lastChild();
    }
}

bool Content::holdsLines(const Element &element) const
{
    if (isObject(element)) return false;
    if (isBlock(element) || &element == mLimit.get()) return true;
    for (const Node *node = element.firstChild(); node; node = node->next(&element))
        if (const Element *inner = node->asElement(); inner && isBlock(*inner)) return true;
    return false;
}

Element *Content::container(const Position &p) const
{
    Element *at = p.element();
    while (at && !holdsLines(*at) && at->parentElement())
        at = at->parentElement();
    return at;
}

bool Content::isCollapsible(const Item &item) const
{
    return item.isCharacter() && isBlank(item.unit()) && !mRendering.preservesSpace(*item.text());
}

bool Content::isHidden(const Item &item) const
{
    if (!isCollapsible(item)) return false;
    const Item previous = before({item.node, item.from});
    if (previous.isLineEdge() || isCollapsible(previous)) return true;
    return pastBlanksAfter({item.node, item.to}).isLineEdge();
}

Item Content::pastBlanksAfter(const Position &p) const
{
    Item item = after(p);
    while (isCollapsible(item))
        item = after(item.far);
    return item;
}

Item Content::pastBlanksBefore(const Position &p) const
{
    Item item = before(p);
    while (isCollapsible(item))
        item = before(item.far);
    return item;
}

Item Content::visibleAfter(const Position &p) const
{
    const Item item = after(p);
    if (!isCollapsible(item)) return item;
    if (!isHidden(item)) return item;
    const Item past = pastBlanksAfter(p); // what follows a hidden blank in its run is hidden too
    return past;
}

Item Content::visibleBefore(const Position &p) const
{
    Item item = before(p);
    if (!isCollapsible(item)) return item;
    // Of a run only the first shows, if at all.
    Item first = item;
    for (item = before(first.far); isCollapsible(item); item = before(first.far))
        first = item;
    return isHidden(first) ? item : first;
}

bool Content::isFinalBreak(const Item &item) const
{
    return item.isBreak() && pastBlanksAfter(Position::after(*item.node)).isEdge();
}

bool Content::isLineEmpty(const Position &p) const
{
    const Item next = pastBlanksAfter(p);
    return pastBlanksBefore(p).isLineEdge() && (next.isEdge() || isFinalBreak(next));
}

bool Content::isEmpty(const Element &block) const
{
    for (const Node *node = block.firstChild(); node;) {
        if (!mRendering.isDisplayed(*node)) {
            node = node->nextSkippingChildren(&block);
            continue;
        }
        if (const Element *element = node->asElement()) {
            if (isBreak(*element) || isObject(*element) || isCell(*element)) return false;
            if (element->isHeldOpen() || element->is(names::li)) return false;
        } else if (node->isText()) {
            const auto &text = static_cast<const Text &>(*node);
            for (const QChar c : text.data())
                if (!isBlank(c.unicode()) || mRendering.preservesSpace(text)) return false;
        }
        node = node->next(&block);
    }
    return true;
}

bool Content::takesCaretEmpty(const Element &block) const
{
    return block.isHeldOpen() || isCell(block) || block.is(names::li) || &block == mLimit.get();
}

Position Content::outOfObjects(const Position &p) const
{
    Position result = p.clipped();
    if (result.node->isComment()) result = Position::before(*result.node);
    for (Node *at = result.node.get(); at && at != mLimit.get(); at = at->parentNode()) {
        const Element *element = at->asElement();
        if ((element && (isObject(*element) || isBreak(*element) || !mRendering.isDisplayed(*element))) ||
            isHiddenText(*at, mRendering))
            result = Position::before(*at);
    }
    return result;
}

Element *Content::fieldAround(Node *node) const
{
    for (Node *at = node; at && at != mLimit.get(); at = at->parentNode()) {
        Element *element = at->asElement();
        if (!element) continue;
        if (isBlock(*element)) return nullptr;
        if (mRendering.isField(*element)) return element;
    }
    return nullptr;
}

Element *Content::emptyField(const Position &p) const
{
    // An inline element without content is as good where somebody put the caret into it.
    if (Element *inside = p.node->asElement(); inside && !inside->hasChildNodes() && !inside->isVoid() &&
                                               inside != &limit() && !isObject(*inside) && !isBlock(*inside))
        return inside;
    Element *field = p.node->isElement() && p.node->hasChildNodes() ? nullptr : fieldAround(p.node.get());
    for (const Node *node = field ? field->firstChild() : nullptr; node; node = node->next(field))
        if (node->isText() ? static_cast<const Text *>(node)->length() > 0
                           : node->isElement() && (isObject(*node->asElement()) || isBreak(*node)))
            return nullptr;
    return field;
}

bool Content::isPart(const Element &element) const
{
    const Role role = mRendering.roleOf(element);
    if (role == Role::Field || role == Role::Frame) return true;
    const QString *own = element.attribute(names::contenteditable);
    return own && own->compare(u"false", Qt::CaseInsensitive) != 0;
}

Element *Content::widgetAround(const Node *node) const
{
    Element *widget = nullptr;
    for (const Node *at = node; at && at != mLimit.get(); at = at->parentNode()) {
        const Element *element = at->asElement();
        if (!element) continue;
        if (mRendering.isWidget(*element))
            widget = const_cast<Element *>(element);
        else if (isPart(*element))
            break;
    }
    return widget;
}

Position Content::besideText(const Item &item, bool inFront, const Position &told) const
{
    Element *field = item.node == told.node ? nullptr : fieldAround(item.node);
    if (!field || field->contains(*told.node)) return item.near;
    while (Element *outer = fieldAround(field->parentNode())) {
        if (outer->contains(*told.node)) break;
        field = outer;
    }
    return inFront ? Position::after(*field) : Position::before(*field);
}

Position Content::settled(const Position &p, Between between) const
{
    const Item previous = before(p), next = after(p);
    if (previous.isCharacter() && next.isCharacter() && previous.node != next.node) {
        // Where one of them is a field's, the place belongs to the side on which it was told.
        const Element *here = fieldAround(p.node.get());
        if (fieldAround(previous.node) != here && fieldAround(next.node) == here) return next.near;
    }
    const bool isCaret = between == Between::Caret;
    if (previous.isCharacter()) return isCaret ? besideText(previous, true, p) : previous.near;
    if (next.isCharacter()) return isCaret ? besideText(next, false, p) : next.near;
    if (previous.isBreak() || (previous.isObject() && !previous.block)) return previous.near;
    if (next.isBreak() || (next.isObject() && !next.block)) return next.near;
    return p;
}

bool Content::delimitsLines(const Node &node) const
{
    const Element *element = node.asElement();
    return element && mRendering.isDisplayed(*element) && (isBlock(*element) || holdsLines(*element));
}

Position Content::normalised(const Position &given, Between between) const
{
    Position p = outOfObjects(given);
    if (const Element *field = emptyField(p)) return Position::startOf(const_cast<Element &>(*field));
    if (between != Between::Caret && p.node->isElement() && isTableStructure(*p.node->asElement())) return p; // rows
    const Item next = after(p), previous = before(p);
    if (isCollapsible(next) && isHidden(next)) {
        const Item past = pastBlanksAfter(p);
        const Item back = pastBlanksBefore(p);
        if (!past.isLineEdge()) {
            p = past.near;
        } else if (!back.isLineEdge()) {
            // In front of the whole run, of which nothing shows at a line's end.
            return between == Between::Caret ? besideText(back, true, p) : back.near;
        } else {
            if (!past.isEdge() || !back.isEdge()) return settled(past.isEdge() ? back.near : past.near, between);
            p = back.near;
            if (p.element() && isEmpty(*container(p)) && takesCaretEmpty(*container(p))) return p;
        }
    } else if (isCollapsible(previous) && (next.isLineEdge())) {
        const Item back = pastBlanksBefore(p);
        if (!back.isLineEdge()) return between == Between::Caret ? besideText(back, true, p) : back.near;
    }
    const Item right = pastBlanksAfter(p), left = pastBlanksBefore(p);
    if (!right.isEdge() || !left.isEdge()) return settled(p, between);
    // Between two edges: an empty block, or a place between blocks.
    Element *around = container(p);
    if (around && isEmpty(*around) && !isTableStructure(*around)) return {around, p.node == around ? p.offset : 0};
    for (const bool forward : {true, false}) {
        if (between == (forward ? Between::RangeEnd : Between::RangeStart)) continue;
        Item item = forward ? right : left;
        while (item.kind == Item::Kind::Edge && item.start == forward) {
            Element &block = *item.element();
            if (standsAlone(block)) break;
            if (isEmpty(block)) {
                if (takesCaretEmpty(block)) return Position::startOf(block);
                item.far = forward ? Position::after(block) : Position::before(block); // nobody sees it
            }
            item = forward ? pastBlanksAfter(item.far) : pastBlanksBefore(item.far);
            if (!item.isEdge()) return settled(item.near, between);
        }
    }
    return p;
}

bool Content::standsAlone(const Element &block) const
{
    return block.is(names::table) || mRendering.roleOf(block) == Role::Widget;
}

bool Content::isCaretPlace(const Position &p) const
{
    if (!contains(p)) return false;
    const Element *at = p.element();
    if (!at || (isTableStructure(*at) && p.node->isElement())) return false;
    return normalised(p) == p;
}

} // namespace ranges
