// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/RangeView.h"

#include "engine/editing/CommandTable.h"
#include "engine/editing/RangeEdits.h"
#include "engine/ranges/Content.h"
#include "engine/surface/HTMLEditor.h"
#include "engine/surface/LoadedDocument.h"
#include "engine/surface/View.h"

#include <QScrollBar>
#include <cmath>

namespace surface {

using ranges::Position;
using ranges::SelectionObject;
using ranges::Span;

Position RangeView::placeAt(QPoint client)
{
    if (!mView.loaded() || !mView.mWidget.viewport()->rect().contains(client)) return {};
    return mView.positionAt(mView.toDocument(client));
}

QRect RangeView::rectangleOf(const dom::Element &element)
{
    return mView.toClient(mView.loaded()->queries().borderBox(element)).toAlignedRect();
}

std::vector<QRect> RangeView::rectangles(const Span &span)
{
    layout::Queries &queries = mView.loaded()->queries();
    std::vector<QRect> all;
    const auto add = [&](const QRectF &document) {
        if (document.height() > 0) all.push_back(mView.toClient(document).toAlignedRect());
    };
    dom::Node *node = span.start.inText() ? span.start.node.get() : span.start.childAfter();
    if (!node) node = span.start.node->nextSkippingChildren();
    for (; node && Position::compare(Position::before(*node), span.end) < 0 && !span.isEmpty(); node = node->next()) {
        if (node->isText()) {
            const uint32_t from = node == span.start.node.get() ? span.start.offset : 0;
            const uint32_t to = node == span.end.node.get() ? span.end.offset : Position::lengthOf(*node);
            for (const QRectF &rect : queries.textRects(*node, from, to))
                add(rect);
        } else if (const dom::Element *element = node->asElement(); element && ranges::isEmbedded(*element)) {
            add(queries.borderBox(*element));
        }
    }
    if (all.empty()) add(queries.caretRect({span.start.node.get(), span.start.offset}));
    return all;
}

void RangeView::bringIntoView(const QRect &client, bool atTop)
{
    QScrollBar *down = mView.mWidget.verticalScrollBar(), *across = mView.mWidget.horizontalScrollBar();
    const QRect view = mView.mWidget.viewport()->rect();
    mView.updateScrollBars();
    const int by = atTop ? client.top() : client.bottom() - view.height() + 1;
    down->setValue(down->value() + int(by / mView.zoom()));
    if (client.left() < 0)
        across->setValue(across->value() + int(client.left() / mView.zoom()));
    else if (client.right() >= view.width())
        across->setValue(across->value() + int((client.right() - view.width() + 1) / mView.zoom()));
}

QRect RangeView::caretBox()
{
    return mView.caretRect();
}

QPoint RangeView::toGlobal(QPoint client)
{
    return mView.mWidget.viewport()->mapToGlobal(client);
}

void RangeView::write(ranges::TextRange &range, const QString &text)
{
    editing::RangeEdits(*mView.editor(), range).write(range, text);
    mView.edited();
}

void RangeView::paste(ranges::TextRange &range, const QString &html)
{
    editing::RangeEdits(*mView.editor(), range).paste(range, html);
    mView.edited();
}

namespace {

/// Makes something else the selection for a while, without telling anybody.
class Instead
{
public:
    explicit Instead(SelectionObject &selection)
        : mSelection(selection), mTell(std::exchange(selection.selectionChanged, {})),
          mAnchor(selection.keeper(), selection.anchor()), mFocus(selection.keeper(), selection.focus()),
          mElements(selection.elements())
    {
    }
    ~Instead()
    {
        if (!mAnchor.position())
            mSelection.setControl(mElements);
        else
            mSelection.set(mAnchor, mFocus);
        mSelection.selectionChanged = mTell;
        if (mMoves && mTell) mTell();
    }
    /// The selection was where the work is: it goes along.
    void goAlong(const Span &span)
    {
        mAnchor = span.start;
        mFocus = span.end;
        mMoves = true;
    }
    bool stoodAt(const Span &span) const
    {
        return (mAnchor.position() == span.start && mFocus.position() == span.end) ||
               (mAnchor.position() == span.end && mFocus.position() == span.start);
    }

private:
    SelectionObject &mSelection;
    std::function<void()> mTell;
    ranges::LivePosition mAnchor, mFocus;
    std::vector<base::Ref<dom::Element>> mElements;
    bool mMoves = false;
};

} // namespace

ranges::RangeHost::CommandState RangeView::stateOf(const QString &command)
{
    CommandState result;
    result.supported = mView.hasCommand(command);
    if (!result.supported) return result;
    const View::CommandState state = mView.queryOnText(command);
    result.enabled = state.enabled;
    result.on = state.state == QLatin1String("on");
    result.mixed = state.state == QLatin1String("mixed");
    result.value = state.value;
    return result;
}

ranges::RangeHost::CommandState RangeView::query(const Span &span, const QString &command)
{
    SelectionObject &selection = mView.loaded()->selection();
    Instead instead(selection);
    selection.set(span.start, span.end);
    return stateOf(command);
}

ranges::RangeHost::CommandState RangeView::query(const std::vector<base::Ref<dom::Element>> &objects,
                                                 const QString &command)
{
    SelectionObject &selection = mView.loaded()->selection();
    Instead instead(selection);
    selection.setControl(objects);
    return stateOf(command);
}

bool RangeView::run(ranges::TextRange &range, const QString &command, const QString &value)
{
    SelectionObject &selection = mView.loaded()->selection();
    Instead instead(selection);
    const Span span = range.span();
    const bool same = instead.stoodAt(span);
    selection.set(span.start, span.end);
    const bool done = mView.execOnText(command, value);
    if (done && selection.type() == SelectionObject::Type::Text) {
        range.setSpan(selection.span());
        if (same) instead.goAlong(selection.span());
    }
    return done;
}

bool RangeView::run(ranges::ControlRange &range, const QString &command, const QString &value)
{
    SelectionObject &selection = mView.loaded()->selection();
    if (selection.elements() == range.elements()) return mView.execOnText(command, value);
    Instead instead(selection);
    selection.setControl(range.elements());
    return mView.execOnText(command, value);
}

} // namespace surface
