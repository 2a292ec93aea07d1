// SPDX-License-Identifier: GPL-3.0-or-later
// Boxes whose content isn't ours to lay out: images, form controls, frames.
#include "engine/dom/Document.h"
#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"
#include "engine/layout/Engine.h"

namespace layout {

namespace {

using namespace dom::names;

// A size by nature, in CSS pixels of the content box; a ratio where one counts.
struct Natural {
    double width = 0, height = 0;
    bool hasRatio = false;
    bool borderBox = false;
};

double textWidth(const BlockBox &box, const QString &text)
{
    return TextShaper::width(text, fontOf(box.style()), spacingOf(box.style()));
}

double lineOf(const BlockBox &box)
{
    return lineHeightIsNormal(box.style()) ? fontOf(box.style()).lineSpacing().toDouble() : lineHeightOf(box.style()).toDouble();
}

int attributeNumber(const dom::Element &element, const char *name, int standard)
{
    bool ok = false;
    const int value = element.attributeValue(name).trimmed().toInt(&ok);
    return ok && value > 0 ? value : standard;
}

// COMPAT: as browsers take it for the columns of a field: rounded up, but never down.
double averageWidth(const Font &font)
{
    const double width = font.face().averageWidth() * font.scale();
    return std::max(width, std::round(width));
}

// Fields for dates and times are as wide as their parts; the figures are of the standard font.
std::optional<Natural> dateSize(const BlockBox &box, const QString &kind)
{
    static const struct {
        const char *kind;
        double width, height;
    } sizes[] = {{"date", 117.33, 15.33}, {"month", 147.33, 15.33}, {"week", 139.33, 15.33}, {"datetime-local", 203.33, 15.33}, {"time", 96, 18}};
    const double scale = double(box.style().font().size) / 13.3333;
    for (const auto &each : sizes)
        if (kind == QLatin1String(each.kind)) return Natural{each.width * scale, each.height * scale, false, false};
    return {};
}

Natural inputSize(const BlockBox &box, const dom::Element &element)
{
    const QString kind = element.attributeValue("type").toLower();
    if (kind == QLatin1String("checkbox") || kind == QLatin1String("radio")) return {13, 13, false, true};
    if (kind == QLatin1String("submit") || kind == QLatin1String("reset") || kind == QLatin1String("button")) {
        QString label = element.attributeValue("value");
        if (!element.attribute(value) && kind != QLatin1String("button"))
            label = kind == QLatin1String("submit") ? QStringLiteral("Submit") : QStringLiteral("Reset");
        return {textWidth(box, label), lineOf(box), false, false};
    }
    if (kind == QLatin1String("range")) return {129, 16, false, true};
    if (kind == QLatin1String("color")) return {50, 27, false, true};
    if (kind == QLatin1String("file")) return {253, 21, false, true};
    const int columns = attributeNumber(element, "size", 20);
    if (const auto date = dateSize(box, kind)) return *date;
    // COMPAT: one line of text has room for its widest letter, too.
    const Font &font = fontOf(box.style());
    const double average = averageWidth(font), widest = std::round(font.face().boxWidth() * font.scale());
    return {std::ceil(average * columns + (widest > 0 ? widest - average : 0)), lineOf(box), false, false};
}

bool isListBox(const dom::Element &element)
{
    return element.is(dom::names::select) && (element.hasAttribute("multiple") || attributeNumber(element, "size", 1) > 1);
}

Natural selectSize(const BlockBox &box, const dom::Element &element)
{
    double widest = 0;
    for (dom::Node *node = element.firstChild(); node; node = node->next(&element)) {
        dom::Element *each = node->asElement();
        if (!each || !(each->is(option) || each->is(optgroup))) continue;
        QString label = each->attributeValue("label");
        if (label.isEmpty() && each->is(option))
            for (dom::Node *inner = each->firstChild(); inner; inner = inner->next(each))
                if (inner->isText()) label += inner->nodeValue();
        widest = std::max(widest, textWidth(box, label.simplified()));
    }
    // COMPAT: a row of a list has a least height and a pixel below; one that opens has room for its arrow.
    if (isListBox(element)) {
        const double row = std::max(lineOf(box), std::round(double(box.style().font().size) * 1.2)) + 1;
        return {widest + 4, row * attributeNumber(element, "size", 4), false, false};
    }
    return {std::ceil(widest) + 20, fontOf(box.style()).height().toDouble() + 2, false, false};
}

// "20", "1.5em", "50%": pixels; nothing for what isn't a length. Per cents of `base`, if that is known.
std::optional<double> attributeLength(const BlockBox &box, const dom::Element &element, const char *name, std::optional<double> base)
{
    const QString text = element.attributeValue(name).trimmed().toLower();
    qsizetype digits = 0;
    while (digits < text.size() && (text[digits].isDigit() || text[digits] == QLatin1Char('.'))) ++digits;
    bool ok = false;
    const double number = QStringView(text).left(digits).toDouble(&ok);
    if (!ok) return {};
    const QString unit = text.mid(digits);
    if (unit == QLatin1String("%")) return base ? std::optional<double>(number * *base / 100) : std::nullopt;
    static const std::pair<const char *, double> units[] = {{"", 1}, {"px", 1}, {"pt", 96.0 / 72}, {"pc", 16}, {"in", 96}, {"cm", 96 / 2.54}, {"mm", 96 / 25.4}};
    for (const auto &[known, factor] : units)
        if (unit == QLatin1String(known)) return number * factor;
    if (unit == QLatin1String("em")) return number * box.style().font().size;
    if (unit == QLatin1String("ex")) return number * box.style().font().size / 2;
    return {};
}

// How wide a picture is that has a ratio alone.
double wholeRoom(const BlockBox &box, const Constraint &constraint)
{
    const bool known = constraint.width.raw > 0 && constraint.width < unknownWidth;
    return known ? std::max(0.0, (constraint.width - box.frame().horizontal()).toDouble()) : 300;
}

// An SVG image is as big as its attributes say; one with a view box alone is as wide as there is room, in its ratio.
Natural svgSize(const BlockBox &box, const dom::Element &element, const Constraint &constraint)
{
    std::optional<double> height = attributeLength(box, element, "height", constraint.hasHeight() ? std::optional<double>(constraint.height.toDouble()) : std::nullopt);
    std::optional<double> width = attributeLength(box, element, "width", constraint.width.toDouble());
    QString text = element.attributeValue("viewBox");
    if (text.isEmpty()) text = element.attributeValue("viewbox");
    const QStringList view = text.replace(QLatin1Char(','), QLatin1Char(' ')).simplified().split(QLatin1Char(' '));
    const double viewWidth = view.size() == 4 ? view[2].toDouble() : 0, viewHeight = view.size() == 4 ? view[3].toDouble() : 0;
    const bool ratio = viewWidth > 0 && viewHeight > 0;
    if (width && height) return {*width, *height, *width > 0 && *height > 0, false};
    if (!ratio) return {width.value_or(300), height.value_or(150), false, false};
    if (!width && !height) width = wholeRoom(box, constraint);
    if (!width) width = *height * viewWidth / viewHeight;
    if (!height) height = *width * viewHeight / viewWidth;
    return {*width, *height, true, false};
}

Natural pictureSize(ImageSource *images, const QString &url)
{
    const QSize size = images ? images->imageSize(url) : QSize();
    return size.isEmpty() ? Natural{} : Natural{double(size.width()), double(size.height()), true, false};
}

// COMPAT: a picture that isn't there and has a text is that text, in standards mode, whatever size the page gives it.
bool standsAsText(const dom::Element &element, const css::ComputedStyle &style, ImageSource *images)
{
    if (!element.is(img) || element.document().isQuirks() || style.display() != css::Display::Inline) return false;
    if (element.attributeValue("alt").isEmpty()) return false;
    const QString url = element.attributeValue("src");
    return !images || url.isEmpty() || images->imageSize(element.document().resolve(url)).isEmpty();
}

Natural naturalSize(const BlockBox &box, const dom::Element &element, ImageSource *images, const Constraint &constraint)
{
    if (element.space() == dom::Namespace::Svg) return svgSize(box, element, constraint);
    if (element.is(img) || (element.is(input) && element.attributeValue("type").compare(QLatin1String("image"), Qt::CaseInsensitive) == 0)) {
        const QString url = element.attributeValue("src");
        const QSize size = images && !url.isEmpty() ? images->imageSize(element.document().resolve(url)) : QSize();
        if (!size.isEmpty()) {
            if (!images->hasOnlyRatio(element.document().resolve(url))) return {double(size.width()), double(size.height()), true, false};
            const double width = wholeRoom(box, constraint);
            return {width, width * size.height() / size.width(), true, false};
        }
        const QString text = element.attributeValue("alt");
        if (text.isEmpty()) return element.attribute(alt) || url.isEmpty() ? Natural{} : Natural{16, 16, false, false};
        return {16 + textWidth(box, text.simplified()), std::max(16.0, lineOf(box)), false, false};
    }
    if (element.is(input)) return inputSize(box, element);
    if (element.is(dom::names::select)) return selectSize(box, element);
    if (element.is(textarea)) {
        const double width = averageWidth(fontOf(box.style())) * attributeNumber(element, "cols", 20) + 15;
        return {std::ceil(width), lineOf(box) * attributeNumber(element, "rows", 2), false, false};
    }
    if (element.is(progress)) return {10 * box.style().font().size, box.style().font().size, false, true};
    if (element.name() == dom::Atom("meter")) return {5 * box.style().font().size, box.style().font().size, false, true};
    if (element.is(object)) {
        const QString data = element.attributeValue("data");
        if (const Natural picture = pictureSize(images, data.isEmpty() ? data : element.document().resolve(data)); picture.hasRatio) return picture;
    }
    if (element.is(audio)) return {300, 54, false, false};
    return {300, 150, element.is(canvas) || element.is(video), false};
}

} // namespace

bool Engine::hasRatio(const BlockBox &box) const
{
    if (!box.isReplaced() || !box.element()) return false;
    const Natural natural = naturalSize(box, *box.element(), mImages, {Unit::px(1), Unit::fromRaw(-1)});
    return natural.hasRatio && natural.width > 0 && natural.height > 0;
}

Size Engine::replacedSize(BlockBox &box, const Constraint &constraint, std::optional<Unit> forced)
{
    const dom::Element *element = box.element();
    const Natural natural = element ? naturalSize(box, *element, mImages, constraint) : pictureSize(mImages, box.picture());
    const Edges frame = natural.borderBox ? Edges{} : box.frame();
    const bool unknown = constraint.width >= unknownWidth && widthIsPercent(box); // of nothing: as if it weren't said
    if (element && !forced && standsAsText(*element, box.style(), mImages))
        return {Unit::from(natural.width) + frame.horizontal(), Unit::from(natural.height) + frame.vertical()};
    const std::optional<Unit> givenWidth = forced ? forced : unknown ? std::nullopt : usedWidth(box, constraint.width);
    const std::optional<Unit> givenHeight = usedHeight(box, constraint);
    Unit width = Unit::from(natural.width) + frame.horizontal(), height = Unit::from(natural.height) + frame.vertical();
    const bool ratio = natural.hasRatio && natural.width > 0 && natural.height > 0;
    if (givenWidth) width = *givenWidth;
    if (givenHeight) height = *givenHeight;
    if (ratio && givenWidth && !givenHeight)
        height = Unit::from((*givenWidth - frame.horizontal()).toDouble() * natural.height / natural.width) + frame.vertical();
    if (ratio && givenHeight && !givenWidth)
        width = Unit::from((*givenHeight - frame.vertical()).toDouble() * natural.width / natural.height) + frame.horizontal();
    if (forced) return {width, box.heightForced ? height : clampedHeight(box, height, constraint)};
    const Unit clamped = clampedWidth(box, width, constraint.width), limited = clampedHeight(box, height, constraint);
    if (!ratio || (givenWidth && givenHeight)) return {clamped, limited};
    const auto heightFor = [&](Unit w) { return clampedHeight(box, Unit::from((w - frame.horizontal()).toDouble() * natural.height / natural.width) + frame.vertical(), constraint); };
    const auto widthFor = [&](Unit h) { return clampedWidth(box, Unit::from((h - frame.vertical()).toDouble() * natural.width / natural.height) + frame.horizontal(), constraint.width); };
    if (givenWidth) return {clamped, clamped == width ? limited : heightFor(clamped)};
    if (givenHeight) return {limited == height ? clamped : widthFor(limited), limited};
    // Limits that are violated keep the ratio, as far as they let it (CSS 2.1, 10.4).
    const double wide = (clamped - frame.horizontal()).toDouble() / std::max(1e-9, (width - frame.horizontal()).toDouble());
    const double high = (limited - frame.vertical()).toDouble() / std::max(1e-9, (height - frame.vertical()).toDouble());
    const bool sameSense = (clamped < width && limited < height) || (clamped > width && limited > height);
    if (clamped != width && limited != height && !sameSense) return {clamped, limited};
    const bool widthLeads = sameSense ? (clamped < width) == (wide <= high) : clamped != width;
    if (widthLeads) return {clamped, heightFor(clamped)};
    return {limited == height ? clamped : widthFor(limited), limited};
}

void Engine::layoutReplaced(BlockBox &box, const Constraint &constraint)
{
    // An item's width is what its container made of it.
    const Size size = replacedSize(box, constraint, box.item ? std::optional<Unit>(box.width) : std::nullopt);
    box.width = size.width;
    box.height = size.height;
    box.collapsesThrough = false;
    box.bottomStrut = {};
    box.bottomStrut.add(box.marginBottom);
}

std::optional<Unit> atomicBaseline(const Engine &engine, const BlockBox &box)
{
    if (!box.isReplaced()) {
        if (box.clips && !box.isTable() && !box.hasItems()) return {};
        return engine.lastBaseline(box);
    }
    const dom::Element *element = box.element();
    if (!element) return {};
    // A picture that isn't there is its text, and stands on the line like text.
    if (element->is(img) && !element->attributeValue("alt").isEmpty() && !engine.hasRatio(box))
        return box.border.top + box.padding.top + fontOf(box.style()).ascent();
    const QString kind = element->is(input) ? element->attributeValue("type").toLower() : QString();
    // Boxes and sliders stand on the line, without what their margin is below; a colour's patch does, in its frame.
    if (kind == QLatin1String("checkbox") || kind == QLatin1String("radio") || kind == QLatin1String("range")) return box.height;
    if (kind == QLatin1String("color")) return box.height - Unit::px(6);
    if (isListBox(*element)) return box.height - Unit::px(3);
    if (!element->is(dom::names::select) && (!element->is(input) || kind == QLatin1String("image"))) return {};
    const Font &font = fontOf(box.style());
    const Unit content = box.height - box.frame().vertical();
    return box.border.top + box.padding.top + (content - font.height()) / 2 + font.ascent();
}

} // namespace layout
