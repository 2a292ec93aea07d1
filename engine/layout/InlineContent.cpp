// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/layout/InlineContent.h"

#include "engine/layout/Bidi.h"
#include "engine/layout/BoxStyle.h"
#include "engine/layout/BreakFinder.h"

namespace layout {

namespace {

bool isBlank(char16_t c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

// Goes through a node's text as layout reads it: tells for each unit whether it is kept.
class Collapser
{
public:
    Collapser(const css::ComputedStyle &style, bool afterBlank)
        : mCollapses(collapsesBlanks(style)), mKeepsLines(preservesLineBreaks(style)), mAfterBlank(afterBlank)
    {
    }
    bool keeps(char16_t c)
    {
        if (mKeepsLines && c == '\n') {
            mAfterBlank = mCollapses;
            return true;
        }
        if (mCollapses && isBlank(c)) {
            const bool kept = !mAfterBlank;
            mAfterBlank = true;
            return kept;
        }
        mAfterBlank = false;
        return true;
    }
    QChar shown(QChar c) const { return mCollapses && isBlank(c.unicode()) ? QLatin1Char(' ') : c; }
    bool isLineBreak(char16_t c) const { return mKeepsLines && c == '\n'; }
    bool afterBlank() const { return mAfterBlank; }

private:
    bool mCollapses, mKeepsLines, mAfterBlank;
};

// Capitals of which there are several: a sharp s becomes "SS". The text grows, so places in it are counted with them.
QString severalCapitals(QChar c)
{
    const char16_t u = c.unicode();
    if (u != 0xDF && u != 0x149 && u != 0x1F0 && !(u >= 0xFB00 && u <= 0xFB17)) return {};
    const QString capitals = QString(c).toUpper();
    return capitals.size() > 1 ? capitals : QString();
}

// How many units a character that is kept takes.
uint32_t unitsOf(QChar c, bool capitals)
{
    if (!capitals || c.unicode() < 0xDF) return 1;
    return std::max(1u, uint32_t(severalCapitals(c).size()));
}

QChar transformed(QChar c, TextTransform transform, bool wordStart)
{
    switch (transform) {
    case TextTransform::Uppercase:
        return c.toUpper();
    case TextTransform::Lowercase:
        return c.toLower();
    case TextTransform::Capitalize:
        return wordStart ? c.toTitleCase() : c;
    default:
        return c;
    }
}

} // namespace

const Line *InlineContent::lineOf(uint32_t offset) const
{
    if (lines.empty()) return nullptr;
    auto it = std::upper_bound(lines.begin(), lines.end(), offset, [](uint32_t o, const Line &line) { return o < line.start; });
    return it == lines.begin() ? &lines.front() : &*(it - 1);
}

const Line *InlineContent::lineAt(Unit y) const
{
    if (lines.empty()) return nullptr;
    auto it = std::upper_bound(lines.begin(), lines.end(), y, [](Unit at, const Line &line) { return at < line.bottom(); });
    return it == lines.end() ? &lines.back() : &*it;
}

uint32_t TextMap::collapsed(const TextBox &box, uint32_t offset)
{
    Collapser collapser(box.style(), box.startsCollapsed);
    uint32_t at = box.start;
    const QString &source = box.source();
    const bool capitals = textTransformOf(box.style()) == TextTransform::Uppercase;
    const uint32_t end = std::min(offset, uint32_t(source.size()));
    for (uint32_t i = 0; i < end && at < box.end; ++i)
        if (collapser.keeps(source[i].unicode())) at += unitsOf(source[i], capitals);
    return std::min(at, box.end);
}

uint32_t TextMap::source(const TextBox &box, uint32_t collapsed)
{
    Collapser collapser(box.style(), box.startsCollapsed);
    uint32_t at = box.start;
    const QString &source = box.source();
    const bool capitals = textTransformOf(box.style()) == TextTransform::Uppercase;
    uint32_t afterKept = 0;
    for (uint32_t i = 0; i < uint32_t(source.size()); ++i) {
        if (!collapser.keeps(source[i].unicode())) continue;
        const uint32_t units = unitsOf(source[i], capitals);
        if (at + units > collapsed) return at == box.start || collapsed < box.end ? i : afterKept;
        at += units;
        afterKept = i + 1;
    }
    return afterKept;
}

InlineCollector::InlineCollector(BlockBox &block) : mBlock(block), mContent(*block.inlineContent) {}

void InlineCollector::run()
{
    mContent.text.clear();
    mContent.items.clear();
    mContent.shapes.clear();
    mContent.hasContent = mContent.hasBlocks = mContent.hasFloats = mContent.bidi = false;
    Box *box = mBlock.firstChild();
    while (box) {
        addBox(*box);
        if (box->isInline() && box->firstChild()) {
            box = box->firstChild();
            continue;
        }
        if (box->isInline()) close(static_cast<InlineBox &>(*box));
        while (box && !box->next()) {
            box = box->parent();
            if (box == &mBlock) box = nullptr;
            if (box) close(static_cast<InlineBox &>(*box));
        }
        if (box) box = box->next();
    }
    if (mBlock.element() && mBlock.element()->isHeldOpen()) mContent.hasContent = true;
    splitByDirection();
    classify();
    kernAcross();
    mContent.text.squeeze();
    mContent.itemsValid = true;
}

void InlineCollector::addBox(Box &box)
{
    const auto at = uint32_t(mContent.text.size());
    const auto add = [&](ItemType type, QChar placeholder) {
        InlineItem item{type};
        item.box = &box;
        item.start = at;
        if (!placeholder.isNull()) mContent.text.append(placeholder);
        item.end = uint32_t(mContent.text.size());
        mContent.items.push_back(item);
    };
    if (box.isText()) {
        addText(static_cast<TextBox &>(box));
    } else if (box.isInline()) {
        open(static_cast<InlineBox &>(box));
    } else if (box.kind() == BoxKind::LineBreak) {
        static_cast<LineBreakBox &>(box).start = at;
        add(ItemType::Break, QLatin1Char('\n'));
        mAfterBlank = true;
        mContent.hasContent = true;
    } else if (box.floating) {
        add(ItemType::Float, {});
        mContent.hasFloats = true;
    } else if (box.positioned) {
        add(ItemType::Positioned, {});
    } else if (!box.inlineLevel) {
        add(ItemType::Block, QChar(0x2029));
        mAfterBlank = true;
        mContent.hasBlocks = true;
    } else {
        add(ItemType::Atomic, QChar(0xFFFC));
        mAfterBlank = false;
        mContent.hasContent = true;
    }
}

void InlineCollector::open(InlineBox &box)
{
    box.start = uint32_t(mContent.text.size());
    box.openItem = uint32_t(mContent.items.size());
    InlineItem item{ItemType::Open};
    item.box = &box;
    item.start = item.end = box.start;
    mContent.items.push_back(item);
    if (hasInlineEdges(box)) mContent.hasContent = true;
}

void InlineCollector::close(InlineBox &box)
{
    box.end = uint32_t(mContent.text.size());
    box.closeItem = uint32_t(mContent.items.size());
    InlineItem item{ItemType::Close};
    item.box = &box;
    item.start = item.end = box.end;
    mContent.items.push_back(item);
}

void InlineCollector::addText(TextBox &box)
{
    const css::ComputedStyle &style = box.style();
    const QString &source = box.source();
    const TextTransform transform = textTransformOf(style);
    Collapser collapser(style, mAfterBlank);
    box.startsCollapsed = mAfterBlank;
    box.start = uint32_t(mContent.text.size());
    const bool preserves = !collapsesBlanks(style);
    uint32_t start = box.start;
    const auto flush = [&] {
        const auto at = uint32_t(mContent.text.size());
        if (at > start) {
            InlineItem item{ItemType::Text};
            item.box = &box;
            item.start = start;
            item.end = at;
            mContent.items.push_back(item);
        }
        start = at;
    };
    mContent.text.reserve(mContent.text.size() + source.size());
    for (qsizetype i = 0; i < source.size(); ++i) {
        const QChar c = source[i];
        if (!collapser.keeps(c.unicode())) continue;
        if (collapser.isLineBreak(c.unicode())) {
            flush();
            InlineItem item{ItemType::Break};
            item.box = &box;
            item.start = start;
            mContent.text.append(QLatin1Char('\n'));
            item.end = ++start;
            mContent.items.push_back(item);
            mContent.hasContent = true;
            continue;
        }
        QChar shown = collapser.shown(c);
        if (shown == QChar(0xAD) && style.text().hyphens == css::Hyphens::None) shown = QChar(0x2060); // no place to break at
        if (preserves || shown != QLatin1Char(' ')) mContent.hasContent = true;
        if (transform == TextTransform::None) {
            mContent.text.append(shown);
        } else if (const QString capitals = transform == TextTransform::Uppercase ? severalCapitals(shown) : QString(); !capitals.isEmpty()) {
            mContent.text.append(capitals);
        } else {
            const QChar before = mContent.text.isEmpty() ? QChar(' ') : mContent.text.back();
            const bool wordStart = !before.isLetterOrNumber() && before != QLatin1Char('\'') && before != QChar(0x2019);
            mContent.text.append(transformed(shown, transform, wordStart));
        }
    }
    flush();
    box.end = uint32_t(mContent.text.size());
    mAfterBlank = collapser.afterBlank();
}

namespace {

// What an element's `unicode-bidi` stands for (CSS Writing Modes 4, 2.4.2), in front of its content and behind it.
std::pair<std::vector<char16_t>, std::vector<char16_t>> marksOf(const Box &box, bool block)
{
    using css::UnicodeBidi;
    const UnicodeBidi kind = box.style().box().unicodeBidi;
    const bool turned = isRightToLeft(box.style());
    const char16_t override = turned ? bidi::rlo : bidi::lro;
    if (block) { // its paragraph has its direction already
        if (kind == UnicodeBidi::BidiOverride || kind == UnicodeBidi::IsolateOverride) return {{override}, {bidi::pdf}};
        return {};
    }
    switch (kind) {
    case UnicodeBidi::Embed: return {{turned ? bidi::rle : bidi::lre}, {bidi::pdf}};
    case UnicodeBidi::BidiOverride: return {{override}, {bidi::pdf}};
    case UnicodeBidi::IsolateOverride: return {{bidi::fsi, override}, {bidi::pdf, bidi::pdi}};
    case UnicodeBidi::Plaintext: return {{bidi::fsi}, {bidi::pdi}};
    case UnicodeBidi::Isolate: {
        // By its first letter, where the page leaves it to that.
        static const dom::Atom bdiName("bdi");
        const dom::Element *element = box.element();
        const QString dir = element ? element->attributeValue("dir").toLower() : QString();
        const bool byContent = dir == QLatin1String("auto") || (element && element->is(bdiName) && dir != QLatin1String("ltr") && dir != QLatin1String("rtl"));
        return {{byContent ? bidi::fsi : turned ? bidi::rli : bidi::lri}, {bidi::pdi}};
    }
    case UnicodeBidi::Normal: break;
    }
    return {};
}

// The marks of a block's elements. They end with their paragraph, and begin anew behind it.
std::vector<BidiMark> bidiMarks(const Box &block, const InlineContent &content)
{
    std::vector<BidiMark> marks;
    const auto asks = [](const Box &box) { return box.style().box().unicodeBidi != css::UnicodeBidi::Normal; };
    if (!asks(block) && std::none_of(content.items.begin(), content.items.end(), [&](const InlineItem &item) { return item.type == ItemType::Open && asks(*item.box); }))
        return marks;
    std::vector<std::vector<char16_t>> open;
    const auto put = [&](uint32_t at, const std::vector<char16_t> &each) {
        for (const char16_t mark : each) marks.push_back({at, mark});
    };
    const auto begin = [&](const Box &box, uint32_t at, bool isBlock) {
        open.push_back(marksOf(box, isBlock).first);
        put(at, open.back());
    };
    begin(block, 0, true);
    for (const InlineItem &item : content.items) {
        if (item.type == ItemType::Open) {
            begin(*item.box, item.start, false);
        } else if (item.type == ItemType::Close && open.size() > 1) {
            put(item.start, marksOf(*item.box, false).second);
            open.pop_back();
        } else if (item.type == ItemType::Break || item.type == ItemType::Block) {
            for (const auto &each : open) put(item.end, each);
        }
    }
    return marks;
}

} // namespace

// Cuts text items where the direction changes, and gives every item its level.
void InlineCollector::splitByDirection()
{
    const bool rightToLeft = isRightToLeft(mBlock.style());
    const std::vector<uint8_t> levels = bidiLevels(mContent.text, rightToLeft, bidiMarks(mBlock, mContent));
    if (levels.empty()) return;
    mContent.bidi = true;
    std::vector<InlineItem> items;
    items.reserve(mContent.items.size());
    const uint8_t base = rightToLeft ? 1 : 0;
    for (InlineItem item : mContent.items) {
        // An element's ends turn around with what they enclose.
        const uint32_t at = item.type == ItemType::Close && item.start > 0 ? item.start - 1 : item.start;
        const bool takesPart = item.end > item.start || item.type == ItemType::Open || item.type == ItemType::Close;
        item.level = takesPart && at < levels.size() ? levels[at] : base;
        if (item.type == ItemType::Break) item.level = base;
        if (item.type != ItemType::Text) {
            if (auto *box = item.box && item.box->isInline() ? static_cast<InlineBox *>(item.box) : nullptr)
                (item.type == ItemType::Open ? box->openItem : box->closeItem) = uint32_t(items.size());
            items.push_back(item);
            continue;
        }
        uint32_t start = item.start;
        for (uint32_t i = item.start + 1; i <= item.end; ++i) {
            if (i < item.end && levels[i] == levels[start]) continue;
            InlineItem part = item;
            part.start = start;
            part.end = i;
            part.level = levels[start];
            items.push_back(part);
            start = i;
        }
    }
    mContent.items = std::move(items);
}

// Letters of one font kern across the ends of elements, where no edge stands between.
void InlineCollector::kernAcross()
{
    InlineItem *before = nullptr;
    for (InlineItem &item : mContent.items) {
        if (item.type == ItemType::Open || item.type == ItemType::Close) {
            if (hasInlineEdges(static_cast<const InlineBox &>(*item.box))) before = nullptr;
            continue;
        }
        const bool simple = item.type == ItemType::Text && item.simple && item.end > item.start;
        if (simple && before && before->end == item.start) {
            const Font &font = fontOf(item.box->style());
            const int first = FontFace::tableIndex(mContent.text[before->end - 1].unicode()), second = FontFace::tableIndex(mContent.text[item.start].unicode());
            if (&font == &fontOf(before->box->style()) && first >= 0 && second >= 0) {
                const int16_t kerning = font.face().kerning(first, second);
                if (kerning != FontFace::ligature) before->tail = float(kerning * font.scale());
            }
        }
        before = simple ? &item : nullptr;
    }
}

// Cuts text that the font's tables don't cover out of what they do, and shapes it.
void InlineCollector::classify()
{
    std::vector<InlineItem> cut;
    bool anyCut = false;
    const QString &text = mContent.text;
    for (std::size_t n = 0; n < mContent.items.size(); ++n) {
        InlineItem &item = mContent.items[n];
        if (item.type != ItemType::Text) {
            if (anyCut) {
                if (auto *box = item.box && item.box->isInline() ? static_cast<InlineBox *>(item.box) : nullptr)
                    (item.type == ItemType::Open ? box->openItem : box->closeItem) = uint32_t(cut.size());
                cut.push_back(item);
            }
            continue;
        }
        const Font &font = fontOf(item.box->style());
        const bool rightToLeft = item.level & 1;
        const QStringView view(text);
        if (!rightToLeft && TextShaper::isSimple(view.mid(item.start, item.end - item.start), font)) {
            item.simple = true;
            if (anyCut) cut.push_back(item);
            continue;
        }
        if (!anyCut) cut.assign(mContent.items.begin(), mContent.items.begin() + std::ptrdiff_t(n));
        anyCut = true;
        const auto complexAt = [&](uint32_t i) {
            if (rightToLeft) return true;
            const int index = FontFace::tableIndex(text[i].unicode());
            if (index < 0 || !font.face().entry(index).glyph) return true;
            const int after = i + 1 < item.end ? FontFace::tableIndex(text[i + 1].unicode()) : 0;
            if (i + 1 < item.end && (after < 0) && text[i + 1].isMark()) return true;
            if (i + 1 < item.end && after >= 0 && font.face().kerning(index, after) == FontFace::ligature) return true;
            const int before = i > item.start ? FontFace::tableIndex(text[i - 1].unicode()) : -1;
            return before >= 0 && font.face().kerning(before, index) == FontFace::ligature;
        };
        uint32_t start = item.start;
        bool complex = complexAt(start);
        for (uint32_t i = start + 1; i <= item.end; ++i) {
            const bool now = i < item.end ? complexAt(i) : !complex;
            if (now == complex) continue;
            InlineItem part = item;
            part.start = start;
            part.end = i;
            part.simple = !complex;
            if (complex) {
                part.shaped = int32_t(mContent.shapes.size());
                mContent.shapes.push_back(TextShaper::shape(view.mid(start, i - start), font, spacingOf(item.box->style()), rightToLeft));
            }
            cut.push_back(part);
            start = i;
            complex = now;
        }
    }
    if (anyCut) mContent.items = std::move(cut);
}

} // namespace layout
