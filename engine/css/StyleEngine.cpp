// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleEngine.h"

#include "engine/css/Hints.h"
#include "engine/css/UserAgentSheet.h"
#include "engine/dom/Names.h"

#include <algorithm>

/// Matching, computing and sharing styles. What a change touches is worked out in StyleInvalidation.cpp.
namespace css {

using dom::Element;
namespace names = dom::names;

namespace {

constexpr size_t maxShared = 8192;
constexpr qsizetype maxBlocks = 4096;

const Element *parentOf(const Element &element)
{
    return element.parentElement();
}

} // namespace

StyleEngine::StyleEngine(dom::Document &document) : mDocument(&document)
{
    document.addObserver(this);
}

StyleEngine::~StyleEngine()
{
    mDocument->removeObserver(this);
    for (dom::Node *node = mDocument->next(mDocument.get()); node; node = node->next(mDocument.get()))
        node->styleSlot = nullptr;
}

StyleEngine::Slot &StyleEngine::newSlot(Element &element)
{
    Slot *slot;
    if (mFreeSlots.empty()) {
        slot = &mSlots.emplace_back();
    } else {
        slot = mFreeSlots.back();
        mFreeSlots.pop_back();
    }
    element.styleSlot = slot;
    return *slot;
}

void StyleEngine::dropSlot(dom::Node &node)
{
    Slot *slot = slotOf(node);
    if (!slot) return;
    *slot = {};
    mFreeSlots.push_back(slot);
    node.styleSlot = nullptr;
}

void StyleEngine::dropSlots(dom::Node &top)
{
    for (dom::Node *node = &top; node;) {
        // Below an element that was never asked for, none was.
        const bool had = node->styleSlot != nullptr;
        if (had) dropSlot(*node);
        node = had ? node->next(&top) : node->nextSkippingChildren(&top);
        if (!had && node == nullptr) break;
    }
}

const RuleSet &StyleEngine::userAgentRules() const
{
    const auto make = [](bool quirks) {
        auto *set = new RuleSet(quirks);
        static std::vector<base::Ref<StyleSheet>> *const kept = new std::vector<base::Ref<StyleSheet>>;
        const auto addText = [&](const QString &text) {
            kept->push_back(StyleSheet::parse(text, ValueMode::Strict));
            for (const Rule &rule : kept->back()->rules)
                if (rule.style) set->add(*rule.style);
        };
        addText(userAgentSheetText());
        if (quirks) addText(quirksSheetText());
        return set;
    };
    static const RuleSet *const standard = make(false);
    if (!mDocument->isQuirks()) return *standard;
    static const RuleSet *const quirks = make(true);
    return *quirks;
}

void StyleEngine::addRules(const std::vector<Rule> &rules, RuleSet &set)
{
    for (const Rule &rule : rules) {
        if (rule.style) set.add(*rule.style);
        if (rule.kind != Rule::Kind::Media) continue;
        if (rule.media.asksForSize()) set.features().asksForSize = true;
        if (rule.media.suits(mMedium)) addRules(rule.rules, set); // nesting is bounded by the parser
    }
}

void StyleEngine::rebuildRules()
{
    mSheetsChanged = false;
    mAllDirty = true;
    mShared.clear();
    mUsedViewport = mUsedAttribute = false;
    auto set = std::make_unique<RuleSet>(mDocument->isQuirks());
    if (mSource)
        for (const ActiveSheet &sheet : mSource()) {
            if (sheet.media.asksForSize()) set->features().asksForSize = true;
            if (sheet.media.suits(mMedium)) addRules(sheet.sheet->rules, *set);
        }
    mAuthor = std::move(set);
}

base::Ref<DeclarationBlock> StyleEngine::inlineBlock(const QString &text)
{
    const auto found = mBlocks.constFind(text);
    if (found != mBlocks.constEnd()) return *found;
    if (mBlocks.size() >= maxBlocks) mBlocks.clear();
    auto block = DeclarationBlock::parse(text, valueMode());
    mBlocks.insert(text, block);
    return block;
}

StyleEngine::Blocks StyleEngine::matchedBlocks(const Element &element, Pseudo pseudo)
{
    Blocks blocks;
    const SiblingPlaces::Use use(element.isConnected() ? &mPlaces : nullptr);
    const auto collect = [&](const RuleSet &set) {
        std::vector<std::pair<uint64_t, const DeclarationBlock *>> found;
        set.collect(element, pseudo, [&found](const RuleSet::Entry &entry) {
            found.emplace_back((uint64_t(entry.selector->specificity) << 32) | entry.order, entry.block);
        });
        std::sort(found.begin(), found.end());
        const DeclarationBlock *last = nullptr;
        for (const auto &[weight, block] : found) {
            if (block != last && !block->isEmpty()) blocks.emplace_back(const_cast<DeclarationBlock *>(block));
            last = block;
        }
    };
    const RuleSet &agent = userAgentRules();
    if (pseudo == Pseudo::None || agent.hasPseudo(pseudo)) collect(agent);
    if (pseudo == Pseudo::None) {
        const QString hints = presentationalHints(element);
        if (!hints.isEmpty()) blocks.push_back(inlineBlock(hints));
    }
    if (mAuthor && (pseudo == Pseudo::None || mAuthor->hasPseudo(pseudo))) collect(*mAuthor);
    if (pseudo != Pseudo::None) return blocks;
    static const dom::Atom style("style");
    if (const QString *text = element.attribute(style); text && !text->isEmpty()) blocks.push_back(inlineBlock(*text));
    if (runtimeBlock)
        if (auto block = runtimeBlock(element)) blocks.push_back(block);
    return blocks;
}

base::Ref<const ComputedStyle> StyleEngine::build(const Element &element, Pseudo pseudo, const ComputedStyle &parent,
                                                  const Blocks &blocks, bool *shareable, bool *inheritedExplicitly)
{
    BuildContext context{parent, mMedium, &element, mDocument->base()};
    context.quirks = mDocument->isQuirks();
    const Element *root = mDocument->documentElement();
    context.isRoot =
        pseudo == Pseudo::None && element.parentNode() && element.parentNode()->type() == dom::NodeType::Document;
    if (root && slotOf(*root) && slotOf(*root)->style) context.rootFontSize = slotOf(*root)->style->font().size;
    QRgb bodyColor = 0;
    if (context.quirks && pseudo == Pseudo::None && element.is(names::table)) {
        const Element *body = mDocument->body();
        const Slot *slot = body ? slotOf(*body) : nullptr;
        if (slot && slot->style) {
            bodyColor = slot->style->color();
            context.quirkColor = &bodyColor;
        }
    }
    StyleBuilder builder(context);
    for (const auto &block : blocks)
        builder.add(*block, StyleBuilder::Weight::Normal);
    for (const auto &block : blocks)
        builder.add(*block, StyleBuilder::Weight::Important);
    base::Ref<const ComputedStyle> style = builder.build();
    mUsedViewport = mUsedViewport || builder.usedViewport();
    mUsedAttribute = mUsedAttribute || builder.usedAttribute();
    *shareable = !builder.usedAttribute() && !context.isRoot && !context.quirkColor;
    *inheritedExplicitly = builder.inheritedExplicitly();
    return style;
}

base::Ref<const ComputedStyle> StyleEngine::compute(const Element &element, Pseudo pseudo, const ComputedStyle &parent,
                                                    bool *inheritedExplicitly)
{
    ++mComputations;
    Blocks blocks = matchedBlocks(element, pseudo);
    if (pseudo != Pseudo::None && blocks.empty()) return {};
    Key key{&parent, reinterpret_cast<const void *>(quintptr(pseudo))};
    for (const auto &block : blocks)
        key.push_back(block.get());
    const bool tableInQuirks = pseudo == Pseudo::None && mDocument->isQuirks() && element.is(names::table);
    const bool mayShare = !tableInQuirks && parentOf(element);
    if (mayShare) {
        const auto found = mShared.find(key);
        if (found != mShared.end()) {
            *inheritedExplicitly = found->second.inheritedExplicitly;
            return found->second.style;
        }
    }
    bool shareable = false;
    auto style = build(element, pseudo, parent, blocks, &shareable, inheritedExplicitly);
    if (mayShare && shareable) {
        if (mShared.size() >= maxShared) mShared.clear();
        mShared.emplace(std::move(key), Shared{style, base::Ref<const ComputedStyle>(&parent), std::move(blocks),
                                               *inheritedExplicitly});
    }
    return style;
}

const ComputedStyle &StyleEngine::computed(Element &element)
{
    if (const Slot *slot = slotOf(element); slot && slot->style) return *slot->style;
    // From the topmost that has none downwards; no recursion, whatever the depth.
    std::vector<Element *> chain;
    for (Element *at = &element; at; at = at->parentElement()) {
        if (const Slot *slot = slotOf(*at); slot && slot->style) break;
        chain.push_back(at);
    }
    const ComputedStyle *result = nullptr;
    for (size_t i = chain.size(); i-- > 0;) {
        Element &at = *chain[i];
        Element *parent = at.parentElement();
        const Slot *above = parent ? slotOf(*parent) : nullptr;
        bool inheritedExplicitly = false;
        auto style = compute(at, Pseudo::None, above ? *above->style : ComputedStyle::initial(), &inheritedExplicitly);
        if (inheritedExplicitly && parent) slotOf(*parent)->childrenInheritMore = true;
        Slot &slot = newSlot(at);
        slot.style = style;
        result = style.get();
    }
    return *result;
}

const ComputedStyle &StyleEngine::styleFor(Element &element)
{
    if (!mUpdating && needsUpdate()) update();
    if (!element.isConnected()) {
        // Nobody tells us of changes out there, so nothing is kept but for as long as the next question.
        dropSlots(const_cast<dom::Node &>(element.root()));
        const ComputedStyle &style = computed(element);
        static thread_local base::Ref<const ComputedStyle> last;
        last = base::Ref<const ComputedStyle>(&style);
        dropSlots(const_cast<dom::Node &>(element.root()));
        return *last;
    }
    return computed(element);
}

const ComputedStyle *StyleEngine::styleFor(Element &element, Pseudo pseudo)
{
    if (pseudo == Pseudo::None) return &styleFor(element);
    if (!element.isConnected()) return nullptr;
    const ComputedStyle &own = styleFor(element);
    Slot &slot = *slotOf(element);
    for (const PseudoStyle &known : slot.pseudos)
        if (known.pseudo == pseudo) return known.style.get();
    const bool nobody = !userAgentRules().hasPseudo(pseudo) && !(mAuthor && mAuthor->hasPseudo(pseudo));
    if (nobody) return nullptr;
    bool inheritedExplicitly = false;
    auto style = compute(element, pseudo, own, &inheritedExplicitly);
    const bool generated = pseudo == Pseudo::Before || pseudo == Pseudo::After;
    if (style &&
        ((generated && !style->rare().hasContent) || (pseudo != Pseudo::Marker && style->rare().contentNone) || style->display() == Display::None))
        style = {};
    slot.pseudos.push_back({pseudo, style});
    return style.get();
}

base::Ref<const ComputedStyle> StyleEngine::anonymousStyle(const ComputedStyle &parent, Display display)
{
    static const void *const marker = &maxShared;
    Key key{&parent, marker, reinterpret_cast<const void *>(quintptr(display))};
    const auto found = mShared.find(key);
    if (found != mShared.end()) return found->second.style;
    auto style = ComputedStyle::inheriting(parent);
    if (display != Display::Inline) style->writeBox().display = display;
    if (mShared.size() >= maxShared) mShared.clear();
    mShared.emplace(std::move(key), Shared{style, base::Ref<const ComputedStyle>(&parent), {}, false});
    return style;
}

} // namespace css
