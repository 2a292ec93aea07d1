// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/GridTracks.h"

#include "engine/layout/ItemLayout.h"

namespace layout {

using Breadth = css::TrackBreadth::Kind;

void GridTracks::reset(std::vector<css::TrackSize> sizes, std::vector<bool> vanished, Unit gap)
{
    mTracks.clear();
    mGap = gap;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        Track track;
        track.size = sizes[i];
        track.vanished = i < vanished.size() && vanished[i];
        mTracks.push_back(track);
    }
    initialize({});
}

// 11.4
void GridTracks::initialize(std::optional<Unit> room)
{
    const auto fixed = [&](const css::Length &length) { return length.isFixed() || (length.hasPercent() && room); };
    const auto resolved = [&](const css::Length &length) { return std::max(Unit(), Unit::from(length.resolve(room ? room->toDouble() : 0))); };
    const auto kindOf = [&](const css::TrackBreadth &breadth) {
        switch (breadth.kind) {
        case Breadth::MinContent: return Kind::MinContent;
        case Breadth::MaxContent: return Kind::MaxContent;
        case Breadth::Fraction: return Kind::Flexible;
        case Breadth::Length: return fixed(breadth.length) ? Kind::Fixed : Kind::Auto; // per cents of nothing known
        default: return Kind::Auto;
        }
    };
    for (Track &track : mTracks) {
        track.base = track.limit = track.planned = track.increase = {};
        track.infinite = track.growable = track.frozen = false;
        if (track.vanished) {
            track.minKind = track.maxKind = Kind::Fixed;
            continue;
        }
        track.minKind = kindOf(track.size.min);
        track.maxKind = kindOf(track.size.max);
        if (track.size.fitContent) {
            track.maxKind = fixed(track.size.limit) ? Kind::FitContent : Kind::MaxContent;
            track.fitLimit = resolved(track.size.limit);
        }
        if (track.minKind == Kind::Fixed) track.base = resolved(track.size.min.length);
        if (track.maxKind == Kind::Fixed)
            track.limit = std::max(resolved(track.size.max.length), track.base);
        else
            track.infinite = true;
    }
}

Unit GridTracks::gapsIn(const GridSpan &span) const
{
    int shown = 0;
    for (int i = span.start; i < span.end; ++i) shown += !mTracks[std::size_t(i)].vanished;
    return mGap * std::max(0, shown - 1);
}

Unit GridTracks::basesOf(const GridSpan &span, bool limits) const
{
    Unit sum;
    for (int i = span.start; i < span.end; ++i) {
        const Track &track = mTracks[std::size_t(i)];
        sum += limits && !track.infinite ? track.limit : track.base;
    }
    return sum;
}

std::optional<Unit> GridTracks::fixedLimit(const GridSpan &span) const
{
    for (int i = span.start; i < span.end; ++i)
        if (mTracks[std::size_t(i)].maxKind != Kind::Fixed) return {};
    return basesOf(span, true) + gapsIn(span);
}

Unit GridTracks::total() const
{
    const GridSpan all{0, count()};
    return basesOf(all) + gapsIn(all);
}

void GridTracks::raiseLimits()
{
    for (Track &track : mTracks)
        if (!track.infinite) track.limit = std::max(track.limit, track.base);
}

// 11.5, 2: an item of one track.
void GridTracks::resolveSingle(const GridContribution &item)
{
    Track &track = mTracks[std::size_t(item.span.start)];
    switch (track.minKind) {
    case Kind::MinContent: track.base = std::max(track.base, item.minContent); break;
    case Kind::MaxContent: track.base = std::max(track.base, item.maxContent); break;
    case Kind::Auto: {
        Unit least = item.minimum;
        if (mMode != Mode::Definite) { // under a content constraint: the contribution of that kind, within a fixed maximum
            least = mMode == Mode::MinContent ? item.minContent : item.maxContent;
            if (track.maxKind == Kind::Fixed) least = std::min(least, track.limit);
            least = std::max(least, item.minimum);
        }
        track.base = std::max(track.base, least);
        break;
    }
    default: break;
    }
    Unit limit;
    switch (track.maxKind) {
    case Kind::MinContent: limit = item.minContent; break;
    case Kind::Auto:
    case Kind::MaxContent: limit = item.maxContent; break;
    case Kind::FitContent: limit = std::max(std::min(item.maxContent, track.fitLimit), item.minimum); break;
    default: return;
    }
    track.limit = track.infinite ? limit : std::max(track.limit, limit);
    track.infinite = false;
}

