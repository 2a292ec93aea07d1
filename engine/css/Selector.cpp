// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Selector.h"

namespace css {

namespace {

constexpr int maxNesting = 16;
constexpr size_t maxCompounds = 64;

struct NamedPseudo
{
    const char *name;
    PseudoClass pseudo;
};

const NamedPseudo pseudoClasses[] = {
    {"first-child", PseudoClass::FirstChild},
    {"last-child", PseudoClass::LastChild},
    {"only-child", PseudoClass::OnlyChild},
    {"first-of-type", PseudoClass::FirstOfType},
    {"last-of-type", PseudoClass::LastOfType},
    {"only-of-type", PseudoClass::OnlyOfType},
    {"empty", PseudoClass::Empty},
    {"root", PseudoClass::Root},
    {"link", PseudoClass::Link},
    {"any-link", PseudoClass::AnyLink},
    {"-webkit-any-link", PseudoClass::AnyLink},
    {"visited", PseudoClass::Visited},
    {"checked", PseudoClass::Checked},
    {"disabled", PseudoClass::Disabled},
    {"enabled", PseudoClass::Enabled},
    {"hover", PseudoClass::Never},
    {"active", PseudoClass::Never},
    {"focus", PseudoClass::Never},
    {"focus-within", PseudoClass::Never},
    {"focus-visible", PseudoClass::Never},
    {"target", PseudoClass::Never},
};

class Parser
{
public:
    Parser(const Tokens &tokens, size_t from, size_t to, const QString &text, int depth)
        : mTokens(tokens), mAt(from), mEnd(to), mText(text), mDepth(depth)
    {
    }

    std::optional<SelectorList> list()
    {
        SelectorList result;
        do {
            ComplexSelector selector;
            if (!complex(selector)) return {};
            result.selectors.push_back(std::move(selector));
        } while (takeComma());
        if (mAt < mEnd) return {};
        return result;
    }

private:
    const Token &peek(size_t ahead = 0) const { return mAt + ahead < mEnd ? mTokens[mAt + ahead] : mNone; }
    void space()
    {
        while (peek().is(TokenType::Whitespace))
            ++mAt;
    }
    bool takeComma()
    {
        space();
        if (!peek().is(TokenType::Comma)) return false;
        ++mAt;
        return true;
    }

    bool complex(ComplexSelector &selector)
    {
        std::vector<CompoundSelector> compounds; // left to right
        Combinator combinator = Combinator::None;
        space();
        for (;;) {
            CompoundSelector part;
            part.left = combinator;
            if (selector.pseudo != Pseudo::None || !compound(part, selector)) return false;
            compounds.push_back(std::move(part));
            if (compounds.size() > maxCompounds) return false;
            const bool blank = peek().is(TokenType::Whitespace);
            space();
            if (mAt >= mEnd || peek().is(TokenType::Comma)) break;
            if (peek().isDelim('>'))
                combinator = Combinator::Child;
            else if (peek().isDelim('+'))
                combinator = Combinator::Adjacent;
            else if (peek().isDelim('~'))
                combinator = Combinator::Sibling;
            else if (blank)
                combinator = Combinator::Descendant;
            else
                return false;
            if (combinator != Combinator::Descendant) ++mAt;
            space();
        }
        selector.compounds.assign(std::make_move_iterator(compounds.rbegin()),
                                  std::make_move_iterator(compounds.rend()));
        return true;
    }

    void raise(ComplexSelector &selector, uint32_t by)
    {
        // No place overflows into the next.
        uint32_t sum = 0;
        for (int shift = 0; shift < 24; shift += 8) {
            const uint32_t part = ((selector.specificity >> shift) & 255) + ((by >> shift) & 255);
            sum |= std::min<uint32_t>(part, 255) << shift;
        }
        selector.specificity = sum;
    }

    bool compound(CompoundSelector &part, ComplexSelector &selector)
    {
        const size_t start = mAt;
        if (peek().is(TokenType::Ident) || peek().isDelim('*')) {
            SimpleSelector simple;
            if (peek().is(TokenType::Ident)) {
                simple.kind = SimpleSelector::Kind::Type;
                simple.name = dom::Atom::lower(peek().text);
                raise(selector, 1);
            }
            ++mAt;
            if (peek().isDelim('|') && (peek(1).is(TokenType::Ident) || peek(1).isDelim('*'))) {
                // A namespace: the names that matter are the same in all of them.
                if (simple.kind == SimpleSelector::Kind::Type) selector.specificity -= 1;
                ++mAt;
                simple = {};
                if (peek().is(TokenType::Ident)) {
                    simple.kind = SimpleSelector::Kind::Type;
                    simple.name = dom::Atom::lower(peek().text);
                    raise(selector, 1);
                }
                ++mAt;
            }
            if (simple.kind == SimpleSelector::Kind::Type) part.simples.push_back(std::move(simple));
        }
        for (;;) {
            const Token &token = peek();
            if (token.is(TokenType::Hash)) {
                if (!token.isId) return false;
                add(part, selector, SimpleSelector::Kind::Id, token.text, 0x10000);
                ++mAt;
            } else if (token.isDelim('.') && peek(1).is(TokenType::Ident)) {
                add(part, selector, SimpleSelector::Kind::Class, peek(1).text, 0x100);
                mAt += 2;
            } else if (token.is(TokenType::OpenSquare)) {
                if (!attribute(part)) return false;
                raise(selector, 0x100);
            } else if (token.is(TokenType::Colon)) {
                ++mAt;
                if (!pseudo(part, selector)) return false;
                if (selector.pseudo != Pseudo::None) return true;
            } else {
                break;
            }
        }
        return mAt > start;
    }

