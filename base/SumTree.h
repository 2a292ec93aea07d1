// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace base {

/// An ordered sequence that knows sums over its prefixes: an intrusive, randomly balanced search tree by position. Each
/// item carries a hook with links and with the sum of what stands below it, so that "the sum before this item" and "the
/// item at which a sum is reached" take steps logarithmic in the number of items, and so does a change of one item's
/// value. It is what lets a parent with a hundred thousand children answer without walking them.
///
/// `Traits` gives:
///   `Item`, `Sum` (a value with `+=`, default-constructed as nothing),
///   `static Hook<Item, Sum> &hook(Item &)`, `static Sum value(const Item &)`.
/// The tree doesn't own its items.
template <class Item, class Sum> struct SumTreeHook {
    Item *up = nullptr;
    Item *left = nullptr;
    Item *right = nullptr;
    uint32_t priority = 0;
    uint32_t count = 1; // items in this subtree
    Sum sum{};          // sum of the values in this subtree
};

template <class Traits> class SumTree
{
public:
    using Item = typename Traits::Item;
    using Sum = typename Traits::Sum;

    bool empty() const { return mRoot == nullptr; }
    std::size_t size() const { return mRoot ? hook(mRoot).count : 0; }
    Sum total() const { return mRoot ? hook(mRoot).sum : Sum{}; }

    /// Inserts `item` in front of `before`, at the end where that is null.
    void insert(Item &item, Item *before)
    {
        auto &h = hook(&item);
        h = {};
        h.priority = nextPriority();
        h.sum = Traits::value(item);
        if (!mRoot) {
            mRoot = &item;
            return;
        }
        Item *parent;
        if (before && !hook(before).left) {
            parent = before;
            hook(parent).left = &item;
        } else {
            parent = before ? last(hook(before).left) : last(mRoot);
            hook(parent).right = &item;
        }
        h.up = parent;
        refreshUp(parent);
        while (h.up && hook(h.up).priority < h.priority) rotateUp(item);
    }

    void remove(Item &item)
    {
        auto &h = hook(&item);
        while (h.left || h.right) {
            Item *child = !h.left                                              ? h.right
                          : !h.right                                           ? h.left
                          : hook(h.left).priority > hook(h.right).priority ? h.left
                                                                               : h.right;
            rotateUp(*child);
        }
        if (h.up) {
            (hook(h.up).left == &item ? hook(h.up).left : hook(h.up).right) = nullptr;
            refreshUp(h.up);
        } else {
            mRoot = nullptr;
        }
        h = {};
    }

    void clear() { mRoot = nullptr; }

    /// Tells that the value of `item` has changed.
    void changed(Item &item) { refreshUp(&item); }

    std::size_t indexOf(const Item &item) const
    {
        std::size_t index = hook(item).left ? hook(hook(item).left).count : 0;
        for (const Item *at = &item; hook(*at).up; at = hook(*at).up) {
            const Item *up = hook(*at).up;
            if (hook(*up).right == at) index += 1 + (hook(*up).left ? hook(hook(*up).left).count : 0);
        }
        return index;
    }

    /// The sum of what stands in front of `item`.
    Sum sumBefore(const Item &item) const
    {
        Sum sum{};
        if (hook(item).left) sum += hook(hook(item).left).sum;
        for (const Item *at = &item; hook(*at).up; at = hook(*at).up) {
            const Item *up = hook(*at).up;
            if (hook(*up).right != at) continue;
            if (hook(*up).left) sum += hook(hook(*up).left).sum;
            sum += Traits::value(*up);
        }
        return sum;
    }

    /// The item at a 0-based index, null beyond the end.
    Item *at(std::size_t index) const
    {
        Item *at = mRoot;
        while (at) {
            const std::size_t left = hook(at).left ? hook(hook(at).left).count : 0;
            if (index < left) {
                at = hook(at).left;
            } else if (index == left) {
                return at;
            } else {
                index -= left + 1;
                at = hook(at).right;
            }
        }
        return nullptr;
    }

    /// The first item for which `reached(sum of all up to and including it)` holds; `before` gets the sum in front of it.
    /// `reached` must be monotonous. Null if it never holds.
    template <class Reached> Item *find(Reached reached, Sum *before = nullptr) const
    {
        Sum sum{};
        Item *at = mRoot;
        Item *found = nullptr;
        while (at) {
            Sum with = sum;
            if (hook(at).left) with += hook(hook(at).left).sum;
            Sum including = with;
            including += Traits::value(*at);
            if (reached(including)) {
                found = at;
                if (before) *before = with;
                at = hook(at).left;
            } else {
                sum = including;
                at = hook(at).right;
            }
        }
        return found;
    }

private:
    using Hook = SumTreeHook<Item, Sum>;
    static Hook &hook(Item *item) { return Traits::hook(*item); }
    static const Hook &hook(const Item &item) { return Traits::hook(const_cast<Item &>(item)); }

    static Item *last(Item *item)
    {
        while (hook(item).right) item = hook(item).right;
        return item;
    }

    static void refresh(Item *item)
    {
        Hook &h = hook(item);
        h.count = 1;
        Sum sum{};
        if (h.left) {
            h.count += hook(h.left).count;
            sum += hook(h.left).sum;
        }
        sum += Traits::value(*item);
        if (h.right) {
            h.count += hook(h.right).count;
            sum += hook(h.right).sum;
        }
        h.sum = sum;
    }

    static void refreshUp(Item *item)
    {
        for (; item; item = hook(item).up) refresh(item);
    }

    void rotateUp(Item &item)
    {
        Item *parent = hook(&item).up;
        Item *grand = hook(parent).up;
        if (hook(parent).left == &item) {
            hook(parent).left = hook(&item).right;
            if (hook(&item).right) hook(hook(&item).right).up = parent;
            hook(&item).right = parent;
        } else {
            hook(parent).right = hook(&item).left;
            if (hook(&item).left) hook(hook(&item).left).up = parent;
            hook(&item).left = parent;
        }
        hook(parent).up = &item;
        hook(&item).up = grand;
        if (!grand)
            mRoot = &item;
        else
            (hook(grand).left == parent ? hook(grand).left : hook(grand).right) = &item;
        refresh(parent);
        refresh(&item);
    }

    uint32_t nextPriority()
    {
        mSeed ^= mSeed << 13;
        mSeed ^= mSeed >> 17;
        mSeed ^= mSeed << 5;
        return mSeed;
    }

    Item *mRoot = nullptr;
    uint32_t mSeed = 2463534242u;
};

} // namespace base
