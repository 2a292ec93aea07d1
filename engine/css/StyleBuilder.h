// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/ComputedStyle.h"
#include "engine/css/Declarations.h"
#include "engine/css/Media.h"
#include "engine/dom/Element.h"

#include <array>
#include <deque>

namespace css {

/// What a style depends on besides the declarations.
struct BuildContext
{
    const ComputedStyle &parent; ///< initial values above the root
    const Medium &medium;
    const dom::Element *element; ///< for attr(); the originating one of a pseudo-element
    QString baseURL;
    double rootFontSize = 16;
    bool quirks = false;
    bool isRoot = false;
    const QRgb *quirkColor = nullptr; ///< the colour of a table in quirks mode that doesn't say one
};

/// Makes a computed style of the declarations that apply: they are added from the weakest to the strongest.
class StyleBuilder
{
public:
    enum class Weight : uint8_t { Normal, Important };

    explicit StyleBuilder(const BuildContext &context);
    /// Takes the declarations of that weight.
    void add(const DeclarationBlock &block, Weight weight);
    base::Ref<ComputedStyle> build();

    // What the result was found to depend on, after `build`.
    bool usedViewport() const { return mUsedViewport; }
    bool usedAttribute() const { return mUsedAttribute; }
    bool inheritedExplicitly() const { return mInheritedExplicitly; } ///< a property that isn't inherited by itself

private:
    struct Winner
    {
        const Value *value = nullptr;
        const DeclarationBlock *block = nullptr;
        uint32_t order = 0; ///< the later of two declarations has the larger one
    };

    const Winner &winner(PropertyId id) const { return mWinners[size_t(id)]; }
    bool isDeclared(PropertyId id) const { return winner(id).value != nullptr; }
    void resolveVariables();
    void resolveDirections();
    QString substitute(const QString &text, int depth, bool &ok);
    bool resolveOne(PropertyId id, Winner &winner);

    void applyFont();
    void applyFontFamily();
    void applyFontSize();
    void applyFontSizeWord(int word);
    void applyFontWeight();
    void applyLineHeight();
    void apply(PropertyId id);
    void copyField(PropertyId id, const ComputedStyle &from);
    bool setWord(PropertyId id, int word);
    bool setLength(PropertyId id, const Value &value);
    void setField(PropertyId id, const Value &value);
    void setTextField(PropertyId id, const Value &value);
    void setRareField(PropertyId id, const Value &value);
    bool setGridField(PropertyId id, const Value &value);
    bool copyGridField(PropertyId id, const ComputedStyle &from);
    TrackBreadth trackBreadth(const Value &value);
    TrackSize trackSize(const Value &value);
    TrackList trackList(const Value &value);
    std::vector<TrackSize> autoTracks(const Value &value);
    void setContent(const Value &value);
    void setTextAlign(const Value &value);
    void applyBackground();
    void applyLayer(PropertyId id, BackgroundLayer &layer, size_t index);
    void finishColors();
    void finishBorders();
    void finishBox();

    const ComputedStyle *sourceOf(PropertyId id, const Value &value);
    double pixels(const Value &value, double fontSize);
    Length length(const Value &value);
    Length length(const Value &value, double fontSize);
    Length comparison(const Value &value, double fontSize);
    float fixed(const Value &value);
    QRgb color(const Value &value);
    Image image(const Value &value, const DeclarationBlock *block);
    std::vector<Shadow> shadows(const Value &value);
    static bool isShadowList(PropertyId id);

    const BuildContext &mContext;
    base::Ref<ComputedStyle> mStyle;
    std::array<Winner, propertyCount> mWinners{};
    std::vector<uint8_t> mSet; ///< which have a winner, in the order in which they were first met
    std::vector<std::pair<QString, const Value *>> mCustomDeclared;
    std::deque<Value> mResolved;
    uint32_t mOrder = 0;
    bool mUsedViewport = false;
    bool mUsedAttribute = false;
    bool mInheritedExplicitly = false;
};

} // namespace css