    void add(CompoundSelector &part, ComplexSelector &selector, SimpleSelector::Kind kind, const QString &text,
             uint32_t weight)
    {
        SimpleSelector simple;
        simple.kind = kind;
        simple.text = text;
        part.simples.push_back(std::move(simple));
        raise(selector, weight);
    }

    bool attribute(CompoundSelector &part)
    {
        SimpleSelector simple;
        simple.kind = SimpleSelector::Kind::Attribute;
        ++mAt;
        space();
        if (peek().isDelim('|') || (peek().isDelim('*') && peek(1).isDelim('|'))) mAt += peek().isDelim('|') ? 1 : 2;
        if (!peek().is(TokenType::Ident)) return false;
        simple.name = dom::Atom::lower(peek().text);
        ++mAt;
        space();
        if (peek().is(TokenType::CloseSquare)) {
            ++mAt;
            part.simples.push_back(std::move(simple));
            return true;
        }
        const Token &mark = peek();
        simple.match = mark.isDelim('=')   ? AttributeMatch::Equals
                       : mark.isDelim('~') ? AttributeMatch::Includes
                       : mark.isDelim('|') ? AttributeMatch::Dash
                       : mark.isDelim('^') ? AttributeMatch::Prefix
                       : mark.isDelim('$') ? AttributeMatch::Suffix
                       : mark.isDelim('*') ? AttributeMatch::Substring
                                           : AttributeMatch::Set;
        if (simple.match == AttributeMatch::Set) return false;
        ++mAt;
        if (simple.match != AttributeMatch::Equals) {
            if (!peek().isDelim('=')) return false;
            ++mAt;
        }
        space();
        if (!peek().is(TokenType::Ident) && !peek().is(TokenType::String)) return false;
        simple.text = peek().text;
        ++mAt;
        space();
        if (peek().isIdent("i") || peek().isIdent("s")) {
            simple.ignoreCase = peek().isIdent("i");
            ++mAt;
            space();
        } else {
            simple.ignoreCase = hasCaselessValues(simple.name);
        }
        if (!peek().is(TokenType::CloseSquare)) return false;
        ++mAt;
        part.simples.push_back(std::move(simple));
        return true;
    }

    /// Attributes whose values HTML compares in any case.
    static bool hasCaselessValues(dom::Atom name)
    {
        static const QStringList names{
            QStringLiteral("align"),    QStringLiteral("bgcolor"), QStringLiteral("clear"),  QStringLiteral("color"),
            QStringLiteral("dir"),      QStringLiteral("face"),    QStringLiteral("frame"),  QStringLiteral("lang"),
            QStringLiteral("link"),     QStringLiteral("media"),   QStringLiteral("method"), QStringLiteral("nowrap"),
            QStringLiteral("rel"),      QStringLiteral("rules"),   QStringLiteral("scope"),  QStringLiteral("target"),
            QStringLiteral("text"),     QStringLiteral("type"),    QStringLiteral("valign"), QStringLiteral("vlink"),
            QStringLiteral("disabled"), QStringLiteral("checked"), QStringLiteral("noshade")};
        return names.contains(name.text());
    }

    bool pseudoElement(ComplexSelector &selector, bool single)
    {
        static const std::pair<const char *, Pseudo> elements[] = {
            {"before", Pseudo::Before},        {"after", Pseudo::After},
            {"first-line", Pseudo::FirstLine}, {"first-letter", Pseudo::FirstLetter},
            {"marker", Pseudo::Marker},        {"selection", Pseudo::Selection}};
        for (const auto &[name, pseudo] : elements) {
            if (!peek().isIdent(name)) continue;
            if (single && (pseudo == Pseudo::Marker || pseudo == Pseudo::Selection)) return false;
            if (mDepth > 0) return false;
            selector.pseudo = pseudo;
            raise(selector, 1);
            ++mAt;
            return true;
        }
        return false;
    }

    bool pseudo(CompoundSelector &part, ComplexSelector &selector)
    {
        if (peek().is(TokenType::Colon)) {
            ++mAt;
            return pseudoElement(selector, false);
        }
        if (peek().is(TokenType::Function)) return functional(part, selector);
        if (!peek().is(TokenType::Ident)) return false;
        if (pseudoElement(selector, true)) return true;
        for (const NamedPseudo &named : pseudoClasses) {
            if (!peek().isIdent(named.name)) continue;
            SimpleSelector simple;
            simple.kind = SimpleSelector::Kind::PseudoClass;
            simple.pseudo = named.pseudo;
            part.simples.push_back(std::move(simple));
            raise(selector, 0x100);
            ++mAt;
            return true;
        }
        return false;
    }

