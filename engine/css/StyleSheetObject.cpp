// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/StyleSheetObject.h"

#include "base/Error.h"
#include "base/Fault.h"
#include "engine/css/Services.h"
#include "engine/dom/Names.h"

#include <algorithm>

namespace css {

RuleObject::RuleObject(StyleSheetObject &sheet, StyleRule &rule)
    : mSheet(&sheet), mRule(&rule), mStyle(new StyleObject(*this))
{
    sheet.mObjects.push_back(this);
}

RuleObject::~RuleObject()
{
    std::erase(mSheet->mObjects, this);
    delete mStyle;
}

QString RuleObject::selectorText() const
{
    return selectorTextInCapitals(mRule->selectorText);
}

static Rule checkedRule(const QString &selector, const QString &css, ValueMode mode)
{
    // What would end the rule early, or start another, isn't a selector.
    const Tokens tokens = tokenize(selector);
    bool blank = true;
    for (size_t i = 0; i + 1 < tokens.size(); ++i) {
        const Token &token = tokens[i];
        blank = blank && token.is(TokenType::Whitespace);
        if (token.is(TokenType::OpenCurly) || token.is(TokenType::CloseCurly) || token.is(TokenType::AtKeyword) ||
            token.is(TokenType::Semicolon) || token.is(TokenType::BadString) || token.is(TokenType::Cdo))
            throw base::Error(base::errors::invalidValue, QStringLiteral("\"%1\" is no selector.").arg(selector));
    }
    if (blank) throw base::Error(base::errors::invalidValue, QStringLiteral("A rule needs a selector."));
    Rule rule = StyleSheet::makeRule(selector, css, mode);
    const auto again = StyleSheet::parse(rule.source, mode);
    if (again->rules.size() != 1 || !again->rules[0].style)
        throw base::Error(base::errors::invalidValue, QStringLiteral("\"%1\" makes no rule.").arg(selector));
    return rule;
}

void RuleObject::setSelectorText(const QString &text)
{
    Rule *rule = mSheet->findRule(*mRule);
    const Rule made = checkedRule(text, QString(), ValueMode::Strict);
    if (made.style->selectorText == mRule->selectorText) return;
    mRule->selectorText = made.style->selectorText;
    mRule->selectors = made.style->selectors;
    if (!rule) return;
    StyleSheet::rewrite(*rule);
    mSheet->written();
}

void RuleObject::write(const base::Ref<DeclarationBlock> &block)
{
    Rule *rule = mSheet->findRule(*mRule);
    block->setBaseURL(mRule->block->baseURL());
    mRule->block = block;
    if (!rule) return;
    StyleSheet::rewrite(*rule);
    mSheet->written();
}

StyleSheetObject::StyleSheetObject(Services &services, Kind kind, dom::Element *owner)
    : mServices(&services), mKind(kind), mOwner(owner), mSheet(base::make<StyleSheet>())
{
}

QString StyleSheetObject::href() const
{
    const QString *href = mKind == Kind::Link && mOwner ? mOwner->attribute(dom::names::href) : nullptr;
    return href ? *href : QStringLiteral("");
}

QString StyleSheetObject::media() const
{
    const QString *media = mOwner ? mOwner->attribute(dom::names::media) : nullptr;
    return media ? *media : QStringLiteral("");
}

void StyleSheetObject::setDisabled(bool disabled)
{
    if (mDisabled == disabled) return;
    mDisabled = disabled;
    if (mServices) mServices->engine().sheetsChanged();
}

QString StyleSheetObject::cssText() const
{
    return mSheet->text();
}

void StyleSheetObject::setBases(std::vector<Rule> &rules)
{
    for (Rule &rule : rules) {
        if (rule.style) rule.style->block->setBaseURL(mBaseURL);
        setBases(rule.rules); // nesting is bounded by the parser
    }
}

void StyleSheetObject::load(const QString &text, const QString &baseURL)
{
    const ValueMode mode = mServices ? mServices->engine().valueMode() : ValueMode::Strict;
    auto now = StyleSheet::parse(text, mode);
    // A rule that stands where one with the same selector stood is that rule: who holds it goes on with it.
    const auto &before = mSheet->rules;
    for (size_t i = 0; i < std::min(before.size(), now->rules.size()); ++i) {
        if (!before[i].style || !now->rules[i].style) continue;
        if (before[i].style->selectorText != now->rules[i].style->selectorText) continue;
        before[i].style->block = now->rules[i].style->block;
        now->rules[i].style = before[i].style;
    }
    mSheet = now;
    mBaseURL = baseURL;
    if (!baseURL.isEmpty()) setBases(mSheet->rules);
}

void StyleSheetObject::setCssText(const QString &text)
{
    QString plain = text;
    plain.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    if (plain == mSheet->text()) return;
    load(plain, mBaseURL);
    written();
}

void StyleSheetObject::written()
{
    if (mServices) mServices->sheetWritten(*this);
}

Rule *StyleSheetObject::findRule(const StyleRule &rule)
{
    for (Rule &at : mSheet->rules)
        if (at.style.get() == &rule) return &at;
    return nullptr;
}

uint32_t StyleSheetObject::ruleCount() const
{
    return uint32_t(
        std::count_if(mSheet->rules.begin(), mSheet->rules.end(), [](const Rule &rule) { return bool(rule.style); }));
}

size_t StyleSheetObject::position(uint32_t index) const
{
    size_t at = 0;
    for (; at < mSheet->rules.size(); ++at)
        if (mSheet->rules[at].style && index-- == 0) break;
    return at;
}

base::Ref<RuleObject> StyleSheetObject::rule(uint32_t index)
{
    const size_t at = position(index);
    if (at >= mSheet->rules.size()) return {};
    StyleRule &rule = *mSheet->rules[at].style;
    for (RuleObject *object : mObjects)
        if (object->mRule == &rule) return base::Ref<RuleObject>(object);
    return base::make<RuleObject>(*this, rule);
}

int StyleSheetObject::addRule(const QString &selector, const QString &css, int index)
{
    base::faults::check("IHTMLStyleSheet", "addRule");
    const ValueMode mode = mServices ? mServices->engine().valueMode() : ValueMode::Strict;
    Rule rule = checkedRule(selector, css, mode);
    rule.style->block->setBaseURL(mBaseURL);
    const int count = int(ruleCount());
    if (index < 0 || index > count) index = count;
    const size_t at = position(uint32_t(index));
    if (at < mSheet->rules.size()) {
        // In front of another: that one's indentation is taken over.
        rule.before = mSheet->rules[at].before;
        mSheet->rules[at].before = QStringLiteral("\n");
    } else if (!mSheet->rules.empty()) {
        Rule &last = mSheet->rules.back();
        // A rule whose brace was never closed would swallow the new one.
        const auto alone = StyleSheet::parse(last.source + QStringLiteral("\nx { }"), mode);
        if (last.style && alone->rules.size() == 1) StyleSheet::rewrite(last);
        rule.before = QStringLiteral("\n");
    } else if (mSheet->tail.contains(QLatin1String("<!--"))) {
        const qsizetype end = mSheet->tail.indexOf(QLatin1String("<!--")) + 4;
        rule.before = mSheet->tail.left(end) + u'\n';
        mSheet->tail.remove(0, end);
    }
    mSheet->rules.insert(mSheet->rules.begin() + long(at), std::move(rule));
    written();
    return index;
}

void StyleSheetObject::removeRule(int index)
{
    const size_t at = index < 0 ? mSheet->rules.size() : position(uint32_t(index));
    if (at >= mSheet->rules.size())
        throw base::Error(base::errors::subscriptOutOfRange, QStringLiteral("There is no rule %1.").arg(index));
    const QString before = mSheet->rules[at].before;
    mSheet->rules.erase(mSheet->rules.begin() + long(at));
    // What opened the sheet (`<!--`, a comment) stays.
    if (!before.trimmed().isEmpty()) {
        if (at < mSheet->rules.size())
            mSheet->rules[at].before = before;
        else
            mSheet->tail = before + mSheet->tail.trimmed();
    }
    written();
}

} // namespace css
