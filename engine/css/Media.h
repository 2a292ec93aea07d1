// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/css/Tokenizer.h"

#include <QSizeF>

namespace css {

/// What the page is shown on.
struct Medium
{
    QString type = QStringLiteral("screen"); ///< "screen" or "print"
    QSizeF viewport{1000, 800};              ///< CSS pixels
    friend bool operator==(const Medium &, const Medium &) = default;
};

/// A list of media and what they must be like. An empty one suits every medium.
class MediaList
{
public:
    static MediaList parse(const QString &text);
    static MediaList parse(const Tokens &tokens, size_t from, size_t to, const QString &text);
    bool suits(const Medium &medium) const;
    /// Whether the answer may change with the viewport.
    bool asksForSize() const;
    bool isEmpty() const { return mQueries.empty(); }

private:
    /// Yes, no, or nobody can tell: an expression that isn't known (Media Queries 4, 3.1).
    enum class Answer : uint8_t { No, Unknown, Yes };
    struct Feature
    {
        enum class Kind : uint8_t { Width, Height, AspectRatio, Resolution, Color, None, One, Word };
        enum class Compare : uint8_t { Less, Most, Equal, Least, Greater };
        struct Bound
        {
            Compare compare;
            double value;
        };
        Kind kind = Kind::None;
        std::vector<Bound> bounds; ///< empty: whether there is any of it
        bool portrait = false, landscape = false;
        bool holds = false; ///< Word: of every medium
    };
    struct Condition
    {
        enum class Kind : uint8_t { Feature, Not, And, Or, Unknown };
        Kind kind = Kind::Unknown;
        Feature feature;
        std::vector<Condition> parts;
    };
    struct Query
    {
        bool negated = false;
        QString type; ///< empty: all
        Condition condition{Condition::Kind::And, {}, {}};
    };
    class Reader;
    static Answer answer(const Feature &feature, const Medium &medium);
    static Answer answer(const Condition &condition, const Medium &medium);
    static bool asksForSize(const Condition &condition);
    std::vector<Query> mQueries;
};

} // namespace css
