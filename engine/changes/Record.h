// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/changes/Bytes.h"
#include "engine/dom/Node.h"

#include <vector>

/// A record is what one step did to the document, as bytes: compact, invertible, self-contained. Nodes are named by their
/// ids, so that it can be replayed on a fresh copy of the document, and give the same tree with the same ids.
///
///     record    = kind parts step? selection? primitive*
///     kind      = byte; below
///     parts     = bits: 1 a selection, 2 a step, 4 the step is played backward
///     step      = number                     of the step; an echo's is that of what it echoes
///     selection = saved saved                before, after
///     saved     = type, anchor id, anchor offset, focus id, focus offset; for type 3: a number, and so many ids
///     primitive = INSERT     parent before subtree
///               | REMOVE     parent before subtree
///               | MOVE       node oldParent oldBefore newParent newBefore
///               | TEXT       node offset removed inserted
///               | ATTRIBUTE  node name place had old has new
///               | HELD_OPEN  node now
///     subtree   = the nodes in document order, each with its id and the number of its children
namespace changes {

/// The first byte of a record. The kind follows the cause, not the primitive.
enum class Kind : uint8_t {
    TextIn = 0,    ///< a typed or committed character
    Write = 1,     ///< an assignment of the contract
    Command = 2,   ///< Enter, joining, cut, paste, drags, commands
    TextOut = 3,   ///< Backspace and Delete within one block
    Selection = 5, ///< the selection as it stood before the edit that follows
    Redone = 16,   ///< the echo of a record played forward
    Undone = 17,   ///< the echo of a record played backward
};

/// A selection by ids: the nodes and 0-based offsets of anchor and focus. Offsets in a text count UTF-16 units, elsewhere
/// children. Of selected objects the first is the anchor, the last the focus, and the others stand between.
struct SavedSelection {
    enum class Type : uint8_t { None, Text, Control };
    Type type = Type::None;
    dom::NodeId anchor = 0;
    uint32_t anchorOffset = 0;
    dom::NodeId focus = 0;
    uint32_t focusOffset = 0;
    std::vector<dom::NodeId> between = {};
    friend bool operator==(const SavedSelection &, const SavedSelection &) = default;
};

/// A step of this run of the program, and which way it went. A step, all its echoes and theirs have one number.
struct StepName {
    uint64_t number = 0; ///< 0 is none
    bool inverse = false;
};

enum class Op : uint8_t { Insert = 1, Remove, Move, Text, Attribute, HeldOpen };

struct Primitive {
    Op op{};
    dom::NodeId node = 0;   ///< MOVE, TEXT, ATTRIBUTE, HELD_OPEN; the top node's of a subtree
    dom::NodeId parent = 0; ///< where the node goes, or where it was
    dom::NodeId before = 0;
    dom::NodeId oldParent = 0; ///< MOVE
    dom::NodeId oldBefore = 0;
    uint32_t offset = 0; ///< TEXT; the place of an ATTRIBUTE among the others
    bool had = false;    ///< ATTRIBUTE: there was a value
    bool has = false;    ///< ATTRIBUTE: there is one now; HELD_OPEN: the mark now
    QString name;
    QString oldText;
    QString newText;
    QByteArray subtree;

    void write(Writer &to) const;
    static Primitive read(Reader &from);
    Primitive inverse() const;
};

struct Record {
    Kind kind = Kind::Write;
    StepName step;
    bool hasSelection = false;
    SavedSelection before;
    SavedSelection after;
    std::vector<Primitive> primitives;

    static QByteArray selectionRecord(const SavedSelection &selection);
    /// False for bytes that are no record.
    static bool read(const QByteArray &bytes, Record &record);
    static void writeHead(Writer &to, Kind kind, StepName step, const SavedSelection *before,
                          const SavedSelection *after);
};

/// A detached subtree as bytes, and back. `revive` gives each node the id it had; where a node of that id still lives
/// (somebody holds it) it is that object, set to what the bytes hold. Null for damaged bytes.
QByteArray writeSubtree(const dom::Node &top);
base::Ref<dom::Node> revive(dom::Document &document, const QByteArray &subtree);

} // namespace changes
