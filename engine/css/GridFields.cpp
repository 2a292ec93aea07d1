// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/GridValues.h"
#include "engine/css/GridGrammar.h"
#include "engine/css/StyleBuilder.h"

/// From declared values of grids and of box alignment to computed ones.
namespace css {

using Id = PropertyId;

namespace {

constexpr size_t mostTracks = 10000;

Alignment RareGroup::*alignmentField(Id id)
{
    switch (id) {
    case Id::JustifyContent:
        return &RareGroup::justifyContent;
    case Id::JustifyItems:
        return &RareGroup::justifyItems;
    case Id::JustifySelf:
        return &RareGroup::justifySelf;
    case Id::AlignContent:
        return &RareGroup::alignContent;
    case Id::AlignItems:
        return &RareGroup::alignItems;
    case Id::AlignSelf:
        return &RareGroup::alignSelf;
    default:
        return nullptr;
    }
}

QStringList namesOf(const Value &value)
{
    QStringList names;
    for (const Value &name : value.items)
        names << name.text;
    return names;
}

GridLine lineOf(const Value &value)
{
    GridLine line;
    line.kind = GridLine::Kind(value.word);
    line.number = int(value.number);
    if (!value.items.empty()) line.name = value.items[0].text;
    return line;
}

} // namespace

bool StyleBuilder::copyGridField(Id id, const ComputedStyle &from)
{
    if (const auto field = alignmentField(id)) {
        mStyle->writeRare().*field = from.rare().*field;
        return true;
    }
    const GridGroup &other = from.grid();
    switch (id) {
    case Id::GridTemplateColumns:
        mStyle->writeGrid().columns = other.columns;
        return true;
    case Id::GridTemplateRows:
        mStyle->writeGrid().rows = other.rows;
        return true;
    case Id::GridTemplateAreas:
        mStyle->writeGrid().areas = other.areas;
        return true;
    case Id::GridAutoColumns:
        mStyle->writeGrid().autoColumns = other.autoColumns;
        return true;
    case Id::GridAutoRows:
        mStyle->writeGrid().autoRows = other.autoRows;
        return true;
    case Id::GridAutoFlow:
        mStyle->writeGrid().flowsInColumns = other.flowsInColumns;
        mStyle->writeGrid().dense = other.dense;
        return true;
    case Id::GridRowStart:
        mStyle->writeGrid().rowStart = other.rowStart;
        return true;
    case Id::GridRowEnd:
        mStyle->writeGrid().rowEnd = other.rowEnd;
        return true;
    case Id::GridColumnStart:
        mStyle->writeGrid().columnStart = other.columnStart;
        return true;
    case Id::GridColumnEnd:
        mStyle->writeGrid().columnEnd = other.columnEnd;
        return true;
    default:
        return false;
    }
}

TrackBreadth StyleBuilder::trackBreadth(const Value &value)
{
    TrackBreadth result;
    switch (value.kind) {
    case Value::Kind::Word:
        result.kind = TrackBreadth::Kind(value.word);
        break;
    case Value::Kind::Number:
        result.kind = TrackBreadth::Kind::Fraction;
        result.fraction = float(std::min(value.number, 1e6));
        break;
    default:
        result.kind = TrackBreadth::Kind::Length;
        result.length = length(value);
    }
    return result;
}

TrackSize StyleBuilder::trackSize(const Value &value)
{
    TrackSize size;
    if (value.kind == Value::Kind::Function && value.items.size() == 2) {
        size.min = trackBreadth(value.items[0]);
        size.max = trackBreadth(value.items[1]);
    } else if (value.kind == Value::Kind::Function && value.items.size() == 1) {
        size.fitContent = true;
        size.limit = length(value.items[0]);
        size.max.kind = TrackBreadth::Kind::MaxContent;
    } else {
        size.min = size.max = trackBreadth(value);
        // A fraction alone is minmax(auto, fraction).
        if (size.min.kind == TrackBreadth::Kind::Fraction) size.min = {};
    }
    return size;
}

TrackList StyleBuilder::trackList(const Value &value)
{
    TrackList list;
    QStringList pending;
    const auto add = [&](std::vector<TrackEntry> &to, const Value &item) {
        if (item.kind == Value::Kind::List) {
            pending += namesOf(item);
        } else if (to.size() < mostTracks) {
            to.push_back({pending, trackSize(item)});
            pending.clear();
        }
    };
    for (const Value &item : value.items) {
        if (item.kind != Value::Kind::Function || item.text != QLatin1String("repeat")) {
            add(list.tracks, item);
            continue;
        }
        if (item.word < 0) {
            list.repeat = item.word == -1 ? TrackList::Repeat::Fill : TrackList::Repeat::Fit;
            list.repeatAt = uint32_t(list.tracks.size());
            for (const Value &inner : item.items)
                add(list.repeated, inner);
            list.repeatEndNames = pending;
            pending.clear();
            continue;
        }
        for (int i = 0; i < item.word && list.tracks.size() < mostTracks; ++i)
            for (const Value &inner : item.items)
                add(list.tracks, inner);
    }
    list.endNames = pending;
    return list;
}

std::vector<TrackSize> StyleBuilder::autoTracks(const Value &value)
{
    std::vector<TrackSize> tracks;
    for (const Value &item : value.items)
        tracks.push_back(trackSize(item));
    return tracks;
}

bool StyleBuilder::setGridField(Id id, const Value &value)
{
    if (const auto field = alignmentField(id)) {
        mStyle->writeRare().*field = Alignment{Align(value.word & 63), (value.word & 64) != 0};
        return true;
    }
    switch (id) {
    case Id::GridTemplateColumns:
        mStyle->writeGrid().columns = trackList(value);
        return true;
    case Id::GridTemplateRows:
        mStyle->writeGrid().rows = trackList(value);
        return true;
    case Id::GridTemplateAreas: {
        const QStringList rows = namesOf(value);
        mStyle->writeGrid().areas = rows.isEmpty() ? GridAreas() : gridAreas(rows).value_or(GridAreas());
        return true;
    }
    case Id::GridAutoColumns:
        mStyle->writeGrid().autoColumns = autoTracks(value);
        return true;
    case Id::GridAutoRows:
        mStyle->writeGrid().autoRows = autoTracks(value);
        return true;
    case Id::GridAutoFlow:
        mStyle->writeGrid().flowsInColumns = value.word & 1;
        mStyle->writeGrid().dense = value.word & 2;
        return true;
    case Id::GridRowStart:
        mStyle->writeGrid().rowStart = lineOf(value);
        return true;
    case Id::GridRowEnd:
        mStyle->writeGrid().rowEnd = lineOf(value);
        return true;
    case Id::GridColumnStart:
        mStyle->writeGrid().columnStart = lineOf(value);
        return true;
    case Id::GridColumnEnd:
        mStyle->writeGrid().columnEnd = lineOf(value);
        return true;
    default:
        return false;
    }
}

} // namespace css
