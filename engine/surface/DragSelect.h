// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Clock.h"
#include "engine/ranges/Position.h"

#include <QPointF>
#include <functional>

namespace surface {

/// A selection that the mouse draws: by characters after a click, by words or blocks after a double or triple one, with
/// what was clicked first always in it. While the pointer stands beyond an edge the page scrolls, faster the further out,
/// and the selection follows.
class DragSelect : public QObject
{
    Q_OBJECT
public:
    enum class Unit : uint8_t { Character, Word, Block };
    struct Page {
        /// What of that unit stands nearest to a client point; null places where nothing does.
        std::function<ranges::Span(QPointF client, Unit unit)> spanAt;
        std::function<void(const ranges::Position &anchor, const ranges::Position &focus)> select;
        std::function<QRect()> viewport;
        /// Pixels; false where the page is at its end.
        std::function<bool(int dx, int dy)> scrollBy;
    };

    explicit DragSelect(Page page);

    void begin(Unit unit, const ranges::Span &origin);
    /// After a click with Shift: the anchor stays where it was.
    void begin(const ranges::Position &anchor) { begin(Unit::Character, {anchor, anchor}); }
    bool isActive() const { return mActive; }
    void moveTo(QPointF client);
    void end();

private:
    void extend();
    void scroll();

    Page mPage;
    base::Timer mScrolling;
    Unit mUnit = Unit::Character;
    bool mActive = false;
    ranges::Span mOrigin;
    QPointF mPointer;
};

} // namespace surface
