// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/Position.h"

#include <QRect>
#include <QString>
#include <vector>

namespace ranges {

class TextRange;
class ControlRange;

/// What ranges need of the surface that shows their document: places of points, rectangles, scrolling, and what changes
/// content. Client pixels of the view.
class RangeHost
{
public:
    virtual ~RangeHost() = default;
    /// The caret's place nearest to a point of the view; null outside of it and where none is near.
    virtual Position placeAt(QPoint client) = 0;
    virtual std::vector<QRect> rectangles(const Span &span) = 0;
    virtual QRect rectangleOf(const dom::Element &element) = 0;
    /// Scrolls so that it shows at the view's top, else at its bottom.
    virtual void bringIntoView(const QRect &client, bool atTop) = 0;
    /// The caret as shown; null where none is.
    virtual QRect caretBox() = 0;
    virtual QPoint toGlobal(QPoint client) = 0;

    /// Each is one assignment. They raise `base::Error` where that can't be.
    virtual void write(TextRange &range, const QString &text) = 0;
    virtual void paste(TextRange &range, const QString &html) = 0;

    struct CommandState
    {
        bool supported = false;
        bool enabled = false;
        bool on = false;
        bool mixed = false;
        QString value;
    };
    /// Asked and run as if it were selected.
    virtual CommandState query(const Span &span, const QString &command) = 0;
    virtual CommandState query(const std::vector<base::Ref<dom::Element>> &objects, const QString &command) = 0;
    virtual bool run(TextRange &range, const QString &command, const QString &value) = 0;
    virtual bool run(ControlRange &range, const QString &command, const QString &value) = 0;
};

} // namespace ranges
