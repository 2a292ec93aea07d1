// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QInputMethodEvent>
#include <QRectF>
#include <QTextLayout>
#include <memory>

class QPainter;

namespace css {
class ComputedStyle;
}

namespace surface {

/// The text that an input method composes at the caret before it commits it. It is no part of the document: it is shown
/// over the page, in the font of the place, and goes without a trace when the composition is given up.
class Composition
{
public:
    bool isEmpty() const { return mText.isEmpty(); }
    const QString &text() const { return mText; }
    /// Takes the text, its look and its cursor; an event without a text ends the composition.
    void take(const QInputMethodEvent &event);
    void clear() { *this = {}; }

    /// Breaks no lines. `caret` is the document's, in the painter's pixels; the text goes to its other side where the
    /// paragraph runs from right to left.
    void lay(const css::ComputedStyle &style, const QRectF &caret);
    void paint(QPainter &painter) const;
    /// Where the composition's own cursor stands; null where it shows none. After `lay`.
    QRectF cursorRect() const;
    QRectF rect() const { return mRect; }

private:
    QString mText;
    QList<QTextLayout::FormatRange> mFormats;
    int mCursor = 0;
    bool mShowsCursor = true;
    std::shared_ptr<QTextLayout> mLayout;
    QRectF mRect;
    QColor mColor;
};

} // namespace surface
