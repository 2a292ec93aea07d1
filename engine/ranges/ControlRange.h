// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/SelectionObject.h"

namespace ranges {

/// Objects between which no text counts: images, tables, widgets. 0-based. What can't be done raises `base::Error`.
class ControlRange final : public base::RefCounted
{
public:
    explicit ControlRange(SelectionObject &page) : mPage(page.handle()) {}
    ControlRange(SelectionObject &page, std::vector<Ref<dom::Element>> elements)
        : mPage(page.handle()), mElements(std::move(elements))
    {
    }
    SelectionObject &page() const;
    /// Those that are still in the document.
    std::vector<Ref<dom::Element>> elements() const;
    uint32_t length() const { return uint32_t(elements().size()); }
    /// Null for an index that isn't there.
    dom::Element *item(int64_t index) const;
    /// Fails for what can't be selected as an object; an element that is in it already isn't taken twice.
    void add(dom::Element *element);
    void remove(int64_t index);
    void select() const;
    /// The first one, or what holds all of them.
    dom::Element *commonParent() const;

private:
    std::shared_ptr<SelectionObject *> mPage;
    std::vector<Ref<dom::Element>> mElements;
};

/// Whether an element can be selected as one thing: a table, an object, a part that can't be edited inside of one that
/// can, a positioned or sized block.
bool isSelectableObject(const dom::Element &element);

} // namespace ranges