// 11.5.1: equal shares until a track is at its limit, then beyond the limits of `beyond`.
void GridTracks::share(Unit space, Picks &tracks, Picks &beyond, bool limits)
{
    for (Track *track : tracks) {
        track->increase = {};
        track->frozen = false;
    }
    for (Track *track : beyond) track->increase = {};
    Picks open = tracks;
    while (space.raw > 0 && !open.empty()) {
        const int32_t count = int32_t(open.size());
        Unit given;
        Picks next;
        for (int32_t i = 0; i < count; ++i) {
            Track &track = *open[std::size_t(i)];
            Unit part = Unit::fromRaw((space.raw - given.raw) / (count - i));
            const bool bounded = limits ? !track.infinite && !track.growable : !track.infinite;
            if (bounded) {
                Unit most = (limits ? track.limit : track.limit - track.base) - track.increase;
                if (limits) most = {};
                part = std::min(part, std::max(Unit(), most));
            }
            if (!limits && track.maxKind == Kind::FitContent)
                part = std::min(part, std::max(Unit(), track.fitLimit - track.base - track.increase));
            track.increase += part;
            given += part;
            const bool full = bounded && (limits || track.base + track.increase >= track.limit);
            if (!full) next.push_back(&track);
        }
        space -= given;
        if (!given.raw) break;
        open = std::move(next);
    }
    if (space.raw > 0 && !beyond.empty()) {
        const int32_t count = int32_t(beyond.size());
        for (int32_t i = 0; i < count; ++i) {
            const Unit part = Unit::fromRaw(space.raw / (count - i));
            beyond[std::size_t(i)]->increase += part;
            space -= part;
        }
    }
    for (Track *track : tracks) track->planned = std::max(track->planned, track->increase);
    for (Track *track : beyond) track->planned = std::max(track->planned, track->increase);
}

// 11.5, 3, first three steps. Phase 0: intrinsic minimums; 1: content-based; 2: max-content.
void GridTracks::growBases(const std::vector<const GridContribution *> &items, bool flexible, Unit GridContribution::*size, int phase)
{
    for (Track &track : mTracks) track.planned = {};
    for (const GridContribution *item : items) {
        Picks affected, beyond;
        for (int i = item->span.start; i < item->span.end; ++i) {
            Track &track = mTracks[std::size_t(i)];
            if (flexible && !track.flexible()) continue;
            const bool content = track.minKind == Kind::MinContent || track.minKind == Kind::MaxContent ||
                                 (mMode == Mode::MinContent && track.minKind == Kind::Auto);
            const bool most = track.minKind == Kind::MaxContent || (mMode == Mode::MaxContent && track.minKind == Kind::Auto);
            if (!(phase == 0 ? track.intrinsicMin() : phase == 1 ? content || most : most)) continue;
            affected.push_back(&track);
            // Who goes beyond the limits: first those whose upper bound is content, too.
            const bool open = phase == 2 ? track.maxKind == Kind::MaxContent || track.maxKind == Kind::Auto : track.intrinsicMax();
            if (open) beyond.push_back(&track);
        }
        if (affected.empty()) continue;
        if (beyond.empty()) beyond = affected;
        const Unit space = item->*size - basesOf(item->span) - gapsIn(item->span);
        if (space.raw <= 0) continue;
        if (flexible) { // in proportion to the fractions
            double sum = 0;
            for (const Track *track : affected) sum += double(track->size.max.fraction);
            for (Track *track : affected) {
                const double part = sum > 0 ? double(track->size.max.fraction) / sum : 1.0 / double(affected.size());
                track->planned = std::max(track->planned, Unit::fromRaw(std::llround(space.raw * part)));
            }
            continue;
        }
        share(space, affected, beyond, false);
    }
    for (Track &track : mTracks) track.base += track.planned;
    raiseLimits();
}

