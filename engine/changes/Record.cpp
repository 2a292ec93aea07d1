// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/changes/Record.h"

#include "engine/dom/CharacterData.h"
#include "engine/dom/Document.h"
#include "engine/dom/RawTree.h"

namespace changes {

using namespace dom;

void Primitive::write(Writer &to) const
{
    to.byte(uint8_t(op));
    switch (op) {
    case Op::Insert:
    case Op::Remove:
        to.number(parent);
        to.number(before);
        to.number(uint64_t(subtree.size()));
        to.append(subtree);
        break;
    case Op::Move:
        to.number(node);
        to.number(oldParent);
        to.number(oldBefore);
        to.number(parent);
        to.number(before);
        break;
    case Op::Text:
        to.number(node);
        to.number(offset);
        to.string(oldText);
        to.string(newText);
        break;
    case Op::Attribute:
        to.number(node);
        to.string(name);
        to.number(offset);
        to.byte(uint8_t((had ? 1 : 0) | (has ? 2 : 0)));
        if (had) to.string(oldText);
        if (has) to.string(newText);
        break;
    case Op::HeldOpen:
        to.number(node);
        to.byte(has);
        break;
    }
}

Primitive Primitive::read(Reader &from)
{
    Primitive p;
    p.op = Op(from.byte());
    switch (p.op) {
    case Op::Insert:
    case Op::Remove: {
        p.parent = from.number32();
        p.before = from.number32();
        p.subtree = from.bytes(from.number());
        break;
    }
    case Op::Move:
        p.node = from.number32();
        p.oldParent = from.number32();
        p.oldBefore = from.number32();
        p.parent = from.number32();
        p.before = from.number32();
        break;
    case Op::Text:
        p.node = from.number32();
        p.offset = from.number32();
        p.oldText = from.string();
        p.newText = from.string();
        break;
    case Op::Attribute: {
        p.node = from.number32();
        p.name = from.string();
        p.offset = from.number32();
        const uint8_t flags = from.byte();
        p.had = flags & 1;
        p.has = flags & 2;
        if (p.had) p.oldText = from.string();
        if (p.has) p.newText = from.string();
        break;
    }
    case Op::HeldOpen:
        p.node = from.number32();
        p.has = from.byte() != 0;
        break;
    default: from.fail();
    }
    return p;
}

Primitive Primitive::inverse() const
{
    Primitive p = *this;
    switch (op) {
    case Op::Insert: p.op = Op::Remove; break;
    case Op::Remove: p.op = Op::Insert; break;
    case Op::Move:
        std::swap(p.parent, p.oldParent);
        std::swap(p.before, p.oldBefore);
        break;
    case Op::Text: std::swap(p.oldText, p.newText); break;
    case Op::Attribute:
        std::swap(p.had, p.has);
        std::swap(p.oldText, p.newText);
        break;
    case Op::HeldOpen: p.has = !p.has; break;
    }
    return p;
}

// A type of its own for more than two objects leaves the others as short as they were.
constexpr uint8_t manyObjects = 3;

static void writeSelection(Writer &to, const SavedSelection &s)
{
    to.byte(s.between.empty() ? uint8_t(s.type) : manyObjects);
    to.number(s.anchor);
    to.number(s.anchorOffset);
    to.number(s.focus);
    to.number(s.focusOffset);
    if (s.between.empty()) return;
    to.number(s.between.size());
    for (const NodeId id : s.between) to.number(id);
}

static SavedSelection readSelection(Reader &from)
{
    SavedSelection s;
    const uint8_t type = from.byte();
    s.type = SavedSelection::Type(std::min<uint8_t>(type, 2));
    s.anchor = from.number32();
    s.anchorOffset = from.number32();
    s.focus = from.number32();
    s.focusOffset = from.number32();
    if (type != manyObjects) return s;
    for (uint64_t left = from.number(); left > 0 && !from.failed(); --left) s.between.push_back(from.number32());
    return s;
}

namespace {
enum Part : uint8_t { SelectionPart = 1, StepPart = 2, InversePart = 4 };
}

void Record::writeHead(Writer &to, Kind kind, StepName step, const SavedSelection *before, const SavedSelection *after)
{
    to.byte(uint8_t(kind));
    const bool selects = before && after;
    to.byte(uint8_t((selects ? SelectionPart : 0) | (step.number ? StepPart : 0) | (step.inverse ? InversePart : 0)));
    if (step.number) to.number(step.number);
    if (!selects) return;
    writeSelection(to, *before);
    writeSelection(to, *after);
}

QByteArray Record::selectionRecord(const SavedSelection &selection)
{
    Writer writer;
    writeHead(writer, Kind::Selection, {}, &selection, &selection);
    return writer.take();
}

bool Record::read(const QByteArray &bytes, Record &record)
{
    Reader reader(bytes);
    record = {};
    record.kind = Kind(reader.byte());
    const uint8_t parts = reader.byte();
    record.hasSelection = parts & SelectionPart;
    record.step.inverse = parts & InversePart;
    if (parts & StepPart) record.step.number = reader.number();
    if (record.hasSelection) {
        record.before = readSelection(reader);
        record.after = readSelection(reader);
    }
    while (!reader.atEnd()) record.primitives.push_back(Primitive::read(reader));
    return !reader.failed();
}

// Subtrees

QByteArray writeSubtree(const Node &top)
{
    Writer writer;
    for (const Node *node = &top; node; node = node->next(&top)) {
        writer.byte(uint8_t(node->type()));
        writer.number(node->id());
        switch (node->type()) {
        case NodeType::Element: {
            const auto &element = static_cast<const Element &>(*node);
            writer.byte(uint8_t(uint8_t(element.space()) | (element.isHeldOpen() ? 0x10 : 0)));
            writer.string(element.name().text());
            writer.number(element.attributeList().size());
            for (const Attribute &attribute : element.attributeList()) {
                writer.string(attribute.name.text());
                writer.string(attribute.value);
            }
            writer.number(element.childCount());
            break;
        }
        case NodeType::Comment: writer.byte(uint8_t(static_cast<const Comment &>(*node).form())); [[fallthrough]];
        case NodeType::Text: writer.string(static_cast<const CharacterData &>(*node).data()); break;
        default: break;
        }
    }
    return writer.take();
}

namespace {

/// A node that somebody still holds comes back as itself.
Node *survivor(Document &document, NodeId id, NodeType type)
{
    Node *node = document.nodeById(id);
    return node && !node->isConnected() && node->type() == type ? node : nullptr;
}

void settleId(Document &document, Node &node, NodeId id)
{
    // An id in use stays where it is: a damaged record mustn't take it.
    constexpr NodeId reach = 1u << 26;
    if (id == 0 || document.nodeById(id) || id > document.lastId() + reach) return;
    RawTree::setId(node, id);
}

void detach(Node &node)
{
    if (node.parentNode()) RawTree::remove(node);
}

Ref<Node> readElement(Document &document, Reader &reader, NodeId id)
{
    const uint8_t flags = reader.byte();
    const Atom name(reader.string());
    Ref<Node> keep(survivor(document, id, NodeType::Element));
    Ref<Element> element(keep ? keep->asElement() : nullptr);
    if (element && (element->name() != name || element->space() != Namespace(flags & 0xf))) element = nullptr;
    if (element) {
        detach(*element);
        while (Node *child = element->lastChild()) RawTree::remove(*child);
        while (!element->attributeList().empty())
            RawTree::setAttribute(*element, element->attributeList().back().name, nullptr);
    } else {
        element = base::make<Element>(document, name, Namespace(std::min(flags & 0xf, 2)));
        settleId(document, *element, id);
    }
    const uint64_t attributes = reader.number();
    for (uint64_t i = 0; i < attributes && !reader.failed(); ++i) {
        const Atom attribute(reader.string());
        const QString value = reader.string();
        RawTree::setAttribute(*element, attribute, &value);
    }
    RawTree::setHeldOpen(*element, flags & 0x10);
    return element;
}

template <class Kind, class... More>
Ref<Node> readCharacterData(Document &document, NodeId id, NodeType type, const QString &data, More... more)
{
    if (Node *node = survivor(document, id, type)) {
        Ref<Node> keep(node);
        detach(*node);
        auto &text = static_cast<CharacterData &>(*node);
        RawTree::replaceText(text, 0, text.length(), data);
        return keep;
    }
    auto node = base::make<Kind>(document, data, more...);
    settleId(document, *node, id);
    return node;
}

} // namespace

Ref<Node> revive(Document &document, const QByteArray &subtree)
{
    struct Level {
        Element *parent;
        uint64_t left;
    };
    Reader reader(subtree);
    Ref<Node> top;
    std::vector<Level> levels;
    do {
        const auto type = NodeType(reader.byte());
        const NodeId id = reader.number32();
        Ref<Node> node;
        uint64_t children = 0;
        if (type == NodeType::Element) {
            node = readElement(document, reader, id);
            children = reader.number();
        } else if (type == NodeType::Text) {
            node = readCharacterData<Text>(document, id, type, reader.string());
        } else if (type == NodeType::Comment) {
            const auto form = Comment::Form(std::min<uint8_t>(reader.byte(), 1));
            node = readCharacterData<Comment>(document, id, type, reader.string(), form);
        }
        if (!node || reader.failed()) return nullptr;
        if (!top) top = node;
        if (!levels.empty()) {
            RawTree::append(*levels.back().parent, *node);
            --levels.back().left;
        }
        if (children > 0) levels.push_back({node->asElement(), children});
        while (!levels.empty() && levels.back().left == 0) levels.pop_back();
    } while (!levels.empty() && !reader.failed());
    return reader.failed() ? nullptr : top;
}

} // namespace changes
