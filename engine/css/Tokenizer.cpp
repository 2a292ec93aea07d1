// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/Tokenizer.h"

namespace css {

namespace {

bool isNameStart(QChar c)
{
    const ushort u = c.unicode();
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || u == '_' || u >= 0x80;
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isName(QChar c)
{
    return isNameStart(c) || isDigit(c) || c == u'-';
}

bool isSpace(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
}

bool isNewline(QChar c)
{
    return c == u'\n' || c == u'\r' || c == u'\f';
}

int hexValue(QChar c)
{
    const ushort u = c.unicode();
    if (u >= '0' && u <= '9') return u - '0';
    if (u >= 'a' && u <= 'f') return u - 'a' + 10;
    if (u >= 'A' && u <= 'F') return u - 'A' + 10;
    return -1;
}

class Lexer
{
public:
    explicit Lexer(const QString &text) : mText(text), mEnd(uint32_t(text.size())) {}

    Tokens run()
    {
        Tokens tokens;
        tokens.reserve(mEnd / 4 + 2);
        for (;;) {
            skipComments();
            Token token;
            token.start = mAt;
            if (mAt >= mEnd) {
                token.end = mEnd;
                tokens.push_back(std::move(token));
                return tokens;
            }
            read(token);
            token.end = mAt;
            tokens.push_back(std::move(token));
        }
    }

private:
    QChar peek(uint32_t ahead = 0) const { return mAt + ahead < mEnd ? mText[mAt + ahead] : QChar(u'\0'); }
    bool has(uint32_t ahead = 0) const { return mAt + ahead < mEnd; }

    void skipComments()
    {
        while (peek() == u'/' && peek(1) == u'*') {
            const qsizetype end = mText.indexOf(QLatin1String("*/"), mAt + 2);
            mAt = end < 0 ? mEnd : uint32_t(end) + 2;
        }
    }

    bool escapeAt(uint32_t ahead) const
    {
        return has(ahead) && peek(ahead) == u'\\' && has(ahead + 1) && !isNewline(peek(ahead + 1));
    }
    bool identAt(uint32_t ahead) const
    {
        if (!has(ahead)) return false;
        if (peek(ahead) == u'-')
            return (has(ahead + 1) && (isNameStart(peek(ahead + 1)) || peek(ahead + 1) == u'-')) || escapeAt(ahead + 1);
        return isNameStart(peek(ahead)) || escapeAt(ahead);
    }
    bool numberAt() const
    {
        uint32_t ahead = peek() == u'+' || peek() == u'-' ? 1 : 0;
        if (isDigit(peek(ahead))) return true;
        return peek(ahead) == u'.' && isDigit(peek(ahead + 1));
    }

    void appendEscape(QString &to)
    {
        // Behind the backslash.
        if (!has()) {
            to += QChar(0xfffd);
            return;
        }
        int value = hexValue(peek());
        if (value < 0) {
            to += peek();
            ++mAt;
            return;
        }
        char32_t code = 0;
        for (int digits = 0; digits < 6 && has() && (value = hexValue(peek())) >= 0; ++digits, ++mAt)
            code = code * 16 + char32_t(value);
        if (peek() == u'\r' && peek(1) == u'\n') ++mAt;
        if (has() && isSpace(peek())) ++mAt;
        if (code == 0 || code > 0x10ffff || (code >= 0xd800 && code < 0xe000)) code = 0xfffd;
        to += QString::fromUcs4(&code, 1);
    }

    QString readName()
    {
        QString name;
        while (has()) {
            if (isName(peek())) {
                name += peek();
                ++mAt;
            } else if (escapeAt(0)) {
                ++mAt;
                appendEscape(name);
            } else {
                break;
            }
        }
        return name;
    }

    void readNumeric(Token &token)
    {
        const uint32_t from = mAt;
        token.integer = true;
        if (peek() == u'+' || peek() == u'-') ++mAt;
        while (isDigit(peek()))
            ++mAt;
        if (peek() == u'.' && isDigit(peek(1))) {
            token.integer = false;
            ++mAt;
            while (isDigit(peek()))
                ++mAt;
        }
        if (peek() == u'e' || peek() == u'E') {
            const uint32_t sign = peek(1) == u'+' || peek(1) == u'-' ? 1 : 0;
            if (isDigit(peek(1 + sign))) {
                token.integer = false;
                mAt += 2 + sign;
                while (isDigit(peek()))
                    ++mAt;
            }
        }
        token.number = QStringView(mText).mid(from, mAt - from).toDouble();
        if (!(token.number < 1e30 && token.number > -1e30)) token.number = token.number > 0 ? 1e30 : -1e30;
        if (identAt(0)) {
            token.type = TokenType::Dimension;
            token.text = readName().toLower();
        } else if (peek() == u'%') {
            ++mAt;
            token.type = TokenType::Percentage;
        } else {
            token.type = TokenType::Number;
        }
    }

    void readString(Token &token)
    {
        const QChar quote = peek();
        ++mAt;
        token.type = TokenType::String;
        while (has()) {
            const QChar c = peek();
            if (c == quote) {
                ++mAt;
                return;
            }
            if (isNewline(c)) {
                token.type = TokenType::BadString;
                return;
            }
            ++mAt;
            if (c != u'\\') {
                token.text += c;
            } else if (has() && isNewline(peek())) {
                if (peek() == u'\r' && peek(1) == u'\n') ++mAt;
                ++mAt;
            } else if (has()) {
                appendEscape(token.text);
            }
        }
    }

    void readUrl(Token &token)
    {
        token.type = TokenType::Url;
        token.text.clear();
        while (has() && isSpace(peek()))
            ++mAt;
        while (has()) {
            const QChar c = peek();
            if (c == u')') {
                ++mAt;
                return;
            }
            if (isSpace(c)) {
                while (has() && isSpace(peek()))
                    ++mAt;
                if (!has()) return;
                if (peek() == u')') {
                    ++mAt;
                    return;
                }
                return readBadUrl(token);
            }
            if (c == u'"' || c == u'\'' || c == u'(') return readBadUrl(token);
            if (c == u'\\' && !escapeAt(0)) return readBadUrl(token);
            ++mAt;
            if (c == u'\\')
                appendEscape(token.text);
            else
                token.text += c;
        }
    }

    void readBadUrl(Token &token)
    {
        token.type = TokenType::BadUrl;
        while (has()) {
            const QChar c = peek();
            ++mAt;
            if (c == u')') return;
            if (c == u'\\' && has()) ++mAt;
        }
    }

    void readIdentLike(Token &token)
    {
        token.text = readName();
        if (peek() != u'(') {
            token.type = TokenType::Ident;
            return;
        }
        ++mAt;
        token.type = TokenType::Function;
        if (token.text.compare(QLatin1String("url"), Qt::CaseInsensitive) != 0) return;
        uint32_t ahead = 0;
        while (has(ahead) && isSpace(peek(ahead)))
            ++ahead;
        if (peek(ahead) == u'"' || peek(ahead) == u'\'') return; // a function with a string
        readUrl(token);
    }

    void single(Token &token, TokenType type)
    {
        token.type = type;
        token.text = peek();
        ++mAt;
    }

    void readMark(Token &token)
    {
        switch (peek().unicode()) {
        case ':':
            return single(token, TokenType::Colon);
        case ';':
            return single(token, TokenType::Semicolon);
        case ',':
            return single(token, TokenType::Comma);
        case '[':
            return single(token, TokenType::OpenSquare);
        case ']':
            return single(token, TokenType::CloseSquare);
        case '(':
            return single(token, TokenType::OpenParen);
        case ')':
            return single(token, TokenType::CloseParen);
        case '{':
            return single(token, TokenType::OpenCurly);
        case '}':
            return single(token, TokenType::CloseCurly);
        default:
            return single(token, TokenType::Delim);
        }
    }

    void read(Token &token)
    {
        const QChar c = peek();
        if (isSpace(c)) {
            token.type = TokenType::Whitespace;
            while (has() && isSpace(peek()))
                ++mAt;
            return;
        }
        if (c == u'"' || c == u'\'') return readString(token);
        if (c == u'#' && ((has(1) && isName(peek(1))) || escapeAt(1))) {
            ++mAt;
            token.type = TokenType::Hash;
            token.isId = identAt(0);
            token.text = readName();
            return;
        }
        if (numberAt()) return readNumeric(token);
        if (QStringView(mText).mid(mAt, 4) == QLatin1String("<!--")) {
            mAt += 4;
            token.type = TokenType::Cdo;
            return;
        }
        if (QStringView(mText).mid(mAt, 3) == QLatin1String("-->")) {
            mAt += 3;
            token.type = TokenType::Cdc;
            return;
        }
        if (c == u'@') {
            ++mAt;
            if (identAt(0)) {
                token.type = TokenType::AtKeyword;
                token.text = readName().toLower();
                return;
            }
            --mAt;
        }
        if (identAt(0)) return readIdentLike(token);
        readMark(token);
    }

    const QString &mText;
    uint32_t mAt = 0;
    uint32_t mEnd;
};

} // namespace

Tokens tokenize(const QString &text)
{
    return Lexer(text).run();
}

size_t skipComponent(const Tokens &tokens, size_t at, size_t end)
{
    // A stack of what closes, so that "(]" doesn't; flat, whatever the nesting.
    std::vector<TokenType> closers;
    for (; at < end; ++at) {
        switch (tokens[at].type) {
        case TokenType::OpenCurly:
            closers.push_back(TokenType::CloseCurly);
            break;
        case TokenType::OpenSquare:
            closers.push_back(TokenType::CloseSquare);
            break;
        case TokenType::OpenParen:
        case TokenType::Function:
            closers.push_back(TokenType::CloseParen);
            break;
        default:
            if (!closers.empty() && tokens[at].type == closers.back()) closers.pop_back();
        }
        if (closers.empty()) return at + 1;
    }
    return end;
}

QString sourceOf(const Tokens &tokens, size_t from, size_t to, const QString &text)
{
    QString source;
    bool blank = false;
    for (size_t i = from; i < to; ++i) {
        const Token &token = tokens[i];
        if (token.is(TokenType::Whitespace)) {
            blank = true;
            continue;
        }
        // Where a comment parted two tokens, a blank must.
        const bool gap = i > from && tokens[i - 1].end != token.start;
        // A string that a line end cut off would go on behind a blank.
        const bool cutOff = blank && i > from + 1 && tokens[i - 2].is(TokenType::BadString);
        if (!source.isEmpty() && (blank || gap)) source += cutOff ? u'\n' : u' ';
        blank = false;
        source += QStringView(text).mid(token.start, token.end - token.start);
    }
    return source;
}

QString escapeIdentifier(const QString &name)
{
    QString result;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const QChar c = name[i];
        const bool digitFirst = isDigit(c) && (i == 0 || (i == 1 && name[0] == u'-'));
        if (digitFirst || c.unicode() < 0x20 || c.unicode() == 0x7f)
            result += u'\\' + QString::number(c.unicode(), 16) + u' ';
        else if (isName(c) && !(c == u'-' && name.size() == 1))
            result += c;
        else
            result += QString(u'\\') + c;
    }
    return result;
}

QString quoteString(const QString &text)
{
    QString result = QStringLiteral("\"");
    for (const QChar c : text) {
        if (c == u'"' || c == u'\\')
            result += QString(u'\\') + c;
        else if (c.unicode() < 0x20)
            result += u'\\' + QString::number(c.unicode(), 16) + u' ';
        else
            result += c;
    }
    return result + u'"';
}

} // namespace css
