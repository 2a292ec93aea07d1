// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Value.h"

namespace css {

/// Walks over the tokens of a value and takes the basic kinds off it. Each `take` moves on when it answers, and stays
/// where it was when it doesn't.
class ValueReader
{
public:
    ValueReader(const Tokens &tokens, size_t from, size_t to, const QString &text, ValueMode mode)
        : mTokens(tokens), mAt(from), mEnd(to), mText(text), mMode(mode)
    {
        skipSpace();
    }

    bool atEnd() const { return mAt >= mEnd; }
    const Token &peek() const { return mAt < mEnd ? mTokens[mAt] : mEndToken; }
    size_t position() const { return mAt; }
    void setPosition(size_t at) { mAt = at; }
    size_t end() const { return mEnd; }
    const Tokens &tokens() const { return mTokens; }
    const QString &text() const { return mText; }
    ValueMode mode() const { return mMode; }
    /// Over one component and the white space behind it.
    void skip()
    {
        mAt = skipComponent(mTokens, mAt, mEnd);
        skipSpace();
    }
    QString restText() const { return sourceOf(mTokens, mAt, mEnd, mText); }

    bool takeWord(const char *word);
    /// A word of the property's list.
    std::optional<int> takeWordOf(PropertyId id);
    bool takeComma();
    bool takeSlash();
    std::optional<Value> takeColor();
    std::optional<Value> takeNumber();
    std::optional<Value> takeInteger();
    enum : unsigned { Percent = 1, NonNegative = 2, Unitless = 4 };
    /// A length, a percentage too with `Percent`, calc(), min(), max() and clamp() of both. `Unitless`: a number is pixels in lenient modes.
    std::optional<Value> takeLength(unsigned flags);
    std::optional<Value> takeString();
    /// url(...)
    std::optional<Value> takeUrl();
    /// An address or a gradient; `none` is the word 0.
    std::optional<Value> takeImage();
    std::optional<Value> takeRaw();
    /// What stands between the parentheses of the function at hand; moves behind it.
    ValueReader takeFunction();

private:
    void skipSpace()
    {
        while (mAt < mEnd && mTokens[mAt].is(TokenType::Whitespace))
            ++mAt;
    }
    void next()
    {
        ++mAt;
        skipSpace();
    }
    std::optional<Value> takeColorFunction();
    std::optional<Value> takeCalculation(unsigned flags);

    const Tokens &mTokens;
    size_t mAt;
    size_t mEnd;
    const QString &mText;
    ValueMode mMode;
    Token mEndToken;
};

/// One value of a longhand; nothing where the reader holds none. Doesn't check that the reader is at its end.
std::optional<Value> readLonghand(PropertyId id, ValueReader &reader);
/// A position such as "right 10px top": a list of two lengths, across and down.
std::optional<Value> readPlace(ValueReader &reader);
std::optional<std::vector<PropertyValue>> readShorthand(Shorthand shorthand, ValueReader &reader);

} // namespace css
