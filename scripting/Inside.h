// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace scripting {

class Interpreter;

/// A body's text without its marks, and the places in the parsed body where they stood: child indexes from the body, then
/// an offset in a text or among children.
struct MarkedText {
    struct Place {
        QList<uint32_t> path;
        uint32_t offset = 0;
    };
    QString text;
    std::optional<Place> anchor; ///< absent: where the focus is
    std::optional<Place> focus;  ///< absent: no mark at all
};
MarkedText takeMarks(const QString &marked);
/// Puts the selection of the document just loaded where the marks were.
void placeMarks(Interpreter &in, const MarkedText &marked);
/// The live body's text with marks where the selection stands.
QString markedBody(Interpreter &in);
/// `print log|undo|undo-count|state`; false for anything else.
bool printInside(Interpreter &in, const QString &what);

} // namespace scripting
