// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/surface/Composition.h"

#include "engine/css/ComputedStyle.h"
#include "engine/layout/FontCache.h"

#include <QPainter>

namespace surface {

void Composition::take(const QInputMethodEvent &event)
{
    *this = {};
    mText = event.preeditString();
    mCursor = int(mText.size());
    for (const QInputMethodEvent::Attribute &attribute : event.attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor) {
            mCursor = std::clamp(attribute.start, 0, int(mText.size()));
            mShowsCursor = attribute.length != 0;
        } else if (attribute.type == QInputMethodEvent::TextFormat) {
            const auto format = attribute.value.value<QTextFormat>().toCharFormat();
            if (format.isValid()) mFormats.push_back({attribute.start, attribute.length, format});
        }
    }
    if (!mFormats.isEmpty() || mText.isEmpty()) return;
    QTextCharFormat underlined; // what people know as "not yet there"
    underlined.setFontUnderline(true);
    mFormats.push_back({0, int(mText.size()), underlined});
}

void Composition::lay(const css::ComputedStyle &style, const QRectF &caret)
{
    const css::FontGroup &group = style.font();
    const bool italic = group.style != css::FontStyle::Normal;
    QFont font = layout::FontCache::instance().font(group.families, group.size, group.weight, italic).face().shapingFont();
    font.setPixelSize(std::max(1, int(std::lround(group.size))));
    mColor = QColor::fromRgba(style.color());
    mLayout = std::make_shared<QTextLayout>(mText, font);
    mLayout->setFormats(mFormats);
    mLayout->beginLayout();
    QTextLine line = mLayout->createLine();
    if (line.isValid()) line.setNumColumns(int(mText.size()));
    mLayout->endLayout();
    const double width = line.isValid() ? line.naturalTextWidth() : 0;
    const double height = std::max(caret.height(), line.isValid() ? line.height() : 0.0);
    const bool leftward = style.text().direction == css::Direction::Rtl;
    mRect = QRectF(leftward ? caret.right() - width : caret.left(), caret.top(), width, height);
}

void Composition::paint(QPainter &painter) const
{
    if (!mLayout) return;
    painter.fillRect(mRect, Qt::white);
    painter.setPen(mColor);
    mLayout->draw(&painter, mRect.topLeft());
    if (mShowsCursor) painter.fillRect(cursorRect(), mColor);
}

QRectF Composition::cursorRect() const
{
    if (!mLayout || !mShowsCursor || mLayout->lineCount() == 0) return {};
    const QTextLine line = mLayout->lineAt(0);
    return QRectF(mRect.left() + line.cursorToX(mCursor), mRect.top(), 1, mRect.height());
}

} // namespace surface