    bool functional(CompoundSelector &part, ComplexSelector &selector)
    {
        const Token &name = peek();
        const size_t from = mAt + 1;
        const size_t behind = skipComponent(mTokens, mAt, mEnd);
        const size_t to = mTokens[behind - 1].is(TokenType::CloseParen) ? behind - 1 : behind;
        mAt = behind;
        SimpleSelector simple;
        const bool negation = name.isFunction("not");
        const bool where = name.isFunction("where");
        if (negation || where || name.isFunction("is") || name.isFunction("matches") ||
            name.isFunction("-webkit-any")) {
            if (mDepth >= maxNesting) return false;
            auto list = Parser(mTokens, from, to, mText, mDepth + 1).list();
            if (!list) return false;
            uint32_t weight = 0;
            for (const ComplexSelector &inner : list->selectors)
                weight = std::max(weight, inner.specificity);
            if (!where) raise(selector, weight);
            simple.kind = negation ? SimpleSelector::Kind::Not : SimpleSelector::Kind::Is;
            simple.list = std::make_shared<const SelectorList>(std::move(*list));
            part.simples.push_back(std::move(simple));
            return true;
        }
        simple.kind = SimpleSelector::Kind::PseudoClass;
        raise(selector, 0x100);
        if (name.isFunction("lang")) {
            simple.pseudo = PseudoClass::Lang;
            simple.text = sourceOf(mTokens, from, to, mText);
            part.simples.push_back(std::move(simple));
            return !part.simples.back().text.isEmpty();
        }
        static const std::pair<const char *, PseudoClass> nths[] = {{"nth-child", PseudoClass::NthChild},
                                                                    {"nth-last-child", PseudoClass::NthLastChild},
                                                                    {"nth-of-type", PseudoClass::NthOfType},
                                                                    {"nth-last-of-type", PseudoClass::NthLastOfType}};
        for (const auto &[text, pseudo] : nths) {
            if (!name.isFunction(text)) continue;
            simple.pseudo = pseudo;
            if (!nth(sourceOf(mTokens, from, to, mText), simple)) return false;
            part.simples.push_back(std::move(simple));
            return true;
        }
        return false;
    }

    static bool nth(const QString &source, SimpleSelector &simple)
    {
        QString text = source.toLower();
        text.remove(u' ');
        if (text == QLatin1String("odd")) text = QStringLiteral("2n+1");
        if (text == QLatin1String("even")) text = QStringLiteral("2n");
        const qsizetype n = text.indexOf(u'n');
        bool ok = true;
        if (n >= 0) {
            const QString step = text.left(n);
            simple.step = step.isEmpty() || step == QLatin1String("+") ? 1
                          : step == QLatin1String("-")                 ? -1
                                                                       : step.toInt(&ok);
            if (!ok) return false;
            text = text.mid(n + 1);
            if (text.isEmpty()) return true;
            if (text[0] != u'+' && text[0] != u'-') return false;
        }
        simple.offset = text.toInt(&ok);
        return ok;
    }

    const Tokens &mTokens;
    size_t mAt;
    size_t mEnd;
    const QString &mText;
    int mDepth;
    Token mNone;
};

} // namespace

std::optional<SelectorList> parseSelectors(const Tokens &tokens, size_t from, size_t to, const QString &text)
{
    while (to > from && tokens[to - 1].is(TokenType::Whitespace))
        --to;
    return Parser(tokens, from, to, text, 0).list();
}

std::optional<SelectorList> parseSelectors(const QString &text)
{
    const Tokens tokens = tokenize(text);
    return parseSelectors(tokens, 0, tokens.size() - 1, text);
}

QString selectorTextInCapitals(const QString &text)
{
    const Tokens tokens = tokenize(text);
    QString result;
    bool blank = false, type = true;
    int squares = 0;
    std::vector<bool> names; // for each open function: whether selectors stand in it
    for (size_t i = 0; i + 1 < tokens.size(); ++i) {
        const Token &token = tokens[i];
        if (token.is(TokenType::Whitespace)) {
            blank = true;
            type = true;
            continue;
        }
        QString source = text.mid(token.start, token.end - token.start);
        if (token.is(TokenType::Ident) && type && squares == 0 && (names.empty() || names.back()))
            source = source.toUpper();
        if (token.is(TokenType::OpenSquare)) ++squares;
        if (token.is(TokenType::CloseSquare)) squares = std::max(0, squares - 1);
        if (token.is(TokenType::Function))
            names.push_back(token.isFunction("not") || token.isFunction("is") || token.isFunction("where"));
        if (token.is(TokenType::CloseParen) && !names.empty()) names.pop_back();
        if (blank && !result.isEmpty()) result += u' ';
        blank = false;
        result += source;
        type = token.is(TokenType::Comma) || token.is(TokenType::Function) || token.isDelim('>') ||
               token.isDelim('+') || token.isDelim('~') || token.isDelim('|');
    }
    return result;
}

} // namespace css
