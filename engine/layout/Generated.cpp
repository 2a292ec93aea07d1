// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/Generated.h"

#include "engine/dom/Names.h"
#include "engine/layout/BoxStyle.h"

namespace layout {

using css::Display;

bool isReplacedElement(const dom::Element &element)
{
    using namespace dom::names;
    if (element.space() == dom::Namespace::Svg) return element.name() == svg;
    static const dom::Atom names[] = {img, input, dom::names::select, textarea, iframe, object, embed, applet, video, audio, canvas,
                                      progress, frame, keygen, dom::Atom("meter")};
    return element.space() == dom::Namespace::Html && std::find(std::begin(names), std::end(names), element.name()) != std::end(names);
}

bool isHidden(const dom::Element &element, const css::ComputedStyle &style)
{
    if (style.display() == Display::None) return true;
    using namespace dom::names;
    if (element.is(input)) return element.attributeValue("type").compare(QLatin1String("hidden"), Qt::CaseInsensitive) == 0;
    if (element.is(audio)) return !element.hasAttribute("controls");
    return element.is(area) || element.is(param) || element.is(source) || element.is(track);
}

bool isContents(const css::ComputedStyle &style)
{
    return style.display() == Display::Contents;
}

BoxDecision decideBox(const dom::Element &element, const css::ComputedStyle &style)
{
    BoxDecision decision;
    const Display display = style.display();
    decision.positioned = style.isOutOfFlow();
    decision.floating = !decision.positioned && style.isFloating();
    const bool blockified = decision.positioned || decision.floating;
    decision.inlineLevel = style.isInlineLevel() && !blockified;
    const auto overflow = style.box().overflowX;
    decision.clips = overflow != css::Overflow::Visible && !element.is(dom::names::body) && !element.is(dom::names::html);
    if (element.is(dom::names::br) && element.space() == dom::Namespace::Html && !blockified) {
        decision.kind = BoxKind::LineBreak;
        decision.inlineLevel = true;
        return decision;
    }
    if (isReplacedElement(element)) {
        decision.kind = BoxKind::Replaced;
        return decision;
    }
    switch (display) {
    case Display::Table:
    case Display::InlineTable: decision.kind = BoxKind::Table; break;
    case Display::TableRowGroup:
    case Display::TableHeaderGroup:
    case Display::TableFooterGroup: decision.kind = BoxKind::TableSection; break;
    case Display::TableRow: decision.kind = BoxKind::TableRow; break;
    case Display::TableCell: decision.kind = BoxKind::TableCell; break;
    case Display::TableColumn:
    case Display::TableColumnGroup: decision.kind = BoxKind::TableColumn; break;
    case Display::Inline: decision.kind = blockified ? BoxKind::Block : BoxKind::Inline; break;
    default: decision.kind = BoxKind::Block; break;
    }
    if (decision.kind >= BoxKind::TableSection) decision.inlineLevel = false;
    decision.listItem = display == Display::ListItem;
    const bool ownContext = display == Display::FlowRoot || display == Display::InlineBlock || display == Display::Flex ||
                            display == Display::InlineFlex || display == Display::Grid || display == Display::InlineGrid ||
                            display == Display::TableCell || display == Display::TableCaption;
    decision.formattingRoot = decision.kind == BoxKind::TableCell || decision.kind == BoxKind::Table || blockified || ownContext ||
                              decision.clips || element.is(dom::names::html) || element.is(dom::names::fieldset) ||
                              style.rare().isMultiColumn() || style.rare().columnSpanAll;
    if (decision.kind == BoxKind::Inline) decision.formattingRoot = decision.clips = false;
    return decision;
}

// ---- Content of ::before and ::after ----

namespace {

css::Pseudo cssPseudo(Pseudo pseudo)
{
    return pseudo == Pseudo::Before ? css::Pseudo::Before : pseudo == Pseudo::After ? css::Pseudo::After : css::Pseudo::Marker;
}

int quoteDepth(const dom::Element &element)
{
    int depth = 0;
    for (const dom::Element *up = element.parentElement(); up; up = up->parentElement())
        if (up->is(dom::names::q)) ++depth;
    return depth;
}

QString itemText(LayoutTree &tree, dom::Element &element, Pseudo pseudo, const css::ContentItem &item, const css::ComputedStyle &style)
{
    using Kind = css::ContentItem::Kind;
    switch (item.kind) {
    case Kind::Text: return item.text;
    case Kind::Counter:
        if (pseudo == Pseudo::Marker && item.text == QLatin1String("list-item")) return counterText(tree.counters().ordinalOf(element), item.listStyle);
        return counterText(tree.counters().valuesAt(tree, element, pseudo, item.text).back(), item.listStyle);
    case Kind::Counters: {
        QStringList parts;
        for (const int value : tree.counters().valuesAt(tree, element, pseudo, item.text)) parts << counterText(value, item.listStyle);
        return parts.join(item.separator);
    }
    case Kind::OpenQuote:
    case Kind::CloseQuote: {
        const QStringList &quotes = style.text().quotes;
        if (quotes.size() < 2) return {};
        const qsizetype pair = std::min<qsizetype>(quoteDepth(element), quotes.size() / 2 - 1);
        return quotes[pair * 2 + (item.kind == Kind::CloseQuote ? 1 : 0)];
    }
    default: return {};
    }
}

} // namespace

StyleRef generatedStyle(LayoutTree &tree, dom::Element &element, Pseudo pseudo)
{
    StyleRef style = tree.styles().pseudoStyleFor(element, cssPseudo(pseudo));
    if (!style || !style->rare().hasContent || style->display() == Display::None) return {};
    return style;
}

bool hasGeneratedContent(LayoutTree &tree, dom::Element &element)
{
    return generatedStyle(tree, element, Pseudo::Before) || generatedStyle(tree, element, Pseudo::After);
}

bool showsCounters(const css::ComputedStyle &style)
{
    using Kind = css::ContentItem::Kind;
    const auto &content = style.rare().content;
    return std::any_of(content.begin(), content.end(), [](const css::ContentItem &item) { return item.kind == Kind::Counter || item.kind == Kind::Counters; });
}

QString generatedText(LayoutTree &tree, dom::Element &element, Pseudo pseudo, const css::ComputedStyle &style)
{
    QString text;
    for (const css::ContentItem &item : style.rare().content) text += itemText(tree, element, pseudo, item, style);
    return text;
}

Box *generatedBox(LayoutTree &tree, dom::Element &element, Pseudo pseudo, const StyleRef &style)
{
    const BoxDecision decision = decideBox(element, *style);
    const bool plain = decision.kind == BoxKind::Inline || decision.kind == BoxKind::LineBreak || (isReplacedElement(element) && decision.inlineLevel);
    Box *box = plain ? static_cast<Box *>(new InlineBox(&element, style))
               : decision.kind == BoxKind::Table ? static_cast<Box *>(new TableBox(&element, style))
                                                 : new BlockBox(BoxKind::Block, &element, style);
    box->pseudo = pseudo;
    box->inlineLevel = plain || decision.inlineLevel;
    box->floating = decision.floating;
    box->positioned = decision.positioned;
    box->formattingRoot = decision.formattingRoot;
    if (BlockBox *block = box->asBlock()) tree.boxMade(*block);
    TextBox *text = nullptr;
    for (const css::ContentItem &item : style->rare().content) {
        if (item.kind == css::ContentItem::Kind::Url) {
            box->insertChild(generatedPicture(tree, item.text, style), nullptr);
            text = nullptr;
            continue;
        }
        const QString part = itemText(tree, element, pseudo, item, *style);
        if (part.isEmpty()) continue;
        if (!text) box->insertChild(text = new TextBox(nullptr, style), nullptr);
        text->generated += part;
    }
    return box;
}

BlockBox *generatedPicture(LayoutTree &tree, const QString &url, const StyleRef &style)
{
    auto *box = new BlockBox(BoxKind::Replaced, nullptr, style);
    box->anonymous = box->inlineLevel = true;
    box->rareData().picture = url;
    tree.notePicture(url);
    tree.boxMade(*box);
    return box;
}

// ---- List markers ----

namespace {

QString roman(int value)
{
    static const std::pair<int, const char *> steps[] = {{1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"},
                                                         {50, "l"}, {40, "xl"}, {10, "x"}, {9, "ix"}, {5, "v"}, {4, "iv"}, {1, "i"}};
    QString text;
    for (const auto &[number, letters] : steps)
        for (; value >= number; value -= number) text += QLatin1String(letters);
    return text;
}

QString alphabetic(int value, char16_t first, int letters)
{
    QString text;
    for (; value > 0; value = (value - 1) / letters) text.prepend(QChar(char16_t(first + (value - 1) % letters)));
    return text;
}

QString greek(int value)
{
    static const QString letters = QString::fromUtf8("αβγδεζηθικλμνξοπρστυφχψω");
    QString text;
    for (; value > 0; value = (value - 1) / 24) text.prepend(letters[(value - 1) % 24]);
    return text;
}

QString armenian(int value)
{
    QString text;
    int digit = 0;
    for (int divisor = 1000; divisor; divisor /= 10, ++digit) {
        const int n = value / divisor % 10;
        if (n) text += QChar(char16_t(0x531 + (3 - digit) * 9 + n - 1));
    }
    return text;
}

QString georgian(int value)
{
    static const std::pair<int, char16_t> steps[] = {{10000, 0x10F5}, {9000, 0x10F0}, {8000, 0x10EF}, {7000, 0x10F4}, {6000, 0x10EE},
        {5000, 0x10ED}, {4000, 0x10EC}, {3000, 0x10EB}, {2000, 0x10EA}, {1000, 0x10E9}, {900, 0x10E8}, {800, 0x10E7}, {700, 0x10E6},
        {600, 0x10E5}, {500, 0x10E4}, {400, 0x10F3}, {300, 0x10E2}, {200, 0x10E1}, {100, 0x10E0}, {90, 0x10DF}, {80, 0x10DE},
        {70, 0x10DD}, {60, 0x10F2}, {50, 0x10DC}, {40, 0x10DB}, {30, 0x10DA}, {20, 0x10D9}, {10, 0x10D8}, {9, 0x10D7}, {8, 0x10F1},
        {7, 0x10D6}, {6, 0x10D5}, {5, 0x10D4}, {4, 0x10D3}, {3, 0x10D2}, {2, 0x10D1}, {1, 0x10D0}};
    QString text;
    for (const auto &[number, letter] : steps)
        for (; value >= number; value -= number) text += QChar(letter);
    return text;
}

} // namespace

QString counterText(int value, css::ListStyleType type)
{
    using Type = css::ListStyleType;
    switch (type) {
    case Type::None: return {};
    case Type::Disc: return QString(QChar(0x2022));
    case Type::Circle: return QString(QChar(0x25E6));
    case Type::Square: return QString(QChar(0x25AA));
    case Type::DecimalLeadingZero:
        return value < 0 ? QStringLiteral("-%1").arg(-value, 2, 10, QLatin1Char('0')) : QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
    case Type::LowerRoman: return value > 0 && value < 4000 ? roman(value) : QString::number(value);
    case Type::UpperRoman: return value > 0 && value < 4000 ? roman(value).toUpper() : QString::number(value);
    case Type::LowerAlpha: return value > 0 ? alphabetic(value, 'a', 26) : QString::number(value);
    case Type::UpperAlpha: return value > 0 ? alphabetic(value, 'A', 26) : QString::number(value);
    case Type::LowerGreek: return value > 0 ? greek(value) : QString::number(value);
    case Type::Armenian: return value > 0 && value < 10000 ? armenian(value) : QString::number(value);
    case Type::Georgian: return value > 0 && value < 20000 ? georgian(value) : QString::number(value);
    default: return QString::number(value);
    }
}

bool isBulletType(css::ListStyleType type)
{
    return type == css::ListStyleType::Disc || type == css::ListStyleType::Circle || type == css::ListStyleType::Square;
}

namespace {

// Bullets and strings are the same for every item; what counts isn't.
bool markerCounts(const BlockBox &item, const MarkerData &marker)
{
    if (marker.style && marker.style->rare().hasContent) return showsCounters(*marker.style);
    const css::TextGroup &text = item.style().text();
    return text.listStyleString.isNull() && !isBulletType(text.listStyleType);
}

QString markerTextOf(LayoutTree &tree, const BlockBox &item, const MarkerData &marker)
{
    if (marker.style && marker.style->rare().hasContent) return generatedText(tree, *item.element(), Pseudo::Marker, *marker.style);
    const css::TextGroup &text = item.style().text();
    if (!text.listStyleString.isNull()) return text.listStyleString;
    if (isBulletType(text.listStyleType)) return counterText(1, text.listStyleType) + QLatin1Char(' ');
    return counterText(item.element() ? tree.counters().ordinalOf(*item.element()) : 1, text.listStyleType) + QStringLiteral(". ");
}

} // namespace

const css::ComputedStyle &markerStyle(const BlockBox &item, const MarkerData &marker)
{
    return marker.style ? *marker.style : item.style();
}

void makeMarker(LayoutTree &tree, BlockBox &item)
{
    const css::TextGroup &text = item.style().text();
    if (text.listStyleImage.kind == css::Image::Kind::Url) tree.notePicture(text.listStyleImage.text);
    auto marker = std::make_unique<MarkerData>();
    if (item.element() && item.pseudo == Pseudo::None) marker->style = tree.styles().pseudoStyleFor(*item.element(), css::Pseudo::Marker);
    const bool says = marker->style && marker->style->rare().hasContent, none = marker->style && marker->style->rare().contentNone;
    const bool image = !says && text.listStyleImage.kind == css::Image::Kind::Url && tree.images() &&
                       !tree.images()->imageSize(text.listStyleImage.text).isEmpty();
    if (none || (!says && text.listStyleType == css::ListStyleType::None && !image && text.listStyleString.isNull())) {
        if (item.rare) item.rare->marker.reset();
        return;
    }
    marker->image = image;
    if (image) {
        const QSize size = tree.images()->imageSize(text.listStyleImage.text);
        marker->imageSize = {Unit::px(size.width()), Unit::px(size.height())};
    }
    marker->text = markerTextOf(tree, item, *marker);
    marker->inside = text.listStylePosition == css::ListStylePosition::Inside;
    item.rareData().marker = std::move(marker);
}

void refreshMarker(LayoutTree &tree, BlockBox &item)
{
    if (!item.rare || !item.rare->marker || item.rare->marker->inside || !item.element()) return;
    MarkerData &marker = *item.rare->marker;
    if (!markerCounts(item, marker)) return;
    const QString now = markerTextOf(tree, item, marker);
    if (now == marker.text) return;
    marker.text = now;
    marker.width = markerWidth(item, marker);
    marker.x = isRightToLeft(item.style()) ? item.width : -marker.width;
}

bool showsBullet(const BlockBox &item, const MarkerData &marker)
{
    const css::TextGroup &text = item.style().text();
    const bool says = marker.style && marker.style->rare().hasContent;
    return !says && !marker.image && text.listStyleString.isNull() && isBulletType(text.listStyleType);
}

Unit markerWidth(const BlockBox &item, const MarkerData &marker)
{
    const css::ComputedStyle &style = markerStyle(item, marker);
    const Font &font = fontOf(style);
    if (marker.image) return marker.imageSize.width + Unit::px(7);
    if (showsBullet(item, marker)) {
        // The disc's size and its distance from the text grow with the font.
        const int ascent = font.ascent().rounded();
        const int size = (ascent * 2 / 3 + 1) / 2;
        const Unit offset = Unit::px(ascent * 2 / 3 / 2 * 0 + 8);
        return Unit::px(size) + offset;
    }
    return Unit::ceil(TextShaper::width(marker.text, font, {}));
}

} // namespace layout
