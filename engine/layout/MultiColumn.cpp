// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/MultiColumn.h"

#include "engine/layout/BoxStyle.h"

namespace layout {

namespace {

constexpr int mostColumns = 1000;
constexpr int mostPieces = 20000;

bool breaksBefore(const BlockBox &box)
{
    if (box.anonymous) return false;
    const css::PageBreak kind = box.style().rare().pageBreakBefore;
    return kind == css::PageBreak::Column || kind == css::PageBreak::Always;
}

bool breaksAfter(const BlockBox &box)
{
    if (box.anonymous) return false;
    const css::PageBreak kind = box.style().rare().pageBreakAfter;
    return kind == css::PageBreak::Column || kind == css::PageBreak::Always;
}

bool avoids(const BlockBox *box, css::PageBreak css::RareGroup::*side)
{
    return box && !box->anonymous && box->style().rare().*side == css::PageBreak::Avoid;
}

// Stays in one piece wherever it stands.
bool isWhole(const BlockBox &box)
{
    if (box.isReplaced() || box.isTable() || box.hasItems() || box.columns() || box.clips || box.isCell()) return true;
    if (box.moved && box.style().rare().isTransformed()) return true;
    return avoids(&box, &css::RareGroup::pageBreakInside);
}

// Finds where a column must end. All places are of the strip, from the container's border box.
class Cutter
{
public:
    explicit Cutter(BlockBox &container) : mContainer(container) {}

    struct Cut {
        Unit end;  ///< where the content of the column ends
        Unit next; ///< where that of the next one begins
    };
    /// The last place not below `limit`, for a column that begins at `start`; what doesn't fit into any stays whole.
    Cut cut(Unit start, Unit limit, Unit end);
    /// The first forced one behind `start`.
    std::optional<Cut> forced(Unit start, Unit end);

private:
    Cut within(BlockBox &box, Unit origin, Unit start, Unit limit, int depth);
    Cut inLines(BlockBox &box, Unit origin, Unit start, Unit limit);
    std::optional<Cut> forcedIn(BlockBox &box, Unit origin, Unit start, int depth);
    static Unit endOf(const BlockBox &box, Unit origin);
    static Cut none() { return {Unit::max(), Unit::max()}; }

