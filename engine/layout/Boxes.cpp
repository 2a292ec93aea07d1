// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Boxes.h"

#include "engine/dom/Names.h"

namespace layout {

namespace {

bool speaksForView(const dom::Element &element)
{
    return element.is(dom::names::body) || element.is(dom::names::html);
}

} // namespace

Boxes::Boxes(LayoutTree &tree, View &view) : mTree(tree), mView(view), mQueries(tree) { mTree.document().boxes = this; }

Boxes::~Boxes()
{
    if (mTree.document().boxes == this) mTree.document().boxes = nullptr;
}

QRect Boxes::offsetBox(const dom::Element &element) { return mQueries.offsetBox(element); }
dom::Element *Boxes::offsetParent(const dom::Element &element) { return mQueries.offsetParent(element); }

QSize Boxes::clientSize(const dom::Element &element)
{
    return speaksForView(element) ? mView.viewSize() : mQueries.clientSize(element);
}

QSize Boxes::scrollSize(const dom::Element &element) { return mQueries.scrollSize(element); }

QPoint Boxes::scrollPosition(const dom::Element &element)
{
    if (speaksForView(element)) return mView.scrollPosition();
    mTree.update();
    const Box *box = boxOf(element);
    const BlockBox *block = box ? box->asBlock() : nullptr;
    return block && block->rare ? block->rare->scroll : QPoint();
}

void Boxes::setScrollPosition(dom::Element &element, QPoint position)
{
    if (speaksForView(element)) {
        mView.setScrollPosition(position);
        return;
    }
    mTree.update();
    Box *box = boxOf(element);
    BlockBox *block = box ? box->asBlock() : nullptr;
    if (!block || !block->clips) return;
    const QSize room = mQueries.scrollSize(element) - mQueries.clientSize(element);
    block->rareData().scroll = {std::clamp(position.x(), 0, std::max(0, room.width())), std::clamp(position.y(), 0, std::max(0, room.height()))};
}

dom::Element *Boxes::elementFromPoint(QPoint client)
{
    const QSize view = mView.viewSize();
    if (client.x() < 0 || client.y() < 0 || client.x() >= view.width() || client.y() >= view.height()) return nullptr;
    return mQueries.hitTest(QPointF(client + mView.scrollPosition())).element;
}

} // namespace layout
