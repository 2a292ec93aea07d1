// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHashFunctions>
#include <QString>

namespace dom {

/// An interned name of an element, attribute or property: equal names are the same pointer, so that comparing and hashing
/// cost nothing. Atoms live as long as the process; names come from pages, whose distinct names are few.
class Atom
{
public:
    Atom() = default;
    Atom(QStringView text);
    Atom(const QString &text) : Atom(QStringView(text)) {}
    Atom(const char *ascii);

    const QString &text() const;
    bool isEmpty() const { return mEntry == nullptr; }
    explicit operator bool() const { return mEntry != nullptr; }
    friend bool operator==(Atom a, Atom b) { return a.mEntry == b.mEntry; }
    friend std::size_t qHash(Atom atom, std::size_t seed = 0) { return ::qHash(quintptr(atom.mEntry), seed); }
    std::size_t hash() const { return std::size_t(reinterpret_cast<quintptr>(mEntry) >> 4); }

    /// The atom of the text in lower case.
    static Atom lower(QStringView text);

private:
    const QString *mEntry = nullptr;
};

} // namespace dom

template <> struct std::hash<dom::Atom> {
    std::size_t operator()(dom::Atom atom) const { return atom.hash(); }
};