    BlockBox &mContainer;
};

// The edge in front of a line, with as many lines on either side as the style asks for.
Cutter::Cut Cutter::inLines(BlockBox &box, Unit origin, Unit start, Unit limit)
{
    const InlineContent &content = *box.inlineContent;
    const auto &lines = content.lines;
    // The first line that doesn't end above the limit.
    const auto after = std::partition_point(lines.begin(), lines.end(), [&](const Line &line) { return origin + line.bottom() <= limit; });
    const auto count = std::ptrdiff_t(lines.size());
    std::ptrdiff_t at = after - lines.begin();
    if (at >= count) return none();
    const std::ptrdiff_t first = std::partition_point(lines.begin(), lines.end(), [&](const Line &line) { return origin + line.top < start; }) - lines.begin();
    const auto &text = box.style().text();
    if (count - at < text.widows) at = count - text.widows;
    const bool begins = first == 0; // the block begins in this column, too
    // At the head of a column there is nowhere else to go: what must stay together sticks out.
    const bool atHead = begins && origin - start <= std::max(Unit(), box.marginTop) && !box.previousInFlow();
    if (begins && at < text.orphans) at = atHead ? text.orphans : 0;
    if (at >= count) return none();
    if (!begins && at <= first) at = after - lines.begin();
    if (at <= 0) return {origin + lines.front().top, origin + lines.front().top};
    const Unit top = origin + lines[std::size_t(at)].top;
    return {origin + lines[std::size_t(at) - 1].bottom(), top};
}

Cutter::Cut Cutter::within(BlockBox &box, Unit origin, Unit start, Unit limit, int depth)
{
    if (box.inlineContent) return inLines(box, origin, start, limit);
    if (box.flow.empty() || depth > 500) return none();
    Unit top;
    BlockBox *child = box.childAt(limit - origin, &top);
    // Empty ones and margins may end at the limit; the one that passes it is what matters.
    while (child && origin + top + child->height <= limit) {
        const Unit bottom = top + child->height;
        child = child->nextInFlow();
        if (child) top = bottom + child->gap;
    }
    if (!child) return none();
    const Unit at = origin + top;
    if (at < limit && !isWhole(*child)) {
        const Cut inside = within(*child, at, start, limit, depth + 1);
        if (inside.next < Unit::max()) {
            // At its very start the cut belongs in front of it.
            const bool atStart = inside.end <= at + child->border.top + child->padding.top;
            if (!atStart) return inside;
        } else if (at + child->height > limit && at + child->height - limit <= child->border.bottom + child->padding.bottom && child->height > child->border.bottom + child->padding.bottom) {
            return {limit, limit}; // its padding may be cut
        } else if (child->flow.empty() && !child->inlineContent && child->firstChild() == nullptr) {
            return {limit, limit}; // so may empty room
        }
    }
    // In front of it, or of those before it that want to stay with it.
    const BlockBox *before = child->previousInFlow();
    while (before && (avoids(before, &css::RareGroup::pageBreakAfter) || avoids(child, &css::RareGroup::pageBreakBefore))) {
        const Unit up = origin + before->top();
        if (up <= start) break;
        child = const_cast<BlockBox *>(before);
        before = child->previousInFlow();
    }
    const Unit next = origin + child->top();
    const Unit end = before ? origin + before->top() + before->height : next;
    return {std::min(end, next), next};
}

Cutter::Cut Cutter::cut(Unit start, Unit limit, Unit end)
{
    if (limit >= end) return {end, end};
    Cut found = within(mContainer, Unit(), start, limit, 0);
    if (found.next > start && found.next < end) return found;
    if (found.next >= Unit::max()) return {end, end};
    // Nothing fits: the first thing that stands there sticks out, and the column ends behind it.
    for (Unit further = limit; further < end;) {
        further = further + std::max(Unit::px(1), (further - start) / 4);
        const Cut later = within(mContainer, Unit(), start, std::min(further, end), 0);
        if (later.next > start && later.next < Unit::max()) return later;
    }
    return {end, end};
}

// A margin stays in front of a break that somebody asked for.
Unit Cutter::endOf(const BlockBox &box, Unit origin)
{
    return origin + box.top() + box.height + std::max(Unit(), box.marginBottom);
}

std::optional<Cutter::Cut> Cutter::forcedIn(BlockBox &box, Unit origin, Unit start, int depth)
{
    if (box.flow.empty() || depth > 500 || !box.flow.total().breaks) return {};
    // Over the children that end above, then from one with forced breaks to the next.
    FlowSum before;
    BlockBox *child = box.childAt(start - origin, nullptr);
    if (child) before = box.flow.sumBefore(*child);
    for (int tries = 0; child && tries < 10000; ++tries) {
        if (child->forcedBreaks) {
            const Unit top = origin + child->top(), bottom = top + child->height;
            const BlockBox *last = child->previousInFlow();
            if (breaksBefore(*child) && last && top > start) return Cut{endOf(*last, origin), top - std::max(Unit(), child->marginTop)};
            if (!isWhole(*child))
                if (const auto inside = forcedIn(*child, top, start, depth + 1)) return inside;
            const BlockBox *next = child->nextInFlow();
            if (breaksAfter(*child) && next && bottom > start) return Cut{endOf(*child, origin), origin + next->top() - std::max(Unit(), next->marginTop)};
        }
        const uint32_t passed = box.flow.sumBefore(*child).breaks + child->forcedBreaks;
        child = box.flow.find([&](const FlowSum &sum) { return sum.breaks > passed; }, &before);
    }
    return {};
}

std::optional<Cutter::Cut> Cutter::forced(Unit start, Unit end)
{
    auto found = forcedIn(mContainer, Unit(), start, 0);
    if (!found || found->next >= end || found->next <= start) return {};
    return found;
}

// A row of columns between two places of the strip.
class Row
{
public:
    /// The last `margin` of it is one that needs no room.
    Row(BlockBox &box, const ColumnSet &set, Unit from, Unit to, Unit margin = {}) : mCutter(box), mSet(set), mFrom(from), mTo(to), mMargin(margin) {}

