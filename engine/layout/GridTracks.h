// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/GridValues.h"
#include "engine/layout/GridPlacement.h"
#include "engine/layout/Unit.h"

namespace layout {

/// What an item asks of the tracks that it covers: outer sizes.
struct GridContribution {
    GridSpan span;
    Unit minimum, minContent, maxContent;
};

/// The sizes of the tracks of one axis: CSS Grid Layout 1, section 11.
class GridTracks
{
public:
    enum class Mode : uint8_t { Definite, MinContent, MaxContent };

    /// `vanished`, where it isn't empty, tells of tracks that take neither room nor a gap.
    void reset(std::vector<css::TrackSize> sizes, std::vector<bool> vanished, Unit gap);
    /// `room` is that of the content where it is definite; `least` is what it will be at least. `stretch`: automatic
    /// tracks take what is left.
    void size(const std::vector<GridContribution> &items, std::optional<Unit> room, Mode mode, bool stretch, Unit least = {});
    /// Places the tracks in that room.
    void align(css::Alignment align, Unit room);
    /// Sum of the tracks and gaps, before they are aligned.
    Unit total() const;
    int count() const { return int(mTracks.size()); }
    bool isFlexible(int track) const { return mTracks[std::size_t(track)].size.max.kind == css::TrackBreadth::Kind::Fraction; }
    bool hasAutomaticMinimum(int track) const { return mTracks[std::size_t(track)].minKind == Kind::Auto; }
    /// The upper bound of the tracks, if all of them have one.
    std::optional<Unit> fixedLimit(const GridSpan &span) const;
    Unit start(const GridSpan &span) const;
    Unit extent(const GridSpan &span) const;

private:
    enum class Kind : uint8_t { Fixed, Auto, MinContent, MaxContent, Flexible, FitContent };
    struct Track {
        css::TrackSize size;
        Kind minKind = Kind::Auto, maxKind = Kind::Auto;
        Unit base, limit, fitLimit;
        Unit at, planned, increase;
        bool infinite = false, growable = false, frozen = false, vanished = false;
        bool intrinsicMin() const { return minKind != Kind::Fixed; }
        bool intrinsicMax() const { return maxKind != Kind::Fixed && maxKind != Kind::Flexible; }
        bool flexible() const { return maxKind == Kind::Flexible; }
    };
    using Picks = std::vector<Track *>;

    void initialize(std::optional<Unit> room);
    void resolveSingle(const GridContribution &item);
    void resolveSpanning(const std::vector<const GridContribution *> &items, bool flexible);
    void growBases(const std::vector<const GridContribution *> &items, bool flexible, Unit GridContribution::*size, int phase);
    void growLimits(const std::vector<const GridContribution *> &items, Unit GridContribution::*size, bool maxContent);
    void share(Unit space, Picks &tracks, Picks &beyond, bool limits);
    void maximize(Unit free);
    void expandFlexible(const std::vector<GridContribution> &items, std::optional<Unit> room, Unit least);
    double fractionFor(const Picks &tracks, Unit room) const;
    void stretchAutomatic(Unit free);
    Unit gapsIn(const GridSpan &span) const;
    Unit basesOf(const GridSpan &span, bool limits = false) const;
    void raiseLimits();

    std::vector<Track> mTracks;
    Unit mGap;
    Mode mMode = Mode::Definite;
};

} // namespace layout
