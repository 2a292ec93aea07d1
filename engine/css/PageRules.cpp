// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/PageRules.h"

#include "engine/css/ValueReader.h"

namespace css {

namespace {

constexpr double perMillimetre = 96 / 25.4;
constexpr double largestPaper = 100000; // pixels; what is beyond is a mistake

struct Paper
{
    const char *name;
    double width, height; // millimetres
};
constexpr Paper papers[] = {{"a5", 148, 210},       {"a4", 210, 297},         {"a3", 297, 420},
                            {"b5", 176, 250},       {"b4", 250, 353},         {"jis-b5", 182, 257},
                            {"jis-b4", 257, 364},   {"letter", 215.9, 279.4}, {"legal", 215.9, 355.6},
                            {"ledger", 279.4, 431.8}};

std::optional<double> takePixels(ValueReader &reader)
{
    const auto length = reader.takeLength(ValueReader::NonNegative);
    if (!length || length->kind != Value::Kind::Length) return {};
    const bool ofFont = length->unit == Unit::Em || length->unit == Unit::Rem;
    return ofFont ? length->number * 16 : length->number;
}

// A word for a paper, one or two lengths, a direction; the direction with a paper too, in any order.
bool readSize(ValueReader &reader, PageStyle &style)
{
    std::optional<QSizeF> size;
    PageStyle::Direction direction{};
    bool named = false, any = false;
    while (!reader.atEnd()) {
        any = true;
        if (reader.takeWord("auto")) return reader.atEnd() && !size && direction == PageStyle::Direction::Unset;
        if (direction == PageStyle::Direction::Unset) {
            if (reader.takeWord("landscape")) direction = PageStyle::Direction::Landscape;
            else if (reader.takeWord("portrait")) direction = PageStyle::Direction::Portrait;
            if (direction != PageStyle::Direction::Unset) continue;
        }
        if (size) return false;
        for (const Paper &paper : papers)
            if (!named && reader.takeWord(paper.name)) {
                size = QSizeF(paper.width * perMillimetre, paper.height * perMillimetre);
                named = true;
            }
        if (named) continue;
        const auto width = takePixels(reader);
        if (!width) return false;
        const auto height = reader.atEnd() ? width : takePixels(reader);
        if (!height) return false;
        size = QSizeF(*width, *height);
    }
    if (!any || (size && !named && direction != PageStyle::Direction::Unset)) return false;
    if (size) {
        if (direction == PageStyle::Direction::Landscape) size->transpose();
        if (size->width() < 1 || size->height() < 1 || size->width() > largestPaper || size->height() > largestPaper)
            return false;
        direction = PageStyle::Direction::Unset;
    }
    style.size = size;
    style.direction = direction;
    return true;
}

std::optional<PageStyle::Margin> takeMargin(ValueReader &reader)
{
    if (reader.takeWord("auto")) return PageStyle::Margin{};
    const auto length = reader.takeLength(ValueReader::Percent);
    if (!length) return {};
    if (length->kind != Value::Kind::Length) return {};
    if (length->unit == Unit::Percent) return PageStyle::Margin{0, length->number};
    const bool ofFont = length->unit == Unit::Em || length->unit == Unit::Rem;
    return PageStyle::Margin{ofFont ? length->number * 16 : length->number, 0};
}

void readMargins(ValueReader &reader, PageStyle &style)
{
    std::vector<PageStyle::Margin> sides;
    while (!reader.atEnd()) {
        const auto margin = takeMargin(reader);
        if (!margin || sides.size() == 4) return;
        sides.push_back(*margin);
    }
    if (sides.empty()) return;
    style.top = sides[0];
    style.right = sides[sides.size() > 1 ? 1 : 0];
    style.bottom = sides[sides.size() > 2 ? 2 : 0];
    style.left = sides[sides.size() > 3 ? 3 : sides.size() > 1 ? 1 : 0];
}

void readDeclaration(const QString &name, ValueReader &reader, PageStyle &style)
{
    if (name == QLatin1String("size")) {
        readSize(reader, style);
        return;
    }
    if (name == QLatin1String("margin")) return readMargins(reader, style);
    std::optional<PageStyle::Margin> *side = name == QLatin1String("margin-top")      ? &style.top
                                             : name == QLatin1String("margin-right")  ? &style.right
                                             : name == QLatin1String("margin-bottom") ? &style.bottom
                                             : name == QLatin1String("margin-left")   ? &style.left
                                                                                      : nullptr;
    if (!side) return;
    const auto margin = takeMargin(reader);
    if (margin && reader.atEnd()) *side = margin;
}

void overlay(PageStyle &style, const PageStyle &over)
{
    if (over.size || over.direction != PageStyle::Direction::Unset) {
        style.size = over.size;
        style.direction = over.direction;
    }
    if (over.top) style.top = over.top;
    if (over.right) style.right = over.right;
    if (over.bottom) style.bottom = over.bottom;
    if (over.left) style.left = over.left;
}

} // namespace

void PageRules::add(const std::vector<Rule> &rules, const Medium &medium)
{
    for (const Rule &rule : rules) {
        if (rule.kind == Rule::Kind::Media && rule.media.suits(medium)) add(rule.rules, medium); // the parser bounds it
        if (rule.kind == Rule::Kind::Other && rule.source.trimmed().startsWith(QLatin1String("@page"), Qt::CaseInsensitive))
            addRule(rule.source);
    }
}

void PageRules::addRule(const QString &source)
{
    const Tokens tokens = tokenize(source);
    size_t at = 0;
    while (at < tokens.size() && !tokens[at].is(TokenType::AtKeyword))
        ++at;
    const size_t start = at + 1;
    while (at < tokens.size() && !tokens[at].is(TokenType::OpenCurly))
        ++at;
    if (at >= tokens.size() || tokens[start - 1].text.compare(QLatin1String("page"), Qt::CaseInsensitive) != 0) return;
    PageRule rule;
    const QString selector = sourceOf(tokens, start, at, source).toLower();
    if (selector == QLatin1String(":first")) {
        rule.which = Which::First;
    } else if (selector == QLatin1String(":left") || selector == QLatin1String(":right")) {
        rule.which = Which::Side;
        rule.left = selector == QLatin1String(":left");
    } else if (!selector.isEmpty()) {
        return;
    }
    const size_t behind = skipComponent(tokens, at, tokens.size());
    const size_t end = tokens[behind - 1].is(TokenType::CloseCurly) ? behind - 1 : behind;
    for (++at; at < end;) {
        size_t stop = at;
        while (stop < end && !tokens[stop].is(TokenType::Semicolon))
            stop = skipComponent(tokens, stop, end);
        while (at < stop && tokens[at].is(TokenType::Whitespace))
            ++at;
        size_t colon = at + 1;
        while (colon < stop && tokens[colon].is(TokenType::Whitespace))
            ++colon;
        if (at < stop && tokens[at].is(TokenType::Ident) && colon < stop && tokens[colon].is(TokenType::Colon)) {
            size_t last = stop;
            while (last > colon && tokens[last - 1].is(TokenType::Whitespace))
                --last;
            bool important = false;
            if (last >= colon + 3 && tokens[last - 1].isIdent("important")) {
                size_t mark = last - 2;
                while (mark > colon && tokens[mark].is(TokenType::Whitespace))
                    --mark;
                important = tokens[mark].isDelim('!');
                if (important) last = mark;
            }
            ValueReader reader(tokens, colon + 1, last, source, ValueMode::Strict);
            readDeclaration(tokens[at].text.toLower(), reader, important ? rule.important : rule.plain);
        }
        at = stop + 1;
    }
    mRules.push_back(rule);
}

PageStyle PageRules::styleFor(int page) const
{
    PageStyle style;
    for (const bool important : {false, true})
        for (const Which which : {Which::All, Which::Side, Which::First})
            for (const PageRule &rule : mRules) {
                if (rule.which != which || (which == Which::First && page != 0)) continue;
                if (which == Which::Side && rule.left != (page % 2 == 1)) continue;
                overlay(style, important ? rule.important : rule.plain);
            }
    return style;
}

} // namespace css