    /// The columns of that height; nothing where there are more than `most`.
    std::optional<std::vector<Cutter::Cut>> columns(Unit height, int most)
    {
        std::vector<Cutter::Cut> result;
        for (Unit at = mFrom; at < mTo;) {
            if (int(result.size()) >= most) return {};
            const Unit limit = at + height;
            Cutter::Cut cut = mCutter.cut(at, limit, mTo);
            if (const auto forced = mCutter.forced(at, mTo); forced && forced->next <= cut.next) cut = *forced;
            result.push_back(cut);
            if (cut.next <= at) break;
            at = cut.next;
        }
        return result;
    }
    /// The least height at which the columns hold everything.
    Unit balanced()
    {
        // COMPAT: margins count here, those too that vanish where a column ends.
        Unit low = (mTo - mFrom) / std::max(1, mSet.count) - Unit::fromRaw(1), high = mTo - mFrom;
        // Forced ends make columns of their own, and may make more than there are.
        if (!columns(high, mSet.count)) {
            const auto all = columns(high, mostPieces);
            return all ? tallest(*all) : high;
        }
        while (high - low > Unit::fromRaw(1)) {
            const Unit middle = low + (high - low) / 2;
            const auto found = columns(middle, mSet.count);
            // A column in which something sticks out is too low.
            if (found && tallest(*found) <= middle)
                high = middle;
            else
                low = middle;
        }
        return high;
    }
    Unit tallest(const std::vector<Cutter::Cut> &columns) const
    {
        Unit most, at = mFrom;
        for (const Cutter::Cut &cut : columns) {
            most = std::max(most, std::min(cut.end, std::max(at, mTo - mMargin)) - at);
            at = cut.next;
        }
        return most;
    }

