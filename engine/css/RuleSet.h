// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/StyleSheet.h"

#include <QHash>
#include <array>
#include <optional>

namespace css {

/// Which elements a change may touch, seen from the element that changes: flags.
namespace reach {
inline constexpr uint8_t self = 1;
inline constexpr uint8_t descendants = 2;
inline constexpr uint8_t siblings = 4;           ///< those behind it
inline constexpr uint8_t siblingDescendants = 8; ///< and what is below those
} // namespace reach

/// What the selectors of the sheets ask for, so that a change that nobody asks for costs nothing.
struct Features
{
    QHash<QString, uint8_t> classes, ids; ///< in lower case where the page is in quirks mode
    QHash<dom::Atom, uint8_t> attributes;
    std::array<uint8_t, 32> structural{}; ///< by PseudoClass: of those that depend on siblings or children
    uint8_t besides = 0;                  ///< reach of a sibling that comes or goes
    int adjacent = 0;                     ///< how many siblings `+` looks back at most
    bool anySibling = false;              ///< whether `~` occurs
    bool asksForSize = false;             ///< media queries for the viewport

    void add(const ComplexSelector &selector, bool quirks);

private:
    void addCompound(const CompoundSelector &compound, uint8_t reach, bool quirks, int depth);
    void addSimple(const SimpleSelector &simple, uint8_t reach, bool quirks, int depth);
};

/// The rules of some sheets, found by what the subject of their selectors must have.
class RuleSet
{
public:
    struct Entry
    {
        const ComplexSelector *selector;
        const DeclarationBlock *block;
        uint32_t order;
        /// Two things that some ancestor must have, hashed; 0 for none. Most rules of a big sheet fall at these.
        uint32_t above = 0, alsoAbove = 0;
    };
    /// What an element's ancestors have: names, ids and classes, as bits that may coincide.
    class Ancestors
    {
    public:
        Ancestors(const dom::Element &element, bool quirks);
        bool mayHave(uint32_t hash) const { return !hash || mBits[hash % size / 64] >> (hash % 64) & 1; }

    private:
        void add(uint32_t hash) { mBits[hash % size / 64] |= uint64_t(1) << (hash % 64); }
        static constexpr uint32_t size = 4096;
        std::array<uint64_t, size / 64> mBits{};
    };

    explicit RuleSet(bool quirks) : mQuirks(quirks) {}
    void add(const StyleRule &rule);
    /// Calls `found(entry)` for each rule that matches the element (the pseudo-element of it), in no order.
    template <class Found> void collect(const dom::Element &element, Pseudo pseudo, Found found) const
    {
        forBuckets(element, [&](const std::vector<Entry> &bucket) {
            std::optional<Ancestors> ancestors;
            if (bucket.size() > manyRules) ancestors.emplace(element, mQuirks);
            for (const Entry &entry : bucket) {
                if (ancestors && !(ancestors->mayHave(entry.above) && ancestors->mayHave(entry.alsoAbove))) continue;
                if (entry.selector->pseudo == pseudo && matches(*entry.selector, element, mQuirks)) found(entry);
            }
        });
    }
    const Features &features() const { return mFeatures; }
    Features &features() { return mFeatures; }
    bool hasPseudo(Pseudo pseudo) const { return mPseudos & (1u << unsigned(pseudo)); }

private:
    void forBuckets(const dom::Element &element, const std::function<void(const std::vector<Entry> &)> &visit) const;
    QString key(const QString &text) const { return mQuirks ? text.toLower() : text; }

    static constexpr size_t manyRules = 64; ///< in a bucket, before it pays to look at the ancestors first
    static uint32_t hashOf(const SimpleSelector &simple, bool quirks);

    bool mQuirks;
    uint32_t mOrder = 0;
    uint32_t mPseudos = 0;
    QHash<QString, std::vector<Entry>> mById, mByClass;
    QHash<dom::Atom, std::vector<Entry>> mByTag;
    std::vector<Entry> mOthers;
    std::vector<base::Ref<DeclarationBlock>> mKept; // blocks and selectors stay as they were matched
    std::vector<base::Ref<const StyleRule>> mRules;
    Features mFeatures;
};

} // namespace css
