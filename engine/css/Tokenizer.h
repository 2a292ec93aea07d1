// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

namespace css {

enum class TokenType : uint8_t {
    Ident,
    Function,
    AtKeyword,
    Hash,
    String,
    BadString,
    Url,
    BadUrl,
    Delim,
    Number,
    Percentage,
    Dimension,
    Whitespace,
    Cdo,
    Cdc,
    Colon,
    Semicolon,
    Comma,
    OpenSquare,
    CloseSquare,
    OpenParen,
    CloseParen,
    OpenCurly,
    CloseCurly,
    End
};

struct Token
{
    TokenType type = TokenType::End;
    uint32_t start = 0, end = 0; ///< where it stands in the text, in UTF-16 units
    QString text;                ///< name, string, address, unit (lower case), or the one character of a delimiter
    double number = 0;
    bool integer = false; ///< written without a fraction or exponent
    bool isId = false;    ///< a hash that can be a selector

    bool is(TokenType t) const { return type == t; }
    bool isDelim(char c) const { return type == TokenType::Delim && text.size() == 1 && text[0] == QLatin1Char(c); }
    bool isIdent(const char *lower) const
    {
        return type == TokenType::Ident && text.compare(QLatin1String(lower), Qt::CaseInsensitive) == 0;
    }
    bool isFunction(const char *lower) const
    {
        return type == TokenType::Function && text.compare(QLatin1String(lower), Qt::CaseInsensitive) == 0;
    }
};

using Tokens = std::vector<Token>;

/// Takes a style sheet's text apart (CSS Syntax, level 3, section 4). Never fails; ends with an End token. Comments are
/// dropped.
Tokens tokenize(const QString &text);

/// The index behind the block or function that starts at `at`, or `at` + 1 where none does. Not beyond `end`.
size_t skipComponent(const Tokens &tokens, size_t at, size_t end);

/// The source of a run of tokens, comments dropped, white space as single blanks, none at the ends.
QString sourceOf(const Tokens &tokens, size_t from, size_t to, const QString &text);

/// As an identifier or a string is written.
QString escapeIdentifier(const QString &name);
QString quoteString(const QString &text);

} // namespace css
