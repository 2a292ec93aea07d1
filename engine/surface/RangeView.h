// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ranges/ControlRange.h"
#include "engine/ranges/RangeHost.h"
#include "engine/ranges/TextRange.h"

namespace surface {

class View;

/// What ranges ask of the view that shows their document.
class RangeView final : public ranges::RangeHost
{
public:
    explicit RangeView(View &view) : mView(view) {}

    ranges::Position placeAt(QPoint client) override;
    std::vector<QRect> rectangles(const ranges::Span &span) override;
    QRect rectangleOf(const dom::Element &element) override;
    void bringIntoView(const QRect &client, bool atTop) override;
    QRect caretBox() override;
    QPoint toGlobal(QPoint client) override;
    void write(ranges::TextRange &range, const QString &text) override;
    void paste(ranges::TextRange &range, const QString &html) override;
    CommandState query(const ranges::Span &span, const QString &command) override;
    CommandState query(const std::vector<base::Ref<dom::Element>> &objects, const QString &command) override;
    bool run(ranges::TextRange &range, const QString &command, const QString &value) override;
    bool run(ranges::ControlRange &range, const QString &command, const QString &value) override;

private:
    CommandState stateOf(const QString &command);
    View &mView;
};

} // namespace surface
