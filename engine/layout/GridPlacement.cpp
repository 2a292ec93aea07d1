// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/GridPlacement.h"

#include <algorithm>

namespace layout {

namespace {

constexpr int mostLines = 2000; // lines beyond are moved here: a page can name any

} // namespace

// ---- One axis ----

GridAxis::GridAxis(const css::TrackList &list, const css::GridAreas &areas, bool rows, int repeats)
{
    mNames.emplace_back();
    const auto repeat = [&] {
        mRepeatFrom = tracks();
        for (int i = 0; i < repeats; ++i) {
            for (const css::TrackEntry &entry : list.repeated) add(entry);
            mNames.back() += list.repeatEndNames;
        }
        mRepeatEnd = tracks();
        mFit = list.repeat == css::TrackList::Repeat::Fit;
    };
    for (std::size_t i = 0; i < list.tracks.size(); ++i) {
        if (list.repeat != css::TrackList::Repeat::None && list.repeatAt == i) repeat();
        add(list.tracks[i]);
    }
    if (list.repeat != css::TrackList::Repeat::None && list.repeatAt == list.tracks.size()) repeat();
    mNames.back() += list.endNames;
    mTemplated = tracks();
    const int named = rows ? areas.rows : areas.columns;
    mNames.resize(std::size_t(std::max(tracks(), named)) + 1);
    for (const css::GridArea &area : areas.areas) {
        mNames[std::size_t(rows ? area.rowStart : area.columnStart)] << area.name + QStringLiteral("-start");
        mNames[std::size_t(rows ? area.rowEnd : area.columnEnd)] << area.name + QStringLiteral("-end");
    }
    mSizes.resize(mNames.size() - 1);
}

css::TrackSize GridAxis::sizeOf(int track, const std::vector<css::TrackSize> &automatic) const
{
    if (track >= 0 && track < mTemplated) return mSizes[std::size_t(track)];
    if (automatic.empty()) return {};
    const int count = int(automatic.size());
    return automatic[std::size_t(track < 0 ? count - 1 - (-track - 1) % count : (track - mTemplated) % count)];
}

void GridAxis::add(const css::TrackEntry &entry)
{
    if (tracks() >= mostLines) return;
    mNames.back() += entry.names;
    mSizes.push_back(entry.size);
    mNames.emplace_back();
}

// The `number`-th line of that name, counted from the end where it is negative. Lines outside of the explicit grid have
// every name.
int GridAxis::named(const QString &name, int number) const
{
    const int last = int(mNames.size()) - 1;
    int left = std::abs(number);
    if (number > 0) {
        for (int line = 0; line <= last; ++line)
            if (mNames[std::size_t(line)].contains(name) && --left == 0) return line;
        return last + left;
    }
    for (int line = last; line >= 0; --line)
        if (mNames[std::size_t(line)].contains(name) && --left == 0) return line;
    return -left;
}

std::optional<int> GridAxis::lineOf(const css::GridLine &line, bool end) const
{
    if (line.kind != css::GridLine::Kind::Line) return {};
    int result;
    if (line.number == 0) { // a name alone means the area of that name, if there is one
        const QString edge = line.name + (end ? QStringLiteral("-end") : QStringLiteral("-start"));
        const bool area = std::any_of(mNames.begin(), mNames.end(), [&](const QStringList &names) { return names.contains(edge); });
        result = named(area ? edge : line.name, 1);
    } else if (!line.name.isEmpty()) {
        result = named(line.name, line.number);
    } else {
        result = line.number > 0 ? line.number - 1 : int(mNames.size()) + line.number;
    }
    return std::clamp(result, -mostLines, mostLines);
}

int GridAxis::spanFrom(int line, const css::GridLine &span, int step) const
{
    int left = std::max(1, span.number);
    if (span.name.isEmpty()) return line + step * std::min(left, mostLines);
    const int last = int(mNames.size()) - 1;
    for (int at = line + step; step > 0 ? at <= last : at >= 0; at += step)
        if (at >= 0 && at <= last && mNames[std::size_t(at)].contains(span.name) && --left == 0) return at;
    const int edge = step > 0 ? std::max(line, last) : std::min(line, 0);
    return std::clamp(edge + step * left, -2 * mostLines, 2 * mostLines);
}

// 8.3.1: lines that contradict each other.
GridAxis::Place GridAxis::place(const css::GridLine &start, const css::GridLine &end) const
{
    const auto from = lineOf(start, false), to = lineOf(end, true);
    const auto spanCount = [](const css::GridLine &line) {
        return line.kind == css::GridLine::Kind::Span && line.name.isEmpty() ? std::clamp(line.number, 1, mostLines) : 1;
    };
    if (from && to) {
        if (*from == *to) return {GridSpan{*from, *from + 1}, 1};
        return {GridSpan{std::min(*from, *to), std::max(*from, *to)}, 1};
    }
    if (from) {
        const int last = end.kind == css::GridLine::Kind::Span ? spanFrom(*from, end, 1) : *from + 1;
        return {GridSpan{*from, std::max(last, *from + 1)}, 1};
    }
    if (to) {
        const int first = start.kind == css::GridLine::Kind::Span ? spanFrom(*to, start, -1) : *to - 1;
        return {GridSpan{std::min(first, *to - 1), *to}, 1};
    }
    if (start.kind == css::GridLine::Kind::Span) return {{}, spanCount(start)};
    return {{}, spanCount(end)};
}

// ---- The items ----

bool GridPlacement::isFree(const GridSpan &major, const GridSpan &minor) const
{
    for (int i = major.start; i < major.end && i < int(mTaken.size()); ++i) {
        const auto &row = mTaken[std::size_t(i)];
        for (int k = minor.start; k < minor.end && k < int(row.size()); ++k)
            if (row[std::size_t(k)]) return false;
    }
    return true;
}

void GridPlacement::take(Cell &cell, GridSpan major, GridSpan minor)
{
    cell.majorSpan = major;
    cell.minorSpan = minor;
    cell.placed = true;
    if (mTaken.size() < std::size_t(major.end)) mTaken.resize(std::size_t(major.end));
    for (int i = major.start; i < major.end; ++i) {
        auto &row = mTaken[std::size_t(i)];
        if (row.size() < std::size_t(minor.end)) row.resize(std::size_t(minor.end));
        for (int k = minor.start; k < minor.end; ++k) row[std::size_t(k)] = true;
    }
    mMinorCount = std::max(mMinorCount, minor.end);
}

// 8.5, 2: an item that says its row but not its column.
void GridPlacement::placeLocked(Cell &cell, std::vector<int> &cursors, bool dense)
{
    const GridSpan major = *cell.major.span;
    if (cursors.size() <= std::size_t(major.start)) cursors.resize(std::size_t(major.start) + 1);
    GridSpan minor{dense ? 0 : cursors[std::size_t(major.start)], 0};
    minor.end = minor.start + cell.minor.count;
    while (!isFree(major, minor)) {
        ++minor.start;
        ++minor.end;
    }
    take(cell, major, minor);
    cursors[std::size_t(major.start)] = minor.end;
}

// 8.5, 4.
void GridPlacement::placeFlowing(Cell &cell, bool dense)
{
    if (dense) mMajorAt = mMinorAt = 0;
    const int span = cell.major.count;
    if (cell.minor.span) {
        const GridSpan minor = *cell.minor.span;
        if (minor.start < mMinorAt) ++mMajorAt;
        mMinorAt = minor.start;
        while (!isFree({mMajorAt, mMajorAt + span}, minor)) ++mMajorAt;
        take(cell, {mMajorAt, mMajorAt + span}, minor);
        return;
    }
    const int count = cell.minor.count;
    for (;; ++mMajorAt, mMinorAt = 0)
        for (; mMinorAt + count <= mMinorCount; ++mMinorAt) {
            if (!isFree({mMajorAt, mMajorAt + span}, {mMinorAt, mMinorAt + count})) continue;
            take(cell, {mMajorAt, mMajorAt + span}, {mMinorAt, mMinorAt + count});
            mMinorAt += count;
            return;
        }
}

void GridPlacement::run(std::vector<Item> &items, const GridAxis &rows, const GridAxis &columns, const css::GridGroup &style)
{
    const bool byColumn = style.flowsInColumns;
    int first[2] = {0, 0}; // lines in front of the explicit grid: major, minor
    std::vector<Cell> cells;
    for (Item &item : items) {
        Cell cell{&item, byColumn ? item.columns : item.rows, byColumn ? item.rows : item.columns, {}, {}, false};
        if (cell.major.span) first[0] = std::min(first[0], cell.major.span->start);
        if (cell.minor.span) first[1] = std::min(first[1], cell.minor.span->start);
        cells.push_back(cell);
    }
    const GridAxis &major = byColumn ? columns : rows, &minor = byColumn ? rows : columns;
    mTaken.clear();
    mMinorCount = std::max(1, minor.tracks() - first[1]);
    if (items.empty()) mMinorCount = minor.tracks();
    for (Cell &cell : cells) {
        if (cell.major.span) cell.major.span = GridSpan{cell.major.span->start - first[0], cell.major.span->end - first[0]};
        if (cell.minor.span) cell.minor.span = GridSpan{cell.minor.span->start - first[1], cell.minor.span->end - first[1]};
        if (cell.minor.span) mMinorCount = std::max(mMinorCount, cell.minor.span->end);
        if (!cell.minor.span) mMinorCount = std::max(mMinorCount, cell.minor.count);
    }
    for (Cell &cell : cells)
        if (cell.major.span && cell.minor.span) take(cell, *cell.major.span, *cell.minor.span);
    std::vector<int> cursors;
    for (Cell &cell : cells)
        if (cell.major.span && !cell.minor.span) placeLocked(cell, cursors, style.dense);
    mMajorAt = mMinorAt = 0;
    for (Cell &cell : cells)
        if (!cell.placed) placeFlowing(cell, style.dense);
    int majorCount = major.tracks() - first[0];
    for (const Cell &cell : cells) majorCount = std::max(majorCount, cell.majorSpan.end);
    for (const Cell &cell : cells) {
        cell.item->rowSpan = byColumn ? cell.minorSpan : cell.majorSpan;
        cell.item->columnSpan = byColumn ? cell.majorSpan : cell.minorSpan;
    }
    rowCount = byColumn ? mMinorCount : majorCount;
    columnCount = byColumn ? majorCount : mMinorCount;
    firstRow = -first[byColumn ? 1 : 0];
    firstColumn = -first[byColumn ? 0 : 1];
}

} // namespace layout