    /// As many columns of that height as there are; what is left stays.
    std::vector<Cutter::Cut> filled(Unit height)
    {
        std::vector<Cutter::Cut> result;
        for (Unit at = mFrom; at < mTo && int(result.size()) < mSet.count; at = result.back().next) {
            Cutter::Cut cut = mCutter.cut(at, at + height, mTo);
            if (const auto forced = mCutter.forced(at, mTo); forced && forced->next <= cut.next) cut = *forced;
            if (cut.next <= at) cut = {mTo, mTo};
            result.push_back(cut);
        }
        return result;
    }

private:
    Cutter mCutter;
    const ColumnSet &mSet;
    Unit mFrom, mTo, mMargin;
};

BlockBox *nextSpanner(BlockBox *child)
{
    while (child && !spansColumns(*child)) child = child->nextInFlow();
    return child;
}

} // namespace

const ColumnPiece &ColumnSet::pieceAt(Unit y) const
{
    const auto after = std::partition_point(pieces.begin(), pieces.end(), [&](const ColumnPiece &piece) { return piece.to <= y; });
    return after == pieces.end() ? pieces.back() : *after;
}

const ColumnPiece &ColumnSet::pieceNear(Point point) const
{
    const ColumnPiece *best = &pieces.front();
    int64_t least = INT64_MAX;
    const auto away = [](Unit at, Unit from, Unit to) { return int64_t(at < from ? (from - at).raw : at >= to ? (at - to).raw + 1 : 0); };
    for (const ColumnPiece &piece : pieces) {
        // Rows come first: beside a column the nearest of its row is meant, however far down it ends.
        const Unit top = piece.from + piece.shift.y, bottom = piece.to + piece.shift.y;
        const int64_t x = away(point.x, piece.left, piece.right), y = away(point.y, top, bottom);
        const int64_t distance = x * 4 + y;
        if (distance < least) {
            least = distance;
            best = &piece;
        }
    }
    return *best;
}

std::optional<ColumnSet> columnsFor(const BlockBox &box, Unit available)
{
    if (box.anonymous || box.hasItems() || (box.kind() != BoxKind::Block && !box.isCell())) return {};
    const auto &rare = box.style().rare();
    if (!rare.isMultiColumn()) return {};
    ColumnSet set;
    set.gap = rare.columnGap.isAuto() ? Unit::from(box.style().font().size) : Unit::from(rare.columnGap.resolve(available.toDouble()));
    int count = rare.columnCount > 0 ? std::min(rare.columnCount, mostColumns) : mostColumns;
    if (rare.columnWidth.isFixed()) {
        const Unit wanted = std::max(Unit::px(1), Unit::from(double(rare.columnWidth.px)));
        const int fit = std::max(1, int((int64_t(available.raw) + set.gap.raw) / std::max<int64_t>(1, int64_t(wanted.raw) + set.gap.raw)));
        count = std::min(count, fit);
    }
    set.count = count;
    set.width = std::max(Unit(), (available - set.gap * (count - 1)) / count);
    return set;
}

bool spansColumns(const BlockBox &child)
{
    if (child.anonymous || child.isOutOfFlow() || !child.inSumTree || !child.style().rare().columnSpanAll) return false;
    const BlockBox *parent = child.blockParent();
    return parent && !parent->anonymous && !parent->hasItems() && parent->style().rare().isMultiColumn();
}

uint32_t forcedBreaksOf(const BlockBox &box)
{
    uint32_t count = uint32_t(breaksBefore(box)) + uint32_t(breaksAfter(box));
    if (!box.flow.empty() && !isWhole(box)) count += box.flow.total().breaks;
    return count;
}

Unit cutIntoColumns(BlockBox &box, ColumnSet set, Unit stripHeight, Unit lastMargin, std::optional<Unit> limit)
{
    const Unit top = box.contentTop(), left = box.contentLeft();
    const Unit bottom = top + stripHeight + lastMargin;
    const bool rightToLeft = isRightToLeft(box.style()), fillsInTurn = box.style().rare().columnFillAuto;
    Unit y = top; // where the next row is shown
    const auto addRow = [&](Unit from, Unit to, Unit margin, bool last) {
        if (to <= from) return;
        Row row(box, set, from, to, margin);
        const std::optional<Unit> room = limit ? std::optional<Unit>(std::max(Unit::px(1), top + *limit - y)) : std::nullopt;
        Unit height;
        if (fillsInTurn && last)
            height = room ? *room : to - from;
        else
            height = room ? std::min(row.balanced(), *room) : row.balanced();
        const auto columns = row.columns(std::max(height, Unit::fromRaw(1)), mostPieces);
        if (!columns) return;
        Unit at = from;
        int index = 0;
        const Unit used = row.tallest(*columns);
        const Unit rowHeight = limit ? std::min(height, used) : std::max(height, used);
        for (const Cutter::Cut &cut : *columns) {
            const Unit step = (set.width + set.gap) * index;
            const Unit x = rightToLeft ? left + (set.width + set.gap) * (set.count - 1) - step : left + step;
            set.pieces.push_back({at, cut.next, {x - left, y - at}, x, x + set.width, false, index == 0, y + rowHeight});
            at = cut.next;
            ++index;
        }
        y += rowHeight;
    };
    Unit from = top;
    for (BlockBox *spanner = nextSpanner(box.flow.empty() ? nullptr : box.flow.at(0)); spanner; spanner = nextSpanner(spanner->nextInFlow())) {
        const Unit at = spanner->top();
        // A spanner's margins are its own: those of the columns stay in their row, and neither collapses with the other.
        const BlockBox *before = spanner->previousInFlow(), *behind = spanner->nextInFlow();
        if (before && !spansColumns(*before)) {
            const Unit margin = std::max(Unit(), before->bottomStrut.sum());
            addRow(from, std::min(at, before->top() + before->height + margin), margin, false);
            y += std::max(Unit(), spanner->marginTop);
        } else {
            y += at - from;
        }
        set.pieces.push_back({at, at + spanner->height, {Unit(), y - at}, left, left + box.contentWidth(), true, true, y + spanner->height});
        y += spanner->height;
        from = at + spanner->height;
        if (!behind) {
            y += bottom - from;
            from = bottom;
        } else if (!spansColumns(*behind)) {
            y += std::max(Unit(), spanner->marginBottom);
            from = std::max(from, behind->top() - std::max(Unit(), behind->topStrut.sum()));
        }
    }
    addRow(from, bottom, std::max(Unit(), lastMargin), true);
    // Pieces meet, so that every place of the strip has one.
    for (std::size_t i = 0; i + 1 < set.pieces.size(); ++i) set.pieces[i].to = set.pieces[i + 1].from;
    if (set.pieces.empty()) set.pieces.push_back({top, bottom, {}, left, left + set.width, false, true, bottom});
    box.rareData().columns = std::make_unique<ColumnSet>(std::move(set));
    return y - top;
}

namespace {

/// Fills rows from a stretch of the strip between spanning boxes.
void addRows(BlockBox &box, ColumnSet &set, Unit from, Unit to, const std::function<ColumnRoom(Unit y)> &room, Unit &y)
{
    const Unit top = box.contentTop(), left = box.contentLeft();
    const bool rightToLeft = isRightToLeft(box.style());
    while (from < to && set.pieces.size() < std::size_t(mostPieces)) {
        Row row(box, set, from, to);
        const ColumnRoom here = room(y - top);
        const Unit balanced = row.balanced();
        const bool last = balanced <= here.height;
        const std::vector<Cutter::Cut> columns = row.filled(std::max(Unit::px(1), last ? balanced : here.height));
        const Unit rowBottom = y + row.tallest(columns);
        int index = 0;
        Unit at = from;
        for (const Cutter::Cut &cut : columns) {
            const Unit step = (set.width + set.gap) * (rightToLeft ? set.count - 1 - index : index);
            set.pieces.push_back({at, cut.next, {step, y - at}, left + step, left + step + set.width, false, index == 0, rowBottom});
            at = cut.next;
            ++index;
        }
        const bool done = at >= to || at <= from;
        y = done ? rowBottom : top + here.next;
        if (done) return;
        from = at;
    }
}

} // namespace

ColumnSet cutIntoRows(BlockBox &box, const std::function<ColumnRoom(Unit y)> &room, Unit &height)
{
    const ColumnSet &old = *box.columns();
    ColumnSet set;
    set.width = old.width;
    set.gap = old.gap;
    set.count = old.count;
    const Unit top = box.contentTop();
    Unit y = top, from = top;
    for (const ColumnPiece &piece : old.pieces) {
        if (!piece.spans) continue;
        addRows(box, set, from, piece.from, room, y);
        const ColumnRoom here = room(y - top);
        if (piece.to - piece.from > here.height) y = top + here.next;
        set.pieces.push_back({piece.from, piece.to, {piece.shift.x, y - piece.from}, piece.left, piece.right, true, true, y + piece.to - piece.from});
        y += piece.to - piece.from;
        from = piece.to;
    }
    addRows(box, set, from, old.pieces.back().to, room, y);
    for (std::size_t i = 0; i + 1 < set.pieces.size(); ++i) set.pieces[i].to = set.pieces[i + 1].from;
    height = y - top;
    return set;
}

} // namespace layout