// 11.5, 3, last two steps.
void GridTracks::growLimits(const std::vector<const GridContribution *> &items, Unit GridContribution::*size, bool maxContent)
{
    for (Track &track : mTracks) track.planned = {};
    std::vector<bool> touched(mTracks.size());
    for (const GridContribution *item : items) {
        Picks affected;
        for (int i = item->span.start; i < item->span.end; ++i) {
            Track &track = mTracks[std::size_t(i)];
            if (!track.intrinsicMax() || (maxContent && track.maxKind == Kind::MinContent)) continue;
            affected.push_back(&track);
            touched[std::size_t(i)] = true;
        }
        const Unit space = item->*size - basesOf(item->span, true) - gapsIn(item->span);
        if (affected.empty() || space.raw <= 0) continue;
        Picks beyond = affected;
        share(space, affected, beyond, true);
    }
    for (std::size_t i = 0; i < mTracks.size(); ++i) {
        Track &track = mTracks[i];
        if (!touched[i]) continue;
        const Unit from = track.infinite ? track.base : track.limit;
        Unit to = from + track.planned;
        if (track.maxKind == Kind::FitContent) to = std::max(std::min(to, track.fitLimit), track.base);
        // Between the two steps such a track may grow without a limit.
        track.growable = track.infinite && !maxContent;
        track.limit = to;
        track.infinite = false;
    }
}

void GridTracks::resolveSpanning(const std::vector<const GridContribution *> &items, bool flexible)
{
    if (items.empty()) return;
    growBases(items, flexible, mMode == Mode::MinContent ? &GridContribution::minContent : &GridContribution::minimum, 0);
    growBases(items, flexible, &GridContribution::minContent, 1);
    growBases(items, flexible, &GridContribution::maxContent, 2);
    if (flexible) return;
    growLimits(items, &GridContribution::minContent, false);
    growLimits(items, &GridContribution::maxContent, true);
    for (Track &track : mTracks) track.growable = false;
}

void GridTracks::size(const std::vector<GridContribution> &items, std::optional<Unit> room, Mode mode, bool stretch, Unit least)
{
    mMode = mode;
    initialize(room);
    const auto crossesFlexible = [&](const GridContribution &item) {
        for (int i = item.span.start; i < item.span.end; ++i)
            if (mTracks[std::size_t(i)].flexible()) return true;
        return false;
    };
    std::vector<const GridContribution *> spanning, flexible;
    for (const GridContribution &item : items) {
        if (item.span.count() == 1)
            resolveSingle(item);
        else
            (crossesFlexible(item) ? flexible : spanning).push_back(&item);
    }
    raiseLimits();
    std::stable_sort(spanning.begin(), spanning.end(), [](const auto *a, const auto *b) { return a->span.count() < b->span.count(); });
    for (std::size_t i = 0; i < spanning.size();) {
        std::size_t end = i;
        while (end < spanning.size() && spanning[end]->span.count() == spanning[i]->span.count()) ++end;
        resolveSpanning({spanning.begin() + std::ptrdiff_t(i), spanning.begin() + std::ptrdiff_t(end)}, false);
        i = end;
    }
    resolveSpanning(flexible, true);
    for (Track &track : mTracks) {
        if (track.infinite) track.limit = track.base;
        track.infinite = false;
    }
    if (room)
        maximize(*room - total());
    else if (mode == Mode::MaxContent)
        for (Track &track : mTracks) track.base = std::max(track.base, track.limit);
    if (mode != Mode::MinContent) expandFlexible(items, room, least);
    if (stretch && (room || least.raw > 0)) stretchAutomatic((room ? *room : least) - total());
}

