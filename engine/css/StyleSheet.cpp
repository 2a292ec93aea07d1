// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleSheet.h"

namespace css {

namespace {

constexpr int maxNesting = 16;

class SheetParser
{
public:
    SheetParser(const QString &text, ValueMode mode) : mText(text), mTokens(tokenize(text)), mMode(mode) {}

    base::Ref<StyleSheet> run()
    {
        auto sheet = base::make<StyleSheet>();
        const size_t end = mTokens.size() - 1;
        const uint32_t behind = rules(sheet->rules, 0, end, true, 0);
        sheet->tail = mText.mid(behind);
        return sheet;
    }

private:
    /// Reads the rules between two tokens; answers where the last one ends in the text.
    uint32_t rules(std::vector<Rule> &into, size_t at, size_t end, bool top, int depth)
    {
        uint32_t behind = at < end ? (top ? 0 : mTokens[at].start) : 0;
        bool importsAllowed = top;
        while (at < end) {
            const Token &token = mTokens[at];
            if (token.is(TokenType::Whitespace) || (top && (token.is(TokenType::Cdo) || token.is(TokenType::Cdc)))) {
                ++at;
                continue;
            }
            Rule rule;
            rule.before = mText.mid(behind, token.start - behind);
            const size_t start = at;
            at = token.is(TokenType::AtKeyword) ? atRule(rule, at, end, importsAllowed, depth)
                                                : styleRule(rule, at, end);
            behind = mTokens[at - 1].end;
            rule.source = mText.mid(token.start, behind - token.start);
            // Only other imports and a character set may stand in front of an import.
            if (rule.kind != Rule::Kind::Import &&
                !(token.is(TokenType::AtKeyword) && token.text == QLatin1String("charset")))
                importsAllowed = false;
            if (at == start) ++at;
            into.push_back(std::move(rule));
        }
        return behind;
    }

    size_t styleRule(Rule &rule, size_t at, size_t end)
    {
        const size_t start = at;
        while (at < end && !mTokens[at].is(TokenType::OpenCurly))
            at = skipComponent(mTokens, at, end);
        if (at >= end) return end; // no block: kept as text
        rule.kind = Rule::Kind::Style;
        rule.style = base::make<StyleRule>();
        rule.style->selectorText = sourceOf(mTokens, start, at, mText);
        if (auto selectors = parseSelectors(mTokens, start, at, mText)) rule.style->selectors = std::move(*selectors);
        const size_t behind = skipComponent(mTokens, at, end);
        const size_t to = mTokens[behind - 1].is(TokenType::CloseCurly) && behind - 1 > at ? behind - 1 : behind;
        rule.style->block = DeclarationBlock::parse(mTokens, at + 1, to, mText, mMode);
        return behind;
    }

    size_t atRule(Rule &rule, size_t at, size_t end, bool importsAllowed, int depth)
    {
        const QString name = mTokens[at].text;
        const size_t start = ++at;
        while (at < end && !mTokens[at].is(TokenType::OpenCurly) && !mTokens[at].is(TokenType::Semicolon))
            at = skipComponent(mTokens, at, end);
        const size_t preludeEnd = at;
        const bool hasBlock = at < end && mTokens[at].is(TokenType::OpenCurly);
        const size_t behind = at < end ? skipComponent(mTokens, at, end) : end;
        if (name == QLatin1String("import") && !hasBlock && importsAllowed) readImport(rule, start, preludeEnd);
        if (name == QLatin1String("media") && hasBlock && depth < maxNesting) {
            rule.kind = Rule::Kind::Media;
            rule.media = MediaList::parse(mTokens, start, preludeEnd, mText);
            const size_t to = mTokens[behind - 1].is(TokenType::CloseCurly) ? behind - 1 : behind;
            rules(rule.rules, preludeEnd + 1, to, false, depth + 1);
        }
        return std::max(behind, start);
    }

    void readImport(Rule &rule, size_t at, size_t end)
    {
        while (at < end && mTokens[at].is(TokenType::Whitespace))
            ++at;
        if (at >= end) return;
        const Token &token = mTokens[at];
        size_t behind = at + 1;
        if (token.is(TokenType::String) || token.is(TokenType::Url)) {
            rule.url = token.text;
        } else if (token.isFunction("url")) {
            behind = skipComponent(mTokens, at, end);
            for (size_t i = at + 1; i < behind; ++i)
                if (mTokens[i].is(TokenType::String)) rule.url = mTokens[i].text;
        }
        if (rule.url.isEmpty()) return;
        rule.kind = Rule::Kind::Import;
        rule.media = MediaList::parse(mTokens, behind, end, mText);
    }

    const QString &mText;
    Tokens mTokens;
    ValueMode mMode;
};

} // namespace

base::Ref<StyleSheet> StyleSheet::parse(const QString &text, ValueMode mode)
{
    return SheetParser(text, mode).run();
}

QString StyleSheet::text() const
{
    QString result;
    for (const Rule &rule : rules)
        result += rule.before + rule.source;
    return result + tail;
}

void StyleSheet::rewrite(Rule &rule)
{
    if (!rule.style) return;
    const QString body = rule.style->block->text();
    rule.source =
        rule.style->selectorText + (body.isEmpty() ? QStringLiteral(" { }") : QStringLiteral(" { %1 }").arg(body));
}

Rule StyleSheet::makeRule(const QString &selector, const QString &css, ValueMode mode)
{
    Rule rule;
    rule.kind = Rule::Kind::Style;
    rule.style = base::make<StyleRule>();
    rule.style->selectorText = selector.simplified();
    if (auto selectors = parseSelectors(selector)) rule.style->selectors = std::move(*selectors);
    rule.style->block = DeclarationBlock::parse(css, mode);
    rewrite(rule);
    return rule;
}

} // namespace css
