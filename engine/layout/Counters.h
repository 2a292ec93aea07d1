// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Element.h"
#include "engine/layout/Box.h"

#include <QHash>

namespace layout {

class LayoutTree;

/// The values of counters, and the numbers of list items, where they are asked for. Both hang on everything in front, so
/// what was found for one place is remembered: asking in document order costs one walk in all. `forget` when the tree or a
/// style changes.
class Counters
{
public:
    void forget();
    /// Outermost scope first; one value at least.
    std::vector<int> valuesAt(LayoutTree &tree, const dom::Element &element, Pseudo pseudo, const QString &name);
    /// The number of a list item in its list.
    int ordinalOf(const dom::Element &item);

private:
    enum class Stage : uint8_t { Entered, Before, After };
    struct Scope {
        const dom::Node *parent; ///< it ends with this one
        int value;
    };
    struct Opened {
        QString name;
        const dom::Node *parent;
    };
    void begin(LayoutTree &tree);
    bool advance(LayoutTree &tree);
    bool enterFirst(LayoutTree &tree, dom::Node *from);
    void apply(const css::ComputedStyle &style, const dom::Node *parent);
    void applyPseudo(LayoutTree &tree, Pseudo pseudo);
    void leave(const dom::Element &element);

    dom::Element *mAt = nullptr;
    Stage mStage = Stage::Entered;
    QHash<QString, std::vector<Scope>> mScopes;
    std::vector<Opened> mOpened; // in the order in which they end, from the back
    struct Item {
        const dom::Element *item;
        int ordinal;
    };
    QHash<const dom::Node *, Item> mItems; // the last one asked for, by list
};

/// Whether the style's element or box counts something.
bool counts(const css::ComputedStyle &style);

} // namespace layout
