// SPDX-License-Identifier: GPL-3.0-or-later
// Images, form controls and what can't be shown.
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"
#include "engine/paint/Painter.h"
#include "engine/paint/RoundedBox.h"

#include <QGlyphRun>
#include <QPainterPath>

namespace paint {

using namespace layout;

namespace {

// Where an object of that natural size stands in its box (CSS Images 3, 5.5).
QRectF fitted(const css::RareGroup &rare, const QSizeF &natural, const QRectF &box)
{
    using Fit = css::ObjectFit;
    if (natural.isEmpty() || box.isEmpty() || rare.objectFit == Fit::Fill) return box;
    const double x = box.width() / natural.width(), y = box.height() / natural.height();
    double factor = rare.objectFit == Fit::Cover ? std::max(x, y) : std::min(x, y);
    if (rare.objectFit == Fit::None) factor = 1;
    if (rare.objectFit == Fit::ScaleDown) factor = std::min(factor, 1.0);
    const QSizeF size = natural * factor;
    return {box.left() + rare.objectX.resolve(box.width() - size.width()), box.top() + rare.objectY.resolve(box.height() - size.height()), size.width(), size.height()};
}

bool isImage(const dom::Element &element)
{
    return element.is(dom::names::img) ||
           (element.is(dom::names::input) && element.attributeValue("type").compare(QLatin1String("image"), Qt::CaseInsensitive) == 0);
}

// What a frame says that stands for something that isn't shown.
QString titleOf(const dom::Element &element)
{
    if (isImage(element)) return element.attributeValue("alt");
    for (const char *name : {"title", "aria-label", "src", "data"})
        if (const QString text = element.attributeValue(name).simplified(); !text.isEmpty()) return text;
    return element.name().text().toUpper();
}

} // namespace

void Painter::paintReplaced(const BlockBox &box, Point origin)
{
    const dom::Element *element = box.element();
    if (box.style().text().visibility != css::Visibility::Visible) return;
    const Edges frame = box.frame();
    if (!element) {
        paintPicture(box.picture(), {}, Rect{origin.x, origin.y, box.width, box.height}.toRectF());
        return;
    }
    const QRectF content = snapped(Rect{origin.x + frame.left, origin.y + frame.top, box.width - frame.horizontal(), box.height - frame.vertical()}.toRectF());
    if (!content.intersects(mClip)) return;
    mPainter->save();
    if (box.style().surround().hasRadius()) { // a picture ends at its round corners
        mPainter->setRenderHint(QPainter::Antialiasing);
        const QRectF border = snapped(Rect{origin.x, origin.y, box.width, box.height}.toRectF());
        mPainter->setClipPath(RoundedBox(border, box.style().surround()).inset(frame).path(), Qt::IntersectClip);
        mPainter->setRenderHint(QPainter::Antialiasing, false);
    }
    const bool image = isImage(*element) || element->is(dom::names::object);
    const bool control = element->is(dom::names::input) || element->is(dom::names::select) || element->is(dom::names::textarea) || element->is(dom::names::progress) ||
                         element->name() == dom::Atom("meter");
    if (element->space() == dom::Namespace::Svg)
        paintInlineSvg(*element, box.style(), content);
    else if (control && !image)
        paintControl(box, content);
    else if (!image || !paintImage(*element, box.style(), content))
        paintPlaceholder(*element, box.style(), content);
    mPainter->restore();
}

bool Painter::paintImage(const dom::Element &element, const css::ComputedStyle &style, const QRectF &content)
{
    const QString src = element.attributeValue(element.is(dom::names::object) ? "data" : "src");
    return !src.isEmpty() && paintPicture(mTree.document().resolve(src), style.rare(), content);
}

bool Painter::paintPicture(const QString &url, const css::RareGroup &rare, const QRectF &content)
{
    ImageSource *images = mTree.images();
    if (!images || url.isEmpty()) return false;
    const bool vector = images->isVector(url);
    const QPixmap pixmap = vector ? QPixmap() : images->imagePixmap(url);
    if (!vector && pixmap.isNull()) return false;
    const QRectF target = fitted(rare, vector ? QSizeF(images->imageSize(url)) : pixmap.size() / pixmap.devicePixelRatio(), content);
    if (!content.contains(target)) mPainter->setClipRect(content, Qt::IntersectClip);
    mPainter->setRenderHint(QPainter::SmoothPixmapTransform);
    if (vector)
        images->paintVector(*mPainter, url, target);
    else
        mPainter->drawPixmap(target, pixmap, QRectF(pixmap.rect()));
    return true;
}

// What can't be shown is a frame with its text.
void Painter::paintPlaceholder(const dom::Element &element, const css::ComputedStyle &style, const QRectF &content)
{
    const bool image = isImage(element);
    if (!image) mPainter->fillRect(content, QColor(0xf4, 0xf4, 0xf4));
    mPainter->setPen(QPen(QColor(0xc0, 0xc0, 0xc0), 1));
    mPainter->setBrush(Qt::NoBrush);
    if (content.width() > 2 && content.height() > 2) mPainter->drawRect(content.adjusted(0.5, 0.5, -0.5, -0.5));
    const QString text = titleOf(element);
    if (text.isEmpty()) return;
    const Font &font = fontOf(style);
    const ShapedText shaped = TextShaper::shape(text, font, {});
    mPainter->setClipRect(content, Qt::IntersectClip);
    mPainter->setPen(image ? QColor::fromRgba(style.color()) : QColor(0x50, 0x50, 0x50));
    const double x = image ? content.left() + 2 : std::max(content.left() + 4, content.center().x() - shaped.width / 2);
    const double y = image ? content.top() : std::max(content.top(), content.center().y() - font.height().toDouble() / 2);
    for (const GlyphSpan &span : shaped.spans) {
        QGlyphRun run;
        run.setRawFont(span.face->rawAt(font.size()));
        run.setGlyphIndexes(QList<quint32>(span.glyphs.begin(), span.glyphs.end()));
        run.setPositions(QList<QPointF>(span.positions.begin(), span.positions.end()));
        mPainter->drawGlyphRun(QPointF(x, y + font.ascent().toDouble()), run);
    }
}

namespace {

QString kindOf(const dom::Element &element)
{
    return element.is(dom::names::input) ? element.attributeValue("type").trimmed().toLower() : QString();
}

bool isOneOf(const QString &kind, std::initializer_list<const char *> kinds)
{
    return std::any_of(kinds.begin(), kinds.end(), [&](const char *each) { return kind == QLatin1String(each); });
}

} // namespace

// A control looks like one as long as the page has left its border and background as they are.
bool Painter::hasNativeFrame(const BlockBox &box)
{
    const dom::Element *element = box.element();
    if (!element || box.anonymous || box.pseudo != Pseudo::None) return false;
    const bool button = element->is(dom::names::button);
    if (!button && !element->is(dom::names::input) && !element->is(dom::names::select) && !element->is(dom::names::textarea)) return false;
    if (isOneOf(kindOf(*element), {"checkbox", "radio", "image"})) return false;
    const css::ComputedStyle &style = box.style();
    const auto &border = style.border();
    constexpr QRgb own = 0xff767676;
    for (const css::Border *side : {&border.top, &border.right, &border.bottom, &border.left})
        if (side->color != own || (side->style != css::BorderStyle::Inset && side->style != css::BorderStyle::Outset && side->style != css::BorderStyle::Solid)) return false;
    return !style.background().hasImage() && qAlpha(style.background().color) == 255 && !style.surround().hasRadius();
}

void Painter::paintNativeFrame(const BlockBox &box, const QRectF &rect)
{
    const QString kind = kindOf(*box.element());
    if (isOneOf(kind, {"range", "file"})) return; // no frame of their own
    mPainter->save();
    mPainter->setRenderHint(QPainter::Antialiasing);
    const bool button = box.element()->is(dom::names::button) || isOneOf(kind, {"submit", "reset", "button", "color"});
    mPainter->setPen(QPen(QColor(0x76, 0x76, 0x76), 1));
    mPainter->setBrush(QColor::fromRgba(box.style().background().color));
    const double radius = button ? 3 : box.element()->is(dom::names::textarea) ? 0 : 2;
    mPainter->drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    mPainter->restore();
}

// Bars, sliders and colour fields: a value seen rather than read.
void Painter::paintGauge(const dom::Element &element, const QString &kind, const QRectF &frame)
{
    const auto number = [&](const char *name, double missing) {
        bool ok = false;
        const double value = element.attributeValue(name).trimmed().toDouble(&ok);
        return ok && std::isfinite(value) ? value : missing;
    };
    if (kind == QLatin1String("color")) {
        const QColor color(element.attributeValue("value").trimmed());
        mPainter->setBrush(color.isValid() ? color : QColor(Qt::black));
        mPainter->drawRect(frame.adjusted(4, 4, -4, -4));
        return;
    }
    const bool range = kind == QLatin1String("range");
    const double least = number("min", 0), most = std::max(least, number("max", range ? 100 : 1));
    const bool hasValue = element.hasAttribute("value");
    const double value = std::clamp(number("value", range ? (least + most) / 2 : least), least, most);
    const double part = most > least ? (value - least) / (most - least) : 0;
    const QColor accent(0x00, 0x75, 0xff);
    if (range) {
        const double y = frame.center().y(), knob = std::min(16.0, frame.height()), at = frame.left() + part * (frame.width() - knob);
        mPainter->setBrush(QColor(0xef, 0xef, 0xef));
        mPainter->drawRoundedRect(QRectF(frame.left(), y - 4, frame.width(), 8), 4, 4);
        mPainter->setPen(Qt::NoPen);
        mPainter->setBrush(accent);
        mPainter->drawRoundedRect(QRectF(frame.left(), y - 4, at + knob / 2 - frame.left(), 8), 4, 4);
        mPainter->drawEllipse(QRectF(at, y - knob / 2, knob, knob));
        return;
    }
    const QRectF bar(frame.left(), frame.center().y() - frame.height() / 4, frame.width(), frame.height() / 2);
    mPainter->setBrush(QColor(0xef, 0xef, 0xef));
    mPainter->drawRoundedRect(bar, 3, 3);
    if (!hasValue && element.is(dom::names::progress)) { // nobody knows how far: a piece in the middle
        mPainter->setBrush(accent);
        mPainter->drawRoundedRect(QRectF(bar.left() + bar.width() * 0.3, bar.top(), bar.width() * 0.3, bar.height()), 3, 3);
        return;
    }
    if (part <= 0) return;
    mPainter->setPen(Qt::NoPen);
    mPainter->setBrush(element.is(dom::names::progress) ? accent : QColor(0x10, 0x7c, 0x10));
    mPainter->drawRoundedRect(QRectF(bar.left(), bar.top(), bar.width() * part, bar.height()), 3, 3);
}

namespace {

QString labelOf(const dom::Element &option)
{
    if (const QString label = option.attributeValue("label"); !label.isEmpty()) return label;
    QString text;
    for (const dom::Node *node = option.firstChild(); node; node = node->next(&option))
        if (node->isText()) text += node->nodeValue();
    return text.simplified();
}

std::vector<const dom::Element *> optionsOf(const dom::Element &select)
{
    std::vector<const dom::Element *> options;
    for (dom::Node *node = select.firstChild(); node; node = node->next(&select))
        if (const dom::Element *each = node->asElement(); each && each->is(dom::names::option)) options.push_back(each);
    return options;
}

} // namespace

// A list shows its options one below the other, those that are chosen on a ground of their own.
void Painter::paintListBox(const BlockBox &box, const QRectF &content)
{
    const Font &font = fontOf(box.style());
    const double height = std::max(font.lineSpacing().toDouble(), std::round(double(box.style().font().size) * 1.2)) + 1;
    mPainter->setClipRect(content, Qt::IntersectClip);
    double y = content.top();
    for (const dom::Element *option : optionsOf(*box.element())) {
        if (option->hasAttribute("selected")) mPainter->fillRect(QRectF(content.left(), y, content.width(), height), QColor(0xce, 0xce, 0xce));
        mPainter->setPen(QColor::fromRgba(box.style().color()));
        for (const GlyphSpan &span : TextShaper::shape(labelOf(*option), font, {}).spans) {
            QGlyphRun run;
            run.setRawFont(span.face->rawAt(font.size()));
            run.setGlyphIndexes(QList<quint32>(span.glyphs.begin(), span.glyphs.end()));
            run.setPositions(QList<QPointF>(span.positions.begin(), span.positions.end()));
            mPainter->drawGlyphRun(QPointF(content.left() + 2, y + font.ascent().toDouble()), run);
        }
        y += height;
        if (y > content.bottom()) break;
    }
}

void Painter::paintControl(const BlockBox &box, const QRectF &content)
{
    const dom::Element &element = *box.element();
    const QString kind = element.is(dom::names::input) ? element.attributeValue("type").toLower() : QString();
    mPainter->save();
    mPainter->setRenderHint(QPainter::Antialiasing);
    mPainter->setPen(QPen(QColor(0x76, 0x76, 0x76), 1));
    mPainter->setBrush(Qt::white);
    const QRectF frame = content.adjusted(0.5, 0.5, -0.5, -0.5);
    if (element.is(dom::names::progress) || element.name() == dom::Atom("meter") || kind == QLatin1String("range") || kind == QLatin1String("color")) {
        paintGauge(element, kind, frame);
        mPainter->restore();
        return;
    }
    if (element.is(dom::names::select) && (element.hasAttribute("multiple") || element.attributeValue("size").toInt() > 1)) {
        paintListBox(box, content);
        mPainter->restore();
        return;
    }
    QString label = element.attributeValue("value");
    if (kind == QLatin1String("checkbox") || kind == QLatin1String("radio")) {
        const bool on = element.hasAttribute("checked");
        if (kind == QLatin1String("radio")) {
            mPainter->drawEllipse(frame);
            if (on) {
                mPainter->setBrush(QColor(0x00, 0x75, 0xff));
                mPainter->drawEllipse(frame.adjusted(3, 3, -3, -3));
            }
        } else {
            if (on) {
                mPainter->setBrush(QColor(0x00, 0x75, 0xff));
                mPainter->setPen(Qt::NoPen);
            }
            mPainter->drawRoundedRect(frame, 2, 2);
            if (on) {
                const double w = frame.width(), h = frame.height();
                mPainter->setPen(QPen(Qt::white, std::max(1.5, w / 7)));
                mPainter->drawPolyline(QPolygonF{frame.topLeft() + QPointF(w * 0.2, h * 0.5), frame.topLeft() + QPointF(w * 0.42, h * 0.72), frame.topLeft() + QPointF(w * 0.8, h * 0.28)});
            }
        }
        mPainter->restore();
        return;
    }
    if (kind == QLatin1String("file")) { // a button, and what it has chosen: nothing
        mPainter->setBrush(QColor(0xef, 0xef, 0xef));
        mPainter->drawRoundedRect(QRectF(frame.left(), frame.top(), std::min(frame.width(), 86.0), frame.height()), 3, 3);
        label = QStringLiteral("Choose File    No file chosen");
    }
    const bool hint = label.isEmpty() && kind != QLatin1String("file") && element.hasAttribute("placeholder");
    if (hint) label = element.attributeValue("placeholder");
    if (label.isEmpty() && kind == QLatin1String("date")) label = QStringLiteral("mm/dd/yyyy");
    if (label.isEmpty() && kind == QLatin1String("time")) label = QStringLiteral("--:-- --");
    if (kind == QLatin1String("submit") && !element.hasAttribute("value")) label = QStringLiteral("Submit");
    if (kind == QLatin1String("reset") && !element.hasAttribute("value")) label = QStringLiteral("Reset");
    if (kind == QLatin1String("password")) label = QString(label.size(), QChar(0x2022));
    if (element.is(dom::names::select) || element.is(dom::names::textarea)) {
        label.clear();
        const auto options = optionsOf(element);
        const auto chosen = std::find_if(options.begin(), options.end(), [](const dom::Element *each) { return each->hasAttribute("selected"); });
        if (!options.empty()) label = labelOf(chosen == options.end() ? *options.front() : **chosen);
        for (dom::Node *node = element.is(dom::names::textarea) ? element.firstChild() : nullptr; node; node = node->next(&element))
            if (node->isText()) label += node->nodeValue();
    }
    const Font &font = fontOf(box.style());
    const QRectF area = element.is(dom::names::select) ? content.adjusted(4, 0, -18, 0) : content;
    mPainter->setClipRect(content, Qt::IntersectClip);
    mPainter->setPen(hint ? QColor(0x75, 0x75, 0x75) : QColor::fromRgba(box.style().color()));
    double y = element.is(dom::names::textarea) ? area.top() + font.ascent().toDouble() : area.center().y() - font.height().toDouble() / 2 + font.ascent().toDouble();
    for (const QString &line : label.split(QLatin1Char('\n'))) {
        const ShapedText shaped = TextShaper::shape(line, font, {});
        const bool centered = kind == QLatin1String("submit") || kind == QLatin1String("reset") || kind == QLatin1String("button");
        const double x = centered ? area.center().x() - shaped.width / 2 : area.left() + (kind == QLatin1String("file") ? 6 : 0);
        for (const GlyphSpan &span : shaped.spans) {
            QGlyphRun run;
            run.setRawFont(span.face->rawAt(font.size()));
            run.setGlyphIndexes(QList<quint32>(span.glyphs.begin(), span.glyphs.end()));
            run.setPositions(QList<QPointF>(span.positions.begin(), span.positions.end()));
            mPainter->drawGlyphRun(QPointF(x, y), run);
        }
        y += font.lineSpacing().toDouble();
    }
    if (element.is(dom::names::select)) {
        mPainter->setPen(QPen(Qt::black, 1.5));
        const QPointF c(content.right() - 10, content.center().y() - 1);
        mPainter->drawPolyline(QPolygonF{c + QPointF(-4, -1), c + QPointF(0, 3), c + QPointF(4, -1)});
    }
    mPainter->restore();
}

} // namespace paint