// 11.6
void GridTracks::maximize(Unit free)
{
    Picks open;
    for (Track &track : mTracks)
        if (track.limit > track.base) open.push_back(&track);
    while (free.raw > 0 && !open.empty()) {
        Picks next;
        const int32_t count = int32_t(open.size());
        Unit given;
        for (int32_t i = 0; i < count; ++i) {
            Track &track = *open[std::size_t(i)];
            const Unit part = std::min(Unit::fromRaw((free.raw - given.raw) / (count - i)), track.limit - track.base);
            track.base += part;
            given += part;
            if (track.base < track.limit) next.push_back(&track);
        }
        if (!given.raw) break;
        free -= given;
        open = std::move(next);
    }
}

// 11.7.1: how large a fraction is, when these tracks fill that room.
double GridTracks::fractionFor(const Picks &tracks, Unit room) const
{
    std::vector<bool> inflexible(tracks.size());
    for (std::size_t round = 0; round <= tracks.size(); ++round) {
        double left = double(room.raw), factors = 0;
        for (std::size_t i = 0; i < tracks.size(); ++i) {
            if (tracks[i]->flexible() && !inflexible[i])
                factors += double(tracks[i]->size.max.fraction);
            else
                left -= double(tracks[i]->base.raw);
        }
        const double fraction = std::max(0.0, left) / std::max(1.0, factors);
        bool again = false;
        for (std::size_t i = 0; i < tracks.size(); ++i) {
            if (!tracks[i]->flexible() || inflexible[i]) continue;
            if (fraction * double(tracks[i]->size.max.fraction) >= double(tracks[i]->base.raw)) continue;
            inflexible[i] = again = true;
        }
        if (!again) return fraction;
    }
    return 0;
}

void GridTracks::expandFlexible(const std::vector<GridContribution> &items, std::optional<Unit> room, Unit least)
{
    Picks all;
    bool any = false;
    for (Track &track : mTracks) {
        all.push_back(&track);
        any = any || track.flexible();
    }
    if (!any) return;
    const Unit gaps = gapsIn({0, count()});
    double fraction = 0;
    if (room) {
        fraction = fractionFor(all, *room - gaps);
    } else {
        for (const Track &track : mTracks)
            if (track.flexible()) fraction = std::max(fraction, double(track.base.raw) / std::max(1.0, double(track.size.max.fraction)));
        for (const GridContribution &item : items) {
            Picks covered(all.begin() + item.span.start, all.begin() + item.span.end);
            if (std::none_of(covered.begin(), covered.end(), [](const Track *t) { return t->flexible(); })) continue;
            fraction = std::max(fraction, fractionFor(covered, item.maxContent - gapsIn(item.span)));
        }
        double sum = double(gaps.raw);
        for (const Track &track : mTracks)
            sum += track.flexible() ? std::max(double(track.base.raw), fraction * double(track.size.max.fraction)) : double(track.base.raw);
        if (sum < double(least.raw)) fraction = std::max(fraction, fractionFor(all, least - gaps));
    }
    for (Track &track : mTracks)
        if (track.flexible()) track.base = std::max(track.base, Unit::fromRaw(int64_t(fraction * double(track.size.max.fraction))));
}

// 11.8
void GridTracks::stretchAutomatic(Unit free)
{
    Picks tracks;
    for (Track &track : mTracks)
        if (track.maxKind == Kind::Auto) tracks.push_back(&track);
    const int32_t count = int32_t(tracks.size());
    for (int32_t i = 0; i < count && free.raw > 0; ++i) {
        const Unit part = Unit::fromRaw(free.raw / (count - i));
        tracks[std::size_t(i)]->base += part;
        free -= part;
    }
}

// ---- Places ----

void GridTracks::align(css::Alignment align, Unit room)
{
    std::size_t shown = 0;
    for (const Track &track : mTracks) shown += !track.vanished;
    const Distribution shares = distribute(align.align, align.safe, room - total(), shown);
    Unit at = shares.before;
    for (Track &track : mTracks) {
        track.at = at;
        if (!track.vanished) at += track.base + mGap + shares.between;
    }
}

Unit GridTracks::start(const GridSpan &span) const
{
    return mTracks[std::size_t(span.start)].at;
}

Unit GridTracks::extent(const GridSpan &span) const
{
    const Track &last = mTracks[std::size_t(span.end - 1)];
    return last.at + last.base - start(span);
}

} // namespace layout
